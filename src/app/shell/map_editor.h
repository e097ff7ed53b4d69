// The map editor: the mouse state machine of the map, without a window.
//
// The map widget forwards its three mouse events here (button, Shift/Ctrl state and
// the position in surface pixels); the editor converts the position to map units
// through the graphics layer bound to the map, decides by MouseState and MouseMode
// what the event does, and hands it to the tool of the mode: one tool object per
// drawing mode (a well, a string, a box, ...), each with press, move and release.
// What the user sees comes back through the user interface port (the status bar's
// Activity and Feedback, every message and dialog) and the host (redraws, the
// menus, the solution). The widget draws the rubber shape the editor exposes.
//
//     MapEditor editor(state, layer, ui, host);
//     editor.Command("ELEM_NEW(0)");          // Element > New > Well
//     editor.MouseDown(kLeftButton, 0, 120, 80);
//     editor.MouseUp(kLeftButton, 0, 120, 80);  // the well's dialog has been shown
//
// The mouse state and mode live in the map state (MouseState, MouseMode), which the
// redraw and the navigation read too; the selection in its Selection record.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "display/map_state.h"
#include "display/vgraph.h"
#include "elements/kind.h"
#include "elements/vertex_edit.h"
#include "solver/inspect.h"
#include "store/database.h"
#include "store/lifecycle.h"

namespace tarno {

class MapTool;

// Mouse buttons as the map events give them, and the Shift state's bits.
inline constexpr int kLeftButton = 1;
inline constexpr int kRightButton = 2;
inline constexpr int kShiftMask = 1;
inline constexpr int kCtrlMask = 2;

// The mouse states.
inline constexpr int kStateSelect = 0;
inline constexpr int kStateClick = 1;
inline constexpr int kStateDrag = 3;
inline constexpr int kStateString = 5;

// The mouse modes that are no element kind.
inline constexpr int kModeZoomBox = 20;
inline constexpr int kModeRecentre = 31;
inline constexpr int kModeParticleGrid = 32;
inline constexpr int kModeDeleteParticle = 33;
inline constexpr int kModeSelectArea = 34;
inline constexpr int kModeParticleRepeat = 37;

// The Feedback of the string modes. The select state's texts (kSelectActivity,
// kSelectFeedback) and the message of a Shift-click without a solution
// (kNoSolutionTitle, kNoSolutionText) are the session's and the inspection's.
inline constexpr const char* kStringFeedback = "Click mouse at vertices -- right-click to end";

// What the window does for the editor. Every hook has a default that does nothing,
// so that a test overrides only what it watches.
class EditorHost {
 public:
  virtual ~EditorHost() = default;
  // The map drawn again after an edit (ZoomActions with the current window).
  virtual void Redraw() {}
  // A navigation action with map points (the zoom box, the recentre click, leaving
  // either mode): ZoomActions.
  virtual void ZoomAction(int /*action*/, double /*x1*/, double /*y1*/, double /*x2*/,
                          double /*y2*/) {}
  // The model changed: the solution is no longer its own.
  virtual void InvalidateSolution() {}
  // A line-sink string was drawn falling (starting head below its ending head): the
  // gradient check of the session.
  virtual void CheckGradient() {}
  // Shift-click and Shift+Ctrl-click with a solution present.
  virtual void InspectAt(double /*x*/, double /*y*/) {}
  virtual void TraceStreamlineAt(double /*x*/, double /*y*/) {}
  // The map surface changed by a partial drawing (the selection highlighted or put
  // back): show it again, without a redraw.
  virtual void Repaint() {}
  // The editor's menu state changed (TurnOffMenus, TurnOnMenus, the Edit captions,
  // SetUpToolbar): the window applies MenusOff() and EditMenu().
  virtual void MenusChanged() {}
  // The mouse position in map units for the status bar (XPosition, YPosition).
  virtual void Position(double /*x*/, double /*y*/) {}
  // A run of the solver is under way: clicks do nothing.
  virtual bool Solving() const { return false; }
};

// One entry of the Edit menu as the selection sets it.
struct EditEntry {
  std::string caption;
  bool enabled = false;
};

// The rubber shape the widget draws over the map: a line from the last vertex of a
// string (or the dragged vertex) to the pointer, or the box being dragged. Device
// pixels of the surface.
struct RubberShape {
  enum class Kind { None, Line, Box };
  Kind kind = Kind::None;
  int x1 = 0, y1 = 0, x2 = 0, y2 = 0;
};

// A plain record that carries a choice between dialogs: the command chosen, a tag,
// the corners of an area and up to five file names.
class Selector {
 public:
  const std::string& Command() const { return command_; }
  void Command(std::string v) { command_ = std::move(v); }
  const std::string& Tag() const { return tag_; }
  void Tag(std::string v) { tag_ = std::move(v); }
  double LLx() const { return llx_; }
  void LLx(double v) { llx_ = v; }
  double LLy() const { return lly_; }
  void LLy(double v) { lly_ = v; }
  double URx() const { return urx_; }
  void URx(double v) { urx_ = v; }
  double URy() const { return ury_; }
  void URy(double v) { ury_ = v; }
  // File1 to File5: index 1 to 5; another index throws InvalidArgumentError.
  const std::string& File(int index) const;
  void File(int index, std::string v);

