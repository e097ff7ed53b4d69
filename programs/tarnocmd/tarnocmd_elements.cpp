#include "tarnocmd_elements.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>

#include "core/console_ui.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "core/format.h"
#include "core/text.h"
#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "solver/model_settings.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/database.h"
#include "store/project_file.h"
#include "store/schema.h"
#include "tarnocmd_commands.h"

namespace tarno::cmd {

namespace fs = std::filesystem;

namespace {

constexpr int kRefused = 1;
constexpr int kUsageError = 2;


std::string KindWords() {
  std::string words;
  for (const KindInfo& k : ElementKinds())
    words += (words.empty() ? "" : ", ") + std::string(k.word);
  return words;
}

// The project at `path` opened for writing, or the reason why not on `err`.
std::optional<Database> OpenProject(const std::string& path, std::ostream& err) {
  if (!CheckProject(path, err)) return std::nullopt;
  try {
    return Database::Open(path);
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot open " << path << ": " << e.what() << "\n";
    return std::nullopt;
  }
}

// A number as a whole argument ("12", "-3.5", "1e3"); nothing for anything else.
std::optional<double> Coordinate(const std::string& text) {
  if (text.empty()) return std::nullopt;
  char* end = nullptr;
  const double v = std::strtod(text.c_str(), &end);
  if (end != text.c_str() + text.size() || !std::isfinite(v)) return std::nullopt;
  return v;
}


// Runs `body` on the open project under the general error trap; then removes the
// solution if the body changed the model. The exit status: 0 when the body
// succeeded, 1 otherwise.
int RunOnProject(const std::string& path, std::string_view operation, std::ostream& out,
                 std::ostream& err,
                 const std::function<bool(Database&, UserInterface&, const InvalidateFn&)>& body) {
  std::optional<Database> db = OpenProject(path, err);
  if (!db) return kRefused;
  ConsoleUserInterface ui(err, Answer::OK);
  bool changed = false;
  bool ok = false;
  const bool ran = RunOperation(ui, operation, [&] {
    ok = body(*db, ui, [&] { changed = true; });
    db->Close();
    if (ok && changed) RemoveSolution(path, ui, out);
  });
  return ran && ok ? 0 : kRefused;
}

// The fields `list` shows of each kind, after the position of a point.
const std::vector<std::string_view>& MainFields(ElementKind kind) {
  static const std::map<ElementKind, std::vector<std::string_view>> kFields = {
      {ElementKind::Well, {"HeadSpecified", "Head", "Radius", "Pond", "PPWell", "Transient"}},
      {ElementKind::Linesink,
       {"HeadSpecified", "StartingHead", "EndingHead", "Resistance", "Width", "Depth", "Drain",
        "Gallery", "Farfield", "Routing"}},
      {ElementKind::Barrier, {"Closed", "HydCond", "Thickness", "Porosity", "BottomElevation"}},
      {ElementKind::Inhomogeneity,
       {"ChangeK", "HydCond", "ChangeR", "Recharge", "ChangeP", "Porosity", "ChangeB",
        "BottomElevation"}},
      {ElementKind::Lake,
       {"InterriorConductivity", "AddedRechargeRate", "Evapotranspiration", "Resistance", "Width"}},
      {ElementKind::TestPoint, {"Type", "ObsHead", "ObsStreamFlow"}},
      {ElementKind::Particle, {"Forward", "SatdThick", "Elevation"}},
      {ElementKind::Domain, {"FarFieldBoundary", "NearFieldHU"}},
      {ElementKind::Text, {"X", "Y", "FontSize"}},
      {ElementKind::UniformFlow,
       {"UNIFLOWRefX", "UNIFLOWRefY", "UNIFLOWRefHead", "UNIFLOWGradient", "UNIFLOWOrientation"}},
  };
  static const std::vector<std::string_view> kNone;
  const auto it = kFields.find(kind);
  return it == kFields.end() ? kNone : it->second;
}

std::string ValueText(const Value& v) {
  if (const auto* s = std::get_if<std::string>(&v)) return *s;
  if (const auto* i = std::get_if<std::int64_t>(&v)) return std::to_string(*i);
  if (const auto* d = std::get_if<double>(&v)) return GeneralNumber(*d);
  return {};
}

// One line of `list`: kind, address, vertex count and the main fields, separated
// by tabs (a text label's address may hold blanks).
std::string ListLine(Database& db, const Element& e) {
  std::string line = std::string(Info(e.kind).word) + "\t" + AddressOf(db, e) + "\t" +
                     std::to_string(e.vertices.size()) + "\t";
  std::string fields;
  auto add = [&](const std::string& name, const std::string& value) {
    fields += (fields.empty() ? "" : " ") + name + "=" + value;
  };
  if (Info(e.kind).geometry == Geometry::Point) {
    add("X", GeneralNumber(e.X()));
    add("Y", GeneralNumber(e.Y()));
  }
  for (std::string_view f : MainFields(e.kind))
    add(e.row.CanonicalName(f), ValueText(e.row.Get(f)));
  return line + fields;
}

int Add(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() < 3) return BadUsage(err, "add needs a project, a kind and coordinates");
  const std::string& path = args[1];
  const auto kind = KindFromWord(args[2]);
  if (!kind)
    return BadUsage(err, "unknown element kind \"" + args[2] + "\" (one of " + KindWords() + ")");
  std::vector<MapPoint> points;
  std::vector<std::string> fieldTexts;
  std::vector<double> numbers;
  std::size_t i = 3;
  for (; i < args.size() && args[i] != "--set"; ++i) {
    const auto v = Coordinate(args[i]);
    if (!v && args[i].find('=') != std::string::npos)
      return BadUsage(err, "FIELD=VALUE texts follow --set (\"" + args[i] + "\")");
    if (!v) return BadUsage(err, "\"" + args[i] + "\" is not a coordinate");
    numbers.push_back(*v);
  }
  if (numbers.empty()) return BadUsage(err, "add needs the coordinates <x> <y> of the element");
  if (numbers.size() % 2 != 0)
    return BadUsage(err, "add needs coordinates in pairs <x> <y>; " +
                             std::to_string(numbers.size()) +
                             (numbers.size() == 1 ? " number was given" : " numbers were given"));
  for (std::size_t n = 0; n < numbers.size(); n += 2)
    points.emplace_back(numbers[n], numbers[n + 1]);
  for (; i < args.size(); ++i) {
    if (args[i] == "--set") {
      if (i + 1 >= args.size() || args[i + 1] == "--set")
        return BadUsage(err, "--set needs FIELD=VALUE");
      continue;
    }
    fieldTexts.push_back(args[i]);
  }
  return RunOnProject(path, "ElemAdd", out, err,
                      [&](Database& db, UserInterface& ui, const InvalidateFn& invalidate) {
                        const auto key = AddElement(db, *kind, points, fieldTexts, ui, invalidate);
                        if (!key) return false;
                        std::optional<Element> e = *kind == ElementKind::UniformFlow
                                                       ? LoadUniformFlow(db)
                                                       : Load(db, *kind, *key);
                        out << "Added " << Info(*kind).word << " "
                            << (e ? AddressOf(db, *e) : std::to_string(*key)) << "\n";
                        return true;
                      });
}

int Set(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() < 3) return BadUsage(err, "set needs a project, a label and FIELD=VALUE");
  if (args.size() < 4) return BadUsage(err, "set needs at least one FIELD=VALUE");
  const std::string& path = args[1];
  const std::string& address = args[2];
  const std::vector<std::string> fieldTexts(args.begin() + 3, args.end());
  return RunOnProject(path, "ElemSetProperties", out, err,
                      [&](Database& db, UserInterface& ui, const InvalidateFn& invalidate) {
                        const auto e = EditElement(db, address, fieldTexts, ui, invalidate);
                        if (!e) return false;
                        out << "Changed " << Info(e->kind).word << " " << AddressOf(db, *e) << "\n";
                        return true;
                      });
}

