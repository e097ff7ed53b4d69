// Scenario tags: the names under which the estimation files vary one value each.
//
// A tag is at most 12 characters and holds no blank, "-", "," or "_" (the
// estimation files use these as separators), and is never "__NONE__", the literal
// of "no tag". The element and settings dialogs refuse such tags as they are
// typed (ScenarioTagRefusal gives their message); tags of older files are cleaned
// when a project is checked (CleanScenarioTags).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "store/database.h"

namespace tarno {

inline constexpr std::size_t kScenarioTagLength = 12;

// Nothing for a good tag; for a bad one (after trimming: empty, longer than 12,
// "__NONE__", or holding a blank, "-", "_" or ",") the three lines the dialogs show:
// "You must specify a valid scenario tag.", "Scenario tags may not include spaces or
// the characters - , or _." and "Scenario tags may also not be '__NONE__'.".
std::optional<std::vector<std::string>> ScenarioTagRefusal(const std::string& tag);

// The first pass of the check on opening: every blank removed; a tag of blanks
// alone becomes "blank".
std::string RemoveTagBlanks(const std::string& tag);
// The candidate of the second pass for a tag over `limit` characters: the trimmed
// tag cut to limit - 1 - (digits of n) characters, "~" and n.
std::string CroppedTag(const std::string& tag, int n, std::size_t limit = kScenarioTagLength);
// RemoveBadScenChar for one tag: each "," removed, each "-" replaced by "_".
std::string RemoveBadScenChar(const std::string& tag);

// What CleanScenarioTags changed, counted in rows.
struct TagCleaning {
  int blanksRemoved = 0;
  int cropped = 0;
  int separatorsCleaned = 0;
  int Total() const { return blanksRemoved + cropped + separatorsCleaned; }
};

// The scenario part of the check of a project on opening, over the rows whose
// switch is set, for each of the five tag fields (inhomogeneity conductivity and
// recharge, line-sink resistance, aquifer conductivity and base):
// 1. blanks are removed (RemoveTagBlanks); if any row changed, the message "DB
//    Integrity Check" (information icon) "Scenarios were found with names that were
//    invalid." / "Spaces in Scenario names were removed.";
// 2. a tag over 12 characters is renamed to the first CroppedTag candidate that no
//    row of the field bears yet; if any row changed, the same message with
//    "Scenario Names with more than 12 characters were cropped.";
// then, with no message, RemoveBadScenChar over all five fields, each row written
// only if its tag changed (a tag of commas alone, which would be left empty, becomes
// "blank"). "__NONE__" tags are left alone.
//
// The second pass renames each long tag to a name of its own, so two elements that
// shared a long tag no longer share it; the user gives them one tag again.
TagCleaning CleanScenarioTags(Database& db, UserInterface& ui);

}  // namespace tarno
