// The view of the Instant Inspector's settings ("Instant Inspector Settings...").
#pragma once

#include <QDialog>

#include "core/ui_port.h"
#include "solver/inspect.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tarno {

// The step size of the integrity check with its unit, the elevation of inspection
// and the two switches. OK checks the step size through the model ("Invalid Value")
// and stays open, with the field selected, when it is refused.
class InspectorView : public QDialog {
 public:
  InspectorView(InspectorDialog& model, UserInterface& ui, QWidget* parent = nullptr);
  QLineEdit* stepSize() const { return stepSize_; }
  QLabel* stepUnit() const { return stepUnit_; }
  QLineEdit* elevation() const { return elevation_; }
  QCheckBox* top() const { return top_; }
  QCheckBox* traceBackwards() const { return backwards_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  void reject() override;

 private:
  InspectorDialog& model_;
  UserInterface& ui_;
  QLineEdit* stepSize_;
  QLabel* stepUnit_;
  QLineEdit* elevation_;
  QCheckBox *top_, *backwards_;
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
