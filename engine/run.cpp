// The run of the solver program: the order of the steps, the logs and the fatal end
// (the step handlers and file writers: engine/run_steps.h).
#include "engine/run.h"

#include "engine/run_steps.h"

namespace fs = std::filesystem;

namespace tarno::engine {

namespace running {

int Runner::run() {
  start_ = std::chrono::steady_clock::now();
  try {
    return runSteps();
  } catch (const RunFatal& f) {
    return fatal(f);
  } catch (const std::bad_alloc&) {
    return fatal(RunFatal{currentLine_, {"The solver ran out of memory while working on line " +
                                             std::to_string(currentLine_) + " of " + commandFile_.filename().string() + ".",
                                         "The model is too large for the memory of this computer."}});
  } catch (const std::exception& e) {
    return fatal(RunFatal{currentLine_, {"The solver stopped at line " + std::to_string(currentLine_) + " of " +
                                             commandFile_.filename().string() + ": " + e.what()}});
  }
}

// Warnings of the engine go to the error log under the line of the step that
// caused them. Set once per solution: setting the sink replays earlier warnings.
void Runner::attachWarnings() {
  solution_->setWarningSink([this](const std::string& w) { logs_.problem(currentLine_, "", w); });
}

int Runner::fatal(const RunFatal& f) {
  for (const auto& l : f.lines) logs_.problem(f.line, "", "fatal: " + l);
  logs_.message("The run ended with a fatal error (see " + std::string(kFatalReportName) + ").");
  logs_.finish();
  logs_.writeFatalReport(f.lines);
  return kExitFatal;
}

std::string Runner::where(int line) const {
  return "line " + std::to_string(line) + " of " + commandFile_.filename().string();
}

int Runner::runSteps() {
  for (const Step& s : file_.steps)
    if (auto* l = std::get_if<LogCommand>(&s.data)) {
      if (l->kind == LogCommand::Kind::Error) logs_.openError(l->file, s.line);
      else if (l->kind == LogCommand::Kind::Message) logs_.openMessage(l->file, s.line);
      else logs_.openEcho(l->file, s.line, file_.lines);
    }
  logs_.message("tarno1: analytic element solver");
  started_ = clockText();
  logs_.message("Started " + started_);
  logs_.message("Command file: " + commandFile_.string() + " (" + std::to_string(file_.lines.size()) + " lines read)");
  if (!sizeArg_.empty()) {
    char* end = nullptr;
    long size = std::strtol(sizeArg_.c_str(), &end, 10);
    if (end == sizeArg_.c_str() || *end != '\0' || size < 0)
      logs_.problem(0, "", "the size argument \"" + sizeArg_ + "\" is not a number of equations; it is only logged, the run goes on");
    logs_.message("Estimated number of equations (from the caller): " + sizeArg_);
  }
  for (const Diagnostic& d : file_.problems) logs_.problem(d);
  for (const ParameterUse& u : file_.parameters)
    logs_.message("Line " + std::to_string(u.line) + ": the parameter field " + u.field + " takes the value " +
                  number(u.value) + " from the parameter value file");
  if (file_.fatal) {
    const Diagnostic& d = *file_.fatal;
    logs_.problem(Diagnostic{d.line, d.text, "fatal: " + d.message});
    throw RunFatal{0, {"The command file " + commandFile_.filename().string() + " cannot be solved.",
                       "Line " + std::to_string(d.line) + ": \"" + d.text + "\"",
                       d.message + "."}};
  }
  for (const UnsupportedKind& k : findUnsupported(file_))
    logs_.problem(k.firstLine, "",
                  k.words + " are not supported by this version: " + std::to_string(k.count) +
                      (k.count == 1 ? " item was" : " items were") + " read; " + k.result);

  for (const Step& step : file_.steps) {
    currentLine_ = step.line;
    if (std::get_if<StopCommand>(&step.data)) break;
    std::visit([&](const auto& d) { this->apply(step.line, d); }, step.data);
    if (std::get_if<SolveCommand>(&step.data)) updateLeakage();
  }
  if (!file_.stopped) logs_.message("End of the command file reached without \" stop\".");
  writeOutputReport();
  double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  logs_.message("Files written: " + std::to_string(logs_.filesWritten().size()));
  for (const auto& f : logs_.filesWritten()) logs_.message("  " + f);
  logs_.message("Problems reported in the error log: " + std::to_string(logs_.problems().size()));
  logs_.message("Run finished " + clockText() + " after " + number(seconds) + " s");
  logs_.finish();
  return kExitOk;
}

}  // namespace running

using running::Runner;
using running::removeStaleFatalReport;

int runCommands(const CommandFile& file, const fs::path& commandFile, const fs::path& workDir, const std::string& sizeArg) {
  Runner r(file, commandFile, workDir, sizeArg);
  return r.run();
}

int runSolverProgram(const std::vector<std::string>& args, const fs::path& workDir) {
  RunLogs reporter(workDir);
  try {
    removeStaleFatalReport(workDir);
    if (args.size() < 2) {
      std::fprintf(stderr, "usage: tarno1 <size> <name>\n");
      reporter.writeFatalReport({"The solver was started without its two arguments: the estimated number of "
                                 "equations and the name of the command file."});
      return kExitUsage;
    }
    const std::string& nameArg = args[1];
    auto path = findCommandFile(workDir, nameArg);
    if (!path) {
      reporter.writeFatalReport({"The command file " + commandFileName(nameArg) + " was not found in " +
                                     workDir.string() + ".",
                                 "Nothing was solved."});
      return kExitFatal;
    }
    std::error_code ec;
    auto size = fs::file_size(*path, ec);
    constexpr std::uintmax_t kMaxFileSize = std::uintmax_t(1) << 31;
    if (ec || size > kMaxFileSize) {
      reporter.writeFatalReport({"The command file " + path->filename().string() + " cannot be read" +
                                 (ec ? ": " + ec.message() : std::string(": it is larger than 2 GB")) + "."});
      return kExitFatal;
    }
    std::ifstream in(*path, std::ios::binary);
    std::string text;
    text.resize(static_cast<size_t>(size));
    if (!in || !in.read(text.data(), static_cast<std::streamsize>(size))) {
      reporter.writeFatalReport({"The command file " + path->filename().string() + " cannot be read."});
      return kExitFatal;
    }
    // The parameter value file beside the command file gives the values of the fields
    // of an estimation template that a plain solve carries (the aquifer's scenario tags).
    std::optional<ParameterValues> values;
    std::vector<std::string> valueProblems;
    const std::string valuesName = path->stem().string() + ".TPV";
    if (auto vp = findFileNoCase(path->parent_path(), valuesName)) {
      std::ifstream vin(*vp, std::ios::binary);
      std::string vtext((std::istreambuf_iterator<char>(vin)), std::istreambuf_iterator<char>());
      values = parseParameterValues(vtext, vp->filename().string(), &valueProblems);
    }
    CommandFile file = parseCommandFile(text, values ? &*values : nullptr);
    for (const std::string& p : valueProblems)
      file.problems.insert(file.problems.begin(), Diagnostic{0, "", values->file + ", " + p});
    text.clear();
    text.shrink_to_fit();
    return runCommands(file, *path, workDir, args[0]);
  } catch (const std::bad_alloc&) {
    reporter.writeFatalReport({"The solver ran out of memory while reading the command file.",
                               "The model is too large for the memory of this computer."});
    return kExitFatal;
  } catch (const std::exception& e) {
    reporter.writeFatalReport({std::string("The solver stopped: ") + e.what()});
    return kExitFatal;
  }
}

}  // namespace tarno::engine
