// Text helpers: splitting, padding, stripping, paths and the decimal parse.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>
#include <vector>

#include "core/error.h"
#include "core/text.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

using Fields = std::vector<std::string>;

TEST(ParseString, FieldsAreOneBasedWithAPlaceholderAtZero) {
  Fields fields;
  int count = -1;
  ParseString("a,b,c", ",", fields, count);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(fields, (Fields{"", "a", "b", "c"}));
  EXPECT_EQ(ParseString("a,b,c", ","), (Fields{"", "a", "b", "c"}));
}

TEST(ParseString, ARunOfDelimitersCountsAsOne) {
  EXPECT_EQ(ParseString("1.5,,,2.5", ","), (Fields{"", "1.5", "2.5"}));
  EXPECT_EQ(ParseString("x   y  z", " "), (Fields{"", "x", "y", "z"}));
}

TEST(ParseString, LeadingAndTrailingDelimitersGiveNoEmptyField) {
  EXPECT_EQ(ParseString("   12.0   13.0  ", " "), (Fields{"", "12.0", "13.0"}));
  EXPECT_EQ(ParseString(",@TP_000001,1.0,", ","), (Fields{"", "@TP_000001", "1.0"}));
}

TEST(ParseString, BlanksInsideCommaFieldsStay) {
  // Records split at "," keep the blanks around numbers; the numeric parse skips them.
  EXPECT_EQ(ParseString("@WL_000003, 12.5 , -3", ","), (Fields{"", "@WL_000003", " 12.5 ", " -3"}));
}

TEST(ParseString, EmptyInputsAndDelimiters) {
  Fields fields{"stale", "values"};
  int count = 7;
  ParseString("", ",", fields, count);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(fields, (Fields{""}));
  ParseString(",,,", ",", fields, count);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(ParseString("whole line", ""), (Fields{"", "whole line"}));
  EXPECT_EQ(ParseString("", ""), (Fields{""}));
}

TEST(ParseString, MultiCharacterDelimiterIsMatchedWhole) {
  EXPECT_EQ(ParseString("a, b, , c,d", ", "), (Fields{"", "a", "b", "c,d"}));
}

TEST(PadString, AppendsThePadCharacterUpToTheWidth) {
  EXPECT_EQ(PadString("kh", 12, "_"), "kh__________");
  EXPECT_EQ(PadString("kh", 12, " "), "kh          ");
  EXPECT_EQ(PadString("kh", 12, "").size(), 2u);          // empty pad: nothing added
  EXPECT_EQ(PadString("averyverylongtag", 12, "_"), "averyverylongtag");  // longer stays
  EXPECT_EQ(PadString("", 3, "_"), "___");
  EXPECT_EQ(PadString("abc", 0, "_"), "abc");
  EXPECT_EQ(PadString("abc", -4, "_"), "abc");
}

TEST(StripString, RemovesEveryOccurrenceOfTheCharacters) {
  EXPECT_EQ(StripString("ab,c,,d", ","), "abcd");
  EXPECT_EQ(StripString("k-h_1,x", ",-_"), "kh1x");
  EXPECT_EQ(StripString("plain", ","), "plain");
  EXPECT_EQ(StripString("", ","), "");
  EXPECT_EQ(StripString(",,,", ","), "");
}

TEST(StripPaddedString, RemovesTrailingPadAndNulCharactersOnly) {
  EXPECT_EQ(StripPaddedString("kh__________", "_"), "kh");
  EXPECT_EQ(StripPaddedString("k_h_____"), "k_h");  // inner pad characters stay
  EXPECT_EQ(StripPaddedString(std::string("name\0\0", 6), "_"), "name");
  EXPECT_EQ(StripPaddedString("name  ", "_"), "name  ");  // blanks are the trim's business
  EXPECT_EQ(StripPaddedString("____", "_"), "");
}

TEST(TrimST, TrimsBlanksAndTabsAtBothEnds) {
  EXPECT_EQ(TrimST(" \t a b \t"), "a b");
  EXPECT_EQ(TrimST("   "), "");
  EXPECT_EQ(TrimST("x"), "x");
}

