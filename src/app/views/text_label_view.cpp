#include "app/views/text_label_view.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;

TextLabelView::TextLabelView(TextLabelProperties& model, UserInterface& ui,
                             std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(TextLabelProperties::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* textGrid = new QGridLayout;
  text_ = views::AddField(textGrid, 0, QStringLiteral("Text"), model.tbText);
  text_->setMaxLength(static_cast<int>(TextLabelProperties::kTextSize));
  text_->setMinimumWidth(260);
  layout->addLayout(textGrid);

  auto* font = new QGroupBox(QStringLiteral("Font"));
  auto* fontGrid = new QGridLayout(font);
  fontName_ = views::AddField(fontGrid, 0, QStringLiteral("Name"), model.tbFontName);
  QLabel* points = nullptr;
  fontSize_ =
      views::AddField(fontGrid, 1, QStringLiteral("Size"), model.tbFontSize, nullptr, &points);
  points->setText(QStringLiteral("points"));
  views::NumberFilter(fontSize_);
  bold_ = new QCheckBox(QStringLiteral("Bold"));
  italic_ = new QCheckBox(QStringLiteral("Italic"));
  bold_->setChecked(model.chkBold);
  italic_->setChecked(model.chkItalic);
  fontGrid->addWidget(bold_, 2, 1);
  fontGrid->addWidget(italic_, 3, 1);
  layout->addWidget(font);

  auto* position = new QGroupBox(QStringLiteral("Position"));
  auto* positionGrid = new QGridLayout(position);
  x_ = views::AddField(positionGrid, 0, QStringLiteral("X"), model.tbX, nullptr, &xUnit_);
  y_ = views::AddField(positionGrid, 1, QStringLiteral("Y"), model.tbY, nullptr, &yUnit_);
  views::NumberFilter(x_);
  views::NumberFilter(y_);
  xUnit_->setText(Q(model.lblCoordinateUnit));
  yUnit_->setText(Q(model.lblCoordinateUnit));
  layout->addWidget(position);

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));
  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
}

void TextLabelView::ToModel() {
  model_.tbText = S(text_->text());
  model_.tbFontName = S(fontName_->text());
  model_.tbFontSize = S(fontSize_->text());
  model_.chkBold = bold_->isChecked();
  model_.chkItalic = italic_->isChecked();
  model_.tbX = S(x_->text());
  model_.tbY = S(y_->text());
}

QLineEdit* TextLabelView::field(TextLabelProperties::Field which) const {
  switch (which) {
    case TextLabelProperties::Field::Text:
      return text_;
    case TextLabelProperties::Field::FontName:
      return fontName_;
    case TextLabelProperties::Field::FontSize:
      return fontSize_;
    case TextLabelProperties::Field::X:
      return x_;
    case TextLabelProperties::Field::Y:
      return y_;
    default:
      return nullptr;
  }
}

void TextLabelView::PressOK() {
  ToModel();
  if (views::RunElementOK(model_, ui_, projectFile_, "TextLabelProperties.OK_Click")) {
    done(1);
    return;
  }
  views::SelectRefused(field(model_.failedField));
}

void TextLabelView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
