// The text label dialog: its checks with the field they send the user back to, the
// write-back of the fields it shows, and the fields it leaves alone.
#include "elements/text_label_dialog.h"

#include <gtest/gtest.h>

#include <string>

#include "support/scripted_ui.h"
#include "dialog_project.h"
#include "elements/element_dialog.h"

namespace tarno::testing {
namespace {

using Field = TextLabelProperties::Field;

class TextLabelDialogTest : public ObservationProject {
 protected:
  Element Label(const std::string& text, double x, double y) {
    Element e = NewTextLabel(text, x, y);
    e.row.Set("ScalerX", 2500.0);
    e.row.Set("LabelType", 1);
    e.row.Set("FontUnderline", true);
    return Stored(e);
  }
  void ExpectRefused(TextLabelProperties& d, const std::string& title,
                     const std::vector<std::string>& lines, Field field) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, field);
  }
};

const std::vector<std::string> kInvalidEntry = {"Invalid data value.  Please re-enter"};
const std::vector<std::string> kBadSize = {
    "The font size must be a whole number of points from 1 to 32767.", "Please re-enter"};

TEST_F(TextLabelDialogTest, ChecksRunInTheOrderOfTheFields) {
  TextLabelProperties d;
  d.LoadElement(db_, Label("Wabash River", 100, 200));
  d.tbText = "   ";
  d.tbFontSize = "0";
  ExpectRefused(d, "Data Missing", {"Text must be specified. "}, Field::Text);
  d.tbText = std::string(256, 'a');
  ExpectRefused(d, "Invalid Entry",
                {"The text cannot be longer than 255 characters.", "Please re-enter"}, Field::Text);
  d.tbText = std::string(255, 'a');
  d.tbFontName = "";
  ExpectRefused(d, "Data Missing", {"Font name must be specified. "}, Field::FontName);
  d.tbFontName = "Times New Roman";
  for (const char* bad : {"0", "12.5", "40000", "", "x"}) {
    SCOPED_TRACE(bad);
    d.tbFontSize = bad;
    ExpectRefused(d, "Invalid Entry", kBadSize, Field::FontSize);
  }
  d.tbFontSize = "14";
  d.tbX = "1-2";
  ExpectRefused(d, "Invalid Entry", kInvalidEntry, Field::X);
  d.tbX = "";
  d.tbY = "E";
  ExpectRefused(d, "Invalid Entry", kInvalidEntry, Field::Y);
  d.tbY = "3.5";
  ScriptedUserInterface ui;
  EXPECT_TRUE(d.OK(db_, ui));
  EXPECT_EQ(d.Result, 1);
}

TEST_F(TextLabelDialogTest, TheShownFieldsAreWrittenAndTheOthersKept) {
  const Element stored = Label("Wabash River", 0.1 + 0.2, 200);
  TextLabelProperties d;
  d.LoadElement(db_, stored);
  EXPECT_EQ(d.tbText, "Wabash River");
  EXPECT_EQ(d.tbFontName, "Arial");
  EXPECT_EQ(d.tbFontSize, "10");
  EXPECT_EQ(d.lblCoordinateUnit, "meters");
  Element back = stored;
  d.StoreElement(back);
  EXPECT_EQ(back, stored);
  EXPECT_FALSE(d.LabelChanged());

  d.tbText = "Wabash";
  d.tbFontName = "Courier New";
  d.tbFontSize = "18";
  d.chkBold = true;
  d.chkItalic = true;
  d.tbY = "250";
  EXPECT_TRUE(d.LabelChanged());
  EXPECT_FALSE(d.FormChanged()) << "a text label leaves the solution standing";
  d.StoreElement(back);
  Update(db_, back);
  const Element read = *Load(db_, ElementKind::Text, stored.key);
  EXPECT_EQ(read.row.Text("Text"), "Wabash");
  EXPECT_EQ(read.row.Text("FontName"), "Courier New");
  EXPECT_EQ(read.row.Integer("FontSize"), 18);
  EXPECT_TRUE(read.row.Flag("FontBold"));
  EXPECT_TRUE(read.row.Flag("FontItalic"));
  EXPECT_EQ(read.row.Number("X"), 0.1 + 0.2);
  EXPECT_EQ(read.row.Number("Y"), 250.0);
  EXPECT_EQ(read.row.Number("ScalerX"), 2500.0);
  EXPECT_TRUE(read.row.Flag("FontUnderline"));
  EXPECT_EQ(read.row.Integer("LabelType"), 1);

  auto dialog = MakeElementDialog(ElementKind::Text);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->DialogName(), "TextLabelProperties");
}

}  // namespace
}  // namespace tarno::testing
