// tarno1 <size> <name>: the analytic element solver. Reads the command file
// <name>.DAT (or <name> when it ends in .DAT) in the working directory, runs it,
// and writes the logs and result files there. Exit status 0 after " stop" or the
// end of the file; non-zero after a fatal error, which TARNO.OPS explains.

#include "engine/run.h"

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

int main(int argc, char** argv) {
  try {
    std::vector<std::string> args(argv + 1, argv + argc);
    std::error_code ec;
    std::filesystem::path cwd = std::filesystem::current_path(ec);
    if (ec) cwd = ".";
    return tarno::engine::runSolverProgram(args, cwd);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "tarno1: %s\n", e.what());
  } catch (...) {
    std::fprintf(stderr, "tarno1: unexpected failure\n");
  }
  return tarno::engine::kExitFatal;
}
