// The summary log of an element exchange operation: three lists of lines kept
// while it runs (errors, warnings, details), written at its end into the
// project's folder under the operation's name, replacing an earlier file:
//
//     <date and time>
//     Summary:
//     Errors:
//     <one line each>
//     Warnings:
//     ...
//     Details:
//     ...
//
// Lines end with CR LF, as all the text files of the system do.
#pragma once

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace tarno::exchange {

class ExchangeLog {
 public:
  void Error(std::string line) { errors_.push_back(std::move(line)); }
  void Warning(std::string line) { warnings_.push_back(std::move(line)); }
  void Detail(std::string line) { details_.push_back(std::move(line)); }

  const std::vector<std::string>& Errors() const { return errors_; }
  const std::vector<std::string>& Warnings() const { return warnings_; }
  const std::vector<std::string>& Details() const { return details_; }
  bool HasProblems() const { return !errors_.empty() || !warnings_.empty(); }

  // The log's text, dated `when` (local time, "YYYY-MM-DD HH:MM:SS").
  std::string Text(std::chrono::system_clock::time_point when) const;
  // Writes the text to `file`, replacing it. Throws tarno::Error naming the file
  // when it cannot be written.
  void Write(const std::filesystem::path& file,
             std::chrono::system_clock::time_point when = std::chrono::system_clock::now()) const;

 private:
  std::vector<std::string> errors_, warnings_, details_;
};

// The folder of the project file, where the logs go.
std::filesystem::path LogFolder(const std::string& projectPath);

}  // namespace tarno::exchange
