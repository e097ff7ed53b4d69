// The view of a lake's properties: label, the interior and water balance values
// with their units, the stage table's file name and the colour.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/lake_dialog.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace tarno {

class UserInterface;

class LakeView : public QDialog {
 public:
  LakeView(Lake& model, UserInterface& ui, std::function<std::string()> projectFile,
           QWidget* parent = nullptr);

  QLineEdit* label() const { return label_; }
  QLineEdit* data(int i) const { return data_[i]; }
  QLabel* unit(int i) const { return units_[i]; }
  QLabel* swatch() const { return swatch_; }
  QPushButton* colorButton() const { return color_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  QLineEdit* field(Lake::Field which) const;

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void PressOK();

  Lake& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QLineEdit* label_;
  std::array<QLineEdit*, 6> data_{};
  std::array<QLabel*, 6> units_{};
  QLabel* swatch_;
  QPushButton *color_, *ok_, *cancel_;
};

}  // namespace tarno
