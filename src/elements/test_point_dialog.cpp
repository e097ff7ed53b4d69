#include "elements/test_point_dialog.h"

#include <utility>

#include "core/text.h"
#include "elements/element_store.h"

namespace tarno {

std::string_view TestPointTypeText(TestPointType type) {
  switch (type) {
    case TestPointType::Gage:
      return "Gage";
    case TestPointType::LakeStage:
      return "Lake Stage";
    default:
      return "Piezometer";
  }
}

TestPointType TestPointTypeFromText(std::string_view text) {
  const std::string t = TrimST(text);
  if (EqualsIgnoreCase(t, "Gage") || EqualsIgnoreCase(t, "Gauge")) return TestPointType::Gage;
  if (EqualsIgnoreCase(t, "Lake Stage")) return TestPointType::LakeStage;
  return TestPointType::Piezometer;
}

std::string DefaultTestPointLabel(Database& db) {
  std::size_t n = LoadAll(db, ElementKind::TestPoint).size() + 1;
  while (FindByLabel(db, ElementKind::TestPoint, "TP" + std::to_string(n))) ++n;
  return "TP" + std::to_string(n);
}

ObservationWeights DefaultObservationWeights(TestPointType type) {
  if (type == TestPointType::Gage) return {0.0001, 0.1};
  return {1.0, 10.0};
}

void ApplyDefaultWeights(Element& testPoint) {
  const ObservationWeights w =
      DefaultObservationWeights(TestPointTypeFromText(testPoint.row.Text("Type")));
  testPoint.row.Set("PESTWeight", w.pest);
  testPoint.row.Set("UCODEWeight", w.ucode);
}

void TestPointProperties::init(const std::string& label, double x, double y) {
  Element e = NewElement(ElementKind::TestPoint, {Vertex{0, -1, 0, x, y}});
  e.row.Set("Label", label);
  e.row.Set("Type", std::string(TestPointTypeText(TestPointType::Piezometer)));
  loaded_ = e;
  key_ = 0;
  tbLabel = label;
  shownX_ = ShowNumber(x);
  shownY_ = ShowNumber(y);
  tbX = shownX_.text;
  tbY = shownY_.text;
  TPType = TestPointType::Piezometer;
  shownObs_ = ShowNumber(0.0);
  shownOther_ = ShowNumber(0.0);
  tbObs = shownObs_.text;
  otherObs_ = shownOther_.text;
  lblNote = kFirstNote;
  failedField = Field::None;
  Result = 2;
  ShowType();
}

void TestPointProperties::LoadElement(Database& db, const Element& e) {
  const AquiferFrame frame = LoadAquiferFrame(db);
  computeMeters_ = frame.computeMeters;
  lblCoordinateUnit = LengthUnitWord(frame.basemapMeters);
  init(e.row.Text("Label"), e.X(), e.Y());
  loaded_ = e;
  key_ = e.key;
  TPType = TestPointTypeFromText(e.row.Text("Type"));
  const ShownNumber head = ShowNumber(e.row.Number("ObsHead"));
  const ShownNumber flow = ShowNumber(e.row.Number("ObsStreamFlow"));
  shownObs_ = ObsIsHead() ? head : flow;
  shownOther_ = ObsIsHead() ? flow : head;
  tbObs = shownObs_.text;
  otherObs_ = shownOther_.text;
  // The caption and unit fit the type from the start; the note changes only when
  // the user picks a type.
  ShowType();
}

void TestPointProperties::ShowType() {
  switch (TPType) {
    case TestPointType::Gage:
      lblObserved = "Observed Stream Flow";
      lblUnit = computeMeters_ ? "m^3/day" : "ft^3/day";
      break;
    case TestPointType::LakeStage:
      lblObserved = "Observed Stage";
      lblUnit = computeMeters_ ? "m" : "ft";
      break;
    default:
      lblObserved = "Observed Head";
      lblUnit = computeMeters_ ? "m" : "ft";
      break;
  }
}

void TestPointProperties::SelectType(TestPointType type) {
  const bool wasHead = ObsIsHead();
  TPType = type;
  if (wasHead != ObsIsHead()) {
    // The text typed so far stays with the value it served.
    std::swap(tbObs, otherObs_);
    std::swap(shownObs_, shownOther_);
  }
  if (type == TestPointType::Gage) lblNote = kGageNote;
  if (type == TestPointType::LakeStage) lblNote = kLakeNote;
  ShowType();
}

double TestPointProperties::ObsHead() const {
  return ObsIsHead() ? ReadNumber(tbObs, shownObs_) : ReadNumber(otherObs_, shownOther_);
}

double TestPointProperties::ObsStreamFlow() const {
  return ObsIsHead() ? ReadNumber(otherObs_, shownOther_) : ReadNumber(tbObs, shownObs_);
}

bool TestPointProperties::OK(Database& db, UserInterface& ui) {
  failedField = Field::None;
  const auto fail = [&](Field field, const std::string& title,
                        const std::vector<std::string>& lines) {
    failedField = field;
    ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
    return false;
  };
  if (const auto other = FindByLabel(db, ElementKind::TestPoint, tbLabel);
      other && other->key != key_) {
    return fail(
        Field::Label, "Duplicate Label",
        {"Test Point Label ('" + tbLabel + "') already exists!", "Please enter a new label."});
  }
  // A blank or a comma would split the label in the observation files of parameter
  // estimation, where labels are delimited by them.
  if (tbLabel.empty() || tbLabel.size() > 20 || tbLabel.find_first_of(" ,") != std::string::npos) {
    return fail(Field::Label, "Invalid Label",
                {"Test Point label cannot contain spaces or commas, be blank, or be larger "
                 "than 20 characters.",
                 "Please enter a new label"});
  }
  for (const auto& [field, text] :
       {std::pair{Field::X, &tbX}, std::pair{Field::Y, &tbY}, std::pair{Field::Obs, &tbObs}}) {
    if (!IsNumberEntry(*text))
      return fail(field, "Invalid Entry", {"Invalid data value.  Please re-enter"});
  }
  Result = 1;
  return true;
}

void TestPointProperties::StoreElement(Element& e) const {
  SetText(e.row, "Label", tbLabel);
  // An older spelling ("Gauge") that reads as the same type is kept as stored.
  if (TestPointTypeFromText(e.row.Text("Type")) != TPType || e.row.Text("Type").empty())
    e.row.Set("Type", std::string(TestPointTypeText(TPType)));
  SetNumber(e.row, "ObsHead", ObsHead());
  SetNumber(e.row, "ObsStreamFlow", ObsStreamFlow());
  if (e.vertices.empty()) e.vertices.push_back(Vertex{0, -1, 0, 0.0, 0.0});
  e.vertices.front().X = X();
  e.vertices.front().Y = Y();
}

bool TestPointProperties::FormChanged() const {
  if (key_ == 0) return true;  // a new test point joins the model
  Element after = loaded_;
  StoreElement(after);
  return !(after == loaded_);
}

}  // namespace tarno
