// libFuzzer target for the command-language reader: any bytes must read without
// a crash, a hang or a sanitizer report, and the result must be consistent.

#include "engine/command.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  tarno::engine::CommandFile f = tarno::engine::parseCommandFile(text);
  const int lines = static_cast<int>(f.lines.size());
  // Every problem and step points at a line that was read (0: not tied to a line;
  // lines + 1 is allowed for the end of the file).
  for (const auto& p : f.problems)
    if (p.line < 0 || p.line > lines + 1) std::abort();
  for (const auto& s : f.steps)
    if (s.line < 0 || s.line > lines + 1) std::abort();
  if (f.fatal && (f.fatal->line < 1 || f.fatal->line > lines)) std::abort();
  if (f.problems.size() > tarno::engine::kMaxProblems + 1) std::abort();
  return 0;
}
