// Replays the small fuzzing corpus through the command-language reader: every
// file reads without a crash, and what the reader returns points at real lines.

#include "engine/command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace fs = std::filesystem;
using namespace tarno::engine;

TEST(CommandCorpus, EveryFileReadsConsistently) {
  fs::path dir = fs::path(TARNO_TEST_DATA_DIR) / "fuzz-corpus";
  ASSERT_TRUE(fs::is_directory(dir)) << dir;
  int files = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path(), std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    std::string text = s.str();
    CommandFile f = parseCommandFile(text);
    ++files;
    const int lines = static_cast<int>(f.lines.size());
    // Lines read: those up to " stop", never more than the text holds.
    size_t breaks = static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
    EXPECT_LE(f.lines.size(), breaks + 1) << entry.path();
    for (const auto& p : f.problems) {
      EXPECT_GE(p.line, 0) << entry.path();
      EXPECT_LE(p.line, lines + 1) << entry.path();
      EXPECT_FALSE(p.message.empty()) << entry.path();
    }
    for (const auto& st : f.steps) EXPECT_LE(st.line, lines + 1) << entry.path();
    if (f.fatal) {
      EXPECT_GE(f.fatal->line, 1) << entry.path();
      EXPECT_LE(f.fatal->line, lines) << entry.path();
      EXPECT_NE(f.fatal->message.find("parameter field"), std::string::npos) << entry.path();
    }
    // Reading is deterministic.
    CommandFile again = parseCommandFile(text);
    EXPECT_EQ(again.steps.size(), f.steps.size()) << entry.path();
    EXPECT_EQ(again.problems.size(), f.problems.size()) << entry.path();
  }
  EXPECT_GE(files, 5);
}
