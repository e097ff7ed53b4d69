// The properties of a test point: its label, position, kind of observation and the
// observed value, with the checks of the dialog's OK.
//
// One field, tbObs, shows either the observed head or the observed stream flow: the
// type decides which. A piezometer and a lake stage observe a head (a lake stage is
// the head of a lake), a gage observes the stream flow. When the user picks another
// type, the text typed so far goes to the value it served, and the field shows the
// value of the new type.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "elements/element_dialog.h"
#include "elements/entry_check.h"

namespace tarno {

enum class TestPointType : int { Piezometer = 0, Gage = 1, LakeStage = 2 };

// The stored word of a type: "Piezometer", "Gage", "Lake Stage".
std::string_view TestPointTypeText(TestPointType type);
// The type of a stored word, any case; "Gauge" is a gage (older files); anything
// else reads as a piezometer.
TestPointType TestPointTypeFromText(std::string_view text);

// The label a new test point is offered: "TP" and the first number from the count of
// test points plus one whose label is free ("TP1", "TP2", ...).
std::string DefaultTestPointLabel(Database& db);

// The weights a new test point of a type gets in the observation lists of parameter
// estimation: a gage 0.0001 (PEST) and 0.1 (UCODE), the others 1 and 10. Stream flows
// are far larger numbers than heads; their weights keep the two in balance.
struct ObservationWeights {
  double pest = 1.0;
  double ucode = 10.0;
};
ObservationWeights DefaultObservationWeights(TestPointType type);
// Writes the default weights of the row's Type into its PESTWeight and UCODEWeight;
// the adding of a test point does this, an edit keeps the weights.
void ApplyDefaultWeights(Element& testPoint);

class TestPointProperties : public ElementDialog {
 public:
  static constexpr const char* kName = "TestPointProperties";
  static constexpr const char* kTitle = "Test Point Properties               (F1 for Help)";
  static constexpr const char* kLabelPrompt = "Label for the test point (point of observed head)";
  static constexpr const char* kObsPrompt = "Observed head at the test point";
  static constexpr std::array<const char*, 3> kTypeOptions = {"Piezometer", "Gage*", "Lake Stage*"};
  // The note under the options before the user first picks a type, as the dialog has
  // always shown it.
  static constexpr const char* kFirstNote =
      "* Place near linesink where stream flow is to be measuresd.";
  static constexpr const char* kGageNote =
      "* Place near linesink where stream flow is to be measured.";
  static constexpr const char* kLakeNote = "* Place near linesink boundary of lake.";

  // The fields that a check can send the user back to.
  enum class Field { None, Label, X, Y, Obs };

  std::string DialogName() const override { return kName; }

  // A new test point at (x, y) with `label`: a piezometer observing a head of 0.
  void init(const std::string& label, double x, double y);
  void LoadElement(Database& db, const Element& e) override;
  // 1 "Duplicate Label", 2 "Invalid Label", 3 "Invalid Entry" (X, Y, the observation).
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;
  bool FormChanged() const override;

  // The user picks an option of TPType: the caption, unit and note follow.
  void SelectType(TestPointType type);

  // The properties, read from the fields.
  TestPointType TType() const { return TPType; }
  double ObsHead() const;
  double ObsStreamFlow() const;
  std::string Label() const { return tbLabel; }
  double X() const { return ReadNumber(tbX, shownX_); }
  double Y() const { return ReadNumber(tbY, shownY_); }
  // Whether tbObs shows the head (piezometer, lake stage) or the stream flow (gage).
  bool ObsIsHead() const { return TPType != TestPointType::Gage; }

  // The fields as the view shows them.
  std::string tbLabel;
  std::string tbX = "0";
  std::string tbY = "0";
  std::string tbObs = "0";
  TestPointType TPType = TestPointType::Piezometer;
  std::string lblObserved = "Observed Head";
  std::string lblUnit = "m";  // the unit of the observed value
  std::string lblNote = kFirstNote;
  std::string lblCoordinateUnit = "meters";  // the map's unit, beside X and Y

  // After a refused OK: the field to select.
  Field failedField = Field::None;

 private:
  void ShowType();  // caption and unit of the current type

  bool computeMeters_ = true;
  ShownNumber shownX_, shownY_, shownObs_;
  // The value tbObs does not show now (the stream flow of a piezometer, ...): its
  // text and the exact value it was loaded with.
  std::string otherObs_ = "0";
  ShownNumber shownOther_;
  std::int64_t key_ = 0;
  Element loaded_;
};

}  // namespace tarno
