#pragma once
// The three logs of a run and the fatal-error report.
//
// - The error log holds the single line "*" when there is nothing to report;
//   otherwise one line per problem, in the order of the command file's lines:
//   the line number, the line's text, what is wrong and what was done.
// - The message log tells the run as it goes (written and flushed line by line).
// - The echo log repeats every line read, with its number.
// - TARNO.OPS, written only on a fatal error, holds lines for the user.

#include "engine/command.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace tarno::engine {

// Name of the fatal-error report in the working directory.
inline constexpr const char* kFatalReportName = "TARNO.OPS";

// One line of the error log for a problem.
std::string formatProblem(const Diagnostic& d);

// The echo log's line for line number `number`.
std::string formatEchoLine(int number, const std::string& text);

class RunLogs {
 public:
  explicit RunLogs(std::filesystem::path workDir);
  ~RunLogs();

  // Opening a log names its file; a second name for the same log is ignored
  // (and reported). Returns false when the file cannot be created.
  bool openError(const std::string& name, int line);
  bool openMessage(const std::string& name, int line);
  // Writes every line read into the echo log at once.
  bool openEcho(const std::string& name, int line, const std::vector<std::string>& lines);

  void problem(Diagnostic d);
  void problem(int line, const std::string& text, std::string message) { problem(Diagnostic{line, text, std::move(message)}); }
  const std::vector<Diagnostic>& problems() const { return problems_; }

  // A line of the message log (kept in memory too until a message log is opened).
  void message(const std::string& line);

  // Notes a file the run wrote, for the summary in the message log.
  void wrote(const std::string& what, const std::filesystem::path& file);
  const std::vector<std::string>& filesWritten() const { return written_; }

  // Writes the error log ("*" when clean) and closes the message log. Safe to call twice.
  void finish();

  // Writes TARNO.OPS in the working directory with the given lines (never throws).
  void writeFatalReport(const std::vector<std::string>& lines);

  std::filesystem::path errorLogPath() const { return errorPath_; }
  std::filesystem::path messageLogPath() const { return messagePath_; }
  std::filesystem::path echoLogPath() const { return echoPath_; }

 private:
  std::filesystem::path workDir_;
  std::filesystem::path errorPath_, messagePath_, echoPath_;
  std::ofstream messageFile_;
  std::vector<std::string> pendingMessages_;
  std::vector<Diagnostic> problems_;
  std::vector<std::string> written_;
  bool finished_ = false;
};

}  // namespace tarno::engine
