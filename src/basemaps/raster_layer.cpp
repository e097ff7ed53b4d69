// Raster images through GDAL: opening and georeferencing, the drawing of the
// visible part at the screen's resolution, and the building of overviews.
#include "basemaps/raster_layer.h"

#include <gdal_priv.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>

#include "basemaps/gdal_support.h"
#include "basemaps/world_file.h"
#include "core/error.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

std::string Quoted(const std::string& s) { return "\"" + s + "\""; }

// The most pixels one Draw reads: a page of a printer at full resolution would
// need far more, and is read at a coarser size and stretched by the surface.
constexpr double kMaxBufferPixels = 16.0e6;

constexpr std::uint32_t Argb(int a, int r, int g, int b) {
  return (static_cast<std::uint32_t>(a & 0xFF) << 24) |
         (static_cast<std::uint32_t>(r & 0xFF) << 16) |
         (static_cast<std::uint32_t>(g & 0xFF) << 8) | static_cast<std::uint32_t>(b & 0xFF);
}

}  // namespace

// How the bands of an image become colours.
struct RasterLayer::Impl {
  enum class Mode { Gray, Palette, Rgb };
  GdalDatasetPtr dataset;
  Mode mode = Mode::Gray;
  std::vector<int> bands;  // the bands read for colour: one, or red, green, blue
  int alphaBand = 0;       // 0: none
  std::vector<std::uint32_t> palette;
  // The linear stretch of each colour band to 0..255 (identity for bytes).
  std::vector<double> low, scale;
  bool hasNoData = false;
  double noData = 0.0;

  std::uint8_t Stretch(std::size_t i, float value) const {
    const double v = (value - low[i]) * scale[i];
    if (!(v > 0.0)) return 0;
    if (v >= 255.0) return 255;
    return static_cast<std::uint8_t>(v + 0.5);
  }
};

RasterLayer::RasterLayer(const BaseMapRow& row)
    : name_(row.MapName), impl_(std::make_unique<Impl>()) {
  EnsureGdalRegistered();
  std::error_code ec;
  if (!fs::is_regular_file(fs::path(name_), ec))
    throw Error("The image " + Quoted(name_) + " does not exist", error_number::kFileNotFound);

  GdalErrorCapture capture;
  impl_->dataset.reset(GDALDataset::FromHandle(
      GDALOpenEx(name_.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr)));
  GDALDataset* ds = impl_->dataset.get();
  if (ds == nullptr)
    throw Error("The image " + Quoted(name_) + " is not a valid raster data set" +
                capture.Detail());
  const int count = ds->GetRasterCount();
  if (count < 1)
    throw Error("The image " + Quoted(name_) + " is not a valid raster data set: it has no band");
  width_ = ds->GetRasterXSize();
  height_ = ds->GetRasterYSize();

  // Which bands make the colours.
  GDALRasterBand* first = ds->GetRasterBand(1);
  const GDALColorTable* table = first->GetColorTable();
  auto isAlpha = [&](int b) {
    return b <= count && ds->GetRasterBand(b)->GetColorInterpretation() == GCI_AlphaBand;
  };
  if (count >= 3 && first->GetColorInterpretation() != GCI_PaletteIndex) {
    impl_->mode = Impl::Mode::Rgb;
    impl_->bands = {1, 2, 3};
    if (isAlpha(4)) impl_->alphaBand = 4;
  } else if (table != nullptr) {
    impl_->mode = Impl::Mode::Palette;
    impl_->bands = {1};
    impl_->palette.assign(std::max(256, table->GetColorEntryCount()), Argb(0, 0, 0, 0));
    for (int i = 0; i < table->GetColorEntryCount(); ++i) {
      GDALColorEntry e;
      table->GetColorEntryAsRGB(i, &e);
      impl_->palette[static_cast<std::size_t>(i)] = Argb(e.c4, e.c1, e.c2, e.c3);
    }
  } else {
    impl_->mode = Impl::Mode::Gray;
    impl_->bands = {1};
    if (isAlpha(2)) impl_->alphaBand = 2;
  }
  int hasNoData = 0;
  const double noData = first->GetNoDataValue(&hasNoData);
  impl_->hasNoData = hasNoData != 0 && std::isfinite(noData);
  impl_->noData = noData;

  // Bytes are shown as they are; other types (heights, counts) are stretched
  // between the band's least and greatest values, found from its overviews.
  for (int b : impl_->bands) {
    GDALRasterBand* band = ds->GetRasterBand(b);
    double lo = 0.0, hi = 255.0;
    if (impl_->mode != Impl::Mode::Palette && band->GetRasterDataType() != GDT_Byte) {
      double mm[2] = {0.0, 0.0};
      if (band->ComputeRasterMinMax(TRUE, mm) == CE_None) {
        lo = mm[0];
        hi = mm[1];
      }
    }
    impl_->low.push_back(lo);
    impl_->scale.push_back(hi > lo ? 255.0 / (hi - lo) : 0.0);
  }

  // The place on the map: our world file first, then the file's own.
  if (std::optional<fs::path> world = FindWorldFile(fs::path(name_))) {
    gt_ = ReadWorldFile(*world).GeoTransform();
    georeference_ = RasterGeoreference::WorldFile;
    worldFile_ = world->string();
  } else {
    double gt[6] = {0, 1, 0, 0, 0, 1};
    const bool own =
        ds->GetGeoTransform(gt) == CE_None &&
        !(gt[0] == 0 && gt[1] == 1 && gt[2] == 0 && gt[3] == 0 && gt[4] == 0 && gt[5] == 1);
    if (own) {
      std::copy(gt, gt + 6, gt_.begin());
      georeference_ = RasterGeoreference::Embedded;
    } else {
      gt_ = {0.0, 1.0, 0.0, static_cast<double>(height_), 0.0, -1.0};
      georeference_ = RasterGeoreference::None;
    }
  }
  if (gt_[2] != 0.0 || gt_[4] != 0.0)
    throw Error("The image " + Quoted(name_) +
                " is rotated on the map (its georeferencing has rotation terms); rotated images "
                "are not drawn");
  if (gt_[1] == 0.0 || gt_[5] == 0.0 || !std::isfinite(gt_[0]) || !std::isfinite(gt_[3]))
    throw Error("The image " + Quoted(name_) + " has a pixel of no size on the map");
}

