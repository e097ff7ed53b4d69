// The view of the GUI options: tolerances, the base map haze, the two pens of the
// map (contours and pathlines) with their colours, and "Load Defaults".
#pragma once

#include <QDialog>

#include "app/shell_models.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

namespace tarno {

class GUIOptionsView : public QDialog {
 public:
  GUIOptionsView(GUIOptions& model, UserInterface& ui, QWidget* parent = nullptr);

  QLineEdit* vertexTolerance() const { return vertexTolerance_; }
  QLineEdit* linesinkShadow() const { return linesinkShadow_; }
  QLineEdit* hazeLevel() const { return hazeLevel_; }
  QComboBox* contourLineType() const { return contourType_; }
  QComboBox* pathlineLineType() const { return pathlineType_; }
  QSpinBox* contourLineWidth() const { return contourWidth_; }
  QSpinBox* pathlineLineWidth() const { return pathlineWidth_; }
  QPushButton* contourColorButton() const { return contourColorButton_; }
  QPushButton* pathlineColorButton() const { return pathlineColorButton_; }
  QPushButton* hazeColorButton() const { return hazeColorButton_; }
  QLabel* contourColorSwatch() const { return contourSwatch_; }
  QCheckBox* suppressTranslation() const { return suppress_; }
  QPushButton* defaultsButton() const { return defaults_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void ShowColours();
  void PickColour(Colour& colour);

  GUIOptions& model_;
  UserInterface& ui_;
  QLineEdit *vertexTolerance_, *linesinkShadow_, *hazeLevel_;
  QComboBox *contourType_, *pathlineType_;
  QSpinBox *contourWidth_, *pathlineWidth_;
  QPushButton *contourColorButton_, *pathlineColorButton_, *hazeColorButton_;
  QLabel *contourSwatch_, *pathlineSwatch_, *hazeSwatch_;
  QCheckBox* suppress_;
  QPushButton *defaults_, *ok_, *cancel_;
};

}  // namespace tarno
