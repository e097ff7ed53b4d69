// SURFER boundary line files (.BLN) and the level script TARNO.SCR.
//
// A record is a head line with the number of points and the blanking flag, in
// the form the classic number printing gives (" 5 1": a blank before each
// number), optionally followed by the record's name (a contour's level, a
// pathline's label) in double quotes; then one line per point, "X,Y" in the
// general number form. Lines end with CR LF.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "exchange/geometry_sources.h"

namespace tarno::exchange {

// The SURFER script written beside an exported contour file.
inline constexpr const char* kSurferScriptFile = "TARNO.SCR";

// The error numbers of a boundary line file that cannot be created or written:
// the classic "Path/File access error" and "Device I/O error".
inline constexpr int kBlnAccessError = 75;
inline constexpr int kBlnWriteError = 57;

class BlnFile {
 public:
  // A record of `points` with the flag and, when not empty, a name.
  void AddRecord(const std::vector<MapPoint>& points, int flag = 1, const std::string& name = "");
  // A well: the five-point square (the first corner repeated) of half side `half`
  // about the point, head " 5 1".
  void AddSquare(double x, double y, double half);

  std::size_t RecordCount() const { return records_; }
  const std::string& Text() const { return text_; }
  // Writes the records to `file`; throws Error with kBlnAccessError when the file
  // cannot be created, kBlnWriteError when writing fails.
  void Write(const std::filesystem::path& file) const;

 private:
  std::string text_;
  std::size_t records_ = 0;
};

// The lines of TARNO.SCR for contour records at `levels`, one line per record: the
// level in mask "####0 ", "  1" and the value "0.000000e+00 ", separated by a blank.
std::string SurferLevelScript(const std::vector<double>& levels);

}  // namespace tarno::exchange
