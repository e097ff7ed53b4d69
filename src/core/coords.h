// Translations between world (base map) coordinates and model (solver) coordinates.
//
//   WToM_X(x) = (x - origin X) * BasemapConvert
//   WToM_Y(y) = (y - origin Y) * BasemapConvert
//   MToW_X(m) = Round(m / BasemapConvert + origin X, 4 decimals)
//   MToW_Y(m) = Round(m / BasemapConvert + origin Y, 4 decimals)
//
// Round is half to even at the fourth decimal (core/rounding.h). Only the model to
// world direction rounds; the world to model direction does not, and callers rely
// on that asymmetry. Values are never clamped.
//
// The origin is the solver reference point SOLVERX0, SOLVERY0 of the Model row; the
// factor BasemapConvert turns map units into model units (see BasemapConvertFactor).
#pragma once

#include <string_view>

namespace tarno {

class UserInterface;

// Metres in one foot, the factor between feet maps and metre models.
inline constexpr double kMetresPerFoot = 0.3048;

// BasemapConvert from the Model row's two unit switches: 1 when map and model use
// the same unit, 0.3048 for a map in feet with a model in metres, 1 / 0.3048 for a
// map in metres with a model in feet.
double BasemapConvertFactor(bool basemapMeters, bool computeMeters);

// The code of the " modelorigin " command for a factor: 2 when it equals 1, 0 when
// it is below 1, 1 when it is above 1.
int BasemapConvertCode(double basemapConvert);

// The origin and factor of the translation.
struct ModelFrame {
  double originX = 0.0;         // SOLVERX0
  double originY = 0.0;         // SOLVERY0
  double basemapConvert = 1.0;  // BasemapConvert
};

// The four translations. They throw tarno::Error when the factor is zero (division
// by zero, model to world) and OverflowError when a result is not a finite number.
double WToM_X(const ModelFrame& frame, double x);
double WToM_Y(const ModelFrame& frame, double y);
double MToW_X(const ModelFrame& frame, double m);
double MToW_Y(const ModelFrame& frame, double m);

// The same four as the main form uses them: a failure is caught and shown through
// the general error message with the translation's name ("Unhandled error in
// MToW_X"), and the result stays empty, that is 0.
double WToM_X(UserInterface& ui, const ModelFrame& frame, double x);
double WToM_Y(UserInterface& ui, const ModelFrame& frame, double y);
double MToW_X(UserInterface& ui, const ModelFrame& frame, double m);
double MToW_Y(UserInterface& ui, const ModelFrame& frame, double m);

}  // namespace tarno
