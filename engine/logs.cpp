#include "engine/logs.h"

#include "engine/files.h"

#include <algorithm>
#include <cstdio>

namespace tarno::engine {

std::string formatProblem(const Diagnostic& d) {
  std::string s;
  if (d.line > 0) {
    s = "line " + std::to_string(d.line);
    if (!d.text.empty()) s += " (\"" + d.text + "\")";
    s += ": ";
  }
  s += d.message;
  // A problem line must never read as the lone "*" of a clean log.
  if (!s.empty() && s[0] == '*') s.insert(0, "problem: ");
  if (s.empty()) s = "problem without description";
  return s;
}

std::string formatEchoLine(int number, const std::string& text) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%6d  ", number);
  return buf + text;
}

RunLogs::RunLogs(std::filesystem::path workDir) : workDir_(std::move(workDir)) {}

RunLogs::~RunLogs() { finish(); }

bool RunLogs::openError(const std::string& name, int line) {
  if (!errorPath_.empty()) {
    problem(line, "", "a second error log \"" + name + "\" was named; the first one is kept");
    return true;
  }
  errorPath_ = prepareOutputFile(workDir_, name);
  // Created at once, so that an unwritable name shows at the start of the run.
  std::ofstream f(errorPath_, std::ios::binary | std::ios::trunc);
  if (!f) {
    problem(line, "", "the error log \"" + name + "\" cannot be created; problems go to the standard error stream");
    errorPath_.clear();
    return false;
  }
  f << "*\n";
  return true;
}

bool RunLogs::openMessage(const std::string& name, int line) {
  if (!messagePath_.empty()) {
    problem(line, "", "a second message log \"" + name + "\" was named; the first one is kept");
    return true;
  }
  messagePath_ = prepareOutputFile(workDir_, name);
  messageFile_.open(messagePath_, std::ios::binary | std::ios::trunc);
  if (!messageFile_) {
    problem(line, "", "the message log \"" + name + "\" cannot be created; no message log is written");
    messagePath_.clear();
    return false;
  }
  for (const auto& m : pendingMessages_) messageFile_ << m << '\n';
  pendingMessages_.clear();
  messageFile_.flush();
  return true;
}

bool RunLogs::openEcho(const std::string& name, int line, const std::vector<std::string>& lines) {
  if (!echoPath_.empty()) {
    problem(line, "", "a second echo log \"" + name + "\" was named; the first one is kept");
    return true;
  }
  echoPath_ = prepareOutputFile(workDir_, name);
  std::ofstream f(echoPath_, std::ios::binary | std::ios::trunc);
  if (!f) {
    problem(line, "", "the echo log \"" + name + "\" cannot be created; no echo log is written");
    echoPath_.clear();
    return false;
  }
  for (size_t i = 0; i < lines.size(); ++i) f << formatEchoLine(static_cast<int>(i + 1), lines[i]) << '\n';
  return true;
}

void RunLogs::problem(Diagnostic d) {
  if (problems_.size() < kMaxProblems) problems_.push_back(std::move(d));
}

void RunLogs::message(const std::string& line) {
  if (messageFile_.is_open()) {
    messageFile_ << line << '\n';
    messageFile_.flush();
  } else if (pendingMessages_.size() < 100000) {
    pendingMessages_.push_back(line);
  }
}

void RunLogs::wrote(const std::string& what, const std::filesystem::path& file) {
  written_.push_back(what + ": " + file.filename().string());
  message("Wrote " + what + " " + file.filename().string());
}

void RunLogs::finish() {
  if (finished_) return;
  finished_ = true;
  std::vector<Diagnostic> sorted = problems_;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const Diagnostic& a, const Diagnostic& b) { return a.line < b.line; });
  if (!errorPath_.empty()) {
    std::ofstream f(errorPath_, std::ios::binary | std::ios::trunc);
    if (sorted.empty()) f << "*\n";
    for (const auto& d : sorted) f << formatProblem(d) << '\n';
  } else {
    for (const auto& d : sorted) std::fprintf(stderr, "%s\n", formatProblem(d).c_str());
  }
  if (messageFile_.is_open()) messageFile_.close();
}

void RunLogs::writeFatalReport(const std::vector<std::string>& lines) {
  try {
    std::filesystem::path p = prepareOutputFile(workDir_, kFatalReportName);
    std::ofstream f(p, std::ios::binary | std::ios::trunc);
    for (const auto& l : lines) f << l << "\n";
    if (lines.empty()) f << "The solver stopped with a fatal error.\n";
  } catch (...) {
  }
  for (const auto& l : lines) std::fprintf(stderr, "%s\n", l.c_str());
}

}  // namespace tarno::engine
