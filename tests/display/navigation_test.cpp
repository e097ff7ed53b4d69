// Navigation: the window each action chooses, the checks on it, the redraw and
// the window kept in the project, and the saved windows.
#include <gtest/gtest.h>

#include "core/error_trap.h"
#include "display/navigation.h"
#include "map_fixture.h"

namespace tarno::test {
namespace {

class Navigation : public MapFixture {
 protected:
  Navigation() : nav(state, view, ui) {}
  Navigator nav;
};

// The limits of the layer. The map is 200 by 100 pixels, so the smallest window
// it draws is 2 by 1 units (one hundredth per pixel).
const std::vector<std::string> kCantZoomIn = {
    "Can't zoom in any further!", "",
    "\tThe map would show less than one hundredth of a unit per pixel."};
const std::vector<std::string> kCantZoomOut = {
    "Can't zoom out any further!", "",
    "\tThe map would reach beyond 21,474,836 units, the limit of its coordinates."};

void ExpectWindow(const WorldWindow& w, double left, double right, double top, double bottom) {
  EXPECT_DOUBLE_EQ(w.Left, left);
  EXPECT_DOUBLE_EQ(w.Right, right);
  EXPECT_DOUBLE_EQ(w.Top, top);
  EXPECT_DOUBLE_EQ(w.Bottom, bottom);
}

TEST_F(Navigation, ZoomInAndOutHalveAndDoubleAboutTheCentre) {
  nav.ZoomActions(kZoomIn);
  ExpectWindow(state.Window, 50, 150, 75, 25);
  EXPECT_EQ(view.BackgroundBuilds(), 1);
  nav.ZoomActions(kZoomOut);
  ExpectWindow(state.Window, 0, 200, 100, 0);
  nav.ZoomActions(kZoomOut);
  ExpectWindow(state.Window, -100, 300, 150, -50);
  EXPECT_EQ(view.BackgroundBuilds(), 3);
}

TEST_F(Navigation, FourScrollsMoveOneWholeWidthOrHeight) {
  for (int i = 0; i < 4; ++i) nav.ZoomActions(kScrollLeft);
  ExpectWindow(state.Window, -200, 0, 100, 0);
  for (int i = 0; i < 4; ++i) nav.ZoomActions(kScrollRight);
  ExpectWindow(state.Window, 0, 200, 100, 0);
  for (int i = 0; i < 4; ++i) nav.ZoomActions(kScrollUp);
  ExpectWindow(state.Window, 0, 200, 200, 100);
  nav.ZoomActions(kScrollDown);
  ExpectWindow(state.Window, 0, 200, 175, 75);
}

TEST_F(Navigation, ZoomWindowRectangleOfOnePercentPassesSmallerFails) {
  nav.ZoomActions(kZoomWindowEnd, 10, 20, 12, 21);  // 2 of 200, 1 of 100
  ui.Verify();
  ExpectWindow(state.Window, 10, 12, 21, 20);
  EXPECT_EQ(ui.CurrentActivity(), "Select");
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse button to select element");

  const WorldWindow before = state.Window;
  const int builds = view.BackgroundBuilds();
  ui.Activity("Zoom Window");
  ui.ExpectMessage("Can't Set Window", {"Selected window is too small."});
  nav.ZoomActions(kZoomWindowEnd, 10, 20, 10.0199, 21);
  ui.Verify();
  EXPECT_EQ(state.Window, before);
  // The rectangle ends the mode all the same (the window goes back to selecting).
  EXPECT_EQ(ui.CurrentActivity(), "Select");
  EXPECT_EQ(view.BackgroundBuilds(), builds);

  ui.ExpectMessage("Can't Set Window", {"Selected window is too small."});
  nav.ZoomActions(kZoomWindowEnd, 10, 20, 12, 20.0099);
  ui.Verify();
}

TEST_F(Navigation, ZoomWindowCornersMayComeInAnyOrder) {
  nav.ZoomActions(kZoomWindowEnd, 120, 80, 20, 30);
  ExpectWindow(state.Window, 20, 120, 80, 30);
}

TEST_F(Navigation, ZoomWindowModeIsEnteredAndLeft) {
  int off = 0, on = 0;
  nav.hooks.turnOffMenus = [&] { ++off; };
  nav.hooks.turnOnMenus = [&] { ++on; };
  ui.Activity("Select");
  ui.Feedback("Click mouse button to select element");
  nav.ZoomActions(kZoomWindowMode);
  EXPECT_EQ(state.mouseState, kZoomWindowMouseState);
  EXPECT_EQ(state.mouseMode, kZoomWindowMouseMode);
  EXPECT_EQ(off, 1);
  // The status bar tells the mode and what to do in it, no longer "Select".
  EXPECT_EQ(ui.CurrentActivity(), "Zoom Window");
  EXPECT_EQ(ui.CurrentFeedback(),
            "Drag a rectangle over the new window -- press the button again to leave");
  nav.hooks.clearMouseMode = [&] { state.mouseState = 0, state.mouseMode = 0; };
  nav.ZoomActions(kZoomWindowMode);
  EXPECT_EQ(state.mouseMode, 0);
  EXPECT_EQ(on, 1);
  EXPECT_EQ(ui.CurrentActivity(), "Select");
  nav.ZoomActions(kZoomModeLeave);
  EXPECT_EQ(on, 2);
  EXPECT_EQ(view.BackgroundBuilds(), 0);  // no window changed, nothing drawn
}

TEST_F(Navigation, RecenterKeepsTheSize) {
  int off = 0, on = 0;
  nav.hooks.turnOffMenus = [&] { ++off; };
  nav.hooks.turnOnMenus = [&] { ++on; };
  nav.ZoomActions(kRecenterMode);
  EXPECT_EQ(state.mouseState, kRecenterMouseState);
  EXPECT_EQ(state.mouseMode, kRecenterMouseMode);
  EXPECT_EQ(ui.CurrentActivity(), "Recenter");
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse to specify new window center");
  EXPECT_EQ(off, 1);

  nav.ZoomActions(kRecenterEnd, 300, 400);
  ExpectWindow(state.Window, 200, 400, 450, 350);
  EXPECT_EQ(ui.CurrentActivity(), "Select");
  EXPECT_EQ(on, 1);
}

TEST_F(Navigation, ABadWindowRestoresTheStoredOne) {
  Execute("update Model set WINDOWX1 = 10, WINDOWX2 = 210, WINDOWY1 = 5, WINDOWY2 = 105");
  state.Window = WorldWindow{50, 50, 10, 0};  // no width
  ui.ExpectMessage("Bad Window", {"Window Settings are Invalid!"});
  nav.ZoomActions(kZoomRefresh);
  ui.Verify();
  ExpectWindow(state.Window, 10, 210, 105, 5);
  EXPECT_EQ(view.BackgroundBuilds(), 1);

  state.Window = WorldWindow{0, 100, 0, 50};  // upside down
  ui.ExpectMessage("Bad Window", {"Window Settings are Invalid!"});
  nav.ZoomActions(kZoomRedraw);
  ui.Verify();
  ExpectWindow(state.Window, 10, 210, 105, 5);
}

TEST_F(Navigation, TheWindowIsStoredAfterTheRedrawUnlessTheSolverRuns) {
  nav.ZoomActions(kZoomIn);
  ExpectWindow(StoredWindow(), 50, 150, 75, 25);

  bool running = true;
  nav.hooks.solverRunning = [&] { return running; };
  nav.ZoomActions(kZoomIn);
  ExpectWindow(state.Window, 75, 125, 62.5, 37.5);
  ExpectWindow(StoredWindow(), 50, 150, 75, 25);
  EXPECT_EQ(view.BackgroundBuilds(), 2);  // drawn all the same

  running = false;
  nav.ZoomActions(kZoomRedraw);
  ExpectWindow(StoredWindow(), 75, 125, 62.5, 37.5);
}

TEST_F(Navigation, TheStoredWindowIsTheOneCorrectedToTheSurface) {
  state.Window = WorldWindow{0, 100, 100, 0};  // square on a 2:1 surface
  nav.ZoomActions(kZoomRefresh);
  const WorldWindow stored = StoredWindow();
  EXPECT_EQ(stored, state.Window);
  EXPECT_NEAR((stored.Right - stored.Left) / (stored.Top - stored.Bottom), 2.0, 0.05);
}

TEST_F(Navigation, SearchRadiusFollowsTheWindow) {
  nav.ZoomActions(kZoomRefresh);
  EXPECT_DOUBLE_EQ(nav.SearchRadius2, 0.0005 * (200.0 * 200.0 + 100.0 * 100.0));
  nav.ZoomActions(kZoomIn);
  EXPECT_DOUBLE_EQ(nav.SearchRadius2, 0.0005 * (100.0 * 100.0 + 50.0 * 50.0));
}

TEST_F(Navigation, ManualRedrawLeavesThePictureUntilRefresh) {
  nav.ZoomActions(kZoomRedraw);
  const auto picture = map.Ops();
  state.layers.manualRedraw = true;
  int selectionOff = 0;
  nav.hooks.elemTurnOffSelection = [&] { ++selectionOff; };

  AddWell(100, 50);
  nav.ZoomActions(kZoomRedraw);
  EXPECT_EQ(selectionOff, 1);
  EXPECT_EQ(ui.CurrentActivity(), "REDRAW");
  EXPECT_EQ(ui.CurrentFeedback(), "Current picture is obsolete -- press CTRL-L to refresh");
  ASSERT_EQ(map.Ops().size(), picture.size());
  EXPECT_EQ(map.copies, 1);

  nav.ZoomActions(kZoomRefresh);
  EXPECT_EQ(map.copies, 2);
  EXPECT_GT(map.Ops().size(), picture.size());
  EXPECT_EQ(view.BackgroundBuilds(), 1);

  // A change of window redraws whatever the switch says.
  nav.ZoomActions(kScrollLeft);
  EXPECT_EQ(map.copies, 3);
  EXPECT_EQ(view.BackgroundBuilds(), 2);
}

TEST_F(Navigation, TheObsoleteNoteGoesWhenThePictureIsCurrentAgain) {
  ui.Activity("Select");
  ui.Feedback("Click mouse button to select element");
  nav.ZoomActions(kZoomRedraw);
  state.layers.manualRedraw = true;
  auto obsolete = [&] {
    AddWell(100, 50);
    nav.ZoomActions(kZoomRedraw);
    nav.ZoomActions(kZoomRedraw);  // a second edit keeps what the first note replaced
    EXPECT_EQ(ui.CurrentActivity(), "REDRAW");
    EXPECT_EQ(ui.CurrentFeedback(), "Current picture is obsolete -- press CTRL-L to refresh");
    EXPECT_TRUE(view.PictureObsolete());
  };
  auto current = [&](const char* what) {
    EXPECT_FALSE(view.PictureObsolete()) << what;
    EXPECT_EQ(ui.CurrentActivity(), "Select") << what;
    EXPECT_EQ(ui.CurrentFeedback(), "Click mouse button to select element") << what;
  };
  obsolete();
  nav.ZoomActions(kZoomRefresh);
  current("refresh");
  obsolete();
  nav.ZoomActions(kZoomIn);
  current("zoom");
  obsolete();
  state.layers.manualRedraw = false;
  nav.ZoomActions(kZoomRedraw);
  current("manual redraw off");

  // The status bar's own texts come back, whatever they were.
  view.hooks.currentActivity = [] { return std::string("Add Well"); };
  view.hooks.currentFeedback = [] { return std::string("Click to place the well"); };
  state.layers.manualRedraw = true;
  nav.ZoomActions(kZoomRedraw);
  nav.ZoomActions(kZoomRefresh);
  EXPECT_EQ(ui.CurrentActivity(), "Add Well");
  EXPECT_EQ(ui.CurrentFeedback(), "Click to place the well");

  // A refused zoom draws nothing: the picture stays obsolete.
  nav.ZoomActions(kZoomRedraw);
  view.hooks = RedrawHooks{};
  ui.ExpectMessage("Can't Zoom", kCantZoomIn);
  nav.ZoomTo(WorldWindow{99.9, 100.1, 50.05, 49.95});
  ui.Verify();
  EXPECT_TRUE(view.PictureObsolete());
}

TEST_F(Navigation, SaveWindowWithANameAddsARow) {
  ui.ExpectInput(std::string("Town"))
      .Title("Save Window")
      .Lines({"Enter a name for the window: "});
  nav.ZoomActions(kZoomSaveWindow);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows where Name = 'Town' and X1 = 0 and "
                  "Y1 = 0 and X2 = 200 and Y2 = 100"),
            1);
  EXPECT_EQ(view.BackgroundBuilds(), 0);

