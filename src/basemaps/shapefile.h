// The shape classes: reading and writing shapefiles (.shp with its .shx index) in
// our own code, for the base map layer and the shapefile exports.
//
// The main file holds a 100-byte header and the records; the index holds the same
// header and one 8-byte entry (offset, content length, both in 16-bit words) per
// record. Integers of the record headers and of the file header's code and length
// are big-endian; everything else little-endian. Handled shape types: 0 null,
// 1 point, 3 polyline, 5 polygon, 8 multipoint; no other.
//
// Every failure is a ShapeFileError: the number and text that callers show, the
// source (the operation that raised it) and the file. A file is valid after every
// Add: both headers are rewritten each time.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/error.h"

namespace tarno {

enum class ShapeType : std::int32_t {
  Null = 0,
  Point = 1,
  PolyLine = 3,
  Polygon = 5,
  MultiPoint = 8,
};

// The numbers of the shape classes' errors. The missing file (0x8004020C), the
// missing shape type (0x8004020D) and the wrong type for Add (0x80040210) are the
// classes' established numbers; the others were given numbers of their own from the
// same range so that a caller can tell them apart.
namespace shape_error {
inline constexpr int kFileMissing = static_cast<int>(0x8004020Cu);
inline constexpr int kShapeTypeRequired = static_cast<int>(0x8004020Du);
inline constexpr int kInvalidShxCode = static_cast<int>(0x8004020Eu);
inline constexpr int kOffsetTooLarge = static_cast<int>(0x8004020Fu);
inline constexpr int kWrongAddType = static_cast<int>(0x80040210u);
inline constexpr int kRecordMismatch = static_cast<int>(0x80040211u);
inline constexpr int kTypeMismatch = static_cast<int>(0x80040212u);
inline constexpr int kBadRecord = static_cast<int>(0x80040213u);
inline constexpr int kIoFailure = static_cast<int>(0x80040214u);
inline constexpr int kNotOpen = static_cast<int>(0x80040215u);
}  // namespace shape_error

namespace shape_text {
inline constexpr const char* kInvalidShxCode =
    "The shx file has an invalid shape code in the main header.";
inline constexpr const char* kShapeTypeRequired =
    "The ShapeType argument is not optional when argument status is CREATEIT";
inline constexpr const char* kOffsetTooLarge =
    "The offset read from index file is larger then the mainfile size";
inline constexpr const char* kRecordMismatch = "Index Record does not match main file Record";
inline constexpr const char* kTypeMismatch = "A shape type does not match main header type.";
inline constexpr const char* kCannotAddPoint =
    "Cannot add type CPoint to a ShapeFile initialized as other type";
inline constexpr const char* kCannotAddPolyLine =
    "Cannot add type CPolyline to a ShapeFile initialized as other type";
inline constexpr const char* kCannotAddPolygon =
    "Cannot add type CPolygon to a ShapeFile initialized as other type";
inline constexpr const char* kInvalidShapeType = "Invalid shape type";
}  // namespace shape_text

// A failure of the shape classes. what() is the text callers show; Source() names
// the operation, File() the file concerned (empty where none).
class ShapeFileError : public Error {
 public:
  ShapeFileError(const std::string& text, int number, std::string source, std::string file)
      : Error(text, number), source_(std::move(source)), file_(std::move(file)) {}
  const std::string& Source() const { return source_; }
  const std::string& File() const { return file_; }

 private:
  std::string source_;
  std::string file_;
};

// What every shape answers. Top is the largest Y, Bottom the smallest.
class IShape {
 public:
  virtual ~IShape() = default;
  virtual double Top() const = 0;
  virtual double Bottom() const = 0;
  virtual double Left() const = 0;
  virtual double Right() const = 0;
  virtual bool IsNull() const = 0;
  virtual void MakeNull() = 0;
  // The shortest distance from a point to the shape (0 inside a polygon or a
  // rectangle); a null shape is infinitely far.
  virtual double Distance(double x, double y) const = 0;
  // The type the shape is written as (Null for a null shape of any class).
  virtual ShapeType Type() const = 0;
  // The class's name, as the add-type errors speak of it.
  virtual const char* ClassName() const = 0;
};

class CPoint : public IShape {
 public:
  CPoint() = default;
  CPoint(double x, double y) : x_(x), y_(y), null_(false) {}
  double X() const { return x_; }
  double Y() const { return y_; }
  void X(double v) {
    x_ = v;
    null_ = false;
  }
  void Y(double v) {
    y_ = v;
    null_ = false;
  }

