// The imports and exports of the text element files with their boxes: bad and
// foreign files, the well file's stop words, screen corrections and identical wells,
// test point vertices and labels, identical text labels, the .huc list, the overwrite
// question, and the menu entries with their file dialogs.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "elements/element_store.h"
#include "exchange/text_exchange.h"
#include "support/scripted_ui.h"
#include "text_test_support.h"

namespace tarno::testing {
namespace {

using exchange::TextImportResult;
using exchange::WellKind;

class TextImportTest : public TwoProjects {
 protected:
  void SetUp() override {
    TwoProjects::SetUp();
    // An aquifer from 100 to 135.
    target_.ExecuteRaw("update Model set AQBase = 100, AQThickness = '35'");
  }
  std::vector<Element> Wells() { return LoadAll(target_, ElementKind::Well); }
};

TEST_F(TextImportTest, AWellFileStopsAtEndAndSkipsComments) {
  WriteText("w.wl",
            "* city wells\r\n100,200,500,0.3,PW1,130,110\r\n300,400,250,0.2,PW2,130,110\r\nend\r\n"
            "500,600,100,0.2,PW3,130,110\r\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage("Import Complete", {"2 wells were read in."});
  const TextImportResult r = exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Discharge);
  ui.Verify();
  EXPECT_EQ(r.read, 2);
  const auto wells = Wells();
  ASSERT_EQ(wells.size(), 2u);
  EXPECT_EQ(wells[0].Label(), "PW1");
  EXPECT_EQ(wells[0].row.Integer("HeadSpecified"), 0);
  EXPECT_EQ(ui.WaitTexts(), std::vector<std::string>{"Importing Wells... "});
  EXPECT_FALSE(ui.WaitWindowVisible());
}

TEST_F(TextImportTest, ScreensAreCorrectedWithANoteForEachLine) {
  WriteText("w.wl",
            "100 200 117 0.3 Reversed 110 130\n"
            "300 200 117 0.3 Zero 120 120\n"
            "500 200 117 0.3 High 150 110\n"
            "700 200 117 0.3 Low 130 90\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage(
      "Import Complete",
      {"4 wells were read in.", "Top and bottom of screen reversed in line 1 Has been corrected.",
       "Zero screen length in line2 Screen set to default.",
       "Screen above aquifer top in line3 Set to aquifer top.",
       "Screen below aquifer bottom in line4 Set to aquifer bottom."});
  exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Head);
  ui.Verify();
  std::map<std::string, std::pair<double, double>> screen;
  for (const Element& w : Wells()) {
    screen[w.Label()] = {w.row.Number("TopElev"), w.row.Number("BottomElev")};
    EXPECT_EQ(w.row.Integer("HeadSpecified"), 1);
  }
  EXPECT_EQ(screen["Reversed"], std::make_pair(130.0, 110.0));
  EXPECT_EQ(screen["Zero"], std::make_pair(135.0, 100.0));
  EXPECT_EQ(screen["High"], std::make_pair(135.0, 110.0));
  EXPECT_EQ(screen["Low"], std::make_pair(130.0, 100.0));
}

// A well file read before the aquifer is set: the screen lies wholly above the top
// (or below the base), and clipping one end alone left it upside down (top 1 above a
// bottom of 100 in a new project). It takes the default screen instead.
TEST_F(TextImportTest, AScreenOutsideTheAquiferTakesTheDefaultNotAnUpsideDownOne) {
  WriteText("w.wl",
            "100,200,500,0.3,Above,150,140\n"
            "300,200,500,0.3,Below,90,80\n"
            "500,200,500,0.3,Inside,130,110\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage(
      "Import Complete",
      {"3 wells were read in.", "Screen above aquifer top in line1 Set to aquifer top.",
       "Zero screen length in line1 Screen set to default.",
       "Screen below aquifer bottom in line2 Set to aquifer bottom.",
       "Zero screen length in line2 Screen set to default."});
  exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Discharge);
  ui.Verify();
  std::map<std::string, std::pair<double, double>> screen;
  for (const Element& w : Wells())
    screen[w.Label()] = {w.row.Number("TopElev"), w.row.Number("BottomElev")};
  EXPECT_EQ(screen["Above"], std::make_pair(135.0, 100.0));
  EXPECT_EQ(screen["Below"], std::make_pair(135.0, 100.0));
  EXPECT_EQ(screen["Inside"], std::make_pair(130.0, 110.0));
}