  ui.ExpectInput(std::string(""));
  ui.ExpectMessage("No Name", {"The window was not saved",
                               "A window is saved under a name, and none was given."});
  nav.ZoomActions(kZoomSaveWindow);
  ui.ExpectInput(std::nullopt);
  ui.ExpectMessage("No Name", {"The window was not saved"});
  nav.ZoomActions(kZoomSaveWindow);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 1);
}

TEST_F(Navigation, SavedWindowsAreChosenThroughTheDialog) {
  Execute(
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('A', 0, 0, 20, 10);"
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('B', 100, 50, 140, 70);");
  ui.ExpectModal<RestoreWindow>(RestoreWindow::kName, [](RestoreWindow& d) {
    ASSERT_EQ(d.rows.size(), 2u);
    EXPECT_EQ(d.rows[0].name, "A");
    EXPECT_EQ(d.current, 0);
    EXPECT_EQ(d.txX2, "20");
    d.Navigate(1);
    d.OK();
  });
  nav.ZoomActions(kZoomSavedWindows);
  ui.Verify();
  ExpectWindow(state.Window, 100, 140, 70, 50);
  EXPECT_EQ(view.BackgroundBuilds(), 1);

  // Typed fields win over the row shown.
  ui.ExpectModal<RestoreWindow>(RestoreWindow::kName, [](RestoreWindow& d) {
    d.txX2 = FilterNumberText("4O0x");  // a letter O slipped in
    d.txY2 = "20";
    d.OK();
  });
  nav.ZoomActions(kZoomSavedWindows);
  ui.Verify();
  ExpectWindow(state.Window, 0, 40, 20, 0);

  const WorldWindow before = state.Window;
  ui.ExpectModal<RestoreWindow>(RestoreWindow::kName, [](RestoreWindow& d) { d.Cancel(); });
  nav.ZoomActions(kZoomSavedWindows);
  ui.Verify();
  EXPECT_EQ(state.Window, before);
  EXPECT_EQ(view.BackgroundBuilds(), 2);
}

TEST_F(Navigation, RestoreWindowDeletesTheRowInViewOnOK) {
  Execute(
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('A', 0, 0, 20, 10);"
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('B', 100, 50, 140, 70);");
  RestoreWindow d;
  d.Load(project.string());
  d.Navigate(5);  // out of range: nothing moves
  EXPECT_EQ(d.current, 0);
  d.Navigate(1);
  d.DeleteWindow();
  ASSERT_EQ(d.rows.size(), 1u);
  EXPECT_EQ(d.current, 0);
  EXPECT_EQ(d.txX2, "20");
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 2) << "not before OK";
  d.DeleteWindow();
  EXPECT_TRUE(d.rows.empty());
  EXPECT_EQ(d.current, -1);
  EXPECT_TRUE(d.txX1.empty());
  EXPECT_TRUE(d.CanOK()) << "OK confirms the deletions";
  d.ApplyDeletions(project.string());
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 0);
  EXPECT_FALSE(d.CanOK());
}