RasterLayer::~RasterLayer() = default;

std::optional<MapExtents> RasterLayer::Extents() const {
  const double x0 = gt_[0], x1 = gt_[0] + width_ * gt_[1];
  const double y0 = gt_[3], y1 = gt_[3] + height_ * gt_[5];
  MapExtents e;
  e.Left = std::min(x0, x1);
  e.Right = std::max(x0, x1);
  e.Bottom = std::min(y0, y1);
  e.Top = std::max(y0, y1);
  return e;
}

int RasterLayer::OverviewCount() const {
  return impl_->dataset->GetRasterBand(1)->GetOverviewCount();
}

int PickOverviewLevel(double sourcePerDevice, const std::vector<double>& overviewFactors) {
  int best = 0;
  double bestFactor = 1.0;
  for (std::size_t i = 0; i < overviewFactors.size(); ++i) {
    const double f = overviewFactors[i];
    // A little slack, so that a factor of 2 serves a window of 1.999 pixels.
    if (f > bestFactor && f <= sourcePerDevice * 1.001) {
      best = static_cast<int>(i) + 1;
      bestFactor = f;
    }
  }
  return best;
}

std::vector<int> OverviewFactors(int width, int height) {
  std::vector<int> factors;
  const int longer = std::max(width, height);
  for (int f = 2; longer / (f / 2) > 256 && f <= (1 << 20); f *= 2) factors.push_back(f);
  return factors;
}

