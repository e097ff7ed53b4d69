// The view of the well's dialog: the label above four tabs (General, 3-D Geometry,
// Transient Well, Other), each number with its prompt and its unit, over the well
// dialog model. Every click and keystroke goes to the model, and the widgets are
// then brought into line with the model's state.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/well_dialog.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace tarno {

class WellPropertiesView : public QDialog {
 public:
  // `projectFile` gives the open project, which OK reads for its checks.
  WellPropertiesView(WellProperties& model, UserInterface& ui,
                     std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QTabWidget* tabs() const { return tabs_; }
  QLineEdit* label() const { return tbLabel_; }
  QLineEdit* field(int index) const { return tbData_[index]; }
  QLabel* prompt(int index) const { return prompts_[index]; }
  QLabel* unit(int index) const { return units_[index]; }
  QRadioButton* headSpec(int index) const { return optHeadSpec_[index]; }
  QCheckBox* pond() const { return chkPond_; }
  QCheckBox* ppWell() const { return chkPPWell_; }
  QCheckBox* transient(int index) const { return chkTransient_[index]; }
  QCheckBox* trace() const { return chkTrace_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

  void reject() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void Refresh();
  void PressOK();

  WellProperties& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QTabWidget* tabs_;
  QLineEdit* tbLabel_;
  std::array<QLineEdit*, WellProperties::kFieldCount> tbData_{};
  std::array<QLabel*, WellProperties::kFieldCount> prompts_{};
  std::array<QLabel*, WellProperties::kFieldCount> units_{};
  std::array<QRadioButton*, 2> optHeadSpec_{};
  QCheckBox *chkPond_, *chkPPWell_, *chkTrace_;
  std::array<QCheckBox*, 2> chkTransient_{};
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
