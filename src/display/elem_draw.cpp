// The drawing of the model's elements on the map.
//
// Every public operation has its own error trap (the general message with the
// operation's name); the "all" operations call the untrapped bodies, so that a
// failure ends the whole pass of that kind, and keep their prepared statements for
// the length of the pass (DrawCache).
//
// Choices this code makes where the drawing is not fixed otherwise:
//   - a vertex marker is point symbol 2 (a diamond outline), pen width 1; the
//     "Linesink Vertices" switch shows the vertices of line-sinks, barriers and
//     lakes, "Inhomogeneity Vertices" those of inhomogeneities, "Domain and
//     Boundary Vertices" those of hydrologic unit strings;
//   - a one-vertex string or polygon is a vertex marker in the element's colour;
//   - ElemDrawInho's flag is accepted and has no effect on the drawing;
//   - line-sinks are drawn one pixel wide over their shadow, barriers 2 points wide,
//     every other outline one pixel wide;
//   - flux inspection lines and protection areas have no colour of their own in the
//     store: flux lines are drawn in palette colour 9, protection areas in palette
//     colour 13; their vertices follow "Linesink Vertices" and "Domain and Boundary
//     Vertices" respectively;
//   - test point symbols: "Piezometer" 1 (diamond), "Gage" 10 (diamond with a
//     triangle), "Lake Stage" 7 (cross); the signed scaled size flips the gage's
//     triangle for a negative residual. Numbers and labels are 8-point Arial;
//   - test points without results get a plain mark: "Piezometer" palette colour 5,
//     "Gage" RGB 0, 255, 255, "Lake Stage" orange (33023);
//   - uniform flow: symbol 8 in palette colour 0;
//   - a stream linkage is a red line from the end of the line-sink to the middle of
//     the line-sink it links to; the end of a stream is a short black line (2
//     points wide) over the second half of the last line-sink;
//   - the selected element's record: Selection.vid is the current Vertices record
//     (Selection.id stands in for it when vid is 0), Selection.pid the string, and
//     for a text label Selection.id is the row id of its TextLabels row;
//   - the selected text label (type 30) draws with the face name "2" and the height
//     converted from the font name; a non-numeric name fails the conversion, which
//     ends that step silently (no message box): in effect the label is not
//     highlighted, as the drawing has always behaved.
#include "display/elem_draw.h"

#include <cmath>
#include <string>

#include "core/error_trap.h"
#include "core/format.h"
#include "core/ui_port.h"
#include "display/draw_common.h"
#include "store/database.h"

