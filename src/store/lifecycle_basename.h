// The default base name of a new project's solver files.
//
// A new project gets a short base name made from the date and time of its
// creation, so that two projects made more than two seconds apart get different
// names. Place by place:
//   1 month 1..12      1..9 as a digit, 10 and up as a letter: 10 'a', 11 'b', 12 'c'
//   2 day 1..31        1..9 as a digit, 10..31 as 'a'..'v'
//   3 year             the last two digits as a number without leading zero
//   4 hour 0..23       0..9 as a digit, 10..23 as 'a'..'n'
//   5 minute 0..59     as a number without leading zero
//   6 second / 2       0..9 as a digit, 10..29 as 'a'..'t'
// The result has six to eight characters, never a blank.
#pragma once

#include <string>
#include <vector>

namespace tarno {

struct LocalDateTime {
  int year = 2000;
  int month = 1;   // 1..12
  int day = 1;     // 1..31
  int hour = 0;    // 0..23
  int minute = 0;  // 0..59
  int second = 0;  // 0..59 (60 for a leap second reads as 59)
};

// Throws tarno::Error for a field out of its range.
std::string DefaultBaseName(const LocalDateTime& t);

// The base name for the present local date and time.
std::string DefaultBaseNameNow();

// A base name of its own for a project copied into the folder of the solver files
// of another: made from the copy's file name (letters, digits, '_' and '-', at most
// eight), with a number in its last places when that name is among `taken` or a
// file of that name (any extension, any case) already stands in `folder`. A file
// name with none of those characters starts from "copy".
std::string DerivedBaseName(const std::string& fileStem, const std::string& folder,
                            const std::vector<std::string>& taken);

}  // namespace tarno
