#include "exchange/text_exchange.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "core/error.h"
#include "core/format.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "elements/geometry.h"
#include "elements/test_point_dialog.h"
#include "elements/text_label_dialog.h"
#include "elements/text_rows.h"
#include "elements/vertex_edit.h"
#include "exchange/exchange_files.h"
#include "exchange/text_formats.h"
#include "store/undo_history.h"

namespace tarno::exchange {

namespace fs = std::filesystem;
using namespace text_text;

namespace {

constexpr int kWaitWidth = 3000;
constexpr const char* kFarFieldPrefix = "Far_Field_";
constexpr const char* kModelPrefix = "Model_";

std::string Count(int n) { return std::to_string(n); }

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

// The overwrite question of every export; a No shows "Abort" with the operation's text.
bool MayWrite(UserInterface& ui, const std::string& file, const char* aborted) {
  if (!FileExists(file)) return true;
  if (ui.MessageBox(kFileExistsTitle, {"File " + file + " already exists.", kOverwrite},
                    Buttons::YesNo, Icon::Question) == Answer::Yes)
    return true;
  ui.MessageBox(kAbortTitle, {aborted}, Buttons::OK, Icon::Exclamation);
  return false;
}

void WriteFile(const std::string& file, const std::string& content) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("Cannot write the file \"" + file + "\"");
  out << content;
  out.close();
  if (!out) throw Error("Cannot write the file \"" + file + "\"");
}

// The writes of one import: one entry of the edit history and one transaction, so
// that a file of thousands of elements is not thousands of commits to the disk. Each
// element is still written in a transaction of its own inside it, whole or not at
// all. What was written stands however the import ends: stopped by the user, or by a
// failure on the way, which the caller's error trap then reports.
class ImportWrites {
 public:
  ImportWrites(Database& db, std::string name) : scope_(db, std::move(name)), tx_(db) {}
  ~ImportWrites() {
    if (done_) return;
    try {
      Commit();
    } catch (...) {
      // Unwinding already: the first failure is the one reported.
    }
  }
  ImportWrites(const ImportWrites&) = delete;
  ImportWrites& operator=(const ImportWrites&) = delete;
  void Commit() {
    done_ = true;
    tx_.Commit();
    scope_.Commit();
  }

 private:
  UndoScope scope_;
  Transaction tx_;
  bool done_ = false;
};

// Hides the wait window however the import ends.
class WaitWindow {
 public:
  WaitWindow(UserInterface& ui, const std::string& text) : ui_(ui) {
    ui_.PleaseWaitShow(text, kWaitWidth);
  }
  ~WaitWindow() { ui_.PleaseWaitHide(); }
  WaitWindow(const WaitWindow&) = delete;
  WaitWindow& operator=(const WaitWindow&) = delete;