namespace tarno {

using draw::DrawCache;
using draw::ModeColour;
using draw::ReadVertices;
using draw::Vertex;

namespace {

constexpr int kVertexSymbol = 2;
constexpr int kTestPointTextPoints = 8;
constexpr int kMouseStateDrawing = 5;
constexpr int kLinesinkMouseMode = 2;
constexpr int kInhoMouseMode = 5;

bool BeingDrawn(const DrawContext& ctx, std::int64_t pid, int mouseMode) {
  const MapState& s = ctx.state;
  return s.mouseState == kMouseStateDrawing && s.mouseMode == mouseMode &&
         (s.drawingPid == 0 || s.drawingPid == pid);
}

void MarkVertex(DrawContext& ctx, double x, double y, Colour colour) {
  ctx.g.vgGDIMarker(x, y, kVertexSymbol, colour, 1, 0.0, 1.0);
}

void VertexImpl(DrawContext& ctx, double x, double y, int mode) {
  MarkVertex(ctx, x, y, mode == kDrawErase ? ctx.state.options.Background : PaletteColour(0));
}

// ---- wells ----

Colour WellColour(const DrawContext& ctx, int ppWell, int transient, int mode) {
  switch (mode) {
    case kDrawSelected: return PaletteColour(12);
    case kDrawErase: return ctx.state.options.Background;
    case kDrawDryWell: return PaletteColour(10);
    default:
      if (ppWell == 1) return Rgb(43, 230, 210);
      if (transient != 0) return Rgb(255, 255, 0);
      return PaletteColour(5);
  }
}

void WellImpl(DrawContext& ctx, double x, double y, double setback, double radius, int ppWell,
              int transient, int mode) {
  const Colour c = WellColour(ctx, ppWell, transient, mode);
  const double convert = ctx.state.frame.basemapConvert;
  ctx.g.vgGDIMarker(x, y, 3, c, 1, 0.0, 1.0);
  ctx.g.vgGDICircle(x, y, setback / convert, c, 1, kPenDot);
  ctx.g.vgGDICircle(x, y, radius / convert, c, 1, kPenSolid);
}

std::string WellTarnoLabel(std::int64_t vid) {
  return "WL_" + FormatNumber(static_cast<double>(vid), "000000");
}

void AllWellsImpl(DrawContext& ctx, DrawCache& cache) {
  if (!ctx.state.ProjectOpen) return;
  Statement st = ctx.db.Prepare(
      "select wells.vid,vertices.x,vertices.y,wells.head,wells.radius,wells.ppwell,"
      "wells.transient,wells.nparticles,wells.setback from vertices,wells where "
      "wells.vid=vertices.vid");
  const bool withResults = ctx.state.solution.valid;
  while (st.Step()) {
    const std::int64_t vid = st.GetInt64(0);
    int mode = kDrawNormal;
    if (withResults) {
      Statement& r = cache.wellResult.Get(ctx.db);
      r.Bind(1, WellTarnoLabel(vid));
      if (r.Step() && r.GetDouble("Head") < -1000.0) mode = kDrawDryWell;
    }
    WellImpl(ctx, st.GetDouble(1), st.GetDouble(2), st.GetDouble(8), st.GetDouble(4),
             static_cast<int>(st.GetInt64(5)), static_cast<int>(st.GetInt64(6)), mode);
  }
}

// ---- line-sink strings ----

Colour LinesinkColour(const Statement& row) {
  if (row.GetInt64("HeadSpecified") != 0) {
    if (row.GetInt64("Drain") != 0) return PaletteColour(6);
    if (row.GetInt64("Routing") != 0) return Rgb(90, 47, 0);
    if (row.GetInt64("Farfield") != 0) return PaletteColour(3);
    return Rgb(0, 0, 255);
  }
  if (row.GetInt64("Gallery") != 0) return Rgb(0, 255, 0);
  return PaletteColour(5);
}

void StreamLinkages(DrawContext& ctx, DrawCache& cache, const std::string& label) {
  struct Row {
    double x1, y1, x2, y2;
    std::string linkedTo;
  };
  std::vector<Row> rows;
  {
    Statement& st = cache.lsResultsOfLabel.Get(ctx.db);
    st.Bind(1, label);
    while (st.Step())
      rows.push_back({st.GetDouble("X1"), st.GetDouble("Y1"), st.GetDouble("X2"),
                      st.GetDouble("Y2"), st.GetText("LinkedTo")});
  }
  for (const Row& row : rows) {
    if (row.linkedTo.compare(0, 2, "LS") == 0) {
      Statement& link = cache.lsResultOfTarnoLabel.Get(ctx.db);
      link.Bind(1, row.linkedTo);
      if (!link.Step()) continue;
      const double xs[2] = {row.x2, 0.5 * (link.GetDouble("X1") + link.GetDouble("X2"))};
      const double ys[2] = {row.y2, 0.5 * (link.GetDouble("Y1") + link.GetDouble("Y2"))};
      ctx.g.vgGDIPolyline(xs, ys, 2, Rgb(255, 0, 0), 0.0, kPenSolid);
    } else if (row.linkedTo == " END_LINESINK") {
      const double xs[2] = {0.5 * (row.x1 + row.x2), row.x2};
      const double ys[2] = {0.5 * (row.y1 + row.y2), row.y2};
      ctx.g.vgGDIPolyline(xs, ys, 2, PaletteColour(0), 2.0, kPenSolid);
    }
  }
}

void LinesinkImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, int mode) {
  Colour normal = PaletteColour(5);
  std::string label;
  {
    Statement& row = cache.lsString.Get(ctx.db);
    row.Bind(1, pid);
    if (row.Step()) {
      normal = LinesinkColour(row);
      label = row.GetText("Label");
    }
  }
  const Colour colour = ModeColour(ctx, mode, normal);
  const std::vector<Vertex> v = ReadVertices(ctx, cache, pid);
  if (v.empty()) return;
  if (v.size() == 1) {
    MarkVertex(ctx, v[0].x, v[0].y, colour);
    return;
  }
  const double shadow = ctx.state.options.LinesinkShadow;
  for (std::size_t i = 1; i < v.size(); ++i) {
    const double xs[2] = {v[i - 1].x, v[i].x};
    const double ys[2] = {v[i - 1].y, v[i].y};
    ctx.g.vgGDIPolyline(xs, ys, 2, PaletteColour(15), shadow, kPenSolid);
    ctx.g.vgGDIPolyline(xs, ys, 2, colour, 0.0, kPenSolid);
  }
  const bool markers = mode == kDrawSelected ||
                       (mode == kDrawNormal && (ctx.state.layers.linesinkVertices ||
                                                BeingDrawn(ctx, pid, kLinesinkMouseMode)));
  if (markers)
    for (const auto& p : v) VertexImpl(ctx, p.x, p.y, mode);
  if (mode == kDrawSelected) {
    for (std::size_t i = 0; i + 1 < v.size(); ++i) {
      if (v[i].vid != ctx.state.selection.vid) continue;
      const double xs[2] = {v[i].x, v[i + 1].x};
      const double ys[2] = {v[i].y, v[i + 1].y};
      ctx.g.vgGDIPolyline(xs, ys, 2, Rgb(255, 255, 0), 0.0, kPenSolid);
    }
  }
  if (ctx.state.layers.streamLinkages && ctx.state.solution.valid && !label.empty())
    StreamLinkages(ctx, cache, label);
}

// ---- lakes, barriers, inhomogeneities ----

void LakeImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, int mode, Colour normal) {
  const Colour colour = ModeColour(ctx, mode, normal);
  const std::vector<Vertex> v = ReadVertices(ctx, cache, pid);
  if (v.size() == 1) MarkVertex(ctx, v[0].x, v[0].y, colour);
  draw::DrawVertexLine(ctx, v, true, colour, 0.0, kPenSolid);
  const bool markers =
      mode == kDrawSelected || (mode == kDrawNormal && ctx.state.layers.linesinkVertices);
  if (markers)
    for (const auto& p : v) VertexImpl(ctx, p.x, p.y, mode);
}

void NoFlowImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, int mode, bool closed) {
  const Colour colour = ModeColour(ctx, mode, PaletteColour(0));
  const std::vector<Vertex> v = ReadVertices(ctx, cache, pid);
  if (v.size() == 1) MarkVertex(ctx, v[0].x, v[0].y, colour);
  draw::DrawVertexLine(ctx, v, closed, colour, 2.0, kPenSolid);
  const bool markers =
      mode == kDrawSelected || (mode == kDrawNormal && ctx.state.layers.linesinkVertices);
  if (markers)
    for (const auto& p : v) VertexImpl(ctx, p.x, p.y, mode);
}

void InhoImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, int mode, Colour color) {
  if (!cache.shared) {
    cache.shared.emplace();
    cache.shared->Build(ctx.db);
  }
  const Colour colour = ModeColour(ctx, mode, color);
  const std::vector<Vertex> v = ReadVertices(ctx, cache, pid);
  const bool drawing = BeingDrawn(ctx, pid, kInhoMouseMode);
  const bool show = ctx.state.layers.inhomogeneityVertices;
  for (const auto& p : v) {
    if (cache.shared->SharedWithOther(p.x, p.y, pid)) {
      if (mode == kDrawSelected)
        MarkVertex(ctx, p.x, p.y, 65535);
      else if (show)
        MarkVertex(ctx, p.x, p.y,
                   mode == kDrawErase ? ctx.state.options.Background : Rgb(128, 128, 128));
    } else if (mode == kDrawSelected || (mode == kDrawNormal && (show || drawing))) {
      VertexImpl(ctx, p.x, p.y, mode);
    }
  }
  if (v.size() == 1) MarkVertex(ctx, v[0].x, v[0].y, colour);
  draw::DrawVertexLine(ctx, v, !drawing, colour, 0.0, kPenSolid);
}

// ---- observation objects ----

int TestPointSymbol(const std::string& type) {
  if (type == "Gage") return 10;
  if (type == "Lake Stage") return 7;
  return 1;
}

Colour ResidualColour(const std::string& type, double diff) {
  const bool above = diff > 0.0;
  if (type == "Gage") return above ? Rgb(0, 64, 128) : Rgb(0, 255, 255);
  if (type == "Lake Stage") return above ? Rgb(128, 255, 128) : Rgb(255, 128, 0);
  return above ? PaletteColour(2) : PaletteColour(4);
}

