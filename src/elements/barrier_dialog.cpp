#include "elements/barrier_dialog.h"

#include <algorithm>

#include "core/text.h"
#include "elements/area_dialog_support.h"
#include "elements/element_store.h"

namespace tarno {

using area_dialogs::NumberText;

void NoFlowString::init() {
  tbData = {"0", "1", "0.2", "0"};
  ClosedDomain = false;
  IgnoreInside = false;
  IgnoreOutside = false;
  failedField = Field::None;
  failedTab = 0;
}

int NoFlowString::EncodeClosed(bool closedDomain, bool ignoreInside, bool ignoreOutside) {
  if (!closedDomain) return 0;
  if (ignoreInside) return 2;
  if (ignoreOutside) return 3;
  return 1;
}

int NoFlowString::ClosedCode() const {
  return EncodeClosed(ClosedDomain, IgnoreInside, IgnoreOutside);
}

void NoFlowString::SetClosedCode(std::int64_t closed) {
  // Any other non-zero number of an older file reads as closed, nothing ignored.
  ClosedDomain = closed != 0;
  IgnoreInside = closed == 2;
  IgnoreOutside = closed == 3;
}

void NoFlowString::ClickIgnoreInside(bool checked) {
  IgnoreInside = checked;
  if (checked) IgnoreOutside = false;
}

void NoFlowString::ClickIgnoreOutside(bool checked) {
  IgnoreOutside = checked;
  if (checked) IgnoreInside = false;
}

std::string NoFlowString::Unit(int i) const {
  switch (i) {
    case kHydCond:
      return rateUnit;
    case kThickness:
    case kBottomElevation:
      return lengthUnit;
    default:
      return {};
  }
}

void NoFlowString::LoadElement(Database& db, const Element& e) {
  const area_dialogs::Units units = area_dialogs::UnitsOf(LoadAquiferFrame(db).computeMeters);
  flowUnit = units.flow;
  lengthUnit = units.length;
  rateUnit = units.rate;

  key_ = e.key;
  tbData[kHydCond] = NumberText(e.row, "HydCond");
  tbData[kThickness] = NumberText(e.row, "Thickness");
  tbData[kPorosity] = NumberText(e.row, "Porosity");
  tbData[kBottomElevation] = NumberText(e.row, "BottomElevation");
  SetClosedCode(e.row.Integer("Closed"));
  Label = e.row.Text("Label");

  oldLabel_ = Label;
  loaded_ = tbData;
  loadedClosed_ = ClosedCode();
  failedField = Field::None;
  failedTab = 0;
  Result = 2;
}

bool NoFlowString::OK(Database& db, UserInterface& ui) {
  failedField = Field::None;
  failedTab = 0;
  for (std::string& field : tbData)
    if (field.empty()) field.assign(1, '0');

  auto fail = [&](Field field, const std::string& title, std::vector<std::string> lines) {
    ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
    failedField = field;
    Result = 2;
    return false;
  };

  // Another barrier of this label; the label the dialog opened with is this
  // barrier's own.
  if (Label != oldLabel_) {
    const auto other = FindByLabel(db, ElementKind::Barrier, Label);
    if (other && (key_ == 0 || other->key != key_))
      return fail(Field::Label, "Duplicate Label",
                  {area_dialogs::DuplicateLabelLine("Barrier", Label),
                   "Please enter a new label."});
  }
  if (Label.empty()) return fail(Field::Label, "Data Missing", {area_dialogs::kNoLabel});
  // A conductivity or thickness of 0 passes: the test is for a negative number.
  if (Val(tbData[kHydCond]) < 0)
    return fail(Field::HydCond, "Bad Entry",
                {"Conductivity must be positive.", "Please enter a new value."});
  if (Val(tbData[kThickness]) < 0)
    return fail(Field::Thickness, "Bad Entry",
                {"Thickness must be positive.", "Please enter a new value."});
  const double porosity = Val(tbData[kPorosity]);
  if (porosity <= 0 || porosity > 1)
    return fail(Field::Porosity, "Bad Entry",
                {"Porosity must be greater than 0 and less than or equal to 1.",
                 "Please enter a new value."});
  Result = 1;
  return true;
}

void NoFlowString::StoreElement(Element& e) const {
  using area_dialogs::StoreNumber;
  StoreNumber(e.row, "HydCond", tbData[kHydCond]);
  StoreNumber(e.row, "Thickness", tbData[kThickness]);
  StoreNumber(e.row, "Porosity", tbData[kPorosity]);
  StoreNumber(e.row, "BottomElevation", tbData[kBottomElevation]);
  // A number the boxes read the same way (another non-zero code of an older file)
  // stays as it is.
  NoFlowString stored;
  stored.SetClosedCode(e.row.Integer("Closed"));
  if (stored.ClosedCode() != ClosedCode()) e.row.Set("Closed", ClosedCode());
  area_dialogs::StoreText(e.row, "Label", Label);
}

bool NoFlowString::Invalidate() const { return tbData != loaded_ || ClosedCode() != loadedClosed_; }

Element BarrierDefaults(Database& db) {
  Element e = NewElement(ElementKind::Barrier);
  NoFlowString dialog;
  dialog.init();
  e.row.Set("Label", "");
  e.row.Set("HydCond", Val(dialog.tbData[NoFlowString::kHydCond]));
  e.row.Set("Thickness", Val(dialog.tbData[NoFlowString::kThickness]));
  e.row.Set("Porosity", Val(dialog.tbData[NoFlowString::kPorosity]));
  e.row.Set("Closed", dialog.ClosedCode());
  // The bottom of a new barrier reaches the lowest base of the model, so that no
  // part of the aquifer passes under it.
  double bottom = LoadAquiferFrame(db).base;
  for (const Element& in : LoadAll(db, ElementKind::Inhomogeneity))
    bottom = std::min(bottom, in.row.Number("BottomElevation"));
  e.row.Set("BottomElevation", bottom);
  return e;
}

}  // namespace tarno
