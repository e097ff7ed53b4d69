// The view of the new-project wizard: the description and the two unit choices,
// "Create Database" and "Abort".
#pragma once

#include <QDialog>

#include "store/dialogs.h"

class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace tarno {

class NewDatabaseWizardView : public QDialog {
 public:
  NewDatabaseWizardView(NewDatabaseWizard& model, QWidget* parent = nullptr);

  QPlainTextEdit* description() const { return description_; }
  QRadioButton* computeFeet() const { return computeFeet_; }
  QRadioButton* computeMeters() const { return computeMeters_; }
  QRadioButton* mapFeet() const { return mapFeet_; }
  QRadioButton* mapMeters() const { return mapMeters_; }
  QPushButton* createButton() const { return create_; }
  QPushButton* abortButton() const { return abort_; }

  // Closing the window without a button aborts.
  void reject() override;

 private:
  void ToModel();
  NewDatabaseWizard& model_;
  QPlainTextEdit* description_;
  QRadioButton* computeFeet_;
  QRadioButton* computeMeters_;
  QRadioButton* mapFeet_;
  QRadioButton* mapMeters_;
  QPushButton* create_;
  QPushButton* abort_;
};

}  // namespace tarno
