// The string modes (mouse state 5): line-sink strings, barriers, inhomogeneities,
// lakes, flux inspection lines, protection areas and boundaries. The element's
// dialog comes first; each left click then adds a vertex (held by the tool, drawn
// by the widget with the rubber line), and the right click finishes the string:
// with too few vertices nothing is written, else the element is written whole (row,
// polygon and vertices in one step) and the kind's checks run on it. So the project
// holds a string completely or not at all, whatever the user does meanwhile.
#pragma once

#include <memory>

#include "app/shell/tool.h"
#include "elements/element.h"
#include "elements/flux_inspect_dialog.h"

namespace tarno {

class ElementDialog;

class StringTool : public MapTool {
 public:
  StringTool(MapEditor& editor, ElementKind kind, int mode);
  ~StringTool() override;
  std::string Feedback() const override;
  bool MenusOffWhileOn() const override { return true; }
  bool Enter() override;
  void Press(const MapPointer& at) override;
  void RightClick() override;

 protected:
  // The new element with the defaults of the kind's add step.
  virtual Element NewOne(Database& db);
  // Where a click puts the vertex: at the click, or snapped onto a vertex.
  virtual std::pair<double, double> Snap(Database& db, double x, double y);
  // The fewest vertices the element needs, and the message when it has fewer.
  virtual int MinVertices() const;
  virtual void TooFew();
  // After the element is written: the kind's checks. False when they removed it.
  virtual bool AfterWrite(Database& db, Element& e);

  ElementKind kind_;
  Element element_;
  std::unique_ptr<ElementDialog> dialog_;
};

// Mode 2. Vertices snap onto line-sink vertices; at the end the one-vertex check
// runs and the dialog comes a second time.
class LinesinkTool : public StringTool {
 public:
  explicit LinesinkTool(MapEditor& editor) : StringTool(editor, ElementKind::Linesink, 2) {}
  std::string Activity() const override { return "Add Linesinks"; }

 protected:
  std::pair<double, double> Snap(Database& db, double x, double y) override;
  int MinVertices() const override { return 1; }
  void TooFew() override {}
  bool AfterWrite(Database& db, Element& e) override;
};

// Mode 3: open barriers need 2 vertices, closed ones 3.
class BarrierTool : public StringTool {
 public:
  explicit BarrierTool(MapEditor& editor) : StringTool(editor, ElementKind::Barrier, 3) {}
  std::string Activity() const override { return "Add No-flow"; }

 protected:
  int MinVertices() const override;
  void TooFew() override;
  bool AfterWrite(Database& db, Element& e) override;
};

// Mode 5. Vertices snap onto the vertices of other inhomogeneities, so adjoining
// polygons share their edge.
class InhomogeneityTool : public StringTool {
 public:
  explicit InhomogeneityTool(MapEditor& editor)
      : StringTool(editor, ElementKind::Inhomogeneity, 5) {}
  std::string Activity() const override { return "Add Inhomogeneity"; }

 protected:
  std::pair<double, double> Snap(Database& db, double x, double y) override;
  void TooFew() override;
  bool AfterWrite(Database& db, Element& e) override;
};

// Mode 6.
class LakeTool : public StringTool {
 public:
  explicit LakeTool(MapEditor& editor) : StringTool(editor, ElementKind::Lake, 6) {}
  std::string Activity() const override { return "Add Lake"; }

 protected:
  bool AfterWrite(Database& db, Element& e) override;
};

// Mode 23.
class FluxLineTool : public StringTool {
 public:
  explicit FluxLineTool(MapEditor& editor) : StringTool(editor, ElementKind::FluxLine, 23) {}
  std::string Activity() const override { return "Add Flux"; }

 protected:
  Element NewOne(Database& db) override;
};

// Mode 24, "Draw Wellhead Protection Area...": as the flux inspection line.
class CapzoneTool : public StringTool {
 public:
  explicit CapzoneTool(MapEditor& editor) : StringTool(editor, ElementKind::Capzone, 24) {}
  std::string Activity() const override { return "Add Flux"; }

 protected:
  Element NewOne(Database& db) override;
};

// Mode 35: the hydrologic unit, far-field and model boundaries.
class BoundaryTool : public StringTool {
 public:
  explicit BoundaryTool(MapEditor& editor) : StringTool(editor, ElementKind::Domain, 35) {}
  std::string Activity() const override;
  void SetBoundary(BoundaryKind kind) { boundary_ = kind; }
  BoundaryKind Boundary() const { return boundary_; }

 protected:
  Element NewOne(Database& db) override;
  bool AfterWrite(Database& db, Element& e) override;

 private:
  BoundaryKind boundary_ = BoundaryKind::HydrologicUnit;
};

}  // namespace tarno
