// tarnocmd pest and import-par: the files written for a project built with the
// element commands, and a parameter file imported, refused whole when faulty.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

class TarnocmdPestTest : public TarnocmdProject {
 protected:
  void SetUp() override {
    MakeProject("est");
    ASSERT_EQ(Run({"model", project_, "chkScenarioHydCond=1", "ScenHydCond=kaq"}).status, 0);
    const RunResult r = Run({"add", project_, "linesink", "0", "0", "100", "0", "--set", "Label=R",
                             "HeadSpecified=1", "StartingHead=10", "EndingHead=10", "Resistance=2",
                             "chkScenario=1", "ScenResistance=res"});
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(Run({"add", project_, "testpoint", "50", "50", "--set", "Label=P1", "ObsHead=9"}).status,
              0);
  }
  static std::string Read(const fs::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  void WritePar(const std::string& text) {
    std::ofstream(dir_ / "est.par", std::ios::binary) << text;
  }
};

TEST_F(TarnocmdPestTest, WritesTheFilesAndPrintsTheirPaths) {
  const RunResult r = Run({"pest", project_});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, (dir_ / "est.tpl").string() + "\n" + (dir_ / "est.ins").string() + "\n" +
                       (dir_ / "est.pst").string() + "\n" + (dir_ / "T-PEST.bat").string() + "\n" +
                       (dir_ / "T-PEST.sh").string() + "\n");
  const std::string pst = Read(dir_ / "est.pst");
  EXPECT_NE(pst.find("\r\n2 1 2 0 1\r\n"), std::string::npos) << pst;
  EXPECT_NE(pst.find("\r\nP1 9\t1.000000 Head\r\n"), std::string::npos) << pst;
  EXPECT_NE(Read(dir_ / "est.tpl").find(" resistance ! res          ! "), std::string::npos);
  EXPECT_NE(Read(dir_ / "T-PEST.sh").find("/tarno1 "), std::string::npos);
}

TEST_F(TarnocmdPestTest, AProjectWithoutScenariosWritesNothing) {
  ASSERT_EQ(Run({"model", project_, "chkScenarioHydCond=0"}).status, 0);
  ASSERT_EQ(Run({"set", project_, "R", "chkScenario=0"}).status, 0);
  const RunResult r = Run({"pest", project_});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("There are no Scenarios in this project!"), std::string::npos) << r.err;
  EXPECT_FALSE(fs::exists(dir_ / "est.pst"));
}

TEST_F(TarnocmdPestTest, ImportsAParameterFileAndRefusesAFaultyOneWhole) {
  WritePar("single point\nkaq 12.5 1 0\nres 0.5 1 0\n");
  RunResult r = Run({"import-par", project_, (dir_ / "est.par").string()});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            "Model Aquifer Hydraulic Conductivity:             kaq = 12.5\n"
            "Linesink Resistance:                              res = 0.5\n");
  EXPECT_TRUE(fs::exists(dir_ / "PEST2TARNO.log"));
  EXPECT_NE(Run({"list", project_, "linesink"}).out.find("Resistance=0.5"), std::string::npos);

  WritePar("single point\nkaq 99 1 0\nres 7 one 0\n");
  r = Run({"import-par", project_, (dir_ / "est.par").string()});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("line 3: \"one\" is not a number (parameter \"res\")"), std::string::npos)
      << r.err;
  EXPECT_NE(Run({"list", project_, "linesink"}).out.find("Resistance=0.5"), std::string::npos)
      << "a faulty file changes nothing";
}

TEST_F(TarnocmdPestTest, BadUsage) {
  EXPECT_EQ(Run({"pest"}).status, 2);
  EXPECT_EQ(Run({"import-par", project_}).status, 2);
}

}  // namespace
}  // namespace tarno::test
