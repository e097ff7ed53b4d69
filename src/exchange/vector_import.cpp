#include "exchange/vector_import.h"

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>

#include "basemaps/gdal_support.h"
#include "core/silent_ui.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "core/text.h"
#include "elements/element_ops.h"
#include "exchange/project_crs.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/undo_history.h"

namespace tarno::exchange {

namespace fs = std::filesystem;

namespace {

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return s;
}

std::string Quote(const std::string& s) { return "'" + s + "'"; }

// The named roles of each kind. A role sets its fields to the attribute's value and
// the fields of `alsoSets` to their values.
std::vector<FieldRole> NamedRoles(ElementKind kind) {
  switch (kind) {
    case ElementKind::Linesink:
      return {{"label", "Label", {"Label"}, {}, true},
              {"head", "Head (both ends)", {"StartingHead", "EndingHead"}, {"HeadSpecified=1"}},
              {"discharge",
               "Discharge (both ends)",
               {"StartingHead", "EndingHead"},
               {"HeadSpecified=0"}},
              {"resistance", "Resistance", {"Resistance"}, {}},
              {"width", "Width", {"Width"}, {}},
              {"depth", "Depth", {"Depth"}, {}}};
    case ElementKind::Barrier:
      return {{"label", "Label", {"Label"}, {}, true},
              {"conductivity", "Hydraulic conductivity", {"HydCond"}, {}},
              {"thickness", "Thickness", {"Thickness"}, {}},
              {"porosity", "Porosity", {"Porosity"}, {}},
              {"bottom", "Bottom elevation", {"BottomElevation"}, {}}};
    case ElementKind::Inhomogeneity:
      return {{"label", "Label", {"Label"}, {}, true},
              {"conductivity", "Hydraulic conductivity", {"HydCond"}, {"ChangeK=1"}},
              {"recharge", "Recharge", {"Recharge"}, {"ChangeR=1"}},
              {"porosity", "Porosity", {"Porosity"}, {"ChangeP=1"}},
              {"bottom", "Bottom elevation", {"BottomElevation"}, {"ChangeB=1"}},
              {"head", "Average head", {"AverageHead"}, {"ChangeA=1"}}};
    case ElementKind::Well:
      return {{"label", "Label", {"Label"}, {}, true},
              {"discharge", "Discharge", {"Head"}, {"HeadSpecified=0"}},
              {"head", "Head", {"Head"}, {"HeadSpecified=1"}},
              {"radius", "Radius", {"Radius"}, {}},
              {"top", "Top of screen", {"TopElev"}, {}},
              {"bottom", "Bottom of screen", {"BottomElev"}, {}}};
    default: return {};
  }
}

std::string KindPlural(ElementKind kind) {
  switch (kind) {
    case ElementKind::Linesink: return "line-sink strings";
    case ElementKind::Barrier: return "barriers";
    case ElementKind::Inhomogeneity: return "inhomogeneities";
    case ElementKind::Well: return "wells";
    default: return std::string(Info(kind).word) + " elements";
  }
}

// A port that answers for the element checks during an import: it keeps what they
// say, so that a refusal becomes the reason in the report, and answers each
// question with its first button.
class CollectingPort : public SilentUserInterface {
 public:
  Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                    Buttons buttons, Icon) override {
    std::string text = title + ":";
    for (const auto& l : lines)
      if (!TrimST(l).empty()) text += " " + TrimST(l);
    said.push_back(text);
    return AnswersOf(buttons).front();
  }

  std::vector<std::string> said;
};

using Points = std::vector<MapPoint>;

struct Part {
  enum Shape { Point, Line, Ring } shape;
  Points points;  // a ring without its closing point
};

void AddPoints(const OGRSimpleCurve& curve, Points& points) {
  for (int i = 0; i < curve.getNumPoints(); ++i) {
    const MapPoint p{curve.getX(i), curve.getY(i)};
    // A repeated point makes a segment of no length.
    if (points.empty() || points.back() != p) points.push_back(p);
  }
}

