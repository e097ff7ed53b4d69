// The view of the unit change: the two unit designations as option pairs.
#pragma once

#include <QDialog>

#include "store/dialogs.h"

class QPushButton;
class QRadioButton;

namespace tarno {

class UnitChangeView : public QDialog {
 public:
  UnitChangeView(UnitChange& model, QWidget* parent = nullptr);

  QRadioButton* computeFeet() const { return computeFeet_; }
  QRadioButton* computeMeters() const { return computeMeters_; }
  QRadioButton* mapFeet() const { return mapFeet_; }
  QRadioButton* mapMeters() const { return mapMeters_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

  void reject() override;

 private:
  UnitChange& model_;
  QRadioButton* computeFeet_;
  QRadioButton* computeMeters_;
  QRadioButton* mapFeet_;
  QRadioButton* mapMeters_;
  QPushButton* ok_;
  QPushButton* cancel_;
};

}  // namespace tarno
