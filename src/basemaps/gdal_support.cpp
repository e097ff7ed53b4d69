#include "basemaps/gdal_support.h"

#include <cpl_error.h>
#include <gdal_priv.h>

#include <mutex>

namespace tarno {

void EnsureGdalRegistered() {
  static std::once_flag once;
  std::call_once(once, [] { GDALAllRegister(); });
}

GdalErrorCapture::GdalErrorCapture() {
  CPLPushErrorHandler(CPLQuietErrorHandler);
  CPLErrorReset();
}

GdalErrorCapture::~GdalErrorCapture() { CPLPopErrorHandler(); }

std::string GdalErrorCapture::LastMessage() const {
  const char* message = CPLGetLastErrorMsg();
  return message != nullptr ? std::string(message) : std::string();
}

std::string GdalErrorCapture::Detail() const {
  const std::string message = LastMessage();
  return message.empty() ? std::string() : ": " + message;
}

void GdalDatasetCloser::operator()(GDALDataset* dataset) const {
  if (dataset != nullptr) GDALClose(GDALDataset::ToHandle(dataset));
}

}  // namespace tarno
