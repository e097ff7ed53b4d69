// The view of the line-sink string's dialog: the label and the kind of string
// above three tabs (General, Routing, Scenarios), over the line-sink dialog model.
// Every click and keystroke goes to the model; the widgets then follow its state.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/linesink_dialog.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace tarno {

class LinesinkStringView : public QDialog {
 public:
  LinesinkStringView(LinesinkString& model, UserInterface& ui,
                     std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QTabWidget* tabs() const { return tabs_; }
  QLineEdit* label() const { return tbLabel_; }
  QLineEdit* field(int index) const { return tbdata_[index]; }
  // The prompts and units by the model's numbering.
  QLabel* prompt(int index) const { return prompts_[index]; }
  QLabel* unit(int index) const { return units_[index]; }
  QRadioButton* option(LinesinkString::Option o) const { return options_[o]; }
  QCheckBox* farField() const { return chkFarField_; }
  QCheckBox* routing(int index) const { return chkRouting_[index]; }
  QRadioButton* location(int index) const { return auto_[index]; }
  QListWidget* outletFiles() const { return fileOutletFile_; }
  QCheckBox* scenario() const { return chkScenario_; }
  QLineEdit* scenarioField(int index) const { return tbScenario_[index]; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

  void reject() override;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void Refresh();
  void FillOutletFiles();
  void PressOK();

  LinesinkString& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QTabWidget* tabs_;
  QLineEdit* tbLabel_;
  std::array<QLineEdit*, LinesinkString::kFieldCount> tbdata_{};
  std::array<QLabel*, LinesinkString::kFieldCount> prompts_{};
  std::array<QLabel*, LinesinkString::kFieldCount> units_{};
  std::array<QRadioButton*, 5> options_{};
  QCheckBox* chkFarField_;
  std::array<QCheckBox*, 4> chkRouting_{};
  std::array<QRadioButton*, 3> auto_{};
  QListWidget* fileOutletFile_;
  QCheckBox* chkScenario_;
  std::array<QLabel*, 3> scenarioPrompts_{};
  std::array<QLineEdit*, 3> tbScenario_{};
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
