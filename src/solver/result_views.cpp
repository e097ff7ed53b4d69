#include "solver/result_views.h"

#include <algorithm>
#include <cctype>
#include <iterator>
#include <limits>

#include "core/format.h"
#include "elements/element_store.h"
#include "elements/linesink.h"
#include "elements/solver_label.h"
#include "solver/results_loader.h"
#include "store/database.h"

namespace tarno {

namespace {

bool SameNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

const ResultTableDef& TableDef(std::string_view table) {
  for (const ResultTableDef& t : ResultTables())
    if (SameNoCase(t.table, table)) return t;
  throw Error("No result table " + std::string(table));
}

// A cell as shown: text as it stands, a number in the general form, NULL empty.
std::string CellText(const Statement& st, int column) {
  switch (st.Kind(column)) {
    case ValueKind::Null: return {};
    case ValueKind::Text: return st.GetText(column);
    case ValueKind::Integer: return std::to_string(st.GetInt64(column));
    default: return GeneralNumber(st.GetDouble(column));
  }
}

// Fills the lines of an information dialog from the row of `label` in the viewer's
// columns of `table`. False when there is no such row.
bool FillFromRow(Database& db, const char* table, const std::string& label, ResultInfo& d) {
  if (!db.TableExists(table)) return false;
  Statement st = db.PrepareRaw(std::string("select * from ") + table +
                               " where TARNOLabel = ? collate nocase order by rowid limit 1");
  st.Bind(1, label);
  if (!st.Step()) return false;
  d.Label = st.GetText("Label");
  d.TARNOLabel = st.GetText("TARNOLabel");
  d.Lines.clear();
  for (const ResultColumn& c : TableDef(table).columns) {
    const int i = st.FindColumn(c.field);
    if (i < 0) continue;
    InfoLine line;
    line.field = c.field;
    line.caption = c.caption;
    line.isText = st.Kind(i) == ValueKind::Text;
    line.value = line.isText || st.IsNull(i) ? 0.0 : st.GetDouble(i);
    line.text = CellText(st, i);
    d.Lines.push_back(std::move(line));
  }
  return true;
}

}  // namespace

const InfoLine* ResultInfo::Line(std::string_view field) const {
  for (const InfoLine& l : Lines)
    if (SameNoCase(l.field, field)) return &l;
  return nullptr;
}

double ResultInfo::Value(std::string_view field) const {
  const InfoLine* l = Line(field);
  return l ? l->value : std::numeric_limits<double>::quiet_NaN();
}

const std::vector<ResultTableDef>& ResultTables() {
  static const std::vector<ResultTableDef> kTables = {
      {"LSResults",
       "Linesinks",
       {{"Label", "Label"},
        {"TARNOLabel", "TARNO Label"},
        {"X1", "X1"},
        {"Y1", "Y1"},
        {"X2", "X2"},
        {"Y2", "Y2"},
        {"SpecifiedHead", "Specified Head"},
        {"CalculatedHead", "Calculated Head"},
        {"Discharge", "Discharge"},
        {"Resistance", "Resistance"},
        {"Width", "Width"},
        {"Depth", "Depth"},
        {"BaseFlow", "BaseFlow"},
        {"OverlandFlow", "OverlandFlow"},
        {"TotalDischarge", "Total Discharge"},
        {"Error", "Percent Error"},
        {"LinkedTo", "LinkedTo"},
        {"SearchType", "SearchType"}}},
      {"WLResults",
       "Wells",
       {{"Label", "Label"},
        {"TARNOLabel", "TARNO Label"},
        {"X", "X"},
        {"Y", "Y"},
        {"Radius", "Radius"},
        {"SpecifiedHead", "Specified Head"},
        {"Head", "Calculated Head"},
        {"Discharge", "Discharge"}}},
      {"NFResults",
       "No-Flow Boundaries",
       {{"Label", "Label"},
        {"TARNOLabel", "TARNO Label"},
        {"Conductivity", "Conductivity"},
        {"Porosity", "Porosity"},
        {"WallBottomElev", "Wall Bottom Elevation"},
        {"XC", "XC"},
        {"YC", "YC"},
        {"StrPotJumpNode", "Strength Potential Jump Node"},
        {"ParabStrPotJump", "Parabolic Strength Potential Jump"},
        {"DeltaFlowCntr", "Delta Flow Center %"},
        {"DeltaFlowNode", "Delta Flow Node %"}}},
      {"FIResults",
       "Flux Inspection Lines",
       {{"Label", "Label"}, {"PID", "PID"}, {"TotalFlux", "Flux"}}},
      {"TPResults",
       "Test Points",
       {{"Label", "Label"},
        {"VID", "VID"},
        {"ObsHead", "Obs. Head"},
        {"ModelHead", "Model Head"},
        {"Difference", "Head Diff."},
        {"ObsStreamFlow", "ObsStreamFlow"},
        {"ModelFlow", "ModelFlow"},
        {"Type", "Type"}}},
      // The inhomogeneities' captions are the table's own field names.
      {"INResults",
       "Inhomogeneities",
       {{"Label", "Label"},
        {"TARNOLabel", "TARNOLabel"},
        {"Conductivity", "Conductivity"},
        {"BottomElev", "BottomElev"},
        {"ExtractRate", "ExtractRate"},
        {"Porosity", "Porosity"},
        {"DomainArea", "DomainArea"},
        {"AvgPotJump", "AvgPotJump"},
        {"X1", "X1"},
        {"Y1", "Y1"},
        {"XC", "XC"},
        {"YC", "YC"},
        {"StrPotJumpNode", "StrPotJumpNode"},
        {"ParabStrPotJump", "ParabStrPotJump"},
        {"RealStrExtrNode", "RealStrExtrNode"},
        {"ImagStrExtrNode", "ImagStrExtrNode"},
        {"RealStrExtrCntr", "RealStrExtrCntr"},
        {"Tfac", "Tfac"},
        {"DeltaPNode", "DeltaPNode"},
        {"DeltaPCntr", "DeltaPCntr"}}},
      {kLakeResultsTable,
       "Lakes",
       {{"Label", "Label"},
        {"TARNOLabel", "TARNO Label"},
        {"FirstTarnoLabel", "First TARNO Label"},
        {"LastTarnoLabel", "Last TARNO Label"},
        {"Area", "Area"},
        {"SurfaceArea", "Water Surface"},
        {"Volume", "Volume"},
        {"LakeStage", "Lake Stage"},
        {"AquiferHead", "Aquifer Head"},
        {"Precipitation", "Precipitation"},
        {"GroundwaterIn", "Groundwater In"},
        {"OverlandFlowIn", "Overland Flow In"},
        {"StreamFlowIn", "Stream Flow In"},
        {"TotalIn", "Total In"},
        {"Evapotranspiration", "Evapotranspiration"},
        {"GroundwaterOut", "Groundwater Out"},
        {"OverlandFlowOut", "Overland Flow Out"},
        {"StreamFlowOut", "Stream Flow Out"},
        {"TotalOut", "Total Out"},
        {"Error", "Balance Error"},
        {"ErrorPercent", "Balance Error %"}}},
  };
  return kTables;
}

std::optional<LSInfo> LoadLSInfo(Database& db, const std::string& tarnoLabel) {
  LSInfo d;
  d.Title = LSInfo::kTitle;
  if (!FillFromRow(db, "LSResults", tarnoLabel, d)) return std::nullopt;
  return d;
}

std::optional<INInfo> LoadINInfo(Database& db, const std::string& tarnoLabel) {
  INInfo d;
  d.Title = INInfo::kTitle;
  if (!FillFromRow(db, "INResults", tarnoLabel, d)) return std::nullopt;
  // The viewer shows the table's own field names; the dialog of one element says
  // what they mean.
  static const std::pair<const char*, const char*> kCaptions[] = {
      {"TARNOLabel", "TARNO Label"},
      {"BottomElev", "Bottom Elevation"},
      {"ExtractRate", "Extraction Rate"},
      {"DomainArea", "Domain Area"},
      {"AvgPotJump", "Average Potential Jump"},
      {"StrPotJumpNode", "Strength Potential Jump Node"},
      {"ParabStrPotJump", "Parabolic Strength Potential Jump"},
      {"RealStrExtrNode", "Extraction Strength Node (Real)"},
      {"ImagStrExtrNode", "Extraction Strength Node (Imaginary)"},
      {"RealStrExtrCntr", "Extraction Strength Center (Real)"},
      {"Tfac", "Transmissivity Factor"},
      {"DeltaPNode", "Potential Error Node"},
      {"DeltaPCntr", "Potential Error Center"}};
  for (InfoLine& l : d.Lines)
    for (const auto& [field, caption] : kCaptions)
      if (l.field == field) l.caption = caption;
  return d;
}

std::optional<Lakeinfo> LoadLakeinfo(Database& db, const std::string& tarnoLabel) {
  Lakeinfo d;
  d.Title = Lakeinfo::kTitle;
  if (!FillFromRow(db, kLakeResultsTable, tarnoLabel, d)) return std::nullopt;
  auto v = [&](const char* f) { return d.Value(f); };
  d.DataArea = v("Area");
  d.DataLakeStage = v("LakeStage");
  d.DataFirstTarnoLabel = d.Line("FirstTarnoLabel")->text;
  d.DataLastTarnoLabel = d.Line("LastTarnoLabel")->text;
  d.DataPrecipitation = v("Precipitation");
  d.dataGroundwaterIn = v("GroundwaterIn");
  d.DataOverlandFlowIn = v("OverlandFlowIn");
  d.DataStreamFlowIn = v("StreamFlowIn");
  d.DataTotalIn = v("TotalIn");
  d.DataEvapotranspiration = v("Evapotranspiration");
  d.DataGroundwaterOut = v("GroundwaterOut");
  d.DataOverlandFlowOut = v("OverlandFlowOut");
  d.DataStreamFlowOut = v("StreamFlowOut");
  d.DataTotalOut = v("TotalOut");
  d.DataError = v("Error");
  d.DataErrorPercent = v("ErrorPercent");
  // Three columns: the lake, its inflows, its outflows with the balance.
  for (const char* first : {"Precipitation", "Evapotranspiration"}) {
    const InfoLine* l = d.Line(first);
    if (l) d.ColumnStarts.push_back(static_cast<std::size_t>(l - d.Lines.data()));
  }
  // A dry lake has no stage: the line says so instead of showing the mark.
  if (d.Dry())
    for (InfoLine& l : d.Lines)
      if (l.field == "LakeStage") l.text = "dry";
  return d;
}

InfoShown ShowResultInfo(Database& db, UserInterface& ui, ElementKind kind, const Vertex& v) {
  auto noResults = [&](const std::string& what, const std::string& label) {
    ui.MessageBox(kNoResultsTitle,
                  {"No results are stored for " + what + " " + label + ".",
                   "Solve the model again to compute them."},
                  Buttons::OK, Icon::Exclamation);
    return InfoShown::Message;
  };
  switch (kind) {
    case ElementKind::Linesink: {
      // The segment that starts at the vertex, labelled by the Seq of its end vertex:
      // the last vertex of a string starts none.
      const std::vector<Vertex> vertices = LoadVertices(db, v.PID);
      const auto at = std::find_if(vertices.begin(), vertices.end(),
                                   [&](const Vertex& o) { return o.VID == v.VID; });
      if (at == vertices.end() || std::next(at) == vertices.end()) {
        ui.MessageBox(kNoLinesinkTitle, {kNoLinesinkLine1, kNoLinesinkLine2});
        return InfoShown::Message;
      }
      const std::string label = LinesinkSegmentLabel(v.PID, std::next(at)->Seq);
      auto d = LoadLSInfo(db, label);
      if (!d) return noResults("the line-sink", label);
      ui.ShowModal(*d);
      return InfoShown::LSInfo;
    }
    case ElementKind::Inhomogeneity: {
      const std::string label = SolverVertexLabel("IN_", v.PID, v.Seq);
      auto d = LoadINInfo(db, label);
      if (!d) return noResults("the inhomogeneity", label);
      ui.ShowModal(*d);
      return InfoShown::INInfo;
    }
    case ElementKind::Lake: {
      const std::string label = SolverVertexLabel("LK_", v.PID, 0);
      auto d = LoadLakeinfo(db, label);
      if (!d) return noResults("the lake", label);
      ui.ShowModal(*d);
      return InfoShown::Lakeinfo;
    }
    default: return InfoShown::Nothing;
  }
}

// ---- The results viewer ------------------------------------------------------------

void ResultViewer::Load(Database& db) {
  Tables.clear();
  for (const ResultTableDef& def : ResultTables()) {
    Table t;
    t.table = def.table;
    t.caption = def.caption;
    for (const ResultColumn& c : def.columns) t.headers.emplace_back(c.caption);
    if (db.TableExists(def.table)) {
      Statement st = db.PrepareRaw(std::string("select * from ") + def.table + " order by rowid");
      std::vector<int> columns;
      for (const ResultColumn& c : def.columns) columns.push_back(st.FindColumn(c.field));
      while (st.Step()) {
        std::vector<std::string> row;
        row.reserve(columns.size());
        for (int i : columns) row.push_back(i < 0 ? std::string() : CellText(st, i));
        t.rows.push_back(std::move(row));
      }
    }
    Tables.push_back(std::move(t));
  }
  Tab = std::clamp(Tab, 0, static_cast<int>(Tables.size()) - 1);
}

std::string ResultViewer::ClipboardText() const {
  if (Tab < 0 || Tab >= static_cast<int>(Tables.size())) return {};
  const Table& t = Tables[static_cast<size_t>(Tab)];
  std::string text;
  auto line = [&](const std::vector<std::string>& cells) {
    for (size_t i = 0; i < cells.size(); ++i) {
      if (i > 0) text += '\t';
      text += cells[i];
    }
    text += "\r\n";
  };
  line(t.headers);
  for (const auto& r : t.rows) line(r);
  return text;
}

}  // namespace tarno
