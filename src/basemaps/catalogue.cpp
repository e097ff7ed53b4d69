#include "basemaps/catalogue.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

#include "core/error.h"
#include "core/error_trap.h"
#include "core/text.h"
#include "store/database.h"
#include "store/default_dirs.h"

namespace tarno {

namespace ct = catalogue_text;
namespace fs = std::filesystem;

namespace {

const std::vector<std::string> kBbmExtensions = {"bbm"};
const std::vector<std::string> kShapeExtensions = {"shp"};
const std::vector<std::string> kCadExtensions = {"dgn", "dwg", "dxf"};
const std::vector<std::string> kRasterExtensions = {"bil", "bip",  "bmp", "bsq", "gis",
                                                    "jpg", "jpeg", "lan", "ras", "rlc",
                                                    "rs",  "sid",  "sun", "tif", "tiff"};
const std::vector<std::string> kNoExtensions;

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

std::string Patterns(const std::vector<std::string>& extensions) {
  std::string out;
  for (const auto& e : extensions) out += (out.empty() ? "*." : ";*.") + e;
  return out;
}

BaseMapRow RowFrom(Statement& st) {
  BaseMapRow row;
  row.MapName = st.GetText("MapName");
  row.Color = static_cast<int>(st.GetInt64("Color"));
  row.Show = st.GetBool("Show");
  row.ColorField = st.GetText("ColorField");
  if (row.ColorField.empty()) row.ColorField = ct::kNone;
  row.UseColorField = st.GetBool("UseColorField");
  return row;
}

// The label field of a map: the first MapLabels row that names a field.
std::string TextFieldOf(Database& db, const std::string& mapName) {
  Statement st = db.PrepareRaw("select TextField from MapLabels where MapName = ? order by rowid;");
  st.Bind(1, mapName);
  while (st.Step()) {
    std::string field = st.GetText(0);
    if (!field.empty() && field != ct::kNone) return field;
  }
  return ct::kNone;
}

bool Listed(Database& db, const std::string& mapName) {
  Statement st = db.PrepareRaw("select count(*) from Basemaps where MapName = ?;");
  st.Bind(1, mapName);
  st.Step();
  return st.GetInt64(0) > 0;
}

std::vector<std::string> NotGeoreferencedLines(const std::string& name) {
  return {"The file " + name + " may not be georeferenced!", ct::kProceedOrRemoveText};
}

}  // namespace

// ---------------------------------------------------------------------------
// Kinds.

std::string MapExtension(const std::string& path) {
  const std::string name = fs::path(path).filename().string();
  const auto dot = name.rfind('.');
  if (dot == std::string::npos || dot == 0) return {};
  return Lower(name.substr(dot + 1));
}

BaseMapKind KindOfMap(const std::string& path) {
  const std::string ext = MapExtension(path);
  if (ext.empty()) return BaseMapKind::Unknown;
  for (BaseMapKind k :
       {BaseMapKind::Bbm, BaseMapKind::Shape, BaseMapKind::Cad, BaseMapKind::Raster}) {
    const auto& list = ExtensionsOf(k);
    if (std::find(list.begin(), list.end(), ext) != list.end()) return k;
  }
  return BaseMapKind::Unknown;
}

const std::vector<std::string>& ExtensionsOf(BaseMapKind kind) {
  switch (kind) {
    case BaseMapKind::Bbm: return kBbmExtensions;
    case BaseMapKind::Shape: return kShapeExtensions;
    case BaseMapKind::Cad: return kCadExtensions;
    case BaseMapKind::Raster: return kRasterExtensions;
    case BaseMapKind::Unknown: break;
  }
  return kNoExtensions;
}

const char* KindName(BaseMapKind kind) {
  switch (kind) {
    case BaseMapKind::Bbm: return "BBM";
    case BaseMapKind::Shape: return "shape";
    case BaseMapKind::Cad: return "CAD";
    case BaseMapKind::Raster: return "raster";
    case BaseMapKind::Unknown: break;
  }
  return "unknown";
}

const std::string& SelectMapFilter() {
  static const std::string filter = [] {
    // Every extension of the table, in the alphabet's order but for "jpg" before
    // "jpeg", as the list has always stood.
    const std::vector<std::string> all = {"bbm", "bil", "bip", "bmp",  "bsq", "dgn", "dwg",
                                          "dxf", "gis", "jpg", "jpeg", "lan", "ras", "rlc",
                                          "rs",  "shp", "sid", "sun",  "tif", "tiff"};
    std::string f = "All Supported Types|" + Patterns(all);
    f += "|BBM Basemap Files (*.bbm)|" + Patterns(kBbmExtensions);
    f += "|Shapefiles (*.shp)|" + Patterns(kShapeExtensions);
    f += "|CAD Files (" + Patterns(kCadExtensions) + ")|" + Patterns(kCadExtensions);
    f += "|Raster Images (" + Patterns(kRasterExtensions) + ")|" + Patterns(kRasterExtensions);
    f += "|All Files (*.*)|*.*";
    return f;
  }();
  return filter;
}

FileDialogRequest SelectMapRequest(const std::string& initialDirectory) {
  FileDialogRequest req;
  req.title = ct::kSelectTitle;
  req.defaultExtension = ct::kDefaultExtension;
  req.filter = SelectMapFilter();
  req.initialDirectory = initialDirectory;
  return req;
}

// ---------------------------------------------------------------------------
// Rows.

std::vector<BaseMapRow> ReadBaseMaps(Database& db) {
  std::vector<BaseMapRow> rows;
  {
    Statement st = db.PrepareRaw("select * from Basemaps order by rowid;");
    while (st.Step()) rows.push_back(RowFrom(st));
  }
  for (auto& row : rows) row.TextField = TextFieldOf(db, row.MapName);
  return rows;
}

std::vector<BaseMapRow> ReadBaseMaps(const std::string& projectFile) {
  Database db = Database::Open(projectFile);
  return ReadBaseMaps(db);
}

std::optional<BaseMapRow> FindBaseMap(Database& db, const std::string& mapName) {
  Statement st = db.PrepareRaw("select * from Basemaps where MapName = ? order by rowid;");
  st.Bind(1, mapName);
  if (!st.Step()) return std::nullopt;
  BaseMapRow row = RowFrom(st);
  row.TextField = TextFieldOf(db, row.MapName);
  return row;
}

void InsertBaseMap(Database& db, const std::string& mapName) {
  Statement st =
      db.PrepareRaw("insert into Basemaps (MapName, Show, ColorField) values (?, 1, ?);");
  st.Bind(1, mapName);
  st.Bind(2, ct::kNone);
  st.Run();
}

bool RemoveBaseMap(Database& db, const std::string& mapName) {
  if (!Listed(db, mapName)) return false;
  {
    Statement st = db.PrepareRaw("delete from Basemaps where MapName = ?;");
    st.Bind(1, mapName);
    st.Run();
  }
  Statement st = db.PrepareRaw("delete from MapLabels where MapName = ?;");
  st.Bind(1, mapName);
  st.Run();
  return true;
}

bool UpdateBaseMap(Database& db, const BaseMapRow& row) {
  if (!Listed(db, row.MapName)) return false;
  {
    Statement st = db.PrepareRaw(
        "update Basemaps set Show = ?, Color = ?, ColorField = ?, UseColorField = ? "
        "where MapName = ?;");
    st.Bind(1, row.Show);
    st.Bind(2, row.Color);
    st.Bind(3, row.ColorField.empty() ? std::string(ct::kNone) : row.ColorField);
    st.Bind(4, row.UseColorField);
    st.Bind(5, row.MapName);
    st.Run();
  }
  {
    Statement st = db.PrepareRaw("delete from MapLabels where MapName = ?;");
    st.Bind(1, row.MapName);
    st.Run();
  }
  if (!row.TextField.empty() && row.TextField != ct::kNone) {
    Statement st = db.PrepareRaw("insert into MapLabels (MapName, TextField) values (?, ?);");
    st.Bind(1, row.MapName);
    st.Bind(2, row.TextField);
    st.Run();
  }
  return true;
}

// ---------------------------------------------------------------------------
// Opening.

std::unique_ptr<BaseMapLayer> BaseMapOpeners::Open(const BaseMapRow& row) const {
  const BaseMapKind kind = KindOfMap(row.MapName);
  const Opener* opener = nullptr;
  switch (kind) {
    case BaseMapKind::Bbm: opener = &bbm; break;
    case BaseMapKind::Shape: opener = &shape; break;
    case BaseMapKind::Cad: opener = &cad; break;
    case BaseMapKind::Raster: opener = &raster; break;
    case BaseMapKind::Unknown:
      throw Error("The file " + row.MapName + " is not a base map of a known kind (extension \"" +
                  MapExtension(row.MapName) + "\")");
  }
  if (opener == nullptr || !*opener)
    throw Error(std::string("No reader of ") + KindName(kind) + " maps is available for " +
                row.MapName);
  std::unique_ptr<BaseMapLayer> layer = (*opener)(row);
  if (!layer) throw Error("The file " + row.MapName + " could not be opened");
  return layer;
}

// ---------------------------------------------------------------------------
// Adding.

const char* ToString(AddOutcome outcome) {
  switch (outcome) {
    case AddOutcome::Added: return "added";
    case AddOutcome::AlreadyAdded: return "already added";
    case AddOutcome::InvalidFile: return "invalid file";
    case AddOutcome::CantAdd: return "not a raster data set";
    case AddOutcome::RemovedByUser: return "removed";
  }
  return "?";
}

namespace {

AddOutcome AddOne(Database& db, UserInterface& ui, const std::string& name,
                  const BaseMapOpeners& openers) {
  if (Listed(db, name)) {
    ui.MessageBox(ct::kAlreadyAddedTitle, {name + ct::kAlreadyAddedSuffix});
    return AddOutcome::AlreadyAdded;
  }
  const BaseMapKind kind = KindOfMap(name);
  BaseMapRow row;
  row.MapName = name;
  if (kind == BaseMapKind::Raster) {
    try {
      (void)openers.Open(row);
    } catch (const UiPortFailure&) {
      throw;
    } catch (const std::exception& e) {
      // The reader's reason closes the box: the image may be sound and its world
      // file at fault, and only the reason says which line of which file.
      ui.MessageBox(ct::kCantAddTitle, {ct::kInvalidRasterText, e.what()});
      return AddOutcome::CantAdd;
    }
    const bool georeferenced = openers.worldFileExists && openers.worldFileExists(name);
    if (!georeferenced && ui.MessageBox(ct::kNotGeoreferencedTitle, NotGeoreferencedLines(name),
                                        Buttons::OKCancel) == Answer::Cancel) {
      return AddOutcome::RemovedByUser;
    }
  } else {
    // A vector map, or a file of no known kind: both are refused as not vector data.
    // Open throws for a file of no known kind too, naming its extension.
    try {
      (void)openers.Open(row);
    } catch (const UiPortFailure&) {
      throw;
    } catch (const std::exception& e) {
      // The reason closes the box (a DWG drawing is told to be saved as DXF, a
      // missing file is named as missing).
      ui.MessageBox(
          ct::kInvalidFileTitle,
          {ct::kInvalidVectorText, std::string(ct::kCouldNotAddPrefix) + name + ".", e.what()});
      return AddOutcome::InvalidFile;
    }
  }
  InsertBaseMap(db, name);
  return AddOutcome::Added;
}

}  // namespace

std::vector<AddedMap> AddMaps(Database& db, UserInterface& ui,
                              const std::vector<std::string>& files,
                              const BaseMapOpeners& openers) {
  std::vector<AddedMap> result;
  for (const auto& file : files) {
    if (file.empty()) continue;
    result.push_back({file, AddOne(db, ui, file, openers)});
  }
  return result;
}

std::vector<AddedMap> AddMaps(const std::string& projectFile, UserInterface& ui,
                              const std::vector<std::string>& files,
                              const BaseMapOpeners& openers) {
  Database db = Database::Open(projectFile);
  return AddMaps(db, ui, files, openers);
}

bool SelectAndAddMaps(const std::string& projectFile, UserInterface& ui,
                      const BaseMapOpeners& openers) {
  std::string start;
  try {
    start = DefaultDirectories(kSelectBBMPathKey, DirectoryMode::Read);
  } catch (const Error&) {
    // Without the directory memory the dialog starts where the window system says.
  }
  const std::vector<std::string> files = ui.OpenFilesDialog(SelectMapRequest(start));
  if (files.empty()) return false;
  // The directory memory stores the process's current directory; the catalogue
  // does not move it, so the chosen folder is written directly.
  try {
    const std::string defFile = DefaultDirectoriesFile();
    DefaultDirectoriesIn(defFile, kSelectBBMPathKey, DirectoryMode::Write,
                         fs::path(files.front()).parent_path().string());
  } catch (const Error&) {}
  const auto added = AddMaps(projectFile, ui, files, openers);
  return std::any_of(added.begin(), added.end(),
                     [](const AddedMap& a) { return a.outcome == AddOutcome::Added; });
}

// ---------------------------------------------------------------------------
// Pre-scan.

BaseMapLayers PrescanMaps(const std::vector<BaseMapRow>& rows, UserInterface& ui,
                          const BaseMapOpeners& openers) {
  BaseMapLayers layers;
  if (rows.empty()) return layers;
  ui.PleaseWaitShow(ct::kPrescanText, ct::kPrescanWaitWidth);
  try {
    for (const auto& row : rows) {
      std::unique_ptr<BaseMapLayer> layer;
      try {
        layer = openers.Open(row);
      } catch (const UiPortFailure&) {
        throw;
      } catch (const std::exception& e) {
        // The reason closes the box: a map moved away and a map damaged since it
        // was added call for different remedies.
        const bool raster = KindOfMap(row.MapName) == BaseMapKind::Raster;
        ui.MessageBox(
            ct::kErrorAddingTitle,
            {(raster ? ct::kErrorAddingRaster : ct::kErrorAddingVector) + row.MapName, e.what()});
        continue;
      }
      layer->Show = row.Show;
      layers.push_back(std::move(layer));
    }
  } catch (...) {
    ui.PleaseWaitHide();
    throw;
  }
  ui.PleaseWaitHide();
  return layers;
}

BaseMapLayers PrescanMaps(const std::string& projectFile, UserInterface& ui,
                          const BaseMapOpeners& openers) {
  return PrescanMaps(ReadBaseMaps(projectFile), ui, openers);
}

// ---------------------------------------------------------------------------
// Extents.

std::optional<ModelExtents> ModelCheckMapExtents(const BaseMapLayers& layers) {
  return ShownMapExtents(&layers);
}

std::optional<ModelExtents> ModelCheckMapExtents(const std::string& projectFile,
                                                 const BaseMapOpeners& openers) {
  BaseMapLayers layers;
  for (const auto& row : ReadBaseMaps(projectFile)) {
    if (!row.Show) continue;
    try {
      layers.push_back(openers.Open(row));
    } catch (const UiPortFailure&) {
      throw;
    } catch (const std::exception&) {}
  }
  return ModelCheckMapExtents(layers);
}

// ---------------------------------------------------------------------------
// BBM groups.

bool BBMSelect(const std::vector<BaseMapRow>& rows, UserInterface& ui) {
  const bool anyBbm = std::any_of(rows.begin(), rows.end(), [](const BaseMapRow& r) {
    return KindOfMap(r.MapName) == BaseMapKind::Bbm;
  });
  if (!anyBbm) {
    ui.MessageBox(ct::kNoMapsTitle, {ct::kNoMapsText});
    return false;
  }
  ui.Activity(ct::kSelectGroupActivity);
  ui.Feedback(ct::kSelectGroupFeedback);
  return true;
}

bool BBMSelect(const std::string& projectFile, UserInterface& ui) {
  return BBMSelect(ReadBaseMaps(projectFile), ui);
}

}  // namespace tarno
