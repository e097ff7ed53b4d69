// The view of the name-and-colour dialog of flux inspection lines, protection areas
// and boundaries: titled by the model's Prompt, the label, and for boundaries the
// colour they are drawn in.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "elements/flux_inspect_dialog.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace tarno {

class FluxInspectView : public QDialog {
 public:
  FluxInspectView(FluxInspectDialog& model, UserInterface& ui,
                  std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QLineEdit* tbLabel() const { return label_; }
  // The prefix the stored label takes ("Far_Field_"), shown before the field.
  QLabel* prefix() const { return prefix_; }
  QPushButton* colourButton() const { return colour_; }
  QLabel* colourSwatch() const { return swatch_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

  void reject() override;

 private:
  void ShowColour();
  void PressOK();

  FluxInspectDialog& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QLineEdit* label_;
  QLabel *prefix_, *swatch_;
  QPushButton *colour_, *ok_, *cancel_;
};

}  // namespace tarno
