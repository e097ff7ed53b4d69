// The program's Jet-dialect query texts, translated and run against a real
// new project file.

#include <gtest/gtest.h>

#include <cmath>

#include "store/database.h"
#include "store/schema.h"
#include "store_test_util.h"

namespace tarno {
namespace {

TEST(TranslateJetSql, RewritesOnlyOutsideLiterals) {
    EXPECT_EQ(TranslateJetSql("DELETE * FROM LSResults;"), "DELETE FROM LSResults");
    EXPECT_EQ(TranslateJetSql("delete  *  from x"), "delete  from x");
    EXPECT_EQ(TranslateJetSql("select * from Model where chkScenarioHydCond = TRUE"),
              "select * from Model where chkScenarioHydCond = 1");
    EXPECT_EQ(TranslateJetSql("select * from Domains where FarFieldBoundary=False"),
              "select * from Domains where FarFieldBoundary=0");
    // Inside literals nothing changes (apart from the quote style).
    EXPECT_EQ(TranslateJetSql("select * from Wells where Label='True * False'"),
              "select * from Wells where Label='True * False'");
    EXPECT_EQ(TranslateJetSql("select * from Wells where Label=\"it's\""),
              "select * from Wells where Label='it''s'");
    EXPECT_EQ(TranslateJetSql("select * from Wells where Label='a''b';  ;"),
              "select * from Wells where Label='a''b'");
    // A qualified name that happens to be True is a name.
    EXPECT_EQ(TranslateJetSql("select t.True from t"), "select t.True from t");
    EXPECT_EQ(TranslateJetSql("select [Label] from Wells"), "select [Label] from Wells");
}

TEST(TranslateJetSql, LikePatterns) {
    EXPECT_EQ(TranslateJetSql("select * from Basemaps where MapName like '*.bbm'"),
              "select * from Basemaps where MapName like '%.bbm'");
    EXPECT_EQ(TranslateJetSql("x not like 'a?c*'"), "x not like 'a_c%'");
    // '_' and '%' are plain characters to Jet and must stay plain.
    EXPECT_EQ(TranslateJetSql("TARNOLabel like 'WL_00012*'"),
              "TARNOLabel like 'WL\\_00012%' ESCAPE '\\'");
    EXPECT_THROW(TranslateJetSql("x like 'a#'"), StoreError);
    EXPECT_THROW(TranslateJetSql("x like '[ab]*'"), StoreError);
    EXPECT_THROW(TranslateJetSql("x = 'open"), StoreError);
}

TEST(TranslateJetSql, AliasesReusedInTheSameSelectList) {
    EXPECT_EQ(TranslateJetSql("select vid,(5-x) as dx,(7-y) as dy,dx*dx+dy*dy as r2 from vertices order by 4;"),
              "select vid,(5-x) as dx,(7-y) as dy,((5-x))*((5-x))+((7-y))*((7-y)) as r2 from vertices order by 4");
    // Not replaced: a qualified name, a function of the same name, the alias itself.
    EXPECT_EQ(TranslateJetSql("select a+1 as b, t.b, b(1) from t"), "select a+1 as b, t.b, b(1) from t");
    // The alias of an outer select does not leak into a subquery's list and back.
    EXPECT_EQ(TranslateJetSql("select x as a from t where y in (select a from u)"),
              "select x as a from t where y in (select a from u)");
}

class QueryTextTest : public test::TempDirTest {
protected:
    void SetUp() override {
        TempDirTest::SetUp();
        DBNewDatabase(Path("q.trn"), "queries", true, true);
        db_ = Database::Open(Path("q.trn"));
        // Two strings (a lake and a stream), a well, a test point.
        db_.Execute("INSERT INTO Polygons (Closed) VALUES (1)");
        lakePid_ = db_.LastInsertId();
        db_.Execute("INSERT INTO Polygons (Closed) VALUES (0)");
        streamPid_ = db_.LastInsertId();
        db_.Execute("INSERT INTO Lakes (PID, Label, StageTableFilename) VALUES (" + std::to_string(lakePid_) +
                    ", 'Lake1', 'LAKE.TXT')");
        db_.Execute("INSERT INTO LinesinkStrings (PID, Label, Lake, chkScenario, ScenResistance, StartingHead, EndingHead) VALUES (" +
                    std::to_string(streamPid_) + ", 'Creek', -1, True, 'WET', 10, 20)");
        for (int s = 0; s < 3; ++s) {
            db_.Execute("INSERT INTO Vertices (PID, Seq, X, Y) VALUES (" + std::to_string(lakePid_) + ", " +
                        std::to_string(200 - 100 * s) + ", " + std::to_string(s) + ", 0)");
            db_.Execute("INSERT INTO Vertices (PID, Seq, X, Y) VALUES (" + std::to_string(streamPid_) + ", " +
                        std::to_string(100 * s) + ", 10, " + std::to_string(s) + ")");
        }
        db_.Execute("INSERT INTO Vertices (X, Y) VALUES (3, 4)");
        wellVid_ = db_.LastInsertId();
        db_.Execute("INSERT INTO Wells (VID, Label, Head, HeadSpecified) VALUES (" + std::to_string(wellVid_) +
                    ", 'W1', 30, 1)");
        db_.Execute("INSERT INTO Vertices (X, Y) VALUES (50, 50)");
        tpVid_ = db_.LastInsertId();
        db_.Execute("INSERT INTO TestPoints (VID, Label, ObsHead, Type) VALUES (" + std::to_string(tpVid_) +
                    ", 'TP1', 12.5, 'Lake Stage')");
    }
    std::int64_t Count(const std::string& jet) {
        Statement s = db_.Prepare(jet);
        std::int64_t n = 0;
        while (s.Step()) ++n;
        return n;
    }
    Database db_;
    std::int64_t lakePid_ = 0, streamPid_ = 0, wellVid_ = 0, tpVid_ = 0;
};

TEST_F(QueryTextTest, SubqueryFindsTheOwnerAndOrdersBySeq) {
    Statement s = db_.Prepare("select * from Vertices where PID in (select PID from Lakes) order by Seq;");
    std::vector<double> xs;
    while (s.Step()) xs.push_back(s.GetDouble("X"));
    EXPECT_EQ(xs, (std::vector<double>{2, 1, 0}));
    EXPECT_EQ(Count("select * from Vertices where PID in (select PID from LineSinkStrings) order by Seq;"), 3);
}

TEST_F(QueryTextTest, ScenarioAndFlagQueries) {
    EXPECT_EQ(Count("SELECT * FROM Linesinkstrings WHERE Lake=-1 AND Label='creek'"), 1);
    EXPECT_EQ(Count("select * from LinesinkStrings where chkScenario = True and ScenResistance='wet'"), 1);
    EXPECT_EQ(Count("select distinct ScenResistance from LinesinkStrings where chkScenario = TRUE"), 1);
    EXPECT_EQ(Count("Select * from LinesinkStrings where ChkScenario=True and ScenResistance=''"), 0);
    EXPECT_EQ(Count("select * from Model where chkScenarioHydCond = True or chkScenarioBaseElev = True"), 0);
    EXPECT_EQ(Count("Select * from Domains where FarFieldBoundary=False"), 0);
    EXPECT_EQ(Count("select * from testpoints where type = 'Lake Stage'"), 1);
    EXPECT_EQ(Count("select * from TestPoints where Type = 'Piezometer'"), 0);
}

TEST_F(QueryTextTest, ComputedColumnsAndAggregates) {
    Statement a = db_.Prepare(
        "select 0.5*avg(startinghead+endinghead) as AvgHead from LinesinkStrings where HeadSpecified=1;");
    ASSERT_TRUE(a.Step());
    EXPECT_DOUBLE_EQ(a.GetDouble("AvgHead"), 15.0);

    Statement m = db_.Prepare(
        "select max(X) as MaxX,min(X) as MinX,Max(Y) as MaxY,min(Y) as MinY from Vertices;");
    ASSERT_TRUE(m.Step());
    EXPECT_EQ(m.GetDouble("MaxX"), 50);
    EXPECT_EQ(m.GetDouble("MinY"), 0);

    // The nearest vertex to (49, 48): the alias r2 reuses dx and dy.
    Statement n = db_.Prepare("select vid,(" + std::string("49") + "-x) as dx,(" + "48" +
                              "-y) as dy,dx*dx+dy*dy as r2 from vertices order by 4;");
    ASSERT_TRUE(n.Step());
    EXPECT_EQ(n.GetInt64("vid"), tpVid_);
    EXPECT_DOUBLE_EQ(n.GetDouble("r2"), 1 + 4);
    // A negative coordinate written into the text.
    Statement neg = db_.Prepare("select vid,(-1-x) as dx,(0-y) as dy,dx*dx+dy*dy as r2 from vertices order by 4;");
    ASSERT_TRUE(neg.Step());
    EXPECT_DOUBLE_EQ(neg.GetDouble("r2"), 1);
}

TEST_F(QueryTextTest, JoinsAndQualifiedColumns) {
    Statement j = db_.Prepare(
        "select Vertices.VID,Vertices.X,Vertices.Y,TestPoints.ObsHead,TestPoints.label,TestPoints.Type from "
        "Vertices inner join TestPoints on Vertices.VID = TestPoints.VID");
    ASSERT_TRUE(j.Step());
    EXPECT_EQ(j.GetDouble("X"), 50);
    EXPECT_EQ(j.GetText("TestPoints.Label"), "TP1");
    EXPECT_EQ(j.GetDouble("ObsHead"), 12.5);
    Statement w = db_.Prepare(
        "select wells.vid,vertices.x,vertices.y,wells.head,wells.radius,wells.ppwell,wells.transient,"
        "wells.nparticles,wells.setback from vertices,wells where wells.vid=vertices.vid");
    ASSERT_TRUE(w.Step());
    EXPECT_EQ(w.GetDouble("Head"), 30);
    EXPECT_EQ(w.GetInt64("NParticles"), -1);
    Statement star = db_.Prepare(
        "select Vertices.X,Vertices.Y,Wells.* from Vertices inner join Wells on Vertices.VID = Wells.VID "
        "where Wells.HeadSpecified=0 and Wells.PPWell=0 and Wells.Pond=0 and Wells.Transient=0;");
    EXPECT_FALSE(star.Step());
}

TEST_F(QueryTextTest, InsertSelectAndDeleteStar) {
    db_.Execute("DELETE * FROM TPResults;");
    db_.Execute(
        "INSERT INTO TPResults SELECT TestPoints.Label, TestPoints.VID, TestPoints.ObsHead, 0.0 as ModelHead, "
        "0.0 as Difference, Vertices.X, Vertices.Y, TestPoints.ObsStreamFlow, 0.0 as ModelFlow, TestPoints.Type "
        "FROM TestPoints INNER JOIN Vertices ON TestPoints.VID=Vertices.VID;");
    Statement s = db_.Prepare("select * from TPResults where VID=" + std::to_string(tpVid_));
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.GetText("Label"), "TP1");
    EXPECT_EQ(s.GetDouble("X"), 50);
    EXPECT_EQ(s.GetText("Type"), "Lake Stage");
    EXPECT_EQ(Count("select * from TPResults where type = 'Lake Stage' order by Difference;"), 1);
    db_.Execute("DELETE * FROM TPResults;");
    EXPECT_EQ(Count("select * from TPResults"), 0);
}

TEST_F(QueryTextTest, LikeWithJetWildcards) {
    db_.Execute("INSERT INTO Basemaps (MapName, Show) VALUES ('C:\\maps\\Roads.BBM', True)");
    db_.Execute("INSERT INTO Basemaps (MapName, Show) VALUES ('C:\\maps\\air.tif', True)");
    db_.Execute("INSERT INTO Basemaps (MapName, Show) VALUES ('C:\\maps\\old.bbm', False)");
    EXPECT_EQ(Count("select * from Basemaps where Show=TRUE and MapName like '*.bbm'"), 1);
    EXPECT_EQ(Count("select * from Basemaps where show = true and Mapname not like '*.bbm'"), 1);

    // Solver labels: the underscore is a plain character, '*' the wildcard.
    db_.Execute("INSERT INTO WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head) "
                "VALUES ('W1', 'WL_000012', 0, 0, 1, 0, 0, 5)");
    db_.Execute("INSERT INTO WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head) "
                "VALUES ('W2', 'WLX000012', 0, 0, 1, 0, 0, 6)");
    EXPECT_EQ(Count("select * from WLResults where TARNOLabel like 'WL_000012*'"), 1);
    EXPECT_EQ(Count("select * from WLResults where TARNOLabel like 'wl?000012'"), 2);
}

TEST_F(QueryTextTest, MissingColumnAndBadTextGiveTheEnginesDescription) {
    try {
        db_.Prepare("select NoSuchField from Model");
        FAIL();
    } catch (const StoreError& e) {
        EXPECT_NE(e.description().find("no such column: NoSuchField"), std::string::npos) << e.description();
        EXPECT_NE(std::string(e.what()).find("q.trn"), std::string::npos) << e.what();
    }
    try {
        db_.Prepare("select * from Basemaps where MapName like '#1'");
        FAIL();
    } catch (const StoreError& e) {
        EXPECT_EQ(e.path(), Path("q.trn").string()) << "translation errors name the file too";
    }
}

}  // namespace
}  // namespace tarno
