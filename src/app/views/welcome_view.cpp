#include "app/views/welcome_view.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tarno {

WelcomeView::WelcomeView(Welcome& model, QWidget* parent) : QDialog(parent), model_(model) {
  setWindowTitle(Welcome::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* heading = new QLabel(Welcome::kTitle);
  QFont font = heading->font();
  font.setPointSizeF(font.pointSizeF() * 1.5);
  font.setBold(true);
  heading->setFont(font);
  layout->addWidget(heading);

  auto* startGroup = new QGroupBox(QStringLiteral("Start TARNO"));
  auto* startLayout = new QVBoxLayout(startGroup);
  start_ = new QRadioButton(QStringLiteral("Start your project"));
  startLayout->addWidget(start_);
  layout->addWidget(startGroup);

  auto* tutorial = new QGroupBox(QStringLiteral("Tutorial"));
  auto* tutorialLayout = new QVBoxLayout(tutorial);
  tutorialLayout->addWidget(new QLabel(QStringLiteral("Start Tutorial")));
  first_ = new QRadioButton(QStringLiteral("Vincennes, Indiana Example"));
  second_ = new QRadioButton(QStringLiteral("Basin and Range Example"));
  tutorialLayout->addWidget(first_);
  tutorialLayout->addWidget(second_);
  layout->addWidget(tutorial);

  // The three options form one group across the two boxes.
  for (QRadioButton* option : {start_, first_, second_}) option->setAutoExclusive(false);
  auto exclusive = [this](QRadioButton* chosen) {
    for (QRadioButton* option : {start_, first_, second_}) option->setChecked(option == chosen);
  };
  for (QRadioButton* option : {start_, first_, second_}) {
    connect(option, &QRadioButton::clicked, this, [exclusive, option] { exclusive(option); });
  }
  exclusive(model.Result == 2 ? first_ : model.Result == 3 ? second_ : start_);

  dontShow_ = new QCheckBox(QStringLiteral("Don't show this dialog box in the future"));
  dontShow_->setChecked(model.chkShowBox);
  layout->addWidget(dontShow_);

  auto* buttons = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  ok_->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(ok_);
  layout->addLayout(buttons);

  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.Result = first_->isChecked() ? 2 : second_->isChecked() ? 3 : 1;
    model_.chkShowBox = dontShow_->isChecked();
    done(model_.Result);
  });
}

void WelcomeView::reject() {
  model_.Result = 1;
  model_.chkShowBox = dontShow_->isChecked();
  done(1);
}

}  // namespace tarno