 private:
  UserInterface& ui_;
};

// --- The hydrologic unit --------------------------------------------------------------

struct HydrologicUnit {
  std::optional<Element> unit;  // the near-field unit boundary, when the project has one
  std::vector<std::pair<BlockKind, Element>> boundaries;  // in the order they are written
};

BlockKind BoundaryKind(const Element& d) {
  if (d.row.Flag("FarFieldBoundary")) return BlockKind::FarFieldBoundary;
  if (StartsWithIgnoreCase(d.Label(), kModelPrefix)) return BlockKind::ModelBoundary;
  if (d.row.Flag("NearFieldHU")) return BlockKind::HydrologicUnit;
  return BlockKind::ModelBoundary;
}

HydrologicUnit LoadUnit(Database& db) {
  HydrologicUnit hu;
  const std::vector<Element> domains = LoadAll(db, ElementKind::Domain);
  for (const Element& d : domains) {
    if (BoundaryKind(d) == BlockKind::HydrologicUnit) {
      hu.unit = d;
      break;
    }
  }
  if (!hu.unit) {
    for (const Element& d : domains) hu.boundaries.emplace_back(BoundaryKind(d), d);
    return hu;
  }
  hu.boundaries.emplace_back(BlockKind::HydrologicUnit, *hu.unit);
  const std::string label = hu.unit->Label();
  for (const auto& [prefix, kind] : {std::pair{kFarFieldPrefix, BlockKind::FarFieldBoundary},
                                     std::pair{kModelPrefix, BlockKind::ModelBoundary}}) {
    for (const Element& d : domains)
      if (EqualsIgnoreCase(d.Label(), std::string(prefix) + label)) {
        hu.boundaries.emplace_back(kind, d);
        break;
      }
  }
  return hu;
}

// An element is in the unit when one of its vertices is (everything is, without one).
bool InUnit(const HydrologicUnit& hu, const Element& e) {
  if (!hu.unit) return true;
  return std::any_of(e.vertices.begin(), e.vertices.end(),
                     [&](const Vertex& v) { return PointInPolygon(hu.unit->vertices, v.X, v.Y); });
}

// The .lss text of the near-field file (boundaries and the near-field strings in the
// unit) or of the far-field file (the far-field strings).
std::string LssContent(Database& db, const HydrologicUnit& hu, bool farField, int& strings,
                       int& boundaries) {
  std::ostringstream out;
  WriteVersionLine(out);
  boundaries = 0;
  if (!farField) {
    for (const auto& [kind, d] : hu.boundaries) {
      WriteBoundaryBlock(out, kind, d);
      ++boundaries;
    }
  }
  std::vector<Element> chosen;
  for (Element& e : LoadAll(db, ElementKind::Linesink)) {
    const bool isFar = e.row.Integer("Farfield") != 0;
    if (farField ? isFar : (!isFar && InUnit(hu, e))) chosen.push_back(std::move(e));
  }
  // A routing link is kept as the linked string's number among the file's blocks and
  // the Seq its vertex gets when the file is read (100, 200, ... in vertex order).
  std::map<std::int64_t, std::int64_t> blockOfPid;
  for (std::size_t i = 0; i < chosen.size(); ++i)
    blockOfPid[chosen[i].key] = static_cast<std::int64_t>(i + 1);
  for (const Element& e : chosen) {
    std::int64_t block = 0, seq = 0;
    const auto target = blockOfPid.find(e.row.Integer("RoutePID"));
    if (e.row.Integer("RoutePID") != 0 && target != blockOfPid.end()) {
      const Element& t = chosen[static_cast<std::size_t>(target->second - 1)];
      for (std::size_t k = 0; k < t.vertices.size(); ++k)
        if (t.vertices[k].VID == e.row.Integer("RouteVID")) {
          block = target->second;
          seq = static_cast<std::int64_t>(k + 1) * 100;
        }
    }
    WriteLinesinkBlock(out, farField ? kNewHeader : kNearFieldHeader, e, block, seq);
  }
  strings = static_cast<int>(chosen.size());
  return out.str();
}

std::string InhContent(const std::vector<Element>& inhomogeneities) {
  std::ostringstream out;
  WriteVersionLine(out);
  for (const Element& e : inhomogeneities) WriteInhomogeneityBlock(out, e);
  return out.str();
}

// --- Reading property-block files -------------------------------------------------------

bool SameVertices(const std::vector<Vertex>& a, const std::vector<Vertex>& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (a[i].X != b[i].X || a[i].Y != b[i].Y) return false;
  return true;
}

bool AskContinue(UserInterface& ui, const std::string& file, const BlockProblem& p) {
  return ui.MessageBox(
             kErrorInImportTitle,
             {"Error in file " + file + " line " + std::to_string(p.line) + ": " + p.reason,
              kContinueImport},
             Buttons::YesNo, Icon::Exclamation) == Answer::Yes;
}

void ShowFileNotFound(UserInterface& ui, const std::string& file) {
  ui.MessageBox(kFileNotFoundTitle, {"File " + file + " does not exist!", kIgnoreFile}, Buttons::OK,
                Icon::Exclamation);
}

void ShowReadFail(UserInterface& ui, const std::string& file) {
  ui.MessageBox(kReadFailTitle, {"The file: " + file + " is not of the proper format", kCannotRead},
                Buttons::OK, Icon::Critical);
}

struct BlockCounts {
  int strings = 0;
  int boundaries = 0;
  int inhomogeneities = 0;
};

// Reads every block of a property-block file into the project. An element whose
// label is in use is skipped when it has the same vertices (it is already there)
// and is a bad record otherwise.
TextImportResult ImportBlocks(Database& db, UserInterface& ui, const std::string& file,
                              BlockFile kind, BlockCounts& counts) {
  TextImportResult result;
  if (!FileExists(file)) {
    ShowFileNotFound(ui, file);
    return result;
  }
  PropertyBlockReader reader(kind, ReadTextLines(file));
  ImportWrites scope(
      db, kind == BlockFile::Lss ? "Import Line-sink Strings" : "Import Inhomogeneities");
  struct Routed {
    Element element;
    std::int64_t block, seq;
  };
  std::map<std::int64_t, Element> stringOfBlock;  // the strings written, by block number
  std::vector<Routed> routed;
  bool first = true;
  for (;;) {
    BlockResult r = reader.Next();
    if (r.status == BlockStatus::End) break;
    if (r.status == BlockStatus::Foreign) {
      ShowReadFail(ui, file);
      result.stopped = true;
      break;
    }
    if (first) result.filesRead = 1;
    first = false;
    if (r.status == BlockStatus::Problem) {
      if (!AskContinue(ui, file, r.problem)) {
        result.stopped = true;
        break;
      }
      continue;
    }
    ElementBlock& b = r.block;
    Element& e = b.element;
    if (const auto existing = FindByLabel(db, e.kind, e.Label())) {
      if (SameVertices(existing->vertices, e.vertices)) {
        ++result.skipped;
        if (b.kind == BlockKind::Linesink) stringOfBlock[reader.StringBlocks()] = *existing;
        continue;
      }
      const BlockProblem p{b.line, e.Label(),
                           "the label \"" + e.Label() + "\" is used by another " +
                               std::string(Info(e.kind).name) + " of the project"};
      if (!AskContinue(ui, file, p)) {
        result.stopped = true;
        break;
      }
      continue;
    }
    Insert(db, e);
    ++result.read;
    switch (b.kind) {
      case BlockKind::Inhomogeneity: ++counts.inhomogeneities; break;
      case BlockKind::Linesink:
        ++counts.strings;
        stringOfBlock[reader.StringBlocks()] = e;
        if (b.routeBlock > 0) routed.push_back({e, b.routeBlock, b.routeSeq});
        break;
      default: ++counts.boundaries; break;
    }
  }
  // The routing links, now that the strings they name have their keys.
  for (Routed& r : routed) {
    const auto target = stringOfBlock.find(r.block);
    if (target == stringOfBlock.end()) continue;
    const std::vector<Vertex>& tv = target->second.vertices;
    const std::int64_t index = r.seq / 100 - 1;
    r.element.row.Set("RoutePID", target->second.key);
    if (r.seq % 100 == 0 && index >= 0 && index < static_cast<std::int64_t>(tv.size()))
      r.element.row.Set("RouteVID", tv[static_cast<std::size_t>(index)].VID);
    Update(db, r.element);
  }
  scope.Commit();
  return result;
}

std::vector<std::string> SkippedLine(int skipped) {
  if (skipped == 0) return {};
  return {Count(skipped) + " were ignored because identical elements already existed."};
}

// --- Record files ------------------------------------------------------------------------

// The lines of a record file, or nothing after the boxes of a missing, blank or
// undelimited file. `what` completes "Could not import ..." for a blank file.
struct RecordFile {
  std::vector<TextLine> lines;
  char delimiter = 0;
};

std::optional<RecordFile> OpenRecordFile(UserInterface& ui, const std::string& file,
                                         const std::string& couldNot, bool needDelimiter) {
  if (!FileExists(file)) {
    ShowFileNotFound(ui, file);
    return std::nullopt;
  }
  RecordFile f;
  f.lines = ReadTextLines(file);
  const bool blank = std::all_of(f.lines.begin(), f.lines.end(),
                                 [](const TextLine& l) { return IsBlankLine(l.text); });
  if (blank) {
    ui.MessageBox(kImportFailedTitle, {"File: " + file + " is blank.", couldNot}, Buttons::OK,
                  Icon::Exclamation);
    return std::nullopt;
  }
  // The first line that holds a record decides (a comment may open the file).
  for (const TextLine& l : f.lines) {
    if (IsBlankLine(l.text) || IsCommentLine(l.text)) continue;
    f.delimiter = DetectDelimiter(l.text);
    break;
  }
  if (f.delimiter == 0 && needDelimiter) {
    ui.MessageBox(kBadFileTitle, {kNoDelimiter, kNoDelimiter2, kNoDelimiter3}, Buttons::OK,
                  Icon::Exclamation);
    return std::nullopt;
  }
  return f;
}

bool AskContinueRecord(UserInterface& ui, const TextLine& line) {
  return ui.MessageBox(
             kErrorInImportTitle,
             {"Error in record " + std::to_string(line.number) + " bad syntax " + line.text,
              kContinueImport},
             Buttons::YesNo, Icon::Exclamation) == Answer::Yes;
}

}  // namespace

