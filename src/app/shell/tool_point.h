// The one-click modes (mouse state 1): a click places a well, the uniform flow's
// reference point, a test point, a particle or a text label, deletes a particle,
// or recentres the map.
#pragma once

#include "app/shell/tool.h"
#include "elements/particle_dialog.h"

namespace tarno {

// Mode 1: one well per click, through its dialog; the mode ends after the click.
class WellTool : public MapTool {
 public:
  explicit WellTool(MapEditor& editor) : MapTool(editor, 1, 1) {}
  std::string Activity() const override { return "Add Well"; }
  std::string Feedback() const override { return "Click mouse at location for new well"; }
  void Press(const MapPointer& at) override;
};

// Mode 4: the click is the reference point of the uniform flow.
class UniformFlowTool : public MapTool {
 public:
  explicit UniformFlowTool(MapEditor& editor) : MapTool(editor, 1, 4) {}
  std::string Activity() const override { return "Uniform Flow"; }
  std::string Feedback() const override {
    return "Place mouse at the point of known head and click the button";
  }
  void Press(const MapPointer& at) override;
};

// Mode 21: a test point with a default label, through its dialog.
class TestPointTool : public MapTool {
 public:
  explicit TestPointTool(MapEditor& editor) : MapTool(editor, 1, 21) {}
  std::string Activity() const override { return "Add Test Point"; }
  std::string Feedback() const override { return "Click mouse at location for new test point"; }
  bool MenusOffWhileOn() const override { return true; }
  void Press(const MapPointer& at) override;
};

// Modes 22 and 37: particles with the settings chosen on entering the mode; 22
// places one, 37 places one per click until the right click.
class ParticleTool : public MapTool {
 public:
  ParticleTool(MapEditor& editor, bool repeated)
      : MapTool(editor, 1, repeated ? 37 : 22), repeated_(repeated) {}
  std::string Activity() const override { return "Add Particle"; }
  std::string Feedback() const override;
  bool Enter() override;
  void Press(const MapPointer& at) override;
  void RightClick() override;

 private:
  bool repeated_;
  ParticleSettings settings_;
};

// Mode 30: a text label per click until the right click.
class TextTool : public MapTool {
 public:
  explicit TextTool(MapEditor& editor) : MapTool(editor, 1, 30) {}
  std::string Activity() const override { return "Add Text"; }
  std::string Feedback() const override { return "Click mouse to add text, right-click to end"; }
  void Press(const MapPointer& at) override;
  void RightClick() override;
};

// Mode 33: a click on a particle deletes it (after its question).
class DeleteParticleTool : public MapTool {
 public:
  explicit DeleteParticleTool(MapEditor& editor) : MapTool(editor, 1, 33) {}
  std::string Activity() const override { return "Delete Particle Mode"; }
  std::string Feedback() const override {
    return "Click on a particle to delete it. Right click to abort delete mode.";
  }
  void Press(const MapPointer& at) override;
  void RightClick() override;
};

// Mode 31: the click is the new centre of the window. The navigation enters and
// leaves the mode (ZoomActions); the tool only hands the click over.
class RecentreTool : public MapTool {
 public:
  explicit RecentreTool(MapEditor& editor) : MapTool(editor, 1, 31) {}
  std::string Activity() const override { return "Recenter"; }
  std::string Feedback() const override { return "Click mouse to specify new window center"; }
  void Press(const MapPointer& at) override;
  void RightClick() override;
};

}  // namespace tarno
