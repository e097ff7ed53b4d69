// The solver program run end to end on small command files in a temporary
// directory: logs, extract file, save and load, the once-per-kind report of
// input this version does not compute, and the fatal paths with TARNO.OPS.

#include <gtest/gtest.h>

#include "core/solver_files.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

using tarno::test::TempDir;

void writeLines(const fs::path& p, const std::vector<std::string>& lines, const char* eol = "\r\n") {
  std::ofstream f(p, std::ios::binary);
  for (const auto& l : lines) f << l << eol;
}

std::string readAll(const fs::path& p) {
  std::ifstream f(p, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

std::vector<std::string> readLines(const fs::path& p) {
  std::vector<std::string> out;
  std::ifstream f(p, std::ios::binary);
  std::string l;
  while (std::getline(f, l)) out.push_back(l);
  return out;
}

// Runs the program in `dir`; returns its exit status.
int runTarno1(const fs::path& dir, const std::string& args) {
  std::vector<std::string> words;
  std::istringstream in(args);
  for (std::string word; in >> word;) words.push_back(word);
  tarno::test::RunOptions options;
  options.cwd = dir;
  return tarno::test::RunProgram("tarno1", words, options).status;
}

const std::vector<std::string> kHeader = {"* Written by TARNO for Windows 2.2.4", " error error.log", " yes",
                                          " message message.log", " yes", " echo echo.log", " yes", " picture off",
                                          " quit", " ", " bfname  demo"};

std::vector<std::string> with(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// An unconfined aquifer (base 0, thickness 50, heads near 10, k = 10) with a
// long straight river along x = 0 at head 10, from y = -100 km to 100 km in
// segments of 250 m near the well growing to 50 km far from it, a far reference
// point, and a well pumping 500 at (200, 0).
std::vector<std::string> wellAndRiver() {
  std::vector<std::string> m = {" modelorigin 0 0 2", " title well and river", " aquifer", " base .0000E+00",
                                " permeability .1000000E+02", " thickness .5000000E+02", " porosity .2500000E+00",
                                " reference    -.2000000E+06 .0000000E+00 .1000000E+02 ", " quit ", " well ",
                                " discharge ", "  2.000000E+02 0.000000E+00 5.00000E+02 1.00000E-01 WL_000001",
                                " quit ", " linesink ", " head ", " resistance 0", " width .000000E+00  0",
                                " depth .000000E+00 "};
  std::vector<double> ys = {-100000, -50000, -20000, -10000, -5000};
  for (int i = 1; i <= 40; ++i) ys.push_back(-5000.0 + 250.0 * i);
  for (double y : {10000.0, 20000.0, 50000.0, 100000.0}) ys.push_back(y);
  for (size_t i = 0; i + 1 < ys.size(); ++i) {
    char buf[160];
    std::snprintf(buf, sizeof buf, "  .0000000E+00 %.7E .0000000E+00 %.7E .1000000E+02 LS_000002_%04d", ys[i],
                  ys[i + 1], static_cast<int>(i + 2) * 100);
    m.push_back(buf);
  }
  m.push_back(" quit ");
  return m;
}

const std::vector<std::string> kSolveAndExtract = {
    " layout ", " window -1000.00 -1000.00 1000.00 1000.00 ", " quit ", " time 0", " solve 3 3 0 1", " ",
    " save demo", "y", " time          0", " extract", " file demo", " y", "  100.00 0.00 TP_000003",
    "  400.00 0.00 TP_000004", "  gage 10.00 20.00 TG_000005", "  lake_stage 100.00 0.00 TS_000006",
    " well discharge", " well head", " linesink discharge", " linesink head", " inhomogeneity", " flux FL_000007",
    "  150.00 -50.00", "  250.00 -50.00", "  250.00 50.00", "  150.00 50.00", "  150.00 -50.00", " quit", " quit",
    " stop"};

// Head from columns 123-136 of the record whose label ends the line.
double headOf(const std::vector<std::string>& xtr, const std::string& label) {
  for (const auto& l : xtr) {
    std::string line = l;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.size() > 136 && line[0] == '@' && line.ends_with(label)) return std::strtod(line.substr(122, 14).c_str(), nullptr);
  }
  ADD_FAILURE() << "no record for " << label;
  return 0;
}

std::vector<std::string> recordAfter(const std::vector<std::string>& xtr, const std::string& head) {
  for (size_t i = 0; i + 1 < xtr.size(); ++i)
    if (xtr[i] == head) {
      std::vector<std::string> fields;
      std::stringstream s(xtr[i + 1]);
      std::string f;
      while (std::getline(s, f, ',')) fields.push_back(f);
      return fields;
    }
  return {};
}

}  // namespace

TEST(ProgramRun, WellAndRiverEndToEnd) {
  TempDir dir;
  auto file = with(with(kHeader, wellAndRiver()), kSolveAndExtract);
  writeLines(dir.Path() / "DEMO.DAT", file);
  // A report left by an earlier failed run is not this run's.
  writeLines(dir.Path() / "TARNO.OPS", {"old"});
  ASSERT_EQ(runTarno1(dir.Path(), "61 demo"), 0);
  EXPECT_FALSE(fs::exists(dir.Path() / "TARNO.OPS"));
  EXPECT_EQ(readAll(dir.Path() / "error.log"), "*\n");
  ASSERT_TRUE(fs::exists(dir.Path() / "demo.SOL"));
  ASSERT_TRUE(fs::exists(dir.Path() / "demo.XTR"));

  auto echo = readLines(dir.Path() / "echo.log");
  ASSERT_EQ(echo.size(), file.size());
  EXPECT_NE(echo[12].find("13"), std::string::npos);
  EXPECT_NE(echo[12].find(file[12]), std::string::npos);
  std::string message = readAll(dir.Path() / "message.log");
  EXPECT_NE(message.find("DEMO.DAT"), std::string::npos);
  EXPECT_NE(message.find("demo.XTR"), std::string::npos);
  EXPECT_NE(message.find("demo.SOL"), std::string::npos);

  auto xtr = readLines(dir.Path() / "demo.XTR");
  ASSERT_FALSE(xtr.empty());
  EXPECT_EQ(xtr[0], "* data points");
  // Drawdown: the head falls from the river towards the well and rises beyond it.
  double hNear = headOf(xtr, "TP_000003"), hFar = headOf(xtr, "TP_000004");
  EXPECT_LT(hNear, 10.0);
  EXPECT_GT(hNear, 5.0);
  EXPECT_LT(hFar, 10.0);
  // The image-well solution of an unconfined aquifer: Phi = Phi_river + Q/(4 pi) ln(r1^2/r2^2).
  auto image = [](double x) {
    double phiRiver = 0.5 * 10.0 * 10.0 * 10.0;
    double phi = phiRiver + 500.0 / (4.0 * M_PI) * std::log(std::pow(x - 200.0, 2) / std::pow(x + 200.0, 2));
    return std::sqrt(2.0 * phi / 10.0);
  };
  // A river of finite length and a far reference point let some water come from
  // far away, so the drawdown is a little larger than that of the image well
  // (by about 3 cm of 0.9 m here).
  EXPECT_NEAR(hNear, image(100.0), 0.05);
  EXPECT_NEAR(hFar, image(400.0), 0.05);
  // The lake stage point reports the aquifer head at its place; no stream, no gage flow.
  std::string stageLine, gageLine;
  for (const auto& l : xtr) {
    if (l.ends_with("TS_000006")) stageLine = l;
    if (l.ends_with("TG_000005")) gageLine = l;
  }
  ASSERT_GT(stageLine.size(), 62u);
  EXPECT_NEAR(std::strtod(stageLine.substr(49, 13).c_str(), nullptr), hNear, 1e-4);
  ASSERT_GT(gageLine.size(), 56u);
  EXPECT_EQ(std::strtod(gageLine.substr(43, 13).c_str(), nullptr), 0.0);

  auto well = recordAfter(xtr, "* discharge specified wells");
  ASSERT_EQ(well.size(), 6u);
  EXPECT_DOUBLE_EQ(std::strtod(well[3].c_str(), nullptr), 500.0);
  auto river = recordAfter(xtr, "* head specified line sinks");
  ASSERT_EQ(river.size(), 14u);
  EXPECT_NEAR(std::strtod(river[5].c_str(), nullptr), 10.0, 1e-6);  // calculated head at the centre
  // The flux around the well alone is its discharge.
  auto flux = recordAfter(xtr, "* flux inspection lines");
  ASSERT_EQ(flux.size(), 2u);
  EXPECT_NEAR(std::fabs(std::strtod(flux[1].c_str(), nullptr)), 500.0, 5.0);
}

TEST(ProgramRun, LoadedSolutionGivesTheSameResults) {
  TempDir dir;
  writeLines(dir.Path() / "DEMO.DAT", with(with(kHeader, wellAndRiver()), kSolveAndExtract));
  ASSERT_EQ(runTarno1(dir.Path(), "61 demo"), 0);
  auto first = readLines(dir.Path() / "demo.XTR");
  fs::rename(dir.Path() / "demo.SOL", dir.Path() / "DEMO.SOL");  // any spelling is found
  // A post-processing file: load, no elements, extract under another name given with its extension.
  writeLines(dir.Path() / "REGRID.DAT",
             with(kHeader, {" load demo", " time 0", " extract", " file again.XTR", " y", "  100.00 0.00 TP_000003",
                            "  400.00 0.00 TP_000004", " quit", " stop"}));
  ASSERT_EQ(runTarno1(dir.Path(), "61 regrid.dat"), 0);
  EXPECT_EQ(readAll(dir.Path() / "error.log"), "*\n");
  auto again = readLines(dir.Path() / "again.XTR");
  EXPECT_DOUBLE_EQ(headOf(again, "TP_000003"), headOf(first, "TP_000003"));
  EXPECT_DOUBLE_EQ(headOf(again, "TP_000004"), headOf(first, "TP_000004"));
  // Continue: load, further iterations, save again.
  writeLines(dir.Path() / "DEMO.DAT", with(kHeader, {" load demo", " solve 2 1 0 0", " save demo", "y", " stop"}));
  ASSERT_EQ(runTarno1(dir.Path(), "61 demo"), 0);
  EXPECT_EQ(readAll(dir.Path() / "error.log"), "*\n");
}

TEST(ProgramRun, UnsupportedKindsReportedOncePerKindAndTheRestSolves) {
  TempDir dir;
  auto file = with(kHeader, wellAndRiver());
  file = with(file, {" Inhomogeneity ", " Lake .5E+03 .1E-02 .2E-02 .1E+01 stage.tab LK_000001_0000",
                     "  50 50 LK_000001_0100", "  60 50 LK_000001_0200", "  55 60 LK_000001_0300", " quit ",
                     " Inhomogeneity ", " Lake 1 2 3 4 LK_000002_0000", "  5 5 LK_000002_0100", " quit ",
                     " ppwell ", " discharge ", "  1 2 3 4 5 .5 WL_000011", " quit ", " twell ", " discharge ",
                     "  .1E+03 .2E+03 .5E+03 .0E+00 .1E+02 .1E-03 .1E+00 WL_000014", " quit ", " inhomogeneity ",
                     "slurry open     .00000E+00 .10000E+01 .30000E+00 .50000E+01 HB_000004_0000",
                     "  0 0 HB_000004_0100", "  0 10 HB_000004_0200", " quit ", " linesink ",
                     " stream 0.000000E+00", " Lake lake.tab", " Levels 100 10", " overlandflow 0.000000E+00", " resistance 1",
                     " width 1 0", " depth 1", "  300 300 10 LS_000020_0100", "  300 400 10 LS_000020_0200",
                     " 300 500", " quit ", " frobnicate"});
  file = with(file, kSolveAndExtract);
  file.insert(file.end() - 1, {" grid", " window 0 0 10 10", " go", " quit", " grid", " go", " quit"});
  writeLines(dir.Path() / "DEMO.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "61 DEMO"), 0);
  EXPECT_FALSE(fs::exists(dir.Path() / "TARNO.OPS"));
  auto err = readLines(dir.Path() / "error.log");
  auto count = [&](const std::string& word) {
    int n = 0;
    for (const auto& l : err) n += l.find(word) != std::string::npos;
    return n;
  };
  // Lakes are solved: a missing stage table and a lake of one vertex are reported as
  // such, not as input this version leaves out.
  EXPECT_EQ(count("(Inhomogeneity Lake)"), 0);
  EXPECT_EQ(count("lake LK_000001_0000: the stage table stage.tab cannot be used"), 1);
  EXPECT_EQ(count("lake LK_000002_0000 has 1 vertices, fewer than three; the lake is skipped"), 1);
  // Lake edges drawn as routed streams are solved: nothing is reported as not supported.
  EXPECT_EQ(count("(Lake, Levels)"), 0);
  EXPECT_EQ(count("not supported by this version"), 0);
  // Partially penetrating and transient wells are solved: not reported as unsupported.
  EXPECT_EQ(count("ppwell"), 0);
  EXPECT_EQ(count("twell"), 0);
  // Walls are solved and grids computed, not reported; a block without
  // "horizontalpoints" says what it used.
  EXPECT_EQ(count("slurry"), 0);
  EXPECT_EQ(count("\"horizontalpoints\""), 2);
  EXPECT_EQ(count("frobnicate"), 1);
  // The report names the first line of the kind (the Lake line) and how many items
  // were read.
  for (const auto& l : err)
    if (l.find("(Lake, Levels)") != std::string::npos) {
      EXPECT_EQ(l.rfind("line " + std::to_string(kHeader.size() + wellAndRiver().size() + 26), 0), 0u) << l;
      EXPECT_NE(l.find("1 item"), std::string::npos) << l;
    }
  // The wells and the river were solved all the same.
  auto xtr = readLines(dir.Path() / "demo.XTR");
  EXPECT_LT(headOf(xtr, "TP_000003"), 10.0);
}

TEST(ProgramRun, UnknownCommandsAreLoggedWithTheirLine) {
  TempDir dir;
  writeLines(dir.Path() / "x.dat", {" error ERR.LOG", " frobnicate 3", " well", " discharge", "  1 2 q .1 W", " quit",
                                    " stop"},
             "\n");
  ASSERT_EQ(runTarno1(dir.Path(), "61 X.DAT"), 0);
  auto err = readLines(dir.Path() / "ERR.LOG");
  ASSERT_EQ(err.size(), 2u);
  EXPECT_EQ(err[0].rfind("line 2 (\" frobnicate 3\")", 0), 0u) << err[0];
  EXPECT_EQ(err[1].rfind("line 5", 0), 0u) << err[1];
}

TEST(ProgramRun, EachKindOfElementIsCheckedOnceWithItsLine) {
  // Every element of a menu goes through the one check of its kind: what is skipped and
  // what is mended is told with the element's own line, in the order of the lines.
  TempDir dir;
  writeLines(dir.Path() / "x.dat",
             {" error ERR.LOG", " message MSG.LOG", " aquifer", " base 0", " permeability 10", " thickness 20",
              " reference -5000 0 25", " quit", " twell", " discharge", "  0 -500 400 0 25 0 .1 WL_T0",
              "  0 -500 400 0 25 2 .1 WL_T2", " quit", " ppwell", " discharge", "  -200 300 2 10 100 .15 WL_SWAP",
              "  -250 320 10 2 100 0 WL_NORADIUS", " quit", " well", " discharge", "  100 200 500 0 WL_0",
              "  300 200 500 .1 WL_1", " quit", " inhomogeneity", " Lake 1 2 3 4 LK_1", "  5 5 LK_1_1", " quit",
              " solve 3 3 0 1", " stop"},
             "\n");
  ASSERT_EQ(runTarno1(dir.Path(), "61 X.DAT"), 0);
  auto err = readLines(dir.Path() / "ERR.LOG");
  const std::vector<std::string> expected = {
      "line 11: transient well WL_T0: storage coefficient 0 is not positive; the schedule line was skipped",
      "line 12: transient well WL_T2: storage coefficient 2 is above 1; it is used as given",
      "line 16: partially penetrating well WL_SWAP: the top of the screen 2 lies below its bottom 10; the two were "
      "swapped",
      "line 17: partially penetrating well WL_NORADIUS: radius 0 is not positive; the well was skipped",
      "line 21: well WL_0 has a radius that is not positive; the well was skipped",
      "line 25: lake LK_1 has 1 vertices, fewer than three; the lake is skipped"};
  ASSERT_EQ(err.size(), expected.size()) << readAll(dir.Path() / "ERR.LOG");
  for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(err[i], expected[i]);
  // The mended partial well and the good well and schedule line are in the model.
  const std::string msg = readAll(dir.Path() / "MSG.LOG");
  EXPECT_NE(msg.find("Partially penetrating wells: 1"), std::string::npos) << msg;
  EXPECT_NE(msg.find("Transient wells: 1 with 1 schedule line"), std::string::npos) << msg;
}

TEST(ProgramRun, FatalPathsWriteTheReportAndFail) {
  TempDir dir;
  // No arguments.
  EXPECT_NE(runTarno1(dir.Path(), ""), 0);
  EXPECT_TRUE(fs::exists(dir.Path() / "TARNO.OPS"));
  // A command file that does not exist.
  fs::remove(dir.Path() / "TARNO.OPS");
  EXPECT_NE(runTarno1(dir.Path(), "61 nothing"), 0);
  std::string ops = readAll(dir.Path() / "TARNO.OPS");
  EXPECT_NE(ops.find("nothing.DAT"), std::string::npos) << ops;

  // An estimation template.
  fs::remove(dir.Path() / "TARNO.OPS");
  writeLines(dir.Path() / "TPL.DAT", with(kHeader, {" aquifer", " base !Base________!", " quit", " solve 1 1 0 1", " stop"}));
  EXPECT_NE(runTarno1(dir.Path(), "61 tpl"), 0);
  ops = readAll(dir.Path() / "TARNO.OPS");
  EXPECT_NE(ops.find("Line 13"), std::string::npos) << ops;
  EXPECT_NE(ops.find("!Base________!"), std::string::npos) << ops;
  EXPECT_NE(ops.find("estimation template"), std::string::npos) << ops;
  EXPECT_NE(readAll(dir.Path() / "error.log").find("line 13"), std::string::npos);

  // A solution file that is missing, and one that is not a solution.
  fs::remove(dir.Path() / "TARNO.OPS");
  writeLines(dir.Path() / "LOAD.DAT", with(kHeader, {" load absent", " stop"}));
  EXPECT_NE(runTarno1(dir.Path(), "61 load"), 0);
  EXPECT_NE(readAll(dir.Path() / "TARNO.OPS").find("absent.SOL"), std::string::npos);
  fs::remove(dir.Path() / "TARNO.OPS");
  writeLines(dir.Path() / "absent.SOL", {"this is not a solution"});
  EXPECT_NE(runTarno1(dir.Path(), "61 load"), 0);
  EXPECT_TRUE(fs::exists(dir.Path() / "TARNO.OPS"));
  // A truncated solution.
  fs::remove(dir.Path() / "TARNO.OPS");
  writeLines(dir.Path() / "DEMO.DAT", with(with(kHeader, wellAndRiver()), kSolveAndExtract));
  ASSERT_EQ(runTarno1(dir.Path(), "61 demo"), 0);
  std::string sol = readAll(dir.Path() / "demo.SOL");
  {
    std::ofstream f(dir.Path() / "absent.SOL", std::ios::binary);
    f << sol.substr(0, sol.size() / 2);
  }
  EXPECT_NE(runTarno1(dir.Path(), "61 load"), 0);
  EXPECT_TRUE(fs::exists(dir.Path() / "TARNO.OPS"));
}

TEST(ProgramRun, SingularSystemIsFatal) {
  TempDir dir;
  // Two head-specified wells at one place: two conditions for one point.
  writeLines(dir.Path() / "S.DAT", with(kHeader, {" aquifer", " base 0", " permeability 10", " thickness 50",
                                                 " reference 1000 0 10", " quit", " well", " head", "  0 0 8 .1 W1",
                                                 "  0 0 9 .1 W2", " quit", " solve 1 1 0 1", " save s", "y",
                                                 " stop"}));
  EXPECT_NE(runTarno1(dir.Path(), "61 s"), 0);
  std::string ops = readAll(dir.Path() / "TARNO.OPS");
  EXPECT_NE(ops.find("singular"), std::string::npos) << ops;
  EXPECT_NE(ops.find("line 23"), std::string::npos) << ops;
  EXPECT_FALSE(fs::exists(dir.Path() / "s.SOL"));  // the run ended at the solve
}

TEST(ProgramRun, NoLogsNamedAndNoStopStillSucceeds) {
  TempDir dir;
  writeLines(dir.Path() / "bare.DAT", with(wellAndRiver(), {" solve 1 1 0 1", " extract", " file bare", "  100 0 TP_1", " quit"}),
             "\n");
  ASSERT_EQ(runTarno1(dir.Path(), "61 bare"), 0);
  EXPECT_TRUE(fs::exists(dir.Path() / "bare.XTR"));
  EXPECT_FALSE(fs::exists(dir.Path() / "TARNO.OPS"));
}

TEST(ProgramRun, CommandFileOfTheFrontEndsWriter) {
  // A command file written by the front end's command file writer (its test sample).
  fs::path sample = fs::path(TARNO_SOURCE_DIR) / "tests/solver/data/golden_new_solve.dat";
  if (!fs::exists(sample)) GTEST_SKIP() << "no front end sample at " << sample;
  TempDir dir;
  fs::copy_file(sample, dir.Path() / "golden_new_solve.dat");
  ASSERT_EQ(runTarno1(dir.Path(), "61 GOLDEN_NEW_SOLVE.DAT"), 0);
  // Every line is read and every kind is computed. The sample names a stage table it does
  // not come with, and its lake crosses an inhomogeneity, so the lake is skipped; both are
  // reported. The sample's three iterations leave the wall's unconfined condition just
  // short of convergence, which the log says as well.
  auto err = readLines(dir.Path() / "error.log");
  ASSERT_GE(err.size(), 2u);
  ASSERT_LE(err.size(), 3u);
  auto count = [&](const std::string& text) {
    int n = 0;
    for (const auto& l : err) n += l.find(text) != std::string::npos;
    return n;
  };
  EXPECT_EQ(count("not supported"), 0);
  EXPECT_EQ(count("the stage table lake1.stg cannot be used"), 1);
  EXPECT_EQ(count("LK_000001_0000 (line 25): its edges cross those of inhomogeneity IN_000002_0000"), 1);
  for (const auto& l : err) {
    EXPECT_EQ(l.find("transmissivity"), std::string::npos) << l;
    EXPECT_EQ(l.find("slurry"), std::string::npos) << l;
  }
  // The grid and trace blocks write their files.
  EXPECT_EQ(readLines(dir.Path() / "golden.GRD").front(), "DSAA");
  EXPECT_EQ(readLines(dir.Path() / "golden.PTH").front().rfind("LABEL ", 0), 0u);
  auto xtr = readLines(dir.Path() / "golden.XTR");
  ASSERT_GT(xtr.size(), 3u);
  EXPECT_EQ(xtr[0], "* data points");
  EXPECT_EQ(xtr[1].rfind("@", 0), 0u);
  // The gage lies near the stream: its flow is that of a routed segment, not 0.
  ASSERT_TRUE(xtr[2].ends_with("TG_000004"));
  EXPECT_GT(std::fabs(std::strtod(xtr[2].substr(43, 13).c_str(), nullptr)), 0.0);
  auto link = recordAfter(xtr, "* stream linkages");
  ASSERT_EQ(link.size(), 2u);
  EXPECT_EQ(link[0], " LS_000006_0100");
  EXPECT_EQ(link[1], " LS_000006_0200");
}

TEST(ProgramRun, CrossingPolygonsAreReportedInTheErrorLogWithBothLabels) {
  TempDir dir;
  auto file = with(kHeader, wellAndRiver());
  file = with(file, {" inhomogeneity ",
                     " transmissivity 2.50000E+01 -9.99900E+03 -9.99900E+03 .0000000E+00 -9.99900E+03 IN_000003_0000",
                     "  300 -100 IN_000003_0100", "  500 -100 IN_000003_0200", "  500 100 IN_000003_0300",
                     "  300 100 IN_000003_0400",
                     " transmissivity 5.00000E+00 -9.99900E+03 -9.99900E+03 .0000000E+00 -9.99900E+03 IN_000004_0000",
                     "  400 0 IN_000004_0100", "  600 0 IN_000004_0200", "  600 200 IN_000004_0300",
                     "  400 200 IN_000004_0400",
                     // Shares the edge of IN_000003 from (500, -100) to (500, 100): no report.
                     " transmissivity 9.00000E+00 -9.99900E+03 -9.99900E+03 .0000000E+00 -9.99900E+03 IN_000005_0000",
                     "  500 -100 IN_000005_0100", "  700 -100 IN_000005_0200", "  700 100 IN_000005_0300",
                     "  500 100 IN_000005_0400", " quit "});
  const int first = static_cast<int>(file.size()) - 15;   // the line of IN_000003_0000 (1-based)
  const int second = first + 5;
  file = with(file, kSolveAndExtract);
  writeLines(dir.Path() / "DEMO.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "61 DEMO"), 0);
  EXPECT_FALSE(fs::exists(dir.Path() / "TARNO.OPS"));
  const std::string err = readAll(dir.Path() / "error.log");
  const std::string expected = "inhomogeneity IN_000004_0000 (line " + std::to_string(second) +
                               "): its edges cross those of inhomogeneity IN_000003_0000 (line " +
                               std::to_string(first) + ") at (500, 0), where neither has a vertex; the "
                               "inhomogeneity IN_000004_0000 is skipped";
  EXPECT_NE(err.find(expected), std::string::npos) << err;
  EXPECT_EQ(err.find("IN_000005"), std::string::npos) << err;
  EXPECT_NE(readAll(dir.Path() / "message.log").find("Area elements: 2 inhomogeneities"), std::string::npos);
}

TEST(ProgramRun, AreaElementsAreSolvedAndReportedInTheExtractFile) {
  TempDir dir;
  auto file = with(kHeader, wellAndRiver());
  file = with(file, {" inhomogeneity ",
                     " transmissivity 2.50000E+01 -9.99900E+03 1.50000E+01 -1.0000000E-03 2.00000E-01 IN_000003_0000",
                     "  3.000000E+02 -1.000000E+02 IN_000003_0100", "  5.000000E+02 -1.000000E+02 IN_000003_0200",
                     "  5.000000E+02 1.000000E+02 IN_000003_0300", "  3.000000E+02 1.000000E+02 IN_000003_0400",
                     // Bad: two vertices only, and a bow tie.
                     " transmissivity 2.50000E+01 -9.99900E+03 -9.99900E+03 .0000000E+00 -9.99900E+03 IN_000004_0000",
                     "  0 0 IN_000004_0100", "  10 0 IN_000004_0200",
                     " transmissivity 2.50000E+01 -9.99900E+03 -9.99900E+03 .0000000E+00 -9.99900E+03 IN_000005_0000",
                     "  600 0 IN_000005_0100", "  700 100 IN_000005_0200", "  700 0 IN_000005_0300",
                     "  600 100 IN_000005_0400", " quit ", " inhomogeneity ",
                     "slurry open     1.00000E-02 5.00000E-01 2.50000E-01 -1.00000E+00 HB_000006_0000",
                     "  6.000000E+02 -3.000000E+02 HB_000006_0100", "  6.000000E+02 3.000000E+02 HB_000006_0200",
                     "  6.500000E+02 4.000000E+02 HB_000006_0300", " quit ", " sinkdisk ", " discharge ",
                     "  .1000000E+03 .4000000E+03 .1500000E+03 .4000000E+03  2.500000E-03 .000000E+00 WL_000013",
                     "  .1000000E+03 .4000000E+03 .1000000E+03 .4000000E+03  2.500000E-03 .000000E+00 WL_000015",
                     " quit ", " sinkdisk ", " head ", "  .3E+03 .4E+03 .32E+03 .4E+03 .9E+01 WL_000014", " quit "});
  file = with(file, kSolveAndExtract);
  writeLines(dir.Path() / "DEMO.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "61 DEMO"), 0);
  EXPECT_FALSE(fs::exists(dir.Path() / "TARNO.OPS"));
  auto err = readLines(dir.Path() / "error.log");
  auto has = [&](const std::string& a, const std::string& b) {
    for (const auto& l : err)
      if (l.find(a) != std::string::npos && l.find(b) != std::string::npos) return true;
    return false;
  };
  EXPECT_TRUE(has("IN_000004_0000", "fewer than three distinct vertices")) << readAll(dir.Path() / "error.log");
  EXPECT_TRUE(has("IN_000005_0000", "touch or cross; the inhomogeneity is skipped"));
  EXPECT_TRUE(has("WL_000015", "is skipped"));
  EXPECT_FALSE(has("not supported", "inhomogeneity"));
  auto msg = readAll(dir.Path() / "message.log");
  EXPECT_NE(msg.find("Area elements: 1 inhomogeneities, 1 walls, 2 ponds (1 head specified)"), std::string::npos) << msg;
  EXPECT_NE(msg.find("area sinks, inhomogeneities"), std::string::npos);
  auto xtr = readLines(dir.Path() / "demo.XTR");
  auto linesAfter = [&](const std::string& head) {
    std::vector<std::string> out;
    auto it = std::find(xtr.begin(), xtr.end(), head);
    if (it != xtr.end())
      for (++it; it != xtr.end() && !it->empty() && (*it)[0] == ' '; ++it) out.push_back(*it);
    return out;
  };
  auto inho = linesAfter("* transmissivity inhomogeneities");
  ASSERT_EQ(inho.size(), 5u);
  auto fields = [](const std::string& l) { return 1 + std::count(l.begin(), l.end(), ','); };
  EXPECT_EQ(fields(inho[0]), 7);
  for (size_t i = 1; i < inho.size(); ++i) EXPECT_EQ(fields(inho[i]), 14) << inho[i];
  EXPECT_EQ(inho[1].rfind(" IN_000003_0100,", 0), 0u) << inho[1];
  auto walls = linesAfter("* slurry walls");
  ASSERT_EQ(walls.size(), 3u);  // header and two segments
  EXPECT_EQ(fields(walls[0]), 5);
  EXPECT_EQ(fields(walls[1]), 10);
  EXPECT_EQ(fields(walls[2]), 10);
  // Inside the inhomogeneity the point record carries its conductivity and recharge.
  for (const auto& l : xtr)
    if (l.ends_with("TP_000004")) {
      std::vector<std::string> f;
      std::stringstream ss(l);
      std::string item;
      while (std::getline(ss, item, ',')) f.push_back(item);
      ASSERT_EQ(f.size(), 15u);
      EXPECT_NEAR(std::strtod(f[11].c_str(), nullptr), 25.0, 1e-9) << l;
      EXPECT_NEAR(std::strtod(f[13].c_str(), nullptr), 1e-3, 1e-12) << l;
    }
}

// A trace block with no particles (a model without particles, wells without
// particles) is nothing to trace, not a problem: the error log stays clean, so the
// front end does not show it, and the message log says why the pathline file is empty.
TEST(ProgramRun, TraceWithoutParticlesIsNoProblem) {
  TempDir dir;
  auto file = with(with(kHeader, wellAndRiver()),
                   {" layout ", " window -1000.00 -1000.00 1000.00 1000.00 ", " quit ", " time 0",
                    " solve 3 3 0 1", " trace", " picture off", " file demo", " y ", " time 3650", " step 1",
                    " go", " quit", " stop"});
  writeLines(dir.Path() / "DEMO.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "61 demo"), 0);
  EXPECT_EQ(readAll(dir.Path() / "error.log"), "*\n");
  EXPECT_TRUE(fs::exists(dir.Path() / "demo.PTH"));
  EXPECT_NE(readAll(dir.Path() / "message.log").find("no particles to trace"), std::string::npos);
}

// A run that solves writes <name>.OUT, a report for a person to read: the header,
// the model in words, the iterations, the water balance and the element results,
// with CR LF line ends. A later run that only loads the solution leaves it as it is.
TEST(ProgramRun, SolveWritesTheOutputReport) {
  TempDir dir;
  writeLines(dir.Path() / "DEMO.DAT", with(with(kHeader, wellAndRiver()), kSolveAndExtract));
  ASSERT_EQ(runTarno1(dir.Path(), "61 demo"), 0);
  ASSERT_TRUE(fs::exists(dir.Path() / "demo.OUT"));
  const std::string text = readAll(dir.Path() / "demo.OUT");
  size_t bare = 0;
  for (size_t i = 0; i < text.size(); ++i)
    if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) ++bare;
  EXPECT_EQ(bare, 0u) << "every line ends with CR LF";
  std::vector<std::string> lines = readLines(dir.Path() / "demo.OUT");
  for (auto& l : lines)
    if (!l.empty() && l.back() == '\r') l.pop_back();
  auto has = [&](const std::string& part) {
    return std::any_of(lines.begin(), lines.end(), [&](const std::string& l) { return l.find(part) != std::string::npos; });
  };
  auto lineWith = [&](const std::string& part) {
    for (const auto& l : lines)
      if (l.find(part) != std::string::npos) return l;
    return std::string();
  };
  EXPECT_TRUE(has("Title:         well and river"));
  EXPECT_TRUE(has("Base name:     demo"));
  EXPECT_TRUE(has("Command file:  DEMO.DAT"));
  EXPECT_TRUE(has("Aquifer: base 0, thickness 50 (top 50), hydraulic conductivity 10, porosity 0.25."));
  EXPECT_TRUE(has("  wells: 1 (1 discharge specified, 0 head specified)"));
  EXPECT_TRUE(has("  line-sink strings: 1 with 48 segments"));
  EXPECT_TRUE(has("    head specified: 1 string, 48 segments"));
  EXPECT_TRUE(has("Equations (unknowns): 49"));
  for (const char* heading : {"Model", "Iterations", "Water balance", "Results"}) {
    auto it = std::find(lines.begin(), lines.end(), heading);
    ASSERT_NE(it, lines.end()) << heading;
    ASSERT_NE(it + 1, lines.end());
    EXPECT_EQ(*(it + 1), std::string(std::strlen(heading), '='));
  }
  EXPECT_TRUE(has("Converged: every condition was met."));
  // The well's row: its label, then x, y, radius, discharge and head.
  std::istringstream well(lineWith("WL_000001"));
  std::string label;
  double x = 0, y = 0, radius = 0, discharge = 0, head = 0;
  well >> label >> x >> y >> radius >> discharge >> head;
  EXPECT_EQ(x, 200.0);
  EXPECT_DOUBLE_EQ(discharge, 500.0);
  // The well's screen runs dry in this model: the dry head stands there.
  EXPECT_TRUE(head == -9999.0 || (head > 0.0 && head < 10.0)) << head;
  // The balance closes: the total row's inflow and outflow agree.
  std::istringstream total(lineWith("total "));
  double in = 0, out = 0;
  total >> label >> in >> out;
  EXPECT_GT(in, 0.0);
  EXPECT_NEAR(in, out, 1e-6 * in);
  EXPECT_TRUE(has("LS_000002_0200"));
  EXPECT_NE(readAll(dir.Path() / "message.log").find("demo.OUT"), std::string::npos);

  // A regrid loads the solution and solves nothing: the report of the solve stays.
  writeLines(dir.Path() / "REGRID.DAT",
             with(kHeader, {" load demo", " grid", " window -100 -100 100 100", " horizontalpoints 5", " go",
                            " surfer demo", " y", " quit", " stop"}));
  ASSERT_EQ(runTarno1(dir.Path(), "61 REGRID.DAT"), 0);
  EXPECT_EQ(readAll(dir.Path() / "demo.OUT"), text);
}

// Two lakes, a stage table, an inlet and a stream from one lake's outlet into the other:
// the error log is empty, the message log gives each lake's balance, and the lake stage
// records carry the stages, also after a load.
TEST(ProgramRun, LakesAreSolvedWithTheirTablesAndStreams) {
  TempDir dir;
  fs::path seed = fs::path(TARNO_TEST_DATA_DIR) / "fuzz-corpus" / "seed_lakes.dat";
  fs::copy_file(seed, dir.Path() / "LAKES.DAT");
  writeLines(dir.Path() / "lake1.stg", {"! stage area volume", "50 0 0", "58 100000 400000", "70 160000 2000000"});
  writeLines(dir.Path() / "rating.tab", {"55 0", "59 4000"});
  ASSERT_EQ(runTarno1(dir.Path(), "61 LAKES.DAT"), 0);
  EXPECT_EQ(readAll(dir.Path() / "error.log"), "*\n");
  const std::string msg = readAll(dir.Path() / "message.log");
  std::vector<double> stages;
  for (const char* label : {"Lake LK_000001_0000", "Lake LK_000002_0000"}) {
    const size_t at = msg.rfind(label);  // the last solve's balance
    ASSERT_NE(at, std::string::npos) << label;
    const size_t st = msg.find("stage ", at);
    stages.push_back(std::strtod(msg.c_str() + st + 6, nullptr));
    // The balance error of the last block is below a millionth of the largest term.
    const size_t pc = msg.find("balance error ", at);
    ASSERT_NE(pc, std::string::npos);
    const size_t open = msg.find('(', pc);
    EXPECT_LT(std::strtod(msg.c_str() + open + 1, nullptr), 1e-4) << label;
  }
  // The first lake has an outlet: its stage lies within its rating table, so stream flow
  // leaves it, and the stream enters the second lake.
  EXPECT_GT(stages[0], 55.0);
  EXPECT_LT(stages[0], 59.0);
  const size_t second = msg.rfind("Lake LK_000002_0000");
  const size_t in = msg.find("  in:", second);
  const size_t flow = msg.find("stream flow ", in);
  EXPECT_GT(std::strtod(msg.c_str() + flow + 12, nullptr), 0.0);
  auto xtr = readLines(dir.Path() / "lakes.XTR");
  ASSERT_GE(xtr.size(), 4u);
  ASSERT_TRUE(xtr[1].ends_with("TS_000005"));
  ASSERT_TRUE(xtr[2].ends_with("TS_000006"));
  const double s1 = std::strtod(xtr[1].substr(49, 13).c_str(), nullptr);
  const double s2 = std::strtod(xtr[2].substr(49, 13).c_str(), nullptr);
  EXPECT_NEAR(s1, stages[0], 1e-4 * std::fabs(stages[0]));
  EXPECT_NEAR(s2, stages[1], 1e-4 * std::fabs(stages[1]));
  // The point inside the first lake has the lake's conductivity; the lakes are no
  // transmissivity inhomogeneities of the extract file.
  ASSERT_TRUE(xtr[3].ends_with("TP_000007"));
  std::vector<std::string> fields;
  std::stringstream record(xtr[3].substr(1));
  for (std::string f; std::getline(record, f, ',');) fields.push_back(f);
  ASSERT_EQ(fields.size(), 15u);
  EXPECT_DOUBLE_EQ(std::strtod(fields[11].c_str(), nullptr), 1000.0);
  // The lakes stand only in their own section, with balances that close.
  const auto balances = std::find(xtr.begin(), xtr.end(), std::string(tarno::solver_files::kHeadLakeBalances));
  ASSERT_NE(balances, xtr.end());
  for (auto it = xtr.begin(); it != balances; ++it) EXPECT_EQ(it->find("LK_00000"), std::string::npos) << *it;
  ASSERT_EQ(xtr.end() - balances, 3);
  for (auto it = balances + 1; it != xtr.end(); ++it) {
    std::vector<std::string> b;
    std::stringstream r(*it);
    for (std::string f; std::getline(r, f, ',');) b.push_back(f);
    ASSERT_EQ(b.size(), 20u) << *it;
    auto num = [&](int field) { return std::strtod(b[static_cast<size_t>(field - 1)].c_str(), nullptr); };
    namespace lb = tarno::solver_files::lake_balance;
    EXPECT_NEAR(num(lb::kError), num(lb::kTotalIn) - num(lb::kTotalOut), 1e-6 * num(lb::kTotalIn));
    EXPECT_LE(std::fabs(num(lb::kError)), 1e-6 * std::max(num(lb::kTotalIn), num(lb::kTotalOut)));
  }
  // The output report ends with the lakes' balances.
  const std::string out = readAll(dir.Path() / "lakes.OUT");
  const size_t lakesAt = out.find("\nLakes\n=====\n");
  ASSERT_NE(lakesAt, std::string::npos);
  EXPECT_NE(out.find("Lake LK_000002_0000", lakesAt), std::string::npos);
  // After a load the stage is the same.
  auto again = readLines(dir.Path() / "again.XTR");
  ASSERT_GE(again.size(), 2u);
  EXPECT_EQ(again[1], xtr[1]);
}

// A plain solve whose aquifer fields are parameter fields (scenario tags) takes their
// values from the parameter value file and solves exactly as the file with the numbers.
TEST(ProgramRun, ParameterValueFileGivesTheFieldsTheirValuesAndSolvesAsTheNumbers) {
  auto model = [](const std::string& base, const std::string& permeability) {
    std::vector<std::string> m = wellAndRiver();
    for (std::string& l : m) {
      if (l == " base .0000E+00") l = " base " + base;
      if (l == " permeability .1000000E+02") l = " permeability " + permeability;
    }
    return with(with(kHeader, m), kSolveAndExtract);
  };
  TempDir plain, tagged;
  writeLines(plain.Path() / "DEMO.DAT", model(".0000E+00", ".1000000E+02"));
  writeLines(tagged.Path() / "DEMO.DAT", model("!bot!", "! Kaq !"));
  // The names compared without their padding blanks and without regard to case; a line
  // that is no name and number is reported and skipped.
  writeLines(tagged.Path() / "demo.tpv", {"* parameter values", "kaq 1.0000000E+01", "BOT .00000E+00", "rch"});
  ASSERT_EQ(runTarno1(plain.Path(), "61 demo"), 0);
  ASSERT_EQ(runTarno1(tagged.Path(), "61 demo"), 0);
  const std::string extract = readAll(plain.Path() / "demo.XTR");
  EXPECT_NE(extract.find("TP_000003"), std::string::npos);
  EXPECT_EQ(readAll(tagged.Path() / "demo.XTR"), extract);
  const std::string messages = readAll(tagged.Path() / "message.log");
  EXPECT_NE(messages.find("the parameter field ! Kaq ! takes the value 10"), std::string::npos) << messages;
  EXPECT_NE(messages.find("the parameter field !bot! takes the value 0"), std::string::npos);
  const std::string errors = readAll(tagged.Path() / "error.log");
  EXPECT_NE(errors.find("demo.tpv, line 4: \"rch\" is not a parameter name and a number"), std::string::npos)
      << errors;
}

TEST(ProgramRun, ParameterFieldWithoutItsValueIsFatalAndNamesTheField) {
  std::vector<std::string> m = wellAndRiver();
  for (std::string& l : m)
    if (l == " permeability .1000000E+02") l = " permeability !kaq!";
  const auto file = with(with(kHeader, m), kSolveAndExtract);
  {
    TempDir dir;  // no parameter value file
    writeLines(dir.Path() / "DEMO.DAT", file);
    EXPECT_NE(runTarno1(dir.Path(), "61 demo"), 0);
    const std::string ops = readAll(dir.Path() / "TARNO.OPS");
    EXPECT_NE(ops.find("\"!kaq!\""), std::string::npos) << ops;
    EXPECT_NE(ops.find("no parameter value file"), std::string::npos) << ops;
    EXPECT_NE(ops.find("cannot be solved as it stands"), std::string::npos);
  }
  {
    TempDir dir;  // a file without the field's name
    writeLines(dir.Path() / "DEMO.DAT", file);
    writeLines(dir.Path() / "DEMO.TPV", {"rch 1e-3"});
    EXPECT_NE(runTarno1(dir.Path(), "61 demo"), 0);
    const std::string ops = readAll(dir.Path() / "TARNO.OPS");
    EXPECT_NE(ops.find("DEMO.TPV has no value for \"kaq\""), std::string::npos) << ops;
  }
}
