// tarnocmd add, set, delete, list and model on a scratch project, run as a script
// runs them: what they print, their refusals with the exact texts on standard error
// and the project file left as it was, the solution removed when the model changes,
// and the example script that builds and solves a model with them alone.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>
#include <vector>

#include "program_test_util.h"
#include "store/database.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

const char* const kUsageLine = "Run \"tarnocmd help\" for the usage.\n";

class TarnocmdElements : public TarnocmdProject {
 protected:
  void SetUp() override { MakeProject("elems"); }

  std::string FileBytes() const { return ReadFile(project_); }

  // Runs a command that must succeed; gives its standard output.
  std::string Ok(const std::vector<std::string>& args) {
    const RunResult r = Run(args);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.err, "");
    return r.out;
  }

  // Runs a command that must be refused with `status` and exactly `err`, and
  // leave the project file as it was.
  void Refused(const std::vector<std::string>& args, int status, const std::string& err) {
    const std::string before = FileBytes();
    const RunResult r = Run(args);
    EXPECT_EQ(r.status, status);
    EXPECT_EQ(r.err, err);
    EXPECT_EQ(r.out, "");
    EXPECT_TRUE(FileBytes() == before) << "a refused command wrote to the project";
  }

  std::int64_t Count(const std::string& table) {
    Database db = Database::OpenReadOnly(project_);
    Statement st = db.PrepareRaw("select count(*) from " + table);
    st.Step();
    return st.GetInt64(0);
  }
};

TEST_F(TarnocmdElements, AddListSetAndDeleteRoundTrip) {
  EXPECT_EQ(
      Ok({"add", project_, "well", "100", "200", "--set", "Label=PW1", "Head=500", "Radius=0.3"}),
      "Added well PW1\n");
  EXPECT_EQ(
      Ok({"add", project_, "linesink", "0", "0", "-50.5", "100", "0", "200", "--set", "label=River",
          "--set", "HeadSpecified=yes", "StartingHead=20", "EndingHead=18", "Resistance=1"}),
      "Added linesink River\n");
  EXPECT_EQ(Ok({"add", project_, "testpoint", "150", "150", "--set", "Label=MW1", "ObsHead=19.5"}),
            "Added testpoint MW1\n");
  const std::string particle = Ok({"add", project_, "particle", "90", "190", "--set", "Forward=0"});
  std::smatch m;
  ASSERT_TRUE(std::regex_match(particle, m, std::regex("Added particle (particle:[0-9]+)\n")))
      << particle;
  const std::string particleAddress = m[1];
  EXPECT_EQ(Ok({"add", project_, "text", "5", "6", "--set", "Text=Town Hall"}),
            "Added text Town Hall\n");
  EXPECT_EQ(Ok({"add", project_, "uniflow", "0", "0", "--set", "Head=20", "Gradient=0.001"}),
            "Added uniflow uniflow\n");

  EXPECT_EQ(Ok({"list", project_}),
            "well\tPW1\t1\tX=100 Y=200 HeadSpecified=0 Head=500 Radius=0.3 Pond=0 PPWell=0 "
            "Transient=0\n"
            "linesink\tRiver\t3\tHeadSpecified=1 StartingHead=20 EndingHead=18 Resistance=1 "
            "Width=0 Depth=0 Drain=0 Gallery=0 Farfield=0 Routing=0\n"
            "testpoint\tMW1\t1\tX=150 Y=150 Type=Piezometer ObsHead=19.5 ObsStreamFlow=0\n"
            "particle\t" +
                particleAddress +
                "\t1\tX=90 Y=190 Forward=0 SatdThick=1 Elevation=0\n"
                "text\tTown Hall\t0\tX=5 Y=6 FontSize=10\n"
                "uniflow\tuniflow\t1\tUNIFLOWRefX=0 UNIFLOWRefY=0 UNIFLOWRefHead=20 "
                "UNIFLOWGradient=0.001 UNIFLOWOrientation=0\n");

  EXPECT_EQ(Ok({"set", project_, "pw1", "Head=750", "Label=PW2"}), "Changed well PW2\n");
  EXPECT_EQ(Ok({"set", project_, particleAddress, "Elevation=3"}),
            "Changed particle " + particleAddress + "\n");
  EXPECT_EQ(Ok({"list", project_, "WELL"}),
            "well\tPW2\t1\tX=100 Y=200 HeadSpecified=0 Head=750 Radius=0.3 Pond=0 PPWell=0 "
            "Transient=0\n");

  EXPECT_EQ(Ok({"delete", project_, "River"}), "Deleted linesink River\n");
  EXPECT_EQ(Ok({"delete", project_, "Town Hall"}), "Deleted text Town Hall\n");
  EXPECT_EQ(Ok({"delete", project_, "uniflow"}), "Deleted uniflow uniflow\n");
  EXPECT_EQ(Ok({"list", project_, "linesink"}), "");
  EXPECT_EQ(Count("Polygons"), 0);
  // The well, the test point and the particle keep one vertex each.
  EXPECT_EQ(Count("Vertices"), 3);
}

