// The element operations as entries of the edit history: each add, edit, delete
// and Properties OK is one entry that undo and redo take back and forth exactly;
// refusals and cancelled dialogs leave none.
#include <gtest/gtest.h>

#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "elements/well_dialog.h"
#include "store/undo_history.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"
#include "support/table_dump.h"

namespace tarno {
namespace {

using test::DumpTables;

class ElementUndoTest : public testing::ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    db_.ExecuteRaw("update Model set AQBase = 10, AQThickness = '30', AQHydCond = 25");
    history_.Attach(ProjectPath().string());
  }
  void TearDown() override {
    ui_.ClearScript();
    history_.Detach();
    ScratchProject::TearDown();
  }

  struct Case {
    ElementKind kind;
    std::vector<MapPoint> points;
    std::vector<std::string> addFields;
    std::string address;
    std::vector<std::string> editFields;
  };

  // Adds, edits and deletes an element through the operations, then undoes the
  // three and redoes them, comparing every table at each step.
  void RoundTrip(const Case& c) {
    SCOPED_TRACE(std::string(Info(c.kind).name));
    const std::string name(Info(c.kind).name);
    history_.Clear();
    const std::string s0 = DumpTables(db_);
    ASSERT_TRUE(AddElement(db_, c.kind, c.points, c.addFields, ui_));
    const std::string s1 = DumpTables(db_);
    ASSERT_TRUE(EditElement(db_, c.address, c.editFields, ui_));
    const std::string s2 = DumpTables(db_);
    ASSERT_TRUE(DeleteElement(db_, c.address, ui_));
    const std::string s3 = DumpTables(db_);
    ui_.Verify();
    ASSERT_NE(s0, s1);
    ASSERT_NE(s1, s2);
    ASSERT_NE(s2, s3);
    ASSERT_EQ(history_.UndoCount(), 3u);
    EXPECT_EQ(history_.UndoEntries()[0].name, "Add " + name);
    EXPECT_EQ(history_.UndoEntries()[1].name, "Edit " + name);
    EXPECT_EQ(history_.UndoEntries()[2].name, "Delete " + name);

    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(DumpTables(db_), s2);
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(DumpTables(db_), s1);
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(DumpTables(db_), s0);
    ASSERT_TRUE(history_.Redo(db_));
    EXPECT_EQ(DumpTables(db_), s1);
    ASSERT_TRUE(history_.Redo(db_));
    EXPECT_EQ(DumpTables(db_), s2);
    ASSERT_TRUE(history_.Redo(db_));
    EXPECT_EQ(DumpTables(db_), s3);
  }

  ScriptedUserInterface ui_;
  UndoHistory history_;
};

const std::vector<MapPoint> kSquare = {{0, 0}, {100, 0}, {100, 100}, {0, 100}};

TEST_F(ElementUndoTest, EachGeometryIsUndoneAndRedoneExactly) {
  // A point with its vertex.
  RoundTrip({ElementKind::Well, {{50.5, 60.25}}, {"Label=PW1", "Head=500"}, "PW1", {"Head=1e-7"}});
  // A string: its Polygons row and vertices.
  RoundTrip({ElementKind::Linesink, {{0, 0}, {10, 5}, {20, 0}}, {"Label=LS1", "StartingHead=12", "Resistance=1"},
             "LS1", {"EndingHead=11.5"}});
  // A polygon without a key of its own (Domains).
  RoundTrip({ElementKind::Domain, kSquare, {"Label=D1"}, "D1", {"Color=255"}});
  // A text label: a row of its own, addressed by its text.
  RoundTrip({ElementKind::Text, {{3, 4}}, {"Text=Town"}, "Town", {"FontSize=14"}});
  // The uniform flow: the Model row and its reference vertex.
  RoundTrip({ElementKind::UniformFlow, {{100, 200}}, {"Head=20", "Gradient=0.002"}, "uniflow",
             {"UNIFLOWOrientation=30"}});
}

TEST_F(ElementUndoTest, RefusalsRecordNothingAndKeepRedo) {
  ASSERT_TRUE(AddElement(db_, ElementKind::Well, {{1, 1}}, {"Label=PW1"}, ui_));
  ASSERT_TRUE(history_.Undo(db_));
  ASSERT_TRUE(history_.CanRedo());

  ui_.ExpectMessageTitled(ops_text::kUnknownFieldTitle);
  EXPECT_FALSE(AddElement(db_, ElementKind::Well, {{1, 1}}, {"Nonsense=1"}, ui_));
  ui_.ExpectMessageTitled(ops_text::kNoSuchElementTitle);
  EXPECT_FALSE(DeleteElement(db_, "PW9", ui_));
  ui_.Verify();
  EXPECT_FALSE(history_.CanUndo());
  EXPECT_EQ(history_.RedoName(), "Add Well");
  ASSERT_TRUE(history_.Redo(db_));
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Well, "PW1"));
}

TEST_F(ElementUndoTest, PropertiesOkIsOneEntryAndCancelNone) {
  const auto key = AddElement(db_, ElementKind::Well, {{5, 5}}, {"Label=PW1", "Head=100"}, ui_);
  ASSERT_TRUE(key);
  history_.Clear();
  const std::string before = DumpTables(db_);

  ui_.ExpectModal<WellProperties>("WellProperties", [](WellProperties& d) { d.Cancel(); });
  EXPECT_FALSE(OpenProperties(db_, ElementKind::Well, *key, ui_));
  EXPECT_FALSE(history_.CanUndo());

  ui_.ExpectModal<WellProperties>("WellProperties", [this](WellProperties& d) {
    d.TypeField(WellProperties::kHead, "250");
    EXPECT_TRUE(d.OK(db_, ui_));
  });
  ASSERT_TRUE(OpenProperties(db_, ElementKind::Well, *key, ui_));
  ui_.Verify();
  EXPECT_EQ(history_.UndoName(), "Edit Well");
  ASSERT_TRUE(history_.Undo(db_));
  EXPECT_EQ(DumpTables(db_), before);
  EXPECT_EQ(Load(db_, ElementKind::Well, *key)->row.Number("Head"), 100.0);
}

TEST_F(ElementUndoTest, OperationsInsideACallersScopeJoinIt) {
  const std::string before = DumpTables(db_);
  {
    // As the map editor does around a mouse operation.
    UndoScope drawing(history_, db_, "Draw Line-sink string");
    ASSERT_TRUE(AddElement(db_, ElementKind::Linesink, {{0, 0}, {5, 5}}, {"Label=LS1", "Resistance=1"}, ui_));
    ASSERT_TRUE(EditElement(db_, "LS1", {"Width=3"}, ui_));
    drawing.Commit();
  }
  ASSERT_EQ(history_.UndoCount(), 1u);
  EXPECT_EQ(history_.UndoName(), "Draw Line-sink string");
  ASSERT_TRUE(history_.Undo(db_));
  EXPECT_EQ(DumpTables(db_), before);
}

TEST_F(ElementUndoTest, WithoutAHistoryTheOperationsWorkAsBefore) {
  history_.Detach();  // the command line: no session, no history
  ASSERT_TRUE(AddElement(db_, ElementKind::Well, {{1, 1}}, {"Label=PW1"}, ui_));
  ASSERT_TRUE(DeleteElement(db_, "PW1", ui_));
  EXPECT_FALSE(history_.CanUndo());
  EXPECT_FALSE(FindByLabel(db_, ElementKind::Well, "PW1"));
}

}  // namespace
}  // namespace tarno