int Delete(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() != 3) return BadUsage(err, "delete takes a project and one label");
  const std::string& path = args[1];
  const std::string& address = args[2];
  return RunOnProject(path, "ElemDelete", out, err,
                      [&](Database& db, UserInterface& ui, const InvalidateFn& invalidate) {
                        // The address as list shows it, found before it goes.
                        const auto before = FindElement(db, address, ui);
                        if (!before) return false;
                        const std::string shown = AddressOf(db, *before);
                        if (!DeleteElement(db, address, ui, invalidate)) return false;
                        out << "Deleted " << Info(before->kind).word << " " << shown << "\n";
                        return true;
                      });
}

int List(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() < 2 || args.size() > 3) return BadUsage(err, "list takes a project and a kind");
  std::optional<ElementKind> only;
  if (args.size() == 3) {
    only = KindFromWord(args[2]);
    if (!only)
      return BadUsage(err, "unknown element kind \"" + args[2] + "\" (one of " + KindWords() + ")");
  }
  const ProjectFileProbe probe = ProbeProjectFile(args[1]);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(args[1], probe) << "\n";
    return kRefused;
  }
  try {
    Database db = Database::OpenReadOnly(args[1]);
    for (const KindInfo& k : ElementKinds()) {
      if (only && *only != k.kind) continue;
      std::vector<SkippedElement> skipped;
      for (const Element& e : LoadAll(db, k.kind, &skipped)) out << ListLine(db, e) << "\n";
      // Incomplete rows are told by label and left out, as the desktop program does.
      for (const SkippedElement& s : skipped)
        err << "tarnocmd: " << Info(s.kind).name << " '" << s.label << "' " << s.reason
            << "; left out\n";
    }
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read " << args[1] << ": " << e.what() << "\n";
    return kRefused;
  }
  return 0;
}

