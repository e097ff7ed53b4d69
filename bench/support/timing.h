// The wall-clock time of a piece of work, for the benchmarks.
#pragma once

#include <chrono>
#include <functional>

namespace tarno::bench {

// Seconds that f takes, on the steady clock.
inline double Seconds(const std::function<void()>& f) {
  const auto t0 = std::chrono::steady_clock::now();
  f();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

}  // namespace tarno::bench
