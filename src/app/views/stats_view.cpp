#include "app/views/stats_view.h"

#include <QAction>
#include <QApplication>
#include <QButtonGroup>
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineSeries>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QScatterSeries>
#include <QTabWidget>
#include <QVBoxLayout>
#include <QValueAxis>
#include <cmath>
#include <limits>

#include "app/views/view_support.h"
#include "core/error_trap.h"

namespace tarno {

using views::Q;

namespace {

constexpr const char* kTabCaptions[kObservationKinds] = {"Piezometers", "Gages", "Lake Stages"};

// The axis range of a series of values with a little room on both sides.
void SetRange(QValueAxis* axis, double lo, double hi) {
  if (!(hi > lo)) {
    lo -= 1.0;
    hi += 1.0;
  }
  const double pad = (hi - lo) * 0.05;
  axis->setRange(lo - pad, hi + pad);
}

}  // namespace

QChart* BuildStatisticsChart(const Calibration& model, int tab) {
  auto* chart = new QChart;
  chart->legend()->setVisible(false);
  const ChartData data = model.Chart(tab);
  const bool scatter = model.tabs[tab].view == ChartView::Scatter;
  chart->setTitle(Q(ChartViewCaption(model.tabs[tab].view)));
  auto* points = new QScatterSeries;
  points->setMarkerSize(10.0);
  double xlo = std::numeric_limits<double>::max(), xhi = -xlo, ylo = xlo, yhi = -xlo;
  for (const auto& row : data.rows) {
    points->append(row[0], row[1]);
    xlo = std::min(xlo, row[0]);
    xhi = std::max(xhi, row[0]);
    ylo = std::min(ylo, row[1]);
    yhi = std::max(yhi, row[1]);
  }
  auto* line = new QLineSeries;
  if (scatter) {
    // The line of equality from (min, min) to (max, max), in the first two rows.
    if (data.rows.size() >= 2) {
      line->append(data.rows[0][2], data.rows[0][3]);
      line->append(data.rows[1][2], data.rows[1][3]);
      xlo = ylo = std::min(xlo, data.rows[0][2]);
      xhi = yhi = std::max(xhi, data.rows[1][2]);
    }
  } else {
    for (const auto& row : data.rows) line->append(row[0], row[1]);
  }
  chart->addSeries(line);
  chart->addSeries(points);
  auto* x = new QValueAxis;
  auto* y = new QValueAxis;
  x->setTitleText(Q(data.xTitle));
  y->setTitleText(Q(data.yTitle));
  if (!data.rows.empty()) {
    SetRange(x, xlo, xhi);
    SetRange(y, ylo, yhi);
  }
  chart->addAxis(x, Qt::AlignBottom);
  chart->addAxis(y, Qt::AlignLeft);
  for (QAbstractSeries* s : chart->series()) {
    s->attachAxis(x);
    s->attachAxis(y);
  }
  return chart;
}

QImage RenderStatisticsChart(const Calibration& model, int tab, int width, int height) {
  QChart* chart = BuildStatisticsChart(model, tab);
  QChartView view(chart);  // the view owns the chart
  view.setRenderHint(QPainter::Antialiasing);
  // The chart lays out its plot area only in a view that was shown; one that the
  // screen never sees is enough.
  view.setAttribute(Qt::WA_DontShowOnScreen);
  view.resize(width, height);
  view.show();
  QCoreApplication::processEvents();
  QImage image(width, height, QImage::Format_ARGB32);
  image.fill(Qt::white);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  view.render(&painter);
  return image;
}

StatsView::StatsView(Calibration& model, UserInterface& ui, QWidget* parent)
    : QDialog(parent), model_(model), ui_(ui) {
  setWindowTitle(QStringLiteral("Calibration Statistics"));
  auto* layout = new QVBoxLayout(this);
  auto* menu = new QMenuBar(this);
  QMenu* file = menu->addMenu(QStringLiteral("&File"));
  QAction* exit = file->addAction(QStringLiteral("E&xit"));
  exit->setObjectName(QStringLiteral("FILE_EXIT"));
  connect(exit, &QAction::triggered, this, [this] { done(2); });
  QMenu* edit = menu->addMenu(QStringLiteral("&Edit"));
  edit->setObjectName(QStringLiteral("EDITMENU"));
  copyStats_ = edit->addAction(QStringLiteral("Copy Statistics to Clipboard"));
  copyStats_->setObjectName(QStringLiteral("EDIT_COPYDATA"));
  copyChart_ = edit->addAction(QStringLiteral("Copy Chart to Clipboard"));
  copyChart_->setObjectName(QStringLiteral("EDIT_COPYCHART"));
  layout->setMenuBar(menu);
  connect(copyStats_, &QAction::triggered, this,
          [this] { QApplication::clipboard()->setText(Q(model_.StatisticsText())); });
  connect(copyChart_, &QAction::triggered, this, [this] {
    const int tab = model_.currentTab;
    if (!model_.tabs[tab].enabled) return;
    QApplication::clipboard()->setImage(pages_[tab].chart->grab().toImage());
  });

  tabs_ = new QTabWidget;
  for (int t = 0; t < kObservationKinds; ++t) BuildPage(t);
  layout->addWidget(tabs_);
  tabs_->setCurrentIndex(model_.currentTab);
  connect(tabs_, &QTabWidget::currentChanged, this, [this](int index) {
    RunOperation(ui_, "Calibration.SSTab1_Click", [&] { model_.SelectTab(index, ui_); });
  });
  resize(760, 520);
}

void StatsView::BuildPage(int t) {
  Page& p = pages_[t];
  const CalibrationTab& tab = model_.tabs[t];
  auto* page = new QWidget;
  auto* row = new QHBoxLayout(page);
  auto* left = new QVBoxLayout;

  auto* stats = new QGroupBox(QStringLiteral("Statistics"));
  auto* grid = new QGridLayout(stats);
  for (int i = 0; i < 8; ++i) {
    grid->addWidget(new QLabel(QString::fromUtf8(StatisticCaptions()[i])), i, 0);
    p.values[i] = new QLabel(Q(tab.texts[i]));
    p.values[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    p.values[i]->setMinimumWidth(70);
    p.values[i]->setTextInteractionFlags(Qt::TextSelectableByMouse);
    grid->addWidget(p.values[i], i, 1);
  }
  p.statsFrame = stats;
  left->addWidget(stats);

  auto* view = new QGroupBox(QStringLiteral("View"));
  auto* viewLayout = new QVBoxLayout(view);
  p.scatter = new QRadioButton(Q(ChartViewCaption(ChartView::Scatter)));
  p.cumulative = new QRadioButton(Q(ChartViewCaption(ChartView::CumulativeProbability)));
  (tab.view == ChartView::Scatter ? p.scatter : p.cumulative)->setChecked(true);
  auto* group = new QButtonGroup(view);
  group->addButton(p.scatter, 0);
  group->addButton(p.cumulative, 1);
  viewLayout->addWidget(p.scatter);
  viewLayout->addWidget(p.cumulative);
  p.exportPng = new QPushButton(QStringLiteral("Export PNG..."));
  viewLayout->addWidget(p.exportPng);
  p.viewFrame = view;
  left->addWidget(view);
  left->addStretch();
  row->addLayout(left);

  auto* graph = new QGroupBox(QStringLiteral("Graph"));
  auto* graphLayout = new QVBoxLayout(graph);
  p.chart = new QChartView;
  p.chart->setRenderHint(QPainter::Antialiasing);
  p.chart->setMinimumSize(420, 360);
  graphLayout->addWidget(p.chart);
  p.graphFrame = graph;
  row->addWidget(graph, 1);

  connect(group, &QButtonGroup::idClicked, this, [this, t](int id) {
    model_.tabs[t].view = id == 0 ? ChartView::Scatter : ChartView::CumulativeProbability;
    ShowChart(t);
  });
  connect(p.exportPng, &QPushButton::clicked, this, [this] { ExportChart(); });

  // A tab with fewer than two observations shows its frames disabled.
  stats->setEnabled(tab.enabled);
  view->setEnabled(tab.enabled);
  graph->setEnabled(tab.enabled);
  if (tab.enabled) ShowChart(t);
  tabs_->addTab(page, QString::fromUtf8(kTabCaptions[t]));
}

void StatsView::ShowChart(int t) {
  QChart* chart = BuildStatisticsChart(model_, t);
  for (QAbstractSeries* s : chart->series()) {
    if (auto* scatter = qobject_cast<QScatterSeries*>(s)) {
      connect(scatter, &QScatterSeries::clicked, this,
              [this, t](const QPointF& point) { PointClicked(t, point.x(), point.y()); });
    }
  }
  QChart* old = pages_[t].chart->chart();
  pages_[t].chart->setChart(chart);
  delete old;
}

void StatsView::PointClicked(int t, double x, double y) {
  const ChartData data = model_.Chart(t);
  int best = -1;
  double bestDistance = std::numeric_limits<double>::max();
  for (std::size_t i = 0; i < data.rows.size(); ++i) {
    const double d = std::hypot(data.rows[i][0] - x, data.rows[i][1] - y);
    if (d < bestDistance) {
      bestDistance = d;
      best = static_cast<int>(i);
    }
  }
  if (best < 0) return;
  RunOperation(ui_, "Calibration.Chart_PointSelected",
               [&] { model_.ShowPointInformation(t, best, ui_); });
}

bool StatsView::ExportChart() {
  const int t = model_.currentTab;
  if (!model_.tabs[t].enabled) return false;
  bool written = false;
  RunOperation(ui_, "Calibration.ExportChart", [&] {
    const auto path = model_.AskChartFile(ui_);
    if (!path) return;
    const QSize size = pages_[t].chart->size().expandedTo(QSize(640, 480));
    const QImage image = RenderStatisticsChart(model_, t, size.width(), size.height());
    if (!image.save(Q(*path), "PNG")) {
      ui_.MessageBox("Export Chart", {"The picture could not be written to " + *path + "."},
                     Buttons::OK, Icon::Exclamation);
      return;
    }
    written = true;
  });
  return written;
}

}  // namespace tarno
