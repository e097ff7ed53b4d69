#include "app/views/select_area_view.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarno {

SelectAreaView::SelectAreaView(SelectArea& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle(QString::fromUtf8(SelectArea::kTitle));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(QString::fromUtf8(SelectArea::kTitle)));
  type_ = new QComboBox;
  for (const char* t : SelectArea::kElementTypes) type_->addItem(QString::fromUtf8(t));
  type_->setCurrentIndex(model.ElementType);
  layout->addWidget(type_);
  auto* buttons = new QHBoxLayout;
  auto* ok = new QPushButton(QStringLiteral("OK"));
  auto* cancel = new QPushButton(QStringLiteral("Cancel"));
  ok->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(ok);
  buttons->addWidget(cancel);
  layout->addLayout(buttons);
  model_.Result = 2;
  connect(ok, &QPushButton::clicked, this, [this] {
    model_.ElementType = type_->currentIndex();
    model_.OK();
    accept();
  });
  connect(cancel, &QPushButton::clicked, this, [this] {
    model_.Cancel();
    reject();
  });
}

SelectAreaOptionsView::SelectAreaOptionsView(SelectAreaOptions& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle(QString::fromUtf8(SelectAreaOptions::kHeading));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(QString::fromUtf8(SelectAreaOptions::kHeading)));
  auto* text = new QLabel(QString::fromStdString(model.Text));
  text->setWordWrap(true);
  layout->addWidget(text);
  auto* buttons = new QHBoxLayout;
  delete_ = new QPushButton(QString::fromUtf8(SelectAreaOptions::kDelete));
  edit_ = new QPushButton(QString::fromUtf8(SelectAreaOptions::kEdit));
  cancel_ = new QPushButton(QString::fromUtf8(SelectAreaOptions::kCancel));
  edit_->setVisible(model.EditAvailable);
  buttons->addStretch();
  for (QPushButton* b : {delete_, edit_, cancel_}) buttons->addWidget(b);
  layout->addLayout(buttons);
  model_.Press(SelectAreaOptions::kCancel);
  connect(delete_, &QPushButton::clicked, this, [this] {
    model_.Press(SelectAreaOptions::kDelete);
    accept();
  });
  connect(edit_, &QPushButton::clicked, this, [this] {
    model_.Press(SelectAreaOptions::kEdit);
    accept();
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

}  // namespace tarno
