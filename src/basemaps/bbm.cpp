#include "basemaps/bbm.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <map>
#include <unordered_map>
#include <utility>

#include "basemaps/bbm_format.h"
#include "core/rounding.h"
#include "core/ui_port.h"
#include "display/vgraph.h"

namespace tarno {

namespace {

constexpr int kRefreshEvery = 500;

std::string Trimmed(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.pop_back();
  std::size_t start = 0;
  while (start < s.size() && s[start] == ' ') ++start;
  return s.substr(start);
}

std::string TrimRight(std::string s) {
  while (!s.empty() && (s.back() == ' ' || s.back() == '\0')) s.pop_back();
  return s;
}

bool Has(const std::string& s, const char* part) { return s.find(part) != std::string::npos; }

}  // namespace

// ---------------------------------------------------------------------------
// The open file: reads through a window of the file kept in memory, so that the
// scan of the records and the reads of neighbouring records cost few system calls.
// Every read is checked against the file's size.

class BBMap::File {
 public:
  explicit File(const std::string& path) : path_(path) {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) return;
    f_ = std::fopen(path.c_str(), "rb");
    if (f_ == nullptr) return;
    if (fseeko(f_, 0, SEEK_END) != 0) {
      Close();
      return;
    }
    size_ = ftello(f_);
    if (size_ < 0) Close();
  }
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool IsOpen() const { return f_ != nullptr; }
  std::int64_t Size() const { return size_; }
  const std::string& Path() const { return path_; }

  // Up to n bytes at an offset; the number read.
  std::size_t ReadSome(std::int64_t offset, std::size_t n, unsigned char* out) {
    if (offset >= size_ || offset < 0) return 0;
    const std::size_t take = static_cast<std::size_t>(std::min<std::int64_t>(n, size_ - offset));
    Read(offset, take, out, "data");
    return take;
  }

  // n bytes at an offset, or BbmError when the file ends before them.
  void Read(std::int64_t offset, std::size_t n, unsigned char* out, const char* what) {
    if (offset < 0 || offset > size_ || static_cast<std::int64_t>(n) > size_ - offset) {
      throw BbmError("BBM file " + path_ + " is truncated: " + what + " at byte " +
                     std::to_string(offset) + " needs " + std::to_string(n) +
                     " bytes, but the file has " + std::to_string(size_));
    }
    if (n == 0) return;
    if (n > kWindow) {  // a large block: straight from the file
      Fetch(offset, n, out);
      return;
    }
    if (offset < winStart_ || offset + static_cast<std::int64_t>(n) > winStart_ + winLen_) {
      winStart_ = offset;
      winLen_ = static_cast<std::int64_t>(std::min<std::int64_t>(kWindow, size_ - offset));
      window_.resize(kWindow);
      Fetch(winStart_, static_cast<std::size_t>(winLen_), window_.data());
    }
    std::memcpy(out, window_.data() + (offset - winStart_), n);
  }

  std::int32_t Int(std::int64_t offset, const char* what) {
    unsigned char b[4];
    Read(offset, 4, b, what);
    return bbm::GetInt32(b);
  }

 private:
  static constexpr std::size_t kWindow = 1 << 16;
  void Fetch(std::int64_t offset, std::size_t n, unsigned char* out) {
    if (fseeko(f_, offset, SEEK_SET) != 0 || std::fread(out, 1, n, f_) != n) {
      throw BbmError("BBM file " + path_ + " cannot be read at byte " + std::to_string(offset));
    }
  }
  void Close() {
    if (f_ != nullptr) std::fclose(f_);
    f_ = nullptr;
  }
  std::string path_;
  std::FILE* f_ = nullptr;
  std::int64_t size_ = 0;
  std::vector<unsigned char> window_;
  std::int64_t winStart_ = 0, winLen_ = 0;
};

// ---------------------------------------------------------------------------
// Header

bool BbmHeader::IsCommandForm() const { return DataType == bbm::kCommands; }

std::string BbmHeader::VersionText() const {
  return std::to_string(Major) + "." + std::to_string(Minor) + "." + std::to_string(Patch);
}

BBMap::~BBMap() { delete file_; }

void BBMap::Fail(const std::string& what) const {
  throw BbmError("BBM file " + fileName_ + ": " + what);
}

