// A shapefile as a base map layer: every record is read once when the layer is
// opened (geometry, box, colour and label), and each redraw draws the records whose
// boxes meet the window: points as dots, lines as lines, polygons as outlines.
//
// Colour: the row's colour, or, when the row's UseColorField is set and its
// ColorField is not "__NONE__", a value map of that field: each distinct value of
// the field gets a colour of its own. Labels: the row's TextField, when it is not
// "__NONE__", written at each shape. A field that the table lacks (or a missing
// .dbf) leaves the row's colour and no labels: the map still draws.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "basemaps/layers.h"
#include "basemaps/shapefile.h"
#include "display/canvas.h"

namespace tarno {

// The marker and text of shapefile layers.
inline constexpr int kShapePointSymbol = 5;
inline constexpr const char* kShapeLabelFont = "Arial";
inline constexpr int kShapeLabelPoints = 8;

// `n` colours, all different, spread around the colour wheel; the same list for
// the same `n`.
std::vector<Colour> DistinctColours(int n);

class ShapeLayer : public BaseMapLayer {
 public:
  struct Record {
    ShapeType Type = ShapeType::Null;  // of the file; Null records are not kept
    CRect Box;
    // Points: one part of points; multipoints: one part; lines and polygons: their parts.
    std::vector<std::vector<std::pair<double, double>>> Parts;
    Colour Color = 0;
    std::string Label;  // empty: none
    double LabelX = 0.0, LabelY = 0.0;
  };

  // Reads the whole map; throws Error (a ShapeFileError or a table error) naming
  // the file when it cannot be read.
  explicit ShapeLayer(const BaseMapRow& row);

  const std::string& Name() const override { return name_; }
  bool IsRaster() const override { return false; }
  std::optional<MapExtents> Extents() const override { return extents_; }
  void Draw(VGraphGDI& layer) override;

  ShapeType FileType() const { return type_; }
  const std::vector<Record>& Records() const { return records_; }
  // The value map of the colour field (empty when the row's colour is used).
  const std::map<std::string, Colour>& ValueColours() const { return valueColours_; }

 private:
  void DrawRecord(VGraphGDI& layer, const Record& r);
  std::string name_;
  ShapeType type_ = ShapeType::Null;
  std::optional<MapExtents> extents_;
  std::vector<Record> records_;
  std::map<std::string, Colour> valueColours_;
};

}  // namespace tarno
