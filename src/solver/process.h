// Starting the helper programs (the solver, the contourer) and waiting for them.
//
// A program is started from the program directory with the project's directory as
// its working directory; the parent's own working directory is never changed. The
// wait is a separate object so that each front end waits its own way: the batch
// front end blocks in waitpid, the desktop program polls and pumps its events in
// between so that its window stays painted while the solver runs.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tarno {

// Waits until a started process has ended and returns its exit status (128 + the
// signal number for a process killed by a signal). No time limit.
class ProcessWaiter {
 public:
  virtual ~ProcessWaiter() = default;
  virtual int Wait(pid_t pid) = 0;
};

// Blocks the calling thread in waitpid.
class BlockingWaiter : public ProcessWaiter {
 public:
  int Wait(pid_t pid) override;
};

// Polls the process every `interval` and calls `pump` in between (the desktop
// program processes its pending events there).
class PollingWaiter : public ProcessWaiter {
 public:
  PollingWaiter(std::function<void()> pump, std::chrono::milliseconds interval)
      : pump_(std::move(pump)), interval_(interval) {}
  int Wait(pid_t pid) override;

 private:
  std::function<void()> pump_;
  std::chrono::milliseconds interval_;
};

// The directory of the running executable (/proc/self/exe); the current directory
// when that cannot be read.
std::filesystem::path ProgramDirectory();

// Starts `program` with `args` (not counting the program itself) in
// `workingDirectory`. With a non-empty `outputFile` the program's standard output
// goes there (replaced), with a non-empty `errorFile` its standard error; otherwise
// they are inherited. Throws tarno::Error naming the program when it cannot be
// started (error number 53 for a missing file).
pid_t StartProgram(const std::filesystem::path& program, const std::vector<std::string>& args,
                   const std::filesystem::path& workingDirectory,
                   const std::filesystem::path& outputFile = {},
                   const std::filesystem::path& errorFile = {});

// True for a status of WaitForTerm1 that tells a program ended by a signal (a
// crash, or killed from outside): 128 + the signal's number, as the shell counts.
inline bool EndedBySignal(int status) { return status > 128 && status < 128 + 65; }

// Waits for `pid` with `waiter`; returns the exit status.
int WaitForTerm1(ProcessWaiter& waiter, pid_t pid);

}  // namespace tarno
