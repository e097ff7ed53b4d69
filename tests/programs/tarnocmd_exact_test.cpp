// tarnocmd solve with the real solver on models whose answer is known in closed form:
// the heads that come back into WLResults, TPResults and LSResults are compared with
// Thiem's solution and with the potential of a line-sink of given strength.
#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <map>
#include <string>
#include <vector>

#include "program_test_util.h"
#include "store/database.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

constexpr double kPi = 3.14159265358979323846;
// A head of 10 to 100 in a point record (%14.6E) is good to 5e-6.
constexpr double kPointTolerance = 1e-5;

// The aquifer of a case: base B, thickness H, conductivity k.
struct Aquifer {
  double B, H, k;
  // Discharge potential of a head, confined above the top, unconfined below.
  double Potential(double h) const {
    return h >= B + H ? k * H * (h - B) - 0.5 * k * H * H : 0.5 * k * (h - B) * (h - B);
  }
  double Head(double phi) const {
    const double top = 0.5 * k * H * H;
    return phi >= top ? (phi + 0.5 * k * H * H) / (k * H) + B : B + std::sqrt(2 * phi / k);
  }
};

// Where the reference point stands and the head it holds.
constexpr double kRefX = 6000, kRefY = 5000;
constexpr double kWellX = 5000, kWellY = 5000;

// Offsets of the test points from the well, at distances 2 to 2500 in turning
// directions; whole numbers, so that the command file carries them exactly.
const std::vector<std::pair<double, double>> kOffsets = {
    {2, 0}, {0, 10}, {-30, 40}, {120, -160}, {-420, -560}, {1500, 2000}};

class ExactSolve : public TarnocmdProject {
 protected:
  void SetUp() override { MakeProject("exact"); }

  // The aquifer, a reference point through a uniform flow of zero gradient, and no
  // grid or traces (the heads at the points are what is checked).
  void SetAquifer(const Aquifer& a, double refHead) {
    Database db = Database::Open(project_);
    db.ExecuteRaw("UPDATE Model SET AQBase=" + Num(a.B) + ", AQThickness='" + Num(a.H) +
                  "', AQHydCond=" + Num(a.k) +
                  ", UNIFLOWCompute=1, UNIFLOWGradient=0, UNIFLOWOrientation=0, UNIFLOWRefX=" +
                  Num(kRefX) + ", UNIFLOWRefY=" + Num(kRefY) + ", UNIFLOWRefHead=" +
                  Num(refHead) + ", CONTOURShow=-1, TRACECompute=0, SOLVERIterations=3;");
  }
  void AddWell(const std::string& label, double x, double y, double value, double radius,
               bool headSpecified) {
    Database db = Database::Open(project_);
    db.ExecuteRaw("INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, " + Num(x) + ", " +
                  Num(y) + "); INSERT INTO Wells(VID, Label, Head, Radius, HeadSpecified) VALUES "
                  "(last_insert_rowid(), '" + label + "', " + Num(value) + ", " + Num(radius) +
                  ", " + (headSpecified ? "1" : "0") + ");");
  }
  void AddTestPoint(const std::string& label, double x, double y) {
    Database db = Database::Open(project_);
    db.ExecuteRaw("INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, " + Num(x) + ", " +
                  Num(y) + "); INSERT INTO TestPoints(VID, Label, ObsHead) VALUES "
                  "(last_insert_rowid(), '" + label + "', 0);");
  }
  // A discharge-specified string of one segment with strength sigma.
  void AddDischargeLinesink(const std::string& label, double x1, double y1, double x2, double y2,
                            double sigma) {
    Database db = Database::Open(project_);
    db.ExecuteRaw("INSERT INTO Polygons(Closed) VALUES (0);"
                  "INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), "
                  "0, " + Num(x1) + ", " + Num(y1) + ");"
                  "INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), "
                  "100, " + Num(x2) + ", " + Num(y2) + ");"
                  "INSERT INTO LinesinkStrings(PID, Label, HeadSpecified, StartingHead, EndingHead)"
                  " VALUES ((SELECT max(PID) FROM Polygons), '" + label + "', 0, " + Num(sigma) +
                  ", " + Num(sigma) + ");");
  }

