#include "basemaps/shapefile.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <system_error>

#include "core/file_find.h"

namespace tarno {

namespace {

constexpr int kSubscriptOutOfRange = 9;
constexpr std::int32_t kFileCode = 9994;
constexpr std::int32_t kVersion = 1000;
constexpr int kHeaderBytes = 100;

void CheckIndex(int index, std::size_t size) {
  if (index < 1 || static_cast<std::size_t>(index) > size)
    throw Error(
        "Subscript out of range: item " + std::to_string(index) + " of " + std::to_string(size),
        kSubscriptOutOfRange);
}

// The byte swap of a 32-bit value; big-endian fields pass through it both ways.
std::uint32_t Swap32(std::uint32_t v) {
  return ((v & 0xFFu) << 24) | ((v & 0xFF00u) << 8) | ((v >> 8) & 0xFF00u) | (v >> 24);
}

std::uint32_t LoadLE32(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
         (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}
std::int32_t GetLE32(const unsigned char* p) { return static_cast<std::int32_t>(LoadLE32(p)); }
std::int32_t GetBE32(const unsigned char* p) {
  return static_cast<std::int32_t>(Swap32(LoadLE32(p)));
}
double GetDouble(const unsigned char* p) {
  std::uint64_t bits = 0;
  for (int i = 7; i >= 0; --i) bits = (bits << 8) | p[i];
  return std::bit_cast<double>(bits);
}

void PutLE32(std::string& out, std::int32_t v) {
  const auto u = static_cast<std::uint32_t>(v);
  for (int i = 0; i < 4; ++i) out.push_back(static_cast<char>((u >> (8 * i)) & 0xFF));
}
void PutBE32(std::string& out, std::int32_t v) {
  PutLE32(out, static_cast<std::int32_t>(Swap32(static_cast<std::uint32_t>(v))));
}
void PutDouble(std::string& out, double v) {
  const auto bits = std::bit_cast<std::uint64_t>(v);
  for (int i = 0; i < 8; ++i) out.push_back(static_cast<char>((bits >> (8 * i)) & 0xFF));
}

bool ReadAt(std::fstream& f, std::int64_t pos, void* buffer, std::int64_t n) {
  f.clear();
  f.seekg(pos);
  if (!f) return false;
  f.read(static_cast<char*>(buffer), n);
  return static_cast<bool>(f) && f.gcount() == n;
}

bool WriteAt(std::fstream& f, std::int64_t pos, const std::string& bytes) {
  f.clear();
  f.seekp(pos);
  if (!f) return false;
  f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  f.flush();
  return static_cast<bool>(f);
}

std::int64_t FileBytes(const std::filesystem::path& p) {
  std::error_code ec;
  const auto n = std::filesystem::file_size(p, ec);
  return ec ? 0 : static_cast<std::int64_t>(n);
}

double SegmentDistance(double x, double y, const CPoint& a, const CPoint& b) {
  const double dx = b.X() - a.X(), dy = b.Y() - a.Y();
  const double len2 = dx * dx + dy * dy;
  double t = 0.0;
  if (len2 > 0.0) t = std::clamp(((x - a.X()) * dx + (y - a.Y()) * dy) / len2, 0.0, 1.0);
  return std::hypot(x - (a.X() + t * dx), y - (a.Y() + t * dy));
}

bool IsHandledType(std::int32_t t) { return t == 0 || t == 1 || t == 3 || t == 5 || t == 8; }

}  // namespace

// ---------------------------------------------------------------------------
// Shapes

double CPoint::Distance(double x, double y) const {
  if (null_) return std::numeric_limits<double>::infinity();
  return std::hypot(x - x_, y - y_);
}

void CRect::Make(double left, double top, double right, double bottom) {
  left_ = left;
  top_ = top;
  right_ = right;
  bottom_ = bottom;
  empty_ = false;
}

void CRect::MakeXY(double x1, double y1, double x2, double y2) {
  Make(std::min(x1, x2), std::max(y1, y2), std::max(x1, x2), std::min(y1, y2));
}

void CRect::Widen(double x, double y) {
  if (empty_) {
    Make(x, y, x, y);
    return;
  }
  left_ = std::min(left_, x);
  right_ = std::max(right_, x);
  bottom_ = std::min(bottom_, y);
  top_ = std::max(top_, y);
}

void CRect::Widen(const IShape& box) {
  if (box.IsNull()) return;
  Widen(box.Left(), box.Bottom());
  Widen(box.Right(), box.Top());
}

bool CRect::Intersects(double left, double right, double bottom, double top) const {
  return !empty_ && left_ <= right && right_ >= left && bottom_ <= top && top_ >= bottom;
}

double CRect::Distance(double x, double y) const {
  if (empty_) return std::numeric_limits<double>::infinity();
  const double dx = x < left_ ? left_ - x : (x > right_ ? x - right_ : 0.0);
  const double dy = y < bottom_ ? bottom_ - y : (y > top_ ? y - top_ : 0.0);
  return std::hypot(dx, dy);
}

const CPoint& CPart::Item(int index) const {
  CheckIndex(index, points_.size());
  return points_[index - 1];
}

void CPart::Add(const CPoint& p) {
  points_.push_back(p);
  box_.Widen(p.X(), p.Y());
}

void CPart::Remove(int index) {
  CheckIndex(index, points_.size());
  points_.erase(points_.begin() + (index - 1));
  box_.MakeEmpty();
  for (const CPoint& p : points_) box_.Widen(p.X(), p.Y());
}

const CPart& CPartShape::Item(int index) const {
  CheckIndex(index, parts_.size());
  return parts_[index - 1];
}

void CPartShape::Add(const CPart& part) {
  parts_.push_back(part);
  for (const CPoint& p : part.Points()) box_.Widen(p.X(), p.Y());
}

void CPartShape::Remove(int index) {
  CheckIndex(index, parts_.size());
  parts_.erase(parts_.begin() + (index - 1));
  Rebox();
}

void CPartShape::Rebox() {
  box_.MakeEmpty();
  for (const CPart& part : parts_)
    for (const CPoint& p : part.Points()) box_.Widen(p.X(), p.Y());
}

int CPartShape::PointCount() const {
  int n = 0;
  for (const CPart& part : parts_) n += part.Count();
  return n;
}

double CPartShape::EdgeDistance(double x, double y, bool closed) const {
  double best = std::numeric_limits<double>::infinity();
  for (const CPart& part : parts_) {
    const auto& pts = part.Points();
    if (pts.size() == 1) best = std::min(best, pts[0].Distance(x, y));
    for (std::size_t k = 1; k < pts.size(); ++k)
      best = std::min(best, SegmentDistance(x, y, pts[k - 1], pts[k]));
    if (closed && pts.size() > 2) best = std::min(best, SegmentDistance(x, y, pts.back(), pts[0]));
  }
  return best;
}

bool CPolygon::Contains(double x, double y) const {
  bool inside = false;
  for (const CPart& part : Parts()) {
    const auto& pts = part.Points();
    const std::size_t n = pts.size();
    for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
      const double yi = pts[i].Y(), yj = pts[j].Y();
      if ((yi > y) != (yj > y)) {
        const double xc = pts[j].X() + (y - yj) * (pts[i].X() - pts[j].X()) / (yi - yj);
        if (x < xc) inside = !inside;
      }
    }
  }
  return inside;
}

double CPolygon::Distance(double x, double y) const {
  if (IsNull()) return std::numeric_limits<double>::infinity();
  return Contains(x, y) ? 0.0 : EdgeDistance(x, y, true);
}

const CPoint& CMultiPoint::Item(int index) const {
  CheckIndex(index, points_.size());
  return points_[index - 1];
}

void CMultiPoint::Add(const CPoint& p) {
  points_.push_back(p);
  box_.Widen(p.X(), p.Y());
}

void CMultiPoint::Remove(int index) {
  CheckIndex(index, points_.size());
  points_.erase(points_.begin() + (index - 1));
  box_.MakeEmpty();
  for (const CPoint& p : points_) box_.Widen(p.X(), p.Y());
}

double CMultiPoint::Distance(double x, double y) const {
  double best = std::numeric_limits<double>::infinity();
  for (const CPoint& p : points_) best = std::min(best, p.Distance(x, y));
  return best;
}

// ---------------------------------------------------------------------------
// CFileName

void CFileName::SetFileSpec(const std::string& spec) {
  // The extension is what follows the last dot of the last path component.
  const std::size_t slash = spec.find_last_of("/\\");
  const std::size_t dot = spec.find_last_of('.');
  if (dot != std::string::npos && (slash == std::string::npos || dot > slash)) {
    base_ = spec.substr(0, dot);
    extension_ = spec.substr(dot + 1);
  } else {
    base_ = spec;
    extension_.clear();
  }
}

std::string CFileName::GetFileSpec() const {
  return extension_.empty() ? base_ : base_ + "." + extension_;
}

void CFileName::SetExtension(const std::string& extension) {
  extension_ = (!extension.empty() && extension[0] == '.') ? extension.substr(1) : extension;
}

// ---------------------------------------------------------------------------
// CShapeFile

void CShapeFile::Fail(const std::string& text, int number, const char* source) const {
  throw ShapeFileError(text, number, source, shpPath_.string());
}

void CShapeFile::RequireOpen(const char* source) const {
  if (!open_)
    throw ShapeFileError("The shapefile has not been opened (SetFileSpec).", shape_error::kNotOpen,
                         source, "");
}

void CShapeFile::SetFileSpec(const CFileName& spec, int status,
                             std::optional<ShapeType> shapeType) {
  constexpr const char* kSource = "C_ShapeFile::SetFileSpec";
  shp_.close();
  shx_.close();
  open_ = writable_ = false;
  count_ = 0;
  xmin_ = ymin_ = xmax_ = ymax_ = 0.0;
  name_ = spec;

  // The two names, each found by listing its folder with case ignored, so that
  // "ROADS.SHP" and "roads.shx" belong together.
  const std::filesystem::path base(spec.GetBaseName());
  std::filesystem::path dir = base.parent_path();
  if (dir.empty()) dir = ".";
  const std::string stem = base.filename().string();
  auto locate = [&](const char* ext) {
    std::filesystem::path found = FindFileNoCase(dir, stem + ext);
    return std::make_pair(!found.empty(),
                          found.empty() ? base.parent_path() / (stem + ext) : found);
  };
  const auto [shpExists, shpPath] = locate(".shp");
  const auto [shxExists, shxPath] = locate(".shx");
  shpPath_ = shpPath;
  shxPath_ = shxPath;

  if (status == kOpenExisting) {
    for (const auto& [exists, path] :
         {std::make_pair(shpExists, shpPath), std::make_pair(shxExists, shxPath)})
      if (!exists)
        throw ShapeFileError("The specified file " + path.string() + " does not exist.",
                             shape_error::kFileMissing, kSource, path.string());
  } else if (status == kCreate) {
    if (!shapeType)
      throw ShapeFileError(shape_text::kShapeTypeRequired, shape_error::kShapeTypeRequired, kSource,
                           shpPath_.string());
    std::error_code ec;
    for (const auto& p : FilesNamedNoCase(dir, stem + ".shp")) std::filesystem::remove(p, ec);
    for (const auto& p : FilesNamedNoCase(dir, stem + ".shx")) std::filesystem::remove(p, ec);
    // A new name is spelled as given.
    shpPath_ = base.parent_path() / (stem + ".shp");
    shxPath_ = base.parent_path() / (stem + ".shx");
    for (const auto& p : {shxPath_, shpPath_}) {
      std::ofstream create(p, std::ios::binary | std::ios::trunc);
      if (!create)
        throw ShapeFileError("Cannot create the file " + p.string() + ".", shape_error::kIoFailure,
                             kSource, p.string());
    }
  } else {
    throw InvalidArgumentError("SetFileSpec: status " + std::to_string(status) +
                               " is neither 0 (open) nor 1 (create)");
  }

  // The index first, then the main file; read-write where allowed.
  auto open = [&](std::fstream& f, const std::filesystem::path& p) {
    f.open(p, std::ios::in | std::ios::out | std::ios::binary);
    if (f) return true;
    f.clear();
    f.open(p, std::ios::in | std::ios::binary);
    if (!f)
      throw ShapeFileError("Cannot open the file " + p.string() + ".", shape_error::kIoFailure,
                           kSource, p.string());
    return false;
  };
  const bool shxWritable = open(shx_, shxPath_);
  const bool shpWritable = open(shp_, shpPath_);
  writable_ = shxWritable && shpWritable;
  open_ = true;

  if (status == kCreate) {
    type_ = *shapeType;
    shpBytes_ = shxBytes_ = kHeaderBytes;
    shxHeaderWords_ = kHeaderBytes / 2;
    WriteHeaders();
    return;
  }

  shpBytes_ = FileBytes(shpPath_);
  shxBytes_ = FileBytes(shxPath_);
  unsigned char h[kHeaderBytes];
  if (shxBytes_ < kHeaderBytes || !ReadAt(shx_, 0, h, kHeaderBytes) || GetBE32(h) != kFileCode) {
    shp_.close();
    shx_.close();
    open_ = false;
    throw ShapeFileError(shape_text::kInvalidShxCode, shape_error::kInvalidShxCode, kSource,
                         shxPath_.string());
  }
  shxHeaderWords_ = GetBE32(h + 24);
  const std::int32_t type = GetLE32(h + 32);
  if (!IsHandledType(type)) {
    shp_.close();
    shx_.close();
    open_ = false;
    throw ShapeFileError("The file " + shxPath_.string() + " holds shapes of type " +
                             std::to_string(type) +
                             "; only null, point, polyline, polygon and multipoint files are read.",
                         shape_error::kTypeMismatch, kSource, shxPath_.string());
  }
  type_ = static_cast<ShapeType>(type);
  xmin_ = GetDouble(h + 36);
  ymin_ = GetDouble(h + 44);
  xmax_ = GetDouble(h + 52);
  ymax_ = GetDouble(h + 60);
  const std::int64_t entries = (shxHeaderWords_ * 2 - kHeaderBytes) / 8;
  count_ = static_cast<int>(std::clamp<std::int64_t>(entries, 0, std::numeric_limits<int>::max()));
}

std::optional<CShapeFile::IndexEntry> CShapeFile::FindOffset(int index) {
  if (index < 1) return std::nullopt;
  // The entry's position counted from 1 must be at most 2L - 7 for an index of L
  // words: its eight bytes lie inside the file. L is the header's length, but
  // never more than the file really holds.
  const std::int64_t words = std::min(shxHeaderWords_, shxBytes_ / 2);
  const std::int64_t position = kHeaderBytes + 8 * (static_cast<std::int64_t>(index) - 1) + 1;
  if (position > 2 * words - 7) return std::nullopt;
  unsigned char e[8];
  if (!ReadAt(shx_, position - 1, e, 8)) return std::nullopt;
  return IndexEntry{2 * static_cast<std::int64_t>(GetBE32(e)),
                    2 * static_cast<std::int64_t>(GetBE32(e + 4))};
}

std::unique_ptr<IShape> CShapeFile::Item(int index) { return ReadRecord(index, false); }

std::unique_ptr<IShape> CShapeFile::ItemOrNull(int index) { return ReadRecord(index, true); }

namespace {

std::unique_ptr<IShape> NullOf(ShapeType type) {
  switch (type) {
    case ShapeType::Point: return std::make_unique<CPoint>();
    case ShapeType::PolyLine: return std::make_unique<CPolyLine>();
    case ShapeType::Polygon: return std::make_unique<CPolygon>();
    case ShapeType::MultiPoint: return std::make_unique<CMultiPoint>();
    default: return std::make_unique<CPoint>();
  }
}

const char* ReaderSource(ShapeType type) {
  switch (type) {
    case ShapeType::Point: return "CShapeFile::ReadPoint";
    case ShapeType::PolyLine: return "CShapeFile::ReadPolyLine";
    case ShapeType::Polygon: return "CShapeFile::ReadPolygon";
    case ShapeType::MultiPoint: return "C_ShapeFile::ReadMultiPoint";
    default: return "CShapeFile::Item";
  }
}

}  // namespace

std::unique_ptr<IShape> CShapeFile::ReadRecord(int index, bool nullAnyType) {
  const char* source = ReaderSource(type_);
  RequireOpen(source);
  const std::string rec = "record " + std::to_string(index) + " of " + shpPath_.string();

  // 1. The index entry, and the record inside the main file.
  const std::optional<IndexEntry> entry = FindOffset(index);
  if (!entry || entry->offset < kHeaderBytes || entry->offset + 8 > shpBytes_)
    Fail(shape_text::kOffsetTooLarge, shape_error::kOffsetTooLarge, source);
  if (entry->length < 4 || entry->offset + 8 + entry->length > shpBytes_)
    Fail("The index gives " + rec + " a length of " + std::to_string(entry->length / 2) +
             " words, which runs past the end of the file.",
         shape_error::kBadRecord, source);

  // 2. The record header against the index.
  unsigned char rh[8];
  if (!ReadAt(shp_, entry->offset, rh, 8))
    Fail("Cannot read " + rec + ".", shape_error::kIoFailure, source);
  if (GetBE32(rh) != index) Fail(shape_text::kRecordMismatch, shape_error::kRecordMismatch, source);
  if (2 * static_cast<std::int64_t>(GetBE32(rh + 4)) != entry->length)
    Fail("The index and the main file disagree on the length of " + rec + " (" +
             std::to_string(entry->length / 2) + " and " + std::to_string(GetBE32(rh + 4)) +
             " words).",
         shape_error::kRecordMismatch, source);

  std::vector<unsigned char> body(static_cast<std::size_t>(entry->length));
  if (!ReadAt(shp_, entry->offset + 8, body.data(), entry->length))
    Fail("Cannot read " + rec + ".", shape_error::kIoFailure, source);
  const std::int64_t size = entry->length;
  const unsigned char* b = body.data();

  // 3. The record's type.
  const std::int32_t type = GetLE32(b);
  if (type == 0 && (nullAnyType || type_ == ShapeType::Point)) return NullOf(type_);
  if (type == 0 || type != static_cast<std::int32_t>(type_))
    Fail(shape_text::kTypeMismatch, shape_error::kTypeMismatch, source);

  auto tooShort = [&](const char* src) {
    Fail("The content of " + rec + " is shorter than its point and part counts need.",
         shape_error::kBadRecord, src);
  };

  // 4. The body.
  switch (type_) {
    case ShapeType::Point: {
      if (size < 20) tooShort(source);
      return std::make_unique<CPoint>(GetDouble(b + 4), GetDouble(b + 12));
    }
    case ShapeType::MultiPoint: {
      constexpr const char* kSrc = "C_ShapeFile::ReadMultiPoint";
      if (size < 40) tooShort(kSrc);
      const std::int64_t n = GetLE32(b + 36);
      if (n < 0 || 40 + 16 * n > size) tooShort(kSrc);
      auto mp = std::make_unique<CMultiPoint>();
      for (std::int64_t k = 0; k < n; ++k)
        mp->Add(GetDouble(b + 40 + 16 * k), GetDouble(b + 48 + 16 * k));
      return mp;
    }
    case ShapeType::PolyLine:
    case ShapeType::Polygon: {
      constexpr const char* kSrc = "C_ShapeFile::ReadPolys";
      if (size < 44) tooShort(kSrc);
      const std::int64_t parts = GetLE32(b + 36);
      const std::int64_t points = GetLE32(b + 40);
      if (parts < 0 || points < 0 || 44 + 4 * parts + 16 * points > size) tooShort(kSrc);
      std::vector<std::int64_t> starts(static_cast<std::size_t>(parts));
      for (std::int64_t k = 0; k < parts; ++k) {
        starts[k] = GetLE32(b + 44 + 4 * k);
        if (starts[k] < 0 || starts[k] > points || (k > 0 && starts[k] < starts[k - 1]))
          Fail("The part start table of " + rec + " is out of order or beyond its " +
                   std::to_string(points) + " points.",
               shape_error::kBadRecord, kSrc);
      }
      std::unique_ptr<CPartShape> shape;
      if (type_ == ShapeType::PolyLine)
        shape = std::make_unique<CPolyLine>();
      else
        shape = std::make_unique<CPolygon>();
      const unsigned char* xy = b + 44 + 4 * parts;
      for (std::int64_t k = 0; k < parts; ++k) {
        const std::int64_t end = k + 1 < parts ? starts[k + 1] : points;
        CPart part;
        for (std::int64_t i = starts[k]; i < end; ++i)
          part.Add(GetDouble(xy + 16 * i), GetDouble(xy + 16 * i + 8));
        shape->Add(part);
      }
      return shape;
    }
    default: Fail(shape_text::kTypeMismatch, shape_error::kTypeMismatch, source);
  }
}

void CShapeFile::WriteHeaders() {
  auto header = [&](std::int64_t bytes) {
    std::string h;
    h.reserve(kHeaderBytes);
    PutBE32(h, kFileCode);
    h.append(20, '\0');
    PutBE32(h, static_cast<std::int32_t>(bytes / 2));
    PutLE32(h, kVersion);
    PutLE32(h, static_cast<std::int32_t>(type_));
    PutDouble(h, xmin_);
    PutDouble(h, ymin_);
    PutDouble(h, xmax_);
    PutDouble(h, ymax_);
    h.append(32, '\0');
    return h;
  };
  if (!WriteAt(shp_, 0, header(shpBytes_)) || !WriteAt(shx_, 0, header(shxBytes_)))
    Fail("Cannot write the headers of " + shpPath_.string() + ".", shape_error::kIoFailure,
         "CShapeFile::PutExtent");
  shxHeaderWords_ = shxBytes_ / 2;
}

void CShapeFile::Add(const IShape& shape) {
  constexpr const char* kSource = "CShapeFile::Add";
  RequireOpen(kSource);
  const std::string cls = shape.ClassName();
  ShapeType classType = ShapeType::Null;
  const char* mismatch = shape_text::kInvalidShapeType;
  if (cls == "CPoint") {
    classType = ShapeType::Point;
    mismatch = shape_text::kCannotAddPoint;
  } else if (cls == "CMultiPoint") {
    classType = ShapeType::MultiPoint;
    mismatch = shape_text::kCannotAddPoint;
  } else if (cls == "CPolyLine") {
    classType = ShapeType::PolyLine;
    mismatch = shape_text::kCannotAddPolyLine;
  } else if (cls == "CPolygon") {
    classType = ShapeType::Polygon;
    mismatch = shape_text::kCannotAddPolygon;
  }
  if (classType == ShapeType::Null) Fail(mismatch, shape_error::kWrongAddType, kSource);
  if (classType != type_) Fail(mismatch, shape_error::kWrongAddType, kSource);
  if (!writable_)
    Fail("The file " + shpPath_.string() + " is open for reading only.", shape_error::kIoFailure,
         kSource);

  std::string body;
  const char* writer = "CShapeFile::PutNull";
  if (shape.IsNull()) {
    PutLE32(body, 0);
  } else if (classType == ShapeType::Point) {
    writer = "C_ShapeFile::PutPoints";
    const auto& p = static_cast<const CPoint&>(shape);
    PutLE32(body, 1);
    PutDouble(body, p.X());
    PutDouble(body, p.Y());
  } else if (classType == ShapeType::MultiPoint) {
    writer = "CShapeFile::PutMultiPoints";
    const auto& mp = static_cast<const CMultiPoint&>(shape);
    PutLE32(body, 8);
    PutDouble(body, mp.Left());
    PutDouble(body, mp.Bottom());
    PutDouble(body, mp.Right());
    PutDouble(body, mp.Top());
    PutLE32(body, mp.Count());
    for (const CPoint& p : mp.Points()) {
      PutDouble(body, p.X());
      PutDouble(body, p.Y());
    }
  } else {
    writer =
        classType == ShapeType::PolyLine ? "CShapeFile::PutPolyLine" : "CShapeFile::PutPolygon";
    const auto& ps = static_cast<const CPartShape&>(shape);
    PutLE32(body, static_cast<std::int32_t>(classType));
    PutDouble(body, ps.Left());
    PutDouble(body, ps.Bottom());
    PutDouble(body, ps.Right());
    PutDouble(body, ps.Top());
    PutLE32(body, ps.Count());
    PutLE32(body, ps.PointCount());
    // The part start table: running sums of the parts' counts, part 0 at 0.
    std::int32_t start = 0;
    for (const CPart& part : ps.Parts()) {
      PutLE32(body, start);
      start += part.Count();
    }
    for (const CPart& part : ps.Parts())
      for (const CPoint& p : part.Points()) {
        PutDouble(body, p.X());
        PutDouble(body, p.Y());
      }
  }
  if (shpBytes_ + 8 + static_cast<std::int64_t>(body.size()) >
      2LL * std::numeric_limits<std::int32_t>::max())
    Fail("The file " + shpPath_.string() + " would grow beyond the format's size limit.",
         shape_error::kIoFailure, writer);

  const auto contentWords = static_cast<std::int32_t>(body.size() / 2);
  std::string entry;
  PutBE32(entry, static_cast<std::int32_t>(shpBytes_ / 2));
  PutBE32(entry, contentWords);
  std::string record;
  PutBE32(record, count_ + 1);
  PutBE32(record, contentWords);
  record += body;
  if (!WriteAt(shx_, shxBytes_, entry) || !WriteAt(shp_, shpBytes_, record))
    Fail("Cannot write to " + shpPath_.string() + ".", shape_error::kIoFailure, writer);
  shxBytes_ += static_cast<std::int64_t>(entry.size());
  shpBytes_ += static_cast<std::int64_t>(record.size());

  // The extent: the first non-null shape of an empty extent sets it, later ones widen it.
  if (!shape.IsNull()) {
    const bool empty =
        count_ == 0 || (xmin_ == 0.0 && xmax_ == 0.0 && ymin_ == 0.0 && ymax_ == 0.0);
    if (empty) {
      xmin_ = shape.Left();
      xmax_ = shape.Right();
      ymin_ = shape.Bottom();
      ymax_ = shape.Top();
    } else {
      xmin_ = std::min(xmin_, shape.Left());
      xmax_ = std::max(xmax_, shape.Right());
      ymin_ = std::min(ymin_, shape.Bottom());
      ymax_ = std::max(ymax_, shape.Top());
    }
  }
  ++count_;
  WriteHeaders();
}

}  // namespace tarno
