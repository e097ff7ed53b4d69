// The residual statistics of a solution: how well the modelled heads, flows and
// lake stages of the test points fit their observations.
//
// After a solve TPResults holds one row per test point. The `Calibration` dialog
// model has one tab for each kind of observation (piezometers, gages, lake
// stages); each tab shows eight numbers and a chart with two views: observed
// against modelled with the line of equality, and the cumulative plot of the
// differences. A tab with fewer than two observations is disabled.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

class Database;

enum class ObservationKind { Piezometer = 0, Gage = 1, LakeStage = 2 };
inline constexpr int kObservationKinds = 3;

// The value of TPResults.Type of a kind: "Piezometer", "Gage", "Lake Stage".
const char* ObservationTypeName(ObservationKind kind);

// The observations of one kind, sorted ascending by difference. `maximum` and
// `minimum` run over the observed and the modelled values together (they bound the
// line of equality and the cumulative plot); they stay at -1e30 and 1e30 without
// rows. `sumOfSquares` is the sum of (modelled - observed) squared over the rows.
struct ObservationSet {
  ObservationKind kind = ObservationKind::Piezometer;
  std::vector<double> observed;
  std::vector<double> modelled;
  std::vector<double> difference;
  std::vector<std::string> labels;
  double maximum = -1e30;
  double minimum = 1e30;
  double sumOfSquares = 0.0;

  int Count() const { return static_cast<int>(difference.size()); }
  // Appends one row (the caller keeps the order by difference).
  void Add(double obs, double model, double diff, std::string label);
};

// Reads the rows of one kind from TPResults, ordered by Difference. Gages take
// ObsStreamFlow and ModelFlow, the others ObsHead and ModelHead.
ObservationSet LoadObservations(Database& db, ObservationKind kind);

// The eight statistics of a tab, in the order they are shown.
struct ResidualStatistics {
  double maximum = 0.0;       // the largest difference
  double minimum = 0.0;       // the smallest difference
  double average = 0.0;       // sum of d / N
  double median = 0.0;        // MedianDifference
  double meanAbsolute = 0.0;  // sum of |d| / N
  double rms = 0.0;           // sqrt(sum of d squared / N)
  int count = 0;              // N
  double sumOfSquares = 0.0;  // sum of (modelled - observed) squared
};

// The median of differences sorted ascending. An even count averages the two middle
// values; an odd count N takes d(k) with k = N / 2 rounded half to even, which for
// N = 3, 7, 11, ... is the element one above the middle. Users have long been shown
// this number, so it stays. Zero for an empty list.
double MedianDifference(const std::vector<double>& sorted);

// The statistics of a set; nothing when it has fewer than two observations.
std::optional<ResidualStatistics> ComputeStatistics(const ObservationSet& set);

// The eight captions, and the eight values as the fields show them ("###0.0", the
// count as a plain number), in the same order.
const std::array<const char*, 8>& StatisticCaptions();
std::array<std::string, 8> StatisticTexts(const ResidualStatistics& stats);

// A chart's data. The scatter plot has one row per observation: columns 0 and 1
// observed and modelled, columns 2 and 3 the line of equality from (min, min) to
// (max, max) in the first two rows (zero elsewhere). The cumulative plot has
// column 0 the difference and column 1 (max - min) * i / ((N - 1) * 4).
struct ChartData {
  std::vector<std::array<double, 4>> rows;
  std::string xTitle;
  std::string yTitle;
};
ChartData ScatterData(const ObservationSet& set);
ChartData CumulativeData(const ObservationSet& set);

enum class ChartView { Scatter = 0, CumulativeProbability = 1 };
// "Scatter Plot", "Cumulative Probability Plot".
const char* ChartViewCaption(ChartView view);

// One tab of the dialog.
struct CalibrationTab {
  ObservationSet set;
  std::optional<ResidualStatistics> stats;
  std::array<std::string, 8> texts;  // empty while disabled
  bool enabled = false;
  ChartView view = ChartView::Scatter;
};

// The statistics dialog. init() reads all three tabs; the caller shows it.
class Calibration : public DialogModel {
 public:
  static constexpr const char* kName = "Calibration";
  std::string DialogName() const override { return kName; }

  // Loads the three tabs from TPResults. A kind with fewer than two rows leaves its
  // tab disabled. Throws on a failure of the store (the caller's error trap).
  void init(Database& db);

  // Enables or disables the statistics, graph and view frames of a tab.
  void PiezometerEnabled(bool enabled) { tabs[0].enabled = enabled; }
  void GageEnabled(bool enabled) { tabs[1].enabled = enabled; }
  void StageEnabled(bool enabled) { tabs[2].enabled = enabled; }

  CalibrationTab& Tab(ObservationKind kind) { return tabs[static_cast<int>(kind)]; }
  const CalibrationTab& Tab(ObservationKind kind) const { return tabs[static_cast<int>(kind)]; }

  // A click on a tab: it becomes the current one; a disabled tab gives the "Not
  // Enough Points" message of its kind. True when the tab is enabled.
  bool SelectTab(int index, UserInterface& ui);

  // The chart of a tab in its present view.
  ChartData Chart(int index) const;

  // The point selection of a chart: the message with the label, observed and
  // modelled value and their difference of row `row` of tab `index`.
  void ShowPointInformation(int index, int row, UserInterface& ui) const;

  // "Copy Statistics to Clipboard": the present tab's values, one line each,
  // separated by CR LF. Empty when the tab is disabled.
  std::string StatisticsText() const;

  // The export of the present chart as a PNG picture: asks for the file through the
  // port. Nothing when cancelled; the path, with ".png" added when it has no
  // extension, otherwise.
  // The dialog opens in the project's folder (projectFile's), where the user keeps
  // the model's other outputs.
  std::optional<std::string> AskChartFile(UserInterface& ui) const;

  // The project file the statistics were read from; empty when not known.
  std::string projectFile;

  std::array<CalibrationTab, kObservationKinds> tabs;
  int currentTab = 0;
};

// The menu entry CALIBRATION_STATS: opens the project, fills the dialog and shows
// it. Failures end in the general error message ("Calibration.init").
void ShowCalibrationStatistics(UserInterface& ui, const std::string& projectFile);

}  // namespace tarno