TEST_F(TextImportTest, TheLocalBaseOfAnInhomogeneityBoundsTheScreen) {
  Element inh =
      NewElement(ElementKind::Inhomogeneity,
                 {{0, 0, 0, 0, 0}, {0, 0, 0, 1000, 0}, {0, 0, 0, 1000, 1000}, {0, 0, 0, 0, 1000}});
  inh.row.Set("Label", "Raised");
  inh.row.Set("ChangeB", true);
  inh.row.Set("BottomElevation", 105.0);
  Insert(target_, inh);
  WriteText("w.wl", "500,500,100,0.3,Inside,130,101\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage(
      "Import Complete",
      {"1 wells were read in.", "Screen below aquifer bottom in line1 Set to aquifer bottom."});
  exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Discharge);
  ui.Verify();
  EXPECT_EQ(Wells().front().row.Number("BottomElev"), 105.0);
}

TEST_F(TextImportTest, IdenticalWellsAreIgnoredAndCoincidentVerticesOffsetWithALog) {
  Element tp = NewElement(ElementKind::TestPoint, {{0, -1, 0, 300, 400}});
  tp.row.Set("Label", "MW1");
  Insert(target_, tp);
  WriteText("a.wl", "100,200,500,0.3,PW1,130,110\n");
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Import Complete");
  exchange::ImportWells(target_, ui, File("a.wl"), WellKind::Discharge);
  WriteText("b.wl", "100,200,500,0.3,Again,130,110\n300,400,500,0.3,OnTestPoint,130,110\n");
  ui.ExpectMessage("Identical Wells", {"1 wells were read in.", "1 were ignored because identical",
                                       "wells existed at those locations."});
  exchange::TextExchangeOptions options;
  options.vertexTolerance = 0.5;
  options.vertexLog = File("vertices.log");
  exchange::ImportWells(target_, ui, File("b.wl"), WellKind::Discharge, options);
  ui.Verify();
  const auto wells = Wells();
  ASSERT_EQ(wells.size(), 2u);
  EXPECT_EQ(wells[1].Label(), "OnTestPoint");
  EXPECT_EQ(wells[1].X(), 300.5) << "moved clear of the test point's vertex";
  EXPECT_EQ(ReadText("vertices.log"), "X:300\tY:400\t|\tX:300.5\tY:400\r\n");
}

TEST_F(TextImportTest, ABadRecordAsksAndNoStopsTheImportKeepingWhatWasRead) {
  WriteText("w.wl", "100,200,500,0.3,PW1\n100,abc,500,0.3,PW2\n300,200,500,0.3,PW3\n");
  {
    ScriptedUserInterface ui;
    ui.ExpectMessage("Error in import",
                     {"Error in record 2 bad syntax 100,abc,500,0.3,PW2", "Continue import?"},
                     Answer::No);
    ui.ExpectMessage("Import Complete", {"1 wells were read in."});
    const auto r = exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Discharge);
    ui.Verify();
    EXPECT_TRUE(r.stopped);
    EXPECT_EQ(Wells().size(), 1u);
  }
  {
    ScriptedUserInterface ui;
    ui.ExpectMessageTitled("Error in import", Answer::Yes);
    ui.ExpectMessage("Identical Wells",
                     {"1 wells were read in.", "1 were ignored because identical",
                      "wells existed at those locations."});
    exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Discharge);
    ui.Verify();
    EXPECT_EQ(Wells().size(), 2u);
  }
}

TEST_F(TextImportTest, WhatWasReadBeforeAFailureStands) {
  WriteText("w.wl", "100,200,500,0.3,PW1\n100,abc,500,0.3,PW2\n");
  ScriptedUserInterface ui;  // the question of line 2 is not scripted: the port fails there
  EXPECT_THROW(exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Discharge),
               UnexpectedUiCall);
  EXPECT_FALSE(ui.WaitWindowVisible());
  target_.Close();
  target_ = Database::Open(dir_ / "target.trn");
  const auto wells = Wells();
  ASSERT_EQ(wells.size(), 1u);
  EXPECT_EQ(wells[0].Label(), "PW1");
}