TEST_F(TarnocmdElements, LabelsSharedByKindsAreNamedWithTheKind) {
  Ok({"add", project_, "well", "0", "0", "--set", "Label=P1"});
  Ok({"add", project_, "testpoint", "1", "1", "--set", "Label=P1"});
  Refused({"delete", project_, "p1"}, 1,
          "Ambiguous Label: The label 'p1' names elements of more than one kind: well, "
          "testpoint.\n"
          "Ambiguous Label: Name the kind with the label, as in well:p1.\n");
  EXPECT_EQ(Ok({"list", project_, "testpoint"}),
            "testpoint\ttestpoint:P1\t1\tX=1 Y=1 Type=Piezometer ObsHead=0 ObsStreamFlow=0\n");
  EXPECT_EQ(Ok({"delete", project_, "testpoint:P1"}), "Deleted testpoint testpoint:P1\n");
  EXPECT_EQ(Ok({"list", project_}),
            "well\tP1\t1\tX=0 Y=0 HeadSpecified=0 Head=0 Radius=1 Pond=0 PPWell=0 Transient=0\n");
}

TEST_F(TarnocmdElements, IncompleteElementsAreNamedAndLeftOut) {
  Ok({"add", project_, "well", "0", "0", "--set", "Label=Lost"});
  Ok({"add", project_, "well", "9", "9", "--set", "Label=Kept"});
  Ok({"add", project_, "barrier", "0", "0", "5", "5", "--set", "Label=Bare"});
  {
    // A file damaged elsewhere: the well's vertex and the barrier's vertices gone.
    Database db = Database::Open(project_);
    db.ExecuteRaw(
        "delete from Vertices where X = 0 and Y = 0 and PID = -1;"
        "delete from Vertices where PID in (select PID from NoFlowStrings);");
  }
  const RunResult r = Run({"list", project_});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out,
            "well\tKept\t1\tX=9 Y=9 HeadSpecified=0 Head=0 Radius=1 Pond=0 PPWell=0 Transient=0\n");
  EXPECT_EQ(r.err,
            "tarnocmd: Well 'Lost' has no vertex; left out\n"
            "tarnocmd: Barrier 'Bare' has no vertices; left out\n");
}

TEST_F(TarnocmdElements, RefusedElementsPrintTheMessageAndWriteNothing) {
  Ok({"add", project_, "well", "0", "0", "--set", "Label=PW1"});
  Refused({"add", project_, "well", "5", "5", "--set", "Label=PW1"}, 1,
          "Duplicate Label: Well Label ('PW1') already exists!\n"
          "Duplicate Label: Please enter a new label.\n");
  Refused({"add", project_, "well", "5", "5", "--set", "Label=PW2", "Depth=3"}, 1,
          "Unknown Field: 'Depth=3': Wells has no field 'Depth'.\n"
          "Unknown Field: The fields are: Head, Radius, NParticles, Label, Setback, Transient, "
          "Cyclic, Cycles, SS, Time, TopElev, BottomElev, HeadSpecified, PPWell, StartHead, "
          "StartElev, Pond.\n");
  Refused({"add", project_, "well", "5", "5", "--set", "Label=PW2", "Radius=0,3"}, 1,
          "Invalid Entry: 'Radius=0,3': '0,3' is not a valid value for Radius (a number).\n"
          "Invalid Entry: Please enter a new value.\n");
  Refused({"add", project_, "inhomogeneity", "0", "0", "10", "0", "--set", "Label=Z"}, 1,
          "Wrong Number of Vertices: An inhomogeneity needs at least 3 vertices; 2 were given.\n");
  Refused({"add", project_, "testpoint", "0", "0", "10", "0"}, 1,
          "Wrong Number of Vertices: A test point is placed at one point (x y); 2 were given.\n");
  Refused({"set", project_, "PW9", "Head=1"}, 1,
          "No Such Element: No element is labelled 'PW9'.\n");
  Refused({"set", project_, "PW1", "Head=x"}, 1,
          "Invalid Entry: 'Head=x': 'x' is not a valid value for Head (a number).\n"
          "Invalid Entry: Please enter a new value.\n");
  Refused({"delete", project_, "particle:77"}, 1, "No Such Element: There is no particle 77.\n");
}

