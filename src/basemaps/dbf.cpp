#include "basemaps/dbf.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "core/format.h"
#include "core/text.h"

namespace tarno {

namespace {

// A field's length is one byte in the header; character fields keep to 254.
constexpr int kMaxFieldLength = 254;

DbfDate Today() {
  const auto now = std::chrono::system_clock::now();
  const std::chrono::year_month_day ymd{std::chrono::floor<std::chrono::days>(now)};
  return DbfDate{static_cast<int>(ymd.year()), static_cast<int>(static_cast<unsigned>(ymd.month())),
                 static_cast<int>(static_cast<unsigned>(ymd.day()))};
}

void PutLE(std::string& out, std::uint32_t v, int bytes) {
  for (int i = 0; i < bytes; ++i) out.push_back(static_cast<char>((v >> (8 * i)) & 0xFF));
}

std::string FieldName(const std::string& name) {
  std::string out;
  for (char c : name)
    if (c != ' ') out.push_back(c);
  if (out.size() > 10) out.resize(10);
  return out;
}

char TypeLetter(const std::string& type) {
  if (type == "N" || type == "L" || type == "D") return type[0];
  return 'C';  // "C", and any unknown type ("Unknown!")
}

// The digit positions behind the last "." of a picture mask.
int MaskDecimals(const std::string& mask) {
  const std::size_t dot = mask.rfind('.');
  if (dot == std::string::npos) return 0;
  int n = 0;
  for (std::size_t i = dot + 1; i < mask.size(); ++i)
    if (mask[i] == '0' || mask[i] == '#') ++n;
  return n;
}

std::string Fit(std::string_view value, int length) {
  std::string out(value.substr(0, static_cast<std::size_t>(length)));
  out.append(static_cast<std::size_t>(length) - out.size(), ' ');
  return out;
}

void WriteTable(const std::filesystem::path& path, std::vector<DbfField> fields,
                const std::vector<std::vector<std::string>>& rows, std::optional<DbfDate> today) {
  const DbfDate d = today ? *today : Today();
  const std::size_t headerLength = 32 + 32 * fields.size() + 1;
  std::size_t recordLength = 1;
  for (DbfField& f : fields) {
    f.Length = std::clamp(f.Length, 1, kMaxFieldLength);
    recordLength += static_cast<std::size_t>(f.Length);
  }
  if (headerLength > 0xFFFF || recordLength > 0xFFFF)
    throw Error("Cannot write " + path.string() + ": " + std::to_string(fields.size()) +
                " fields make a header or record too long for a dBASE table.");

  std::string out;
  out.push_back(3);
  out.push_back(static_cast<char>(std::clamp(d.Year - 1900, 0, 255)));
  out.push_back(static_cast<char>(d.Month));
  out.push_back(static_cast<char>(d.Day));
  PutLE(out, static_cast<std::uint32_t>(rows.size()), 4);
  PutLE(out, static_cast<std::uint32_t>(headerLength), 2);
  PutLE(out, static_cast<std::uint32_t>(recordLength), 2);
  out.append(20, '\0');
  for (const DbfField& f : fields) {
    std::string name = FieldName(f.Name);
    name.resize(11, '\0');
    out += name;
    out.push_back(f.Type);
    out.append(4, '\0');
    out.push_back(static_cast<char>(f.Length));
    out.push_back(static_cast<char>(std::clamp(f.Decimals, 0, 255)));
    out.append(14, '\0');
  }
  out.push_back(13);
  for (const auto& row : rows) {
    out.push_back(' ');
    for (std::size_t k = 0; k < fields.size(); ++k)
      out += Fit(k < row.size() ? std::string_view(row[k]) : std::string_view(), fields[k].Length);
  }
  out.push_back(26);

  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (file) file.write(out.data(), static_cast<std::streamsize>(out.size()));
  if (!file) throw Error("Cannot write the table " + path.string() + ".");
}

std::string FormatValue(const DbfValue& v, char type, const std::string& mask) {
  if (std::holds_alternative<std::monostate>(v)) return "";
  switch (type) {
    case 'N':
      if (const double* x = std::get_if<double>(&v)) return FormatNumber(*x, mask);
      if (const bool* b = std::get_if<bool>(&v)) return FormatNumber(*b ? 1.0 : 0.0, mask);
      if (const std::string* s = std::get_if<std::string>(&v)) return *s;
      return "";
    case 'L':
      if (const bool* b = std::get_if<bool>(&v)) return *b ? "T" : "F";
      if (const double* x = std::get_if<double>(&v)) return *x != 0.0 ? "T" : "F";
      if (const std::string* s = std::get_if<std::string>(&v))
        return (*s == "T" || EqualsIgnoreCase(*s, "true")) ? "T" : "F";
      return "F";
    case 'D':
      if (const DbfDate* dt = std::get_if<DbfDate>(&v)) {
        char buf[16];
        std::snprintf(buf, sizeof buf, "%04d%02d%02d", dt->Year % 10000, dt->Month % 100,
                      dt->Day % 100);
        return buf;
      }
      if (const std::string* s = std::get_if<std::string>(&v)) return *s;
      return "";
    default:
      if (const std::string* s = std::get_if<std::string>(&v)) return *s;
      if (const double* x = std::get_if<double>(&v)) return GeneralNumber(*x);
      if (const bool* b = std::get_if<bool>(&v)) return *b ? "True" : "False";
      if (const DbfDate* dt = std::get_if<DbfDate>(&v)) return FormatValue(*dt, 'D', mask);
      return "";
  }
}

bool ValidUtf8(std::string_view s) {
  std::size_t i = 0;
  while (i < s.size()) {
    const auto c = static_cast<unsigned char>(s[i]);
    int extra = c < 0x80 ? 0 : (c >> 5) == 6 ? 1 : (c >> 4) == 14 ? 2 : (c >> 3) == 30 ? 3 : -1;
    if (extra < 0 || i + extra >= s.size()) return false;
    for (int k = 1; k <= extra; ++k)
      if ((static_cast<unsigned char>(s[i + k]) >> 6) != 2) return false;
    i += 1 + extra;
  }
  return true;
}

std::string Latin1ToUtf8(std::string_view s) {
  std::string out;
  for (char ch : s) {
    const auto c = static_cast<unsigned char>(ch);
    if (c < 0x80) {
      out.push_back(ch);
    } else {
      out.push_back(static_cast<char>(0xC0 | (c >> 6)));
      out.push_back(static_cast<char>(0x80 | (c & 0x3F)));
    }
  }
  return out;
}

std::string Trimmed(std::string_view s) {
  std::size_t a = 0, b = s.size();
  while (a < b && (s[a] == ' ' || s[a] == '\0')) ++a;
  while (b > a && (s[b - 1] == ' ' || s[b - 1] == '\0')) --b;
  std::string_view v = s.substr(a, b - a);
  return ValidUtf8(v) ? std::string(v) : Latin1ToUtf8(v);
}

std::uint32_t GetLE(std::string_view s, std::size_t at, int bytes) {
  std::uint32_t v = 0;
  for (int i = bytes - 1; i >= 0; --i) v = (v << 8) | static_cast<unsigned char>(s[at + i]);
  return v;
}

}  // namespace

std::string DBFTypeFromField(std::string_view fieldType) {
  if (EqualsIgnoreCase(fieldType, "boolean")) return "L";
  if (EqualsIgnoreCase(fieldType, "integer") || EqualsIgnoreCase(fieldType, "single") ||
      EqualsIgnoreCase(fieldType, "double") || EqualsIgnoreCase(fieldType, "long"))
    return "N";
  if (EqualsIgnoreCase(fieldType, "text")) return "C";
  return "Unknown!";
}

int DBFTypeWidth(char type) {
  switch (type) {
    case 'L': return 1;
    case 'D': return 8;
    case 'M': return 10;
    default: return 0;
  }
}

void WriteDBFTable(const std::filesystem::path& path, const std::vector<DbfField>& fields,
                   const std::vector<std::vector<std::string>>& rows,
                   std::optional<DbfDate> today) {
  WriteTable(path, fields, rows, today);
}

void WriteDBFColumns(const std::filesystem::path& path, const std::vector<DbfColumn>& columns,
                     int recordCount, std::optional<DbfDate> today) {
  const std::size_t n = static_cast<std::size_t>(std::max(recordCount, 0));
  std::vector<DbfField> fields;
  std::vector<std::vector<std::string>> rows(n, std::vector<std::string>(columns.size()));
  for (std::size_t c = 0; c < columns.size(); ++c) {
    const DbfColumn& col = columns[c];
    DbfField f;
    f.Name = col.Name;
    f.Type = TypeLetter(col.Type);
    f.Decimals = f.Type == 'N' ? MaskDecimals(col.Format) : 0;
    int longest = 1;
    for (std::size_t r = 0; r < n; ++r) {
      if (r < col.Values.size()) rows[r][c] = FormatValue(col.Values[r], f.Type, col.Format);
      longest = std::max(longest, static_cast<int>(rows[r][c].size()));
    }
    const int fixed = DBFTypeWidth(f.Type);
    f.Length = fixed > 0 ? fixed : std::min(longest, kMaxFieldLength);
    fields.push_back(f);
  }
  WriteTable(path, fields, rows, today);
}

int DbfTable::FieldIndex(std::string_view name) const {
  for (std::size_t i = 0; i < Fields.size(); ++i)
    if (EqualsIgnoreCase(Fields[i].Name, name)) return static_cast<int>(i);
  return -1;
}

DbfTable ReadDBFBytes(std::string_view bytes, const std::string& name) {
  auto bad = [&](const std::string& why) -> Error {
    return Error("The table " + name + " is not a valid dBASE file: " + why + ".");
  };
  if (bytes.size() < 33)
    throw bad("it is shorter than a header (" + std::to_string(bytes.size()) + " bytes)");
  const std::uint32_t count = GetLE(bytes, 4, 4);
  const std::uint32_t headerLength = GetLE(bytes, 8, 2);
  const std::uint32_t recordLength = GetLE(bytes, 10, 2);
  if (headerLength < 33 || headerLength > bytes.size())
    throw bad("its header length " + std::to_string(headerLength) + " is outside the file");

  DbfTable table;
  std::size_t pos = 32;
  std::uint32_t sum = 1;
  std::vector<std::size_t> offsets;
  while (true) {
    if (pos >= headerLength) throw bad("the field list has no end mark within the header");
    if (bytes[pos] == '\r') break;
    if (pos + 32 > headerLength) throw bad("the field list runs past the header length");
    DbfField f;
    std::string_view raw = bytes.substr(pos, 11);
    f.Name = std::string(raw.substr(0, std::min(raw.find('\0'), raw.size())));
    f.Type = bytes[pos + 11];
    f.Length = static_cast<unsigned char>(bytes[pos + 16]);
    f.Decimals = static_cast<unsigned char>(bytes[pos + 17]);
    offsets.push_back(sum);
    sum += static_cast<std::uint32_t>(f.Length);
    table.Fields.push_back(f);
    pos += 32;
  }
  if (sum != recordLength)
    throw bad("its record length " + std::to_string(recordLength) + " is not the " +
              std::to_string(sum) + " bytes of its fields");
  const std::uint64_t need =
      static_cast<std::uint64_t>(headerLength) + static_cast<std::uint64_t>(count) * recordLength;
  if (need > bytes.size())
    throw bad("it holds " + std::to_string(count) + " records of " + std::to_string(recordLength) +
              " bytes but only " + std::to_string(bytes.size()) + " bytes in all");

  table.Records.reserve(count);
  table.Deleted.reserve(count);
  for (std::uint32_t r = 0; r < count; ++r) {
    const std::string_view rec =
        bytes.substr(headerLength + static_cast<std::size_t>(r) * recordLength, recordLength);
    table.Deleted.push_back(rec[0] == '*');
    std::vector<std::string> values;
    values.reserve(table.Fields.size());
    for (std::size_t k = 0; k < table.Fields.size(); ++k)
      values.push_back(
          Trimmed(rec.substr(offsets[k], static_cast<std::size_t>(table.Fields[k].Length))));
    table.Records.push_back(std::move(values));
  }
  return table;
}

DbfTable ReadDBF(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file)
    throw Error("Cannot open the table " + path.string() + ".", error_number::kFileNotFound);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  return ReadDBFBytes(bytes, path.string());
}

}  // namespace tarno
