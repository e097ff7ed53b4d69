// The scales of the residual marks of test points: one radio group per kind of
// observation in the Test Points menu. The signed size of a scaled mark reaches 5
// at a residual of the scale's percentage of the observed value.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "display/map_state.h"

namespace tarno {

// One choice of a scaling group: its menu key, caption and percentage.
struct ResidualScaleChoice {
  const char* key;      // "TPSCALING(0)", ...
  const char* group;    // "TPSCALING", "TGSCALING", "TSSCALING"
  const char* caption;  // "+/- &5 %", ...
  int percent;
};

// The nine choices: piezometers 5, 10, 20; gages 10, 50, 100; lake stages 5, 10, 20.
const std::vector<ResidualScaleChoice>& ResidualScaleChoices();

// SetTestPointScaling: takes the choice of `key` into the layer switches. False
// (nothing changed) when the key is no scaling choice.
bool SetTestPointScaling(const std::string& key, LayerSwitches& layers);

// Whether the choice of `key` is the present scale of its group; nothing when the
// key is no scaling choice.
std::optional<bool> TestPointScaleChecked(const std::string& key, const LayerSwitches& layers);

}  // namespace tarno
