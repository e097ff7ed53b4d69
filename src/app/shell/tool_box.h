// The drag modes (mouse state 3): a box is dragged on the map and acts on its
// release: the zoom box, the particle grid, the area selection. The release point
// is kept to the map's surface, so a drag that ends outside the window ends at its
// edge.
#pragma once

#include "app/shell/tool.h"

namespace tarno {

class Database;

class BoxTool : public MapTool {
 public:
  BoxTool(MapEditor& editor, int mode) : MapTool(editor, 3, mode) {}
  void Press(const MapPointer& at) override;
  void Move(const MapPointer& at) override;
  void Release(const MapPointer& at) override;

 protected:
  // The box's sorted corners in map units.
  virtual void Done(double x1, double y1, double x2, double y2) = 0;
  MapPointer first_;
};

// Mode 20: the navigation's zoom to window (which enters and leaves the mode).
class ZoomBoxTool : public BoxTool {
 public:
  explicit ZoomBoxTool(MapEditor& editor) : BoxTool(editor, 20) {}
  std::string Activity() const override { return "Zoom Window"; }
  std::string Feedback() const override {
    return "Drag a rectangle over the new window -- press the button again to leave";
  }
  void RightClick() override;

 protected:
  void Done(double x1, double y1, double x2, double y2) override;
};

// Mode 32: particles spread evenly over the box.
class ParticleGridTool : public BoxTool {
 public:
  explicit ParticleGridTool(MapEditor& editor) : BoxTool(editor, 32) {}
  std::string Activity() const override { return "Add Particle Grid"; }
  std::string Feedback() const override { return "Click mouse at location to enter grid boundary"; }
  bool MenusOffWhileOn() const override { return true; }

 protected:
  void Done(double x1, double y1, double x2, double y2) override;
};

// Mode 34: the wells, test points or particles in the box, deleted or (particles)
// edited together.
class SelectAreaTool : public BoxTool {
 public:
  explicit SelectAreaTool(MapEditor& editor) : BoxTool(editor, 34) {}
  std::string Activity() const override { return "Select Area"; }
  std::string Feedback() const override {
    return "Click drag and release to select all elements in the selected area.";
  }
  void RightClick() override;

 protected:
  void Done(double x1, double y1, double x2, double y2) override;
};

}  // namespace tarno
