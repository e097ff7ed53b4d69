// tarnocmd export and import of the XML element files, run as a user runs them: the
// boxes and the log's lists on standard output, the overwrite question answered by
// --yes, the schemas found beside the program, and the elements carried from one
// project to another.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "program_test_util.h"
#include "store/database.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

class TarnocmdXml : public TarnocmdProject {
 protected:
  void SetUp() override {
    MakeProject("xmlsrc");
    ASSERT_EQ(Run({"add", project_, "barrier", "0", "0", "100", "100", "--set", "Label=Wall",
                   "HydCond=0.25", "Thickness=2"})
                  .status,
              0);
    ASSERT_EQ(Run({"add", project_, "linesink", "0", "50", "100", "50", "200", "60", "--set",
                   "Label=Creek", "StartingHead=10", "EndingHead=9", "Resistance=1", "Width=2"})
                  .status,
              0);
  }
  std::int64_t Count(const std::string& project, const std::string& table) {
    Database db = Database::OpenReadOnly(project);
    Statement st = db.PrepareRaw("select count(*) from " + table);
    st.Step();
    return st.GetInt64(0);
  }
};

TEST_F(TarnocmdXml, ExportThenImportIntoAnotherProject) {
  const std::string brr = (dir_ / "walls.brr.xml").string();
  RunResult r = Run({"export", project_, "brr.xml", brr});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("BRR.XML Export: Export of horizontal barriers complete!\n"
                       "BRR.XML Export: 1 barriers exported.\n"),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("  Horizontal barrier 'Wall' was successfully exported.\n"),
            std::string::npos);
  EXPECT_TRUE(fs::exists(dir_ / "ExportHorizontalBarriers.log"));

  // A second export is refused unless --yes.
  r = Run({"export", project_, "brr.xml", brr});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("Abort: Export of horizontal barriers aborted\n"), std::string::npos)
      << r.out;
  r = Run({"export", project_, "BRR.XML", brr, "--yes"});
  EXPECT_EQ(r.status, 0) << r.out << r.err;

  const std::string lss = (dir_ / "streams.lss.xml").string();
  ASSERT_EQ(Run({"export", project_, "lss.xml", lss}).status, 0);

  const std::string other = (dir_ / "other.trn").string();
  ASSERT_EQ(Run({"new", other, "--yes", "--base-name", "other"}).status, 0);
  r = Run({"import", other, brr, lss});
  ASSERT_EQ(r.status, 0) << r.out << r.err;
  EXPECT_NE(
      r.out.find(
          "BRR.XML Import: Import of Elements complete!\nBRR.XML Import: 2 elements imported.\n"),
      std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("  Imported 1 from the 1 horizontal barriers in " + brr + "\n"),
            std::string::npos);
  EXPECT_EQ(Count(other, "NoFlowStrings"), 1);
  EXPECT_EQ(Count(other, "LinesinkStrings"), 1);
  EXPECT_EQ(Count(other, "Vertices"), 5);

  // Again: each element already exists with its vertices, nothing comes in.
  r = Run({"import", other, lss});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("Import: No elements were imported.\n"), std::string::npos) << r.out;
  EXPECT_EQ(Count(other, "LinesinkStrings"), 1);
}

TEST_F(TarnocmdXml, ASchemaFailureIsPrintedWithTheFileAndLine) {
  const std::string bad = (dir_ / "bad.inh.xml").string();
  ASSERT_TRUE(WriteFile(bad,
                        "<?xml version='1.0'?>\n<InhomogeneitiesFile version=\"1\">\n"
                        "<Inhomogeneity><HydCond>high</HydCond></Inhomogeneity>\n"
                        "</InhomogeneitiesFile>\n"));
  const RunResult r = Run({"import", project_, bad});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("  The file " + bad + " is not valid according to the schema ("),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("INH_XML_File_Format.xsd) because: line 3: "), std::string::npos) << r.out;
  EXPECT_NE(
      r.out.find("  Skipped import of " + bad + " because it was not a valid .INH.XML file!\n"),
      std::string::npos);
  EXPECT_NE(r.out.find("Import: No elements were imported.\n"), std::string::npos);
}

}  // namespace
}  // namespace tarno::test
