#include "elements/linesink_dialog.h"

#include "core/text.h"
#include "elements/element_store.h"
#include "elements/field_text.h"

namespace tarno {

namespace {

constexpr const char* kBadEntry = "Bad Entry";
constexpr const char* kPositive = "Please enter a positive value.";
constexpr const char* kNone = "__NONE__";

void PutFlag(Row& row, const char* name, bool value) {
  if (row.Flag(name) != value) row.Set(name, value);
}
void PutNumber(Row& row, const char* name, double value) {
  if (row.Number(name) != value || !std::holds_alternative<double>(row.Get(name)))
    row.Set(name, value);
}
void PutText(Row& row, const char* name, const std::string& value) {
  if (row.Text(name) != value || !std::holds_alternative<std::string>(row.Get(name)))
    row.Set(name, value);
}

}  // namespace

int LinesinkString::TabOf(int index) {
  if (index == kLabelField || index == kNoField) return -1;
  if (index == kScenarioResistanceField) return kScenariosTab;
  if (index <= kDepth || index == kTotalDischarge) return kGeneralTab;
  return kRoutingTab;
}

LinesinkString::LinesinkString() {
  const char* prompts[kFieldCount] = {
      "Starting Head", "Ending Head", "Resistance",       "Width", "Depth",
      "Overland Flow", "End Inflow",  "Total Discharge:", "",      "Filename for \"stage table\":",
      "Precipitation"};
  for (int i = 0; i < kFieldCount; ++i) prompt[i].text = prompts[i];
  unit[kOverlandFlow].text = "ft^2/day";  // the form's own until the load step
  // The form as it is drawn: the total discharge, the precipitation and the lake's
  // evapotranspiration are shown only where an option asks for them.
  ShowTriple(kTotalDischarge, false);
  prompt[10].visible = false;
  field[kPrecipitation].visible = false;
  unit[8].visible = false;
  field[kEvapotranspiration].visible = false;
  // The stage table is offered to an outlet stream only.
  prompt[9].enabled = false;
  field[kOutletTable].enabled = false;
  fileOutletFileEnabled = false;
  scenarioPrompt[1].text = "Resistance";
  scenarioPrompt[2].text = "Flux Target Name";

  // The load step.
  currentTab = kGeneralTab;
  option = kHeadSpecified;
  chkRouting[0].checked = false;
  chkRouting[1].checked = false;
  SetUnits(true);
  for (int i : {0, 1, 2, 3, 4, 5, 6, 7, 9, 10}) tbdata[i] = "0";
  tbScenario[1] = kNone;
  tbScenario[2] = kNone;
  // Clearing the routing boxes brings the routing tab into line, as their click does.
  RoutingRules();
}

void LinesinkString::SetUnits(bool computeMeters) {
  lengthUnit = computeMeters ? "meters" : "feet";
  flowUnit = computeMeters ? "m^3/day" : "ft^3/day";
  rateUnit = computeMeters ? "m/day" : "ft/day";
  densityUnit = computeMeters ? "m^2/day" : "ft^2/day";
  for (int i : {0, 1, 3, 4}) unit[i].text = lengthUnit;
  unit[kResistance].text = "days";
  for (int i : {5, 6, 7}) unit[i].text = flowUnit;
  unit[8].text = rateUnit;
}

void LinesinkString::EnableTriple(int index, bool on) {
  prompt[index].enabled = on;
  field[index].enabled = on;
  unit[index].enabled = on;
}

void LinesinkString::ShowTriple(int index, bool on) {
  prompt[index].visible = on;
  field[index].visible = on;
  unit[index].visible = on;
}

double LinesinkString::Number(int index) const { return Val(tbdata[index]); }

void LinesinkString::SetNumber(int index, double v) { TypeField(index, FieldText(v)); }

void LinesinkString::TypeField(int index, std::string text) {
  if (tbdata.at(index) == text) return;
  tbdata[index] = std::move(text);
  changed_ = true;
}

void LinesinkString::OptionRules() {
  if (option == kHeadSpecified) {
    chkFarField.enabled = true;
    for (int i = 0; i <= 4; ++i) EnableTriple(i, true);
    tabEnabled[kRoutingTab] = true;
  } else {
    tabEnabled[kRoutingTab] = false;
  }
  tabEnabled[kScenariosTab] = true;
  if (option == kDischargeSpecified) {
    SetFarField(false);
    chkFarField.enabled = false;
    for (int i : {0, 1}) EnableTriple(i, true);
    for (int i : {2, 3, 4}) EnableTriple(i, false);
  }
  if (option == kDrain) {
    prompt[0].text = "Starting Head";
    prompt[1].text = "Ending Head";
    tabEnabled[kRoutingTab] = false;
    SetFarField(false);
    chkFarField.enabled = false;
    for (int i = 0; i <= 3; ++i) EnableTriple(i, true);
    EnableTriple(4, false);
  }
  if (option == kGallery) {
    SetFarField(false);
    chkFarField.enabled = false;
    SetRoutingBox(0, false);
    prompt[0].text = "Starting Head (Minimum)";
    prompt[1].text = "Ending Head (Minimum)";
    ShowTriple(kTotalDischarge, true);
    unit[kTotalDischarge].text = flowUnit;
    prompt[kTotalDischarge].text = "Total Discharge:";
    for (int i = 0; i <= 3; ++i) EnableTriple(i, true);
    EnableTriple(4, false);
  } else {
    ShowTriple(kTotalDischarge, false);
  }
  if (option == kLake) {
    tabEnabled[kRoutingTab] = true;
    tabEnabled[kScenariosTab] = true;
  }
}

void LinesinkString::RoutingRules() {
  // A box set by these rules runs them again, as its click would; they settle
  // within a few rounds.
  if (++routingDepth_ > 8) {
    --routingDepth_;
    return;
  }
  const bool routed = chkRouting[0].checked;
  for (int i = 1; i <= 3; ++i) chkRouting[i].enabled = routed;
  prompt[9].enabled = routed;
  EnableTriple(kOverlandFlow, routed);
  EnableTriple(kEndInflow, routed);
  field[kEvapotranspiration].visible = false;
  field[kEvapotranspiration].enabled = false;

  if (chkRouting[2].checked || chkFarField.checked) {
    chkRouting[3].enabled = false;
    SetRoutingBox(1, true);
  } else if (chkRouting[0].checked) {
    chkRouting[3].enabled = true;
  }

  if (chkRouting[3].checked) {
    chkRouting[2].enabled = false;
    prompt[9].enabled = true;
    fileOutletFileEnabled = true;
    field[kOutletTable].enabled = true;
  } else if (chkRouting[0].checked) {
    chkRouting[2].enabled = true;
    prompt[9].enabled = false;
    fileOutletFileEnabled = false;
    field[kOutletTable].enabled = false;
  }

  const bool lake = option == kLake;
  if (lake) {
    for (Box& b : chkRouting) b.enabled = false;
    SetRoutingBox(0, true);
    SetRoutingBox(1, true);
  }
  for (Control* c : {&prompt[10], &field[kPrecipitation], &unit[8], &field[kEvapotranspiration]}) {
    c->visible = lake;
    c->enabled = lake;
  }
  field[kEndInflow].visible = !lake;
  if (lake) field[kEndInflow].enabled = false;
  --routingDepth_;
}

void LinesinkString::FarFieldRule() {
  if (chkFarField.checked) {
    for (int i : {2, 3, 4}) EnableTriple(i, false);
    tabEnabled[kRoutingTab] = false;
  } else if (option == kHeadSpecified) {
    for (int i : {2, 3, 4}) EnableTriple(i, true);
    tabEnabled[kRoutingTab] = true;
  }
}

void LinesinkString::ScenarioRule() {
  if (chkScenario.checked) {
    scenarioPrompt[1].enabled = true;
    scenarioField[1].enabled = true;
  } else {
    // The flux target name goes grey with the tag and is not brought back by the box.
    for (int i : {1, 2}) {
      scenarioPrompt[i].enabled = false;
      scenarioField[i].enabled = false;
    }
  }
}

void LinesinkString::SetRoutingBox(int index, bool v) {
  if (chkRouting.at(index).checked == v) return;
  chkRouting[index].checked = v;
  RoutingRules();
}

void LinesinkString::SetFarField(bool v) {
  if (chkFarField.checked == v) return;
  chkFarField.checked = v;
  FarFieldRule();
}

void LinesinkString::SetChkScenario(bool v) {
  if (chkScenario.checked == v) return;
  chkScenario.checked = v;
  ScenarioRule();
}

void LinesinkString::ClickHeadSpec(int index) {
  option = index == 0 ? kHeadSpecified : kDischargeSpecified;
  SetRoutingBox(0, false);
  SetRoutingBox(1, false);
  OptionRules();
  if (option == kHeadSpecified) {
    prompt[0].text = "Starting Head";
    prompt[1].text = "Ending Head";
    unit[0].text = lengthUnit;
    unit[1].text = lengthUnit;
    prompt[kEndInflow].text = "End Inflow";
    unit[kEndInflow].text = flowUnit;
  } else {
    prompt[0].text = "Starting Sink Density";
    prompt[1].text = "Ending Sink Density";
    unit[0].text = densityUnit;
    unit[1].text = densityUnit;
    TypeField(kStartHead, "0");
    TypeField(kEndHead, "0");
  }
}

void LinesinkString::ClickDrain() {
  option = kDrain;
  OptionRules();
}

void LinesinkString::ClickGallery() {
  option = kGallery;
  OptionRules();
}

void LinesinkString::ClickLake() {
  option = kLake;
  SetFarField(false);
  prompt[0].text = "Estimated Level 1";
  prompt[1].text = "Estimated Level 2";
  field[kTotalDischarge].visible = true;
  unit[kTotalDischarge].visible = true;
  prompt[kTotalDischarge].visible = true;
  prompt[kTotalDischarge].text = "Lake Bottom";
  prompt[10].visible = true;
  field[kPrecipitation].visible = true;
  RoutingRules();
  SetRoutingBox(0, true);
  SetRoutingBox(1, true);
  SetRoutingBox(2, false);
  SetRoutingBox(3, false);
  prompt[kEndInflow].text = "Evapotranspiration";
  field[kEndInflow].visible = false;
  field[kEndInflow].enabled = false;
  prompt[9].enabled = true;
  prompt[10].enabled = true;
  field[kEvapotranspiration].enabled = true;
  fileOutletFileEnabled = false;
  field[kOutletTable].enabled = false;
  chkFarField.enabled = false;
  for (int i : {2, 3, 4}) EnableTriple(i, true);
  for (int i : {0, 1, 7}) unit[i].text = lengthUnit;
  unit[6].text = rateUnit;
  unit[8].text = rateUnit;
}

void LinesinkString::ClickFarField(bool checked) {
  chkFarField.checked = checked;
  FarFieldRule();
}

void LinesinkString::ClickRouting(int index, bool checked) {
  chkRouting.at(index).checked = checked;
  RoutingRules();
}

void LinesinkString::ClickScenario(bool checked) {
  chkScenario.checked = checked;
  ScenarioRule();
}

void LinesinkString::ClickAuto(int index) {
  autoLocation = index;
  changed_ = true;
}

void LinesinkString::ChooseOutletFile(const std::string& fileName) {
  const std::size_t dot = fileName.rfind('.');
  TypeField(kOutletTable, dot == std::string::npos ? fileName : fileName.substr(0, dot));
}

std::string LinesinkString::Scenario_Resistance() const {
  return chkScenario.checked ? tbScenario[1] : " ";
}

std::string LinesinkString::Scenario_FluxName() const {
  return chkScenario.checked ? tbScenario[2] : " ";
}

void LinesinkString::SetHeadSpecified(bool v) {
  const Option wanted = v ? kHeadSpecified : kDischargeSpecified;
  if (option != wanted) ClickHeadSpec(v ? 0 : 1);
}

void LinesinkString::SetDrain(bool v) {
  if (v && option != kDrain) ClickDrain();
}

void LinesinkString::SetGallery(bool v) {
  if (v && option != kGallery) ClickGallery();
}

void LinesinkString::SetLake(bool v) {
  if (v && option != kLake) ClickLake();
}

void LinesinkString::init() {
  OptionRules();
  FarFieldRule();
  if (Drain()) {
    for (int i : {2, 3}) EnableTriple(i, true);
  }
  ScenarioRule();
}

void LinesinkString::LoadElement(Database& db, const Element& e) {
  const AquiferFrame frame = LoadAquiferFrame(db);
  *this = LinesinkString();
  SetUnits(frame.computeMeters);
  BasePath = LoadBasePath(db);
  const Row& r = e.row;
  // In the order of the edit, since each option and box set runs its rules.
  SetLabel(r.Text("Label"));
  SetHeadSpecified(r.Flag("HeadSpecified"));
  SetStartHead(r.Number("StartingHead"));
  SetEndHead(r.Number("EndingHead"));
  SetResistance(r.Number("Resistance"));
  SetLSWidth(r.Number("Width"));
  SetDepth(r.Number("Depth"));
  SetRouting(r.Flag("Routing"));
  SetEndStream(r.Flag("EndStream"));
  SetOverlandFlow(r.Number("OverlandFlow"));
  SetEndInflow(r.Number("EndInflow"));
  SetEvapotranspiration(r.Number("Evapotranspiration"));
  SetPrecipitation(r.Number("Precipitation"));
  SetScenario_Resistance(r.Text("ScenResistance"));
  SetScenario_FluxName(r.Text("ScenFluxName"));
  SetChkScenario(r.Flag("chkScenario"));
  SetDrain(r.Flag("Drain"));
  SetGallery(r.Flag("Gallery"));
  SetLake(r.Flag("Lake"));
  SetTotalDischarge(r.Number("TotalDischarge"));
  SetInletStream(r.Flag("InletStream"));
  SetOutletStream(r.Flag("OutletStream"));
  SetOutletTable(r.Text("OutletTable"));
  SetFarField(r.Flag("Farfield"));
  SetAuto(static_cast<int>(r.Integer("AutoSWIZC")));
  init();
  oldLabel_ = tbLabel;
  // The flag tells what the user changed, not what the filling did.
  changed_ = false;
}

bool LinesinkString::Fail(UserInterface& ui, int fieldIndex, const std::string& title,
                          const std::vector<std::string>& lines) {
  ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
  failedField = fieldIndex;
  failedTab = TabOf(fieldIndex);
  if (failedTab >= 0) currentTab = failedTab;
  return false;
}

bool LinesinkString::OK(Database& db, UserInterface& ui) {
  failedField = kNoField;
  failedTab = -1;
  for (int i = 0; i <= kPrecipitation; ++i)
    if (tbdata[i].empty()) TypeField(i, "0");

  if (tbLabel.empty())
    return Fail(ui, kLabelField, "Data Missing", {"A unique Label must be specified."});
  if (auto found = FindByLabel(db, ElementKind::Linesink, tbLabel); found && tbLabel != oldLabel_) {
    return Fail(
        ui, kLabelField, "Duplicate Label",
        {"Linesink Label ('" + found->Label() + "') already exists!", "Please enter a new label."});
  }
  if (chkRouting[0].checked && StartHead() == EndHead()) {
    return Fail(ui, kStartHead, kBadEntry,
                {"You may not have a linesink with routing enabled but no gradient.",
                 "Please set a starting head different from the ending head."});
  }
  if (option == kDrain && Resistance() <= 0)
    return Fail(ui, kResistance, kBadEntry, {"Linesinks specified as drains must have resistance"});
  if (Resistance() == 0 && LSWidth() == 0 && Depth() == 0 && !chkFarField.checked &&
      option == kHeadSpecified) {
    const std::string phrase = "\"treat as far-field\"";
    return Fail(ui, kResistance, kBadEntry,
                {"All linesink properties are zero, but", phrase + " is unchecked.",
                 "Check " + phrase + "or enter", "non-zero property or properties."});
  }
  if (Resistance() < 0)
    return Fail(ui, kResistance, kBadEntry, {"Resistance cannot be negative.", kPositive});
  if (LSWidth() < 0) return Fail(ui, kWidth, kBadEntry, {"Width cannot be negative.", kPositive});
  if (Depth() < 0) return Fail(ui, kDepth, kBadEntry, {"Depth cannot be negative.", kPositive});
  if (option == kLake && (TotalDischarge() > StartHead() || TotalDischarge() > EndHead())) {
    return Fail(ui, kTotalDischarge, kBadEntry,
                {"Lake Bottom must be no greater than either of the estimated levels."});
  }
  if (OverlandFlow() < 0) {
    return Fail(ui, kOverlandFlow, kBadEntry, {"Overland Flow cannot be negative.", kPositive});
  }
  if (EndInflow() < 0)
    return Fail(ui, kEndInflow, kBadEntry, {"End Inflow Flow cannot be negative.", kPositive});
  if (Precipitation() < 0) {
    return Fail(ui, kPrecipitation, kBadEntry, {"Precipitation cannot be negative.", kPositive});
  }
  if (chkScenario.checked) {
    const std::string tag = TrimST(tbScenario[1]);
    if (tag.size() > 12 || tag.empty() || tag == kNone ||
        tag.find_first_of(" -_,") != std::string::npos) {
      return Fail(ui, kScenarioResistanceField, kBadEntry,
                  {"You must specify a valid scenario tag.",
                   "Scenario tags may not include spaces or the characters - , or _.",
                   "Scenario tags may also not be '__NONE__'."});
    }
  }
  Result = 1;
  return true;
}

void LinesinkString::StoreElement(Element& e) const {
  Row& r = e.row;
  PutText(r, "Label", tbLabel);
  // A drain, a gallery and a lake edge are stored as head-specified.
  PutFlag(r, "HeadSpecified", HeadSpecified() || Drain() || Gallery() || Lake());
  PutNumber(r, "StartingHead", StartHead());
  PutNumber(r, "EndingHead", EndHead());
  PutNumber(r, "Resistance", Resistance());
  PutNumber(r, "Width", LSWidth());
  PutNumber(r, "Depth", Depth());
  PutNumber(r, "OverlandFlow", OverlandFlow());
  PutNumber(r, "EndInflow", EndInflow());
  PutNumber(r, "Evapotranspiration", Evapotranspiration());
  PutNumber(r, "Precipitation", Precipitation());
  // A tag means nothing without its box, and the box's cleared state reads as a
  // blank: the stored tags are then left as they are, so that an unchanged dialog
  // leaves the row unchanged.
  if (chkScenario.checked) {
    PutText(r, "ScenResistance", Scenario_Resistance());
    PutText(r, "ScenFluxName", Scenario_FluxName());
  }
  PutFlag(r, "chkScenario", chkScenario.checked);
  PutFlag(r, "Drain", Drain());
  PutFlag(r, "Gallery", Gallery());
  // A lake edge holds -1 in its flag.
  if (r.Flag("Lake") != Lake()) r.Set("Lake", std::int64_t{Lake() ? -1 : 0});
  PutNumber(r, "TotalDischarge", TotalDischarge());
  PutText(r, "OutletTable", OutletTable());
  if (r.Integer("AutoSWIZC") != autoLocation) r.Set("AutoSWIZC", std::int64_t{autoLocation});
  if (HeadSpecified()) PutFlag(r, "Farfield", FarField());
  // A far-field line-sink takes no part in a stream network.
  const bool network = !FarField();
  PutFlag(r, "Routing", network && Routing());
  PutFlag(r, "EndStream", network && EndStream());
  PutFlag(r, "InletStream", network && InletStream());
  PutFlag(r, "OutletStream", network && OutletStream());
}

Element LinesinkDefaults(std::vector<Vertex> vertices) {
  Element e = NewElement(ElementKind::Linesink, std::move(vertices));
  Row& r = e.row;
  r.Set("Label", "");
  r.Set("Routing", 0);
  r.Set("EndStream", 0);
  r.Set("Resistance", 0.0);
  r.Set("Width", 0.0);
  r.Set("Depth", 0.0);
  r.Set("HeadSpecified", 1);
  r.Set("TotalDischarge", 0.0);
  r.Set("chkScenario", false);
  return e;
}

bool DisableRoutingOfShortString(Element& e, bool checkRouting, UserInterface& ui) {
  if (!checkRouting || e.vertices.size() != 2) return false;
  e.row.Set("Routing", 0);
  ui.MessageBox(
      "DATABASE INTEGRITY CHECK",
      {"The line-sink string '" + e.Label() + "' is part of a stream network,",
       "but contains only one line-sink.", " TARNO has disabled ",
       "stream flow for this string! After the database integrity",
       "check is complete you must:", "1) add at least one vertex to this line-sink string",
       "2) set the starting head different from the ending head",
       "3) check 'Use stream flow routing' on the Routing tab",
       "Failure to do this may corrupt your stream network."},
      Buttons::OK, Icon::Exclamation);
  return true;
}

}  // namespace tarno