std::vector<std::string> HeadWellsWarning() {
  return {"You selected to import pumping wells", "with a known HEAD, rather than",
          "a known pumping rate.", "Do you want to proceed?"};
}

std::vector<std::string> TestPointImportQuestion() {
  return {"Test Point labels should not contain spaces or commas!",
          "These serve as delimiters in PEST files and will make PEST fail",
          "Any spaces or commas will be removed from the labels!",
          "Do you wish to proceed with the import action?"};
}

bool ConfirmHeadWells(UserInterface& ui) {
  return ui.MessageBox(kHeadWellsTitle, HeadWellsWarning(), Buttons::YesNo, Icon::Exclamation) ==
         Answer::Yes;
}

bool ConfirmTestPointImport(UserInterface& ui) {
  return ui.MessageBox(kTestPointImportTitle, TestPointImportQuestion(), Buttons::YesNo,
                       Icon::Exclamation) == Answer::Yes;
}

// --- Exports ---------------------------------------------------------------------------------

std::optional<int> ExportLss(Database& db, UserInterface& ui, const std::string& file) {
  const HydrologicUnit hu = LoadUnit(db);
  int strings = 0, boundaries = 0;
  const std::string content = LssContent(db, hu, false, strings, boundaries);
  if (strings == 0 && boundaries == 0) {
    ui.MessageBox(kNothingInUnitTitle, {kNothingInUnit}, Buttons::OK, Icon::Information);
    return std::nullopt;
  }
  if (!MayWrite(ui, file, kHucAborted)) return std::nullopt;
  WriteFile(file, content);
  ui.MessageBox(
      kHucExportTitle,
      {"Export of " + file + " complete.", Count(boundaries) + " hydrologic unit boundaries and " +
                                               Count(strings) + " linesink strings were written."},
      Buttons::OK, Icon::Information);
  return strings + boundaries;
}

