// The XML element files: their layout, the round trip of the example's elements,
// the checks of an import (schema, version, units) and its conflict rules, and the
// eight operations with their questions, messages and logs.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <map>

#include "elements/element_store.h"
#include "elements/exchange_rows.h"
#include "exchange/xml_document.h"
#include "exchange/xml_elements.h"
#include "exchange/xml_operations.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::exchange {
namespace {

namespace fs = std::filesystem;

const fs::path kSchemas = fs::path(TARNO_SOURCE_DIR) / "schemas";

bool Contains(const std::vector<std::string>& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

std::string Joined(const std::vector<std::string>& lines) {
  std::string s;
  for (const auto& l : lines) s += l + "\n";
  return s;
}

class XmlExchangeTest : public testing::ScratchProject {
 protected:
  // The example project of the source tree, as scripts/make-examples builds it.
  void MakeExample() {
    db_.Close();
    fs::remove(ProjectPath());
    DBNewDatabase(ProjectPath(), "Vincennes, Indiana Example", true, true);
    db_ = Database::Open(ProjectPath());
    db_.ExecuteRaw(test::ReadFile(fs::path(TARNO_SOURCE_DIR) / "examples" / "vincennes.sql"));
  }
  // A second, empty project beside the first.
  Database OtherProject(const std::string& name, bool basemapMeters, bool computeMeters) {
    DBNewDatabase(dir_ / name, "Other", basemapMeters, computeMeters);
    return Database::Open(dir_ / name);
  }
  std::string File(const std::string& name) const { return (dir_ / name).string(); }
  void Write(const std::string& name, const std::string& text) const {
    ASSERT_TRUE(test::WriteFile(dir_ / name, text));
  }

  Element Barrier(const std::string& label, std::vector<Vertex> v) {
    return Add(ElementKind::Barrier, label, std::move(v), [](Row& r) {
      r.Set("HydCond", 0.5);
      r.Set("Thickness", 2.0);
    });
  }
  Element Domain(const std::string& label, std::vector<Vertex> v) {
    return Add(ElementKind::Domain, label, std::move(v), [](Row& r) {
      r.Set("FarFieldBoundary", false);
      r.Set("NearFieldHU", true);
    });
  }

  ExchangeLog log_;
};

// A row with its key and routing links taken out, and the vertices as points: what a
// round trip must keep.
struct Comparable {
  std::map<std::string, std::string> fields;
  std::vector<std::pair<double, double>> points;
  bool operator==(const Comparable&) const = default;
};

std::map<std::string, Comparable> ByLabel(Database& db, ElementKind kind) {
  std::map<std::string, Comparable> out;
  for (const ExchangeRow& r : LoadExchangeRows(db, kind)) {
    Comparable c;
    for (const auto& [name, text] : r.fields)
      if (name != "PID" && name != "RoutePID" && name != "RouteVID") c.fields[name] = text;
    for (const Vertex& v : r.vertices) c.points.emplace_back(v.X, v.Y);
    out[r.label] = c;
  }
  return out;
}

TEST_F(XmlExchangeTest, DocumentIsIndentedWithTabsAndCrLf) {
  Add(ElementKind::Barrier, "Wall & <1>", At({{1.5, 2}, {3, 4.25}}));
  const int n = WriteElementFile(db_, XmlKind::Barrier, File("b.brr.xml"), log_);
  EXPECT_EQ(n, 1);
  const std::string expected =
      "<?xml version='1.0'?>\r\n"
      "<HorizontalBarriersFile version=\"1\">\r\n"
      "\t<ComputationalUnits>Meters</ComputationalUnits>\r\n"
      "\t<BasemapUnits>Meters</BasemapUnits>\r\n"
      "\t<HorizontalBarrier>\r\n"
      "\t\t<Label>Wall &amp; &lt;1&gt;</Label>\r\n"
      "\t\t<HydCond>0</HydCond>\r\n"
      "\t\t<Thickness>0</Thickness>\r\n"
      "\t\t<Porosity>0</Porosity>\r\n"
      "\t\t<BottomElevation>0</BottomElevation>\r\n"
      "\t\t<Color>0</Color>\r\n"
      "\t\t<Closed>0</Closed>\r\n"
      "\t\t<ScenHydCond>K</ScenHydCond>\r\n"
      "\t\t<Vertices>\r\n"
      "\t\t\t<Vertex>\r\n"
      "\t\t\t\t<X>1.5</X>\r\n"
      "\t\t\t\t<Y>2</Y>\r\n"
      "\t\t\t</Vertex>\r\n"
      "\t\t\t<Vertex>\r\n"
      "\t\t\t\t<X>3</X>\r\n"
      "\t\t\t\t<Y>4.25</Y>\r\n"
      "\t\t\t</Vertex>\r\n"
      "\t\t</Vertices>\r\n"
      "\t</HorizontalBarrier>\r\n"
      "</HorizontalBarriersFile>\r\n";
  EXPECT_EQ(test::ReadFile(dir_ / "b.brr.xml"), expected);
  EXPECT_EQ(log_.Details(),
            (std::vector<std::string>{"Horizontal barrier 'Wall & <1>' was successfully exported.",
                                      "Exported 1 horizontal barriers to " + File("b.brr.xml")}));
}

TEST_F(XmlExchangeTest, EveryElementOfTheExampleComesBackTheSame) {
  MakeExample();
  Database other = OtherProject("empty.trn", true, true);
  for (XmlKind kind : {XmlKind::Barrier, XmlKind::Inhomogeneity, XmlKind::Linesink}) {
    const ElementKind element = KindText(kind).element;
    const auto before = ByLabel(db_, element);
    ASSERT_FALSE(before.empty()) << KindText(kind).plural;
    const std::string file = File(std::string("example.") + KindText(kind).extension);
    EXPECT_EQ(WriteElementFile(db_, kind, file, log_), static_cast<int>(before.size()));
    const ImportCount c = ImportElementFile(other, kind, file, kSchemas, log_);
    EXPECT_FALSE(c.skipped);
    EXPECT_EQ(c.accepted, static_cast<int>(before.size()));
    EXPECT_EQ(c.total, c.accepted);
    EXPECT_EQ(ByLabel(other, element), before) << KindText(kind).plural;
  }
  EXPECT_TRUE(log_.Errors().empty()) << Joined(log_.Errors());
  EXPECT_TRUE(log_.Warnings().empty()) << Joined(log_.Warnings());
}

TEST_F(XmlExchangeTest, XmllintValidatesTheExportsAgainstTheShippedSchemas) {
  if (std::system("xmllint --version > /dev/null 2>&1") != 0) GTEST_SKIP() << "no xmllint";
  MakeExample();
  for (XmlKind kind : {XmlKind::Barrier, XmlKind::Inhomogeneity, XmlKind::Linesink}) {
    const std::string file = File(std::string("e.") + KindText(kind).extension);
    WriteElementFile(db_, kind, file, log_);
    const std::string command = "xmllint --noout --schema '" +
                                (kSchemas / KindText(kind).schema).string() + "' '" + file +
                                "' > /dev/null 2>&1";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    // And a file of the wrong kind fails the other's schema.
    const XmlKind otherKind = kind == XmlKind::Barrier ? XmlKind::Linesink : XmlKind::Barrier;
    const std::string wrong = "xmllint --noout --schema '" +
                              (kSchemas / KindText(otherKind).schema).string() + "' '" + file +
                              "' > /dev/null 2>&1";
    EXPECT_NE(std::system(wrong.c_str()), 0) << wrong;
  }
}

TEST_F(XmlExchangeTest, SchemasStandBesideTheProgramsOfTheBuild) {
  for (const char* xsd :
       {"LSS_XML_File_Format.xsd", "INH_XML_File_Format.xsd", "BRR_XML_File_Format.xsd"})
    EXPECT_EQ(test::ReadFile(fs::path(TARNO_BIN_DIR) / xsd), test::ReadFile(kSchemas / xsd)) << xsd;
}

const char* kOneBarrier =
    "<?xml version='1.0'?>\n<HorizontalBarriersFile version=\"%V\">\n%U"
    "<HorizontalBarrier><Label>B1</Label><HydCond>%K</HydCond><Thickness>2</Thickness>%X"
    "<Vertices><Vertex><X>%A</X><Y>0</Y></Vertex><Vertex><X>10</X><Y>10</Y></Vertex></Vertices>"
    "</HorizontalBarrier>\n</HorizontalBarriersFile>\n";

std::string BarrierFile(std::map<std::string, std::string> values) {
  std::map<std::string, std::string> v = {
      {"%V", "1"},
      {"%U", "<ComputationalUnits>Meters</ComputationalUnits><BasemapUnits>Meters</BasemapUnits>"},
      {"%K", "0.5"},
      {"%X", ""},
      {"%A", "0"}};
  for (auto& [k, val] : values) v[k] = val;
  std::string s = kOneBarrier;
  for (const auto& [k, val] : v) s.replace(s.find(k), k.size(), val);
  return s;
}

TEST_F(XmlExchangeTest, AFileOfVersionTwoIsSkippedAsNewer) {
  Write("v2.brr.xml", BarrierFile({{"%V", "2"}}));
  const ImportCount c =
      ImportElementFile(db_, XmlKind::Barrier, File("v2.brr.xml"), kSchemas, log_);
  EXPECT_TRUE(c.skipped);
  EXPECT_EQ(c.accepted, 0);
  EXPECT_EQ(log_.Errors(), (std::vector<std::string>{
                               "Version in the file " + File("v2.brr.xml") +
                                   " is 2 but this version of Tarno expects version 1.",
                               "Skipped import of file " + File("v2.brr.xml") +
                                   " because the file is newer than the current version. "}));
  EXPECT_EQ(CountElements(db_, ElementKind::Barrier), 0);

  ExchangeLog older;
  Write("v0.brr.xml", BarrierFile({{"%V", "0"}}));
  ImportElementFile(db_, XmlKind::Barrier, File("v0.brr.xml"), kSchemas, older);
  EXPECT_TRUE(
      Contains(older.Errors(), "Skipped import of file " + File("v0.brr.xml") +
                                   " because the file is older than the current version. "));
}

TEST_F(XmlExchangeTest, MissingUnitsAreWarnedAndTheFileIsImported) {
  Write("nu.brr.xml", BarrierFile({{"%U", "<ComputationalUnits>Meters</ComputationalUnits>"}}));
  const ImportCount c =
      ImportElementFile(db_, XmlKind::Barrier, File("nu.brr.xml"), kSchemas, log_);
  EXPECT_EQ(c.accepted, 1);
  EXPECT_EQ(log_.Warnings(),
            std::vector<std::string>{"Basemap units are not specified in " + File("nu.brr.xml") +
                                     "! Please make sure the units in your model match the "
                                     "units in this file."});
  ExchangeLog none;
  Write("none.brr.xml", BarrierFile({{"%U", ""}, {"%A", "1"}}));
  ImportElementFile(db_, XmlKind::Barrier, File("none.brr.xml"), kSchemas, none);
  // Both units missing: two warnings (and the one of the label B1 that is there now).
  ASSERT_EQ(none.Warnings().size(), 3u);
  EXPECT_EQ(none.Warnings()[0].rfind("Computational units are not specified in ", 0), 0u);
  EXPECT_EQ(none.Warnings()[1].rfind("Basemap units are not specified in ", 0), 0u);
  EXPECT_EQ(CountElements(db_, ElementKind::Barrier), 2);
}

TEST_F(XmlExchangeTest, ImportingTwiceRejectsEveryElementAsTheSameSetOfVertices) {
  MakeExample();
  const std::string file = File("rivers.lss.xml");
  WriteElementFile(db_, XmlKind::Linesink, file, log_);
  const auto before = CountElements(db_, ElementKind::Linesink);
  ScriptedUserInterface ui;
  XmlExchangeContext ctx{ui, ProjectPath().string(), kSchemas};
  ctx.defaultDirectoriesFile = File("TARNO.def");
  int invalidated = 0;
  ctx.invalidate = [&] { ++invalidated; };
  ui.ExpectMessage("LSS.XML Import", {"No linesink strings were imported."});
  const XmlOperationResult r = ImportKindFrom(ctx, XmlKind::Linesink, {file});
  ui.Verify();
  EXPECT_EQ(r.count, 0);
  EXPECT_EQ(invalidated, 0);
  EXPECT_EQ(CountElements(db_, ElementKind::Linesink), before);
  EXPECT_EQ(r.log.Warnings().size(), static_cast<std::size_t>(before));
  EXPECT_TRUE(Contains(r.log.Warnings(),
                       "Did not import linesink string 'WabashRiver' because a linesink string "
                       "already exists with the same set of vertices!"))
      << Joined(r.log.Warnings());
  EXPECT_TRUE(Contains(r.log.Details(), "Imported 0 from the " + std::to_string(before) +
                                            " linesink strings in " + file));
  // The log is in the project's folder, with its headings, and was shown.
  const std::string text = test::ReadFile(dir_ / "ImportLinesinkStrings.log");
  EXPECT_NE(text.find("\r\nSummary:\r\nErrors:\r\nWarnings:\r\nDid not import"), std::string::npos);
  EXPECT_NE(text.find("\r\nDetails:\r\nImported 0 from the"), std::string::npos);
  EXPECT_EQ(ui.TextFilesShown(),
            std::vector<std::string>{(dir_ / "ImportLinesinkStrings.log").string()});
}

TEST_F(XmlExchangeTest, SameLabelWithOtherVerticesIsImportedWithAWarning) {
  Barrier("B1", At({{100, 100}, {200, 200}}));
  Write("b.brr.xml", BarrierFile({}));
  const ImportCount c = ImportElementFile(db_, XmlKind::Barrier, File("b.brr.xml"), kSchemas, log_);
  EXPECT_EQ(c.accepted, 1);
  EXPECT_EQ(log_.Warnings(),
            std::vector<std::string>{"The horizontal barrier 'B1' was imported but a "
                                     "horizontal barrier already exists with this label!"});
  EXPECT_TRUE(Contains(log_.Details(), "Horizontal Barrier 'B1' was successfully imported."));
  EXPECT_EQ(CountElements(db_, ElementKind::Barrier), 2);
}

TEST_F(XmlExchangeTest, AnUnknownChildFailsTheSchemaAndWithoutItIsDroppedAlone) {
  Write("u.brr.xml", BarrierFile({{"%X", "<Colour>12</Colour>"}}));
  const ImportCount c = ImportElementFile(db_, XmlKind::Barrier, File("u.brr.xml"), kSchemas, log_);
  EXPECT_TRUE(c.skipped);
  ASSERT_EQ(log_.Errors().size(), 2u);
  EXPECT_EQ(log_.Errors()[0].rfind(
                "The file " + File("u.brr.xml") + " is not valid according to the schema (" +
                    (kSchemas / "BRR_XML_File_Format.xsd").string() + ") because: line 3: ",
                0),
            0u)
      << log_.Errors()[0];
  EXPECT_NE(log_.Errors()[0].find("Colour"), std::string::npos);
  EXPECT_EQ(log_.Errors()[1], "Skipped import of " + File("u.brr.xml") +
                                  " because it was not a valid .BRR.XML file!");

  // Without a schema the reader itself reports the child and uses the rest.
  ExchangeLog unchecked;
  const ImportCount d = ImportElementFile(db_, XmlKind::Barrier, File("u.brr.xml"), {}, unchecked);
  EXPECT_EQ(d.accepted, 1);
  EXPECT_EQ(
      unchecked.Warnings(),
      std::vector<std::string>{"Ignored the field 'Colour' while importing horizontal barrier "
                               "because Tarno does not recognize this field."});
  const auto rows = LoadAll(db_, ElementKind::Barrier);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_DOUBLE_EQ(rows[0].row.Number("HydCond"), 0.5);
  EXPECT_EQ(rows[0].row.Integer("Color"), 0);
}

TEST_F(XmlExchangeTest, NotWellFormedAndBadValuesAreSkippedNamingFileAndLine) {
  Write("broken.lss.xml",
        "<?xml version='1.0'?>\n<LinesinkStringFile version=\"1\">\n"
        "<LinesinkString><Label>A</LinesinkString>\n");
  ImportCount c = ImportElementFile(db_, XmlKind::Linesink, File("broken.lss.xml"), kSchemas, log_);
  EXPECT_TRUE(c.skipped);
  ASSERT_EQ(log_.Errors().size(), 2u);
  EXPECT_EQ(log_.Errors()[0].rfind("Could not open file " + File("broken.lss.xml") + "! line ", 0),
            0u)
      << log_.Errors()[0];
  EXPECT_EQ(log_.Errors()[1], "Skipped import of " + File("broken.lss.xml") +
                                  " because it was not a valid .lss.xml file!");

  ExchangeLog bad;
  Write("bad.brr.xml", BarrierFile({{"%K", "half"}}));
  c = ImportElementFile(db_, XmlKind::Barrier, File("bad.brr.xml"), kSchemas, bad);
  EXPECT_TRUE(c.skipped);
  ASSERT_FALSE(bad.Errors().empty());
  EXPECT_NE(bad.Errors()[0].find("because: line 3: "), std::string::npos) << bad.Errors()[0];
  EXPECT_NE(bad.Errors()[0].find("'half'"), std::string::npos) << bad.Errors()[0];

  // Without the schema check, the load's own message.
  ExchangeLog unchecked;
  ImportElementFile(db_, XmlKind::Linesink, File("broken.lss.xml"), {}, unchecked);
  EXPECT_EQ(unchecked.Errors().front().rfind(
                "Could not open the LinesinkString file " + File("broken.lss.xml") + ": line ", 0),
            0u)
      << unchecked.Errors().front();

  // A missing file and a missing schema.
  ExchangeLog missing;
  c = ImportElementFile(db_, XmlKind::Barrier, File("nowhere.brr.xml"), kSchemas, missing);
  EXPECT_TRUE(c.skipped);
  EXPECT_EQ(missing.Errors().front(), "Could not open file " + File("nowhere.brr.xml") + "!");
  ExchangeLog noSchema;
  c = ImportElementFile(db_, XmlKind::Barrier, File("bad.brr.xml"), dir_ / "no-such-folder",
                        noSchema);
  EXPECT_TRUE(c.skipped);
  EXPECT_EQ(noSchema.Errors().front().rfind("Load XSD failed: ", 0), 0u);
  EXPECT_EQ(CountElements(db_, ElementKind::Barrier), 0);
}

TEST_F(XmlExchangeTest, ElementsWithoutVerticesOrLabelAreNotImported) {
  Write("n.inh.xml",
        "<?xml version='1.0'?>\n<InhomogeneitiesFile version=\"1\">"
        "<Inhomogeneity><Label>Empty</Label><Vertices/></Inhomogeneity>"
        "<Inhomogeneity><HydCond>3</HydCond><Vertices><Vertex><X>0</X><Y>0</Y></Vertex>"
        "<Vertex><X>1</X><Y>0</Y></Vertex><Vertex><X>1</X><Y>1</Y></Vertex></Vertices></"
        "Inhomogeneity>"
        "<Inhomogeneity><Label>Two</Label><Vertices><Vertex><X>0</X><Y>0</Y></Vertex>"
        "<Vertex><X>1</X><Y>0</Y></Vertex></Vertices></Inhomogeneity>"
        "</InhomogeneitiesFile>");
  const ImportCount c =
      ImportElementFile(db_, XmlKind::Inhomogeneity, File("n.inh.xml"), kSchemas, log_);
  EXPECT_EQ(c.total, 3);
  EXPECT_EQ(c.accepted, 0);
  EXPECT_TRUE(
      Contains(log_.Warnings(),
               "The inhomogeneity 'Empty'was not imported because it did not have any vertices!"));
  EXPECT_EQ(log_.Errors(), std::vector<std::string>{"Error: imported element has no label!"});
  EXPECT_TRUE(Contains(
      log_.Warnings(),
      "Did not import inhomogeneity 'Two' because it has 2 vertices and needs at least 3."));
}

TEST_F(XmlExchangeTest, HydrologicUnitsDecideWhatIsExportedAndImported) {
  Barrier("Inside", At({{2, 2}, {3, 3}}));
  Barrier("Outside", At({{50, 50}, {60, 60}}));
  Domain("Unit", At({{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
  const std::string file = File("w.brr.xml");
  EXPECT_EQ(WriteElementFile(db_, XmlKind::Barrier, file, log_), 1);
  EXPECT_EQ(log_.Warnings(), std::vector<std::string>{
                                 "Did not export horizontal barrier 'Outside' because it was not "
                                 "within one of the defined Hydrologic Unit Boundaries."});

  // Into a project whose only domain is a model boundary, nothing comes.
  Database other = OtherProject("model-only.trn", true, true);
  {
    Element m =
        NewElement(ElementKind::Domain, At({{-100, -100}, {100, -100}, {100, 100}, {-100, 100}}));
    m.row.Set("Label", "Model_All");
    Insert(other, m);
  }
  ExchangeLog in;
  EXPECT_EQ(ImportElementFile(other, XmlKind::Barrier, file, kSchemas, in).accepted, 0);
  EXPECT_EQ(in.Warnings(), std::vector<std::string>{
                               "Did not import horizontal barrier 'Inside' becuase it was not "
                               "within one of the defined Hydrologic Unit Barriers."});
}

TEST_F(XmlExchangeTest, AnImportIntoAProjectOfOtherUnitsConvertsTheLengths) {
  // Written by a project in feet (map and model).
  Database feet = OtherProject("feet.trn", false, false);
  {
    Element ls = NewElement(ElementKind::Linesink, At({{1000, 2000}, {3000, 2000}}));
    ls.row.Set("Label", "Creek");
    ls.row.Set("StartingHead", 500.0);
    ls.row.Set("Width", 10.0);
    ls.row.Set("Resistance", 2.0);
    ls.row.Set("EndInflow", 1000.0);
    Insert(feet, ls);
  }
  const std::string file = File("feet.lss.xml");
  WriteElementFile(feet, XmlKind::Linesink, file, log_);
  EXPECT_NE(test::ReadFile(file).find("<ComputationalUnits>Feet</ComputationalUnits>"),
            std::string::npos);

  ExchangeLog in;
  EXPECT_EQ(ImportElementFile(db_, XmlKind::Linesink, file, kSchemas, in).accepted, 1);
  EXPECT_TRUE(Contains(in.Warnings(),
                       "Units do not match! The units used for computation in your model is set as "
                       "Meters but the units specified in the file " +
                           file + " are in Feet."));
  EXPECT_TRUE(Contains(in.Warnings(),
                       "Units do not match! The distance units for basemaps in your model is "
                       "set as Meters but the units specified in the file " +
                           file + " are in Feet."));
  const auto rows = LoadAll(db_, ElementKind::Linesink);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_NEAR(rows[0].row.Number("StartingHead"), 152.4, 1e-9);
  EXPECT_NEAR(rows[0].row.Number("Width"), 3.048, 1e-12);
  EXPECT_DOUBLE_EQ(rows[0].row.Number("Resistance"), 2.0);
  EXPECT_NEAR(rows[0].row.Number("EndInflow"), 1000 * 0.3048 * 0.3048 * 0.3048, 1e-9);
  EXPECT_NEAR(rows[0].vertices[0].X, 304.8, 1e-9);
  EXPECT_NEAR(rows[0].vertices[1].Y, 609.6, 1e-9);

  // Refused instead, the file is skipped with the error.
  ExchangeLog refused;
  Database other = OtherProject("m2.trn", true, true);
  const ImportCount c =
      ImportElementFile(other, XmlKind::Linesink, file, kSchemas, refused, UnitPolicy::Refuse);
  EXPECT_TRUE(c.skipped);
  EXPECT_EQ(refused.Errors().back(),
            "Skipped import of file " + file +
                " because the units did not match those specified in this model.");
  EXPECT_EQ(CountElements(other, ElementKind::Linesink), 0);
}

// A first export starts beside the project, not in the folder of the directory
// memory (the user's configuration folder, which holds none of the user's files);
// the next one starts where the last file went.
TEST_F(XmlExchangeTest, AFirstExportStartsInTheProjectsFolderThenInTheRememberedOne) {
  Barrier("B1", At({{0, 0}, {1, 1}}));
  fs::create_directories(dir_ / "config");
  fs::create_directories(dir_ / "xml");
  ScriptedUserInterface ui;
  XmlExchangeContext ctx{ui, ProjectPath().string(), kSchemas};
  ctx.defaultDirectoriesFile = (dir_ / "config" / "TARNO.def").string();
  std::ofstream(ctx.defaultDirectoriesFile) << "Open Project Path = " << dir_.string() << "\n";
  ui.ExpectSaveFile((dir_ / "xml" / "all").string());
  ui.ExpectMessageTitled("XML Export");
  ToolsExportAllElements(ctx);
  ui.ExpectSaveFile((dir_ / "xml" / "b.brr.xml").string());
  ui.ExpectMessageTitled("BRR.XML Export");
  ToolsExportBarriers(ctx);
  ui.Verify();
  const auto requests = ui.CallsOf(UiCallKind::SaveFile);
  ASSERT_EQ(requests.size(), 2u);
  EXPECT_EQ(fs::path(requests[0].file.initialDirectory), fs::path(dir_.string() + "/"));
  EXPECT_EQ(fs::path(requests[1].file.initialDirectory), fs::path(dir_.string() + "/"))
      << "the barriers' own key is not yet remembered";
  ui.ExpectSaveFile((dir_ / "xml" / "c.brr.xml").string());
  ui.ExpectMessageTitled("BRR.XML Export");
  ToolsExportBarriers(ctx);
  EXPECT_EQ(fs::path(ui.CallsOf(UiCallKind::SaveFile).at(2).file.initialDirectory),
            fs::path((dir_ / "xml").string() + "/"));
}

TEST_F(XmlExchangeTest, ExportAsksBeforeOverwritingAndEndsWithItsMessage) {
  Barrier("B1", At({{0, 0}, {1, 1}}));
  ScriptedUserInterface ui;
  XmlExchangeContext ctx{ui, ProjectPath().string(), kSchemas};
  ctx.defaultDirectoriesFile = File("TARNO.def");
  const std::string file = File("out.brr.xml");
  Write("out.brr.xml", "old");
  ui.ExpectSaveFile(file);
  ui.ExpectMessage("File Exists",
                   {"File " + file + " already exists.", "Do you want to overwrite it?"},
                   Answer::No);
  ui.ExpectMessage("Abort", {"Export of horizontal barriers aborted"});
  EXPECT_FALSE(ToolsExportBarriers(ctx).ran);
  EXPECT_EQ(test::ReadFile(file), "old");

  ui.ExpectSaveFile(file);
  ui.ExpectMessage("File Exists",
                   {"File " + file + " already exists.", "Do you want to overwrite it?"},
                   Answer::Yes);
  ui.ExpectMessage("BRR.XML Export",
                   {"Export of horizontal barriers complete!", "1 barriers exported."});
  const XmlOperationResult r = ToolsExportBarriers(ctx);
  ui.Verify();
  EXPECT_EQ(r.count, 1);
  EXPECT_EQ(ui.WaitTexts(), std::vector<std::string>{"Exporting horizontal barriers..."});
  EXPECT_FALSE(ui.WaitWindowVisible());
  EXPECT_TRUE(fs::exists(dir_ / "ExportHorizontalBarriers.log"));
  EXPECT_TRUE(ui.TextFilesShown().empty());
  // The save dialog started in the folder remembered for the key.
  EXPECT_NE(test::ReadFile(dir_ / "TARNO.def").find("Default Export Barriers path"),
            std::string::npos);

  ui.ExpectSaveFile(File("none.lss.xml"));
  ui.ExpectMessage("LSS.XML Export",
                   {"No linesink strings were found in the model domain defined by a "
                    "Hydroligic Unit Boundary"});
  ToolsExportLinesinkStrings(ctx);
  ui.Verify();
}

TEST_F(XmlExchangeTest, ExportOfAllWritesThreeFilesAndImportOfAllDispatchesByExtension) {
  MakeExample();
  const auto barriers = CountElements(db_, ElementKind::Barrier);
  const auto inhomogeneities = CountElements(db_, ElementKind::Inhomogeneity);
  const auto strings = CountElements(db_, ElementKind::Linesink);
  const auto all = barriers + inhomogeneities + strings;
  EXPECT_EQ(ExportAllFiles("/a/model.XML"),
            (std::vector<std::string>{"/a/model.brr.xml", "/a/model.inh.xml", "/a/model.lss.xml"}));

  ScriptedUserInterface ui;
  XmlExchangeContext ctx{ui, ProjectPath().string(), kSchemas};
  ctx.defaultDirectoriesFile = File("TARNO.def");
  ui.ExpectSaveFile(File("all.xml"));
  ui.ExpectMessage("XML Export",
                   {"Export of elements complete!", std::to_string(all) + " elements exported."});
  EXPECT_EQ(ToolsExportAllElements(ctx).count, all);
  ui.Verify();
  for (const char* ext : {"brr.xml", "inh.xml", "lss.xml"})
    EXPECT_TRUE(fs::exists(dir_ / (std::string("all.") + ext))) << ext;
  EXPECT_TRUE(fs::exists(dir_ / "ExportElements.log"));

  // Into an empty project beside it.
  fs::create_directories(dir_ / "sub");
  DBNewDatabase(dir_ / "sub" / "empty.trn", "Empty", true, true);
  XmlExchangeContext into{ui, (dir_ / "sub" / "empty.trn").string(), kSchemas};
  into.defaultDirectoriesFile = File("TARNO.def");
  bool invalidated = false, zoomed = false;
  into.invalidate = [&] { invalidated = true; };
  into.zoom = [&] { zoomed = true; };
  Write("notes.txt", "x");
  ui.ExpectOpenFiles(
      {File("all.lss.xml"), File("notes.txt"), File("all.brr.xml"), File("all.inh.xml")});
  ui.ExpectMessage("Unrecognized extension",
                   {"Skipping file with unknown extension 'txt': '" + File("notes.txt") + "'",
                    "Expecting one of the following: .brr.xml, .inh.xml, .lss.xml"});
  ui.ExpectMessage("BRR.XML Import",
                   {"Import of Elements complete!", std::to_string(all) + " elements imported."});
  const XmlOperationResult r = ToolsImportAllElements(into);
  ui.Verify();
  EXPECT_EQ(r.count, all);
  EXPECT_TRUE(invalidated);
  EXPECT_TRUE(zoomed);
  EXPECT_TRUE(fs::exists(dir_ / "sub" / "ImportElements.log"));
  Database back = Database::Open(dir_ / "sub" / "empty.trn");
  EXPECT_EQ(CountElements(back, ElementKind::Linesink), strings);
  EXPECT_EQ(CountElements(back, ElementKind::Barrier), barriers);

  // Cancelled file dialogs do nothing.
  ui.ExpectOpenFiles({});
  EXPECT_FALSE(ToolsImportAllElements(into).ran);
  ui.ExpectOpenFiles({});
  EXPECT_FALSE(ToolsImportInhomogeneities(into).ran);
  ui.Verify();
}

TEST_F(XmlExchangeTest, NothingImportedOfAllGivesItsOwnMessage) {
  ScriptedUserInterface ui;
  XmlExchangeContext ctx{ui, ProjectPath().string(), kSchemas};
  Write("v2.brr.xml", BarrierFile({{"%V", "2"}}));
  ui.ExpectMessage("Import", {"No elements were imported."});
  const XmlOperationResult r = ImportAllFrom(ctx, {File("v2.brr.xml")});
  ui.Verify();
  EXPECT_EQ(r.count, 0);
  // The log held errors, so it was shown.
  EXPECT_EQ(ui.TextFilesShown(), std::vector<std::string>{(dir_ / "ImportElements.log").string()});
}

}  // namespace
}  // namespace tarno::exchange
