// The shapefile exports, through the shape classes and the dBASE writer of the base
// maps. The attribute table of each kind (the first column a character column):
//
//   contours          ID (C, the line's number), LEVEL (N, "######.#0")
//   path lines        LABEL (C, the LABEL record or "Path n"), ENDTIME (N, the
//                     time at the last point), POINTS (N)
//   day tics          ID (C), INTERVAL (C, T_Interval and " Days"; empty when the
//                     step is not known)
//   elevation tics    DIRECTION (C, "Up" or "Down"), DIR (N, 1 or -1)
//   protection areas  LABEL (C), PID (N)
//   particles         ID (C, the VID), ELEVATION, SATDTHICK, FORWARD (N)
//   test points       LABEL, TYPE (C), OBSHEAD, OBSFLOW, PESTWEIGHT, UCODEWT (N)
//   wells             LABEL (C), HEADSPEC, HEAD, RADIUS, TOPELEV, BOTTOMELEV,
//                     PPWELL, PARTICLES, POND (N)
//   inhomogeneities   LABEL (C), HYDCOND, BOTTOMELEV, RECHARGE, POROSITY, AVGHEAD,
//                     CHANGEK, CHANGEB, CHANGER, CHANGEP, CHANGEA (N)
//   line sinks        LABEL, KIND (C, as the DXF layers name it), HEADSPEC,
//                     STARTHEAD, ENDHEAD, RESIST, WIDTH, DEPTH, ROUTING, FARFIELD (N)
//   no-flow           LABEL (C), HYDCOND, THICKNESS, POROSITY, BOTTOMELEV, CLOSED (N)
//
// Numbers ("N") keep up to ten decimals; flags and counts are whole numbers.
// Polygons are written with their first point repeated and the ring clockwise, as
// the format wants an outer ring; closed barriers repeat their first point too.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <variant>

#include "basemaps/dbf.h"
#include "basemaps/shapefile.h"
#include "core/error.h"
#include "core/format.h"
#include "exchange/geometry_export.h"
#include "store/database.h"

namespace tarno::exchange {

namespace fs = std::filesystem;
namespace gt = geometry_text;

namespace {

constexpr ShapeKindInfo kInfos[] = {
    {ShapeKind::Contours, "Output ShapeFile name for contours", "_contours",
     "Contours Export Failed - "},
    {ShapeKind::Paths, "Output ShapeFile name for path lines", "_paths", "Path Export Failed - "},
    {ShapeKind::TimeTics, "Output ShapeFile name for tick marks", "day-tics",
     "Time-of-Travel Tic Export Failed - "},
    {ShapeKind::ElevationTics, "Output ShapeFile name for tick marks", "elevation-tics",
     "Elevation Tic Export Failed - "},
    {ShapeKind::Capzones, "Output ShapeFile name for well head protection areas", "_whps",
     "CapZone Export Failed - "},
    {ShapeKind::Particles, "Output ShapeFile name for Particles", "_ptcls",
     "Particle Export Failed - "},
    {ShapeKind::TestPoints, "Output ShapeFile name for Test Points", "_testpts",
     "TestPoint Export Failed - "},
    {ShapeKind::Wells, "Output ShapeFile name for Wells", "_wells", "Well Export Failed - "},
    {ShapeKind::Inhomogeneities, "Output ShapeFile name for inhomogenieties", "_inhomos",
     "Inhomogeneity Export Failed - "},
    {ShapeKind::LineSinks, "Output ShapeFile name for line sinks", "_lines",
     "Linesink Export Failed - "},
    // The barriers' stage has words of its own, in the form of the others.
    {ShapeKind::NoFlows, "Output ShapeFile name for no-flow boundaries", "_noflows",
     "No-Flow Boundary Export Failed - "},
};

constexpr const char* kUpToTenDecimals = "0.0#########";

// The columns and shapes of one file before it is written.
struct ShapeTable {
  ShapeType type = ShapeType::Point;
  std::vector<std::unique_ptr<IShape>> shapes;
  std::vector<DbfColumn> columns;