 private:
  std::string command_, tag_;
  double llx_ = 0, lly_ = 0, urx_ = 0, ury_ = 0;
  std::array<std::string, 5> files_;
};

class MapEditor {
 public:
  MapEditor(MapState& state, VGraphGDI& layer, UserInterface& ui, EditorHost& host);
  ~MapEditor();
  MapEditor(const MapEditor&) = delete;
  MapEditor& operator=(const MapEditor&) = delete;

  // The three map events: button (kLeftButton, kRightButton), the Shift/Ctrl bits,
  // the position in surface pixels.
  void MouseDown(int button, int shift, double x, double y);
  void MouseMove(int button, int shift, double x, double y);
  void MouseUp(int button, int shift, double x, double y);

  // The menu keys the editor handles: the Element menu's New entries and Uniform
  // Flow, EDIT_CMDS(0..3), (5) and (6), mnuEditSelect, MODEL_CMDS(3..10), and the
  // navigation modes' keys are not among them. True when the key was the editor's.
  bool Command(const std::string& key);
  static bool Handles(const std::string& key);

  // DisableMouse and EnableMouse.
  void SetMouseEnabled(bool enabled) { mouseEnabled_ = enabled; }
  bool MouseEnabled() const { return mouseEnabled_; }

  // The state, for the window and the tests.
  int MouseState() const { return state_.mouseState; }
  int MouseMode() const { return state_.mouseMode; }
  int SelectedKind() const { return state_.selection.type; }
  const Selection& Selected() const { return state_.selection; }
  bool VertexDrag() const { return vertexDrag_; }
  bool StringStarted() const { return stringStarted_; }
  double LastClickX() const { return lastClickX_; }
  double LastClickY() const { return lastClickY_; }
  // What the last right click in the select state showed (InfoShown of
  // solver/result_views.h, as a number: 0 nothing).
  int LastResultInfo() const { return lastInfo_; }
  // TurnOffMenus is in force (a string or a move is under way).
  bool MenusOff() const { return menusOff_; }
  // EDIT_CMDS(0) to (4): Properties, Move, Delete, Refine, Delete All.
  const std::array<EditEntry, 5>& EditMenu() const { return edit_; }
  // The vertices of the string being drawn, in map units.
  const std::vector<std::pair<double, double>>& PendingVertices() const { return pending_; }
  RubberShape Rubber() const;
  // The search state of the vertex search; the window sets its radius with the window.
  VertexSearch& Search() { return search_; }
  // The last area dragged (select area, particle grid): the sorted corners.
  const Selector& Area() const { return area_; }
  Selector& Area() { return area_; }

  // The operations of the mouse machine.
  void ElemSelectElement();
  void ElemTurnOffSelection();
  void ClearMouseMode();
  void ElemSetProperties();
  void ElemDeleteElements();
  void ElemRefine();
  void BeginMove();
  // For a selected inhomogeneity: when the last click lies inside the found polygon,
  // the other polygons that hold it are tried through their nearest vertex.
  void CheckInhomogeneity();
  // Enters a mode of the table (with its Activity and Feedback); the selection is
  // turned off first. Used by Command and the tests.
  void EnterMode(int state, int mode);
  // Opens the editor's connection to the project and builds the vertex search's
  // index on it, so that the first click after opening a project is as quick as
  // the others (a model of 20,000 segments takes a third of a second here).
  void Prepare();
  // Forgets everything of the project that was open: the mode, the selection, a
  // string half drawn, the search's cycle. Nothing is shown.
  void Reset();

