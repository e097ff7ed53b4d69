#include "app/views/linesink_view.h"

#include <QCheckBox>
#include <QDir>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"
#include "core/error_trap.h"
#include "store/database.h"

namespace tarno {

using views::Q;
using views::S;
using L = LinesinkString;

namespace {

constexpr const char* kLakeOptionNote =
    "* Use for high-conductivity lakes only. Do not check when used in conjunction with "
    "linesink lakes.";
constexpr const char* kLakeFeatureNote =
    "Only check this option for lakes where the stage is to be calculated from water "
    "balance. Press F1 for details.";

QLabel* Note(const char* text) {
  auto* label = new QLabel(text);
  label->setWordWrap(true);
  return label;
}

}  // namespace

LinesinkStringView::LinesinkStringView(LinesinkString& model, UserInterface& ui,
                                       std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(L::kTitle);
  auto* layout = new QVBoxLayout(this);

  layout->addLayout(views::LabelRow(tbLabel_));

  // The kind of string: one group of five options.
  auto* kind = new QGroupBox(QStringLiteral("Linesink Type"));
  auto* kindLayout = new QGridLayout(kind);
  const char* optionCaptions[5] = {"Head-Specified", "Discharge-Specified", "Drain", "Gallery",
                                   "Lake *"};
  for (int i = 0; i < 5; ++i) {
    options_[i] = new QRadioButton(optionCaptions[i]);
    kindLayout->addWidget(options_[i], i < 2 ? 0 : 1, i < 2 ? i : i - 2);
  }
  chkFarField_ = new QCheckBox(QStringLiteral("Treat as \"far-field\""));
  kindLayout->addWidget(chkFarField_, 0, 2);
  kindLayout->addWidget(Note(kLakeOptionNote), 2, 0, 1, 3);
  layout->addWidget(kind);

  tabs_ = new QTabWidget;
  tabs_->setUsesScrollButtons(false);
  layout->addWidget(tabs_);

  // A number with its prompt (index p) and unit (index u; -1 for none).
  auto addNumber = [this](QGridLayout* grid, int row, int index, int p, int u) {
    prompts_[p] = new QLabel;
    tbdata_[index] = new QLineEdit;
    prompts_[p]->setBuddy(tbdata_[index]);
    grid->addWidget(prompts_[p], row, 0);
    grid->addWidget(tbdata_[index], row, 1);
    if (u >= 0) {
      units_[u] = new QLabel;
      grid->addWidget(units_[u], row, 2);
    }
  };

  // General: the heads and the bed.
  auto* page = new QWidget;
  auto* column = new QVBoxLayout(page);
  auto* grid = new QGridLayout;
  column->addLayout(grid);
  addNumber(grid, 0, L::kStartHead, 0, 0);
  addNumber(grid, 1, L::kEndHead, 1, 1);
  addNumber(grid, 2, L::kResistance, 2, 2);
  addNumber(grid, 3, L::kWidth, 3, 3);
  addNumber(grid, 4, L::kDepth, 4, 4);
  addNumber(grid, 5, L::kTotalDischarge, 7, 7);
  auto* location = new QGroupBox(QStringLiteral("Linesink Location"));
  auto* locationLayout = new QVBoxLayout(location);
  const char* locations[3] = {"Unkown", "Along stream centerline", "Along surface water boundary"};
  for (int i = 0; i < 3; ++i) {
    auto_[i] = new QRadioButton(locations[i]);
    locationLayout->addWidget(auto_[i]);
  }
  column->addWidget(location);
  column->addStretch();
  tabs_->addTab(page, L::kTabNames[L::kGeneralTab]);

  // Routing: the stream network, the inflows, the lake's water balance.
  page = new QWidget;
  column = new QVBoxLayout(page);
  auto* network = new QGroupBox(QStringLiteral("Stream Network"));
  auto* networkLayout = new QGridLayout(network);
  const char* routingCaptions[4] = {"Use streamflow routing", "End Stream", "Inlet Stream *",
                                    "Outlet Stream"};
  for (int i = 0; i < 4; ++i) {
    chkRouting_[i] = new QCheckBox(routingCaptions[i]);
    networkLayout->addWidget(chkRouting_[i], i / 2, i % 2);
  }
  column->addWidget(network);
  grid = new QGridLayout;
  column->addLayout(grid);
  addNumber(grid, 0, L::kOverlandFlow, 5, 5);
  // End inflow and a lake's evapotranspiration share a row, its prompt and its unit.
  addNumber(grid, 1, L::kEndInflow, 6, 6);
  tbdata_[L::kEvapotranspiration] = new QLineEdit;
  grid->addWidget(tbdata_[L::kEvapotranspiration], 1, 1);
  addNumber(grid, 2, L::kPrecipitation, 10, -1);
  units_[8] = new QLabel;
  grid->addWidget(units_[8], 2, 2);
  addNumber(grid, 3, L::kOutletTable, 9, -1);
  fileOutletFile_ = new QListWidget;
  fileOutletFile_->setMaximumHeight(90);
  grid->addWidget(fileOutletFile_, 4, 1);
  auto* lakeNote = new QGroupBox(QStringLiteral("* Note on Lake feature"));
  auto* lakeNoteLayout = new QVBoxLayout(lakeNote);
  lakeNoteLayout->addWidget(Note(kLakeFeatureNote));
  column->addWidget(lakeNote);
  column->addStretch();
  tabs_->addTab(page, L::kTabNames[L::kRoutingTab]);

  // Scenarios.
  page = new QWidget;
  column = new QVBoxLayout(page);
  chkScenario_ = new QCheckBox(QStringLiteral("Include in scenarios"));
  column->addWidget(chkScenario_);
  column->addWidget(
      new QLabel(QStringLiteral("Enter symbolic names for the following properties:")));
  grid = new QGridLayout;
  column->addLayout(grid);
  for (int i = 1; i <= 2; ++i) {
    scenarioPrompts_[i] = new QLabel(Q(model_.scenarioPrompt[i].text));
    tbScenario_[i] = new QLineEdit;
    scenarioPrompts_[i]->setBuddy(tbScenario_[i]);
    grid->addWidget(scenarioPrompts_[i], i - 1, 0);
    grid->addWidget(tbScenario_[i], i - 1, 1);
  }
  column->addStretch();
  tabs_->addTab(page, L::kTabNames[L::kScenariosTab]);

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));

  // What the user does goes to the model; the widgets then follow the model.
  connect(tbLabel_, &QLineEdit::textEdited, this,
          [this](const QString& text) { model_.TypeLabel(S(text)); });
  for (int i = 0; i < L::kFieldCount; ++i) {
    connect(tbdata_[i], &QLineEdit::textEdited, this,
            [this, i](const QString& text) { model_.TypeField(i, S(text)); });
    tbdata_[i]->installEventFilter(this);
  }
  for (int i = 1; i <= 2; ++i) {
    connect(tbScenario_[i], &QLineEdit::textEdited, this,
            [this, i](const QString& text) { model_.tbScenario[i] = S(text); });
  }
  auto then = [this](auto action) {
    return [this, action](bool on) {
      action(on);
      Refresh();
    };
  };
  connect(options_[L::kHeadSpecified], &QRadioButton::clicked, this,
          then([this](bool) { model_.ClickHeadSpec(0); }));
  connect(options_[L::kDischargeSpecified], &QRadioButton::clicked, this,
          then([this](bool) { model_.ClickHeadSpec(1); }));
  connect(options_[L::kDrain], &QRadioButton::clicked, this,
          then([this](bool) { model_.ClickDrain(); }));
  connect(options_[L::kGallery], &QRadioButton::clicked, this,
          then([this](bool) { model_.ClickGallery(); }));
  connect(options_[L::kLake], &QRadioButton::clicked, this,
          then([this](bool) { model_.ClickLake(); }));
  connect(chkFarField_, &QCheckBox::clicked, this,
          then([this](bool on) { model_.ClickFarField(on); }));
  for (int i = 0; i < 4; ++i) {
    connect(chkRouting_[i], &QCheckBox::clicked, this,
            then([this, i](bool on) { model_.ClickRouting(i, on); }));
  }
  for (int i = 0; i < 3; ++i) {
    connect(auto_[i], &QRadioButton::clicked, this, then([this, i](bool) { model_.ClickAuto(i); }));
  }
  connect(chkScenario_, &QCheckBox::clicked, this,
          then([this](bool on) { model_.ClickScenario(on); }));
  connect(fileOutletFile_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
    model_.ChooseOutletFile(S(item->text()));
    Refresh();
  });
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });

  tbLabel_->setText(Q(model_.tbLabel));
  FillOutletFiles();
  Refresh();
  tabs_->setCurrentIndex(model_.currentTab);
}

