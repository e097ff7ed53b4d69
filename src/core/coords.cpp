#include "core/coords.h"

#include <cmath>
#include <functional>

#include "core/error.h"
#include "core/error_trap.h"
#include "core/format.h"
#include "core/rounding.h"

namespace tarno {

double BasemapConvertFactor(bool basemapMeters, bool computeMeters) {
  if (basemapMeters == computeMeters) return 1.0;
  return basemapMeters ? 1.0 / kMetresPerFoot : kMetresPerFoot;
}

int BasemapConvertCode(double basemapConvert) {
  if (basemapConvert == 1.0) return 2;
  return basemapConvert < 1.0 ? 0 : 1;
}

namespace {

double Finite(double value, const char* what) {
  if (!std::isfinite(value)) {
    throw OverflowError(std::string("Overflow in ") + what + ": the result is " +
                        GeneralNumber(value));
  }
  return value;
}

double WorldToModel(double value, double origin, double factor, const char* what) {
  return Finite((value - origin) * factor, what);
}

double ModelToWorld(double value, double origin, double factor, const char* what) {
  if (factor == 0.0) {
    throw Error(std::string("Division by zero in ") + what + ": BasemapConvert is 0",
                error_number::kDivisionByZero);
  }
  return Round(Finite(value / factor + origin, what), 4);
}

double Guarded(UserInterface& ui, const char* name, const std::function<double()>& body) {
  double result = 0.0;
  RunOperation(ui, name, [&] { result = body(); });
  return result;
}

}  // namespace

double WToM_X(const ModelFrame& f, double x) {
  return WorldToModel(x, f.originX, f.basemapConvert, "WToM_X");
}
double WToM_Y(const ModelFrame& f, double y) {
  return WorldToModel(y, f.originY, f.basemapConvert, "WToM_Y");
}
double MToW_X(const ModelFrame& f, double m) {
  return ModelToWorld(m, f.originX, f.basemapConvert, "MToW_X");
}
double MToW_Y(const ModelFrame& f, double m) {
  return ModelToWorld(m, f.originY, f.basemapConvert, "MToW_Y");
}

double WToM_X(UserInterface& ui, const ModelFrame& f, double x) {
  return Guarded(ui, "WToM_X", [&] { return WToM_X(f, x); });
}
double WToM_Y(UserInterface& ui, const ModelFrame& f, double y) {
  return Guarded(ui, "WToM_Y", [&] { return WToM_Y(f, y); });
}
double MToW_X(UserInterface& ui, const ModelFrame& f, double m) {
  return Guarded(ui, "MToW_X", [&] { return MToW_X(f, m); });
}
double MToW_Y(UserInterface& ui, const ModelFrame& f, double m) {
  return Guarded(ui, "MToW_Y", [&] { return MToW_Y(f, m); });
}

}  // namespace tarno
