#include "support/program_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <map>

extern char** environ;

namespace tarno::test {

namespace fs = std::filesystem;

namespace {

// The environment of the child: the test's own with the changes of `options`.
std::vector<std::string> ChildEnvironment(const RunOptions& options) {
  std::map<std::string, std::string> vars;
  for (char** e = environ; e != nullptr && *e != nullptr; ++e) {
    const std::string entry(*e);
    vars[entry.substr(0, entry.find('='))] = entry;
  }
  for (const std::string& name : options.unset) vars.erase(name);
  for (const std::string& entry : options.env) vars[entry.substr(0, entry.find('='))] = entry;
  std::vector<std::string> out;
  out.reserve(vars.size());
  for (auto& [name, entry] : vars) out.push_back(std::move(entry));
  return out;
}

std::vector<char*> Pointers(std::vector<std::string>& strings) {
  std::vector<char*> out;
  out.reserve(strings.size() + 1);
  for (std::string& s : strings) out.push_back(s.data());
  out.push_back(nullptr);
  return out;
}

// Reads both pipes to their end, so that neither child stream blocks on a full pipe.
void Drain(int outFd, int errFd, RunResult& result) {
  std::array<pollfd, 2> fds{{{outFd, POLLIN, 0}, {errFd, POLLIN, 0}}};
  std::string* sinks[2] = {&result.out, &result.err};
  int open = 2;
  char buffer[65536];
  while (open > 0) {
    if (::poll(fds.data(), fds.size(), -1) < 0) {
      if (errno == EINTR) continue;
      break;
    }
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
      if (n > 0) {
        sinks[i]->append(buffer, static_cast<std::size_t>(n));
      } else if (n == 0 || errno != EINTR) {
        ::close(fds[i].fd);
        fds[i].fd = -1;
        --open;
      }
    }
  }
}

}  // namespace

fs::path ProgramPath(std::string_view name) { return fs::path(TARNO_BIN_DIR) / name; }

RunResult RunProgram(std::string_view name, const std::vector<std::string>& args,
                     const RunOptions& options) {
  return RunExecutable(ProgramPath(name), args, options);
}

RunResult RunExecutable(const fs::path& executable, const std::vector<std::string>& args,
                        const RunOptions& options) {
  RunResult result;
  std::vector<std::string> argStrings{executable.string()};
  argStrings.insert(argStrings.end(), args.begin(), args.end());
  std::vector<std::string> envStrings = ChildEnvironment(options);
  std::vector<char*> argv = Pointers(argStrings);
  std::vector<char*> envp = Pointers(envStrings);

  int outPipe[2], errPipe[2];
  if (::pipe2(outPipe, O_CLOEXEC) != 0) {
    result.status = 127;
    result.err = std::string("cannot make a pipe: ") + std::strerror(errno);
    return result;
  }
  if (::pipe2(errPipe, O_CLOEXEC) != 0) {
    ::close(outPipe[0]);
    ::close(outPipe[1]);
    result.status = 127;
    result.err = std::string("cannot make a pipe: ") + std::strerror(errno);
    return result;
  }

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  if (!options.cwd.empty()) posix_spawn_file_actions_addchdir_np(&actions, options.cwd.c_str());
  if (!options.input.empty()) {
    // Opened after the change of directory: a relative path is taken from `cwd`.
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, options.input.c_str(), O_RDONLY, 0);
  }
  posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);

  pid_t pid = -1;
  const bool bare = executable.string().find('/') == std::string::npos;
  const int spawned =
      bare ? ::posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), envp.data())
           : ::posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  ::close(outPipe[1]);
  ::close(errPipe[1]);
  if (spawned != 0) {
    ::close(outPipe[0]);
    ::close(errPipe[0]);
    result.status = 127;
    result.err = "cannot run " + executable.string() + ": " + std::strerror(spawned);
    return result;
  }

  Drain(outPipe[0], errPipe[0], result);
  int raw = 0;
  while (::waitpid(pid, &raw, 0) < 0 && errno == EINTR) {}
  result.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
  return result;
}

}  // namespace tarno::test
