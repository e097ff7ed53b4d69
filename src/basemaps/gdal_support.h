// What the raster and CAD readers share of GDAL: its drivers registered once, and
// its error messages taken instead of printed.
#pragma once

#include <memory>
#include <string>

class GDALDataset;

namespace tarno {

// Registers GDAL's drivers the first time it is called.
void EnsureGdalRegistered();

// GDAL's messages go to this object while it lives, not to standard error; the
// last one can be read to complete an error of our own.
class GdalErrorCapture {
 public:
  GdalErrorCapture();
  ~GdalErrorCapture();
  GdalErrorCapture(const GdalErrorCapture&) = delete;
  GdalErrorCapture& operator=(const GdalErrorCapture&) = delete;
  // GDAL's last error message, or empty.
  std::string LastMessage() const;
  // ": " followed by the last message, or empty: to end a sentence of our own.
  std::string Detail() const;
};

struct GdalDatasetCloser {
  void operator()(GDALDataset* dataset) const;
};
using GdalDatasetPtr = std::unique_ptr<GDALDataset, GdalDatasetCloser>;

}  // namespace tarno
