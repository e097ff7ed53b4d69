// The well's dialog model. One form serves every kind of well: discharge and
// head-specified wells, ponds, partially penetrating and transient wells are a set
// of boxes on one row of Wells, and the boxes decide what the number fields mean,
// which of them are offered, and in which units.
//
//     WellProperties d;
//     d.LoadElement(db, well);          // properties, units, the enabling rules
//     ui.ShowModal(d);                  // the view calls d.OK(db, ui) on its OK
//     if (d.Result == 1) { d.StoreElement(well); Update(db, well); }
//
// The model holds the state of every control (text, prompt, unit, enabled,
// visible, checked) so that its view only mirrors it and tests read it directly.
#pragma once

#include <array>
#include <string>

#include "elements/element_dialog.h"

namespace tarno {

class WellProperties : public ElementDialog {
 public:
  static constexpr const char* kName = "WellProperties";
  static constexpr const char* kTitle =
      "Well Properties                                 (F1 for Help)";
  std::string DialogName() const override { return kName; }

  // The tabs, in their order.
  enum Tab { kGeneralTab = 0, kGeometryTab, kTransientTab, kOtherTab, kTabCount };
  static constexpr std::array<const char*, kTabCount> kTabNames = {"General", "3-D Geometry",
                                                                   "Transient Well", "Other"};

  // The number fields, tbData(0) to tbData(12).
  enum Field {
    kX = 0,
    kY,
    kHead,
    kRadius,
    kTopElev,
    kBottomElev,
    kSS,
    kStartHead,
    kTime,
    kCycles,
    kSetback,
    kNParticles,
    kStartElev,
    kFieldCount
  };
  // Where a failed check points when the field is the label (it stands above the tabs).
  static constexpr int kLabelField = -1;
  static constexpr int kNoField = -2;
  static int TabOf(int field);

  // A number field's prompt, unit and state. The prompt, the text and the unit
  // are switched together.
  struct FieldState {
    std::string prompt;
    std::string unit;
    bool enabled = true;
    bool visible = true;
  };
  struct Box {
    bool checked = false;
    bool enabled = true;
  };

  WellProperties();

  // ---- The controls. A view reads them; it changes them only through the user
  // actions below, which apply the enabling rules and the change tracking.
  std::string tbLabel;
  std::array<std::string, kFieldCount> tbData{};
  std::array<FieldState, kFieldCount> field{};
  // optHeadSpec: index 0 "Head-Specified", index 1 "Discharge-Specified".
  int optHeadSpec = 1;
  Box chkPond;                      // "Use circular area-sink function"
  Box chkPPWell;                    // "Use 3-D Partially Penetrating Function"
  std::array<Box, 2> chkTransient;  // "Use Theis Transient Well Function", "Cyclic Pumping ..."
  Box chkTrace;                     // "Trace particles from well"
  std::string lengthUnit = "meters", flowUnit = "m^3/day", rateUnit = "m/day", mapUnit = "meters";

  // ---- User actions.
  void TypeLabel(std::string text) { tbLabel = std::move(text); }  // tracked by neither flag
  void TypeField(int index, std::string text);                     // FormChanged, NeedRetrace
  void ClickHeadSpec(int index);                                   // FormChanged
  void ClickPond(bool checked);                                    // FormChanged
  void ClickPPWell(bool checked);                                  // FormChanged
  void ClickTransient(int index, bool checked);                    // FormChanged, prompt 8
  void ClickTrace(bool checked);                                   // NeedRetrace
  // A field lost the focus: every empty number field becomes "0".
  void LeaveField();
  // The form came up: the label is remembered as the old label; the focus goes to
  // the label if it is empty (true) and to OK otherwise (false).
  bool Activate();

  // ---- The properties, as the callers read and write them.
  double X() const { return Number(kX); }
  double Y() const { return Number(kY); }
  std::string Label() const { return tbLabel; }
  bool HeadSpecified() const { return optHeadSpec == 0; }
  bool Pond() const { return chkPond.checked; }
  double Head() const { return Number(kHead); }
  double Radius() const { return Number(kRadius); }
  bool PPWell() const { return chkPPWell.checked; }
  double TopElev() const { return Number(kTopElev); }
  double BottomElev() const { return Number(kBottomElev); }
  bool Transient() const { return chkTransient[0].checked; }
  bool Cyclic() const { return chkTransient[1].checked; }
  double SS() const { return Number(kSS); }
  double StartHead() const { return Number(kStartHead); }
  double Time() const { return Number(kTime); }
  double Cycles() const { return Number(kCycles); }
  double Setback() const { return Number(kSetback); }
  // The number shown if "Trace particles from well" is checked, else its negative.
  double NParticles() const;
  double StartElev() const { return Number(kStartElev); }

  // Setting a box or the option works as its click would (rules and flags);
  // LoadElement clears the flags afterwards.
  void SetX(double v) { SetNumber(kX, v); }
  void SetY(double v) { SetNumber(kY, v); }
  void SetLabel(std::string v) { tbLabel = std::move(v); }
  void SetHeadSpecified(bool v);
  void SetPond(bool v);
  void SetHead(double v) { SetNumber(kHead, v); }
  void SetRadius(double v) { SetNumber(kRadius, v); }
  void SetPPWell(bool v);
  void SetTopElev(double v) { SetNumber(kTopElev, v); }
  void SetBottomElev(double v) { SetNumber(kBottomElev, v); }
  void SetTransient(bool v);
  void SetCyclic(bool v);
  void SetSS(double v) { SetNumber(kSS, v); }
  void SetStartHead(double v) { SetNumber(kStartHead, v); }
  void SetTime(double v) { SetNumber(kTime, v); }
  void SetCycles(double v) { SetNumber(kCycles, v); }
  void SetSetback(double v) { SetNumber(kSetback, v); }
  // Above 0: the box is checked and the value shown; otherwise the box is cleared
  // and the absolute value shown, so a well keeps its count while tracing is off.
  void SetNParticles(double v);
  void SetStartElev(double v) { SetNumber(kStartElev, v); }

  // The units of the project: length, flow and rate from ComputeMeters, the map
  // unit from BasemapMeters. Runs the enabling rules again.
  void SetUnits(bool computeMeters, bool basemapMeters);
  // Clears FormChanged and NeedRetrace.
  void init();
  bool NeedRetrace() const { return needRetrace_; }
  bool FormChanged() const override { return formChanged_; }
  const std::string& OldLabel() const { return oldLabel_; }

  // ---- ElementDialog.
  void LoadElement(Database& db, const Element& e) override;
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;

  // After a failed OK: the tab to bring forward (-1: the label, above the tabs)
  // and the field whose text is to be selected.
  int failedTab = -1;
  int failedField = kNoField;
  // The local base and aquifer top of the last OK, for its messages.
  double localBase = 0.0;
  double aquiferTop = 0.0;

 private:
  double Number(int index) const;
  void SetNumber(int index, double v);
  // Brings the controls into line with the boxes; with `fresh` it first resets the
  // form to a discharge well with every box clear but the cyclic one.
  void ApplyRules(bool fresh);
  void UpdateTimePrompt();
  bool Fail(UserInterface& ui, int fieldIndex, const std::string& title,
            const std::vector<std::string>& lines);

  bool formChanged_ = false;
  bool needRetrace_ = false;
  std::string oldLabel_;
};

// A new well at (x, y) with the defaults of an added well: a discharge well of
// radius 1 screened over the whole aquifer (bottom at the local base, top at the
// aquifer top), particles starting at the model's base, everything else 0.
Element WellDefaults(Database& db, double x, double y);

}  // namespace tarno
