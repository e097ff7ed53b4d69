// tarnocmd export <project> gpkg <file> and the import of GIS vector files.
#include <exception>
#include <filesystem>

#include "core/console_ui.h"
#include "core/text.h"
#include "elements/kind.h"
#include "exchange/gpkg_export.h"
#include "exchange/vector_import.h"
#include "store/database.h"
#include "tarnocmd_exchange.h"

namespace tarno::cmd {

int ExportGpkg(const ExportOptions& o, std::ostream& out, std::ostream& err) {
  if (!o.what.empty()) return BadUsage(err, "a GeoPackage export takes no \"" + o.what + "\"");
  if (!CheckProject(o.project, err)) return 1;
  // The boxes are printed as "<title>: <line>"; the file dialog answers the file, the
  // overwrite question --yes, --no or its default button (Yes).
  ConsoleUserInterface ui(out, o.answers == Answers::No ? Answer::No : Answer::Yes);
  ui.SetSaveFileAnswer(std::filesystem::absolute(o.file).string());
  bool failed = false;
  ui.SetAnswerPolicy([&](const std::string& title, const std::vector<std::string>&, Buttons) {
    if (title == exchange::gpkg_text::kFailedTitle || title == exchange::gpkg_text::kAbortTitle)
      failed = true;
    return std::optional<Answer>();
  });
  const bool written = exchange::ToolsExportGeoPackage(ui, o.project);
  if (!written && !failed) err << "tarnocmd: no GeoPackage was written\n";
  return written ? 0 : 1;
}

int ImportVector(const ImportOptions& o, const std::vector<std::string>& files, std::ostream& out,
                 std::ostream& err) {
  std::optional<ElementKind> kind;
  if (!o.kind.empty()) {
    kind = KindFromWord(o.kind);
    const auto& kinds = exchange::ImportKinds();
    if (!kind || std::find(kinds.begin(), kinds.end(), *kind) == kinds.end())
      return BadUsage(
          err, "--kind takes linesink, barrier, inhomogeneity or well, not \"" + o.kind + "\"");
  }
  if (!CheckProject(o.project, err)) return 1;
  int status = 0;
  std::size_t taken = 0;
  for (const std::string& file : files) {
    try {
      exchange::VectorImportOptions options;
      options.file = file;
      options.layer = o.layer;
      // The layer: --layer, else the first.
      const auto layers = exchange::ReadVectorLayers(file);
      const exchange::VectorLayerInfo* layer = nullptr;
      for (const auto& l : layers)
        if (o.layer.empty() ? layer == nullptr : l.name == o.layer) layer = &l;
      if (layer == nullptr) {
        err << "tarnocmd: " << file << " has no layer"
            << (o.layer.empty() ? std::string() : " \"" + o.layer + "\"") << "\n";
        status = 1;
        continue;
      }
      // The kind: --kind, else what the layer makes (by its name or geometry).
      const auto k = kind ? kind : exchange::KindForLayer(*layer);
      if (!k) {
        err << "tarnocmd: " << file << ": the layer's geometry \"" << layer->geometry
            << "\" gives no kind of element; name one with --kind\n";
        status = 1;
        continue;
      }
      options.kind = *k;
      options.layer = layer->name;
      // The attributes named as a role or a field map by themselves, as the dialog
      // proposes them; --field adds to them or changes them.
      options.mapping = exchange::ProposedMapping(options.kind, *layer);
      for (const auto& [role, attribute] : o.fields) {
        for (auto it = options.mapping.begin(); it != options.mapping.end();)
          it = EqualsIgnoreCase(it->first, role) ? options.mapping.erase(it) : std::next(it);
        options.mapping[role] = attribute;
      }
      exchange::VectorImportReport report;
      {
        Database db = Database::Open(o.project);
        report = exchange::ImportVectorLayer(db, o.project, options);
      }
      for (const std::string& line : exchange::ImportSummaryLines(report)) out << line << "\n";
      taken += report.Taken();
    } catch (const std::exception& e) {
      err << "tarnocmd: " << e.what() << "\n";
      status = 1;
    }
  }
  if (taken > 0) {
    ConsoleUserInterface ui(err);
    RemoveSolution(o.project, ui, out);
  } else if (status == 0) {
    status = 1;  // nothing was imported
  }
  return status;
}

}  // namespace tarno::cmd
