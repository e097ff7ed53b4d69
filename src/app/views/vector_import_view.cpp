#include "app/views/vector_import_view.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/views/view_support.h"

namespace tarno {

using views::Q;
using views::S;

namespace {
const QString kNone = QStringLiteral("(none)");
}

VectorImportView::VectorImportView(exchange::VectorImport& model, UserInterface& ui,
                                   QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(QString::fromUtf8(exchange::vector_import_text::kTitle));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  form->addRow(QStringLiteral("File"), new QLabel(Q(model.file)));
  layers_ = new QComboBox;
  for (const auto& l : model.layers) {
    const std::string count =
        l.features >= 0 ? std::to_string(l.features) + " features" : "features";
    layers_->addItem(Q(l.name + " (" + l.geometry + ", " + count + ")"));
  }
  layers_->setCurrentIndex(model.layer);
  form->addRow(QStringLiteral("Layer"), layers_);
  crs_ = new QLabel;
  form->addRow(QStringLiteral("Coordinate system"), crs_);
  kinds_ = new QComboBox;
  for (ElementKind k : exchange::ImportKinds()) kinds_->addItem(Q(std::string(Info(k).name)));
  form->addRow(QStringLiteral("Import as"), kinds_);
  layout->addLayout(form);

  layout->addWidget(
      new QLabel(QStringLiteral("Attribute for each field (unmapped fields take the defaults):")));
  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  mapping_ = new QWidget;
  grid_ = new QGridLayout(mapping_);
  scroll->setWidget(mapping_);
  layout->addWidget(scroll, 1);

  auto* buttons = new QDialogButtonBox;
  ok_ = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
  cancel_ = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
  ok_->setDefault(true);
  layout->addWidget(buttons);

  connect(layers_, &QComboBox::currentIndexChanged, this, [this](int index) {
    model_.ChooseLayer(index);
    ShowMapping();
  });
  connect(kinds_, &QComboBox::currentIndexChanged, this, [this](int index) {
    if (index < 0) return;
    model_.ChooseKind(exchange::ImportKinds()[static_cast<std::size_t>(index)]);
    ShowMapping();
  });
  connect(ok_, &QPushButton::clicked, this, [this] {
    TakeMapping();
    if (model_.OK(ui_)) done(1);
  });
  connect(cancel_, &QPushButton::clicked, this, [this] { reject(); });
  resize(520, 560);
  ShowMapping();
}

void VectorImportView::ShowMapping() {
  {
    const QSignalBlocker block(kinds_);
    const auto& kinds = exchange::ImportKinds();
    for (std::size_t i = 0; i < kinds.size(); ++i)
      if (kinds[i] == model_.kind) kinds_->setCurrentIndex(static_cast<int>(i));
  }
  const exchange::VectorLayerInfo* layer = model_.CurrentLayer();
  crs_->setText(layer == nullptr || layer->crsName.empty() ? QStringLiteral("none")
                                                           : Q(layer->crsName));
  // The rows of the kind's roles, built anew.
  while (QLayoutItem* item = grid_->takeAt(0)) {
    delete item->widget();
    delete item;
  }
  attributes_.clear();
  int row = 0;
  for (const exchange::FieldRole& role : exchange::RolesOf(model_.kind)) {
    auto* box = new QComboBox;
    box->addItem(kNone);
    if (layer != nullptr)
      for (const std::string& a : layer->attributes) box->addItem(Q(a));
    const std::string chosen = model_.AttributeOf(role.role);
    box->setCurrentIndex(chosen.empty() ? 0 : std::max(0, box->findText(Q(chosen))));
    auto* caption = new QLabel(Q(role.caption));
    caption->setBuddy(box);
    grid_->addWidget(caption, row, 0);
    grid_->addWidget(box, row, 1);
    attributes_.push_back(box);
    ++row;
  }
  grid_->setRowStretch(row, 1);
}

void VectorImportView::TakeMapping() {
  const std::vector<exchange::FieldRole> roles = exchange::RolesOf(model_.kind);
  for (std::size_t i = 0; i < roles.size() && i < attributes_.size(); ++i) {
    const QString text = attributes_[i]->currentText();
    model_.Map(roles[i].role, attributes_[i]->currentIndex() <= 0 ? std::string() : S(text));
  }
}

void VectorImportView::reject() {
  model_.Cancel();
  done(2);
}

}  // namespace tarno
