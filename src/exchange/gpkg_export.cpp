#include "exchange/gpkg_export.h"

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <map>
#include <memory>

#include "basemaps/gdal_support.h"
#include "core/coords.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "exchange/project_crs.h"
#include "solver/command_file.h"
#include "solver/plot_files.h"
#include "store/database.h"
#include "store/schema.h"

namespace tarno::exchange {

namespace fs = std::filesystem;

namespace {

// One element layer: its name, its kind and the shape of its features.
struct ElementLayer {
  const char* name;
  ElementKind kind;
  OGRwkbGeometryType type;
};

const std::vector<ElementLayer>& ElementLayers() {
  static const std::vector<ElementLayer> layers = {
      {"wells", ElementKind::Well, wkbPoint},
      {"linesink_strings", ElementKind::Linesink, wkbLineString},
      {"barriers", ElementKind::Barrier, wkbLineString},
      {"inhomogeneities", ElementKind::Inhomogeneity, wkbPolygon},
      {"lakes", ElementKind::Lake, wkbPolygon},
      {"test_points", ElementKind::TestPoint, wkbPoint},
      {"particles", ElementKind::Particle, wkbPoint},
      {"flux_lines", ElementKind::FluxLine, wkbLineString},
      {"boundaries", ElementKind::Domain, wkbPolygon},
      {"capture_zones", ElementKind::Capzone, wkbPolygon},
      {"text_labels", ElementKind::Text, wkbPoint},
      {"uniform_flow", ElementKind::UniformFlow, wkbPoint},
  };
  return layers;
}

OGRFieldType OgrType(FieldType t, OGRFieldSubType& sub) {
  sub = OFSTNone;
  switch (t) {
    case FieldType::Boolean: sub = OFSTBoolean; return OFTInteger;
    case FieldType::Integer: sub = OFSTInt16; return OFTInteger;
    case FieldType::Long: return OFTInteger;
    case FieldType::Double: return OFTReal;
    case FieldType::Date: return OFTDateTime;
    case FieldType::Text: return OFTString;
  }
  return OFTString;
}

// The writer of one file: the dataset, its system, and the layers as they are made.
class GpkgWriter {
 public:
  GpkgWriter(const fs::path& file, const std::optional<ProjectCrs>& crs) : file_(file) {
    EnsureGdalRegistered();
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GPKG");
    if (driver == nullptr) throw Error("GDAL has no GeoPackage driver");
    std::error_code ec;
    fs::remove(file, ec);
    if (fs::exists(file)) throw Error("The file " + file.string() + " cannot be replaced");
    GdalErrorCapture capture;
    ds_.reset(driver->Create(file.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    if (!ds_) throw Error("Cannot create the GeoPackage " + file.string() + capture.Detail());
    if (crs) {
      srs_ = std::make_unique<OGRSpatialReference>(SpatialReferenceOf(crs->wkt));
    } else {
      // Without a system GDAL would mark the layers "undefined geographic", and GIS
      // programs would read map metres as degrees: the GeoPackage's undefined
      // Cartesian system says what they are.
      srs_ = std::make_unique<OGRSpatialReference>();
      srs_->SetFromUserInput("LOCAL_CS[\"Undefined Cartesian SRS\"]");
    }
  }

  OGRLayer* NewLayer(const std::string& name, OGRwkbGeometryType type) {
    GdalErrorCapture capture;
    OGRLayer* layer = ds_->CreateLayer(name.c_str(), srs_.get(), type, nullptr);
    if (layer == nullptr) Fail("Cannot create the layer " + name, capture);
    return layer;
  }

  void AddField(OGRLayer* layer, const std::string& name, OGRFieldType type,
                OGRFieldSubType sub = OFSTNone, int width = 0) {
    OGRFieldDefn defn(name.c_str(), type);
    defn.SetSubType(sub);
    if (width > 0) defn.SetWidth(width);
    GdalErrorCapture capture;
    if (layer->CreateField(&defn) != OGRERR_NONE)
      Fail("Cannot add the field " + name + " to the layer " + layer->GetName(), capture);
  }

  void Write(OGRLayer* layer, OGRFeature& feature) {
    GdalErrorCapture capture;
    if (layer->CreateFeature(&feature) != OGRERR_NONE)
      Fail("Cannot write a feature of the layer " + std::string(layer->GetName()), capture);
  }

  void Begin() { ds_->StartTransaction(); }
  void Commit() {
    GdalErrorCapture capture;
    if (ds_->CommitTransaction() != OGRERR_NONE) Fail("Cannot write the layers", capture);
  }
  void Close() {
    GdalErrorCapture capture;
    GDALDataset* ds = ds_.release();
    GDALClose(GDALDataset::ToHandle(ds));
    if (CPLGetLastErrorType() >= CE_Failure)
      throw Error("Cannot finish the GeoPackage " + file_.string() + capture.Detail());
  }

 private:
  [[noreturn]] void Fail(const std::string& what, const GdalErrorCapture& capture) {
    throw Error(what + " in " + file_.string() + capture.Detail());
  }

  fs::path file_;
  GdalDatasetPtr ds_;
  std::unique_ptr<OGRSpatialReference> srs_;
};

void SetValue(OGRFeature& f, int index, const Value& v) {
  if (std::holds_alternative<std::monostate>(v)) {
    f.SetFieldNull(index);
  } else if (const auto* i = std::get_if<std::int64_t>(&v)) {
    f.SetField(index, static_cast<GIntBig>(*i));
  } else if (const auto* d = std::get_if<double>(&v)) {
    f.SetField(index, *d);
  } else {
    f.SetField(index, std::get<std::string>(v).c_str());
  }
}

// The geometry of an element in map coordinates.
std::unique_ptr<OGRGeometry> GeometryOf(const Element& e, OGRwkbGeometryType type) {
  if (type == wkbPoint) return std::make_unique<OGRPoint>(e.X(), e.Y());
  auto line = std::make_unique<OGRLineString>();
  for (const Vertex& v : e.vertices) line->addPoint(v.X, v.Y);
  if (type == wkbLineString) {
    const bool closedBarrier = e.kind == ElementKind::Barrier && e.row.Integer("Closed") != 0;
    if (closedBarrier && !e.vertices.empty())
      line->addPoint(e.vertices.front().X, e.vertices.front().Y);
    return line;
  }
  auto ring = std::make_unique<OGRLinearRing>();
  for (const Vertex& v : e.vertices) ring->addPoint(v.X, v.Y);
  ring->closeRings();
  auto polygon = std::make_unique<OGRPolygon>();
  polygon->addRingDirectly(ring.release());
  return polygon;
}

struct TestPointResult {
  double modelHead = 0, residual = 0, modelFlow = 0;
};

std::map<std::int64_t, TestPointResult> LoadTestPointResults(Database& db) {
  std::map<std::int64_t, TestPointResult> results;
  Statement st = db.Prepare("select VID, ModelHead, Difference, ModelFlow from TPResults");
  while (st.Step()) {
    results[st.GetInt64(0)] = {st.GetDouble(1), st.GetDouble(2),
                               st.IsNull(3) ? 0.0 : st.GetDouble(3)};
  }
  return results;
}

std::int64_t WriteElementLayer(GpkgWriter& w, Database& db, const ElementLayer& layerDef,
                               const std::map<std::int64_t, TestPointResult>& tp,
                               std::vector<std::string>& skipped) {
  OGRLayer* layer = w.NewLayer(layerDef.name, layerDef.type);
  const KindInfo& info = Info(layerDef.kind);
  // The fields: those of the table, or the uniform flow's of the Model row.
  std::vector<std::pair<std::string, const FieldDef*>> fields;
  if (layerDef.kind == ElementKind::UniformFlow) {
    const TableDef* model = FindTable("Model");
    for (std::string_view name : UniformFlowFields())
      fields.emplace_back(std::string(name), FindField(*model, name));
  } else {
    const TableDef* table = FindTable(info.table);
    for (const FieldDef& f : table->fields)
      if (!EqualsIgnoreCase(f.name, info.key)) fields.emplace_back(std::string(f.name), &f);
  }
  for (const auto& [name, def] : fields) {
    OGRFieldSubType sub;
    const OGRFieldType type = OgrType(def->type, sub);
    w.AddField(layer, name, type, sub, def->type == FieldType::Text ? def->size : 0);
  }
  const bool testPoints = layerDef.kind == ElementKind::TestPoint;
  if (testPoints) {
    w.AddField(layer, "ModelHead", OFTReal);
    w.AddField(layer, "Residual", OFTReal);
    w.AddField(layer, "ModelFlow", OFTReal);
  }

  std::vector<Element> elements;
  if (layerDef.kind == ElementKind::UniformFlow) {
    if (auto u = LoadUniformFlow(db)) elements.push_back(std::move(*u));
  } else {
    std::vector<SkippedElement> left;
    elements = LoadAll(db, layerDef.kind, &left);
    for (const SkippedElement& s : left)
      skipped.push_back(std::string(layerDef.name) + ": " + s.label + ": " + s.reason);
  }
  std::int64_t count = 0, number = 0;
  for (const Element& e : elements) {
    OGRFeature feature(layer->GetLayerDefn());
    ++number;
    feature.SetFID(info.key.empty() ? number : e.key);
    for (std::size_t i = 0; i < fields.size(); ++i)
      SetValue(feature, static_cast<int>(i), e.row.Get(fields[i].first));
    if (testPoints) {
      const int first = static_cast<int>(fields.size());
      if (auto r = tp.find(e.key); r != tp.end()) {
        feature.SetField(first, r->second.modelHead);
        feature.SetField(first + 1, r->second.residual);
        feature.SetField(first + 2, r->second.modelFlow);
      } else {
        for (int k = 0; k < 3; ++k) feature.SetFieldNull(first + k);
      }
    }
    feature.SetGeometryDirectly(GeometryOf(e, layerDef.type).release());
    w.Write(layer, feature);
    ++count;
  }
  return count;
}

std::int64_t WriteContours(GpkgWriter& w, const fs::path& ctr, const ModelFrame& frame) {
  OGRLayer* layer = w.NewLayer("contours", wkbLineString);
  w.AddField(layer, "Level", OFTReal);
  if (ctr.empty()) return 0;
  std::int64_t count = 0;
  for (const ContourPolyline& c : ReadContourFile(ctr)) {
    if (c.points.size() < 2) continue;
    OGRFeature feature(layer->GetLayerDefn());
    feature.SetField(0, c.level);
    auto line = std::make_unique<OGRLineString>();
    for (const PlotPoint& p : c.points) line->addPoint(MToW_X(frame, p.x), MToW_Y(frame, p.y));
    feature.SetGeometryDirectly(line.release());
    w.Write(layer, feature);
    ++count;
  }
  return count;
}

std::int64_t WritePathlines(GpkgWriter& w, const fs::path& pth, const ModelFrame& frame) {
  OGRLayer* layer = w.NewLayer("pathlines", wkbLineStringZM);
  w.AddField(layer, "Label", OFTString);
  w.AddField(layer, "Points", OFTInteger);
  if (pth.empty()) return 0;
  std::int64_t count = 0;
  for (const Pathline& path : ReadPathFile(pth)) {
    // A path of one point is no line (the map draws none either).
    if (path.points.size() < 2) continue;
    OGRFeature feature(layer->GetLayerDefn());
    feature.SetField(0, path.label.c_str());
    feature.SetField(1, static_cast<int>(path.points.size()));
    auto line = std::make_unique<OGRLineString>();
    for (const PathPoint& p : path.points)
      line->addPoint(MToW_X(frame, p.x), MToW_Y(frame, p.y), p.value2, p.value1);
    feature.SetGeometryDirectly(line.release());
    w.Write(layer, feature);
    ++count;
  }
  return count;
}

}  // namespace

std::int64_t GpkgExportReport::Count(const std::string& layer) const {
  for (const auto& l : layers)
    if (l.layer == layer) return l.features;
  return -1;
}

const std::vector<std::string>& GpkgLayerNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> n;
    for (const auto& l : ElementLayers()) n.emplace_back(l.name);
    n.emplace_back("contours");
    n.emplace_back("pathlines");
    return n;
  }();
  return names;
}

GpkgExportReport WriteGeoPackage(Database& db, const fs::path& projectFile, const fs::path& file) {
  GpkgExportReport report;
  const std::optional<ProjectCrs> crs = FindProjectCrs(db, projectFile);
  if (crs) {
    report.crsName = crs->name;
    report.crsSource = crs->source;
  }
  const AquiferFrame aquifer = LoadAquiferFrame(db);
  const ModelFrame frame = ModelRestoreModelOrigin(
      db, BasemapConvertFactor(aquifer.basemapMeters, aquifer.computeMeters));
  fs::path dir;
  std::string base;
  {
    Statement st = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
    if (st.Step()) {
      base = st.GetText(0);
      dir = st.GetText(1);
    }
  }
  const auto solverFile = [&](const char* extension) {
    return base.empty() ? fs::path() : FindFileNoCase(dir, base + extension);
  };
  // The results files are read before anything is written, so that a bad one leaves
  // no half-made file behind.
  const fs::path ctr = solverFile(".CTR");
  const fs::path pth = solverFile(".PTH");
  if (!ctr.empty()) ReadContourFile(ctr);
  if (!pth.empty()) ReadPathFile(pth);

  const auto tp = LoadTestPointResults(db);
  GpkgWriter w(file, crs);
  w.Begin();
  for (const ElementLayer& layerDef : ElementLayers())
    report.layers.push_back(
        {layerDef.name, WriteElementLayer(w, db, layerDef, tp, report.skipped)});
  report.layers.push_back({"contours", WriteContours(w, ctr, frame)});
  report.layers.push_back({"pathlines", WritePathlines(w, pth, frame)});
  w.Commit();
  w.Close();
  return report;
}

std::vector<std::string> GpkgReportLines(const GpkgExportReport& report) {
  std::vector<std::string> lines;
  for (const auto& l : report.layers)
    if (l.features > 0) lines.push_back(l.layer + ": " + std::to_string(l.features));
  lines.push_back(report.crsName.empty() ? "The project has no coordinate reference system."
                                         : "Coordinate reference system: " + report.crsName);
  for (const auto& s : report.skipped) lines.push_back("Not written: " + s);
  return lines;
}

bool ToolsExportGeoPackage(UserInterface& ui, const std::string& projectFile) {
  using namespace gpkg_text;
  bool written = false;
  RunOperation(ui, "ToolsExportGeoPackage", [&] {
    Database db = Database::Open(projectFile);
    std::string base;
    {
      Statement st = db.Prepare("select TARNOBaseName from Project");
      if (st.Step()) base = st.GetText(0);
    }
    FileDialogRequest request;
    request.title = kDialogTitle;
    request.defaultExtension = kDefaultExtension;
    request.filter = kFilter;
    request.initialDirectory = fs::path(projectFile).parent_path().string();
    request.initialFile = base.empty() ? "" : base + ".gpkg";
    const std::optional<std::string> chosen = ui.SaveFileDialog(request);
    if (!chosen || chosen->empty()) return;
    const std::string& file = *chosen;
    if (fs::exists(file)) {
      if (!ui.Question(kFileExistsTitle,
                       {"File " + file + " already exists.", "Do you want to overwrite it?"})) {
        ui.MessageBox(kAbortTitle, {kAborted});
        return;
      }
    }
    ui.PleaseWaitShow(kWait, 3000);
    GpkgExportReport report;
    try {
      report = WriteGeoPackage(db, projectFile, file);
    } catch (const std::exception& e) {
      ui.PleaseWaitHide();
      ui.MessageBox(kFailedTitle, {std::string(kFailed) + e.what()}, Buttons::OK, Icon::Critical);
      return;
    }
    ui.PleaseWaitHide();
    std::vector<std::string> lines{file + kWritten};
    for (auto& l : GpkgReportLines(report)) lines.push_back(std::move(l));
    ui.MessageBox(kCompleteTitle, lines);
    written = true;
  });
  return written;
}

}  // namespace tarno::exchange
