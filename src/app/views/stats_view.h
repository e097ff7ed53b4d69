// The view of the calibration statistics ("View Calibration Statistics"): three
// tabs (piezometers, gages, lake stages), each with its eight statistics, the
// choice of the chart's view and the chart, drawn with Qt Charts.
#pragma once

#include <QDialog>
#include <QImage>
#include <array>

#include "calibration/stats_model.h"
#include "core/ui_port.h"

class QAction;
class QLabel;
class QPushButton;
class QRadioButton;
class QTabWidget;
class QWidget;

class QChart;
class QChartView;

namespace tarno {

// Builds the chart of one tab of the model in its present view: the scatter of
// observed against modelled with the line of equality, or the cumulative plot of
// the differences. The caller owns the chart.
QChart* BuildStatisticsChart(const Calibration& model, int tab);

// Renders a tab's chart to a picture of the given size, without a window.
QImage RenderStatisticsChart(const Calibration& model, int tab, int width, int height);

class StatsView : public QDialog {
 public:
  StatsView(Calibration& model, UserInterface& ui, QWidget* parent = nullptr);

  QTabWidget* tabs() const { return tabs_; }
  QLabel* statistic(int tab, int index) const { return pages_[tab].values[index]; }
  QRadioButton* scatterOption(int tab) const { return pages_[tab].scatter; }
  QRadioButton* cumulativeOption(int tab) const { return pages_[tab].cumulative; }
  QChartView* chartView(int tab) const { return pages_[tab].chart; }
  QPushButton* exportButton(int tab) const { return pages_[tab].exportPng; }
  QAction* copyStatisticsAction() const { return copyStats_; }
  QAction* copyChartAction() const { return copyChart_; }

  // The export button of the present tab: asks for the file, writes the PNG. True
  // when a picture was written.
  bool ExportChart();
  // A click on the chart near (x, y) in the chart's values: the information of the
  // nearest point of the tab.
  void PointClicked(int tab, double x, double y);

 private:
  struct Page {
    QWidget* statsFrame = nullptr;
    QWidget* viewFrame = nullptr;
    QWidget* graphFrame = nullptr;
    std::array<QLabel*, 8> values{};
    QRadioButton* scatter = nullptr;
    QRadioButton* cumulative = nullptr;
    QChartView* chart = nullptr;
    QPushButton* exportPng = nullptr;
  };
  void BuildPage(int tab);
  void ShowChart(int tab);

  Calibration& model_;
  UserInterface& ui_;
  QTabWidget* tabs_ = nullptr;
  std::array<Page, kObservationKinds> pages_;
  QAction* copyStats_ = nullptr;
  QAction* copyChart_ = nullptr;
};

}  // namespace tarno
