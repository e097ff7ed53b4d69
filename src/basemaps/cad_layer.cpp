// CAD drawings through OGR: every entity read once into figures of map units, and
// drawn by the graphics layer in the four layers of a CAD map.
#include "basemaps/cad_layer.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <functional>

#include "basemaps/gdal_support.h"
#include "core/error.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

std::string Quoted(const std::string& s) { return "\"" + s + "\""; }

std::string LowerExtension(const std::string& path) {
  std::string ext = fs::path(path).extension().string();
  std::transform(ext.begin(), ext.end(), ext.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ext;
}

// The size of a text point when the drawing gives none, and the smallest text
// drawn: a text shrunk below it by zooming out cannot be read.
constexpr double kDefaultTextPoints = 10.0;
constexpr double kSmallestTextPoints = 2.0;
// The radius of a point's dot in device pixels.
constexpr int kPointRadius = 2;

// A number of a LABEL(...) style parameter ("s:2.5g", "a:30"), with its unit.
struct StyleValue {
  bool found = false;
  double value = 0.0;
  std::string unit;
};

StyleValue LabelParameter(const std::string& style, const std::string& key) {
  StyleValue v;
  const auto label = style.find("LABEL(");
  if (label == std::string::npos) return v;
  const auto end = style.find(')', label);
  const std::string body =
      style.substr(label + 6, end == std::string::npos ? std::string::npos : end - label - 6);
  std::size_t at = 0;
  while (at < body.size()) {
    const auto comma = body.find(',', at);
    const std::string part =
        body.substr(at, comma == std::string::npos ? std::string::npos : comma - at);
    if (part.rfind(key + ":", 0) == 0) {
      const std::string text = part.substr(key.size() + 1);
      char* stop = nullptr;
      const double number = std::strtod(text.c_str(), &stop);
      if (stop != text.c_str()) {
        v.found = true;
        v.value = number;
        v.unit = std::string(stop);
      }
      return v;
    }
    if (comma == std::string::npos) break;
    at = comma + 1;
  }
  return v;
}

void Widen(std::optional<MapExtents>& e, double x, double y) {
  if (!std::isfinite(x) || !std::isfinite(y)) return;
  if (!e) {
    e = MapExtents{x, x, y, y};
    return;
  }
  e->Left = std::min(e->Left, x);
  e->Right = std::max(e->Right, x);
  e->Bottom = std::min(e->Bottom, y);
  e->Top = std::max(e->Top, y);
}

CadFigure FigureOf(const OGRSimpleCurve& curve) {
  CadFigure f;
  const int n = curve.getNumPoints();
  f.xs.reserve(n);
  f.ys.reserve(n);
  for (int i = 0; i < n; ++i) {
    f.xs.push_back(curve.getX(i));
    f.ys.push_back(curve.getY(i));
  }
  if (n > 0) {
    f.left = *std::min_element(f.xs.begin(), f.xs.end());
    f.right = *std::max_element(f.xs.begin(), f.xs.end());
    f.bottom = *std::min_element(f.ys.begin(), f.ys.end());
    f.top = *std::max_element(f.ys.begin(), f.ys.end());
  }
  return f;
}

}  // namespace

Colour CADColorConvert(int color) {
  if (color < 0 || color > 0xFFFFFF) return Rgb(0, 0, 0);
  return static_cast<Colour>(color);
}

