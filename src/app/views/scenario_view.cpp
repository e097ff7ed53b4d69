#include "app/views/scenario_view.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QScrollBar>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>

#include "app/views/view_support.h"
#include "core/error_trap.h"

namespace tarno {

using views::Q;
using views::S;

namespace {

QString Number(double v) { return QString::number(v, 'g', 12); }

// Room around a cell's text (the style's margins and the grid line).
constexpr int kCellMargin = 16;

}  // namespace

ScenariosView::ScenariosView(Scenarios& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(QString::fromUtf8(Scenarios::kTitle));
  auto* layout = new QVBoxLayout(this);
  auto* grids = new QHBoxLayout;
  for (ScenarioTable t : kScenarioTables) {
    const int i = static_cast<int>(t);
    auto* box = new QGroupBox(QString::fromUtf8(Scenarios::kGridCaptions[i]));
    auto* boxLayout = new QVBoxLayout(box);
    auto* table = new QTableWidget(0, 3);
    table->setHorizontalHeaderLabels({QString::fromUtf8(Scenarios::kColumnCaptions[0]),
                                      QString::fromUtf8(Scenarios::kColumnCaptions[1]),
                                      QString::fromUtf8(Scenarios::kColumnCaptions[2])});
    table->verticalHeader()->setVisible(false);
    // The values are shown whole (12 digits; an estimated value uses them all): the two
    // number columns take the width of their text and the tag column the rest.
    table->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    table->horizontalHeader()->setSectionResizeMode(kCurrentColumn, QHeaderView::ResizeToContents);
    table->horizontalHeader()->setSectionResizeMode(kDefaultColumn, QHeaderView::ResizeToContents);
    boxLayout->addWidget(table);
    grids->addWidget(box);
    grids_[i] = table;
    connect(table, &QTableWidget::cellChanged, this,
            [this, t](int row, int column) { CellEdited(t, row, column); });
  }
  layout->addLayout(grids);

  auto* buttons = new QHBoxLayout;
  update_ = new QPushButton(QString::fromUtf8(Scenarios::kUpdateCaption));
  defaults_[0] = new QPushButton(QString::fromUtf8(Scenarios::kDefaultCaptions[0]));
  defaults_[1] = new QPushButton(QString::fromUtf8(Scenarios::kDefaultCaptions[1]));
  done_ = new QPushButton(QString::fromUtf8(Scenarios::kDoneCaption));
  buttons->addWidget(update_);
  buttons->addWidget(defaults_[0]);
  buttons->addWidget(defaults_[1]);
  buttons->addStretch();
  buttons->addWidget(done_);
  layout->addLayout(buttons);

  connect(update_, &QPushButton::clicked, this, [this] {
    RunOperation(ui_, "Scenarios.cmdUpdate_Click", [&] { model_.cmdUpdate_Click(); });
  });
  for (int i = 0; i < 2; ++i) {
    connect(defaults_[i], &QPushButton::clicked, this, [this, i] {
      model_.cmdDefault(i);
      FillGrids();
    });
  }
  connect(done_, &QPushButton::clicked, this, [this] {
    model_.cmdDone();
    done(1);
  });
  FillGrids();
  resize(900, 360);
}

void ScenariosView::FillGrids() {
  filling_ = true;
  for (ScenarioTable t : kScenarioTables) {
    QTableWidget* table = grid(t);
    const std::vector<ScenarioRow>& rows = model_.Table(t);
    table->setRowCount(static_cast<int>(rows.size()));
    for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
      auto* tag = new QTableWidgetItem(Q(rows[r].Scenario));
      tag->setFlags(tag->flags() & ~Qt::ItemIsEditable);  // the tags are edited on the elements
      table->setItem(r, 0, tag);
      table->setItem(r, kCurrentColumn, new QTableWidgetItem(Number(rows[r].Current)));
      table->setItem(r, kDefaultColumn, new QTableWidgetItem(Number(rows[r].Default)));
    }
    // Wide enough for the columns' text, so that the dialog grows rather than cut a
    // value short.
    int width = 2 * table->frameWidth() + table->verticalScrollBar()->sizeHint().width();
    for (int c = 0; c < table->columnCount(); ++c) {
      int column = table->horizontalHeader()->sectionSizeHint(c);
      for (int r = 0; r < table->rowCount(); ++r)
        column =
            std::max(column, table->fontMetrics().horizontalAdvance(table->item(r, c)->text()) +
                                 kCellMargin);
      width += column;
    }
    table->setMinimumWidth(width);
  }
  filling_ = false;
}

void ScenariosView::CellEdited(ScenarioTable table, int row, int column) {
  if (filling_) return;
  QTableWidgetItem* item = grid(table)->item(row, column);
  if (item == nullptr) return;
  // A numeric column takes numbers only: anything else goes back to the value held.
  if (!model_.SetCell(table, static_cast<std::size_t>(row), column, S(item->text()))) {
    const ScenarioRow& r = model_.Table(table).at(static_cast<std::size_t>(row));
    filling_ = true;
    item->setText(Number(column == kCurrentColumn ? r.Current : r.Default));
    filling_ = false;
  }
}

void ScenariosView::reject() {
  model_.cmdDone();
  done(1);
}

}  // namespace tarno
