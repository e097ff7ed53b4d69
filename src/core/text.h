// Text helpers shared by every reader and writer of the front end.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarno {

// Splits `line` at `delimiter` into one-based fields: fields[1] is the first field,
// fields[0] is an empty placeholder that is always there. A run of delimiters counts
// as one, and a leading or trailing run gives no empty field, so "  a  b " split at
// " " gives the two fields "a" and "b". `count` receives the number of fields.
// The delimiter is matched as a whole text (usually one character, "," or " ");
// an empty delimiter gives the whole line as one field (none if the line is empty).
void ParseString(std::string_view line, std::string_view delimiter,
                 std::vector<std::string>& fields, int& count);

// The same, returning the fields: element 0 is the empty placeholder, so the result
// has count + 1 elements and result[i] is field i.
std::vector<std::string> ParseString(std::string_view line, std::string_view delimiter);

// Appends `padCharacter` to `text` until it is `width` characters long. A longer
// text stays as it is; an empty pad character adds nothing.
std::string PadString(std::string_view text, int width, std::string_view padCharacter);

// Removes every occurrence of each of `characters` from `text`, wherever it stands:
// StripString("a,b-c", ",-") is "abc". Used to clean scenario tags of the
// characters that the estimation files use as separators.
std::string StripString(std::string_view text, std::string_view characters);

// Removes the padding that PadString added: trailing pad characters and NUL
// characters. StripPaddedString("kh_________", "_") is "kh". Blanks are left for the
// caller's trim.
std::string StripPaddedString(std::string_view text, std::string_view padCharacter = "_");

// Removes leading and trailing blanks and tabs.
std::string TrimST(std::string_view text);

// A check box value from a stored boolean and back: true is 1 (checked), false 0.
// Any value other than 0 reads as true.
int BoolToInt(bool value);
bool IntToBool(int value);

// Whether a regular file is at `path` (a directory is not a file). Never throws.
bool FileExists(std::string_view path);

// The directory part of a path with its closing separator, "/" or "\" alike:
// "C:\data\model.trn" gives "C:\data\", "/tmp/a.trn" gives "/tmp/". A bare file
// name gives "".
std::string GetPathFromFile(std::string_view path);

// The file name part of a path: what follows the last "/" or "\".
std::string GetNameFromFile(std::string_view path);

// The decimal parse of text fields: leading blanks and tabs are skipped, then an
// optional sign, digits with at most one decimal point, and an optional exponent
// ("E" or "e", an optional sign and at least one digit) are read; the parse stops at
// the first character it cannot take. "12.5abc" is 12.5, "" and "abc" are 0,
// "  3" is 3, "1e3" is 1000, "-.5" is -0.5, "1e" is 1. The parse does not depend on
// the locale. A number beyond the range of a 64-bit float throws OverflowError.
double Val(std::string_view text);

// Equal texts without regard to the case of ASCII letters, as the project file
// compares labels and field names.
bool EqualsIgnoreCase(std::string_view a, std::string_view b);

}  // namespace tarno
