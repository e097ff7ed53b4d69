// The name-and-colour dialog of the strings that carry little else: flux inspection
// lines, protection areas (capture zones) and the three boundaries of the Domains
// table. Its Prompt, the window's title, tells which of the five it serves.
//
// The three boundaries share the Domains table and are told apart by its flags:
//
//   kind                       Prompt                         stored label   FarField  NearField
//   hydrologic unit boundary   "Domain Properties"            the user's     false     true
//   far-field boundary         "Farfield Properties"          "Far_Field_"+  true      false
//   model boundary             "Model Boundary Properties"    "Model_"+      false     false
//
// The dialog shows and takes the user's part of the label; the prefix is added when
// the label is stored and when it is searched for, so two far-field boundaries
// cannot share a label. A stored boundary is read by its flags (BoundaryKindOf):
// build a new one with NewBoundary, so that its flags say what it is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "elements/element_dialog.h"

namespace tarno {

enum class BoundaryKind { HydrologicUnit, FarField, Model };

// The kind of a Domains row by its flags: FarFieldBoundary first, then NearFieldHU;
// a row with neither is a model boundary.
BoundaryKind BoundaryKindOf(const Row& domain);
// The prefix that a boundary's stored label carries: "", "Far_Field_", "Model_".
const char* BoundaryLabelPrefix(BoundaryKind kind);
// A new Domains element of a kind with the given vertices: its flags set, the
// default colour, no label.
Element NewBoundary(BoundaryKind kind, std::vector<Vertex> vertices = {});
// The colour a new boundary is drawn in: black.
std::uint32_t DefaultBoundaryColour();

// The label a new flux inspection line, protection area or boundary is offered: a
// short word of the kind and the first free number ("FL1", "PA1", "HU1", "FF1",
// "MB1"), searched as the label is stored.
std::string DefaultStringLabel(Database& db, ElementKind kind,
                               BoundaryKind boundary = BoundaryKind::HydrologicUnit);

class FluxInspectDialog : public ElementDialog {
 public:
  static constexpr const char* kName = "FluxInspectDialog";
  static constexpr const char* kFluxPrompt = "Flux Inspection Line Properties";
  static constexpr const char* kCapzonePrompt = "Capzone Properties";
  static constexpr const char* kDomainPrompt = "Domain Properties";
  static constexpr const char* kFarfieldPrompt = "Farfield Properties";
  static constexpr const char* kModelBoundaryPrompt = "Model Boundary Properties";
  static constexpr const char* kLabelCaption = "Name for the feature";
  static constexpr const char* kColourCaption = "Color...";
  // Labels are held in 32 characters; the prefix of a boundary counts.
  static constexpr std::size_t kLabelSize = 32;

  enum class Field { None, Label };

  // The dialog of a flux inspection line, a protection area or a boundary.
  explicit FluxInspectDialog(ElementKind kind = ElementKind::FluxLine,
                             BoundaryKind boundary = BoundaryKind::HydrologicUnit);
  std::string DialogName() const override { return kName; }

  // Sets what the dialog serves: the kind (FluxLine, Capzone or Domain), and for a
  // Domain the boundary; the Prompt and the label prefix follow.
  void SetPurpose(ElementKind kind, BoundaryKind boundary = BoundaryKind::HydrologicUnit);

  // Fills the label (without its prefix) and the colour; for a Domain the purpose
  // follows the row's flags.
  void LoadElement(Database& db, const Element& e) override;
  // Flux lines and protection areas: "Duplicate Label" (another row of the table
  // holds the label), then "Data Missing" (empty). Boundaries: "Data Missing", then
  // "Non-unique label" (another Domains row holds the stored label). Last, for all,
  // "Invalid Label" when the stored label would not fit its 32 characters.
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;
  bool FormChanged() const override;

  // The Color... button: the colour dialog through the port; true if one was chosen.
  bool ChooseColour(UserInterface& ui);
  // Only the Domains table keeps a colour: the button shows for boundaries only.
  bool ColourShown() const { return kind == ElementKind::Domain; }

  // The properties.
  std::string Label() const { return tbLabel; }
  // The label as stored and searched: the prefix and the user's part.
  std::string StoredLabel() const { return labelPrefix + tbLabel; }

  std::string Prompt = kFluxPrompt;
  std::string tbLabel;
  std::uint32_t color = 0;
  ElementKind kind = ElementKind::FluxLine;
  BoundaryKind boundary = BoundaryKind::HydrologicUnit;
  // The prefix of the stored label: a boundary's kind prefix; for a stored
  // boundary whose label lacks it (an older file), none, so the label stays.
  std::string labelPrefix;

  Field failedField = Field::None;

 private:
  std::int64_t key_ = 0;
  Element loaded_;
};

}  // namespace tarno
