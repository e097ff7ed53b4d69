#include "basemaps/converters.h"

#include <cpl_vsi.h>
#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>

#include "basemaps/bbm_format.h"
#include "basemaps/bbm_writer.h"
#include "basemaps/shapefile.h"
#include "basemaps/world_file.h"

namespace fs = std::filesystem;

namespace tarno {

namespace {

std::int32_t GetI32(const std::string& bytes, std::size_t at) {
  std::uint32_t v = 0;
  for (int i = 3; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(bytes[at + i]);
  return static_cast<std::int32_t>(v);
}

void PutI32(std::string& bytes, std::size_t at, std::int32_t value) {
  const auto v = static_cast<std::uint32_t>(value);
  for (int i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>((v >> (8 * i)) & 0xFF);
}

std::string ReadWhole(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw ConvertError("Cannot open " + path.string() + " for reading.");
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

void WriteWhole(const fs::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.close();
  if (!out) throw ConvertError("Cannot write " + path.string() + ".");
}

// A header text: at most 80 characters of printable ASCII.
std::string HeaderText(const std::string& text) {
  std::string out;
  for (char c : text) {
    if (out.size() == bbm::kTextLength) break;
    const auto u = static_cast<unsigned char>(c);
    out += (u >= 32 && u < 127) ? c : '?';
  }
  return out;
}

// World units to stored units, refusing what the 32-bit integers cannot hold.
std::int32_t Stored(double world, int multiplier, const std::string& where) {
  const double v = std::nearbyint(world * multiplier);
  if (!std::isfinite(v) || v < std::numeric_limits<std::int32_t>::min() ||
      v > std::numeric_limits<std::int32_t>::max()) {
    std::ostringstream s;
    s.precision(15);
    s << where << ": the coordinate " << world
      << " is out of the range a BBM map can hold with the multiplier " << multiplier << ".";
    throw ConvertError(s.str());
  }
  return static_cast<std::int32_t>(v);
}

// Collects the records of a new map.
class MapBuilder {
 public:
  MapBuilder(const std::string& title, const std::string& source, int zone, int multiplier)
      : writer_(Fields(title, source, zone, multiplier)), multiplier_(multiplier) {}

  void Point(double x, double y, const std::string& where) {
    writer_.AddPoint(++id_, Stored(x, multiplier_, where), Stored(y, multiplier_, where), {});
    ++counts.points;
  }
  // A line of at least two vertices; returns its number (0 when it was too short).
  std::int32_t Line(const std::vector<double>& xs, const std::vector<double>& ys,
                    const std::string& where) {
    if (xs.size() < 2) {
      ++counts.skipped;
      return 0;
    }
    std::vector<std::int32_t> sx, sy;
    sx.reserve(xs.size());
    sy.reserve(ys.size());
    for (std::size_t i = 0; i < xs.size(); ++i) {
      sx.push_back(Stored(xs[i], multiplier_, where));
      sy.push_back(Stored(ys[i], multiplier_, where));
    }
    ++counts.lines;
    return writer_.AddLine(++id_, sx, sy, {});
  }
  // A polygon ring: its line and an area bounded by it.
  void Ring(const std::vector<double>& xs, const std::vector<double>& ys,
            const std::string& where) {
    const std::int32_t line = Line(xs, ys, where);
    if (line == 0) return;
    writer_.AddArea(++id_, {line}, {});
    ++counts.areas;
  }
  void Save(const fs::path& path) {
    writer_.AddEndMark();
    try {
      writer_.Save(path.string());
    } catch (const Error& e) {
      throw ConvertError(e.what());
    }
  }

  ConvertCounts counts;

 private:
  static BbmHeaderFields Fields(const std::string& title, const std::string& source, int zone,
                                int multiplier) {
    BbmHeaderFields f;
    f.title = HeaderText(title);
    f.source = HeaderText(source);
    f.description = "MISC";
    // Records without attribute pairs are drawn only in this form.
    f.dataType = bbm::kUnattributed;
    f.projection = zone;
    f.multiplier = multiplier;
    return f;
  }
  BbmRecordWriter writer_;
  int multiplier_;
  std::int32_t id_ = 0;
};

void AddLinear(MapBuilder& map, const OGRSimpleCurve& curve, bool ring, const std::string& where) {
  std::vector<double> xs, ys;
  xs.reserve(curve.getNumPoints());
  ys.reserve(curve.getNumPoints());
  for (int i = 0; i < curve.getNumPoints(); ++i) {
    xs.push_back(curve.getX(i));
    ys.push_back(curve.getY(i));
  }
  if (ring) {
    map.Ring(xs, ys, where);
  } else {
    map.Line(xs, ys, where);
  }
}

void AddGeometry(MapBuilder& map, const OGRGeometry* geometry, const std::string& where) {
  if (geometry == nullptr || geometry->IsEmpty()) {
    ++map.counts.skipped;
    return;
  }
  if (geometry->hasCurveGeometry()) {
    std::unique_ptr<OGRGeometry> linear(geometry->getLinearGeometry());
    AddGeometry(map, linear.get(), where);
    return;
  }
  switch (wkbFlatten(geometry->getGeometryType())) {
    case wkbPoint: {
      const auto* p = geometry->toPoint();
      map.Point(p->getX(), p->getY(), where);
      break;
    }
    case wkbLineString:
    case wkbLinearRing: AddLinear(map, *geometry->toSimpleCurve(), false, where); break;
    case wkbPolygon: {
      const auto* polygon = geometry->toPolygon();
      for (const OGRLinearRing* ring : *polygon) AddLinear(map, *ring, true, where);
      break;
    }
    case wkbMultiPoint:
    case wkbMultiLineString:
    case wkbMultiPolygon:
    case wkbGeometryCollection: {
      const auto* collection = geometry->toGeometryCollection();
      for (const OGRGeometry* part : *collection) AddGeometry(map, part, where);
      break;
    }
    default: ++map.counts.skipped; break;
  }
}

struct DatasetCloser {
  void operator()(GDALDataset* d) const { GDALClose(d); }
};
using DatasetPtr = std::unique_ptr<GDALDataset, DatasetCloser>;

DatasetPtr OpenVector(const std::string& path, const std::vector<const char*>& drivers) {
  GDALAllRegister();
  std::vector<const char*> list = drivers;
  list.push_back(nullptr);
  CPLErrorReset();
  CPLPushErrorHandler(CPLQuietErrorHandler);
  GDALDataset* d = GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY,
                                     drivers.empty() ? nullptr : list.data(), nullptr, nullptr);
  CPLPopErrorHandler();
  return DatasetPtr(d);
}

std::string LastGdalError() {
  const char* text = CPLGetLastErrorMsg();
  return (text != nullptr && *text != '\0') ? std::string(" (") + text + ")" : std::string();
}

ConvertCounts DatasetToBbm(GDALDataset& dataset, const fs::path& input, const fs::path& bbm,
                           int zone, int multiplier, const std::string& tool) {
  MapBuilder map(input.filename().string(), tool + " " + input.filename().string(), zone,
                 multiplier);
  for (OGRLayer* layer : dataset.GetLayers()) {
    layer->ResetReading();
    for (auto& feature : *layer) {
      const std::string where = input.string() + ", layer " + layer->GetName() + ", feature " +
                                std::to_string(feature->GetFID());
      AddGeometry(map, feature->GetGeometryRef(), where);
    }
  }
  map.Save(bbm);
  return map.counts;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool EndsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

// The catalogue module of an SDTS transfer under a GDAL path (a folder or an
// archive seen through /vsitar/).
std::string FindCatalogue(const std::string& folder) {
  char** names = VSIReadDirRecursive(folder.c_str());
  std::string found;
  for (char** n = names; n != nullptr && *n != nullptr; ++n) {
    const std::string name = *n;
    if (EndsWith(Lower(name), "catd.ddf")) {
      found = folder + "/" + name;
      break;
    }
  }
  CSLDestroy(names);
  return found;
}

}  // namespace

BbmScan ScanBbm(const std::string& bytes, const std::string& path) {
  if (bytes.size() < bbm::kHeaderSize || std::memcmp(bytes.data(), bbm::kSignature, 4) != 0) {
    throw ConvertError("The file " + path + " is not a BBM map (no \"*BBM\" header).");
  }
  BbmScan scan;
  scan.dataType = GetI32(bytes, bbm::kDataTypeOffset);
  scan.projection = GetI32(bytes, bbm::kProjectionOffset);
  scan.multiplier = GetI32(bytes, bbm::kMultiplierOffset);
  scan.commandForm = scan.dataType == bbm::kCommands;
  const std::size_t size = bytes.size();
  auto truncated = [&](std::size_t at, const char* what) {
    return ConvertError("The BBM map " + path + " is truncated in the " + what + " at byte " +
                        std::to_string(at) + ".");
  };
  std::size_t pos = bbm::kBodyOffset;
  if (scan.commandForm) {
    BbmShapeSlots* line = nullptr;
    while (pos + 4 <= size) {
      const std::int32_t code = GetI32(bytes, pos);
      if (code == bbm::kCmdEnd) break;
      switch (code) {
        case bbm::kCmdMoveTo:
        case bbm::kCmdLineTo:
          if (pos + 12 > size) throw truncated(pos, "drawing command");
          if (code == bbm::kCmdMoveTo || line == nullptr) {
            scan.shapes.push_back({BbmShapeSlots::Kind::Line, 0, 0, {}});
            line = &scan.shapes.back();
          }
          line->xy.push_back(pos + 4);
          pos += 12;
          break;
        case bbm::kCmdWidth:
        case bbm::kCmdColour: pos += 8; break;
        case bbm::kCmdPolygon: {
          if (pos + 8 > size) throw truncated(pos, "drawing command");
          const std::int64_t n = GetI32(bytes, pos + 4);
          if (n < 0 || pos + 8 + 8 * static_cast<std::uint64_t>(n) > size) {
            throw truncated(pos, "polygon command");
          }
          BbmShapeSlots polygon{BbmShapeSlots::Kind::Polygon, 0, 0, {}};
          for (std::int64_t i = 0; i < n; ++i) polygon.xy.push_back(pos + 8 + 8 * i);
          scan.shapes.push_back(std::move(polygon));
          line = nullptr;
          pos += 8 + 8 * n;
          break;
        }
        default:
          pos += 4;  // a code without operands, as the reader takes it
          break;
      }
    }
    return scan;
  }
  while (pos + 8 <= size) {
    const std::int32_t type = GetI32(bytes, pos);
    const std::int32_t id = GetI32(bytes, pos + 4);
    if (type == bbm::kPointRecord) {
      if (pos + bbm::kPointFixedSize > size) throw truncated(pos, "point record");
      const std::int64_t av = GetI32(bytes, pos + 8), ap = GetI32(bytes, pos + 12);
      if (av < 0 || ap < 0) throw truncated(pos, "point record");
      scan.shapes.push_back({BbmShapeSlots::Kind::Point, id, pos + 16, {pos + 32}});
      pos += bbm::kPointFixedSize + 8 * ap + 4 * av;
    } else if (type == bbm::kLineRecord) {
      if (pos + bbm::kLineFixedSize > size) throw truncated(pos, "line record");
      const std::int64_t av = GetI32(bytes, pos + 8), ap = GetI32(bytes, pos + 12);
      const std::int64_t nv = GetI32(bytes, pos + 16);
      if (av < 0 || ap < 0 || nv < 0) throw truncated(pos, "line record");
      const std::uint64_t stride = 8 + 4 * static_cast<std::uint64_t>(av);
      const std::uint64_t first = pos + bbm::kLineFixedSize + 8 * ap;
      if (first + stride * nv > size) throw truncated(pos, "line record");
      BbmShapeSlots line{BbmShapeSlots::Kind::Line, id, pos + 20, {}};
      line.xy.reserve(nv);
      for (std::int64_t i = 0; i < nv; ++i) line.xy.push_back(first + stride * i);
      scan.shapes.push_back(std::move(line));
      pos = first + stride * nv;
    } else if (type == bbm::kAreaRecord) {
      if (pos + bbm::kAreaFixedSize > size) throw truncated(pos, "area record");
      const std::int64_t av = GetI32(bytes, pos + 8), ap = GetI32(bytes, pos + 12);
      const std::int64_t nb = GetI32(bytes, pos + 16);
      if (av < 0 || ap < 0 || nb < 0) throw truncated(pos, "area record");
      pos += bbm::kAreaFixedSize + 8 * ap + 4 * nb + 4 * av;
    } else {
      break;  // the end mark
    }
    if (pos > size) throw truncated(pos, "last record");
  }
  return scan;
}

ConvertCounts ShapeToBbm(const fs::path& shp, const fs::path& bbm) {
  CShapeFile file;
  try {
    file.SetFileSpec(CFileName(shp.string()), CShapeFile::kOpenExisting);
  } catch (const Error& e) {
    throw ConvertError("Cannot read the shapefile " + shp.string() + ": " + e.what());
  }
  MapBuilder map(shp.filename().string(), "shape2bbm " + shp.filename().string(), 0, 100);
  for (int i = 1; i <= file.Count(); ++i) {
    const std::string where = shp.string() + ", record " + std::to_string(i);
    std::unique_ptr<IShape> shape;
    try {
      shape = file.ItemOrNull(i);
    } catch (const Error& e) {
      throw ConvertError(where + ": " + e.what());
    }
    if (shape == nullptr || shape->IsNull()) {
      ++map.counts.skipped;
      continue;
    }
    auto partsOf = [&](const CPartShape& s, bool rings) {
      for (const CPart& part : s.Parts()) {
        std::vector<double> xs, ys;
        for (const CPoint& p : part.Points()) {
          xs.push_back(p.X());
          ys.push_back(p.Y());
        }
        if (rings) {
          map.Ring(xs, ys, where);
        } else {
          map.Line(xs, ys, where);
        }
      }
    };
    switch (shape->Type()) {
      case ShapeType::Point: {
        const auto& p = static_cast<const CPoint&>(*shape);
        map.Point(p.X(), p.Y(), where);
        break;
      }
      case ShapeType::MultiPoint:
        for (const CPoint& p : static_cast<const CMultiPoint&>(*shape).Points()) {
          map.Point(p.X(), p.Y(), where);
        }
        break;
      case ShapeType::PolyLine: partsOf(static_cast<const CPartShape&>(*shape), false); break;
      case ShapeType::Polygon: partsOf(static_cast<const CPartShape&>(*shape), true); break;
      default: ++map.counts.skipped; break;
    }
  }
  map.Save(bbm);
  return map.counts;
}

ConvertCounts CadToBbm(const fs::path& cad, const fs::path& bbm, int zone) {
  const std::string ext = Lower(cad.extension().string());
  std::vector<const char*> drivers;
  if (ext == ".dxf") {
    drivers = {"DXF"};
  } else if (ext == ".dgn") {
    drivers = {"DGN"};
  } else if (ext == ".dwg") {
    // GDAL's CAD driver reads only some DWG 2000 drawings, and those in part; DWG is
    // refused as the CAD map layer refuses it.
    throw ConvertError("The drawing " + cad.string() +
                       " is a DWG file, which cannot be read here; save it as DXF and convert "
                       "the DXF file.");
  } else {
    throw ConvertError("The file " + cad.string() +
                       " is not a CAD file: odwg2bbm reads .dxf and .dgn files.");
  }
  if (!fs::exists(cad)) throw ConvertError("The file " + cad.string() + " does not exist.");
  DatasetPtr dataset = OpenVector(cad.string(), drivers);
  if (!dataset) {
    throw ConvertError("The CAD file " + cad.string() + " cannot be read" + LastGdalError() + ".");
  }
  return DatasetToBbm(*dataset, cad, bbm, zone, 100, "odwg2bbm");
}

ConvertCounts OgrToBbm(const fs::path& input, const fs::path& bbm, int multiplier) {
  if (multiplier <= 0) {
    throw ConvertError("The multiplier " + std::to_string(multiplier) + " is not above 0.");
  }
  if (!fs::exists(input)) throw ConvertError("The file " + input.string() + " does not exist.");
  std::string path = input.string();
  if (EndsWith(Lower(path), ".gz")) path = "/vsigzip/" + path;
  DatasetPtr dataset = OpenVector(path, {});
  if (!dataset) {
    throw ConvertError("The file " + input.string() +
                       " is not in a vector format that can be read here" + LastGdalError() + ".");
  }
  return DatasetToBbm(*dataset, input, bbm, 0, multiplier, "dlg2bbm");
}

ConvertCounts SdtsToBbm(const fs::path& input, const fs::path& bbm) {
  if (!fs::exists(input)) throw ConvertError("The file " + input.string() + " does not exist.");
  const std::string lower = Lower(input.string());
  std::string catalogue;
  if (fs::is_directory(input)) {
    catalogue = FindCatalogue(input.string());
  } else if (EndsWith(lower, ".tar.gz") || EndsWith(lower, ".tgz") || EndsWith(lower, ".tar")) {
    catalogue = FindCatalogue("/vsitar/" + input.string());
  } else if (EndsWith(lower, ".ddf")) {
    catalogue = input.string();
  } else {
    // Some transfers come as an archive with no telling name.
    catalogue = FindCatalogue("/vsitar/" + input.string());
  }
  if (catalogue.empty()) {
    throw ConvertError("No SDTS catalogue module (*CATD.DDF) was found in " + input.string() + ".");
  }
  DatasetPtr dataset = OpenVector(catalogue, {"OGR_SDTS"});
  if (!dataset) {
    throw ConvertError("The SDTS transfer " + input.string() + " cannot be read" + LastGdalError() +
                       ".");
  }
  return DatasetToBbm(*dataset, input, bbm, 0, 100, "sdts2bbm");
}

ConvertCounts BbmToDxf(const fs::path& bbmPath, const fs::path& dxf, const std::string& layer) {
  const std::string bytes = ReadWhole(bbmPath);
  const BbmScan scan = ScanBbm(bytes, bbmPath.string());
  if (scan.multiplier <= 0) {
    throw ConvertError("The BBM map " + bbmPath.string() + " has the multiplier " +
                       std::to_string(scan.multiplier) + ", which is not above 0.");
  }
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("DXF");
  if (driver == nullptr) throw ConvertError("The DXF writer of GDAL is not available.");
  std::error_code ec;
  fs::remove(dxf, ec);
  DatasetPtr out(driver->Create(dxf.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr));
  if (!out) throw ConvertError("Cannot create " + dxf.string() + LastGdalError() + ".");
  OGRLayer* entities = out->CreateLayer("entities", nullptr, wkbUnknown, nullptr);
  if (entities == nullptr)
    throw ConvertError("Cannot create " + dxf.string() + LastGdalError() + ".");
  const std::string layerName = layer.empty() ? "0" : layer;
  const double m = scan.multiplier;
  ConvertCounts counts;
  for (const BbmShapeSlots& shape : scan.shapes) {
    std::unique_ptr<OGRGeometry> geometry;
    if (shape.kind == BbmShapeSlots::Kind::Point) {
      geometry = std::make_unique<OGRPoint>(GetI32(bytes, shape.xy[0]) / m,
                                            GetI32(bytes, shape.xy[0] + 4) / m);
      ++counts.points;
    } else {
      if (shape.xy.size() < 2) {
        ++counts.skipped;
        continue;
      }
      auto line = std::make_unique<OGRLineString>();
      for (std::size_t at : shape.xy)
        line->addPoint(GetI32(bytes, at) / m, GetI32(bytes, at + 4) / m);
      if (shape.kind == BbmShapeSlots::Kind::Polygon) line->closeRings();
      geometry = std::move(line);
      ++counts.lines;
    }
    OGRFeature feature(entities->GetLayerDefn());
    feature.SetField("Layer", layerName.c_str());
    feature.SetGeometryDirectly(geometry.release());
    if (entities->CreateFeature(&feature) != OGRERR_NONE) {
      throw ConvertError("Cannot write to " + dxf.string() + LastGdalError() + ".");
    }
  }
  out.reset();
  if (!fs::exists(dxf)) throw ConvertError("Cannot write " + dxf.string() + ".");
  return counts;
}

long ReprojectBbm(const fs::path& input, const fs::path& output, int fromCode, int toCode,
                  Datum datum) {
  std::string bytes = ReadWhole(input);
  const BbmScan scan = ScanBbm(bytes, input.string());
  if (scan.multiplier <= 0) {
    throw ConvertError("The BBM map " + input.string() + " has the multiplier " +
                       std::to_string(scan.multiplier) + ", which is not above 0.");
  }
  ZoneTransform transform(fromCode, toCode, datum);
  const double m = scan.multiplier;
  long count = 0;
  bool any = false;
  std::int32_t minX = 0, minY = 0, maxX = 0, maxY = 0;
  int number = 0;
  for (const BbmShapeSlots& shape : scan.shapes) {
    ++number;
    const std::string where =
        input.string() + ", record " + std::to_string(number) +
        (scan.commandForm ? std::string() : " (id " + std::to_string(shape.id) + ")");
    std::int32_t bx0 = 0, by0 = 0, bx1 = 0, by1 = 0;
    bool first = true;
    for (std::size_t at : shape.xy) {
      double x = GetI32(bytes, at) / m, y = GetI32(bytes, at + 4) / m;
      const double ox = x, oy = y;
      if (!transform.Apply(x, y)) {
        std::ostringstream s;
        s.precision(15);
        s << where << ": the point (" << ox << ", " << oy << ") cannot be taken from zone "
          << fromCode << " to zone " << toCode << ".";
        throw ConvertError(s.str());
      }
      const std::int32_t sx = Stored(x, scan.multiplier, where);
      const std::int32_t sy = Stored(y, scan.multiplier, where);
      PutI32(bytes, at, sx);
      PutI32(bytes, at + 4, sy);
      ++count;
      if (first) {
        bx0 = bx1 = sx;
        by0 = by1 = sy;
        first = false;
      } else {
        bx0 = std::min(bx0, sx), bx1 = std::max(bx1, sx);
        by0 = std::min(by0, sy), by1 = std::max(by1, sy);
      }
    }
    if (first) continue;
    if (shape.boxOffset != 0) {
      PutI32(bytes, shape.boxOffset, bx0);
      PutI32(bytes, shape.boxOffset + 4, by0);
      PutI32(bytes, shape.boxOffset + 8, bx1);
      PutI32(bytes, shape.boxOffset + 12, by1);
    }
    if (!any) {
      minX = bx0, minY = by0, maxX = bx1, maxY = by1;
      any = true;
    } else {
      minX = std::min(minX, bx0), minY = std::min(minY, by0);
      maxX = std::max(maxX, bx1), maxY = std::max(maxY, by1);
    }
  }
  if (any) {
    PutI32(bytes, bbm::kBoundsOffset, minX);
    PutI32(bytes, bbm::kBoundsOffset + 4, minY);
    PutI32(bytes, bbm::kBoundsOffset + 8, maxX);
    PutI32(bytes, bbm::kBoundsOffset + 12, maxY);
  }
  PutI32(bytes, bbm::kProjectionOffset, toCode);
  WriteWhole(output, bytes);
  return count;
}

RasterProjParameters ReadRasterProjFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw ConvertError("Cannot open the parameter file " + file.string() + ".");
  std::vector<std::string> lines;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  if (lines.size() < 5) {
    throw ConvertError(file.string() + ": " + std::to_string(lines.size()) +
                       " lines; the parameter file needs five (input world file, output "
                       "world file, source zone, target zone, datum directory).");
  }
  auto code = [&](int index) {
    const std::string& text = lines[index];
    std::size_t used = 0;
    double value = 0;
    try {
      value = std::stod(text, &used);
    } catch (const std::exception&) {
      used = 0;
    }
    while (used < text.size() && std::isspace(static_cast<unsigned char>(text[used]))) ++used;
    if (used == 0 || used != text.size() || value != std::floor(value) || std::fabs(value) > 1e6) {
      throw ConvertError(file.string() + ", line " + std::to_string(index + 1) + ": \"" + text +
                         "\" is not a projection code.");
    }
    return static_cast<int>(value);
  };
  RasterProjParameters p;
  p.input = lines[0];
  p.output = lines[1];
  if (p.input.empty() || p.output.empty()) {
    throw ConvertError(file.string() + ", line " + std::string(p.input.empty() ? "1" : "2") +
                       ": the world file's name is empty.");
  }
  p.fromCode = code(2);
  p.toCode = code(3);
  p.datumDirectory = lines[4];
  if (!DatumFromText(p.datumDirectory)) {
    throw ConvertError(file.string() + ", line 5: \"" + p.datumDirectory +
                       "\" names no datum (a directory ending in nad27sp or nad83sp).");
  }
  return p;
}

void WriteRasterProjFile(const fs::path& file, const RasterProjParameters& p) {
  std::ostringstream s;
  s << p.input.string() << "\r\n"
    << p.output.string() << "\r\n"
    << p.fromCode << "\r\n"
    << p.toCode << "\r\n"
    << p.datumDirectory << "\r\n";
  WriteWhole(file, s.str());
}

void ReprojectWorldFile(const RasterProjParameters& p) {
  const auto datum = DatumFromText(p.datumDirectory);
  if (!datum) throw ConvertError("\"" + p.datumDirectory + "\" names no datum.");
  WorldFile w;
  try {
    w = ReadWorldFile(p.input);
  } catch (const ConvertError&) {
    throw;
  } catch (const Error& e) {
    throw ConvertError(e.what());
  }
  ZoneTransform transform(p.fromCode, p.toCode, *datum);
  double x0 = w.C, y0 = w.F;
  double x1 = w.C + w.A, y1 = w.F + w.D;  // one column along
  double x2 = w.C + w.B, y2 = w.F + w.E;  // one row down
  if (!transform.Apply(x0, y0) || !transform.Apply(x1, y1) || !transform.Apply(x2, y2)) {
    throw ConvertError(p.input.string() + ": the image's corner cannot be taken from zone " +
                       std::to_string(p.fromCode) + " to zone " + std::to_string(p.toCode) + ".");
  }
  WorldFile out;
  out.C = x0;
  out.F = y0;
  if (w.B == 0.0 && w.D == 0.0) {
    // An upright image stays upright: the map draws no rotated image, and the turn
    // between two projections (grid convergence, about a degree) would leave the
    // image refused. Its pixel keeps the transformed neighbours' distances, so the
    // image is exact at its upper left corner and off by the turn towards the others.
    out.A = std::copysign(std::hypot(x1 - x0, y1 - y0), w.A);
    out.E = std::copysign(std::hypot(x2 - x0, y2 - y0), w.E);
  } else {
    out.A = x1 - x0;
    out.D = y1 - y0;
    out.B = x2 - x0;
    out.E = y2 - y0;
  }
  try {
    WriteWorldFile(p.output, out);
  } catch (const Error& e) {
    throw ConvertError(e.what());
  }
}

}  // namespace tarno
