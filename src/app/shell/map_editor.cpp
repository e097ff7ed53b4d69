#include "app/shell/map_editor.h"

#include <algorithm>
#include <cmath>

#include "app/shell/tool.h"
#include "app/shell/tool_box.h"
#include "app/shell/tool_point.h"
#include "app/shell/tool_select.h"
#include "app/shell/tool_string.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "core/format.h"
#include "display/elem_draw.h"
#include "display/navigation.h"
#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "elements/geometry.h"
#include "elements/linesink.h"
#include "elements/uniform_flow_dialog.h"
#include "elements/well.h"
#include "solver/result_views.h"
#include "store/undo_history.h"

namespace tarno {

using lifecycle_text::kSelectActivity;
using lifecycle_text::kSelectFeedback;

namespace {

// The captions of the Edit menu without a selection.
constexpr const char* kPropertiesCaption = "&Properties";
constexpr const char* kMoveCaption = "&Move";
constexpr const char* kDeleteCaption = "&Delete";
constexpr const char* kRefineCaption = "&Refine";
constexpr const char* kDeleteAllCaption = "Delete &All...";

constexpr const char* kMoveVertexFeedback =
    "Place cursor at new vertex location and release mouse button";
constexpr const char* kMoveTextFeedback =
    "Place cursor at new text location and release mouse button";

// The warning before the uniform flow mode.
const std::vector<std::string>& UniformFlowWarning() {
  static const std::vector<std::string> lines = {
      "Uniform flow is not an analytic element, but an approximation",
      "of local ambient flow used for conceptual modeling purposes.",
      "While it technically can be combined with analytic elements it",
      "should not generally  be part of a groundwater flow model.",
      "Please refer to the the TARNO manual for details about the proper",
      "use of uniform flow.",
      "Press NO to remove any current uniform flow settings.",
      "Do you wish to use uniform flow? "};
  return lines;
}

bool IsString(ElementKind kind) {
  const Geometry g = Info(kind).geometry;
  return g == Geometry::String || g == Geometry::Polygon;
}

// The number as the status bar's texts concatenate it.
std::string Num(double v) { return GeneralNumber(v); }

std::string WellFeedback(const Element& w) {
  const bool pond = w.row.Flag("Pond");
  std::string text = (pond ? "Pond: " : "Well: ") + w.Label();
  if (w.row.Flag("HeadSpecified")) {
    text += " Head: " + Num(w.row.Number("Head"));
  } else {
    const double q = w.row.Number("Head");
    text += (q >= 0 ? " Pumping Rate: " : " Recharge Rate: ") + Num(std::fabs(q));
  }
  text += " Radius: " + Num(w.row.Number("Radius"));
  return text;
}

std::string LinesinkFeedback(const Element& s) {
  std::string text = "Label: " + s.Label();
  if (s.row.Flag("HeadSpecified")) {
    text += "  Starting Head: " + FormatNumber(s.row.Number("StartingHead"), "#####.##") +
            " Ending Head: " + FormatNumber(s.row.Number("EndingHead"), "####0.00");
  } else {
    text += "  Starting Discharge: " + Num(s.row.Number("StartingHead")) +
            " Ending Discharge: " + Num(s.row.Number("EndingHead"));
  }
  return text;
}

std::string InhomogeneityFeedback(const Element& in) {
  std::string text = "Label: " + in.Label() +
                     " Recharge: " + FormatNumber(in.row.Number("Recharge"), "#0.000e+00") +
                     " Porosity: " + FormatNumber(in.row.Number("Porosity"), "0.00");
  if (in.row.Flag("ChangeK"))
    text += "  Conductivity: " + FormatNumber(in.row.Number("HydCond"), "####0.00");
  if (in.row.Flag("ChangeB"))
    text += " Bottom " + FormatNumber(in.row.Number("BottomElevation"), "0.000E+00");
  return text;
}

std::string LakeFeedback(const Element& l) {
  return "Label: " + l.Label() +
         "   Evapotranspiration: " + Num(l.row.Number("Evapotranspiration")) +
         "  Interrior Conductivity: " + Num(l.row.Number("InterriorConductivity")) +
         " Lambda Parameter: " + Num(l.row.Number("Resistance"));
}

// The computed head of a well from the solution's results, for the status bar.
std::string WellResults(Database& db, std::int64_t vid) {
  Statement st =
      db.Prepare("select * from WLResults where TARNOLabel like '" + WellSolverLabel(vid) + "*'");
  if (!st.Step()) return {};
  const double head = st.GetDouble("Head");
  std::string text = " Computed Head: " + Num(head);
  if (head < -1000.0) text += " Aquifer is DRY ";
  return text;
}

// The results of the line-sink that starts at the selected vertex.
std::string LinesinkResults(Database& db, const Element& s, const Vertex& v) {
  Statement st = db.Prepare("select * from LSResults where TARNOLabel = ?");
  st.Bind(1, LinesinkSegmentLabel(s.key, v.Seq));
  if (!st.Step()) return {};
  std::string text = "  Specified Head: " + Num(st.GetDouble("SpecifiedHead")) +
                     "  Discharge: " + Num(st.GetDouble("Discharge"));
  if (s.row.Flag("Routing")) text += "  Streamflow: " + Num(st.GetDouble("BaseFlow"));
  return text;
}

}  // namespace

// --- Selector -----------------------------------------------------------------

const std::string& Selector::File(int index) const {
  if (index < 1 || index > 5)
    throw InvalidArgumentError("Selector has no File" + std::to_string(index));
  return files_[index - 1];
}

void Selector::File(int index, std::string v) {
  if (index < 1 || index > 5)
    throw InvalidArgumentError("Selector has no File" + std::to_string(index));
  files_[index - 1] = std::move(v);
}

// --- MapEditor ----------------------------------------------------------------

MapEditor::MapEditor(MapState& state, VGraphGDI& layer, UserInterface& ui, EditorHost& host)
    : state_(state), g_(layer), ui_(ui), host_(host) {
  tools_.push_back(std::make_unique<SelectTool>(*this));
  tools_.push_back(std::make_unique<WellTool>(*this));
  tools_.push_back(std::make_unique<UniformFlowTool>(*this));
  tools_.push_back(std::make_unique<TestPointTool>(*this));
  tools_.push_back(std::make_unique<ParticleTool>(*this, false));
  tools_.push_back(std::make_unique<ParticleTool>(*this, true));
  tools_.push_back(std::make_unique<TextTool>(*this));
  tools_.push_back(std::make_unique<DeleteParticleTool>(*this));
  tools_.push_back(std::make_unique<RecentreTool>(*this));
  tools_.push_back(std::make_unique<LinesinkTool>(*this));
  tools_.push_back(std::make_unique<BarrierTool>(*this));
  tools_.push_back(std::make_unique<InhomogeneityTool>(*this));
  tools_.push_back(std::make_unique<LakeTool>(*this));
  tools_.push_back(std::make_unique<FluxLineTool>(*this));
  tools_.push_back(std::make_unique<CapzoneTool>(*this));
  tools_.push_back(std::make_unique<BoundaryTool>(*this));
  tools_.push_back(std::make_unique<ZoomBoxTool>(*this));
  tools_.push_back(std::make_unique<ParticleGridTool>(*this));
  tools_.push_back(std::make_unique<SelectAreaTool>(*this));
  // Modes 10 to 16 (the MODFLOW grid and coupling) and 36 (the base map group)
  // belong to features not built yet: they have no tool, and their events do
  // nothing.
  SetEditMenuNone();
}

MapEditor::~MapEditor() = default;

MapTool* MapEditor::ToolFor(int state, int mode) {
  for (auto& t : tools_)
    if (t->State() == state && t->Mode() == mode) return t.get();
  return nullptr;
}

bool MapEditor::ToMap(double px, double py, double& x, double& y, bool clip) const {
  const Canvas* surface = g_.Surface();
  if (surface == nullptr) return false;
  const double w = surface->Width(), h = surface->Height();
  if (px < 0 || py < 0 || px > w - 1 || py > h - 1) {
    if (!clip) return false;
    px = std::clamp(px, 0.0, std::max(0.0, w - 1));
    py = std::clamp(py, 0.0, std::max(0.0, h - 1));
  }
  x = g_.vgGDIDeviceToWorldX(static_cast<float>(px), state_.layers.snapToGrid);
  y = g_.vgGDIDeviceToWorldY(static_cast<float>(py), state_.layers.snapToGrid);
  return true;
}

bool MapEditor::Operation(const char* name, const std::string& undoName,
                          const std::function<void(Database&)>& body) {
  return RunOperation(ui_, name, [&] {
    SyncSearch();
    Database& db = Store();
    // The whole operation, dialogs and checks included, is one step of the history;
    // a failure leaves nothing recorded.
    UndoScope undo(db, undoName);
    body(db);
    undo.Commit();
  });
}

bool MapEditor::Query(const char* name, const std::function<void(Database&)>& body) {
  return RunOperation(ui_, name, [&] {
    SyncSearch();
    body(Store());
  });
}

void MapEditor::SyncSearch() {
  // The search radius follows the window shown.
  const double w = state_.Window.Right - state_.Window.Left;
  const double h = state_.Window.Top - state_.Window.Bottom;
  const double r2 = 0.0005 * (w * w + h * h);
  if (r2 != search_.radius2) search_.SetWindow(w, h);
}

Database& MapEditor::Store() {
  if (!store_.IsOpen() || storePath_ != state_.projectFile) {
    if (store_.IsOpen()) store_.Close();
    store_ = Database::Open(state_.projectFile);
    storePath_ = state_.projectFile;
  }
  return store_;
}

void MapEditor::SetStatus(const std::string& activity, const std::string& feedback) {
  ui_.Activity(activity);
  ui_.Feedback(feedback);
}

void MapEditor::TurnOffMenus() {
  menusOff_ = true;
  host_.MenusChanged();
}

void MapEditor::TurnOnMenus() {
  menusOff_ = false;
  host_.MenusChanged();
}

void MapEditor::SetDragBox(int x1, int y1, int x2, int y2) {
  dragging_ = true;
  boxX1_ = x1;
  boxY1_ = y1;
  boxX2_ = x2;
  boxY2_ = y2;
}

void MapEditor::AfterEdit(ElementKind kind, bool changed) {
  if (changed && ActsOnFlow(kind)) host_.InvalidateSolution();
  host_.Redraw();
}

// --- the events ----------------------------------------------------------------

void MapEditor::ShiftClick(int shift, double px, double py) {
  if (shift != kShiftMask && shift != (kShiftMask | kCtrlMask)) return;
  if (!state_.solution.valid) {
    ui_.MessageBox(kNoSolutionTitle, {kNoSolutionText}, Buttons::OK, Icon::Exclamation);
    return;
  }
  double x = 0, y = 0;
  if (!ToMap(px, py, x, y, false)) return;
  // A red marker shows the point asked about over the present picture.
  RunOperation(ui_, "Map_MouseDown", [&] { g_.vgGDIMarker(x, y, 5, PaletteColour(12), 1, 0.0, 1.0); });
  host_.Repaint();
  if (shift == kShiftMask)
    host_.InspectAt(x, y);
  else
    host_.TraceStreamlineAt(x, y);
}

void MapEditor::ResultInfoAt(double px, double py) {
  double x = 0, y = 0;
  if (!ToMap(px, py, x, y, false)) return;
  Query("Map_MouseDown", [&](Database& db) {
    // The nearest vertex, without stepping on the selection's cycle.
    const FoundVertex found = FindVertex(db, search_, x, y, false);
    if (!found.Found() || found.vid < 0 || found.vertex.PID <= 0) return;
    const std::optional<ElementKind> kind = OwnerOfString(db, found.vertex.PID);
    if (kind) lastInfo_ = static_cast<int>(ShowResultInfo(db, ui_, *kind, found.vertex));
  });
}

void MapEditor::MouseDown(int button, int shift, double px, double py) {
  if (!state_.ProjectOpen || !mouseEnabled_ || host_.Solving()) return;
  if (button == kLeftButton && (shift & kShiftMask) != 0) {
    ShiftClick(shift, px, py);
    return;
  }
  MapTool* tool = ToolFor(state_.mouseState, state_.mouseMode);
  if (button == kRightButton) {
    // Ends a drawing mode and the modes that end so (text, delete particle, the
    // repeated particle, the navigation modes). In the select state with a solution
    // the right button opens the result dialog of the element under the pointer.
    if (state_.mouseState != kStateSelect && tool != nullptr)
      tool->RightClick();
    else if (state_.mouseState == kStateSelect && state_.solution.valid)
      ResultInfoAt(px, py);
    return;
  }
  if (button != kLeftButton) return;
  if (vertexDrag_) {
    dragPressed_ = true;
    pointerX_ = static_cast<int>(px);
    pointerY_ = static_cast<int>(py);
    pointerKnown_ = true;
    ui_.Feedback(state_.selection.type == static_cast<int>(ElementKind::Text)
                     ? kMoveTextFeedback
                     : kMoveVertexFeedback);
    return;
  }
  double x = 0, y = 0;
  // A press outside the map's surface is no click on the map.
  if (!ToMap(px, py, x, y, false)) return;
  lastClickX_ = x;
  lastClickY_ = y;
  if (tool != nullptr) tool->Press({x, y, static_cast<int>(px), static_cast<int>(py)});
}

void MapEditor::MouseMove(int /*button*/, int /*shift*/, double px, double py) {
  pointerX_ = static_cast<int>(px);
  pointerY_ = static_cast<int>(py);
  pointerKnown_ = true;
  if (!state_.ProjectOpen) return;
  double x = 0, y = 0;
  if (ToMap(px, py, x, y, false)) host_.Position(x, y);
  if (!mouseEnabled_ || host_.Solving()) return;
  if (dragging_) {
    // The box follows the pointer, kept to the surface.
    ToMap(px, py, x, y, true);
    const Canvas* s = g_.Surface();
    const int cx = std::clamp(static_cast<int>(px), 0, s ? s->Width() - 1 : 0);
    const int cy = std::clamp(static_cast<int>(py), 0, s ? s->Height() - 1 : 0);
    if (MapTool* tool = ToolFor(state_.mouseState, state_.mouseMode)) tool->Move({x, y, cx, cy});
  }
}

void MapEditor::MouseUp(int button, int /*shift*/, double px, double py) {
  if (!state_.ProjectOpen || !mouseEnabled_ || host_.Solving()) return;
  if (button != kLeftButton) return;
  if (vertexDrag_) {
    if (dragPressed_) FinishMove(px, py);
    return;
  }
  if (state_.mouseState != kStateDrag || !dragging_) return;
  double x = 0, y = 0;
  // A drag that ends outside the map ends at its edge.
  if (!ToMap(px, py, x, y, true)) return;
  const Canvas* s = g_.Surface();
  const int cx = std::clamp(static_cast<int>(px), 0, s->Width() - 1);
  const int cy = std::clamp(static_cast<int>(py), 0, s->Height() - 1);
  if (MapTool* tool = ToolFor(state_.mouseState, state_.mouseMode)) tool->Release({x, y, cx, cy});
}

RubberShape MapEditor::Rubber() const {
  RubberShape r;
  if (dragging_) {
    r.kind = RubberShape::Kind::Box;
    r.x1 = std::min(boxX1_, boxX2_);
    r.y1 = std::min(boxY1_, boxY2_);
    r.x2 = std::max(boxX1_, boxX2_);
    r.y2 = std::max(boxY1_, boxY2_);
    return r;
  }
  if (!pointerKnown_ || g_.Surface() == nullptr) return r;
  std::optional<std::pair<double, double>> from;
  if (stringStarted_ && !pending_.empty()) from = pending_.back();
  if (vertexDrag_ && dragPressed_) from = std::make_pair(dragFromX_, dragFromY_);
  if (!from) return r;
  try {
    const DevicePoint a = g_.vgGDIWorldToDevice(from->first, from->second);
    r.kind = RubberShape::Kind::Line;
    r.x1 = a.x;
    r.y1 = a.y;
    r.x2 = pointerX_;
    r.y2 = pointerY_;
  } catch (const Error&) {
    // A vertex far outside the window: no rubber line.
  }
  return r;
}

// --- selection ------------------------------------------------------------------

void MapEditor::SetEditMenuNone() {
  edit_[0] = {kPropertiesCaption, false};
  edit_[1] = {kMoveCaption, false};
  edit_[2] = {kDeleteCaption, false};
  edit_[3] = {kRefineCaption, false};
  edit_[4] = {kDeleteAllCaption, true};
}

void MapEditor::SetEditCaptions(const char* props, const char* move, const char* del, bool refine) {
  edit_[0] = {props, true};
  edit_[1] = {move, true};
  edit_[2] = {del, true};
  edit_[3] = {kRefineCaption, refine};
}

void MapEditor::ElemTurnOffSelection() {
  state_.selection = Selection{};
  SetEditMenuNone();
  search_.Reset();
  host_.MenusChanged();
}

void MapEditor::ClearMouseMode() {
  state_.mouseState = kStateSelect;
  state_.mouseMode = 0;
  state_.selection = Selection{};
  state_.drawingPid = 0;
  SetEditMenuNone();
  vertexDrag_ = false;
  dragPressed_ = false;
  stringStarted_ = false;
  dragging_ = false;
  pending_.clear();
  SetStatus(kSelectActivity, kSelectFeedback);
  TurnOnMenus();
}

void MapEditor::Prepare() {
  if (!state_.ProjectOpen || state_.projectFile.empty()) return;
  Query("ElemFindVertex", [](Database& db) { VertexIndexAvailable(db); });
}

void MapEditor::Reset() {
  state_.mouseState = kStateSelect;
  state_.mouseMode = 0;
  state_.selection = Selection{};
  state_.drawingPid = 0;
  vertexDrag_ = dragPressed_ = stringStarted_ = dragging_ = menusOff_ = false;
  pending_.clear();
  search_.Reset();
  SetEditMenuNone();
  if (store_.IsOpen()) store_.Close();
  storePath_.clear();
}

void MapEditor::ElemSelectElement() {
  // The selection goes (below), but not the search's cycle: a click near the last
  // one steps on to the next vertex there.
  // Text labels count as vertices while the map shows them.
  labels_.enabled = state_.layers.hydrographyLabels;
  labels_.showHydrography = state_.layers.hydrographyLabels;
  bool drawn = true;
  Query("ElemSelectElement", [&](Database& db) {
    // The element selected before is drawn normally again, on the picture as it is.
    drawn = DrawSelection(db, kDrawNormal);
    state_.selection = Selection{};
    const FoundVertex found = FindVertex(db, search_, lastClickX_, lastClickY_, true, labels_);
    SelectFound(db, found);
    if (state_.selection.type == static_cast<int>(ElementKind::Inhomogeneity)) CheckInhomogeneity();
    drawn = DrawSelection(db, kDrawSelected) && drawn;
  });
  host_.MenusChanged();
  // Only the kinds that cannot be drawn alone take a redraw of the map.
  if (drawn) {
    host_.Repaint();
    return;
  }
  // A redraw turns the selection off, as any new picture does; the element just
  // picked (a test point, a label, the uniform flow) stays selected over it, with
  // its Edit menu and the search's cycle, so that it can be edited and the next
  // click at the same place steps on.
  const Selection picked = state_.selection;
  const std::array<EditEntry, 5> entries = edit_;
  const VertexSearch cycle = search_;
  host_.Redraw();
  state_.selection = picked;
  edit_ = entries;
  search_ = cycle;
  host_.MenusChanged();
}

bool MapEditor::DrawSelection(Database& db, int mode) {
  const Selection sel = state_.selection;
  if (sel.type == 0 || g_.Surface() == nullptr || !state_.layers.elements) return true;
  DrawContext ctx{g_, state_, db, ui_};
  const auto kind = static_cast<ElementKind>(sel.type);
  switch (kind) {
    case ElementKind::Well: {
      auto w = LoadRow(db, kind, sel.id);
      if (!w || w->vertices.empty()) return true;
      ElemDrawWell(ctx, w->X(), w->Y(), w->row.Number("Setback"), w->row.Number("Radius"),
                   static_cast<int>(w->row.Integer("PPWell")),
                   static_cast<int>(w->row.Integer("Transient")), mode);
      break;
    }
    case ElementKind::Particle: ModelDrawParticle(ctx, selX_, selY_, mode); break;
    case ElementKind::Linesink: ElemDrawLinesinkString(ctx, sel.pid, mode); break;
    case ElementKind::Lake: ElemDrawLakes(ctx, sel.pid, mode); break;
    case ElementKind::FluxLine: ModelDrawFluxInspect(ctx, sel.pid, mode); break;
    case ElementKind::Capzone: ModelDrawCapzone(ctx, sel.pid, mode); break;
    case ElementKind::Domain: ModelDrawDomain(ctx, sel.pid, mode); break;
    case ElementKind::Barrier: {
      auto b = LoadRow(db, kind, sel.pid);
      if (!b) return true;
      ElemDrawNoFlowString(ctx, sel.pid, mode, b->row.Integer("Closed") != 0);
      break;
    }
    case ElementKind::Inhomogeneity: {
      auto in = LoadRow(db, kind, sel.pid);
      if (!in) return true;
      ElemDrawInho(ctx, sel.pid, mode, false, static_cast<Colour>(in->row.Integer("color")));
      break;
    }
    default:
      // Test points (their symbols follow the results), text labels and the
      // uniform flow: the redraw shows them.
      return false;
  }
  if (mode == kDrawSelected) ElemDrawVertex(ctx, selX_, selY_, kDrawSelected);
  return true;
}

void MapEditor::SelectFound(Database& db, const FoundVertex& found) {
  auto none = [&] {
    state_.selection = Selection{};
    SetEditMenuNone();
    ui_.Feedback(kSelectFeedback);
  };
  if (!found.Found()) return none();
  Selection sel;
  sel.vid = found.vid;
  selX_ = found.vertex.X;
  selY_ = found.vertex.Y;
  if (found.vid == -2) {
    auto label = Load(db, ElementKind::Text, found.label);
    if (!label) return none();
    sel.type = static_cast<int>(ElementKind::Text);
    sel.id = found.label;
    sel.vid = found.label;
    state_.selection = sel;
    SetEditCaptions("Text &Properties", "&Move Label", "&Delete Label", false);
    ui_.Feedback("Text: " + label->row.Text("Text"));
    return;
  }
  const std::int64_t pid = found.vertex.PID;
  if (pid == -10) {
    sel.type = static_cast<int>(ElementKind::UniformFlow);
    sel.pid = -10;
    state_.selection = sel;
    SetEditCaptions("Uniform Flow &Properties", "&Move Uniform Flow", "&Delete Uniform Flow",
                    false);
    if (auto u = LoadUniformFlow(db))
      ui_.Feedback("Uniform Flow: Reference Head: " + Num(u->row.Number("UNIFLOWRefHead")) +
                   " Gradient: " + Num(u->row.Number("UNIFLOWGradient")) +
                   " Orientation: " + Num(u->row.Number("UNIFLOWOrientation")));
    return;
  }
  std::optional<ElementKind> kind =
      pid == -1 ? OwnerOfPoint(db, found.vid) : OwnerOfString(db, pid);
  if (!kind) return none();
  const std::int64_t key = pid == -1 ? found.vid : pid;
  std::optional<Element> e = LoadRow(db, *kind, key);
  if (!e) return none();
  sel.type = static_cast<int>(*kind);
  sel.pid = pid;
  sel.id = key;
  state_.selection = sel;
  switch (*kind) {
    case ElementKind::Well: {
      SetEditCaptions("Well &Properties", "&Move Well", "&Delete Well", false);
      std::string text = WellFeedback(*e);
      if (state_.solution.valid) text += WellResults(db, key);
      ui_.Feedback(text);
      break;
    }
    case ElementKind::TestPoint:
      SetEditCaptions("Test Point &Properties", "&Move Test Point", "&Delete Test Point", false);
      ui_.Feedback("Test Point: " + e->Label() + " Observed: " + Num(e->row.Number("ObsHead")));
      break;
    case ElementKind::Particle:
      SetEditCaptions("Particle &Properties", "&Move Particle", "&Delete Particle", false);
      ui_.Feedback(std::string("Particle: ") + (e->row.Flag("Forward") ? "forward" : "backward") +
                   " in time");
      break;
    default: SetEditCaptions("&Properties...", "&Move Vertex", "&Delete...", true); break;
  }
  switch (*kind) {
    case ElementKind::Linesink: {
      std::string text = LinesinkFeedback(*e);
      if (state_.solution.valid) text += LinesinkResults(db, *e, found.vertex);
      ui_.Feedback(text);
      break;
    }
    case ElementKind::Inhomogeneity: ui_.Feedback(InhomogeneityFeedback(*e)); break;
    case ElementKind::Lake: ui_.Feedback(LakeFeedback(*e)); break;
    case ElementKind::Barrier: ui_.Feedback("Horizontal barrier: " + e->Label()); break;
    case ElementKind::FluxLine: ui_.Feedback("Flux inspection line: " + e->Label()); break;
    case ElementKind::Capzone: ui_.Feedback("Protection area: " + e->Label()); break;
    case ElementKind::Domain: ui_.Feedback("Boundary: " + e->Label()); break;
    default: break;
  }
}

void MapEditor::CheckInhomogeneity() {
  if (state_.selection.type != static_cast<int>(ElementKind::Inhomogeneity)) return;
  Query("CheckInhomogeneity", [&](Database& db) {
    const double x = lastClickX_, y = lastClickY_;
    const std::vector<Vertex> found = LoadVertices(db, state_.selection.pid);
    if (!PointInPolygon(found, x, y)) return;
    // Of the inhomogeneities that hold the click, the smallest is the one the user
    // sees there: it is selected through its vertex nearest the click.
    std::int64_t best = state_.selection.pid;
    double bestArea = std::fabs(PolygonArea(found));
    for (const Element& in : LoadAll(db, ElementKind::Inhomogeneity)) {
      if (in.key == state_.selection.pid || !PointInPolygon(in.vertices, x, y)) continue;
      const double area = std::fabs(PolygonArea(in.vertices));
      if (area < bestArea) {
        best = in.key;
        bestArea = area;
      }
    }
    if (best == state_.selection.pid) return;
    const std::vector<Vertex> vs = LoadVertices(db, best);
    const Vertex* nearest = nullptr;
    double d2 = 1e300;
    for (const Vertex& v : vs) {
      const double d = (v.X - x) * (v.X - x) + (v.Y - y) * (v.Y - y);
      if (d < d2) {
        d2 = d;
        nearest = &v;
      }
    }
    if (nearest == nullptr) return;
    FoundVertex f;
    f.vid = nearest->VID;
    f.vertex = *nearest;
    SelectFound(db, f);
  });
}

// --- the Edit menu ----------------------------------------------------------------

void MapEditor::ElemSetProperties() {
  const Selection sel = state_.selection;
  if (sel.type == 0) return;
  const auto kind = static_cast<ElementKind>(sel.type);
  bool written = false;
  Operation("ElemSetProperties", "Properties", [&](Database& db) {
    written = OpenProperties(db, kind, sel.id, ui_, [&] { host_.InvalidateSolution(); });
  });
  if (!written) return;
  // The redraw shows the element as it now is, unselected: the status bar and the
  // Edit menu say so too, rather than describe what was selected before.
  EndSelection();
  host_.Redraw();
}

void MapEditor::EndSelection() {
  state_.selection = Selection{};
  SetEditMenuNone();
  SetStatus(kSelectActivity, kSelectFeedback);
  host_.MenusChanged();
}

void MapEditor::UnhighlightSelection() {
  if (state_.selection.type == 0) return;
  bool drawn = true;
  Query("ElemTurnOffSelection", [&](Database& db) { drawn = DrawSelection(db, kDrawNormal); });
  if (drawn)
    host_.Repaint();
  else
    host_.Redraw();
  ui_.Feedback(kSelectFeedback);
}

void MapEditor::BeginMove() {
  const int kind = state_.selection.type;
  if (kind == 0) return;
  std::string activity;
  switch (static_cast<ElementKind>(kind)) {
    case ElementKind::Well: activity = "Move Well"; break;
    case ElementKind::Particle: activity = "Move Particle"; break;
    case ElementKind::TestPoint: activity = "Move Test Point"; break;
    case ElementKind::Text: activity = "Move Text"; break;
    case ElementKind::UniformFlow: activity = "Move Uniform Flow"; break;
    default: activity = "Move Vertex"; break;
  }
  TurnOffMenus();
  moveName_ = activity;
  vertexDrag_ = true;
  dragPressed_ = false;
  dragFromX_ = selX_;
  dragFromY_ = selY_;
  SetStatus(activity,
            kind == static_cast<int>(ElementKind::Text) ? kMoveTextFeedback : kMoveVertexFeedback);
}

void MapEditor::FinishMove(double px, double py) {
  const Selection sel = state_.selection;
  vertexDrag_ = false;
  dragPressed_ = false;
  double x = 0, y = 0;
  EditResult result;
  if (ToMap(px, py, x, y, true)) {
    lastClickX_ = x;
    lastClickY_ = y;
    const auto kind = static_cast<ElementKind>(sel.type);
    Operation("ElemMoveVertex", moveName_,
              [&](Database& db) { result = MoveVertex(db, search_, kind, sel.vid, x, y, ui_); });
  }
  state_.selection = Selection{};
  SetEditMenuNone();
  SetStatus(kSelectActivity, kSelectFeedback);
  TurnOnMenus();
  if (result.done && result.invalidatesSolution) host_.InvalidateSolution();
  host_.Redraw();
}

void MapEditor::ElemDeleteElements() {
  const Selection sel = state_.selection;
  if (sel.type == 0) return;
  EditResult result;
  Operation("ElemDeleteElements", "Delete", [&](Database& db) {
    result = DeleteElements(db, static_cast<ElementKind>(sel.type), sel.vid, ui_);
  });
  if (!result.done) return;
  state_.selection = Selection{};
  SetEditMenuNone();
  search_.Reset();
  SetStatus(kSelectActivity, kSelectFeedback);
  host_.MenusChanged();
  if (result.invalidatesSolution) host_.InvalidateSolution();
  host_.Redraw();
}

void MapEditor::ElemRefine() {
  const Selection sel = state_.selection;
  if (sel.type == 0 || !IsString(static_cast<ElementKind>(sel.type))) return;
  EditResult result;
  Operation("ElemRefine", "Refine", [&](Database& db) {
    result = Refine(db, static_cast<ElementKind>(sel.type), sel.vid, ui_);
  });
  if (!result.done) return;
  // The string is drawn anew with its new vertex and without the highlight.
  EndSelection();
  if (result.invalidatesSolution) host_.InvalidateSolution();
  host_.Redraw();
}

// --- modes ------------------------------------------------------------------------

void MapEditor::EnterMode(int state, int mode) {
  MapTool* tool = ToolFor(state, mode);
  if (tool == nullptr) return;
  if (vertexDrag_ || state_.mouseState != kStateSelect) ClearMouseMode();
  // A highlighted element is drawn plain again before the mode starts, so that a
  // mode whose dialog is cancelled does not leave a selection shown that is gone.
  UnhighlightSelection();
  ElemTurnOffSelection();
  if (!tool->Enter()) {
    SetStatus(kSelectActivity, kSelectFeedback);
    return;
  }
  state_.mouseState = state;
  state_.mouseMode = mode;
  stringStarted_ = false;
  pending_.clear();
  SetStatus(tool->Activity(), tool->Feedback());
  if (tool->MenusOffWhileOn()) TurnOffMenus();
}

bool MapEditor::Handles(const std::string& key) {
  static const std::vector<std::string> keys = {
      "ELEM_NEW(0)",     "ELEM_NEW(1)",   "ELEM_NEW(2)",   "ELEM_NEW(3)",   "ELEM_NEW(4)",
      "ElemUniformFlow", "EDIT_CMDS(0)",  "EDIT_CMDS(1)",  "EDIT_CMDS(2)",  "EDIT_CMDS(3)",
      "EDIT_CMDS(5)",    "EDIT_CMDS(6)",  "mnuEditSelect", "MODEL_CMDS(3)", "MODEL_CMDS(4)",
      "MODEL_CMDS(5)",   "MODEL_CMDS(6)", "MODEL_CMDS(7)", "MODEL_CMDS(8)", "MODEL_CMDS(9)",
      "MODEL_CMDS(10)"};
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

bool MapEditor::Command(const std::string& key) {
  if (!Handles(key)) return false;
  if (!state_.ProjectOpen || host_.Solving()) return true;
  auto boundary = [&](BoundaryKind kind) {
    if (auto* t = dynamic_cast<BoundaryTool*>(ToolFor(kStateString, 35))) t->SetBoundary(kind);
    EnterMode(kStateString, 35);
  };
  if (key == "ELEM_NEW(0)")
    EnterMode(kStateClick, 1);
  else if (key == "ELEM_NEW(1)")
    EnterMode(kStateString, 2);
  else if (key == "ELEM_NEW(2)")
    EnterMode(kStateString, 3);
  else if (key == "ELEM_NEW(3)")
    EnterMode(kStateString, 5);
  else if (key == "ELEM_NEW(4)")
    EnterMode(kStateString, 6);
  else if (key == "ElemUniformFlow") {
    const Answer a = ui_.MessageBox("Warning - Uniform Flow", UniformFlowWarning(), Buttons::YesNo,
                                    Icon::Exclamation);
    if (a == Answer::Yes) {
      EnterMode(kStateClick, 4);
    } else {
      Operation("ElemUniformFlow", "Remove Uniform Flow", [&](Database& db) {
        if (!LoadUniformFlow(db)) return;
        if (ui_.MessageBox("Remove function", {"Remove the current uniform flow field?"},
                           Buttons::YesNo, Icon::Question) == Answer::Yes) {
          RemoveUniformFlow(db);
          host_.InvalidateSolution();
          host_.Redraw();
        } else {
          ui_.MessageBox("Operation canceled", {"Uniform flow is still in use"}, Buttons::OK,
                         Icon::Information);
        }
      });
    }
  } else if (key == "EDIT_CMDS(0)")
    ElemSetProperties();
  else if (key == "EDIT_CMDS(1)")
    BeginMove();
  else if (key == "EDIT_CMDS(2)")
    ElemDeleteElements();
  else if (key == "EDIT_CMDS(3)")
    ElemRefine();
  else if (key == "EDIT_CMDS(5)")
    EnterMode(kStateClick, 30);
  else if (key == "EDIT_CMDS(6)")
    EnterMode(kStateString, 24);
  else if (key == "mnuEditSelect")
    EnterMode(kStateDrag, kModeSelectArea);
  else if (key == "MODEL_CMDS(3)")
    EnterMode(kStateClick, 22);
  else if (key == "MODEL_CMDS(4)")
    EnterMode(kStateClick, kModeParticleRepeat);
  else if (key == "MODEL_CMDS(5)")
    EnterMode(kStateDrag, kModeParticleGrid);
  else if (key == "MODEL_CMDS(6)")
    EnterMode(kStateClick, 21);
  else if (key == "MODEL_CMDS(7)")
    EnterMode(kStateString, 23);
  else if (key == "MODEL_CMDS(8)")
    boundary(BoundaryKind::HydrologicUnit);
  else if (key == "MODEL_CMDS(9)")
    boundary(BoundaryKind::FarField);
  else if (key == "MODEL_CMDS(10)")
    boundary(BoundaryKind::Model);
  return true;
}

}  // namespace tarno
