// Rounding, integer storage and the world/model coordinate translations.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "core/coords.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "core/rounding.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

TEST(CLng, RoundsHalfToEven) {
  EXPECT_EQ(CLng(2.5), 2);
  EXPECT_EQ(CLng(3.5), 4);
  EXPECT_EQ(CLng(-2.5), -2);
  EXPECT_EQ(CLng(-3.5), -4);
  EXPECT_EQ(CLng(0.5), 0);
  EXPECT_EQ(CLng(1.5), 2);
  EXPECT_EQ(CLng(2.4999999), 2);
  EXPECT_EQ(CLng(2.5000001), 3);
  EXPECT_EQ(CLng(-0.4), 0);
}

TEST(CLng, RangeLimitsAndOverflow) {
  EXPECT_EQ(CLng(2147483647.0), 2147483647);
  EXPECT_EQ(CLng(2147483647.4), 2147483647);
  EXPECT_EQ(CLng(-2147483648.0), std::numeric_limits<std::int32_t>::min());
  EXPECT_EQ(CLng(-2147483648.5), std::numeric_limits<std::int32_t>::min());  // tie to even
  EXPECT_THROW(CLng(2147483647.5), OverflowError);  // tie goes to the even 2147483648
  EXPECT_THROW(CLng(-2147483649.0), OverflowError);
  EXPECT_THROW(CLng(1e300), OverflowError);
  EXPECT_THROW(CLng(std::nan("")), OverflowError);
  EXPECT_THROW(CLng(INFINITY), OverflowError);
}

TEST(CInt, SixteenBitRange) {
  EXPECT_EQ(CInt(32767.0), 32767);
  EXPECT_EQ(CInt(-32768.4), -32768);
  EXPECT_EQ(CInt(4.5), 4);
  EXPECT_THROW(CInt(32767.5), OverflowError);
  EXPECT_THROW(CInt(-32769.0), OverflowError);
}

TEST(Round, ToDecimalsHalfToEven) {
  EXPECT_DOUBLE_EQ(Round(2.5), 2.0);
  EXPECT_DOUBLE_EQ(Round(0.125, 2), 0.12);     // exact tie: even
  EXPECT_DOUBLE_EQ(Round(0.375, 2), 0.38);
  EXPECT_DOUBLE_EQ(Round(-0.125, 2), -0.12);
  EXPECT_DOUBLE_EQ(Round(1.23456789, 4), 1.2346);
  EXPECT_DOUBLE_EQ(Round(1.23454, 4), 1.2345);
  EXPECT_DOUBLE_EQ(Round(-7.77777, 3), -7.778);
  EXPECT_DOUBLE_EQ(Round(123456.789, 0), 123457.0);
  // 2.675 and 0.00015 are held in binary just below the half; their decimal form
  // is the tie, and the tie goes to the even digit.
  EXPECT_DOUBLE_EQ(Round(2.675, 2), 2.68);
  EXPECT_DOUBLE_EQ(Round(0.00015, 4), 0.0002);
  EXPECT_DOUBLE_EQ(Round(0.00025, 4), 0.0002);
  EXPECT_DOUBLE_EQ(Round(9.99995, 4), 10.0);     // carry into a new digit
  EXPECT_DOUBLE_EQ(Round(0.4, 0), 0.0);
  EXPECT_DOUBLE_EQ(Round(0.00004, 4), 0.0);      // below the place: zero
  EXPECT_DOUBLE_EQ(Round(0.00006, 4), 0.0001);
}

TEST(Round, ValuesWithoutAFractionAtTheScaleStay) {
  EXPECT_EQ(Round(1e300, 4), 1e300);
  EXPECT_EQ(Round(4503599627370497.0, 2), 4503599627370497.0);
  EXPECT_EQ(Round(1.5e-310, 400), 1.5e-310);
  EXPECT_TRUE(std::isnan(Round(std::nan(""), 2)));
  EXPECT_EQ(Round(INFINITY, 2), INFINITY);
  EXPECT_THROW(Round(1.0, -1), InvalidArgumentError);
}

TEST(IntAndFix, FloorAgainstTruncation) {
  EXPECT_EQ(Int(2.7), 2.0);
  EXPECT_EQ(Fix(2.7), 2.0);
  EXPECT_EQ(Int(-2.7), -3.0);
  EXPECT_EQ(Fix(-2.7), -2.0);
  EXPECT_EQ(Int(-3.0), -3.0);
  EXPECT_EQ(Fix(-0.5), 0.0);
  EXPECT_EQ(Int(-0.5), -1.0);
}

