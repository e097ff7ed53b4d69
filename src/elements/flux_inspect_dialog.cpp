#include "elements/flux_inspect_dialog.h"

#include "core/text.h"
#include "elements/element_store.h"
#include "elements/entry_check.h"
#include "store/schema.h"

namespace tarno {

BoundaryKind BoundaryKindOf(const Row& domain) {
  if (domain.Flag("FarFieldBoundary")) return BoundaryKind::FarField;
  if (domain.Flag("NearFieldHU")) return BoundaryKind::HydrologicUnit;
  return BoundaryKind::Model;
}

const char* BoundaryLabelPrefix(BoundaryKind kind) {
  switch (kind) {
    case BoundaryKind::FarField:
      return "Far_Field_";
    case BoundaryKind::Model:
      return "Model_";
    default:
      return "";
  }
}

std::uint32_t DefaultBoundaryColour() { return static_cast<std::uint32_t>(ClassicColour(0)); }

Element NewBoundary(BoundaryKind kind, std::vector<Vertex> vertices) {
  Element e = NewElement(ElementKind::Domain, std::move(vertices));
  e.row.Set("FarFieldBoundary", kind == BoundaryKind::FarField);
  e.row.Set("NearFieldHU", kind == BoundaryKind::HydrologicUnit);
  e.row.Set("Color", static_cast<std::int64_t>(DefaultBoundaryColour()));
  return e;
}

std::string DefaultStringLabel(Database& db, ElementKind kind, BoundaryKind boundary) {
  std::string word = "FL";
  std::string prefix;
  if (kind == ElementKind::Capzone) word = "PA";
  if (kind == ElementKind::Domain) {
    word = boundary == BoundaryKind::FarField ? "FF"
           : boundary == BoundaryKind::Model  ? "MB"
                                              : "HU";
    prefix = BoundaryLabelPrefix(boundary);
  }
  std::size_t n = LoadAll(db, kind).size() + 1;
  while (FindByLabel(db, kind, prefix + word + std::to_string(n))) ++n;
  return word + std::to_string(n);
}

FluxInspectDialog::FluxInspectDialog(ElementKind kind, BoundaryKind boundary) {
  SetPurpose(kind, boundary);
}

void FluxInspectDialog::SetPurpose(ElementKind k, BoundaryKind b) {
  kind = k;
  boundary = b;
  labelPrefix.clear();
  switch (k) {
    case ElementKind::Capzone:
      Prompt = kCapzonePrompt;
      break;
    case ElementKind::Domain:
      Prompt = b == BoundaryKind::FarField ? kFarfieldPrompt
               : b == BoundaryKind::Model  ? kModelBoundaryPrompt
                                           : kDomainPrompt;
      labelPrefix = BoundaryLabelPrefix(b);
      break;
    default:
      kind = ElementKind::FluxLine;
      Prompt = kFluxPrompt;
      break;
  }
}

void FluxInspectDialog::LoadElement(Database&, const Element& e) {
  const std::string stored = e.row.Text("Label");
  if (e.kind == ElementKind::Domain) {
    SetPurpose(e.kind, BoundaryKindOf(e.row));
    color = static_cast<std::uint32_t>(e.row.Integer("Color"));
    const std::string prefix = labelPrefix;
    if (EqualsIgnoreCase(std::string_view(stored).substr(0, prefix.size()), prefix)) {
      tbLabel = stored.substr(prefix.size());
      labelPrefix = stored.substr(0, prefix.size());  // as stored, its case included
    } else {
      tbLabel = stored;
      // A stored boundary without its prefix keeps its label as it is.
      if (e.key != 0) labelPrefix.clear();
    }
  } else {
    SetPurpose(e.kind);
    tbLabel = stored;
  }
  key_ = e.key;
  loaded_ = e;
  failedField = Field::None;
  Result = 2;
}

bool FluxInspectDialog::OK(Database& db, UserInterface& ui) {
  failedField = Field::None;
  const auto fail = [&](const std::string& title, const std::vector<std::string>& lines) {
    failedField = Field::Label;
    ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
    return false;
  };
  const auto taken = [&] {
    const auto other = FindByLabel(db, kind, StoredLabel());
    return other && other->key != key_;
  };
  const bool missing = tbLabel.empty();
  if (kind == ElementKind::Domain) {
    if (missing) return fail("Data Missing", {"Label must be specified. "});
    if (taken())
      return fail("Non-unique label", {"A Hydrologic Unit Boundary with that label already exists!",
                                       "Please choose another name."});
  } else {
    if (taken())
      return fail("Duplicate Label",
                  {"Label ('" + tbLabel + "') already exists!", "Please enter a new label."});
    if (missing) return fail("Data Missing", {"Label must be specified. "});
  }
  // The project file holds a label in 32 characters; a longer one would not store.
  if (StoredLabel().size() > kLabelSize) {
    return fail("Invalid Label",
                {"The label cannot be longer than " +
                     std::to_string(kLabelSize - labelPrefix.size()) + " characters.",
                 "Please enter a new label."});
  }
  Result = 1;
  return true;
}

void FluxInspectDialog::StoreElement(Element& e) const {
  SetText(e.row, "Label", StoredLabel());
  if (kind != ElementKind::Domain || !e.row.Has("Color")) return;
  SetInteger(e.row, "Color", static_cast<std::int64_t>(color));
  // The flags change only when the row says another kind than the dialog serves, so
  // a stored row keeps its form.
  if (BoundaryKindOf(e.row) != boundary) {
    e.row.Set("FarFieldBoundary", boundary == BoundaryKind::FarField);
    e.row.Set("NearFieldHU", boundary == BoundaryKind::HydrologicUnit);
  }
}

bool FluxInspectDialog::FormChanged() const {
  // A protection area only marks an area on the map: the solution does not depend
  // on it.
  if (kind == ElementKind::Capzone) return false;
  if (key_ == 0) return true;
  Element after = loaded_;
  StoreElement(after);
  return !(after == loaded_);
}

bool FluxInspectDialog::ChooseColour(UserInterface& ui) {
  const auto chosen = ui.ColourDialog(color);
  if (!chosen) return false;
  color = *chosen;
  return true;
}

}  // namespace tarno