TEST_F(Navigation, DeletingOneOfTwinWindowsKeepsTheOther) {
  // Two rows of one name and the same corners, as older projects may hold.
  Execute(
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('Town', 0, 0, 20, 10);"
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('Town', 0, 0, 20, 10);"
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('Farm', 100, 50, 140, 70);");
  ui.ExpectModal<RestoreWindow>(RestoreWindow::kName, [](RestoreWindow& d) {
    ASSERT_EQ(d.rows.size(), 3u);
    d.Navigate(1);
    d.DeleteWindow();
    ASSERT_EQ(d.rows.size(), 2u);
    d.Navigate(1);  // Farm
    d.OK();
  });
  nav.ZoomActions(kZoomSavedWindows);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows where Name = 'Town'"), 1);
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 2);
  ExpectWindow(state.Window, 100, 140, 70, 50);
}

TEST_F(Navigation, CancelKeepsTheWindowsDeletedInTheDialog) {
  Execute(
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('A', 0, 0, 20, 10);"
      "insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('B', 100, 50, 140, 70);");
  ui.ExpectModal<RestoreWindow>(RestoreWindow::kName, [](RestoreWindow& d) {
    d.DeleteWindow();
    d.DeleteWindow();
    d.Cancel();
  });
  nav.ZoomActions(kZoomSavedWindows);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 2);

  // OK with every row deleted deletes them and leaves the window as it is.
  ui.ExpectModal<RestoreWindow>(RestoreWindow::kName, [](RestoreWindow& d) {
    ASSERT_EQ(d.rows.size(), 2u) << "the list is read afresh";
    d.DeleteWindow();
    d.DeleteWindow();
    d.OK();
  });
  nav.ZoomActions(kZoomSavedWindows);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 0);
  ExpectWindow(state.Window, 0, 200, 100, 0);
  EXPECT_EQ(view.BackgroundBuilds(), 0);
}

