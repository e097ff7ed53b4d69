#include "app/views/barrier_view.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;
using Field = NoFlowString::Field;

NoFlowStringView::NoFlowStringView(NoFlowString& model, UserInterface& ui,
                                   std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(NoFlowString::kTitle);
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  layout->addWidget(tabs_);

  auto* page = new QWidget;
  auto* pageLayout = new QVBoxLayout(page);
  auto* grid = new QGridLayout;
  pageLayout->addLayout(grid);
  label_ = AddField(grid, 0, QStringLiteral("Label"), "");
  for (int i = 0; i < 4; ++i)
    data_[i] = AddField(grid, i + 1, QString::fromLatin1(NoFlowString::kPrompts[i]), "", nullptr,
                        &units_[i]);

  closedDomain_ = new QCheckBox(QString::fromLatin1(NoFlowString::kClosedCaption));
  pageLayout->addWidget(closedDomain_);
  ignoreFrame_ = new QGroupBox(QString::fromLatin1(NoFlowString::kIgnoreFrame));
  auto* frameLayout = new QHBoxLayout(ignoreFrame_);
  ignoreOutside_ = new QCheckBox(QString::fromLatin1(NoFlowString::kIgnoreOutsideCaption));
  ignoreInside_ = new QCheckBox(QString::fromLatin1(NoFlowString::kIgnoreInsideCaption));
  frameLayout->addWidget(ignoreOutside_);
  frameLayout->addWidget(ignoreInside_);
  pageLayout->addWidget(ignoreFrame_);
  auto* note = new QLabel(QString::fromLatin1(NoFlowString::kNote));
  note->setWordWrap(true);
  pageLayout->addWidget(note);
  pageLayout->addStretch();
  tabs_->addTab(page, QStringLiteral("General"));

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));

  // One Ignore box set clears the other.
  connect(ignoreInside_, &QCheckBox::clicked, this, [this](bool checked) {
    ToModel();
    model_.ClickIgnoreInside(checked);
    FromModel();
  });
  connect(ignoreOutside_, &QCheckBox::clicked, this, [this](bool checked) {
    ToModel();
    model_.ClickIgnoreOutside(checked);
    FromModel();
  });
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });

  FromModel();
}

void NoFlowStringView::FromModel() {
  label_->setText(Q(model_.Label));
  for (int i = 0; i < 4; ++i) {
    data_[i]->setText(Q(model_.tbData[i]));
    units_[i]->setText(Q(model_.Unit(i)));
  }
  closedDomain_->setChecked(model_.ClosedDomain);
  ignoreInside_->setChecked(model_.IgnoreInside);
  ignoreOutside_->setChecked(model_.IgnoreOutside);
}

void NoFlowStringView::ToModel() {
  model_.Label = S(label_->text());
  for (int i = 0; i < 4; ++i) model_.tbData[i] = S(data_[i]->text());
  model_.ClosedDomain = closedDomain_->isChecked();
  model_.IgnoreInside = ignoreInside_->isChecked();
  model_.IgnoreOutside = ignoreOutside_->isChecked();
}

QLineEdit* NoFlowStringView::field(Field which) const {
  switch (which) {
    case Field::Label:
      return label_;
    case Field::HydCond:
      return data_[NoFlowString::kHydCond];
    case Field::Thickness:
      return data_[NoFlowString::kThickness];
    case Field::Porosity:
      return data_[NoFlowString::kPorosity];
    case Field::None:
      break;
  }
  return nullptr;
}

void NoFlowStringView::PressOK() {
  ToModel();
  const bool accepted =
      views::RunElementOK(model_, ui_, projectFile_, "NoFlowString.OK_Click");
  // The check turns empty fields into "0": the form shows what was checked.
  FromModel();
  if (accepted) {
    done(1);
    return;
  }
  tabs_->setCurrentIndex(model_.failedTab);
  views::SelectRefused(field(model_.failedField));
}

void NoFlowStringView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
