#include "basemaps/shape_layer.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "basemaps/dbf.h"
#include "core/file_find.h"
#include "core/text.h"
#include "display/vgraph.h"

namespace tarno {

namespace {

constexpr const char* kNone = "__NONE__";

Colour HsvColour(double h, double s, double v) {
  const double c = v * s;
  const double hp = std::fmod(h, 1.0) * 6.0;
  const double x = c * (1.0 - std::fabs(std::fmod(hp, 2.0) - 1.0));
  double r = 0, g = 0, b = 0;
  if (hp < 1)
    r = c, g = x;
  else if (hp < 2)
    r = x, g = c;
  else if (hp < 3)
    g = c, b = x;
  else if (hp < 4)
    g = x, b = c;
  else if (hp < 5)
    r = x, b = c;
  else
    r = c, b = x;
  const double m = v - c;
  auto byte = [&](double u) { return static_cast<int>(std::lround((u + m) * 255.0)); };
  return Rgb(byte(r), byte(g), byte(b));
}

// The label point of a shape: a point itself, the middle vertex of the longest
// part of a line, the centre of a polygon's box.
void PlaceLabel(ShapeLayer::Record& r) {
  if (r.Parts.empty()) return;
  if (r.Type == ShapeType::Polygon) {
    r.LabelX = 0.5 * (r.Box.Left() + r.Box.Right());
    r.LabelY = 0.5 * (r.Box.Top() + r.Box.Bottom());
    return;
  }
  const auto& longest =
      *std::max_element(r.Parts.begin(), r.Parts.end(),
                        [](const auto& a, const auto& b) { return a.size() < b.size(); });
  if (longest.empty()) return;
  const auto& p = r.Type == ShapeType::PolyLine ? longest[longest.size() / 2] : longest.front();
  r.LabelX = p.first;
  r.LabelY = p.second;
}

std::vector<std::pair<double, double>> PartOf(const CPart& part) {
  std::vector<std::pair<double, double>> out;
  out.reserve(part.Points().size());
  for (const CPoint& p : part.Points()) out.emplace_back(p.X(), p.Y());
  return out;
}

// A line of any length through the layer, in runs of at most the layer's world
// limit that share their end points.
void DrawLine(VGraphGDI& g, const std::vector<std::pair<double, double>>& pts, bool closed,
              Colour c) {
  std::vector<double> xs, ys;
  xs.reserve(pts.size() + 1);
  ys.reserve(pts.size() + 1);
  for (const auto& [x, y] : pts) {
    xs.push_back(x);
    ys.push_back(y);
  }
  if (closed && !pts.empty()) {
    xs.push_back(pts.front().first);
    ys.push_back(pts.front().second);
  }
  const std::size_t n = xs.size();
  if (n == 0) return;
  for (std::size_t start = 0;;) {
    const std::size_t count = std::min<std::size_t>(kMaxWorldPolylinePoints, n - start);
    g.vgGDIPolyline(xs.data() + start, ys.data() + start, static_cast<int>(count), c, 0.0,
                    kPenSolid);
    if (start + count >= n) break;
    start += count - 1;
  }
}

}  // namespace

std::vector<Colour> DistinctColours(int n) {
  std::vector<Colour> out;
  std::set<Colour> used;
  for (int k = 0; k < n; ++k) {
    // Hues by the golden ratio stay apart for any count; saturation and value
    // step through three levels so that neighbours in hue differ in brightness.
    const double h = std::fmod(k * 0.618033988749895, 1.0);
    const double s = 0.95 - 0.25 * (k % 3) / 2.0;
    const double v = 0.90 - 0.30 * ((k / 3) % 3) / 2.0;
    Colour c = HsvColour(h, s, v);
    while (used.count(c) != 0) c = (c + 1) & 0xFFFFFF;  // a duplicate moves to the next value
    used.insert(c);
    out.push_back(c);
  }
  return out;
}

ShapeLayer::ShapeLayer(const BaseMapRow& row) : name_(row.MapName) {
  CShapeFile file;
  file.SetFileSpec(CFileName(row.MapName), CShapeFile::kOpenExisting);
  type_ = file.FileType();

  // The attributes, only when a colour or a label field asks for them.
  const bool byField = row.UseColorField && !row.ColorField.empty() && row.ColorField != kNone;
  const bool labels = !row.TextField.empty() && row.TextField != kNone;
  DbfTable table;
  int colourField = -1, textField = -1;
  if (byField || labels) {
    const std::filesystem::path shp = file.ShpPath();
    std::filesystem::path dir = shp.parent_path();
    if (dir.empty()) dir = ".";
    const std::filesystem::path dbf = FindFileNoCase(dir, shp.stem().string() + ".dbf");
    // Without a table the map draws in the row's colour and without labels.
    if (!dbf.empty()) {
      table = ReadDBF(dbf);
      if (byField) colourField = table.FieldIndex(row.ColorField);
      if (labels) textField = table.FieldIndex(row.TextField);
    }
  }
  auto value = [&](int record, int field) -> const std::string* {
    if (field < 0 || record < 0 || record >= static_cast<int>(table.Records.size())) return nullptr;
    return &table.Records[record][field];
  };

  if (colourField >= 0) {
    std::set<std::string> values;
    for (const auto& rec : table.Records) values.insert(rec[colourField]);
    const std::vector<Colour> colours = DistinctColours(static_cast<int>(values.size()));
    int k = 0;
    for (const std::string& v : values) valueColours_[v] = colours[k++];
  }

  CRect all;
  records_.reserve(static_cast<std::size_t>(file.Count()));
  for (int i = 1; i <= file.Count(); ++i) {
    const std::unique_ptr<IShape> shape = file.ItemOrNull(i);
    if (shape->IsNull()) continue;  // a null record draws nothing
    Record r;
    r.Type = type_;
    r.Box.Widen(*shape);
    all.Widen(*shape);
    if (const auto* p = dynamic_cast<const CPoint*>(shape.get())) {
      r.Parts.push_back({{p->X(), p->Y()}});
    } else if (const auto* mp = dynamic_cast<const CMultiPoint*>(shape.get())) {
      std::vector<std::pair<double, double>> pts;
      for (const CPoint& q : mp->Points()) pts.emplace_back(q.X(), q.Y());
      r.Parts.push_back(std::move(pts));
    } else if (const auto* ps = dynamic_cast<const CPartShape*>(shape.get())) {
      for (const CPart& part : ps->Parts()) r.Parts.push_back(PartOf(part));
    }
    r.Color = row.Color;
    if (const std::string* v = value(i - 1, colourField)) r.Color = valueColours_.at(*v);
    if (const std::string* v = value(i - 1, textField)) r.Label = *v;
    PlaceLabel(r);
    records_.push_back(std::move(r));
  }
  if (!all.IsEmpty()) extents_ = MapExtents{all.Left(), all.Right(), all.Top(), all.Bottom()};
}

void ShapeLayer::Draw(VGraphGDI& layer) {
  const auto& s = layer.State();
  const double left = std::min(s.Left, s.Right), right = std::max(s.Left, s.Right);
  const double bottom = std::min(s.Top, s.Bottom), top = std::max(s.Top, s.Bottom);
  for (const Record& r : records_) {
    if (!r.Box.Intersects(left, right, bottom, top)) continue;
    try {
      DrawRecord(layer, r);
    } catch (const OverflowError&) {
      // A shape reaching far beyond the window leaves the device's coordinates at
      // this zoom: it is skipped, as the layer skips any figure past its limit.
    }
  }
}

void ShapeLayer::DrawRecord(VGraphGDI& g, const Record& r) {
  switch (r.Type) {
    case ShapeType::Point:
    case ShapeType::MultiPoint:
      for (const auto& part : r.Parts)
        for (const auto& [x, y] : part)
          g.vgGDIMarker(x, y, kShapePointSymbol, r.Color, 1, 0.0, 1.0);
      break;
    case ShapeType::PolyLine:
      for (const auto& part : r.Parts) DrawLine(g, part, false, r.Color);
      break;
    case ShapeType::Polygon:
      // Rings as outlines: a filled base map would hide the model drawn over it.
      for (const auto& part : r.Parts) {
        if (part.size() <= static_cast<std::size_t>(kMaxWorldPolylinePoints)) {
          std::vector<double> xs, ys;
          for (const auto& [x, y] : part) {
            xs.push_back(x);
            ys.push_back(y);
          }
          g.vgGDIPolygon(xs.data(), ys.data(), static_cast<int>(xs.size()), r.Color, 1, kPenSolid,
                         -1);
        } else {
          DrawLine(g, part, true, r.Color);
        }
      }
      break;
    default: break;
  }
  if (!r.Label.empty())
    g.vgGDIWorldText(r.LabelX, r.LabelY, r.Label, kShapeLabelFont, kShapeLabelPoints, r.Color, 0.0,
                     kAlignCentre, false);
}

std::unique_ptr<BaseMapLayer> OpenShapeLayer(const BaseMapRow& row) {
  return std::make_unique<ShapeLayer>(row);
}

}  // namespace tarno
