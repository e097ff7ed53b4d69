// The element commands of tarnocmd: add, set, delete and list the elements of a
// project, and set the model settings, with the checks and messages of the
// desktop program's dialogs.
//
//   tarnocmd add <project> <kind> <x> <y> [<x> <y> ...] [--set FIELD=VALUE ...]
//   tarnocmd set <project> <label> FIELD=VALUE ...
//   tarnocmd delete <project> <label>
//   tarnocmd list <project> [<kind>]
//   tarnocmd model <project> [FIELD=VALUE ...]
//
// A refused command has shown its messages ("<title>: <line>") on standard error,
// written nothing, and exits 1; bad usage exits 2.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tarno::cmd {

// Runs the element command named by args[0] (the command word and its arguments,
// without the program's name). Returns its exit status; nothing when args[0]
// names no element command.
std::optional<int> RunElementCommand(const std::vector<std::string>& args, std::ostream& out,
                                     std::ostream& err);

// The usage lines of the element commands.
std::string ElementUsageText();

}  // namespace tarno::cmd