// ---- tarnocmd model -----------------------------------------------------------

// How a field of the Model row reaches the settings dialog's model.
enum class ModelFieldType {
  Number,
  Whole,
  Flag,
  Tag,
  ContourShow,
  ContourLevel,
  Interval,
  StreamLines
};

struct ModelField {
  std::string_view name;  // the Model row's field
  ModelFieldType type;
  std::string ModelSettings::*text = nullptr;  // a text field of the dialog
  bool ModelSettings::*flag = nullptr;         // a check box of the dialog
  int scenario = 0;                            // tbScenario index of a tag
};

const std::vector<ModelField>& ModelFields() {
  using T = ModelFieldType;
  using S = ModelSettings;
  static const std::vector<ModelField> kFields = {
      {"AQBase", T::Number, &S::tbBase},
      {"AQThickness", T::Number, &S::tbThickness},
      {"AQHydCond", T::Number, &S::tbHydCond},
      {"AQRecharge", T::Number, &S::tbRecharge},
      {"AQPorosity", T::Number, &S::tbPorosity},
      {"AddASaltWaterInterface", T::Flag, nullptr, &S::chkAddSaltwaterInterface},
      {"FreshWSpecGravity", T::Number, &S::tbFreshGravity},
      {"SaltWSpecGravity", T::Number, &S::tbSaltGravity},
      {"LocalSeaLevel", T::Number, &S::tbAvgSeaLevel},
      {"CONTOURShow", T::ContourShow},
      {"CONTOURMinimum", T::Number, &S::tbContourMin},
      {"CONTOURMaximum", T::Number, &S::tbContourMax},
      {"CONTOURInterval", T::Interval},
      {"NumberStreamLines", T::StreamLines},
      {"CONTOURLevel", T::ContourLevel},
      {"TRACECompute", T::Flag, nullptr, &S::chkComputePaths},
      {"TRACEMaxTime", T::Number, &S::tbMaxTime},
      {"TRACEStep", T::Number, &S::tbStepSize},
      {"SOLVERIterations", T::Whole, &S::tbIterations},
      {"OuterIterationsFlag", T::Flag, nullptr, &S::chkOutsideLoop},
      {"OuterIterations", T::Whole, &S::tbOuterIterations},
      {"FastSolution", T::Flag, nullptr, &S::chkFastSolution},
      {"ViewErrorLog", T::Flag, nullptr, &S::chkViewError},
      {"ViewMessageLog", T::Flag, nullptr, &S::chkViewMessage},
      {"StoreMatrixOnDisk", T::Flag, nullptr, &S::chkStoreMatrixOnDisk},
      {"SOLVERConjunctive", T::Flag, nullptr, &S::chkConjunctive},
      {"chkScenarioHydCond", T::Flag, nullptr, &S::chkScenarioHydCond},
      {"chkScenarioBaseElev", T::Flag, nullptr, &S::chkScenarioBaseElev},
      {"ScenHydCond", T::Tag, nullptr, nullptr, 1},
      {"ScenBaseElev", T::Tag, nullptr, nullptr, 2},
  };
  return kFields;
}

std::string ModelFieldList() {
  std::string list;
  for (const ModelField& f : ModelFields())
    list += (list.empty() ? "" : ", ") + std::string(f.name);
  return list;
}

