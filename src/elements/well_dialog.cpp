#include "elements/well_dialog.h"

#include <cmath>

#include "core/format.h"
#include "core/rounding.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "elements/field_text.h"
#include "elements/geometry.h"

namespace tarno {

namespace {

constexpr const char* kDimensionless = "(dimensionless)";
constexpr const char* kDays = "days";
constexpr const char* kBadEntry = "Bad Entry";
constexpr const char* kNewValue = "Please enter a new value.";

// Characters, not bytes, of a label typed in UTF-8.
std::size_t Characters(const std::string& text) {
  std::size_t n = 0;
  for (const char c : text)
    if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) ++n;
  return n;
}

// Writes a field only when its value changed, so that an unchanged dialog leaves
// the row as it was read (a flag stored as -1 by older files stays -1).
void PutFlag(Row& row, const char* name, bool value) {
  if (row.Flag(name) != value) row.Set(name, value);
}
void PutNumber(Row& row, const char* name, double value) {
  if (row.Number(name) != value || !std::holds_alternative<double>(row.Get(name)))
    row.Set(name, value);
}
void PutInteger(Row& row, const char* name, double value) {
  const std::int64_t n = CLng(value);
  if (row.Integer(name) != n || !std::holds_alternative<std::int64_t>(row.Get(name)))
    row.Set(name, n);
}

}  // namespace

int WellProperties::TabOf(int index) {
  if (index < 0) return -1;
  if (index <= kRadius) return kGeneralTab;
  if (index <= kBottomElev) return kGeometryTab;
  if (index <= kCycles) return kTransientTab;
  return kOtherTab;
}

WellProperties::WellProperties() {
  const char* prompts[kFieldCount] = {
      "X coordinate",      "Y coordinate",     "Discharge",           "Radius",
      "Top of screen",     "Bottom of Screen", "Storage Coefficient", "Starting Head",
      "Starting Time",     "Number of Cycles", "Setback Radius",      "Number of Particles",
      "Starting Elevation"};
  for (int i = 0; i < kFieldCount; ++i) {
    field[i].prompt = prompts[i];
    tbData[i] = "0";
  }
  // The load step: a fresh form.
  ApplyRules(true);
}

void WellProperties::SetUnits(bool computeMeters, bool basemapMeters) {
  lengthUnit = computeMeters ? "meters" : "feet";
  flowUnit = computeMeters ? "m^3/day" : "ft^3/day";
  rateUnit = computeMeters ? "m/day" : "ft/day";
  mapUnit = basemapMeters ? "meters" : "feet";
  ApplyRules(false);
}

