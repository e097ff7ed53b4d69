// tarnocmd: the batch front end of TARNO.
//
//   tarnocmd new <path> [--description TEXT] [--map-units meters|feet]
//                       [--model-units meters|feet] [--base-name NAME] [--yes | --no]
//   tarnocmd info <path> [<x> <y>]
//   tarnocmd settings <path> [--description TEXT] [--base-name NAME] [--path DIR]
//                            [--yes | --no]
//   tarnocmd solve <path> [--regrid] [--continue N] [--yes | --no]
//   tarnocmd inspect <path> <x> <y> [--elevation Z] [--integrity STEP] [--time T]
//   tarnocmd results <path> <table>
//   tarnocmd stats <path>
//   tarnocmd pest <path>
//   tarnocmd import-par <path> <file.par>
//   tarnocmd estimate <path> [--no-import] [--use-files] [--threads N] [--max-iterations N]
//   tarnocmd add|set|delete|list|model ...   (tarnocmd_elements.h)
//   tarnocmd scenario list|set|apply|clean ...   (tarnocmd_scenario.h)
//   tarnocmd map add|list|remove ...           (tarnocmd_maps.h)
//   tarnocmd convert|reproject ...           (tarnocmd_convert.h)
//   tarnocmd help
//
// "new" runs the same project life cycle as the desktop program: the new-project
// wizard is answered from the options, the settings dialog of the new project is
// accepted (with the default base name unless --base-name is given), and the
// questions asked on the way are answered by the defaults documented in
// docs/tarnocmd.md. "info" reads a project without changing it. "settings" prints
// the project's settings or, given values, confirms its settings dialog with them,
// so that the dialog's checks and messages apply ("Create Folder?" is answered No
// unless --yes is given); a refused value changes nothing. Messages go to standard
// error as "<title>: <line>"; results go to standard output.
//
// Exit status: 0 success, 1 the operation failed or was refused, 2 bad usage.
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "core/console_ui.h"
#include "core/text.h"
#include "tarnocmd_commands.h"
#include "tarnocmd_convert.h"
#include "tarnocmd_elements.h"
#include "tarnocmd_scenario.h"
#include "tarnocmd_exchange.h"
#include "tarnocmd_maps.h"

namespace {

constexpr int kUsageError = 2;

int Usage(std::ostream& out, int status) {
  out << tarno::cmd::UsageText();
  return status;
}

int BadUsage(const std::string& message) {
  std::cerr << "tarnocmd: " << message << "\n";
  std::cerr << "Run \"tarnocmd help\" for the usage.\n";
  return kUsageError;
}

std::optional<bool> ParseUnits(const std::string& text) {
  std::string t;
  for (char c : text) t += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (t == "meters" || t == "metres" || t == "m") return true;
  if (t == "feet" || t == "ft") return false;
  return std::nullopt;
}

// The arguments that `new` and `settings` share: --yes, --no and the one project
// path. Takes `a` into `answers` or `path`; says what is wrong with it otherwise.
std::optional<std::string> TakeAnswerOrPath(const std::string& a, const std::string& command,
                                            tarno::cmd::Answers& answers, std::optional<std::string>& path) {
  if (a == "--yes") {
    answers = tarno::cmd::Answers::Yes;
  } else if (a == "--no") {
    answers = tarno::cmd::Answers::No;
  } else if (!a.empty() && a[0] == '-' && a != "-") {
    return "unknown option \"" + a + "\"";
  } else if (path) {
    return command + " takes one project path";
  } else {
    path = a;
  }
  return std::nullopt;
}

// A whole argument as a number ("12", "-3.5", "4.5E+05"); nothing otherwise.
std::optional<double> ParseNumberArg(const std::string& text) {
  if (text.empty()) return std::nullopt;
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.empty()) return Usage(std::cerr, kUsageError);
  const std::string command = args[0];

  if (command == "help" || command == "--help" || command == "-h") return Usage(std::cout, 0);

