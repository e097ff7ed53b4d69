#include "app/views/gui_options_view.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include "app/qt_ui.h"
#include "app/views/view_support.h"
#include "core/error_trap.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;

namespace {

// One pen's row: line type, width and colour.
QGroupBox* PenGroup(const QString& title, QComboBox*& type, QSpinBox*& width,
                    QPushButton*& colourButton, QLabel*& swatch) {
  auto* group = new QGroupBox(title);
  auto* grid = new QGridLayout(group);
  type = new QComboBox;
  for (const char* name : GUIOptions::kLineTypes) type->addItem(name);
  width = new QSpinBox;
  width->setRange(1, 20);
  colourButton = new QPushButton(QStringLiteral("Color..."));
  swatch = new QLabel;
  swatch->setFixedSize(40, 20);
  swatch->setAutoFillBackground(true);
  swatch->setFrameStyle(QFrame::Box | QFrame::Plain);
  grid->addWidget(new QLabel(QStringLiteral("Line Type")), 0, 0);
  grid->addWidget(type, 0, 1);
  grid->addWidget(new QLabel(QStringLiteral("Line Width")), 1, 0);
  grid->addWidget(width, 1, 1);
  grid->addWidget(colourButton, 2, 0);
  grid->addWidget(swatch, 2, 1);
  return group;
}

void Paint(QLabel* swatch, Colour colour) {
  QPalette palette = swatch->palette();
  palette.setColor(QPalette::Window, ToQColor(static_cast<std::uint32_t>(colour)));
  swatch->setPalette(palette);
}

}  // namespace

GUIOptionsView::GUIOptionsView(GUIOptions& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(GUIOptions::kTitle);
  // F1 may later open the manual's page of the options.
  auto* layout = new QVBoxLayout(this);

  auto* general = new QGroupBox(QStringLiteral("Map"));
  auto* grid = new QGridLayout(general);
  QLabel* unit = nullptr;
  vertexTolerance_ = AddField(grid, 0, QStringLiteral("Vertex Tolerance"), "", nullptr, &unit);
  unit->setText(Q(model.UnitText));
  linesinkShadow_ = AddField(grid, 1, QStringLiteral("Linesink Shadow (points)"), "");
  hazeLevel_ = AddField(grid, 2, QStringLiteral("Base Map Haze Level   (1 - 5)"), "");
  hazeColorButton_ = new QPushButton(QStringLiteral("Color..."));
  hazeSwatch_ = new QLabel;
  hazeSwatch_->setFixedSize(40, 20);
  hazeSwatch_->setAutoFillBackground(true);
  hazeSwatch_->setFrameStyle(QFrame::Box | QFrame::Plain);
  grid->addWidget(new QLabel(QStringLiteral("Haze Color")), 3, 0);
  auto* hazeRow = new QHBoxLayout;
  hazeRow->addWidget(hazeColorButton_);
  hazeRow->addWidget(hazeSwatch_);
  hazeRow->addStretch();
  grid->addLayout(hazeRow, 3, 1);
  suppress_ = new QCheckBox(QStringLiteral("Suppress Coordinate Translation"));
  grid->addWidget(suppress_, 4, 0, 1, 3);
  layout->addWidget(general);

  auto* pens = new QHBoxLayout;
  pens->addWidget(PenGroup(QStringLiteral("Contour Lines"), contourType_, contourWidth_,
                           contourColorButton_, contourSwatch_));
  pens->addWidget(PenGroup(QStringLiteral("Pathlines"), pathlineType_, pathlineWidth_,
                           pathlineColorButton_, pathlineSwatch_));
  layout->addLayout(pens);

  auto* buttons = new QHBoxLayout;
  defaults_ = new QPushButton(QStringLiteral("Load Defaults"));
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  buttons->addWidget(defaults_);
  buttons->addStretch();
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  layout->addLayout(buttons);

  connect(contourColorButton_, &QPushButton::clicked, this,
          [this] { PickColour(model_.ContourColor); });
  connect(pathlineColorButton_, &QPushButton::clicked, this,
          [this] { PickColour(model_.PathlineColor); });
  connect(hazeColorButton_, &QPushButton::clicked, this, [this] { PickColour(model_.HazeColor); });
  connect(defaults_, &QPushButton::clicked, this, [this] {
    ToModel();
    model_.LoadDefaults();
    FromModel();
  });
  connect(ok_, &QPushButton::clicked, this, [this] {
    ToModel();
    bool accepted = false;
    RunOperation(ui_, "GUIOptions.OK_Click", [&] { accepted = model_.OK(ui_); });
    if (accepted) {
      done(1);
    } else {
      hazeLevel_->setFocus();
      hazeLevel_->selectAll();
    }
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });

  FromModel();
}

void GUIOptionsView::FromModel() {
  vertexTolerance_->setText(Q(model_.DataVertexTolerance));
  linesinkShadow_->setText(Q(model_.DataLinesinkShadow));
  hazeLevel_->setText(Q(model_.DataHazeLevel));
  contourType_->setCurrentIndex(GUIOptions::PenStyleOf(model_.ContourType));
  pathlineType_->setCurrentIndex(GUIOptions::PenStyleOf(model_.PathlineType));
  contourWidth_->setValue(model_.ContourWidth);
  pathlineWidth_->setValue(model_.PathlineWidth);
  suppress_->setChecked(model_.SuppressTranslation);
  ShowColours();
}

void GUIOptionsView::ToModel() {
  model_.DataVertexTolerance = S(vertexTolerance_->text());
  model_.DataLinesinkShadow = S(linesinkShadow_->text());
  model_.DataHazeLevel = S(hazeLevel_->text());
  model_.ContourType = S(contourType_->currentText());
  model_.PathlineType = S(pathlineType_->currentText());
  model_.ContourWidth = contourWidth_->value();
  model_.PathlineWidth = pathlineWidth_->value();
  model_.SuppressTranslation = suppress_->isChecked();
}

void GUIOptionsView::ShowColours() {
  Paint(contourSwatch_, model_.ContourColor);
  Paint(pathlineSwatch_, model_.PathlineColor);
  Paint(hazeSwatch_, model_.HazeColor);
}

void GUIOptionsView::PickColour(Colour& colour) {
  if (const auto chosen = ui_.ColourDialog(static_cast<std::uint32_t>(colour))) {
    colour = static_cast<Colour>(*chosen);
    ShowColours();
  }
}

void GUIOptionsView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
