#include "app/views/basemap_views.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include "app/views/view_support.h"
#include "core/error_trap.h"
#include "core/text.h"

namespace tarno {

using views::Q;
using views::S;

namespace {

QTableWidget* MakeTable(const std::vector<std::string>& headers,
                        const std::vector<std::vector<std::string>>& rows) {
  auto* table = new QTableWidget(static_cast<int>(rows.size()), static_cast<int>(headers.size()));
  QStringList labels;
  for (const auto& h : headers) labels << Q(h);
  table->setHorizontalHeaderLabels(labels);
  table->setEditTriggers(QAbstractItemView::NoEditTriggers);
  for (int r = 0; r < static_cast<int>(rows.size()); ++r) {
    const auto& row = rows[static_cast<std::size_t>(r)];
    for (int c = 0; c < static_cast<int>(row.size()) && c < table->columnCount(); ++c)
      table->setItem(r, c, new QTableWidgetItem(Q(row[static_cast<std::size_t>(c)])));
  }
  table->horizontalHeader()->setStretchLastSection(true);
  return table;
}

QPushButton* CloseButton(QDialog* dialog, QVBoxLayout* layout) {
  auto* buttons = new QHBoxLayout;
  auto* close = new QPushButton(QStringLiteral("Close"));
  close->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(close);
  layout->addLayout(buttons);
  QObject::connect(close, &QPushButton::clicked, dialog, &QDialog::accept);
  return close;
}

void FillFieldChoice(QComboBox* box, const std::vector<std::string>& fields,
                     const std::string& now) {
  for (const auto& f : fields) box->addItem(Q(f));
  int at = box->findText(Q(now), Qt::MatchFixedString);
  if (at < 0) {
    // A field the map no longer has stays visible, so that OK can name it.
    box->addItem(Q(now));
    at = box->count() - 1;
  }
  box->setCurrentIndex(at);
}

}  // namespace

// ---------------------------------------------------------------------------

MapBrowserView::MapBrowserView(MapBrowser& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(QString::fromLatin1(MapBrowser::kTitle));
  auto* layout = new QHBoxLayout(this);
  maps_ = new QListWidget;
  maps_->setMinimumWidth(480);
  layout->addWidget(maps_);
  auto* right = new QVBoxLayout;
  add_ = new QPushButton(QStringLiteral("Add Map..."));
  remove_ = new QPushButton(QStringLiteral("Remove"));
  options_ = new QPushButton(QStringLiteral("Options..."));
  view_ = new QPushButton(QStringLiteral("View..."));
  close_ = new QPushButton(QStringLiteral("Close"));
  for (QPushButton* b : {add_, remove_, options_, view_}) right->addWidget(b);
  right->addStretch();
  right->addWidget(close_);
  layout->addLayout(right);
  ShowMaps();

  connect(maps_, &QListWidget::currentRowChanged, this, [this](int row) { model_.Selected = row; });
  connect(maps_, &QListWidget::itemDoubleClicked, this, [this] { options_->click(); });
  connect(add_, &QPushButton::clicked, this, [this] {
    RunOperation(ui_, "MapBrowser.AddMap_Click", [&] { model_.AddMaps(ui_); });
    ShowMaps();
  });
  connect(remove_, &QPushButton::clicked, this, [this] {
    RunOperation(ui_, "MapBrowser.Remove_Click", [&] { model_.Remove(ui_); });
    ShowMaps();
  });
  connect(options_, &QPushButton::clicked, this, [this] {
    RunOperation(ui_, "MapBrowser.Options_Click", [&] { model_.Options(ui_); });
    ShowMaps();
  });
  connect(view_, &QPushButton::clicked, this,
          [this] { RunOperation(ui_, "MapBrowser.View_Click", [&] { model_.View(ui_); }); });
  connect(close_, &QPushButton::clicked, this, [this] {
    model_.Close();
    accept();
  });
}

void MapBrowserView::ShowMaps() {
  const int selected = model_.Selected;
  maps_->clear();
  for (const auto& line : model_.ListLines()) maps_->addItem(Q(line));
  if (selected >= 0 && selected < maps_->count()) maps_->setCurrentRow(selected);
  model_.Selected = maps_->currentRow();
  const bool any = maps_->count() > 0;
  for (QPushButton* b : {remove_, options_, view_}) b->setEnabled(any);
}

// ---------------------------------------------------------------------------

BaseMapBrowserOptionsView::BaseMapBrowserOptionsView(BaseMapBrowserOptions& model,
                                                     UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(QString::fromLatin1(BaseMapBrowserOptions::kTitle) + QStringLiteral(" - ") +
                 Q(GetNameFromFile(model.Row.MapName)));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(Q(model.Row.MapName)));
  auto* grid = new QGridLayout;
  show_ = new QCheckBox(QStringLiteral("Show this map"));
  show_->setChecked(model.Row.Show);
  grid->addWidget(show_, 0, 0, 1, 3);

