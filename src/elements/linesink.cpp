#include "elements/linesink.h"

#include <cmath>

#include "core/error.h"
#include "elements/kind.h"
#include "elements/solver_label.h"

namespace tarno {

namespace {

enum class StringBlock { Discharge, Head, Routed };

bool InBlock(const Row& r, StringBlock block) {
  switch (block) {
    case StringBlock::Discharge: return FieldHolds(r, "HeadSpecified", 0);
    case StringBlock::Head: return FieldHolds(r, "HeadSpecified", 1) && FieldHolds(r, "Routing", 0);
    case StringBlock::Routed: return FieldHolds(r, "HeadSpecified", 1) && FieldHolds(r, "Routing", 1);
  }
  return false;
}

// The values of a string at the midpoints of its segments, interpolated linearly
// between the heads (or strengths) at its two ends along the length in map units.
std::vector<double> MidpointValues(const std::vector<Vertex>& v, double start, double end) {
  double total = 0.0;
  for (std::size_t i = 1; i < v.size(); ++i) total += std::hypot(v[i].X - v[i - 1].X, v[i].Y - v[i - 1].Y);
  if (total == 0.0)
    throw Error("Division by zero (a line-sink string whose vertices all coincide)",
                error_number::kDivisionByZero);
  std::vector<double> values;
  double passed = 0.0;
  for (std::size_t i = 1; i < v.size(); ++i) {
    const double s = std::hypot(v[i].X - v[i - 1].X, v[i].Y - v[i - 1].Y);
    values.push_back(start + (end - start) * (passed + 0.5 * s) / total);
    passed += s;
  }
  return values;
}

void AddResultRow(ResultRowSink& rows, const std::string& label, const std::string& solverLabel,
                  const Vertex& a, const Vertex& b, double specifiedHead) {
  Statement& st = rows.Insert(
      "insert into LSResults (Label, TARNOLabel, X1, Y1, X2, Y2, SpecifiedHead, "
      "CalculatedHead, Discharge, Width, Resistance, Depth, BaseFlow, OverlandFlow) "
      "values (?, ?, ?, ?, ?, ?, ?, 0, 0, 0, 0, 0, 0, 0)");
  st.Bind(1, label).Bind(2, solverLabel).Bind(3, a.X).Bind(4, a.Y).Bind(5, b.X).Bind(6, b.Y);
  st.Bind(7, specifiedHead);
  st.Run();
}

std::string Resistance(const Row& r, const CommandWriterContext& ctx) {
  return ctx.ScenarioOr(r.Flag("chkScenario"), r.Text("ScenResistance"), r.Number("Resistance"),
                        "#.000000E+00 ");
}

void WriteBlock(std::ostream& out, const std::vector<Element>& strings, StringBlock block,
                const CommandWriterContext& ctx, ResultRowSink* rows) {
  bool any = false;
  for (const Element& s : strings) {
    const Row& r = s.row;
    if (!InBlock(r, block)) continue;
    if (!any) {
      PutLine(out, " linesink ");
      if (block == StringBlock::Discharge) PutLine(out, " discharge ");
    }
    any = true;
    const std::int64_t pid = s.key;
    const std::vector<Vertex>& v = s.vertices;
    if (block != StringBlock::Discharge && r.Number("Resistance") != 0) ctx.Raise(4);
    if (block == StringBlock::Routed) ctx.Raise(6);
    if (v.size() < 2) continue;
    const double start = r.Number("startinghead");
    const double end = r.Number("endinghead");
    const auto values = MidpointValues(v, start, end);
    const std::string label = r.Text("Label");
    const std::string autoswizc = std::to_string(r.Integer("autoswizc"));
    const bool lake = r.Integer("Lake") != 0;

    if (block == StringBlock::Head) {
      if (r.Integer("Drain") != 0) {
        PutLine(out, " drain ");
      } else if (r.Integer("Gallery") != 0) {
        PutLine(out, " gallery ");
        PutLine(out, " pumping " + Unmasked(r.Number("TotalDischarge")));
      } else {
        PutLine(out, " head ");
      }
      if (r.Integer("FarField") == 0) {
        PutLine(out, " resistance " + Resistance(r, ctx));
        PutLine(out, " width " + Masked(r.Number("Width"), "#.000000E+00 ") + " " + autoswizc);
        PutLine(out, " depth " + Masked(r.Number("Depth"), "#.000000E+00 "));
      } else {
        PutLine(out, " resistance " + Unmasked(0));
        PutLine(out, " width " + Masked(0, "#.000000E+00 ") + " " + autoswizc);
        PutLine(out, " depth " + Masked(0, "#.000000E+00 "));
      }
    } else if (block == StringBlock::Routed) {
      if (!lake) {
        PutLine(out, "* stream parameter is End Inflow (L^3/day)");
        PutLine(out, " stream " + Masked(r.Number("EndInflow"), "0.000000E+00"));
      } else {
        PutLine(out, "* stream parameter is lake evaporation - precipitation (L/day)");
        PutLine(out, " stream " + Masked(r.Number("Evapotranspiration") - r.Number("Precipitation"),
                                         "0.000000E+00"));
      }
      if (r.Integer("EndStream") == 1) PutLine(out, " end");
      if (r.Integer("InletStream") != 0) PutLine(out, " Inlet ");
      if (r.Integer("OutletStream") != 0) PutLine(out, " Outlet " + r.Text("OutletTable"));
      if (lake) {
        PutLine(out, " Lake " + r.Text("OutletTable"));
        PutLine(out, " Levels " + Unmasked(r.Number("TotalDischarge")) + " " + Unmasked(end));
      }
      PutLine(out, " overlandflow " + Masked(r.Number("OverlandFlow"), "0.000000E+00"));
      PutLine(out, " resistance " + Resistance(r, ctx));
      PutLine(out, " width " + Masked(r.Number("Width"), "0.00000E+00 ") + " " + autoswizc);
      PutLine(out, " depth " + Masked(r.Number("Depth"), "0.00000E+00 "));
    }

    for (std::size_t i = 1; i < v.size(); ++i) {
      const Vertex& a = v[i - 1];
      const Vertex& b = v[i];
      const std::string sl = LinesinkSegmentLabel(pid, b.Seq);
      double specified = values[i - 1];
      if (block == StringBlock::Routed) {
        if (lake) specified = start;
        PutLine(out, "  " + Masked(ctx.MX(a.X), "#.000000E+00 ") + Masked(ctx.MY(a.Y), "#.000000E+00 ") +
                         Masked(specified, "#.000000 ") + sl);
      } else {
        PutLine(out, "  " + Masked(ctx.MX(a.X), "#.000000E+00 ") + Masked(ctx.MY(a.Y), "#.000000E+00 ") +
                         Masked(ctx.MX(b.X), "#.000000E+00 ") + Masked(ctx.MY(b.Y), "#.000000E+00 ") +
                         Masked(values[i - 1], "#.00000E+00 ") + sl);
      }
      if (rows != nullptr)
        AddResultRow(*rows, label, sl, a, b, block == StringBlock::Discharge ? -999.0 : specified);
    }
    if (block == StringBlock::Routed)
      PutLine(out, " " + Masked(ctx.MX(v.back().X), "#.000000E+00 ") +
                       Masked(ctx.MY(v.back().Y), "#.000000E+00 "));
  }
  if (any) PutLine(out, " quit ");
}

}  // namespace

std::string LinesinkSegmentLabel(std::int64_t pid, std::int64_t seq) {
  return SolverVertexLabel(Info(ElementKind::Linesink).solverPrefix, pid, seq);
}

void WriteLinesinkCommands(std::ostream& out, const std::vector<Element>& strings,
                           const CommandWriterContext& ctx, ResultRowSink* rows) {
  WriteBlock(out, strings, StringBlock::Discharge, ctx, rows);
  WriteBlock(out, strings, StringBlock::Head, ctx, rows);
  WriteBlock(out, strings, StringBlock::Routed, ctx, rows);
}

std::string LinesinkSearchType(const Element& s) {
  const Row& r = s.row;
  std::string type = "NearField";
  if (r.Integer("FarField") != 0) type = "Farfield";
  if (r.Integer("Drain") != 0) type = "Drain";
  if (r.Integer("Gallery") != 0) type = "Galleries";
  if (r.Integer("HeadSpecified") == 0) type = "Discharge";
  if (r.Integer("Lake") != 0) type = "Lake";
  if (r.Integer("Routing") != 0) type = "Stream";
  return type;
}

double HalfMeanHeadOfHeadLinesinks(Database& db) {
  Statement q = db.Prepare(
      "select 0.5*avg(startinghead+endinghead) as AvgHead from LinesinkStrings where "
      "HeadSpecified=1;");
  return q.Step() ? q.GetDouble("AvgHead") : 0.0;
}

}  // namespace tarno