void RasterLayer::Draw(VGraphGDI& layer) {
  const VGraphGDI::GraphicsState& s = layer.State();
  if (s.Surface == nullptr || s.DeviceWidth <= 0 || s.DeviceHeight <= 0 || width_ <= 0 ||
      height_ <= 0)
    return;
  const std::optional<MapExtents> extents = Extents();
  // The visible part of the image, in map units.
  const double vx0 = std::max(std::min(s.Left, s.Right), extents->Left);
  const double vx1 = std::min(std::max(s.Left, s.Right), extents->Right);
  const double vy0 = std::max(std::min(s.Top, s.Bottom), extents->Bottom);
  const double vy1 = std::min(std::max(s.Top, s.Bottom), extents->Top);
  if (!(vx0 < vx1) || !(vy0 < vy1)) return;

  // Its rectangle on the device.
  const DevicePoint topLeft = layer.vgGDIWorldToDevice(vx0, vy1);
  const DevicePoint bottomRight = layer.vgGDIWorldToDevice(vx1, vy0);
  const int dw = bottomRight.x - topLeft.x;
  const int dh = bottomRight.y - topLeft.y;
  if (dw <= 0 || dh <= 0) return;  // less than a pixel of the screen

  // Its window in the image's pixels; a transform with rows running up or columns
  // running left turns the window round, and the picture is turned back below.
  double c0 = (vx0 - gt_[0]) / gt_[1], c1 = (vx1 - gt_[0]) / gt_[1];
  double r0 = (vy1 - gt_[3]) / gt_[5], r1 = (vy0 - gt_[3]) / gt_[5];
  const bool flipX = c0 > c1;
  const bool flipY = r0 > r1;
  if (flipX) std::swap(c0, c1);
  if (flipY) std::swap(r0, r1);
  c0 = std::clamp(c0, 0.0, static_cast<double>(width_));
  c1 = std::clamp(c1, 0.0, static_cast<double>(width_));
  r0 = std::clamp(r0, 0.0, static_cast<double>(height_));
  r1 = std::clamp(r1, 0.0, static_cast<double>(height_));
  if (!(c0 < c1) || !(r0 < r1)) return;

  // The buffer: the device's pixels, or fewer for a very large surface.
  int bw = dw, bh = dh;
  const double pixels = static_cast<double>(dw) * dh;
  if (pixels > kMaxBufferPixels) {
    const double k = std::sqrt(pixels / kMaxBufferPixels);
    bw = std::max(1, static_cast<int>(dw / k));
    bh = std::max(1, static_cast<int>(dh / k));
  }

  // The level: the coarsest overview with at least one pixel per buffer pixel.
  GDALDataset* ds = impl_->dataset.get();
  GDALRasterBand* first = ds->GetRasterBand(1);
  std::vector<double> factors;
  for (int i = 0; i < first->GetOverviewCount(); ++i) {
    GDALRasterBand* ov = first->GetOverview(i);
    if (ov == nullptr || ov->GetXSize() < 1) break;
    factors.push_back(static_cast<double>(width_) / ov->GetXSize());
  }
  const double perPixel = std::min((c1 - c0) / bw, (r1 - r0) / bh);
  const int level = PickOverviewLevel(perPixel, factors);
  lastLevel_ = level;

  auto bandAt = [&](int b) -> GDALRasterBand* {
    GDALRasterBand* band = ds->GetRasterBand(b);
    return level == 0 ? band : band->GetOverview(level - 1);
  };
  GDALRasterBand* sample = bandAt(impl_->bands.front());
  if (sample == nullptr)
    throw Error("The image " + Quoted(name_) + " lacks overview level " + std::to_string(level));
  const double sx = static_cast<double>(sample->GetXSize()) / width_;
  const double sy = static_cast<double>(sample->GetYSize()) / height_;
  const double oc0 = c0 * sx, oc1 = c1 * sx, or0 = r0 * sy, or1 = r1 * sy;
  const int xOff = std::clamp(static_cast<int>(std::floor(oc0)), 0, sample->GetXSize() - 1);
  const int yOff = std::clamp(static_cast<int>(std::floor(or0)), 0, sample->GetYSize() - 1);
  const int xEnd = std::clamp(static_cast<int>(std::ceil(oc1)), xOff + 1, sample->GetXSize());
  const int yEnd = std::clamp(static_cast<int>(std::ceil(or1)), yOff + 1, sample->GetYSize());

  GDALRasterIOExtraArg extra;
  INIT_RASTERIO_EXTRA_ARG(extra);
  extra.eResampleAlg = GRIORA_NearestNeighbour;
  // Where the picture goes on the device.
  DevicePoint at = topLeft;
  int boxWidth = dw, boxHeight = dh;
  if (level == 0 && perPixel < 1.0) {
    // Closer than one image pixel to a device pixel: the whole image pixels under
    // the window are read as they are and the surface stretches them, each to a
    // sharp square, over their own place, which reaches a little beyond the window.
    bw = xEnd - xOff;
    bh = yEnd - yOff;
    const double wx0 = gt_[0] + xOff * gt_[1], wx1 = gt_[0] + xEnd * gt_[1];
    const double wy0 = gt_[3] + yOff * gt_[5], wy1 = gt_[3] + yEnd * gt_[5];
    try {
      at = layer.vgGDIWorldToDevice(std::min(wx0, wx1), std::max(wy0, wy1));
      const DevicePoint end = layer.vgGDIWorldToDevice(std::max(wx0, wx1), std::min(wy0, wy1));
      boxWidth = end.x - at.x;
      boxHeight = end.y - at.y;
    } catch (const OverflowError&) {
      return;  // a pixel larger than the device's range: nothing sensible to draw
    }
    if (boxWidth <= 0 || boxHeight <= 0) return;
  } else {
    // The window's part read at the buffer's size, from a window of the level
    // placed to the fraction of a pixel.
    extra.bFloatingPointWindowValidity = TRUE;
    extra.dfXOff = std::max(oc0, static_cast<double>(xOff));
    extra.dfYOff = std::max(or0, static_cast<double>(yOff));
    extra.dfXSize = std::min(oc1, static_cast<double>(xEnd)) - extra.dfXOff;
    extra.dfYSize = std::min(or1, static_cast<double>(yEnd)) - extra.dfYOff;
    if (!(extra.dfXSize > 0) || !(extra.dfYSize > 0)) return;
  }

  const std::size_t n = static_cast<std::size_t>(bw) * bh;
  GdalErrorCapture capture;
  auto read = [&](int b, std::vector<float>& into) {
    into.resize(n);
    GDALRasterBand* band = bandAt(b);
    if (band == nullptr ||
        band->RasterIO(GF_Read, xOff, yOff, xEnd - xOff, yEnd - yOff, into.data(), bw, bh,
                       GDT_Float32, 0, 0, &extra) != CE_None)
      throw Error("Cannot read the image " + Quoted(name_) + capture.Detail());
  };
  std::vector<std::vector<float>> colour(impl_->bands.size());
  for (std::size_t i = 0; i < impl_->bands.size(); ++i) read(impl_->bands[i], colour[i]);
  std::vector<float> alpha;
  if (impl_->alphaBand > 0) read(impl_->alphaBand, alpha);

  std::vector<std::uint32_t> argb(n);
  const Impl& m = *impl_;
  for (std::size_t p = 0; p < n; ++p) {
    const float v = colour[0][p];
    std::uint32_t c;
    if (m.hasNoData && v == static_cast<float>(m.noData)) {
      c = 0;  // transparent
    } else if (m.mode == Impl::Mode::Palette) {
      const auto index = static_cast<long long>(v);
      c = index >= 0 && index < static_cast<long long>(m.palette.size())
              ? m.palette[static_cast<std::size_t>(index)]
              : 0;
    } else if (m.mode == Impl::Mode::Rgb) {
      c = Argb(255, m.Stretch(0, v), m.Stretch(1, colour[1][p]), m.Stretch(2, colour[2][p]));
    } else {
      const std::uint8_t g = m.Stretch(0, v);
      c = Argb(255, g, g, g);
    }
    if (!alpha.empty() && c != 0) {
      const int a = std::clamp(static_cast<int>(alpha[p]), 0, 255);
      c = (c & 0x00FFFFFFu) | (static_cast<std::uint32_t>(a) << 24);
    }
    argb[p] = c;
  }
  if (flipX) {
    for (int y = 0; y < bh; ++y)
      std::reverse(argb.begin() + static_cast<std::ptrdiff_t>(y) * bw,
                   argb.begin() + static_cast<std::ptrdiff_t>(y + 1) * bw);
  }
  if (flipY) {
    for (int y = 0; y < bh / 2; ++y)
      std::swap_ranges(argb.begin() + static_cast<std::ptrdiff_t>(y) * bw,
                       argb.begin() + static_cast<std::ptrdiff_t>(y + 1) * bw,
                       argb.begin() + static_cast<std::ptrdiff_t>(bh - 1 - y) * bw);
  }
  layer.vgGDIDeviceImage(at.x, at.y, boxWidth, boxHeight, argb.data(), bw, bh);
}