Colour PlainTestPointColour(const std::string& type) {
  if (type == "Gage") return Rgb(0, 255, 255);
  if (type == "Lake Stage") return 33023;
  return PaletteColour(5);
}

int ScaleOf(const LayerSwitches& l, const std::string& type) {
  if (type == "Gage") return l.gageScale;
  if (type == "Lake Stage") return l.stageScale;
  return l.piezometerScale;
}

void TestPointImpl(DrawContext& ctx, double x, double y, double modelled, double observed,
                   int style, Colour colour, const std::string& type, const std::string& label) {
  const double diff = modelled - observed;
  double size = 1.0;
  if (style == 2 || style == 3) {
    if (observed != 0.0) {
      const double p = diff / observed * 100.0;
      const double s = ScaleOf(ctx.state.layers, type);
      if (p >= s)
        size = 5.0;
      else if (p <= -s)
        size = -5.0;
      else
        size = p / s * 5.0;
    }
  }
  ctx.g.vgGDIMarker(x, y, TestPointSymbol(type), colour, 1, 0.0, size);
  if (style == 1 || style == 3) {
    std::string text = FormatNumber(diff, "###0.00");
    if (diff > 0.0) text = "+" + text;
    ctx.g.vgGDIWorldText(x, y, text, "Arial", kTestPointTextPoints, colour, 0.0, 0, true);
  }
  if (ctx.state.layers.testPointLabels && !label.empty())
    ctx.g.vgGDIWorldText(x, y, label, "Arial", kTestPointTextPoints, colour, 0.0, 2, false);
}

int TestPointStyle(const LayerSwitches& l) {
  return (l.testPointNumbers ? 1 : 0) + (l.testPointScaled ? 2 : 0);
}

void AllTestPointsImpl(DrawContext& ctx) {
  if (!ctx.state.layers.showTestPoints) return;
  const int style = TestPointStyle(ctx.state.layers);
  bool any = false;
  {
    Statement st = ctx.db.Prepare("select * from TPResults");
    while (st.Step()) {
      any = true;
      const std::string type = st.GetText("Type");
      const bool gage = type == "Gage";
      const double observed = gage ? st.GetDouble("ObsStreamFlow") : st.GetDouble("ObsHead");
      const double modelled = gage ? st.GetDouble("ModelFlow") : st.GetDouble("ModelHead");
      TestPointImpl(ctx, st.GetDouble("X"), st.GetDouble("Y"), modelled, observed, style,
                    ResidualColour(type, modelled - observed), type, st.GetText("Label"));
    }
  }
  if (any) return;
  Statement st = ctx.db.Prepare(
      "select vertices.x,vertices.y,testpoints.label,testpoints.obshead,testpoints.type from "
      "vertices,testpoints where testpoints.vid=vertices.vid");
  while (st.Step()) {
    const std::string type = st.GetText(4);
    TestPointImpl(ctx, st.GetDouble(0), st.GetDouble(1), st.GetDouble(3), st.GetDouble(3), 0,
                  PlainTestPointColour(type), type, st.GetText(2));
  }
}

void ParticleImpl(DrawContext& ctx, double x, double y, int mode) {
  ctx.g.vgGDIMarker(x, y, 5, ModeColour(ctx, mode, PaletteColour(4)), 1, 0.0, 1.0);
}

void OpenOrClosedString(DrawContext& ctx, DrawCache& cache, std::int64_t pid, int mode,
                        Colour normal, bool closed, bool showVertices) {
  const Colour colour = ModeColour(ctx, mode, normal);
  const std::vector<Vertex> v = ReadVertices(ctx, cache, pid);
  if (v.size() == 1) MarkVertex(ctx, v[0].x, v[0].y, colour);
  draw::DrawVertexLine(ctx, v, closed, colour, 0.0, kPenSolid);
  if (mode == kDrawSelected || (mode == kDrawNormal && showVertices))
    for (const auto& p : v) VertexImpl(ctx, p.x, p.y, mode);
}

void DomainImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, int mode) {
  Statement& row = cache.domain.Get(ctx.db);
  row.Bind(1, pid);
  if (!row.Step()) return;
  const bool farField = row.GetBool("FarFieldBoundary");
  const bool nearField = row.GetBool("NearFieldHU");
  const Colour colour = static_cast<Colour>(row.GetInt64("Color"));
  const LayerSwitches& l = ctx.state.layers;
  if (farField ? !l.viewFarField : !l.viewNearField) return;
  // Far-field and hydrologic unit boundaries are closed; a model boundary is a line.
  OpenOrClosedString(ctx, cache, pid, mode, colour, farField || nearField, l.domainVertices);
}

template <typename Body>
void Trap(DrawContext& ctx, const char* name, Body&& body) {
  RunOperation(ctx.ui, name, [&] { body(); });
}

// The selected element drawn again over the rest.
void SelectedImpl(DrawContext& ctx) {
  const Selection& sel = ctx.state.selection;
  const std::int64_t vid = sel.vid != 0 ? sel.vid : sel.id;
  auto point = [&](std::int64_t id, double& x, double& y) {
    Statement st = ctx.db.Prepare("select X, Y from Vertices where VID=?");
    st.Bind(1, id);
    if (!st.Step()) return false;
    x = st.GetDouble(0);
    y = st.GetDouble(1);
    return true;
  };
  double x = 0, y = 0;
  switch (sel.type) {
    case 1: {
      Statement st = ctx.db.Prepare(
          "select vertices.x,vertices.y,wells.setback,wells.radius,wells.ppwell,wells.transient "
          "from vertices,wells where wells.vid=vertices.vid and wells.vid=?");
      st.Bind(1, vid);
      if (st.Step())
        WellImpl(ctx, st.GetDouble(0), st.GetDouble(1), st.GetDouble(2), st.GetDouble(3),
                 static_cast<int>(st.GetInt64(4)), static_cast<int>(st.GetInt64(5)),
                 kDrawSelected);
      break;
    }
    case 2: {
      std::int64_t pid = sel.pid;
      Statement st = ctx.db.Prepare("select PID, X, Y from Vertices where VID=?");
      st.Bind(1, sel.vid);
      const bool found = st.Step();
      if (found) pid = st.GetInt64(0);
      DrawCache cache;
      LinesinkImpl(ctx, cache, pid, kDrawSelected);
      if (found) VertexImpl(ctx, st.GetDouble(1), st.GetDouble(2), kDrawSelected);
      break;
    }
    case 21: {
      if (!point(vid, x, y)) break;
      Statement st = ctx.db.Prepare("select * from TestPoints where vid = ?");
      st.Bind(1, vid);
      if (st.Step())
        TestPointImpl(ctx, x, y, 0.0, 0.0, 0, PaletteColour(12), st.GetText("Type"), {});
      break;
    }
    case 22:
      if (point(vid, x, y)) ParticleImpl(ctx, x, y, kDrawSelected);
      break;
    case 30: {
      Statement st = ctx.db.Prepare("select * from TextLabels where rowid=?");
      st.Bind(1, sel.id);
      if (!st.Step()) break;
      try {
        // The arguments as the highlight has always passed them: face "2", the height
        // from the font name, the colour from the font size, the angle from colour 0.
        const std::int32_t height = draw::TextToLong(st.GetText("FontName"));
        ctx.g.vgGDIWorldText(st.GetDouble("X"), st.GetDouble("Y"), st.GetText("Text"), "2",
                             height, static_cast<Colour>(st.GetInt64("FontSize")),
                             static_cast<double>(PaletteColour(0)), 0, false);
      } catch (const Error&) {
        // A font name that is no number: the highlight is dropped without a message.
      }
      break;
    }
    default:
      break;
  }
}

// The PIDs of a table's rows in table order, read before any of them is drawn.
std::vector<std::int64_t> PidsOf(DrawContext& ctx, const char* query) {
  std::vector<std::int64_t> pids;
  Statement st = ctx.db.Prepare(query);
  const int cPid = st.ColumnIndex("PID");
  while (st.Step()) pids.push_back(st.GetInt64(cPid));
  return pids;
}

}  // namespace

// ---- public operations ----

void ElemDrawVertex(DrawContext& ctx, double x, double y, int mode) {
  Trap(ctx, "ElemDrawVertex", [&] { VertexImpl(ctx, x, y, mode); });
}

