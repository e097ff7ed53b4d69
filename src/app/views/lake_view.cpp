#include "app/views/lake_view.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;

LakeView::LakeView(Lake& model, UserInterface& ui, std::function<std::string()> projectFile,
                   QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(Lake::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* top = new QGridLayout;
  label_ = AddField(top, 0, QString::fromLatin1(Lake::kLabelPrompt), "");
  layout->addLayout(top);

  // The lake's interior first, then its water balance and its bottom, then the
  // stage table the solver reads.
  auto* interior = new QGroupBox(QStringLiteral("Lake"));
  auto* grid = new QGridLayout(interior);
  int row = 0;
  for (int i : {Lake::kInterriorConductivity, Lake::kAddedRechargeRate, Lake::kEvapotranspiration,
                Lake::kWidth, Lake::kResistance, Lake::kStageTable})
    data_[i] = AddField(grid, row++, QString::fromLatin1(Lake::kPrompts[i]), "", nullptr,
                        &units_[i]);
  layout->addWidget(interior);

  auto* colourRow = new QHBoxLayout;
  color_ = new QPushButton(QString::fromLatin1(Lake::kColorButton));
  swatch_ = views::NewSwatch();
  colourRow->addWidget(color_);
  colourRow->addWidget(swatch_);
  colourRow->addStretch();
  layout->addLayout(colourRow);

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));

  connect(color_, &QPushButton::clicked, this, [this] {
    ToModel();
    if (model_.ChooseColor(ui_)) views::PaintSwatch(swatch_, model_.color);
  });
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });

  FromModel();
}

void LakeView::FromModel() {
  label_->setText(Q(model_.tbLabel));
  for (int i = 0; i < 6; ++i) {
    data_[i]->setText(Q(model_.tbData[i]));
    units_[i]->setText(Q(model_.Unit(i)));
  }
  views::PaintSwatch(swatch_, model_.color);
}

void LakeView::ToModel() {
  model_.tbLabel = S(label_->text());
  for (int i = 0; i < 6; ++i) model_.tbData[i] = S(data_[i]->text());
}

QLineEdit* LakeView::field(Lake::Field which) const {
  switch (which) {
    case Lake::Field::Label:
      return label_;
    case Lake::Field::StageTable:
      return data_[Lake::kStageTable];
    case Lake::Field::None:
      break;
  }
  return nullptr;
}

void LakeView::PressOK() {
  ToModel();
  if (views::RunElementOK(model_, ui_, projectFile_, "Lake.OK_Click")) {
    done(1);
    return;
  }
  views::SelectRefused(field(model_.failedField));
}

void LakeView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
