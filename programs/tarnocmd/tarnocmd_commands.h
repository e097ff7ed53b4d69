// The commands of tarnocmd, callable from main and usable by other batch tools.
#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace tarno::cmd {

// How the questions of a project operation are answered.
enum class Answers {
  Defaults,  // each question by its documented default
  Yes,       // every question Yes (or OK): also overwrites an existing file
  No,        // every question No (or Cancel)
};

struct NewOptions {
  std::string path;
  std::optional<std::string> description;  // default: the wizard's own
  bool basemapMeters = true;
  bool computeMeters = true;
  std::optional<std::string> baseName;     // default: from the date and time
  Answers answers = Answers::Defaults;
};

// Creates a project through the life cycle. Returns the exit status.
int New(const NewOptions& options, std::ostream& out, std::ostream& err);

// Prints what a project holds. Returns the exit status.
int Info(const std::string& path, std::ostream& out, std::ostream& err);

// tarnocmd solve: the whole solve cycle without a window.
struct SolveCommandOptions {
  std::string path;
  bool regrid = false;                   // --regrid: no new solution, only grid and traces
  std::string continueIterations;        // --continue N: N more iterations ("" none)
  Answers answers = Answers::Defaults;   // the "Valid Solution Present" question: Yes by default
};

// Solves the project; prints what the run did. Returns 0 after a completed run, 1
// after a fatal, failed or cancelled one.
int Solve(const SolveCommandOptions& options, std::ostream& out, std::ostream& err);

// Prints a result table as CSV: the field names, then one line per row.
int Results(const std::string& path, const std::string& table, std::ostream& out,
            std::ostream& err);

std::string UsageText();

}  // namespace tarno::cmd