// --- Coordinates ------------------------------------------------------------

TEST(BasemapConvert, UnitFactorFromTheTwoSwitches) {
  EXPECT_EQ(BasemapConvertFactor(true, true), 1.0);
  EXPECT_EQ(BasemapConvertFactor(false, false), 1.0);
  EXPECT_EQ(BasemapConvertFactor(false, true), 0.3048);        // feet map, metre model
  EXPECT_EQ(BasemapConvertFactor(true, false), 1.0 / 0.3048);  // metre map, feet model
  EXPECT_EQ(BasemapConvertCode(1.0), 2);
  EXPECT_EQ(BasemapConvertCode(0.3048), 0);
  EXPECT_EQ(BasemapConvertCode(1.0 / 0.3048), 1);
}

TEST(Coordinates, WorldToModelShiftsAndScalesWithoutRounding) {
  const ModelFrame frame{1000.0, 2000.0, 0.3048};
  EXPECT_DOUBLE_EQ(WToM_X(frame, 1100.0), 100.0 * 0.3048);
  EXPECT_DOUBLE_EQ(WToM_Y(frame, 1900.0), -100.0 * 0.3048);
  // Not rounded: a tiny offset survives.
  const ModelFrame unit{0.0, 0.0, 1.0};
  EXPECT_EQ(WToM_X(unit, 0.123456789), 0.123456789);
  EXPECT_EQ(WToM_Y(unit, -1e-9), -1e-9);
}

TEST(Coordinates, ModelToWorldIsTheInverseRoundedToFourDecimals) {
  const ModelFrame frame{500000.0, 4100000.0, 1.0 / 0.3048};
  EXPECT_DOUBLE_EQ(MToW_X(frame, 100.0), 500030.48);
  EXPECT_DOUBLE_EQ(MToW_Y(frame, -100.0), 4099969.52);
  const ModelFrame unit{0.0, 0.0, 1.0};
  EXPECT_DOUBLE_EQ(MToW_X(unit, 0.123456789), 0.1235);
  EXPECT_DOUBLE_EQ(MToW_X(unit, 0.00005), 0.0);      // half to even at the 4th decimal
  EXPECT_DOUBLE_EQ(MToW_X(unit, 0.00015), 0.0002);
  EXPECT_DOUBLE_EQ(MToW_Y(unit, -0.00025), -0.0002);
  // A round trip returns the world value to the fourth decimal.
  for (double x : {123456.7891, -0.00004, 98765.4321, 2.5e6}) {
    EXPECT_NEAR(MToW_X(frame, WToM_X(frame, x)), x, 0.5e-4 + 1e-9) << x;
  }
}

TEST(Coordinates, ValuesAreNeverClamped) {
  const ModelFrame frame{-100.0, -100.0, 1.0};
  EXPECT_DOUBLE_EQ(WToM_X(frame, 1e12), 1e12 + 100.0);
  EXPECT_DOUBLE_EQ(MToW_Y(frame, -1e12), -1e12 - 100.0);
}

TEST(Coordinates, FailuresRaiseErrors) {
  const ModelFrame zero{0.0, 0.0, 0.0};
  EXPECT_THROW(MToW_X(zero, 1.0), Error);
  const ModelFrame big{-1e308, 0.0, 10.0};
  EXPECT_THROW(WToM_X(big, 1e308), OverflowError);
}

TEST(Coordinates, TheMainFormsTranslationShowsAFailureAndGivesZero) {
  ScriptedUserInterface ui;
  ui.Expect(UiCallKind::MessageBox).Title(kUnhandledErrorTitle);
  const ModelFrame zero{0.0, 0.0, 0.0};
  EXPECT_EQ(MToW_Y(ui, zero, 5.0), 0.0);
  ASSERT_EQ(ui.Messages().size(), 1u);
  EXPECT_EQ(ui.Messages()[0].lines[0], "Unhandled error in MToW_Y");
  EXPECT_NO_THROW(ui.Verify());

  // Without a failure there is no message.
  ScriptedUserInterface quiet;
  EXPECT_DOUBLE_EQ(WToM_X(quiet, ModelFrame{10.0, 0.0, 2.0}, 15.0), 10.0);
  EXPECT_TRUE(quiet.Calls().empty());
}

}  // namespace
}  // namespace tarno