void BBMap::Connect(const std::string& path) {
  File f(path);
  if (!f.IsOpen()) return;  // not connected, without a word

  connected_ = false;
  fileName_ = path;
  header_ = BbmHeader{};
  points_.clear();
  lines_.clear();
  areas_.clear();

  unsigned char sig[4] = {0, 0, 0, 0};
  const std::size_t got = f.ReadSome(0, 4, sig);
  if (got < 4 || std::memcmp(sig, bbm::kSignature, 4) != 0) {
    std::string shown;
    for (std::size_t i = 0; i < got; ++i) {
      const unsigned char c = sig[i];
      shown += (c >= 32 && c < 127) ? static_cast<char>(c) : '?';
    }
    const std::string text = bbm_text::kIllegalHeader + path + " --" + shown;
    if (ui_ != nullptr)
      ui_->MessageBox(bbm_text::kFileErrorTitle, {text}, Buttons::OK, Icon::Critical);
    throw BbmError(text);
  }

  header_.Major = f.Int(bbm::kVersionOffset, "the version");
  header_.Minor = f.Int(bbm::kVersionOffset + 4, "the version");
  header_.Patch = f.Int(bbm::kVersionOffset + 8, "the version");
  if (!bbm::VersionAccepted(header_.Major, header_.Minor, header_.Patch)) {
    const std::string text = bbm_text::kIllegalVersion + path + ": " + header_.VersionText();
    if (ui_ != nullptr)
      ui_->MessageBox(bbm_text::kFileErrorTitle, {text}, Buttons::OK, Icon::Critical);
    throw BbmError(text);
  }

  ReadHeader(f);
  if (header_.IsCommandForm()) {
    // The colour is not set for a command stream: its commands carry their own.
    connected_ = true;
    return;
  }
  ScanRecords(f);
  SetDefaultColour();
  connected_ = true;
}

void BBMap::ReadHeader(File& f) {
  unsigned char h[bbm::kHeaderSize];
  f.Read(0, bbm::kHeaderSize, h, "the header");
  auto text = [&](std::size_t offset) {
    return TrimRight(std::string(reinterpret_cast<const char*>(h + offset), bbm::kTextLength));
  };
  auto at = [&](std::size_t offset) { return bbm::GetInt32(h + offset); };
  header_.Title = text(bbm::kTitleOffset);
  header_.Source = text(bbm::kSourceOffset);
  header_.Description = text(bbm::kDescriptionOffset);
  header_.DataType = at(bbm::kDataTypeOffset);
  header_.Projection = at(bbm::kProjectionOffset);
  header_.Multiplier = at(bbm::kMultiplierOffset);
  if (header_.IsCommandForm()) {
    header_.LogicalPixelsX = at(bbm::kCountsOffset);
    header_.LogicalPixelsY = at(bbm::kCountsOffset + 4);
    // the third number is not used
  } else {
    header_.PointCount = at(bbm::kCountsOffset);
    header_.LineCount = at(bbm::kCountsOffset + 4);
    header_.AreaCount = at(bbm::kCountsOffset + 8);
  }
  header_.X1 = at(bbm::kBoundsOffset);
  header_.Y1 = at(bbm::kBoundsOffset + 4);
  header_.X2 = at(bbm::kBoundsOffset + 8);
  header_.Y2 = at(bbm::kBoundsOffset + 12);
  header_.BodyPosition = bbm::kBodyOffset;
}

void BBMap::ScanRecords(File& f) {
  const std::int64_t size = f.Size();
  if (header_.PointCount < 0 || header_.LineCount < 0 || header_.AreaCount < 0) {
    Fail("negative record count in the header (points " + std::to_string(header_.PointCount) +
         ", lines " + std::to_string(header_.LineCount) + ", areas " +
         std::to_string(header_.AreaCount) + ")");
  }
  // Never reserve more than the file could hold, whatever the header says.
  const std::int64_t room = size / static_cast<std::int64_t>(bbm::kAreaFixedSize);
  points_.reserve(static_cast<std::size_t>(std::min<std::int64_t>(header_.PointCount, room)));
  lines_.reserve(static_cast<std::size_t>(std::min<std::int64_t>(header_.LineCount, room)));
  areas_.reserve(static_cast<std::size_t>(std::min<std::int64_t>(header_.AreaCount, room)));

  std::int64_t pos = header_.BodyPosition;
  unsigned char b[4 * 10];
  while (pos < size) {
    const std::int32_t type = f.Int(pos, "a record type");
    const char* kind = nullptr;
    std::size_t fixed = 0;
    std::vector<BBMRecordIndex>* index = nullptr;
    std::int32_t counted = 0;
    if (type == bbm::kPointRecord) {
      kind = "point", fixed = bbm::kPointFixedSize, index = &points_, counted = header_.PointCount;
    } else if (type == bbm::kLineRecord) {
      kind = "line", fixed = bbm::kLineFixedSize, index = &lines_, counted = header_.LineCount;
    } else if (type == bbm::kAreaRecord) {
      kind = "area", fixed = bbm::kAreaFixedSize, index = &areas_, counted = header_.AreaCount;
    } else {
      break;  // an unknown record type ends the records, without a word
    }
    const std::string where = std::string(kind) + " record " + std::to_string(index->size() + 1) +
                              " at byte " + std::to_string(pos);
    f.Read(pos, fixed, b, "a record");
    auto at = [&](int i) { return bbm::GetInt32(b + 4 * i); };
    BBMRecordIndex r;
    r.Id = at(1);
    r.AttrValues = at(2);
    r.AttrPairs = at(3);
    std::int64_t variable = 0;
    if (type == bbm::kPointRecord) {
      r.Xmin = at(4), r.Ymin = at(5), r.Xmax = at(6), r.Ymax = at(7);
      r.X = at(8), r.Y = at(9);
    } else if (type == bbm::kLineRecord) {
      r.Vertices = at(4);
      r.Xmin = at(5), r.Ymin = at(6), r.Xmax = at(7), r.Ymax = at(8);
    } else {
      r.Boundaries = at(4);
    }
    if (r.AttrValues < 0 || r.AttrPairs < 0 || r.Vertices < 0 || r.Boundaries < 0) {
      Fail("negative count in " + where);
    }
    // The variable part must fit in what is left of the file. The counts are checked
    // one by one, so that their product cannot overflow.
    r.Position = pos + static_cast<std::int64_t>(fixed);
    const std::int64_t room = size - r.Position;
    const std::int64_t pairs = 8LL * r.AttrPairs;
    bool fits = pairs <= room;
    if (fits && type == bbm::kLineRecord) {
      const std::int64_t stride = 8LL + 4LL * r.AttrValues;
      fits = r.Vertices == 0 || stride <= (room - pairs) / r.Vertices;
      if (fits) variable = pairs + static_cast<std::int64_t>(r.Vertices) * stride;
    } else if (fits) {
      variable = pairs + 4LL * r.AttrValues + 4LL * r.Boundaries;
      fits = variable <= room;
    }
    if (!fits) {
      Fail(where + " needs more bytes than the file's " + std::to_string(size) +
           " hold (the file is truncated or its counts are wrong)");
    }
    if (static_cast<std::int64_t>(index->size()) >= counted) {
      Fail("more " + std::string(kind) + " records than the " + std::to_string(counted) +
           " that the header counts (" + where + ")");
    }
    index->push_back(r);
    pos = r.Position + variable;
  }
}

