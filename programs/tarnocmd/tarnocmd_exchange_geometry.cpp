// tarnocmd export <project> dxf|bln|grd|shp <file> [<what>]: the geometry exports of
// the Tools menu without a window. The file dialogs are answered with <file>; the
// overwrite question by --yes or --no (Yes by default, its first button); every box
// is printed as "<title>: <line>".
//
// A shapefile export of `tics` writes two files: the time marks to <file> and the
// elevation marks to <file> with "-elevation" added before ".shp". The mark files
// are those the desktop program's pathline drawing left beside the path file (the
// batch front end draws no pathlines and so writes none); the step of the time
// marks is not known here, so their INTERVAL field stays empty.
#include <algorithm>
#include <filesystem>
#include <map>

#include "core/console_ui.h"
#include "exchange/geometry_export.h"
#include "tarnocmd_exchange.h"

namespace tarno::cmd {

namespace fs = std::filesystem;
using exchange::ShapeKind;
using exchange::VectorMode;

namespace {

// The console port, with the save dialogs of the elevation marks answered by a
// name of their own.
class GeometryConsole : public ConsoleUserInterface {
 public:
  GeometryConsole(std::ostream& out, Answer answer, fs::path file)
      : ConsoleUserInterface(out, answer), file_(std::move(file)) {}
  std::optional<std::string> SaveFileDialog(const FileDialogRequest& request) override {
    if (request.initialFile.find(exchange::ShapeInfo(ShapeKind::ElevationTics).suffix) !=
        std::string::npos) {
      fs::path other = file_;
      other.replace_extension();
      other += "-elevation.shp";
      return other.string();
    }
    return file_.string();
  }

 private:
  fs::path file_;
};

const std::map<std::string, std::vector<ShapeKind>>& ShapeKinds() {
  static const std::map<std::string, std::vector<ShapeKind>> kinds = {
      {"contours", {ShapeKind::Contours}},
      {"pathlines", {ShapeKind::Paths}},
      {"tics", {ShapeKind::TimeTics, ShapeKind::ElevationTics}},
      {"whpareas", {ShapeKind::Capzones}},
      {"wells", {ShapeKind::Wells}},
      {"testpoints", {ShapeKind::TestPoints}},
      {"particles", {ShapeKind::Particles}},
      {"inhomogeneities", {ShapeKind::Inhomogeneities}},
      {"linesinks", {ShapeKind::LineSinks}},
      {"noflows", {ShapeKind::NoFlows}},
  };
  return kinds;
}

int Usage(std::ostream& err, const std::string& why) {
  err << "tarnocmd: " << why << "\n" << ExchangeUsageText();
  return 2;
}

}  // namespace

int ExportGeometry(const ExportOptions& o, std::ostream& out, std::ostream& err) {
  VectorMode mode = VectorMode::None;
  std::vector<ShapeKind> kinds;
  if (o.format == "dxf" || o.format == "bln") {
    mode = exchange::ModeFromWord([&] {
      std::string w = o.what;
      std::transform(w.begin(), w.end(), w.begin(),
                     [](unsigned char c) { return std::toupper(c); });
      return w;
    }());
    if (mode == VectorMode::None)
      return Usage(err, "export to " + o.format +
                            " takes what to export: contours, pathlines, capzones or elements");
  } else if (o.format == "grd") {
    if (!o.what.empty()) return Usage(err, "export to grd takes no \"" + o.what + "\"");
  } else if (o.format == "shp") {
    const auto it = ShapeKinds().find(o.what);
    if (it == ShapeKinds().end())
      return Usage(err,
                   "export to shp takes a kind: contours, pathlines, tics, whpareas, wells, "
                   "testpoints, particles, inhomogeneities, linesinks or noflows");
    kinds = it->second;
  } else {
    return Usage(err, "unknown geometry format \"" + o.format + "\"");
  }
  if (!CheckProject(o.project, err)) return 1;

  std::error_code ec;
  const fs::path file = fs::absolute(o.file, ec);
  GeometryConsole ui(out, o.answers == Answers::No ? Answer::No : Answer::Yes, file);
  exchange::GeometryExportContext ctx{ui, fs::absolute(o.project, ec)};
  if (o.format == "dxf") return exchange::ExportDxf(ctx, mode, "") ? 0 : 1;
  if (o.format == "bln") return exchange::ExportBln(ctx, mode) ? 0 : 1;
  if (o.format == "grd") return exchange::ToolsExportGrid(ctx) ? 0 : 1;
  const int written = exchange::ExportShapeKinds(ctx, kinds);
  return written == static_cast<int>(kinds.size()) ? 0 : 1;
}

}  // namespace tarno::cmd