TEST_F(Navigation, OneNameOneWindow) {
  ui.ExpectInput(std::string("Town"));
  nav.ZoomActions(kZoomSaveWindow);
  nav.ZoomActions(kZoomIn);

  // The same name in other case and with blanks around it: the user is asked,
  // about the window under the name it was saved with.
  ui.ExpectInput(std::string(" TOWN "));
  ui.ExpectMessage("Save Window",
                   {"A window named \"Town\" is already saved.",
                    "Replace it with the current window?"},
                   Answer::No);
  nav.ZoomActions(kZoomSaveWindow);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 1);
  EXPECT_EQ(Count("select count(*) from SavedWindows where X2 = 200"), 1) << "kept";

  ui.ExpectInput(std::string("town"));
  ui.ExpectMessageTitled("Save Window").Answer(Answer::Yes);
  nav.ZoomActions(kZoomSaveWindow);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 1);
  EXPECT_EQ(Count("select count(*) from SavedWindows where Name = 'town' and X1 = 50 and "
                  "Y1 = 25 and X2 = 150 and Y2 = 75"),
            1);
}

TEST_F(Navigation, ARefusedNameSaysWhy) {
  ui.ExpectInput(std::string("   "));
  ui.ExpectMessage("No Name", {"The window was not saved",
                               "A window is saved under a name, and none was given."});
  nav.ZoomActions(kZoomSaveWindow);
  ui.ExpectInput(std::string(65, 'w'));
  ui.ExpectMessage("Save Window", {"The window was not saved",
                                   "A name holds at most 64 characters; this one has 65."});
  nav.ZoomActions(kZoomSaveWindow);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 0);
  ui.ExpectInput(std::string(64, 'w'));
  nav.ZoomActions(kZoomSaveWindow);
  ui.Verify();
  EXPECT_EQ(Count("select count(*) from SavedWindows"), 1);
}

