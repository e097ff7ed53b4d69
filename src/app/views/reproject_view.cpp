#include "app/views/reproject_view.h"

#include <QFont>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;

namespace {

QListWidget* ProjectionListWidget(int current) {
  auto* list = new QListWidget;
  QFont font(QStringLiteral("Courier New"));
  font.setStyleHint(QFont::Monospace);
  list->setFont(font);
  for (const std::string& row : ReprojectMapsDialog::PopulateList()) list->addItem(Q(row));
  list->setCurrentRow(current);
  list->setMinimumWidth(list->fontMetrics().horizontalAdvance(QString(42, QLatin1Char('M'))));
  return list;
}

QGroupBox* DatumGroup(Datum datum, QRadioButton*& nad27, QRadioButton*& nad83) {
  auto* group = new QGroupBox(QStringLiteral("Datum for State Plane"));
  auto* layout = new QHBoxLayout(group);
  nad27 = new QRadioButton(QStringLiteral("NAD27"));
  nad83 = new QRadioButton(QStringLiteral("NAD83"));
  layout->addWidget(nad27);
  layout->addWidget(nad83);
  (datum == Datum::NAD27 ? nad27 : nad83)->setChecked(true);
  return group;
}

QVBoxLayout* Captioned(const QString& caption, QWidget* widget) {
  auto* box = new QVBoxLayout;
  box->addWidget(new QLabel(caption));
  box->addWidget(widget);
  return box;
}

}  // namespace

ReprojectMapsView::ReprojectMapsView(ReprojectMapsDialog& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle(QStringLiteral("Reproject Maps"));
  auto* layout = new QVBoxLayout(this);
  auto* lists = new QHBoxLayout;

  auto* files = new QVBoxLayout;
  files->addWidget(new QLabel(QStringLiteral("Folder")));
  dirSourceDir_ = new QLineEdit(Q(model.SourcePath));
  dirSourceDir_->setEnabled(model.SourceEnabled);
  files->addWidget(dirSourceDir_);
  files->addWidget(new QLabel(QStringLiteral("Maps")));
  listSourceFiles_ = new QListWidget;
  listSourceFiles_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  files->addWidget(listSourceFiles_);
  lists->addLayout(files);

  listSourceProj_ = ProjectionListWidget(model.SourceProjection);
  listTargetProj_ = ProjectionListWidget(model.TargetProjection);
  lists->addLayout(Captioned(QStringLiteral("Old Projection"), listSourceProj_));
  lists->addLayout(Captioned(QStringLiteral("New Projection"), listTargetProj_));
  layout->addLayout(lists);
  layout->addWidget(DatumGroup(model.datum, nad27_, nad83_));

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  layout->addLayout(buttons);

  ShowFiles();
  connect(dirSourceDir_, &QLineEdit::editingFinished, this, [this] {
    model_.SourcePath = S(dirSourceDir_->text());
    ShowFiles();
  });
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.SourcePath = S(dirSourceDir_->text());
    model_.SelectedFiles.clear();
    for (int i = 0; i < listSourceFiles_->count(); ++i) {
      if (listSourceFiles_->item(i)->isSelected()) {
        model_.SelectedFiles.push_back(S(listSourceFiles_->item(i)->text()));
      }
    }
    model_.SourceProjection = listSourceProj_->currentRow();
    model_.TargetProjection = listTargetProj_->currentRow();
    model_.datum = nad83_->isChecked() ? Datum::NAD83 : Datum::NAD27;
    model_.Result = 1;
    accept();
  });
  connect(cancel_, &QPushButton::clicked, this, [this] {
    model_.Result = 2;
    reject();
  });
}

void ReprojectMapsView::ShowFiles() {
  listSourceFiles_->clear();
  for (const std::string& name : model_.SourceFiles()) listSourceFiles_->addItem(Q(name));
}

MapTargetView::MapTargetView(MapTargetDialog& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle(QStringLiteral("Reproject Maps"));
  auto* layout = new QVBoxLayout(this);
  auto* lists = new QHBoxLayout;
  files_ = new QListWidget;
  files_->setSelectionMode(QAbstractItemView::NoSelection);
  for (const std::string& f : model.Files) files_->addItem(Q(f));
  lists->addLayout(Captioned(QStringLiteral("Maps"), files_));
  source_ = ProjectionListWidget(model.SourceProjection);
  target_ = ProjectionListWidget(model.TargetProjection);
  lists->addLayout(Captioned(QStringLiteral("Old Projection"), source_));
  lists->addLayout(Captioned(QStringLiteral("New Projection"), target_));
  layout->addLayout(lists);
  layout->addWidget(DatumGroup(model.datum, nad27_, nad83_));
  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  layout->addLayout(buttons);
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.SourceProjection = source_->currentRow();
    model_.TargetProjection = target_->currentRow();
    model_.datum = nad83_->isChecked() ? Datum::NAD83 : Datum::NAD27;
    model_.Result = 1;
    accept();
  });
  connect(cancel_, &QPushButton::clicked, this, [this] {
    model_.Result = 2;
    reject();
  });
}

}  // namespace tarno
