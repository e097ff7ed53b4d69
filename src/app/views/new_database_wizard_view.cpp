#include "app/views/new_database_wizard_view.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;

NewDatabaseWizardView::NewDatabaseWizardView(NewDatabaseWizard& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle(Q(model.Title()));
  // F1 may later open the manual's page of the wizard.
  auto* layout = new QVBoxLayout(this);

  layout->addWidget(new QLabel(QStringLiteral("Project description")));
  description_ = new QPlainTextEdit(Q(model.Description));
  description_->setObjectName(QStringLiteral("tbDesc"));
  layout->addWidget(description_);

  auto* compute = new QGroupBox(QStringLiteral("Units for computations"));
  auto* computeLayout = new QVBoxLayout(compute);
  computeFeet_ = new QRadioButton(NewDatabaseWizard::kComputeFeetCaption);
  computeMeters_ = new QRadioButton(NewDatabaseWizard::kComputeMetersCaption);
  computeLayout->addWidget(computeFeet_);
  computeLayout->addWidget(new QLabel(QStringLiteral(
      "    heads in feet, time in days, conductivity in ft/day, pumping rates in ft^3/day")));
  computeLayout->addWidget(computeMeters_);
  computeLayout->addWidget(new QLabel(QStringLiteral(
      "    heads in meters, time in days, conductivity in m/day, pumping rates in m^3/day")));
  (model.ComputeMeters ? computeMeters_ : computeFeet_)->setChecked(true);
  layout->addWidget(compute);

  auto* map = new QGroupBox(QStringLiteral("Distance units in basemap files"));
  auto* mapLayout = new QHBoxLayout(map);
  mapFeet_ = new QRadioButton(NewDatabaseWizard::kMapFeetCaption);
  mapMeters_ = new QRadioButton(NewDatabaseWizard::kMapMetersCaption);
  mapLayout->addWidget(mapFeet_);
  mapLayout->addWidget(mapMeters_);
  (model.BasemapMeters ? mapMeters_ : mapFeet_)->setChecked(true);
  layout->addWidget(map);

  auto* buttons = new QHBoxLayout;
  create_ = new QPushButton(NewDatabaseWizard::kCreateCaption);
  abort_ = new QPushButton(NewDatabaseWizard::kAbortCaption);
  create_->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(create_);
  buttons->addWidget(abort_);
  layout->addLayout(buttons);

  connect(create_, &QPushButton::clicked, this, [this] {
    ToModel();
    model_.Create();
    done(NewDatabaseWizard::kCreate);
  });
  connect(abort_, &QPushButton::clicked, this, [this] { reject(); });
}

void NewDatabaseWizardView::ToModel() {
  model_.Description = S(description_->toPlainText());
  model_.ComputeMeters = computeMeters_->isChecked();
  model_.BasemapMeters = mapMeters_->isChecked();
}

void NewDatabaseWizardView::reject() {
  model_.Abort();
  done(NewDatabaseWizard::kAbort);
}

}  // namespace tarno