void WellProperties::ApplyRules(bool fresh) {
  if (fresh) {
    optHeadSpec = 1;
    chkPond.checked = false;
    chkPPWell.checked = false;
    chkTransient[0].checked = false;
    chkTrace.checked = false;
    chkTransient[1].checked = true;
    UpdateTimePrompt();
    for (int i = 1; i <= kStartElev; ++i) tbData[i] = "0";
  }
  field[kX].unit = mapUnit;
  field[kY].unit = mapUnit;
  field[kStartElev].unit = lengthUnit;
  auto enable = [this](std::initializer_list<int> indices, bool on) {
    for (int i : indices) field[i].enabled = on;
  };

  if (optHeadSpec == 0) {
    field[kHead].prompt = "Head";
    field[kHead].unit = lengthUnit;
    field[kRadius].unit = lengthUnit;
    chkPond.enabled = true;
    if (chkPond.checked) {
      field[kTopElev].prompt = "Pond elevation";
      field[kTopElev].unit = lengthUnit;
      field[kBottomElev].visible = false;
      chkTrace.enabled = false;
      chkTrace.checked = false;
      enable({kSetback, kNParticles, kStartElev}, false);
      field[kSetback].unit = lengthUnit;
      field[kNParticles].unit = "";
      field[kStartElev].unit = lengthUnit;
    } else {
      field[kTopElev].prompt = "Top of screen";
      field[kBottomElev].visible = true;
      field[kBottomElev].unit = lengthUnit;
      chkTrace.enabled = true;
      field[kSetback].enabled = true;
      field[kSetback].unit = lengthUnit;
    }
    chkTransient[0].enabled = false;
    chkTransient[0].checked = false;
    chkTransient[1].enabled = false;
    enable({kSS, kStartHead, kTime, kCycles}, false);
    enable({kNParticles, kStartElev}, chkTrace.checked);
    return;
  }

  field[kHead].prompt = "Discharge";
  if (chkTransient[0].checked) {
    chkPond.enabled = false;
    chkPPWell.enabled = false;
    enable({kTopElev, kBottomElev}, false);
  } else {
    chkPond.enabled = true;
    if (chkPond.checked) {
      field[kHead].unit = rateUnit;
      chkPPWell.enabled = true;
      field[kTopElev].enabled = true;
      field[kTopElev].prompt = "Pond elevation";
      field[kTopElev].unit = lengthUnit;
      field[kBottomElev].visible = false;
    } else {
      field[kHead].unit = flowUnit;
      field[kTopElev].prompt = "Top of screen";
      field[kBottomElev].visible = true;
      chkPPWell.enabled = true;
      enable({kTopElev, kBottomElev}, true);
    }
  }
  field[kRadius].unit = lengthUnit;
  const bool transientAllowed = !chkPond.checked && !chkPPWell.checked;
  chkTransient[0].enabled = transientAllowed;
  chkTransient[1].enabled = transientAllowed;
  enable({kSS, kStartHead, kTime, kCycles}, transientAllowed);
  field[kSS].unit = kDimensionless;
  field[kStartHead].unit = lengthUnit;
  field[kTime].unit = kDays;
  if (chkTransient[0].checked || chkPond.checked) {
    chkTrace.enabled = false;
    enable({kSetback, kNParticles, kStartElev}, false);
  } else {
    // The trace box itself keeps the state an earlier rule gave it.
    field[kSetback].enabled = true;
    field[kSetback].unit = lengthUnit;
    enable({kNParticles, kStartElev}, chkTrace.checked);
  }
}

void WellProperties::UpdateTimePrompt() {
  field[kTime].prompt = chkTransient[1].checked ? "On/Off Time Period" : "Starting Time";
}

void WellProperties::TypeField(int index, std::string text) {
  if (tbData.at(index) == text) return;
  tbData[index] = std::move(text);
  formChanged_ = true;
  needRetrace_ = true;
}

void WellProperties::ClickHeadSpec(int index) {
  optHeadSpec = index == 0 ? 0 : 1;
  ApplyRules(false);
  formChanged_ = true;
}

void WellProperties::ClickPond(bool checked) {
  chkPond.checked = checked;
  ApplyRules(false);
  formChanged_ = true;
}

void WellProperties::ClickPPWell(bool checked) {
  chkPPWell.checked = checked;
  ApplyRules(false);
  formChanged_ = true;
}

void WellProperties::ClickTransient(int index, bool checked) {
  chkTransient.at(index).checked = checked;
  ApplyRules(false);
  UpdateTimePrompt();
  formChanged_ = true;
}

void WellProperties::ClickTrace(bool checked) {
  chkTrace.checked = checked;
  ApplyRules(false);
  needRetrace_ = true;
}

void WellProperties::LeaveField() {
  for (std::string& text : tbData)
    if (text.empty()) text = "0";
}

bool WellProperties::Activate() {
  oldLabel_ = tbLabel;
  return tbLabel.empty();
}

double WellProperties::Number(int index) const { return Val(tbData[index]); }

void WellProperties::SetNumber(int index, double v) {
  tbData[index] = (index == kCycles || index == kNParticles)
                      ? FieldText(static_cast<std::int64_t>(v))
                      : FieldText(v);
}

