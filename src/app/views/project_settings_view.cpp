#include "app/views/project_settings_view.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/shell_models.h"
#include "app/views/view_support.h"
#include "basemaps/catalogue.h"
#include "core/error_trap.h"

namespace tarno {

using views::Q;
using views::S;

ProjectSettingsView::ProjectSettingsView(ProjectSettings& model, UserInterface& ui,
                                         QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(Q(model.Caption));
  auto* layout = new QVBoxLayout(this);

  layout->addWidget(new QLabel(QStringLiteral("Project description")));
  description_ = new QPlainTextEdit(Q(model.Description));
  description_->setObjectName(QStringLiteral("ProjectDesc"));
  description_->setMaximumHeight(80);
  layout->addWidget(description_);

  auto* grid = new QGridLayout;
  baseName_ = views::AddField(grid, 0, QStringLiteral("Base file name"), model.BaseName);
  basePath_ = views::AddField(grid, 1, QStringLiteral("Path"), model.BasePath);
  mapUnits_ = views::AddField(grid, 2, QStringLiteral("Distance units in basemap files"), "");
  compUnits_ = views::AddField(grid, 3, QStringLiteral("Units for computations"), "");
  mapUnits_->setReadOnly(true);
  compUnits_->setReadOnly(true);
  changeUnits_ = new QPushButton(QStringLiteral("Change Units..."));
  grid->addWidget(changeUnits_, 2, 2, 2, 1);
  layout->addLayout(grid);
  ShowUnits();

  // The base maps: added and removed at once, whatever button ends the dialog.
  layout->addWidget(new QLabel(QStringLiteral("Currently used base maps")));
  auto* mapRow = new QHBoxLayout;
  baseMaps_ = new QListWidget;
  baseMaps_->setSelectionMode(QAbstractItemView::SingleSelection);
  mapRow->addWidget(baseMaps_);
  auto* mapButtons = new QVBoxLayout;
  addMap_ = new QPushButton(QStringLiteral("Add Map..."));
  removeMap_ = new QPushButton(QStringLiteral("Remove Map"));
  mapButtons->addWidget(addMap_);
  mapButtons->addWidget(removeMap_);
  mapButtons->addStretch();
  mapRow->addLayout(mapButtons);
  layout->addLayout(mapRow);
  ShowMaps();

  auto* buttons = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  cancel_->setEnabled(model.CancelEnabled);
  buttons->addStretch();
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  layout->addLayout(buttons);

  connect(ok_, &QPushButton::clicked, this, [this] {
    ToModel();
    // A bad name or path gets the model's message box and the dialog stays, with
    // the refused field selected.
    bool accepted = false;
    RunOperation(ui_, "ProjectSettings.OK_Click", [&] { accepted = model_.OK(ui_); });
    if (accepted) {
      done(ProjectSettings::kOK);
    } else {
      QLineEdit* field = model_.Refused == ProjectSettings::Field::Path ? basePath_ : baseName_;
      field->setFocus();
      field->selectAll();
    }
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  connect(addMap_, &QPushButton::clicked, this, [this] {
    RunOperation(ui_, "ProjectSettings.AddBBM_Click",
                 [&] { ProjectSettingsAddMap(model_, ui_, DefaultOpeners()); });
    ShowMaps();
  });
  connect(removeMap_, &QPushButton::clicked, this, [this] {
    const int row = baseMaps_->currentRow();
    RunOperation(ui_, "ProjectSettings.RemoveBBM_Click",
                 [&] { ProjectSettingsRemoveMap(model_, ui_, row); });
    ShowMaps();
  });
  connect(baseMaps_, &QListWidget::currentRowChanged, this,
          [this](int row) { removeMap_->setEnabled(row >= 0); });
  connect(changeUnits_, &QPushButton::clicked, this, [this] {
    RunOperation(ui_, "ProjectSettings.ChangeUnits_Click", [&] { model_.ChangeUnits(ui_); });
    ShowUnits();
  });
}

void ProjectSettingsView::ToModel() {
  model_.Description = S(description_->toPlainText());
  model_.BaseName = S(baseName_->text());
  model_.BasePath = S(basePath_->text());
}

void ProjectSettingsView::ShowMaps() {
  baseMaps_->clear();
  for (const auto& map : model_.BaseMaps) baseMaps_->addItem(Q(map));
  removeMap_->setEnabled(baseMaps_->currentRow() >= 0);
}

void ProjectSettingsView::ShowUnits() {
  mapUnits_->setText(Q(model_.MapUnits()));
  compUnits_->setText(Q(model_.CompUnits()));
}

void ProjectSettingsView::reject() {
  if (!model_.CancelEnabled) return;
  bool cancelled = false;
  RunOperation(ui_, "ProjectSettings.Cancel_Click", [&] { cancelled = model_.Cancel(); });
  if (cancelled) done(ProjectSettings::kCancel);
}

}  // namespace tarno