  DbfColumn& Column(const std::string& name, const std::string& type,
                    const std::string& mask = "") {
    for (DbfColumn& c : columns)
      if (c.Name == name) return c;
    columns.push_back(DbfColumn{name, type, mask, {}});
    return columns.back();
  }
  void Text(const std::string& name, const std::string& v) {
    Column(name, "C").Values.emplace_back(std::in_place_type<std::string>, v);
  }
  // Numbers keep up to ten decimals (the field's decimals come from the mask, and a
  // field without decimals would read back as whole numbers).
  void Number(const std::string& name, double v, const std::string& mask = kUpToTenDecimals) {
    Column(name, "N", mask).Values.emplace_back(std::in_place_type<double>, v);
  }
  // A flag or a count: a whole number.
  void Whole(const std::string& name, double v) { Number(name, v, "0"); }
};

std::unique_ptr<IShape> Point(double x, double y) { return std::make_unique<CPoint>(x, y); }

std::unique_ptr<IShape> Line(const std::vector<MapPoint>& points) {
  auto line = std::make_unique<CPolyLine>();
  CPart part;
  for (const MapPoint& p : points) part.Add(p.x, p.y);
  line->Add(part);
  return line;
}

// A ring, closed and clockwise.
std::unique_ptr<IShape> Ring(std::vector<MapPoint> points) {
  if (points.size() > 1 && !(points.front() == points.back())) points.push_back(points.front());
  double twiceArea = 0.0;  // positive counter-clockwise
  for (std::size_t i = 1; i < points.size(); ++i)
    twiceArea += points[i - 1].x * points[i].y - points[i].x * points[i - 1].y;
  if (twiceArea > 0.0) std::reverse(points.begin(), points.end());
  auto polygon = std::make_unique<CPolygon>();
  CPart part;
  for (const MapPoint& p : points) part.Add(p.x, p.y);
  polygon->Add(part);
  return polygon;
}

std::vector<GeometryElement> Elements(const GeometryProject& p, ElementKind kind) {
  Database db = Database::OpenReadOnly(p.projectFile);
  std::vector<GeometryElement> out = LoadGeometry(db, kind);
  db.Close();
  if (out.empty())
    throw Error("The project has no " + std::string(Info(kind).table) + " to export");
  return out;
}

const char* LinesinkKind(const Row& r) {
  if (r.Flag("Routing") || r.Flag("Lake")) return "streams and lakes";
  if (r.Flag("Drain")) return "drains";
  if (r.Flag("Gallery")) return "galleries";
  if (!r.Flag("HeadSpecified")) return "discharge";
  if (r.Flag("Farfield")) return "farfield";
  return "near field";
}

ShapeTable Build(const GeometryProject& p, ShapeKind kind, double timeMarkStep) {
  ShapeTable t;
  switch (kind) {
    case ShapeKind::Contours: {
      t.type = ShapeType::PolyLine;
      if (SolverFile(p, ".CTR").empty())
        throw Error("The contour file " + (p.solverDirectory / (p.baseName + ".CTR")).string() +
                    " does not exist");
      int n = 0;
      for (const MapLine& l : ContourLinesInMap(p)) {
        if (l.points.size() < 2) continue;
        t.shapes.push_back(Line(l.points));
        t.Text("ID", std::to_string(++n));
        t.Number("LEVEL", l.level, "######.#0");
      }
      if (t.shapes.empty()) throw Error("The contour file has no contour lines");
      break;
    }
    case ShapeKind::Paths: {
      t.type = ShapeType::PolyLine;
      if (SolverFile(p, ".PTH").empty())
        throw Error("The pathline file " + (p.solverDirectory / (p.baseName + ".PTH")).string() +
                    " does not exist");
      int n = 0;
      for (const MapLine& l : PathlinesInMap(p)) {
        ++n;
        if (l.points.size() < 2) continue;
        t.shapes.push_back(Line(l.points));
        t.Text("LABEL", l.label.empty() ? "Path " + std::to_string(n) : l.label);
        t.Number("ENDTIME", l.endTime);
        t.Number("POINTS", static_cast<double>(l.points.size()), "0");
      }
      if (t.shapes.empty()) throw Error("The pathline file has no pathlines");
      break;
    }
    case ShapeKind::TimeTics:
    case ShapeKind::ElevationTics: {
      t.type = ShapeType::Point;
      const bool time = kind == ShapeKind::TimeTics;
      const char* name = time ? kTimeTicFile : kElevationTicFile;
      const fs::path file = TicFile(p, name);
      if (file.empty())
        throw Error("The mark file " + (p.solverDirectory / name).string() +
                    " does not exist (no marks are drawn along the pathlines)");
      int n = 0;
      for (const TicMark& m : ReadTicMarkFile(file, !time)) {
        t.shapes.push_back(Point(m.x, m.y));
        if (time) {
          t.Text("ID", std::to_string(++n));
          t.Text("INTERVAL", timeMarkStep > 0.0 ? GeneralNumber(timeMarkStep) + " Days" : "");
        } else {
          t.Text("DIRECTION", m.direction > 0 ? "Up" : "Down");
          t.Number("DIR", m.direction, "0");
        }
      }
      if (t.shapes.empty()) throw Error("The mark file " + file.string() + " has no marks");
      break;
    }
    case ShapeKind::Capzones:
      t.type = ShapeType::Polygon;
      for (const GeometryElement& e : Elements(p, ElementKind::Capzone)) {
        t.shapes.push_back(Ring(Outline(e)));
        t.Text("LABEL", e.label);
        t.Number("PID", static_cast<double>(e.key), "0");
      }
      break;
    case ShapeKind::Particles:
      t.type = ShapeType::Point;
      for (const GeometryElement& e : Elements(p, ElementKind::Particle)) {
        t.shapes.push_back(Point(e.vertices[0].X, e.vertices[0].Y));
        t.Text("ID", std::to_string(e.key));
        t.Number("ELEVATION", e.row.Number("Elevation"));
        t.Whole("SATDTHICK", e.row.Number("SatdThick"));
        t.Whole("FORWARD", e.row.Number("Forward"));
      }
      break;
    case ShapeKind::TestPoints:
      t.type = ShapeType::Point;
      for (const GeometryElement& e : Elements(p, ElementKind::TestPoint)) {
        t.shapes.push_back(Point(e.vertices[0].X, e.vertices[0].Y));
        t.Text("LABEL", e.label);
        t.Text("TYPE", e.row.Text("Type"));
        t.Number("OBSHEAD", e.row.Number("ObsHead"));
        t.Number("OBSFLOW", e.row.Number("ObsStreamFlow"));
        t.Number("PESTWEIGHT", e.row.Number("PESTWeight"));
        t.Number("UCODEWT", e.row.Number("UCODEWeight"));
      }
      break;
    case ShapeKind::Wells:
      t.type = ShapeType::Point;
      for (const GeometryElement& e : Elements(p, ElementKind::Well)) {
        t.shapes.push_back(Point(e.vertices[0].X, e.vertices[0].Y));
        t.Text("LABEL", e.label);
        t.Whole("HEADSPEC", e.row.Number("HeadSpecified"));
        t.Number("HEAD", e.row.Number("Head"));
        t.Number("RADIUS", e.row.Number("Radius"));
        t.Number("TOPELEV", e.row.Number("TopElev"));
        t.Number("BOTTOMELEV", e.row.Number("BottomElev"));
        t.Whole("PPWELL", e.row.Number("PPWell"));
        t.Whole("PARTICLES", e.row.Number("NParticles"));
        // A pond is a well whose HEAD is a recharge rate: without the flag it would
        // come back through the GIS import as a well pumping that rate.
        t.Whole("POND", e.row.Number("Pond"));
      }
      break;
    case ShapeKind::Inhomogeneities:
      t.type = ShapeType::Polygon;
      for (const GeometryElement& e : Elements(p, ElementKind::Inhomogeneity)) {
        t.shapes.push_back(Ring(Outline(e)));
        t.Text("LABEL", e.label);
        for (const auto& [column, field] :
             std::initializer_list<std::pair<const char*, const char*>>{
                 {"HYDCOND", "HydCond"},
                 {"BOTTOMELEV", "BottomElevation"},
                 {"RECHARGE", "Recharge"},
                 {"POROSITY", "Porosity"},
                 {"AVGHEAD", "AverageHead"}})
          t.Number(column, e.row.Number(field));
        for (const auto& [column, field] :
             std::initializer_list<std::pair<const char*, const char*>>{{"CHANGEK", "ChangeK"},
                                                                        {"CHANGEB", "ChangeB"},
                                                                        {"CHANGER", "ChangeR"},
                                                                        {"CHANGEP", "ChangeP"},
                                                                        {"CHANGEA", "ChangeA"}})
          t.Whole(column, e.row.Number(field));
      }
      break;
    case ShapeKind::LineSinks:
      t.type = ShapeType::PolyLine;
      for (const GeometryElement& e : Elements(p, ElementKind::Linesink)) {
        t.shapes.push_back(Line(Outline(e)));
        t.Text("LABEL", e.label);
        t.Text("KIND", LinesinkKind(e.row));
        for (const auto& [column, field] :
             std::initializer_list<std::pair<const char*, const char*>>{
                 {"STARTHEAD", "StartingHead"},
                 {"ENDHEAD", "EndingHead"},
                 {"RESIST", "Resistance"},
                 {"WIDTH", "Width"},
                 {"DEPTH", "Depth"}})
          t.Number(column, e.row.Number(field));
        for (const auto& [column, field] :
             std::initializer_list<std::pair<const char*, const char*>>{
                 {"HEADSPEC", "HeadSpecified"}, {"ROUTING", "Routing"}, {"FARFIELD", "Farfield"}})
          t.Whole(column, e.row.Number(field));
      }
      break;
    case ShapeKind::NoFlows:
      t.type = ShapeType::PolyLine;
      for (const GeometryElement& e : Elements(p, ElementKind::Barrier)) {
        t.shapes.push_back(Line(Outline(e)));
        t.Text("LABEL", e.label);
        for (const auto& [column, field] :
             std::initializer_list<std::pair<const char*, const char*>>{
                 {"HYDCOND", "HydCond"},
                 {"THICKNESS", "Thickness"},
                 {"POROSITY", "Porosity"},
                 {"BOTTOMELEV", "BottomElevation"}})
          t.Number(column, e.row.Number(field));
        t.Whole("CLOSED", e.row.Number("Closed"));
      }
      break;
  }
  return t;
}

// A column of up to ten decimals gets as many as its values need, all written
// alike: the field's width is its longest value and its decimals those of the mask,
// so "0.0#########" gave fields like "N 6.10" (2500.0 in a field of six with ten
// decimals), which dBASE readers take for a broken header.
std::vector<DbfColumn> FittedDecimals(std::vector<DbfColumn> columns) {
  for (DbfColumn& c : columns) {
    if (c.Type != "N" || c.Format != kUpToTenDecimals) continue;
    std::size_t decimals = 1;
    for (const auto& value : c.Values) {
      const double* v = std::get_if<double>(&value);
      if (v == nullptr) continue;
      char buffer[64];
      std::snprintf(buffer, sizeof buffer, "%.10f", *v);
      std::string text = buffer;
      const std::size_t dot = text.find('.');
      if (dot == std::string::npos) continue;
      const std::size_t last = text.find_last_not_of('0');
      if (last != std::string::npos && last > dot) decimals = std::max(decimals, last - dot);
    }
    c.Format = "0." + std::string(decimals, '0');
  }
  return columns;
}

void WriteShapes(const fs::path& shp, const ShapeTable& t) {
  fs::path dbf = shp;
  dbf.replace_extension(".dbf");
  std::error_code ec;
  fs::remove(dbf, ec);
  CShapeFile file;
  file.SetFileSpec(CFileName(shp.string()), CShapeFile::kCreate, t.type);
  for (const auto& s : t.shapes) file.Add(*s);
  WriteDBFColumns(dbf, FittedDecimals(t.columns), static_cast<int>(t.shapes.size()));
}

}  // namespace

const ShapeKindInfo& ShapeInfo(ShapeKind kind) {
  for (const ShapeKindInfo& i : kInfos)
    if (i.kind == kind) return i;
  return kInfos[0];
}

std::vector<ShapeKind> KindsOfOption(const GeometryProject& p, ShapeOption option) {
  switch (option) {
    case ShapeOption::Contours: return {ShapeKind::Contours};
    case ShapeOption::PathsAndTics: {
      std::vector<ShapeKind> kinds{ShapeKind::Paths};
      if (!TicFile(p, kTimeTicFile).empty()) kinds.push_back(ShapeKind::TimeTics);
      if (!TicFile(p, kElevationTicFile).empty()) kinds.push_back(ShapeKind::ElevationTics);
      return kinds;
    }
    case ShapeOption::WhpAreas: return {ShapeKind::Capzones};
    case ShapeOption::Wells: return {ShapeKind::Wells};
    case ShapeOption::TestPoints: return {ShapeKind::TestPoints};
    case ShapeOption::Particles: return {ShapeKind::Particles};
    case ShapeOption::Inhomogeneities: return {ShapeKind::Inhomogeneities};
    case ShapeOption::LineSinks: return {ShapeKind::LineSinks};
    case ShapeOption::NoFlows: return {ShapeKind::NoFlows};
  }
  return {};
}

int ExportShapeKinds(GeometryExportContext& ctx, const std::vector<ShapeKind>& kinds) {
  int written = 0;
  std::optional<GeometryProject> project;
  try {
    project = LoadGeometryProject(ctx.projectFile);
  } catch (const std::exception& e) {
    ctx.ui.MessageBox(
        gt::kExportFailedTitle,
        {std::string(ShapeInfo(kinds.empty() ? ShapeKind::Contours : kinds[0]).failure) + e.what()},
        Buttons::OK, Icon::Critical);
    return 0;
  }
  const GeometryProject& p = *project;
  for (ShapeKind kind : kinds) {
    const ShapeKindInfo& info = ShapeInfo(kind);
    FileDialogRequest request;
    request.title = info.dialogTitle;
    request.filter = gt::kShapeFilter;
    request.defaultExtension = "shp";
    request.initialDirectory = p.solverDirectory.string();
    request.initialFile = p.baseName + info.suffix + ".shp";
    const std::optional<std::string> chosen = ctx.ui.SaveFileDialog(request);
    if (!chosen || chosen->empty()) continue;
    fs::path shp = *chosen;
    if (shp.extension() != ".shp" && shp.extension() != ".SHP") shp += ".shp";
    std::error_code ec;
    if (fs::exists(shp, ec) &&
        !ctx.ui.Question(gt::kFileExistsTitle,
                         {"File " + shp.string() + " already exists.", gt::kOverwrite}))
      continue;
    try {
      const ShapeTable t = Build(p, kind, ctx.timeMarkStep);
      WriteShapes(shp, t);
    } catch (const UiPortFailure&) {
      throw;
    } catch (const std::exception& e) {
      ctx.ui.MessageBox(gt::kExportFailedTitle, {std::string(info.failure) + e.what()}, Buttons::OK,
                        Icon::Critical);
      continue;
    }
    ++written;
    ctx.ui.MessageBox(gt::kCompleteTitle, {shp.string() + gt::kWritten}, Buttons::OK,
                      Icon::Information);
  }
  return written;
}

int ToolsExportShape(GeometryExportContext& ctx) {
  ExportShapefile dialog;
  ctx.ui.ShowModal(dialog);
  if (dialog.Result != 1 || dialog.SfOption < 0 ||
      dialog.SfOption >= static_cast<int>(ExportShapefile::kOptions.size()))
    return 0;
  const auto option = static_cast<ShapeOption>(dialog.SfOption);
  std::vector<ShapeKind> kinds;
  try {
    kinds = KindsOfOption(LoadGeometryProject(ctx.projectFile), option);
  } catch (const UiPortFailure&) {
    throw;
  } catch (const std::exception&) {
    // A project that cannot be read: the first kind's stage reports it.
    kinds = {option == ShapeOption::PathsAndTics ? ShapeKind::Paths
                                                 : KindsOfOption({}, option).front()};
  }
  return ExportShapeKinds(ctx, kinds);
}

}  // namespace tarno::exchange