TEST_F(Navigation, ZoomInStopsAtTheLimitWithOneMessageAndKeepsTheWindow) {
  AddWell(100, 50);
  AddWell(150, 75);
  for (int i = 0; i < 6; ++i) nav.ZoomActions(kZoomIn);  // down to 3.125 units wide
  ui.Verify();
  const WorldWindow last = state.Window;
  ExpectWindow(last, 98.4375, 101.5625, 50.78125, 49.21875);
  const int builds = view.BackgroundBuilds();

  // Each refused zoom says so once, and nothing is drawn or stored.
  for (int i = 0; i < 3; ++i) {
    ui.ExpectMessage("Can't Zoom", kCantZoomIn).WithIcon(Icon::Information);
    nav.ZoomActions(kZoomIn);
    ui.Verify();
  }
  EXPECT_EQ(state.Window, last);
  EXPECT_EQ(view.BackgroundBuilds(), builds);
  EXPECT_EQ(StoredWindow(), last);
}

TEST_F(Navigation, TheWheelIsToldTheLimitOnceUntilTheWindowMoves) {
  const WorldWindow start = state.Window;
  ui.ExpectMessage("Can't Zoom", kCantZoomIn);
  nav.ZoomTo(WorldWindow{99, 100, 50.5, 50});
  ui.Verify();
  EXPECT_EQ(state.Window, start);
  nav.ZoomTo(WorldWindow{99.5, 100, 50.25, 50});  // the same burst: no second message
  ui.Verify();
  EXPECT_EQ(state.Window, start);
  EXPECT_EQ(view.BackgroundBuilds(), 0);

  // A wheel zoom within the limits draws and is stored.
  nav.ZoomTo(WorldWindow{50, 150, 75, 25});
  ExpectWindow(state.Window, 50, 150, 75, 25);
  EXPECT_EQ(StoredWindow(), state.Window);
  ui.ExpectMessage("Can't Zoom", kCantZoomIn);
  nav.ZoomTo(WorldWindow{99, 100, 50.5, 50});
  ui.Verify();
}