TEST_F(TextImportTest, BlankUndelimitedAndMissingWellFilesAreRefused) {
  WriteText("blank.wl", "\r\n  \r\n");
  WriteText("one.wl", "12345\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage("Import Failed",
                   {"File: " + File("blank.wl") + " is blank.", "Could not import wells."});
  ui.ExpectMessage("Bad File", {"No valid file delimeter found!", "Either file is not valid or is",
                                "not comma or space delimeted."});
  ui.ExpectMessage("File Not Found", {"File " + File("none.wl") + " does not exist!",
                                      "TARNO will ignore this file and continue."});
  for (const char* name : {"blank.wl", "one.wl", "none.wl"})
    EXPECT_TRUE(exchange::ImportWells(target_, ui, File(name), WellKind::Discharge).stopped);
  ui.Verify();
  EXPECT_TRUE(Wells().empty());
}

TEST_F(TextImportTest, TestPointsUpdateTheTestPointAtTheirPlaceAndRefuseADuplicateLabel) {
  Element well = NewElement(ElementKind::Well, {{0, -1, 0, 10, 20}});
  well.row.Set("Label", "PW1");
  Insert(target_, well);
  Element old = NewElement(ElementKind::TestPoint, {{0, -1, 0, 50, 60}});
  old.row.Set("Label", "Old");
  Insert(target_, old);
  WriteText("t.tp",
            "* x, y, head, flow, type, label\n"
            "10,20,117.5,0 , piezometer , At Well\n"
            "50,60,0,1150 , GAUGE , Old\n"
            "70,80,118 , MW 9\n"
            "90,90,118 , At,Well\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage("Duplicate Label",
                   {"Test Point Label ('AtWell') already exists!",
                    "Record 5 of " + File("t.tp") + " was not imported.", "Continue import?"},
                   Answer::Yes);
  ui.ExpectMessage("Import Complete", {"3 test points were read in."});
  exchange::ImportTestPoints(target_, ui, File("t.tp"));
  ui.Verify();
  // A vertex that no element holds any more is taken.
  const std::int64_t orphan = AddVertex(target_, 200, 300, -1, 0);
  WriteText("u.tp", "200 300 119.1 MW-10\n");
  ui.ExpectMessageTitled("Import Complete");
  exchange::ImportTestPoints(target_, ui, File("u.tp"));
  ui.Verify();
  EXPECT_EQ(FindByLabel(target_, ElementKind::TestPoint, "MW-10")->key, orphan);
  const auto atWell = FindByLabel(target_, ElementKind::TestPoint, "AtWell");
  ASSERT_TRUE(atWell);
  EXPECT_NE(atWell->key, well.key) << "a well's vertex stays the well's own";
  EXPECT_EQ(atWell->X(), 10.0);
  EXPECT_EQ(atWell->Y(), 20.0);
  const auto gage = FindByLabel(target_, ElementKind::TestPoint, "Old");
  ASSERT_TRUE(gage);
  EXPECT_EQ(gage->key, old.key);
  EXPECT_EQ(gage->row.Text("Type"), "Gage");
  EXPECT_EQ(gage->row.Number("ObsStreamFlow"), 1150.0);
  const auto older = FindByLabel(target_, ElementKind::TestPoint, "MW9");
  ASSERT_TRUE(older);
  EXPECT_EQ(older->row.Text("Type"), "Piezometer");
  EXPECT_EQ(older->row.Number("ObsHead"), 118.0);
  EXPECT_EQ(CountElements(target_, ElementKind::TestPoint), 4);
}

