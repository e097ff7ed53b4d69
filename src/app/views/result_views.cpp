#include "app/views/result_views.h"

#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QVBoxLayout>

#include "app/views/view_support.h"

namespace tarno {

using views::Q;

ResultInfoView::ResultInfoView(const ResultInfo& model, QWidget* parent) : QDialog(parent) {
  setWindowTitle(Q(model.Title));
  auto* layout = new QVBoxLayout(this);
  auto* grid = new QGridLayout;
  // The columns: where the model starts them, else two of equal length.
  std::vector<std::size_t> starts = model.ColumnStarts;
  if (starts.empty()) starts.push_back((model.Lines.size() + 1) / 2);
  starts.insert(starts.begin(), 0);
  for (std::size_t i = 0; i < model.Lines.size(); ++i) {
    const InfoLine& line = model.Lines[i];
    int c = 0;
    while (c + 1 < static_cast<int>(starts.size()) && i >= starts[static_cast<std::size_t>(c) + 1])
      ++c;
    const int r = static_cast<int>(i - starts[static_cast<std::size_t>(c)]);
    auto* caption = new QLabel(Q(line.caption));
    auto* value = new QLineEdit(Q(line.text));
    value->setReadOnly(true);
    value->setAlignment(line.isText ? Qt::AlignLeft : Qt::AlignRight);
    value->setMinimumWidth(160);
    caption->setBuddy(value);
    grid->addWidget(caption, r, 2 * c);
    grid->addWidget(value, r, 2 * c + 1);
    values_.push_back(value);
  }
  layout->addLayout(grid);
  auto* buttons = new QHBoxLayout;
  ok_ = new QPushButton(QStringLiteral("OK"));
  ok_->setDefault(true);
  buttons->addStretch();
  buttons->addWidget(ok_);
  layout->addLayout(buttons);
  connect(ok_, &QPushButton::clicked, this, [this] { done(1); });
  // The values are only to be read: the focus starts on OK, so Enter closes.
  ok_->setFocus();
}

namespace {

// A cell of the grid: numbers stand to the right, so that their digits line up.
QTableWidgetItem* Cell(const std::string& text) {
  auto* item = new QTableWidgetItem(Q(text));
  bool number = false;
  item->text().toDouble(&number);
  item->setTextAlignment(number ? (Qt::AlignRight | Qt::AlignVCenter)
                                : (Qt::AlignLeft | Qt::AlignVCenter));
  return item;
}

}  // namespace

void QtClipboard::SetText(const std::string& text) {
  QGuiApplication::clipboard()->setText(Q(text));
}

ResultViewerView::ResultViewerView(ResultViewer& model, ClipboardPort& clipboard, QWidget* parent)
    : QDialog(parent), model_(model), clipboard_(clipboard) {
  setWindowTitle(ResultViewer::kTitle);
  resize(900, 480);
  auto* layout = new QVBoxLayout(this);
  tabs_ = new QTabWidget;
  for (const ResultViewer::Table& t : model_.Tables) {
    auto* grid =
        new QTableWidget(static_cast<int>(t.rows.size()), static_cast<int>(t.headers.size()));
    grid->setObjectName(QStringLiteral("gridTable"));
    grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    QStringList headers;
    for (const std::string& h : t.headers) headers << Q(h);
    grid->setHorizontalHeaderLabels(headers);
    for (size_t r = 0; r < t.rows.size(); ++r)
      for (size_t c = 0; c < t.rows[r].size(); ++c)
        grid->setItem(static_cast<int>(r), static_cast<int>(c), Cell(t.rows[r][c]));
    grid->resizeColumnsToContents();
    grids_.push_back(grid);
    tabs_->addTab(grid, Q(t.caption));
  }
  tabs_->setCurrentIndex(model_.Tab);
  connect(tabs_, &QTabWidget::currentChanged, this, [this](int i) { model_.Tab = i; });
  layout->addWidget(tabs_);
  auto* buttons = new QHBoxLayout;
  copy_ = new QPushButton(QStringLiteral("&Copy to Clipboard"));
  close_ = new QPushButton(QStringLiteral("Close"));
  close_->setDefault(true);
  buttons->addWidget(copy_);
  buttons->addStretch();
  buttons->addWidget(close_);
  layout->addLayout(buttons);
  connect(copy_, &QPushButton::clicked, this, [this] { model_.COPYCLIPBOARD_Click(clipboard_); });
  connect(close_, &QPushButton::clicked, this, [this] { done(1); });
}

}  // namespace tarno
