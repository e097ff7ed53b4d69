#include "calibration/stats_model.h"

#include <cmath>
#include <filesystem>

#include "core/error_trap.h"
#include "core/format.h"
#include "core/rounding.h"
#include "store/database.h"

namespace tarno {

namespace {

constexpr const char* kStatMask = "###0.0";

std::string Stat(double value) { return FormatNumber(value, kStatMask); }

struct KindTexts {
  const char* type;
  const char* query;
  const char* observedTitle;
  const char* modelledTitle;
};

const KindTexts& TextsOf(ObservationKind kind) {
  static const KindTexts texts[kObservationKinds] = {
      {"Piezometer", "select * from TPResults where type = 'Piezometer' order by Difference;",
       "Observed Head", "Modeled Head"},
      {"Gage", "select * from TPResults where type = 'Gage' order by Difference;",
       "Observed Stream Flow", "Modeled Stream Flow"},
      {"Lake Stage", "select * from TPResults where type = 'Lake Stage' order by Difference;",
       "Observed Stage", "Modeled Stage"},
  };
  return texts[static_cast<int>(kind)];
}

}  // namespace

const char* ObservationTypeName(ObservationKind kind) { return TextsOf(kind).type; }

void ObservationSet::Add(double obs, double model, double diff, std::string label) {
  observed.push_back(obs);
  modelled.push_back(model);
  difference.push_back(diff);
  labels.push_back(std::move(label));
  if (obs > maximum) maximum = obs;
  if (model > maximum) maximum = model;
  if (obs < minimum) minimum = obs;
  if (model < minimum) minimum = model;
  sumOfSquares += (model - obs) * (model - obs);
}

ObservationSet LoadObservations(Database& db, ObservationKind kind) {
  ObservationSet set;
  set.kind = kind;
  const bool gage = kind == ObservationKind::Gage;
  Statement st = db.Prepare(TextsOf(kind).query);
  while (st.Step()) {
    const double obs = st.GetDouble(gage ? "ObsStreamFlow" : "ObsHead");
    const double model = st.GetDouble(gage ? "ModelFlow" : "ModelHead");
    set.Add(obs, model, st.GetDouble("Difference"), st.GetText("Label"));
  }
  return set;
}

double MedianDifference(const std::vector<double>& sorted) {
  const std::size_t n = sorted.size();
  if (n == 0) return 0.0;
  if (n % 2 == 0) return (sorted[n / 2] + sorted[n / 2 - 1]) * 0.5;
  const auto k = static_cast<std::size_t>(RoundHalfEven(static_cast<double>(n) / 2.0));
  return sorted[k < n ? k : n - 1];
}

std::optional<ResidualStatistics> ComputeStatistics(const ObservationSet& set) {
  const int n = set.Count();
  if (n < 2) return std::nullopt;
  double sum = 0.0, sumAbs = 0.0, sumSq = 0.0;
  for (double d : set.difference) {
    sum += d;
    sumAbs += std::fabs(d);
    sumSq += d * d;
  }
  ResidualStatistics s;
  s.maximum = set.difference[n - 1];
  s.minimum = set.difference[0];
  s.average = sum / n;
  s.median = MedianDifference(set.difference);
  s.meanAbsolute = sumAbs / n;
  s.rms = std::sqrt(sumSq / n);
  s.count = n;
  s.sumOfSquares = set.sumOfSquares;
  return s;
}

const std::array<const char*, 8>& StatisticCaptions() {
  static const std::array<const char*, 8> captions = {
      "Maximum Difference", "Minimum Difference",        "Average Difference",
      "Median Difference",  "Mean Absolute Difference",  "Root-Mean-Square Difference",
      "Observations",       "Sum of Squared Differences"};
  return captions;
}

std::array<std::string, 8> StatisticTexts(const ResidualStatistics& s) {
  return {Stat(s.maximum),      Stat(s.minimum), Stat(s.average),         Stat(s.median),
          Stat(s.meanAbsolute), Stat(s.rms),     std::to_string(s.count), Stat(s.sumOfSquares)};
}

ChartData ScatterData(const ObservationSet& set) {
  ChartData c;
  c.xTitle = TextsOf(set.kind).observedTitle;
  c.yTitle = TextsOf(set.kind).modelledTitle;
  const int n = set.Count();
  c.rows.assign(n, {0.0, 0.0, 0.0, 0.0});
  for (int i = 0; i < n; ++i) {
    c.rows[i][0] = set.observed[i];
    c.rows[i][1] = set.modelled[i];
  }
  if (n >= 2) {
    c.rows[0][2] = set.minimum;
    c.rows[0][3] = set.minimum;
    c.rows[1][2] = set.maximum;
    c.rows[1][3] = set.maximum;
  }
  return c;
}

ChartData CumulativeData(const ObservationSet& set) {
  ChartData c;
  c.xTitle = "Difference (Modeled - Observed)";
  c.yTitle = "Cumulative probability";
  const int n = set.Count();
  c.rows.assign(n, {0.0, 0.0, 0.0, 0.0});
  for (int i = 0; i < n; ++i) {
    c.rows[i][0] = set.difference[i];
    // A single row would divide by zero; such a tab is disabled and never drawn.
    c.rows[i][1] = n > 1 ? (set.maximum - set.minimum) * i / ((n - 1) * 4.0) : 0.0;
  }
  return c;
}

const char* ChartViewCaption(ChartView view) {
  return view == ChartView::Scatter ? "Scatter Plot" : "Cumulative Probability Plot";
}

void Calibration::init(Database& db) {
  for (int k = 0; k < kObservationKinds; ++k) {
    CalibrationTab& tab = tabs[k];
    tab = CalibrationTab{};
    tab.set = LoadObservations(db, static_cast<ObservationKind>(k));
    tab.stats = ComputeStatistics(tab.set);
    tab.enabled = tab.stats.has_value();
    if (tab.stats) tab.texts = StatisticTexts(*tab.stats);
  }
}

bool Calibration::SelectTab(int index, UserInterface& ui) {
  if (index < 0 || index >= kObservationKinds) return false;
  currentTab = index;
  if (tabs[index].enabled) return true;
  ui.MessageBox("Not Enough Points",
                {std::string("There are not enough points for ") +
                 ObservationTypeName(static_cast<ObservationKind>(index)) + " statistics."});
  return false;
}

ChartData Calibration::Chart(int index) const {
  const CalibrationTab& tab = tabs[index];
  return tab.view == ChartView::Scatter ? ScatterData(tab.set) : CumulativeData(tab.set);
}

void Calibration::ShowPointInformation(int index, int row, UserInterface& ui) const {
  const ObservationSet& set = tabs[index].set;
  if (row < 0 || row >= set.Count()) return;
  ui.MessageBox(
      "Test point information",
      {"Selected test point: " + set.labels[row], "Observed head:       " + Stat(set.observed[row]),
       "Modeled head:        " + Stat(set.modelled[row]),
       "Difference:          " + Stat(set.modelled[row] - set.observed[row])});
}

std::string Calibration::StatisticsText() const {
  const CalibrationTab& tab = tabs[currentTab];
  if (!tab.enabled) return {};
  const auto& t = tab.texts;
  const std::pair<const char*, const std::string*> lines[] = {
      {"Number of Observations: ", &t[6]},  {"Maximum Difference: ", &t[0]},
      {"Minimum Difference: ", &t[1]},      {"Average Difference (AD): ", &t[2]},
      {"Median Difference (MAD): ", &t[3]}, {"Mean Absolute Difference: ", &t[4]},
      {"RMS Difference: ", &t[5]},          {"Sum of Squared Differences: ", &t[7]},
  };
  std::string text;
  for (const auto& [caption, value] : lines) text += caption + *value + "\r\n";
  return text;
}

std::optional<std::string> Calibration::AskChartFile(UserInterface& ui) const {
  FileDialogRequest request;
  request.title = "Export Chart";
  request.defaultExtension = "png";
  request.filter = "PNG Image (*.png)|*.png";
  if (!projectFile.empty())
    request.initialDirectory = std::filesystem::path(projectFile).parent_path().string();
  request.initialFile =
      std::string(ObservationTypeName(static_cast<ObservationKind>(currentTab))) + ".png";
  auto path = ui.SaveFileDialog(request);
  if (!path || path->empty()) return std::nullopt;
  const auto slash = path->find_last_of("/\\");
  const auto dot = path->find_last_of('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) *path += ".png";
  return path;
}

void ShowCalibrationStatistics(UserInterface& ui, const std::string& projectFile) {
  Calibration dialog;
  dialog.projectFile = projectFile;
  RunOperation(ui, "Calibration.init", [&] {
    Database db = Database::OpenReadOnly(projectFile);
    dialog.init(db);
  });
  // The dialog opens after a failed load as well, with the tabs it could fill.
  ui.ShowModal(dialog);
}

}  // namespace tarno
