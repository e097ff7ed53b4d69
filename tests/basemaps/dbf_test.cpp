// The dBASE writer's bytes and the reader's checks.

#include <gtest/gtest.h>

#include "basemaps/dbf.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

int U16(const std::string& b, std::size_t at) {
  return static_cast<unsigned char>(b.at(at)) | (static_cast<unsigned char>(b.at(at + 1)) << 8);
}

class DbfTest : public ::testing::Test {
 protected:
  test::TempDir dir_{"tarno-dbf"};
  const DbfDate date_{2024, 3, 9};
};

TEST_F(DbfTest, ColumnsAreWrittenByTypeLeftJustifiedWithTheHeaderLayout) {
  const auto path = dir_ / "levels.dbf";
  WriteDBFColumns(path,
                  {{"LABEL NAME", "C", "", {std::string("WL_0001"), std::string("a")}},
                   {"LEVEL", "N", "######.#0", {12.5, -3.0}},
                   {"ACTIVE", "L", "", {true, false}},
                   {"DAY", "D", "", {DbfDate{1999, 12, 31}, DbfDate{2000, 1, 2}}}},
                  2, date_);
  const std::string b = test::ReadFile(path);
  ASSERT_FALSE(b.empty());
  EXPECT_EQ(b[0], 3);
  EXPECT_EQ(b[1], 124);  // 2024 - 1900
  EXPECT_EQ(b[2], 3);
  EXPECT_EQ(b[3], 9);
  EXPECT_EQ(U16(b, 4), 2);
  EXPECT_EQ(U16(b, 6), 0);
  const int header = 32 + 32 * 4 + 1;
  EXPECT_EQ(U16(b, 8), header);
  // Lengths: "WL_0001" 7, "12.50" and "-3.00" 5, L 1, D 8.
  const int record = 1 + 7 + 5 + 1 + 8;
  EXPECT_EQ(U16(b, 10), record);
  for (int k = 12; k < 32; ++k) EXPECT_EQ(b[k], 0);
  // The first field: name without its blank, zero-filled to 11 bytes, the type, 4
  // zeros, the length, the decimals, 14 zeros.
  EXPECT_EQ(b.substr(32, 11), std::string("LABELNAME\0\0", 11));
  EXPECT_EQ(b[43], 'C');
  EXPECT_EQ(b.substr(44, 4), std::string(4, '\0'));
  EXPECT_EQ(b[48], 7);
  EXPECT_EQ(b[49], 0);
  EXPECT_EQ(b.substr(50, 14), std::string(14, '\0'));
  EXPECT_EQ(b[64 + 11], 'N');
  EXPECT_EQ(b[64 + 16], 5);
  EXPECT_EQ(b[64 + 17], 2);  // the mask's two digits behind its last point
  EXPECT_EQ(b[96 + 16], 1);
  EXPECT_EQ(b[128 + 16], 8);
  EXPECT_EQ(b[header - 1], 13);
  EXPECT_EQ(b.substr(header, record), " WL_000112.50T19991231");
  EXPECT_EQ(b.substr(header + record, record), " a      -3.00F20000102");
  EXPECT_EQ(b.size(), static_cast<std::size_t>(header + 2 * record + 1));
  EXPECT_EQ(b.back(), 26);
}

TEST_F(DbfTest, TableRowsAreCutOrFilledToTheirFields) {
  const auto path = dir_ / "t.dbf";
  WriteDBFTable(path, {{"NAME", 'C', 4, 0}, {"Q", 'N', 6, 1}}, {{"Wellfield", "1.5"}, {"A"}, {}},
                date_);
  const std::string b = test::ReadFile(path);
  const int header = 32 + 64 + 1;
  EXPECT_EQ(b.substr(header, 11), " Well1.5   ");
  EXPECT_EQ(b.substr(header + 11, 11), " A         ");
  EXPECT_EQ(b.substr(header + 22, 11), std::string(11, ' '));
  const DbfTable t = ReadDBF(path);
  ASSERT_EQ(t.Records.size(), 3u);
  EXPECT_EQ(t.Records[0][0], "Well");
  EXPECT_EQ(t.Records[0][1], "1.5");
  EXPECT_EQ(t.Records[2][1], "");
}

