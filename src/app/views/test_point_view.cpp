#include "app/views/test_point_view.h"

#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;

TestPointView::TestPointView(TestPointProperties& model, UserInterface& ui,
                             std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(TestPointProperties::kTitle);
  auto* layout = new QVBoxLayout(this);

  auto* where = new QGroupBox(QStringLiteral("Test Point"));
  auto* grid = new QGridLayout(where);
  label_ = views::AddField(grid, 0, QStringLiteral("Label"), model.tbLabel);
  label_->setToolTip(TestPointProperties::kLabelPrompt);
  label_->setMaxLength(32);
  x_ = views::AddField(grid, 1, QStringLiteral("X"), model.tbX, nullptr, &xUnit_);
  y_ = views::AddField(grid, 2, QStringLiteral("Y"), model.tbY, nullptr, &yUnit_);
  views::NumberFilter(x_);
  views::NumberFilter(y_);
  layout->addWidget(where);

  auto* observation = new QGroupBox(QStringLiteral("Observation"));
  auto* obsLayout = new QVBoxLayout(observation);
  auto* options = new QHBoxLayout;
  for (int i = 0; i < 3; ++i) {
    types_[i] = new QRadioButton(TestPointProperties::kTypeOptions[i]);
    options->addWidget(types_[i]);
    const auto type = static_cast<TestPointType>(i);
    connect(types_[i], &QRadioButton::clicked, this, [this, type] { PickType(type); });
  }
  obsLayout->addLayout(options);
  auto* obsGrid = new QGridLayout;
  observed_ = new QLabel;
  obs_ = new QLineEdit;
  obs_->setToolTip(TestPointProperties::kObsPrompt);
  views::NumberFilter(obs_);
  observed_->setBuddy(obs_);
  obsUnit_ = new QLabel;
  obsGrid->addWidget(observed_, 0, 0);
  obsGrid->addWidget(obs_, 0, 1);
  obsGrid->addWidget(obsUnit_, 0, 2);
  obsLayout->addLayout(obsGrid);
  note_ = new QLabel;
  note_->setWordWrap(true);
  obsLayout->addWidget(note_);
  layout->addWidget(observation);

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  FromModel();
}

void TestPointView::FromModel() {
  label_->setText(Q(model_.tbLabel));
  x_->setText(Q(model_.tbX));
  y_->setText(Q(model_.tbY));
  obs_->setText(Q(model_.tbObs));
  xUnit_->setText(Q(model_.lblCoordinateUnit));
  yUnit_->setText(Q(model_.lblCoordinateUnit));
  types_[static_cast<int>(model_.TPType)]->setChecked(true);
  observed_->setText(Q(model_.lblObserved));
  obsUnit_->setText(Q(model_.lblUnit));
  note_->setText(Q(model_.lblNote));
}

void TestPointView::ToModel() {
  model_.tbLabel = S(label_->text());
  model_.tbX = S(x_->text());
  model_.tbY = S(y_->text());
  model_.tbObs = S(obs_->text());
}

void TestPointView::PickType(TestPointType type) {
  ToModel();
  model_.SelectType(type);
  FromModel();
}

QLineEdit* TestPointView::field(TestPointProperties::Field which) const {
  switch (which) {
    case TestPointProperties::Field::Label:
      return label_;
    case TestPointProperties::Field::X:
      return x_;
    case TestPointProperties::Field::Y:
      return y_;
    case TestPointProperties::Field::Obs:
      return obs_;
    default:
      return nullptr;
  }
}

void TestPointView::PressOK() {
  ToModel();
  if (views::RunElementOK(model_, ui_, projectFile_, "TestPointProperties.OK_Click")) {
    done(1);
    return;
  }
  views::SelectRefused(field(model_.failedField));
}

void TestPointView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
