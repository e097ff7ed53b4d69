#pragma once
// The run of the solver program: read the command file, carry out its steps in
// order (build the model, solve, save, load, extract), write the logs, and on a
// fatal error write TARNO.OPS and return a non-zero status.

#include "engine/command.h"
#include "engine/model.h"

#include <filesystem>
#include <string>
#include <vector>

namespace tarno::engine {

// Exit statuses of the program.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFatal = 1;
inline constexpr int kExitUsage = 2;

// Runs `tarno1 <size> <name>` in `workDir`: args are the program's arguments
// without the program name. Never throws; every failure ends in a status.
int runSolverProgram(const std::vector<std::string>& args, const std::filesystem::path& workDir);

// Runs an already read command file (the steps after reading). `commandFile` is
// the path it came from, for the logs.
int runCommands(const CommandFile& file, const std::filesystem::path& commandFile, const std::filesystem::path& workDir,
                const std::string& sizeArg = "");

// Kinds of input that this version reads but does not compute, one entry per
// kind met in the file: the kind's words for the error log, its first line and
// how many lines of it were read.
struct UnsupportedKind {
  std::string key;    // a short key, one per kind
  std::string words;  // e.g. "partially penetrating wells (ppwell)"
  std::string result; // what the run does instead, e.g. "left out of the model"
  int firstLine = 0;
  size_t count = 0;
};
std::vector<UnsupportedKind> findUnsupported(const CommandFile& file);

// Applies what an aquifer menu set.
void applyAquifer(Model& model, const AquiferInput& aquifer);

}  // namespace tarno::engine
