// The scenario commands of tarnocmd: the "Implement Scenarios" dialog without a
// window, and the cleaning of scenario tags.
//
//   tarnocmd scenario list <project>
//   tarnocmd scenario set <project> <tag> [--current V] [--default V]
//   tarnocmd scenario apply <project> defaults|current
//   tarnocmd scenario clean <project>
//
// "set" and "apply" fill the dialog, press "Update Database (Save Changes)" and
// "Done"; a changed model loses its solution, as after the menu's dialog.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tarno::cmd {

// Runs `tarnocmd scenario ...` (args[0] is "scenario"). Returns its exit status;
// nothing when args[0] is another command.
std::optional<int> RunScenarioCommand(const std::vector<std::string>& args, std::ostream& out,
                                      std::ostream& err);

// The usage lines of the scenario commands.
std::string ScenarioUsageText();

}  // namespace tarno::cmd