  // --- for the tools ---------------------------------------------------------
  MapState& State() { return state_; }
  UserInterface& Ui() { return ui_; }
  EditorHost& Host() { return host_; }
  // Runs one user operation that may change the project: `body` on the editor's
  // connection, in the general error trap under `name`, and as one entry of the
  // edit history named `undoName` (the user's words: "Add Well", "Move Vertex").
  // Every edit of the project by mouse passes through here.
  bool Operation(const char* name, const std::string& undoName,
                 const std::function<void(Database&)>& body);
  // The same for an operation that only reads (a selection, a snap): no history.
  bool Query(const char* name, const std::function<void(Database&)>& body);
  // The editor's connection to the open project, opened on first use and kept
  // until the project changes or Reset: the vertex search keeps its spatial index
  // with the connection, so that a click does not rebuild it.
  Database& Store();
  void SetStatus(const std::string& activity, const std::string& feedback);
  void TurnOffMenus();
  void TurnOnMenus();
  void SetStringStarted(bool v) { stringStarted_ = v; }
  std::vector<std::pair<double, double>>& Pending() { return pending_; }
  void SetDragBox(int x1, int y1, int x2, int y2);
  void ClearDragBox() { dragging_ = false; }
  // Called after a change of the model: invalidates the solution when the kind acts
  // on the flow, and redraws.
  void AfterEdit(ElementKind kind, bool changed);

 private:
  MapTool* ToolFor(int state, int mode);
  void SyncSearch();
  bool ToMap(double px, double py, double& x, double& y, bool clip) const;
  void ShiftClick(int shift, double px, double py);
  // The right click in the select state with a solution: the result dialog of the
  // element whose vertex is nearest (solver/result_views.h).
  void ResultInfoAt(double px, double py);
  void SelectFound(Database& db, const FoundVertex& found);
  // Draws the selected element over the map as it stands: highlighted (mode 2) or
  // normal again (mode 1). False for a kind that a full redraw shows instead.
  bool DrawSelection(Database& db, int mode);
  void SetEditMenuNone();
  // The selection is over after an edit: no element selected, the Edit menu's
  // entries off and the select state's texts in the status bar.
  void EndSelection();
  // Draws the selected element plain again (without a redraw where it can) and
  // puts the select state's Feedback back; the selection itself stays.
  void UnhighlightSelection();
  void SetEditCaptions(const char* props, const char* move, const char* del, bool refine);
  void FinishMove(double px, double py);

  MapState& state_;
  VGraphGDI& g_;
  UserInterface& ui_;
  EditorHost& host_;
  bool mouseEnabled_ = true;
  int lastInfo_ = 0;
  bool vertexDrag_ = false;
  bool dragPressed_ = false;  // the button went down during a move
  // The selected vertex (map units), where a move's rubber line starts.
  double selX_ = 0.0, selY_ = 0.0;
  double dragFromX_ = 0.0, dragFromY_ = 0.0;
  std::string moveName_;  // "Move Well", "Move Vertex", ...: the move's Activity
  bool stringStarted_ = false;
  bool menusOff_ = false;
  double lastClickX_ = 0.0, lastClickY_ = 0.0;
  // The pointer, for the rubber line (device pixels).
  int pointerX_ = 0, pointerY_ = 0;
  bool pointerKnown_ = false;
  // The box being dragged (device pixels).
  bool dragging_ = false;
  int boxX1_ = 0, boxY1_ = 0, boxX2_ = 0, boxY2_ = 0;
  std::array<EditEntry, 5> edit_;
  std::vector<std::pair<double, double>> pending_;
  VertexSearch search_;
  LabelSearch labels_;
  Selector area_;
  std::vector<std::unique_ptr<MapTool>> tools_;
  Database store_;
  std::filesystem::path storePath_;
};

}  // namespace tarno
