// The base map commands of tarnocmd: the project's list of base maps, with the
// checks and messages of the desktop program's "Add Map...".
//
//   tarnocmd map add <project> <file>... [--no]
//   tarnocmd map list <project>
//   tarnocmd map remove <project> <file>
//
// Files are listed by their full path. The questions of adding ("Not
// Georeferenced") are answered OK, so that an image without world file is added
// with the warning on standard error; --no answers Cancel, which leaves it out.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tarno {
struct BaseMapOpeners;
}

namespace tarno::cmd {

// Runs `map ...` (args[0] is "map"). Nothing when args[0] is another word.
std::optional<int> RunMapCommand(const std::vector<std::string>& args, std::ostream& out,
                                 std::ostream& err);
// The same with the given openers (the tests' own).
int RunMapCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                  const BaseMapOpeners& openers);

std::string MapUsageText();

}  // namespace tarno::cmd
