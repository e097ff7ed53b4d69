// dBASE III tables: the writer of the attribute table of a shapefile export, and a
// reader of the attributes of a shapefile base map (colour and label fields).
//
// The writer's layout: version byte 3; the date (year - 1900, month, day); the
// record count; the header and record lengths; 20 zero bytes; 32 bytes per field
// (name zero-filled to 11 bytes, type letter, 4 zero bytes, length, decimals, 14
// zero bytes); 13; the records, each one blank and then its fields; 26.
//
// Every value is written left-justified in a field filled with blanks, numbers
// too: that is how this system writes its tables (other programs right-justify
// numbers, and read ours all the same).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/error.h"

namespace tarno {

struct DbfDate {
  int Year = 1900;
  int Month = 1;
  int Day = 1;
};

// A field as it stands in a table's header.
struct DbfField {
  std::string Name;
  char Type = 'C';  // C, N, L, D (M is known by its width only)
  int Length = 1;
  int Decimals = 0;
};

// The dBASE type of a project field's type name: "boolean" is "L"; "integer",
// "single", "double" and "long" are "N"; "text" is "C"; anything else "Unknown!",
// which the writers treat as "C".
std::string DBFTypeFromField(std::string_view fieldType);

// The width of a field of a type when it does not depend on the values: L 1, D 8,
// M 10; 0 for C and N, whose width is that of their longest value.
int DBFTypeWidth(char type);

// Writes a table whose values come as rows of text, one value per field in the
// order of `fields`; each value is cut or filled with blanks to its field's length
// (a row with fewer values gets blanks). Field names lose their blanks and are cut
// to ten characters. `today` is the date of the header (the system's date when
// not given). Throws Error naming the file when it cannot be written.
void WriteDBFTable(const std::filesystem::path& path, const std::vector<DbfField>& fields,
                   const std::vector<std::vector<std::string>>& rows,
                   std::optional<DbfDate> today = std::nullopt);

// One value of a column: text, a number, a truth value or a date; monostate is an
// empty value (blanks).
using DbfValue = std::variant<std::monostate, std::string, double, bool, DbfDate>;

// A column of WriteDBFColumns: the field's name, its type ("C", "N", "L", "D", or
// anything else, taken as "C"), for "N" the picture mask of its values (decimals
// are the digits behind the mask's last "."; an empty mask writes the general
// number form), and the values, one per record.
struct DbfColumn {
  std::string Name;
  std::string Type = "C";
  std::string Format;
  std::vector<DbfValue> Values;
};

// Writes a table of `recordCount` records from columns of values: each value is
// formatted by its field's type; a column with fewer values gets blanks. Lengths:
// C and N the longest formatted value (at least 1), L 1, D 8.
void WriteDBFColumns(const std::filesystem::path& path, const std::vector<DbfColumn>& columns,
                     int recordCount, std::optional<DbfDate> today = std::nullopt);

// A table as read: its fields and, per record, the values with the blanks of both
// ends taken off. Deleted records keep their place (the records follow the shapes
// of a shapefile one to one) and are marked.
struct DbfTable {
  std::vector<DbfField> Fields;
  std::vector<std::vector<std::string>> Records;
  std::vector<bool> Deleted;
  // The position of a field by name, case ignored; -1 when there is none.
  int FieldIndex(std::string_view name) const;
};

// Reads a table. A header that does not hold together (too short, a field list
// without its end mark, a record length other than the sum of the field lengths
// plus one, a file too short for its records) throws Error naming the file. Values
// that are not valid UTF-8 are taken as Latin-1 and converted.
DbfTable ReadDBF(const std::filesystem::path& path);
// The same from the bytes of a table; `name` names it in the errors.
DbfTable ReadDBFBytes(std::string_view bytes, const std::string& name);

}  // namespace tarno
