#include "exchange/geometry_sources.h"

#include <algorithm>
#include <cmath>

#include "core/error.h"
#include "core/file_find.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "store/database.h"

namespace tarno::exchange {

GeometryProject LoadGeometryProject(const std::filesystem::path& projectFile) {
  GeometryProject p;
  p.projectFile = projectFile;
  Database db = Database::OpenReadOnly(projectFile);
  ModelSettings settings;
  settings.Load(db);
  p.frame = ModelRestoreModelOrigin(db, settings.BasemapConvert);
  p.contourKind = settings.ContourProperty();
  {
    Statement st = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
    if (!st.Step()) throw Error("The Project table of " + projectFile.string() + " has no row");
    p.baseName = st.GetText(0);
    p.solverDirectory = st.GetText(1);
  }
  {
    Statement st = db.Prepare("select WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2 from Model");
    if (st.Step()) {
      p.window.Left = std::min(st.GetDouble(0), st.GetDouble(1));
      p.window.Right = std::max(st.GetDouble(0), st.GetDouble(1));
      p.window.Bottom = std::min(st.GetDouble(2), st.GetDouble(3));
      p.window.Top = std::max(st.GetDouble(2), st.GetDouble(3));
    }
  }
  db.Close();
  return p;
}

std::filesystem::path SolverFile(const GeometryProject& p, const std::string& extension) {
  return FindFileNoCase(p.solverDirectory, p.baseName + extension);
}

std::filesystem::path TicFile(const GeometryProject& p, const char* name) {
  return FindFileNoCase(p.solverDirectory, name);
}

std::vector<MapLine> ContourLinesInMap(const GeometryProject& p) {
  std::vector<MapLine> out;
  const std::filesystem::path file = SolverFile(p, ".CTR");
  if (file.empty()) return out;
  for (const ContourPolyline& c : ReadContourFile(file)) {
    MapLine line;
    line.level = c.level;
    for (const PlotPoint& q : c.points)
      line.points.push_back({MToW_X(p.frame, q.x), MToW_Y(p.frame, q.y)});
    out.push_back(std::move(line));
  }
  return out;
}

std::vector<MapLine> PathlinesInMap(const GeometryProject& p) {
  std::vector<MapLine> out;
  const std::filesystem::path file = SolverFile(p, ".PTH");
  if (file.empty()) return out;
  for (const Pathline& path : ReadPathFile(file)) {
    MapLine line;
    line.label = path.label;
    if (!path.points.empty()) line.endTime = path.points.back().value1;
    for (const PathPoint& q : path.points)
      line.points.push_back({MToW_X(p.frame, q.x), MToW_Y(p.frame, q.y)});
    out.push_back(std::move(line));
  }
  return out;
}

std::vector<MapPoint> Outline(const GeometryElement& e) {
  std::vector<MapPoint> points;
  for (const Vertex& v : e.vertices) points.push_back({v.X, v.Y});
  if (e.closed && points.size() > 1 && !(points.front() == points.back()))
    points.push_back(points.front());
  return points;
}

double MarkRadius(const MapWindow& w) {
  const double side = std::max(std::abs(w.Right - w.Left), std::abs(w.Top - w.Bottom));
  return side > 0.0 ? side / 500.0 : 1.0;
}

}  // namespace tarno::exchange
