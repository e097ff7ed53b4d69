#include "elements/element_dialog.h"

#include "elements/barrier_dialog.h"
#include "elements/inhomogeneity_dialog.h"
#include "elements/lake_dialog.h"
#include "elements/linesink_dialog.h"
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
    default:
      return nullptr;
  }
}

}  // namespace tarno
