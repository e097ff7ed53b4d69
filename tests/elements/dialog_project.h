// The scratch project of the observation dialog tests, in the units the test sets
// before SetUp.
#pragma once

#include <vector>

#include "support/project_fixture.h"

namespace tarno::testing {

class ObservationProject : public ScratchProject {
 protected:
  void SetUp() override { MakeProject(basemapMeters_, computeMeters_); }
  static std::vector<Vertex> Square(double x = 0, double y = 0, double size = 100) {
    return At({{x, y}, {x + size, y}, {x + size, y + size}});
  }

  bool basemapMeters_ = true;
  bool computeMeters_ = true;
};

}  // namespace tarno::testing
