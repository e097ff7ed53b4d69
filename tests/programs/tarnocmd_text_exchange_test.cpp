// tarnocmd export and import of the text element files: a round trip between two
// projects, the overwrite question answered by --yes, the well kind of an import,
// and the refusals of bad usage.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "program_test_util.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream out(path, std::ios::binary);
  out << text;
}

class TarnocmdTextExchange : public TarnocmdProject {
 protected:
  void SetUp() override {
    MakeProject("source");
    other_ = (dir_ / "target.trn").string();
    const RunResult r = Run({"new", other_, "--yes", "--base-name", "target"});
    ASSERT_EQ(r.status, 0) << r.err;
  }
  std::string Ok(const std::vector<std::string>& args) {
    const RunResult r = Run(args);
    EXPECT_EQ(r.status, 0) << r.err;
    return r.out;
  }
  std::string other_;
};

TEST_F(TarnocmdTextExchange, WellsAndTestPointsTravelBetweenProjects) {
  Ok({"model", project_, "AQBase=100", "AQThickness=35"});
  Ok({"model", other_, "AQBase=100", "AQThickness=35"});
  Ok({"add", project_, "well", "1000", "2000", "--set", "Label=PW1", "Head=500", "Radius=0.3"});
  Ok({"add", project_, "well", "1500", "2000", "--set", "Label=Pit", "HeadSpecified=1", "Head=120",
      "Radius=2"});
  Ok({"add", project_, "testpoint", "1200", "2100", "--set", "Label=MW1", "ObsHead=118.5"});
  const std::string wl = (dir_ / "pumping.wl").string();
  EXPECT_EQ(Ok({"export", project_, "wl", wl}),
            "Wells Written: 1 Discharge Specified Wells were written.\n");
  EXPECT_EQ(Ok({"export", project_, "wl", (dir_ / "pits.wl").string(), "head"}),
            "Wells Written: 1 Head Specified Wells were written.\n");
  Ok({"export", project_, "tp", (dir_ / "obs.tp").string()});

  EXPECT_EQ(Ok({"import", other_, wl}), "Import Complete: 1 wells were read in.\n");
  const RunResult head = Run({"import", other_, (dir_ / "pits.wl").string(), "--wells", "head"});
  EXPECT_EQ(head.status, 0) << head.err;
  EXPECT_NE(head.err.find("You selected to import pumping wells"), std::string::npos);
  Ok({"import", other_, (dir_ / "obs.tp").string()});
  const std::string list = Ok({"list", other_});
  EXPECT_NE(list.find("PW1"), std::string::npos) << list;
  EXPECT_NE(list.find("Pit"), std::string::npos) << list;
  EXPECT_NE(list.find("HeadSpecified=1"), std::string::npos) << list;
  EXPECT_NE(list.find("MW1"), std::string::npos) << list;
}

TEST_F(TarnocmdTextExchange, AnExistingFileIsReplacedOnlyWithYes) {
  Ok({"add", project_, "well", "1000", "2000", "--set", "Label=PW1"});
  const std::string wl = (dir_ / "w.wl").string();
  WriteFile(wl, "keep");
  const RunResult kept = Run({"export", project_, "wl", wl});
  EXPECT_EQ(kept.status, 1);
  EXPECT_NE(kept.err.find("Abort: Export canceled by user"), std::string::npos) << kept.err;
  EXPECT_EQ(ReadFile(wl), "keep");
  Ok({"export", project_, "wl", wl, "--yes"});
  EXPECT_NE(ReadFile(wl).find("PW1"), std::string::npos);
}

TEST_F(TarnocmdTextExchange, BadUsageAndBadFilesAreRefused) {
  EXPECT_EQ(Run({"export", project_, "tp", (dir_ / "x.tp").string(), "head"}).status, 2);
  EXPECT_EQ(Run({"export", project_, "wl", (dir_ / "x.wl").string(), "both"}).status, 2);
  EXPECT_EQ(Run({"import", project_, (dir_ / "x.wl").string(), "--wells", "both"}).status, 2);
  const RunResult none = Run({"export", project_, "tx", (dir_ / "x.tx").string()});
  EXPECT_EQ(none.status, 1);
  EXPECT_NE(none.out.find("No Labels: No Labels were found."), std::string::npos) << none.out;
  WriteFile((dir_ / "bad.inh").string(), "version 2\nnothing here\n");
  const RunResult bad = Run({"import", project_, (dir_ / "bad.inh").string()});
  EXPECT_EQ(bad.status, 1);
  EXPECT_NE(bad.err.find("Read Fail: The file: " + (dir_ / "bad.inh").string() +
                         " is not of the proper format"),
            std::string::npos)
      << bad.err;
  WriteFile((dir_ / "bad.wl").string(), "1,2,3,4,A\n1,2,x,4,B\n5,6,7,8,C\n");
  const RunResult stop = Run({"import", project_, (dir_ / "bad.wl").string(), "--no"});
  EXPECT_EQ(stop.status, 1);
  EXPECT_NE(stop.err.find("Error in import: Error in record 2 bad syntax 1,2,x,4,B"),
            std::string::npos)
      << stop.err;
  EXPECT_EQ(stop.out, "Import Complete: 1 wells were read in.\n");
}

}  // namespace
}  // namespace tarno::test
