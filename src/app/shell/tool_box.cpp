#include "app/shell/tool_box.h"

#include <algorithm>

#include "app/shell/map_editor.h"
#include "app/shell/select_area.h"
#include "display/navigation.h"
#include "elements/element_store.h"
#include "elements/particle_dialog.h"

namespace tarno {

void BoxTool::Press(const MapPointer& at) {
  first_ = at;
  ed_.SetDragBox(at.px, at.py, at.px, at.py);
}

void BoxTool::Move(const MapPointer& at) { ed_.SetDragBox(first_.px, first_.py, at.px, at.py); }

void BoxTool::Release(const MapPointer& at) {
  ed_.ClearDragBox();
  const double x1 = std::min(first_.x, at.x), x2 = std::max(first_.x, at.x);
  const double y1 = std::min(first_.y, at.y), y2 = std::max(first_.y, at.y);
  Selector& area = ed_.Area();
  area.LLx(x1);
  area.LLy(y1);
  area.URx(x2);
  area.URy(y2);
  Done(x1, y1, x2, y2);
}

void ZoomBoxTool::Done(double x1, double y1, double x2, double y2) {
  ed_.Host().ZoomAction(kZoomWindowEnd, x1, y1, x2, y2);
}

void ZoomBoxTool::RightClick() {
  ed_.ClearDragBox();
  ed_.Host().ZoomAction(kZoomModeLeave, 0, 0, 0, 0);
}

void ParticleGridTool::Done(double x1, double y1, double x2, double y2) {
  bool stored = false;
  ed_.Operation("ModelAddParticleGrid", "Add Particle Grid", [&](Database& db) {
    ParticleProperties d;
    d.LoadLastUse(db);
    d.Multiple = true;
    ed_.Ui().ShowModal(d);
    if (d.Result != 1) return;
    const std::int64_t n = d.ParticleNum();
    if (n <= 0) return;
    const ParticleSettings s = d.Settings();
    for (const GridPoint& p : ParticleGrid(x1, y1, x2, y2, n)) {
      Element e = NewElement(ElementKind::Particle, {{0, -1, 0, p.x, p.y}});
      e.row.Set("Forward", s.forward);
      e.row.Set("SatdThick", s.satdThick);
      e.row.Set("Elevation", s.elevation);
      Insert(db, e);
      stored = true;
    }
  });
  ed_.ClearMouseMode();
  if (stored) ed_.AfterEdit(ElementKind::Particle, true);
}

void SelectAreaTool::RightClick() {
  ed_.ClearDragBox();
  ed_.ClearMouseMode();
}

void SelectAreaTool::Done(double x1, double y1, double x2, double y2) {
  bool changed = false;
  ElementKind kind = ElementKind::Particle;
  ed_.Operation("ModelSelectArea", "Select Area", [&](Database& db) {
    SelectArea which;
    ed_.Ui().ShowModal(which);
    if (which.Result != 1) return;
    kind = which.Kind();
    std::vector<Element> inside;
    for (Element& e : LoadAll(db, kind)) {
      if (e.vertices.empty()) continue;
      const Vertex& v = e.vertices.front();
      if (v.X >= x1 && v.X <= x2 && v.Y >= y1 && v.Y <= y2) inside.push_back(std::move(e));
    }
    if (inside.empty()) {
      ed_.Ui().MessageBox(kNothingSelectedTitle, {NothingInWindowText(kind)}, Buttons::OK,
                          Icon::Information);
      return;
    }
    SelectAreaOptions options;
    options.Load(kind, static_cast<std::int64_t>(inside.size()));
    ed_.Ui().ShowModal(options);
    ed_.Area().Command(options.Command);
    if (options.Command == SelectAreaOptions::kDelete) {
      for (const Element& e : inside) Remove(db, kind, e.key);
      changed = true;
    } else if (options.Command == SelectAreaOptions::kEdit && options.EditAvailable) {
      ParticleProperties d;
      d.LoadElement(db, inside.front());
      d.Multiple = true;
      ed_.Ui().ShowModal(d);
      if (d.Result != 1) return;
      const ParticleSettings s = d.Settings();
      for (Element& e : inside) {
        e.row.Set("Forward", s.forward);
        e.row.Set("SatdThick", s.satdThick);
        e.row.Set("Elevation", s.elevation);
        Update(db, e);
      }
      changed = true;
    }
  });
  ed_.ClearMouseMode();
  if (changed) ed_.AfterEdit(kind, true);
}

}  // namespace tarno
