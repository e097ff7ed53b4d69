#include "app/views/model_settings_view.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

#include "app/views/view_support.h"
#include "core/error_trap.h"
#include "core/format.h"
#include "solver/solve_dialogs.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;
using Field = ModelSettings::Field;

namespace {

constexpr const char* kContourCaptions[6] = {"Heads",     "Potentials",      "Discharge",
                                             "Interface", "Stream Function", "Drawdowns"};
constexpr const char* kDetailCaptions[3] = {"Coarse", "Detailed", "Custom"};

// The note on drawdown contours, shown while "Drawdowns" is chosen.
constexpr const char* kDrawdownNote =
    "Subtracts current heads from previous heads. Previously "
    "drawn contours must be heads with same resolution and window "
    "as current (drawdown) settings. Adjust the Contour "
    "minimum, maximum and interval to the range of the drawdowns.";

QWidget* Page(QGridLayout*& grid) {
  auto* page = new QWidget;
  auto* outer = new QVBoxLayout(page);
  grid = new QGridLayout;
  outer->addLayout(grid);
  outer->addStretch();
  return page;
}

}  // namespace

ModelSettingsView::ModelSettingsView(ModelSettingsDialog& model, UserInterface& ui,
                                     QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(ModelSettingsDialog::kTitle);
  // F1 may later open the manual's page of the model settings.
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  // Every tab in sight: the dialog takes the width its tab headings need.
  tabs_->setUsesScrollButtons(false);
  layout->addWidget(tabs_);
  QGridLayout* grid = nullptr;

  // Aquifer Properties.
  QWidget* page = Page(grid);
  tbBase_ = AddField(grid, 0, QStringLiteral("Base Elevation"), "", nullptr, &baseUnit_);
  tbThickness_ = AddField(grid, 1, QStringLiteral("Thickness"), "", nullptr, &thicknessUnit_);
  tbHydCond_ =
      AddField(grid, 2, QStringLiteral("Hydraulic Conductivity"), "", nullptr, &hydCondUnit_);
  tbRecharge_ = AddField(grid, 3, QStringLiteral("Recharge Rate"), "", nullptr, &rechargeUnit_);
  tbPorosity_ = AddField(grid, 4, QStringLiteral("Porosity"), "");
  tabs_->addTab(page, QStringLiteral("Aquifer Properties"));

  // Interface Flow.
  page = Page(grid);
  chkAddSaltwaterInterface_ = new QCheckBox(QStringLiteral("Add a Salt Water Interface"));
  grid->addWidget(chkAddSaltwaterInterface_, 0, 0, 1, 3);
  tbFreshGravity_ = AddField(grid, 1, QStringLiteral("Fresh Water Specific Gravity"), "");
  tbSaltGravity_ = AddField(grid, 2, QStringLiteral("Salt Water Specific Gravity"), "");
  tbAvgSeaLevel_ =
      AddField(grid, 3, QStringLiteral("Average Sea Level"), "", nullptr, &seaLevelUnit_);
  tabs_->addTab(page, QStringLiteral("Interface Flow"));

  // Contours.
  page = Page(grid);
  chkContour_ = new QCheckBox(QStringLiteral("Compute Contours"));
  grid->addWidget(chkContour_, 0, 0, 1, 3);
  auto* kinds = new QGroupBox(QStringLiteral("Contour"));
  auto* kindsLayout = new QGridLayout(kinds);
  auto* kindGroup = new QButtonGroup(this);
  for (int i = 0; i < 6; ++i) {
    contourProperties_[i] = new QRadioButton(kContourCaptions[i]);
    kindGroup->addButton(contourProperties_[i], i);
    kindsLayout->addWidget(contourProperties_[i], i % 3, i / 3);
    connect(contourProperties_[i], &QRadioButton::clicked, this,
            [this, i] { ChooseContourProperty(i); });
  }
  grid->addWidget(kinds, 1, 0, 1, 3);
  tbContourMin_ = AddField(grid, 2, QStringLiteral("Minimum Contour"), "");
  tbContourMax_ = AddField(grid, 3, QStringLiteral("Maximum Contour"), "");
  tbContourInt_ = AddField(grid, 4, QStringLiteral("Contour Interval"), "", &intervalCaption_);
  auto* detail = new QGroupBox(QStringLiteral("Grid Resolution"));
  auto* detailLayout = new QHBoxLayout(detail);
  auto* detailGroup = new QButtonGroup(this);
  for (int i = 0; i < 3; ++i) {
    contourDetail_[i] = new QRadioButton(kDetailCaptions[i]);
    detailGroup->addButton(contourDetail_[i], i);
    detailLayout->addWidget(contourDetail_[i]);
    connect(contourDetail_[i], &QRadioButton::toggled, this, [this] { UpdateEnabled(); });
  }
  tbContourLevel_ = new QLineEdit;
  detailLayout->addWidget(tbContourLevel_);
  grid->addWidget(detail, 5, 0, 1, 3);
  chkContourElevation_ = new QCheckBox(QStringLiteral("Contour at Elevation"));
  tbContourElevation_ = new QLineEdit;
  elevationUnit_ = new QLabel;
  grid->addWidget(chkContourElevation_, 6, 0);
  grid->addWidget(tbContourElevation_, 6, 1);
  grid->addWidget(elevationUnit_, 6, 2);
  drawdownNote_ = new QGroupBox(QStringLiteral("Note on Drawdowns:"));
  auto* noteLayout = new QVBoxLayout(drawdownNote_);
  auto* noteText = new QLabel(kDrawdownNote);
  noteText->setWordWrap(true);
  noteLayout->addWidget(noteText);
  grid->addWidget(drawdownNote_, 7, 0, 1, 3);
  // The note keeps its room while hidden: the dialog is laid out for it once, and
  // choosing Drawdowns neither grows the dialog nor squeezes the options above.
  QSizePolicy notePolicy = drawdownNote_->sizePolicy();
  notePolicy.setRetainSizeWhenHidden(true);
  drawdownNote_->setSizePolicy(notePolicy);
  tabs_->addTab(page, QStringLiteral("Contours"));

  // Streamline Tracing Settings.
  page = Page(grid);
  chkComputePaths_ = new QCheckBox(QStringLiteral("Compute Pathlines"));
  grid->addWidget(chkComputePaths_, 0, 0, 1, 3);
  QLabel* timeUnit = nullptr;
  tbMaxTime_ = AddField(grid, 1, QStringLiteral("Maximum Travel Time"), "", nullptr, &timeUnit);
  timeUnit->setText(QStringLiteral("days"));
  tbStepSize_ = AddField(grid, 2, QStringLiteral("Tracing Step Size"), "", nullptr, &stepUnit_);
  chkDefaultStep_ = new QCheckBox(QStringLiteral("Use Default Step Size"));
  tbDefaultStepSize_ = new QLineEdit;
  tbDefaultStepSize_->setReadOnly(true);
  defaultStepUnit_ = new QLabel;
  grid->addWidget(chkDefaultStep_, 3, 0);
  grid->addWidget(tbDefaultStepSize_, 3, 1);
  grid->addWidget(defaultStepUnit_, 3, 2);
  tabs_->addTab(page, QStringLiteral("Streamline Tracing Settings"));

  // Solver.
  page = Page(grid);
  tbIterations_ = AddField(grid, 0, QStringLiteral("Number of Iterations"), "");
  chkOutsideLoop_ = new QCheckBox(QStringLiteral("Surface Water Relaxation (Outside Loop)"));
  grid->addWidget(chkOutsideLoop_, 1, 0, 1, 3);
  tbOuterIterations_ =
      AddField(grid, 2, QStringLiteral("Number of Iterations (Outside Loop)"), "");
  chkFastSolution_ = new QCheckBox(QStringLiteral("Fast Solution"));
  chkViewError_ = new QCheckBox(QStringLiteral("View Error Log"));
  chkViewMessage_ = new QCheckBox(QStringLiteral("View Message Log"));
  chkStoreMatrixOnDisk_ = new QCheckBox(QStringLiteral("Store Matrix on Disk"));
  chkConjunctive_ = new QCheckBox(QStringLiteral("Conjunctive Solution"));
  int row = 3;
  for (QCheckBox* box : {chkFastSolution_, chkViewError_, chkViewMessage_, chkStoreMatrixOnDisk_,
                         chkConjunctive_}) {
    grid->addWidget(box, row++, 0, 1, 3);
  }
  auto* advanced = new QHBoxLayout;
  relax_ = new QPushButton(QStringLiteral("Relaxation..."));
  converge_ = new QPushButton(QStringLiteral("Convergence..."));
  advanced->addWidget(relax_);
  advanced->addWidget(converge_);
  advanced->addStretch();
  grid->addLayout(advanced, row, 0, 1, 3);
  tabs_->addTab(page, QStringLiteral("Solver"));

  // Scenarios.
  page = Page(grid);
  chkScenarioHydCond_ = new QCheckBox(QStringLiteral("Hydraulic Conductivity Scenario Tag"));
  tbScenarioHydCond_ = new QLineEdit;
  chkScenarioBaseElev_ = new QCheckBox(QStringLiteral("Base Elevation Scenario Tag"));
  tbScenarioBaseElev_ = new QLineEdit;
  grid->addWidget(chkScenarioHydCond_, 0, 0);
  grid->addWidget(tbScenarioHydCond_, 0, 1);
  grid->addWidget(chkScenarioBaseElev_, 1, 0);
  grid->addWidget(tbScenarioBaseElev_, 1, 1);
  tabs_->addTab(page, QStringLiteral("Scenarios"));

  auto* buttons = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  layout->addLayout(buttons);

  fields_ = {{Field::Thickness, tbThickness_},
             {Field::HydCond, tbHydCond_},
             {Field::Porosity, tbPorosity_},
             {Field::FreshGravity, tbFreshGravity_},
             {Field::SaltGravity, tbSaltGravity_},
             {Field::ContourMax, tbContourMax_},
             {Field::ContourInt, tbContourInt_},
             {Field::ContourLevel, tbContourLevel_},
             {Field::ContourElevation, tbContourElevation_},
             {Field::MaxTime, tbMaxTime_},
             {Field::StepSize, tbStepSize_},
             {Field::Iterations, tbIterations_},
             {Field::OuterIterations, tbOuterIterations_},
             {Field::ScenarioHydCond, tbScenarioHydCond_},
             {Field::ScenarioBaseElev, tbScenarioBaseElev_}};

  for (QCheckBox* box : {chkAddSaltwaterInterface_, chkContour_, chkContourElevation_,
                         chkComputePaths_, chkDefaultStep_, chkOutsideLoop_, chkScenarioHydCond_,
                         chkScenarioBaseElev_}) {
    connect(box, &QCheckBox::toggled, this, [this] { UpdateEnabled(); });
  }
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  connect(relax_, &QPushButton::clicked, this, [this] {
    ToModel();
    RelaxDialog relax;
    relax.Load(model_.settings);
    ui_.ShowModal(relax);
    if (relax.Result == 1 && relax.Ok(model_.settings, ui_)) FromModel();
  });
  connect(converge_, &QPushButton::clicked, this, [this] {
    ToModel();
    ConvergeDialog converge;
    converge.Load(model_.settings);
    ui_.ShowModal(converge);
    if (converge.Result == 1 && converge.Ok(model_.settings, ui_)) FromModel();
  });

  FromModel();
}