double WellProperties::NParticles() const {
  const double shown = Number(kNParticles);
  return chkTrace.checked ? shown : -shown;
}

void WellProperties::SetNParticles(double v) {
  const bool trace = v > 0;
  SetNumber(kNParticles, std::fabs(v));
  if (chkTrace.checked != trace) ClickTrace(trace);
}

void WellProperties::SetHeadSpecified(bool v) {
  if (HeadSpecified() != v) ClickHeadSpec(v ? 0 : 1);
}
void WellProperties::SetPond(bool v) {
  if (chkPond.checked != v) ClickPond(v);
}
void WellProperties::SetPPWell(bool v) {
  if (chkPPWell.checked != v) ClickPPWell(v);
}
void WellProperties::SetTransient(bool v) {
  if (chkTransient[0].checked != v) ClickTransient(0, v);
}
void WellProperties::SetCyclic(bool v) {
  if (chkTransient[1].checked != v) ClickTransient(1, v);
}

void WellProperties::init() {
  formChanged_ = false;
  needRetrace_ = false;
}

void WellProperties::LoadElement(Database& db, const Element& e) {
  const AquiferFrame frame = LoadAquiferFrame(db);
  *this = WellProperties();
  SetUnits(frame.computeMeters, frame.basemapMeters);
  const Row& r = e.row;
  SetX(e.X());
  SetY(e.Y());
  SetLabel(r.Text("Label"));
  SetHeadSpecified(r.Flag("HeadSpecified"));
  SetPond(r.Flag("Pond"));
  SetHead(r.Number("Head"));
  SetRadius(r.Number("Radius"));
  SetPPWell(r.Flag("PPWell"));
  SetTopElev(r.Number("TopElev"));
  SetBottomElev(r.Number("BottomElev"));
  SetTransient(r.Flag("Transient"));
  SetCyclic(r.Flag("Cyclic"));
  SetSS(r.Number("SS"));
  SetStartHead(r.Number("StartHead"));
  SetTime(r.Number("Time"));
  SetCycles(r.Number("Cycles"));
  SetSetback(r.Number("Setback"));
  SetNParticles(r.Number("NParticles"));
  SetStartElev(r.Number("StartElev"));
  oldLabel_ = tbLabel;
  init();
}

bool WellProperties::Fail(UserInterface& ui, int fieldIndex, const std::string& title,
                          const std::vector<std::string>& lines) {
  ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
  failedField = fieldIndex;
  failedTab = TabOf(fieldIndex);
  return false;
}