TEST_F(Navigation, RectanglesAndSavedWindowsBelowTheLimitAreRefused) {
  state.Window = WorldWindow{0, 20, 10, 0};
  nav.ZoomActions(kZoomRefresh);
  ui.ExpectMessage("Can't Zoom", kCantZoomIn);
  nav.ZoomActions(kZoomWindowEnd, 5, 5, 6, 5.5);  // 5 % of the window, yet 1 unit wide
  ui.Verify();
  ExpectWindow(state.Window, 0, 20, 10, 0);

  Execute("insert into SavedWindows (Name, X1, Y1, X2, Y2) values ('Pin', 1, 1, 1.001, 1.001)");
  ui.ExpectModal<RestoreWindow>(RestoreWindow::kName, [](RestoreWindow& d) { d.OK(); });
  ui.ExpectMessage("Can't Zoom", kCantZoomIn);
  nav.ZoomActions(kZoomSavedWindows);
  ui.Verify();
  ExpectWindow(state.Window, 0, 20, 10, 0);
  ExpectWindow(StoredWindow(), 0, 20, 10, 0);
}

TEST_F(Navigation, ZoomingFarOutSaysSoAndKeepsTheWindow) {
  state.Window = WorldWindow{-8e6, 8e6, 4e6, -4e6};
  nav.ZoomActions(kZoomRefresh);
  ui.Verify();
  ui.ExpectMessage("Can't Zoom", kCantZoomOut);
  nav.ZoomActions(kZoomOut);
  ui.Verify();
  ExpectWindow(state.Window, -8e6, 8e6, 4e6, -4e6);
  ExpectWindow(StoredWindow(), -8e6, 8e6, 4e6, -4e6);
}

TEST_F(Navigation, ExtentsOutOfRangeBlameTheDataOnceAndKeepTheWindow) {
  AddWell(100, 50);
  nav.hooks.modelExtents = [](WorldWindow& e) {
    e = WorldWindow{0, 5e8, 2.5e8, 0};  // a test point imported with a wrong coordinate
    return true;
  };
  ui.ExpectMessage("TARNO",
                   {"Error while initializing new window: Window out of range!",
                    "Likely cause: One or more imported test points or wells with incorrect "
                    "coordinates."})
      .WithIcon(Icon::Critical);
  nav.ZoomActions(kZoomExtents);
  ui.Verify();
  ExpectWindow(state.Window, 0, 200, 100, 0);
  EXPECT_EQ(view.BackgroundBuilds(), 0);
}