void ModelSettingsView::FromModel() {
  const ModelSettings& s = model_.settings;
  const QString length = Q(s.LengthUnit());
  const QString velocity = Q(s.VelocityUnit());
  for (QLabel* unit : {baseUnit_, thicknessUnit_, seaLevelUnit_, elevationUnit_, stepUnit_,
                       defaultStepUnit_}) {
    unit->setText(length);
  }
  hydCondUnit_->setText(velocity);
  rechargeUnit_->setText(velocity);

  tbBase_->setText(Q(s.tbBase));
  tbThickness_->setText(Q(s.tbThickness));
  tbHydCond_->setText(Q(s.tbHydCond));
  tbRecharge_->setText(Q(s.tbRecharge));
  tbPorosity_->setText(Q(s.tbPorosity));
  chkAddSaltwaterInterface_->setChecked(s.chkAddSaltwaterInterface);
  tbFreshGravity_->setText(Q(s.tbFreshGravity));
  tbSaltGravity_->setText(Q(s.tbSaltGravity));
  tbAvgSeaLevel_->setText(Q(s.tbAvgSeaLevel));
  chkContour_->setChecked(s.chkContour);
  contourProperties_[s.ContourProperty()]->setChecked(true);
  tbContourMin_->setText(Q(s.tbContourMin));
  tbContourMax_->setText(Q(s.tbContourMax));
  tbContourInt_->setText(Q(s.tbContourInt));
  intervalCaption_->setText(Q(s.ContourIntervalCaption()));
  const int detail = s.contourDetail >= 0 && s.contourDetail < 3 ? s.contourDetail : 0;
  contourDetail_[detail]->setChecked(true);
  tbContourLevel_->setText(Q(s.tbContourLevel));
  chkContourElevation_->setChecked(s.chkContourElevation);
  tbContourElevation_->setText(Q(s.tbContourElevation));
  chkComputePaths_->setChecked(s.chkComputePaths);
  tbMaxTime_->setText(Q(s.tbMaxTime));
  tbStepSize_->setText(Q(s.tbStepSize));
  chkDefaultStep_->setChecked(s.chkDefaultStep);
  tbDefaultStepSize_->setText(Q(s.DefaultStepText()));
  tbIterations_->setText(Q(s.tbIterations));
  chkOutsideLoop_->setChecked(s.chkOutsideLoop);
  tbOuterIterations_->setText(Q(s.tbOuterIterations));
  chkFastSolution_->setChecked(s.chkFastSolution);
  chkViewError_->setChecked(s.chkViewError);
  chkViewMessage_->setChecked(s.chkViewMessage);
  chkStoreMatrixOnDisk_->setChecked(s.chkStoreMatrixOnDisk);
  chkConjunctive_->setChecked(s.chkConjunctive);
  chkScenarioHydCond_->setChecked(s.chkScenarioHydCond);
  chkScenarioBaseElev_->setChecked(s.chkScenarioBaseElev);
  // No tag shows as an empty field (the model stores it as "__NONE__").
  tbScenarioHydCond_->setText(Q(s.tbScenario[1]));
  tbScenarioBaseElev_->setText(Q(s.tbScenario[2]));
  UpdateEnabled();
}

