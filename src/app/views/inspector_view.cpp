#include "app/views/inspector_view.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/views/view_support.h"
#include "core/error_trap.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;

InspectorView::InspectorView(InspectorDialog& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(InspectorDialog::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* grid = new QGridLayout;
  stepSize_ =
      AddField(grid, 0, QString::fromUtf8(InspectorDialog::kStepCaption), model.dataStepSize);
  stepUnit_ = new QLabel(Q(model.lblStepUnit));
  grid->addWidget(stepUnit_, 0, 2);
  elevation_ =
      AddField(grid, 1, QString::fromUtf8(InspectorDialog::kElevationCaption), model.tbElevation);
  layout->addLayout(grid);
  top_ = new QCheckBox(QString::fromUtf8(InspectorDialog::kTopCaption));
  backwards_ = new QCheckBox(QString::fromUtf8(InspectorDialog::kBackwardsCaption));
  top_->setChecked(model.chkTop);
  backwards_->setChecked(model.chkTraceBackwards);
  // The elevation counts only where the top of the saturated thickness is not used.
  elevation_->setEnabled(!model.chkTop);
  connect(top_, &QCheckBox::toggled, this, [this](bool on) { elevation_->setEnabled(!on); });
  layout->addWidget(top_);
  layout->addWidget(backwards_);
  auto* row = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  row->addStretch();
  row->addWidget(ok_);
  row->addWidget(cancel_);
  layout->addLayout(row);
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.dataStepSize = S(stepSize_->text());
    model_.tbElevation = S(elevation_->text());
    model_.chkTop = top_->isChecked();
    model_.chkTraceBackwards = backwards_->isChecked();
    bool accepted = false;
    RunOperation(ui_, "Inspector.OK_Click", [&] { accepted = model_.OK(ui_); });
    if (accepted) {
      done(1);
    } else {
      stepSize_->setFocus();
      stepSize_->selectAll();
    }
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void InspectorView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
