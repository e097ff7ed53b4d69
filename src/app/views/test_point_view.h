// The view of a test point's properties: the label and position, the kind of
// observation and the observed value with its unit, over the test point model.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>

#include "elements/test_point_dialog.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace tarno {

class TestPointView : public QDialog {
 public:
  TestPointView(TestPointProperties& model, UserInterface& ui,
                std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QLineEdit* tbLabel() const { return label_; }
  QLineEdit* tbX() const { return x_; }
  QLineEdit* tbY() const { return y_; }
  QLineEdit* tbObs() const { return obs_; }
  QRadioButton* typeOption(TestPointType type) const { return types_[static_cast<int>(type)]; }
  QLabel* observedCaption() const { return observed_; }
  QLabel* observedUnit() const { return obsUnit_; }
  QLabel* note() const { return note_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  // The field of a refused check (null for none).
  QLineEdit* field(TestPointProperties::Field which) const;

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void PickType(TestPointType type);
  void PressOK();

  TestPointProperties& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QLineEdit *label_, *x_, *y_, *obs_;
  QLabel *xUnit_, *yUnit_, *observed_, *obsUnit_, *note_;
  std::array<QRadioButton*, 3> types_{};
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
