// The properties of a text label of the map: its text, font and anchor. The Edit
// menu's "Text &Properties" opens it for the selected label.
//
// The dialog and its checks are this program's own: the text must not be empty and
// must fit the 255 characters of its field, the font needs a name and a size in
// points, and the anchor two numbers. The fields the dialog does not show (the
// scale, underline, strike-through, the label type) keep their stored values.
#pragma once

#include <cstdint>
#include <string>

#include "elements/element_dialog.h"
#include "elements/entry_check.h"

namespace tarno {

// A new text label at (x, y) with the fonts' defaults of the table (Arial, 10 points).
Element NewTextLabel(const std::string& text, double x, double y);

class TextLabelProperties : public ElementDialog {
 public:
  static constexpr const char* kName = "TextLabelProperties";
  static constexpr const char* kTitle = "Text Properties";
  static constexpr std::size_t kTextSize = 255;
  static constexpr int kLargestFont = 32767;  // the points are held in 16 bits

  enum class Field { None, Text, FontName, FontSize, X, Y };

  std::string DialogName() const override { return kName; }

  void LoadElement(Database& db, const Element& e) override;
  // In the order of the fields: "Data Missing" for an empty text or font name,
  // "Invalid Entry" for a text too long, a size that is no whole number of points
  // from 1 to 32767, or an anchor coordinate that does not read.
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;
  // A text label is no part of the groundwater model: the solution stands.
  bool FormChanged() const override { return false; }
  // Whether the label itself differs from the one loaded (a new label always does).
  bool LabelChanged() const;

  std::string tbText;
  std::string tbFontName = "Arial";
  std::string tbFontSize = "10";
  bool chkBold = false;
  bool chkItalic = false;
  std::string tbX = "0";
  std::string tbY = "0";
  std::string lblCoordinateUnit = "meters";

  Field failedField = Field::None;

 private:
  ShownNumber shownX_, shownY_;
  std::int64_t key_ = 0;
  Element loaded_;
};

}  // namespace tarno
