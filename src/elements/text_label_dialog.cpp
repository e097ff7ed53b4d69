#include "elements/text_label_dialog.h"

#include <utility>

#include "core/text.h"
#include "elements/element_store.h"

namespace tarno {

Element NewTextLabel(const std::string& text, double x, double y) {
  Element e = NewElement(ElementKind::Text);
  e.row.Set("Text", text);
  e.row.Set("X", x);
  e.row.Set("Y", y);
  return e;
}

void TextLabelProperties::LoadElement(Database& db, const Element& e) {
  lblCoordinateUnit = LengthUnitWord(LoadAquiferFrame(db).basemapMeters);
  tbText = e.row.Text("Text");
  tbFontName = e.row.Text("FontName");
  tbFontSize = std::to_string(e.row.Integer("FontSize"));
  chkBold = e.row.Flag("FontBold");
  chkItalic = e.row.Flag("FontItalic");
  shownX_ = ShowNumber(e.row.Number("X"));
  shownY_ = ShowNumber(e.row.Number("Y"));
  tbX = shownX_.text;
  tbY = shownY_.text;
  key_ = e.key;
  loaded_ = e;
  failedField = Field::None;
  Result = 2;
}

bool TextLabelProperties::OK(Database&, UserInterface& ui) {
  failedField = Field::None;
  const auto fail = [&](Field field, const std::string& title,
                        const std::vector<std::string>& lines) {
    failedField = field;
    ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
    return false;
  };
  if (TrimST(tbText).empty())
    return fail(Field::Text, "Data Missing", {"Text must be specified. "});
  if (tbText.size() > kTextSize)
    return fail(Field::Text, "Invalid Entry",
                {"The text cannot be longer than 255 characters.", "Please re-enter"});
  if (TrimST(tbFontName).empty())
    return fail(Field::FontName, "Data Missing", {"Font name must be specified. "});
  if (tbFontName.size() > kTextSize)
    return fail(Field::FontName, "Invalid Entry",
                {"The font name cannot be longer than 255 characters.", "Please re-enter"});
  if (!IsWholeEntry(tbFontSize, 1, kLargestFont) || TrimST(tbFontSize).empty())
    return fail(
        Field::FontSize, "Invalid Entry",
        {"The font size must be a whole number of points from 1 to 32767.", "Please re-enter"});
  for (const auto& [field, text] : {std::pair{Field::X, &tbX}, std::pair{Field::Y, &tbY}}) {
    if (!IsNumberEntry(*text))
      return fail(field, "Invalid Entry", {"Invalid data value.  Please re-enter"});
  }
  Result = 1;
  return true;
}

void TextLabelProperties::StoreElement(Element& e) const {
  SetText(e.row, "Text", tbText);
  SetText(e.row, "FontName", tbFontName);
  if (IsWholeEntry(tbFontSize, 1, kLargestFont))
    SetInteger(e.row, "FontSize", static_cast<std::int64_t>(Val(tbFontSize)));
  SetInteger(e.row, "FontBold", chkBold ? 1 : 0);
  SetInteger(e.row, "FontItalic", chkItalic ? 1 : 0);
  SetNumber(e.row, "X", ReadNumber(tbX, shownX_));
  SetNumber(e.row, "Y", ReadNumber(tbY, shownY_));
}

bool TextLabelProperties::LabelChanged() const {
  if (key_ == 0) return true;
  Element after = loaded_;
  StoreElement(after);
  return !(after == loaded_);
}

}  // namespace tarno
