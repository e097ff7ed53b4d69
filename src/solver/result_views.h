// The views of a solution's result tables: the information dialogs of one element
// (LSInfo for a line-sink segment, INInfo for an inhomogeneity vertex, Lakeinfo for
// the balance of a lake), reached by a right click on the element in the select
// state, and the results viewer (ResultViewer, "View Results Table"), which shows
// one result table at a time in a read-only grid and copies it to the clipboard.
//
// All of them are plain models filled from the result tables by the element's
// solver label (TARNOLabel); the desktop program shows them through its views
// (app/views/result_views.h), the tests and tarnocmd read them directly.
#pragma once

#include <cmath>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/ui_port.h"
#include "elements/element.h"
#include "elements/kind.h"

namespace tarno {

class Database;

// One line of an information dialog: the column it comes from, its caption, and the
// value (a number, or a text for the label columns).
struct InfoLine {
  std::string field;
  std::string caption;
  double value = 0.0;
  std::string text;  // as shown: the text of a text column, GeneralNumber of a number
  bool isText = false;
};

// What the three information dialogs share: a title, the element's label and
// solver label, and the lines in the order shown.
struct ResultInfo {
  std::string Title;
  std::string Label;       // the element's label
  std::string TARNOLabel;  // the solver's label of the row shown
  std::vector<InfoLine> Lines;
  // Where the view starts a new column of lines (indexes into Lines); empty: two
  // columns of equal length.
  std::vector<std::size_t> ColumnStarts;
  // The line of a column (case-blind); nullptr when the dialog has none.
  const InfoLine* Line(std::string_view field) const;
  // The number of a column; NaN when the dialog has no such line.
  double Value(std::string_view field) const;
};

// A line-sink segment: every column of its LSResults row.
class LSInfo : public DialogModel, public ResultInfo {
 public:
  static constexpr const char* kName = "LSInfo";
  static constexpr const char* kTitle = "Linesink Results";
  std::string DialogName() const override { return kName; }
};

// An inhomogeneity at one of its vertices: the element's values and the vertex's
// row of INResults.
class INInfo : public DialogModel, public ResultInfo {
 public:
  static constexpr const char* kName = "INInfo";
  static constexpr const char* kTitle = "Inhomogeneity Results";
  std::string DialogName() const override { return kName; }
};

// The balance of a lake, from LKResults (solver/results_loader.h). Inflows and
// outflows are rates (L^3/T); DataError is DataTotalIn less DataTotalOut and
// DataErrorPercent its share of the larger total, in percent.
class Lakeinfo : public DialogModel, public ResultInfo {
 public:
  static constexpr const char* kName = "Lakeinfo";
  static constexpr const char* kTitle = "Lake Balance";
  std::string DialogName() const override { return kName; }

  double DataArea = 0;
  double DataLakeStage = 0;  // -9999: the lake is dry
  std::string DataFirstTarnoLabel, DataLastTarnoLabel;
  double DataPrecipitation = 0, dataGroundwaterIn = 0, DataOverlandFlowIn = 0, DataStreamFlowIn = 0,
         DataTotalIn = 0;
  double DataEvapotranspiration = 0, DataGroundwaterOut = 0, DataOverlandFlowOut = 0,
         DataStreamFlowOut = 0, DataTotalOut = 0;
  double DataError = 0, DataErrorPercent = 0;
  bool Dry() const { return DataLakeStage <= -1000; }
};

// The dialogs of one row, found by the solver label; nothing when the table has no
// row of that label (or, for lakes, the file has no LKResults yet).
std::optional<LSInfo> LoadLSInfo(Database& db, const std::string& tarnoLabel);
std::optional<INInfo> LoadINInfo(Database& db, const std::string& tarnoLabel);
std::optional<Lakeinfo> LoadLakeinfo(Database& db, const std::string& tarnoLabel);

// The texts of the right click on an element that has no result to show.
inline constexpr const char* kNoLinesinkTitle = "No Linesink Selected";
inline constexpr const char* kNoLinesinkLine1 = "No Linesink selected.";
inline constexpr const char* kNoLinesinkLine2 = "Please choose a different vertex.";
inline constexpr const char* kNoResultsTitle = "No Results";

// What a right click showed.
enum class InfoShown { Nothing, LSInfo, INInfo, Lakeinfo, Message };

// The right click in the select state with a solution present, on the vertex `v`
// of an element of `kind`: a line-sink string's vertex shows LSInfo of the segment
// that starts there (the last vertex of a string has none: "No Linesink
// Selected"), an inhomogeneity's vertex INInfo of its row, a lake's vertex
// Lakeinfo of the lake. Other kinds show nothing. An element without result rows
// (a solution loaded before the element was drawn) is told by a "No Results" box.
InfoShown ShowResultInfo(Database& db, UserInterface& ui, ElementKind kind, const Vertex& v);

// ---- The results viewer ------------------------------------------------------------

// One table of the viewer: the table, the tab's caption and its columns with their
// captions, in the order of the grid.
struct ResultColumn {
  const char* field;
  const char* caption;
};
struct ResultTableDef {
  const char* table;
  const char* caption;
  std::vector<ResultColumn> columns;
};
// The tables in the order of the tabs: Linesinks, Wells, No-Flow Boundaries, Flux
// Inspection Lines, Test Points, Inhomogeneities, Lakes.
const std::vector<ResultTableDef>& ResultTables();

// Where the viewer's copy goes: the desktop's clipboard, or a test's record.
class ClipboardPort {
 public:
  virtual ~ClipboardPort() = default;
  virtual void SetText(const std::string& text) = 0;
};

class ResultViewer : public DialogModel {
 public:
  static constexpr const char* kName = "ResultViewer";
  static constexpr const char* kTitle =
      "TARNO Computational Results Viewer                   (F1 for help)";
  std::string DialogName() const override { return kName; }

  struct Table {
    std::string table;
    std::string caption;
    std::vector<std::string> headers;
    std::vector<std::vector<std::string>> rows;  // the cells as shown
  };

  // Reads every table of ResultTables() (a table the file lacks shows no rows).
  void Load(Database& db);
  // The tab shown (index into Tables).
  int Tab = 0;
  std::vector<Table> Tables;

  // The shown table as text: the captions in the first line, then one line per
  // row, cells separated by tabs, lines ended by CR LF.
  std::string ClipboardText() const;
  // COPYCLIPBOARD_Click: the shown table to the clipboard.
  void COPYCLIPBOARD_Click(ClipboardPort& clipboard) const { clipboard.SetText(ClipboardText()); }
};

}  // namespace tarno
