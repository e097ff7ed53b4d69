// The views of the small dialogs around a solve: the resolve question, the form
// that continues a solution, the relaxation and convergence settings, and the
// integrity check's figures.
#pragma once

#include <QDialog>

#include "core/ui_port.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/solve_dialogs.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tarno {

class SolvePromptView : public QDialog {
 public:
  SolvePromptView(SolvePrompt& model, QWidget* parent = nullptr);
  QPushButton* yesButton() const { return yes_; }
  QPushButton* noButton() const { return no_; }
  QPushButton* cancelButton() const { return cancel_; }
  void reject() override;

 private:
  SolvePrompt& model_;
  QPushButton *yes_, *no_, *cancel_;
};

class FormContinueSolveView : public QDialog {
 public:
  FormContinueSolveView(FormContinueSolve& model, UserInterface& ui, QWidget* parent = nullptr);
  QLineEdit* iterations() const { return iterations_; }
  QLineEdit* outerIterations() const { return outerIterations_; }
  QCheckBox* outsideLoop() const { return outsideLoop_; }
  QCheckBox* fastSolution() const { return fastSolution_; }
  QCheckBox* viewError() const { return viewError_; }
  QCheckBox* viewMessage() const { return viewMessage_; }
  QCheckBox* storeMatrixOnDisk() const { return storeMatrix_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  void reject() override;

 private:
  FormContinueSolve& model_;
  UserInterface& ui_;
  QLineEdit *iterations_, *outerIterations_;
  QCheckBox *outsideLoop_, *fastSolution_, *viewError_, *viewMessage_, *storeMatrix_;
  QPushButton *ok_, *cancel_;
};

// OK checks the count as the model does; the fields go into `settings` when one is
// given, else the caller takes them from the model (Result 1).
class RelaxDialogView : public QDialog {
 public:
  RelaxDialogView(RelaxDialog& model, UserInterface& ui, ModelSettings* settings = nullptr,
                  QWidget* parent = nullptr);
  QCheckBox* outsideLoop() const { return outsideLoop_; }
  QLineEdit* outerIterations() const { return outerIterations_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  void reject() override;

 private:
  RelaxDialog& model_;
  UserInterface& ui_;
  ModelSettings* settings_;
  QCheckBox* outsideLoop_;
  QLineEdit* outerIterations_;
  QPushButton *ok_, *cancel_;
};

class ConvergeDialogView : public QDialog {
 public:
  ConvergeDialogView(ConvergeDialog& model, UserInterface& ui, ModelSettings* settings = nullptr,
                     QWidget* parent = nullptr);
  QLineEdit* iterations() const { return iterations_; }
  QCheckBox* fastSolution() const { return fastSolution_; }
  QCheckBox* storeMatrixOnDisk() const { return storeMatrix_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  void reject() override;

 private:
  ConvergeDialog& model_;
  UserInterface& ui_;
  ModelSettings* settings_;
  QLineEdit* iterations_;
  QCheckBox *fastSolution_, *storeMatrix_;
  QPushButton *ok_, *cancel_;
};

// The advice on the number of iterations, shown while the command file is written:
// the advice with its recommended minimum and the present count, which the user may
// raise. OK checks the count as the model settings do; either button lets the
// writing go on.
class IterationsDialogView : public QDialog {
 public:
  IterationsDialogView(IterationsDialog& model, UserInterface& ui, QWidget* parent = nullptr);
  QLabel* advice() const { return advice_; }
  QLineEdit* iterations() const { return iterations_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  void reject() override;

 private:
  IterationsDialog& model_;
  UserInterface& ui_;
  QLabel* advice_;
  QLineEdit* iterations_;
  QPushButton *ok_, *cancel_;
};

class SolverIntegrityView : public QDialog {
 public:
  SolverIntegrityView(const SolverIntegrity& model, QWidget* parent = nullptr);
  // The shown values: row 0 Vx ... row 4 div Q; column 0 analytic, 1 numerical.
  QLineEdit* value(int row, int column) const { return values_[row][column]; }
  QPushButton* okButton() const { return ok_; }

 private:
  QLineEdit* values_[5][2];
  QPushButton* ok_;
};

}  // namespace tarno
