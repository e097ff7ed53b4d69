// The line-sink string's dialog model. Streams, far-field line-sinks, routed
// streams, discharge strings, drains, galleries and lake edges are one element of
// one table: a group of five options and a few boxes decide what the numbers mean.
//
//     LinesinkString d;
//     d.LoadElement(db, string);        // properties, units, the rules (init)
//     ui.ShowModal(d);                  // the view calls d.OK(db, ui) on its OK
//     if (d.Result == 1) { d.StoreElement(string); Update(db, string); }
//
// The model holds the state of every control, so that the view only mirrors it.
// Setting a box or an option from code works as its click would, as the form's
// events did: the rules of that control run when its value changes.
#pragma once

#include <array>
#include <string>

#include "elements/element_dialog.h"

namespace tarno {

class LinesinkString : public ElementDialog {
 public:
  static constexpr const char* kName = "LinesinkString";
  static constexpr const char* kTitle = "Linesink String Properties          (F1 for Help)";
  std::string DialogName() const override { return kName; }

  enum Tab { kGeneralTab = 0, kRoutingTab, kScenariosTab, kTabCount };
  static constexpr std::array<const char*, kTabCount> kTabNames = {"General", "Routing",
                                                                   "Scenarios"};

  // The fields tbdata(0) to tbdata(10).
  enum Field {
    kStartHead = 0,
    kEndHead,
    kResistance,
    kWidth,
    kDepth,
    kOverlandFlow,
    kEndInflow,
    kTotalDischarge,  // or the lake bottom
    kOutletTable,
    kPrecipitation,
    kEvapotranspiration,
    kFieldCount
  };
  // Failed fields outside tbdata: the label and the resistance's scenario tag.
  static constexpr int kLabelField = -1;
  static constexpr int kNoField = -2;
  static constexpr int kScenarioResistanceField = -3;
  static int TabOf(int field);

  // The group of five options.
  enum Option { kHeadSpecified = 0, kDischargeSpecified, kDrain, kGallery, kLake };

  struct Control {
    std::string text;
    bool enabled = true;
    bool visible = true;
  };
  struct Box {
    bool checked = false;
    bool enabled = true;
  };

  LinesinkString();

  // ---- The controls.
  std::string tbLabel;
  std::array<std::string, kFieldCount> tbdata{};
  // The state of each tbdata field (its text is in tbdata).
  std::array<Control, kFieldCount> field{};
  // The prompts by the form's numbering: prompt i belongs to field i for 0 to 7;
  // prompt 9 is the stage table's (field 8), prompt 10 the precipitation's (field
  // 9), and prompt 6 stands before field 6 or, on a lake, field 10.
  std::array<Control, kFieldCount> prompt{};
  // The units likewise: unit i of field i for 0 to 7, unit 8 of the precipitation
  // (field 9), and unit 6 serves field 6 or field 10. The stage table has none.
  std::array<Control, kFieldCount> unit{};
  Option option = kHeadSpecified;
  Box chkFarField;                // "Treat as "far-field""
  std::array<Box, 4> chkRouting;  // streamflow routing, end, inlet, outlet stream
  bool fileOutletFileEnabled = true;
  int autoLocation = 0;  // "Linesink Location": 0 unknown, 1 centerline, 2 boundary
  Box chkScenario;       // "Include in scenarios"
  std::array<std::string, 3> tbScenario;    // 1 the resistance's tag, 2 the flux target name
  std::array<Control, 3> scenarioPrompt{};  // index 0 unused
  std::array<Control, 3> scenarioField{};   // index 0 unused
  std::array<bool, kTabCount> tabEnabled{true, true, true};
  int currentTab = kGeneralTab;
  std::string BasePath;  // the folder the outlet files are listed from
  std::string lengthUnit = "meters", flowUnit = "m^3/day", rateUnit = "m/day",
              densityUnit = "m^2/day";

  // ---- User actions.
  void TypeLabel(std::string text) { tbLabel = std::move(text); }
  void TypeField(int index, std::string text);  // sets the change flag
  void ClickHeadSpec(int index);                // 0 head-, 1 discharge-specified
  void ClickDrain();
  void ClickGallery();
  void ClickLake();
  void ClickFarField(bool checked);
  void ClickRouting(int index, bool checked);
  void ClickScenario(bool checked);
  void ClickAuto(int index);  // sets the change flag
  // A file chosen in the outlet file list: its name without the extension goes
  // into the stage table field.
  void ChooseOutletFile(const std::string& fileName);
  // The form came up: the label is remembered as the old label.
  void Activate() { oldLabel_ = tbLabel; }

