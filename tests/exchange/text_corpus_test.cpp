// The seeds of the text readers' fuzz target (data/text-corpus) replayed through the
// target's own checks, here throwing instead of aborting: every file reads without a
// failure other than the readers' Error, and what is read writes back the same.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#define TEXT_FUZZ_FAIL(what) throw std::logic_error(what)
#include "../../fuzz/text_fuzz.cpp"

namespace {

TEST(TextCorpusTest, EverySeedPassesTheChecksOfTheFuzzTarget) {
  const std::filesystem::path dir = std::filesystem::path(TARNO_TEST_DATA_DIR) / "text-corpus";
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    SCOPED_TRACE(entry.path().filename().string());
    EXPECT_NO_THROW(CheckTextReaders(bytes.str()));
    ++files;
  }
  EXPECT_GE(files, 10);
}

}  // namespace
