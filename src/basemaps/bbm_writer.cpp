#include "basemaps/bbm_writer.h"

#include <algorithm>
#include <cstring>
#include <fstream>

#include "core/error.h"

namespace tarno {

namespace {

void CheckText(const std::string& text, const char* field) {
  if (text.size() > bbm::kTextLength) {
    throw InvalidArgumentError(std::string("BBM ") + field + " \"" + text + "\" is longer than " +
                               std::to_string(bbm::kTextLength) + " characters");
  }
  for (const char c : text) {
    if (static_cast<unsigned char>(c) > 127) {
      throw InvalidArgumentError(std::string("BBM ") + field + " \"" + text +
                                 "\" holds a character beyond ASCII");
    }
  }
}

void PutText(unsigned char* at, const std::string& text) {
  std::memset(at, ' ', bbm::kTextLength);
  std::memcpy(at, text.data(), text.size());
}

}  // namespace

BbmWriterBase::BbmWriterBase(BbmHeaderFields fields) : fields_(std::move(fields)) {
  CheckText(fields_.title, "title");
  CheckText(fields_.source, "source");
  CheckText(fields_.description, "description");
}

void BbmWriterBase::Put(std::int32_t value) {
  unsigned char b[4];
  bbm::PutInt32(b, value);
  body_.append(reinterpret_cast<const char*>(b), 4);
}

void BbmWriterBase::Widen(std::int32_t x, std::int32_t y) {
  if (!any_) {
    minX_ = maxX_ = x;
    minY_ = maxY_ = y;
    any_ = true;
    return;
  }
  minX_ = std::min(minX_, x), maxX_ = std::max(maxX_, x);
  minY_ = std::min(minY_, y), maxY_ = std::max(maxY_, y);
}

std::string BbmWriterBase::Bytes() const {
  unsigned char h[bbm::kHeaderSize] = {};
  std::memcpy(h, bbm::kSignature, 4);
  bbm::PutInt32(h + bbm::kVersionOffset, fields_.major);
  bbm::PutInt32(h + bbm::kVersionOffset + 4, fields_.minor);
  bbm::PutInt32(h + bbm::kVersionOffset + 8, fields_.patch);
  PutText(h + bbm::kTitleOffset, fields_.title);
  PutText(h + bbm::kSourceOffset, fields_.source);
  PutText(h + bbm::kDescriptionOffset, fields_.description);
  bbm::PutInt32(h + bbm::kDataTypeOffset, fields_.dataType);
  bbm::PutInt32(h + bbm::kProjectionOffset, fields_.projection);
  bbm::PutInt32(h + bbm::kMultiplierOffset, fields_.multiplier);
  const auto numbers = FormNumbers();
  for (int i = 0; i < 3; ++i) bbm::PutInt32(h + bbm::kCountsOffset + 4 * i, numbers[i]);
  const std::array<std::int32_t, 4> bounds =
      fields_.bounds ? *fields_.bounds : std::array<std::int32_t, 4>{minX_, minY_, maxX_, maxY_};
  for (int i = 0; i < 4; ++i) bbm::PutInt32(h + bbm::kBoundsOffset + 4 * i, bounds[i]);
  std::string out(reinterpret_cast<const char*>(h), bbm::kHeaderSize);
  out += body_;
  return out;
}

void BbmWriterBase::Save(const std::string& path) const {
  const std::string bytes = Bytes();
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (out) out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  if (!out) throw Error("BBM file " + path + " cannot be written");
}

// ---------------------------------------------------------------------------

BbmRecordWriter::BbmRecordWriter(BbmHeaderFields fields) : BbmWriterBase(std::move(fields)) {
  if (fields_.dataType == bbm::kCommands) {
    throw InvalidArgumentError("A BBM of data type -100006 holds drawing commands, not records");
  }
}

void BbmRecordWriter::PutPairs(const std::vector<BbmPair>& pairs) {
  for (const BbmPair& p : pairs) {
    Put(p.major);
    Put(p.minor);
  }
}

void BbmRecordWriter::AddPoint(std::int32_t id, std::int32_t x, std::int32_t y,
                               const std::vector<BbmPair>& pairs,
                               const std::vector<std::int32_t>& values) {
  Put(bbm::kPointRecord);
  Put(id);
  Put(static_cast<std::int32_t>(values.size()));
  Put(static_cast<std::int32_t>(pairs.size()));
  Put(x), Put(y), Put(x), Put(y);  // the box of a point is the point
  Put(x), Put(y);
  PutPairs(pairs);
  for (const std::int32_t v : values) Put(v);
  Widen(x, y);
  ++points_;
}

std::int32_t BbmRecordWriter::AddLine(std::int32_t id, const std::vector<std::int32_t>& xs,
                                      const std::vector<std::int32_t>& ys,
                                      const std::vector<BbmPair>& pairs, std::int32_t attrValues,
                                      const std::vector<std::int32_t>& values) {
  if (xs.size() != ys.size()) throw InvalidArgumentError("A BBM line needs as many Y as X values");
  if (attrValues < 0 || values.size() != xs.size() * static_cast<std::size_t>(attrValues)) {
    throw InvalidArgumentError("A BBM line of " + std::to_string(xs.size()) + " vertices with " +
                               std::to_string(attrValues) + " values each needs " +
                               std::to_string(xs.size() * std::max(attrValues, 0)) +
                               " values, not " + std::to_string(values.size()));
  }
  std::int32_t minX = 0, minY = 0, maxX = 0, maxY = 0;
  if (!xs.empty()) {
    minX = *std::min_element(xs.begin(), xs.end()), maxX = *std::max_element(xs.begin(), xs.end());
    minY = *std::min_element(ys.begin(), ys.end()), maxY = *std::max_element(ys.begin(), ys.end());
    Widen(minX, minY);
    Widen(maxX, maxY);
  }
  Put(bbm::kLineRecord);
  Put(id);
  Put(attrValues);
  Put(static_cast<std::int32_t>(pairs.size()));
  Put(static_cast<std::int32_t>(xs.size()));
  Put(minX), Put(minY), Put(maxX), Put(maxY);
  PutPairs(pairs);
  for (std::size_t i = 0; i < xs.size(); ++i) {
    Put(xs[i]);
    Put(ys[i]);
    for (std::int32_t k = 0; k < attrValues; ++k)
      Put(values[i * static_cast<std::size_t>(attrValues) + k]);
  }
  return ++lines_;
}

void BbmRecordWriter::AddArea(std::int32_t id, const std::vector<std::int32_t>& boundaries,
                              const std::vector<BbmPair>& pairs,
                              const std::vector<std::int32_t>& values) {
  Put(bbm::kAreaRecord);
  Put(id);
  Put(static_cast<std::int32_t>(values.size()));
  Put(static_cast<std::int32_t>(pairs.size()));
  Put(static_cast<std::int32_t>(boundaries.size()));
  PutPairs(pairs);
  for (const std::int32_t b : boundaries) Put(b);
  for (const std::int32_t v : values) Put(v);
  ++areas_;
}

void BbmRecordWriter::AddEndMark(std::int32_t recordType) {
  Put(recordType);
  Put(0);
}

// ---------------------------------------------------------------------------

BbmCommandWriter::BbmCommandWriter(BbmHeaderFields fields, std::int32_t logicalPixelsX,
                                   std::int32_t logicalPixelsY)
    : BbmWriterBase(std::move(fields)), lpx_(logicalPixelsX), lpy_(logicalPixelsY) {
  fields_.dataType = bbm::kCommands;
}

void BbmCommandWriter::MoveTo(std::int32_t x, std::int32_t y) {
  Put(bbm::kCmdMoveTo), Put(x), Put(y);
  Widen(x, y);
  lastX_ = x, lastY_ = y;
}

void BbmCommandWriter::LineTo(std::int32_t x, std::int32_t y) {
  Put(bbm::kCmdLineTo), Put(x), Put(y);
  Widen(x, y);
  lastX_ = x, lastY_ = y;
}

void BbmCommandWriter::Width(std::int32_t width) { Put(bbm::kCmdWidth), Put(width); }

void BbmCommandWriter::Colour(std::int32_t index) {
  if (index < 0 || index > 15) {
    throw InvalidArgumentError("A BBM drawing colour is a palette index from 0 to 15, not " +
                               std::to_string(index));
  }
  Put(bbm::kCmdColour), Put(index);
}

void BbmCommandWriter::Polygon(const std::vector<std::int32_t>& xs,
                               const std::vector<std::int32_t>& ys) {
  if (xs.size() != ys.size())
    throw InvalidArgumentError("A BBM polygon needs as many Y as X values");
  Put(bbm::kCmdPolygon);
  Put(static_cast<std::int32_t>(xs.size()));
  for (std::size_t i = 0; i < xs.size(); ++i) {
    Put(xs[i]), Put(ys[i]);
    Widen(xs[i], ys[i]);
  }
}

void BbmCommandWriter::End(bool flush) {
  if (flush) Put(bbm::kCmdMoveTo), Put(lastX_), Put(lastY_);
  Put(bbm::kCmdEnd);
}

void BbmCommandWriter::Raw(std::int32_t code, const std::vector<std::int32_t>& operands) {
  Put(code);
  for (const std::int32_t v : operands) Put(v);
}

}  // namespace tarno
