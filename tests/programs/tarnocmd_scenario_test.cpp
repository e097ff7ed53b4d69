// tarnocmd scenario: the scenarios dialog and the tag cleaning run from the command
// line on a project made by tarnocmd.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "store/database.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

class TarnocmdScenarioTest : public TarnocmdProject {
 protected:
  void SetUp() override {
    MakeProject("scen");
    for (const char* label : {"S1", "S2"}) {
      const std::string y = label == std::string("S1") ? "0" : "5";
      const RunResult r =
          Run({"add", project_, "linesink", "0", y, "10", y, "--set", std::string("Label=") + label,
               "--set", "chkScenario=true", "--set", "ScenResistance=riv", "--set",
               label == std::string("S1") ? "Resistance=3" : "Resistance=7", "--set",
               "StartingHead=10", "--set", "EndingHead=9"});
      ASSERT_EQ(r.status, 0) << r.err;
    }
  }
  double Resistance(const std::string& label) {
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw("select Resistance from LinesinkStrings where Label = ?1");
    st.Bind(1, label);
    EXPECT_TRUE(st.Step());
    return st.GetDouble(0);
  }
};

TEST_F(TarnocmdScenarioTest, ListSetAndApplyWorkAsTheDialog) {
  RunResult r = Run({"scenario", "list", project_});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "linesink\triv\t3\t0\n") << "one row, with the first string's values";
  EXPECT_EQ(Resistance("S2"), 7) << "listing changes nothing";

  r = Run({"scenario", "set", project_, "RIV", "--current", "2.5", "--default", "1"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "linesink\triv\t2.5\t1\n");
  EXPECT_EQ(Resistance("S1"), 2.5);
  EXPECT_EQ(Resistance("S2"), 2.5);

  r = Run({"scenario", "apply", project_, "defaults"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(Resistance("S1"), 1);
  EXPECT_EQ(Resistance("S2"), 1);
}

TEST_F(TarnocmdScenarioTest, AChangedValueRemovesTheSolutionAndAChangedDefaultDoesNot) {
  const std::vector<std::string> env = {"TARNO_PROGRAM_DIR=" TARNO_BIN_DIR};
  const std::string removed = "The solution of the old model was removed.";
  ASSERT_EQ(Run({"solve", project_}, env).status, 0);
  // S2's resistance of 7 goes to the row's 3 even though only the default is given.
  RunResult r = Run({"scenario", "set", project_, "riv", "--default", "9"}, env);
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find(removed), std::string::npos) << r.out;
  EXPECT_EQ(Resistance("S2"), 3);

  ASSERT_EQ(Run({"solve", project_}, env).status, 0);
  r = Run({"scenario", "set", project_, "riv", "--default", "8"}, env);
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out.find(removed), std::string::npos) << "the solver reads no default";
  r = Run({"scenario", "set", project_, "riv", "--current", "4"}, env);
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find(removed), std::string::npos) << r.out;
}

TEST_F(TarnocmdScenarioTest, BadTagsValuesAndUsageAreRefusedWithoutChange) {
  RunResult r = Run({"scenario", "set", project_, "ri-v", "--current", "1"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(
      r.err.find("Scenarios: Scenario tags may not include spaces or the characters - , or _."),
      std::string::npos)
      << r.err;
  r = Run({"scenario", "set", project_, "other", "--current", "1"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("under the tag \"other\""), std::string::npos) << r.err;
  r = Run({"scenario", "set", project_, "riv", "--current", "fast"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("\"fast\" is not a number"), std::string::npos) << r.err;
  EXPECT_EQ(Resistance("S1"), 3);
  EXPECT_EQ(Resistance("S2"), 7);

  EXPECT_EQ(Run({"scenario", "set", project_, "riv"}).status, 2);
  EXPECT_EQ(Run({"scenario", "apply", project_, "sideways"}).status, 2);
  EXPECT_EQ(Run({"scenario", "rename", project_}).status, 2);
  EXPECT_EQ(Run({"scenario", "list", (dir_ / "missing.trn").string()}).status, 1);
}

TEST_F(TarnocmdScenarioTest, CleanMendsTheTagsOfOlderFiles) {
  {
    Database db = Database::Open(project_);
    db.ExecuteRaw("update LinesinkStrings set ScenResistance = 'r-1,a' where Label = 'S1'");
    db.ExecuteRaw("update LinesinkStrings set ScenResistance = 'river bed' where Label = 'S2'");
  }
  const RunResult r = Run({"scenario", "clean", project_});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "2 scenario tags cleaned\n");
  EXPECT_NE(r.err.find("Spaces in Scenario names were removed."), std::string::npos) << r.err;
  const RunResult list = Run({"scenario", "list", project_});
  EXPECT_EQ(list.out, "linesink\tr_1a\t3\t0\nlinesink\triverbed\t7\t0\n");
}

}  // namespace
}  // namespace tarno::test
