// Writing BBM files, in the record form and in the drawing-command form.
//
// The system itself only reads BBM maps; the converter programs write them through
// these classes, and the tests make their maps with them. The layout is the one of
// bbm_format.h, which the reader uses too.
//
// A writer collects the file in memory (a map of a million vertices is about 8 MB)
// and writes it at once with Save, or hands its bytes out with Bytes. The header's
// counts and bounding box follow from what was added, unless bounds are given.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "basemaps/bbm_format.h"

namespace tarno {

// The header fields a writer is given. Texts hold at most 80 ASCII characters.
struct BbmHeaderFields {
  std::string title;
  std::string source;
  std::string description;  // its first four characters choose a DLG map's colour
  std::int32_t dataType = bbm::kAttributed;
  std::int32_t projection = 0;
  std::int32_t multiplier = 100;
  std::int32_t major = bbm::kWriteMajor, minor = bbm::kWriteMinor, patch = bbm::kWritePatch;
  // X1, Y1, X2, Y2 (left, bottom, right, top); computed from the data when not given.
  std::optional<std::array<std::int32_t, 4>> bounds;
};

struct BbmPair {
  std::int32_t major = 0;
  std::int32_t minor = 0;
};

// The common part of both writers: the header and the byte buffer.
class BbmWriterBase {
 public:
  // The file as it stands, header complete.
  std::string Bytes() const;
  // Writes the file; throws Error naming the path when it cannot be written.
  void Save(const std::string& path) const;

 protected:
  // Throws InvalidArgumentError for a text over 80 characters or beyond ASCII.
  explicit BbmWriterBase(BbmHeaderFields fields);
  void Put(std::int32_t value);
  void Widen(std::int32_t x, std::int32_t y);
  // The three numbers at offset 268 of this form.
  virtual std::array<std::int32_t, 3> FormNumbers() const = 0;

  BbmHeaderFields fields_;
  std::string body_;
  bool any_ = false;
  std::int32_t minX_ = 0, minY_ = 0, maxX_ = 0, maxY_ = 0;
};

// The record form (any data type but -100006). Records are written in the order
// they are added; an area's boundaries are 1-based numbers of the lines added so far
// or later, negative for a line walked backwards.
class BbmRecordWriter : public BbmWriterBase {
 public:
  explicit BbmRecordWriter(BbmHeaderFields fields);

  // A point; `values` are its extra values.
  void AddPoint(std::int32_t id, std::int32_t x, std::int32_t y, const std::vector<BbmPair>& pairs,
                const std::vector<std::int32_t>& values = {});
  // A line through (xs[i], ys[i]); `attrValues` extra values per vertex, taken in
  // order from `values` (vertex by vertex), which must hold xs.size() x attrValues.
  // Returns the line's 1-based number for area boundaries.
  std::int32_t AddLine(std::int32_t id, const std::vector<std::int32_t>& xs,
                       const std::vector<std::int32_t>& ys, const std::vector<BbmPair>& pairs,
                       std::int32_t attrValues = 0, const std::vector<std::int32_t>& values = {});
  void AddArea(std::int32_t id, const std::vector<std::int32_t>& boundaries,
               const std::vector<BbmPair>& pairs, const std::vector<std::int32_t>& values = {});
  // A record of a type no reader knows: the end mark of the records.
  void AddEndMark(std::int32_t recordType = 0);

  int Points() const { return points_; }
  int Lines() const { return lines_; }
  int Areas() const { return areas_; }

 private:
  std::array<std::int32_t, 3> FormNumbers() const override { return {points_, lines_, areas_}; }
  void PutPairs(const std::vector<BbmPair>& pairs);
  int points_ = 0, lines_ = 0, areas_ = 0;
};

// The drawing-command form (data type -100006).
class BbmCommandWriter : public BbmWriterBase {
 public:
  BbmCommandWriter(BbmHeaderFields fields, std::int32_t logicalPixelsX = 0,
                   std::int32_t logicalPixelsY = 0);
  void MoveTo(std::int32_t x, std::int32_t y);
  void LineTo(std::int32_t x, std::int32_t y);
  void Width(std::int32_t width);   // in stored units
  void Colour(std::int32_t index);  // a palette index, 0 to 15 (15 reads as 0)
  void Polygon(const std::vector<std::int32_t>& xs, const std::vector<std::int32_t>& ys);
  // The end of the stream. What the reader holds then is not drawn, so a producer
  // ends the last line with a MoveTo first (End does both when `flush`).
  void End(bool flush = true);
  // Any code, with its operands as given (for codes a reader skips).
  void Raw(std::int32_t code, const std::vector<std::int32_t>& operands = {});

 private:
  std::array<std::int32_t, 3> FormNumbers() const override { return {lpx_, lpy_, 0}; }
  std::int32_t lpx_, lpy_;
  std::int32_t lastX_ = 0, lastY_ = 0;
};

}  // namespace tarno
