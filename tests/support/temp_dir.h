// A temporary folder for one test, and small file helpers of the tests.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tarno::test {

// A new, empty folder under the system's temporary folder, named after the running
// test (or `prefix` alone outside a test) with a unique ending. The folder and
// everything in it are removed when the object goes, also where a test took away
// the write permission of something inside.
class TempDir {
 public:
  explicit TempDir(std::string_view prefix = "tarno");
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  TempDir(TempDir&& other) noexcept;
  TempDir& operator=(TempDir&& other) noexcept;

  const std::filesystem::path& Path() const { return path_; }
  // A path inside the folder.
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

  // Removes the folder now (what the destructor does); Path() is empty after.
  void Remove();

 private:
  std::filesystem::path path_;
};

// The bytes of a file; empty when it cannot be read.
std::string ReadFile(const std::filesystem::path& path);
// Writes `bytes` to a file, replacing it; false when it cannot be written.
bool WriteFile(const std::filesystem::path& path, std::string_view bytes);

}  // namespace tarno::test