  void Solve() {
    const RunResult r = Run({"solve", project_});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    ASSERT_TRUE(Contains(r.out, "Run: new solution")) << r.out;
  }

  // Label -> (first, second) column of a result table.
  std::map<std::string, std::pair<double, double>> Rows(const std::string& sql) {
    std::map<std::string, std::pair<double, double>> rows;
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw(sql);
    while (st.Step()) rows[st.GetText(0)] = {st.GetDouble(1), st.GetDouble(2)};
    return rows;
  }

  // The test points of kOffsets around the well; label -> distance.
  std::map<std::string, double> TestPointsAroundTheWell() {
    std::map<std::string, double> distance;
    for (std::size_t i = 0; i < kOffsets.size(); ++i) {
      const auto [dx, dy] = kOffsets[i];
      const std::string label = "TP" + std::to_string(i);
      AddTestPoint(label, kWellX + dx, kWellY + dy);
      distance[label] = std::hypot(dx, dy);
    }
    return distance;
  }

  static std::string Num(double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.17g", v);
    return buf;
  }
};

class ThiemCase : public ExactSolve, public ::testing::WithParamInterface<int> {};

// Thiem: Phi(r) = Phi_ref + Q / (2 pi) ln(r / r_ref), confined (0) and unconfined (1).
TEST_P(ThiemCase, DischargeWellHeadsFollowThiem) {
  const bool confined = GetParam() == 0;
  const Aquifer a = confined ? Aquifer{10, 20, 12.5} : Aquifer{10, 200, 12.5};
  const double refHead = confined ? 55 : 40;
  const double Q = 1500, rw = 0.25;
  SetAquifer(a, refHead);
  AddWell("Pumping", kWellX, kWellY, Q, rw, false);
  const std::map<std::string, double> distance = TestPointsAroundTheWell();
  Solve();

  const double rRef = kRefX - kWellX;
  auto thiem = [&](double r) {
    return a.Head(a.Potential(refHead) + Q / (2 * kPi) * std::log(r / rRef));
  };
  const auto tp = Rows("select Label, ModelHead, Difference from TPResults");
  ASSERT_EQ(tp.size(), kOffsets.size());
  for (const auto& [label, r] : distance) {
    ASSERT_TRUE(tp.count(label)) << label;
    // The point record carries 7 significant digits.
    EXPECT_NEAR(tp.at(label).first, thiem(r), kPointTolerance) << label << " r=" << r;
    // Difference is model minus observed (observed 0 here).
    EXPECT_DOUBLE_EQ(tp.at(label).second, tp.at(label).first) << label;
  }
  // The unconfined case really is unconfined near the well, the confined one not.
  if (confined)
    EXPECT_GT(thiem(2), a.B + a.H);
  else
    EXPECT_LT(thiem(2500), a.B + a.H);

  const auto wl = Rows("select Label, Head, Discharge from WLResults");
  ASSERT_EQ(wl.size(), 1u);
  EXPECT_NEAR(wl.at("Pumping").first, thiem(rw), 1e-6 * std::abs(thiem(rw)));
  EXPECT_NEAR(wl.at("Pumping").second, Q, 1e-9 * Q);
}

INSTANTIATE_TEST_SUITE_P(ConfinedAndUnconfined, ThiemCase, ::testing::Values(0, 1));