void ModelSettingsView::ToModel() {
  ModelSettings& s = model_.settings;
  s.tbBase = S(tbBase_->text());
  s.tbThickness = S(tbThickness_->text());
  s.tbHydCond = S(tbHydCond_->text());
  s.tbRecharge = S(tbRecharge_->text());
  s.tbPorosity = S(tbPorosity_->text());
  s.chkAddSaltwaterInterface = chkAddSaltwaterInterface_->isChecked();
  s.tbFreshGravity = S(tbFreshGravity_->text());
  s.tbSaltGravity = S(tbSaltGravity_->text());
  s.tbAvgSeaLevel = S(tbAvgSeaLevel_->text());
  s.chkContour = chkContour_->isChecked();
  s.tbContourMin = S(tbContourMin_->text());
  s.tbContourMax = S(tbContourMax_->text());
  s.tbContourInt = S(tbContourInt_->text());
  for (int i = 0; i < 3; ++i) {
    if (contourDetail_[i]->isChecked()) s.contourDetail = i;
  }
  s.tbContourLevel = S(tbContourLevel_->text());
  s.chkContourElevation = chkContourElevation_->isChecked();
  s.tbContourElevation = S(tbContourElevation_->text());
  s.chkComputePaths = chkComputePaths_->isChecked();
  s.tbMaxTime = S(tbMaxTime_->text());
  s.tbStepSize = S(tbStepSize_->text());
  s.chkDefaultStep = chkDefaultStep_->isChecked();
  s.SetIterations(S(tbIterations_->text()));
  s.chkOutsideLoop = chkOutsideLoop_->isChecked();
  s.tbOuterIterations = S(tbOuterIterations_->text());
  s.chkFastSolution = chkFastSolution_->isChecked();
  s.chkViewError = chkViewError_->isChecked();
  s.chkViewMessage = chkViewMessage_->isChecked();
  s.chkStoreMatrixOnDisk = chkStoreMatrixOnDisk_->isChecked();
  s.chkConjunctive = chkConjunctive_->isChecked();
  s.chkScenarioHydCond = chkScenarioHydCond_->isChecked();
  s.chkScenarioBaseElev = chkScenarioBaseElev_->isChecked();
  // An emptied field is not written, so the stored tag stays.
  s.tbScenario[1] = S(tbScenarioHydCond_->text());
  s.tbScenario[2] = S(tbScenarioBaseElev_->text());
}