std::optional<int> ExportInh(Database& db, UserInterface& ui, const std::string& file) {
  const std::vector<Element> all = LoadAll(db, ElementKind::Inhomogeneity);
  if (all.empty()) {
    ui.MessageBox(kNoInhomogeneitiesTitle, {kNoInhomogeneities}, Buttons::OK, Icon::Information);
    return std::nullopt;
  }
  if (!MayWrite(ui, file, kInhAborted)) return std::nullopt;
  WriteFile(file, InhContent(all));
  ui.MessageBox(kInhWrittenTitle,
                {Count(static_cast<int>(all.size())) + " Inhomogeneities were written."},
                Buttons::OK, Icon::Information);
  return static_cast<int>(all.size());
}

std::optional<int> ExportHuc(Database& db, UserInterface& ui, const std::string& file) {
  const HydrologicUnit hu = LoadUnit(db);
  const fs::path huc(file);
  const fs::path dir = huc.parent_path();
  const std::string base = huc.stem().string();
  int strings = 0, boundaries = 0, farStrings = 0, unused = 0;
  const std::string near = LssContent(db, hu, false, strings, boundaries);
  const std::string far = LssContent(db, hu, true, farStrings, unused);
  std::vector<Element> inh;
  for (Element& e : LoadAll(db, ElementKind::Inhomogeneity))
    if (InUnit(hu, e)) inh.push_back(std::move(e));
  if (strings + boundaries + farStrings == 0 && inh.empty()) {
    ui.MessageBox(kNothingInUnitTitle, {kNothingInUnit}, Buttons::OK, Icon::Information);
    return std::nullopt;
  }
  const std::string nearName = base + ".lss";
  const std::string farName = base + "_farfield.lss";
  const std::string inhName = base + ".inh";
  std::vector<std::pair<std::string, std::string>> files;  // path, content
  std::ostringstream list;
  list << "path " << fs::absolute(dir.empty() ? fs::path(".") : dir).lexically_normal().string()
       << "\r\n";
  files.emplace_back((dir / nearName).string(), near);
  list << "nearfield " << nearName << "\r\n";
  if (farStrings > 0) {
    files.emplace_back((dir / farName).string(), far);
    list << "farfield " << farName << "\r\n";
  }
  if (!inh.empty()) {
    files.emplace_back((dir / inhName).string(), InhContent(inh));
    list << "inhomogeneities " << inhName << "\r\n";
  }
  files.emplace_back(file, list.str());
  for (const auto& [path, content] : files)
    if (!MayWrite(ui, path, kHucAborted)) return std::nullopt;
  for (const auto& [path, content] : files) WriteFile(path, content);
  const int total = strings + boundaries + farStrings + static_cast<int>(inh.size());
  ui.MessageBox(kHucExportTitle,
                {"Export of " + file + " complete.",
                 Count(boundaries) + " hydrologic unit boundaries, " + Count(strings + farStrings) +
                     " linesink strings and " + Count(static_cast<int>(inh.size())) +
                     " inhomogeneities were written."},
                Buttons::OK, Icon::Information);
  return total;
}

namespace {

const char* WellKindWords(WellKind kind) {
  return kind == WellKind::Head ? "Head Specified Wells" : "Discharge Specified Wells";
}

std::vector<Element> WellsOfKind(Database& db, WellKind kind) {
  std::vector<Element> wells;
  for (Element& w : LoadAll(db, ElementKind::Well))
    if ((w.row.Integer("HeadSpecified") != 0) == (kind == WellKind::Head))
      wells.push_back(std::move(w));
  return wells;
}

bool CheckWellRows(Database& db, UserInterface& ui, WellKind kind) {
  if (!WellsOfKind(db, kind).empty()) return true;
  ui.MessageBox(kNoWellsTitle, {"No " + std::string(WellKindWords(kind)) + " were found."},
                Buttons::OK, Icon::Information);
  return false;
}

bool CheckRows(Database& db, UserInterface& ui, ElementKind kind) {
  if (AnyElement(db, kind)) return true;
  if (kind == ElementKind::TestPoint)
    ui.MessageBox(kNoTestPointsTitle, {kNoTestPoints}, Buttons::OK, Icon::Information);
  else
    ui.MessageBox(kNoLabelsTitle, {kNoLabels}, Buttons::OK, Icon::Information);
  return false;
}

}  // namespace

