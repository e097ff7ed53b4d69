#include "app/views/particle_view.h"

#include <QCheckBox>
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

ParticleView::ParticleView(ParticleProperties& model, UserInterface& ui,
                           std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(ParticleProperties::kTitle);
  auto* layout = new QVBoxLayout(this);

  auto* tracing = new QGroupBox(QStringLiteral("Tracing Direction"));
  auto* tracingLayout = new QHBoxLayout(tracing);
  for (int i = 0; i < 2; ++i) {
    direction_[i] = new QRadioButton(ParticleProperties::kDirectionOptions[i]);
    tracingLayout->addWidget(direction_[i]);
  }
  layout->addWidget(tracing);

  auto* start = new QGroupBox(QStringLiteral("Start"));
  auto* grid = new QGridLayout(start);
  satdThick_ = new QCheckBox(ParticleProperties::kSatdThickCaption);
  satdThick_->setToolTip(ParticleProperties::kSatdThickTip);
  grid->addWidget(satdThick_, 0, 0, 1, 3);
  elevation_ = views::AddField(grid, 1, ParticleProperties::kElevationCaption, model.tbElevation,
                               &elevationCaption_, &elevationUnit_);
  views::NumberFilter(elevation_);
  number_ = views::AddField(grid, 2, ParticleProperties::kNumberCaption, model.NumOfParticles,
                            &numberCaption_);
  views::NumberFilter(number_);
  layout->addWidget(start);

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));
  connect(satdThick_, &QCheckBox::toggled, this, [this] { UpdateEnabled(); });
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  FromModel();
}

void ParticleView::FromModel() {
  // A stored direction that is neither leaves both options clear.
  for (int i = 0; i < 2; ++i) direction_[i]->setAutoExclusive(false);
  direction_[0]->setChecked(model_.chkDirection == 0);
  direction_[1]->setChecked(model_.chkDirection == 1);
  for (int i = 0; i < 2; ++i) direction_[i]->setAutoExclusive(true);
  satdThick_->setChecked(model_.chkSatdThick);
  elevation_->setText(Q(model_.tbElevation));
  elevationUnit_->setText(Q(model_.lblElevationUnit));
  number_->setText(Q(model_.NumOfParticles));
  UpdateEnabled();
}

void ParticleView::ToModel() {
  model_.chkDirection = direction_[1]->isChecked() ? 1 : direction_[0]->isChecked() ? 0 : -1;
  model_.chkSatdThick = satdThick_->isChecked();
  model_.tbElevation = S(elevation_->text());
  model_.NumOfParticles = S(number_->text());
}

void ParticleView::UpdateEnabled() {
  model_.chkSatdThick = satdThick_->isChecked();
  const bool typed = model_.ElevationEnabled();
  elevation_->setEnabled(typed);
  elevationCaption_->setEnabled(typed);
  const bool many = model_.NumberVisible();
  number_->setVisible(many);
  numberCaption_->setVisible(many);
}

QLineEdit* ParticleView::field(ParticleProperties::Field which) const {
  switch (which) {
    case ParticleProperties::Field::Elevation:
      return elevation_;
    case ParticleProperties::Field::Number:
      return number_;
    default:
      return nullptr;
  }
}

void ParticleView::PressOK() {
  ToModel();
  if (views::RunElementOK(model_, ui_, projectFile_, "ParticleProperties.OK_Click")) {
    done(1);
    return;
  }
  if (model_.failedField == ParticleProperties::Field::Direction) {
    direction_[1]->setFocus();
    return;
  }
  views::SelectRefused(field(model_.failedField));
}

void ParticleView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
