#include "app/views/well_view.h"

#include <QCheckBox>
#include <QEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
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
using W = WellProperties;

namespace {

// A tab page whose rows stand at the top.
QWidget* Page(QVBoxLayout*& column) {
  auto* page = new QWidget;
  column = new QVBoxLayout(page);
  return page;
}

}  // namespace

WellPropertiesView::WellPropertiesView(WellProperties& model, UserInterface& ui,
                                       std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(W::kTitle);
  auto* layout = new QVBoxLayout(this);

  layout->addLayout(views::LabelRow(tbLabel_));

  tabs_ = new QTabWidget;
  tabs_->setUsesScrollButtons(false);
  layout->addWidget(tabs_);

  // A number with its prompt and its unit on a row of `grid`.
  auto addNumber = [this](QGridLayout* grid, int row, int index) {
    prompts_[index] = new QLabel;
    tbData_[index] = new QLineEdit;
    units_[index] = new QLabel;
    prompts_[index]->setBuddy(tbData_[index]);
    grid->addWidget(prompts_[index], row, 0);
    grid->addWidget(tbData_[index], row, 1);
    grid->addWidget(units_[index], row, 2);
  };
  auto group = [](const QString& title, QGridLayout*& grid) {
    auto* box = new QGroupBox(title);
    grid = new QGridLayout(box);
    return box;
  };

  // General: where the well stands and what is given.
  QVBoxLayout* column = nullptr;
  QGridLayout* grid = nullptr;
  QWidget* page = Page(column);
  column->addWidget(group(QStringLiteral("Location"), grid));
  addNumber(grid, 0, W::kX);
  addNumber(grid, 1, W::kY);
  column->addWidget(group(QStringLiteral("Well"), grid));
  optHeadSpec_[0] = new QRadioButton(QStringLiteral("Head-Specified"));
  optHeadSpec_[1] = new QRadioButton(QStringLiteral("Discharge-Specified"));
  auto* options = new QHBoxLayout;
  options->addWidget(optHeadSpec_[0]);
  options->addWidget(optHeadSpec_[1]);
  options->addStretch();
  grid->addLayout(options, 0, 0, 1, 3);
  addNumber(grid, 1, W::kHead);
  addNumber(grid, 2, W::kRadius);
  chkPond_ = new QCheckBox(QStringLiteral("Use circular area-sink function"));
  grid->addWidget(chkPond_, 3, 0, 1, 3);
  column->addStretch();
  tabs_->addTab(page, W::kTabNames[W::kGeneralTab]);

  // 3-D Geometry: the screen, or the pond's elevation.
  page = Page(column);
  chkPPWell_ = new QCheckBox(QStringLiteral("Use 3-D Partially Penetrating Function"));
  column->addWidget(chkPPWell_);
  column->addWidget(group(QStringLiteral("Screen"), grid));
  addNumber(grid, 0, W::kTopElev);
  addNumber(grid, 1, W::kBottomElev);
  column->addStretch();
  tabs_->addTab(page, W::kTabNames[W::kGeometryTab]);

  // Transient Well.
  page = Page(column);
  chkTransient_[0] = new QCheckBox(QStringLiteral("Use Theis Transient Well Function"));
  chkTransient_[1] = new QCheckBox(QStringLiteral("Cyclic Pumping (Begins at Time=0)"));
  column->addWidget(chkTransient_[0]);
  column->addWidget(chkTransient_[1]);
  column->addWidget(group(QStringLiteral("Transient Parameters"), grid));
  addNumber(grid, 0, W::kSS);
  addNumber(grid, 1, W::kStartHead);
  addNumber(grid, 2, W::kTime);
  addNumber(grid, 3, W::kCycles);
  column->addStretch();
  tabs_->addTab(page, W::kTabNames[W::kTransientTab]);

  // Other: the setback and the particles traced from the well.
  page = Page(column);
  column->addWidget(group(QStringLiteral("Setback"), grid));
  addNumber(grid, 0, W::kSetback);
  column->addWidget(group(QStringLiteral("Particles"), grid));
  chkTrace_ = new QCheckBox(QStringLiteral("Trace particles from well"));
  grid->addWidget(chkTrace_, 0, 0, 1, 3);
  addNumber(grid, 1, W::kNParticles);
  addNumber(grid, 2, W::kStartElev);
  column->addStretch();
  tabs_->addTab(page, W::kTabNames[W::kOtherTab]);

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));

  // What the user does goes to the model; the widgets then follow the model.
  connect(tbLabel_, &QLineEdit::textEdited, this,
          [this](const QString& text) { model_.TypeLabel(S(text)); });
  for (int i = 0; i < W::kFieldCount; ++i) {
    connect(tbData_[i], &QLineEdit::textEdited, this,
            [this, i](const QString& text) { model_.TypeField(i, S(text)); });
    tbData_[i]->installEventFilter(this);
  }
  tbLabel_->installEventFilter(this);
  for (int i = 0; i < 2; ++i) {
    connect(optHeadSpec_[i], &QRadioButton::clicked, this, [this, i] {
      model_.ClickHeadSpec(i);
      Refresh();
    });
    connect(chkTransient_[i], &QCheckBox::clicked, this, [this, i](bool on) {
      model_.ClickTransient(i, on);
      Refresh();
    });
  }
  connect(chkPond_, &QCheckBox::clicked, this, [this](bool on) {
    model_.ClickPond(on);
    Refresh();
  });
  connect(chkPPWell_, &QCheckBox::clicked, this, [this](bool on) {
    model_.ClickPPWell(on);
    Refresh();
  });
  connect(chkTrace_, &QCheckBox::clicked, this, [this](bool on) {
    model_.ClickTrace(on);
    Refresh();
  });
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });

  tbLabel_->setText(Q(model_.tbLabel));
  tabs_->setCurrentIndex(W::kGeneralTab);
  Refresh();
}

