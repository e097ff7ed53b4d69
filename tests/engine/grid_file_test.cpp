// Contour grids: the lattice, the values against the solution at the same
// points, blanks, differences against a kept grid, the Surfer file, and the grid
// menu run end to end with its error log lines.

#include "engine/grid.h"
#include "engine/run.h"
#include "helpers.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdlib.h>

namespace fs = std::filesystem;
using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> out;
  std::istringstream in(text);
  std::string l;
  while (std::getline(in, l)) out.push_back(l);
  return out;
}

std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> out;
  std::istringstream in(line);
  std::string w;
  while (in >> w) out.push_back(w);
  return out;
}

// A confined aquifer in uniform flow with one pumping well.
Solution wellInUniformFlow(double pumping = 500.0) {
  Model m = aquiferModel(0.0, 10.0, 20.0, -500.0, 0.0, 40.0);
  m.aquifer.qx0 = 1.0;
  m.wells.push_back(well(52.5, 21.5, pumping, false, 0.2));  // off the lattices below
  Solution s(m);
  s.solve(opts(1));
  return s;
}

std::string readFile(const fs::path& p) {
  std::ifstream f(p, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

using tarno::test::TempDir;

// Runs a command file in `dir` in process; returns the error log's lines.
std::vector<std::string> runIn(const fs::path& dir, const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& l : lines) text += l + "\r\n";
  CommandFile f = parseCommandFile(text);
  EXPECT_EQ(runCommands(f, dir / "G.DAT", dir), kExitOk);
  return splitLines(readFile(dir / "error.log"));
}

const std::vector<std::string> kModel = {
    " error error.log", " y", " message message.log", " y", " aquifer", " base 0", " permeability 10",
    " thickness 20", " porosity 0.25", " uniflow 1 0", " reference -500 0 40", " quit", " layout",
    " window 0.00 0.00 100.00 60.00 ", " quit ", " well", " discharge", "  52.5 21.5 500 .2 WL_000001", " quit",
    " solve 1 1 0 1"};

std::vector<std::string> with(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

}  // namespace

TEST(GridGeometry, RowsFollowTheWindowsHeightAtTheSameSpacing) {
  auto g = gridGeometry(0, 0, 100, 50, 21);  // spacing 5: 11 rows
  ASSERT_TRUE(g);
  EXPECT_EQ(g->nx, 21);
  EXPECT_EQ(g->ny, 11);
  // Corners in any order; a flat window still gets two rows.
  auto r = gridGeometry(100, 1, 0, 0, 11);
  ASSERT_TRUE(r);
  EXPECT_EQ(r->ny, 2);
  EXPECT_DOUBLE_EQ(r->xlo, 0.0);
  EXPECT_DOUBLE_EQ(r->yhi, 1.0);
  EXPECT_EQ(gridGeometry(0, 0, 100, 60, 3)->ny, 2);  // 60 / 50 rounds to one spacing
  EXPECT_EQ(gridGeometry(0, 0, 100, 80, 3)->ny, 3);  // 80 / 50 rounds to two
  // No width, no height, too few points, not finite: no lattice.
  EXPECT_FALSE(gridGeometry(5, 0, 5, 10, 10));
  EXPECT_FALSE(gridGeometry(0, 3, 10, 3, 10));
  EXPECT_FALSE(gridGeometry(0, 0, 10, 10, 1));
  EXPECT_FALSE(gridGeometry(0, 0, NAN, 10, 10));
}

TEST(GridFile, LayoutAndValuesMatchTheSolutionAtTheSamePoints) {
  Solution s = wellInUniformFlow();
  auto geometry = gridGeometry(0, 0, 100, 60, 26);  // spacing 4: 16 rows
  ASSERT_TRUE(geometry);
  Grid grid = computeGrid(s, *geometry, GridQuantity::Heads);
  auto lines = splitLines(formatSurferGrid(grid));
  ASSERT_EQ(lines.size(), 5u + 16u);
  EXPECT_EQ(lines[0], "DSAA");
  EXPECT_EQ(lines[1], "26 16");
  EXPECT_EQ(lines[2], "0.0000000000E+00 1.0000000000E+02");
  EXPECT_EQ(lines[3], "0.0000000000E+00 6.0000000000E+01");
  double lo = 1e300, hi = -1e300;
  for (int j = 0; j < 16; ++j) {
    auto row = words(lines[5 + j]);
    ASSERT_EQ(row.size(), 26u) << "row " << j;
    for (int i = 0; i < 26; ++i) {
      const double v = std::strtod(row[i].c_str(), nullptr);
      const double h = s.head(4.0 * i, 4.0 * j);  // the first row is the one at ylo
      EXPECT_NEAR(v, h, 1e-9 * std::fabs(h)) << i << " " << j;
      lo = std::min(lo, v);
      hi = std::max(hi, v);
    }
  }
  auto range = words(lines[4]);
  ASSERT_EQ(range.size(), 2u);
  EXPECT_DOUBLE_EQ(std::strtod(range[0].c_str(), nullptr), lo);
  EXPECT_DOUBLE_EQ(std::strtod(range[1].c_str(), nullptr), hi);
  // Reading the file back gives the lattice and the values as written.
  Grid back = parseSurferGrid(formatSurferGrid(grid));
  EXPECT_EQ(back.geometry.nx, 26);
  EXPECT_EQ(back.geometry.ny, 16);
  EXPECT_EQ(formatSurferGrid(back), formatSurferGrid(grid));
}

TEST(GridFile, OtherQuantitiesAgreeWithThePointValues) {
  Solution s = wellInUniformFlow();
  auto geometry = gridGeometry(0, 0, 90, 30, 4);
  Grid pot = computeGrid(s, *geometry, GridQuantity::Potentials);
  Grid dis = computeGrid(s, *geometry, GridQuantity::Discharge);
  Grid psi = computeGrid(s, *geometry, GridQuantity::Stream);
  for (int j = 0; j < geometry->ny; ++j)
    for (int i = 0; i < geometry->nx; ++i) {
      const PointValues p = s.evaluate(pot.x(i), pot.y(j));
      EXPECT_DOUBLE_EQ(pot.at(i, j), p.potential);
      EXPECT_DOUBLE_EQ(dis.at(i, j), std::hypot(p.qx, p.qy));
      EXPECT_DOUBLE_EQ(psi.at(i, j), s.streamFunction(pot.x(i), pot.y(j)));
    }
  // Without interface data the interface grid is blank everywhere.
  Grid itf = computeGrid(s, *geometry, GridQuantity::Interface);
  for (double v : itf.z) EXPECT_TRUE(Grid::isBlank(v));
  auto lines = splitLines(formatSurferGrid(itf));
  EXPECT_EQ(lines[4], "0.0000000000E+00 0.0000000000E+00");
  EXPECT_EQ(words(lines[5])[0], "1.70141E+38");
}

TEST(GridFile, DryPointsAreBlankAndLeftOutOfTheRange) {
  // An unconfined aquifer, thin and pumped hard: a dry zone around the well.
  Model m = aquiferModel(0.0, 1.0, 20.0, 1000.0, 0.0, 5.0);
  m.wells.push_back(well(0.0, 0.0, 60.0, false, 0.2));
  Solution s(m);
  s.solve(opts(1));
  auto geometry = gridGeometry(-200, -200, 200, 200, 41);
  Grid grid = computeGrid(s, *geometry, GridQuantity::Heads);
  int blanks = 0;
  double lo = 1e300, hi = -1e300;
  for (int j = 0; j < geometry->ny; ++j)
    for (int i = 0; i < geometry->nx; ++i) {
      const double h = s.head(grid.x(i), grid.y(j));
      if (h <= kDryLimit) {
        EXPECT_TRUE(Grid::isBlank(grid.at(i, j)));
        ++blanks;
      } else {
        EXPECT_DOUBLE_EQ(grid.at(i, j), h);
        lo = std::min(lo, h);
        hi = std::max(hi, h);
      }
    }
  ASSERT_GT(blanks, 0);
  ASSERT_LT(blanks, geometry->nx * geometry->ny);
  auto lines = splitLines(formatSurferGrid(grid));
  EXPECT_NE(lines[5 + 20].find("1.70141E+38"), std::string::npos);  // the row through the well
  auto range = words(lines[4]);
  EXPECT_NEAR(std::strtod(range[0].c_str(), nullptr), lo, 1e-9 * std::fabs(lo));
  EXPECT_NEAR(std::strtod(range[1].c_str(), nullptr), hi, 1e-9 * std::fabs(hi));
}

TEST(GridFile, GhybenHerzbergInterface) {
  Aquifer a;
  a.base = -100.0;
  EXPECT_FALSE(interfaceElevation(a, 1.0, a.base));  // no interface data
  a.hasInterface = true;
  a.freshGravity = 1.0;
  a.saltGravity = 1.025;
  a.seaLevel = 0.0;
  EXPECT_NEAR(*interfaceElevation(a, 1.0, a.base), -40.0, 1e-9);
  a.seaLevel = 2.0;
  EXPECT_NEAR(*interfaceElevation(a, 2.5, a.base), 2.0 - 20.0, 1e-9);
  EXPECT_FALSE(interfaceElevation(a, 5.0, a.base));      // below the base: fresh to the base
  EXPECT_FALSE(interfaceElevation(a, 1.0, a.base));      // head below sea level
  EXPECT_FALSE(interfaceElevation(a, kDryHead, a.base));  // dry
}

TEST(GridDifference, SubtractsPointByPointAndRefusesAnotherLattice) {
  Solution before = wellInUniformFlow(100.0), after = wellInUniformFlow(800.0);
  auto geometry = gridGeometry(0, 0, 100, 60, 11);
  Grid a = computeGrid(after, *geometry, GridQuantity::Heads);
  Grid b = computeGrid(before, *geometry, GridQuantity::Heads);
  Grid d = a;
  b.z[3] = kGridBlank;
  std::string why;
  ASSERT_TRUE(subtractGrid(d, b, &why)) << why;
  EXPECT_TRUE(Grid::isBlank(d.z[3]));
  for (size_t k = 0; k < d.z.size(); ++k) {
    if (k != 3) EXPECT_DOUBLE_EQ(d.z[k], a.z[k] - b.z[k]);
  }
  // The same window with another count, or another window: refused, unchanged.
  Grid other = computeGrid(before, *gridGeometry(0, 0, 100, 60, 12), GridQuantity::Heads);
  Grid kept = a;
  EXPECT_FALSE(subtractGrid(kept, other, &why));
  EXPECT_NE(why.find("points"), std::string::npos);
  EXPECT_EQ(kept.z, a.z);
  Grid moved = computeGrid(before, *gridGeometry(10, 0, 110, 60, 11), GridQuantity::Heads);
  EXPECT_FALSE(subtractGrid(kept, moved, &why));
  EXPECT_EQ(kept.z, a.z);
  // A kept grid read back from its file still matches its lattice.
  Grid fromFile = parseSurferGrid(formatSurferGrid(b, 16));
  Grid e = a;
  EXPECT_TRUE(subtractGrid(e, fromFile, &why)) << why;
  EXPECT_DOUBLE_EQ(e.z[0], a.z[0] - b.z[0]);
}

TEST(GridFile, MalformedGridFilesNameTheLine) {
  EXPECT_THROW(parseSurferGrid("DSBB\n"), std::runtime_error);
  try {
    parseSurferGrid("DSAA\n3 2\n0 1\n0 1\n0 1\n1 2 3\n4 x 6\n");
    FAIL();
  } catch (const std::runtime_error& e) {
    EXPECT_NE(std::string(e.what()).find("line 7"), std::string::npos) << e.what();
  }
  EXPECT_THROW(parseSurferGrid("DSAA\n3 2\n0 1\n0 1\n0 1\n1 2 3\n"), std::runtime_error);  // too few values
  EXPECT_THROW(parseSurferGrid("DSAA\n1 2\n0 1\n0 1\n0 1\n1 2\n"), std::runtime_error);    // one column
}

TEST(GridMenu, ActionsRunInFileOrderAndDrawdownsUseTheKeptGridOfAnEarlierRun) {
  TempDir dir;
  // First run: heads kept under "demo" and written.
  auto err = runIn(dir.Path(), with(kModel, {" grid", " window 0.00 0.00 100.00 60.00", " dotmap off",
                                             " horizontalpoints 11", " plot heads", " go", " save demo", " y",
                                             " surfer demo", " y ", " quit", " stop"}));
  EXPECT_EQ(err, std::vector<std::string>{"*"});
  ASSERT_TRUE(fs::exists(dir.Path() / "demo.GRD"));
  ASSERT_TRUE(fs::exists(dir.Path() / "demo.KGR"));
  Grid heads1 = parseSurferGrid(readFile(dir.Path() / "demo.GRD"));
  // Second run, pumping more: the new heads minus the kept ones; a surfer before the
  // difference writes the plain heads.
  auto model2 = kModel;
  for (auto& l : model2)
    if (l.find("WL_000001") != std::string::npos) l = "  52.5 21.5 900 .2 WL_000001";
  err = runIn(dir.Path(), with(model2, {" grid", " window 0.00 0.00 100.00 60.00", " horizontalpoints 11",
                                        " plot heads", " go", " surfer plain", " y", " minusgrid DEMO",
                                        " surfer demo", " y ", " quit", " stop"}));
  EXPECT_EQ(err, std::vector<std::string>{"*"});
  Grid plain = parseSurferGrid(readFile(dir.Path() / "plain.GRD"));
  Grid diff = parseSurferGrid(readFile(dir.Path() / "demo.GRD"));
  ASSERT_EQ(plain.z.size(), heads1.z.size());
  for (size_t k = 0; k < plain.z.size(); ++k) {
    EXPECT_NEAR(diff.z[k], plain.z[k] - heads1.z[k], 1e-8);
    EXPECT_LT(diff.z[k], 0.0);  // more pumping: lower heads everywhere
  }
  // A missing kept grid: one error line, and the grid is written as it stands.
  err = runIn(dir.Path(), with(kModel, {" grid", " horizontalpoints 11", " go", " minusgrid absent",
                                        " surfer third", " y", " quit", " stop"}));
  ASSERT_EQ(err.size(), 1u);
  EXPECT_EQ(err[0].rfind("line " + std::to_string(kModel.size() + 4), 0), 0u) << err[0];
  EXPECT_NE(err[0].find("absent"), std::string::npos);
  Grid third = parseSurferGrid(readFile(dir.Path() / "third.GRD"));  // the layout window, as heads1
  ASSERT_EQ(third.z.size(), heads1.z.size());
  for (size_t k = 0; k < third.z.size(); ++k) EXPECT_NEAR(third.z[k], heads1.z[k], 1e-8);
}

TEST(GridMenu, BadInputIsReportedWithItsLineAndNeverWritesAStaleGrid) {
  TempDir dir;
  const int n = static_cast<int>(kModel.size());
  auto err = runIn(dir.Path(), with(kModel, {" grid", " window 5 0 5 60", " horizontalpoints 0", " go",
                                             " surfer flat", " y", " quit", " grid", " horizontalpoints 5",
                                             " surfer nogo", " y", " quit", " grid", " horizontalpoints 5",
                                             " plot interface", " go", " surfer itf", " y", " quit", " stop"}));
  ASSERT_EQ(err.size(), 6u);
  // Line by line: the bad count; at the go the missing count and the flat window
  // (the layout window stands in); the block without go and its surfer; the
  // interface without data.
  EXPECT_EQ(err[0].rfind("line " + std::to_string(n + 3), 0), 0u) << err[0];
  EXPECT_EQ(err[1].rfind("line " + std::to_string(n + 4), 0), 0u) << err[1];
  EXPECT_NE(err[1].find("50 points across"), std::string::npos) << err[1];
  EXPECT_EQ(err[2].rfind("line " + std::to_string(n + 4), 0), 0u) << err[2];
  EXPECT_NE(err[2].find("layout window was used"), std::string::npos) << err[2];
  EXPECT_EQ(err[3].rfind("line " + std::to_string(n + 8), 0), 0u) << err[3];
  EXPECT_EQ(err[4].rfind("line " + std::to_string(n + 10), 0), 0u) << err[4];
  EXPECT_EQ(err[5].rfind("line " + std::to_string(n + 16), 0), 0u) << err[5];
  EXPECT_TRUE(fs::exists(dir.Path() / "flat.GRD"));
  EXPECT_FALSE(fs::exists(dir.Path() / "nogo.GRD"));
  EXPECT_TRUE(fs::exists(dir.Path() / "itf.GRD"));
  // Before any solve there is nothing to grid.
  TempDir empty;
  err = runIn(empty.Path(), {" error error.log", " y", " grid", " window 0 0 1 1", " horizontalpoints 5", " go",
                             " surfer x", " y", " quit", " stop"});
  ASSERT_EQ(err.size(), 2u);
  EXPECT_NE(err[0].find("solved"), std::string::npos) << err[0];
  EXPECT_FALSE(fs::exists(empty.Path() / "x.GRD"));
}

TEST(GridMenu, ReaderKeepsTheActionsInOrderWithTheSettingsOfEachGo) {
  CommandFile f = parseCommandFile(
      " grid\n window 0 0 10 10\n horizontalpoints 11\n plot heads\n go\n save a\n y\n plot stream\n"
      " window 0 0 1\n go\n minusgrid a\n surfer b\n y\n save\n quit\n stop\n");
  ASSERT_EQ(f.steps.size(), 2u);
  const auto* g = std::get_if<GridInput>(&f.steps[0].data);
  ASSERT_TRUE(g);
  ASSERT_EQ(g->actions.size(), 5u);
  using K = GridAction::Kind;
  std::vector<K> kinds;
  for (const auto& a : g->actions) kinds.push_back(a.kind);
  EXPECT_EQ(kinds, (std::vector<K>{K::Go, K::Save, K::Go, K::MinusGrid, K::Surfer}));
  EXPECT_EQ(g->actions[0].settings.plot, "heads");
  EXPECT_DOUBLE_EQ(g->actions[0].settings.window->x2, 10.0);
  EXPECT_EQ(g->actions[2].settings.plot, "stream");
  EXPECT_DOUBLE_EQ(g->actions[2].settings.window->x2, 10.0);  // the three-number window was skipped
  EXPECT_EQ(g->actions[3].line, 11);
  EXPECT_EQ(g->actions[4].name, "b");
  // The bad window and the save without a name.
  ASSERT_EQ(f.problems.size(), 2u);
  EXPECT_EQ(f.problems[0].line, 9);
  EXPECT_EQ(f.problems[1].line, 14);
}