  // ---- Properties.
  std::string Label() const { return tbLabel; }
  bool HeadSpecified() const { return option == kHeadSpecified; }
  bool Drain() const { return option == kDrain; }
  bool Gallery() const { return option == kGallery; }
  bool Lake() const { return option == kLake; }
  double StartHead() const { return Number(kStartHead); }
  double EndHead() const { return Number(kEndHead); }
  double Resistance() const { return Number(kResistance); }
  double LSWidth() const { return Number(kWidth); }
  double Depth() const { return Number(kDepth); }
  double OverlandFlow() const { return Number(kOverlandFlow); }
  double EndInflow() const { return Number(kEndInflow); }
  double TotalDischarge() const { return Number(kTotalDischarge); }
  std::string OutletTable() const { return tbdata[kOutletTable]; }
  double Precipitation() const { return Number(kPrecipitation); }
  double Evapotranspiration() const { return Number(kEvapotranspiration); }
  bool Routing() const { return chkRouting[0].checked; }
  bool CheckRouting() const { return chkRouting[0].checked; }
  bool CheckOptions() const { return chkRouting[0].checked; }
  bool EndStream() const { return chkRouting[1].checked; }
  bool InletStream() const { return chkRouting[2].checked; }
  bool OutletStream() const { return chkRouting[3].checked; }
  bool FarField() const { return chkFarField.checked; }
  bool ChkScenario() const { return chkScenario.checked; }
  // The tag, or a single blank while "Include in scenarios" is cleared.
  std::string Scenario_Resistance() const;
  std::string Scenario_FluxName() const;
  int GetAuto() const { return autoLocation; }

  void SetLabel(std::string v) { tbLabel = std::move(v); }
  void SetHeadSpecified(bool v);
  // An option is set by choosing it; false leaves the options as they are.
  void SetDrain(bool v);
  void SetGallery(bool v);
  void SetLake(bool v);
  void SetStartHead(double v) { SetNumber(kStartHead, v); }
  void SetEndHead(double v) { SetNumber(kEndHead, v); }
  void SetResistance(double v) { SetNumber(kResistance, v); }
  void SetLSWidth(double v) { SetNumber(kWidth, v); }
  void SetDepth(double v) { SetNumber(kDepth, v); }
  void SetOverlandFlow(double v) { SetNumber(kOverlandFlow, v); }
  void SetEndInflow(double v) { SetNumber(kEndInflow, v); }
  void SetTotalDischarge(double v) { SetNumber(kTotalDischarge, v); }
  void SetOutletTable(std::string v) { TypeField(kOutletTable, std::move(v)); }
  void SetPrecipitation(double v) { SetNumber(kPrecipitation, v); }
  void SetEvapotranspiration(double v) { SetNumber(kEvapotranspiration, v); }
  void SetRouting(bool v) { SetRoutingBox(0, v); }
  void SetEndStream(bool v) { SetRoutingBox(1, v); }
  void SetInletStream(bool v) { SetRoutingBox(2, v); }
  void SetOutletStream(bool v) { SetRoutingBox(3, v); }
  void SetFarField(bool v);
  void SetChkScenario(bool v);
  void SetScenario_Resistance(std::string v) { tbScenario[1] = std::move(v); }
  void SetScenario_FluxName(std::string v) { tbScenario[2] = std::move(v); }
  void SetAuto(int v) { ClickAuto(v); }

  // The units of the project (ComputeMeters).
  void SetUnits(bool computeMeters);
  // Brings the form into line with its options and boxes after the properties
  // were set.
  void init();
  // The change flag: set by a change of any number field and by a click on the
  // location options; callers invalidate the solution on it.
  bool FormChanged() const override { return changed_; }
  const std::string& OldLabel() const { return oldLabel_; }

  // ---- ElementDialog.
  void LoadElement(Database& db, const Element& e) override;
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;

  int failedTab = -1;
  int failedField = kNoField;

 private:
  double Number(int index) const;
  void SetNumber(int index, double v);
  void SetRoutingBox(int index, bool v);
  // prompt, field and unit i together (i from 0 to 7).
  void EnableTriple(int index, bool on);
  void ShowTriple(int index, bool on);
  void OptionRules();
  void RoutingRules();
  void FarFieldRule();
  void ScenarioRule();
  bool Fail(UserInterface& ui, int fieldIndex, const std::string& title,
            const std::vector<std::string>& lines);

  bool changed_ = false;
  std::string oldLabel_;
  int routingDepth_ = 0;
};

// A new string with the defaults of an added one: a head-specified string with
// every number 0, no routing and no scenario; its vertices are the points given.
Element LinesinkDefaults(std::vector<Vertex> vertices = {});

// After an edit that leaves `CheckRouting` set on a string of only two vertices
// (one line-sink), routing is switched off in its row and the user is told what to
// do. True when it did so.
bool DisableRoutingOfShortString(Element& e, bool checkRouting, UserInterface& ui);

}  // namespace tarno
