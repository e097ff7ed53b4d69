// The DXF, boundary line and grid exports. Choices made here:
//   - the sources are checked before the file is asked for, so an export with
//     nothing to write asks for nothing and writes nothing;
//   - a closed outline (inhomogeneity, protection area, closed barrier) repeats its
//     first point, in DXF as in BLN, so that every reader sees its last segment;
//   - wells are circles (DXF) and five-point squares (BLN) of a five-hundredth of
//     the window's larger side, as are the tic marks;
//   - the boundary line file's contours, pathlines and elements use the DXF
//     export's boxes for an empty source; only the capture zones have their own.
#include "exchange/geometry_export.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/error.h"
#include "core/error_trap.h"
#include "core/format.h"
#include "core/text.h"
#include "exchange/bln_writer.h"
#include "exchange/dxf_writer.h"
#include "solver/model_settings.h"
#include "store/database.h"
#include "store/default_dirs.h"

namespace tarno::exchange {

namespace fs = std::filesystem;
namespace gt = geometry_text;

namespace {

MapWindow WindowOf(const GeometryExportContext& ctx, const GeometryProject& p) {
  return ctx.window ? *ctx.window : p.window;
}

std::string DefFile(const GeometryExportContext& ctx) {
  return ctx.defaultDirectoriesFile.empty() ? DefaultDirectoriesFile() : ctx.defaultDirectoriesFile;
}

// The file dialog, the extension added when the name has none, and the overwrite
// question. Nothing when the user stopped.
std::optional<fs::path> AskFile(GeometryExportContext& ctx, FileDialogRequest request,
                                const char* directoryKey) {
  std::error_code ec;
  // The folder remembered for the key, else the project's (not the folder of the
  // directory memory, where a first DXF export used to start).
  if (directoryKey != nullptr) {
    const fs::path project = ctx.projectFile.parent_path();
    request.initialDirectory =
        StartDirectoryIn(DefFile(ctx), directoryKey,
                         project.empty() ? fs::current_path(ec).string() : project.string());
  }
  const std::optional<std::string> chosen = ctx.ui.SaveFileDialog(request);
  if (!chosen || chosen->empty()) return std::nullopt;
  fs::path file = *chosen;
  if (!file.has_extension() && !request.defaultExtension.empty())
    file += "." + request.defaultExtension;
  if (directoryKey != nullptr)
    DefaultDirectoriesIn(DefFile(ctx), directoryKey, DirectoryMode::Write,
                         file.parent_path().string());
  if (fs::exists(file, ec) &&
      !ctx.ui.Question(gt::kFileExistsTitle,
                       {"File " + file.string() + " already exists.", gt::kOverwrite})) {
    return std::nullopt;
  }
  return file;
}

std::vector<MapLine> DrawableLines(std::vector<MapLine> lines) {
  std::erase_if(lines, [](const MapLine& l) { return l.points.size() < 2; });
  return lines;
}

// The layer of a line-sink string by its flags, tested in this order.
const char* LinesinkLayer(const GeometryElement& e) {
  const Row& r = e.row;
  if (r.Flag("Routing") || r.Flag("Lake")) return "Line-sinks (streams and lakes)";
  if (r.Flag("Drain")) return "Line-sinks (drains)";
  if (r.Flag("Gallery")) return "Line-sinks (galleries)";
  if (!r.Flag("HeadSpecified")) return "Line-sinks (discharge)";
  if (r.Flag("Farfield")) return "Line-sinks (farfield)";
  return "Line-sinks (near field)";
}

std::vector<GeometryElement> Load(const GeometryProject& p, ElementKind kind) {
  Database db = Database::OpenReadOnly(p.projectFile);
  std::vector<GeometryElement> out = LoadGeometry(db, kind);
  db.Close();
  return out;
}

void AddTics(DxfDrawing& d, const GeometryProject& p, double radius) {
  if (const fs::path t = TicFile(p, kTimeTicFile); !t.empty())
    for (const TicMark& m : ReadTicMarkFile(t, false))
      d.AddCircle("Time Ticmarks", m.x, m.y, radius);
  if (const fs::path z = TicFile(p, kElevationTicFile); !z.empty()) {
    for (const TicMark& m : ReadTicMarkFile(z, true)) {
      const char* layer = m.direction > 0   ? "Vertical Ticmarks Up"
                          : m.direction < 0 ? "Vertical Ticmarks Down"
                                            : "Ticmarks";
      d.AddCircle(layer, m.x, m.y, radius);
    }
  }
}

// The drawing of a mode; `empty` tells whether its source had nothing.
DxfDrawing BuildDxf(const GeometryProject& p, VectorMode mode, const std::string& layer,
                    const MapWindow& window, bool& empty) {
  DxfDrawing d;
  const double radius = MarkRadius(window);
  switch (mode) {
    case VectorMode::Contours: {
      const std::string name = layer.empty() ? "Contours" : layer;
      for (const MapLine& l : DrawableLines(ContourLinesInMap(p)))
        d.AddPolyline(name, l.points, false, l.level);
      empty = d.EntityCount() == 0;
      break;
    }
    case VectorMode::Pathlines: {
      for (const MapLine& l : DrawableLines(PathlinesInMap(p)))
        d.AddPolyline("Pathlines", l.points);
      empty = d.EntityCount() == 0;
      if (!empty) AddTics(d, p, radius);
      break;
    }
    case VectorMode::Capzones:
      for (const GeometryElement& e : Load(p, ElementKind::Capzone))
        d.AddPolyline("Capture Zones", Outline(e));
      empty = d.EntityCount() == 0;
      break;
    case VectorMode::Elements:
      for (const GeometryElement& e : Load(p, ElementKind::Well))
        d.AddCircle("Wells", e.vertices[0].X, e.vertices[0].Y, radius);
      for (const GeometryElement& e : Load(p, ElementKind::Inhomogeneity))
        d.AddPolyline("Inhomogeneities", Outline(e));
      for (const GeometryElement& e : Load(p, ElementKind::Linesink))
        d.AddPolyline(LinesinkLayer(e), Outline(e));
      for (const GeometryElement& e : Load(p, ElementKind::Barrier))
        d.AddPolyline(BarrierHasConductivity(e) ? "Horizontal Barriers" : "No Flow Strings",
                      Outline(e));
      empty = d.EntityCount() == 0;
      break;
    case VectorMode::None: empty = true; break;
  }
  return d;
}

BlnFile BuildBln(const GeometryProject& p, VectorMode mode, const MapWindow& window,
                 std::vector<double>& levels) {
  BlnFile b;
  switch (mode) {
    case VectorMode::Contours:
      for (const MapLine& l : DrawableLines(ContourLinesInMap(p))) {
        b.AddRecord(l.points, 1, GeneralNumber(l.level));
        levels.push_back(l.level);
      }
      break;
    case VectorMode::Pathlines:
      for (const MapLine& l : DrawableLines(PathlinesInMap(p))) b.AddRecord(l.points, 1, l.label);
      break;
    case VectorMode::Capzones:
      for (const GeometryElement& e : Load(p, ElementKind::Capzone))
        b.AddRecord(Outline(e), 1, e.label);
      break;
    case VectorMode::Elements: {
      const double half = MarkRadius(window);
      for (const GeometryElement& e : Load(p, ElementKind::Well))
        b.AddSquare(e.vertices[0].X, e.vertices[0].Y, half);
      for (ElementKind k :
           {ElementKind::Inhomogeneity, ElementKind::Linesink, ElementKind::Barrier})
        for (const GeometryElement& e : Load(p, k)) b.AddRecord(Outline(e), 1, e.label);
      break;
    }
    case VectorMode::None: break;
  }
  return b;
}

// The box of an empty source of `mode`.
void NothingToExport(UserInterface& ui, VectorMode mode, bool bln) {
  switch (mode) {
    case VectorMode::Contours:
      ui.MessageBox(gt::kCantExportLower, {gt::kNoContours}, Buttons::OK, Icon::Exclamation);
      break;
    case VectorMode::Pathlines:
      ui.MessageBox(gt::kCantExportLower, {gt::kNoPathlines}, Buttons::OK, Icon::Exclamation);
      break;
    case VectorMode::Capzones:
      if (bln)
        ui.MessageBox(gt::kCantExport, {gt::kNoCapzonesBln}, Buttons::OK, Icon::Exclamation);
      else
        ui.MessageBox(gt::kCantExport, {gt::kNoCapzones, gt::kNoDxfWritten}, Buttons::OK,
                      Icon::Exclamation);
      break;
    case VectorMode::Elements:
    case VectorMode::None:
      ui.MessageBox(gt::kCantExport, {gt::kNoElements}, Buttons::OK, Icon::Exclamation);
      break;
  }
}

const char* DxfDone(VectorMode mode) {
  switch (mode) {
    case VectorMode::Contours: return gt::kDxfContoursDone;
    case VectorMode::Pathlines: return gt::kDxfPathsDone;
    case VectorMode::Capzones: return gt::kDxfCapzonesDone;
    default: return gt::kDxfElementsDone;
  }
}

// The VectorExport dialog of a file mode; its choice, or nothing on Cancel.
std::optional<std::pair<VectorMode, std::string>> AskVectorMode(UserInterface& ui,
                                                                const char* fileMode) {
  VectorExport dialog;
  dialog.FileMode = fileMode;
  ui.ShowModal(dialog);
  if (dialog.Result != 1) return std::nullopt;
  const VectorMode mode = ModeFromWord(dialog.mode);
  if (mode == VectorMode::None) return std::nullopt;
  return std::pair{mode, dialog.Layer};
}

}  // namespace

const char* ContourKindName(int contourKind) {
  switch (contourKind) {
    case kContourPotentials: return "Potentials";
    case kContourDischarge: return "Discharge";
    case kContourInterface: return "Interface";
    case kContourStreamFunction: return "Stream Functions";
    case kContourDrawdowns: return "Drawdowns";
    default: return "Heads";
  }
}

bool ExportDxf(GeometryExportContext& ctx, VectorMode mode, const std::string& layer) {
  bool written = false;
  RunOperation(ctx.ui, "ToolsExportDXF", [&] {
    const GeometryProject p = LoadGeometryProject(ctx.projectFile);
    const MapWindow window = WindowOf(ctx, p);
    bool empty = true;
    const DxfDrawing d = BuildDxf(p, mode, layer, window, empty);
    if (empty) {
      NothingToExport(ctx.ui, mode, false);
      return;
    }
    FileDialogRequest request;
    request.title = gt::kDxfDialogTitle;
    request.filter = gt::kDxfFilter;
    request.defaultExtension = "dxf";
    const std::optional<fs::path> file = AskFile(ctx, request, gt::kDxfDirectoryKey);
    if (!file) return;
    d.Write(*file, window);
    written = true;
    ctx.ui.MessageBox(gt::kCompleteTitle, {DxfDone(mode), gt::kDxfVersion}, Buttons::OK,
                      Icon::Information);
  });
  return written;
}

bool ExportBln(GeometryExportContext& ctx, VectorMode mode) {
  bool written = false;
  RunOperation(ctx.ui, "ToolsExportBLN", [&] {
    const GeometryProject p = LoadGeometryProject(ctx.projectFile);
    std::vector<double> levels;
    const BlnFile b = BuildBln(p, mode, WindowOf(ctx, p), levels);
    if (b.RecordCount() == 0) {
      NothingToExport(ctx.ui, mode, true);
      return;
    }
    FileDialogRequest request;
    request.title = gt::kBlnDialogTitle;
    request.filter = gt::kBlnFilter;
    request.defaultExtension = "bln";
    request.initialDirectory = p.solverDirectory.string();
    const std::optional<fs::path> file = AskFile(ctx, request, nullptr);
    if (!file) return;
    try {
      b.Write(*file);
      if (mode == VectorMode::Contours) {
        const fs::path script = file->parent_path() / kSurferScriptFile;
        std::ofstream out(script, std::ios::binary | std::ios::trunc);
        if (!out) throw Error("Cannot create " + script.string(), kBlnAccessError);
        out << SurferLevelScript(levels);
        out.close();
        if (!out) throw Error("Cannot write " + script.string(), kBlnWriteError);
      }
    } catch (const Error& e) {
      ctx.ui.MessageBox(gt::kIoErrorTitle,
                        {"Internal error " + std::to_string(e.number()) +
                         " occurred during boundary line file export"},
                        Buttons::OK, Icon::Critical);
      return;
    }
    written = true;
    ctx.ui.MessageBox(gt::kCompleteTitle, {file->string() + gt::kWritten}, Buttons::OK,
                      Icon::Information);
  });
  return written;
}

void CopyGridInMap(const fs::path& grid, const fs::path& target, const ModelFrame& frame) {
  std::ifstream in(grid, std::ios::binary);
  if (!in) throw Error("Cannot open the grid file " + grid.string(), error_number::kFileNotFound);
  std::ostringstream text;
  std::string line;
  int number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (number == 3 || number == 4) {
      // Fields from 1; a run of blanks counts as one delimiter.
      const std::vector<std::string> f = ParseString(line, " ");
      double lo = 0, hi = 0;
      auto number_of = [&](const std::string& s, double& v) {
        char* end = nullptr;
        v = std::strtod(s.c_str(), &end);
        return !s.empty() && end == s.c_str() + s.size();
      };
      if (f.size() < 3 || !number_of(f[1], lo) || !number_of(f[2], hi))
        throw Error(grid.string() + ", line " + std::to_string(number) + ": expected the " +
                        (number == 3 ? "X" : "Y") + " limits, found \"" + line + "\"",
                    error_number::kTypeMismatch);
      const bool x = number == 3;
      line = FormatNumber(x ? MToW_X(frame, lo) : MToW_Y(frame, lo), "#######0.00") + "  " +
             FormatNumber(x ? MToW_X(frame, hi) : MToW_Y(frame, hi), "#######0.00");
    }
    text << line << "\r\n";
  }
  if (number < 4)
    throw Error(grid.string() + ": a grid file has its X and Y limits on lines 3 and 4",
                error_number::kTypeMismatch);
  std::ofstream out(target, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("Cannot create " + target.string(), error_number::kFileNotFound);
  out << text.str();
  out.close();
  if (!out) throw Error("Cannot write " + target.string());
}

bool ToolsExportGrid(GeometryExportContext& ctx) {
  bool written = false;
  RunOperation(ctx.ui, "ToolsExportGrid", [&] {
    const GeometryProject p = LoadGeometryProject(ctx.projectFile);
    const fs::path grid = SolverFile(p, ".GRD");
    if (grid.empty()) {
      ctx.ui.MessageBox(gt::kCantExportLower, {gt::kNoGrid}, Buttons::OK, Icon::Exclamation);
      return;
    }
    if (ctx.ui.MessageBox(
            gt::kGridTitle,
            {gt::kGridLine1, std::string(gt::kGridLine2) + ContourKindName(p.contourKind)},
            Buttons::OKCancel, Icon::Information) != Answer::OK)
      return;
    FileDialogRequest request;
    request.title = gt::kGridDialogTitle;
    request.filter = gt::kGridFilter;
    request.defaultExtension = "grd";
    request.initialDirectory = p.solverDirectory.string();
    const std::optional<fs::path> file = AskFile(ctx, request, nullptr);
    if (!file) return;
    std::error_code ec;
    if (fs::equivalent(grid, *file, ec))
      throw Error("The grid cannot be exported onto the project's own grid file " + grid.string());
    CopyGridInMap(grid, *file, p.frame);
    written = true;
    ctx.ui.MessageBox(gt::kCompleteTitle, {gt::kGridDone}, Buttons::OK, Icon::Information);
  });
  return written;
}

bool ToolsExportDXF(GeometryExportContext& ctx) {
  const auto choice = AskVectorMode(ctx.ui, "DXF");
  return choice && ExportDxf(ctx, choice->first, choice->second);
}

bool ToolsExportBLN(GeometryExportContext& ctx) {
  const auto choice = AskVectorMode(ctx.ui, "BLN");
  return choice && ExportBln(ctx, choice->first);
}

}  // namespace tarno::exchange
