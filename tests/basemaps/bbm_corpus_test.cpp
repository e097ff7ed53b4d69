// Replays the fuzzing corpus of the BBM reader (tests/basemaps/data/bbm_corpus,
// kept small; fuzz/run bbm grows it): every file connects or fails with an Error,
// and every connected map draws at the three DLG levels without anything but an
// Error. The well-formed seeds must connect and draw something.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "basemaps/bbm.h"
#include "display/canvas.h"
#include "display/vgraph.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

// A port that lets every box pass: the corpus holds broken files on purpose.
class PassingUi : public ScriptedUserInterface {
 public:
  Answer MessageBox(const std::string&, const std::vector<std::string>&, Buttons, Icon) override {
    ++boxes;
    return Answer::OK;
  }
  int boxes = 0;
};

TEST(BbmCorpus, EveryFileReadsOrFailsCleanly) {
  const fs::path dir = fs::path(TARNO_TEST_DATA_DIR) / "bbm_corpus";
  ASSERT_TRUE(fs::is_directory(dir));
  const std::set<std::string> wellFormed = {"dlg.bbm",          "simple.bbm",   "coloured.bbm",
                                            "unattributed.bbm", "commands.bbm", "endmark.bbm"};
  int files = 0;
  for (const auto& entry : fs::directory_iterator(dir)) {
    ++files;
    const std::string name = entry.path().filename().string();
    SCOPED_TRACE(name);
    PassingUi ui;
    BBMap map(&ui);
    try {
      map.Connect(entry.path().string());
    } catch (const Error&) {
      EXPECT_FALSE(map.Connected());
      EXPECT_EQ(wellFormed.count(name), 0u) << "a well-formed seed failed to connect";
      continue;
    }
    if (!map.Connected()) continue;
    std::size_t drawn = 0;
    for (const double width : {40.0, 10000.0, 16000.0}) {
      RecordingCanvas canvas(400, 400);
      VGraphGDI g(&ui);
      WorldWindow w{-width / 4, width * 3 / 4, width * 3 / 4, -width / 4};
      ASSERT_EQ(g.vgGDIInitObject(canvas, w, false, 10.0), 0);
      map.SetDrawOptions({true, width > 10000});
      try {
        map.Draw(g, true, true, true);
        map.DrawGroup(g, 50, 412, 255);
      } catch (const Error&) {}
      drawn += canvas.Ops().size();
    }
    if (wellFormed.count(name) != 0) {
      EXPECT_GT(drawn, 0u);
    }
  }
  EXPECT_GE(files, static_cast<int>(wellFormed.size()));
}

}  // namespace
}  // namespace tarno::testing