void ElemDrawWell(DrawContext& ctx, double x, double y, double setback, double radius, int ppWell,
                  int transient, int mode) {
  Trap(ctx, "ElemDrawWell",
       [&] { WellImpl(ctx, x, y, setback, radius, ppWell, transient, mode); });
}

void ElemDrawAllWells(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllWells", [&] {
    DrawCache cache;
    AllWellsImpl(ctx, cache);
  });
}

void ElemDrawLinesinkString(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ElemDrawLinesinkString", [&] {
    DrawCache cache;
    LinesinkImpl(ctx, cache, pid, mode);
  });
}

void ElemDrawAllLinesinks(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllLinesinks", [&] {
    DrawCache cache;
    const std::vector<std::int64_t> pids = PidsOf(ctx, "select * from LinesinkStrings");
    for (auto pid : pids) LinesinkImpl(ctx, cache, pid, kDrawNormal);
  });
}

void ElemDrawLakes(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ElemDrawLakes", [&] {
    DrawCache cache;
    Statement st = ctx.db.Prepare("select Color from Lakes where PID=?");
    st.Bind(1, pid);
    const Colour c = st.Step() ? static_cast<Colour>(st.GetInt64(0)) : PaletteColour(0);
    LakeImpl(ctx, cache, pid, mode, c);
  });
}

void ElemDrawAllLakes(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllLakes", [&] {
    DrawCache cache;
    Statement st = ctx.db.Prepare("select * from Lakes");
    const int cPid = st.ColumnIndex("PID");
    const int cColor = st.ColumnIndex("Color");
    while (st.Step())
      LakeImpl(ctx, cache, st.GetInt64(cPid), kDrawNormal, static_cast<Colour>(st.GetInt64(cColor)));
  });
}

void ElemDrawNoFlowString(DrawContext& ctx, std::int64_t pid, int mode, bool closed) {
  Trap(ctx, "ElemDrawNoFlowString", [&] {
    DrawCache cache;
    NoFlowImpl(ctx, cache, pid, mode, closed);
  });
}

void ElemDrawAllNoFlow(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllNoFlow", [&] {
    DrawCache cache;
    Statement st = ctx.db.Prepare("select * from NoFlowStrings");
    const int cPid = st.ColumnIndex("PID");
    const int cClosed = st.ColumnIndex("Closed");
    while (st.Step())
      NoFlowImpl(ctx, cache, st.GetInt64(cPid), kDrawNormal, st.GetInt64(cClosed) != 0);
  });
}

void ElemDrawInho(DrawContext& ctx, std::int64_t pid, int mode, bool /*flag*/, Colour color) {
  Trap(ctx, "ElemDrawInho", [&] {
    DrawCache cache;
    InhoImpl(ctx, cache, pid, mode, color);
  });
}

void ElemDrawAllInhos(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllInhos", [&] {
    DrawCache cache;
    Statement st = ctx.db.Prepare("select * from Inhomogeneities");
    const int cPid = st.ColumnIndex("PID");
    const int cColor = st.ColumnIndex("Color");
    while (st.Step())
      InhoImpl(ctx, cache, st.GetInt64(cPid), kDrawNormal, static_cast<Colour>(st.GetInt64(cColor)));
  });
}

void ElemDrawUniformFlow(DrawContext& ctx) {
  Trap(ctx, "ElemDrawUniformFlow", [&] {
    Statement st = ctx.db.Prepare(
        "select UNIFLOWCompute, UNIFLOWRefX, UNIFLOWRefY, UNIFLOWOrientation from Model");
    if (!st.Step() || st.GetInt64(0) == 0) return;
    ctx.g.vgGDIMarker(st.GetDouble(1), st.GetDouble(2), 8, PaletteColour(0), 1, st.GetDouble(3),
                      1.0);
  });
}

void ModelDrawTestPoint(DrawContext& ctx, double x, double y, double modelled, double observed,
                        int style, int colourMode, const std::string& type,
                        const std::string& label) {
  Trap(ctx, "ModelDrawTestPoint", [&] {
    Colour c = ResidualColour(type, modelled - observed);
    if (colourMode == 2) c = PaletteColour(12);
    if (colourMode == 3) c = ctx.state.options.Background;
    TestPointImpl(ctx, x, y, modelled, observed, style, c, type, label);
  });
}

