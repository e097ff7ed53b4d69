// The scratch project of the well and line-sink dialog tests: an aquifer from 10 to
// 60 and, where asked, an inhomogeneity that raises the base to 20 over the square
// (0,0)-(100,100).
#pragma once

#include "support/project_fixture.h"

namespace tarno::testing {

class DialogProject : public ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    db_.ExecuteRaw("update Model set AQBase=10, AQThickness='50'");
  }
  void RaiseBaseOverSquare(double base) {
    Add(ElementKind::Inhomogeneity, "raised", At({{0, 0}, {100, 0}, {100, 100}, {0, 100}}),
        [&](Row& r) {
          r.Set("ChangeB", true);
          r.Set("BottomElevation", base);
        });
  }
  void UseFeet() { db_.ExecuteRaw("update Model set ComputeMeters=0, BasemapMeters=0"); }
};

}  // namespace tarno::testing
