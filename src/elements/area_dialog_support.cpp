#include "elements/area_dialog_support.h"

#include "core/format.h"
#include "core/text.h"

namespace tarno::area_dialogs {

std::string NumberText(double value) { return GeneralNumber(value); }

std::string NumberText(const Row& row, std::string_view field) {
  return GeneralNumber(row.Number(field));
}

void StoreNumber(Row& row, std::string_view field, const std::string& text) {
  if (text == NumberText(row, field)) return;
  row.Set(field, Val(text));
}

void StoreText(Row& row, std::string_view field, const std::string& text) {
  if (text == row.Text(field)) return;
  row.Set(field, text);
}

void StoreFlag(Row& row, std::string_view field, bool value) {
  if (value == row.Flag(field)) return;
  row.Set(field, value);
}

std::string DuplicateLabelLine(std::string_view kind, const std::string& label) {
  std::string line(kind);
  line += " Label ('";
  line += label;
  line += "') already exists!";
  return line;
}

Units UnitsOf(bool computeMeters) {
  if (computeMeters) return {"meters", "m/day", "m^3/day"};
  return {"feet", "ft/day", "ft^3/day"};
}

bool BadScenarioTag(const std::string& tag) {
  const std::string t = TrimST(tag);
  if (t.empty() || t.size() > 12 || t == kNoTag) return true;
  return t.find_first_of(" -_,") != std::string::npos;
}

const std::vector<std::string>& BadScenarioTagLines() {
  static const std::vector<std::string> lines = {
      "You must specify a valid scenario tag.",
      "Scenario tags may not include spaces or the characters - , or _.",
      "Scenario tags may also not be '__NONE__'."};
  return lines;
}

}  // namespace tarno::area_dialogs
