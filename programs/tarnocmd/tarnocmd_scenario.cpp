#include "tarnocmd_scenario.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "calibration/scenario_dialog.h"
#include "calibration/scenario_tags.h"
#include "core/console_ui.h"
#include "core/error_trap.h"
#include "core/format.h"
#include "core/text.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/database.h"
#include "store/project_file.h"
#include "store/schema.h"
#include "tarnocmd_commands.h"

namespace tarno::cmd {

namespace {

constexpr int kRefused = 1;
constexpr int kUsageError = 2;
constexpr const char* kTableWords[3] = {"aquifer", "linesink", "inhomogeneity"};




// Tags compare as the project compares text: without regard to case.
bool SameTag(const std::string& a, const std::string& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) ==
           std::tolower(static_cast<unsigned char>(y));
  });
}

std::optional<double> WholeNumber(const std::string& text) {
  if (text.empty()) return std::nullopt;
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}

void PrintTables(const Scenarios& d, std::ostream& out) {
  for (ScenarioTable t : kScenarioTables) {
    for (const ScenarioRow& r : d.Table(t)) {
      out << kTableWords[static_cast<int>(t)] << "\t" << r.Scenario << "\t"
          << GeneralNumber(r.Current) << "\t" << GeneralNumber(r.Default) << "\n";
    }
  }
}

int List(const std::string& path, std::ostream& out, std::ostream& err) {
  if (!CheckProject(path, err)) return kRefused;
  ConsoleUserInterface ui(err, Answer::OK);
  const bool ran = RunOperation(ui, "Scenarios", [&] {
    Database db = Database::Open(path);
    Scenarios d;
    d.Load(db);
    PrintTables(d, out);
  });
  return ran ? 0 : kRefused;
}

// Shows the dialog on the project with `edit` as the user's hand: it fills the
// grids and says whether to press Update (false: the dialog is left unchanged).
int RunDialog(const std::string& path, std::ostream& out, std::ostream& err,
              const std::function<bool(Scenarios&)>& edit) {
  if (!CheckProject(path, err)) return kRefused;
  ConsoleUserInterface ui(err, Answer::OK);
  bool ok = false;
  const bool ran = RunOperation(ui, "Scenarios", [&] {
    ui.SetModalHandler(Scenarios::kName, [&](DialogModel& model) {
      auto& d = dynamic_cast<Scenarios&>(model);
      ok = edit(d);
      if (ok) d.cmdUpdate_Click();
      d.cmdDone();
      if (ok) PrintTables(d, out);
    });
    const bool changed = ImplementScenarios(ui, path);
    if (changed) RemoveSolution(path, ui, out);
  });
  return ran && ok ? 0 : kRefused;
}

int Set(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() < 3) return BadUsage(err, "scenario set takes a project path and a tag");
  const std::string& path = args[1];
  const std::string& tag = args[2];
  // The values as typed (checked to be numbers): the dialog's cells take the text.
  std::optional<std::string> current, defaultValue;
  for (std::size_t i = 3; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a != "--current" && a != "--default") return BadUsage(err, "unknown option \"" + a + "\"");
    if (i + 1 >= args.size()) return BadUsage(err, a + " needs a number");
    const std::optional<double> v = WholeNumber(args[++i]);
    if (!v) {
      // The dialog's numeric columns take numbers only.
      err << "Scenarios: \"" << args[i] << "\" is not a number (" << a << ")\n";
      return kRefused;
    }
    (a == "--current" ? current : defaultValue) = args[i];
  }
  if (!current && !defaultValue) return BadUsage(err, "scenario set needs --current or --default");
  if (const auto lines = ScenarioTagRefusal(tag)) {
    for (const std::string& line : *lines) err << "Scenarios: " << line << "\n";
    return kRefused;
  }
  return RunDialog(path, out, err, [&](Scenarios& d) {
    bool found = false;
    for (ScenarioTable t : kScenarioTables) {
      std::vector<ScenarioRow>& rows = d.Table(t);
      for (std::size_t r = 0; r < rows.size(); ++r) {
        if (!SameTag(rows[r].Scenario, TrimST(tag))) continue;
        found = true;
        if (current) d.SetCell(t, r, kCurrentColumn, *current);
        if (defaultValue) d.SetCell(t, r, kDefaultColumn, *defaultValue);
      }
    }
    if (!found)
      err << "Scenarios: no element of the project is included in scenarios under the tag \"" << tag
          << "\"\n";
    return found;
  });
}

int Apply(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() != 3)
    return BadUsage(err, "scenario apply takes a project path and defaults or current");
  const std::string& which = args[2];
  int index = -1;
  if (which == "defaults" || which == "default") index = 0;  // current values from the defaults
  if (which == "current") index = 1;                         // defaults from the current values
  if (index < 0)
    return BadUsage(
        err, "invalid value \"" + which + "\" for scenario apply (expected defaults or current)");
  return RunDialog(args[1], out, err, [&](Scenarios& d) {
    d.cmdDefault(index);
    return true;
  });
}

int Clean(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() != 2) return BadUsage(err, "scenario clean takes a project path");
  const std::string& path = args[1];
  if (!CheckProject(path, err)) return kRefused;
  ConsoleUserInterface ui(err, Answer::OK);
  const bool ran = RunOperation(ui, "RemoveBadScenChar", [&] {
    Database db = Database::Open(path);
    const TagCleaning done = CleanScenarioTags(db, ui);
    out << done.Total() << " scenario tags cleaned\n";
  });
  return ran ? 0 : kRefused;
}

}  // namespace

std::string ScenarioUsageText() {
  return "  tarnocmd scenario list <path>\n"
         "      Lists the scenario tags as the Implement Scenarios dialog shows them: table\n"
         "      (aquifer, linesink, inhomogeneity), tag, current value and default,\n"
         "      tab-separated.\n"
         "  tarnocmd scenario set <path> <tag> [--current V] [--default V]\n"
         "      Gives every parameter under the tag the values, as the dialog's Update\n"
         "      does, and lists the tags.\n"
         "  tarnocmd scenario apply <path> defaults|current\n"
         "      Replaces all current values with the defaults (defaults) or all defaults\n"
         "      with the current values (current) and updates the project.\n"
         "  tarnocmd scenario clean <path>\n"
         "      Cleans the scenario tags as the check on opening does: blanks removed,\n"
         "      tags over 12 characters cropped, commas removed, minus made underscore.\n";
}

std::optional<int> RunScenarioCommand(const std::vector<std::string>& args, std::ostream& out,
                                      std::ostream& err) {
  if (args.empty() || args[0] != "scenario") return std::nullopt;
  if (args.size() < 2) return BadUsage(err, "scenario needs list, set, apply or clean");
  const std::vector<std::string> rest(args.begin() + 1, args.end());
  const std::string& sub = rest[0];
  if (sub == "list") {
    if (rest.size() != 2) return BadUsage(err, "scenario list takes a project path");
    return List(rest[1], out, err);
  }
  if (sub == "set") return Set(rest, out, err);
  if (sub == "apply") return Apply(rest, out, err);
  if (sub == "clean") return Clean(rest, out, err);
  return BadUsage(err,
                  "unknown scenario command \"" + sub + "\" (expected list, set, apply or clean)");
}

}  // namespace tarno::cmd
