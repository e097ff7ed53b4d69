#include "app/views/inhomogeneity_view.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;
using Field = Inhomogeneity::Field;

InhomogeneityView::InhomogeneityView(Inhomogeneity& model, UserInterface& ui,
                                     std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(Inhomogeneity::kTitle);
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  layout->addWidget(tabs_);

  // General: the label, then each value on the row of its box.
  auto* page = new QWidget;
  auto* pageLayout = new QVBoxLayout(page);
  auto* labelRow = new QHBoxLayout;
  auto* labelCaption = new QLabel(QStringLiteral("Label"));
  label_ = new QLineEdit;
  labelCaption->setBuddy(label_);
  labelRow->addWidget(labelCaption);
  labelRow->addWidget(label_);
  pageLayout->addLayout(labelRow);

  auto* values = new QGroupBox(QStringLiteral("Properties"));
  auto* grid = new QGridLayout(values);
  const std::array<const char*, 5> boxes = {
      Inhomogeneity::kChangeKCaption, Inhomogeneity::kChangeRCaption,
      Inhomogeneity::kChangePCaption, Inhomogeneity::kChangeBCaption,
      Inhomogeneity::kChangeACaption};
  for (int i = 0; i < 5; ++i) {
    change_[i] = new QCheckBox(QString::fromLatin1(boxes[i]));
    prompts_[i] = new QLabel(QString::fromLatin1(Inhomogeneity::kPrompts[i]));
    data_[i] = new QLineEdit;
    prompts_[i]->setBuddy(data_[i]);
    units_[i] = new QLabel;
    grid->addWidget(change_[i], i, 0);
    grid->addWidget(prompts_[i], i, 1);
    grid->addWidget(data_[i], i, 2);
    grid->addWidget(units_[i], i, 3);
  }
  pageLayout->addWidget(values);

  auto* colourRow = new QHBoxLayout;
  colourRow->addWidget(new QLabel(QString::fromLatin1(Inhomogeneity::kColorPrompt)));
  swatch_ = views::NewSwatch();
  colourRow->addWidget(swatch_);
  color_ = new QPushButton(QString::fromLatin1(Inhomogeneity::kColorButton));
  colourRow->addWidget(color_);
  colourRow->addStretch();
  pageLayout->addLayout(colourRow);
  pageLayout->addStretch();
  tabs_->addTab(page, QStringLiteral("General"));

  // Scenarios.
  auto* scenarios = new QWidget;
  auto* scenariosLayout = new QVBoxLayout(scenarios);
  scenariosLayout->addWidget(new QLabel(QString::fromLatin1(Inhomogeneity::kScenarioExplanation)));
  auto* tags = new QGridLayout;
  scenarioHydCond_ = new QCheckBox(QString::fromLatin1(Inhomogeneity::kScenarioBoxCaption));
  scenarioRecharge_ = new QCheckBox(QString::fromLatin1(Inhomogeneity::kScenarioBoxCaption));
  scenarioPrompts_[1] = new QLabel(QString::fromLatin1(Inhomogeneity::kScenarioHydCondPrompt));
  scenarioPrompts_[2] = new QLabel(QString::fromLatin1(Inhomogeneity::kScenarioRechargePrompt));
  scenario_[1] = new QLineEdit;
  scenario_[2] = new QLineEdit;
  for (int i : {1, 2}) {
    scenarioPrompts_[i]->setBuddy(scenario_[i]);
    tags->addWidget(i == 1 ? scenarioHydCond_ : scenarioRecharge_, i, 0);
    tags->addWidget(scenarioPrompts_[i], i, 1);
    tags->addWidget(scenario_[i], i, 2);
  }
  scenariosLayout->addLayout(tags);
  scenariosLayout->addStretch();
  tabs_->addTab(scenarios, QStringLiteral("Scenarios"));

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));

  connect(change_[0], &QCheckBox::clicked, this,
          [this](bool on) { Click([&] { model_.ClickChangeK(on); }); });
  connect(change_[1], &QCheckBox::clicked, this,
          [this](bool on) { Click([&] { model_.ClickChangeR(on); }); });
  connect(change_[2], &QCheckBox::clicked, this,
          [this](bool on) { Click([&] { model_.ClickChangeP(on); }); });
  connect(change_[3], &QCheckBox::clicked, this,
          [this](bool on) { Click([&] { model_.ClickChangeB(on); }); });
  connect(change_[4], &QCheckBox::clicked, this,
          [this](bool on) { Click([&] { model_.ClickChangeA(on); }); });
  connect(scenarioHydCond_, &QCheckBox::clicked, this,
          [this](bool on) { Click([&] { model_.ClickScenarioHydCond(on); }); });
  connect(scenarioRecharge_, &QCheckBox::clicked, this,
          [this](bool on) { Click([&] { model_.ClickScenarioRecharge(on); }); });
  connect(color_, &QPushButton::clicked, this, [this] {
    ToModel();
    if (model_.ChooseColor(ui_)) views::PaintSwatch(swatch_, model_.color);
  });
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });

  FromModel();
}

