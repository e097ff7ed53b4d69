// Leakage to a lower model: the grid of cells as area sinks against the exact solution
// of a uniform square area sink, the grid files (layout and bad input), and the solver
// program's leakage run: the rates written back from the heads, the leakage check and
// the extract's leakage line after a load, and bad grid files reported with their line.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "engine/area.h"
#include "engine/leakage.h"
#include "engine/solution.h"
#include "helpers.h"
#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

using namespace tarno::engine;
using namespace tarno::engine::testing;
using tarno::test::TempDir;

void writeLines(const fs::path& p, const std::vector<std::string>& lines) {
  std::ofstream f(p, std::ios::binary);
  for (const auto& l : lines) f << l << "\r\n";
}

std::vector<std::string> readLines(const fs::path& p) {
  std::vector<std::string> out;
  std::ifstream f(p, std::ios::binary);
  for (std::string l; std::getline(f, l);) {
    if (!l.empty() && l.back() == '\r') l.pop_back();
    out.push_back(l);
  }
  return out;
}

std::vector<double> numbersOf(const std::string& line) {
  std::istringstream in(line);
  std::vector<double> v;
  for (double x; in >> x;) v.push_back(x);
  return v;
}

int countContaining(const std::vector<std::string>& lines, const std::string& word) {
  int n = 0;
  for (const auto& l : lines) n += l.find(word) != std::string::npos;
  return n;
}

// Integral of ln r^2 over the square [-a, a]^2 seen from its centre (closed form) and
// from a point outside (midpoint rule; the integrand is smooth there).
double squareLogIntegralAtCentre(double a) { return 4 * a * a * (std::log(2 * a * a) - 3 + kPi / 2); }
double squareLogIntegralAt(double a, double x, double y) {
  const int n = 400;
  const double h = 2 * a / n;
  double s = 0;
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) {
      const double dx = x - (-a + (i + 0.5) * h), dy = y - (-a + (j + 0.5) * h);
      s += std::log(dx * dx + dy * dy);
    }
  return s * h * h;
}

// A 400 x 400 grid centred on the origin, cells of uneven sizes, all of rate N: the sum
// of the cells is the square area sink, whose potential at the centre is known exactly.
TEST(LeakageGrid, UniformRateOverTheGridIsTheSquareAreaSink) {
  LeakageGrid g;
  g.rows = 5;
  g.cols = 4;
  g.rowSize = {50, 100, 60, 90, 100};
  g.colSize = {150, 50, 120, 80};
  g.x0 = -200;
  g.y0 = -200;
  const double N = 2e-3;
  g.leakage.assign(20, N);

  // Cell placement: rows from the top, columns from the left.
  const auto top = g.cell(0, 0);
  EXPECT_DOUBLE_EQ(top[0], -200);
  EXPECT_DOUBLE_EQ(top[3], 200);
  EXPECT_DOUBLE_EQ(top[1], 150);
  const auto last = g.cell(4, 3);
  EXPECT_DOUBLE_EQ(last[1], -200);
  EXPECT_DOUBLE_EQ(last[2], 200);
  EXPECT_DOUBLE_EQ(last[0], 120);

  const double B = 0, k = 10, H = 50;  // confined throughout
  const double refX = 3000, refY = 1000, refHead = 60;
  Model m = aquiferModel(B, k, H, refX, refY, refHead);
  m.leakage = g.cells();
  ASSERT_EQ(m.leakage.size(), 20u);
  Solution s(m);
  s.solve(opts(2));

  const double a = 200;
  const double phiRef = phiOf(refHead, B, k, H);
  const double phiCentre =
      phiRef + N / (4 * kPi) * (squareLogIntegralAtCentre(a) - squareLogIntegralAt(a, refX, refY));
  EXPECT_NEAR(s.potential(0, 0), phiCentre, 1e-8 * std::abs(phiCentre));
  EXPECT_NEAR(s.head(0, 0), headOf(phiCentre, B, k, H), 1e-9);
  EXPECT_LT(s.head(0, 0), refHead);  // leakage downwards lowers the head

  // Inside, the rate is an extraction: recharge -N; outside none; no stream function
  // inside a cell.
  EXPECT_DOUBLE_EQ(s.evaluate(10, -30).recharge, -N);
  EXPECT_DOUBLE_EQ(s.evaluate(250, 0).recharge, 0.0);
  EXPECT_TRUE(std::isnan(s.streamFunction(10, -30)));

  // The balance: the leakage term is N times the area and the far field brings it in.
  const WaterBalance wb = s.waterBalance();
  bool found = false;
  for (const auto& t : wb.terms)
    if (t.kind == "leakage to the model below") {
      found = true;
      EXPECT_NEAR(t.out, N * 400 * 400, 1e-9);
    }
  EXPECT_TRUE(found);

  // A saved solution keeps its leakage cells.
  TempDir dir;
  const std::string file = (dir.Path() / "leak.SOL").string();
  s.save(file);
  const Solution back = Solution::load(file);
  EXPECT_NEAR(back.potential(0, 0), s.potential(0, 0), 1e-9 * std::abs(phiCentre));
}