TEST_F(TextImportTest, ATextLabelAtTheSamePlaceWithTheSameTextAndTypeIsSkipped) {
  WriteText("a.tx", "1.00000E+02 2.00000E+02 0 Well field\n1.00000E+02 2.00000E+02 1 Well field\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage("Import Comlpete", {"2 labels were read in."});
  exchange::ImportTextLabels(target_, ui, File("a.tx"));
  WriteText("b.tx", "100 200 0 Well field\n100 200 0 Other text\n");
  ui.ExpectMessage("Identical Labels",
                   {"1 labels were read in.", "1 were skipped because identical",
                    "labels existed in those locations."});
  exchange::ImportTextLabels(target_, ui, File("b.tx"));
  ui.Verify();
  const auto labels = LoadAll(target_, ElementKind::Text);
  ASSERT_EQ(labels.size(), 3u);
  EXPECT_EQ(labels[2].row.Text("FontName"), "Arial");
}

TEST_F(TextImportTest, AForeignFileFailsToReadAndABadBlockAsksToGoOn) {
  WriteText("wells.inh", "version 2\n100,200,500,0.3,PW1\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage("Read Fail", {"The file: " + File("wells.inh") + " is not of the proper format",
                                 "cannot be read in. File read aborted."});
  EXPECT_TRUE(exchange::ImportInh(target_, ui, File("wells.inh")).stopped);
  WriteText("bad.lss", "version 2\nnearfield\nCreek\n1\nhigh\n");
  ui.ExpectMessage(
      "Error in import",
      {"Error in file " + File("bad.lss") + " line 5: \"high\" is not a number for StartingHead",
       "Continue import?"},
      Answer::Yes);
  ui.ExpectMessage("Import Complete", {"0 linesink strings were read in.",
                                       "0 hydrologic unit boundaries were read in."});
  exchange::ImportLss(target_, ui, File("bad.lss"));
  ui.Verify();
  EXPECT_FALSE(AnyElement(target_, ElementKind::Linesink));
}

TEST_F(TextImportTest, AStringWhoseLabelIsTakenByOtherVerticesIsABadRecord) {
  Element s = NewElement(ElementKind::Linesink, {{0, 0, 0, 0, 0}, {0, 0, 0, 10, 0}});
  s.row.Set("Label", "Creek");
  Insert(source_, s);
  Element other = NewElement(ElementKind::Linesink, {{0, 0, 0, 5, 5}, {0, 0, 0, 10, 5}});
  other.row.Set("Label", "Creek");
  Insert(target_, other);
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("HUC Export");
  exchange::ExportLss(source_, ui, File("c.lss"));
  ui.Expect(UiCallKind::MessageBox).Title("Error in import").Answer(Answer::No);
  ui.ExpectMessageTitled("Import Complete");
  exchange::ImportLss(target_, ui, File("c.lss"));
  ui.Verify();
  EXPECT_EQ(CountElements(target_, ElementKind::Linesink), 1);
}

TEST_F(TextImportTest, TheHucListReadsItsFilesAndToleratesAMissingOne) {
  Element s = NewElement(ElementKind::Linesink, {{0, 0, 0, 0, 0}, {0, 0, 0, 10, 0}});
  s.row.Set("Label", "Creek");
  Insert(source_, s);
  std::filesystem::create_directory(dir_ / "parts");
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("HUC Export");
  exchange::ExportLss(source_, ui, (dir_ / "parts" / "near.lss").string());
  WriteText("unit.huc", "path parts\r\nnearfield  near.lss \r\ninhomogeneities areas.inh\r\n");
  ui.ExpectMessage("File Not Found",
                   {"File " + (dir_ / "parts" / "areas.inh").string() + " does not exist!",
                    "TARNO will ignore this file and continue."});
  ui.ExpectMessage("HUC Import Complete", {"Import of " + File("unit.huc") + " complete.",
                                           "1 Nearfield linesink files (.lss) were read in.",
                                           "0 Farfield linesink files (.lss) were read in."});
  const auto r = exchange::ImportHuc(target_, ui, File("unit.huc"));
  EXPECT_EQ(r.read, 1);
  WriteText("none.huc", "farfield gone.lss\n");
  ui.ExpectMessageTitled("File Not Found");
  ui.ExpectMessage("HUC Import Complete",
                   {"Import of '" + File("none.huc") + "' finished but no files were read in!"});
  exchange::ImportHuc(target_, ui, File("none.huc"));
  ui.ExpectMessage("No File", {"File does not exist!"});
  exchange::ImportHuc(target_, ui, File("absent.huc"));
  ui.Verify();
}

