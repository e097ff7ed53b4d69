// The redraw pipeline: the slow background on Map2 when it must change, then Map2
// copied into Map and the elements and the solution drawn over it.
#include "display/redraw.h"

#include <cmath>
#include <optional>
#include <string>

#include "core/error.h"
#include "core/error_trap.h"
#include "core/rounding.h"
#include "core/ui_port.h"
#include "display/elem_draw.h"
#include "display/results_draw.h"
#include "elements/element_store.h"
#include "solver/model_settings.h"
#include "store/database.h"

namespace tarno {

namespace {

// The texts of the wait window during a redraw.
constexpr const char* kRedrawingText = "Redrawing...";
constexpr const char* kDrawingElementsText = "Drawing Elements...";
constexpr const char* kDrawingBasemapsText = "Drawing Basemaps...";
constexpr const char* kApplyingHazeText = "Applying Haze...";
// What the status bar says in the select state.
constexpr const char* kSelectActivity = "Select";
constexpr const char* kSelectFeedback = "Click mouse button to select element";
// The wait window takes its own width for these short texts.
constexpr int kWaitWidth = 0;

// Whether the project has a test point of the type ("Piezometer", "Gage", "Lake
// Stage"; compared without regard to case, as the store compares text).
bool AnyTestPointOf(Database& db, const char* type) {
  return AnyElementWhere(db, ElementKind::TestPoint, "Type", "=", Value{std::string(type)});
}

}  // namespace

MapView::MapView(MapState& state, VGraphGDI& layer, UserInterface& ui, MapSurface& map,
                 MapSurface& map2)
    : state_(state), g_(layer), ui_(ui), map_(map), map2_(map2) {}

WindowRange MapView::CheckWindow(const WorldWindow& window) {
  const Canvas& c = map_.GetCanvas();
  return CheckWindowRange(window, c.Width(), c.Height(), c.PixelsPerInchX(), c.PixelsPerInchY());
}

WorldWindow MapView::SmallestWindow(const WorldWindow& window) {
  const Canvas& c = map_.GetCanvas();
  return WidenToSmallest(window, c.Width(), c.Height(), c.PixelsPerInchX(), c.PixelsPerInchY());
}

void MapView::MarkObsolete() {
  if (!obsolete_) {
    keptActivity_ = hooks.currentActivity ? hooks.currentActivity() : kSelectActivity;
    keptFeedback_ = hooks.currentFeedback ? hooks.currentFeedback() : kSelectFeedback;
    obsolete_ = true;
  }
  ui_.Activity(kObsoleteActivity);
  ui_.Feedback(kObsoleteFeedback);
}

bool MapView::Redraw(bool printing, bool showWait) {
  if (printing) {
    // Paper (the page set-up, margins and the printer's surface) comes with printing.
    throw Error("Printing is not available yet");
  }
  bool drawn = false;
  const bool finished = RunOperation(ui_, "Redraw", [&] {
    const bool projectOpen = state_.ProjectOpen;
    const bool solutionValid = state_.solution.valid;
    std::optional<Database> db;

    if (projectOpen) {
      LayerSwitches& layers = state_.layers;
      if (hooks.showToolbar) hooks.showToolbar(layers.toolbar);
      layers.contoursEnabled = solutionValid;
      layers.pathlinesEnabled = solutionValid;
      layers.resultsOverlayEnabled = solutionValid;

      // One connection serves the whole pass: the menu queries and every drawing.
      db.emplace(Database::Open(state_.projectFile));
      TestDisplayMenu menu;
      menu.firstEnabled = solutionValid;
      menu.piezometerScalingEnabled =
          AnyTestPointOf(*db, "Piezometer") && solutionValid;
      menu.gageScalingEnabled =
          AnyTestPointOf(*db, "Gage") && solutionValid;
      menu.stageScalingEnabled =
          AnyTestPointOf(*db, "Lake Stage") && solutionValid;
      if (hooks.setTestDisplayMenu) hooks.setTestDisplayMenu(menu);

      if (hooks.elemTurnOffSelection) hooks.elemTurnOffSelection();
      if (showWait) ui_.PleaseWaitShow(kRedrawingText, kWaitWidth);
      if (hooks.disableMouse) hooks.disableMouse();
      if (hooks.resetMenus) hooks.resetMenus();
    }

    if (hooks.layoutSurfaces) hooks.layoutSurfaces();
    if (!projectOpen) {
      obsolete_ = false;  // nothing is shown, so nothing is out of date
      return;
    }

    // A window the layer cannot draw is caught here, before anything is drawn:
    // otherwise every kind of element would fail in turn on the same overflow.
    switch (CheckWindow(state_.Window)) {
      case WindowRange::kFits:
        break;
      case WindowRange::kTooSmall:
        state_.Window = SmallestWindow(state_.Window);
        break;
      case WindowRange::kTooLarge:
        WindowError = true;
        ui_.MessageBox(vgraph_text::kAppTitle,
                       {vgraph_text::kWindowRangeText, vgraph_text::kWindowRangeCause},
                       Buttons::OK, Icon::Critical);
        if (hooks.enableMouse) hooks.enableMouse();
        ui_.PleaseWaitHide();
        return;
    }

    const Colour background = state_.options.Background;
    map_.GetCanvas().Clear(background);

    // The comparison is exact on purpose: a window that moved by the last bit of
    // one coordinate is a new window.
    if (!(state_.Window == LastDrawnWindow)) RedrawBasemap = true;

    const bool showGrid = state_.layers.showEditorGrid;
    if (RedrawBasemap || MustRedraw) {
      MustRedraw = false;
      map2_.GetCanvas().Clear(background);
      // The layer corrects the window to the surface's aspect, in place.
      g_.vgGDIInitObject(map2_.GetCanvas(), state_.Window, showGrid, EditorGridSpacing,
                         &WindowError);
      Redraw_Basemap();
      if (state_.layers.haze) ApplyHaze();
      ++backgroundBuilds_;
    }
    RedrawBasemap = false;
    LastDrawnWindow = state_.Window;

    map_.CopyImageFrom(map2_);
    ui_.PleaseWaitShow(kDrawingElementsText, kWaitWidth);

    // The grid is drawn again over the copied background.
    g_.vgGDIInitObject(map_.GetCanvas(), state_.Window, showGrid, EditorGridSpacing,
                       &WindowError);

    // The grids of a MODFLOW extract and of the leakage from MODFLOW are drawn here
    // once the MODFLOW coupling exists; until then there is nothing to draw.

    DrawContext ctx{g_, state_, *db, ui_};
    ElemDrawAll(ctx);
    if (solutionValid) {
      ModelDrawContours(ctx);
      ModelDrawPathlines(ctx);
      if (hooks.drawResultsOverlay) hooks.drawResultsOverlay();
    }

    map_.GetCanvas().Refresh();
    if (hooks.enableMouse) hooks.enableMouse();
    if (showWait) ui_.PleaseWaitHide();
    // The second hide is required even when nothing is left to hide.
    ui_.PleaseWaitHide();
    drawn = true;
  });
  if (!finished) {
    // The mouse stays disabled until a redraw succeeds; the wait window goes, so
    // that the message is not hidden behind it.
    ui_.PleaseWaitHide();
  }
  if (drawn && obsolete_) {
    // The picture is current again: the note goes.
    obsolete_ = false;
    ui_.Activity(keptActivity_);
    ui_.Feedback(keptFeedback_);
  }
  return drawn;
}

void MapView::Redraw_Basemap() {
  const WorldWindow& w = state_.Window;
  DefaultStepSize = ComputeDefaultStep(w.Left, w.Bottom, w.Right, w.Top);
  if (!state_.ProjectOpen) return;

  std::string feedback;
  if (hooks.currentFeedback) feedback = hooks.currentFeedback();
  ui_.PleaseWaitShow(kDrawingBasemapsText, kWaitWidth);

  // The images and the vector maps of the project's list (raster first: an image
  // lies under every vector map). The groups of a BBM map are drawn with the map
  // browser's selection once the catalogue has it.
  DrawBaseMaps();

  if (hooks.currentFeedback) ui_.Feedback(feedback);
}

void MapView::SetBaseMaps(const BaseMapLayers* maps) {
  baseMaps_ = maps;
  failedMaps_.clear();
  MustRedraw = true;
}

void MapView::DrawBaseMaps() {
  if (baseMaps_ == nullptr) return;
  for (const bool raster : {true, false}) {
    for (const auto& map : *baseMaps_) {
      if (!map || !map->Show || map->IsRaster() != raster) continue;
      try {
        map->Draw(g_);
      } catch (const UiPortFailure&) {
        throw;
      } catch (...) {
        // Each map has its own trap: one that cannot be drawn is told once, not at
        // every redraw, and does not stop the others.
        const std::string description = CurrentExceptionDescription();
        if (failedMaps_.insert(map->Name()).second)
          ShowUnhandledError(ui_, "Redraw_Basemap", description);
      }
    }
  }
}

void MapView::ApplyHaze() {
  const int level = state_.options.HazeLevel;
  if (level < 1) {
    throw InvalidArgumentError("Haze level " + std::to_string(level) +
                               " is not allowed: the level must be 1 or more");
  }
  ui_.PleaseWaitShow(kApplyingHazeText, kWaitWidth);
  Canvas& canvas = map2_.GetCanvas();
  const double width = canvas.Width();
  const double height = canvas.Height();
  const double step = level;
  const Colour colour = state_.options.HazeColor;
  // The steps are floats, as the loop counters of the dot screen always were.
  for (double x = 1.0; x <= width; x += step) {
    for (double y = 1.0; y <= height; y += step) {
      g_.vgGDIDeviceCircle(DevicePoint{CLng(x), CLng(y)}, 1, colour, 1, kPenSolid, -1);
    }
  }
}

void MapView::SetUpLayers() {
  RunOperation(ui_, "SetUpLayers", [&] {
    LayerSwitches& layers = state_.layers;
    Database db = Database::Open(state_.projectFile);

    layers.contours = true;
    layers.contoursEnabled = true;
    layers.pathlines = false;
    layers.pathlinesEnabled = true;

    if (AnyElement(db, ElementKind::Well) || AnyElement(db, ElementKind::Linesink) ||
        AnyElement(db, ElementKind::Barrier) || AnyElement(db, ElementKind::Inhomogeneity) ||
        AnyElement(db, ElementKind::FluxLine)) {
      layers.elements = true;
    }

    // PATHLINES(1) "Show Paths" on, no time marks, the middle scale of the test
    // point and gage scalings ("+/- 10 %", "+/- 50 %").
    layers.showPaths = true;
    layers.timeMarkStep = 0.0;
    layers.piezometerScale = 10;
    layers.gageScale = 50;

    layers.hydrographyLabelsEnabled =
        AnyElementWhere(db, ElementKind::Text, "LabelType", "=", Value{std::int64_t{1}});

    {
      Statement model = db.Prepare("select * from Model");
      if (!model.Step()) throw Error("The Model table of " + state_.projectFile.string() +
                                     " has no row");
      layers.contoursEnabled = model.GetDouble("contourshow") > 0;
      layers.pathlinesEnabled = model.GetBool("TRACECompute");
    }

    // ToolsSearch and DBRepair are enabled by the main window in layersChanged.
    const bool capzones = AnyElement(db, ElementKind::Capzone);
    layers.protectionAreasEnabled = capzones;
    layers.protectionAreas = capzones;
    db.Close();
  });
  if (hooks.layersChanged) hooks.layersChanged();
}

}  // namespace tarno
