// The schema as SQLite holds it after DBNewDatabase, against the schema
// table and against the values a new project must read.

#include <gtest/gtest.h>

#include <cmath>
#include <regex>
#include <set>

#include "store/database.h"
#include "store/schema.h"
#include "store_test_util.h"

namespace tarno {
namespace {

class SchemaTest : public test::TempDirTest {
protected:
    void SetUp() override {
        TempDirTest::SetUp();
        file_ = Path("new.trn");
        DBNewDatabase(file_, "A test project", /*basemapMeters=*/true, /*computeMeters=*/false);
        db_ = Database::Open(file_);
    }
    std::filesystem::path file_;
    Database db_;
};

std::string ExpectedType(const FieldDef& f) {
    switch (f.type) {
        case FieldType::Boolean: return "BOOLEAN";
        case FieldType::Integer: return "SMALLINT";
        case FieldType::Long: return "INTEGER";
        case FieldType::Double: return "DOUBLE";
        case FieldType::Date: return "DATETIME";
        case FieldType::Text: return f.size ? "VARCHAR(" + std::to_string(f.size) + ")" : "TEXT";
    }
    return "?";
}

TEST(SchemaData, TablesAndFieldCountsInCreationOrder) {
    // The tables of version 123 in their order of creation, with the number
    // of fields each has.
    const std::vector<std::pair<std::string, std::size_t>> expected = {
        {"Basemaps", 5},     {"MapLabels", 2},   {"Lakes", 9},         {"LinesinkStrings", 29},
        {"Model", 65},       {"NoFlowStrings", 9}, {"Inhomogeneities", 19}, {"Particles", 4},
        {"Polygons", 2},     {"Project", 5},     {"TestPoints", 7},    {"TextLabels", 11},
        {"Vertices", 5},     {"Wells", 18},      {"LSResults", 18},    {"INResults", 20},
        {"NFResults", 14},   {"TPResults", 10},  {"FIResults", 3},     {"WLResults", 8},
        {"SavedWindows", 5}, {"FluxInspect", 2}, {"Domains", 5},       {"Capzones", 2}};
    auto schema = ProjectSchema();
    ASSERT_EQ(schema.size(), 24u);
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(schema[i].name, expected[i].first) << "table " << i;
        EXPECT_EQ(schema[i].fields.size(), expected[i].second) << expected[i].first;
    }
}

TEST(SchemaData, NamesAreUniqueAndSpelledAsInTheFileFormat) {
    std::set<std::string> tables;
    for (const TableDef& t : ProjectSchema()) {
        EXPECT_TRUE(tables.insert(std::string(t.name)).second) << t.name;
        std::set<std::string> fields;
        for (const FieldDef& f : t.fields) EXPECT_TRUE(fields.insert(std::string(f.name)).second) << f.name;
    }
    const TableDef* lakes = FindTable("LAKES");
    ASSERT_NE(lakes, nullptr);
    EXPECT_NE(FindField(*lakes, "InterriorConductivity"), nullptr);
    EXPECT_EQ(FindField(*lakes, "InteriorConductivity"), nullptr);
    EXPECT_EQ(FindTable("NoSuchTable"), nullptr);
}

TEST(SchemaData, ClassicColoursArePackedRedGreenBlue) {
    EXPECT_EQ(ClassicColour(0), 0);
    EXPECT_EQ(ClassicColour(1), 128 * 65536);  // blue
    EXPECT_EQ(ClassicColour(4), 128);          // red
    EXPECT_EQ(ClassicColour(12), 255);         // bright red
    EXPECT_EQ(ClassicColour(15), 0xFFFFFF);
    EXPECT_THROW(ClassicColour(16), std::out_of_range);
    EXPECT_THROW(ClassicColour(-1), std::out_of_range);
}

TEST_F(SchemaTest, CatalogueHasTheTablesInOrder) {
    Statement s = db_.PrepareRaw(
        "select name from sqlite_master where type='table' and name not like 'sqlite_%' order by rowid");
    std::vector<std::string> got;
    while (s.Step()) got.push_back(s.GetText(0));
    std::vector<std::string> want;
    for (const TableDef& t : ProjectSchema()) want.emplace_back(t.name);
    EXPECT_EQ(got, want);
}

TEST_F(SchemaTest, CatalogueColumnsMatchTheSchemaTable) {
    for (const TableDef& t : ProjectSchema()) {
        SCOPED_TRACE(std::string(t.name));
        Statement s = db_.PrepareRaw("select name, type, \"notnull\", dflt_value, pk from pragma_table_info(?1) order by cid");
        s.Bind(1, t.name);
        std::size_t i = 0;
        while (s.Step()) {
            ASSERT_LT(i, t.fields.size());
            const FieldDef& f = t.fields[i];
            EXPECT_EQ(s.GetText("name"), f.name);
            EXPECT_EQ(s.GetText("type"), ExpectedType(f)) << f.name;
            EXPECT_EQ(s.GetBool("notnull"), f.required) << f.name;
            EXPECT_EQ(s.GetBool("pk"), f.autoIncrement) << f.name;
            EXPECT_EQ(s.IsNull("dflt_value"), f.defaultKind == DefaultKind::None) << f.name;
            ++i;
        }
        EXPECT_EQ(i, t.fields.size());
    }
}

TEST_F(SchemaTest, IndexesAreThoseOfTheSchema) {
    for (const TableDef& t : ProjectSchema()) {
        SCOPED_TRACE(std::string(t.name));
        Statement s = db_.PrepareRaw("select name, \"unique\", origin from pragma_index_list(?1)");
        s.Bind(1, t.name);
        std::vector<std::pair<std::string, bool>> got;
        while (s.Step()) got.emplace_back(s.GetText(0), s.GetBool(1));
        const bool autoKey = t.index && FindField(t, t.index->field)->autoIncrement;
        if (!t.index || autoKey) {
            EXPECT_TRUE(got.empty());
            continue;
        }
        ASSERT_EQ(got.size(), 1u);
        EXPECT_EQ(got[0].first, std::string(t.name) + "_" + std::string(t.index->name));
        EXPECT_EQ(got[0].second, t.index->unique);
        Statement c = db_.PrepareRaw("select name from pragma_index_info(?1)");
        c.Bind(1, got[0].first);
        ASSERT_TRUE(c.Step());
        EXPECT_EQ(c.GetText(0), t.index->field);
    }
}

TEST_F(SchemaTest, IndexKindsOfTheSpecialTables) {
    // TextLabels: primary on X but not unique; MapLabels: plain; Basemaps: none.
    const TableDef* tl = FindTable("TextLabels");
    ASSERT_TRUE(tl->index);
    EXPECT_TRUE(tl->index->primary);
    EXPECT_FALSE(tl->index->unique);
    EXPECT_FALSE(FindTable("MapLabels")->index->primary);
    EXPECT_FALSE(FindTable("MapLabels")->index->unique);
    EXPECT_FALSE(FindTable("Basemaps")->index.has_value());
    EXPECT_TRUE(FindTable("Wells")->index->unique);

    db_.Execute("INSERT INTO TextLabels (Text, X) VALUES ('a', 5)");
    db_.Execute("INSERT INTO TextLabels (Text, X) VALUES ('b', 5)");
    db_.Execute("INSERT INTO Basemaps (MapName) VALUES ('a.bbm')");
    db_.Execute("INSERT INTO Basemaps (MapName) VALUES ('a.bbm')");
    db_.Execute("INSERT INTO MapLabels (MapName, TextField) VALUES ('a.bbm', 'NAME')");
    db_.Execute("INSERT INTO MapLabels (MapName, TextField) VALUES ('a.bbm', 'NAME')");
    db_.Execute("INSERT INTO Wells (VID) VALUES (7)");
    EXPECT_THROW(db_.Execute("INSERT INTO Wells (VID) VALUES (7)"), StoreError);
}

TEST_F(SchemaTest, NewModelRowHoldsEveryDefault) {
    Statement s = db_.Prepare("select * from Model;");
    ASSERT_TRUE(s.Step());
    for (const FieldDef& f : FindTable("Model")->fields) {
        SCOPED_TRACE(std::string(f.name));
        switch (f.defaultKind) {
            case DefaultKind::Literal:
                if (f.type == FieldType::Text) {
                    EXPECT_EQ(s.GetText(f.name), f.defaultValue);
                } else if (f.type == FieldType::Boolean) {
                    EXPECT_EQ(s.GetBool(f.name), f.defaultValue == "True");
                } else {
                    EXPECT_DOUBLE_EQ(s.GetDouble(f.name), std::stod(std::string(f.defaultValue)));
                }
                break;
            case DefaultKind::ColourIndex:
                EXPECT_EQ(s.GetInt64(f.name), ClassicColour(std::stoi(std::string(f.defaultValue))));
                break;
            default: break;
        }
    }
    EXPECT_FALSE(s.Step()) << "Model has exactly one row";
}

TEST_F(SchemaTest, NewFileReadsTheDocumentedValues) {
    Statement m = db_.Prepare("select * from model;");
    ASSERT_TRUE(m.Step());
    EXPECT_EQ(m.Kind("AQThickness"), ValueKind::Text);
    EXPECT_EQ(m.GetText("AQThickness"), "1");
    EXPECT_EQ(m.GetDouble("SOLVERX0"), -100);
    EXPECT_EQ(m.GetDouble("SOLVERY0"), -100);
    EXPECT_EQ(m.GetDouble("WINDOWX1"), 100);
    EXPECT_EQ(m.GetDouble("WINDOWY1"), 100);
    EXPECT_EQ(m.GetDouble("WINDOWX2"), -100);
    EXPECT_EQ(m.GetDouble("WINDOWY2"), -100);
    EXPECT_DOUBLE_EQ(m.GetDouble("SaltWSpecGravity"), 1.035);
    EXPECT_EQ(m.GetText("ContourLineType"), "DOT");
    EXPECT_EQ(m.GetInt64("ContourLineColor"), 0x800000);
    EXPECT_EQ(m.GetInt64("PathlineLineColor"), 0x000080);
    EXPECT_TRUE(m.GetBool("BasemapMeters"));
    EXPECT_FALSE(m.GetBool("ComputeMeters"));

    Statement p = db_.Prepare("select * from Project;");
    ASSERT_TRUE(p.Step());
    EXPECT_EQ(p.GetInt64("ProjectVersion"), kProjectVersion);
    EXPECT_EQ(p.GetText("Description"), "A test project");
    EXPECT_EQ(p.GetText("TARNOBaseName"), "basename");
    EXPECT_EQ(p.GetText("TARNOBasePath"), std::filesystem::current_path().string());
    EXPECT_TRUE(std::regex_match(p.GetText("Updated"),
                                 std::regex(R"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)")));
    EXPECT_FALSE(p.Step()) << "Project has exactly one row";

    EXPECT_EQ(ReadProjectVersion(db_), 123);
    for (const char* t : {"Wells", "Vertices", "Polygons", "LSResults", "Basemaps"}) {
        Statement c = db_.PrepareRaw(std::string("select count(*) from ") + t);
        ASSERT_TRUE(c.Step());
        EXPECT_EQ(c.GetInt64(0), 0) << t;
    }
}

TEST_F(SchemaTest, WizardAnswersBecomeTheDefaultsOfTheUnits) {
    // A later row of Model (none should exist, but the default stays in the
    // table definition) takes the answers too.
    db_.Close();
    auto other = Path("other.trn");
    DBNewDatabase(other, "x", false, true);
    Database d = Database::Open(other);
    Statement s = d.Prepare("select BasemapMeters, ComputeMeters from Model");
    ASSERT_TRUE(s.Step());
    EXPECT_FALSE(s.GetBool(0));
    EXPECT_TRUE(s.GetBool(1));
    d.ExecuteRaw("INSERT INTO Model DEFAULT VALUES");
    Statement t = d.Prepare("select BasemapMeters, ComputeMeters from Model where rowid = 2");
    ASSERT_TRUE(t.Step());
    EXPECT_FALSE(t.GetBool(0));
    EXPECT_TRUE(t.GetBool(1));
}

TEST_F(SchemaTest, NewFileRefusesAnExistingPath) {
    EXPECT_THROW(DBNewDatabase(file_, "again", true, true), StoreError);
    // The existing project is untouched.
    Statement s = db_.Prepare("select Description from Project");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.GetText(0), "A test project");
}