// The value of a field as the dialog's model holds it, for printing.
std::string ModelFieldValue(const ModelSettings& s, const ModelField& f) {
  switch (f.type) {
    case ModelFieldType::Flag: return (s.*f.flag) ? "1" : "0";
    case ModelFieldType::Tag:
      return s.tbScenario[f.scenario].empty() ? "__NONE__" : s.tbScenario[f.scenario];
    case ModelFieldType::ContourShow: return std::to_string(s.ContourShowValue());
    case ModelFieldType::ContourLevel: return std::to_string(s.DetailedContours());
    case ModelFieldType::Interval:
    case ModelFieldType::StreamLines: {
      const bool stream = s.ContourProperty() == kContourStreamFunction;
      if (stream == (f.type == ModelFieldType::StreamLines)) return s.tbContourInt;
      return {};  // held by the dialog out of sight; the row keeps it
    }
    default: return s.*f.text;
  }
}

// A value of the Model row's type: the same reading of numbers and yes/no as the
// element fields take.
bool ReadsAs(std::string_view field, const std::string& value) {
  Row probe = Row::Defaults("Model", {field});
  return IsWholeValue("Model", field, value) && probe.SetFromText(field, value);
}

// Puts one FIELD=VALUE into the dialog's model; false (with the message shown)
// when refused.
bool SetModelField(ModelSettings& s, const std::string& text, UserInterface& ui) {
  using namespace ops_text;
  auto refuse = [&](const std::string& title, std::vector<std::string> lines) {
    ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
    return false;
  };
  const std::size_t eq = text.find('=');
  if (eq == std::string::npos || eq == 0)
    return refuse(kInvalidEntryTitle,
                  {"'" + text + "' is not of the form FIELD=VALUE.", "Please enter a new value."});
  const std::string name = text.substr(0, eq);
  const std::string value = text.substr(eq + 1);
  const ModelField* field = nullptr;
  for (const ModelField& f : ModelFields())
    if (EqualsIgnoreCase(f.name, name)) field = &f;
  if (field == nullptr)
    return refuse(kUnknownFieldTitle,
                  {"'" + text + "': the model settings have no field '" + name + "'.",
                   "The fields are: " + ModelFieldList() + "."});
  const std::string canonical(field->name);
  auto invalid = [&](const std::string& expected) {
    return refuse(kInvalidEntryTitle, {"'" + text + "': '" + value + "' is not a valid value for " +
                                           canonical + " (" + expected + ").",
                                       "Please enter a new value."});
  };
  const std::string trimmed = TrimST(value);
  const bool stream = s.ContourProperty() == kContourStreamFunction;
  switch (field->type) {
    case ModelFieldType::Number:
      if (!ReadsAs("AQBase", value)) return invalid("a number");
      s.*field->text = trimmed;
      return true;
    case ModelFieldType::Whole:
      if (!ReadsAs("SOLVERIterations", value) || !ReadsAs("AQBase", value))
        return invalid("a whole number");
      s.*field->text = trimmed;
      return true;
    case ModelFieldType::Flag: {
      if (!ReadsAs("FastSolution", value)) return invalid("yes, no, true, false or a number");
      Row probe = Row::Defaults("Model", {"FastSolution"});
      probe.SetFromText("FastSolution", value);
      s.*field->flag = probe.Flag("FastSolution");
      return true;
    }
    case ModelFieldType::Tag:
      s.tbScenario[field->scenario] =
          EqualsIgnoreCase(trimmed, "__NONE__") ? std::string() : trimmed;
      return true;
    case ModelFieldType::ContourShow: {
      const std::optional<double> v =
          ReadsAs("AQBase", value) ? std::optional(Val(value)) : std::nullopt;
      const int show = v ? static_cast<int>(*v) : 0;
      if (!v || show != *v || show == 0 || show < -6 || show > 6)
        return invalid("1 to 6 for the contours computed, -6 to -1 for none computed");
      s.chkContour = show > 0;
      s.SelectContourProperty(std::abs(show) - 1);
      return true;
    }
    case ModelFieldType::ContourLevel:
      if (!ReadsAs("AQBase", value)) return invalid("a whole number");
      s.tbContourLevel = trimmed;
      s.contourDetail = Val(trimmed) == 40   ? kContourCoarse
                        : Val(trimmed) == 80 ? kContourDetailed
                                             : kContourCustom;
      return true;
    case ModelFieldType::Interval:
      if (stream)
        return refuse(kInvalidEntryTitle,
                      {"'" + text + "': the contours show the stream function (CONTOURShow 5);",
                       "their number is set by NumberStreamLines."});
      if (!ReadsAs("AQBase", value)) return invalid("a number");
      s.tbContourInt = trimmed;
      return true;
    case ModelFieldType::StreamLines:
      if (!stream)
        return refuse(kInvalidEntryTitle,
                      {"'" + text + "': stream lines are counted only while the contours show",
                       "the stream function (CONTOURShow 5 or -5)."});
      if (!ReadsAs("AQBase", value)) return invalid("a whole number");
      s.tbContourInt = trimmed;
      return true;
  }
  return false;
}