void ModelDrawAllTestPoints(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllTestPoints", [&] { AllTestPointsImpl(ctx); });
}

void ModelDrawParticle(DrawContext& ctx, double x, double y, int mode) {
  Trap(ctx, "ModelDrawParticle", [&] { ParticleImpl(ctx, x, y, mode); });
}

void ModelDrawAllParticles(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllParticles", [&] {
    Statement st = ctx.db.Prepare(
        "select vertices.x,vertices.y from vertices,particles where particles.vid=vertices.vid");
    while (st.Step()) ParticleImpl(ctx, st.GetDouble(0), st.GetDouble(1), kDrawNormal);
  });
}

void ModelDrawFluxInspect(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ModelDrawFluxInspect", [&] {
    DrawCache cache;
    OpenOrClosedString(ctx, cache, pid, mode, PaletteColour(9), false,
                       ctx.state.layers.linesinkVertices);
  });
}

void ModelDrawAllFluxInspect(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllFluxInspect", [&] {
    DrawCache cache;
    const std::vector<std::int64_t> pids = PidsOf(ctx, "select * from FluxInspect");
    for (auto pid : pids)
      OpenOrClosedString(ctx, cache, pid, kDrawNormal, PaletteColour(9), false,
                         ctx.state.layers.linesinkVertices);
  });
}

void ModelDrawCapzone(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ModelDrawCapzone", [&] {
    DrawCache cache;
    OpenOrClosedString(ctx, cache, pid, mode, PaletteColour(13), true,
                       ctx.state.layers.domainVertices);
  });
}

void ModelDrawAllCapzones(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllCapzones", [&] {
    if (!ctx.state.layers.protectionAreas) return;
    DrawCache cache;
    const std::vector<std::int64_t> pids = PidsOf(ctx, "select * from Capzones");
    for (auto pid : pids)
      OpenOrClosedString(ctx, cache, pid, kDrawNormal, PaletteColour(13), true,
                         ctx.state.layers.domainVertices);
  });
}

void ModelDrawDomain(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ModelDrawDomain", [&] {
    DrawCache cache;
    DomainImpl(ctx, cache, pid, mode);
  });
}

void ModelDrawAllDomains(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllDomains", [&] {
    DrawCache cache;
    const std::vector<std::int64_t> pids = PidsOf(ctx, "select * from Domains");
    for (auto pid : pids) DomainImpl(ctx, cache, pid, kDrawNormal);
  });
}

void ModelDrawAllText(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllText", [&] {
    Statement st = ctx.db.Prepare("select * from TextLabels");
    const WorldWindow& w = ctx.state.Window;
    const LayerSwitches& l = ctx.state.layers;
    bool any = false;
    while (st.Step()) {
      any = true;
      const int type = static_cast<int>(st.GetInt64("LabelType"));
      Colour colour;
      if (type == 0) {
        // A user's label disappears when the window is ten times narrower than the
        // width it was placed at.
        if (!(st.GetDouble("ScalerX") / 10.0 < w.Right - w.Left)) continue;
        colour = PaletteColour(0);
      } else {
        if (!(l.hydrographyLabels && l.toolbar)) continue;
        colour = PaletteColour(13);
      }
      ctx.g.vgGDIWorldText(st.GetDouble("X"), st.GetDouble("Y"), st.GetText("Text"),
                           st.GetText("FontName"), static_cast<int>(st.GetInt64("FontSize")),
                           colour, 0.0, 0, false);
    }
    if (any) ctx.g.vgGDIRefresh();
  });
}

void ElemDrawAll(DrawContext& ctx) {
  ElemDrawUniformFlow(ctx);
  if (ctx.state.layers.elements) {
    ElemDrawAllWells(ctx);
    ElemDrawAllLinesinks(ctx);
    ElemDrawAllLakes(ctx);
    ElemDrawAllNoFlow(ctx);
    ElemDrawAllInhos(ctx);
  }
  ModelDrawAllTestPoints(ctx);
  ModelDrawAllParticles(ctx);
  ModelDrawAllFluxInspect(ctx);
  ModelDrawAllCapzones(ctx);
  ModelDrawAllDomains(ctx);
  ModelDrawAllText(ctx);
  Trap(ctx, "ElemDrawAll", [&] { SelectedImpl(ctx); });
}

}  // namespace tarno