  double Top() const override { return y_; }
  double Bottom() const override { return y_; }
  double Left() const override { return x_; }
  double Right() const override { return x_; }
  bool IsNull() const override { return null_; }
  void MakeNull() override {
    x_ = y_ = 0.0;
    null_ = true;
  }
  double Distance(double x, double y) const override;
  ShapeType Type() const override { return null_ ? ShapeType::Null : ShapeType::Point; }
  const char* ClassName() const override { return "CPoint"; }

 private:
  double x_ = 0.0, y_ = 0.0;
  bool null_ = true;
};

// An axis-parallel rectangle; empty until made or widened.
class CRect : public IShape {
 public:
  CRect() = default;
  double Top() const override { return top_; }
  double Bottom() const override { return bottom_; }
  double Left() const override { return left_; }
  double Right() const override { return right_; }
  void Top(double v) {
    top_ = v;
    empty_ = false;
  }
  void Bottom(double v) {
    bottom_ = v;
    empty_ = false;
  }
  void Left(double v) {
    left_ = v;
    empty_ = false;
  }
  void Right(double v) {
    right_ = v;
    empty_ = false;
  }
  void MakeEmpty() {
    left_ = right_ = top_ = bottom_ = 0.0;
    empty_ = true;
  }
  void Make(double left, double top, double right, double bottom);
  // The rectangle spanned by two corners given in any order.
  void MakeXY(double x1, double y1, double x2, double y2);
  // Widens the rectangle to hold a point (takes the point when empty).
  void Widen(double x, double y);
  void Widen(const IShape& box);
  bool IsEmpty() const { return empty_; }
  bool Intersects(double left, double right, double bottom, double top) const;

  bool IsNull() const override { return empty_; }
  void MakeNull() override { MakeEmpty(); }
  double Distance(double x, double y) const override;
  ShapeType Type() const override { return ShapeType::Null; }
  const char* ClassName() const override { return "CRect"; }

 private:
  double left_ = 0.0, right_ = 0.0, top_ = 0.0, bottom_ = 0.0;
  bool empty_ = true;
};

// An ordered run of points with its own box.
class CPart {
 public:
  double Left() const { return box_.Left(); }
  double Right() const { return box_.Right(); }
  double Top() const { return box_.Top(); }
  double Bottom() const { return box_.Bottom(); }
  int Count() const { return static_cast<int>(points_.size()); }
  // The point at a position from 1; throws Error (subscript out of range) outside.
  const CPoint& Item(int index) const;
  const std::vector<CPoint>& Points() const { return points_; }
  void Add(const CPoint& p);
  void Add(double x, double y) { Add(CPoint(x, y)); }
  // Removes the point at a position from 1.
  void Remove(int index);

 private:
  std::vector<CPoint> points_;
  CRect box_;
};

// The shapes made of parts: polylines and polygons. Polygon rings are kept as the
// caller gives them (the format wants outer rings clockwise, holes anticlockwise).
class CPartShape : public IShape {
 public:
  int Count() const { return static_cast<int>(parts_.size()); }
  const CPart& Item(int index) const;
  const std::vector<CPart>& Parts() const { return parts_; }
  void Add(const CPart& part);
  void Remove(int index);
  int PointCount() const;

  double Top() const override { return box_.Top(); }
  double Bottom() const override { return box_.Bottom(); }
  double Left() const override { return box_.Left(); }
  double Right() const override { return box_.Right(); }
  bool IsNull() const override { return parts_.empty(); }
  void MakeNull() override {
    parts_.clear();
    box_.MakeEmpty();
  }

 protected:
  // The distance to the nearest segment of any part; rings close when `closed`.
  double EdgeDistance(double x, double y, bool closed) const;

