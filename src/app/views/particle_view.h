// The view of a particle's properties: the direction of tracing, the start at the
// top of the saturated thickness or at an elevation, and for a grid the number of
// particles.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/particle_dialog.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace tarno {

class ParticleView : public QDialog {
 public:
  ParticleView(ParticleProperties& model, UserInterface& ui,
               std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QRadioButton* direction(int index) const { return direction_[index]; }
  QCheckBox* chkSatdThick() const { return satdThick_; }
  QLineEdit* tbElevation() const { return elevation_; }
  QLabel* elevationUnit() const { return elevationUnit_; }
  QLineEdit* numOfParticles() const { return number_; }
  QLabel* numberCaption() const { return numberCaption_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  QLineEdit* field(ParticleProperties::Field which) const;

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void UpdateEnabled();
  void PressOK();

  ParticleProperties& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  std::array<QRadioButton*, 2> direction_{};
  QCheckBox* satdThick_;
  QLineEdit *elevation_, *number_;
  QLabel *elevationCaption_, *elevationUnit_, *numberCaption_;
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