void BBMap::SetDefaultColour() {
  if (header_.DataType == bbm::kAttributed) {
    const std::string kind = header_.Description.substr(0, 4);
    if (kind == "HYDR") {
      color_ = Rgb(0, 192, 192);
    } else if (kind == "ROAD") {
      color_ = PaletteColour(2);
    } else if (kind == "MISC") {
      color_ = PaletteColour(3);
    } else if (kind == "HYPS") {
      color_ = PaletteColour(6);
    } else {
      color_ = PaletteColour(0);  // "RAIL" and anything else
    }
  } else if (header_.DataType == bbm::kColoured || header_.DataType == bbm::kUnattributed) {
    color_ = PaletteColour(0);
  }
}

std::string BBMap::ConnectName() const {
  if (!connected_) {
    if (ui_ != nullptr) {
      ui_->MessageBox(bbm_text::kNotConnectedTitle, {bbm_text::kNotConnected}, Buttons::OK,
                      Icon::Critical);
    }
    return {};
  }
  return fileName_;
}

double BBMap::Left() const { return static_cast<double>(header_.X1) / header_.Multiplier; }
double BBMap::Right() const { return static_cast<double>(header_.X2) / header_.Multiplier; }
double BBMap::Top() const { return static_cast<double>(header_.Y2) / header_.Multiplier; }
double BBMap::Bottom() const { return static_cast<double>(header_.Y1) / header_.Multiplier; }

std::vector<std::string> BBMap::InfoLines() const {
  const BbmHeader& h = header_;
  auto n = [](std::int64_t v) { return std::to_string(v); };
  std::vector<std::string> lines = {
      "Filename:         " + fileName_,       "Version:          " + h.VersionText(),
      "Title:            " + h.Title,         "Source:           " + h.Source,
      "Description:      " + h.Description,   "Data type:        " + n(h.DataType),
      "Projection:       " + n(h.Projection), "Multiplier:       " + n(h.Multiplier),
  };
  if (h.IsCommandForm()) {
    lines.push_back("Logical Pixels X: " + n(h.LogicalPixelsX));
    lines.push_back("Logical Pixels Y: " + n(h.LogicalPixelsY));
  } else {
    lines.push_back("Number of Points: " + n(h.PointCount));
    lines.push_back("Number of Lines:  " + n(h.LineCount));
    lines.push_back("Number of Areas:  " + n(h.AreaCount));
  }
  lines.push_back("Bounding box");
  lines.push_back("             X1:  " + n(h.X1));
  lines.push_back("             Y1:  " + n(h.Y1));
  lines.push_back("             X2:  " + n(h.X2));
  lines.push_back("             Y2:  " + n(h.Y2));
  return lines;
}

void BBMap::ShowInfo() const {
  if (ui_ != nullptr) ui_->MessageBox(bbm_text::kInfoTitle, InfoLines(), Buttons::OK, Icon::None);
}

// ---------------------------------------------------------------------------
// Reading records for drawing

BBMap::File& BBMap::Open() const { return *file_; }

bool BBMap::OpenForDrawing() {
  if (file_ != nullptr) return false;
  auto* f = new File(fileName_);
  if (!f->IsOpen()) {
    delete f;
    Fail("cannot be opened for drawing");
  }
  file_ = f;
  return true;
}

void BBMap::CloseAfterDrawing(bool opened) {
  if (!opened) return;
  delete file_;
  file_ = nullptr;
}

