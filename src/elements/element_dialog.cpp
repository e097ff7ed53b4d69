#include "elements/element_dialog.h"

#include "elements/linesink_dialog.h"
#include "elements/well_dialog.h"

namespace tarno {

std::unique_ptr<ElementDialog> MakeElementDialog(ElementKind kind) {
  switch (kind) {
    case ElementKind::Well:
      return std::make_unique<WellProperties>();
    case ElementKind::Linesink:
      return std::make_unique<LinesinkString>();
    // Each kind's dialog joins here as it is built.
    default:
      return nullptr;
  }
}

}  // namespace tarno