TEST_F(Navigation, ExtentsOfOnePointOpenAsCloseAsTheMapGoes) {
  nav.hooks.modelExtents = [](WorldWindow& e) {
    e = WorldWindow{99.95, 100.05, 50.05, 49.95};
    return true;
  };
  nav.ZoomActions(kZoomExtents);
  ui.Verify();
  EXPECT_NEAR((state.Window.Left + state.Window.Right) / 2, 100, 1e-9);
  EXPECT_NEAR((state.Window.Top + state.Window.Bottom) / 2, 50, 1e-9);
  EXPECT_GE(state.Window.Right - state.Window.Left, 2.0);
  EXPECT_LT(state.Window.Right - state.Window.Left, 2.1);
  EXPECT_EQ(view.BackgroundBuilds(), 1);
}

TEST_F(Navigation, AnUndrawableWindowIsNeverDrawnNorStored) {
  // A window stored before the zoom had its limits, redrawn as it stands.
  AddWell(100, 50);
  state.Window = WorldWindow{-3e7, 3e7, 1.5e7, -1.5e7};
  ui.ExpectMessage("TARNO",
                   {"Error while initializing new window: Window out of range!",
                    "Likely cause: One or more imported test points or wells with incorrect "
                    "coordinates."});
  nav.ZoomActions(kZoomRefresh);
  ui.Verify();  // one message, not one for each kind of element
  EXPECT_EQ(view.BackgroundBuilds(), 0);
  ExpectWindow(StoredWindow(), 0, 200, 100, 0);

  // One a little too small for the surface (the map grew) is widened to the limit.
  state.Window = WorldWindow{99.5, 100.5, 50.25, 49.75};
  nav.ZoomActions(kZoomRefresh);
  ui.Verify();
  EXPECT_GE(state.Window.Right - state.Window.Left, 2.0);
  EXPECT_EQ(StoredWindow(), state.Window);
}

TEST(FilterNumberText, KeepsDigitsPointMinusAndE) {
  EXPECT_EQ(FilterNumberText("-1.5E+03"), "-1.5E03");
  EXPECT_EQ(FilterNumberText("12,5 m"), "125");
  EXPECT_EQ(FilterNumberText("1e3"), "13");
  EXPECT_EQ(FilterNumberText(""), "");
}

TEST_F(Navigation, ZoomExtentsTakesTheHooksExtents) {
  nav.hooks.modelExtents = [](WorldWindow& e) {
    e = WorldWindow{1000, 1400, 700, 500};
    return true;
  };
  nav.ZoomActions(kZoomExtents);
  ExpectWindow(state.Window, 1000, 1400, 700, 500);
}

TEST_F(Navigation, ZoomExtentsWithoutAHookReadsTheProject) {
  AddWell(100, 100);
  AddWell(300, 200);
  nav.ZoomActions(kZoomExtents);
  // The vertices' box, widened: it holds both wells with room to spare.
  EXPECT_LT(state.Window.Left, 100);
  EXPECT_GT(state.Window.Right, 300);
  EXPECT_LT(state.Window.Bottom, 100);
  EXPECT_GT(state.Window.Top, 200);
  EXPECT_LT(state.Window.Right - state.Window.Left, 2 * 200);
  // A zoom only reads: the model origin stays as it was until a solve sets it.
  EXPECT_EQ(Count("select count(*) from Model where SOLVERX0 = -100 and SOLVERY0 = -100"), 1);
}

TEST_F(Navigation, UnknownActionsAreAnInternalError) {
  ui.ExpectMessage("TARNO", {"Internal error in Zoom commands"});
  nav.ZoomActions(6);
  ui.ExpectMessage("TARNO", {"Internal error in Zoom commands"});
  nav.ZoomActions(99);
  ui.Verify();
  EXPECT_EQ(view.BackgroundBuilds(), 0);
}

TEST_F(Navigation, FailuresGoThroughTheTrap) {
  state.projectFile = dir / "gone.trn";
  ui.ExpectInput(std::string("Town"));
  ui.ExpectMessageTitled(kUnhandledErrorTitle);
  nav.ZoomActions(kZoomSaveWindow);
  ui.Verify();
  EXPECT_EQ(ui.Messages().at(0).lines.at(0), "Unhandled error in ZoomActions");
}

}  // namespace
}  // namespace tarno::test
