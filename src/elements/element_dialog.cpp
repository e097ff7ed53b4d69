#include "elements/element_dialog.h"

#include "elements/barrier_dialog.h"
#include "elements/flux_inspect_dialog.h"
#include "elements/inhomogeneity_dialog.h"
#include "elements/lake_dialog.h"
#include "elements/linesink_dialog.h"
#include "elements/particle_dialog.h"
#include "elements/test_point_dialog.h"
#include "elements/text_label_dialog.h"
#include "elements/uniform_flow_dialog.h"
#include "elements/well_dialog.h"

namespace tarno {

std::unique_ptr<ElementDialog> MakeElementDialog(ElementKind kind) {
  switch (kind) {
    case ElementKind::Well:
      return std::make_unique<WellProperties>();
    case ElementKind::Linesink:
      return std::make_unique<LinesinkString>();
    case ElementKind::Barrier:
      return std::make_unique<NoFlowString>();
    case ElementKind::Inhomogeneity:
      return std::make_unique<Inhomogeneity>();
    case ElementKind::Lake:
      return std::make_unique<Lake>();
    case ElementKind::UniformFlow:
      return std::make_unique<UniformFlow>();
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
