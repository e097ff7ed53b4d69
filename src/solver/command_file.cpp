#include "solver/command_file.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <ostream>
#include <sstream>
#include <unordered_map>
#include <vector>

#include "core/error.h"
#include "core/format.h"
#include "core/rounding.h"
#include "core/text.h"
#include "solver/model_settings.h"
#include "store/database.h"

namespace tarno {

namespace {

// One line of the command file, with its CR LF.
void Put(std::ostream& out, const std::string& line) { out << line << "\r\n"; }

std::string F(double value, const char* mask) { return FormatNumber(value, mask); }

// A number without a mask: the general form, a blank (or "-") before, a blank after.
std::string G(double value) { return CommandNumber(value); }

std::string Label6(const char* prefix, std::int64_t key) {
  return prefix + F(static_cast<double>(key), "000000");
}

std::string VertexLabel(const char* prefix, std::int64_t pid, std::int64_t seq) {
  return prefix + F(static_cast<double>(pid), "000000_") + F(static_cast<double>(seq), "0000");
}

// The aquifer's parameter fields are "!name!", all others "! name !".
std::string AquiferField(const std::string& tag, const std::string& pad) {
  return "!" + PadString(tag, 12, pad) + "!";
}
std::string ElementField(const std::string& tag, const std::string& pad) {
  return "! " + PadString(tag, 12, pad) + " !";
}

struct Vertex {
  double X = 0.0;
  double Y = 0.0;
  std::int64_t Seq = 0;
};

std::vector<Vertex> ReadVertices(Statement& st, std::int64_t pid) {
  st.Reset();
  st.Bind(1, pid);
  std::vector<Vertex> v;
  while (st.Step()) v.push_back({st.GetDouble("X"), st.GetDouble("Y"), st.GetInt64("Seq")});
  return v;
}

// The vertices of every string, read in one pass ordered by PID and Seq. The
// Vertices table has no index on PID, so a query per string would scan the whole
// table each time; one pass keeps the writer linear in the number of vertices.
class VertexCache {
 public:
  explicit VertexCache(Database& db) {
    Statement st = db.Prepare("select PID, X, Y, Seq from Vertices where PID >= 0 order by PID, Seq");
    while (st.Step())
      strings_[st.GetInt64(0)].push_back({st.GetDouble(1), st.GetDouble(2), st.GetInt64(3)});
  }
  const std::vector<Vertex>& Of(std::int64_t pid) const {
    static const std::vector<Vertex> kNone;
    const auto it = strings_.find(pid);
    return it == strings_.end() ? kNone : it->second;
  }

