// The scratch project of the barrier, inhomogeneity, lake and uniform flow dialog
// tests.
#pragma once

#include <vector>

#include "support/project_fixture.h"

namespace tarno::testing {

class AreaDialogTest : public ScratchProject {
 protected:
  // A new project in metres (or with the computation in feet).
  void MakeProject(bool computeMeters) { ScratchProject::MakeProject(true, computeMeters); }
  static std::vector<Vertex> Square(double x0, double y0, double size) {
    return At({{x0, y0}, {x0, y0 + size}, {x0 + size, y0 + size}, {x0 + size, y0}});
  }
};

}  // namespace tarno::testing
