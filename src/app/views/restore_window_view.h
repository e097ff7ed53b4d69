// The view of the saved windows: the list of names, the corners of the one in view
// (typing filtered to numbers), delete, OK and Cancel.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "core/ui_port.h"
#include "display/navigation.h"

class QLineEdit;
class QListWidget;
class QPushButton;

namespace tarno {

class RestoreWindowView : public QDialog {
 public:
  // `projectFile` gives the open project for Delete; without one Delete is disabled.
  RestoreWindowView(RestoreWindow& model, UserInterface& ui,
                    std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QListWidget* names() const { return names_; }
  QLineEdit* x1() const { return x1_; }
  QLineEdit* y1() const { return y1_; }
  QLineEdit* x2() const { return x2_; }
  QLineEdit* y2() const { return y2_; }
  QPushButton* deleteButton() const { return delete_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

  void reject() override;

 private:
  void ShowRows();
  void ShowCurrent();
  RestoreWindow& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QListWidget* names_;
  QLineEdit *x1_, *y1_, *x2_, *y2_;
  QPushButton *delete_, *ok_, *cancel_;
};

}  // namespace tarno
