// The import of a .par file: every place of a tag gets the value, the log lists them,
// and a bad file is reported by line with nothing imported.
#include <gtest/gtest.h>

#include "calibration/pest_import.h"
#include "pest_fixture.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

class ParImportTest : public PestProject {
 protected:
  void SetUp() override {
    PestProject::SetUp();
    BuildScenarios();
  }
  ParImportResult Import(const std::string& text, ScriptedUserInterface& ui) {
    Write(dir_ / "m.par", text);
    return ImportParFile(db_, dir_ / "m.par", ui, dir_ / kPestImportLog);
  }
  // Nothing of the project has changed.
  void ExpectUnchanged() {
    EXPECT_DOUBLE_EQ(ModelValue("AQHydCond"), 10);
    EXPECT_DOUBLE_EQ(ModelValue("AQBase"), -50);
    EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Inhomogeneity, "I1", "HydCond"), 5);
    EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Inhomogeneity, "I2", "Recharge"), -0.001);
    EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Linesink, "S1", "Resistance"), 2);
    EXPECT_FALSE(fs::exists(dir_ / kPestImportLog));
  }
  static constexpr const char* kGood =
      "single point\r\n"
      "kaq             12.5          1.0          0.0\r\n"
      "bot            -45.25         1.0          0.0\r\n"
      "kin           3.000000E+00    1.0          0.0\r\n"
      "rch1          1.0000E-04      1.0          0.0\r\n"
      "rch2         -2.0000E-03      1.0          0.0\r\n"
      "res           0.75            1.0          0.0\r\n";
};

TEST_F(ParImportTest, WritesEveryRowOfATagAndLogsEachPlace) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("PEST Parameters Imported",
                   {"Optimized Parameters listed in the TARNO2PEST.log, and currently shown, have been",
                    "imported in the project and have been made the Current Values. ",
                    "You may also view these values through 'Model->Implement Scenarios'"});
  const auto r = Import(kGood, ui);
  ui.Verify();
  EXPECT_TRUE(r.errors.empty());
  EXPECT_EQ(r.imported, 6);
  EXPECT_DOUBLE_EQ(ModelValue("AQHydCond"), 12.5);
  EXPECT_DOUBLE_EQ(ModelValue("AQBase"), -45.25);
  // Both inhomogeneities of the tag (spelled "kin" and "KIN") take the value; I3,
  // whose switch is off, keeps its own.
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Inhomogeneity, "I1", "HydCond"), 3);
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Inhomogeneity, "I2", "HydCond"), 3);
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Inhomogeneity, "I3", "HydCond"), 9);
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Inhomogeneity, "I1", "Recharge"), 1e-4);
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Inhomogeneity, "I2", "Recharge"), -2e-3);
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Linesink, "S1", "Resistance"), 0.75);
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::Linesink, "S2", "Resistance"), 4);
  // The vertices of the written elements stay where they were.
  EXPECT_EQ(FindByLabel(db_, ElementKind::Inhomogeneity, "I2")->vertices.size(), 4u);
  EXPECT_EQ(Read(dir_ / kPestImportLog),
            "The following are the optimized parameters read in from the PEST run:\r\n"
            "Model Aquifer Hydraulic Conductivity:             kaq = 12.5\r\n"
            "Model Aquifer Base Elevation:                     bot = -45.25\r\n"
            "Inhomogeneity Hydraulic Conductivity:             kin = 3.000000E+00\r\n"
            "Inhomogeneity Recharge:                           rch1 = 1.0000E-04\r\n"
            "Inhomogeneity Recharge:                           rch2 = -2.0000E-03\r\n"
            "Linesink Resistance:                              res = 0.75\r\n");
}

