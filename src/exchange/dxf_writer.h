// A DXF drawing of version AC1015 (AutoCAD 2000) holding polylines and circles.
//
// The file is a fixed skeleton: the HEADER with $ACADVER, $ACADMAINTVER,
// $DWGCODEPAGE "ANSI_1252", $INSBASE, $EXTMIN, $EXTMAX, $LIMMIN, $LIMMAX and
// $HANDSEED; an empty CLASSES section; the TABLES VPORT, LTYPE, LAYER, STYLE, VIEW,
// UCS, APPID, DIMSTYLE and BLOCK_RECORD; the BLOCKS *Model_Space and *Paper_Space;
// the ENTITIES; and the OBJECTS with the root dictionary and its dictionaries
// ACAD_GROUP, ACAD_LAYOUT (the layouts Model and Layout1), ACAD_MLINESTYLE
// (Standard), ACAD_PLOTSETTINGS and ACAD_PLOTSTYLENAME (Normal). Only the entities,
// the layer table (layer "0" and one entry per layer used) and the extents depend
// on the drawing.
//
// An entity is an LWPOLYLINE (subclasses AcDbEntity and AcDbPolyline) or a CIRCLE
// (AcDbCircle), in model space, with the line type "Continuous". A group code
// stands on a line of its own, right-aligned in three columns, its value on the
// next; lines end with CR LF. Every object has a handle, and $HANDSEED is above
// the last one.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "elements/extents.h"
#include "exchange/geometry_sources.h"

namespace tarno::exchange {

class DxfDrawing {
 public:
  // A polyline on `layer`; `closed` sets the closed flag (70 = 1). `elevation` is
  // the polyline's elevation (group 38): a contour line stands at its level.
  void AddPolyline(const std::string& layer, const std::vector<MapPoint>& points,
                   bool closed = false, double elevation = 0.0);
  void AddCircle(const std::string& layer, double x, double y, double radius);
  // Declares a layer without an entity (it gets its table entry all the same).
  void AddLayer(const std::string& layer);

  std::size_t EntityCount() const { return entities_.size(); }
  // The layers in the order of their first use.
  const std::vector<std::string>& Layers() const { return layers_; }

  // The whole file, with the extents (and limits) of `extents`.
  std::string Text(const MapWindow& extents) const;
  // Writes Text to `file`; throws Error naming the file when it cannot be written.
  void Write(const std::filesystem::path& file, const MapWindow& extents) const;

 private:
  struct Entity {
    bool circle = false;
    std::string layer;
    std::vector<MapPoint> points;  // the centre for a circle
    bool closed = false;
    double elevation = 0.0;
    double radius = 0.0;
  };
  std::vector<Entity> entities_;
  std::vector<std::string> layers_;
};

// The colour (AutoCAD colour index) of a layer by its name; 7 for one not known.
int DxfLayerColour(const std::string& layer);

// A group code and its value as two lines: the code right-aligned in three
// columns ("  0", " 10", "100").
std::string DxfGroup(int code, const std::string& value);
// A real number as the DXF files of this system write it: up to 15 significant
// digits, always with a decimal point ("12.0", "455150.25", "-0.001").
std::string DxfReal(double v);

}  // namespace tarno::exchange
