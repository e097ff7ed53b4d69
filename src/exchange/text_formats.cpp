#include "exchange/text_formats.h"

#include <charconv>
#include <cmath>
#include <fstream>
#include <iterator>
#include <limits>
#include <set>
#include <sstream>

#include "core/error.h"
#include "core/format.h"
#include "core/text.h"
#include "store/schema.h"

namespace tarno::exchange {

namespace {

constexpr const char* kEol = "\r\n";

std::string Quoted(std::string_view s) {
  std::string q(1, '"');
  q.append(s);
  q.push_back('"');
  return q;
}

// A text value on one line of its own.
std::string OneLine(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    if (c == '\r' || c == '\n') c = ' ';
  return out;
}

const TableDef& Table(std::string_view name) {
  const TableDef* t = FindTable(name);
  if (t == nullptr) throw InvalidArgumentError("No table " + std::string(name));
  return *t;
}

std::string ValueText(const Row& row, std::string_view table, std::string_view field) {
  const FieldDef* f = FindField(Table(table), field);
  const Value& v = row.Get(field);
  if (f != nullptr && f->type == FieldType::Boolean) return row.Flag(field) ? "True" : "False";
  if (const auto* s = std::get_if<std::string>(&v)) return OneLine(*s);
  if (const auto* i = std::get_if<std::int64_t>(&v)) return std::to_string(*i);
  if (const auto* d = std::get_if<double>(&v)) return ExactNumber(*d);
  return "";
}

void WriteFields(std::ostream& out, const Element& e, std::string_view table,
                 const std::vector<std::string_view>& fields) {
  for (std::string_view f : fields) out << ValueText(e.row, table, f) << kEol;
}

void WriteVertices(std::ostream& out, const Element& e) {
  for (const Vertex& v : e.vertices) out << ExactNumber(v.X) << " " << ExactNumber(v.Y) << kEol;
  out << kEndLine << kEol;
}

bool IsEndLine(std::string_view line) { return EqualsIgnoreCase(TrimST(line), kEndLine); }

std::string TableOf(BlockKind kind) {
  switch (kind) {
    case BlockKind::Inhomogeneity: return "Inhomogeneities";
    case BlockKind::Linesink: return "LinesinkStrings";
    default: return "Domains";
  }
}

ElementKind ElementKindOf(BlockKind kind) {
  switch (kind) {
    case BlockKind::Inhomogeneity: return ElementKind::Inhomogeneity;
    case BlockKind::Linesink: return ElementKind::Linesink;
    default: return ElementKind::Domain;
  }
}

int FewestVertices(BlockKind kind) { return kind == BlockKind::Linesink ? 2 : 3; }

}  // namespace

std::vector<TextLine> SplitTextLines(std::string_view content) {
  std::vector<TextLine> lines;
  int number = 0;
  std::size_t start = 0;
  while (start < content.size()) {
    std::size_t end = content.find('\n', start);
    const bool last = end == std::string_view::npos;
    if (last) end = content.size();
    std::string_view line = content.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    lines.push_back({++number, std::string(line)});
    start = end + 1;
  }
  return lines;
}

std::vector<TextLine> ReadTextLines(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw Error("Cannot read the file " + Quoted(path), error_number::kFileNotFound);
  const std::string content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) throw Error("Cannot read the file " + Quoted(path));
  return SplitTextLines(content);
}

