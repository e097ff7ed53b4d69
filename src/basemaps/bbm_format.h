// The layout of a BBM file ("Binary Base Map"), shared by the reader (bbm.h) and
// the writer (bbm_writer.h), so that both agree byte for byte.
//
// Every number is a signed 32-bit little-endian integer; texts are fixed-length
// ASCII padded with blanks. Coordinates are stored as world units times the file's
// multiplier (100: the hundredths of the graphics layer).
//
//   0    "*BBM"                          4 bytes
//   4    major, minor, patch version     3 x 4
//   16   Title, Source, Description      3 x 80
//   256  Data type                       4
//   260  Projection (zone)               4
//   264  Multiplier                      4
//   268  three numbers by form:          3 x 4
//          drawing commands: Logical Pixels X, Logical Pixels Y, unused
//          records:          Number of Points, Number of Lines, Number of Areas
//   280  X1, Y1, X2, Y2 (left, bottom, right, top in stored units)
//   296  body: the drawing-command stream or the records
//
// Records: RecordType, Id, then by type
//   point (32512): AttrValues, AttrPairs, Xmin, Ymin, Xmax, Ymax, X, Y,
//                  pairs (major, minor) x AttrPairs, values x AttrValues
//   line  (32513): AttrValues, AttrPairs, Vertices, Xmin, Ymin, Xmax, Ymax,
//                  pairs x AttrPairs, Vertices x (X, Y, AttrValues values)
//   area  (32514): AttrValues, AttrPairs, Boundaries,
//                  pairs x AttrPairs, Boundaries x signed 1-based line number,
//                  values x AttrValues
// Any other record type ends the records.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarno::bbm {

inline constexpr char kSignature[4] = {'*', 'B', 'B', 'M'};
inline constexpr std::size_t kTextLength = 80;

// Header offsets.
inline constexpr std::size_t kVersionOffset = 4;
inline constexpr std::size_t kTitleOffset = 16;
inline constexpr std::size_t kSourceOffset = 96;
inline constexpr std::size_t kDescriptionOffset = 176;
inline constexpr std::size_t kDataTypeOffset = 256;
inline constexpr std::size_t kProjectionOffset = 260;
inline constexpr std::size_t kMultiplierOffset = 264;
inline constexpr std::size_t kCountsOffset = 268;  // the three numbers of the form
inline constexpr std::size_t kBoundsOffset = 280;
inline constexpr std::size_t kBodyOffset = 296;
inline constexpr std::size_t kHeaderSize = kBodyOffset;

// Data types.
inline constexpr std::int32_t kAttributed = -100000;    // DLG major and minor codes
inline constexpr std::int32_t kSimpleCoded = -100001;   // first major 100, 200 or 300
inline constexpr std::int32_t kColoured = -100004;      // a line's colour in its first minor
inline constexpr std::int32_t kUnattributed = -100005;  // records without pairs drawn too
inline constexpr std::int32_t kCommands = -100006;      // the drawing-command stream

// Record types.
inline constexpr std::int32_t kPointRecord = 32512;
inline constexpr std::int32_t kLineRecord = 32513;
inline constexpr std::int32_t kAreaRecord = 32514;

// Bytes of a record's fixed part, RecordType and Id included. A point's own X and Y
// belong to its fixed part.
inline constexpr std::size_t kPointFixedSize = 4 * 10;
inline constexpr std::size_t kLineFixedSize = 4 * 9;
inline constexpr std::size_t kAreaFixedSize = 4 * 5;

// Drawing-command codes.
inline constexpr std::int32_t kCmdMoveTo = 0;   // X, Y: start a new line
inline constexpr std::int32_t kCmdLineTo = 1;   // X, Y: extend the line
inline constexpr std::int32_t kCmdWidth = 2;    // W in stored units
inline constexpr std::int32_t kCmdColour = 3;   // C: palette index, 15 read as 0
inline constexpr std::int32_t kCmdPolygon = 4;  // N, then N pairs X, Y
inline constexpr std::int32_t kCmdEnd = 999;

// The versions a reader accepts: major at most 1, minor at most 0, patch below 3.
inline constexpr bool VersionAccepted(std::int32_t major, std::int32_t minor, std::int32_t patch) {
  return major <= 1 && minor <= 0 && patch < 3;
}
// The version the writer puts in new files.
inline constexpr std::int32_t kWriteMajor = 1;
inline constexpr std::int32_t kWriteMinor = 0;
inline constexpr std::int32_t kWritePatch = 2;

// Little-endian 32-bit integers in a byte buffer.
inline std::int32_t GetInt32(const unsigned char* p) {
  const std::uint32_t v =
      static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
      (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
  return static_cast<std::int32_t>(v);
}
inline void PutInt32(unsigned char* p, std::int32_t value) {
  const auto v = static_cast<std::uint32_t>(value);
  p[0] = static_cast<unsigned char>(v & 0xFF);
  p[1] = static_cast<unsigned char>((v >> 8) & 0xFF);
  p[2] = static_cast<unsigned char>((v >> 16) & 0xFF);
  p[3] = static_cast<unsigned char>((v >> 24) & 0xFF);
}

}  // namespace tarno::bbm
