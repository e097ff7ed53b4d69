#include "app/views/unit_change_view.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tarno {

UnitChangeView::UnitChangeView(UnitChange& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle(QStringLiteral("Change Units"));
  auto* layout = new QVBoxLayout(this);

  auto* compute = new QGroupBox(QStringLiteral("Units for computations"));
  auto* computeLayout = new QHBoxLayout(compute);
  computeFeet_ = new QRadioButton(NewDatabaseWizard::kComputeFeetCaption);
  computeMeters_ = new QRadioButton(NewDatabaseWizard::kComputeMetersCaption);
  computeLayout->addWidget(computeFeet_);
  computeLayout->addWidget(computeMeters_);
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
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  layout->addLayout(buttons);

  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.ComputeMeters = computeMeters_->isChecked();
    model_.BasemapMeters = mapMeters_->isChecked();
    model_.OK();
    done(UnitChange::kOK);
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void UnitChangeView::reject() {
  model_.Cancel();
  done(UnitChange::kCancel);
}

}  // namespace tarno