std::optional<double> WholeNumber(std::string_view text) {
  std::string t = TrimST(text);
  std::string_view s = t;
  if (!s.empty() && s.front() == '+') s.remove_prefix(1);
  if (s.empty() || s.find_first_not_of("0123456789+-.eE") != std::string_view::npos)
    return std::nullopt;
  double v = 0;
  const auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
  if (ec != std::errc() || end != s.data() + s.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}

std::string ExactNumber(double value) {
  if (value == 0) return "0";  // minus zero too
  // Plain digits for the sizes of coordinates, heads and rates ("600000", not
  // "6e+05"); the shortest exponent form beyond them.
  char buffer[400];
  const double size = std::fabs(value);
  const auto [end, ec] =
      size >= 1e-5 && size < 1e16
          ? std::to_chars(buffer, buffer + sizeof buffer, value, std::chars_format::fixed)
          : std::to_chars(buffer, buffer + sizeof buffer, value);
  if (ec != std::errc()) return GeneralNumber(value);
  return std::string(buffer, end);
}

std::optional<std::string> SetFieldFromFile(Row& row, std::string_view table,
                                            std::string_view field, std::string_view text) {
  const FieldDef* f = FindField(Table(table), field);
  if (f == nullptr) throw InvalidArgumentError("No field " + std::string(field));
  const std::string value = TrimST(text);
  const std::string name = row.CanonicalName(field);
  auto bad = [&](const char* what) { return Quoted(value) + " is not " + what + " for " + name; };
  switch (f->type) {
    case FieldType::Text:
    case FieldType::Date: row.Set(field, value); return std::nullopt;
    case FieldType::Double: {
      const auto v = WholeNumber(value);
      if (!v) return bad("a number");
      row.Set(field, *v);
      return std::nullopt;
    }
    case FieldType::Boolean:
    case FieldType::Integer:
    case FieldType::Long: {
      const bool flag = f->type == FieldType::Boolean;
      if (EqualsIgnoreCase(value, "true") || (flag && EqualsIgnoreCase(value, "yes"))) {
        row.Set(field, std::int64_t{1});
        return std::nullopt;
      }
      if (EqualsIgnoreCase(value, "false") || (flag && EqualsIgnoreCase(value, "no"))) {
        row.Set(field, std::int64_t{0});
        return std::nullopt;
      }
      const auto v = WholeNumber(value);
      if (!v) return bad(flag ? "True or False" : "a whole number");
      if (flag) {
        row.Set(field, std::int64_t{*v != 0 ? 1 : 0});
        return std::nullopt;
      }
      const double limit = f->type == FieldType::Integer ? 32767.0 : 2147483647.0;
      if (*v != std::floor(*v) || std::fabs(*v) > limit) return bad("a whole number");
      row.Set(field, static_cast<std::int64_t>(*v));
      return std::nullopt;
    }
  }
  return bad("a value");
}

// --- Property-block files ---------------------------------------------------------

const std::vector<std::string_view>& InhomogeneityFields(bool versionTwo) {
  static const std::vector<std::string_view> kOne = {
      "Label",    "HydCond", "BottomElevation", "AverageHead", "Recharge",
      "Porosity", "Color",   "ChangeK",         "ChangeR",     "ChangeP",
      "ChangeB",  "ChangeA", "ScenHydCond",     "ScenRecharge"};
  static const std::vector<std::string_view> kTwo = [] {
    std::vector<std::string_view> v = kOne;
    for (std::string_view f :
         {"DefaultHydCond", "DefaultRecharge", "chkScenarioHydCond", "chkScenarioRecharge"})
      v.push_back(f);
    return v;
  }();
  return versionTwo ? kTwo : kOne;
}

const std::vector<std::string_view>& LinesinkFields() {
  static const std::vector<std::string_view> kFields = {
      "Label",        "HeadSpecified", "StartingHead",     "EndingHead",         "Resistance",
      "Width",        "Depth",         "Routing",          "EndStream",          "OverlandFlow",
      "EndInflow",    "RoutePID",      "RouteVID",         "ScenResistance",     "Drain",
      "ScenFluxName", "Gallery",       "TotalDischarge",   "InletStream",        "OutletStream",
      "OutletTable",  "Lake",          "Precipitation",    "Evapotranspiration", "Farfield",
      "chkScenario",  "AutoSWIZC",     "DefaultResistance"};
  return kFields;
}

const std::vector<std::string_view>& BoundaryFields() {
  static const std::vector<std::string_view> kFields = {"Label", "FarFieldBoundary", "NearFieldHU",
                                                        "Color"};
  return kFields;
}

PropertyBlockReader::PropertyBlockReader(BlockFile file, std::vector<TextLine> lines)
    : file_(file), lines_(std::move(lines)) {
  // Blank lines before the first line that counts are passed over.
  while (next_ < lines_.size() && IsBlankLine(lines_[next_].text)) ++next_;
  if (next_ < lines_.size() && EqualsIgnoreCase(TrimST(lines_[next_].text), kVersionLine)) {
    versionTwo_ = true;
    ++next_;
  }
}

std::optional<BlockKind> PropertyBlockReader::HeaderKind(const std::string& line) const {
  const std::string h = TrimST(line);
  if (file_ == BlockFile::Inh)
    return EqualsIgnoreCase(h, kInhomogeneityHeader) ? std::optional(BlockKind::Inhomogeneity)
                                                     : std::nullopt;
  if (EqualsIgnoreCase(h, kNearFieldHeader) || EqualsIgnoreCase(h, kNewHeader))
    return BlockKind::Linesink;
  if (EqualsIgnoreCase(h, kHydrologicUnitHeader)) return BlockKind::HydrologicUnit;
  if (EqualsIgnoreCase(h, kFarFieldHeader)) return BlockKind::FarFieldBoundary;
  if (EqualsIgnoreCase(h, kModelBoundaryHeader)) return BlockKind::ModelBoundary;
  return std::nullopt;
}

void PropertyBlockReader::SkipPastEnd() {
  while (next_ < lines_.size()) {
    if (IsEndLine(lines_[next_++].text)) return;
  }
}

BlockResult PropertyBlockReader::Problem(int line, std::string text, std::string reason) {
  BlockResult r;
  r.status = BlockStatus::Problem;
  r.problem = {line, std::move(text), std::move(reason)};
  SkipPastEnd();
  if (next_ >= lines_.size()) done_ = true;
  return r;
}

BlockResult PropertyBlockReader::Next() {
  BlockResult r;
  if (done_) return r;
  while (next_ < lines_.size() && IsBlankLine(lines_[next_].text)) ++next_;
  if (next_ >= lines_.size()) {
    done_ = true;
    return r;
  }
  const TextLine& header = lines_[next_];
  const std::optional<BlockKind> kind = HeaderKind(header.text);
  if (!kind) {
    done_ = true;
    r.status = BlockStatus::Foreign;
    r.problem = {header.number, header.text,
                 "a block begins here with " + Quoted(TrimST(header.text))};
    return r;
  }
  ++next_;
  if (*kind == BlockKind::Linesink) ++stringBlocks_;

  ElementBlock& b = r.block;
  b.kind = *kind;
  b.line = header.number;
  b.element = NewElement(ElementKindOf(*kind));
  const std::string table = TableOf(*kind);
  const std::vector<std::string_view>& fields = *kind == BlockKind::Inhomogeneity
                                                    ? InhomogeneityFields(versionTwo_)
                                                : *kind == BlockKind::Linesink ? LinesinkFields()
                                                                               : BoundaryFields();
  for (std::string_view field : fields) {
    if (next_ >= lines_.size()) {
      done_ = true;
      return Problem(header.number, header.text,
                     "the block ends before its field " + std::string(field));
    }
    const TextLine& line = lines_[next_];
    if (IsEndLine(line.text)) {
      ++next_;
      BlockResult p;
      p.status = BlockStatus::Problem;
      p.problem = {line.number, line.text, "\"end\" comes before the field " + std::string(field)};
      if (next_ >= lines_.size()) done_ = true;
      return p;
    }
    ++next_;
    if (auto why = SetFieldFromFile(b.element.row, table, field, line.text))
      return Problem(line.number, line.text, *why);
  }
  const std::string label = b.element.row.Text("Label");
  if (label.empty()) return Problem(header.number, header.text, "the block has no label");
  if (*kind == BlockKind::Linesink) {
    // The places of RoutePID and RouteVID hold the link as the file can keep it.
    b.routeBlock = b.element.row.Integer("RoutePID");
    b.routeSeq = b.element.row.Integer("RouteVID");
    b.element.row.Set("RoutePID", std::int64_t{0});
    b.element.row.Set("RouteVID", std::int64_t{0});
    if (b.routeBlock < 0 || b.routeSeq < 0)
      return Problem(header.number, header.text,
                     "the routing of " + Quoted(label) + " names no string of the file");
  }
  for (;;) {
    if (next_ >= lines_.size()) {
      done_ = true;
      BlockResult p;
      p.status = BlockStatus::Problem;
      p.problem = {header.number, header.text, "the block of " + Quoted(label) + " has no \"end\""};
      return p;
    }
    const TextLine& line = lines_[next_++];
    if (IsEndLine(line.text)) break;
    if (IsBlankLine(line.text)) continue;
    std::string spaced = line.text;
    for (char& c : spaced)
      if (c == '\t') c = ' ';
    const std::vector<std::string> xy = ParseString(spaced, " ");
    std::optional<double> x, y;
    if (xy.size() == 3) {
      x = WholeNumber(xy[1]);
      y = WholeNumber(xy[2]);
    }
    if (!x || !y) {
      --next_;
      return Problem(line.number, line.text,
                     Quoted(line.text) + " is not a vertex \"X Y\" of " + Quoted(label));
    }
    b.element.vertices.push_back({0, -1, 0, *x, *y});
  }
  const int fewest = FewestVertices(*kind);
  if (static_cast<int>(b.element.vertices.size()) < fewest) {
    BlockResult p;
    p.status = BlockStatus::Problem;
    p.problem = {header.number, header.text,
                 Quoted(label) + " has " + std::to_string(b.element.vertices.size()) +
                     " vertices, fewer than " + std::to_string(fewest)};
    if (next_ >= lines_.size()) done_ = true;
    return p;
  }
  r.status = BlockStatus::Block;
  return r;
}

void WriteVersionLine(std::ostream& out) { out << kVersionLine << kEol; }

void WriteInhomogeneityBlock(std::ostream& out, const Element& inhomogeneity) {
  out << kInhomogeneityHeader << kEol;
  WriteFields(out, inhomogeneity, "Inhomogeneities", InhomogeneityFields(true));
  WriteVertices(out, inhomogeneity);
}

void WriteBoundaryBlock(std::ostream& out, BlockKind kind, const Element& domain) {
  switch (kind) {
    case BlockKind::FarFieldBoundary: out << kFarFieldHeader; break;
    case BlockKind::ModelBoundary: out << kModelBoundaryHeader; break;
    default: out << kHydrologicUnitHeader; break;
  }
  out << kEol;
  WriteFields(out, domain, "Domains", BoundaryFields());
  WriteVertices(out, domain);
}

void WriteLinesinkBlock(std::ostream& out, const char* header, const Element& linesink,
                        std::int64_t routeBlock, std::int64_t routeSeq) {
  out << header << kEol;
  Element e = linesink;
  e.row.Set("RoutePID", routeBlock);
  e.row.Set("RouteVID", routeSeq);
  WriteFields(out, e, "LinesinkStrings", LinesinkFields());
  WriteVertices(out, e);
}

// --- One record a line --------------------------------------------------------------

char DetectDelimiter(std::string_view firstLine) {
  if (firstLine.find(',') != std::string_view::npos) return ',';
  if (firstLine.find_first_of(" \t") != std::string_view::npos) return ' ';
  return 0;
}

std::vector<std::string> RecordFields(std::string_view line, char delimiter) {
  std::vector<std::string> fields;
  if (delimiter == ',') {
    // Each comma ends a field, so that an empty field (a well without a label) keeps
    // its place; empty fields at the end of the line are dropped.
    std::size_t start = 0;
    for (;;) {
      const std::size_t comma = line.find(',', start);
      fields.push_back(TrimST(line.substr(
          start, comma == std::string_view::npos ? std::string_view::npos : comma - start)));
      if (comma == std::string_view::npos) break;
      start = comma + 1;
    }
    while (!fields.empty() && fields.back().empty()) fields.pop_back();
    return fields;
  }
  std::string text(line);
  for (char& c : text)
    if (c == '\t') c = ' ';
  const std::vector<std::string> parsed = ParseString(text, " ");
  for (std::size_t i = 1; i < parsed.size(); ++i) fields.push_back(TrimST(parsed[i]));
  return fields;
}

bool IsStopLine(std::string_view line, char delimiter) {
  const std::vector<std::string> f = RecordFields(line, delimiter == 0 ? ' ' : delimiter);
  if (f.empty()) return false;
  for (const char* word : {"Quit", "quit", "end", "End", "Exit", "exit"})
    if (f.front() == word) return true;
  return false;
}

bool IsCommentLine(std::string_view line) {
  const std::string t = TrimST(line);
  return !t.empty() && t.front() == '*';
}

bool IsBlankLine(std::string_view line) { return TrimST(line).empty(); }

std::optional<WellRecord> ParseWellLine(std::string_view line, char delimiter) {
  const std::vector<std::string> f = RecordFields(line, delimiter);
  if (f.size() < 4 || f.size() > 7) return std::nullopt;
  WellRecord w;
  const auto x = WholeNumber(f[0]), y = WholeNumber(f[1]), h = WholeNumber(f[2]),
             r = WholeNumber(f[3]);
  if (!x || !y || !h || !r) return std::nullopt;
  w.x = *x;
  w.y = *y;
  w.head = *h;
  w.radius = *r;
  if (f.size() >= 5) w.label = f[4];
  if (f.size() >= 6) {
    w.top = WholeNumber(f[5]);
    if (!w.top) return std::nullopt;
  }
  if (f.size() == 7) {
    w.bottom = WholeNumber(f[6]);
    if (!w.bottom) return std::nullopt;
  }
  return w;
}

std::string WellLine(const WellRecord& w) {
  return FormatNumber(w.x, "0.000000000E+00 ") + "," + FormatNumber(w.y, "0.000000000E+00 ") + "," +
         FormatNumber(w.head, "0.00000E+00 ") + "," + FormatNumber(w.radius, "0.00000E+00") + "," +
         StripString(OneLine(w.label), ",") + "," + ExactNumber(w.top.value_or(0)) + "," +
         ExactNumber(w.bottom.value_or(0));
}

namespace {

// A test point label without blanks, commas and control characters: the estimation
// files use blanks and commas as delimiters.
std::string CleanLabel(std::string_view label) {
  std::string out;
  for (char c : label) {
    const auto u = static_cast<unsigned char>(c);
    if (c == ' ' || c == ',' || u < 0x20 || u == 0x7f) continue;
    out.push_back(c);
  }
  return out;
}

}  // namespace

std::optional<std::string> TestPointType(std::string_view word) {
  const std::string w = TrimST(word);
  if (EqualsIgnoreCase(w, "Piezometer")) return "Piezometer";
  if (EqualsIgnoreCase(w, "Gage") || EqualsIgnoreCase(w, "Gauge")) return "Gage";
  if (EqualsIgnoreCase(w, "Lake Stage")) return "Lake Stage";
  return std::nullopt;
}

std::optional<TestPointRecord> ParseTestPointLine(std::string_view line, char delimiter) {
  std::vector<std::string> f = RecordFields(line, delimiter);
  if (f.size() < 4) return std::nullopt;
  TestPointRecord t;
  const auto x = WholeNumber(f[0]), y = WholeNumber(f[1]), obs = WholeNumber(f[2]);
  if (!x || !y || !obs) return std::nullopt;
  t.x = *x;
  t.y = *y;
  t.obsHead = *obs;
  std::size_t labelFrom = 0;
  // A blank-delimited "Lake Stage" arrives as two fields.
  if (f.size() >= 6 && EqualsIgnoreCase(f[4], "Lake") && EqualsIgnoreCase(f[5], "Stage")) {
    f[4] = "Lake Stage";
    f.erase(f.begin() + 5);
  }
  const std::optional<std::string> type = f.size() >= 5 ? TestPointType(f[4]) : std::nullopt;
  if (type) {
    const auto flow = WholeNumber(f[3]);
    if (!flow) return std::nullopt;
    t.obsStreamFlow = *flow;
    t.type = *type;
    labelFrom = 5;
  } else {
    t.type = "Piezometer";
    t.olderForm = true;
    labelFrom = 3;
  }
  for (std::size_t i = labelFrom; i < f.size(); ++i) t.label += f[i];
  t.label = CleanLabel(t.label);
  if (t.label.empty()) return std::nullopt;
  return t;
}

std::string TestPointLine(const TestPointRecord& t) {
  return ExactNumber(t.x) + "," + ExactNumber(t.y) + "," + ExactNumber(t.obsHead) + "," +
         ExactNumber(t.obsStreamFlow) + " , " + t.type + " , " + CleanLabel(t.label);
}

std::optional<TextLabelRecord> ParseTextLabelLine(std::string_view line) {
  // Three numbers, each ended by a blank, a tab or a comma; the rest is the text. The
  // first number tells the delimiter: a comma after it (blanks allowed) makes a comma
  // line, where a comma after each number is the delimiter; in a line of blanks a comma
  // belongs to the text, so that a text that begins with one reads back as written.
  std::size_t pos = 0;
  double numbers[3] = {};
  bool commas = false;
  for (int k = 0; k < 3; ++k) {
    while (pos < line.size() && (line[pos] == ' ' || line[pos] == '\t')) ++pos;
    const std::size_t start = pos;
    while (pos < line.size() && line[pos] != ' ' && line[pos] != '\t' && line[pos] != ',') ++pos;
    const auto v = WholeNumber(line.substr(start, pos - start));
    if (!v) return std::nullopt;
    numbers[k] = *v;
    std::size_t after = pos;
    while (after < line.size() && (line[after] == ' ' || line[after] == '\t')) ++after;
    if (k == 0) commas = after < line.size() && line[after] == ',';
    if (commas && after < line.size() && line[after] == ',') pos = after + 1;
    else if (k < 2) pos = after;
    else pos = std::min(pos + 1, line.size());  // the blank that ends the type
  }
  if (numbers[2] != 0 && numbers[2] != 1) return std::nullopt;
  TextLabelRecord t;
  t.x = numbers[0];
  t.y = numbers[1];
  t.labelType = static_cast<int>(numbers[2]);
  // The text as it would be written again: line ends stand as blanks, and blanks at
  // either end do not count (a text of line ends alone is no text).
  t.text = TrimST(OneLine(line.substr(std::min(pos, line.size()))));
  if (t.text.empty()) return std::nullopt;
  return t;
}

std::string TextLabelLine(const TextLabelRecord& t) {
  return FormatNumber(t.x, "0.00000E+00 ") + FormatNumber(t.y, "0.00000E+00 ") +
         FormatNumber(t.labelType, "0 ") + OneLine(t.text);
}

}  // namespace tarno::exchange
