#include "app/shell/tool_string.h"

#include <cctype>

#include "app/shell/map_editor.h"
#include "elements/element_dialog.h"
#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "elements/linesink_dialog.h"
#include "elements/vertex_edit.h"

namespace tarno {

using lifecycle_text::kSelectActivity;
using lifecycle_text::kSelectFeedback;

namespace {

constexpr const char* kNotEnoughTitle = "Not Enough Vertices";

// The vertex at (x, y) snaps onto the nearest vertex within the search radius when
// that vertex belongs to an element of `kind` other than the string `ownPid`.
std::pair<double, double> SnapOnto(MapEditor& ed, Database& db, ElementKind kind,
                                   std::int64_t ownPid, double x, double y) {
  const FoundVertex f = FindVertex(db, ed.Search(), x, y, false);
  if (!f.Found() || f.vid < 0 || f.vertex.PID <= 0 || f.vertex.PID == ownPid) return {x, y};
  if (OwnerOfString(db, f.vertex.PID) != kind) return {x, y};
  return {f.vertex.X, f.vertex.Y};
}

}  // namespace

StringTool::StringTool(MapEditor& editor, ElementKind kind, int mode)
    : MapTool(editor, 5, mode), kind_(kind) {}

StringTool::~StringTool() = default;

std::string StringTool::Feedback() const { return kStringFeedback; }

Element StringTool::NewOne(Database& db) { return NewElementAt(db, kind_, {}); }

std::pair<double, double> StringTool::Snap(Database&, double x, double y) { return {x, y}; }

int StringTool::MinVertices() const { return Info(kind_).minVertices; }

void StringTool::TooFew() {
  const std::string name(Info(kind_).name);
  std::string lower;
  for (char c : name) lower += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  ed_.Ui().MessageBox(kNotEnoughTitle,
                      {"Not enough vertices to complete the current " + lower + "!",
                       "You must have at least " + std::to_string(MinVertices()) +
                           " vertices to create this element."},
                      Buttons::OK, Icon::Exclamation);
}

bool StringTool::AfterWrite(Database&, Element&) { return true; }

bool StringTool::Enter() {
  bool ok = false;
  ed_.Query("ElemAddString", [&](Database& db) {
    element_ = NewOne(db);
    element_.vertices.clear();
    dialog_ = MakeElementDialog(kind_);
    if (!dialog_) return;
    dialog_->LoadElement(db, element_);
    ed_.Ui().ShowModal(*dialog_);
    if (dialog_->Result != 1) return;
    dialog_->StoreElement(element_);
    ok = true;
  });
  return ok;
}

void StringTool::Press(const MapPointer& at) {
  ed_.Query("ElemAddVertex", [&](Database& db) {
    ed_.Pending().push_back(Snap(db, at.x, at.y));
    ed_.SetStringStarted(true);
  });
}

void StringTool::RightClick() {
  ed_.SetStatus(kSelectActivity, kSelectFeedback);
  const auto& points = ed_.Pending();
  bool written = false;
  if (static_cast<int>(points.size()) < MinVertices()) {
    TooFew();
  } else {
    ed_.Operation("ElemAddString", Activity(), [&](Database& db) {
      Element e = element_;
      e.vertices.clear();
      for (const auto& [x, y] : points) e.vertices.push_back({0, 0, 0, x, y});
      Insert(db, e);
      written = AfterWrite(db, e);
    });
  }
  element_ = Element{};
  dialog_.reset();
  ed_.ClearMouseMode();
  if (written)
    ed_.AfterEdit(kind_, true);
  else
    ed_.Host().Redraw();
}

// --- line-sink strings ------------------------------------------------------------

std::pair<double, double> LinesinkTool::Snap(Database& db, double x, double y) {
  return SnapOnto(ed_, db, ElementKind::Linesink, 0, x, y);
}

bool LinesinkTool::AfterWrite(Database& db, Element& e) {
  if (CheckPhantomLinesinkVertices(db, e.key, ed_.Ui())) return false;
  // The dialog a second time, over the string as drawn; Cancel keeps what the first
  // one said.
  std::optional<Element> stored = Load(db, ElementKind::Linesink, e.key);
  if (!stored) return false;
  LinesinkString d;
  d.LoadElement(db, *stored);
  ed_.Ui().ShowModal(d);
  if (d.Result == 1) {
    d.StoreElement(*stored);
    DisableRoutingOfShortString(*stored, d.CheckRouting(), ed_.Ui());
    Update(db, *stored);
  }
  if (stored->row.Flag("HeadSpecified") &&
      stored->row.Number("StartingHead") < stored->row.Number("EndingHead"))
    ed_.Host().CheckGradient();
  return true;
}

// --- barriers ---------------------------------------------------------------------

int BarrierTool::MinVertices() const { return element_.row.Integer("Closed") != 0 ? 3 : 2; }

void BarrierTool::TooFew() {
  ed_.Ui().MessageBox(kNotEnoughTitle,
                      {"Not enough vertices to complete the current barrier!",
                       "You must have at least 2 vertices for an open barrier",
                       "and at least 3 vertices to create a closed barrier."},
                      Buttons::OK, Icon::Exclamation);
}

bool BarrierTool::AfterWrite(Database& db, Element& e) {
  CheckPhantomNoFlowVertices(db, e.key, ed_.Ui());
  return true;
}

// --- inhomogeneities --------------------------------------------------------------

std::pair<double, double> InhomogeneityTool::Snap(Database& db, double x, double y) {
  return SnapOnto(ed_, db, ElementKind::Inhomogeneity, 0, x, y);
}

void InhomogeneityTool::TooFew() {
  // The count in the text is 2 though 3 are needed: the message as users know it.
  ed_.Ui().MessageBox(kNotEnoughTitle,
                      {"Not enough vertices to complete the current inhomogeneity!",
                       "You must add at least 2 vertices to create this element."},
                      Buttons::OK, Icon::Exclamation);
}

bool InhomogeneityTool::AfterWrite(Database& db, Element& e) {
  CheckPolyVertices(db, e.key, ed_.Ui());
  return true;
}

// --- lakes, flux inspection lines, protection areas, boundaries -------------------

bool LakeTool::AfterWrite(Database& db, Element& e) {
  CheckPolyVertices(db, e.key, ed_.Ui());
  return true;
}

Element FluxLineTool::NewOne(Database& db) {
  Element e = NewElementAt(db, ElementKind::FluxLine, {});
  e.row.Set("Label", DefaultStringLabel(db, ElementKind::FluxLine));
  return e;
}

Element CapzoneTool::NewOne(Database& db) {
  Element e = NewElementAt(db, ElementKind::Capzone, {});
  e.row.Set("Label", DefaultStringLabel(db, ElementKind::Capzone));
  return e;
}

std::string BoundaryTool::Activity() const {
  switch (boundary_) {
    case BoundaryKind::FarField: return "Add FarField Boundary";
    case BoundaryKind::Model: return "Add Model Boundary";
    case BoundaryKind::HydrologicUnit: break;
  }
  return "Add Hydrologic Unit Boundary";
}

Element BoundaryTool::NewOne(Database& db) {
  Element e = NewBoundary(boundary_);
  e.row.Set("Label", DefaultStringLabel(db, ElementKind::Domain, boundary_));
  return e;
}

bool BoundaryTool::AfterWrite(Database& db, Element& e) {
  CheckPolyVertices(db, e.key, ed_.Ui());
  return true;
}

}  // namespace tarno