std::optional<int> ExportWells(Database& db, UserInterface& ui, const std::string& file,
                               WellKind kind) {
  if (!CheckWellRows(db, ui, kind)) return std::nullopt;
  if (!MayWrite(ui, file, kExportCanceled)) return std::nullopt;
  std::string content;
  const std::vector<Element> wells = WellsOfKind(db, kind);
  for (const Element& w : wells) {
    WellRecord r;
    r.x = w.X();
    r.y = w.Y();
    r.head = w.row.Number("Head");
    r.radius = w.row.Number("Radius");
    r.label = w.row.Text("Label");
    r.top = w.row.Number("TopElev");
    r.bottom = w.row.Number("BottomElev");
    content += WellLine(r) + "\r\n";
  }
  WriteFile(file, content);
  const int n = static_cast<int>(wells.size());
  ui.MessageBox(kWellsWrittenTitle, {Count(n) + " " + WellKindWords(kind) + " were written."},
                Buttons::OK, Icon::Information);
  return n;
}

std::optional<int> ExportTestPoints(Database& db, UserInterface& ui, const std::string& file) {
  if (!CheckRows(db, ui, ElementKind::TestPoint)) return std::nullopt;
  if (!MayWrite(ui, file, kExportCanceled)) return std::nullopt;
  const std::vector<Element> points = LoadAll(db, ElementKind::TestPoint);
  std::string content;
  for (const Element& t : points) {
    TestPointRecord r;
    r.x = t.X();
    r.y = t.Y();
    r.obsHead = t.row.Number("ObsHead");
    r.obsStreamFlow = t.row.Number("ObsStreamFlow");
    r.type = TestPointType(t.row.Text("Type")).value_or("Piezometer");
    r.label = t.row.Text("Label");
    content += TestPointLine(r) + "\r\n";
  }
  WriteFile(file, content);
  const int n = static_cast<int>(points.size());
  ui.MessageBox(kTestPointsWrittenTitle,
                {"Export Complete: " + Count(n) + " Test Points were written."}, Buttons::OK,
                Icon::Information);
  return n;
}

std::optional<int> ExportTextLabels(Database& db, UserInterface& ui, const std::string& file) {
  if (!CheckRows(db, ui, ElementKind::Text)) return std::nullopt;
  if (!MayWrite(ui, file, kExportCanceled)) return std::nullopt;
  const std::vector<Element> labels = LoadAll(db, ElementKind::Text);
  std::string content;
  for (const Element& t : labels) {
    TextLabelRecord r;
    r.x = t.row.Number("X");
    r.y = t.row.Number("Y");
    r.labelType = static_cast<int>(t.row.Integer("LabelType"));
    r.text = t.row.Text("Text");
    content += TextLabelLine(r) + "\r\n";
  }
  WriteFile(file, content);
  const int n = static_cast<int>(labels.size());
  ui.MessageBox(kLabelsWrittenTitle, {Count(n) + " Labels were written."}, Buttons::OK,
                Icon::Information);
  return n;
}

// --- Imports ---------------------------------------------------------------------------------

TextImportResult ImportLss(Database& db, UserInterface& ui, const std::string& file, bool quiet) {
  BlockCounts counts;
  TextImportResult r = ImportBlocks(db, ui, file, BlockFile::Lss, counts);
  if (!quiet && r.filesRead > 0) {
    std::vector<std::string> lines = {
        Count(counts.strings) + " linesink strings were read in.",
        Count(counts.boundaries) + " hydrologic unit boundaries were read in."};
    for (std::string& l : SkippedLine(r.skipped)) lines.push_back(std::move(l));
    ui.MessageBox(kImportCompleteTitle, lines, Buttons::OK, Icon::Information);
  }
  return r;
}

TextImportResult ImportInh(Database& db, UserInterface& ui, const std::string& file, bool quiet) {
  BlockCounts counts;
  TextImportResult r = ImportBlocks(db, ui, file, BlockFile::Inh, counts);
  if (!quiet && r.filesRead > 0) {
    std::vector<std::string> lines = {Count(counts.inhomogeneities) +
                                      " inhomogeneities were read in."};
    for (std::string& l : SkippedLine(r.skipped)) lines.push_back(std::move(l));
    ui.MessageBox(kImportCompleteTitle, lines, Buttons::OK, Icon::Information);
  }
  return r;
}

