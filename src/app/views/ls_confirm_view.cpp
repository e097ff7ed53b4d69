#include "app/views/ls_confirm_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarno {

LSConfirmView::LSConfirmView(LSConfirm& model, QWidget* parent) : QDialog(parent), model_(model) {
  setWindowTitle(LSConfirm::kTitle);
  auto* layout = new QVBoxLayout(this);
  message_ = new QLabel(QString::fromStdString(model.Message));
  message_->setWordWrap(true);
  layout->addWidget(message_);
  auto* row = new QHBoxLayout;
  for (std::size_t i = 0; i < buttons_.size(); ++i) {
    const LSConfirm::Button& b = LSConfirm::kButtons[i];
    auto* button = new QPushButton(QString::fromUtf8(b.caption));
    button->setToolTip(QString::fromUtf8(b.tip));
    buttons_[i] = button;
    row->addWidget(button);
    const int index = static_cast<int>(i);
    connect(button, &QPushButton::clicked, this, [this, index] {
      model_.Click(index);
      done(index == LSConfirm::kCancel ? QDialog::Rejected : QDialog::Accepted);
    });
  }
  buttons_[LSConfirm::kCancel]->setDefault(true);
  layout->addLayout(row);
}

void LSConfirmView::reject() {
  model_.Click(LSConfirm::kCancel);
  QDialog::reject();
}

}  // namespace tarno