namespace {
// Closes the file at the end of a scope when that scope opened it.
template <typename F>
struct AtExit {
  F f;
  ~AtExit() { f(); }
};
template <typename F>
AtExit(F) -> AtExit<F>;
}  // namespace

void BBMap::ReadPairs(const BBMRecordIndex& r, std::vector<Pair>& pairs) {
  pairs.resize(static_cast<std::size_t>(r.AttrPairs));
  if (r.AttrPairs == 0) return;
  bytes_.resize(8 * pairs.size());
  Open().Read(r.Position, bytes_.size(), bytes_.data(), "attribute pairs");
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    pairs[i].major = bbm::GetInt32(bytes_.data() + 8 * i);
    pairs[i].minor = bbm::GetInt32(bytes_.data() + 8 * i + 4);
  }
}

void BBMap::ReadLineVertices(const BBMRecordIndex& r, std::vector<std::int32_t>& xs,
                             std::vector<std::int32_t>& ys) {
  const std::size_t n = static_cast<std::size_t>(r.Vertices);
  const std::size_t stride = 8 + 4 * static_cast<std::size_t>(r.AttrValues);
  xs.resize(n);
  ys.resize(n);
  if (n == 0) return;
  bytes_.resize(n * stride);
  Open().Read(r.Position + 8LL * r.AttrPairs, bytes_.size(), bytes_.data(), "line vertices");
  const unsigned char* p = bytes_.data();
  for (std::size_t i = 0; i < n; ++i, p += stride) {
    xs[i] = bbm::GetInt32(p);
    ys[i] = bbm::GetInt32(p + 4);
  }
}

void ThinPolyline(const std::int32_t* xs, const std::int32_t* ys, int count, double step,
                  std::vector<std::int32_t>& outX, std::vector<std::int32_t>& outY) {
  outX.clear();
  outY.clear();
  if (count < 1) return;
  outX.reserve(static_cast<std::size_t>(count));
  outY.reserve(static_cast<std::size_t>(count));
  outX.push_back(xs[0]);
  outY.push_back(ys[0]);
  const bool thin = std::isfinite(step) && step > 0;
  std::int64_t lastX = xs[0], lastY = ys[0];
  for (int i = 1; i < count - 1; ++i) {
    if (thin && static_cast<double>(std::llabs(xs[i] - lastX)) < step &&
        static_cast<double>(std::llabs(ys[i] - lastY)) < step) {
      continue;
    }
    outX.push_back(xs[i]);
    outY.push_back(ys[i]);
    lastX = xs[i];
    lastY = ys[i];
  }
  if (count > 1) {
    outX.push_back(xs[count - 1]);
    outY.push_back(ys[count - 1]);
  }
}

// ---------------------------------------------------------------------------
// Drawing

void BBMap::Draw(VGraphGDI& g, bool drawAreas, bool drawLines, bool drawPoints) {
  if (!connected_) return;
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  if (header_.IsCommandForm()) {
    DrawCommands(g);
    return;
  }
  // Areas under lines under points; unattributed files draw their points twice.
  if (drawAreas) DrawAllAreas(g);
  if (drawLines) DrawAllLines(g);
  if (drawPoints) DrawAllPoints(g);
  if (drawPoints && header_.DataType == bbm::kUnattributed) DrawAllPoints(g);
}

void BBMap::DrawAllAreas(VGraphGDI& g) {
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  for (std::size_t i = 1; i <= areas_.size(); ++i) DrawArea(g, static_cast<int>(i));
}

void BBMap::DrawAllPoints(VGraphGDI& g) {
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  for (std::size_t i = 1; i <= points_.size(); ++i) DrawPoint(g, static_cast<int>(i));
}

void BBMap::DrawAllLines(VGraphGDI& g) {
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  // A name is repeated along a road only at intervals of 15 % of the window's
  // diagonal: a label is placed when no label of the same text lies closer.
  const auto& s = g.State();
  const double diagonal = std::sqrt(static_cast<double>(s.WindowWidth100) * s.WindowWidth100 +
                                    static_cast<double>(s.WindowHeight100) * s.WindowHeight100) /
                          100.0;
  std::unordered_map<std::string, std::vector<std::pair<double, double>>> placed;
  for (std::size_t i = 1; i <= lines_.size(); ++i) {
    const BbmLineLabel label = DrawLine(g, static_cast<int>(i));
    if (i % kRefreshEvery == 0) g.vgGDIRefresh();
    const std::string text = Trimmed(label.text);
    if (text.empty()) continue;
    auto& same = placed[text];
    double shortest = 1e30;
    for (const auto& [x, y] : same) {
      shortest = std::min(shortest, std::hypot(label.x - x, label.y - y));
    }
    if (diagonal * 0.15 < shortest) {
      g.vgGDIWorldText(label.x, label.y, label.text, bbm_text::kLabelFont, 11, PaletteColour(0),
                       label.angle, 4, false);
      same.emplace_back(label.x, label.y);
    }
  }
}

