#include "elements/element_dialog.h"

#include "elements/flux_inspect_dialog.h"
#include "elements/particle_dialog.h"
#include "elements/test_point_dialog.h"
#include "elements/text_label_dialog.h"

namespace tarno {

std::unique_ptr<ElementDialog> MakeElementDialog(ElementKind kind) {
  switch (kind) {
    // Each kind's dialog joins here as it is built.
    case ElementKind::TestPoint:
      return std::make_unique<TestPointProperties>();
    case ElementKind::Particle:
      return std::make_unique<ParticleProperties>();
    // One dialog names the simple strings. A Domains element is read by its flags
    // when the dialog loads it; until then it asks for a hydrologic unit boundary.
    case ElementKind::FluxLine:
    case ElementKind::Capzone:
    case ElementKind::Domain:
      return std::make_unique<FluxInspectDialog>(kind);
    case ElementKind::Text:
      return std::make_unique<TextLabelProperties>();
    default:
      return nullptr;
  }
}

}  // namespace tarno
