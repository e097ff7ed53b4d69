// Navigation: ZoomActions, the one door through which the map's window changes and
// every redraw goes, and the saved windows (table SavedWindows) with the dialog
// model RestoreWindow.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "display/map_state.h"
#include "display/redraw.h"

namespace tarno {

// The actions of ZoomActions.
enum ZoomAction : int {
  kZoomRedraw = 0,
  kZoomIn = 1,
  kZoomOut = 2,
  kZoomExtents = 3,
  kZoomWindowMode = 4,
  kZoomRefresh = 5,
  kZoomSaveWindow = 7,
  kZoomSavedWindows = 8,
  kScrollLeft = 9,
  kScrollRight = 10,
  kScrollUp = 11,
  kScrollDown = 12,
  kRecenterMode = 13,
  kZoomWindowEnd = 20,
  kZoomModeLeave = 21,
  kRecenterEnd = 22,
};

// The mouse state and mode of the two navigation modes.
inline constexpr int kZoomWindowMouseState = 3;
inline constexpr int kZoomWindowMouseMode = 20;
inline constexpr int kRecenterMouseState = 1;
inline constexpr int kRecenterMouseMode = 31;

// The dialog model of the saved windows.
class RestoreWindow : public DialogModel {
 public:
  static constexpr const char* kName = "RestoreWindow";
  std::string DialogName() const override { return kName; }

  // Reads the names and corners of SavedWindows of the open project.
  void Load(const std::string& projectFile);
  // Shows the row at `index` in the four fields.
  void Navigate(int index);
  // Takes the row in view off the list. The row leaves the table only when the
  // dialog ends with OK (ApplyDeletions); Cancel keeps it.
  void DeleteWindow();
  // Deletes from the table the rows taken off the list, each by its own key, so
  // that a second row of the same name and corners stays.
  void ApplyDeletions(const std::string& projectFile);
  // True when OK has something to do: a row in view or rows taken off the list.
  bool CanOK() const;
  bool InView() const { return current >= 0 && current < static_cast<int>(rows.size()); }
  void OK() { Result = 1; }
  void Cancel() { Result = 2; }
  // Reads the four text fields (as the user may have typed them) into x1, y1, x2,
  // y2 with the decimal parse; the caller does this after OK.
  void TakeFields();

  struct Row {
    std::string name;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    std::int64_t key = 0;  // the row's key in the table
  };
  std::vector<Row> rows;
  std::vector<std::int64_t> deleted;  // keys of the rows taken off the list
  int current = -1;
  std::string txX1, txX2, txY1, txY2;
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  int Result = 2;
};

// The longest name of a saved window (the size of SavedWindows.Name).
inline constexpr std::size_t kSavedWindowNameSize = 64;

// Keeps only the characters a number field accepts ("0123456789.-E").
std::string FilterNumberText(const std::string& typed);

class Navigator {
 public:
  struct Hooks {
    std::function<void()> setUpToolbar;
    std::function<void()> turnOffMenus;
    std::function<void()> turnOnMenus;
    std::function<void()> clearMouseMode;
    std::function<void()> elemTurnOffSelection;
    // True while a run of the solver is under way (the window is then not stored).
    std::function<bool()> solverRunning;
    // The model's extents for Zoom Extents (ElementExtents, widened; nothing written).
    std::function<bool(WorldWindow& extents)> modelExtents;
  };

  Navigator(MapState& state, MapView& view, UserInterface& ui);
  Hooks hooks;

  // The action and the map points of a mouse action (the rectangle of action 20,
  // the clicked point of action 22 in x1, y1).
  void ZoomActions(int action, double x1 = 0, double y1 = 0, double x2 = 0, double y2 = 0);
  // A window chosen by the mouse wheel: checked, drawn and stored as a zoom is.
  void ZoomTo(const WorldWindow& window);

  // 0.0005 times the sum of the squares of the window's width and height.
  double SearchRadius2 = 0.0;

  // The dialog model of action 8, kept between uses.
  RestoreWindow restoreWindow;

 private:
  // Where a new window comes from: the current one redrawn, the user's zoom, pan or
  // saved window, the wheel (the user's too, in bursts), or the model's data.
  enum class WindowCause { kCurrent, kUser, kWheel, kData };
  // Action 7: the current window under a name the user gives.
  void SaveWindow();
  // After the window is chosen: the checks, the redraw and the storing.
  void Finish(const WorldWindow& previous, WindowCause cause);
  // The "Can't Zoom" message of a refused window.
  void TellLimit(const char* text, const char* reason, WindowCause cause,
                 const WorldWindow& previous);

  MapState& state_;
  MapView& view_;
  UserInterface& ui_;
  // The window at which the wheel was last told of the limit.
  std::optional<WorldWindow> limitTold_;
};

}  // namespace tarno
