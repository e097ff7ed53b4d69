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
#include "elements/element_store.h"
#include "elements/solver_label.h"
#include "elements/well.h"
#include "store/database.h"

namespace tarno {

using draw::DrawCache;
using draw::ModeColour;
using draw::Points;
using draw::ReadVertices;
using DrawVertex = draw::Vertex;

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

void DrawWellElement(DrawContext& ctx, const Element& w, int mode) {
  WellImpl(ctx, w.X(), w.Y(), w.row.Number("Setback"), w.row.Number("Radius"),
           static_cast<int>(w.row.Integer("PPWell")), static_cast<int>(w.row.Integer("Transient")),
           mode);
}

void AllWellsImpl(DrawContext& ctx, DrawCache& cache) {
  if (!ctx.state.ProjectOpen) return;
  const bool withResults = ctx.state.solution.valid;
  for (const Element& w : LoadAll(ctx.db, ElementKind::Well)) {
    int mode = kDrawNormal;
    if (withResults) {
      Statement& r = cache.wellResult.Get(ctx.db);
      r.Bind(1, WellSolverLabel(w.key));
      if (r.Step() && r.GetDouble("Head") < -1000.0) mode = kDrawDryWell;
    }
    DrawWellElement(ctx, w, mode);
  }
}

// ---- line-sink strings ----

Colour LinesinkColour(const Row& row) {
  if (row.Integer("HeadSpecified") != 0) {
    if (row.Integer("Drain") != 0) return PaletteColour(6);
    if (row.Integer("Routing") != 0) return Rgb(90, 47, 0);
    if (row.Integer("Farfield") != 0) return PaletteColour(3);
    return Rgb(0, 0, 255);
  }
  if (row.Integer("Gallery") != 0) return Rgb(0, 255, 0);
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
    const auto linked = ParseSolverLabel(row.linkedTo);
    if (linked && linked->prefix == Info(ElementKind::Linesink).solverPrefix) {
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

// A string's row (none when the vertices have no LinesinkStrings row) and vertices.
void LinesinkImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, const Row* row,
                  const std::vector<DrawVertex>& v, int mode) {
  Colour normal = PaletteColour(5);
  std::string label;
  if (row != nullptr) {
    normal = LinesinkColour(*row);
    label = row->Text("Label");
  }
  const Colour colour = ModeColour(ctx, mode, normal);
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

// The string `pid` as the element's row holds it, or read by itself when the
// vertices have no row of that kind.
void LinesinkImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, int mode) {
  const auto e = LoadRow(ctx.db, ElementKind::Linesink, pid);
  if (e) LinesinkImpl(ctx, cache, pid, &e->row, Points(e->vertices), mode);
  else LinesinkImpl(ctx, cache, pid, nullptr, ReadVertices(ctx, pid), mode);
}

void LakeImpl(DrawContext& ctx, const std::vector<DrawVertex>& v, int mode, Colour normal) {
  const Colour colour = ModeColour(ctx, mode, normal);
  if (v.size() == 1) MarkVertex(ctx, v[0].x, v[0].y, colour);
  draw::DrawVertexLine(ctx, v, true, colour, 0.0, kPenSolid);
  const bool markers =
      mode == kDrawSelected || (mode == kDrawNormal && ctx.state.layers.linesinkVertices);
  if (markers)
    for (const auto& p : v) VertexImpl(ctx, p.x, p.y, mode);
}

void NoFlowImpl(DrawContext& ctx, const std::vector<DrawVertex>& v, int mode, bool closed) {
  const Colour colour = ModeColour(ctx, mode, PaletteColour(0));
  if (v.size() == 1) MarkVertex(ctx, v[0].x, v[0].y, colour);
  draw::DrawVertexLine(ctx, v, closed, colour, 2.0, kPenSolid);
  const bool markers =
      mode == kDrawSelected || (mode == kDrawNormal && ctx.state.layers.linesinkVertices);
  if (markers)
    for (const auto& p : v) VertexImpl(ctx, p.x, p.y, mode);
}

// `all` is every inhomogeneity, read once for the pass; none reads them here.
void InhoImpl(DrawContext& ctx, DrawCache& cache, std::int64_t pid, const std::vector<DrawVertex>& v,
              int mode, Colour color, const std::vector<Element>* all = nullptr) {
  if (!cache.shared) {
    cache.shared.emplace();
    if (all != nullptr) cache.shared->Build(*all);
    else cache.shared->Build(LoadAllRows(ctx.db, ElementKind::Inhomogeneity));
  }
  const Colour colour = ModeColour(ctx, mode, color);
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
  for (const Element& tp : LoadAll(ctx.db, ElementKind::TestPoint)) {
    const std::string type = tp.row.Text("Type");
    const double observed = tp.row.Number("ObsHead");
    TestPointImpl(ctx, tp.X(), tp.Y(), observed, observed, 0, PlainTestPointColour(type), type,
                  tp.row.Text("Label"));
  }
}

void ParticleImpl(DrawContext& ctx, double x, double y, int mode) {
  ctx.g.vgGDIMarker(x, y, 5, ModeColour(ctx, mode, PaletteColour(4)), 1, 0.0, 1.0);
}

void OpenOrClosedString(DrawContext& ctx, const std::vector<DrawVertex>& v, int mode, Colour normal,
                        bool closed, bool showVertices) {
  const Colour colour = ModeColour(ctx, mode, normal);
  if (v.size() == 1) MarkVertex(ctx, v[0].x, v[0].y, colour);
  draw::DrawVertexLine(ctx, v, closed, colour, 0.0, kPenSolid);
  if (mode == kDrawSelected || (mode == kDrawNormal && showVertices))
    for (const auto& p : v) VertexImpl(ctx, p.x, p.y, mode);
}

void DomainImpl(DrawContext& ctx, const Element& domain, int mode) {
  const Row& row = domain.row;
  const bool farField = row.Flag("FarFieldBoundary");
  const bool nearField = row.Flag("NearFieldHU");
  const Colour colour = static_cast<Colour>(row.Integer("Color"));
  const LayerSwitches& l = ctx.state.layers;
  if (farField ? !l.viewFarField : !l.viewNearField) return;
  // Far-field and hydrologic unit boundaries are closed; a model boundary is a line.
  OpenOrClosedString(ctx, Points(domain.vertices), mode, colour, farField || nearField,
                     l.domainVertices);
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
    const auto v = LoadVertex(ctx.db, id);
    if (!v) return false;
    x = v->X;
    y = v->Y;
    return true;
  };
  double x = 0, y = 0;
  switch (sel.type) {
    case 1: {
      if (const auto w = Load(ctx.db, ElementKind::Well, vid)) DrawWellElement(ctx, *w, kDrawSelected);
      break;
    }
    case 2: {
      std::int64_t pid = sel.pid;
      const auto selected = LoadVertex(ctx.db, sel.vid);
      if (selected) pid = selected->PID;
      DrawCache cache;
      LinesinkImpl(ctx, cache, pid, kDrawSelected);
      if (selected) VertexImpl(ctx, selected->X, selected->Y, kDrawSelected);
      break;
    }
    case 21: {
      if (!point(vid, x, y)) break;
      if (const auto tp = LoadRow(ctx.db, ElementKind::TestPoint, vid))
        TestPointImpl(ctx, x, y, 0.0, 0.0, 0, PaletteColour(12), tp->row.Text("Type"), {});
      break;
    }
    case 22:
      if (point(vid, x, y)) ParticleImpl(ctx, x, y, kDrawSelected);
      break;
    case 30: {
      const auto text = LoadRow(ctx.db, ElementKind::Text, sel.id);
      if (!text) break;
      const Row& r = text->row;
      try {
        // The arguments as the highlight has always passed them: face "2", the height
        // from the font name, the colour from the font size, the angle from colour 0.
        const std::int32_t height = draw::TextToLong(r.Text("FontName"));
        ctx.g.vgGDIWorldText(r.Number("X"), r.Number("Y"), r.Text("Text"), "2", height,
                             static_cast<Colour>(r.Integer("FontSize")),
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
    for (const Element& s : LoadAllRows(ctx.db, ElementKind::Linesink))
      LinesinkImpl(ctx, cache, s.key, &s.row, Points(s.vertices), kDrawNormal);
  });
}

void ElemDrawLakes(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ElemDrawLakes", [&] {
    const auto lake = LoadRow(ctx.db, ElementKind::Lake, pid);
    if (lake)
      LakeImpl(ctx, Points(lake->vertices), mode, static_cast<Colour>(lake->row.Integer("Color")));
    else
      LakeImpl(ctx, ReadVertices(ctx, pid), mode, PaletteColour(0));
  });
}

void ElemDrawAllLakes(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllLakes", [&] {
    for (const Element& lake : LoadAllRows(ctx.db, ElementKind::Lake))
      LakeImpl(ctx, Points(lake.vertices), kDrawNormal,
               static_cast<Colour>(lake.row.Integer("Color")));
  });
}

