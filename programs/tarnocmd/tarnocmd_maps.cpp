#include "tarnocmd_maps.h"

#include <cstdio>
#include <filesystem>

#include "basemaps/catalogue.h"
#include "core/console_ui.h"
#include "core/error_trap.h"
#include "store/database.h"
#include "store/project_file.h"
#include "store/schema.h"

#include "tarnocmd_commands.h"

namespace tarno::cmd {

namespace fs = std::filesystem;

namespace {

constexpr int kRefused = 1;
constexpr int kUsage = 2;



// A map is listed by its full path, as the select dialog gives it.
std::string FullPath(const std::string& file) {
  std::error_code ec;
  fs::path p = fs::absolute(file, ec);
  if (ec) return file;
  return p.lexically_normal().string();
}

// The stored colour is packed with red in the low byte; it is written as #RRGGBB.
std::string HexColour(int colour) {
  const unsigned c = static_cast<unsigned>(colour);
  char text[16];
  std::snprintf(text, sizeof text, "#%02X%02X%02X", c & 0xFFu, (c >> 8) & 0xFFu, (c >> 16) & 0xFFu);
  return text;
}

int Add(const std::string& project, const std::vector<std::string>& files, bool answerNo,
        std::ostream& out, std::ostream& err, const BaseMapOpeners& openers) {
  if (!CheckProject(project, err)) return kRefused;
  ConsoleUserInterface ui(err, answerNo ? Answer::Cancel : Answer::OK);
  std::vector<std::string> full;
  for (const auto& f : files) full.push_back(FullPath(f));
  std::vector<AddedMap> added;
  const bool ran = RunOperation(ui, "ProjectSettings.AddBBM_Click",
                                [&] { added = AddMaps(project, ui, full, openers); });
  if (!ran) return kRefused;
  bool all = true;
  for (const auto& a : added) {
    if (a.outcome == AddOutcome::Added) {
      out << "Added " << a.mapName << " (" << KindName(KindOfMap(a.mapName)) << ")\n";
    } else {
      all = false;
      out << "Not added " << a.mapName << ": " << ToString(a.outcome) << "\n";
    }
  }
  return all ? 0 : kRefused;
}

int List(const std::string& project, std::ostream& out, std::ostream& err) {
  if (!CheckProject(project, err)) return kRefused;
  try {
    Database db = Database::OpenReadOnly(project);
    for (const auto& row : ReadBaseMaps(db)) {
      out << row.MapName << "\t" << KindName(KindOfMap(row.MapName)) << "\t"
          << (row.Show ? "shown" : "hidden") << "\t" << HexColour(row.Color) << "\t"
          << (row.UseColorField ? row.ColorField : std::string(catalogue_text::kNone)) << "\t"
          << row.TextField << "\n";
    }
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read the base maps of " << project << ": " << e.what() << "\n";
    return kRefused;
  }
  return 0;
}

int Remove(const std::string& project, const std::string& file, std::ostream& out,
           std::ostream& err) {
  if (!CheckProject(project, err)) return kRefused;
  try {
    Database db = Database::Open(project);
    // The name as listed, else as given (a map listed under a relative name).
    for (const std::string& name : {FullPath(file), file}) {
      if (RemoveBaseMap(db, name)) {
        out << "Removed " << name << "\n";
        return 0;
      }
    }
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot change the base maps of " << project << ": " << e.what() << "\n";
    return kRefused;
  }
  err << "tarnocmd: " << file << " is not a base map of " << project << "\n";
  return kRefused;
}

}  // namespace

std::string MapUsageText() {
  return "  tarnocmd map add <project> <file>... [--no]\n"
         "      Adds base maps (.bbm, .shp, CAD files, images) to the project's list with\n"
         "      the checks of Add Map; an image without world file is added with a warning\n"
         "      unless --no is given.\n"
         "  tarnocmd map list <project>\n"
         "      Lists the base maps: path, kind, shown or hidden, colour, colour field and\n"
         "      label field, separated by tabs.\n"
         "  tarnocmd map remove <project> <file>\n"
         "      Removes a base map (and its label field) from the list; the file stays.\n";
}

int RunMapCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err,
                  const BaseMapOpeners& openers) {
  if (args.size() < 2) return BadUsage(err, "map needs add, list or remove");
  const std::string& verb = args[1];
  std::vector<std::string> rest;
  bool answerNo = false;
  for (std::size_t i = 2; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a == "--no" && verb == "add") {
      answerNo = true;
    } else if (a.size() > 1 && a[0] == '-') {
      return BadUsage(err, "unknown option \"" + a + "\"");
    } else {
      rest.push_back(a);
    }
  }
  if (verb == "add") {
    if (rest.size() < 2) return BadUsage(err, "map add takes a project path and one or more files");
    return Add(rest[0], {rest.begin() + 1, rest.end()}, answerNo, out, err, openers);
  }
  if (verb == "list") {
    if (rest.size() != 1) return BadUsage(err, "map list takes exactly one project path");
    return List(rest[0], out, err);
  }
  if (verb == "remove") {
    if (rest.size() != 2) return BadUsage(err, "map remove takes a project path and one file");
    return Remove(rest[0], rest[1], out, err);
  }
  return BadUsage(err, "unknown map command \"" + verb + "\" (add, list or remove)");
}

std::optional<int> RunMapCommand(const std::vector<std::string>& args, std::ostream& out,
                                 std::ostream& err) {
  if (args.empty() || args[0] != "map") return std::nullopt;
  return RunMapCommand(args, out, err, DefaultOpeners());
}

}  // namespace tarno::cmd
