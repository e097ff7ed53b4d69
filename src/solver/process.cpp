#include "solver/process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <thread>

#include "core/error.h"

extern char** environ;

namespace tarno {

namespace {

int StatusOf(int raw) {
  if (WIFEXITED(raw)) return WEXITSTATUS(raw);
  if (WIFSIGNALED(raw)) return 128 + WTERMSIG(raw);
  return 255;
}

}  // namespace

int BlockingWaiter::Wait(pid_t pid) {
  int raw = 0;
  for (;;) {
    const pid_t r = ::waitpid(pid, &raw, 0);
    if (r == pid) return StatusOf(raw);
    if (r < 0 && errno == EINTR) continue;
    throw Error(std::string("Waiting for process ") + std::to_string(pid) +
                " failed: " + std::strerror(errno));
  }
}

int PollingWaiter::Wait(pid_t pid) {
  int raw = 0;
  for (;;) {
    const pid_t r = ::waitpid(pid, &raw, WNOHANG);
    if (r == pid) return StatusOf(raw);
    if (r < 0 && errno != EINTR) {
      throw Error(std::string("Waiting for process ") + std::to_string(pid) +
                  " failed: " + std::strerror(errno));
    }
    if (pump_) pump_();
    std::this_thread::sleep_for(interval_);
  }
}

std::filesystem::path ProgramDirectory() {
  std::error_code ec;
  const auto exe = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (ec || exe.empty()) return std::filesystem::current_path(ec);
  return exe.parent_path();
}

pid_t StartProgram(const std::filesystem::path& program, const std::vector<std::string>& args,
                   const std::filesystem::path& workingDirectory,
                   const std::filesystem::path& outputFile,
                   const std::filesystem::path& errorFile) {
  std::vector<std::string> argvText;
  argvText.push_back(program.string());
  argvText.insert(argvText.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (auto& a : argvText) argv.push_back(a.data());
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  // The child changes its directory; the parent's stays where it is.
  posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());
  if (!outputFile.empty()) {
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
  }
  if (!errorFile.empty()) {
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errorFile.c_str(),
                                     O_WRONLY | O_CREAT | O_TRUNC, 0644);
  }
  pid_t pid = 0;
  const int rc = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (rc != 0) {
    const int number = rc == ENOENT ? error_number::kFileNotFound : error_number::kInvalidCall;
    throw Error("Cannot start \"" + program.string() + "\" in \"" + workingDirectory.string() +
                    "\": " + std::strerror(rc),
                number);
  }
  return pid;
}

int WaitForTerm1(ProcessWaiter& waiter, pid_t pid) { return waiter.Wait(pid); }

}  // namespace tarno