bool WellProperties::OK(Database& db, UserInterface& ui) {
  failedField = kNoField;
  failedTab = -1;
  for (int i = 0; i < kFieldCount; ++i)
    if (tbData[i].empty()) TypeField(i, "0");

  localBase = FindLocalBase(db, X(), Y());
  aquiferTop = LoadAquiferFrame(db).Top();
  const std::string base = GeneralNumber(localBase);
  const std::string top = GeneralNumber(aquiferTop);

  if (auto found = FindByLabel(db, ElementKind::Well, tbLabel); found && tbLabel != oldLabel_) {
    return Fail(
        ui, kLabelField, "Duplicate Label",
        {"Well Label ('" + found->Label() + "') already exists!", "Please enter a new label."});
  }
  if (Characters(tbLabel) > 32 || tbLabel.find_first_of(" ,") != std::string::npos ||
      tbLabel.empty()) {
    return Fail(ui, kLabelField, "Invalid Label",
                {"Well label cannot contain spaces or commas, be blank, or be larger than 32 "
                 "characters.",
                 "Please enter a new label"});
  }
  // Every number is tested, also where its field is disabled or hidden.
  if (Radius() <= 0)
    return Fail(ui, kRadius, kBadEntry, {"Radius must be greater than 0.", kNewValue});
  if (TopElev() < localBase || TopElev() > aquiferTop) {
    return Fail(ui, kTopElev, kBadEntry,
                {"Top of Screen must be between the local base and the aquifer top.",
                 "The local base is " + base + " and the auifer top is " + top + ".", kNewValue});
  }
  if (BottomElev() < localBase) {
    return Fail(ui, kBottomElev, kBadEntry,
                {"Bottom of Screen must be greater than or equal to the local base.",
                 "The local base at this well is " + base, kNewValue});
  }
  if (SS() < 0 || SS() > 1)
    return Fail(ui, kSS, kBadEntry, {"Storage Coefficient must be between 0 and 1.", kNewValue});
  if (Time() < 0) {
    return Fail(ui, kTime, kBadEntry,
                {chkTransient[1].checked ? "On/Off Time Period must be positive."
                                         : "Starting Time must be positive.",
                 kNewValue});
  }
  if (Cycles() < 0)
    return Fail(ui, kCycles, kBadEntry, {"Number of Cycles must be positive.", kNewValue});
  if (Setback() < 0)
    return Fail(ui, kSetback, kBadEntry, {"Setback Radius must be positive.", kNewValue});
  if (chkTrace.checked && Number(kNParticles) <= 0) {
    return Fail(ui, kNParticles, kBadEntry,
                {"Number of Particles must be greater than 0.", kNewValue});
  }
  if (chkTrace.checked && (StartElev() < localBase || StartElev() > aquiferTop)) {
    return Fail(ui, kStartElev, kBadEntry,
                {"Starting Elevation must be between the local base and the aquifer top.",
                 "The local base is " + base + " and the aquifer top is " + top + ".", kNewValue});
  }
  Result = 1;
  return true;
}

void WellProperties::StoreElement(Element& e) const {
  Row& r = e.row;
  if (r.Text("Label") != tbLabel) r.Set("Label", tbLabel);
  PutFlag(r, "HeadSpecified", HeadSpecified());
  PutFlag(r, "Pond", Pond());
  PutNumber(r, "Head", Head());
  PutNumber(r, "Radius", Radius());
  PutFlag(r, "PPWell", PPWell());
  PutNumber(r, "TopElev", TopElev());
  PutNumber(r, "BottomElev", BottomElev());
  PutFlag(r, "Transient", Transient());
  PutFlag(r, "Cyclic", Cyclic());
  PutNumber(r, "SS", SS());
  PutNumber(r, "StartHead", StartHead());
  PutNumber(r, "Time", Time());
  PutInteger(r, "Cycles", Cycles());
  PutNumber(r, "Setback", Setback());
  PutInteger(r, "NParticles", NParticles());
  PutNumber(r, "StartElev", StartElev());
  if (e.vertices.empty()) e.vertices.push_back(Vertex{0, -1, 0, 0.0, 0.0});
  e.vertices.front().X = X();
  e.vertices.front().Y = Y();
}

Element WellDefaults(Database& db, double x, double y) {
  const AquiferFrame frame = LoadAquiferFrame(db);
  Element e = NewElement(ElementKind::Well, {Vertex{0, -1, 0, x, y}});
  Row& r = e.row;
  r.Set("Label", "");
  r.Set("HeadSpecified", false);
  r.Set("Pond", false);
  r.Set("Head", 0.0);
  r.Set("Radius", 1.0);
  r.Set("PPWell", false);
  r.Set("BottomElev", FindLocalBase(db, x, y));
  r.Set("TopElev", frame.Top());
  r.Set("Transient", false);
  r.Set("Cyclic", false);
  r.Set("SS", 0.0);
  r.Set("StartHead", 0.0);
  r.Set("Time", 0.0);
  r.Set("Cycles", 0);
  r.Set("Setback", 0.0);
  r.Set("NParticles", 0);
  r.Set("StartElev", frame.base);
  return e;
}

}  // namespace tarno
