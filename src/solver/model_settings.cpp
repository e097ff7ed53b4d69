#include "solver/model_settings.h"

#include <cmath>
#include <string_view>
#include <vector>

#include "core/error.h"
#include "core/coords.h"
#include "core/format.h"
#include "core/text.h"
#include "core/rounding.h"
#include "store/database.h"
#include "store/undo_history.h"

namespace tarno {

double ComputeDefaultStep(double x1, double y1, double x2, double y2) {
  return 0.004 * std::sqrt((x2 - x1) * (x2 - x1) + (y2 - y1) * (y2 - y1));
}

namespace {

const std::vector<std::string> kTagMessage = {
    "Scenario tags may not include spaces or the characters - , or _.",
    "Scenario tags may also not be '__NONE__'."};

bool BadTag(const std::string& tag) {
  if (tag == "__NONE__") return true;
  return tag.find_first_of(" -,_") != std::string::npos;
}

constexpr const char* kNoTag = "__NONE__";

std::string ShownTag(const std::string& stored) { return stored == kNoTag ? std::string() : stored; }
std::string StoredTag(const std::string& shown) { return shown.empty() ? std::string(kNoTag) : shown; }

std::string Text(Statement& st, std::string_view column) {
  return GeneralNumber(st.GetDouble(column));
}

}  // namespace

void ModelSettings::Load(Database& db) {
  Statement st = db.Prepare("select * from Model");
  if (!st.Step()) throw Error("The Model table has no row");

  basemapMeters = st.GetBool("BasemapMeters");
  computeMeters = st.GetBool("ComputeMeters");
  BasemapConvert = BasemapConvertFactor(basemapMeters, computeMeters);

  tbBase = Text(st, "AQBase");
  tbThickness = st.GetText("AQThickness");
  tbHydCond = Text(st, "AQHydCond");
  tbRecharge = Text(st, "AQRecharge");
  tbPorosity = Text(st, "AQPorosity");

  chkAddSaltwaterInterface = st.GetInt64("AddASaltWaterInterface") != 0;
  tbFreshGravity = Text(st, "FreshWSpecGravity");
  tbSaltGravity = Text(st, "SaltWSpecGravity");
  tbAvgSeaLevel = Text(st, "LocalSeaLevel");

  // The option is found by testing -6 and 6, then -5 and 5, and so on down; a
  // value that matches none leaves the first option (heads) selected.
  const std::int64_t show = st.GetInt64("CONTOURShow");
  contourProperty_ = kContourHeads;
  chkContour = show > 0;
  for (int v = 6; v >= 1; --v) {
    if (show == -v || show == v) {
      contourProperty_ = v - 1;
      break;
    }
  }
  tbContourMin = Text(st, "CONTOURMinimum");
  tbContourMax = Text(st, "CONTOURMaximum");
  hiddenInterval_ = Text(st, "CONTOURInterval");
  hiddenStreamLines_ = std::to_string(st.GetInt64("NumberStreamLines"));
  tbContourInt = contourProperty_ == kContourStreamFunction ? hiddenStreamLines_ : hiddenInterval_;
  const std::int64_t level = st.GetInt64("CONTOURLevel");
  tbContourLevel = std::to_string(level);
  contourDetail = level == 40 ? kContourCoarse : level == 80 ? kContourDetailed : kContourCustom;

  chkComputePaths = st.GetInt64("TRACECompute") != 0;
  tbMaxTime = Text(st, "TRACEMaxTime");
  tbStepSize = Text(st, "TRACEStep");

  tbIterations = std::to_string(st.GetInt64("SOLVERIterations"));
  chkOutsideLoop = st.GetBool("OuterIterationsFlag");
  tbOuterIterations = std::to_string(st.GetInt64("OuterIterations"));
  chkFastSolution = st.GetBool("FastSolution");
  chkViewError = st.GetInt64("ViewErrorLog") != 0;
  chkViewMessage = st.GetInt64("ViewMessageLog") != 0;
  chkStoreMatrixOnDisk = st.GetInt64("StoreMatrixOnDisk") != 0;
  chkConjunctive = st.GetInt64("SOLVERConjunctive") != 0;

  chkScenarioHydCond = st.GetBool("chkScenarioHydCond");
  chkScenarioBaseElev = st.GetBool("chkScenarioBaseElev");
  // A tag stored as "__NONE__" (no tag) shows as an empty field.
  tbScenario[1] = ShownTag(st.GetText("ScenHydCond"));
  tbScenario[2] = ShownTag(st.GetText("ScenBaseElev"));

  gridSnapshot_ = GridSnapshot();
  traceSnapshot_ = TraceSnapshot();
  solutionSnapshot_ = SolutionSnapshot();
}

void ModelSettings::SelectContourProperty(int index) {
  if (index < kContourHeads || index > kContourDrawdowns) return;
  const bool wasStream = contourProperty_ == kContourStreamFunction;
  const bool isStream = index == kContourStreamFunction;
  if (wasStream != isStream) {
    if (isStream) {
      hiddenInterval_ = tbContourInt;
      tbContourInt = hiddenStreamLines_;
    } else {
      hiddenStreamLines_ = tbContourInt;
      tbContourInt = hiddenInterval_;
    }
  }
  contourProperty_ = index;
}

std::string ModelSettings::ContourIntervalCaption() const {
  return contourProperty_ == kContourStreamFunction ? "Number of Stream Lines" : "Contour Interval";
}

int ModelSettings::ContourShowValue() const {
  const int v = contourProperty_ + 1;
  return chkContour ? v : -v;
}

int ModelSettings::DetailedContours() const {
  switch (contourDetail) {
    case kContourCoarse:
      return 40;
    case kContourDetailed:
      return 80;
    default:
      return CInt(Val(tbContourLevel));
  }
}

std::string ModelSettings::DefaultStepText() const {
  const double v = DefaultStepSize;
  if (!std::isfinite(v) || v <= 0) return GeneralNumber(v);
  const double scale = std::pow(10.0, std::floor(std::log10(v)) - 2);
  return GeneralNumber(std::round(v / scale) * scale);
}

int ModelSettings::Iterations() const { return CLng(Val(tbIterations)); }

ModelSettings::Field ModelSettings::Validate(UserInterface& ui) const {
  auto fail = [&](Field f, std::vector<std::string> lines) {
    ui.MessageBox("Bad Entry", lines, Buttons::OK, Icon::Exclamation);
    return f;
  };
  const double thickness = Val(tbThickness);
  if (!(thickness > 0))
    return fail(Field::Thickness, {"Thickness must be greater than 0.", "Please enter a new value."});
  if (!(Val(tbHydCond) > 0))
    return fail(Field::HydCond, {"Hydraulic Conductivity must be greater than 0.",
                                 "Please enter a positive value."});
  const double porosity = Val(tbPorosity);
  if (!(porosity > 0 && porosity <= 1))
    return fail(Field::Porosity, {"Porosity must be greater than 0 and less than or equal to 1.",
                                  "Please enter a new value."});
  if (!(Val(tbFreshGravity) > 0))
    return fail(Field::FreshGravity, {"Fresh Water Specific Gravity must be greater than 0.",
                                      "Please enter a new value."});
  if (!(Val(tbSaltGravity) > 0))
    return fail(Field::SaltGravity, {"Salt Water Specific Gravity must be greater than 0.",
                                     "Please enter a new value."});
  if (!(Val(tbContourMax) > Val(tbContourMin)))
    return fail(Field::ContourMax, {"Maximum Contour must be greater than Minimum Contour.",
                                    "Please enter a new Maximum Contour."});
  const double interval = Val(tbContourInt);
  if (contourProperty_ == kContourStreamFunction) {
    if (!(interval > 1))
      return fail(Field::ContourInt,
                  {"Invalid Number of Stream Lines.", "Please enter a number greater than 1."});
  } else if (!(interval > 0)) {
    return fail(Field::ContourInt, {"Contour Interval must be greater than zero.",
                                    "Please enter a new Contour Interval."});
  } else if (!((Val(tbContourMax) - Val(tbContourMin)) / interval + 1 <= kContourMaxLevels)) {
    // The contour program refuses more levels than this as a mistake in its
    // arguments; the settings say so before a solve gets that far.
    return fail(Field::ContourInt,
                {"From " + GeneralNumber(Val(tbContourMin)) + " to " + GeneralNumber(Val(tbContourMax)) + " by " +
                     GeneralNumber(interval) + " are more than " +
                     std::to_string(kContourMaxLevels) + " contour levels.",
                 "Please enter a larger Contour Interval."});
  }
  if (contourDetail == kContourCustom) {
    const double level = Val(tbContourLevel);
    if (!(level >= 0 && level <= 200))
      return fail(Field::ContourLevel,
                  {"Invalid Contour Level.", "Please enter a Contour Level between 0 and 200."});
  }
  if (chkContourElevation) {
    const double base = Val(tbBase);
    const double z = Val(tbContourElevation);
    if (!(z >= base && z <= base + thickness))
      return fail(Field::ContourElevation,
                  {"Contour Elevation must be between the.", "aquifer base and the aquifer top."});
  }
  if (!(Val(tbMaxTime) > 0))
    return fail(Field::MaxTime, {"Maximum Travel Time must be positive.",
                                 "Please enter a new Maximum Travel Time."});
  if (!(Val(tbStepSize) > 0))
    return fail(Field::StepSize, {"Tracing Step Size must be positive.",
                                  "Please enter a new Tracing Step Size."});
  if (!(Val(tbIterations) > 0))
    return fail(Field::Iterations, {"Number of Iterations must be positive.",
                                    "Please enter a new value for the Number of Iterations."});
  // The outer loop's count matters only while the outer loop is switched on; a new
  // project stores 0 there.
  if (chkOutsideLoop && !(Val(tbOuterIterations) > 0))
    return fail(Field::OuterIterations,
                {"Number of Iterations (Outside Loop) must be positive.",
                 "Please enter a new value for the Number of Iterations for the Outside Loop."});
  // A tag is checked only when its box takes part in scenarios; an empty tag is
  // no tag and is stored as "__NONE__".
  if (chkScenarioHydCond && !tbScenario[1].empty() && BadTag(tbScenario[1]))
    return fail(Field::ScenarioHydCond, kTagMessage);
  if (chkScenarioBaseElev && !tbScenario[2].empty() && BadTag(tbScenario[2]))
    return fail(Field::ScenarioBaseElev, kTagMessage);
  return Field::None;
}

std::string ModelSettings::GridSnapshot() const {
  return tbContourMin + "|" + tbContourMax + "|" + tbContourInt + "|" +
         std::to_string(DetailedContours()) + "|" + std::to_string(ContourShowValue()) + "|" +
         (chkContourElevation ? tbContourElevation : std::string("-"));
}

std::string ModelSettings::TraceSnapshot() const {
  return std::string(chkComputePaths ? "1" : "0") + "|" + tbMaxTime + "|" + tbStepSize;
}

std::string ModelSettings::SolutionSnapshot() const {
  // The values as they are written, so that "75" and "75.0" are the same value.
  std::string snapshot;
  for (const std::string* field : {&tbBase, &tbThickness, &tbHydCond, &tbRecharge, &tbPorosity,
                                   &tbFreshGravity, &tbSaltGravity, &tbAvgSeaLevel})
    snapshot += GeneralNumber(Val(*field)) + "|";
  snapshot += std::string(chkAddSaltwaterInterface ? "1" : "0") + "|";
  snapshot += std::to_string(CInt(Val(tbIterations))) + "|";
  snapshot += std::string(chkOutsideLoop ? "1" : "0") + "|";
  snapshot += std::to_string(CLng(Val(tbOuterIterations))) + "|";
  snapshot += std::string(chkFastSolution ? "1" : "0") + "|";
  snapshot += std::string(chkConjunctive ? "1" : "0");
  return snapshot;
}

ModelSettings::OkResult ModelSettings::Ok(Database& db, UserInterface& ui) {
  OkResult result;
  result.failedField = Validate(ui);
  if (result.failedField != Field::None) return result;

  // One entry of the edit history of the project, when it has one.
  UndoScope undo(db, "Model Settings");
  const bool stream = contourProperty_ == kContourStreamFunction;
  std::string sql =
      "update Model set AQBase=?, AQThickness=?, AQHydCond=?, AQRecharge=?, AQPorosity=?, "
      "AddASaltWaterInterface=?, FreshWSpecGravity=?, SaltWSpecGravity=?, LocalSeaLevel=?, "
      "CONTOURShow=?, CONTOURMinimum=?, CONTOURMaximum=?, ";
  sql += stream ? "NumberStreamLines=?, " : "CONTOURInterval=?, ";
  sql +=
      "CONTOURLevel=?, TRACECompute=?, TRACEMaxTime=?, TRACEStep=?, SOLVERIterations=?, "
      "OuterIterationsFlag=?, OuterIterations=?, FastSolution=?, ViewErrorLog=?, "
      "ViewMessageLog=?, StoreMatrixOnDisk=?, SOLVERConjunctive=?, chkScenarioHydCond=?, "
      "chkScenarioBaseElev=?, ScenHydCond=?, ScenBaseElev=?";
  Statement st = db.PrepareRaw(sql);
  int i = 1;
  st.Bind(i++, Val(tbBase));
  st.Bind(i++, tbThickness);  // the one aquifer value held as text
  st.Bind(i++, Val(tbHydCond));
  st.Bind(i++, Val(tbRecharge));
  st.Bind(i++, Val(tbPorosity));
  st.Bind(i++, static_cast<std::int64_t>(chkAddSaltwaterInterface ? 1 : 0));
  st.Bind(i++, Val(tbFreshGravity));
  st.Bind(i++, Val(tbSaltGravity));
  st.Bind(i++, Val(tbAvgSeaLevel));
  st.Bind(i++, static_cast<std::int64_t>(ContourShowValue()));
  st.Bind(i++, Val(tbContourMin));
  st.Bind(i++, Val(tbContourMax));
  if (stream)
    st.Bind(i++, static_cast<std::int64_t>(CInt(Val(tbContourInt))));
  else
    st.Bind(i++, Val(tbContourInt));
  st.Bind(i++, static_cast<std::int64_t>(DetailedContours()));
  st.Bind(i++, static_cast<std::int64_t>(chkComputePaths ? 1 : 0));
  st.Bind(i++, Val(tbMaxTime));
  st.Bind(i++, Val(tbStepSize));
  st.Bind(i++, static_cast<std::int64_t>(CInt(Val(tbIterations))));
  st.Bind(i++, chkOutsideLoop);
  st.Bind(i++, static_cast<std::int64_t>(CLng(Val(tbOuterIterations))));
  st.Bind(i++, chkFastSolution);
  st.Bind(i++, static_cast<std::int64_t>(chkViewError ? 1 : 0));
  st.Bind(i++, static_cast<std::int64_t>(chkViewMessage ? 1 : 0));
  st.Bind(i++, static_cast<std::int64_t>(chkStoreMatrixOnDisk ? 1 : 0));
  st.Bind(i++, static_cast<std::int64_t>(chkConjunctive ? 1 : 0));
  st.Bind(i++, chkScenarioHydCond);
  st.Bind(i++, chkScenarioBaseElev);
  // An empty field is no tag: "__NONE__" in the store.
  st.Bind(i++, StoredTag(tbScenario[1]));
  st.Bind(i++, StoredTag(tbScenario[2]));
  st.Run();
  undo.Commit();

  const std::string grid = GridSnapshot();
  const std::string trace = TraceSnapshot();
  result.regrid = grid != gridSnapshot_;
  result.retrace = trace != traceSnapshot_;
  const std::string solution = SolutionSnapshot();
  result.invalidate = solution != solutionSnapshot_;
  gridSnapshot_ = grid;
  traceSnapshot_ = trace;
  solutionSnapshot_ = solution;
  result.accepted = true;
  return result;
}

}  // namespace tarno