// Cells of different rates (upwards, downwards, none): the shared edges enter once with
// the difference of the rates; the field must equal the sum of each cell's own area sink.
TEST(LeakageGrid, CellsOfDifferentRatesSumTheirOwnAreaSinks) {
  LeakageGrid g;
  g.rows = 3;
  g.cols = 3;
  g.rowSize = {30, 50, 20};
  g.colSize = {40, 25, 60};
  g.x0 = 100;
  g.y0 = -50;
  g.leakage = {1e-3, 1e-3, 0, -2e-3, 5e-4, 1e-3, 1e-3, 0, 3e-3};
  Model m = aquiferModel(0, 10, 50, 1000, 1000, 60);
  m.leakage = g.cells();
  ASSERT_EQ(m.leakage.size(), 7u);  // zero rates left out
  Solution s(m);
  s.solve(opts(2));

  auto direct = [&](double x, double y) {
    double phi = 0;
    std::complex<double> w(0, 0);
    for (const auto& c : m.leakage) {
      const auto a = detail::makeAreaSink({{c.x1, c.y1}, {c.x2, c.y1}, {c.x2, c.y2}, {c.x1, c.y2}});
      phi += -c.rate * detail::areaSinkPotential(a, x, y);
      w += -c.rate * detail::areaSinkW(a, x, y);
    }
    return std::make_pair(phi, w);
  };
  const double x0 = 400, y0 = 300;  // a point outside, for the constant
  const double ref = s.potential(x0, y0) - direct(x0, y0).first;
  // Inside cells of each kind, on a shared edge, at a corner of four cells, outside.
  for (auto [x, y] : std::vector<std::pair<double, double>>{
           {120, 40}, {150, 0}, {200, -40}, {140, 10}, {165, 30}, {110, -50}, {300, 100}, {-200, 0}}) {
    const auto [phi, w] = direct(x, y);
    EXPECT_NEAR(s.potential(x, y) - ref, phi, 1e-9) << x << " " << y;
    const auto [qx, qy] = s.discharge(x, y);
    EXPECT_NEAR(qx, w.real(), 1e-9) << x << " " << y;
    EXPECT_NEAR(qy, -w.imag(), 1e-9) << x << " " << y;
  }
  // The local rate follows the cell: row 1 (from the top), column 0 recharges 2e-3.
  EXPECT_DOUBLE_EQ(s.evaluate(120, 0).recharge, 2e-3);
  EXPECT_DOUBLE_EQ(s.evaluate(200, 55).recharge, 0.0);
}

