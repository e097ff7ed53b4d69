#include "app/views/pest_view.h"

#include <QCheckBox>
#include <QDesktopServices>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QCoreApplication>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QUrl>
#include <QVBoxLayout>
#include <filesystem>
#include <memory>

#include "app/views/view_support.h"
#include "calibration/estimator_dialog.h"
#include "core/error_trap.h"
#include "solver/process.h"

namespace tarno {

using views::Q;
using views::S;

EstimationView::EstimationView(PestDialog& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), pest_(&model), ui_(ui) {
  Build(QStringLiteral("PEST"));
}

EstimationView::EstimationView(UcodeDialog& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ucode_(&model), ui_(ui) {
  Build(QStringLiteral("UCODE"));
}

QPushButton* EstimationView::AddButton(const QString& caption, const char* operation,
                                       std::function<void()> act) {
  auto* b = new QPushButton(caption);
  buttons_.push_back(b);
  const std::string op = operation;
  connect(b, &QPushButton::clicked, this, [this, op, act] {
    RunOperation(ui_, op, act);
    Sync();
    if (model_.closed) done(1);
  });
  return b;
}

QPushButton* EstimationView::button(const QString& caption) const {
  for (QPushButton* b : buttons_)
    if (b->text() == caption) return b;
  return nullptr;
}

void EstimationView::Build(const QString& title) {
  setWindowTitle(title);
  model_.setEnabled = [this](bool on) { setEnabled(on); };
  auto* layout = new QHBoxLayout(this);
  auto* left = new QVBoxLayout;
  const std::string name = S(title);
  if (pest_ != nullptr) {
    left->addWidget(
        AddButton("Write PEST Input Files", "cmdWritePEST_Click", [this] { pest_->WritePest(); }));
    left->addWidget(
        AddButton("Run PESTCHEK", "cmdPestcheck_Click", [this] { pest_->RunPestcheck(); }));
    run_ = AddButton("Run PEST -->", "cmdRunPEST_Click", [this] { pest_->RunPest(); });
    left->addWidget(run_);
    import_ = AddButton("Import Optimized Parameters", "cmdImportPEST_Click",
                        [this] { pest_->ImportPest(); });
    left->addWidget(import_);
    left->addWidget(AddButton("Delete All PEST Related Files", "cmdDeleteAll_Click",
                              [this] { pest_->DeleteAll(); }));
    left->addWidget(
        AddButton("Assign Weights", "cmdAssignWeights_Click", [this] { pest_->AssignWeights(); }));
    // The built-in estimator, for where PEST is not installed; a bar shows the model
    // runs of each iteration while it works. The bar is made at the first model run,
    // not before: the click may first ask (a present solution, unsaved edits), and a
    // window-modal bar shown under the question blocked the question's own window, so
    // that it could not be answered.
    left->addWidget(AddButton(kEstimateButtonCaption, "cmdEstimate_Click", [this] {
      std::unique_ptr<QProgressDialog> bar;
      EstimateInPestDialog(*pest_, pest_->Context(),
                           [this, &bar](int percent, const std::string& text) {
                             if (!bar) {
                               bar = std::make_unique<QProgressDialog>(
                                   QStringLiteral("Estimating..."), QString(), 0, 100, this);
                               bar->setWindowTitle(QStringLiteral("Estimate Without PEST"));
                               bar->setWindowModality(Qt::WindowModal);
                               bar->setMinimumDuration(0);
                             }
                             bar->setLabelText(Q(text));
                             bar->setValue(percent);
                             QCoreApplication::processEvents();
                           });
    }));
  } else {
    left->addWidget(AddButton("Write UCODE Input Files", "cmdWriteUCODE_Click",
                              [this] { ucode_->WriteUcode(); }));
    run_ = AddButton("Run UCODE -->", "cmdRunUCODE_Click", [this] { ucode_->RunUcode(); });
    left->addWidget(run_);
    left->addWidget(AddButton("Delete All UCODE Related Files", "cmdDeleteAll_Click",
                              [this] { ucode_->DeleteAll(); }));
    left->addWidget(
        AddButton("Assign Weights", "cmdAssignWeights_Click", [this] { ucode_->AssignWeights(); }));
  }
  left->addWidget(new QLabel(QStringLiteral("Input Files")));
  inputs_ = new QListWidget;
  left->addWidget(inputs_);
  left->addWidget(new QLabel(QStringLiteral("Output Files")));
  outputs_ = new QListWidget;
  left->addWidget(outputs_);
  // The manual is looked for beside the program; where none is installed, says so.
  left->addWidget(AddButton("View " + title + " Manual...", "cmdViewManual_Click", [this, name] {
    const std::string file = name == "PEST" ? "pestman.pdf" : "ucode.pdf";
    const std::filesystem::path path = ProgramDirectory() / file;
    if (std::filesystem::exists(path)) {
      QDesktopServices::openUrl(QUrl::fromLocalFile(Q(path.string())));
    } else {
      ui_.MessageBox("Manual Not Found",
                     {"The " + name + " manual (" + file + ") is not installed in",
                      ProgramDirectory().string() + "."});
    }
  }));
  save_ = AddButton("Save", "cmdSave_Click", [this] { model_.Save(); });
  left->addWidget(save_);
  left->addWidget(AddButton("Done", "cmdDone_Click", [this] { model_.Done(); }));
  layout->addLayout(left);

  auto* right = new QVBoxLayout;
  file_ = new QLabel;
  right->addWidget(file_);
  text_ = new QPlainTextEdit;
  QFont courier(QStringLiteral("Courier New"));
  courier.setStyleHint(QFont::Monospace);
  text_->setFont(courier);
  text_->setLineWrapMode(QPlainTextEdit::NoWrap);
  text_->setMinimumSize(640, 480);
  right->addWidget(text_);
  layout->addLayout(right, 1);

  connect(text_, &QPlainTextEdit::textChanged, this, [this] {
    if (syncing_) return;
    std::string text = S(text_->toPlainText());
    // The files keep their CR LF line ends.
    std::string crlf;
    for (char c : text) {
      if (c == '\n') crlf += '\r';
      crlf += c;
    }
    model_.EditText(crlf);
  });
  connect(inputs_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
    const std::string name = S(item->text());
    RunOperation(ui_, "InputFileList_Click", [&] { model_.InputListClick(name); });
    Sync();
  });
  connect(outputs_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
    const std::string name = S(item->text());
    RunOperation(ui_, "OutputFileList_Click", [&] { model_.OutputListClick(name); });
    Sync();
  });
  Sync();
}