TEST_F(SchemaTest, DescriptionLongerThanItsFieldFailsTheCreation) {
    EXPECT_THROW(DBNewDatabase(Path("long.trn"), std::string(256, 'd'), true, true), StoreError);
}

// ----------------------------------------------------- engine semantics

TEST_F(SchemaTest, NewRowTakesTheDefaults) {
    db_.Execute("INSERT INTO NoFlowStrings (PID, Label) VALUES (1, 'B1')");
    Statement s = db_.Prepare("select * from NoFlowStrings where PID=1");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.GetText("ScenHydCond"), "K");
    EXPECT_EQ(s.GetDouble("HydCond"), 0);

    db_.Execute("INSERT INTO LinesinkStrings (PID, Label) VALUES (2, 'S1')");
    Statement l = db_.Prepare("select * from LinesinkStrings where PID=2");
    ASSERT_TRUE(l.Step());
    EXPECT_EQ(l.GetInt64("HeadSpecified"), 1);
    EXPECT_EQ(l.GetText("ScenResistance"), "__NONE__");
    EXPECT_FALSE(l.GetBool("chkScenario"));

    db_.Execute("INSERT INTO Basemaps (MapName) VALUES ('roads.bbm')");
    Statement b = db_.Prepare("select * from Basemaps");
    ASSERT_TRUE(b.Step());
    EXPECT_TRUE(b.GetBool("Show"));
    EXPECT_TRUE(b.GetBool("UseColorField"));
    EXPECT_EQ(b.GetText("ColorField"), "__NONE__");
}

