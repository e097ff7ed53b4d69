// The view of the Welcome dialog at start-up: start a project or one of the two
// tutorial examples, and whether to show the dialog again.
#pragma once

#include <QDialog>

#include "app/shell_models.h"

class QCheckBox;
class QPushButton;
class QRadioButton;

namespace tarno {

class WelcomeView : public QDialog {
 public:
  WelcomeView(Welcome& model, QWidget* parent = nullptr);

  QRadioButton* startProject() const { return start_; }
  QRadioButton* firstExample() const { return first_; }
  QRadioButton* secondExample() const { return second_; }
  QCheckBox* dontShow() const { return dontShow_; }
  QPushButton* okButton() const { return ok_; }

  // Closing the window starts the program without a project.
  void reject() override;

 private:
  Welcome& model_;
  QRadioButton *start_, *first_, *second_;
  QCheckBox* dontShow_;
  QPushButton* ok_;
};

}  // namespace tarno
