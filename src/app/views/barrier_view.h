// The view of a barrier's properties: label, conductivity, thickness, porosity and
// bottom on the General tab, with the closed-domain box and the Ignore Region frame.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/barrier_dialog.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace tarno {

class UserInterface;

class NoFlowStringView : public QDialog {
 public:
  NoFlowStringView(NoFlowString& model, UserInterface& ui,
                   std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QTabWidget* tabs() const { return tabs_; }
  QLineEdit* label() const { return label_; }
  QLineEdit* data(int i) const { return data_[i]; }
  QLabel* unit(int i) const { return units_[i]; }
  QCheckBox* closedDomain() const { return closedDomain_; }
  QCheckBox* ignoreInside() const { return ignoreInside_; }
  QCheckBox* ignoreOutside() const { return ignoreOutside_; }
  QGroupBox* ignoreFrame() const { return ignoreFrame_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  // The text field of a checked field (null for Field::None).
  QLineEdit* field(NoFlowString::Field which) const;

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void PressOK();

  NoFlowString& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QTabWidget* tabs_;
  QLineEdit* label_;
  std::array<QLineEdit*, 4> data_{};
  std::array<QLabel*, 4> units_{};
  QCheckBox *closedDomain_, *ignoreInside_, *ignoreOutside_;
  QGroupBox* ignoreFrame_;
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