TextImportResult ImportHuc(Database& db, UserInterface& ui, const std::string& file) {
  TextImportResult total;
  if (!FileExists(file)) {
    ui.MessageBox(kNoFileTitle, {kNoFile}, Buttons::OK, Icon::Exclamation);
    return total;
  }
  auto portable = [](std::string p) {
    std::replace(p.begin(), p.end(), '\\', '/');
    return p;
  };
  fs::path dir = fs::path(file).parent_path();
  int nearFiles = 0, farFiles = 0;
  ImportWrites scope(db, "Import Hydrologic Unit");  // the files' imports join it
  for (const TextLine& line : ReadTextLines(file)) {
    if (IsBlankLine(line.text)) continue;
    const std::vector<std::string> f = ParseString(line.text, " ");
    const std::string keyword = f.size() > 1 ? f[1] : "";
    const std::string trimmed = TrimST(line.text);
    const std::string value = TrimST(trimmed.substr(std::min(trimmed.size(), keyword.size())));
    if (EqualsIgnoreCase(keyword, "path")) {
      const fs::path p(portable(value));
      dir = p.is_absolute() ? p : fs::path(file).parent_path() / p;
      continue;
    }
    const bool nearField = EqualsIgnoreCase(keyword, "nearfield");
    const bool farField = EqualsIgnoreCase(keyword, "farfield");
    const bool inh = EqualsIgnoreCase(keyword, "inhomogeneities");
    if ((!nearField && !farField && !inh) || value.empty()) {
      ShowReadFail(ui, file);
      total.stopped = true;
      break;
    }
    const fs::path named(portable(value));
    std::string path = (named.is_absolute() ? named : dir / named).string();
    // A unit moved with its files: the file beside the .huc serves.
    const fs::path beside = fs::path(file).parent_path() / named.filename();
    if (!FileExists(path) && FileExists(beside.string())) path = beside.string();
    const TextImportResult r = inh ? ImportInh(db, ui, path, true) : ImportLss(db, ui, path, true);
    total.read += r.read;
    total.skipped += r.skipped;
    total.filesRead += r.filesRead;
    if (r.filesRead > 0 && nearField) ++nearFiles;
    if (r.filesRead > 0 && farField) ++farFiles;
    if (r.stopped) {
      total.stopped = true;
      break;
    }
  }
  scope.Commit();
  if (total.filesRead == 0) {
    ui.MessageBox(kHucCompleteTitle,
                  {"Import of '" + file + "' finished but no files were read in!"}, Buttons::OK,
                  Icon::Exclamation);
  } else {
    ui.MessageBox(kHucCompleteTitle,
                  {"Import of " + file + " complete.",
                   Count(nearFiles) + " Nearfield linesink files (.lss) were read in.",
                   Count(farFiles) + " Farfield linesink files (.lss) were read in."},
                  Buttons::OK, Icon::Information);
  }
  return total;
}

TextImportResult ImportWells(Database& db, UserInterface& ui, const std::string& file,
                             WellKind kind, const TextExchangeOptions& options) {
  TextImportResult result;
  const std::optional<RecordFile> f = OpenRecordFile(ui, file, kCouldNotImportWells, true);
  if (!f) {
    result.stopped = true;
    return result;
  }
  ImportWrites scope(db, "Import Wells");
  std::vector<std::string> notes;
  {
    WaitWindow wait(ui, kImportingWells);
    const AquiferFrame aquifer = LoadAquiferFrame(db);
    std::vector<Element> wells = LoadAll(db, ElementKind::Well);
    for (const TextLine& line : f->lines) {
      if (IsStopLine(line.text, f->delimiter)) break;
      if (IsBlankLine(line.text) || IsCommentLine(line.text)) continue;
      std::optional<WellRecord> w = ParseWellLine(line.text, f->delimiter);
      if (!w) {
        if (AskContinueRecord(ui, line)) continue;
        result.stopped = true;
        break;
      }
      const std::string n = std::to_string(line.number);
      const double base = FindLocal(db, "Base", w->x, w->y);
      double top = w->top.value_or(aquifer.Top());
      double bottom = w->bottom.value_or(base);
      if (top < bottom) {
        std::swap(top, bottom);
        notes.push_back("Top and bottom of screen reversed in line " + n + " Has been corrected.");
      }
      if (top == bottom) {
        top = aquifer.Top();
        bottom = base;
        notes.push_back("Zero screen length in line" + n + " Screen set to default.");
      }
      if (top > aquifer.Top()) {
        top = aquifer.Top();
        notes.push_back("Screen above aquifer top in line" + n + " Set to aquifer top.");
      }
      if (bottom < base) {
        bottom = base;
        notes.push_back("Screen below aquifer bottom in line" + n + " Set to aquifer bottom.");
      }
      // A screen wholly above the aquifer's top or below its base (a well file read
      // into a project whose aquifer is not yet set) has nothing left after those
      // corrections, or is upside down: it takes the default, as a screen of no length.
      if (top <= bottom) {
        top = aquifer.Top();
        bottom = base;
        notes.push_back("Zero screen length in line" + n + " Screen set to default.");
      }
      const bool identical = std::any_of(wells.begin(), wells.end(), [&](const Element& e) {
        return e.X() == w->x && e.Y() == w->y;
      });
      if (identical) {
        ++result.skipped;
        continue;
      }
      const double x = CheckVertices(db, w->x, w->y, options.vertexTolerance, options.vertexLog);
      Element e = NewElement(ElementKind::Well, {{0, -1, 0, x, w->y}});
      e.row.Set("Label", w->label);
      e.row.Set("HeadSpecified", std::int64_t{kind == WellKind::Head ? 1 : 0});
      e.row.Set("Head", w->head);
      e.row.Set("Radius", w->radius);
      e.row.Set("TopElev", top);
      e.row.Set("BottomElev", bottom);
      Insert(db, e);
      // The well as the file gave it, so that a second line at the same place is identical.
      e.vertices.front().X = w->x;
      wells.push_back(std::move(e));
      ++result.read;
    }
  }
  scope.Commit();
  std::vector<std::string> lines;
  if (result.skipped > 0) {
    lines = {Count(result.read) + " wells were read in.", Count(result.skipped) + kIdenticalWells,
             kIdenticalWells2};
  } else {
    lines = {Count(result.read) + " wells were read in."};
  }
  for (std::string& note : notes) lines.push_back(std::move(note));
  ui.MessageBox(result.skipped > 0 ? kIdenticalWellsTitle : kImportCompleteTitle, lines,
                Buttons::OK, Icon::Information);
  return result;
}

