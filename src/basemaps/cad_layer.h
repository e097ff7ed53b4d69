// CAD drawings (DXF and DGN) as base maps, read through OGR.
//
// A drawing is shown as four layers, drawn in this order: its areas (filled), its
// lines, its points and its texts (in "Times"), all in the one colour of the map's
// row (CADColorConvert). Coordinates are the drawing's own, taken as map units.
// DWG drawings are refused: no reader of them is at hand.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "basemaps/layers.h"
#include "display/basemap_layer.h"
#include "display/canvas.h"

namespace tarno {

// The four layer names of a CAD map, each followed by the file's name.
inline constexpr const char* kCadAreaLayer = "[CADArea]";
inline constexpr const char* kCadLineLayer = "[CADLine]";
inline constexpr const char* kCadPointLayer = "[CADPoint]";
inline constexpr const char* kCadTextLayer = "[CADText]";
// The face of a CAD map's texts.
inline constexpr const char* kCadTextFont = "Times";

// The drawing colour of a CAD map from the colour of its Basemaps row: the packed
// RGB value itself; a value outside 0 to 0xFFFFFF (a system colour, a negative
// number) draws black.
Colour CADColorConvert(int color);

// One text of a drawing: where it stands, what it says, its height in map units (0
// when the drawing gives none) and its angle in degrees counter-clockwise.
struct CadText {
  double x = 0.0, y = 0.0;
  std::string text;
  double height = 0.0;
  double angle = 0.0;
};

// A figure of a drawing in map units: one ring of an area, or one line.
struct CadFigure {
  std::vector<double> xs, ys;
  double left = 0, right = 0, bottom = 0, top = 0;  // its box
};

class CadLayer : public BaseMapLayer {
 public:
  // Reads the whole drawing. Throws Error naming the file when it is a DWG drawing,
  // does not exist, or is not a drawing OGR reads.
  explicit CadLayer(const BaseMapRow& row);

  const std::string& Name() const override { return name_; }
  bool IsRaster() const override { return false; }
  std::optional<MapExtents> Extents() const override;
  void Draw(VGraphGDI& layer) override;

  // The four layers' names: "[CADArea]", "[CADLine]", "[CADPoint]", "[CADText]"
  // each followed by the file's name.
  std::vector<std::string> LayerNames() const;
  Colour DrawColour() const { return colour_; }
  const std::vector<CadFigure>& Areas() const { return areas_; }
  const std::vector<CadFigure>& Lines() const { return lines_; }
  const std::vector<CadFigure>& Points() const { return points_; }
  const std::vector<CadText>& Texts() const { return texts_; }

 private:
  std::string name_;
  Colour colour_ = 0;
  std::vector<CadFigure> areas_, lines_, points_;
  std::vector<CadText> texts_;
  std::optional<MapExtents> extents_;
};

}  // namespace tarno
