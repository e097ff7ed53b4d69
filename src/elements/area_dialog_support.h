// What the dialogs of barriers, inhomogeneities, lakes and the uniform flow share:
// numbers shown as text and written back without losing what the user did not
// touch, the unit words of a project, and the test of a scenario tag.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "elements/element.h"

namespace tarno::area_dialogs {

// A number field as the dialog shows it ("12.5", "0.2", "-30").
std::string NumberText(const Row& row, std::string_view field);
std::string NumberText(double value);

// Writes a field back from the dialog. A text that is what the row's value shows
// leaves the stored value as it is, so that an unchanged dialog writes back exactly
// what it read (the shown text may round the stored number). Another text is read
// with the decimal parse of the text fields (empty reads as 0).
void StoreNumber(Row& row, std::string_view field, const std::string& text);
// The same for a text field and a yes/no field: where the row already holds the
// value, it stays (a yes stored as -1 is not rewritten as 1).
void StoreText(Row& row, std::string_view field, const std::string& text);
void StoreFlag(Row& row, std::string_view field, bool value);

// The unit words of a project measured in metres or in feet.
struct Units {
  std::string length;  // "meters" / "feet"
  std::string rate;    // "m/day" / "ft/day"
  std::string flow;    // "m^3/day" / "ft^3/day"
};
Units UnitsOf(bool computeMeters);

// A scenario tag that may not be used: after trimming, empty, longer than 12
// characters, "__NONE__", or holding a blank, "-", "_" or ",".
bool BadScenarioTag(const std::string& tag);
// The three lines that refuse such a tag.
const std::vector<std::string>& BadScenarioTagLines();

// "<kind> Label ('<label>') already exists!", the line that refuses a label in use.
std::string DuplicateLabelLine(std::string_view kind, const std::string& label);

// The texts of the field checks that more than one of these dialogs uses.
inline constexpr const char* kNoLabel = "Label must be specified. ";
inline constexpr const char* kNoTag = "__NONE__";

}  // namespace tarno::area_dialogs
