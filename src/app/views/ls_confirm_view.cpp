#include "app/views/ls_confirm_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarno {

LSConfirmView::LSConfirmView(LSConfirm& model, QWidget* parent) : QDialog(parent), model_(model) {
  setWindowTitle(QString::fromUtf8(LSConfirm::kTitle));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(QString::fromStdString(model.Message)));
  auto* row = new QHBoxLayout;
  row->addStretch();
  // Closing the window without a button leaves Cancel.
  model_.Click(LSConfirm::kCancel);
  for (int i = 0; i < 3; ++i) {
    buttons_[i] = new QPushButton(QString::fromUtf8(LSConfirm::kButtons[i].caption));
    buttons_[i]->setToolTip(QString::fromUtf8(LSConfirm::kButtons[i].tip));
    row->addWidget(buttons_[i]);
    connect(buttons_[i], &QPushButton::clicked, this, [this, i] {
      model_.Click(i);
      accept();
    });
  }
  layout->addLayout(row);
}

}  // namespace tarno