TEST_F(ParImportTest, MissingAndEmptyFilesAreTold) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("File Not Found",
                   {"Parameter File: " + (dir_ / "none").string() + ".par does not exist.",
                    "Cannot import PEST optimized parameter values."});
  ImportParFile(db_, dir_ / "none.par", ui, dir_ / kPestImportLog);
  ui.ExpectMessage("File Is Empty", {"Parameter File: " + (dir_ / "m").string() + ".par is empty."});
  Import("", ui);
  ui.Verify();
  ExpectUnchanged();
}

TEST_F(ParImportTest, AFileWithoutParameterLinesImportsNothing) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("No Parameters");
  const auto r = Import("single point\r\n\r\n", ui);
  ui.Verify();
  EXPECT_EQ(r.imported, 0);
  EXPECT_EQ(ui.Messages()[0].lines[2],
            "there were no Parameters in the " + (dir_ / "m").string() + ".par file.");
  ExpectUnchanged();
}

// Each fault of a file is named with its line; not one value is written.
struct BadPar {
  const char* what;
  const char* text;
  std::vector<std::string> errors;
};

class BadParImportTest : public ParImportTest, public ::testing::WithParamInterface<BadPar> {};

TEST_P(BadParImportTest, IsReportedByLineAndNothingIsImported) {
  const BadPar& bad = GetParam();
  ScriptedUserInterface ui;
  ui.Expect(UiCallKind::MessageBox).Title(kBadParFileTitle);
  const auto r = Import(bad.text, ui);
  ui.Verify();
  EXPECT_EQ(r.imported, 0);
  EXPECT_EQ(r.errors, bad.errors);
  const std::vector<std::string> lines = ui.Messages()[0].lines;
  EXPECT_EQ(lines.front(), "Parameter File: " + (dir_ / "m.par").string());
  EXPECT_EQ(lines.back(), "No Parameters were imported.");
  ExpectUnchanged();
}

INSTANTIATE_TEST_SUITE_P(
    Faults, BadParImportTest,
    ::testing::Values(
        BadPar{"unknown",
               "single point\nkaq 1 1 0\nbot 1 1 0\nkin 1 1 0\nrch1 1 1 0\nrch2 1 1 0\nres 1 1 0\n"
               "kzz 2 1 0\n",
               {"line 8: parameter \"kzz\" is no scenario of this project"}},
        BadPar{"missing",
               "single point\nkaq 1 1 0\nbot 1 1 0\nkin 1 1 0\nrch2 1 1 0\nres 1 1 0\n",
               {"parameter \"rch1\" of the project is missing"}},
        BadPar{"text in a number field",
               "single point\nkaq 1 1 0\nbot 1x 1 0\nkin 1 1 0\nrch1 1 1 0\nrch2 1 1 0\nres 1 one 0\n",
               {"line 3: \"1x\" is not a number (parameter \"bot\")",
                "line 7: \"one\" is not a number (parameter \"res\")"}},
        BadPar{"truncated",
               "single point\nkaq 1 1 0\nbot 1 1 0\nkin 1 1 0\nrch1 1 1 0\nrch2 1 1 0\nres 1.2",
               {"line 7: the line is cut short (2 of 4 fields: name, value, scale, offset): "
                "\"res 1.2\""}},
        BadPar{"too many fields",
               "single point\nkaq 1 1 0 9\nbot 1 1 0\nkin 1 1 0\nrch1 1 1 0\nrch2 1 1 0\nres 1 1 0\n",
               {"line 2: the line has 5 fields, not 4 (name, value, scale, offset): \"kaq 1 1 0 9\""}},
        BadPar{"twice",
               "single point\nkaq 1 1 0\nKAQ 2 1 0\nbot 1 1 0\nkin 1 1 0\nrch1 1 1 0\nrch2 1 1 0\n"
               "res 1 1 0\n",
               {"line 3: parameter \"KAQ\" is given again (first on line 2)"}}),
    [](const ::testing::TestParamInfo<BadPar>& info) {
      std::string name = info.param.what;
      for (char& c : name)
        if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
      return name;
    });

}  // namespace
}  // namespace tarno::testing
