#include <gtest/gtest.h>

#include "core/error.h"
#include "display/canvas.h"
#include "display/vgraph.h"

namespace tarno {
namespace {

TEST(Palette, ClassicColoursPackRedLowest) {
  EXPECT_EQ(PaletteColour(0), 0);
  EXPECT_EQ(PaletteColour(12), 255);            // bright red
  EXPECT_EQ(PaletteColour(14), 65535);          // yellow: red and green
  EXPECT_EQ(PaletteColour(15), 0xFFFFFF);
  EXPECT_EQ(RedOf(33023), 255);                 // the orange of the model-value mark
  EXPECT_EQ(GreenOf(33023), 128);
  EXPECT_THROW(PaletteColour(16), InvalidArgumentError);
  EXPECT_THROW(PaletteColour(-1), InvalidArgumentError);
}

TEST(RecordingCanvasImage, KeepsTheBoxAndThePixelsAndTheLayerPlacesAWorldImage) {
  RecordingCanvas canvas(200, 100);
  VGraphGDI layer;
  WorldWindow window{0, 200, 100, 0};
  layer.vgGDIInitObject(canvas, window, false, 10.0);
  const std::uint32_t pixels[6] = {1, 2, 3, 4, 5, 6};
  // 3 by 2 pixels over the world rectangle (50, 20) to (80, 40).
  layer.vgGDIWorldImage(50, 20, 80, 40, pixels, 3, 2);
  // A box of no size draws nothing.
  layer.vgGDIDeviceImage(5, 5, 0, 10, pixels, 3, 2);
  ASSERT_EQ(canvas.Count(RecordingCanvas::Kind::Image), 1);
  const RecordingCanvas::Op& op = canvas.Ops().back();
  EXPECT_EQ(op.points[0], (DevicePoint{50, 60}));
  EXPECT_EQ(op.points[1], (DevicePoint{80, 80}));
  EXPECT_EQ(op.imageWidth, 3);
  EXPECT_EQ(op.imageHeight, 2);
  EXPECT_EQ(op.pixels, (std::vector<std::uint32_t>(pixels, pixels + 6)));
}

}  // namespace
}  // namespace tarno
