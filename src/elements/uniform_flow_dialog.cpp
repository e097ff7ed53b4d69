#include "elements/uniform_flow_dialog.h"

#include "core/text.h"
#include "elements/area_dialog_support.h"
#include "elements/element_store.h"

namespace tarno {

using area_dialogs::NumberText;

namespace {

// The uniform flow in use, or a new one of zeros.
Element CurrentUniformFlow(Database& db) {
  if (auto u = LoadUniformFlow(db)) return std::move(*u);
  return NewElement(ElementKind::UniformFlow, {Vertex{0, -10, 0, 0.0, 0.0}});
}

}  // namespace

void UniformFlow::init(Database& db) { LoadElement(db, CurrentUniformFlow(db)); }

std::string UniformFlow::Unit(int i) const {
  switch (i) {
    case kHead:
      return lengthUnit;
    case kOrientation:
      return kOrientationUnit;
    default:
      return {};
  }
}

void UniformFlow::LoadElement(Database& db, const Element& e) {
  lengthUnit = area_dialogs::UnitsOf(LoadAquiferFrame(db).computeMeters).length;
  tbdata[kHead] = NumberText(e.row, "UNIFLOWRefHead");
  tbdata[kGradient] = NumberText(e.row, "UNIFLOWGradient");
  tbdata[kOrientation] = NumberText(e.row, "UNIFLOWOrientation");
  loaded_ = tbdata;
  failedField = Field::None;
  Result = 2;
}

bool UniformFlow::OK(Database& db, UserInterface& ui) {
  failedField = Field::None;
  auto fail = [&](Field field, std::vector<std::string> lines) {
    ui.MessageBox("Bad Entry", lines, Buttons::OK, Icon::Exclamation);
    failedField = field;
    Result = 2;
    return false;
  };
  const double base = LoadAquiferFrame(db).base;
  if (Val(tbdata[kHead]) < base)
    return fail(Field::Head,
                {"Specified Reference Head is below aquifer base of " + NumberText(base) + ".",
                 "Press Ok to re-enter Reference Head."});
  if (Val(tbdata[kGradient]) < 0)
    return fail(Field::Gradient, {"Specified gradient is negative. Gradient must be positive.",
                                  "Press Ok to re-enter Gradient."});
  const double orientation = Val(tbdata[kOrientation]);
  if (orientation < -180 || orientation > 180)
    return fail(Field::Orientation, {"Orientation must be between -180 and 180 degrees.",
                                     "Press Ok to re-enter Orientation."});
  Result = 1;
  return true;
}

void UniformFlow::StoreElement(Element& e) const {
  using area_dialogs::StoreNumber;
  StoreNumber(e.row, "UNIFLOWRefHead", tbdata[kHead]);
  StoreNumber(e.row, "UNIFLOWGradient", tbdata[kGradient]);
  StoreNumber(e.row, "UNIFLOWOrientation", tbdata[kOrientation]);
  if (!e.vertices.empty()) {
    e.row.Set("UNIFLOWRefX", e.vertices.front().X);
    e.row.Set("UNIFLOWRefY", e.vertices.front().Y);
  }
  if (e.row.Integer("UNIFLOWCompute") == 0) e.row.Set("UNIFLOWCompute", 1);
}

Element UniformFlowDefaults(Database& db, double x, double y) {
  Element e = CurrentUniformFlow(db);
  if (e.vertices.empty()) e.vertices.push_back(Vertex{0, -10, 0, x, y});
  e.vertices.front().X = x;
  e.vertices.front().Y = y;
  e.row.Set("UNIFLOWRefX", x);
  e.row.Set("UNIFLOWRefY", y);
  return e;
}

Element UniformFlowDefaults(Database& db) { return CurrentUniformFlow(db); }

}  // namespace tarno
