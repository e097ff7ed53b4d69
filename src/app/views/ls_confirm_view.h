// The view of the question before a vertex of a string is deleted: the message and
// the three buttons Cancel, Vertex and Entire String.
#pragma once

#include <QDialog>
#include <array>

#include "elements/ls_confirm_dialog.h"

class QLabel;
class QPushButton;

namespace tarno {

class LSConfirmView : public QDialog {
 public:
  explicit LSConfirmView(LSConfirm& model, QWidget* parent = nullptr);
  QLabel* message() const { return message_; }
  // The buttons by the model's index: 0 Cancel, 1 Vertex, 2 Entire String.
  QPushButton* button(int index) const { return buttons_.at(static_cast<std::size_t>(index)); }
  // Closing the window is Cancel.
  void reject() override;

 private:
  LSConfirm& model_;
  QLabel* message_;
  std::array<QPushButton*, 3> buttons_{};
};

}  // namespace tarno
