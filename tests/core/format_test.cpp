// Picture masks and the general number form.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <regex>
#include <string>
#include <vector>

#include "core/format.h"
#include "core/text.h"

namespace tarno {
namespace {

struct MaskCase {
  const char* mask;
  double value;
  const char* expected;
};

void PrintTo(const MaskCase& c, std::ostream* os) {
  *os << "FormatNumber(" << c.value << ", \"" << c.mask << "\")";
}

class MaskTable : public ::testing::TestWithParam<MaskCase> {};

TEST_P(MaskTable, WritesTheExpectedText) {
  const MaskCase& c = GetParam();
  EXPECT_EQ(FormatNumber(c.value, c.mask), c.expected);
}

// Scientific masks of the command file: one optional or forced digit before the
// point, the exponent with sign and at least two digits, literal trailing blanks.
INSTANTIATE_TEST_SUITE_P(
    Scientific, MaskTable,
    ::testing::Values(
        MaskCase{"#.0000000E+00 ", 0.0, ".0000000E+00 "},
        MaskCase{"#.0000000E+00 ", 12.5, "1.2500000E+01 "},
        MaskCase{"#.0000000E+00 ", -12.5, "-1.2500000E+01 "},
        MaskCase{"#.0000000E+00 ", 0.5, "5.0000000E-01 "},
        MaskCase{"#.0000000E+00 ", 1.0, "1.0000000E+00 "},
        MaskCase{"#.0000000E+00 ", 9.99999999, "1.0000000E+01 "},    // carry into a new digit
        MaskCase{"#.0000000E+00 ", -9.99999996, "-1.0000000E+01 "},
        MaskCase{"#.0000000E+00 ", 9.99999994, "9.9999999E+00 "},     // no carry
        MaskCase{"#.0000000E+00 ", 1234.5678, "1.2345678E+03 "},
        MaskCase{"#.0000000E+00 ", 1e300, "1.0000000E+300 "},
        MaskCase{"#.0000000E+00 ", 1e-300, "1.0000000E-300 "},
        MaskCase{"#.0000000E+00 ", -2.5e-7, "-2.5000000E-07 "},
        MaskCase{"#.0000000E+00", 0.0, ".0000000E+00"},
        MaskCase{"#.0000000E+00", 654321.0, "6.5432100E+05"},
        MaskCase{"#.000000E+00 ", 0.0, ".000000E+00 "},
        MaskCase{"#.000000E+00 ", 1234.5678, "1.234568E+03 "},      // rounds up at the 7th digit
        MaskCase{"#.000000E+00 ", 1234.5674, "1.234567E+03 "},
        MaskCase{"#.000000E+00  ", 100.0, "1.000000E+02  "},
        MaskCase{"#.00000E+00 ", 0.000123456, "1.23456E-04 "},
        MaskCase{"#.00000E+00", -1e10, "-1.00000E+10"},
        MaskCase{"0.0000000E+00 ", 0.0, "0.0000000E+00 "},
        MaskCase{"0.0000000E+00 ", 0.000123456, "1.2345600E-04 "},
        MaskCase{"0.0000000E+00", -1234567.25, "-1.2345673E+06"},  // exact tie: away from zero
        MaskCase{"0.000000E+00 ", 0.0, "0.000000E+00 "},
        MaskCase{"0.000000E+00", 3.0, "3.000000E+00"},
        MaskCase{"0.00000E+00 ", 0.0, "0.00000E+00 "},
        MaskCase{"0.00000E+00", 2.0e-5, "2.00000E-05"},
        MaskCase{"0.000000000E+00 ", 9.99999999, "9.999999990E+00 "},
        MaskCase{"0.000E+00", 1234.5678, "1.235E+03"},
        MaskCase{"0.000e+00", 1234.5678, "1.235e+03"},
        MaskCase{"0.000000e+00 ", -0.001, "-1.000000e-03 "},
        MaskCase{"#0.000e+00", 0.0, "0.000e+00"},
        MaskCase{"#0.000e+00", 0.0002, "2.000e-04"},
        MaskCase{" 0.0000E+00", 12.5, " 1.2500E+01"},              // leading literal blank
        MaskCase{" 0.0000E+00", -12.5, " -1.2500E+01"},            // sign after the literal
        MaskCase{"0.00E+000", 1.5e7, "1.50E+007"},                 // three exponent digits
        MaskCase{"0.00E-00", 1.5e7, "1.50E07"},                    // E- writes no plus
        MaskCase{"0.00E-00", 1.5e-7, "1.50E-07"}));

// Two digit positions before the point: the mantissa is normalised to one digit;
// the "0" position only makes zero show a digit.
INSTANTIATE_TEST_SUITE_P(
    TwoPositionsBeforeThePoint, MaskTable,
    ::testing::Values(
        MaskCase{"##.000000E+00 ", 0.0, ".000000E+00 "},
        MaskCase{"##.000000E+00 ", 12.5, "1.250000E+01 "},
        MaskCase{"##.000000E+00 ", -99.99999999, "-1.000000E+02 "},
        MaskCase{"##.000000E+00 ", 0.5, "5.000000E-01 "},
        MaskCase{"#0.000000E+00 ", 0.0, "0.000000E+00 "},
        MaskCase{"#0.000000E+00 ", -12345.678, "-1.234568E+04 "},
        MaskCase{"#0.000000E+00 ", 7.0, "7.000000E+00 "}));

INSTANTIATE_TEST_SUITE_P(
    Fixed, MaskTable,
    ::testing::Values(
        MaskCase{"######0.00 ", 0.0, "0.00 "},
        MaskCase{"######0.00 ", 1234.5678, "1234.57 "},
        MaskCase{"######0.00 ", -0.5, "-0.50 "},
        MaskCase{"######0.00 ", -0.001, "0.00 "},          // rounds to zero: no sign
        MaskCase{"######0.00 ", 1234.125, "1234.13 "},     // exact tie: away from zero
        MaskCase{"######0.00 ", 9.996, "10.00 "},          // carry into a new digit
        MaskCase{"######0.00 ", 123456789.0, "123456789.00 "},  // more digits than positions
        MaskCase{"#######0.00 ", 5.0, "5.00 "},
        MaskCase{"#######0.00", -3.14159, "-3.14"},
        MaskCase{"###0.0", 0.0, "0.0"},
        MaskCase{"###0.0", 0.04, "0.0"},
        MaskCase{"###0.0", 0.05, "0.1"},
        MaskCase{"###0.0", -17.25, "-17.3"},
        MaskCase{"###0.00", 2.5, "2.50"},
        MaskCase{"####0.00", 12.0, "12.00"},
        MaskCase{"#####0.0", 123.45, "123.5"},   // 123.45 is stored just above .45
        MaskCase{"######0.0", 999999.96, "1000000.0"},
        MaskCase{"########.0", 0.0, ".0"},
        MaskCase{"########.0", 0.25, ".3"},
        MaskCase{"######.00", 0.125, ".13"},
        MaskCase{"######.00", 42.0, "42.00"},
        MaskCase{"######.#0", 42.0, "42.00"},    // the "0" after "#" keeps both decimals
        MaskCase{"#####.##", 12.5, "12.5"},      // "#" decimals drop trailing zeros
        MaskCase{"#####.##", 12.0, "12."},       // the point stays
        MaskCase{"#####.##", 0.0, "."},
        MaskCase{"#####.##", -0.004, "."},
        MaskCase{"#####.##", 1234.567, "1234.57"},
        MaskCase{"#0.0", 1.0, "1.0"},
        MaskCase{"#0.0", -1.0, "-1.0"},
        MaskCase{"0.0", 0.95, "0.9"},            // 0.95 is stored just below .95 ...
        MaskCase{"0.00", 0.375, "0.38"},         // ... 0.375 is exact: tie away from zero
        MaskCase{"0.00", 0.2, "0.20"},
        MaskCase{"#.000000 ", 0.5, ".500000 "},
        MaskCase{"#.000000 ", -0.5, "-.500000 "},
        MaskCase{"0000.00", 12.5, "0012.50"},
        MaskCase{"00000000.0", 12.5, "00000012.5"},
        MaskCase{"000000000.", 12.5, "000000013."},
        MaskCase{"#,###,##0.0", 1234567.25, "1,234,567.3"},
        MaskCase{"#,###,##0.0", 0.0, "0.0"},
        MaskCase{"#,###,##0.0", -999.0, "-999.0"},
        MaskCase{"#,###,##0.0", 1234567890.0, "1,234,567,890.0"},
        MaskCase{"####0 ", 12.5, "13 "},          // 12.5 with no decimals: away from zero
        MaskCase{"####0 ", 2.5, "3 "},
        MaskCase{"0 ", 4.0, "4 "},
        MaskCase{"0", -2.5, "-3"},
        MaskCase{"#", 0.0, ""},
        MaskCase{"#", 7.0, "7"}));

// Zero-padded integers of labels and keys.
INSTANTIATE_TEST_SUITE_P(
    Integers, MaskTable,
    ::testing::Values(
        MaskCase{"000000", 42.0, "000042"},
        MaskCase{"000000", 0.0, "000000"},
        MaskCase{"000000", 1234567.0, "1234567"},    // wider than the mask: all digits
        MaskCase{"000000_", 7.0, "000007_"},
        MaskCase{"0000", 300.0, "0300"},
        MaskCase{"00000", 12.0, "00012"},
        MaskCase{"000", 5.0, "005"},
        MaskCase{"0000000000", 123.0, "0000000123"},
        MaskCase{"000000", -7.0, "-000007"}));

// Literal text: escapes, quotes, inner literals.
INSTANTIATE_TEST_SUITE_P(
    Literals, MaskTable,
    ::testing::Values(
        MaskCase{"\"X=\"0.0", 1.25, "X=1.3"},
        MaskCase{"\\#0", 5.0, "#5"},
        MaskCase{"00-00", 1234.0, "12-34"},
        MaskCase{"00-00", 5.0, "00-05"},
        MaskCase{"[0.00]", -1.5, "[-1.50]"},
        MaskCase{"no digits", 5.0, "no digits"}));

TEST(FormatNumber, HugeAndTinyValuesInFixedMasks) {
  // At most 15 significant digits are shown; further positions are zeros.
  EXPECT_EQ(FormatNumber(1e20, "0"), "100000000000000000000");
  EXPECT_EQ(FormatNumber(123456789012345678.0, "0"), "123456789012346000");
  EXPECT_EQ(FormatNumber(1e300, "0.00").size(), 301u + 3u);
  EXPECT_EQ(FormatNumber(0.1, "0.00000000000000000000"), "0.10000000000000000000");
  EXPECT_EQ(FormatNumber(1e-300, "######0.00 "), "0.00 ");
  EXPECT_EQ(FormatNumber(-1e-300, "######0.00 "), "0.00 ");
}

TEST(FormatNumber, MinusZeroIsWrittenAsZero) {
  EXPECT_EQ(FormatNumber(-0.0, "#.0000000E+00 "), ".0000000E+00 ");
  EXPECT_EQ(FormatNumber(-0.0, "0.000000E+00"), "0.000000E+00");
  EXPECT_EQ(FormatNumber(-0.0, "######0.00 "), "0.00 ");
  EXPECT_EQ(FormatNumber(-0.0, "000000"), "000000");
}

TEST(FormatNumber, SubnormalAndExtremeValuesKeepAValidExponent) {
  EXPECT_EQ(FormatNumber(5e-324, "#.0000000E+00 "), "4.9406565E-324 ");
  EXPECT_EQ(FormatNumber(1.7976931348623157e308, "0.000E+00"), "1.798E+308");
  EXPECT_EQ(FormatNumber(-1.7976931348623157e308, "#.000000E+00 "), "-1.797693E+308 ");
  // 9.9999999999e299 carries into the next decade.
  EXPECT_EQ(FormatNumber(9.99999999999e299, "0.00E+00"), "1.00E+300");
}

TEST(FormatNumber, NotANumberAndInfinityDoNotCrash) {
  EXPECT_EQ(FormatNumber(std::nan(""), "0.00 "), "NaN ");
  EXPECT_EQ(FormatNumber(INFINITY, "#.0000000E+00 "), "Inf ");
  EXPECT_EQ(FormatNumber(-INFINITY, "000000"), "-Inf");
  EXPECT_EQ(GeneralNumber(std::nan("")), "NaN");
}

TEST(FormatNumber, NamedFormats) {
  EXPECT_EQ(FormatNumber(0.5, "General Number"), "0.5");
  EXPECT_EQ(FormatNumber(0.5, ""), "0.5");
  EXPECT_EQ(FormatNumber(1234.5, "Fixed"), "1234.50");
  EXPECT_EQ(FormatNumber(1234.5, "Standard"), "1,234.50");
  EXPECT_EQ(FormatNumber(1234.5, "Scientific"), "1.23E+03");  // 1.23|45 rounds down
}

// --- The general form -----------------------------------------------------

struct GeneralCase {
  double value;
  const char* general;
  const char* str;
};

class GeneralForm : public ::testing::TestWithParam<GeneralCase> {};

TEST_P(GeneralForm, WritesUpToFifteenSignificantDigits) {
  const GeneralCase& c = GetParam();
  EXPECT_EQ(GeneralNumber(c.value), c.general);
  EXPECT_EQ(StrNumber(c.value), c.str);
  EXPECT_EQ(CommandNumber(c.value), std::string(c.str) + " ");
}

INSTANTIATE_TEST_SUITE_P(
    Values, GeneralForm,
    ::testing::Values(GeneralCase{0.0, "0", " 0"}, GeneralCase{-0.0, "0", " 0"},
                      GeneralCase{12.5, "12.5", " 12.5"}, GeneralCase{-12.5, "-12.5", "-12.5"},
                      GeneralCase{0.5, "0.5", " .5"}, GeneralCase{-0.25, "-0.25", "-.25"},
                      GeneralCase{100.0, "100", " 100"},
                      GeneralCase{1.0 / 3.0, "0.333333333333333", " .333333333333333"},
                      GeneralCase{2.0 / 3.0, "0.666666666666667", " .666666666666667"},
                      GeneralCase{0.1 + 0.2, "0.3", " .3"},  // 0.30000000000000004 at 15 digits
                      GeneralCase{123456789012345.0, "123456789012345", " 123456789012345"},
                      GeneralCase{999999999999999.4, "999999999999999", " 999999999999999"},
                      GeneralCase{999999999999999.9, "1E+15", " 1E+15"},  // carry to 16 digits
                      GeneralCase{1e15, "1E+15", " 1E+15"},
                      GeneralCase{-2.5e20, "-2.5E+20", "-2.5E+20"},
                      GeneralCase{123456789012345678.0, "1.23456789012346E+17",
                                  " 1.23456789012346E+17"},
                      GeneralCase{0.0001, "0.0001", " .0001"},
                      GeneralCase{0.00012345, "0.00012345", " .00012345"},
                      GeneralCase{0.00001, "1E-05", " 1E-05"},
                      GeneralCase{-1.5e-5, "-1.5E-05", "-1.5E-05"},
                      GeneralCase{1e-300, "1E-300", " 1E-300"},
                      GeneralCase{1e300, "1E+300", " 1E+300"}));

// --- Parse-back property --------------------------------------------------

// Every masked number must read back as a real number close to the value: within
// half a unit of its last shown digit.
TEST(FormatNumber, ScientificMasksReadBackWithinTheirPrecision) {
  const std::regex real(R"(^-?[0-9]*\.?[0-9]*[Ee][+-]?[0-9]{2,}$)");
  const std::vector<std::pair<const char*, int>> masks = {
      {"#.0000000E+00 ", 8},  {"#.000000E+00 ", 7},  {"#.000000E+00  ", 7},
      {"##.000000E+00 ", 7},  {"#0.000000E+00 ", 7}, {"#.00000E+00 ", 6},
      {"0.0000000E+00 ", 8},  {"0.000000E+00", 7},   {"0.00000E+00 ", 6},
      {"0.000000000E+00 ", 10}, {"0.000E+00", 4},    {"0.000000e+00 ", 7},
      {"#0.000e+00", 4},      {" 0.0000E+00", 5}};
  std::mt19937_64 random(20240611);
  std::uniform_real_distribution<double> exponent(-300.0, 300.0);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 0; i < 3000; ++i) {
    double value = std::pow(10.0, exponent(random));
    if (unit(random) < 0.5) value = -value;
    for (const auto& [mask, significant] : masks) {
      const std::string text = TrimST(FormatNumber(value, mask));
      ASSERT_TRUE(std::regex_match(text, real)) << mask << " gave \"" << text << "\"";
      const double back = Val(text);
      const double tolerance = 0.5 * std::pow(10.0, 1 - significant) * (1.0 + 1e-9);
      ASSERT_LE(std::fabs(back - value), std::fabs(value) * tolerance)
          << value << " with \"" << mask << "\" gave \"" << text << "\"";
    }
  }
}

TEST(FormatNumber, FixedMasksReadBackWithinTheirPrecision) {
  const std::vector<std::pair<const char*, int>> masks = {
      {"######0.00 ", 2}, {"#######0.00", 2}, {"###0.0", 1},     {"#####.##", 2},
      {"######.#0", 2},   {"0000.00", 2},      {"00000000.0", 1}, {"#.000000 ", 6},
      {"#0.0", 1},        {"0", 0},            {"000000", 0},     {"########.0", 1}};
  std::mt19937_64 random(7);
  std::uniform_real_distribution<double> values(-1e7, 1e7);
  for (int i = 0; i < 3000; ++i) {
    const double value = i % 3 == 0 ? values(random) / 1e6 : values(random);
    for (const auto& [mask, decimals] : masks) {
      const std::string text = TrimST(FormatNumber(value, mask));
      const double back = Val(text);
      const double tolerance = 0.5 * std::pow(10.0, -decimals) + 1e-9;
      ASSERT_LE(std::fabs(back - value), tolerance)
          << value << " with \"" << mask << "\" gave \"" << text << "\"";
    }
  }
}

TEST(GeneralNumber, ReadsBackWithinFifteenDigits) {
  std::mt19937_64 random(99);
  std::uniform_real_distribution<double> exponent(-300.0, 300.0);
  for (int i = 0; i < 5000; ++i) {
    const double value = (i % 2 ? -1.0 : 1.0) * std::pow(10.0, exponent(random));
    const double back = Val(GeneralNumber(value));
    ASSERT_LE(std::fabs(back - value), std::fabs(value) * 5.0000001e-15) << GeneralNumber(value);
    const std::string str = StrNumber(value);
    ASSERT_TRUE(str[0] == ' ' || str[0] == '-');
    ASSERT_EQ(Val(str), back);
  }
}

}  // namespace
}  // namespace tarno