  auto* colour = new QPushButton(QStringLiteral("Color..."));
  swatch_ = new QLabel;
  swatch_->setFixedSize(40, 18);
  grid->addWidget(new QLabel(QStringLiteral("Color")), 1, 0);
  grid->addWidget(swatch_, 1, 1);
  grid->addWidget(colour, 1, 2);

  const bool hasFields = model.Fields.size() > 1;
  colorField_ = new QComboBox;
  FillFieldChoice(colorField_, model.Fields, model.Row.ColorField);
  useColorField_ = new QCheckBox(QStringLiteral("Color by this field"));
  useColorField_->setChecked(model.Row.UseColorField);
  grid->addWidget(new QLabel(QStringLiteral("Color field")), 2, 0);
  grid->addWidget(colorField_, 2, 1);
  grid->addWidget(useColorField_, 2, 2);

  textField_ = new QComboBox;
  FillFieldChoice(textField_, model.Fields, model.Row.TextField);
  grid->addWidget(new QLabel(QStringLiteral("Labels field")), 3, 0);
  grid->addWidget(textField_, 3, 1);
  for (QWidget* w : {static_cast<QWidget*>(colorField_), static_cast<QWidget*>(useColorField_),
                     static_cast<QWidget*>(textField_)})
    w->setEnabled(hasFields);

  pyramids_ = new QCheckBox(QStringLiteral("Build pyramids"));
  pyramids_->setChecked(model.BuildPyramids);
  pyramids_->setVisible(model.PyramidsOffered());
  grid->addWidget(pyramids_, 4, 0, 1, 3);
  layout->addLayout(grid);
  ShowColour();

  auto* buttons = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  cancel_ = new QPushButton(QStringLiteral("Cancel"));
  ok_->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(ok_);
  buttons->addWidget(cancel_);
  layout->addLayout(buttons);

  connect(colour, &QPushButton::clicked, this, [this] {
    RunOperation(ui_, "BaseMapBrowserOptions.Color_Click", [&] { model_.ChooseColour(ui_); });
    ShowColour();
  });
  connect(ok_, &QPushButton::clicked, this, [this] {
    model_.Row.Show = show_->isChecked();
    model_.Row.ColorField = S(colorField_->currentText());
    model_.Row.UseColorField = useColorField_->isChecked();
    model_.Row.TextField = S(textField_->currentText());
    model_.BuildPyramids = pyramids_->isChecked();
    bool accepted = false;
    RunOperation(ui_, "BaseMapBrowserOptions.OK_Click", [&] { accepted = model_.OK(ui_); });
    if (accepted) done(BaseMapBrowserOptions::kOK);
  });
  connect(cancel_, &QPushButton::clicked, this, [this] {
    model_.Cancel();
    done(BaseMapBrowserOptions::kCancel);
  });
}

void BaseMapBrowserOptionsView::ShowColour() {
  const unsigned c = static_cast<unsigned>(model_.Row.Color) & 0xFFFFFFu;
  // The stored colour is packed with red in the low byte.
  const QColor colour(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF),
                      static_cast<int>((c >> 16) & 0xFF));
  swatch_->setStyleSheet(
      QStringLiteral("background-color: %1; border: 1px solid black;").arg(colour.name()));
}

// ---------------------------------------------------------------------------

ViewShapeView::ViewShapeView(ViewShape& model, QWidget* parent) : QDialog(parent) {
  setWindowTitle(Q(model.Title()));
  auto* layout = new QVBoxLayout(this);
  QString summary =
      QStringLiteral("%1 record(s), %2").arg(model.RecordCount).arg(Q(model.GeometryType));
  if (static_cast<std::int64_t>(model.Rows.size()) < model.RecordCount)
    summary += QStringLiteral("; the first %1 are shown").arg(model.Rows.size());
  layout->addWidget(new QLabel(summary));
  table_ = MakeTable(model.Columns, model.Rows);
  layout->addWidget(table_);
  CloseButton(this, layout);
  resize(640, 420);
}

ViewGraphicsView::ViewGraphicsView(ViewGraphics& model, QWidget* parent) : QDialog(parent) {
  setWindowTitle(Q(model.Title()));
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(new QLabel(Q(model.Summary)));
  std::vector<std::vector<std::string>> rows;
  for (const auto& e : model.Entries) rows.push_back({e.Name, e.Details});
  table_ = MakeTable({model.Kind == BaseMapKind::Raster ? "Band" : "Layer", "Contents"}, rows);
  layout->addWidget(table_);
  CloseButton(this, layout);
  resize(520, 320);
}

}  // namespace tarno
