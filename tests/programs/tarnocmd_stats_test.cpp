// tarnocmd stats: the eight statistics per kind of observation, from TPResults.
#include <gtest/gtest.h>

#include "store/database.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

class TarnocmdStats : public TarnocmdProject {};

TEST_F(TarnocmdStats, PrintsTheStatisticsOfEachKindAndSaysWhenThereAreTooFew) {
  MakeProject("stats");
  {
    Database db = Database::Open(project_);
    db.ExecuteRaw(
        "insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, Type) values "
        "('P1', 1, 10, 8, -2, 'Piezometer'), ('P2', 2, 10, 11, 1, 'Piezometer'), "
        "('P3', 3, 10, 13, 3, 'Piezometer'), ('P4', 4, 10, 16, 6, 'Piezometer');"
        "insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, ObsStreamFlow, "
        "ModelFlow, Type) values ('G1', 5, 0, 0, 4, 20, 24, 'Gage')");
  }
  const RunResult r = Run({"stats", project_});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out,
            "Piezometers\n"
            "  Maximum Difference: 6.0\n"
            "  Minimum Difference: -2.0\n"
            "  Average Difference: 2.0\n"
            "  Median Difference: 2.0\n"
            "  Mean Absolute Difference: 3.0\n"
            "  Root-Mean-Square Difference: 3.5\n"
            "  Observations: 4\n"
            "  Sum of Squared Differences: 50.0\n"
            "\n"
            "Gages\n"
            "  There are not enough points for Gage statistics.\n"
            "\n"
            "Lake Stages\n"
            "  There are not enough points for Lake Stage statistics.\n");
}

TEST_F(TarnocmdStats, RefusesAFileThatIsNoProjectAndBadUsage) {
  MakeProject("stats");
  const RunResult missing = Run({"stats", (dir_ / "none.trn").string()});
  EXPECT_EQ(missing.status, 1);
  EXPECT_NE(missing.err.find("none.trn"), std::string::npos) << missing.err;
  EXPECT_EQ(Run({"stats"}).status, 2);
}

}  // namespace
}  // namespace tarno::test
