// The view of an inhomogeneity's properties: on General the five values, each
// beside the box that makes it the area's own, and the colour; on Scenarios the
// tags of the conductivity and the recharge.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/inhomogeneity_dialog.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace tarno {

class UserInterface;

class InhomogeneityView : public QDialog {
 public:
  InhomogeneityView(Inhomogeneity& model, UserInterface& ui,
                    std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QTabWidget* tabs() const { return tabs_; }
  QLineEdit* label() const { return label_; }
  QLineEdit* data(int i) const { return data_[i]; }
  QLabel* prompt(int i) const { return prompts_[i]; }
  QLabel* unit(int i) const { return units_[i]; }
  // The box of field i: ChangeK, ChangeR, ChangeP, ChangeB, ChangeA.
  QCheckBox* change(int i) const { return change_[i]; }
  QCheckBox* scenarioHydCond() const { return scenarioHydCond_; }
  QCheckBox* scenarioRecharge() const { return scenarioRecharge_; }
  // tbScenario(1) and (2).
  QLineEdit* scenario(int i) const { return scenario_[i]; }
  QLabel* swatch() const { return swatch_; }
  QPushButton* colorButton() const { return color_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  QLineEdit* field(Inhomogeneity::Field which) const;

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void Click(const std::function<void()>& rule);
  void PressOK();

  Inhomogeneity& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QTabWidget* tabs_;
  QLineEdit* label_;
  std::array<QLineEdit*, 5> data_{};
  std::array<QLabel*, 5> prompts_{};
  std::array<QLabel*, 5> units_{};
  std::array<QCheckBox*, 5> change_{};
  QCheckBox *scenarioHydCond_, *scenarioRecharge_;
  std::array<QLineEdit*, 3> scenario_{};
  std::array<QLabel*, 3> scenarioPrompts_{};
  QLabel* swatch_;
  QPushButton *color_, *ok_, *cancel_;
};

}  // namespace tarno