void ModelSettingsView::UpdateEnabled() {
  const bool salt = chkAddSaltwaterInterface_->isChecked();
  for (QLineEdit* edit : {tbFreshGravity_, tbSaltGravity_, tbAvgSeaLevel_}) edit->setEnabled(salt);

  const bool contours = chkContour_->isChecked();
  for (QRadioButton* button : contourProperties_) button->setEnabled(contours);
  for (QRadioButton* button : contourDetail_) button->setEnabled(contours);
  for (QLineEdit* edit : {tbContourMin_, tbContourMax_, tbContourInt_}) edit->setEnabled(contours);
  // "Coarse" and "Detailed" fix the level; only "Custom" takes the typed one.
  tbContourLevel_->setEnabled(contours && contourDetail_[kContourCustom]->isChecked());
  chkContourElevation_->setEnabled(contours);
  tbContourElevation_->setEnabled(contours && chkContourElevation_->isChecked());
  drawdownNote_->setVisible(contourProperties_[kContourDrawdowns]->isChecked());

  const bool paths = chkComputePaths_->isChecked();
  tbMaxTime_->setEnabled(paths);
  chkDefaultStep_->setEnabled(paths);
  // While the default step is used, the solve takes it instead of the typed one.
  tbStepSize_->setEnabled(paths && !chkDefaultStep_->isChecked());

  tbOuterIterations_->setEnabled(chkOutsideLoop_->isChecked());
  tbScenarioHydCond_->setEnabled(chkScenarioHydCond_->isChecked());
  tbScenarioBaseElev_->setEnabled(chkScenarioBaseElev_->isChecked());
}

