// The output report's parts from a model, a solve report and results given by hand.
#include "engine/report.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace tarno::engine {
namespace {

class HandResults : public ExtractSource {
 public:
  PointValues point(double, double, std::optional<double>) const override { return {}; }
  double gageFlow(double, double) const override { return 0; }
  double lakeStage(double, double) const override { return 0; }
  std::vector<WellResult> wells() const override { return wells_; }
  std::vector<SegmentResult> segments() const override { return segments_; }
  double flux(const std::vector<std::pair<double, double>>&) const override { return 0; }
  std::vector<WellResult> wells_;
  std::vector<SegmentResult> segments_;
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> out;
  std::string::size_type at = 0, end;
  while ((end = text.find("\r\n", at)) != std::string::npos) {
    out.push_back(text.substr(at, end - at));
    at = end + 2;
  }
  EXPECT_EQ(at, text.size()) << "the last line ends with CR LF";
  return out;
}

bool Has(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

TEST(RunReport, TellsTheModelTheIterationsTheBalanceAndTheResults) {
  Model m;
  m.aquifer.base = 80;
  m.aquifer.thickness = 40;
  m.aquifer.conductivity = 15;
  m.aquifer.porosity = 0.25;
  m.aquifer.hasReference = true;
  m.aquifer.referenceX = -5000;
  m.aquifer.referenceY = 0;
  m.aquifer.referenceHead = 121.5;
  Well q;
  q.label = "WL_000001";
  Well h;
  h.label = "WL_000002";
  h.headSpecified = true;
  m.wells = {q, h};
  LineSinkString river;
  river.kind = LineSinkKind::Head;
  river.segments.resize(3);
  LineSinkString drain;
  drain.kind = LineSinkKind::Drain;
  drain.segments.resize(1);
  m.lineSinks = {river, drain};

  SolveReport r;
  r.unknowns = 6;
  r.iterations = {{1, 1, 2.5, 0.125, 1, true}, {1, 2, 1e-3, 2e-7, 0, false}};
  r.converged = false;
  r.balance.terms = {{"wells", 0.0, 800.0}, {"line-sinks", 1000.0, 200.0}};
  r.balance.totalIn = 1000.0;
  r.balance.totalOut = 1000.0;

  HandResults results;
  WellResult w;
  w.label = "WL_000001";
  w.x = 1200;
  w.y = 850;
  w.radius = 0.5;
  w.discharge = 800;
  w.head = 112.25;
  results.wells_ = {w};
  SegmentResult s;
  s.label = "LS_000003_0100";
  s.kind = LineSinkKind::Drain;
  s.x2 = 600;
  s.y2 = 250;
  s.specifiedHead = 120;
  s.calculatedHead = 119.5;
  s.discharge = -12.5;
  results.segments_ = {s};

  RunReportHeader header{"Vincennes", "example", "example.DAT", "2026-11-23 12:00:00", 0};
  std::ostringstream out;
  writeRunReport(out, header, m, r, results);
  const std::vector<std::string> lines = Lines(out.str());

  EXPECT_TRUE(Has(lines, "Title:         Vincennes"));
  EXPECT_TRUE(Has(lines, "Run:           2026-11-23 12:00:00"));
  EXPECT_TRUE(Has(lines, "Aquifer: base 80, thickness 40 (top 120), hydraulic conductivity 15, porosity 0.25."));
  EXPECT_TRUE(Has(lines, "Reference point: head 121.5 at (-5000, 0)."));
  EXPECT_TRUE(Has(lines, "No uniform flow."));
  EXPECT_TRUE(Has(lines, "  wells: 2 (1 discharge specified, 1 head specified)"));
  EXPECT_TRUE(Has(lines, "  line-sink strings: 2 with 4 segments"));
  EXPECT_TRUE(Has(lines, "    head specified: 1 string, 3 segments"));
  EXPECT_TRUE(Has(lines, "    drain: 1 string, 1 segment"));
  EXPECT_TRUE(Has(lines, "Equations (unknowns): 6"));
  EXPECT_TRUE(Has(lines, "outer  inner  largest change  largest residual  switches"));
  EXPECT_TRUE(Has(lines, "    1      1    2.500000E+00      1.250000E-01         1"));
  EXPECT_TRUE(Has(lines, "    1      2    1.000000E-03      2.000000E-07         0"));
  EXPECT_TRUE(Has(lines, "Not converged: the iterations ended before every condition was met; a further solve "
                         "continues them."));
  EXPECT_TRUE(Has(lines, "kind                 inflow         outflow"));
  EXPECT_TRUE(Has(lines, "line-sinks     1.000000E+03    2.000000E+02"));
  EXPECT_TRUE(Has(lines, "total          1.000000E+03    1.000000E+03"));
  EXPECT_TRUE(Has(lines, "Difference (inflow minus outflow): 0.000000E+00, relative 0.000E+00."));
  EXPECT_TRUE(Has(lines, "WL_000001     1.200000E+03    8.500000E+02    5.000000E-01    8.000000E+02    1.122500E+02"));
  EXPECT_TRUE(Has(lines, "Line-sinks, drain (discharge > 0 takes water out of the aquifer):"));
  EXPECT_TRUE(Has(lines,
                  "LS_000003_0100     0.000000E+00    0.000000E+00    6.000000E+02    2.500000E+02    1.200000E+02"
                  "    1.195000E+02   -1.250000E+01    0.000000E+00"));
  // Only the kinds the results hold get a table.
  EXPECT_FALSE(Has(lines, "Head specified wells (head error: computed minus specified):"));
  EXPECT_FALSE(Has(lines, "Inhomogeneities (extraction > 0 takes water out; recharge is its negative):"));
}

TEST(RunReport, AModelWithoutElementsSaysSo) {
  SolveReport r;
  r.converged = true;
  std::ostringstream out;
  writeRunReport(out, RunReportHeader{}, Model{}, r, HandResults{});
  const std::vector<std::string> lines = Lines(out.str());
  EXPECT_TRUE(Has(lines, "Title:         (none)"));
  EXPECT_TRUE(Has(lines, "No iterations: the system was solved once."));
  EXPECT_TRUE(Has(lines, "The model has no elements with results of their own."));
}

// The tables give model coordinates; the report says where they are measured from,
// so that an element can be found on the map.
TEST(RunReport, SaysWhereTheCoordinatesAreMeasuredFrom) {
  SolveReport r;
  auto coordinates = [&](const Model& m) {
    std::ostringstream out;
    writeRunReport(out, RunReportHeader{}, m, r, HandResults{});
    for (const std::string& l : Lines(out.str()))
      if (l.rfind("Coordinates:", 0) == 0) return l;
    return std::string();
  };
  Model m;
  m.originX = 447500;
  m.originY = 4386500;
  EXPECT_EQ(coordinates(m),
            "Coordinates: model coordinates, measured from the model origin at (447500, 4386500) on the map.");
  m.unitCode = 1;
  EXPECT_EQ(coordinates(m),
            "Coordinates: model coordinates, measured from the model origin at (447500, 4386500) on the map, "
            "in model units.");
  EXPECT_EQ(coordinates(Model{}), "Coordinates: map coordinates.");
}

// A dry stream reach takes nothing: its discharge shows as 0, never as -0.
TEST(RunReport, ANegativeZeroShowsAsZero) {
  SolveReport r;
  HandResults results;
  SegmentResult s;
  s.label = "LS_000004_0100";
  s.kind = LineSinkKind::Stream;
  s.specifiedHead = 116.6;
  s.calculatedHead = 116.3;
  s.discharge = -0.0;
  s.error = -0.0;
  results.segments_ = {s};
  std::ostringstream out;
  writeRunReport(out, RunReportHeader{}, Model{}, r, results);
  EXPECT_EQ(out.str().find("-0.000000E+00"), std::string::npos);
  EXPECT_NE(out.str().find("1.163000E+02    0.000000E+00    0.000000E+00"), std::string::npos);
}

}  // namespace
}  // namespace tarno::engine
