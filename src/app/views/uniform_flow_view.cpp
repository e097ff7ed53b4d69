#include "app/views/uniform_flow_view.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/views/element_view_support.h"
#include "app/views/view_support.h"

namespace tarno {

using views::AddField;
using views::Q;
using views::S;

UniformFlowView::UniformFlowView(UniformFlow& model, UserInterface& ui,
                                 std::function<std::string()> projectFile, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui), projectFile_(std::move(projectFile)) {
  setWindowTitle(UniformFlow::kTitle);
  auto* layout = new QVBoxLayout(this);
  auto* grid = new QGridLayout;
  for (int i = 0; i < 3; ++i)
    data_[i] = AddField(grid, i, QString::fromLatin1(UniformFlow::kPrompts[i]), "", nullptr,
                        &units_[i]);
  layout->addLayout(grid);

  layout->addLayout(views::OkCancelButtons(ok_, cancel_));

  connect(ok_, &QPushButton::clicked, this, [this] { PressOK(); });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  FromModel();
}

void UniformFlowView::FromModel() {
  for (int i = 0; i < 3; ++i) {
    data_[i]->setText(Q(model_.tbdata[i]));
    units_[i]->setText(Q(model_.Unit(i)));
  }
}

void UniformFlowView::ToModel() {
  for (int i = 0; i < 3; ++i) model_.tbdata[i] = S(data_[i]->text());
}

QLineEdit* UniformFlowView::field(UniformFlow::Field which) const {
  switch (which) {
    case UniformFlow::Field::Head:
      return data_[UniformFlow::kHead];
    case UniformFlow::Field::Gradient:
      return data_[UniformFlow::kGradient];
    case UniformFlow::Field::Orientation:
      return data_[UniformFlow::kOrientation];
    case UniformFlow::Field::None:
      break;
  }
  return nullptr;
}

void UniformFlowView::PressOK() {
  ToModel();
  if (views::RunElementOK(model_, ui_, projectFile_, "UniformFlow_OK")) {
    done(1);
    return;
  }
  views::SelectRefused(field(model_.failedField));
}

void UniformFlowView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
