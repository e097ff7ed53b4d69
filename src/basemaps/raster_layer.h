// Raster images as base maps, read through GDAL.
//
// An image is placed on the map by its world file (FindWorldFile: the extensions of
// its kind in their order) or, without one, by the georeferencing the file carries
// itself (a GeoTIFF's tags, for example). An image with neither lies with its lower
// left corner at the origin, one map unit to a pixel.
//
// Drawing reads only the part of the image inside the window, at the window's own
// pixel size, from the coarsest overview that still has at least one pixel for each
// pixel of the screen; an image with overviews ("pyramids", BuildOverviews) draws in
// about the same time at any zoom.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "basemaps/layers.h"
#include "display/basemap_layer.h"

namespace tarno {

// Where an image's place on the map comes from.
enum class RasterGeoreference { WorldFile, Embedded, None };

class RasterLayer : public BaseMapLayer {
 public:
  // Opens the image of the row. Throws Error naming the file when GDAL cannot read
  // it, when it has no band, when its world file is bad (the file and the line) or
  // when it is rotated (a rotated image is not drawn).
  explicit RasterLayer(const BaseMapRow& row);
  ~RasterLayer() override;

  const std::string& Name() const override { return name_; }
  bool IsRaster() const override { return true; }
  std::optional<MapExtents> Extents() const override;
  // Draws the part of the image in the layer's window, resampled to the device's
  // pixels. Throws Error naming the file when GDAL fails to read it.
  void Draw(VGraphGDI& layer) override;

  RasterGeoreference Georeference() const { return georeference_; }
  // The world file the image was placed by, when it was.
  const std::optional<std::string>& WorldFilePath() const { return worldFile_; }
  int PixelWidth() const { return width_; }
  int PixelHeight() const { return height_; }
  // The image's pixel corners on the map: x of the upper left corner, pixel width,
  // 0, y of the upper left corner, 0, pixel height (negative when rows run down).
  const std::array<double, 6>& GeoTransform() const { return gt_; }
  // The number of overview levels the image has.
  int OverviewCount() const;
  // The overview level the last Draw read: 0 the image itself, n the n-th overview.
  int LastLevel() const { return lastLevel_; }

 private:
  struct Impl;
  std::string name_;
  std::unique_ptr<Impl> impl_;
  RasterGeoreference georeference_ = RasterGeoreference::None;
  std::optional<std::string> worldFile_;
  int width_ = 0, height_ = 0;
  std::array<double, 6> gt_{};
  int lastLevel_ = 0;
};

// The level to read for a window that shows `sourcePerDevice` image pixels on each
// device pixel, given the reduction factor of each overview (2, 4, 8, ... in their
// order): the overview of the largest factor not above sourcePerDevice (so the
// picture never shows an overview stretched), 0 (the image) when none is. Level n is
// the n-th overview.
int PickOverviewLevel(double sourcePerDevice, const std::vector<double>& overviewFactors);

// The overview factors BuildOverviews makes for an image: 2, 4, 8, ... until the
// longer side of the coarsest is at most 256 pixels; none for a smaller image.
std::vector<int> OverviewFactors(int width, int height);

// Builds the overviews ("pyramids") of an image beside it (GDAL's ".ovr" file; the
// image itself is not changed), averaging the pixels. `progress` (optional) is told
// the share done, 0 to 1, and may return false to stop. Returns false when it was
// stopped, true when built or when the image is too small to need any. Throws Error
// naming the file when the image cannot be read or the overviews cannot be written.
bool BuildOverviews(const std::string& path, const std::function<bool(double)>& progress = {});

}  // namespace tarno