void ModelSettingsView::ChooseContourProperty(int index) {
  // The interval field holds either the interval or the number of stream lines:
  // what is typed goes to the model first, so that the swap keeps it.
  model_.settings.tbContourInt = S(tbContourInt_->text());
  model_.settings.SelectContourProperty(index);
  tbContourInt_->setText(Q(model_.settings.tbContourInt));
  intervalCaption_->setText(Q(model_.settings.ContourIntervalCaption()));
  UpdateEnabled();
}

QLineEdit* ModelSettingsView::field(ModelSettings::Field which) const {
  const auto it = fields_.find(which);
  return it == fields_.end() ? nullptr : it->second;
}

int ModelSettingsView::TabOf(ModelSettings::Field which) {
  switch (which) {
    case Field::None:
    case Field::Thickness:
    case Field::HydCond:
    case Field::Porosity:
      return kAquiferTab;
    case Field::FreshGravity:
    case Field::SaltGravity:
      return kInterfaceTab;
    case Field::ContourMax:
    case Field::ContourInt:
    case Field::ContourLevel:
    case Field::ContourElevation:
      return kContoursTab;
    case Field::MaxTime:
    case Field::StepSize:
      return kTracingTab;
    case Field::Iterations:
    case Field::OuterIterations:
      return kSolverTab;
    case Field::ScenarioHydCond:
    case Field::ScenarioBaseElev:
      return kScenarioTab;
  }
  return kAquiferTab;
}

void ModelSettingsView::PressOK() {
  ToModel();
  bool accepted = false;
  const bool ran = RunOperation([&] { accepted = model_.OK(ui_); },
                                [&](const std::string& description) {
                                  ui_.MessageBox(kUnhandledErrorTitle,
                                                 {"Unhandled error in ModelSettings.OK_Click",
                                                  description, "Please restart TARNO"},
                                                 Buttons::OK, kUnhandledErrorIcon);
                                });
  if (!ran) return;
  if (accepted) {
    done(1);
    return;
  }
  // The model told "Bad Entry"; its field comes forward with its text selected.
  const Field failed = model_.last.failedField;
  tabs_->setCurrentIndex(TabOf(failed));
  if (QLineEdit* edit = field(failed)) {
    edit->setEnabled(true);
    edit->setFocus();
    edit->selectAll();
  }
}

void ModelSettingsView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
