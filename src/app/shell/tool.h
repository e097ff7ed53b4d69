// The tools of the map editor: one object per mouse mode, each with its own press,
// move and release, and the right click that ends the mode where it has one.
//
// The editor converts the pointer to map units and calls the tool of the current
// MouseState and MouseMode; a tool works through the editor (the project, the port,
// the host, the status bar) and ends its mode with ClearMouseMode.
#pragma once

#include <string>

namespace tarno {

class MapEditor;
class Database;
struct Element;

// Shows the dialog of a new element's kind filled from `e`; on OK the dialog's
// properties are written into `e` and the result is true. Nothing is stored.
bool AskNewElement(MapEditor& editor, Database& db, Element& e);

// A pointer position: map units and the surface pixel it came from.
struct MapPointer {
  double x = 0.0, y = 0.0;
  int px = 0, py = 0;
};

class MapTool {
 public:
  MapTool(MapEditor& editor, int state, int mode) : ed_(editor), state_(state), mode_(mode) {}
  virtual ~MapTool() = default;

  int State() const { return state_; }
  int Mode() const { return mode_; }
  // The status bar texts while the mode is on.
  virtual std::string Activity() const = 0;
  virtual std::string Feedback() const = 0;
  // Entering the mode from its menu: false when the user backed out (a dialog
  // cancelled) and the mode is not to start.
  virtual bool Enter() { return true; }
  // Whether the mode turns the menus off while it lasts.
  virtual bool MenusOffWhileOn() const { return false; }
  // The left button went down, moved with the button down, came up.
  virtual void Press(const MapPointer&) {}
  virtual void Move(const MapPointer&) {}
  virtual void Release(const MapPointer&) {}
  // The right button: ends the mode where the mode has such an end.
  virtual void RightClick() {}

 protected:
  MapEditor& ed_;
  int state_;
  int mode_;
};

}  // namespace tarno
