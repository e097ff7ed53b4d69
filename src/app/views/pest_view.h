// The views of the estimation dialogs: "PEST" and "UCODE" (one view over the shared
// model of the file lists and the text box, with the buttons of each), the advice
// shown before a template is written (TPLIterPrompt) and the test point weights
// (OPTWeight).
#pragma once

#include <QDialog>

#include "calibration/pest_dialog.h"
#include "calibration/pest_weights.h"
#include "calibration/ucode_dialog.h"
#include "core/ui_port.h"

class QCheckBox;
class QLabel;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QTableWidget;
class QTabWidget;

namespace tarno {

class EstimationView : public QDialog {
 public:
  EstimationView(PestDialog& model, UserInterface& ui, QWidget* parent = nullptr);
  EstimationView(UcodeDialog& model, UserInterface& ui, QWidget* parent = nullptr);
  QListWidget* inputList() const { return inputs_; }
  QListWidget* outputList() const { return outputs_; }
  QPlainTextEdit* textBox() const { return text_; }
  QLabel* fileLabel() const { return file_; }
  QPushButton* button(const QString& caption) const;
  void reject() override;

 private:
  void Build(const QString& title);
  QPushButton* AddButton(const QString& caption, const char* operation, std::function<void()> act);
  // Shows the model's fields.
  void Sync();

  EstimationFiles& model_;
  PestDialog* pest_ = nullptr;
  UcodeDialog* ucode_ = nullptr;
  UserInterface& ui_;
  QListWidget *inputs_ = nullptr, *outputs_ = nullptr;
  QPlainTextEdit* text_ = nullptr;
  QLabel* file_ = nullptr;
  QPushButton *save_ = nullptr, *run_ = nullptr, *import_ = nullptr;
  QList<QPushButton*> buttons_;
  bool syncing_ = false;
};

class TemplatePromptView : public QDialog {
 public:
  TemplatePromptView(TemplatePrompt& model, QWidget* parent = nullptr);
  QCheckBox* dontShow() const { return dontShow_; }

 private:
  QCheckBox* dontShow_;
};

class OptWeightView : public QDialog {
 public:
  OptWeightView(OptWeight& model, UserInterface& ui, QWidget* parent = nullptr);
  QTableWidget* grid(int page) const { return grids_[page]; }
  QPushButton* okButton() const { return ok_; }
  void reject() override;

 private:
  void Take();  // the grids' weights into the model

  OptWeight& model_;
  UserInterface& ui_;
  QTableWidget* grids_[3];
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
