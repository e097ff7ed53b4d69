// contour <base> <min> <interval> <max>: reads the grid <base>.GRD in the
// working directory and writes its contour lines at the levels min, min +
// interval, ... up to max to <base>.CTR. Exit status 0 on success; 1 when the
// grid cannot be read or the result cannot be written; 2 for wrong arguments.

#include <exception>
#include <filesystem>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "programs/contour/run.h"

int main(int argc, char** argv) {
  try {
    std::vector<std::string> args(argv + 1, argv + argc);
    std::error_code ec;
    std::filesystem::path cwd = std::filesystem::current_path(ec);
    if (ec) cwd = ".";
    return tarno::contour::runContour(args, cwd, std::cerr);
  } catch (const std::bad_alloc&) {
    std::cerr << "contour: out of memory\n";
  } catch (const std::exception& e) {
    std::cerr << "contour: " << e.what() << "\n";
  } catch (...) {
    std::cerr << "contour: unexpected failure\n";
  }
  return tarno::contour::kExitFileError;
}
