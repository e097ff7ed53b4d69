// What the map shows and how: the View menu's switches, the selection, the pens of
// the GUI options, the solution that may be drawn. The main window owns one
// MapState; the redraw pipeline and every drawing operation read it.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>

#include "core/coords.h"
#include "display/canvas.h"
#include "display/vgraph.h"

namespace tarno {

// The switches and entries of the View menu (the Layermenu array and its
// submenus). `...Enabled` is the entry's availability, the rest its check mark.
struct LayerSwitches {
  bool elements = true;             // 1 "Elements"
  bool contours = true;             // 2 "Contours"
  bool contoursEnabled = false;
  bool pathlines = false;           // 3 "Pathlines"
  bool pathlinesEnabled = false;
  bool resultsOverlayEnabled = false;  // 5 "Results Overlay..."
  bool protectionAreas = false;     // 6 "Wellhead Protection Areas"
  bool protectionAreasEnabled = false;
  bool hydrographyLabels = false;   // 7 "View Hydrography Labels"
  bool hydrographyLabelsEnabled = false;
  bool hypsographyLabels = false;   // 8 "View Hypsography Labels"
  bool toolbar = true;              // 9 "Toolbar"
  bool linesinkVertices = false;    // 11 "Show Vertices": "Linesink Vertices"
  bool inhomogeneityVertices = false;  //   "Inhomogeneity Vertices"
  bool domainVertices = false;      //   "Domain and Boundary Vertices"
  bool streamLinkages = false;      // 12 "Show Stream Linkages"
  bool manualRedraw = false;        // 13 "Manual Redraw"
  bool showEditorGrid = false;      // 14 "Base Map..." > EDITORGRID "Show Editor Grid"
  bool snapToGrid = false;          //   > "Snap to Grid"
  bool viewFarField = false;        // 15 "Hydrologic Unit" > "FarField Boundary"
  bool viewFarFieldEnabled = false;
  bool viewNearField = false;       //   > "Hydrologic Unit Boundary"
  bool viewNearFieldEnabled = false;
  bool haze = false;                // "Haze Background"

  // Test points (the TESTDISPLAY submenu): shown at all, their display style
  // (0 plain, 1 numbers, 2 scaled, 3 scaled with numbers) and labels.
  bool showTestPoints = true;
  bool testPointNumbers = false;
  bool testPointScaled = false;
  bool testPointLabels = false;
  int piezometerScale = 10;  // TPSCALING: 5, 10, 20
  int gageScale = 50;        // TGSCALING: 10, 50, 100
  int stageScale = 10;       // TSSCALING: 5, 10, 20

  // Pathlines: PATHLINES(1) "Show Paths"; time marks (TMARKS) and elevation marks
  // (ZMARKS) with their steps; 0 means off.
  bool showPaths = true;
  double timeMarkStep = 0.0;
  double elevationMarkStep = 0.0;
};

// The pens and tolerances of the GUI options (the Model row's contour and
// pathline pens; haze and the rest as the options dialog holds them).
struct DisplayOptions {
  int HazeLevel = 3;
  Colour HazeColor = Rgb(255, 255, 255);
  double VertexTolerance = 0.01;
  double LinesinkShadow = 2.0;  // points
  int ContourType = kPenDot;
  int PathlineType = kPenSolid;
  int ContourWidth = 1;
  int PathlineWidth = 1;
  Colour ContourColor = 0x800000;   // palette 1
  Colour PathlineColor = 0x000080;  // palette 4
  Colour Background = Rgb(255, 255, 255);  // the map's background (erase colour)
};

// The selected element (Part of the mouse machine; the drawing only reads it).
struct Selection {
  int type = 0;        // 0 none; 1 well, 2 line-sink string, 21 test point, 22 particle, 30 label, ...
  std::int64_t pid = 0;   // the string's or polygon's PID
  std::int64_t vid = 0;   // the current Vertices record
  std::int64_t id = 0;    // the element's own key (well vid, label id)
};

// The solution that may be drawn.
struct SolutionView {
  bool valid = false;  // SolutionValid
  std::filesystem::path directory;  // where the solver files are (TARNOPath)
  std::string baseName;             // TARNOBaseName
  bool contourLinesPresent = false;
  bool pathsPresent = false;
};

// Everything a drawing operation needs besides the layer.
struct MapState {
  bool ProjectOpen = false;
  std::filesystem::path projectFile;  // ProjectSettings.DBName
  ModelFrame frame;                   // origin and BasemapConvert
  WorldWindow Window;
  LayerSwitches layers;
  DisplayOptions options;
  Selection selection;
  SolutionView solution;
  int mouseState = 0;   // MouseState
  int mouseMode = 0;    // MouseMode
  std::int64_t drawingPid = 0;  // the string being drawn now (mouse state 5)
};

}  // namespace tarno