TEST(LeakageGrid, FilesAreReadWithTheirLayoutAndBadInputNamesTheLine) {
  TempDir dir;
  const fs::path del = dir.Path() / "g.del";
  // Counts and sizes spread over lines, then the corner.
  writeLines(del, {" 2", " 10 20", " 3", " 5 5", " 5", " 100 200"});
  LeakageGrid g;
  std::vector<LeakageFileProblem> ps;
  ASSERT_TRUE(readLeakageGrid(del, g, ps));
  EXPECT_TRUE(ps.empty());
  EXPECT_EQ(g.rows, 2);
  EXPECT_EQ(g.cols, 3);
  EXPECT_DOUBLE_EQ(g.height(), 30);
  EXPECT_DOUBLE_EQ(g.width(), 15);
  EXPECT_TRUE(g.cornerInFile);
  EXPECT_DOUBLE_EQ(g.fileX, 100);
  EXPECT_DOUBLE_EQ(g.fileY, 200);

  // Without the corner the grid still loads.
  writeLines(del, {" 1 4", " 2 3 3"});
  ASSERT_TRUE(readLeakageGrid(del, g, ps));
  EXPECT_FALSE(g.cornerInFile);

  // Bad definitions: a count that is no whole number, a size missing.
  ps.clear();
  writeLines(del, {" 2.5", " 1 1"});
  EXPECT_FALSE(readLeakageGrid(del, g, ps));
  ASSERT_EQ(ps.size(), 1u);
  EXPECT_EQ(ps[0].line, 1);
  ps.clear();
  writeLines(del, {" 2", " 1 1", " 3", " 1 -1 1"});
  EXPECT_FALSE(readLeakageGrid(del, g, ps));
  ASSERT_EQ(ps.size(), 1u);
  EXPECT_EQ(ps[0].line, 4);
  ps.clear();
  EXPECT_FALSE(readLeakageGrid(dir.Path() / "none.del", g, ps));
  ASSERT_EQ(ps.size(), 1u);
  EXPECT_NE(ps[0].message.find("none.del was not found"), std::string::npos);

  // Cell values: the round trip, then a short line, a bad value, a missing row.
  writeLines(del, {" 2 10 20 3 5 5 5"});
  ps.clear();
  ASSERT_TRUE(readLeakageGrid(del, g, ps));
  const std::vector<double> values = {1.5e-3, -2e-4, 0, 7, 8.25, 1e-9};
  const fs::path vlk = dir.Path() / "g.vlk";
  ASSERT_TRUE(writeCellValues(vlk, g, values));
  const auto written = readLines(vlk);
  ASSERT_EQ(written.size(), 2u);
  EXPECT_EQ(written[0], "1.500000e-03  -2.000000e-04  0.000000e+00");
  std::vector<double> back;
  ASSERT_TRUE(readCellValues(vlk, g, back, ps));
  EXPECT_EQ(back, values);

  writeLines(vlk, {"1 2 3", "4 5"});
  EXPECT_FALSE(readCellValues(vlk, g, back, ps));
  ASSERT_EQ(ps.size(), 1u);
  EXPECT_EQ(ps[0].line, 2);
  EXPECT_EQ(ps[0].message, "2 values where the grid has 3 columns");
  ps.clear();
  writeLines(vlk, {"1 2 3", "4 x 6"});
  EXPECT_FALSE(readCellValues(vlk, g, back, ps));
  ASSERT_EQ(ps.size(), 1u);
  EXPECT_EQ(ps[0].message, "\"x\" is not a number");
  ps.clear();
  writeLines(vlk, {"1 2 3"});
  EXPECT_FALSE(readCellValues(vlk, g, back, ps));
  ASSERT_EQ(ps.size(), 1u);
  EXPECT_EQ(ps[0].message, "the file ends after 1 of the grid's 2 rows");
}

int runTarno1(const fs::path& dir, const std::string& name) {
  tarno::test::RunOptions options;
  options.cwd = dir;
  return tarno::test::RunProgram("tarno1", {"50", name}, options).status;
}

const std::vector<std::string> kHeader = {" error error.log", " yes", " message message.log", " yes", " picture off",
                                          " quit",           " bfname m", " modelorigin 0 0 2", " aquifer", " base .0",
                                          " permeability 10", " thickness 20", " porosity .25",
                                          " reference 2000 0 10", " quit", " leakage", " origin -150 -100", " quit"};

// A 2 x 3 grid of 100 m cells with its resistances and the heads below.
void writeGrid(const fs::path& dir) {
  writeLines(dir / "m.del", {" 2", " 100 100", " 3", " 100 100 100"});
  writeLines(dir / "m.vlk", {"1e-3  1e-3  1e-3", "1e-3  2e-3  1e-3"});
  writeLines(dir / "m.rla", {"100 100 100", "100 100 100"});
  writeLines(dir / "m.lhd", {"8 8 8", "8 8 8"});
}