// The parts of a geometry, multi-geometries and collections split.
void Parts(const OGRGeometry* g, std::vector<Part>& parts, std::string& unknown) {
  if (g == nullptr || g->IsEmpty()) return;
  const OGRwkbGeometryType flat = wkbFlatten(g->getGeometryType());
  if (flat == wkbPoint) {
    const auto* p = g->toPoint();
    parts.push_back({Part::Point, {{p->getX(), p->getY()}}});
  } else if (flat == wkbLineString) {
    Part part{Part::Line, {}};
    AddPoints(*g->toLineString(), part.points);
    parts.push_back(std::move(part));
  } else if (flat == wkbPolygon) {
    const OGRLinearRing* ring = g->toPolygon()->getExteriorRing();
    Part part{Part::Ring, {}};
    if (ring != nullptr) AddPoints(*ring, part.points);
    if (part.points.size() > 1 && part.points.front() == part.points.back()) part.points.pop_back();
    parts.push_back(std::move(part));
  } else if (OGR_GT_IsSubClassOf(flat, wkbGeometryCollection)) {
    for (const OGRGeometry* sub : *g->toGeometryCollection()) Parts(sub, parts, unknown);
  } else if (OGR_GT_IsCurve(flat) || OGR_GT_IsSurface(flat)) {
    std::unique_ptr<OGRGeometry> linear(g->getLinearGeometry());
    Parts(linear.get(), parts, unknown);
  } else {
    unknown = OGRGeometryTypeToName(g->getGeometryType());
  }
}

// A label as the element checks take it: letters, digits, '_', '-' and '.', at
// most 20 characters.
std::string LabelFrom(const std::string& text) {
  std::string out;
  for (unsigned char c : text) {
    if (std::isalnum(c) || c == '_' || c == '-' || c == '.')
      out += static_cast<char>(c);
    else if (c == ' ')
      out += '_';
  }
  return out.substr(0, 20);
}

struct Mapped {
  FieldRole role;
  int index;  // the attribute's field index in the layer
  std::string attribute;
};

std::string ValueText(const OGRFeature& f, int index) {
  const OGRFieldType t = f.GetFieldDefnRef(index)->GetType();
  if (t == OFTReal) {
    char buffer[40];
    std::snprintf(buffer, sizeof buffer, "%.17g", f.GetFieldAsDouble(index));
    return buffer;
  }
  return TrimST(f.GetFieldAsString(index));
}