  if (command == "info") {
    if (args.size() == 4) {
      const auto x = ParseNumberArg(args[2]);
      const auto y = ParseNumberArg(args[3]);
      if (!x || !y) return BadUsage("invalid coordinates \"" + args[2] + " " + args[3] + "\"");
      return tarno::cmd::ResultInfo(args[1], *x, *y, std::cout, std::cerr);
    }
    if (args.size() != 2)
      return BadUsage("info takes a project path, and optionally the map coordinates x and y");
    return tarno::cmd::Info(args[1], std::cout, std::cerr);
  }

  if (command == "new") {
    tarno::cmd::NewOptions options;
    std::optional<std::string> path;
    for (std::size_t i = 1; i < args.size(); ++i) {
      const std::string& a = args[i];
      auto value = [&](const char* name) -> std::optional<std::string> {
        if (i + 1 >= args.size()) return std::nullopt;
        (void)name;
        return args[++i];
      };
      if (a == "--description") {
        auto v = value("--description");
        if (!v) return BadUsage("--description needs a text");
        options.description = *v;
      } else if (a == "--map-units" || a == "--model-units") {
        auto v = value(a.c_str());
        if (!v) return BadUsage(a + " needs meters or feet");
        auto meters = ParseUnits(*v);
        if (!meters) return BadUsage("invalid value \"" + *v + "\" for " + a + " (expected meters or feet)");
        (a == "--map-units" ? options.basemapMeters : options.computeMeters) = *meters;
      } else if (a == "--base-name") {
        auto v = value("--base-name");
        if (!v) return BadUsage("--base-name needs a name");
        options.baseName = *v;
      } else if (auto error = TakeAnswerOrPath(a, "new", options.answers, path)) {
        return BadUsage(*error);
      }
    }
    if (!path || path->empty()) return BadUsage("new needs the path of the project to create");
    options.path = *path;
    return tarno::cmd::New(options, std::cout, std::cerr);
  }

  if (command == "settings") {
    tarno::cmd::SettingsOptions options;
    std::optional<std::string> path;
    for (std::size_t i = 1; i < args.size(); ++i) {
      const std::string& a = args[i];
      if (a == "--description" || a == "--base-name" || a == "--path") {
        if (i + 1 >= args.size())
          return BadUsage(a + (a == "--description" ? " needs a text"
                               : a == "--base-name" ? " needs a name"
                                                    : " needs a folder"));
        const std::string& v = args[++i];
        (a == "--description" ? options.description
         : a == "--base-name" ? options.baseName
                              : options.basePath) = v;
      } else if (auto error = TakeAnswerOrPath(a, "settings", options.answers, path)) {
        return BadUsage(*error);
      }
    }
    if (!path || path->empty()) return BadUsage("settings needs the path of a project");
    options.path = *path;
    return tarno::cmd::Settings(options, std::cout, std::cerr);
  }

  if (command == "solve") {
    tarno::cmd::SolveCommandOptions options;
    std::optional<std::string> path;
    for (std::size_t i = 1; i < args.size(); ++i) {
      const std::string& a = args[i];
      if (a == "--regrid") {
        options.regrid = true;
      } else if (a == "--continue") {
        if (i + 1 >= args.size()) return BadUsage("--continue needs a number of iterations");
        const std::string& n = args[++i];
        if (n.empty() || n.find_first_not_of("0123456789") != std::string::npos || std::stol(n) <= 0)
          return BadUsage("invalid number of iterations \"" + n + "\" for --continue");
        options.continueIterations = n;
      } else if (a == "--yes") {
        options.answers = tarno::cmd::Answers::Yes;
      } else if (a == "--no") {
        options.answers = tarno::cmd::Answers::No;
      } else if (!a.empty() && a[0] == '-' && a != "-") {
        return BadUsage("unknown option \"" + a + "\"");
      } else if (path) {
        return BadUsage("solve takes one project path");
      } else {
        path = a;
      }
    }
    if (!path || path->empty()) return BadUsage("solve needs the path of a project");
    if (options.regrid && !options.continueIterations.empty())
      return BadUsage("--regrid and --continue exclude each other");
    options.path = *path;
    return tarno::cmd::Solve(options, std::cout, std::cerr);
  }

