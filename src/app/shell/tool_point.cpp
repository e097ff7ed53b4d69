#include "app/shell/tool_point.h"

#include "app/shell/map_editor.h"
#include "display/navigation.h"
#include "elements/element_dialog.h"
#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "elements/test_point_dialog.h"
#include "elements/text_label_dialog.h"
#include "elements/vertex_edit.h"

namespace tarno {

bool AskNewElement(MapEditor& editor, Database& db, Element& e) {
  std::unique_ptr<ElementDialog> dialog = MakeElementDialog(e.kind);
  if (!dialog) return false;
  dialog->LoadElement(db, e);
  editor.Ui().ShowModal(*dialog);
  if (dialog->Result != 1) return false;
  dialog->StoreElement(e);
  return true;
}

namespace {

// Adds a point element of `kind` at the click through its dialog; true when stored.
bool AddPoint(MapEditor& ed, const char* operation, const char* undoName, ElementKind kind,
              const MapPointer& at, const std::function<void(Database&, Element&)>& prepare = {}) {
  bool stored = false;
  ed.Operation(operation, undoName, [&](Database& db) {
    Element e = NewElementAt(db, kind, {{at.x, at.y}});
    if (prepare) prepare(db, e);
    if (!AskNewElement(ed, db, e)) return;
    if (kind == ElementKind::TestPoint) ApplyDefaultWeights(e);
    Insert(db, e);
    stored = true;
  });
  if (stored) ed.AfterEdit(kind, true);
  return stored;
}

}  // namespace

void WellTool::Press(const MapPointer& at) {
  ed_.ElemTurnOffSelection();
  AddPoint(ed_, "ElemAddWell", "Add Well", ElementKind::Well, at);
  ed_.ClearMouseMode();
}

void UniformFlowTool::Press(const MapPointer& at) {
  bool stored = false;
  ed_.Operation("ElemAddUniformFlow", "Uniform Flow", [&](Database& db) {
    const std::optional<Element> before = LoadUniformFlow(db);
    Element e = NewElementAt(db, ElementKind::UniformFlow, {{at.x, at.y}});
    if (!AskNewElement(ed_, db, e)) return;
    if (before && *before == e) {
      ed_.Ui().MessageBox("No Change", {"Uniform Flow settings have not been changed."},
                          Buttons::OK, Icon::Information);
      return;
    }
    StoreUniformFlow(db, e);
    stored = true;
  });
  if (stored) ed_.AfterEdit(ElementKind::UniformFlow, true);
  ed_.ClearMouseMode();
}

void TestPointTool::Press(const MapPointer& at) {
  ed_.ElemTurnOffSelection();
  AddPoint(ed_, "ModelAddTestPoint", "Add Test Point", ElementKind::TestPoint, at,
           [](Database& db, Element& e) { e.row.Set("Label", DefaultTestPointLabel(db)); });
  ed_.ClearMouseMode();
}

std::string ParticleTool::Feedback() const {
  return repeated_
             ? "Click mouse at location for new particle, right click to exit add particle mode"
             : "Click mouse at location for new particle";
}

bool ParticleTool::Enter() {
  bool ok = false;
  ed_.Query("ModelAddParticle", [&](Database& db) {
    ParticleProperties d;
    d.LoadLastUse(db);
    d.Multiple = false;
    ed_.Ui().ShowModal(d);
    if (d.Result != 1) return;
    settings_ = d.Settings();
    ok = true;
  });
  return ok;
}

void ParticleTool::Press(const MapPointer& at) {
  bool stored = false;
  ed_.Operation("ModelAddParticle", "Add Particle", [&](Database& db) {
    Element e = NewElementAt(db, ElementKind::Particle, {{at.x, at.y}});
    e.vertices.front().PID = -1;
    e.row.Set("Forward", settings_.forward);
    e.row.Set("SatdThick", settings_.satdThick);
    e.row.Set("Elevation", settings_.elevation);
    Insert(db, e);
    stored = true;
  });
  if (stored) ed_.AfterEdit(ElementKind::Particle, true);
  if (!repeated_) ed_.ClearMouseMode();
}

void ParticleTool::RightClick() {
  if (repeated_) ed_.ClearMouseMode();
}

void TextTool::Press(const MapPointer& at) {
  bool stored = false;
  ed_.Operation("ModelAddText", "Add Text", [&](Database& db) {
    Element e = NewTextLabel("", at.x, at.y);
    if (!AskNewElement(ed_, db, e)) return;
    Insert(db, e);
    stored = true;
  });
  if (stored) ed_.AfterEdit(ElementKind::Text, true);
}

void TextTool::RightClick() { ed_.ClearMouseMode(); }

void DeleteParticleTool::Press(const MapPointer& at) {
  EditResult result;
  ed_.Operation("ModelDeleteParticle", "Delete Particle", [&](Database& db) {
    const FoundVertex f = FindVertex(db, ed_.Search(), at.x, at.y, false);
    if (!f.Found() || f.vid < 0 || f.vertex.PID != -1) return;
    if (OwnerOfPoint(db, f.vid) != ElementKind::Particle) return;
    result = DeleteElements(db, ElementKind::Particle, f.vid, ed_.Ui());
  });
  if (result.done) ed_.AfterEdit(ElementKind::Particle, true);
}

void DeleteParticleTool::RightClick() { ed_.ClearMouseMode(); }

void RecentreTool::Press(const MapPointer& at) {
  ed_.Host().ZoomAction(kRecenterEnd, at.x, at.y, 0, 0);
}

void RecentreTool::RightClick() { ed_.Host().ZoomAction(kZoomModeLeave, 0, 0, 0, 0); }

}  // namespace tarno
