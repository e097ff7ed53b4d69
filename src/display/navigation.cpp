// ZoomActions and the saved windows.
#include "display/navigation.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>

#include "core/error.h"
#include "core/error_trap.h"
#include "core/format.h"
#include "core/text.h"
#include "elements/extents.h"
#include "store/database.h"

namespace tarno {

namespace {

constexpr const char* kSelectActivity = "Select";
constexpr const char* kSelectFeedback = "Click mouse button to select element";

// Zoom Extents leaves this share of the extents' width and height free on each
// side, so that the outermost elements are not drawn on the frame.
constexpr double kExtentsMargin = 0.05;

// The window stored in the Model row (WINDOWX1 Left, WINDOWX2 Right, WINDOWY1
// Bottom, WINDOWY2 Top).
WorldWindow ReadModelWindow(const std::filesystem::path& project) {
  Database db = Database::Open(project);
  Statement st = db.Prepare("select WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2 from Model");
  if (!st.Step()) throw Error("The Model table of " + project.string() + " has no row");
  WorldWindow w;
  w.Left = st.GetDouble("WINDOWX1");
  w.Right = st.GetDouble("WINDOWX2");
  w.Bottom = st.GetDouble("WINDOWY1");
  w.Top = st.GetDouble("WINDOWY2");
  return w;
}

void WriteModelWindow(const std::filesystem::path& project, const WorldWindow& w) {
  Database db = Database::Open(project);
  Statement st = db.Prepare(
      "update Model set WINDOWX1 = ?, WINDOWX2 = ?, WINDOWY1 = ?, WINDOWY2 = ?");
  st.Bind(1, w.Left).Bind(2, w.Right).Bind(3, w.Bottom).Bind(4, w.Top);
  st.Run();
}

// The model's extents from the elements of the project and the shown base maps,
// widened by a margin. Only read: the model origin is the solve's to set
// (ModelCheckExtents).
bool ProjectExtents(const MapState& state, const BaseMapLayers* maps, WorldWindow& out) {
  Database db = Database::Open(state.projectFile);
  MapWindow saved{state.Window.Left, state.Window.Right, state.Window.Top, state.Window.Bottom};
  const ModelExtents e = ElementExtents(db, saved, ShownMapExtents(maps));
  const double mx = (e.MaxX - e.MinX) * kExtentsMargin;
  const double my = (e.MaxY - e.MinY) * kExtentsMargin;
  out.Left = e.MinX - mx;
  out.Right = e.MaxX + mx;
  out.Bottom = e.MinY - my;
  out.Top = e.MaxY + my;
  return true;
}

}  // namespace

std::string FilterNumberText(const std::string& typed) {
  static const std::string kAllowed = "0123456789.-E";
  std::string kept;
  for (char c : typed) {
    if (kAllowed.find(c) != std::string::npos) kept.push_back(c);
  }
  return kept;
}

void RestoreWindow::Load(const std::string& projectFile) {
  rows.clear();
  deleted.clear();
  current = -1;
  Database db = Database::Open(projectFile);
  Statement st = db.PrepareRaw("select rowid as RowKey, * from SavedWindows order by rowid");
  while (st.Step()) {
    Row r;
    r.key = st.GetInt64("RowKey");
    r.name = st.GetText("name");
    r.x1 = st.GetDouble("x1");
    r.y1 = st.GetDouble("y1");
    r.x2 = st.GetDouble("x2");
    r.y2 = st.GetDouble("y2");
    rows.push_back(std::move(r));
  }
  if (!rows.empty()) {
    Navigate(0);
  } else {
    txX1.clear();
    txX2.clear();
    txY1.clear();
    txY2.clear();
  }
}

void RestoreWindow::Navigate(int index) {
  if (index < 0 || index >= static_cast<int>(rows.size())) return;
  current = index;
  const Row& r = rows[static_cast<std::size_t>(index)];
  x1 = r.x1;
  y1 = r.y1;
  x2 = r.x2;
  y2 = r.y2;
  txX1 = GeneralNumber(x1);
  txY1 = GeneralNumber(y1);
  txX2 = GeneralNumber(x2);
  txY2 = GeneralNumber(y2);
}

void RestoreWindow::DeleteWindow() {
  if (!InView()) return;
  deleted.push_back(rows[static_cast<std::size_t>(current)].key);
  rows.erase(rows.begin() + current);
  if (rows.empty()) {
    current = -1;
    txX1.clear();
    txX2.clear();
    txY1.clear();
    txY2.clear();
  } else {
    Navigate(std::min(current, static_cast<int>(rows.size()) - 1));
  }
}

void RestoreWindow::ApplyDeletions(const std::string& projectFile) {
  if (deleted.empty()) return;
  Database db = Database::Open(projectFile);
  for (const std::int64_t key : deleted) {
    Statement st = db.PrepareRaw("delete from SavedWindows where rowid = ?");
    st.Bind(1, key);
    st.Run();
  }
  deleted.clear();
}

bool RestoreWindow::CanOK() const { return InView() || !deleted.empty(); }

void RestoreWindow::TakeFields() {
  x1 = Val(txX1);
  y1 = Val(txY1);
  x2 = Val(txX2);
  y2 = Val(txY2);
}

Navigator::Navigator(MapState& state, MapView& view, UserInterface& ui)
    : state_(state), view_(view), ui_(ui) {}

void Navigator::SaveWindow() {
  constexpr const char* kTitle = "Save Window";
  constexpr const char* kNotSaved = "The window was not saved";
  const std::optional<std::string> typed =
      ui_.InputBox("Enter a name for the window: ", kTitle, "");
  if (!typed) {
    ui_.MessageBox("No Name", {kNotSaved});
    return;
  }
  // Blanks around a name are no part of it; a name of blanks is no name.
  const std::string name = TrimST(*typed);
  if (name.empty()) {
    ui_.MessageBox("No Name", {kNotSaved, "A window is saved under a name, and none was given."});
    return;
  }
  if (name.size() > kSavedWindowNameSize) {
    ui_.MessageBox(kTitle, {kNotSaved, "A name holds at most " +
                                           std::to_string(kSavedWindowNameSize) +
                                           " characters; this one has " +
                                           std::to_string(name.size()) + "."});
    return;
  }
  Database db = Database::Open(state_.projectFile);
  {
    // One name, one window: names compare without regard to case, and the
    // question names the window as it was saved.
    Statement st = db.Prepare("select Name from SavedWindows where Name = ?");
    st.Bind(1, name);
    if (st.Step()) {
      const std::string saved = st.GetText(0);
      if (!ui_.Question(kTitle, {"A window named \"" + saved + "\" is already saved.",
                                 "Replace it with the current window?"}))
        return;
      Statement del = db.Prepare("delete from SavedWindows where Name = ?");
      del.Bind(1, name);
      del.Run();
    }
  }
  const WorldWindow& w = state_.Window;
  Statement st =
      db.Prepare("insert into SavedWindows (Name, X1, Y1, X2, Y2) values (?, ?, ?, ?, ?)");
  st.Bind(1, name).Bind(2, w.Left).Bind(3, w.Bottom).Bind(4, w.Right).Bind(5, w.Top);
  st.Run();
}

void Navigator::ZoomTo(const WorldWindow& window) {
  RunOperation(ui_, "ZoomActions", [&] {
    const WorldWindow previous = state_.Window;
    state_.Window = window;
    Finish(previous, WindowCause::kWheel);
  });
}

void Navigator::TellLimit(const char* text, const char* reason, WindowCause cause,
                          const WorldWindow& previous) {
  // The wheel turns in bursts: at the limit one message is enough until the
  // window moves again.
  if (cause == WindowCause::kWheel && limitTold_ && *limitTold_ == previous) return;
  limitTold_ = cause == WindowCause::kWheel ? std::optional<WorldWindow>(previous) : std::nullopt;
  ui_.MessageBox(vgraph_text::kCantZoomTitle, {text, "", std::string("\t") + reason}, Buttons::OK,
                 Icon::Information);
}

void Navigator::Finish(const WorldWindow& previous, WindowCause cause) {
  WorldWindow& w = state_.Window;
  // The window is chosen: keep it valid, redraw, and remember it in the project.
  if (hooks.setUpToolbar) hooks.setUpToolbar();
  if (!(w.Left < w.Right) || !(w.Bottom < w.Top)) {
    ui_.MessageBox("Bad Window", {"Window Settings are Invalid!"});
    if (state_.ProjectOpen) w = ReadModelWindow(state_.projectFile);
  }

  // The limits of the layer are found before anything is drawn. A window the user
  // chose beyond them is refused and the window stays as it was; a window taken
  // from the model's own data (its extents) that is too large means data far out
  // of place, which the layer's own message says.
  if (cause != WindowCause::kCurrent && state_.ProjectOpen) {
    switch (view_.CheckWindow(w)) {
      case WindowRange::kFits:
        break;
      case WindowRange::kTooSmall:
        if (cause == WindowCause::kData) {
          w = view_.SmallestWindow(w);  // a model of one point: as close as the map goes
          break;
        }
        TellLimit(vgraph_text::kCantZoomText, vgraph_text::kTooSmallReason, cause, previous);
        w = previous;
        return;
      case WindowRange::kTooLarge:
        if (cause == WindowCause::kData) {
          ui_.MessageBox(vgraph_text::kAppTitle,
                         {vgraph_text::kWindowRangeText, vgraph_text::kWindowRangeCause},
                         Buttons::OK, Icon::Critical);
        } else {
          TellLimit(vgraph_text::kCantZoomOutText, vgraph_text::kTooLargeReason, cause, previous);
        }
        w = previous;
        return;
    }
  }
  limitTold_.reset();

  const double ww = w.Right - w.Left;
  const double wh = w.Top - w.Bottom;
  SearchRadius2 = 0.0005 * (ww * ww + wh * wh);

  const bool drawn = view_.Redraw(false, true);

  // The window stored is the one the layer corrected to the surface's aspect; a
  // window that could not be drawn is never stored.
  const bool running = hooks.solverRunning && hooks.solverRunning();
  if (drawn && !running && state_.ProjectOpen) WriteModelWindow(state_.projectFile, w);
}

void Navigator::ZoomActions(int action, double x1, double y1, double x2, double y2) {
  RunOperation(ui_, "ZoomActions", [&] {
    WorldWindow& w = state_.Window;
    const WorldWindow previous = w;
    const double width = w.Right - w.Left;
    const double height = w.Top - w.Bottom;
    const double cx = (w.Left + w.Right) / 2.0;
    const double cy = (w.Top + w.Bottom) / 2.0;

    switch (action) {
      case kZoomRedraw:
        if (state_.layers.manualRedraw) {
          // The picture stays as it is and the status bar says it is obsolete.
          if (hooks.elemTurnOffSelection) hooks.elemTurnOffSelection();
          view_.MarkObsolete();
          return;
        }
        break;
      case kZoomIn:
      case kZoomOut: {
        const double factor = action == kZoomIn ? 0.5 : 1.0 / 0.5;
        const double hw = width * factor / 2.0;
        const double hh = height * factor / 2.0;
        w.Left = cx - hw;
        w.Right = cx + hw;
        w.Bottom = cy - hh;
        w.Top = cy + hh;
        break;
      }
      case kZoomExtents: {
        WorldWindow extents;
        const bool found =
            hooks.modelExtents ? hooks.modelExtents(extents)
                                : ProjectExtents(state_, view_.BaseMaps(), extents);
        if (!found) return;
        w = extents;
        break;
      }
      case kZoomWindowMode:
        if (state_.mouseState == kZoomWindowMouseState &&
            state_.mouseMode == kZoomWindowMouseMode) {
          if (hooks.clearMouseMode) hooks.clearMouseMode();
          ui_.Activity(kSelectActivity);
          ui_.Feedback(kSelectFeedback);
          if (hooks.turnOnMenus) hooks.turnOnMenus();
        } else {
          if (hooks.clearMouseMode) hooks.clearMouseMode();
          if (hooks.elemTurnOffSelection) hooks.elemTurnOffSelection();
          state_.mouseState = kZoomWindowMouseState;
          state_.mouseMode = kZoomWindowMouseMode;
          ui_.Activity("Zoom Window");
          ui_.Feedback("Drag a rectangle over the new window -- press the button again to leave");
          if (hooks.turnOffMenus) hooks.turnOffMenus();
        }
        return;
      case kZoomRefresh:
        break;
      case kZoomSaveWindow:
        SaveWindow();
        return;
      case kZoomSavedWindows:
        restoreWindow.Load(state_.projectFile.string());
        restoreWindow.Result = 2;
        ui_.ShowModal(restoreWindow);
        if (restoreWindow.Result != 1) return;
        restoreWindow.ApplyDeletions(state_.projectFile.string());
        if (!restoreWindow.InView()) return;  // only deletions: the window stays
        restoreWindow.TakeFields();
        w.Left = restoreWindow.x1;
        w.Bottom = restoreWindow.y1;
        w.Right = restoreWindow.x2;
        w.Top = restoreWindow.y2;
        break;
      case kScrollLeft:
      case kScrollRight: {
        const double shift = 0.25 * width * (action == kScrollLeft ? -1.0 : 1.0);
        w.Left += shift;
        w.Right += shift;
        break;
      }
      case kScrollUp:
      case kScrollDown: {
        const double shift = 0.25 * height * (action == kScrollUp ? 1.0 : -1.0);
        w.Top += shift;
        w.Bottom += shift;
        break;
      }
      case kRecenterMode:
        if (hooks.clearMouseMode) hooks.clearMouseMode();
        if (hooks.elemTurnOffSelection) hooks.elemTurnOffSelection();
        state_.mouseState = kRecenterMouseState;
        state_.mouseMode = kRecenterMouseMode;
        ui_.Activity("Recenter");
        ui_.Feedback("Click mouse to specify new window center");
        if (hooks.turnOffMenus) hooks.turnOffMenus();
        return;
      case kZoomWindowEnd: {
        const double left = std::min(x1, x2);
        const double right = std::max(x1, x2);
        const double bottom = std::min(y1, y2);
        const double top = std::max(y1, y2);
        if ((right - left) / width < 0.01 || (top - bottom) / height < 0.01) {
          ui_.MessageBox("Can't Set Window", {"Selected window is too small."});
          // The rectangle ends the mode whatever its size.
          ui_.Activity(kSelectActivity);
          ui_.Feedback(kSelectFeedback);
          return;
        }
        w.Left = left;
        w.Right = right;
        w.Bottom = bottom;
        w.Top = top;
        ui_.Activity(kSelectActivity);
        ui_.Feedback(kSelectFeedback);
        break;
      }
      case kZoomModeLeave:
        if (hooks.clearMouseMode) hooks.clearMouseMode();
        ui_.Activity(kSelectActivity);
        ui_.Feedback(kSelectFeedback);
        if (hooks.turnOnMenus) hooks.turnOnMenus();
        return;
      case kRecenterEnd: {
        const double hw = width / 2.0;
        const double hh = height / 2.0;
        w.Left = x1 - hw;
        w.Right = x1 + hw;
        w.Bottom = y1 - hh;
        w.Top = y1 + hh;
        ui_.Activity(kSelectActivity);
        ui_.Feedback(kSelectFeedback);
        if (hooks.turnOnMenus) hooks.turnOnMenus();
        break;
      }
      default:
        ui_.MessageBox("TARNO", {"Internal error in Zoom commands"});
        return;
    }

    WindowCause cause = WindowCause::kUser;
    if (action == kZoomRedraw || action == kZoomRefresh) cause = WindowCause::kCurrent;
    if (action == kZoomExtents) cause = WindowCause::kData;
    Finish(previous, cause);
  });
}

}  // namespace tarno