GdalDatasetPtr OpenVector(const std::string& file) {
  EnsureGdalRegistered();
  GdalErrorCapture capture;
  GdalDatasetPtr ds(GDALDataset::Open(file.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
  if (!ds) {
    if (!fs::exists(file)) throw Error("The file " + file + " does not exist");
    throw Error("The file " + file + " is no vector file GDAL reads" + capture.Detail());
  }
  return ds;
}

}  // namespace

const std::vector<ElementKind>& ImportKinds() {
  static const std::vector<ElementKind> kinds = {ElementKind::Linesink, ElementKind::Barrier,
                                                 ElementKind::Inhomogeneity, ElementKind::Well};
  return kinds;
}

std::vector<FieldRole> RolesOf(ElementKind kind) {
  std::vector<FieldRole> roles = NamedRoles(kind);
  const KindInfo& info = Info(kind);
  const TableDef* table = FindTable(info.table);
  if (table == nullptr) return roles;
  for (const FieldDef& f : table->fields) {
    const std::string name(f.name);
    if (EqualsIgnoreCase(name, info.key)) continue;
    // Keys of other elements of the project the file came from.
    if (EqualsIgnoreCase(name, "RoutePID") || EqualsIgnoreCase(name, "RouteVID")) continue;
    const bool named = std::any_of(roles.begin(), roles.end(), [&](const FieldRole& r) {
      return EqualsIgnoreCase(r.role, name);
    });
    if (named) continue;
    roles.push_back({name, name, {name}, {}, f.type == FieldType::Text});
  }
  return roles;
}

std::optional<FieldRole> FindRole(ElementKind kind, const std::string& role) {
  for (FieldRole& r : RolesOf(kind))
    if (EqualsIgnoreCase(r.role, role)) return r;
  return std::nullopt;
}

std::optional<ElementKind> KindForGeometry(const std::string& geometry) {
  const std::string g = Lower(geometry);
  if (g.find("polygon") != std::string::npos || g.find("surface") != std::string::npos)
    return ElementKind::Inhomogeneity;
  if (g.find("line") != std::string::npos || g.find("curve") != std::string::npos)
    return ElementKind::Linesink;
  if (g.find("point") != std::string::npos) return ElementKind::Well;
  return std::nullopt;
}

std::optional<ElementKind> KindForLayer(const VectorLayerInfo& layer) {
  static const std::vector<std::pair<std::string, ElementKind>> exported = {
      {"linesink_strings", ElementKind::Linesink},
      {"barriers", ElementKind::Barrier},
      {"inhomogeneities", ElementKind::Inhomogeneity},
      {"wells", ElementKind::Well}};
  for (const auto& [name, kind] : exported)
    if (EqualsIgnoreCase(layer.name, name)) return kind;
  return KindForGeometry(layer.geometry);
}

namespace {

// The columns of the shapefile export (dBASE names, ten letters at most) that stand
// for a field of another name. Without them a wells file of the export would come
// back with HEAD taken by the "head" role, every well head-specified, and HEADSPEC
// unused.
struct ShapeColumnAlias {
  ElementKind kind;
  const char* field;
  const char* column;
};
constexpr ShapeColumnAlias kShapeColumnAliases[] = {
    {ElementKind::Well, "HeadSpecified", "HEADSPEC"},
    {ElementKind::Well, "NParticles", "PARTICLES"},
    {ElementKind::Linesink, "HeadSpecified", "HEADSPEC"},
    {ElementKind::Linesink, "StartingHead", "STARTHEAD"},
    {ElementKind::Linesink, "EndingHead", "ENDHEAD"},
    {ElementKind::Linesink, "Resistance", "RESIST"},
    {ElementKind::Inhomogeneity, "BottomElevation", "BOTTOMELEV"},
    {ElementKind::Inhomogeneity, "AverageHead", "AVGHEAD"},
    {ElementKind::Barrier, "BottomElevation", "BOTTOMELEV"},
};

}  // namespace

std::map<std::string, std::string> ProposedMapping(ElementKind kind, const VectorLayerInfo& layer) {
  std::map<std::string, std::string> mapping;
  for (const FieldRole& role : RolesOf(kind)) {
    for (const std::string& a : layer.attributes) {
      if (EqualsIgnoreCase(a, role.role) || (role.fields.size() == 1 && role.alsoSets.empty() &&
                                             EqualsIgnoreCase(a, role.fields.front()))) {
        mapping[role.role] = a;
        break;
      }
    }
  }
  // A field role the names left unmapped takes the shapefile export's column for it.
  for (const ShapeColumnAlias& alias : kShapeColumnAliases) {
    if (alias.kind != kind) continue;
    const std::optional<FieldRole> role = FindRole(kind, alias.field);
    if (!role || mapping.count(role->role) > 0) continue;
    for (const std::string& a : layer.attributes) {
      if (EqualsIgnoreCase(a, alias.column)) {
        mapping[role->role] = a;
        break;
      }
    }
  }
  return mapping;
}

std::vector<VectorLayerInfo> ReadVectorLayers(const std::string& file) {
  GdalDatasetPtr ds = OpenVector(file);
  std::vector<VectorLayerInfo> layers;
  for (int i = 0; i < ds->GetLayerCount(); ++i) {
    OGRLayer* l = ds->GetLayer(i);
    VectorLayerInfo info;
    info.name = l->GetName();
    info.geometry = OGRGeometryTypeToName(l->GetGeomType());
    info.features = l->GetFeatureCount(FALSE);
    OGRFeatureDefn* defn = l->GetLayerDefn();
    for (int f = 0; f < defn->GetFieldCount(); ++f)
      info.attributes.emplace_back(defn->GetFieldDefn(f)->GetNameRef());
    if (const OGRSpatialReference* srs = l->GetSpatialRef(); srs != nullptr && !srs->IsEmpty())
      info.crsName = srs->GetName() != nullptr ? srs->GetName() : "unnamed";
    layers.push_back(std::move(info));
  }
  return layers;
}

VectorImportReport ImportVectorLayer(Database& db, const fs::path& projectFile,
                                     const VectorImportOptions& o) {
  VectorImportReport report;
  report.file = o.file;
  report.kind = o.kind;
  if (std::find(ImportKinds().begin(), ImportKinds().end(), o.kind) == ImportKinds().end())
    throw Error(
        "A GIS vector file gives line-sink strings, barriers, inhomogeneities or wells, not " +
        std::string(Info(o.kind).word) + " elements");
  GdalDatasetPtr ds = OpenVector(o.file);
  OGRLayer* layer = nullptr;
  if (o.layer.empty()) {
    if (ds->GetLayerCount() > 0) layer = ds->GetLayer(0);
  } else {
    layer = ds->GetLayerByName(o.layer.c_str());
  }
  if (layer == nullptr)
    throw Error(o.layer.empty() ? "The file " + o.file + " has no layer"
                                : "The file " + o.file + " has no layer " + Quote(o.layer));
  report.layer = layer->GetName();

  // The mapping, checked whole before anything is read.
  OGRFeatureDefn* defn = layer->GetLayerDefn();
  std::vector<Mapped> mapped;
  for (const FieldRole& role : RolesOf(o.kind)) {
    for (const auto& [name, attribute] : o.mapping) {
      if (!EqualsIgnoreCase(name, role.role) || attribute.empty()) continue;
      const int index = defn->GetFieldIndex(attribute.c_str());
      if (index < 0)
        throw Error("The layer " + Quote(report.layer) + " of " + o.file + " has no attribute " +
                    Quote(attribute) + " (for " + role.role + ")");
      mapped.push_back({role, index, attribute});
    }
  }
  for (const auto& [name, attribute] : o.mapping) {
    if (!FindRole(o.kind, name))
      throw Error("A " + std::string(Info(o.kind).name) + " has no field or role " + Quote(name) +
                  " (mapped to " + Quote(attribute) + ")");
  }
  const bool closedMapped = std::any_of(mapped.begin(), mapped.end(), [](const Mapped& m) {
    return EqualsIgnoreCase(m.role.role, "Closed");
  });

  // Reprojection, when both sides know their system.
  std::unique_ptr<OGRCoordinateTransformation> transform;
  const std::optional<ProjectCrs> projectCrs = FindProjectCrs(db, projectFile);
  const OGRSpatialReference* layerSrs = layer->GetSpatialRef();
  const bool layerHasCrs = layerSrs != nullptr && !layerSrs->IsEmpty();
  if (layerHasCrs && projectCrs) {
    OGRSpatialReference source(*layerSrs);
    source.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    OGRSpatialReference target = SpatialReferenceOf(projectCrs->wkt);
    if (source.IsSame(&target)) {
      report.notes.push_back("The layer is in the project's coordinate system (" +
                             projectCrs->name + ").");
    } else {
      GdalErrorCapture capture;
      transform.reset(OGRCreateCoordinateTransformation(&source, &target));
      if (!transform)
        throw Error("No transformation from " + std::string(source.GetName()) + " to " +
                    projectCrs->name + capture.Detail());
      report.notes.push_back("Coordinates reprojected from " + std::string(source.GetName()) +
                             " to " + projectCrs->name + ".");
    }
  } else if (layerHasCrs) {
    report.notes.push_back("The project has no coordinate reference system: the coordinates in " +
                           std::string(layerSrs->GetName()) + " are taken as map coordinates.");
  } else {
    report.notes.push_back(
        "The layer has no coordinate reference system: its coordinates are taken as map "
        "coordinates.");
  }

  // The whole import is one entry of the edit history and one transaction of the
  // project file (one write to the disk, not one per element); each element is a
  // transaction of its own inside it, so that a refused one leaves the others. A
  // failure of the file itself takes the whole import back.
  UndoScope undo(db, "Import GIS Vector File");
  Transaction all(db);
  layer->ResetReading();
  GdalErrorCapture quiet;
  for (std::unique_ptr<OGRFeature> f(layer->GetNextFeature()); f;
       f.reset(layer->GetNextFeature())) {
    ++report.features;
    const std::int64_t fid = f->GetFID();
    auto skip = [&](const std::string& why) { report.skipped.push_back({fid, why}); };

    // The field texts of the mapping.
    std::vector<std::string> texts;
    std::string label;
    std::string missing;
    for (const Mapped& m : mapped) {
      if (!f->IsFieldSetAndNotNull(m.index)) {
        missing = "the attribute " + Quote(m.attribute) + " (" + m.role.role + ") has no value";
        break;
      }
      std::string value = ValueText(*f, m.index);
      if (value.empty() && !m.role.text) {
        missing = "the attribute " + Quote(m.attribute) + " (" + m.role.role + ") has no value";
        break;
      }
      if (m.role.role == "label") {
        if (TrimST(value).empty()) {
          missing = "the attribute " + Quote(m.attribute) + " (label) is empty";
          break;
        }
        // Blanks would make the label one the element checks refuse.
        std::replace(value.begin(), value.end(), ' ', '_');
        label = value;
        continue;
      }
      for (const std::string& field : m.role.fields) texts.push_back(field + "=" + value);
      for (const std::string& also : m.role.alsoSets) texts.push_back(also);
    }
    if (!missing.empty()) {
      skip(missing);
      continue;
    }
    if (label.empty()) label = LabelFrom(report.layer + "_" + std::to_string(fid));

    std::vector<Part> parts;
    std::string unknown;
    Parts(f->GetGeometryRef(), parts, unknown);
    if (parts.empty()) {
      skip(unknown.empty() ? "it has no geometry" : "its geometry " + unknown + " is not imported");
      continue;
    }
    for (std::size_t n = 0; n < parts.size(); ++n) {
      Part& part = parts[n];
      const std::string partLabel = parts.size() > 1 ? label + "_" + std::to_string(n + 1) : label;
      const std::string where = parts.size() > 1 ? "part " + std::to_string(n + 1) + ": " : "";
      std::vector<std::string> fields = texts;
      // The geometry the kind takes.
      const bool closedLine = part.shape == Part::Line && part.points.size() > 2 &&
                              part.points.front() == part.points.back();
      switch (o.kind) {
        case ElementKind::Well:
          if (part.shape != Part::Point) {
            skip(where + "a " + std::string(part.shape == Part::Line ? "line" : "polygon") +
                 " cannot make a well");
            continue;
          }
          break;
        case ElementKind::Inhomogeneity:
          if (part.shape == Part::Point || (part.shape == Part::Line && !closedLine)) {
            skip(where + std::string(part.shape == Part::Point ? "a point" : "an open line") +
                 " cannot make an inhomogeneity");
            continue;
          }
          if (closedLine) part.points.pop_back();
          break;
        case ElementKind::Linesink:
        case ElementKind::Barrier:
          if (part.shape == Part::Point) {
            skip(where + "a point cannot make a " + Lower(std::string(Info(o.kind).name)));
            continue;
          }
          if (o.kind == ElementKind::Barrier && (part.shape == Part::Ring || closedLine)) {
            // A closed barrier keeps its vertices once; Closed says it is closed.
            if (closedLine) part.points.pop_back();
            if (!closedMapped) fields.push_back("Closed=1");
          } else if (part.shape == Part::Ring && !part.points.empty()) {
            // A line-sink string around an area ends where it began.
            part.points.push_back(part.points.front());
          }
          break;
        default: break;
      }
      if (transform) {
        bool ok = true;
        for (MapPoint& p : part.points) ok = ok && transform->Transform(1, &p.first, &p.second);
        if (!ok) {
          skip(where + "its coordinates cannot be reprojected");
          continue;
        }
      }
      fields.push_back("Label=" + partLabel);
      CollectingPort port;
      const std::optional<std::int64_t> key = AddElement(db, o.kind, part.points, fields, port);
      if (!key) {
        std::string why = port.said.empty() ? "the element was refused" : port.said.back();
        skip(where + why);
        continue;
      }
      report.labels.push_back(partLabel);
    }
  }
  all.Commit();
  if (!report.labels.empty()) undo.Commit();
  return report;
}

std::vector<std::string> ImportSummaryLines(const VectorImportReport& r) {
  std::vector<std::string> lines;
  lines.push_back("Imported " + std::to_string(r.Taken()) + " " + KindPlural(r.kind) + " from " +
                  std::to_string(r.features) + " features of the layer " + Quote(r.layer) + " in " +
                  r.file + ".");
  if (!r.skipped.empty()) {
    lines.push_back("Skipped " + std::to_string(r.skipped.size()) + ":");
    for (const SkippedFeature& s : r.skipped)
      lines.push_back("Feature " + std::to_string(s.fid) + ": " + s.reason);
  }
  for (const std::string& n : r.notes) lines.push_back(n);
  return lines;
}

// --- The dialog ----------------------------------------------------------------

void VectorImport::Load(const std::string& f) {
  file = f;
  layers = ReadVectorLayers(f);
  layer = -1;
  mapping.clear();
  if (!layers.empty()) ChooseLayer(0);
}

void VectorImport::ChooseLayer(int index) {
  if (index < 0 || index >= static_cast<int>(layers.size())) return;
  layer = index;
  if (auto k = KindForLayer(layers[index])) kind = *k;
  ProposeMapping();
}

void VectorImport::ChooseKind(ElementKind k) {
  kind = k;
  ProposeMapping();
}

void VectorImport::ProposeMapping() {
  mapping.clear();
  if (const VectorLayerInfo* l = CurrentLayer()) mapping = ProposedMapping(kind, *l);
}

void VectorImport::Map(const std::string& role, const std::string& attribute) {
  if (attribute.empty())
    mapping.erase(role);
  else
    mapping[role] = attribute;
}

std::string VectorImport::AttributeOf(const std::string& role) const {
  auto it = mapping.find(role);
  return it == mapping.end() ? "" : it->second;
}

const VectorLayerInfo* VectorImport::CurrentLayer() const {
  if (layer < 0 || layer >= static_cast<int>(layers.size())) return nullptr;
  return &layers[layer];
}

bool VectorImport::OK(UserInterface& ui) {
  using namespace vector_import_text;
  const VectorLayerInfo* l = CurrentLayer();
  if (l == nullptr) {
    ui.MessageBox(kNoLayerTitle, {kNoLayer}, Buttons::OK, Icon::Exclamation);
    return false;
  }
  for (const auto& [role, attribute] : mapping) {
    if (!FindRole(kind, role)) {
      ui.MessageBox(
          kBadMappingTitle,
          {"A " + std::string(Info(kind).name) + " has no field or role " + Quote(role) + "."},
          Buttons::OK, Icon::Exclamation);
      return false;
    }
    if (std::find(l->attributes.begin(), l->attributes.end(), attribute) == l->attributes.end()) {
      ui.MessageBox(kBadMappingTitle,
                    {"The layer " + Quote(l->name) + " has no attribute " + Quote(attribute) + "."},
                    Buttons::OK, Icon::Exclamation);
      return false;
    }
  }
  Result = 1;
  return true;
}

VectorImportOptions VectorImport::Options() const {
  VectorImportOptions o;
  o.file = file;
  if (const VectorLayerInfo* l = CurrentLayer()) o.layer = l->name;
  o.kind = kind;
  o.mapping = mapping;
  return o;
}

bool ToolsImportVector(UserInterface& ui, const std::string& projectFile) {
  using namespace vector_import_text;
  bool imported = false;
  RunOperation(ui, "ToolsImportVector", [&] {
    FileDialogRequest request;
    request.title = kOpenTitle;
    request.filter = kFilter;
    request.initialDirectory = fs::path(projectFile).parent_path().string();
    const std::optional<std::string> chosen = ui.OpenFileDialog(request);
    if (!chosen || chosen->empty()) return;
    VectorImport dialog;
    try {
      dialog.Load(*chosen);
    } catch (const Error& e) {
      ui.MessageBox(kCannotOpenTitle, {e.what()}, Buttons::OK, Icon::Exclamation);
      return;
    }
    if (dialog.layers.empty()) {
      ui.MessageBox(kNoLayerTitle, {kNoLayer}, Buttons::OK, Icon::Exclamation);
      return;
    }
    ui.ShowModal(dialog);
    if (dialog.Result != 1) return;
    Database db = Database::Open(projectFile);
    ui.PleaseWaitShow(kWait, 3000);
    VectorImportReport report;
    try {
      report = ImportVectorLayer(db, projectFile, dialog.Options());
    } catch (...) {
      ui.PleaseWaitHide();
      throw;
    }
    ui.PleaseWaitHide();
    ui.MessageBox(kSummaryTitle, ImportSummaryLines(report));
    imported = report.Taken() > 0;
  });
  return imported;
}

}  // namespace tarno::exchange
