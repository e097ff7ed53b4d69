#include "app/views/flux_inspect_view.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;

FluxInspectView::FluxInspectView(FluxInspectDialog& model, UserInterface& ui,
                                 std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(Q(model.Prompt));
  auto* layout = new QVBoxLayout(this);
  auto* grid = new QGridLayout;
  auto* caption = new QLabel(FluxInspectDialog::kLabelCaption);
  prefix_ = new QLabel(Q(model.labelPrefix));
  prefix_->setVisible(!model.labelPrefix.empty());
  label_ = new QLineEdit(Q(model.tbLabel));
  label_->setMaxLength(static_cast<int>(FluxInspectDialog::kLabelSize));
  caption->setBuddy(label_);
  grid->addWidget(caption, 0, 0);
  grid->addWidget(prefix_, 0, 1);
  grid->addWidget(label_, 0, 2);
  colour_ = new QPushButton(FluxInspectDialog::kColourCaption);
  swatch_ = new QLabel;
  swatch_->setFixedSize(40, 20);
  swatch_->setFrameShape(QFrame::Box);
  grid->addWidget(colour_, 1, 0);
  grid->addWidget(swatch_, 1, 2);
  colour_->setVisible(model.ColourShown());
  swatch_->setVisible(model.ColourShown());
  layout->addLayout(grid);
  layout->addLayout(views::OkCancelButtons(ok_, cancel_));
  connect(colour_, &QPushButton::clicked, this, [this] {
    if (model_.ChooseColour(ui_)) ShowColour();
  });
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  ShowColour();
}

void FluxInspectView::ShowColour() {
  // Packed RGB: red in the low byte.
  const std::uint32_t c = model_.color;
  swatch_->setStyleSheet(QStringLiteral("background-color: rgb(%1, %2, %3);")
                             .arg(c & 0xFF)
                             .arg((c >> 8) & 0xFF)
                             .arg((c >> 16) & 0xFF));
}

void FluxInspectView::PressOK() {
  model_.tbLabel = S(label_->text());
  if (views::RunElementOK(model_, ui_, projectFile_, "FluxInspectDialog.OK_Click")) {
    done(1);
    return;
  }
  if (model_.failedField == FluxInspectDialog::Field::Label) views::SelectRefused(label_);
}

void FluxInspectView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