 private:
  void Rebox();
  std::vector<CPart> parts_;
  CRect box_;
};

class CPolyLine : public CPartShape {
 public:
  double Distance(double x, double y) const override { return EdgeDistance(x, y, false); }
  ShapeType Type() const override { return IsNull() ? ShapeType::Null : ShapeType::PolyLine; }
  const char* ClassName() const override { return "CPolyLine"; }
};

class CPolygon : public CPartShape {
 public:
  // 0 inside (by the even-odd rule over all rings), else the distance to the rings.
  double Distance(double x, double y) const override;
  bool Contains(double x, double y) const;
  ShapeType Type() const override { return IsNull() ? ShapeType::Null : ShapeType::Polygon; }
  const char* ClassName() const override { return "CPolygon"; }
};

class CMultiPoint : public IShape {
 public:
  int Count() const { return static_cast<int>(points_.size()); }
  const CPoint& Item(int index) const;
  const std::vector<CPoint>& Points() const { return points_; }
  void Add(const CPoint& p);
  void Add(double x, double y) { Add(CPoint(x, y)); }
  void Remove(int index);

  double Top() const override { return box_.Top(); }
  double Bottom() const override { return box_.Bottom(); }
  double Left() const override { return box_.Left(); }
  double Right() const override { return box_.Right(); }
  bool IsNull() const override { return points_.empty(); }
  void MakeNull() override {
    points_.clear();
    box_.MakeEmpty();
  }
  double Distance(double x, double y) const override;
  ShapeType Type() const override { return IsNull() ? ShapeType::Null : ShapeType::MultiPoint; }
  const char* ClassName() const override { return "CMultiPoint"; }

 private:
  std::vector<CPoint> points_;
  CRect box_;
};

// A path split into its base (folder and name without extension) and extension
// (without the dot).
class CFileName {
 public:
  CFileName() = default;
  explicit CFileName(const std::string& spec) { SetFileSpec(spec); }
  void SetFileSpec(const std::string& spec);
  std::string GetFileSpec() const;
  const std::string& GetBaseName() const { return base_; }
  void SetBaseName(const std::string& base) { base_ = base; }
  const std::string& GetExtension() const { return extension_; }
  void SetExtension(const std::string& extension);

 private:
  std::string base_;
  std::string extension_;
};

// One shapefile: the .shp and the .shx of a name.
class CShapeFile {
 public:
  static constexpr int kOpenExisting = 0;
  static constexpr int kCreate = 1;

  CShapeFile() = default;
  ~CShapeFile() = default;
  CShapeFile(const CShapeFile&) = delete;
  CShapeFile& operator=(const CShapeFile&) = delete;

  // Binds the object to the files of a name (the extension of `spec` is replaced by
  // shp and shx). kOpenExisting reads the index header; kCreate deletes the files
  // of the name and writes two empty files of `shapeType`.
  void SetFileSpec(const CFileName& spec, int status,
                   std::optional<ShapeType> shapeType = std::nullopt);

  double Left() const { return xmin_; }
  double Right() const { return xmax_; }
  double Top() const { return ymax_; }
  double Bottom() const { return ymin_; }
  int Count() const { return count_; }
  ShapeType FileType() const { return type_; }
  const std::filesystem::path& ShpPath() const { return shpPath_; }

  // The shape of record `index` (from 1) as an object of the file's class.
  std::unique_ptr<IShape> Item(int index);
  // As Item, but a null record reads as a null shape in a file of any type (Item
  // accepts null records only in point files).
  std::unique_ptr<IShape> ItemOrNull(int index);
  // Appends a shape to both files and rewrites both headers.
  void Add(const IShape& shape);

 private:
  struct IndexEntry {
    std::int64_t offset = 0;  // bytes
    std::int64_t length = 0;  // content bytes
  };
  std::optional<IndexEntry> FindOffset(int index);
  std::unique_ptr<IShape> ReadRecord(int index, bool nullAnyType);
  void WriteHeaders();
  void WriteRecord(std::int32_t contentBytes, const std::string& body);
  void RequireOpen(const char* source) const;
  [[noreturn]] void Fail(const std::string& text, int number, const char* source) const;

  CFileName name_;
  std::filesystem::path shpPath_, shxPath_;
  std::fstream shp_, shx_;
  bool open_ = false;
  bool writable_ = false;
  ShapeType type_ = ShapeType::Null;
  int count_ = 0;
  std::int64_t shpBytes_ = 0;        // the real length of the main file
  std::int64_t shxBytes_ = 0;        // the real length of the index file
  std::int64_t shxHeaderWords_ = 0;  // the index header's length, in words
  double xmin_ = 0.0, ymin_ = 0.0, xmax_ = 0.0, ymax_ = 0.0;
};

}  // namespace tarno
