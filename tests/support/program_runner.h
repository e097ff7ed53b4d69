// Runs a program as a user would and captures what it gives back, without a shell.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tarno::test {

// What a program run gave back. `status` is the exit code, -1 when the program
// ended by a signal, 127 when it could not be started (the reason is then in `err`).
struct RunResult {
  int status = -1;
  std::string out;
  std::string err;
};

struct RunOptions {
  // The working directory; empty for the test's own.
  std::filesystem::path cwd;
  // Variables set for the program, each "NAME=value", over the test's environment.
  std::vector<std::string> env;
  // Variables taken out of the program's environment.
  std::vector<std::string> unset;
  // A file read as standard input; empty to pass on the test's own.
  std::filesystem::path input;
};

// The path of a program of the build (build/bin/<name>).
std::filesystem::path ProgramPath(std::string_view name);

// Runs `name` from build/bin with `args`.
RunResult RunProgram(std::string_view name, const std::vector<std::string>& args,
                     const RunOptions& options = {});

// Runs any executable: a path, or a bare name looked up on PATH (sqlite3, sh).
RunResult RunExecutable(const std::filesystem::path& executable,
                        const std::vector<std::string>& args, const RunOptions& options = {});

}  // namespace tarno::test
