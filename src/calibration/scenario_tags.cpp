#include "calibration/scenario_tags.h"

#include "core/text.h"
#include "elements/scenario_fields.h"

namespace tarno {

namespace {

constexpr const char* kCheckTitle = "DB Integrity Check";
constexpr const char* kInvalidText = "Scenarios were found with names that were invalid.";
constexpr const char* kSpacesText = "Spaces in Scenario names were removed.";
constexpr const char* kCroppedText = "Scenario Names with more than 12 characters were cropped.";

// The order in which the check passes over the tag fields.
constexpr ScenarioParameter kCheckOrder[] = {
    ScenarioParameter::InhoHydCond, ScenarioParameter::InhoRecharge,
    ScenarioParameter::LinesinkResistance, ScenarioParameter::AquiferHydCond,
    ScenarioParameter::AquiferBase};

int Digits(int n) { return static_cast<int>(std::to_string(n).size()); }

}  // namespace

std::optional<std::vector<std::string>> ScenarioTagRefusal(const std::string& tag) {
  const std::string t = TrimST(tag);
  const bool bad = t.empty() || t.size() > kScenarioTagLength || t == kNoScenarioTag ||
                   t.find_first_of(" \t-_,") != std::string::npos;
  if (!bad) return std::nullopt;
  return std::vector<std::string>{
      "You must specify a valid scenario tag.",
      "Scenario tags may not include spaces or the characters - , or _.",
      "Scenario tags may also not be '__NONE__'."};
}

std::string RemoveTagBlanks(const std::string& tag) {
  std::string out;
  for (char c : tag) {
    if (c != ' ') out += c;
  }
  return out.empty() ? std::string("blank") : out;
}

std::string CroppedTag(const std::string& tag, int n, std::size_t limit) {
  const std::string t = TrimST(tag);
  const int keep = static_cast<int>(limit) - 1 - Digits(n);
  return t.substr(0, keep > 0 ? static_cast<std::size_t>(keep) : 0) + "~" + std::to_string(n);
}

std::string RemoveBadScenChar(const std::string& tag) {
  std::string out = StripString(tag, ",");
  for (char& c : out) {
    if (c == '-') c = '_';
  }
  return out;
}

TagCleaning CleanScenarioTags(Database& db, UserInterface& ui) {
  TagCleaning done;
  for (ScenarioParameter p : kCheckOrder) {
    const std::vector<TaggedValue> rows = LoadTagged(db, p);
    if (rows.empty()) continue;
    // Blanks.
    int changed = 0;
    for (const TaggedValue& row : rows) {
      if (row.tag == kNoScenarioTag || row.tag.find(' ') == std::string::npos) continue;
      StoreTag(db, p, row.rowId, RemoveTagBlanks(row.tag));
      ++changed;
    }
    if (changed > 0)
      ui.MessageBox(kCheckTitle, {kInvalidText, kSpacesText}, Buttons::OK, Icon::Information);
    done.blanksRemoved += changed;
    // Length, on the tags as the first pass left them.
    changed = 0;
    for (const TaggedValue& row : LoadTagged(db, p)) {
      if (row.tag == kNoScenarioTag || row.tag.size() <= kScenarioTagLength) continue;
      int n = 1;
      std::string candidate = CroppedTag(row.tag, n);
      while (TagInUse(db, p, candidate)) candidate = CroppedTag(row.tag, ++n);
      StoreTag(db, p, row.rowId, candidate);
      ++changed;
    }
    if (changed > 0)
      ui.MessageBox(kCheckTitle, {kInvalidText, kCroppedText}, Buttons::OK, Icon::Information);
    done.cropped += changed;
  }
  // The separators of the estimation files.
  for (ScenarioParameter p : kScenarioParameters) {
    for (const TaggedValue& row : LoadTagged(db, p)) {
      if (row.tag == kNoScenarioTag) continue;
      std::string clean = RemoveBadScenChar(row.tag);
      if (clean == row.tag) continue;
      // The project keeps no empty tag: a tag of commas alone is named as one of blanks.
      if (clean.empty()) clean = "blank";
      StoreTag(db, p, row.rowId, clean);
      ++done.separatorsCleaned;
    }
  }
  return done;
}

}  // namespace tarno