std::unique_ptr<BaseMapLayer> OpenRasterLayer(const BaseMapRow& row) {
  return std::make_unique<RasterLayer>(row);
}

namespace {

struct ProgressState {
  const std::function<bool(double)>* report = nullptr;
  bool stopped = false;
};

int CPL_STDCALL ReportProgress(double complete, const char*, void* data) {
  auto* state = static_cast<ProgressState*>(data);
  if (state->report != nullptr && *state->report && !(*state->report)(complete)) {
    state->stopped = true;
    return FALSE;
  }
  return TRUE;
}

}  // namespace

bool BuildOverviews(const std::string& path, const std::function<bool(double)>& progress) {
  EnsureGdalRegistered();
  GdalErrorCapture capture;
  GdalDatasetPtr ds(GDALDataset::FromHandle(
      GDALOpenEx(path.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr)));
  if (!ds)
    throw Error("The image " + Quoted(path) + " is not a valid raster data set" + capture.Detail());
  std::vector<int> factors = OverviewFactors(ds->GetRasterXSize(), ds->GetRasterYSize());
  if (factors.empty()) return true;
  const fs::path overviews = fs::path(path + ".ovr");
  std::error_code ec;
  const bool existed = fs::exists(overviews, ec);
  ProgressState state{&progress, false};
  // Opened read only, GDAL writes the overviews into the ".ovr" file beside the
  // image and leaves the image alone.
  const CPLErr result = GDALBuildOverviews(GDALDataset::ToHandle(ds.get()), "AVERAGE",
                                           static_cast<int>(factors.size()), factors.data(), 0,
                                           nullptr, ReportProgress, &state);
  ds.reset();
  if (state.stopped) {
    // A half-built file would be taken for complete overviews.
    if (!existed) fs::remove(overviews, ec);
    return false;
  }
  if (result != CE_None)
    throw Error("Cannot build the overviews of the image " + Quoted(path) + capture.Detail());
  return true;
}

}  // namespace tarno
