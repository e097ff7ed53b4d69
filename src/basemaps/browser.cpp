#include "basemaps/browser.h"

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <filesystem>
#include <memory>

#include "basemaps/bbm.h"
#include "core/error.h"
#include "core/text.h"
#include "store/database.h"

namespace tarno {

namespace ct = catalogue_text;
namespace fs = std::filesystem;

namespace {

struct DatasetCloser {
  void operator()(GDALDataset* d) const { GDALClose(d); }
};
using DatasetPtr = std::unique_ptr<GDALDataset, DatasetCloser>;

DatasetPtr OpenDataset(const std::string& path, unsigned flags) {
  GDALAllRegister();
  CPLPushErrorHandler(CPLQuietErrorHandler);
  GDALDataset* d = GDALDataset::FromHandle(
      GDALOpenEx(path.c_str(), flags | GDAL_OF_READONLY, nullptr, nullptr, nullptr));
  CPLPopErrorHandler();
  return DatasetPtr(d);
}

std::string FieldText(OGRFeature& f, int i) {
  if (!f.IsFieldSetAndNotNull(i)) return {};
  return f.GetFieldAsString(i);
}

}  // namespace

std::vector<std::string> ShapeAttributeNames(const std::string& shapefile) {
  std::vector<std::string> names;
  DatasetPtr ds = OpenDataset(shapefile, GDAL_OF_VECTOR);
  if (!ds || ds->GetLayerCount() < 1) return names;
  OGRFeatureDefn* defn = ds->GetLayer(0)->GetLayerDefn();
  for (int i = 0; i < defn->GetFieldCount(); ++i)
    names.emplace_back(defn->GetFieldDefn(i)->GetNameRef());
  return names;
}

// ---------------------------------------------------------------------------
// Options of one map.

void BaseMapBrowserOptions::Load(const BaseMapRow& row) {
  Row = row;
  if (Row.ColorField.empty()) Row.ColorField = ct::kNone;
  if (Row.TextField.empty()) Row.TextField = ct::kNone;
  Kind = KindOfMap(row.MapName);
  Fields = {ct::kNone};
  if (Kind == BaseMapKind::Shape) {
    for (auto& name : ShapeAttributeNames(row.MapName)) Fields.push_back(std::move(name));
  }
  BuildPyramids = false;
  Result = kCancel;
}

void BaseMapBrowserOptions::ChooseColour(UserInterface& ui) {
  if (auto c = ui.ColourDialog(static_cast<std::uint32_t>(Row.Color)))
    Row.Color = static_cast<int>(*c & 0xFFFFFFu);
}

bool BaseMapBrowserOptions::OK(UserInterface& ui) {
  auto known = [&](const std::string& f) {
    return std::any_of(Fields.begin(), Fields.end(),
                       [&](const std::string& g) { return EqualsIgnoreCase(f, g); });
  };
  for (std::string* field : {&Row.ColorField, &Row.TextField}) {
    if (field->empty()) *field = ct::kNone;
    if (!known(*field)) {
      ui.MessageBox(kBadFieldTitle, {"The map " + GetNameFromFile(Row.MapName) +
                                         " has no attribute \"" + *field + "\".",
                                     "Please choose one of the list."});
      return false;
    }
  }
  if (!PyramidsOffered()) BuildPyramids = false;
  Result = kOK;
  return true;
}

// ---------------------------------------------------------------------------
// Attribute table of a shapefile.

void ViewShape::Load(const std::string& shapefile) {
  MapName = shapefile;
  Columns.clear();
  Rows.clear();
  RecordCount = 0;
  GeometryType.clear();
  DatasetPtr ds = OpenDataset(shapefile, GDAL_OF_VECTOR);
  if (!ds || ds->GetLayerCount() < 1) throw Error("The shapefile " + shapefile + " cannot be read");
  OGRLayer* layer = ds->GetLayer(0);
  OGRFeatureDefn* defn = layer->GetLayerDefn();
  GeometryType = OGRGeometryTypeToName(defn->GetGeomType());
  for (int i = 0; i < defn->GetFieldCount(); ++i)
    Columns.emplace_back(defn->GetFieldDefn(i)->GetNameRef());
  RecordCount = layer->GetFeatureCount();
  layer->ResetReading();
  while (Rows.size() < kMaxRecords) {
    std::unique_ptr<OGRFeature> f(layer->GetNextFeature());
    if (!f) break;
    std::vector<std::string> row;
    row.reserve(Columns.size());
    for (int i = 0; i < static_cast<int>(Columns.size()); ++i) row.push_back(FieldText(*f, i));
    Rows.push_back(std::move(row));
  }
}

std::string ViewShape::Title() const { return kTitlePrefix + GetNameFromFile(MapName); }

// ---------------------------------------------------------------------------
// Layers of a CAD file or an image.

void ViewGraphics::Load(const std::string& mapName) {
  MapName = mapName;
  Kind = KindOfMap(mapName);
  Entries.clear();
  Summary.clear();
  if (Kind == BaseMapKind::Raster) {
    DatasetPtr ds = OpenDataset(mapName, GDAL_OF_RASTER);
    if (!ds) throw Error("The image " + mapName + " cannot be read");
    Summary = std::to_string(ds->GetRasterXSize()) + " x " + std::to_string(ds->GetRasterYSize()) +
              " pixels, " + std::to_string(ds->GetRasterCount()) + " band(s), format " +
              ds->GetDriver()->GetDescription();
    double gt[6];
    Summary += ds->GetGeoTransform(gt) == CE_None ? ", georeferenced" : ", not georeferenced";
    for (int b = 1; b <= ds->GetRasterCount(); ++b) {
      GDALRasterBand* band = ds->GetRasterBand(b);
      std::string details = GDALGetDataTypeName(band->GetRasterDataType());
      details += std::string(", ") + GDALGetColorInterpretationName(band->GetColorInterpretation());
      details += ", " + std::to_string(band->GetOverviewCount()) + " overview(s)";
      Entries.push_back({"Band " + std::to_string(b), details});
    }
    return;
  }
  if (Kind != BaseMapKind::Cad && Kind != BaseMapKind::Shape)
    throw Error("The file " + mapName + " is neither a CAD file nor an image");
  DatasetPtr ds = OpenDataset(mapName, GDAL_OF_VECTOR);
  if (!ds) throw Error("The file " + mapName + " cannot be read");
  Summary = std::to_string(ds->GetLayerCount()) + " layer(s), format " +
            ds->GetDriver()->GetDescription();
  for (int i = 0; i < ds->GetLayerCount(); ++i) {
    OGRLayer* layer = ds->GetLayer(i);
    const std::string geometry = OGRGeometryTypeToName(layer->GetGeomType());
    Entries.push_back({layer->GetName(),
                       geometry + ", " + std::to_string(layer->GetFeatureCount()) + " feature(s)"});
  }
}

std::string ViewGraphics::Title() const { return kTitlePrefix + GetNameFromFile(MapName); }

// ---------------------------------------------------------------------------
// The browser.

void MapBrowser::Load() {
  Maps = ReadBaseMaps(projectFile_);
  if (Selected >= static_cast<int>(Maps.size())) Selected = static_cast<int>(Maps.size()) - 1;
}

std::vector<std::string> MapBrowser::ListLines() const {
  std::vector<std::string> lines;
  for (const auto& m : Maps) {
    lines.push_back(GetNameFromFile(m.MapName) + "  (" + KindName(KindOfMap(m.MapName)) + ", " +
                    (m.Show ? "shown" : "hidden") + ")  " + m.MapName);
  }
  return lines;
}

const BaseMapRow* MapBrowser::SelectedMap(UserInterface& ui) {
  if (Selected < 0 || Selected >= static_cast<int>(Maps.size())) {
    ui.MessageBox(kNoSelectionTitle, {kNoSelectionText});
    return nullptr;
  }
  return &Maps[static_cast<std::size_t>(Selected)];
}

bool MapBrowser::AddMaps(UserInterface& ui) {
  const bool added = SelectAndAddMaps(projectFile_, ui, *openers_);
  if (added) {
    Changed = true;
    Load();
    Selected = static_cast<int>(Maps.size()) - 1;
  }
  return added;
}

bool MapBrowser::Remove(UserInterface& ui) {
  const BaseMapRow* map = SelectedMap(ui);
  if (map == nullptr) return false;
  const std::string name = map->MapName;
  if (!ui.Question(kRemoveTitle, {"Remove the map " + name + " from the project?",
                                  "The file itself is not deleted."}))
    return false;
  {
    Database db = Database::Open(projectFile_);
    RemoveBaseMap(db, name);
  }
  Changed = true;
  Load();
  return true;
}

bool MapBrowser::Options(UserInterface& ui) {
  const BaseMapRow* map = SelectedMap(ui);
  if (map == nullptr) return false;
  OptionsDialog.Load(*map);
  ui.ShowModal(OptionsDialog);
  if (OptionsDialog.Result != BaseMapBrowserOptions::kOK) return false;
  {
    Database db = Database::Open(projectFile_);
    UpdateBaseMap(db, OptionsDialog.Row);
  }
  if (OptionsDialog.BuildPyramids) {
    if (!openers_->buildOverviews)
      throw Error("No builder of overviews is available for " + OptionsDialog.Row.MapName);
    ui.PleaseWaitShow("Building pyramids...", ct::kPrescanWaitWidth);
    try {
      openers_->buildOverviews(OptionsDialog.Row.MapName);
    } catch (...) {
      ui.PleaseWaitHide();
      throw;
    }
    ui.PleaseWaitHide();
  }
  Changed = true;
  Load();
  return true;
}

void MapBrowser::View(UserInterface& ui) {
  const BaseMapRow* map = SelectedMap(ui);
  if (map == nullptr) return;
  const std::string name = map->MapName;
  const BaseMapKind kind = KindOfMap(name);
  try {
    if (kind == BaseMapKind::Shape) {
      ShapeDialog.Load(name);
      ui.ShowModal(ShapeDialog);
    } else if (kind == BaseMapKind::Cad || kind == BaseMapKind::Raster) {
      GraphicsDialog.Load(name);
      ui.ShowModal(GraphicsDialog);
    } else if (kind == BaseMapKind::Bbm) {
      // A BBM map shows its header, in the box of the BBM reader; a file it refuses
      // gets the browser's one box.
      BBMap bbm;
      bbm.Connect(name);
      if (!bbm.Connected()) throw Error("The BBM map " + name + " cannot be read");
      bbm.SetUserInterface(&ui);
      bbm.ShowInfo();
    } else {
      ui.MessageBox(kNothingToViewTitle,
                    {"The map " + GetNameFromFile(name) + " is of no kind this program reads."});
    }
  } catch (const UiPortFailure&) {
    throw;
  } catch (const Error& e) {
    ui.MessageBox(kViewErrorTitle, {e.what()});
  }
}

}  // namespace tarno