// One check of each kind's dialog, refused through tarnocmd with the dialog's
// message: the command line runs the dialogs' OK.
TEST_F(TarnocmdElements, EveryKindIsCheckedByItsDialog) {
  struct Case {
    std::vector<std::string> args;  // after "add <project>"
    std::string err;
  };
  const std::vector<std::string> square = {"0", "0", "10", "0", "10", "10"};
  auto with = [](std::vector<std::string> a, const std::vector<std::string>& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
  };
  const std::vector<Case> cases = {
      {{"well", "0", "0", "--set", "Label=W", "Radius=0"},
       "Bad Entry: Radius must be greater than 0.\nBad Entry: Please enter a new value.\n"},
      {{"linesink", "0", "0", "10", "0", "--set", "Label=L", "Drain=1", "Resistance=0"},
       "Bad Entry: Linesinks specified as drains must have resistance\n"},
      {{"barrier", "0", "0", "10", "0", "--set", "Label=B", "Porosity=1.5"},
       "Bad Entry: Porosity must be greater than 0 and less than or equal to 1.\n"
       "Bad Entry: Please enter a new value.\n"},
      {with({"inhomogeneity"}, with(square, {"--set", "Label=I", "HydCond=-1"})),
       "Bad Entry: Hydraulic Conductivity cannot be negative.\n"
       "Bad Entry: Please enter a positive value.\n"},
      {with({"lake"}, with(square, {"--set", "Label=K", "StageTableFilename=stagetable.txt"})),
       "Bad Entry: Filename must be no more than 12 characters including the dos extension, "
       "with no spaces\n"},
      {{"testpoint", "0", "0", "--set", "Label=ObservationWell2000XY"},
       "Invalid Label: Test Point label cannot contain spaces or commas, be blank, or be larger "
       "than 20 characters.\nInvalid Label: Please enter a new label\n"},
      {{"particle", "0", "0", "--set", "Forward=2"},
       "Tracing Direction: Please choose a tracing direction.\n"},
      {{"fluxline", "0", "0", "10", "0", "--set", "Label="},
       "Data Missing: Label must be specified. \n"},
      {with({"capzone"}, with(square, {"--set", "Label="})),
       "Data Missing: Label must be specified. \n"},
      {with({"domain"}, with(square, {"--set", "Label="})),
       "Data Missing: Label must be specified. \n"},
      {{"text", "0", "0", "--set", "Text=Mill", "FontSize=0"},
       "Invalid Entry: The font size must be a whole number of points from 1 to 32767.\n"
       "Invalid Entry: Please re-enter\n"},
      {{"uniflow", "0", "0", "--set", "Head=-5"},
       "Bad Entry: Specified Reference Head is below aquifer base of 0.\n"
       "Bad Entry: Press Ok to re-enter Reference Head.\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.args.front());
    Refused(with({"add", project_}, c.args), 1, c.err);
  }
  // A change is checked as the dialog's OK checks it, after its other fields.
  Ok({"add", project_, "uniflow", "0", "0", "--set", "Head=10"});
  Refused({"set", project_, "uniflow", "Orientation=181"}, 1,
          "Bad Entry: Orientation must be between -180 and 180 degrees.\n"
          "Bad Entry: Press Ok to re-enter Orientation.\n");
  EXPECT_EQ(Ok({"set", project_, "uniflow", "Orientation=180"}), "Changed uniflow uniflow\n");
}

TEST_F(TarnocmdElements, BadUsageExitsWithTwo) {
  Refused({"add", project_, "pump", "0", "0"}, 2,
          std::string("tarnocmd: unknown element kind \"pump\" (one of well, linesink, barrier, "
                      "inhomogeneity, lake, testpoint, particle, fluxline, capzone, domain, text, "
                      "uniflow)\n") +
              kUsageLine);
  Refused({"add", project_, "well", "0"}, 2,
          std::string("tarnocmd: add needs coordinates in pairs <x> <y>; 1 number was given\n") +
              kUsageLine);
  Refused({"add", project_, "well", "0", "1e", "--set", "Label=W"}, 2,
          std::string("tarnocmd: \"1e\" is not a coordinate\n") + kUsageLine);
  Refused({"add", project_, "well", "0", "0", "Label=W"}, 2,
          std::string("tarnocmd: FIELD=VALUE texts follow --set (\"Label=W\")\n") + kUsageLine);
  Refused({"add", project_, "well", "0", "0", "--set"}, 2,
          std::string("tarnocmd: --set needs FIELD=VALUE\n") + kUsageLine);
  Refused({"set", project_, "PW1"}, 2,
          std::string("tarnocmd: set needs at least one FIELD=VALUE\n") + kUsageLine);
  Refused({"delete", project_}, 2,
          std::string("tarnocmd: delete takes a project and one label\n") + kUsageLine);
  Refused({"list", project_, "pumps"}, 2,
          std::string("tarnocmd: unknown element kind \"pumps\" (one of well, linesink, barrier, "
                      "inhomogeneity, lake, testpoint, particle, fluxline, capzone, domain, text, "
                      "uniflow)\n") +
              kUsageLine);
  // Not a project: nothing is made at the path.
  const RunResult r = Run({"add", (dir_ / "none.trn").string(), "well", "0", "0"});
  EXPECT_EQ(r.status, 1);
  EXPECT_FALSE(fs::exists(dir_ / "none.trn"));
}

TEST_F(TarnocmdElements, ModelSettingsAreCheckedAsTheDialogChecksThem) {
  const std::string before = Ok({"model", project_});
  EXPECT_TRUE(Contains(before, "AQHydCond=1\n")) << before;
  EXPECT_TRUE(
      Contains(before, "CONTOURShow=1\nCONTOURMinimum=0\nCONTOURMaximum=1\nCONTOURInterval=1\n"))
      << before;
  Refused({"model", project_, "AQThickness=20", "AQHydCond=0"}, 1,
          "Bad Entry: Hydraulic Conductivity must be greater than 0.\n"
          "Bad Entry: Please enter a positive value.\n");
  Refused({"model", project_, "AQPorosity=1.5"}, 1,
          "Bad Entry: Porosity must be greater than 0 and less than or equal to 1.\n"
          "Bad Entry: Please enter a new value.\n");
  Refused({"model", project_, "WINDOWX1=5"}, 1,
          "Unknown Field: 'WINDOWX1=5': the model settings have no field 'WINDOWX1'.\n"
          "Unknown Field: The fields are: AQBase, AQThickness, AQHydCond, AQRecharge, AQPorosity, "
          "AddASaltWaterInterface, FreshWSpecGravity, SaltWSpecGravity, LocalSeaLevel, "
          "CONTOURShow, CONTOURMinimum, CONTOURMaximum, CONTOURInterval, NumberStreamLines, "
          "CONTOURLevel, TRACECompute, TRACEMaxTime, TRACEStep, SOLVERIterations, "
          "OuterIterationsFlag, OuterIterations, FastSolution, ViewErrorLog, ViewMessageLog, "
          "StoreMatrixOnDisk, SOLVERConjunctive, chkScenarioHydCond, chkScenarioBaseElev, "
          "ScenHydCond, ScenBaseElev.\n");
  Refused({"model", project_, "CONTOURShow=7"}, 1,
          "Invalid Entry: 'CONTOURShow=7': '7' is not a valid value for CONTOURShow (1 to 6 for "
          "the contours computed, -6 to -1 for none computed).\n"
          "Invalid Entry: Please enter a new value.\n");
  Refused({"model", project_, "NumberStreamLines=12"}, 1,
          "Invalid Entry: 'NumberStreamLines=12': stream lines are counted only while the "
          "contours show\n"
          "Invalid Entry: the stream function (CONTOURShow 5 or -5).\n");
  Refused({"model", project_, "AQHydCond=2,5"}, 1,
          "Invalid Entry: 'AQHydCond=2,5': '2,5' is not a valid value for AQHydCond (a number).\n"
          "Invalid Entry: Please enter a new value.\n");
  Refused({"model", project_, "AQBase=low"}, 1,
          "Invalid Entry: 'AQBase=low': 'low' is not a valid value for AQBase (a number).\n"
          "Invalid Entry: Please enter a new value.\n");

  // The stream function takes the number of stream lines, whatever the order.
  const std::string after = Ok({"model", project_, "NumberStreamLines=12", "contourshow=-5",
                                "AQThickness=25", "chkScenarioHydCond=yes", "ScenHydCond=K1"});
  EXPECT_TRUE(Contains(after, "AQThickness=25\n")) << after;
  EXPECT_TRUE(Contains(after, "CONTOURShow=-5\n")) << after;
  EXPECT_TRUE(Contains(after, "NumberStreamLines=12\n")) << after;
  EXPECT_FALSE(Contains(after, "CONTOURInterval=")) << after;
  EXPECT_TRUE(Contains(after, "chkScenarioHydCond=1\n")) << after;
  EXPECT_TRUE(Contains(after, "ScenHydCond=K1\n")) << after;
  Database db = Database::OpenReadOnly(project_);
  Statement st = db.PrepareRaw("select AQThickness, CONTOURShow, NumberStreamLines from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetText(0), "25");
  EXPECT_EQ(st.GetInt64(1), -5);
  EXPECT_EQ(st.GetInt64(2), 12);
}

TEST_F(TarnocmdElements, AChangedModelRemovesTheSolution) {
  Ok({"model", project_, "AQBase=0", "AQThickness=20", "AQHydCond=10", "CONTOURShow=-1",
      "TRACECompute=no"});
  Ok({"add", project_, "uniflow", "500", "0", "--set", "Head=15"});
  Ok({"add", project_, "well", "0", "0", "--set", "Label=PW1", "Head=100", "Radius=0.2"});
  const RunResult solve = Run({"solve", project_});
  ASSERT_EQ(solve.status, 0) << solve.err;
  ASSERT_TRUE(fs::exists(dir_ / "elems.SOL"));
  ASSERT_EQ(Count("WLResults"), 1);

  // Observations and a new name leave the solution of the same flow.
  EXPECT_EQ(Ok({"add", project_, "testpoint", "50", "0", "--set", "Label=MW1"}),
            "Added testpoint MW1\n");
  EXPECT_EQ(Ok({"set", project_, "PW1", "Label=Town"}), "Changed well Town\n");
  EXPECT_TRUE(fs::exists(dir_ / "elems.SOL"));
  // A new rate is another model.
  EXPECT_EQ(Ok({"set", project_, "Town", "Head=150"}),
            "Changed well Town\nThe solution of the old model was removed.\n");
  EXPECT_FALSE(fs::exists(dir_ / "elems.SOL"));
  EXPECT_EQ(Count("WLResults"), 0);
}

// examples/build-model.sh builds a model from `tarnocmd new`, solves it and prints
// the heads at its well and its test point.
TEST_F(TarnocmdElements, TheExampleScriptBuildsSolvesAndPrintsHeads) {
  const fs::path script = fs::path(TARNO_SOURCE_DIR) / "examples" / "build-model.sh";
  const fs::path scratch = dir_ / "scratch";
  const RunResult r = RunExecutable(script, {TARNO_BIN_DIR, scratch.string()});
  const std::string& out = r.out;
  ASSERT_EQ(r.status, 0) << r.out << r.err;
  EXPECT_EQ(r.err, "");
  const std::string number = "(-?[0-9]+(\\.[0-9]+)?(E[-+][0-9]+)?)";
  std::smatch m;
  EXPECT_TRUE(
      std::regex_search(out, m, std::regex("Heads at the wells:\nTownWell Head=" + number + "\n")))
      << out;
  EXPECT_TRUE(std::regex_search(
      out, m,
      std::regex("Heads at the test points:\nMW1 ObsHead=19.4 ModelHead=" + number +
                 " Difference=" + number + "\n")))
      << out;
  // Every kind the script adds is in the project.
  for (const char* kind :
       {"well\tTownWell", "linesink\tWestRiver", "linesink\tEastDrain", "barrier\tClayWall",
        "inhomogeneity\tUpland", "testpoint\tMW1", "particle\tparticle:", "uniflow\tuniflow"})
    EXPECT_TRUE(Contains(out, std::string("\n") + kind)) << kind;
}

}  // namespace
}  // namespace tarno::test