BbmLineLabel BBMap::DrawLine(VGraphGDI& g, int record) {
  BbmLineLabel out;
  if (record < 1 || static_cast<std::size_t>(record) > lines_.size()) {
    Fail("there is no line record " + std::to_string(record));
  }
  const BBMRecordIndex& r = lines_[static_cast<std::size_t>(record) - 1];
  if (!g.vgGDIBoxVisible(r.Xmin, r.Xmax, r.Ymax, r.Ymin)) return out;
  const std::int32_t type = header_.DataType;
  if (r.AttrPairs == 0 && type != bbm::kUnattributed) return out;

  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  ReadPairs(r, pairs_);
  ReadLineVertices(r, xs_, ys_);
  const int n = r.Vertices;

  Colour colour = color_;
  int width = 1;
  int style = kPenSolid;
  bool draw = true;

  if (type == bbm::kAttributed) {
    // The DLG styling: class by the first major code, details by scale level.
    const double unitsPerPixel = g.vgGDIUnitsPerPixel();
    const int level = unitsPerPixel < 2000 ? 0 : unitsPerPixel < 3500 ? 1 : 2;
    const int cls = pairs_[0].major / 10;
    auto placeLabelHere = [&](bool withAngle) {
      if (n < 1) return;
      out.x = xs_[0] / 100.0;
      out.y = ys_[0] / 100.0;
      out.angle = 0.0;
      // A line of one vertex has no direction: its label lies flat.
      if (withAngle && n >= 2) {
        if (xs_[1] == xs_[0]) {
          out.angle = 90.0;
        } else {
          out.angle = std::atan((static_cast<double>(ys_[1]) - ys_[0]) /
                                (static_cast<double>(xs_[1]) - xs_[0])) *
                      180.0 / 3.1415926;
        }
      }
    };
    switch (cls) {
      case 2:  // hypsography: elevation labels
        for (const Pair& p : pairs_) {
          const bool feet = p.major >= 21 && p.major <= 23;
          const bool metres = p.major == 24 || p.major == 25;
          if (!feet && !metres) continue;
          hypsographyFound_ = true;
          if (!options_.hypsographyLabels) continue;
          std::int64_t value = p.minor;
          if (feet && options_.metres)
            value = static_cast<std::int64_t>(std::trunc(p.minor * 0.3048));
          if (metres && !options_.metres)
            value = static_cast<std::int64_t>(std::trunc(p.minor / 0.3048));
          out.text = std::to_string(value);
          placeLabelHere(false);
        }
        break;
      case 5:  // hydrography
        for (const Pair& p : pairs_) {
          if (p.major != 50) continue;
          const int m = p.minor;
          if (m == 419 || m == 601 || m == 611 || m == 612 || m == 617 || m / 100 == 2)
            draw = false;
          if (m == 610) {
            if (level < 2) {
              style = kPenDot;
            } else {
              draw = false;
            }
          }
        }
        break;
      case 17:  // roads: route labels, then generalisation by level
        for (const Pair& p : pairs_) {
          const std::string number = std::to_string(p.minor);
          bool routed = true;
          if (p.major == 172) {
            out.text = "I-" + number;
          } else if (p.major == 173) {
            if (!Has(out.text, "I-")) out.text = "US-" + number;
          } else if (p.major == 174) {
            if (!Has(out.text, "US") && !Has(out.text, "I-")) out.text = "SR-" + number;
          } else if (p.major == 176) {
            if (!Has(out.text, "CR") && !Has(out.text, "US") && !Has(out.text, "I-")) {
              out.text = "CR-" + number;
            }
          } else {
            routed = false;
          }
          if (routed) placeLabelHere(true);
        }
        for (const Pair& p : pairs_) {
          const int m = p.minor;
          if (level == 0) {
            if (m >= 201 && m <= 209) width = 2;
            if (m == 211 || m == 212) style = kPenDot;
          } else if (level == 1) {
            if (m == 402) draw = false;
            if (m >= 201 && m <= 204) width = 2;
          } else {
            if ((m >= 210 && m <= 299) || m == 402) draw = false;
          }
        }
        if (!draw) out = BbmLineLabel{};
        break;
      case 18:  // railways
        colour = PaletteColour(6);
        if (level == 0) {
          width = 2;
          for (const Pair& p : pairs_) {
            if (p.minor > 201) width = 1;
          }
        } else if (level == 1) {
          width = 2;
          for (const Pair& p : pairs_) {
            if (p.minor > 201) draw = false;
            if (p.minor == 602 || p.minor == 607) draw = true;
          }
        } else {
          for (const Pair& p : pairs_) {
            if (p.minor > 201) draw = false;
          }
        }
        break;
      case 19:
        // At the closest level the rule of this class looks at a minor that does not
        // exist (the one before the first), and the record fails; that failure ends
        // the drawing of the map and is kept as it always was.
        if (level == 0) {
          Fail("line record " + std::to_string(record) +
               " of class 19 cannot be drawn at this scale: Subscript out of range");
        }
        for (const Pair& p : pairs_) {
          if (p.minor >= 201 && p.minor <= 300) style = kPenDot;
        }
        break;
      default: break;
    }
  } else if (type == bbm::kSimpleCoded) {
    const std::int32_t major = pairs_[0].major;
    if (major == 100) {
      colour = PaletteColour(1);
    } else if (major == 200) {
      switch (pairs_[0].minor) {
        case 0: colour = PaletteColour(2); break;
        case 1: colour = PaletteColour(3); break;
        case 2: colour = PaletteColour(6); break;
        case 3: colour = PaletteColour(5); break;
        default: break;
      }
    } else if (major == 300) {
      // Not a line: a cross at each vertex.
      for (int i = 0; i < n; ++i) g.vgGDIMarkerL(xs_[i], ys_[i], 7, PaletteColour(5), 1, 0.0, 1.0);
      draw = false;
    } else {
      draw = false;
    }
    color_ = colour;
  } else if (type == bbm::kColoured) {
    colour = pairs_[0].minor;
  } else if (type == bbm::kUnattributed) {
    colour = color_;
  } else {
    colour = PaletteColour(0);
    color_ = colour;
  }

  if (draw && n > 0) {
    ThinPolyline(xs_.data(), ys_.data(), n, g.vgGDIUnitsPerPixel(), dxs_, dys_);
    g.vgGDIPolylineL(dxs_.data(), dys_.data(), static_cast<int>(dxs_.size()), colour, width, style);
  }
  return out;
}

