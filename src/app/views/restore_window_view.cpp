#include "app/views/restore_window_view.h"

#include <algorithm>

#include <QFontMetrics>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/views/view_support.h"
#include "core/error_trap.h"
#include "core/format.h"
#include "core/text.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;

RestoreWindowView::RestoreWindowView(RestoreWindow& model, UserInterface& ui,
                                     std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(QStringLiteral("Saved Windows"));
  auto* layout = new QHBoxLayout(this);
  names_ = new QListWidget;
  layout->addWidget(names_);

  auto* right = new QVBoxLayout;
  auto* grid = new QGridLayout;
  x1_ = AddField(grid, 0, QStringLiteral("X1"), model.txX1);
  y1_ = AddField(grid, 1, QStringLiteral("Y1"), model.txY1);
  x2_ = AddField(grid, 2, QStringLiteral("X2"), model.txX2);
  y2_ = AddField(grid, 3, QStringLiteral("Y2"), model.txY2);
  right->addLayout(grid);
  // The corner fields are wide enough for every corner on the list, and at least
  // for a coordinate at the map's limit with all its digits, so that no sign or
  // digit is hidden.
  {
    const QFontMetrics metrics = x1_->fontMetrics();
    int widest = metrics.horizontalAdvance(QStringLiteral("-21474836.1234567"));
    for (const auto& row : model.rows) {
      for (const double corner : {row.x1, row.y1, row.x2, row.y2})
        widest = std::max(widest, metrics.horizontalAdvance(Q(GeneralNumber(corner))));
    }
    // What a field needs around its text: its hint less the text it was sized for.
    const int frame = x1_->sizeHint().width() - 17 * metrics.horizontalAdvance(QLatin1Char('x'));
    for (QLineEdit* edit : {x1_, y1_, x2_, y2_}) edit->setMinimumWidth(widest + std::max(frame, 0));
  }
  delete_ = new QPushButton(QStringLiteral("Delete"));
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  right->addWidget(delete_);
  right->addStretch();
  right->addWidget(ok_);
  right->addWidget(cancel_);
  layout->addLayout(right);

  // The corner fields take only what a number can hold.
  for (QLineEdit* edit : {x1_, y1_, x2_, y2_}) {
    connect(edit, &QLineEdit::textEdited, this, [edit](const QString& typed) {
      const QString kept = Q(FilterNumberText(S(typed)));
      if (kept != typed) {
        const int cursor = edit->cursorPosition() - static_cast<int>(typed.size() - kept.size());
        edit->setText(kept);
        edit->setCursorPosition(std::max(0, cursor));
      }
    });
  }
  connect(names_, &QListWidget::currentRowChanged, this, [this](int row) {
    if (row < 0) return;
    model_.Navigate(row);
    ShowCurrent();
  });
  connect(delete_, &QPushButton::clicked, this, [this] {
    if (!projectFile_ || model_.current < 0) return;
    RunOperation(ui_, "RestoreWindow.DeleteWindow", [&] { model_.DeleteWindow(); });
    ShowRows();
  });
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.txX1 = S(x1_->text());
    model_.txY1 = S(y1_->text());
    model_.txX2 = S(x2_->text());
    model_.txY2 = S(y2_->text());
    const bool read = RunOperation(ui_, "RestoreWindow.OK_Click", [&] {
      model_.x1 = Val(model_.txX1);
      model_.y1 = Val(model_.txY1);
      model_.x2 = Val(model_.txX2);
      model_.y2 = Val(model_.txY2);
    });
    if (!read) return;
    model_.OK();
    done(1);
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  ShowRows();
}

void RestoreWindowView::ShowRows() {
  {
    const QSignalBlocker block(names_);
    names_->clear();
    for (const auto& row : model_.rows) names_->addItem(Q(row.name));
    names_->setCurrentRow(model_.current);
  }
  ShowCurrent();
}

void RestoreWindowView::ShowCurrent() {
  x1_->setText(Q(model_.txX1));
  y1_->setText(Q(model_.txY1));
  x2_->setText(Q(model_.txX2));
  y2_->setText(Q(model_.txY2));
  delete_->setEnabled(model_.InView() && static_cast<bool>(projectFile_));
  // OK also confirms deletions when no row is left in view.
  ok_->setEnabled(model_.CanOK());
}

void RestoreWindowView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
