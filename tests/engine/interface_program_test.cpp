// The solver program with a salt water interface, end to end: the aquifer's
// ` interface` line is computed (not reported as unsupported), the grid of the
// interface, the extract's ` interface x y` records after a solve and after a load
// (the inspection file as the front end writes it), and interface data that describe
// no interface.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
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

int runTarno1(const fs::path& dir, const std::string& name) {
  tarno::test::RunOptions options;
  options.cwd = dir;
  return tarno::test::RunProgram("tarno1", {"61", name}, options).status;
}

int countContaining(const std::vector<std::string>& lines, const std::string& word) {
  int n = 0;
  for (const auto& l : lines) n += l.find(word) != std::string::npos;
  return n;
}

// Unconfined, base 30 below the sea, k = 20; a uniform inflow of 0.5 towards the sea at
// x < 0 and the reference head of the exact solution at x = 1000 (Phi = 0.5 x), so the
// toe lies at x = k nu (1 + nu) d^2 / (2 q0) = 461.25 with nu = 0.025, d = 30.
const std::vector<std::string> kHeader = {"* Written by TARNO for Windows 2.2.4", " error error.log", " yes",
                                          " message message.log", " yes", " echo echo.log", " yes", " picture off",
                                          " quit", " ", " bfname  coast"};

std::string referenceLine() {
  const double nu = 0.025, d = 30.0, k = 20.0;
  const double h = -30.0 + std::sqrt(2.0 * 500.0 / k + (1 + nu) * d * d);
  char buf[96];
  std::snprintf(buf, sizeof buf, " reference    1.0000000E+03 0.0000000E+00 %.12E ", h);
  return buf;
}

std::vector<std::string> coastModel(const std::string& interfaceLine) {
  return {" modelorigin 0 0 2", " title coast", " aquifer", " base -.30000E+02", " permeability .2000000E+02",
          " thickness .6000000E+02", " porosity .2500000E+00", interfaceLine, " uniflow      -.5000000E+00 .0000000E+00 ",
          referenceLine(), " quit "};
}

double gridValueAt(const std::vector<std::string>& grd, double x) {
  // Rows of 5 values across 0 .. 800 (the first row is at ylo).
  std::istringstream in(grd[5]);
  std::vector<double> row;
  for (double v; in >> v;) row.push_back(v);
  const int i = static_cast<int>(std::lround(x / 200.0));
  return row.at(static_cast<size_t>(i));
}

TEST(InterfaceProgram, SolvedGriddedExtractedAndInspectedAfterALoad) {
  TempDir dir;
  std::vector<std::string> file = kHeader;
  for (const auto& l : coastModel(" interface 1.0000000E+00 1.0250000E+00 0.0000000E+00")) file.push_back(l);
  for (const char* l : {" layout ", " window -100 -100 800 100 ", " quit ", " solve 3 1 0 1", " save coast", "y",
                        " extract", " file coast", " y", "  100.00 0.00 TP_000001", " interface 100 0",
                        " interface 600 0", " quit", " grid", " window 0 -100 800 100", " horizontalpoints 5",
                        " plot interface", " go", " surfer coast", " y", " quit", " stop"})
    file.push_back(l);
  writeLines(dir.Path() / "COAST.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "COAST"), 0);
  EXPECT_FALSE(fs::exists(dir.Path() / "TARNO.OPS"));
  const auto err = readLines(dir.Path() / "error.log");
  EXPECT_EQ(countContaining(err, "interface"), 0) << err.front();
  EXPECT_EQ(countContaining(err, "not supported"), 0);

  // Interface depth below sea level = head / nu.
  const double nu = 0.025;
  auto exactInterface = [&](double x) {
    const double h = std::sqrt(2 * nu * 0.5 * x / (20.0 * (1 + nu)));
    return -h / nu;
  };
  const auto xtr = readLines(dir.Path() / "coast.XTR");
  ASSERT_GE(xtr.size(), 4u);
  EXPECT_TRUE(xtr[1].ends_with("TP_000001"));
  ASSERT_EQ(xtr[2].substr(0, 14), "@    interface");
  EXPECT_NEAR(std::strtod(xtr[2].substr(43, 13).c_str(), nullptr), exactInterface(100.0), 1e-4);
  ASSERT_EQ(xtr[3].substr(0, 14), "@    interface");
  EXPECT_DOUBLE_EQ(std::strtod(xtr[3].substr(43, 13).c_str(), nullptr), -9999.0);  // beyond the toe

  // The grid: the interface at x = 200 and 400, blank at the coast (x = 0) and beyond
  // the toe (600, 800).
  const auto grd = readLines(dir.Path() / "coast.GRD");
  ASSERT_GE(grd.size(), 6u);
  EXPECT_EQ(grd[0], "DSAA");
  EXPECT_NEAR(gridValueAt(grd, 200.0), exactInterface(200.0), 1e-4);
  EXPECT_NEAR(gridValueAt(grd, 400.0), exactInterface(400.0), 1e-4);
  for (double x : {0.0, 600.0, 800.0}) EXPECT_GT(gridValueAt(grd, x), 1e38) << "x = " << x;

  // The report tells where the toe is.
  const auto out = readLines(dir.Path() / "coast.OUT");
  EXPECT_EQ(countContaining(out, "Toe of the interface"), 1);

  // The inspection as the front end writes it: load, time, one point and the interface.
  writeLines(dir.Path() / "_INSPECT.DAT",
             {"* Written by TARNO for Windows 2.2.4", " error error_insp.log", " yes", " message message_insp.log",
              " yes", " echo echo_inspect.log", " yes", " picture off", " quit", " ", " load coast", " time 0",
              " extract ", " file _INSPECT.XTR", " y", "1.0000000E+02 0.0000000E+00      -10.00",
              " interface 1.0000000E+02 0.0000000E+00", " quit ", " stop"});
  ASSERT_EQ(runTarno1(dir.Path(), "_INSPECT.DAT"), 0);
  const auto insp = readLines(dir.Path() / "_INSPECT.XTR");
  ASSERT_GE(insp.size(), 3u);
  EXPECT_EQ(insp[2], xtr[2]);  // the same record as after the solve
  EXPECT_NEAR(std::strtod(insp[1].substr(32, 14).c_str(), nullptr), -10.0, 1e-9);  // Z as given
}

TEST(InterfaceProgram, InterfaceDataThatDescribeNoInterfaceAreReported) {
  TempDir dir;
  std::vector<std::string> file = kHeader;
  // The salt water is not heavier than the fresh water.
  for (const auto& l : coastModel(" interface 1.0250000E+00 1.0000000E+00 0.0000000E+00")) file.push_back(l);
  for (const char* l : {" solve 3 1 0 1", " extract", " file coast", " y", " interface 100 0", " quit", " stop"})
    file.push_back(l);
  writeLines(dir.Path() / "COAST.DAT", file);
  ASSERT_EQ(runTarno1(dir.Path(), "COAST"), 0);
  const auto err = readLines(dir.Path() / "error.log");
  EXPECT_EQ(countContaining(err, "salt water gravity must exceed the fresh water gravity"), 1);
  const auto xtr = readLines(dir.Path() / "coast.XTR");
  ASSERT_GE(xtr.size(), 2u);
  EXPECT_DOUBLE_EQ(std::strtod(xtr[1].substr(43, 13).c_str(), nullptr), -9999.0);
}

}  // namespace
