#include "app/views/export_views.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;

namespace {

QHBoxLayout* OkCancelRow(QPushButton*& ok, QPushButton*& cancel) {
  auto* row = new QHBoxLayout;
  row->addStretch();
  ok = new QPushButton(QStringLiteral("OK"));
  cancel = new QPushButton(QStringLiteral("Cancel"));
  ok->setDefault(true);
  row->addWidget(ok);
  row->addWidget(cancel);
  return row;
}

}  // namespace

VectorExportView::VectorExportView(exchange::VectorExport& model, UserInterface& ui,
                                   QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(Q(model.Title()));
  auto* layout = new QVBoxLayout(this);
  auto* group = new QGroupBox;  // chkExportSelection
  auto* options = new QVBoxLayout(group);
  for (std::size_t i = 0; i < options_.size(); ++i) {
    options_[i] = new QRadioButton(Q(exchange::VectorExport::kOptions[i]));
    options_[i]->setChecked(model.Selection() == static_cast<int>(i));
    options->addWidget(options_[i]);
  }
  layout->addWidget(group);
  auto* layerRow = new QHBoxLayout;
  auto* caption = new QLabel(Q(exchange::VectorExport::kLayerCaption));
  layer_ = new QLineEdit(Q(model.Layer));  // tbLayerName
  caption->setBuddy(layer_);
  layerRow->addWidget(caption);
  layerRow->addWidget(layer_);
  layout->addLayout(layerRow);
  caption->setVisible(model.LayerVisible());
  layer_->setVisible(model.LayerVisible());
  layout->addLayout(OkCancelRow(ok_, cancel_));
  connect(ok_, &QPushButton::clicked, this, [this] {
    int chosen = -1;
    for (std::size_t i = 0; i < options_.size(); ++i)
      if (options_[i]->isChecked()) chosen = static_cast<int>(i);
    model_.Select(chosen);
    model_.Layer = S(layer_->text());
    if (model_.OK(ui_)) accept();
  });
  connect(cancel_, &QPushButton::clicked, this, [this] {
    model_.Cancel();
    reject();
  });
}

ExportShapefileView::ExportShapefileView(exchange::ExportShapefile& model, UserInterface& ui,
                                         QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(Q(exchange::ExportShapefile::kTitle));
  auto* layout = new QVBoxLayout(this);
  auto* group = new QGroupBox;  // SfOption
  auto* options = new QVBoxLayout(group);
  for (std::size_t i = 0; i < options_.size(); ++i) {
    options_[i] = new QRadioButton(Q(exchange::ExportShapefile::kOptions[i]));
    options_[i]->setChecked(model.SfOption == static_cast<int>(i));
    options->addWidget(options_[i]);
  }
  layout->addWidget(group);
  layout->addLayout(OkCancelRow(ok_, cancel_));
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.SfOption = -1;
    for (std::size_t i = 0; i < options_.size(); ++i)
      if (options_[i]->isChecked()) model_.SfOption = static_cast<int>(i);
    if (model_.OK(ui_)) accept();
  });
  connect(cancel_, &QPushButton::clicked, this, [this] {
    model_.Cancel();
    reject();
  });
}

}  // namespace tarno