  if (command == "estimate") {
    tarno::cmd::EstimateCommandOptions options;
    std::optional<std::string> path;
    for (std::size_t i = 1; i < args.size(); ++i) {
      const std::string& a = args[i];
      if (a == "--no-import") {
        options.noImport = true;
      } else if (a == "--use-files") {
        options.useExistingFiles = true;
      } else if (a == "--threads" || a == "--max-iterations") {
        if (i + 1 >= args.size()) return BadUsage(a + " needs a number");
        const std::string& n = args[++i];
        if (n.empty() || n.size() > 6 || n.find_first_not_of("0123456789") != std::string::npos ||
            std::stol(n) <= 0)
          return BadUsage("invalid number \"" + n + "\" for " + a);
        (a == "--threads" ? options.threads : options.maxIterations) = static_cast<int>(std::stol(n));
      } else if (!a.empty() && a[0] == '-' && a != "-") {
        return BadUsage("unknown option \"" + a + "\"");
      } else if (path) {
        return BadUsage("estimate takes one project path");
      } else {
        path = a;
      }
    }
    if (!path || path->empty()) return BadUsage("estimate needs the path of a project");
    options.path = *path;
    return tarno::cmd::Estimate(options, std::cout, std::cerr);
  }

  if (command == "inspect") {
    tarno::cmd::InspectCommandOptions options;
    std::vector<std::string> positional;
    for (std::size_t i = 1; i < args.size(); ++i) {
      const std::string& a = args[i];
      if (a == "--elevation" || a == "--integrity" || a == "--time") {
        if (i + 1 >= args.size()) return BadUsage(a + " needs a number");
        const auto v = ParseNumberArg(args[++i]);
        if (!v) return BadUsage("invalid number \"" + args[i] + "\" for " + a);
        if (a == "--elevation") options.elevation = *v;
        else if (a == "--integrity") options.integrityStep = *v;
        else options.time = *v;
      } else if (a.size() > 1 && a[0] == '-' && !ParseNumberArg(a)) {
        return BadUsage("unknown option \"" + a + "\"");
      } else {
        positional.push_back(a);
      }
    }
    if (positional.size() != 3) return BadUsage("inspect takes a project path and the map coordinates x and y");
    const auto x = ParseNumberArg(positional[1]);
    const auto y = ParseNumberArg(positional[2]);
    if (!x || !y) return BadUsage("invalid coordinates \"" + positional[1] + " " + positional[2] + "\"");
    if (options.integrityStep && !(*options.integrityStep > 0))
      return BadUsage("the step of --integrity must be larger than 0");
    options.path = positional[0];
    options.x = *x;
    options.y = *y;
    return tarno::cmd::Inspect(options, std::cout, std::cerr);
  }

  if (command == "results") {
    if (args.size() != 3) return BadUsage("results takes a project path and a table name");
    return tarno::cmd::Results(args[1], args[2], std::cout, std::cerr);
  }

  if (command == "stats") {
    if (args.size() != 2) return BadUsage("stats takes a project path");
    return tarno::cmd::Stats(args[1], std::cout, std::cerr);
  }

  if (command == "pest") {
    if (args.size() != 2) return BadUsage("pest takes a project path");
    return tarno::cmd::Pest(args[1], std::cout, std::cerr);
  }

  if (command == "import-par") {
    if (args.size() != 3) return BadUsage("import-par takes a project path and a .par file");
    return tarno::cmd::ImportPar(args[1], args[2], std::cout, std::cerr);
  }

  if (auto status = tarno::cmd::RunElementCommand(args, std::cout, std::cerr)) return *status;
  if (auto status = tarno::cmd::RunScenarioCommand(args, std::cout, std::cerr)) return *status;
  if (auto status = tarno::cmd::RunMapCommand(args, std::cout, std::cerr)) return *status;
  if (auto status = tarno::cmd::RunConvertCommand(args, std::cout, std::cerr)) return *status;
  if (auto status = tarno::cmd::RunExchangeCommand(args, std::cout, std::cerr)) return *status;

  return BadUsage("unknown command \"" + command + "\"");
}