void ElemDrawNoFlowString(DrawContext& ctx, std::int64_t pid, int mode, bool closed) {
  Trap(ctx, "ElemDrawNoFlowString", [&] {
    NoFlowImpl(ctx, ReadVertices(ctx, pid), mode, closed);
  });
}

void ElemDrawAllNoFlow(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllNoFlow", [&] {
    for (const Element& b : LoadAllRows(ctx.db, ElementKind::Barrier))
      NoFlowImpl(ctx, Points(b.vertices), kDrawNormal, b.row.Integer("Closed") != 0);
  });
}

void ElemDrawInho(DrawContext& ctx, std::int64_t pid, int mode, bool /*flag*/, Colour color) {
  Trap(ctx, "ElemDrawInho", [&] {
    DrawCache cache;
    InhoImpl(ctx, cache, pid, ReadVertices(ctx, pid), mode, color);
  });
}

void ElemDrawAllInhos(DrawContext& ctx) {
  Trap(ctx, "ElemDrawAllInhos", [&] {
    DrawCache cache;
    const std::vector<Element> all = LoadAllRows(ctx.db, ElementKind::Inhomogeneity);
    for (const Element& in : all)
      InhoImpl(ctx, cache, in.key, Points(in.vertices), kDrawNormal,
               static_cast<Colour>(in.row.Integer("Color")), &all);
  });
}

