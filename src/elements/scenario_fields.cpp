#include "elements/scenario_fields.h"

#include "core/error.h"

namespace tarno {

const ScenarioFieldNames& FieldsOf(ScenarioParameter parameter) {
  static const ScenarioFieldNames kAquiferHydCond{"Model", "chkScenarioHydCond", "ScenHydCond",
                                                  "AQHydCond", "DefaultAQHydCond"};
  static const ScenarioFieldNames kAquiferBase{"Model", "chkScenarioBaseElev", "ScenBaseElev",
                                               "AQBase", "DefaultAQBase"};
  static const ScenarioFieldNames kResistance{"LinesinkStrings", "chkScenario", "ScenResistance",
                                              "Resistance", "DefaultResistance"};
  static const ScenarioFieldNames kInhoHydCond{"Inhomogeneities", "chkScenarioHydCond",
                                               "ScenHydCond", "HydCond", "DefaultHydCond"};
  static const ScenarioFieldNames kInhoRecharge{"Inhomogeneities", "chkScenarioRecharge",
                                                "ScenRecharge", "Recharge", "DefaultRecharge"};
  switch (parameter) {
    case ScenarioParameter::AquiferHydCond: return kAquiferHydCond;
    case ScenarioParameter::AquiferBase: return kAquiferBase;
    case ScenarioParameter::LinesinkResistance: return kResistance;
    case ScenarioParameter::InhoHydCond: return kInhoHydCond;
    case ScenarioParameter::InhoRecharge: return kInhoRecharge;
  }
  throw InvalidArgumentError("unknown scenario parameter");
}

namespace {

// The rows with the switch set; the switch reads True for any non-zero number.
std::string FlaggedRows(const ScenarioFieldNames& f) {
  return std::string("from ") + f.table + " where " + f.flag + " <> 0";
}

}  // namespace

std::vector<TaggedValue> LoadTagged(Database& db, ScenarioParameter parameter) {
  const ScenarioFieldNames& f = FieldsOf(parameter);
  Statement st = db.PrepareRaw(std::string("select rowid, ") + f.tag + ", " + f.current + ", " +
                               f.defaultValue + " " + FlaggedRows(f) + " order by rowid");
  std::vector<TaggedValue> rows;
  while (st.Step()) {
    rows.push_back(TaggedValue{st.GetInt64(0), st.GetText(1), st.GetDouble(2), st.GetDouble(3)});
  }
  return rows;
}

void StoreTag(Database& db, ScenarioParameter parameter, std::int64_t rowId,
              const std::string& tag) {
  const ScenarioFieldNames& f = FieldsOf(parameter);
  Statement st =
      db.PrepareRaw(std::string("update ") + f.table + " set " + f.tag + " = ?1 where rowid = ?2");
  st.Bind(1, tag).Bind(2, rowId).Run();
}

bool TagInUse(Database& db, ScenarioParameter parameter, const std::string& tag) {
  const ScenarioFieldNames& f = FieldsOf(parameter);
  Statement st =
      db.PrepareRaw(std::string("select 1 ") + FlaggedRows(f) + " and " + f.tag + " = ?1 limit 1");
  st.Bind(1, tag);
  return st.Step();
}

TaggedChange StoreTaggedValues(Database& db, ScenarioParameter parameter, const std::string& tag,
                               double current, double defaultValue) {
  TaggedChange change;
  if (tag == kNoScenarioTag) return change;
  const ScenarioFieldNames& f = FieldsOf(parameter);
  const std::string where = FlaggedRows(f) + " and " + f.tag + " = ?1";
  {
    Statement count = db.PrepareRaw(std::string("select count(*), coalesce(sum(") + f.current +
                                    " is not ?2), 0), coalesce(sum(" + f.defaultValue +
                                    " is not ?3), 0) " + where);
    count.Bind(1, tag).Bind(2, current).Bind(3, defaultValue);
    count.Step();
    if (count.GetInt64(0) == 0) return change;
    change.currentChanged = static_cast<int>(count.GetInt64(1));
    change.defaultChanged = static_cast<int>(count.GetInt64(2));
  }
  Statement st =
      db.PrepareRaw(std::string("update ") + f.table + " set " + f.current + " = ?2, " +
                    f.defaultValue + " = ?3 where " + f.flag + " <> 0 and " + f.tag + " = ?1");
  st.Bind(1, tag).Bind(2, current).Bind(3, defaultValue).Run();
  return change;
}

}  // namespace tarno