TEST_F(DbfTest, ColumnEdgeCases) {
  const auto path = dir_ / "e.dbf";
  // Fewer values than records, an unknown type taken as C, an empty table, names
  // longer than ten characters.
  WriteDBFColumns(path,
                  {{"AVERYLONGFIELDNAME", DBFTypeFromField("currency"), "", {std::string("x")}},
                   {"N0", "N", "0", {7.6, 2.0, 100.0}}},
                  3, date_);
  DbfTable t = ReadDBF(path);
  ASSERT_EQ(t.Fields.size(), 2u);
  EXPECT_EQ(t.Fields[0].Name, "AVERYLONGF");
  EXPECT_EQ(t.Fields[0].Type, 'C');
  EXPECT_EQ(t.Fields[0].Length, 1);
  EXPECT_EQ(t.Fields[1].Length, 3);
  EXPECT_EQ(t.Fields[1].Decimals, 0);
  EXPECT_EQ(t.Records[0][1], "8");
  EXPECT_EQ(t.Records[2][1], "100");
  EXPECT_EQ(t.Records[1][0], "");

  WriteDBFColumns(path, {{"A", "C", "", {}}}, 0, date_);
  t = ReadDBF(path);
  EXPECT_EQ(t.Records.size(), 0u);
  EXPECT_EQ(t.Fields.at(0).Length, 1);

  // A value longer than a character field may be (254) is cut.
  WriteDBFColumns(path, {{"LONG", "C", "", {std::string(400, 'z')}}}, 1, date_);
  t = ReadDBF(path);
  EXPECT_EQ(t.Records[0][0], std::string(254, 'z'));
}

TEST(DbfTypeTest, ProjectFieldTypes) {
  EXPECT_EQ(DBFTypeFromField("boolean"), "L");
  for (const char* n : {"integer", "single", "double", "long"}) EXPECT_EQ(DBFTypeFromField(n), "N");
  EXPECT_EQ(DBFTypeFromField("text"), "C");
  EXPECT_EQ(DBFTypeFromField("memo"), "Unknown!");
  EXPECT_EQ(DBFTypeWidth('M'), 10);
  EXPECT_EQ(DBFTypeWidth('L'), 1);
  EXPECT_EQ(DBFTypeWidth('D'), 8);
  EXPECT_EQ(DBFTypeWidth('C'), 0);
}

TEST_F(DbfTest, ReaderRejectsBadHeadersNamingTheFile) {
  const auto path = dir_ / "good.dbf";
  WriteDBFColumns(path, {{"A", "C", "", {std::string("xy"), std::string("z")}}}, 2, date_);
  const std::string good = test::ReadFile(path);
  auto failsWith = [&](std::string bytes, const std::string& words) {
    try {
      ReadDBFBytes(bytes, "/maps/bad.dbf");
      ADD_FAILURE() << "no error for " << words;
    } catch (const Error& e) {
      const std::string what = e.what();
      EXPECT_NE(what.find("/maps/bad.dbf"), std::string::npos) << what;
      EXPECT_NE(what.find(words), std::string::npos) << what;
    }
  };
  failsWith(good.substr(0, 20), "shorter than a header");
  std::string b = good;
  b[8] = 10;  // header length below one field
  b[9] = 0;
  failsWith(b, "header length");
  b = good;
  b[8] = static_cast<char>(0xFF);
  b[9] = static_cast<char>(0xFF);
  failsWith(b, "header length");
  b = good;
  b[64] = 'X';  // the end mark overwritten
  failsWith(b, "field list");
  b = good;
  b[10] = 9;  // record length other than the fields'
  failsWith(b, "record length");
  b = good;
  b[4] = 100;  // more records than bytes
  failsWith(b, "records of");
  b = good;
  b[7] = 0x7F;  // a record count near 2^31
  failsWith(b, "records of");
  EXPECT_NO_THROW(ReadDBFBytes(good, "good"));
  EXPECT_THROW(ReadDBF(dir_ / "none.dbf"), Error);
}

TEST_F(DbfTest, ReaderKeepsDeletedRecordsInPlaceAndConvertsLatin1) {
  const auto path = dir_ / "l.dbf";
  WriteDBFTable(path, {{"NAME", 'C', 6, 0}}, {{"M\xFCller"}, {"gone"}, {"  pad "}}, date_);
  std::string b = test::ReadFile(path);
  b[32 + 32 + 1 + 7] = '*';
  const DbfTable t = ReadDBFBytes(b, "l.dbf");
  ASSERT_EQ(t.Records.size(), 3u);
  EXPECT_EQ(t.Records[0][0], "M\xC3\xBCller");  // Latin-1 u-umlaut as UTF-8
  EXPECT_FALSE(t.Deleted[0]);
  EXPECT_TRUE(t.Deleted[1]);
  EXPECT_EQ(t.Records[2][0], "pad");
  EXPECT_EQ(t.FieldIndex("name"), 0);
  EXPECT_EQ(t.FieldIndex("other"), -1);
}

}  // namespace
}  // namespace tarno
