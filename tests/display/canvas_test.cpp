#include <gtest/gtest.h>

#include "core/error.h"
#include "display/canvas.h"

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

}  // namespace
}  // namespace tarno
