// The view of the uniform flow: reference head, regional gradient and orientation.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/uniform_flow_dialog.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace tarno {

class UserInterface;

class UniformFlowView : public QDialog {
 public:
  UniformFlowView(UniformFlow& model, UserInterface& ui, std::function<std::string()> projectFile,
                  QWidget* parent = nullptr);

  QLineEdit* data(int i) const { return data_[i]; }
  QLabel* unit(int i) const { return units_[i]; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  QLineEdit* field(UniformFlow::Field which) const;

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void PressOK();

  UniformFlow& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  std::array<QLineEdit*, 3> data_{};
  std::array<QLabel*, 3> units_{};
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