 private:
  std::unordered_map<std::int64_t, std::vector<Vertex>> strings_;
};

// The window line's four numbers: Left, Bottom, Right, Top in model coordinates.
std::string WindowNumbers(const ModelFrame& frame, const MapWindow& w) {
  return F(WToM_X(frame, w.Left), "######0.00 ") + F(WToM_Y(frame, w.Bottom), "######0.00 ") +
         F(WToM_X(frame, w.Right), "######0.00 ") + F(WToM_Y(frame, w.Top), "######0.00 ");
}

void WriteLayout(std::ostream& out, const ModelFrame& frame, const MapWindow& w) {
  Put(out, " layout ");
  Put(out, " window " + WindowNumbers(frame, w));
  Put(out, " quit ");
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

// The blank rows of the result tables, one prepared statement each.
class ResultRows {
 public:
  explicit ResultRows(Database& db)
      : wl_(db.PrepareRaw(
            "insert into WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, "
            "Head) values (?, ?, ?, ?, 0, ?, 0, 0)")),
        ls_(db.PrepareRaw(
            "insert into LSResults (Label, TARNOLabel, X1, Y1, X2, Y2, SpecifiedHead, "
            "CalculatedHead, Discharge, Width, Resistance, Depth, BaseFlow, OverlandFlow) "
            "values (?, ?, ?, ?, ?, ?, ?, 0, 0, 0, 0, 0, 0, 0)")),
        in_(db.PrepareRaw(
            "insert into INResults (Label, TARNOLabel, Conductivity, BottomElev, ExtractRate, "
            "Porosity, DomainArea, AvgPotJump, X1, Y1, XC, YC, StrPotJumpNode, ParabStrPotJump, "
            "RealStrExtrNode, ImagStrExtrNode, RealStrExtrCntr, Tfac, DeltaPNode, DeltaPCntr) "
            "values (?, ?, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)")),
        nf_(db.PrepareRaw(
            "insert into NFResults (Label, TARNOLabel, Conductivity, Width, Porosity, "
            "WallBottomElev, X1, Y1, XC, YC, StrPotJumpNode, ParabStrPotJump, DeltaFlowCntr, "
            "DeltaFlowNode) values (?, ?, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0)")) {}

  void Well(const std::string& label, const std::string& tarnoLabel, double x, double y,
            double specifiedHead) {
    wl_.Reset();
    wl_.Bind(1, label).Bind(2, tarnoLabel).Bind(3, x).Bind(4, y).Bind(5, specifiedHead);
    wl_.Run();
  }
  void Segment(const std::string& label, const std::string& tarnoLabel, const Vertex& a,
               const Vertex& b, double specifiedHead) {
    ls_.Reset();
    ls_.Bind(1, label).Bind(2, tarnoLabel).Bind(3, a.X).Bind(4, a.Y).Bind(5, b.X).Bind(6, b.Y);
    ls_.Bind(7, specifiedHead);
    ls_.Run();
  }
  void Inhomogeneity(const std::string& label, const std::string& tarnoLabel) {
    in_.Reset();
    in_.Bind(1, label).Bind(2, tarnoLabel);
    in_.Run();
  }
  void Barrier(const std::string& label, const std::string& tarnoLabel) {
    nf_.Reset();
    nf_.Bind(1, label).Bind(2, tarnoLabel);
    nf_.Run();
  }

 private:
  Statement wl_, ls_, in_, nf_;
};

bool AnyRow(Database& db, const char* sql) {
  Statement st = db.Prepare(sql);
  return st.Step();
}

// Writes one block of line-sink strings of the given kind.
enum class StringBlock { Discharge, Head, Routed };

class ElementWriter {
 public:
  ElementWriter(std::ostream& out, Database& db, const ElementWriterContext& ctx, bool fill,
                bool isTemplate, const std::string& pad)
      : out_(out), db_(db), ctx_(ctx), fill_(fill), template_(isTemplate), pad_(pad), vertices_(db) {
    if (fill_) rows_.emplace(db_);
  }

  int level = 1;

  void Raise(int to) {
    if (to > level) level = to;
  }

  double MX(double x) const { return WToM_X(ctx_.frame, x); }
  double MY(double y) const { return WToM_Y(ctx_.frame, y); }

  void OriginAndTitle() {
    const ModelExtents& e = ctx_.extents;
    Put(out_, " modelorigin " + G(e.MinX) + " " + G(e.MinY) + " " +
                  (BasemapConvertCode(ctx_.frame.basemapConvert) == 2   ? " 2 "
                   : BasemapConvertCode(ctx_.frame.basemapConvert) == 0 ? " 0 "
                                                                         : " 1 "));
    Put(out_, " title " + ctx_.baseName);
  }

  void Aquifer() {
    Statement m = db_.Prepare("select * from Model");
    if (!m.Step()) throw Error("The Model table has no row");
    const ModelSettings& s = *ctx_.settings;
    const double base = m.GetDouble("AQBase");
    const double thickness = Val(m.GetText("aqthickness"));
    const double k = m.GetDouble("AQHydCond");

    Put(out_, " aquifer");
    // These two parameter fields do not depend on the template switch: a scenario
    // tag on the aquifer goes into a plain solve's file as well.
    if (s.chkScenarioBaseElev && s.tbScenario[2] != "__NONE__")
      Put(out_, " base " + AquiferField(s.tbScenario[2], pad_));
    else
      Put(out_, " base " + F(base, "#.00000E+00"));
    if (s.chkScenarioHydCond && s.tbScenario[1] != "__NONE__")
      Put(out_, " permeability " + AquiferField(s.tbScenario[1], pad_));
    else
      Put(out_, " permeability " + F(k, "#.0000000E+00"));
    Put(out_, " thickness " + F(thickness, "#.0000000E+00"));
    Put(out_, " porosity " + F(m.GetDouble("AQPorosity"), "#.0000000E+00"));
    if (s.chkAddSaltwaterInterface)
      Put(out_, " interface " + F(m.GetDouble("freshWSpecGravity"), "#.0000000E+00") + " " +
                    F(m.GetDouble("saltWSpecGravity"), "#.0000000E+00") + " " +
                    F(m.GetDouble("LocalSeaLevel"), "#.0000000E+00"));
    if (m.GetInt64("UNIFLOWCompute") != 0) {
      const double refHead = m.GetDouble("UNIFLOWRefHead");
      double h = refHead - base;
      if (h > thickness) h = thickness;
      const double q = m.GetDouble("UNIFLOWGradient") * k * h;
      const double angle = m.GetDouble("UNIFLOWOrientation") * 3.14159265358979 / 180;
      Put(out_, " uniflow      " + F(q * std::cos(angle), "#.0000000E+00 ") +
                    F(q * std::sin(angle), "#.0000000E+00 "));
      Put(out_, " reference    " + F(MX(m.GetDouble("UNIFLOWRefX")), "#.0000000E+00 ") +
                    F(MY(m.GetDouble("UNIFLOWRefY")), "#.0000000E+00 ") +
                    F(refHead, "#.0000000E+00 "));
    } else {
      // Far away: ten half-diagonals beyond the centre of the extents.
      const ModelExtents& e = ctx_.extents;
      const double dx = e.MaxX - e.MinX;
      const double dy = e.MaxY - e.MinY;
      const double r = std::sqrt(dx * dx + dy * dy) / 2;
      const double cx = (e.MinX + e.MaxX) / 2;
      const double cy = (e.MinY + e.MaxY) / 2;
      Put(out_, " reference    " + F(MX(cx + 10 * r), "#.0000000E+00 ") +
                    F(MY(cy + 10 * r), "#.0000000E+00 ") +
                    F(ctx_.state->ReferenceHead, "#.0000000E+00 "));
    }
    Put(out_, " quit ");
  }

  void Lakes() {
    Statement rs = db_.Prepare("select * from Lakes order by PID");
    bool any = false;
    while (rs.Step()) {
      if (!any) Put(out_, " Inhomogeneity");
      any = true;
      Raise(3);
      const std::int64_t pid = rs.GetInt64("PID");
      const auto& v = vertices_.Of(pid);
      if (v.size() < 2) continue;
      Put(out_, " Lake " + F(rs.GetDouble("InterriorConductivity"), "#.00000E+00 ") +
                    F(rs.GetDouble("AddedRechargeRate"), "#.00000E+00 ") +
                    F(rs.GetDouble("Evapotranspiration"), "#.00000E+00 ") +
                    F(rs.GetDouble("Resistance"), "#.00000E+00 ") +
                    rs.GetText("StageTableFilename") + " " + Label6("LK_", pid) + "_0000");
      for (const Vertex& p : v)
        Put(out_, "  " + F(MX(p.X), "#.000000E+00 ") + F(MY(p.Y), "#.000000E+00 ") +
                      VertexLabel("LK_", pid, p.Seq));
    }
    if (any) Put(out_, " quit ");
  }

  void Inhomogeneities() {
    Statement rs = db_.Prepare("select * from Inhomogeneities order by PID");
    bool any = false;
    while (rs.Step()) {
      if (!any) Put(out_, " inhomogeneity ");
      any = true;
      Raise(3);
      const std::int64_t pid = rs.GetInt64("PID");
      const bool changeB = rs.GetBool("ChangeB");
      if (changeB) Raise(6);
      const auto& v = vertices_.Of(pid);
      if (v.size() < 2) continue;
      const std::string label = rs.GetText("Label");
      const std::string scenK = rs.GetText("ScenHydCond");
      const std::string scenR = rs.GetText("ScenRecharge");
      std::string line = " transmissivity ";
      if (template_ && rs.GetBool("chkScenarioHydCond") && scenK != "__NONE__")
        line += ElementField(scenK, pad_) + " ";
      else
        line += F(rs.GetBool("ChangeK") ? rs.GetDouble("HydCond") : -9999, "#.00000E+00 ");
      line += F(changeB ? rs.GetDouble("BottomElevation") : -9999, "#.00000E+00 ");
      line += F(rs.GetBool("ChangeA") ? rs.GetDouble("AverageHead") : -9999, "#.00000E+00 ");
      // The solver wants an extraction rate: the recharge changes its sign.
      if (template_ && rs.GetBool("chkScenarioRecharge") && scenR != "__NONE__")
        line += ElementField(scenR, pad_) + " ";
      else
        line += F(-rs.GetDouble("Recharge"), "#.0000000E+00 ");
      line += F(rs.GetBool("ChangeP") ? rs.GetDouble("Porosity") : -9999, "#.00000E+00 ");
      line += Label6("IN_", pid) + "_0000";
      Put(out_, line);
      for (const Vertex& p : v) {
        const std::string vl = VertexLabel("IN_", pid, p.Seq);
        Put(out_, "  " + F(MX(p.X), "#.000000E+00 ") + F(MY(p.Y), "#.000000E+00 ") + vl);
        if (fill_) rows_->Inhomogeneity(label, vl);
      }
    }
    if (any) Put(out_, " quit ");
  }

  void Barriers() {
    Statement rs = db_.Prepare("select * from NoFlowStrings order by PID");
    bool any = false;
    while (rs.Step()) {
      if (!any) Put(out_, " inhomogeneity ");
      any = true;
      Raise(3);
      const std::int64_t pid = rs.GetInt64("PID");
      if (rs.GetDouble("HydCond") != 0) Raise(6);
      const auto& v = vertices_.Of(pid);
      if (v.size() < 2) continue;
      const std::int64_t closed = rs.GetInt64("Closed");
      const char* mask = closed == 0 ? "#.00000E+00 " : "#.0000000E+00 ";
      const char* word = closed == 0   ? "slurry open     "
                         : closed == 1 ? "slurry closed   "
                         : closed == 2 ? "slurry outside  "
                         : closed == 3 ? "slurry inside   "
                                       : nullptr;
      if (word != nullptr)
        Put(out_, std::string(word) + F(rs.GetDouble("HydCond"), mask) +
                      F(rs.GetDouble("Thickness"), mask) + F(rs.GetDouble("Porosity"), mask) +
                      F(rs.GetDouble("BottomElevation"), mask) + Label6("HB_", pid) + "_0000");
      const std::string label = rs.GetText("Label");
      for (std::size_t i = 0; i < v.size(); ++i) {
        const std::string vl = VertexLabel("HB_", pid, v[i].Seq);
        Put(out_, "  " + F(MX(v[i].X), "#.000000E+00 ") + F(MY(v[i].Y), "#.000000E+00 ") + vl);
        // One row per wall segment: the last vertex has one only on a closed string.
        if (fill_ && (closed == 1 || i + 1 < v.size())) rows_->Barrier(label, vl);
      }
    }
    if (any) Put(out_, " quit ");
  }

  void Wells() {
    struct Block {
      int head, pp, pond, transient;
      const char* menu;
      const char* mode;
    };
    static const Block kBlocks[7] = {
        {0, 0, 0, 0, " well ", " discharge "},     {1, 0, 0, 0, " well ", " head "},
        {0, 1, 0, 0, " ppwell ", " discharge "},   {1, 1, 0, 0, " ppwell ", " head "},
        {0, 0, 0, 1, " twell ", " discharge "},    {0, 0, 1, 0, " sinkdisk ", " discharge "},
        {1, 0, 1, 0, " sinkdisk ", " head "},
    };
    std::string lastTransientLabel;
    bool haveTransient = false;
    for (int b = 0; b < 7; ++b) {
      const Block& k = kBlocks[b];
      Statement rs = db_.Prepare(
          "select Vertices.X,Vertices.Y,Wells.* from Vertices inner join Wells on Vertices.VID "
          "= Wells.VID where HeadSpecified=" +
          std::to_string(k.head) + " and PPWell=" + std::to_string(k.pp) +
          " and Pond=" + std::to_string(k.pond) + " and Transient=" + std::to_string(k.transient) +
          " order by Vertices.VID");
      bool any = false;
      while (rs.Step()) {
        if (!any) {
          Put(out_, k.menu);
          Put(out_, k.mode);
        }
        any = true;
        if (k.pp) Raise(3);
        const std::int64_t vid = rs.GetInt64("VID");
        const std::string wl = Label6("WL_", vid);
        const double x = rs.GetDouble("X");
        const double y = rs.GetDouble("Y");
        const double mx = MX(x);
        const double my = MY(y);
        const double head = rs.GetDouble("Head");
        const double radius = rs.GetDouble("Radius");
        const std::string label = rs.GetText("Label");
        const char* e6 = "#.000000E+00 ";
        switch (b) {
          case 0:
            // The first block's masks differ from the second's; kept as they are.
            Put(out_, "  " + F(mx, "#0.000000E+00 ") + F(my, "0.000000E+00 ") +
                          F(head, "0.00000E+00 ") + F(radius, "0.00000E+00 ") + wl);
            break;
          case 1:
            Put(out_, "  " + F(mx, e6) + F(my, e6) + F(head, e6) + F(radius, e6) + wl);
            break;
          case 2:
          case 3:
            Put(out_, "  " + F(mx, e6) + F(my, e6) + F(rs.GetDouble("TopElev"), e6) +
                          F(rs.GetDouble("BottomElev"), e6) + F(head, e6) + F(radius, e6) + wl);
            break;
          case 4: {
            const double time = rs.GetDouble("Time");
            const std::string tail = F(rs.GetDouble("StartHead"), e6) + F(rs.GetDouble("SS"), e6) +
                                     F(radius, e6) + wl;
            if (rs.GetInt64("Cyclic") != 0) {
              // A pumping schedule: on at 0, off at Time, on at 2 Time, ... by adding
              // and subtracting the same discharge.
              const std::int64_t lines = 2 * rs.GetInt64("Cycles");
              double sign = 1.0;
              for (std::int64_t i = 1; i <= lines; ++i) {
                Put(out_, "  " + F(mx, e6) + F(my, e6) + F(sign * head, e6) +
                              F(static_cast<double>(i - 1) * time, e6) + tail);
                sign = -sign;
              }
            } else {
              Put(out_, "  " + F(mx, e6) + F(my, e6) + F(head, e6) + F(time, e6) + tail);
            }
            break;
          }
          case 5:
            // The literal zero at the end is part of the format.
            Put(out_, "  " + F(mx, e6) + F(my, e6) + F(mx + radius, "#.000000E+00  ") + F(my, e6) +
                          F(head, "##.000000E+00 ") + ".000000E+00 " + wl);
            break;
          case 6:
            Put(out_, "  " + F(mx, e6) + F(my, e6) + F(mx + radius, "#.000000E+00  ") + F(my, e6) +
                          F(head, e6) + wl);
            break;
        }
        if (fill_ && b <= 4) {
          // A schedule spread over several rows with one label gets one result row.
          const bool repeat = b == 4 && haveTransient && label == lastTransientLabel;
          if (!repeat) rows_->Well(label, wl, x, y, (b == 1 || b == 3) ? head : 0.0);
        }
        if (b == 4) {
          lastTransientLabel = label;
          haveTransient = true;
        }
      }
      if (any) Put(out_, " quit ");
    }
  }

  std::string Resistance(Statement& rs) const {
    const std::string scen = rs.GetText("ScenResistance");
    if (template_ && rs.GetBool("chkScenario") && scen != "__NONE__")
      return ElementField(scen, pad_) + " ";
    return F(rs.GetDouble("Resistance"), "#.000000E+00 ");
  }

  void Linesinks(StringBlock block) {
    const char* sql = block == StringBlock::Discharge
                          ? "select * from LinesinkStrings where HeadSpecified=0 order by PID;"
                      : block == StringBlock::Head
                          ? "select * from LinesinkStrings where HeadSpecified=1 and Routing=0 "
                            "order by PID;"
                          : "select * from LinesinkStrings where HeadSpecified=1 and Routing=1 "
                            "order by PID;";
    Statement rs = db_.Prepare(sql);
    bool any = false;
    while (rs.Step()) {
      if (!any) {
        Put(out_, " linesink ");
        if (block == StringBlock::Discharge) Put(out_, " discharge ");
      }
      any = true;
      const std::int64_t pid = rs.GetInt64("PID");
      const auto& v = vertices_.Of(pid);
      if (block != StringBlock::Discharge && rs.GetDouble("Resistance") != 0) Raise(4);
      if (block == StringBlock::Routed) Raise(6);
      if (v.size() < 2) continue;
      const double start = rs.GetDouble("startinghead");
      const double end = rs.GetDouble("endinghead");
      const auto values = MidpointValues(v, start, end);
      const std::string label = rs.GetText("Label");
      const std::string autoswizc = std::to_string(rs.GetInt64("autoswizc"));
      const bool lake = rs.GetInt64("Lake") != 0;

      if (block == StringBlock::Head) {
        if (rs.GetInt64("Drain") != 0) {
          Put(out_, " drain ");
        } else if (rs.GetInt64("Gallery") != 0) {
          Put(out_, " gallery ");
          Put(out_, " pumping " + G(rs.GetDouble("TotalDischarge")));
        } else {
          Put(out_, " head ");
        }
        if (rs.GetInt64("FarField") == 0) {
          Put(out_, " resistance " + Resistance(rs));
          Put(out_, " width " + F(rs.GetDouble("Width"), "#.000000E+00 ") + " " + autoswizc);
          Put(out_, " depth " + F(rs.GetDouble("Depth"), "#.000000E+00 "));
        } else {
          Put(out_, " resistance " + G(0));
          Put(out_, " width " + F(0, "#.000000E+00 ") + " " + autoswizc);
          Put(out_, " depth " + F(0, "#.000000E+00 "));
        }
      } else if (block == StringBlock::Routed) {
        if (!lake) {
          Put(out_, "* stream parameter is End Inflow (L^3/day)");
          Put(out_, " stream " + F(rs.GetDouble("EndInflow"), "0.000000E+00"));
        } else {
          Put(out_, "* stream parameter is lake evaporation - precipitation (L/day)");
          Put(out_, " stream " + F(rs.GetDouble("Evapotranspiration") - rs.GetDouble("Precipitation"),
                                   "0.000000E+00"));
        }
        if (rs.GetInt64("EndStream") == 1) Put(out_, " end");
        if (rs.GetInt64("InletStream") != 0) Put(out_, " Inlet ");
        if (rs.GetInt64("OutletStream") != 0) Put(out_, " Outlet " + rs.GetText("OutletTable"));
        if (lake) {
          Put(out_, " Lake " + rs.GetText("OutletTable"));
          Put(out_, " Levels " + G(rs.GetDouble("TotalDischarge")) + " " + G(end));
        }
        Put(out_, " overlandflow " + F(rs.GetDouble("OverlandFlow"), "0.000000E+00"));
        Put(out_, " resistance " + Resistance(rs));
        Put(out_, " width " + F(rs.GetDouble("Width"), "0.00000E+00 ") + " " + autoswizc);
        Put(out_, " depth " + F(rs.GetDouble("Depth"), "0.00000E+00 "));
      }

      for (std::size_t i = 1; i < v.size(); ++i) {
        const Vertex& a = v[i - 1];
        const Vertex& b = v[i];
        const std::string sl = VertexLabel("LS_", pid, b.Seq);
        double specified = values[i - 1];
        if (block == StringBlock::Routed) {
          if (lake) specified = start;
          Put(out_, "  " + F(MX(a.X), "#.000000E+00 ") + F(MY(a.Y), "#.000000E+00 ") +
                        F(specified, "#.000000 ") + sl);
        } else {
          Put(out_, "  " + F(MX(a.X), "#.000000E+00 ") + F(MY(a.Y), "#.000000E+00 ") +
                        F(MX(b.X), "#.000000E+00 ") + F(MY(b.Y), "#.000000E+00 ") +
                        F(values[i - 1], "#.00000E+00 ") + sl);
        }
        if (fill_)
          rows_->Segment(label, sl, a, b, block == StringBlock::Discharge ? -999.0 : specified);
      }
      if (block == StringBlock::Routed)
        Put(out_, " " + F(MX(v.back().X), "#.000000E+00 ") + F(MY(v.back().Y), "#.000000E+00 "));
    }
    if (any) Put(out_, " quit ");
  }

  void LeakageOrigin() {
    if (!ctx_.modflow.GridPresent) return;
    Put(out_, " leakage");
    Put(out_, " origin " + G(MX(ctx_.modflow.LeakageX)) + " " + G(MY(ctx_.modflow.LeakageY)));
    Put(out_, " quit");
  }

 private:
  std::ostream& out_;
  Database& db_;
  const ElementWriterContext& ctx_;
  bool fill_;
  bool template_;
  std::string pad_;
  std::optional<ResultRows> rows_;
  VertexCache vertices_;
};

}  // namespace

void ToolsWriteTARNOElements(std::ostream& out, Database& db, const ElementWriterContext& ctx,
                             bool fillResults, bool isTemplate, const std::string& padCharacter,
                             int& modelLevel) {
  if (ctx.settings == nullptr || ctx.state == nullptr)
    throw InvalidArgumentError("ToolsWriteTARNOElements needs the model settings and the state");
  UserInterface* ui = isTemplate ? nullptr : ctx.ui;
  if (ui != nullptr) ui->PleaseWaitShow("Writing Data to Solver...", 0);
  try {
    std::optional<Transaction> tx;
    if (!isTemplate) {
      tx.emplace(db);
      db.Execute("DELETE * FROM WLResults;");
      db.Execute("DELETE * FROM LSResults;");
      db.Execute("DELETE * FROM INResults;");
      db.Execute("DELETE * FROM NFResults;");
    }
    ElementWriter w(out, db, ctx, fillResults && !isTemplate, isTemplate, padCharacter);
    w.OriginAndTitle();
    w.Aquifer();
    WriteLayout(out, ctx.frame, ctx.window);
    w.Lakes();
    w.Inhomogeneities();
    w.Barriers();
    w.Wells();
    w.Linesinks(StringBlock::Discharge);
    w.Linesinks(StringBlock::Head);
    w.Linesinks(StringBlock::Routed);
    w.LeakageOrigin();
    if (tx) tx->Commit();
    modelLevel = w.level;
  } catch (...) {
    if (ui != nullptr) ui->PleaseWaitHide();
    throw;
  }
  if (ui != nullptr) ui->PleaseWaitHide();
}

namespace {

// The extents of all vertices, widened by the base maps, the single point and the
// uniform flow's reference point; the map window when there are no vertices.
ModelExtents ComputeExtents(Database& db, const MapWindow& savedWindow,
                            const std::optional<ModelExtents>& basemapExtents) {
  ModelExtents e;
  Statement st = db.Prepare(
      "select max(X) as MaxX,min(X) as MinX,Max(Y) as MaxY,min(Y) as MinY from Vertices;");
  const bool haveVertices = st.Step() && !st.IsNull("MaxX");
  if (haveVertices) {
    e.MinX = st.GetDouble("MinX");
    e.MaxX = st.GetDouble("MaxX");
    e.MinY = st.GetDouble("MinY");
    e.MaxY = st.GetDouble("MaxY");
  } else {
    e.MinX = std::min(savedWindow.Left, savedWindow.Right);
    e.MaxX = std::max(savedWindow.Left, savedWindow.Right);
    e.MinY = std::min(savedWindow.Bottom, savedWindow.Top);
    e.MaxY = std::max(savedWindow.Bottom, savedWindow.Top);
  }
  if (basemapExtents) {
    e.MinX = std::min(e.MinX, basemapExtents->MinX);
    e.MaxX = std::max(e.MaxX, basemapExtents->MaxX);
    e.MinY = std::min(e.MinY, basemapExtents->MinY);
    e.MaxY = std::max(e.MaxY, basemapExtents->MaxY);
  }
  if (e.MinX == e.MaxX && e.MinY == e.MaxY) {
    e.MinX -= 1.0;
    e.MaxX += 1.0;
    e.MinY -= 1.0;
    e.MaxY += 1.0;
  }
  Statement m = db.Prepare("select * from Model;");
  if (!m.Step()) throw Error("The Model table has no row");
  if (m.GetInt64("UNIFLOWCompute") != 0) {
    const double rx = m.GetDouble("UNIFLOWRefX");
    const double ry = m.GetDouble("UNIFLOWRefY");
    e.MinX = std::min(e.MinX, rx);
    e.MaxX = std::max(e.MaxX, rx);
    e.MinY = std::min(e.MinY, ry);
    e.MaxY = std::max(e.MaxY, ry);
  }
  return e;
}

}  // namespace

ModelExtents ModelCheckExtents(Database& db, const MapWindow& savedWindow,
                               const std::optional<ModelExtents>& basemapExtents) {
  const ModelExtents e = ComputeExtents(db, savedWindow, basemapExtents);
  Statement up = db.PrepareRaw("update Model set SOLVERX0=?, SOLVERY0=?");
  up.Bind(1, (e.MinX + e.MaxX) / 2).Bind(2, (e.MinY + e.MaxY) / 2);
  up.Run();
  return e;
}

ModelFrame ModelRestoreModelOrigin(Database& db, double basemapConvert) {
  Statement st = db.Prepare("select SOLVERX0,SOLVERY0 from Model;");
  if (!st.Step()) throw Error("The Model table has no row");
  ModelFrame f;
  f.originX = st.GetDouble("SOLVERX0");
  f.originY = st.GetDouble("SOLVERY0");
  f.basemapConvert = basemapConvert;
  return f;
}

std::string CommandFileName(int writeType, const std::string& baseName) {
  switch (writeType) {
    case kWriteNewSolve:
    case kWriteContinue:
      return baseName + ".dat";
    case kWriteRegrid:
      return "regrid.dat";
    case kWritePestTemplate:
    case kWriteUcodeTemplate:
      return baseName + ".tpl";
    default:
      return "";
  }
}

namespace {

void IterationsAdvice(Database& db, ModelSettings& s, UserInterface& ui) {
  const int iterations = s.Iterations();
  int minimum = 0;
  std::string text;
  if (s.chkConjunctive && iterations < 5) {
    minimum = 5;
    text =
        "For conunctive surface water - grondwater solutions it is recommended to use at least  "
        "      iterations.";
  } else if (iterations < 3 && AnyRow(db, "select * from Inhomogeneities where ChangeB = TRUE")) {
    minimum = 3;
    text =
        "For models containing inhomogeneities with base elevation different from default, it is "
        "recommended to use at least        iterations.";
  } else if (iterations < 2 && AnyRow(db, "select * from LinesinkStrings where Resistance > 0")) {
    minimum = 2;
    text =
        "For models containing linesinks with resistance, it is recommended to use at least      "
        "  iterations.";
  }
  if (minimum == 0) return;
  IterationsDialog dialog;
  dialog.lblRecommended = text;
  dialog.lblRecommendedIterations = minimum;
  dialog.tbIterations = s.tbIterations;
  ui.ShowModal(dialog);
  if (dialog.Result != 1) return;
  s.SetIterations(dialog.tbIterations);
  // The count the user confirmed is the project's from now on: the model settings
  // show it when they open again, and the next solve needs no advice.
  Statement up = db.PrepareRaw("update Model set SOLVERIterations=?");
  up.Bind(1, static_cast<std::int64_t>(s.Iterations()));
  up.Run();
}

void PrepareNewSolve(Database& db, SolutionState& state, UserInterface& ui) {
  Statement m = db.Prepare("select * from Model");
  if (!m.Step()) throw Error("The Model table has no row");
  if (m.GetInt64("UNIFLOWCompute") != 0) return;
  const double top = m.GetDouble("AQBase") + Val(m.GetText("aqthickness"));
  const bool lsMatch = AnyRow(db, "select * from LinesinkStrings where HeadSpecified = 1");
  const bool wlMatch = AnyRow(db, "select * from Wells where HeadSpecified = 1");
  if (!lsMatch && !wlMatch) {
    if (top != state.ReferenceHead) {
      ui.MessageBox("Warning",
                    {"No head-specified conditions exist.",
                     "Reference head will be set to aquifer top."},
                    Buttons::OK, Icon::Exclamation);
      state.ReferenceHead = top;
    }
    return;
  }
  // Half of the mean head of the wells, as the query says; that value is what the
  // file gets.
  Statement q = db.Prepare(
      lsMatch ? "select 0.5*avg(startinghead+endinghead) as AvgHead from LinesinkStrings where "
                "HeadSpecified=1;"
              : "select 0.5*avg(head) as AvgHead from wells where HeadSpecified=1;");
  if (q.Step()) state.ReferenceHead = q.GetDouble("AvgHead");
}

void ExtractBlock(std::ostream& out, Database& db, const ModelFrame& frame,
                  const std::string& base) {
  Put(out, " extract");
  Put(out, " file " + base);
  Put(out, " y");
  Statement tp = db.Prepare(
      "select Vertices.VID,Vertices.X,Vertices.Y,TestPoints.ObsHead,TestPoints.label,"
      "TestPoints.Type from Vertices inner join TestPoints on Vertices.VID = TestPoints.VID "
      "order by Vertices.VID");
  struct Pass {
    const char* type;
    const char* lead;
    const char* prefix;
  };
  const Pass passes[3] = {{"Piezometer", "  ", "TP_"},
                          {"Gage", "  gage ", "TG_"},
                          {"Lake Stage", "  lake_stage ", "TS_"}};
  for (const Pass& p : passes) {
    tp.Reset();
    while (tp.Step()) {
      if (tp.GetText("Type") != p.type) continue;
      Put(out, std::string(p.lead) + F(WToM_X(frame, tp.GetDouble("X")), "######0.00 ") +
                   F(WToM_Y(frame, tp.GetDouble("Y")), "######0.00 ") +
                   Label6(p.prefix, tp.GetInt64("VID")));
    }
  }
  for (const char* request : {" well discharge", " well head", " ppwell discharge", " ppwell head",
                              " Theis well", " linesink discharge", " linesink head",
                              " inhomogeneity"})
    Put(out, request);
  Statement fi = db.Prepare("select * from FluxInspect order by PID");
  Statement vs = db.Prepare("select * from Vertices where PID=? order by Seq");
  while (fi.Step()) {
    const std::int64_t pid = fi.GetInt64("PID");
    Put(out, " flux " + Label6("FL_", pid));
    for (const Vertex& v : ReadVertices(vs, pid))
      Put(out, "  " + F(WToM_X(frame, v.X), "######0.00 ") + F(WToM_Y(frame, v.Y), "######0.00 "));
    Put(out, " quit");
  }
  Put(out, " quit");
}

void GridBlock(std::ostream& out, const ModelFrame& frame, const MapWindow& w,
               const ModelSettings& s, SolutionState& state, const std::string& base) {
  Put(out, " grid");
  if (s.chkContourElevation) {
    const double z = Val(s.tbContourElevation);
    Put(out, " window " + F(WToM_X(frame, w.Left), "######0.00 ") +
                 F(WToM_Y(frame, w.Bottom), "######0.00 ") + F(z, "######0.00 ") +
                 F(WToM_X(frame, w.Right), "######0.00 ") + F(WToM_Y(frame, w.Top), "######0.00 ") +
                 F(z, "######0.00 "));
  } else {
    Put(out, " window " + WindowNumbers(frame, w));
  }
  Put(out, " dotmap off");
  Put(out, " horizontalpoints " + std::to_string(s.DetailedContours()));
  static const char* kPlot[6] = {" plot heads",     " plot potentials", " plot discharge",
                                 " plot interface", " plot stream",     " plot heads"};
  static const char* kNote[6] = {"Contours: Heads",     "Contours: Potentials",
                                 "Contours: Discharge", "Contours: Interface",
                                 "Contours: Stream Function", "Contours: Drawdowns"};
  const int option = s.ContourProperty();
  Put(out, kPlot[option]);
  state.Note = kNote[option];
  Put(out, " go");
  if (option == kContourHeads) {
    // The grid of heads is kept under the base name for a later drawdown run.
    Put(out, " save " + base);
    Put(out, " y");
  }
  if (option == kContourDrawdowns) Put(out, " minusgrid " + base);
  Put(out, " surfer " + base);
  Put(out, " y ");
  Put(out, " quit");
}

void TraceBlock(std::ostream& out, Database& db, const ModelFrame& frame, const ModelSettings& s,
                const std::string& base) {
  Put(out, " trace");
  Put(out, " picture off");
  Put(out, " file " + base);
  Put(out, " y ");
  Put(out, " time " + s.tbMaxTime);
  // The step line is written whatever the default-step box shows.
  Put(out, " step " + s.tbStepSize);
  Statement p = db.Prepare(
      "select Vertices.X,Vertices.Y,Particles.Forward,Particles.SatdThick,Particles.Elevation "
      "from Vertices inner join Particles on Vertices.VID = Particles.VID order by Vertices.VID;");
  bool any = false;
  while (p.Step()) {
    if (!any) Put(out, " points");
    any = true;
    // Only the number 1 means "a fraction of the saturated thickness"; a boolean
    // true stored as -1 uses the elevation.
    const double z = p.GetInt64("SatdThick") == 1 ? Val(s.tbThickness) + Val(s.tbBase)
                                                   : p.GetDouble("Elevation");
    const double direction = p.GetInt64("Forward") != 0 ? 1.0 : -1.0;
    std::string line = " ";
    line += F(WToM_X(frame, p.GetDouble("X")), "0.0000000E+00 ") +
                 F(WToM_Y(frame, p.GetDouble("Y")), "0.0000000E+00 ") + F(z, "0.0000000E+00 ") +
                 F(direction, "#0.0");
    Put(out, line);
  }
  if (any) Put(out, " quit");
  Statement wl = db.Prepare(
      "select Vertices.VID,Vertices.X,Vertices.Y,Wells.NParticles,Wells.StartElev from Vertices "
      "inner join Wells on Vertices.VID = Wells.VID order by Vertices.VID");
  while (wl.Step()) {
    const std::int64_t n = wl.GetInt64("NParticles");
    if (n <= 0) continue;
    Put(out, " well " + F(WToM_X(frame, wl.GetDouble("X")), "0.0000000E+00 ") +
                 F(WToM_Y(frame, wl.GetDouble("Y")), "0.0000000E+00 ") +
                 F(wl.GetDouble("StartElev"), "0.00000E+00 ") + std::to_string(n));
  }
  Put(out, " go");
  Put(out, " quit");
}

}  // namespace

std::filesystem::path ModelWriteInputFile(int writeType, bool solveOnly, bool silent,
                                          CommandFileContext& ctx) {
  if (ctx.settings == nullptr || ctx.state == nullptr || ctx.ui == nullptr)
    throw InvalidArgumentError("ModelWriteInputFile needs the model settings, state and interface");
  ModelSettings& s = *ctx.settings;
  SolutionState& state = *ctx.state;
  UserInterface& ui = *ctx.ui;
  if (writeType < kWriteNewSolve || writeType > kWriteUcodeTemplate) {
    ui.MessageBox("Illegal Parameter",
                  {"Illegal WriteType specified in ModelWriteInputFile.",
                   "No Input file has been written."});
    return {};
  }

  Database db = Database::Open(ctx.projectPath);
  std::string base;
  std::filesystem::path dir;
  {
    Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
    if (!p.Step()) throw Error("The Project table has no row");
    base = p.GetText("TARNOBaseName");
    dir = p.GetText("TARNOBasePath");
  }
  const std::filesystem::path path = dir / CommandFileName(writeType, base);
  const bool regrid = writeType == kWriteRegrid;
  const char* suffix = regrid ? "_gr" : "";

  // The file is assembled in memory and written at the end: a failure on the way
  // leaves the old file as it was, and the solve controller deletes stale files.
  std::ostringstream out;
  if (writeType == kWritePestTemplate) Put(out, "ptf !");
  Put(out, std::string("* Written by TARNO for Windows ") + kTarnoVersion);
  Put(out, std::string(" error error") + suffix + ".log");
  Put(out, " yes");
  Put(out, std::string(" message message") + suffix + ".log");
  Put(out, " yes");
  Put(out, std::string(" echo echo") + suffix + ".log");
  Put(out, " yes");
  Put(out, " picture off");
  Put(out, " quit");
  Put(out, " ");
  Put(out, " bfname  " + base);

  ModelFrame frame;
  ModelExtents extents;
  if (writeType == kWriteNewSolve) {
    extents = ModelCheckExtents(db, ctx.window, ctx.basemapExtents);
    frame = ModelRestoreModelOrigin(db, s.BasemapConvert);
    PrepareNewSolve(db, state, ui);
  } else {
    frame = ModelRestoreModelOrigin(db, s.BasemapConvert);
  }

  if (writeType == kWriteNewSolve || writeType == kWritePestTemplate ||
      writeType == kWriteUcodeTemplate) {
    // Templates take the extents as they stand; the origin row is not touched.
    if (writeType != kWriteNewSolve) extents = ComputeExtents(db, ctx.window, ctx.basemapExtents);
    ElementWriterContext ec;
    ec.settings = &s;
    ec.state = &state;
    ec.window = ctx.window;
    ec.extents = extents;
    ec.frame = frame;
    ec.baseName = base;
    ec.modflow = ctx.modflow;
    ec.ui = &ui;
    int level = 1;
    const bool isTemplate = writeType != kWriteNewSolve;
    ToolsWriteTARNOElements(out, db, ec, !isTemplate, isTemplate, isTemplate ? "_" : "", level);
  }

  if (writeType == kWriteNewSolve && !silent) IterationsAdvice(db, s, ui);

  WriteLayout(out, frame, ctx.window);
  if (writeType == kWriteContinue || regrid) Put(out, " load " + base);

  if (!regrid) {
    if (ctx.modflow.GridPresent && ctx.modflow.IncludeLeakage) {
      const ModflowLink& mf = ctx.modflow;
      Put(out, " leakage");
      Put(out, " solve " + std::to_string(mf.IncludeLeakage ? 1 : 0) + " " +
                   std::to_string(mf.UseAverageHeads ? 1 : 0) + " " +
                   std::to_string(mf.UpdateResistances ? 1 : 0) + " " +
                   std::to_string(mf.UseSubGrid ? 1 : 0) + " " + F(mf.relax, "######0.00 "));
      Put(out, " quit");
    }
    Statement m = db.Prepare("select * from Model");
    if (!m.Step()) throw Error("The Model table has no row");
    const std::int32_t iterations =
        writeType == kWriteContinue ? CLng(Val(ctx.continueIterations)) : s.Iterations();
    const std::int64_t outer = m.GetBool("outeriterationsflag") ? m.GetInt64("OuterIterations") : 3;
    const std::int64_t store = s.chkAddSaltwaterInterface ? 0 : m.GetInt64("StoreMatrixOnDisk");
    const int full = m.GetBool("FastSolution") ? 0 : 1;
    Put(out, " time 0");
    Put(out, std::string(s.chkConjunctive ? " solve conjunctive " : " solve ") +
                 std::to_string(iterations) + " " + std::to_string(outer) + " " +
                 std::to_string(store) + " " + std::to_string(full));
    Put(out, " ");
    Put(out, " save " + base);
    Put(out, "y");
  }

  // " time ", then blanks so that the time begins in column 15.
  std::string timeLine = " time ";
  timeLine.resize(14, ' ');
  Put(out, timeLine + G(state.SolutionTime));

  if (!solveOnly) {
    ExtractBlock(out, db, frame, base);
    if (s.chkContour && !state.ContoursPresent) {
      state.ContoursPresent = true;
      GridBlock(out, frame, ctx.window, s, state, base);
    }
    if (s.chkComputePaths && !state.PathsPresent) {
      state.PathsPresent = true;
      TraceBlock(out, db, frame, s, base);
    }
  }
  Put(out, " stop");

  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) throw Error("Cannot write the command file \"" + path.string() + "\"");
  file << out.str();
  file.close();
  if (!file) throw Error("Cannot write the command file \"" + path.string() + "\"");
  return path;
}

}  // namespace tarno