void ElemDrawUniformFlow(DrawContext& ctx) {
  Trap(ctx, "ElemDrawUniformFlow", [&] {
    const auto u = LoadUniformFlow(ctx.db);
    if (!u) return;
    ctx.g.vgGDIMarker(u->row.Number("UNIFLOWRefX"), u->row.Number("UNIFLOWRefY"), 8,
                      PaletteColour(0), 1, u->row.Number("UNIFLOWOrientation"), 1.0);
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
    for (const Element& p : LoadAll(ctx.db, ElementKind::Particle))
      ParticleImpl(ctx, p.X(), p.Y(), kDrawNormal);
  });
}

void ModelDrawFluxInspect(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ModelDrawFluxInspect", [&] {
    OpenOrClosedString(ctx, ReadVertices(ctx, pid), mode, PaletteColour(9), false,
                       ctx.state.layers.linesinkVertices);
  });
}

void ModelDrawAllFluxInspect(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllFluxInspect", [&] {
    for (const Element& fl : LoadAllRows(ctx.db, ElementKind::FluxLine))
      OpenOrClosedString(ctx, Points(fl.vertices), kDrawNormal, PaletteColour(9), false,
                         ctx.state.layers.linesinkVertices);
  });
}

void ModelDrawCapzone(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ModelDrawCapzone", [&] {
    OpenOrClosedString(ctx, ReadVertices(ctx, pid), mode, PaletteColour(13), true,
                       ctx.state.layers.domainVertices);
  });
}

void ModelDrawAllCapzones(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllCapzones", [&] {
    if (!ctx.state.layers.protectionAreas) return;
    for (const Element& c : LoadAllRows(ctx.db, ElementKind::Capzone))
      OpenOrClosedString(ctx, Points(c.vertices), kDrawNormal, PaletteColour(13), true,
                         ctx.state.layers.domainVertices);
  });
}

void ModelDrawDomain(DrawContext& ctx, std::int64_t pid, int mode) {
  Trap(ctx, "ModelDrawDomain", [&] {
    if (const auto d = LoadRow(ctx.db, ElementKind::Domain, pid)) DomainImpl(ctx, *d, mode);
  });
}

void ModelDrawAllDomains(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllDomains", [&] {
    for (const Element& d : LoadAllRows(ctx.db, ElementKind::Domain))
      DomainImpl(ctx, d, kDrawNormal);
  });
}

void ModelDrawAllText(DrawContext& ctx) {
  Trap(ctx, "ModelDrawAllText", [&] {
    const WorldWindow& w = ctx.state.Window;
    const LayerSwitches& l = ctx.state.layers;
    bool any = false;
    for (const Element& text : LoadAll(ctx.db, ElementKind::Text)) {
      const Row& st = text.row;
      any = true;
      const int type = static_cast<int>(st.Integer("LabelType"));
      Colour colour;
      if (type == 0) {
        // A user's label disappears when the window is ten times narrower than the
        // width it was placed at.
        if (!(st.Number("ScalerX") / 10.0 < w.Right - w.Left)) continue;
        colour = PaletteColour(0);
      } else {
        if (!(l.hydrographyLabels && l.toolbar)) continue;
        colour = PaletteColour(13);
      }
      ctx.g.vgGDIWorldText(st.Number("X"), st.Number("Y"), st.Text("Text"), st.Text("FontName"),
                           static_cast<int>(st.Integer("FontSize")), colour, 0.0, 0, false);
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
