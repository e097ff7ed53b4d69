#include "support/temp_dir.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tarno::test {

namespace fs = std::filesystem;

namespace {

// Letters, digits, '-', '_' and '.'; anything else (the '/' of a parameterised
// test's name) becomes '_'.
std::string SafeName(std::string_view text) {
  std::string out;
  for (char c : text) {
    const bool plain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                       c == '-' || c == '_' || c == '.';
    out += plain ? c : '_';
  }
  // Long names of parameterised tests would make paths unwieldy.
  if (out.size() > 80) out.resize(80);
  return out;
}

// A test may leave a folder without write or search permission; give them back so
// that the folder can be removed.
void RestorePermissions(const fs::path& root) {
  std::error_code ec;
  fs::permissions(root, fs::perms::owner_all, fs::perm_options::add, ec);
  for (fs::recursive_directory_iterator it(root, fs::directory_options::skip_permission_denied, ec),
       end;
       !ec && it != end; it.increment(ec)) {
    std::error_code pe;
    if (it->is_directory(pe) && !it->is_symlink(pe))
      fs::permissions(it->path(), fs::perms::owner_all, fs::perm_options::add, pe);
  }
}

}  // namespace

TempDir::TempDir(std::string_view prefix) {
  std::string name(SafeName(prefix));
  if (const auto* info = ::testing::UnitTest::GetInstance()->current_test_info()) {
    name += "-" + SafeName(std::string(info->test_suite_name()) + "." + info->name());
  }
  std::string tmpl = (fs::temp_directory_path() / (name + "-XXXXXX")).string();
  if (::mkdtemp(tmpl.data()) == nullptr) {
    throw std::runtime_error("cannot make a temporary folder like " + tmpl);
  }
  path_ = tmpl;
}

TempDir::~TempDir() { Remove(); }

TempDir::TempDir(TempDir&& other) noexcept : path_(std::exchange(other.path_, {})) {}

TempDir& TempDir::operator=(TempDir&& other) noexcept {
  if (this != &other) {
    Remove();
    path_ = std::exchange(other.path_, {});
  }
  return *this;
}

void TempDir::Remove() {
  if (path_.empty()) return;
  RestorePermissions(path_);
  std::error_code ec;
  fs::remove_all(path_, ec);
  path_.clear();
}

std::string ReadFile(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

bool WriteFile(const fs::path& path, std::string_view bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  return static_cast<bool>(out);
}

}  // namespace tarno::test