void EstimationView::Sync() {
  syncing_ = true;
  inputs_->clear();
  for (const std::string& n : model_.InputFileList) inputs_->addItem(Q(n));
  outputs_->clear();
  for (const std::string& n : model_.OutputFileList) outputs_->addItem(Q(n));
  std::string shown;
  for (char c : model_.TextBox)
    if (c != '\r') shown += c;
  if (S(text_->toPlainText()) != shown) text_->setPlainText(Q(shown));
  text_->setReadOnly(model_.TextBoxReadOnly);
  QPalette palette = text_->palette();
  palette.setColor(QPalette::Base,
                   model_.TextBoxReadOnly ? palette.color(QPalette::Window) : QColor(Qt::white));
  text_->setPalette(palette);
  file_->setText(Q(model_.lblFile));
  save_->setEnabled(model_.cmdSaveEnabled);
  if (pest_ != nullptr) {
    run_->setEnabled(pest_->cmdRunPESTEnabled);
    import_->setEnabled(pest_->cmdImportPESTEnabled);
  } else {
    run_->setEnabled(ucode_->cmdRunUCODEEnabled);
  }
  syncing_ = false;
}

void EstimationView::reject() {
  RunOperation(ui_, "cmdDone_Click", [&] { model_.Done(); });
  done(1);
}

// ---------------------------------------------------------------------------

TemplatePromptView::TemplatePromptView(TemplatePrompt& model, QWidget* parent) : QDialog(parent) {
  setWindowTitle(TemplatePrompt::kCaption);
  auto* layout = new QVBoxLayout(this);
  auto* text = new QLabel(Q(model.Text()));
  text->setWordWrap(true);
  text->setMinimumWidth(420);
  layout->addWidget(text);
  dontShow_ = new QCheckBox(QStringLiteral("Don't show this message again"));
  layout->addWidget(dontShow_);
  auto* ok = new QPushButton(QStringLiteral("OK"));
  ok->setDefault(true);
  layout->addWidget(ok, 0, Qt::AlignRight);
  connect(ok, &QPushButton::clicked, this, [this, &model] {
    model.chkDontShow = dontShow_->isChecked();
    accept();
  });
}

// ---------------------------------------------------------------------------

OptWeightView::OptWeightView(OptWeight& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(Q(model.Caption()));
  auto* layout = new QVBoxLayout(this);
  auto* tabs = new QTabWidget;
  const std::vector<OptWeight::WeightRow>* pages[3] = {
      &model.Piezometer_Weights, &model.Gage_Weights, &model.Lake_Stage_Weights};
  const char* captions[3] = {"Piezometers", "Stream Gages", "Lake Stages"};
  for (int p = 0; p < 3; ++p) {
    auto* grid = new QTableWidget(static_cast<int>(pages[p]->size()), 2);
    grid->setHorizontalHeaderLabels({QStringLiteral("Label"), QStringLiteral("Weight")});
    grid->horizontalHeader()->setStretchLastSection(true);
    for (int r = 0; r < static_cast<int>(pages[p]->size()); ++r) {
      auto* label = new QTableWidgetItem(Q((*pages[p])[r].Label));
      label->setFlags(label->flags() & ~Qt::ItemIsEditable);  // the label column is locked
      grid->setItem(r, 0, label);
      grid->setItem(r, 1, new QTableWidgetItem(Q((*pages[p])[r].Weight)));
    }
    grids_[p] = grid;
    tabs->addTab(grid, captions[p]);
  }
  layout->addWidget(tabs);
  auto* row = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  row->addStretch();
  row->addWidget(ok_);
  row->addWidget(cancel_);
  layout->addLayout(row);
  connect(ok_, &QPushButton::clicked, this, [this] {
    Take();
    if (model_.OK(ui_)) accept();
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void OptWeightView::Take() {
  std::vector<OptWeight::WeightRow>* pages[3] = {&model_.Piezometer_Weights, &model_.Gage_Weights,
                                                 &model_.Lake_Stage_Weights};
  for (int p = 0; p < 3; ++p)
    for (int r = 0; r < static_cast<int>(pages[p]->size()); ++r)
      (*pages[p])[r].Weight = S(grids_[p]->item(r, 1)->text());
}

void OptWeightView::reject() {
  if (model_.Cancel(ui_)) QDialog::reject();
}

}  // namespace tarno