TEST_F(SchemaTest, AutoIncrementKeysAreAssignedByTheStore) {
    db_.Execute("INSERT INTO Polygons (Closed) VALUES (0)");
    auto first = db_.LastInsertId();
    db_.Execute("INSERT INTO Polygons (Closed) VALUES (1)");
    EXPECT_EQ(db_.LastInsertId(), first + 1);
    // A deleted key is not given out again.
    db_.Execute("DELETE * FROM Polygons WHERE PID=" + std::to_string(first + 1));
    db_.Execute("INSERT INTO Polygons (Closed) VALUES (0)");
    EXPECT_EQ(db_.LastInsertId(), first + 2);

    db_.Execute("INSERT INTO Vertices (X, Y) VALUES (1.5, 2.5)");
    Statement v = db_.Prepare("select * from Vertices");
    ASSERT_TRUE(v.Step());
    EXPECT_EQ(v.GetInt64("VID"), db_.LastInsertId());
    EXPECT_EQ(v.GetInt64("PID"), -1);
    EXPECT_EQ(v.GetInt64("Seq"), -1);
}

TEST_F(SchemaTest, TextComparisonIgnoresCase) {
    db_.Execute("INSERT INTO Lakes (PID, Label, StageTableFilename) VALUES (1, 'ABC', 'S.TXT')");
    Statement s = db_.Prepare("select PID from Lakes where Label='abc'");
    EXPECT_TRUE(s.Step());
    Statement t = db_.Prepare("select PID from Lakes where label = 'aBc' and stagetablefilename='s.txt'");
    EXPECT_TRUE(t.Step());
    // Case-insensitive, not careless: another text does not match.
    Statement u = db_.Prepare("select PID from Lakes where Label='abd'");
    EXPECT_FALSE(u.Step());
}