TEST_F(TextImportTest, ExportsAskBeforeReplacingAFileAndSayWhenThereIsNothing) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("No Wells", {"No Head Specified Wells were found."});
  EXPECT_FALSE(exchange::ExportWells(target_, ui, File("w.wl"), WellKind::Head));
  ui.ExpectMessage("No Test Points", {"No Test Points were found."});
  EXPECT_FALSE(exchange::ExportTestPoints(target_, ui, File("t.tp")));
  ui.ExpectMessage("No Labels", {"No Labels were found."});
  EXPECT_FALSE(exchange::ExportTextLabels(target_, ui, File("t.tx")));

  Element w = NewElement(ElementKind::Well, {{0, -1, 0, 1, 2}});
  w.row.Set("Label", "PW1");
  Insert(target_, w);
  WriteText("w.wl", "keep me");
  ui.ExpectMessage("File Exists",
                   {"File " + File("w.wl") + " already exists.", "Do you want to overwrite it?"},
                   Answer::No);
  ui.ExpectMessage("Abort", {"Export canceled by user"});
  EXPECT_FALSE(exchange::ExportWells(target_, ui, File("w.wl"), WellKind::Discharge));
  EXPECT_EQ(ReadText("w.wl"), "keep me");
  ui.ExpectMessageTitled("File Exists", Answer::Yes);
  ui.ExpectMessage("Wells Written", {"1 Discharge Specified Wells were written."});
  EXPECT_EQ(exchange::ExportWells(target_, ui, File("w.wl"), WellKind::Discharge), 1);
  ui.Verify();
  EXPECT_NE(ReadText("w.wl").find(",PW1,"), std::string::npos);
}

TEST_F(TextImportTest, MenuEntriesAskTheirQuestionAndFileFirst) {
  WriteText("h.wl", "100,200,117,0.3,Pit,130,110\n");
  ScriptedUserInterface ui;
  ui.ExpectMessage("Head Specified Wells", exchange::HeadWellsWarning(), Answer::No);
  EXPECT_EQ(exchange::RunTextExchangeCommand("IMPORT(8)", target_, ui, dir_.string()).read, 0);
  ui.ExpectMessageTitled("Head Specified Wells", Answer::Yes);
  ui.ExpectOpenFile(File("h.wl")).Title("Well File to be Imported");
  ui.ExpectMessageTitled("Import Complete");
  EXPECT_EQ(exchange::RunTextExchangeCommand("IMPORT(8)", target_, ui, dir_.string()).read, 1);
  ui.ExpectMessage("TARNO Test Point Import", exchange::TestPointImportQuestion(), Answer::No);
  exchange::RunTextExchangeCommand("IMPORT(9)", target_, ui, dir_.string());
  ui.ExpectMessage("No Wells", {"No Discharge Specified Wells were found."});
  exchange::RunTextExchangeCommand("EXPORT(6)", target_, ui, dir_.string());
  ui.ExpectSaveFile(File("pits")).Title("Export Head Specified Wells");
  ui.ExpectMessageTitled("Wells Written");
  exchange::RunTextExchangeCommand("EXPORT(7)", target_, ui, dir_.string());
  ui.ExpectSaveFile(File("unit.huc"));
  ui.ExpectMessage("Nothing to Export",
                   {"No linesink strings or hydrologic unit boundaries were found."});
  exchange::RunTextExchangeCommand("EXPORT(4)", target_, ui, dir_.string());
  ui.Verify();
  EXPECT_TRUE(std::filesystem::exists(dir_ / "pits.wl")) << "the default extension is added";
  const auto files = ui.CallsOf(UiCallKind::OpenFile);
  ASSERT_EQ(files.size(), 1u);
  EXPECT_EQ(files[0].file.filter, "Well Files (*.wl)|*.wl");
  for (int i = 4; i <= 10; ++i)
    EXPECT_TRUE(exchange::IsTextExchangeCommand("IMPORT(" + std::to_string(i) + ")"));
  EXPECT_FALSE(exchange::IsTextExchangeCommand("IMPORT(3)"));
  EXPECT_FALSE(exchange::IsTextExchangeCommand("EXPORT(10)"));
}

}  // namespace
}  // namespace tarno::testing