void LinesinkStringView::FillOutletFiles() {
  fileOutletFile_->clear();
  if (model_.BasePath.empty()) return;
  const QDir folder(Q(model_.BasePath));
  for (const QString& name :
       folder.entryList({QStringLiteral("*.stg")}, QDir::Files, QDir::Name | QDir::IgnoreCase)) {
    fileOutletFile_->addItem(name);
  }
}

void LinesinkStringView::Refresh() {
  auto apply = [](QWidget* w, const L::Control& c) {
    if (w == nullptr) return;
    w->setEnabled(c.enabled);
    w->setVisible(c.visible);
  };
  for (int i = 0; i < L::kFieldCount; ++i) {
    if (prompts_[i] != nullptr) {
      prompts_[i]->setText(Q(model_.prompt[i].text));
      apply(prompts_[i], model_.prompt[i]);
    }
    if (units_[i] != nullptr) {
      units_[i]->setText(Q(model_.unit[i].text));
      apply(units_[i], model_.unit[i]);
    }
    if (tbdata_[i]->text() != Q(model_.tbdata[i])) tbdata_[i]->setText(Q(model_.tbdata[i]));
    apply(tbdata_[i], model_.field[i]);
  }
  options_[model_.option]->setChecked(true);
  auto box = [](QCheckBox* widget, const L::Box& b) {
    widget->setChecked(b.checked);
    widget->setEnabled(b.enabled);
  };
  box(chkFarField_, model_.chkFarField);
  for (int i = 0; i < 4; ++i) box(chkRouting_[i], model_.chkRouting[i]);
  if (model_.autoLocation >= 0 && model_.autoLocation < 3)
    auto_[model_.autoLocation]->setChecked(true);
  fileOutletFile_->setEnabled(model_.fileOutletFileEnabled);
  box(chkScenario_, model_.chkScenario);
  for (int i = 1; i <= 2; ++i) {
    apply(scenarioPrompts_[i], model_.scenarioPrompt[i]);
    apply(tbScenario_[i], model_.scenarioField[i]);
    if (tbScenario_[i]->text() != Q(model_.tbScenario[i]))
      tbScenario_[i]->setText(Q(model_.tbScenario[i]));
  }
  for (int i = 0; i < L::kTabCount; ++i) tabs_->setTabEnabled(i, model_.tabEnabled[i]);
}

bool LinesinkStringView::eventFilter(QObject* watched, QEvent* event) {
  auto* edit = qobject_cast<QLineEdit*>(watched);
  if (edit != nullptr && event->type() == QEvent::FocusIn) {
    QMetaObject::invokeMethod(edit, &QLineEdit::selectAll, Qt::QueuedConnection);
  }
  return QDialog::eventFilter(watched, event);
}

void LinesinkStringView::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  model_.Activate();
  if (model_.tbLabel.empty()) {
    tbLabel_->setFocus();
  } else {
    ok_->setFocus();
  }
}

void LinesinkStringView::PressOK() {
  const bool accepted = views::RunElementOK(model_, ui_, projectFile_, "LinesinkString.OK_Click");
  Refresh();
  if (accepted) {
    done(1);
    return;
  }
  if (model_.failedTab >= 0) tabs_->setCurrentIndex(model_.failedTab);
  QLineEdit* edit = nullptr;
  if (model_.failedField == L::kLabelField) edit = tbLabel_;
  if (model_.failedField == L::kScenarioResistanceField) edit = tbScenario_[1];
  if (model_.failedField >= 0) edit = tbdata_[model_.failedField];
  views::SelectRefused(edit);
}

void LinesinkStringView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
