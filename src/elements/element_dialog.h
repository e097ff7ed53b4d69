// The dialog model of an element kind, as the element operations use it: filled
// from an element, OK with every check of the dialog in its order, and written back
// into the element. The desktop program shows the same model through its view; the
// command line runs OK on it directly, so both refuse the same input with the same
// messages.
#pragma once

#include <memory>

#include "core/ui_port.h"
#include "elements/element.h"
#include "store/database.h"

namespace tarno {

class ElementDialog : public DialogModel {
 public:
  // Fills every property from the element (a new one with its defaults, or one read
  // from the project) and reads the project's units. The element's label is
  // remembered as the old label, so that OK on an unchanged label does not find
  // the element itself a duplicate.
  virtual void LoadElement(Database& db, const Element& e) = 0;
  // The OK button: every check in order, the first failure shown through `ui` with
  // its exact title and lines (and its field selected); true and Result 1 when all
  // pass. Nothing is written to the project here.
  virtual bool OK(Database& db, UserInterface& ui) = 0;
  // Cancel: Result 2, no check.
  virtual void Cancel() { Result = 2; }
  // Writes the properties into the element's row and vertex positions.
  virtual void StoreElement(Element& e) const = 0;
  // The model changed: the solution no longer belongs to it.
  virtual bool FormChanged() const = 0;

  int Result = 2;  // 1 OK, 2 Cancel
};

// The dialog of a kind; nullptr for a kind without one.
std::unique_ptr<ElementDialog> MakeElementDialog(ElementKind kind);

}  // namespace tarno