TextImportResult ImportTestPoints(Database& db, UserInterface& ui, const std::string& file) {
  TextImportResult result;
  const std::optional<RecordFile> f =
      OpenRecordFile(ui, file, "Could not import test points.", true);
  if (!f) {
    result.stopped = true;
    return result;
  }
  ImportWrites scope(db, "Import Test Points");
  for (const TextLine& line : f->lines) {
    if (IsBlankLine(line.text) || IsCommentLine(line.text)) continue;
    const std::optional<TestPointRecord> t = ParseTestPointLine(line.text, f->delimiter);
    if (!t) {
      if (AskContinueRecord(ui, line)) continue;
      result.stopped = true;
      break;
    }
    // The vertex at this place is reused when it is a test point's (which takes the
    // file's values) or nobody's; a well's or a particle's vertex stays its own, since
    // deleting that element deletes its vertex.
    const std::int64_t vid = FindPointVertexAt(db, t->x, t->y).value_or(0);
    std::optional<Element> here;
    if (vid != 0) here = Load(db, ElementKind::TestPoint, vid);
    const bool freeVertex = vid != 0 && !here && !OwnerOfPoint(db, vid);
    const std::optional<Element> named = FindByLabel(db, ElementKind::TestPoint, t->label);
    if (named && (!here || named->key != here->key)) {
      if (ui.MessageBox(
              kDuplicateLabelTitle,
              {"Test Point Label ('" + t->label + "') already exists!",
               "Record " + std::to_string(line.number) + " of " + file + " was not imported.",
               kContinueImport},
              Buttons::YesNo, Icon::Exclamation) == Answer::Yes)
        continue;
      result.stopped = true;
      break;
    }
    Element e = here ? *here : NewElement(ElementKind::TestPoint, {{0, -1, 0, t->x, t->y}});
    e.row.Set("Label", t->label);
    e.row.Set("ObsHead", t->obsHead);
    e.row.Set("ObsStreamFlow", t->obsStreamFlow);
    e.row.Set("Type", t->type);
    ApplyDefaultWeights(e);
    if (here)
      Update(db, e);  // the test point at this place takes the file's observation
    else if (freeVertex)
      InsertPointOnVertex(db, e, vid);
    else
      Insert(db, e);
    ++result.read;
  }
  scope.Commit();
  ui.MessageBox(kImportCompleteTitle, {Count(result.read) + " test points were read in."},
                Buttons::OK, Icon::Information);
  return result;
}

TextImportResult ImportTextLabels(Database& db, UserInterface& ui, const std::string& file) {
  TextImportResult result;
  const std::optional<RecordFile> f = OpenRecordFile(ui, file, "Could not import labels.", false);
  if (!f) {
    result.stopped = true;
    return result;
  }
  ImportWrites scope(db, "Import Text Labels");
  std::vector<Element> labels = LoadAll(db, ElementKind::Text);
  for (const TextLine& line : f->lines) {
    if (IsBlankLine(line.text) || IsCommentLine(line.text)) continue;
    const std::optional<TextLabelRecord> t = ParseTextLabelLine(line.text);
    if (!t) {
      if (AskContinueRecord(ui, line)) continue;
      result.stopped = true;
      break;
    }
    const bool identical = std::any_of(labels.begin(), labels.end(), [&](const Element& e) {
      return e.row.Number("X") == t->x && e.row.Number("Y") == t->y &&
             e.row.Integer("LabelType") == t->labelType &&
             EqualsIgnoreCase(e.row.Text("Text"), t->text);
    });
    if (identical) {
      ++result.skipped;
      continue;
    }
    Element e = NewTextLabel(t->text, t->x, t->y);
    e.row.Set("FontName", "Arial");
    e.row.Set("LabelType", std::int64_t{t->labelType});
    Insert(db, e);
    labels.push_back(std::move(e));
    ++result.read;
  }
  scope.Commit();
  if (result.skipped > 0) {
    ui.MessageBox(kIdenticalLabelsTitle,
                  {Count(result.read) + " labels were read in.",
                   Count(result.skipped) + kIdenticalLabels, kIdenticalLabels2},
                  Buttons::OK, Icon::Information);
  } else {
    ui.MessageBox(kLabelsCompleteTitle, {Count(result.read) + " labels were read in."}, Buttons::OK,
                  Icon::Information);
  }
  return result;
}