void WellPropertiesView::Refresh() {
  for (int i = 0; i < W::kFieldCount; ++i) {
    const W::FieldState& f = model_.field[i];
    prompts_[i]->setText(Q(f.prompt));
    units_[i]->setText(Q(f.unit));
    if (tbData_[i]->text() != Q(model_.tbData[i])) tbData_[i]->setText(Q(model_.tbData[i]));
    for (QWidget* w : {static_cast<QWidget*>(prompts_[i]), static_cast<QWidget*>(tbData_[i]),
                       static_cast<QWidget*>(units_[i])}) {
      w->setEnabled(f.enabled);
      w->setVisible(f.visible);
    }
  }
  optHeadSpec_[model_.optHeadSpec]->setChecked(true);
  auto box = [](QCheckBox* widget, const W::Box& b) {
    widget->setChecked(b.checked);
    widget->setEnabled(b.enabled);
  };
  box(chkPond_, model_.chkPond);
  box(chkPPWell_, model_.chkPPWell);
  box(chkTransient_[0], model_.chkTransient[0]);
  box(chkTransient_[1], model_.chkTransient[1]);
  box(chkTrace_, model_.chkTrace);
}

bool WellPropertiesView::eventFilter(QObject* watched, QEvent* event) {
  auto* edit = qobject_cast<QLineEdit*>(watched);
  if (edit != nullptr && event->type() == QEvent::FocusIn) {
    // A field selects its whole text on focus (after the click has placed the cursor).
    QMetaObject::invokeMethod(edit, &QLineEdit::selectAll, Qt::QueuedConnection);
  } else if (edit != nullptr && event->type() == QEvent::FocusOut) {
    model_.LeaveField();
    Refresh();
  }
  return QDialog::eventFilter(watched, event);
}

void WellPropertiesView::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (model_.Activate()) {
    tbLabel_->setFocus();
  } else {
    ok_->setFocus();
  }
}

void WellPropertiesView::PressOK() {
  const bool accepted = views::RunElementOK(model_, ui_, projectFile_, "Well_OKClick");
  Refresh();
  if (accepted) {
    done(1);
    return;
  }
  // The failed field comes forward with its text selected.
  if (model_.failedTab >= 0) tabs_->setCurrentIndex(model_.failedTab);
  QLineEdit* edit = model_.failedField == W::kLabelField ? tbLabel_
                    : model_.failedField >= 0            ? tbData_[model_.failedField]
                                                         : nullptr;
  views::SelectRefused(edit);
}

void WellPropertiesView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
