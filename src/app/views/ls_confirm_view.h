// The view of the question before a vertex of a string is deleted: the message and
// the buttons Cancel, Vertex and Entire String.
#pragma once

#include <QDialog>
#include <array>

#include "elements/ls_confirm_dialog.h"

class QPushButton;

namespace tarno {

class LSConfirmView : public QDialog {
 public:
  explicit LSConfirmView(LSConfirm& model, QWidget* parent = nullptr);
  QPushButton* button(int index) const { return buttons_[index]; }

 private:
  LSConfirm& model_;
  std::array<QPushButton*, 3> buttons_{};
};

}  // namespace tarno