CadLayer::CadLayer(const BaseMapRow& row)
    : name_(row.MapName), colour_(CADColorConvert(row.Color)) {
  const std::string ext = LowerExtension(name_);
  if (ext == ".dwg")
    throw Error("The drawing " + Quoted(name_) +
                " is a DWG file, which cannot be read here; save it as DXF and add the DXF file");
  std::error_code ec;
  if (!fs::is_regular_file(fs::path(name_), ec))
    throw Error("The drawing " + Quoted(name_) + " does not exist", error_number::kFileNotFound);

  EnsureGdalRegistered();
  GdalErrorCapture capture;
  static const char* const kDrivers[] = {"DXF", "DGN", nullptr};
  GdalDatasetPtr ds(GDALDataset::FromHandle(
      GDALOpenEx(name_.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, kDrivers, nullptr, nullptr)));
  if (!ds)
    throw Error("The drawing " + Quoted(name_) + " is not a valid vector data set" +
                capture.Detail());

  // One geometry into the figures of its kind; collections are taken apart.
  std::function<void(const OGRGeometry&, const OGRFeature&)> take = [&](const OGRGeometry& geometry,
                                                                        const OGRFeature& feature) {
    const OGRwkbGeometryType type = wkbFlatten(geometry.getGeometryType());
    if (type == wkbPoint) {
      const auto& p = *geometry.toPoint();
      const int textField = feature.GetFieldIndex("Text");
      const std::string text = textField >= 0 && feature.IsFieldSetAndNotNull(textField)
                                   ? feature.GetFieldAsString(textField)
                                   : "";
      const char* styleText = feature.GetStyleString();
      const std::string style = styleText != nullptr ? styleText : "";
      if (!text.empty()) {
        CadText t;
        t.x = p.getX();
        t.y = p.getY();
        t.text = text;
        const StyleValue size = LabelParameter(style, "s");
        // Only a height in ground units scales with the map.
        if (size.found && size.value > 0 && size.unit == "g") t.height = size.value;
        const StyleValue angle = LabelParameter(style, "a");
        if (angle.found) t.angle = angle.value;
        texts_.push_back(std::move(t));
      } else {
        CadFigure f;
        f.xs = {p.getX()};
        f.ys = {p.getY()};
        f.left = f.right = p.getX();
        f.bottom = f.top = p.getY();
        points_.push_back(std::move(f));
      }
      Widen(extents_, p.getX(), p.getY());
      return;
    }
    if (OGR_GT_IsSubClassOf(type, wkbGeometryCollection)) {
      for (const OGRGeometry* part : *geometry.toGeometryCollection()) take(*part, feature);
      return;
    }
    if (OGR_GT_IsSurface(type)) {
      std::unique_ptr<OGRGeometry> linear(geometry.getLinearGeometry());
      if (!linear) return;
      const auto* polygon = dynamic_cast<const OGRPolygon*>(linear.get());
      if (polygon == nullptr) {
        take(*linear, feature);
        return;
      }
      // Each ring an area of its own: a hole is filled like its outer ring.
      for (const OGRLinearRing* ring : *polygon) {
        CadFigure f = FigureOf(*ring);
        if (f.xs.size() < 3) continue;
        Widen(extents_, f.left, f.bottom);
        Widen(extents_, f.right, f.top);
        areas_.push_back(std::move(f));
      }
      return;
    }
    if (OGR_GT_IsCurve(type)) {
      std::unique_ptr<OGRGeometry> linear(geometry.getLinearGeometry());
      const auto* line = linear ? dynamic_cast<const OGRSimpleCurve*>(linear.get()) : nullptr;
      if (line == nullptr) return;
      CadFigure f = FigureOf(*line);
      if (f.xs.empty()) return;
      Widen(extents_, f.left, f.bottom);
      Widen(extents_, f.right, f.top);
      lines_.push_back(std::move(f));
    }
  };

  for (OGRLayer* ogrLayer : ds->GetLayers()) {
    ogrLayer->ResetReading();
    for (const auto& feature : *ogrLayer) {
      const OGRGeometry* geometry = feature->GetGeometryRef();
      if (geometry != nullptr && !geometry->IsEmpty()) take(*geometry, *feature);
    }
  }
}

std::optional<MapExtents> CadLayer::Extents() const { return extents_; }

std::vector<std::string> CadLayer::LayerNames() const {
  return {kCadAreaLayer + name_, kCadLineLayer + name_, kCadPointLayer + name_,
          kCadTextLayer + name_};
}

void CadLayer::Draw(VGraphGDI& layer) {
  const VGraphGDI::GraphicsState& s = layer.State();
  if (s.Surface == nullptr) return;
  const double left = std::min(s.Left, s.Right), right = std::max(s.Left, s.Right);
  const double bottom = std::min(s.Top, s.Bottom), top = std::max(s.Top, s.Bottom);
  auto visible = [&](const CadFigure& f) {
    return f.left <= right && f.right >= left && f.bottom <= top && f.top >= bottom;
  };
  std::vector<DevicePoint> points;
  // A figure whose far points leave the device's range (a deep zoom) is skipped;
  // the rest of the drawing still draws.
  auto toDevice = [&](const CadFigure& f) {
    points.resize(f.xs.size());
    for (std::size_t i = 0; i < f.xs.size(); ++i)
      points[i] = layer.vgGDIWorldToDevice(f.xs[i], f.ys[i]);
  };

  for (const CadFigure& f : areas_) {
    if (!visible(f)) continue;
    try {
      toDevice(f);
    } catch (const OverflowError&) {
      continue;
    }
    layer.vgGDIDevicePolygon(points, static_cast<int>(points.size()), colour_, 0, kPenSolid,
                             colour_);
  }
  for (const CadFigure& f : lines_) {
    if (!visible(f)) continue;
    try {
      toDevice(f);
    } catch (const OverflowError&) {
      continue;
    }
    layer.vgGDIDevicePolyline(points, static_cast<int>(points.size()), colour_, 0, kPenSolid);
  }
  for (const CadFigure& f : points_) {
    if (!visible(f)) continue;
    try {
      layer.vgGDIDeviceCircle(layer.vgGDIWorldToDevice(f.xs[0], f.ys[0]), kPointRadius, colour_, 0,
                              kPenSolid, colour_);
    } catch (const OverflowError&) {}
  }
  // A text given in map units keeps its size on the map: its height in points
  // follows the zoom.
  const double unitsPerPixel = s.DeviceHeight > 0 ? (top - bottom) / s.DeviceHeight : 0.0;
  for (const CadText& t : texts_) {
    if (t.x < left || t.x > right || t.y < bottom || t.y > top) continue;
    double pointsHigh = kDefaultTextPoints;
    if (t.height > 0 && unitsPerPixel > 0)
      pointsHigh = t.height / unitsPerPixel * 72.0 / std::max(1, s.PixelsPerInchY);
    if (pointsHigh < kSmallestTextPoints) continue;
    try {
      layer.vgGDIWorldText(t.x, t.y, t.text, kCadTextFont,
                           static_cast<int>(std::lround(std::min(pointsHigh, 2000.0))), colour_,
                           t.angle, kAlignLeft, false);
    } catch (const OverflowError&) {}
  }
}

std::unique_ptr<BaseMapLayer> OpenCadLayer(const BaseMapRow& row) {
  return std::make_unique<CadLayer>(row);
}

}  // namespace tarno