namespace {
bool PolygonVisible(const VGraphGDI& g, const std::vector<std::int32_t>& xs,
                    const std::vector<std::int32_t>& ys) {
  if (xs.empty()) return false;
  const auto [minX, maxX] = std::minmax_element(xs.begin(), xs.end());
  const auto [minY, maxY] = std::minmax_element(ys.begin(), ys.end());
  return g.vgGDIBoxVisible(*minX, *maxX, *maxY, *minY);
}
}  // namespace

void BBMap::DrawArea(VGraphGDI& g, int record) {
  if (record < 1 || static_cast<std::size_t>(record) > areas_.size()) {
    Fail("there is no area record " + std::to_string(record));
  }
  const BBMRecordIndex& r = areas_[static_cast<std::size_t>(record) - 1];
  if (r.AttrPairs == 0) return;
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  ReadPairs(r, pairs_);
  // Only hydrography (class 5) areas are drawn; the class is known from the pairs,
  // so the boundaries of any other area are not read at all.
  if (pairs_[0].major / 10 != 5) return;

  // The polygon: the boundary lines one after the other, a negative reference
  // walking its line backwards, 0 ending the list. The lines are read as plain X, Y
  // pairs, as the producers write area boundaries without extra values.
  std::vector<std::int32_t> refs(static_cast<std::size_t>(r.Boundaries));
  if (!refs.empty()) {
    bytes_.resize(4 * refs.size());
    Open().Read(r.Position + 8LL * r.AttrPairs, bytes_.size(), bytes_.data(), "area boundaries");
    for (std::size_t i = 0; i < refs.size(); ++i) refs[i] = bbm::GetInt32(bytes_.data() + 4 * i);
  }
  xs_.clear();
  ys_.clear();
  for (const std::int32_t ref : refs) {
    if (ref == 0) break;
    const std::int64_t number = std::llabs(static_cast<std::int64_t>(ref));
    if (number > static_cast<std::int64_t>(lines_.size())) {
      Fail("area record " + std::to_string(record) + " names line " + std::to_string(ref) +
           ", but the file has " + std::to_string(lines_.size()) + " lines");
    }
    const BBMRecordIndex& line = lines_[static_cast<std::size_t>(number - 1)];
    const std::size_t n = static_cast<std::size_t>(line.Vertices);
    std::vector<unsigned char> raw(8 * n);
    if (n > 0)
      Open().Read(line.Position + 8LL * line.AttrPairs, raw.size(), raw.data(),
                  "boundary vertices");
    const std::size_t base = xs_.size();
    xs_.resize(base + n);
    ys_.resize(base + n);
    for (std::size_t i = 0; i < n; ++i) {
      const std::size_t to = ref > 0 ? base + i : base + (n - 1 - i);
      xs_[to] = bbm::GetInt32(raw.data() + 8 * i);
      ys_[to] = bbm::GetInt32(raw.data() + 8 * i + 4);
    }
  }
  if (xs_.empty()) return;

  Colour colour = color_;
  for (const Pair& p : pairs_) {
    const int m = p.minor;
    if (m == 101) {
      colour = color_;
    } else if (m == 100 || (m >= 102 && m <= 104)) {
      colour = PaletteColour(7);
    } else if (m == 105 || (m >= 111 && m <= 119)) {
      colour = Rgb(192, 192, 0);
    } else if (m >= 106 && m <= 110) {
      colour = Rgb(128, 64, 64);
    }
  }
  // An area has no box of its own in the file; the one of its polygon keeps areas
  // outside the window from being converted at all.
  if (!PolygonVisible(g, xs_, ys_)) return;
  g.vgGDIPolygonL(xs_.data(), ys_.data(), static_cast<int>(xs_.size()), colour, 0, kPenSolid,
                  colour);
}