TEST_F(SchemaTest, RequiredFieldsRefuseNullAndEmptyText) {
    EXPECT_THROW(db_.Execute("INSERT INTO Lakes (PID, StageTableFilename) VALUES (1, 'a')"), StoreError);
    EXPECT_THROW(db_.Execute("INSERT INTO Lakes (PID, Label, StageTableFilename) VALUES (1, '', 'a')"),
                 StoreError);
    EXPECT_THROW(db_.Execute("INSERT INTO Domains (Label, PID, Color, FarFieldBoundary) VALUES ('D', 1, 0, 1)"),
                 StoreError)
        << "NearFieldHU is required and has no default";
    // A text that is not required may be empty.
    db_.Execute("INSERT INTO Wells (VID, Label) VALUES (3, '')");
    db_.Execute("INSERT INTO TextLabels (Text, X) VALUES ('', 1)");
    // Wells.VID has no default: a row without it is refused.
    EXPECT_THROW(db_.Execute("INSERT INTO Wells (Head) VALUES (1)"), StoreError);
}

TEST_F(SchemaTest, TooLongTextIsRefusedNotCut) {
    std::string label32(32, 'L');
    db_.Execute("INSERT INTO Lakes (PID, Label, StageTableFilename) VALUES (1, '" + label32 + "', 'a')");
    try {
        db_.Execute("INSERT INTO Lakes (PID, Label, StageTableFilename) VALUES (2, '" + label32 + "X', 'a')");
        FAIL() << "a 33-character label was accepted";
    } catch (const StoreError& e) {
        EXPECT_NE(e.description().find("Lakes.Label"), std::string::npos) << e.description();
        EXPECT_NE(std::string(e.what()).find(file_.string()), std::string::npos);
    }
    Statement s = db_.Prepare("select count(*) from Lakes");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.GetInt64(0), 1);
    // Text with no size takes long values.
    db_.Execute("UPDATE Lakes SET Label='x' WHERE PID=1");
    db_.Execute("INSERT INTO NoFlowStrings (PID, Label) VALUES (9, '" + std::string(400, 'n') + "')");
}

