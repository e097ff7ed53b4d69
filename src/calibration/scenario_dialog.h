// The scenarios dialog "Implement Scenarios" (menu "Implement Scenario"): every
// scenario tag of the project with one current value and one default, in three
// tables (the aquifer, the line-sink strings, the inhomogeneities), and the
// carrying of a row's values to every parameter that bears its tag.
//
//     Scenarios dialog;
//     dialog.init(db);                      // fills the three tables from the project
//     dialog.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, "2.5");
//     dialog.cmdUpdate_Click(db);           // every string tagged so gets 2.5
//     if (dialog.Invalidate) ...            // a value the solver reads changed
//
// The three tables are also kept in the project as working tables
// (Aquifer_Tab_Scenarios, Linesink_String_Scenarios, Inhomogeneity_Scenarios, each
// with the columns Scenario, Current, Default), rebuilt each time the dialog opens.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "store/database.h"

namespace tarno {

// One row of a table: a tag and its values.
struct ScenarioRow {
  std::string Scenario;
  double Current = 0.0;
  double Default = 0.0;
  bool operator==(const ScenarioRow&) const = default;
};

enum class ScenarioTable { Aquifer = 0, Linesink = 1, Inhomogeneity = 2 };
inline constexpr std::array<ScenarioTable, 3> kScenarioTables = {
    ScenarioTable::Aquifer, ScenarioTable::Linesink, ScenarioTable::Inhomogeneity};
// The editable columns of a table (column 0 is the tag).
inline constexpr int kCurrentColumn = 1;
inline constexpr int kDefaultColumn = 2;

class Scenarios : public DialogModel {
 public:
  static constexpr const char* kName = "Scenarios";
  static constexpr const char* kTitle = "Implement Scenarios";
  static constexpr const char* kUpdateCaption = "Update Database (Save Changes)";
  static constexpr const char* kDefaultCaptions[2] = {"Replace all Current Values with Default",
                                                      "Replace all Default Values with Current"};
  static constexpr const char* kDoneCaption = "Done";
  static constexpr const char* kColumnCaptions[3] = {"Scenario", "Current", "Default"};
  // The working tables, in the order of ScenarioTable.
  static constexpr const char* kWorkingTables[3] = {
      "Aquifer_Tab_Scenarios", "Linesink_String_Scenarios", "Inhomogeneity_Scenarios"};
  // The captions of the three grids, in the order of ScenarioTable.
  static constexpr const char* kGridCaptions[3] = {"Aquifer", "Linesink Strings",
                                                   "Inhomogeneities"};
  std::string DialogName() const override { return kName; }

  // Clears the three tables and fills them from the rows whose switch is set, in
  // the order of the rows and, within a row, conductivity before base (aquifer) or
  // recharge (inhomogeneities). A tag enters its table once, with the current value
  // and default of the first row that bears it; "__NONE__" and empty tags are
  // passed over. The working tables in the project are rebuilt to match.
  void init(Database& db);
  // The same on projectFile.
  void init();
  // Fills the three tables as init does, without touching the working tables (for
  // the batch listing, which changes nothing).
  void Load(Database& db);

  // A cell of a grid's numeric columns (kCurrentColumn, kDefaultColumn): the text
  // must be a number as a whole (blanks around it allowed); anything else is
  // refused (false) and the cell keeps its value.
  bool SetCell(ScenarioTable table, std::size_t row, int column, const std::string& text);

  // "Replace all Current Values with Default" (0) and "Replace all Default Values
  // with Current" (1): copies one column onto the other in all three tables.
  void cmdDefault(int index);

  // "Update Database (Save Changes)": stores the tables in the working tables, then
  // gives every parameter that bears a row's tag (with its switch set) the row's
  // current value and default. Sets Invalidate when a current value of the model
  // changed; a changed default alone does not change the solution.
  void cmdUpdate_Click(Database& db);
  void cmdUpdate_Click();

  // "Done": the dialog closes (Result 1). What was not stored by Update is not
  // carried to the model.
  void cmdDone() { Result = 1; }

  std::vector<ScenarioRow>& Table(ScenarioTable table);
  const std::vector<ScenarioRow>& Table(ScenarioTable table) const;

  // The grids' data: AqTabGrid, LSGrid and InGrid show these.
  std::vector<ScenarioRow> AqDataTable;
  std::vector<ScenarioRow> LSDataTable;
  std::vector<ScenarioRow> InDataTable;
  // A value the solver reads has changed since init.
  bool Invalidate = false;
  int Result = 2;
  // The project init and Update work on when given no database.
  std::string projectFile;
};

// Reads a working table as the dialog left it (empty if the project has none).
std::vector<ScenarioRow> LoadWorkingTable(Database& db, ScenarioTable table);

// The Model menu's "Implement Scenario" without the session's part: opens the
// dialog on the project and shows it. True when the model changed, so that the
// caller invalidates the solution.
bool ImplementScenarios(UserInterface& ui, const std::string& projectFile);

}  // namespace tarno