void BBMap::DrawPoint(VGraphGDI& g, int record) {
  if (record < 1 || static_cast<std::size_t>(record) > points_.size()) {
    Fail("there is no point record " + std::to_string(record));
  }
  const BBMRecordIndex& r = points_[static_cast<std::size_t>(record) - 1];
  if (r.AttrPairs == 0 && header_.DataType != bbm::kUnattributed) return;
  // The point's pairs decide nothing here; its X and Y are in the index.
  if (g.vgGDIBoxVisible(r.Xmin, r.Xmax, r.Ymax, r.Ymin)) {
    g.vgGDIMarkerL(r.X, r.Y, 7, PaletteColour(5), 1, 0.0, 1.0);
  }
}

void BBMap::DrawCommands(VGraphGDI& g) {
  if (!connected_) return;
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  try {
    DrawCommandStream(g);
  } catch (const UiPortFailure&) {
    throw;
  } catch (const std::exception&) {
    if (ui_ != nullptr) {
      ui_->MessageBox(vgraph_text::kAppTitle, {bbm_text::kCommandError}, Buttons::OK,
                      Icon::Critical);
    }
  }
}

void BBMap::DrawCommandStream(VGraphGDI& g) {
  File& f = Open();
  const std::int64_t size = f.Size();
  std::int64_t pos = header_.BodyPosition;
  Colour current = 0, lineColour = 0;
  int currentWidth = 0, lineWidth = 0;
  xs_.clear();
  ys_.clear();
  std::int32_t minX = 0, minY = 0, maxX = 0, maxY = 0;
  auto resetBox = [&] {
    minX = header_.X2, minY = header_.Y2, maxX = header_.X1, maxY = header_.Y1;
  };
  auto widen = [&](std::int32_t x, std::int32_t y) {
    minX = std::min(minX, x), maxX = std::max(maxX, x);
    minY = std::min(minY, y), maxY = std::max(maxY, y);
  };
  resetBox();
  int linesDrawn = 0, figuresDrawn = 0;
  auto operand = [&]() {
    const std::int32_t v = f.Int(pos, "a drawing command's operand");
    pos += 4;
    return v;
  };
  const double unitsPerPixel = g.vgGDIUnitsPerPixel();
  while (pos + 4 <= size) {  // the end of the file ends the stream too
    const std::int32_t code = operand();
    switch (code) {
      case bbm::kCmdMoveTo: {
        const std::int32_t x = operand();
        const std::int32_t y = operand();
        if (xs_.size() > 1 && g.vgGDIBoxVisible(minX, maxX, maxY, minY)) {
          ThinPolyline(xs_.data(), ys_.data(), static_cast<int>(xs_.size()), unitsPerPixel, dxs_,
                       dys_);
          g.vgGDIPolylineL(dxs_.data(), dys_.data(), static_cast<int>(dxs_.size()), lineColour,
                           lineWidth, kPenSolid);
          if (++linesDrawn % kRefreshEvery == 0) g.vgGDIRefresh();
        }
        xs_.assign(1, x);
        ys_.assign(1, y);
        resetBox();
        widen(x, y);
        lineColour = current;
        lineWidth = currentWidth;
        break;
      }
      case bbm::kCmdLineTo: {
        const std::int32_t x = operand();
        const std::int32_t y = operand();
        xs_.push_back(x);
        ys_.push_back(y);
        widen(x, y);
        break;
      }
      case bbm::kCmdWidth: {
        const std::int32_t w = operand();
        currentWidth = std::max(1, CLng(w / unitsPerPixel));
        break;
      }
      case bbm::kCmdColour: {
        const std::int32_t c = operand();
        current = PaletteColour(c == 15 ? 0 : c);
        break;
      }
      case bbm::kCmdPolygon: {
        const std::int32_t n = operand();
        if (n < 0 || 8LL * n > size - pos) {
          throw BbmError("BBM file " + fileName_ + ": a polygon of " + std::to_string(n) +
                         " points at byte " + std::to_string(pos - 8) + " overruns the file");
        }
        bytes_.resize(8 * static_cast<std::size_t>(n));
        f.Read(pos, bytes_.size(), bytes_.data(), "polygon points");
        pos += static_cast<std::int64_t>(bytes_.size());
        xs_.resize(static_cast<std::size_t>(n));
        ys_.resize(static_cast<std::size_t>(n));
        resetBox();
        for (std::size_t i = 0; i < xs_.size(); ++i) {
          xs_[i] = bbm::GetInt32(bytes_.data() + 8 * i);
          ys_[i] = bbm::GetInt32(bytes_.data() + 8 * i + 4);
          widen(xs_[i], ys_[i]);
        }
        if (n > 0 && g.vgGDIBoxVisible(minX, maxX, maxY, minY)) {
          g.vgGDIPolygonL(xs_.data(), ys_.data(), n, current, currentWidth, kPenSolid, current);
          if (++figuresDrawn % kRefreshEvery == 0) g.vgGDIRefresh();
        }
        // The points stay: the next start of a line outlines the polygon too.
        break;
      }
      case bbm::kCmdEnd:
        // What is in the buffer is not drawn: producers end their streams with a 0.
        return;
      default: break;  // unknown codes have no operand
    }
  }
}