TEST_F(SchemaTest, NumericRangesAndKindsAreChecked) {
    db_.Execute("INSERT INTO Particles (VID, SatdThick) VALUES (1, 32767)");
    EXPECT_THROW(db_.Execute("INSERT INTO Particles (VID, SatdThick) VALUES (2, 32768)"), StoreError);
    EXPECT_THROW(db_.Execute("INSERT INTO Particles (VID, Forward) VALUES (3, -32769)"), StoreError);
    db_.Execute("INSERT INTO Polygons (Closed) VALUES (-32768)");
    EXPECT_THROW(db_.Execute("INSERT INTO Wells (VID) VALUES (2147483648)"), StoreError);
    db_.Execute("INSERT INTO Wells (VID) VALUES (2147483647)");
    EXPECT_THROW(db_.Execute("INSERT INTO Wells (VID, Head) VALUES (5, 'high')"), StoreError);
    EXPECT_THROW(db_.Execute("INSERT INTO Wells (VID, Cycles) VALUES (6, 1.5)"), StoreError);
    EXPECT_THROW(db_.Execute("INSERT INTO Basemaps (MapName, Show) VALUES ('a', 2)"), StoreError);
    // A number given as text that reads as a number is taken, as the engine would.
    db_.Execute("INSERT INTO Wells (VID, Head) VALUES (7, '12.5')");
    Statement s = db_.Prepare("select Head from Wells where VID=7");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.Kind(0), ValueKind::Double);
    EXPECT_EQ(s.GetDouble(0), 12.5);
}

TEST_F(SchemaTest, BooleansCompareWithTrueAndFalse) {
    db_.Execute("INSERT INTO Basemaps (MapName, Show) VALUES ('a.bbm', True)");
    db_.Execute("INSERT INTO Basemaps (MapName, Show) VALUES ('b.bbm', False)");
    Statement on = db_.Prepare("select MapName from Basemaps where Show=TRUE");
    ASSERT_TRUE(on.Step());
    EXPECT_EQ(on.GetText(0), "a.bbm");
    EXPECT_FALSE(on.Step());
    Statement off = db_.Prepare("select MapName from Basemaps where show = false");
    ASSERT_TRUE(off.Step());
    EXPECT_EQ(off.GetText(0), "b.bbm");
    // Bound from C++ bools the same way.
    Statement ins = db_.Prepare("INSERT INTO Basemaps (MapName, Show) VALUES (?, ?)");
    ins.Bind(1, "c.bbm").Bind(2, true).Run();
    Statement n = db_.Prepare("select count(*) from Basemaps where Show = True");
    ASSERT_TRUE(n.Step());
    EXPECT_EQ(n.GetInt64(0), 2);
}

TEST_F(SchemaTest, DatesAreStoredAsIsoTextAndCheckedAsDates) {
    db_.Execute("UPDATE Project SET Updated='2001-02-03 04:05:06'");
    Statement s = db_.Prepare("select Updated from Project");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.GetText(0), "2001-02-03 04:05:06");
    EXPECT_THROW(db_.Execute("UPDATE Project SET Updated='yesterday'"), StoreError);
    EXPECT_THROW(db_.Execute("UPDATE Project SET Updated=NULL"), StoreError);
}

TEST_F(SchemaTest, ColumnDefinitionServesToAddAFieldLater) {
    // The upgrade path adds fields to existing tables one by one.
    db_.ExecuteRaw("CREATE TABLE Old (PID INTEGER)");
    db_.ExecuteRaw("INSERT INTO Old VALUES (1)");
    const TableDef* ls = FindTable("LinesinkStrings");
    db_.ExecuteRaw("ALTER TABLE Old ADD COLUMN " +
                   ColumnDefinitionSql(*ls, *FindField(*ls, "ScenResistance"), CreationContext{}));
    Statement s = db_.PrepareRaw("select ScenResistance from Old");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.GetText(0), "__NONE__");
}

TEST_F(SchemaTest, VersionOfOlderFiles) {
    db_.Close();
    auto old = Path("old.trn");
    {
        Database d = Database::Create(old);
        d.ExecuteRaw("CREATE TABLE Project (Description TEXT, Updated DATETIME)");
        d.ExecuteRaw("INSERT INTO Project VALUES ('x', '2000-01-01 00:00:00')");
        EXPECT_EQ(ReadProjectVersion(d), 100);
        d.ExecuteRaw("ALTER TABLE Project ADD COLUMN ProjectVersion INTEGER");
        d.ExecuteRaw("UPDATE Project SET ProjectVersion = 122");
        EXPECT_EQ(ReadProjectVersion(d), 122);
        d.ExecuteRaw("DROP TABLE Project");
        EXPECT_THROW(ReadProjectVersion(d), StoreError);
    }
}

}  // namespace
}  // namespace tarno
