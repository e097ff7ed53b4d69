#include "app/views/solve_views.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/views/view_support.h"
#include "core/error_trap.h"
#include "core/format.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;

namespace {

QHBoxLayout* OkCancelRow(QPushButton*& ok, QPushButton*& cancel) {
  auto* row = new QHBoxLayout;
  ok = new QPushButton(QStringLiteral("OK"));
  cancel = new QPushButton(QStringLiteral("Cancel"));
  ok->setDefault(true);
  row->addStretch();
  row->addWidget(ok);
  row->addWidget(cancel);
  return row;
}

}  // namespace

// ---------------------------------------------------------------------------

SolvePromptView::SolvePromptView(SolvePrompt& model, QWidget* parent)
    : QDialog(parent), model_(model) {
  setWindowTitle(SolvePrompt::kTitle);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(QString(SolvePrompt::kLine1) + "\n" + SolvePrompt::kLine2));
  auto* grid = new QGridLayout;
  yes_ = new QPushButton(QStringLiteral("Yes"));
  no_ = new QPushButton(QStringLiteral("No"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  auto* yesText = new QLabel(SolvePrompt::kYesText);
  auto* noText = new QLabel(SolvePrompt::kNoText);
  yesText->setWordWrap(true);
  noText->setWordWrap(true);
  grid->addWidget(yes_, 0, 0);
  grid->addWidget(yesText, 0, 1);
  grid->addWidget(no_, 1, 0);
  grid->addWidget(noText, 1, 1);
  grid->addWidget(cancel_, 2, 0);
  layout->addLayout(grid);
  yes_->setDefault(true);
  connect(yes_, &QPushButton::clicked, this, [this] {
    model_.Result = 6;
    done(6);
  });
  connect(no_, &QPushButton::clicked, this, [this] {
    model_.Result = 7;
    done(7);
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void SolvePromptView::reject() {
  model_.Result = 2;
  done(2);
}

// ---------------------------------------------------------------------------

FormContinueSolveView::FormContinueSolveView(FormContinueSolve& model, UserInterface& ui,
                                             QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(FormContinueSolve::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* grid = new QGridLayout;
  iterations_ = AddField(grid, 0, QStringLiteral("Number of Iterations"), model.tbIterations);
  outsideLoop_ = new QCheckBox(QStringLiteral("Surface Water Relaxation (Outside Loop)"));
  outsideLoop_->setChecked(model.chkOutsideLoop);
  grid->addWidget(outsideLoop_, 1, 0, 1, 2);
  outerIterations_ = AddField(grid, 2, QStringLiteral("Number of Iterations (Outside Loop)"),
                              model.tbOuterIterations);
  layout->addLayout(grid);
  fastSolution_ = new QCheckBox(QStringLiteral("Fast Solution"));
  viewError_ = new QCheckBox(QStringLiteral("View Error Log"));
  viewMessage_ = new QCheckBox(QStringLiteral("View Message Log"));
  storeMatrix_ = new QCheckBox(QStringLiteral("Store Matrix on Disk"));
  fastSolution_->setChecked(model.chkFastSolution);
  viewError_->setChecked(model.chkViewError);
  viewMessage_->setChecked(model.chkViewMessage);
  storeMatrix_->setChecked(model.chkStoreMatrixOnDisk);
  for (QCheckBox* box : {fastSolution_, viewError_, viewMessage_, storeMatrix_}) {
    layout->addWidget(box);
  }
  layout->addLayout(OkCancelRow(ok_, cancel_));
  outerIterations_->setEnabled(model.chkOutsideLoop);
  connect(outsideLoop_, &QCheckBox::toggled, outerIterations_, &QLineEdit::setEnabled);

  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.tbIterations = S(iterations_->text());
    model_.chkOutsideLoop = outsideLoop_->isChecked();
    model_.tbOuterIterations = S(outerIterations_->text());
    model_.chkFastSolution = fastSolution_->isChecked();
    model_.chkViewError = viewError_->isChecked();
    model_.chkViewMessage = viewMessage_->isChecked();
    model_.chkStoreMatrixOnDisk = storeMatrix_->isChecked();
    bool accepted = false;
    RunOperation(ui_, "FormContinueSolve.OK_Click", [&] { accepted = model_.Ok(ui_); });
    if (accepted) done(1);
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void FormContinueSolveView::reject() {
  model_.Cancel = true;
  done(2);
}

// ---------------------------------------------------------------------------

RelaxDialogView::RelaxDialogView(RelaxDialog& model, UserInterface& ui, ModelSettings* settings,
                                 QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), settings_(settings) {
  setWindowTitle(RelaxDialog::kTitle);
  auto* layout = new QVBoxLayout(this);
  outsideLoop_ = new QCheckBox(QStringLiteral("Surface Water Relaxation (Outside Loop)"));
  outsideLoop_->setChecked(model.chkOutsideLoop);
  layout->addWidget(outsideLoop_);
  auto* grid = new QGridLayout;
  outerIterations_ = AddField(grid, 0, QStringLiteral("Number of Iterations (Outside Loop)"),
                              model.tbOuterIterations);
  layout->addLayout(grid);
  layout->addLayout(OkCancelRow(ok_, cancel_));
  outerIterations_->setEnabled(model.chkOutsideLoop);
  connect(outsideLoop_, &QCheckBox::toggled, outerIterations_, &QLineEdit::setEnabled);
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.chkOutsideLoop = outsideLoop_->isChecked();
    model_.tbOuterIterations = S(outerIterations_->text());
    // Without settings to write into, the check runs on a scratch copy and the
    // caller takes the fields from the model.
    ModelSettings scratch;
    if (model_.Ok(settings_ != nullptr ? *settings_ : scratch, ui_)) {
      done(1);
    } else {
      outerIterations_->setFocus();
      outerIterations_->selectAll();
    }
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void RelaxDialogView::reject() {
  model_.Result = 2;
  done(2);
}

// ---------------------------------------------------------------------------

ConvergeDialogView::ConvergeDialogView(ConvergeDialog& model, UserInterface& ui,
                                       ModelSettings* settings, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), settings_(settings) {
  setWindowTitle(ConvergeDialog::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* grid = new QGridLayout;
  iterations_ = AddField(grid, 0, QStringLiteral("Number of Iterations"), model.tbIterations);
  layout->addLayout(grid);
  fastSolution_ = new QCheckBox(QStringLiteral("Fast Solution"));
  storeMatrix_ = new QCheckBox(QStringLiteral("Store Matrix on Disk"));
  fastSolution_->setChecked(model.chkFastSolution);
  storeMatrix_->setChecked(model.chkStoreMatrixOnDisk);
  layout->addWidget(fastSolution_);
  layout->addWidget(storeMatrix_);
  layout->addLayout(OkCancelRow(ok_, cancel_));
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.tbIterations = S(iterations_->text());
    model_.chkFastSolution = fastSolution_->isChecked();
    model_.chkStoreMatrixOnDisk = storeMatrix_->isChecked();
    ModelSettings scratch;
    if (model_.Ok(settings_ != nullptr ? *settings_ : scratch, ui_)) {
      done(1);
    } else {
      iterations_->setFocus();
      iterations_->selectAll();
    }
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void ConvergeDialogView::reject() {
  model_.Result = 2;
  done(2);
}

// ---------------------------------------------------------------------------

IterationsDialogView::IterationsDialogView(IterationsDialog& model, UserInterface& ui,
                                           QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(IterationsDialog::kTitle);
  auto* layout = new QVBoxLayout(this);
  advice_ = new QLabel(Q(model.AdviceText()));
  advice_->setWordWrap(true);
  // Wide enough that the advice takes two or three lines, not a column of words.
  advice_->setMinimumWidth(advice_->fontMetrics().averageCharWidth() * 60);
  layout->addWidget(advice_);
  auto* grid = new QGridLayout;
  iterations_ = AddField(grid, 0, QStringLiteral("Number of Iterations"), model.tbIterations);
  layout->addLayout(grid);
  layout->addLayout(OkCancelRow(ok_, cancel_));
  iterations_->selectAll();
  iterations_->setFocus();
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.tbIterations = S(iterations_->text());
    bool accepted = false;
    RunOperation(ui_, "Iterations.OK_Click", [&] { accepted = model_.OK(ui_); });
    if (accepted) {
      done(1);
    } else {
      iterations_->setFocus();
      iterations_->selectAll();
    }
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void IterationsDialogView::reject() {
  model_.Cancel();
  done(2);
}

// ---------------------------------------------------------------------------

SolverIntegrityView::SolverIntegrityView(const SolverIntegrity& model, QWidget* parent)
    : QDialog(parent) {
  setWindowTitle(SolverIntegrity::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* grid = new QGridLayout;
  grid->addWidget(new QLabel(QStringLiteral("Analytic                           Numerical")), 0,
                  1, 1, 2);
  const char* captions[5] = {"Vx", "Vy", "Vz", "div q", "div Q"};
  const double pairs[5][2] = {{model.VxAnyl, model.VxNum},
                              {model.VyAnyl, model.VyNum},
                              {model.VzAnyl, model.VzNum},
                              {model.divqAnyl, model.divqNum},
                              {model.divCapQAnyl, model.divCapQNum}};
  for (int row = 0; row < 5; ++row) {
    grid->addWidget(new QLabel(captions[row]), row + 1, 0);
    for (int column = 0; column < 2; ++column) {
      // The values come from heads of the extract file, which carry seven significant
      // digits: more would show only the noise of the difference quotients.
      values_[row][column] = new QLineEdit(QString::number(pairs[row][column], 'g', 7));
      values_[row][column]->setReadOnly(true);
      values_[row][column]->setMinimumWidth(values_[row][column]->fontMetrics().horizontalAdvance(
                                                QStringLiteral("-0.0000000E-00")) + 12);
      grid->addWidget(values_[row][column], row + 1, column + 1);
    }
  }
  layout->addLayout(grid);
  auto* row = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  ok_->setDefault(true);
  row->addStretch();
  row->addWidget(ok_);
  layout->addLayout(row);
  connect(ok_, &QPushButton::clicked, this, [this] { done(1); });
}

}  // namespace tarno
