#include "calibration/scenario_dialog.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <optional>

#include "core/error.h"
#include "core/text.h"
#include "elements/scenario_fields.h"

namespace tarno {

namespace {

// The parameters whose tags enter a table, in the order they are read within a row.
std::vector<ScenarioParameter> ParametersOf(ScenarioTable table) {
  switch (table) {
    case ScenarioTable::Aquifer:
      return {ScenarioParameter::AquiferHydCond, ScenarioParameter::AquiferBase};
    case ScenarioTable::Linesink: return {ScenarioParameter::LinesinkResistance};
    case ScenarioTable::Inhomogeneity:
      return {ScenarioParameter::InhoHydCond, ScenarioParameter::InhoRecharge};
  }
  return {};
}

// Tags compare as the project compares text: without regard to case.
bool SameTag(const std::string& a, const std::string& b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

const char* WorkingTable(ScenarioTable table) {
  return Scenarios::kWorkingTables[static_cast<int>(table)];
}

void CreateWorkingTable(Database& db, ScenarioTable table) {
  db.ExecuteRaw(std::string("create table if not exists ") + WorkingTable(table) +
                " (Scenario text, Current double, [Default] double)");
}

// The rows of one table: the tagged rows of its parameters merged by row, the
// first bearer of a tag giving its values.
std::vector<ScenarioRow> Collect(Database& db, ScenarioTable table) {
  struct Entry {
    std::int64_t rowId;
    std::size_t order;  // the parameter's place within a row
    TaggedValue value;
  };
  std::vector<Entry> entries;
  const std::vector<ScenarioParameter> parameters = ParametersOf(table);
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    for (TaggedValue& v : LoadTagged(db, parameters[i]))
      entries.push_back({v.rowId, i, std::move(v)});
  }
  std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
    return a.rowId != b.rowId ? a.rowId < b.rowId : a.order < b.order;
  });
  std::vector<ScenarioRow> rows;
  for (const Entry& e : entries) {
    const std::string tag = TrimST(e.value.tag);
    if (tag.empty() || tag == kNoScenarioTag) continue;
    const bool known = std::any_of(rows.begin(), rows.end(),
                                   [&](const ScenarioRow& r) { return SameTag(r.Scenario, tag); });
    if (!known) rows.push_back({tag, e.value.current, e.value.defaultValue});
  }
  return rows;
}

void StoreWorkingTable(Database& db, ScenarioTable table, const std::vector<ScenarioRow>& rows) {
  CreateWorkingTable(db, table);
  db.ExecuteRaw(std::string("delete from ") + WorkingTable(table));
  Statement insert = db.PrepareRaw(std::string("insert into ") + WorkingTable(table) +
                                   " (Scenario, Current, [Default]) values (?1, ?2, ?3)");
  for (const ScenarioRow& r : rows) {
    insert.Reset();
    insert.Bind(1, r.Scenario).Bind(2, r.Current).Bind(3, r.Default).Run();
  }
}

std::optional<double> WholeNumber(const std::string& text) {
  const std::string t = TrimST(text);
  if (t.empty()) return std::nullopt;
  char* end = nullptr;
  const double v = std::strtod(t.c_str(), &end);
  if (end != t.c_str() + t.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}

}  // namespace

std::vector<ScenarioRow>& Scenarios::Table(ScenarioTable table) {
  switch (table) {
    case ScenarioTable::Aquifer: return AqDataTable;
    case ScenarioTable::Linesink: return LSDataTable;
    case ScenarioTable::Inhomogeneity: return InDataTable;
  }
  throw InvalidArgumentError("unknown scenario table");
}

const std::vector<ScenarioRow>& Scenarios::Table(ScenarioTable table) const {
  return const_cast<Scenarios*>(this)->Table(table);
}

void Scenarios::Load(Database& db) {
  for (ScenarioTable t : kScenarioTables) Table(t) = Collect(db, t);
  Invalidate = false;
  Result = 2;
}

void Scenarios::init(Database& db) {
  Transaction tx(db);
  Load(db);
  for (ScenarioTable t : kScenarioTables) StoreWorkingTable(db, t, Table(t));
  tx.Commit();
}

void Scenarios::init() {
  Database db = Database::Open(projectFile);
  init(db);
}

bool Scenarios::SetCell(ScenarioTable table, std::size_t row, int column, const std::string& text) {
  std::vector<ScenarioRow>& rows = Table(table);
  if (row >= rows.size() || (column != kCurrentColumn && column != kDefaultColumn)) return false;
  const std::optional<double> v = WholeNumber(text);
  if (!v) return false;
  (column == kCurrentColumn ? rows[row].Current : rows[row].Default) = *v;
  return true;
}

void Scenarios::cmdDefault(int index) {
  for (ScenarioTable t : kScenarioTables) {
    for (ScenarioRow& r : Table(t)) {
      if (index == 0)
        r.Current = r.Default;
      else
        r.Default = r.Current;
    }
  }
}

void Scenarios::cmdUpdate_Click(Database& db) {
  Transaction tx(db);
  bool changed = false;
  for (ScenarioTable t : kScenarioTables) {
    StoreWorkingTable(db, t, Table(t));
    for (const ScenarioRow& r : Table(t)) {
      for (ScenarioParameter p : ParametersOf(t)) {
        changed |= StoreTaggedValues(db, p, r.Scenario, r.Current, r.Default).currentChanged > 0;
      }
    }
  }
  tx.Commit();
  if (changed) Invalidate = true;
}

void Scenarios::cmdUpdate_Click() {
  Database db = Database::Open(projectFile);
  cmdUpdate_Click(db);
}

std::vector<ScenarioRow> LoadWorkingTable(Database& db, ScenarioTable table) {
  std::vector<ScenarioRow> rows;
  if (!db.TableExists(WorkingTable(table))) return rows;
  Statement st = db.PrepareRaw(std::string("select Scenario, Current, [Default] from ") +
                               WorkingTable(table) + " order by rowid");
  while (st.Step()) rows.push_back({st.GetText(0), st.GetDouble(1), st.GetDouble(2)});
  return rows;
}

bool ImplementScenarios(UserInterface& ui, const std::string& projectFile) {
  Scenarios dialog;
  dialog.projectFile = projectFile;
  dialog.init();
  ui.ShowModal(dialog);
  return dialog.Invalidate;
}

}  // namespace tarno