// --- The menu entries --------------------------------------------------------------------------

namespace {

struct MenuFile {
  const char* key;
  const char* title;
  const char* extension;
  const char* filter;
};

constexpr MenuFile kMenuFiles[] = {
    {"IMPORT(4)", "Open HUC file", "huc", "HUC files (*.huc)|*.huc"},
    {"IMPORT(5)", "Line-sink String File to be Imported", "lss",
     "Line-sink string files (*.lss)|*.lss"},
    {"IMPORT(6)", "Inhomogeneity File to be Imported", "inh", "Inhomogeneity files (*.inh)|*.inh"},
    {"IMPORT(7)", "Well File to be Imported", "wl", "Well Files (*.wl)|*.wl"},
    {"IMPORT(8)", "Well File to be Imported", "wl", "Well Files (*.wl)|*.wl"},
    {"IMPORT(9)", "Test Point File to be Imported", "tp", "Test Point Files (*.tp)|*.tp"},
    {"IMPORT(10)", "Text Label File to be Imported", "tx", "Text Label Files (*.tx)|*.tx"},
    {"EXPORT(4)", "Export Hydrologic Unit", "lss",
     "Line-sink string files (*.lss)|*.lss|HUC files (*.huc)|*.huc"},
    {"EXPORT(5)", "Export Inhomogeneities", "inh", "Inhomogeneity files (*.inh)|*.inh"},
    {"EXPORT(6)", "Export Discharge Specified Wells", "wl", "Well Files (*.wl)|*.wl"},
    {"EXPORT(7)", "Export Head Specified Wells", "wl", "Well Files (*.wl)|*.wl"},
    {"EXPORT(8)", "Export Test Points", "tp", "Test Point Files (*.tp)|*.tp"},
    {"EXPORT(9)", "Export Text Labels", "tx", "Text Label Files (*.tx)|*.tx"},
};

const MenuFile* FindMenuFile(const std::string& key) {
  for (const MenuFile& m : kMenuFiles)
    if (key == m.key) return &m;
  return nullptr;
}

}  // namespace

bool IsTextExchangeCommand(const std::string& key) { return FindMenuFile(key) != nullptr; }

TextImportResult RunTextExchangeCommand(const std::string& key, Database& db, UserInterface& ui,
                                        const std::string& directory,
                                        const TextExchangeOptions& options) {
  const MenuFile* m = FindMenuFile(key);
  if (m == nullptr) throw InvalidArgumentError("No text exchange command " + key);
  FileDialogRequest request{m->title, m->extension, m->filter, directory, ""};
  const std::string k = key;
  if (k.rfind("IMPORT(", 0) == 0) {
    if (k == "IMPORT(8)" && !ConfirmHeadWells(ui)) return {};
    if (k == "IMPORT(9)" && !ConfirmTestPointImport(ui)) return {};
    const std::optional<std::string> file = ui.OpenFileDialog(request);
    if (!file || file->empty()) return {};
    if (k == "IMPORT(4)") return ImportHuc(db, ui, *file);
    if (k == "IMPORT(5)") return ImportLss(db, ui, *file);
    if (k == "IMPORT(6)") return ImportInh(db, ui, *file);
    if (k == "IMPORT(7)") return ImportWells(db, ui, *file, WellKind::Discharge, options);
    if (k == "IMPORT(8)") return ImportWells(db, ui, *file, WellKind::Head, options);
    if (k == "IMPORT(9)") return ImportTestPoints(db, ui, *file);
    return ImportTextLabels(db, ui, *file);
  }
  // The exports look for rows before they ask for a file.
  const WellKind wellKind = k == "EXPORT(7)" ? WellKind::Head : WellKind::Discharge;
  if ((k == "EXPORT(6)" || k == "EXPORT(7)") && !CheckWellRows(db, ui, wellKind)) return {};
  if (k == "EXPORT(8)" && !CheckRows(db, ui, ElementKind::TestPoint)) return {};
  if (k == "EXPORT(9)" && !CheckRows(db, ui, ElementKind::Text)) return {};
  std::optional<std::string> file = ui.SaveFileDialog(request);
  if (!file || file->empty()) return {};
  if (ExtensionOfFile(*file).empty()) *file += std::string(".") + m->extension;
  if (k == "EXPORT(4)") {
    if (ExtensionOfFile(*file) == "huc")
      ExportHuc(db, ui, *file);
    else
      ExportLss(db, ui, *file);
  } else if (k == "EXPORT(5)") {
    ExportInh(db, ui, *file);
  } else if (k == "EXPORT(6)" || k == "EXPORT(7)") {
    ExportWells(db, ui, *file, wellKind);
  } else if (k == "EXPORT(8)") {
    ExportTestPoints(db, ui, *file);
  } else {
    ExportTextLabels(db, ui, *file);
  }
  return {};
}

}  // namespace tarno::exchange