TEST(LeakageProgram, RatesFromTheHeadsAreWrittenBackAndCheckedAfterALoad) {
  TempDir dir;
  writeGrid(dir.Path());
  std::vector<std::string> file = kHeader;
  // The cell of row 1, column 2 (from the top left) has its centre at (0, 50).
  for (const char* l : {" leakage", " solve 1 0 0 0 0.5", " quit", " time 0", " solve 3 1 0 1", " save m", "y",
                        " extract", " file m", " y", " 0 50 TP1", " quit", " stop"})
    file.push_back(l);
  writeLines(dir.Path() / "M.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "M"), 0);
  const auto err = readLines(dir.Path() / "error.log");
  EXPECT_EQ(countContaining(err, "leakage"), 0) << (err.empty() ? "" : err.back());
  EXPECT_EQ(countContaining(err, "not supported"), 0);

  const auto xtr = readLines(dir.Path() / "m.XTR");
  ASSERT_GE(xtr.size(), 2u);
  std::string record = xtr[1].substr(1);  // "@ x, y, head, ..."
  for (char& c : record)
    if (c == ',') c = ' ';
  const double head = numbersOf(record).at(2);
  EXPECT_LT(head, 10.0);
  EXPECT_GT(head, 8.0);

  // New rate = old + 0.5 (computed - old), computed = (h - h_lower) / c at the centre;
  // the error file holds computed - old.
  const auto vlk = readLines(dir.Path() / "m.vlk"), vle = readLines(dir.Path() / "m.vle");
  ASSERT_EQ(vlk.size(), 2u);
  ASSERT_EQ(vle.size(), 2u);
  const double computed = (head - 8.0) / 100.0;
  EXPECT_NEAR(numbersOf(vle[0]).at(1), computed - 1e-3, 1e-8);
  EXPECT_NEAR(numbersOf(vlk[0]).at(1), 1e-3 + 0.5 * (computed - 1e-3), 1e-8);
  EXPECT_EQ(numbersOf(vlk[1]).size(), 3u);

  // The inspection as the front end writes it (no origin: the solution keeps it): load,
  // check the top middle cell with one point, extract the line.
  writeLines(dir.Path() / "_INSPECT.DAT",
             {" error error_insp.log", " yes", " message message_insp.log", " yes", " picture off", " quit",
              " bfname m", " load m", " time 0", " leakage", " check -50 0 50 100 1", " quit",
              " extract", " file _INSPECT.XTR", " y", " leakage", " quit", " stop"});
  ASSERT_EQ(runTarno1(dir.Path(), "_INSPECT.DAT"), 0);
  const auto insp = readLines(dir.Path() / "_INSPECT.XTR");
  ASSERT_GE(insp.size(), 2u);
  ASSERT_EQ(insp[1].substr(0, 8), "leakage ");
  const auto v = numbersOf(insp[1].substr(8));
  ASSERT_EQ(v.size(), 3u);
  EXPECT_NEAR(v[0], 1e-3 * 100 * 100, 1e-9);            // the rate the solution used
  EXPECT_NEAR(v[1], computed * 100 * 100, 1e-4);        // from the head at the centre
  EXPECT_NEAR(v[2], (v[0] - v[1]) / v[1], 1e-6);
  const auto msg = readLines(dir.Path() / "message_insp.log");
  EXPECT_EQ(countContaining(msg, "Total leakage in selected cells: "), 1);
}

TEST(LeakageProgram, BadGridFilesAreReportedWithTheirLine) {
  TempDir dir;
  writeGrid(dir.Path());
  writeLines(dir.Path() / "m.vlk", {"1e-3  1e-3  1e-3", "1e-3  2e-3"});
  std::vector<std::string> file = kHeader;
  for (const char* l : {" leakage", " solve 1 0 0 0 1", " quit", " time 0", " solve 3 1 0 1", " stop"})
    file.push_back(l);
  writeLines(dir.Path() / "M.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "M"), 0);
  auto err = readLines(dir.Path() / "error.log");
  EXPECT_EQ(countContaining(err, "m.vlk line 2: 2 values where the grid has 3 columns"), 1);
  EXPECT_EQ(countContaining(err, "the leakage is left out"), 1);

  // No grid at all; a check before any solve.
  fs::remove(dir.Path() / "m.del");
  file = kHeader;
  for (const char* l : {" leakage", " solve 1 0 0 0 1", " check 0 0 1 1 2", " quit", " stop"}) file.push_back(l);
  writeLines(dir.Path() / "M.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "M"), 0);
  err = readLines(dir.Path() / "error.log");
  EXPECT_EQ(countContaining(err, "m.del was not found"), 1);
  EXPECT_EQ(countContaining(err, "before any solve or load"), 1);
}

}  // namespace