void InhomogeneityView::Click(const std::function<void()>& rule) {
  // What is typed goes to the model first: the rule may overwrite some fields and
  // keeps the others.
  ToModel();
  rule();
  FromModel();
}

void InhomogeneityView::FromModel() {
  label_->setText(Q(model_.Label));
  const std::array<bool, 5> boxes = {model_.chkChangeK, model_.chkChangeR, model_.chkChangeP,
                                     model_.chkChangeB, model_.chkChangeA};
  for (int i = 0; i < 5; ++i) {
    change_[i]->setChecked(boxes[i]);
    data_[i]->setText(Q(model_.tbData[i]));
    units_[i]->setText(Q(model_.Unit(i)));
    for (QWidget* w : {static_cast<QWidget*>(prompts_[i]), static_cast<QWidget*>(data_[i]),
                       static_cast<QWidget*>(units_[i])})
      w->setEnabled(model_.dataEnabled[i]);
  }
  change_[4]->setEnabled(model_.chkChangeAEnabled);
  scenarioHydCond_->setChecked(model_.chkScenarioHydCond);
  scenarioHydCond_->setEnabled(model_.chkScenarioHydCondEnabled);
  scenarioRecharge_->setChecked(model_.chkScenarioRecharge);
  scenarioRecharge_->setEnabled(model_.chkScenarioRechargeEnabled);
  for (int i : {1, 2}) {
    scenario_[i]->setText(Q(model_.tbScenario[i]));
    scenario_[i]->setEnabled(model_.scenarioEnabled[i]);
    scenarioPrompts_[i]->setEnabled(model_.scenarioEnabled[i]);
  }
  views::PaintSwatch(swatch_, model_.color);
}

void InhomogeneityView::ToModel() {
  model_.Label = S(label_->text());
  for (int i = 0; i < 5; ++i) model_.tbData[i] = S(data_[i]->text());
  for (int i : {1, 2}) model_.tbScenario[i] = S(scenario_[i]->text());
}

QLineEdit* InhomogeneityView::field(Field which) const {
  switch (which) {
    case Field::Label:
      return label_;
    case Field::HydCond:
      return data_[Inhomogeneity::kHydCond];
    case Field::Porosity:
      return data_[Inhomogeneity::kPorosity];
    case Field::ScenarioHydCond:
      return scenario_[1];
    case Field::ScenarioRecharge:
      return scenario_[2];
    case Field::None:
      break;
  }
  return nullptr;
}

void InhomogeneityView::PressOK() {
  ToModel();
  if (views::RunElementOK(model_, ui_, projectFile_, "Inhomogeneity.OK_Click")) {
    done(1);
    return;
  }
  tabs_->setCurrentIndex(model_.failedTab);
  views::SelectRefused(field(model_.failedField));
}

void InhomogeneityView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
