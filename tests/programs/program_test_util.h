// Helpers of the tests that run the programs of the build as a user would.
#pragma once

#include <string>

#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace tarno::test {

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace tarno::test
