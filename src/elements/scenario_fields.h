// The scenario fields of the model and the elements: for each parameter that a
// scenario tag can name, its switch, its tag, its current value and its default.
// The scenarios dialog, the tag cleaning and the estimation files read and write
// these rows only through here, so that the element tables stay the element
// layer's.
//
//     for (const TaggedValue& t : LoadTagged(db, ScenarioParameter::LinesinkResistance))
//       ... t.tag, t.current, t.defaultValue ...
//     StoreTaggedValues(db, ScenarioParameter::LinesinkResistance, "riv", 2.5, 1.0);
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "store/database.h"

namespace tarno {

// The five parameters a scenario tag can name.
enum class ScenarioParameter {
  AquiferHydCond,      // Model: chkScenarioHydCond, ScenHydCond, AQHydCond, DefaultAQHydCond
  AquiferBase,         // Model: chkScenarioBaseElev, ScenBaseElev, AQBase, DefaultAQBase
  LinesinkResistance,  // LinesinkStrings: chkScenario, ScenResistance, Resistance,
                       // DefaultResistance
  InhoHydCond,         // Inhomogeneities: chkScenarioHydCond, ScenHydCond, HydCond, DefaultHydCond
  InhoRecharge,  // Inhomogeneities: chkScenarioRecharge, ScenRecharge, Recharge, DefaultRecharge
};
inline constexpr std::array<ScenarioParameter, 5> kScenarioParameters = {
    ScenarioParameter::AquiferHydCond, ScenarioParameter::AquiferBase,
    ScenarioParameter::LinesinkResistance, ScenarioParameter::InhoHydCond,
    ScenarioParameter::InhoRecharge};

struct ScenarioFieldNames {
  const char* table;
  const char* flag;          // the switch "include in scenarios"
  const char* tag;           // the tag field
  const char* current;       // the value the solver reads
  const char* defaultValue;  // the value outside any scenario
};
const ScenarioFieldNames& FieldsOf(ScenarioParameter parameter);

// The literal of "no tag".
inline constexpr const char* kNoScenarioTag = "__NONE__";

// One row whose switch is set.
struct TaggedValue {
  std::int64_t rowId = 0;  // the row's own id in its table
  std::string tag;
  double current = 0.0;
  double defaultValue = 0.0;
};

// The rows of the parameter whose switch is set, in the table's order (tags of
// "__NONE__" and empty tags included: the callers decide about them).
std::vector<TaggedValue> LoadTagged(Database& db, ScenarioParameter parameter);

// Writes the tag of one row (a row of LoadTagged).
void StoreTag(Database& db, ScenarioParameter parameter, std::int64_t rowId,
              const std::string& tag);

// Whether a row with the switch set bears `tag` (compared as the project compares
// text, without regard to case).
bool TagInUse(Database& db, ScenarioParameter parameter, const std::string& tag);

// What StoreTaggedValues changed: the rows whose current value, and those whose
// default, differed from the new one.
struct TaggedChange {
  int currentChanged = 0;
  int defaultChanged = 0;
};

// Gives every row with the switch set and the tag `tag` the current value and the
// default. A tag of "__NONE__" is never written to.
TaggedChange StoreTaggedValues(Database& db, ScenarioParameter parameter, const std::string& tag,
                               double current, double defaultValue);

}  // namespace tarno
