#include "solver/results_loader.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

#include "core/error.h"
#include "core/file_find.h"
#include "core/solver_files.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "elements/linesink.h"
#include "elements/observation.h"
#include "elements/solver_label.h"
#include "store/database.h"

namespace tarno {

namespace layout = solver_files;

int SectionOfHeadLine(const std::string& headText) {
  // Order matters: the first name the head line holds wins, so that "discharge
  // specified wells" is tested before "head specified wells", "drain" before the
  // line-sink sections, and so on.
  namespace hn = layout::head_name;
  static const std::pair<const char*, int> kNames[] = {
      {hn::kDischargeWells, kSectionDischargeWells},
      {hn::kHeadWells, kSectionHeadWells},
      {hn::kDischargeLineSinks, kSectionDischargeLinesinks},
      {hn::kDrains, kSectionDrains},
      {hn::kGalleries, kSectionGalleries},
      {hn::kHeadLineSinks, kSectionHeadLinesinks},
      {hn::kInhomogeneities, kSectionInhomogeneities},
      {hn::kWalls, kSectionBarriers},
      {hn::kFlux, kSectionFlux},
      {hn::kHeadPartialWells, kSectionHeadPPWells},
      {hn::kDischargePartialWells, kSectionDischargePPWells},
      {hn::kTheisWells, kSectionTheisWells},
      {hn::kStreamLinkages, kSectionStreamLinks},
      {hn::kLakeBalances, kSectionLakeBalances},
  };
  for (const auto& [name, section] : kNames)
    if (headText.find(name) != std::string::npos) return section;
  return kSectionNone;
}

void EnsureLakeResultsTable(Database& db) {
  // The labels are text, every other field a number with the default 0.
  std::string sql = "CREATE TABLE IF NOT EXISTS LKResults (";
  for (std::size_t i = 0; i < std::size(kLakeResultsFields); ++i) {
    if (i > 0) sql += ", ";
    sql += kLakeResultsFields[i];
    sql += i < 4 ? " TEXT COLLATE NOCASE" : " DOUBLE DEFAULT 0";
  }
  db.ExecuteRaw(sql + ")");
}

bool HasLakeResultsTable(Database& db) { return db.TableExists(kLakeResultsTable); }

void ClearLakeResults(Database& db) {
  if (HasLakeResultsTable(db)) db.ExecuteRaw("DELETE FROM LKResults");
}

std::filesystem::path FindExtractFile(const std::filesystem::path& directory,
                                      const std::string& baseName) {
  return FindFileNoCase(directory, baseName + ".xtr");
}

namespace {

std::string Upper(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return s;
}

// The rows of one result table by their solver label. Labels compare without
// regard to case, as the store's text columns do; the first row of a label is the
// one a filtered lookup finds.
class LabelIndex {
 public:
  LabelIndex(Database& db, const char* table) {
    Statement st = db.PrepareRaw(std::string("select rowid, TARNOLabel from ") + table +
                                 " order by rowid");
    while (st.Step()) rows_.emplace(Upper(st.GetText(1)), st.GetInt64(0));
  }
  std::optional<std::int64_t> Find(const std::string& label) const {
    const auto it = rows_.find(Upper(label));
    if (it == rows_.end()) return std::nullopt;
    return it->second;
  }

 private:
  std::unordered_map<std::string, std::int64_t> rows_;  // emplace keeps the first
};

// The key in a solver label ("TP_000012" -> 12, "FL_000007" -> 7); -1 for a text
// that is no solver label, which matches no element.
std::int64_t KeyOfLabel(const std::string& trimmedLabel) {
  const auto parsed = ParseSolverLabel(trimmedLabel);
  return parsed ? parsed->key : -1;
}

bool EndsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

const char* BadRecordName(int section) {
  switch (section) {
    case kSectionHeadWells:
    case kSectionHeadPPWells:
      return "Bad HEAD WELL record: Record ";
    case kSectionDischargeWells:
    case kSectionDischargePPWells:
    case kSectionTheisWells:
      return "Bad DISCHARGE WELL record: Record ";
    case kSectionHeadLinesinks:
      return "Bad HEAD LINESINK record: Record ";
    case kSectionDrains:
      return "Bad DRAIN record: Record ";
    case kSectionGalleries:
      return "Bad GALLERY record: Record ";
    case kSectionDischargeLinesinks:
      return "Bad DISCHARGE LINESINK record: Record ";
    case kSectionInhomogeneities:
      return "Bad Inhomogeneity Record: Record ";
    case kSectionBarriers:
      return "Bad Horizontal Barrier record: Record ";
    case kSectionFlux:
      return "Bad FLUX INSPECTOR record: Record ";
    case kSectionLakeBalances:
      return "Bad LAKE BALANCE record: Record ";
    default:
      return "Bad DATA record: Record ";
  }
}

class Loader {
 public:
  Loader(Database& db, const ModelFrame& frame, UserInterface& ui)
      : db_(db), frame_(frame), ui_(ui) {}

