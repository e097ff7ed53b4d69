// Shared fixture of the BBM tests: a temporary folder for the maps the tests write,
// a scripted user interface, and a recording surface bound to a graphics layer.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "basemaps/bbm.h"
#include "basemaps/bbm_writer.h"
#include "display/canvas.h"
#include "display/vgraph.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::testing {

using Kind = RecordingCanvas::Kind;

class BbmTest : public ::testing::Test {
 public:
  static BbmHeaderFields Fields(std::int32_t dataType, std::string description = "") {
    BbmHeaderFields f;
    f.title = "Test map";
    f.source = "bbm tests";
    f.description = std::move(description);
    f.dataType = dataType;
    f.projection = 17;
    return f;
  }

 protected:
  void SetUp() override { Bind({0, 100, 100, 0}); }

  // Binds the 1000 x 1000 surface to a square window and forgets what was drawn.
  // A window 100 units wide is 10 hundredths a pixel (the closest DLG level).
  void Bind(WorldWindow w) {
    ASSERT_EQ(g_.vgGDIInitObject(canvas_, w, false, 10.0), 0);
    canvas_.ClearOps();
  }

  std::string Save(const BbmWriterBase& writer, const std::string& name = "map.bbm") {
    const std::string path = (temp_ / name).string();
    writer.Save(path);
    return path;
  }
  std::string SaveBytes(const std::string& bytes, const std::string& name = "map.bbm") {
    const std::string path = (temp_ / name).string();
    EXPECT_TRUE(test::WriteFile(path, bytes));
    return path;
  }

  // The polylines and polygons drawn, in order.
  std::vector<RecordingCanvas::Op> OpsOf(Kind kind) const {
    std::vector<RecordingCanvas::Op> out;
    for (const auto& op : canvas_.Ops()) {
      if (op.kind == kind) out.push_back(op);
    }
    return out;
  }

  // Device point of a stored coordinate on the 100 x 100 window: 10 hundredths a pixel.
  static DevicePoint Dev(int x, int y) { return {x / 10, 1000 - y / 10}; }

  test::TempDir temp_{"tarno-bbm"};
  ScriptedUserInterface ui_;
  RecordingCanvas canvas_{1000, 1000};
  VGraphGDI g_{&ui_};
};

}  // namespace tarno::testing
