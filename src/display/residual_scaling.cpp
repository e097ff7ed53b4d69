#include "display/residual_scaling.h"

#include <cstring>

namespace tarno {

namespace {

const ResidualScaleChoice* Find(const std::string& key) {
  for (const ResidualScaleChoice& c : ResidualScaleChoices())
    if (key == c.key) return &c;
  return nullptr;
}

int& ScaleOf(const char* group, LayerSwitches& l) {
  if (std::strcmp(group, "TGSCALING") == 0) return l.gageScale;
  if (std::strcmp(group, "TSSCALING") == 0) return l.stageScale;
  return l.piezometerScale;
}

}  // namespace

const std::vector<ResidualScaleChoice>& ResidualScaleChoices() {
  static const std::vector<ResidualScaleChoice> choices = {
      {"TPSCALING(0)", "TPSCALING", "+/- &5 %", 5},
      {"TPSCALING(1)", "TPSCALING", "+/- 10 %", 10},
      {"TPSCALING(2)", "TPSCALING", "+/- 20 %", 20},
      {"TGSCALING(0)", "TGSCALING", "+/- 10 %", 10},
      {"TGSCALING(1)", "TGSCALING", "+/- 50 %", 50},
      {"TGSCALING(2)", "TGSCALING", "+/- 100 %", 100},
      {"TSSCALING(0)", "TSSCALING", "+/- 5 %", 5},
      {"TSSCALING(1)", "TSSCALING", "+/- 10 %", 10},
      {"TSSCALING(2)", "TSSCALING", "+/- 20 %", 20},
  };
  return choices;
}

bool SetTestPointScaling(const std::string& key, LayerSwitches& layers) {
  const ResidualScaleChoice* c = Find(key);
  if (c == nullptr) return false;
  ScaleOf(c->group, layers) = c->percent;
  return true;
}

std::optional<bool> TestPointScaleChecked(const std::string& key, const LayerSwitches& layers) {
  const ResidualScaleChoice* c = Find(key);
  if (c == nullptr) return std::nullopt;
  LayerSwitches copy = layers;
  return ScaleOf(c->group, copy) == c->percent;
}

}  // namespace tarno