  void PrepareTestPoints() {
    db_.Execute("DELETE * FROM FIResults;");
    // One blank row per test point with its vertex, by VID.
    PrepareTestPointResultRows(db_, LoadAll(db_, ElementKind::TestPoint));
  }

  void Read(std::istream& in, LoadSummary& summary) {
    Prepare();
    std::string line;
    int section = kSectionNone;
    while (std::getline(in, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      ++summary.linesRead;
      if (line.empty()) continue;
      const char kind = line[0];
      if (kind == layout::kSectionHeadMark) {
        ++summary.sectionHeads;
        const int s = SectionOfHeadLine(line.substr(1));
        if (s != kSectionNone) section = s;
      } else if (kind == layout::kPointMark) {
        ++summary.records;
        if (!DataRecord(line.substr(1))) Bad(kSectionNone, summary, line);
      } else if (kind == layout::kRecordMark) {
        if (section != kSectionNone) ++summary.records;
        if (!SectionRecord(section, line)) Bad(section, summary, line);
      }
    }
    summary.rowsUpdated = updated_;
    summary.unmatched = unmatched_;
  }

  void SearchTypes() {
    // Each string's kind: NearField, then each test that holds overwrites it.
    std::unordered_map<std::string, std::string> kinds;
    for (const Element& s : LoadAllRows(db_, ElementKind::Linesink)) {
      const std::string key = Upper(s.row.Text("Label"));
      if (kinds.count(key) != 0) continue;  // the first string of a label decides
      kinds.emplace(key, LinesinkSearchType(s));
    }
    Statement rows = db_.PrepareRaw("select rowid, Label from LSResults");
    Statement up = db_.PrepareRaw("update LSResults set SearchType=? where rowid=?");
    std::vector<std::pair<std::int64_t, std::string>> changes;
    while (rows.Step()) {
      const auto it = kinds.find(Upper(rows.GetText(1)));
      // A row whose string is gone keeps the type it has.
      if (it != kinds.end()) changes.emplace_back(rows.GetInt64(0), it->second);
    }
    for (const auto& [rowid, type] : changes) {
      up.Reset();
      up.Bind(1, type).Bind(2, rowid);
      up.Run();
    }
  }

 private:
  void Prepare() {
    wl_.emplace(db_, "WLResults");
    ls_.emplace(db_, "LSResults");
    in_.emplace(db_, "INResults");
    nf_.emplace(db_, "NFResults");
    {
      Statement st = db_.PrepareRaw("select rowid, VID from TPResults order by rowid");
      while (st.Step()) tp_.emplace(st.GetInt64(1), st.GetInt64(0));
    }
    tpFlow_ = db_.PrepareRaw(
        "update TPResults set ModelFlow=?1, Difference=?1-coalesce(ObsStreamFlow,0) where rowid=?2");
    tpHead_ = db_.PrepareRaw(
        "update TPResults set ModelHead=?1, Difference=?1-coalesce(ObsHead,0) where rowid=?2");
    headWell_ = db_.PrepareRaw(
        "update WLResults set X=?, Y=?, Radius=?, Discharge=?, SpecifiedHead=?, Head=? where "
        "rowid=?");
    dischargeWell_ = db_.PrepareRaw(
        "update WLResults set X=?, Y=?, Radius=?, Discharge=?, Head=? where rowid=?");
    lsFull_ = db_.PrepareRaw(
        "update LSResults set X1=?, Y1=?, X2=?, Y2=?, SpecifiedHead=?, CalculatedHead=?, "
        "Discharge=?, Width=?, Resistance=?, Depth=?, BaseFlow=?, OverlandFlow=?, Error=? where "
        "rowid=?");
    lsDischarge_ = db_.PrepareRaw(
        "update LSResults set X1=?, Y1=?, X2=?, Y2=?, Discharge=? where rowid=?");
    lsLink_ = db_.PrepareRaw("update LSResults set LinkedTo=? where rowid=?");
    inNode_ = db_.PrepareRaw(
        "update INResults set Conductivity=?, BottomElev=?, ExtractRate=?, Porosity=?, "
        "DomainArea=?, AvgPotJump=?, X1=?, Y1=?, XC=?, YC=?, StrPotJumpNode=?, "
        "ParabStrPotJump=?, RealStrExtrNode=?, ImagStrExtrNode=?, RealStrExtrCntr=?, Tfac=?, "
        "DeltaPNode=?, DeltaPCntr=? where rowid=?");
    nfNode_ = db_.PrepareRaw(
        "update NFResults set Conductivity=?, Width=?, Porosity=?, WallBottomElev=?, X1=?, Y1=?, "
        "XC=?, YC=?, StrPotJumpNode=?, ParabStrPotJump=?, DeltaFlowCntr=?, DeltaFlowNode=? where "
        "rowid=?");
    flux_ = db_.PrepareRaw("insert into FIResults (Label, PID, TotalFlux) values (?, ?, ?)");
    // The lakes' balances replace those of the last load.
    EnsureLakeResultsTable(db_);
    db_.ExecuteRaw("DELETE FROM LKResults");
    for (const Element& l : LoadAllRows(db_, ElementKind::Lake))
      lakeLabels_.emplace(l.key, l.Label());
    for (const Element& l : LoadAllRows(db_, ElementKind::Linesink))
      if (l.row.Integer("Lake") != 0) shoreLabels_.emplace(l.key, l.Label());
    lake_ = db_.PrepareRaw(
        "insert into LKResults (Label, TARNOLabel, FirstTarnoLabel, LastTarnoLabel, Area, "
        "SurfaceArea, Volume, LakeStage, AquiferHead, Precipitation, GroundwaterIn, "
        "OverlandFlowIn, StreamFlowIn, TotalIn, Evapotranspiration, GroundwaterOut, "
        "OverlandFlowOut, StreamFlowOut, TotalOut, Error, ErrorPercent) values (?, ?, ?, ?, ?, "
        "?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
  }

  // The element label of a lake's balance: the Lakes row of an "LK_" label, or the
  // line-sink string of a shore, found by its first segment's label. Nothing when
  // the project has no such element.
  std::optional<std::string> LakeElementLabel(const std::string& label,
                                              const std::string& first) const {
    if (const auto p = ParseSolverLabel(label); p && p->prefix == "LK_") {
      const auto it = lakeLabels_.find(p->key);
      if (it != lakeLabels_.end()) return it->second;
    }
    if (const auto p = ParseSolverLabel(first); p && p->prefix == "LS_") {
      const auto it = shoreLabels_.find(p->key);
      if (it != shoreLabels_.end()) return it->second;
    }
    return std::nullopt;
  }

  void Bad(int section, LoadSummary& summary, const std::string& line) {
    ++summary.badRecords;
    // The message asks a question but offers only OK, so reading always goes on.
    ui_.MessageBox("Import error",
                   {std::string(BadRecordName(section)) + std::to_string(summary.linesRead) +
                        " of TARNO results file:",
                    line, "Continue reading the results file?"},
                   Buttons::OK, Icon::Critical);
  }

  double X(const std::string& f) const { return MToW_X(frame_, Val(f)); }
  double Y(const std::string& f) const { return MToW_Y(frame_, Val(f)); }

  void Run(Statement& st) {
    st.Run();
    ++updated_;
  }

  // A record whose label has no row: skipped without a message, but counted.
  bool Unmatched() {
    ++unmatched_;
    return true;
  }

  // A "@" record; false when it is bad.
  bool DataRecord(const std::string& body) {
    namespace wr = layout::word_record;
    namespace pt = layout::point;
    int n = 0;
    std::vector<std::string> f;
    ParseString(body, std::string(1, layout::kFieldSeparator), f, n);
    if (n < 1) return false;
    const std::string kind = TrimST(f[wr::kWord]);
    const bool gage = EndsWith(kind, wr::kGageWord);
    if (gage || EndsWith(kind, wr::kLakeStageWord)) {
      if (n < wr::kLabel) return false;
      const auto it = tp_.find(KeyOfLabel(TrimST(f[wr::kLabel])));
      if (it == tp_.end()) return Unmatched();  // no such test point: nothing changes
      Statement& st = gage ? tpFlow_ : tpHead_;
      st.Reset();
      st.Bind(1, Val(f[wr::kValue])).Bind(2, it->second);
      Run(st);
      return true;
    }
    if (n < pt::kLeastFields) return false;
    const std::string label = n >= pt::kLabel ? TrimST(f[pt::kLabel]) : std::string();
    if (label.rfind("_GR_", 0) == 0) {
      ui_.MessageBox("Not Available", {"Grid extractions not yet supported"});
      return true;
    }
    const auto it = tp_.find(KeyOfLabel(label));
    if (it == tp_.end()) return Unmatched();
    tpHead_.Reset();
    tpHead_.Bind(1, Val(f[pt::kHead])).Bind(2, it->second);
    Run(tpHead_);
    return true;
  }

  // A record of the current section; false when it is bad.
  bool SectionRecord(int section, const std::string& line) {
    int n = 0;
    std::vector<std::string> f;
    ParseString(line, std::string(1, layout::kFieldSeparator), f, n);
    switch (section) {
      case kSectionHeadWells:
      case kSectionHeadPPWells: {
        namespace hw = layout::head_well;
        if (n < hw::kFields) return false;
        const auto row = wl_->Find(TrimST(f[hw::kLabel]));
        if (!row) return Unmatched();
        headWell_.Reset();
        headWell_.Bind(1, X(f[hw::kX])).Bind(2, Y(f[hw::kY])).Bind(3, Val(f[hw::kRadius]));
        headWell_.Bind(4, Val(f[hw::kDischarge])).Bind(5, Val(f[hw::kSpecifiedHead]));
        headWell_.Bind(6, Val(f[hw::kSpecifiedHead]) + Val(f[hw::kHeadError])).Bind(7, *row);
        Run(headWell_);
        return true;
      }
      case kSectionDischargeWells:
      case kSectionDischargePPWells:
      case kSectionTheisWells: {
        namespace dw = layout::discharge_well;
        if (n < dw::kFields) return false;
        const auto row = wl_->Find(TrimST(f[dw::kLabel]));
        if (!row) return Unmatched();
        dischargeWell_.Reset();
        dischargeWell_.Bind(1, X(f[dw::kX])).Bind(2, Y(f[dw::kY])).Bind(3, Val(f[dw::kRadius]));
        dischargeWell_.Bind(4, Val(f[dw::kDischarge])).Bind(5, Val(f[dw::kHead])).Bind(6, *row);
        Run(dischargeWell_);
        return true;
      }
      case kSectionHeadLinesinks: {
        namespace hl = layout::head_line_sink;
        if (n < hl::kFields) return false;
        // The base flow and overland flow of the last head line-sink record are what
        // the drain and gallery records that follow receive.
        baseFlow_ = Val(f[hl::kBaseFlow]);
        overlandFlow_ = Val(f[hl::kOverlandFlow]);
        return LinesinkFull(f, f[hl::kError], f[hl::kLabel]);
      }
      case kSectionDrains:
      case kSectionGalleries:
        if (n < layout::drain::kFields) return false;
        return LinesinkFull(f, f[layout::drain::kError], f[layout::drain::kLabel]);
      case kSectionDischargeLinesinks: {
        namespace dl = layout::discharge_line_sink;
        if (n < dl::kFields) return false;
        const auto row = ls_->Find(TrimST(f[dl::kLabel]));
        if (!row) return Unmatched();
        lsDischarge_.Reset();
        lsDischarge_.Bind(1, X(f[dl::kX1])).Bind(2, Y(f[dl::kY1])).Bind(3, X(f[dl::kX2])).Bind(4, Y(f[dl::kY2]));
        lsDischarge_.Bind(5, Val(f[dl::kDischarge])).Bind(6, *row);
        Run(lsDischarge_);
        return true;
      }
      case kSectionInhomogeneities:
        if (n != layout::inhomogeneity::kNodeFields) {
          // A header line: its values hold for the node lines that follow.
          if (n < layout::inhomogeneity::kHeaderFields) return false;
          for (int i = 0; i < 6; ++i) inHeader_[i] = Val(f[i + 2]);
          return true;
        } else {
          const auto row = in_->Find(TrimST(f[1]));
          if (!row) return Unmatched();
          inNode_.Reset();
          int k = 1;
          for (double v : inHeader_) inNode_.Bind(k++, v);
          inNode_.Bind(k++, X(f[2]));
          inNode_.Bind(k++, Y(f[3]));
          inNode_.Bind(k++, X(f[4]));
          inNode_.Bind(k++, Y(f[5]));
          for (int i = 6; i <= 13; ++i) inNode_.Bind(k++, Val(f[i]));
          inNode_.Bind(k, *row);
          Run(inNode_);
          return true;
        }
      case kSectionBarriers:
        if (n != layout::wall::kNodeFields) {
          if (n < layout::wall::kHeaderFields) return false;
          for (int i = 0; i < 4; ++i) nfHeader_[i] = Val(f[i + 2]);
          return true;
        } else {
          const auto row = nf_->Find(TrimST(f[1]));
          if (!row) return Unmatched();
          nfNode_.Reset();
          int k = 1;
          for (double v : nfHeader_) nfNode_.Bind(k++, v);
          nfNode_.Bind(k++, X(f[2]));
          nfNode_.Bind(k++, Y(f[3]));
          nfNode_.Bind(k++, X(f[4]));
          nfNode_.Bind(k++, Y(f[5]));
          for (int i = 6; i <= 9; ++i) nfNode_.Bind(k++, Val(f[i]));
          nfNode_.Bind(k, *row);
          Run(nfNode_);
          return true;
        }
      case kSectionFlux: {
        namespace fl = layout::flux_line;
        if (n < fl::kFields) return false;
        const std::string label = TrimST(f[fl::kLabel]);
        flux_.Reset();
        flux_.Bind(1, label).Bind(2, std::max<std::int64_t>(0, KeyOfLabel(label))).Bind(3, Val(f[fl::kFlux]));
        Run(flux_);
        return true;
      }
      case kSectionStreamLinks: {
        namespace sl = layout::stream_link;
        // A link without its second label has nothing to store; there is no
        // message for this form.
        if (n < sl::kDownstreamLabel) return true;
        const auto row = ls_->Find(TrimST(f[sl::kLabel]));
        if (!row) return Unmatched();
        lsLink_.Reset();
        lsLink_.Bind(1, TrimST(f[sl::kDownstreamLabel])).Bind(2, *row);
        Run(lsLink_);
        return true;
      }
      case kSectionLakeBalances: {
        namespace lb = layout::lake_balance;
        if (n < lb::kFields) return false;
        const std::string label = TrimST(f[lb::kLabel]);
        const std::string first = TrimST(f[lb::kFirstLabel]);
        const auto element = LakeElementLabel(label, first);
        if (!element) return Unmatched();
        lake_.Reset();
        lake_.Bind(1, *element).Bind(2, label).Bind(3, first).Bind(4, TrimST(f[lb::kLastLabel]));
        for (int i = lb::kArea; i <= lb::kErrorPercent; ++i) lake_.Bind(i + 1, Val(f[i]));
        Run(lake_);
        return true;
      }
      default:
        return true;  // a record before any known section is skipped
    }
  }

  bool LinesinkFull(const std::vector<std::string>& f, const std::string& error,
                    const std::string& label) {
    const auto row = ls_->Find(TrimST(label));
    if (!row) return Unmatched();
    lsFull_.Reset();
    lsFull_.Bind(1, X(f[1])).Bind(2, Y(f[2])).Bind(3, X(f[3])).Bind(4, Y(f[4]));
    lsFull_.Bind(5, Val(f[5])).Bind(6, Val(f[6])).Bind(7, Val(f[7]));
    lsFull_.Bind(8, Val(f[8])).Bind(9, Val(f[9])).Bind(10, Val(f[10]));
    lsFull_.Bind(11, baseFlow_).Bind(12, overlandFlow_).Bind(13, Val(error)).Bind(14, *row);
    Run(lsFull_);
    return true;
  }

  Database& db_;
  const ModelFrame& frame_;
  UserInterface& ui_;
  std::optional<LabelIndex> wl_, ls_, in_, nf_;
  std::map<std::int64_t, std::int64_t> tp_;  // VID -> first row
  Statement tpFlow_, tpHead_, headWell_, dischargeWell_, lsFull_, lsDischarge_, lsLink_, inNode_,
      nfNode_, flux_, lake_;
  std::map<std::int64_t, std::string> lakeLabels_, shoreLabels_;  // PID -> element label
  double baseFlow_ = 0.0;
  double overlandFlow_ = 0.0;
  double inHeader_[6] = {0, 0, 0, 0, 0, 0};
  double nfHeader_[4] = {0, 0, 0, 0};
  int updated_ = 0;
  int unmatched_ = 0;
};

}  // namespace

LoadSummary LoadTARNOResultsFile(Database& db, const std::filesystem::path& extractFile,
                                 const ModelFrame& frame, UserInterface& ui) {
  LoadSummary summary;
  summary.file = extractFile;
  ui.PleaseWaitShow("Loading Results...", 0);
  try {
    Transaction tx(db);
    Loader loader(db, frame, ui);
    loader.PrepareTestPoints();
    std::ifstream in(extractFile, std::ios::binary);
    if (extractFile.empty() || !in) {
      // The prepared test point rows stay; the other tables keep their blank rows.
      tx.Commit();
      throw Error("File not found: \"" + extractFile.string() + "\"", error_number::kFileNotFound);
    }
    loader.Read(in, summary);
    loader.SearchTypes();
    tx.Commit();
  } catch (...) {
    ui.PleaseWaitHide();
    throw;
  }
  ui.PleaseWaitHide();
  return summary;
}

bool ReportUnusableResults(const LoadSummary& summary, UserInterface& ui) {
  const std::string file = summary.file.string();
  std::vector<std::string> lines;
  if (summary.linesRead == 0) {
    lines = {"The TARNO results file " + file + " is empty.",
             "The solver may have ended before it wrote its results; no results were loaded."};
  } else if (summary.sectionHeads == 0) {
    lines = {"The TARNO results file " + file + " has no section of results.",
             "It is not a results file of the solver or it is damaged; no results were loaded."};
  } else if (summary.unmatched > 0 && summary.rowsUpdated == 0 &&
             summary.unmatched == summary.records - summary.badRecords) {
    // Every readable record names an element this project does not have.
    lines = {"None of the " + std::to_string(summary.records) + " records of the TARNO results file " +
                 file + " belongs to an element of this project.",
             "The file may be the results of another project; no results were loaded."};
  } else {
    return false;
  }
  ui.MessageBox("Import error", lines, Buttons::OK, Icon::Critical);
  return true;
}

LoadSummary ModelLoadTARNOResults(const std::filesystem::path& projectPath, const ModelFrame& frame,
                                  UserInterface& ui) {
  Database db = Database::Open(projectPath);
  std::string base;
  std::filesystem::path dir;
  {
    Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
    if (!p.Step()) throw Error("The Project table has no row");
    base = p.GetText("TARNOBaseName");
    dir = p.GetText("TARNOBasePath");
  }
  std::filesystem::path file = FindExtractFile(dir, base);
  if (file.empty()) file = dir / (base + ".xtr");  // reported as not found
  return LoadTARNOResultsFile(db, file, frame, ui);
}

}  // namespace tarno
