#include "app/shell/select_area.h"

namespace tarno {

std::string SelectArea::Selection() const {
  switch (ElementType) {
    case 0: return "TestPoints";
    case 1: return "Wells";
    case 2: return "Particles";
    default: return "";
  }
}

ElementKind SelectArea::Kind() const {
  switch (ElementType) {
    case 0: return ElementKind::TestPoint;
    case 1: return ElementKind::Well;
    default: return ElementKind::Particle;
  }
}

void SelectAreaOptions::Load(ElementKind kind, std::int64_t count) {
  const std::string n = std::to_string(count);
  Command = kCancel;
  EditAvailable = kind == ElementKind::Particle;
  switch (kind) {
    case ElementKind::Particle:
      Text = n +
             " Particle(s). Choose Delete to remove them from the project or edit to edit "
             "their properties";
      break;
    case ElementKind::Well:
      Text = n + " Wells in this window. Click Delete to remove them from the project.";
      break;
    default:
      Text = n + " Test points in this window. Click delete to remove them from the project.";
      break;
  }
}

std::string NothingInWindowText(ElementKind kind) {
  switch (kind) {
    case ElementKind::Particle: return "There are no Particles in this window!";
    case ElementKind::Well: return "There are no Wells in this window!";
    default: return "There are no Test points in this window!";
  }
}

}  // namespace tarno