// A head-specified well: Q = (Phi_ref - Phi_w) 2 pi / ln(r_ref / r_w); the heads
// around it follow Thiem with that Q.
TEST_F(ExactSolve, HeadSpecifiedWellTakesThiemsDischarge) {
  const Aquifer a{0, 30, 8};
  const double refHead = 60, hw = 52.5, rw = 0.5;
  SetAquifer(a, refHead);
  AddWell("Supply", kWellX, kWellY, hw, rw, true);
  AddTestPoint("Near", kWellX + 25, kWellY);
  AddTestPoint("Far", kWellX, kWellY - 3000);
  Solve();

  const double rRef = kRefX - kWellX;
  const double Q = (a.Potential(refHead) - a.Potential(hw)) * 2 * kPi / std::log(rRef / rw);
  const auto wl = Rows("select Label, Discharge, Head from WLResults");
  ASSERT_EQ(wl.size(), 1u);
  EXPECT_NEAR(wl.at("Supply").first, Q, 1e-6 * Q);
  EXPECT_NEAR(wl.at("Supply").second, hw, 1e-6 * hw);
  {
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw("select SpecifiedHead from WLResults");
    ASSERT_TRUE(st.Step());
    EXPECT_DOUBLE_EQ(st.GetDouble(0), hw);
  }
  const auto tp = Rows("select Label, ModelHead, ObsHead from TPResults");
  auto thiem = [&](double r) {
    return a.Head(a.Potential(refHead) + Q / (2 * kPi) * std::log(r / rRef));
  };
  EXPECT_NEAR(tp.at("Near").first, thiem(25), kPointTolerance);
  EXPECT_NEAR(tp.at("Far").first, thiem(3000), kPointTolerance);
}

// A line-sink of strength sigma from z1 to z2 has the potential
//   Phi = sigma L / (4 pi) Re[(Z+1) ln(Z+1) - (Z-1) ln(Z-1)] + const,
//   Z = (2z - z1 - z2) / (z2 - z1);
// the constant follows from the reference point.
TEST_F(ExactSolve, DischargeLinesinkHeadsAndInflow) {
  const Aquifer a{0, 25, 20};
  const double refHead = 45, sigma = 2.5;
  SetAquifer(a, refHead);
  const std::complex<double> z1(4800, 4900), z2(5000, 5050);  // length 250
  AddDischargeLinesink("Ditch", z1.real(), z1.imag(), z2.real(), z2.imag(), sigma);
  const std::vector<std::complex<double>> points = {
      {4900, 5000}, {4890, 4980}, {5200, 5000}, {4500, 4000}, {5040, 5080}};
  for (std::size_t i = 0; i < points.size(); ++i)
    AddTestPoint(std::string("P").append(std::to_string(i)), points[i].real(), points[i].imag());
  Solve();

  const double L = std::abs(z2 - z1);
  auto F = [&](std::complex<double> z) {
    const std::complex<double> Z = (2.0 * z - z1 - z2) / (z2 - z1);
    return ((Z + 1.0) * std::log(Z + 1.0) - (Z - 1.0) * std::log(Z - 1.0)).real();
  };
  const std::complex<double> ref(kRefX, kRefY);
  auto head = [&](std::complex<double> z) {
    return a.Head(a.Potential(refHead) + sigma * L / (4 * kPi) * (F(z) - F(ref)));
  };
  const auto tp = Rows("select Label, ModelHead, X from TPResults");
  ASSERT_EQ(tp.size(), points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    const std::string label = std::string("P").append(std::to_string(i));
    EXPECT_NEAR(tp.at(label).first, head(points[i]), kPointTolerance) << label;
  }
  // The segment's inflow is its strength times its length; its ends come back in map
  // units.
  Database db = Database::Open(project_);
  Statement st = db.PrepareRaw("select Discharge, X1, Y1, X2, Y2, SearchType from LSResults");
  ASSERT_TRUE(st.Step());
  EXPECT_NEAR(st.GetDouble(0), sigma * L, 1e-6 * sigma * L);
  EXPECT_NEAR(st.GetDouble(1), z1.real(), 1e-3);
  EXPECT_NEAR(st.GetDouble(2), z1.imag(), 1e-3);
  EXPECT_NEAR(st.GetDouble(3), z2.real(), 1e-3);
  EXPECT_NEAR(st.GetDouble(4), z2.imag(), 1e-3);
  EXPECT_EQ(st.GetText(5), "Discharge");
  EXPECT_FALSE(st.Step());
}

}  // namespace
}  // namespace tarno::test