int Model(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() < 2) return BadUsage(err, "model needs the path of a project");
  const std::string& path = args[1];
  std::vector<std::string> texts(args.begin() + 2, args.end());
  // The contour kind first: it decides which field the interval is.
  std::stable_partition(texts.begin(), texts.end(), [](const std::string& t) {
    return EqualsIgnoreCase(t.substr(0, t.find('=')), "CONTOURShow");
  });
  return RunOnProject(
      path, "ModelSettings", out, err,
      [&](Database& db, UserInterface& ui, const InvalidateFn& invalidate) {
        ModelSettings settings;
        settings.Load(db);
        for (const std::string& t : texts)
          if (!SetModelField(settings, t, ui)) return false;
        if (!texts.empty()) {
          const ModelSettings::OkResult r = settings.Ok(db, ui);
          if (!r.accepted) return false;
          if (r.invalidate) invalidate();
          settings.Load(db);
        }
        for (const ModelField& f : ModelFields()) {
          const std::string v = ModelFieldValue(settings, f);
          if (f.type == ModelFieldType::Interval || f.type == ModelFieldType::StreamLines)
            if (v.empty()) continue;
          out << f.name << "=" << v << "\n";
        }
        return true;
      });
}

}  // namespace

std::string ElementUsageText() {
  // The kinds, wrapped to the width of the other lines.
  std::string kinds;
  std::string line = "      <kind>:";
  std::size_t n = 0;
  for (const KindInfo& k : ElementKinds()) {
    std::string word(1, ' ');
    word.append(k.word);
    word.push_back(++n < ElementKinds().size() ? ',' : '.');
    if (line.size() + word.size() > 80) {
      kinds.append(line).push_back('\n');
      line = "     ";  // the word brings its blank
    }
    line.append(word);
  }
  kinds.append(line).push_back('\n');
  return "  tarnocmd add <path> <kind> <x> <y> [<x> <y> ...] [--set FIELD=VALUE ...]\n"
         "      Adds an element: one point for a point element (well, testpoint, particle,\n"
         "      text, uniflow), the vertices in order for a string or polygon.\n" +
         kinds +
         "      FIELD is a field of the element's table; the others take their defaults.\n"
         "  tarnocmd set <path> <label> FIELD=VALUE ...\n"
         "      Changes fields of an element. <label> may be written <kind>:<label>;\n"
         "      particles are particle:<number>, the uniform flow is uniflow.\n"
         "  tarnocmd delete <path> <label>\n"
         "      Deletes an element with its vertices.\n"
         "  tarnocmd list <path> [<kind>]\n"
         "      Lists the elements: kind, label, vertices and the main fields, tab-separated.\n"
         "  tarnocmd model <path> [FIELD=VALUE ...]\n"
         "      Changes the model settings as the Model Settings dialog does, and prints\n"
         "      them.\n"
         "      The element and model commands check as the dialogs do; a refused value\n"
         "      changes nothing. A change of the model removes a present solution.\n";
}

std::optional<int> RunElementCommand(const std::vector<std::string>& args, std::ostream& out,
                                     std::ostream& err) {
  if (args.empty()) return std::nullopt;
  const std::string& command = args[0];
  if (command == "add") return Add(args, out, err);
  if (command == "set") return Set(args, out, err);
  if (command == "delete") return Delete(args, out, err);
  if (command == "list") return List(args, out, err);
  if (command == "model") return Model(args, out, err);
  return std::nullopt;
}

}  // namespace tarno::cmd
