// The redraw pipeline of the map.
//
// The slow part of the picture (editor grid, base maps, haze) is drawn on a hidden
// surface, Map2, only when the window or the map list changed; every redraw copies
// Map2 into the visible surface Map and draws the fast part (elements, contours,
// pathlines, results) on top. Drawing order from the bottom up: editor grid, raster
// maps, vector base maps, haze, grid again, MODFLOW grids, uniform flow and
// elements, contours, pathlines, results overlay.
#pragma once

#include <functional>
#include <set>
#include <string>

#include "display/basemap_layer.h"
#include "display/map_state.h"
#include "display/vgraph.h"

namespace tarno {

class UserInterface;

// One of the map's two surfaces: an image that can be drawn on, resized and copied.
class MapSurface {
 public:
  virtual ~MapSurface() = default;
  virtual Canvas& GetCanvas() = 0;
  // Lays the surface out at a size in device pixels (the picture may be lost).
  virtual void Resize(int width, int height) = 0;
  // Replaces this surface's image with the image of `other`.
  virtual void CopyImageFrom(MapSurface& other) = 0;
};

// The state of the TESTDISPLAY submenu after step 3 of a redraw.
struct TestDisplayMenu {
  bool firstEnabled = false;
  bool piezometerScalingEnabled = false;
  bool gageScalingEnabled = false;
  bool stageScalingEnabled = false;
};

// The main window's side of a redraw. Every hook may be left empty.
struct RedrawHooks {
  std::function<void(bool visible)> showToolbar;
  // Lays Map and Map2 out in the client area between the toolbar and the status bar;
  // the window resizes the two surfaces.
  std::function<void()> layoutSurfaces;
  std::function<void()> disableMouse;
  std::function<void()> enableMouse;
  // The availability of the menus that need a project or a solution.
  std::function<void()> resetMenus;
  std::function<void()> elemTurnOffSelection;
  std::function<void(const TestDisplayMenu&)> setTestDisplayMenu;
  // The View menu's check marks and availabilities after SetUpLayers.
  std::function<void()> layersChanged;
  // ModelDrawResultsOverlay (the result views, built later); empty draws nothing.
  std::function<void()> drawResultsOverlay;
  // The text of the status bar's Feedback panel, kept over the base map drawing and
  // restored after it; empty leaves the panel alone.
  std::function<std::string()> currentFeedback;
  // The text of the Activity panel, kept over the note of an obsolete picture.
  std::function<std::string()> currentActivity;
};

// The note of the status bar while the picture is obsolete (Manual Redraw).
inline constexpr const char* kObsoleteActivity = "REDRAW";
inline constexpr const char* kObsoleteFeedback =
    "Current picture is obsolete -- press CTRL-L to refresh";

class MapView {
 public:
  MapView(MapState& state, VGraphGDI& layer, UserInterface& ui, MapSurface& map, MapSurface& map2);

  RedrawHooks hooks;

  // The one entry for a complete redraw. Printing draws on paper (a later part);
  // here it is refused with an Error. True when the picture was drawn; false when
  // it failed or the window lies out of the layer's range (the old picture stays).
  // A window a little too small for the surface (the map grew) is widened to the
  // smallest one the layer draws.
  bool Redraw(bool printing, bool showWait);
  // The range of a window on the visible surface as it is laid out now.
  WindowRange CheckWindow(const WorldWindow& window);
  // The smallest window the visible surface draws around the centre of `window`.
  WorldWindow SmallestWindow(const WorldWindow& window);

  // The obsolete picture (an edit under Manual Redraw): the note replaces the
  // status bar's Activity and Feedback until a redraw makes the picture current
  // again, which puts back what they said before the first note.
  void MarkObsolete();
  bool PictureObsolete() const { return obsolete_; }
  // The background on whatever surface the layer is bound to.
  void Redraw_Basemap();
  // The dot screen over Map2.
  void ApplyHaze();

  // The project's base maps, in the order of its list, filled by the owner of the
  // view (the pre-scan of the project's maps); null draws none. The list must
  // outlive the view or be replaced. Setting a list forgets which maps failed, so
  // that a map of the new list that fails is reported again; it also rebuilds the
  // background at the next redraw.
  void SetBaseMaps(const BaseMapLayers* maps);
  const BaseMapLayers* BaseMaps() const { return baseMaps_; }
  // Draws the shown base maps on the bound surface: the images first, then the
  // vector maps, each kind in the order of the list. A map that fails is reported
  // with the general message of Redraw_Basemap the first time only, and the others
  // still draw.
  void DrawBaseMaps();
  // The View menu's switches from a project just opened.
  void SetUpLayers();

  // Raised by the Haze and Hypsography Labels entries and any window change.
  bool RedrawBasemap = true;
  // Set when the project settings changed the base map list; consumed by Redraw.
  bool MustRedraw = false;
  WorldWindow LastDrawnWindow;
  // Set by the layer when a window overflowed the coordinate range.
  bool WindowError = false;
  // The editor grid's spacing (the Model row's), passed to the layer's init with the
  // Show Editor Grid switch of the map state.
  double EditorGridSpacing = 10.0;
  // The tracer's default step for the window last drawn (ComputeDefaultStep); the
  // main window hands it to the model settings.
  double DefaultStepSize = 0.0;

  // How many times Map2 was rebuilt since the start (for tests and the benchmark).
  int BackgroundBuilds() const { return backgroundBuilds_; }

 private:
  MapState& state_;
  VGraphGDI& g_;
  UserInterface& ui_;
  MapSurface& map_;
  MapSurface& map2_;
  int backgroundBuilds_ = 0;
  const BaseMapLayers* baseMaps_ = nullptr;
  std::set<std::string> failedMaps_;
  bool obsolete_ = false;
  std::string keptActivity_;
  std::string keptFeedback_;
};

}  // namespace tarno