TEST(BoolToInt, CheckBoxValues) {
  EXPECT_EQ(BoolToInt(true), 1);
  EXPECT_EQ(BoolToInt(false), 0);
  EXPECT_TRUE(IntToBool(1));
  EXPECT_TRUE(IntToBool(-1));  // a stored true of the old convention
  EXPECT_FALSE(IntToBool(0));
}

TEST(Paths, DirectoryAndNameParts) {
  EXPECT_EQ(GetPathFromFile("C:\\data\\model.trn"), "C:\\data\\");
  EXPECT_EQ(GetPathFromFile("/tmp/models/a.trn"), "/tmp/models/");
  EXPECT_EQ(GetPathFromFile("/tmp/mixed\\a.trn"), "/tmp/mixed\\");
  EXPECT_EQ(GetPathFromFile("a.trn"), "");
  EXPECT_EQ(GetPathFromFile("/a.trn"), "/");
  EXPECT_EQ(GetPathFromFile("dir/"), "dir/");
  EXPECT_EQ(GetNameFromFile("C:\\data\\model.trn"), "model.trn");
  EXPECT_EQ(GetNameFromFile("/tmp/models/a.trn"), "a.trn");
  EXPECT_EQ(GetNameFromFile("a.trn"), "a.trn");
  EXPECT_EQ(GetNameFromFile("dir/"), "");
  // The two parts make up the path again.
  const std::string path = "/x/y\\z/file.dat";
  EXPECT_EQ(GetPathFromFile(path) + GetNameFromFile(path), path);
}

TEST(FileExists, TellsFilesFromDirectoriesAndMissingPaths) {
  test::TempDir temp("tarno_core_text_test");
  const std::filesystem::path dir = temp.Path();
  const auto file = dir / "present.txt";
  { std::ofstream(file) << "x"; }
  EXPECT_TRUE(FileExists(file.string()));
  EXPECT_FALSE(FileExists(dir.string()));
  EXPECT_FALSE(FileExists((dir / "absent.txt").string()));
  EXPECT_FALSE(FileExists(""));
  temp.Remove();
  EXPECT_FALSE(FileExists(file.string()));
}

struct ValCase {
  const char* text;
  double value;
};

class ValTable : public ::testing::TestWithParam<ValCase> {};

TEST_P(ValTable, ReadsTheLeadingNumber) {
  EXPECT_DOUBLE_EQ(Val(GetParam().text), GetParam().value) << '"' << GetParam().text << '"';
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ValTable,
    ::testing::Values(ValCase{"12.5abc", 12.5}, ValCase{"", 0.0}, ValCase{"  3", 3.0},
                      ValCase{"\t7", 7.0}, ValCase{"1e3", 1000.0}, ValCase{"1E+3", 1000.0},
                      ValCase{"2.5e-2x", 0.025}, ValCase{"-.5", -0.5}, ValCase{"+4", 4.0},
                      ValCase{"abc", 0.0}, ValCase{".", 0.0}, ValCase{"-", 0.0},
                      ValCase{"1e", 1.0}, ValCase{"1e+", 1.0}, ValCase{"7E-x", 7.0},
                      ValCase{"1.2.3", 1.2}, ValCase{"12 34", 12.0}, ValCase{"0012", 12.0},
                      ValCase{".0000000E+00 ", 0.0}, ValCase{"-1.2500000E+01 ", -12.5},
                      ValCase{"5.", 5.0}, ValCase{"1,5", 1.0}, ValCase{"- 5", 0.0},
                      ValCase{"1e-400", 0.0}, ValCase{"0.000e999999999999999999", 0.0}));

TEST(Val, ANumberTooLargeForAFloatIsAnOverflow) {
  EXPECT_THROW(Val("1e400"), OverflowError);
  EXPECT_THROW(Val("-1e99999999999999999999"), OverflowError);
  try {
    Val("9e999");
    FAIL() << "no overflow";
  } catch (const OverflowError& e) {
    EXPECT_NE(std::string(e.what()).find("9e999"), std::string::npos);
    EXPECT_EQ(e.number(), error_number::kOverflow);
  }
}

}  // namespace
}  // namespace tarno