// ---------------------------------------------------------------------------
// Attribute groups

std::vector<BbmGroup> BBMap::Groups() {
  std::map<std::pair<std::int32_t, std::int32_t>, BbmGroup> groups;
  if (!connected_ || header_.IsCommandForm()) return {};
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  auto count = [&](const std::vector<BBMRecordIndex>& index, int BbmGroup::*field) {
    for (const BBMRecordIndex& r : index) {
      ReadPairs(r, pairs_);
      for (std::size_t i = 0; i < pairs_.size(); ++i) {
        bool seen = false;
        for (std::size_t j = 0; j < i && !seen; ++j) {
          seen = pairs_[j].major == pairs_[i].major && pairs_[j].minor == pairs_[i].minor;
        }
        if (seen) continue;
        BbmGroup& g = groups[{pairs_[i].major, pairs_[i].minor}];
        g.major = pairs_[i].major;
        g.minor = pairs_[i].minor;
        ++(g.*field);
      }
    }
  };
  count(points_, &BbmGroup::points);
  count(lines_, &BbmGroup::lines);
  count(areas_, &BbmGroup::areas);
  std::vector<BbmGroup> out;
  out.reserve(groups.size());
  for (const auto& [key, group] : groups) out.push_back(group);
  return out;
}

void BBMap::DrawGroup(VGraphGDI& g, std::int32_t major, std::int32_t minor, Colour colour) {
  if (!connected_ || header_.IsCommandForm()) return;
  const bool opened = OpenForDrawing();
  AtExit close{[&] { CloseAfterDrawing(opened); }};
  auto carries = [&](const BBMRecordIndex& r) {
    ReadPairs(r, pairs_);
    return std::any_of(pairs_.begin(), pairs_.end(),
                       [&](const Pair& p) { return p.major == major && p.minor == minor; });
  };
  for (const BBMRecordIndex& r : areas_) {
    if (!carries(r)) continue;
    // The outline of the area, from its boundary lines as DrawArea joins them.
    std::vector<std::int32_t> xs, ys;
    for (std::int32_t b = 0; b < r.Boundaries; ++b) {
      const std::int32_t ref =
          Open().Int(r.Position + 8LL * r.AttrPairs + 4LL * b, "area boundaries");
      if (ref == 0) break;
      const std::int64_t number = std::llabs(static_cast<std::int64_t>(ref));
      if (number > static_cast<std::int64_t>(lines_.size())) {
        Fail("an area names line " + std::to_string(ref) + ", but the file has " +
             std::to_string(lines_.size()) + " lines");
      }
      const BBMRecordIndex& line = lines_[static_cast<std::size_t>(number - 1)];
      BBMRecordIndex plain = line;
      plain.AttrValues = 0;
      ReadLineVertices(plain, xs_, ys_);
      if (ref < 0) {
        std::reverse(xs_.begin(), xs_.end());
        std::reverse(ys_.begin(), ys_.end());
      }
      xs.insert(xs.end(), xs_.begin(), xs_.end());
      ys.insert(ys.end(), ys_.begin(), ys_.end());
    }
    if (PolygonVisible(g, xs, ys)) {
      g.vgGDIPolygonL(xs.data(), ys.data(), static_cast<int>(xs.size()), colour, 2, kPenSolid, -1);
    }
  }
  for (const BBMRecordIndex& r : lines_) {
    if (!g.vgGDIBoxVisible(r.Xmin, r.Xmax, r.Ymax, r.Ymin) || !carries(r)) continue;
    ReadLineVertices(r, xs_, ys_);
    ThinPolyline(xs_.data(), ys_.data(), r.Vertices, g.vgGDIUnitsPerPixel(), dxs_, dys_);
    g.vgGDIPolylineL(dxs_.data(), dys_.data(), static_cast<int>(dxs_.size()), colour, 2, kPenSolid);
  }
  for (const BBMRecordIndex& r : points_) {
    if (!g.vgGDIBoxVisible(r.Xmin, r.Xmax, r.Ymax, r.Ymin) || !carries(r)) continue;
    g.vgGDIMarkerL(r.X, r.Y, 7, colour, 2, 0.0, 1.0);
  }
}

// ---------------------------------------------------------------------------

std::int32_t GetBBMProjection(const std::string& path) {
  std::error_code ec;
  std::FILE* f = std::filesystem::is_directory(path, ec) ? nullptr : std::fopen(path.c_str(), "rb");
  if (f == nullptr) throw BbmError("BBM file " + path + " cannot be opened to read its projection");
  unsigned char b[4];
  const bool ok = fseeko(f, static_cast<off_t>(bbm::kProjectionOffset), SEEK_SET) == 0 &&
                  std::fread(b, 1, 4, f) == 4;
  std::fclose(f);
  if (!ok) {
    throw BbmError("BBM file " + path + " is too short to hold a projection (at byte " +
                   std::to_string(bbm::kProjectionOffset) + ")");
  }
  return bbm::GetInt32(b);
}

}  // namespace tarno
