#include "elements/element_ops.h"

#include <cctype>
#include <cstdlib>

#include "core/error.h"
#include "core/format.h"
#include "core/text.h"
#include "elements/barrier_dialog.h"
#include "elements/element_dialog.h"
#include "elements/element_store.h"
#include "elements/flux_inspect_dialog.h"
#include "elements/inhomogeneity_dialog.h"
#include "elements/lake_dialog.h"
#include "elements/linesink_dialog.h"
#include "elements/test_point_dialog.h"
#include "elements/text_label_dialog.h"
#include "elements/uniform_flow_dialog.h"
#include "elements/well_dialog.h"
#include "store/schema.h"
#include "store/undo_history.h"

namespace tarno {

namespace {

// The name of an operation in the edit history and the Edit menu: "Delete Well".
std::string OperationName(std::string_view verb, ElementKind kind) {
  return std::string(verb) + " " + std::string(Info(kind).name);
}

using namespace ops_text;

std::string Quoted(std::string_view s) {
  std::string q;
  q.reserve(s.size() + 2);
  q.push_back('\'');
  q.append(s);
  q.push_back('\'');
  return q;
}

// "A well", "An inhomogeneity", "A uniform flow": the kind's name opening a sentence.
std::string WithArticle(ElementKind kind) {
  std::string name(Info(kind).name);
  for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  const bool vowel =
      !name.empty() && std::string_view("aeio").find(name[0]) != std::string_view::npos;
  return (vowel ? "An " : "A ") + name;
}

// The fields of the uniform flow by the names of its dialog.
std::string_view UniformFlowAlias(std::string_view field) {
  if (EqualsIgnoreCase(field, "Head")) return "UNIFLOWRefHead";
  if (EqualsIgnoreCase(field, "Gradient")) return "UNIFLOWGradient";
  if (EqualsIgnoreCase(field, "Orientation")) return "UNIFLOWOrientation";
  return field;
}

bool IsReadOnlyField(const Element& e, std::string_view field) {
  const KindInfo& info = Info(e.kind);
  if (!info.key.empty() && EqualsIgnoreCase(field, info.key)) return true;
  return e.kind == ElementKind::UniformFlow && EqualsIgnoreCase(field, "UNIFLOWCompute");
}

std::string FieldList(const Element& e) {
  std::string list;
  for (const auto& [name, value] : e.row.Fields()) {
    if (IsReadOnlyField(e, name)) continue;
    if (!list.empty()) list += ", ";
    list += name;
  }
  return list;
}

// What a value of the field must look like, for the message that refuses one.
std::string ExpectedValue(ElementKind kind, std::string_view field) {
  const TableDef* table =
      FindTable(kind == ElementKind::UniformFlow ? std::string_view("Model") : Info(kind).table);
  const FieldDef* f = table ? FindField(*table, field) : nullptr;
  if (f != nullptr && f->type == FieldType::Boolean) return "yes, no, true, false or a number";
  if (f != nullptr && f->type == FieldType::Double) return "a number";
  return "a whole number, yes or no";
}

// The dialogs that tell a duplicate label by comparing it with the label they were
// filled with (the element's own): for them the label is typed into the filled
// dialog, as a user types it, so that a label given with the element is checked.
// The others compare the key of the element found with the label.
bool ComparesOldLabel(ElementKind kind) {
  return kind == ElementKind::Well || kind == ElementKind::Linesink ||
         kind == ElementKind::Barrier || kind == ElementKind::Inhomogeneity;
}

void TypeLabel(ElementDialog& dialog, ElementKind kind, const std::string& label) {
  switch (kind) {
    case ElementKind::Well: dynamic_cast<WellProperties&>(dialog).TypeLabel(label); break;
    case ElementKind::Linesink: dynamic_cast<LinesinkString&>(dialog).TypeLabel(label); break;
    case ElementKind::Barrier: dynamic_cast<NoFlowString&>(dialog).Label = label; break;
    case ElementKind::Inhomogeneity: dynamic_cast<Inhomogeneity&>(dialog).Label = label; break;
    default: break;
  }
}

// The number of points against the kind's geometry.
bool CheckPointCount(const Element& e, std::size_t count, UserInterface& ui) {
  const KindInfo& info = Info(e.kind);
  const bool single = info.geometry == Geometry::Point || info.geometry == Geometry::Row ||
                      info.geometry == Geometry::Model;
  const std::string given = std::to_string(count) + (count == 1 ? " was given." : " were given.");
  if (single) {
    if (count == 1) return true;
    ui.MessageBox(kVerticesTitle, {WithArticle(e.kind) + " is placed at one point (x y); " + given},
                  Buttons::OK, Icon::Exclamation);
    return false;
  }
  std::size_t least = static_cast<std::size_t>(info.minVertices);
  std::string what = WithArticle(e.kind);
  // A closed barrier bounds a region: three vertices at least.
  if (e.kind == ElementKind::Barrier && e.row.Integer("Closed") != 0) {
    least = 3;
    what = "A closed barrier";
  }
  if (count >= least) return true;
  ui.MessageBox(kVerticesTitle,
                {what + " needs at least " + std::to_string(least) + " vertices; " + given},
                Buttons::OK, Icon::Exclamation);
  return false;
}

// Writes `e` as a new element (or the uniform flow's settings).
std::int64_t Write(Database& db, Element& e) {
  if (e.kind == ElementKind::UniformFlow) {
    StoreUniformFlow(db, e);
    return 0;
  }
  return Insert(db, e);
}

// The vertices and the row without the label: what the solver sees of `e`.
bool SameExceptLabel(const Element& a, const Element& b) {
  if (a.vertices.size() != b.vertices.size()) return false;
  for (std::size_t i = 0; i < a.vertices.size(); ++i)
    if (a.vertices[i].X != b.vertices[i].X || a.vertices[i].Y != b.vertices[i].Y) return false;
  if (a.row.Fields().size() != b.row.Fields().size()) return false;
  for (std::size_t i = 0; i < a.row.Fields().size(); ++i) {
    const auto& [name, value] = a.row.Fields()[i];
    if (EqualsIgnoreCase(name, "Label")) continue;
    if (!(value == b.row.Fields()[i].second)) return false;
  }
  return true;
}

// Runs the kind's dialog over `e` as its OK would: filled, checked, written back
// into `e`. `ownLabel` is the label the element had before (empty for a new one).
// False after a refusal.
bool RunChecks(Database& db, Element& e, const std::string& ownLabel, UserInterface& ui) {
  std::unique_ptr<ElementDialog> dialog = MakeElementDialog(e.kind);
  if (!dialog) throw Error(std::string(Info(e.kind).name) + " has no dialog to check it");
  if (ComparesOldLabel(e.kind)) {
    Element filled = e;
    filled.row.Set("Label", ownLabel);
    dialog->LoadElement(db, filled);
    TypeLabel(*dialog, e.kind, e.Label());
  } else {
    dialog->LoadElement(db, e);
  }
  if (!dialog->OK(db, ui)) return false;
  dialog->StoreElement(e);
  return true;
}

// The names of the fields that "FIELD=VALUE" texts give (without regard to case).
bool Given(const std::vector<std::string>& fieldTexts, std::string_view field) {
  for (const std::string& t : fieldTexts)
    if (EqualsIgnoreCase(std::string_view(t).substr(0, t.find('=')), field)) return true;
  return false;
}

}  // namespace

bool IsWholeValue(std::string_view table, std::string_view field, std::string_view value) {
  const TableDef* t = FindTable(table);
  const FieldDef* f = t ? FindField(*t, field) : nullptr;
  if (f == nullptr || f->type == FieldType::Text || f->type == FieldType::Date) return true;
  const std::string text = TrimST(value);
  if (f->type != FieldType::Double) {
    for (std::string_view word : {"yes", "no", "true", "false"})
      if (EqualsIgnoreCase(text, word)) return true;
  }
  // Digits with an optional sign, point and exponent: no hexadecimal, no "inf".
  if (text.empty() || text.find_first_not_of("0123456789+-.eE") != std::string::npos) return false;
  char* end = nullptr;
  std::strtod(text.c_str(), &end);
  return end == text.c_str() + text.size();
}

bool ActsOnFlow(ElementKind kind) {
  switch (kind) {
    case ElementKind::TestPoint:
    case ElementKind::Particle:
    case ElementKind::FluxLine:
    case ElementKind::Capzone:
    case ElementKind::Text: return false;
    default: return true;
  }
}

Element NewElementAt(Database& db, ElementKind kind, const std::vector<MapPoint>& points) {
  std::vector<Vertex> vertices;
  for (const auto& [x, y] : points) vertices.push_back({0, 0, 0, x, y});
  const double x = points.empty() ? 0.0 : points.front().first;
  const double y = points.empty() ? 0.0 : points.front().second;
  // The defaults of each kind's add step, as its dialog unit gives them.
  Element e;
  switch (kind) {
    case ElementKind::Well: e = WellDefaults(db, x, y); break;
    case ElementKind::Linesink: e = LinesinkDefaults(); break;
    case ElementKind::Barrier: e = BarrierDefaults(db); break;
    case ElementKind::Inhomogeneity: e = InhomogeneityDefaults(db); break;
    case ElementKind::Lake: e = LakeDefaults(db); break;
    case ElementKind::UniformFlow:
      // One per model: the settings it has stay, the reference point moves.
      e = UniformFlowDefaults(db, x, y);
      e.row.Set("UNIFLOWCompute", 1);
      return e;
    case ElementKind::Domain: e = NewBoundary(BoundaryKind::HydrologicUnit); break;
    case ElementKind::Text: return NewTextLabel("", x, y);
    default: e = NewElement(kind); break;
  }
  e.vertices = std::move(vertices);
  return e;
}

bool ApplyFieldTexts(Element& e, const std::vector<std::string>& fieldTexts, UserInterface& ui) {
  Element changed = e;
  const std::string table = e.kind == ElementKind::UniformFlow ? std::string("the uniform flow")
                                                               : std::string(Info(e.kind).table);
  for (const std::string& text : fieldTexts) {
    const std::size_t eq = text.find('=');
    if (eq == std::string::npos || eq == 0) {
      ui.MessageBox(
          kInvalidEntryTitle,
          {Quoted(text) + " is not of the form FIELD=VALUE.", "Please enter a new value."},
          Buttons::OK, Icon::Exclamation);
      return false;
    }
    std::string_view field = std::string_view(text).substr(0, eq);
    const std::string value = text.substr(eq + 1);
    if (e.kind == ElementKind::UniformFlow) field = UniformFlowAlias(field);
    const std::string name = changed.row.CanonicalName(field);
    if (name.empty()) {
      ui.MessageBox(kUnknownFieldTitle,
                    {Quoted(text) + ": " + table + " has no field " + Quoted(field) + ".",
                     "The fields are: " + FieldList(e) + "."},
                    Buttons::OK, Icon::Exclamation);
      return false;
    }
    if (IsReadOnlyField(e, name)) {
      ui.MessageBox(kInvalidEntryTitle,
                    {Quoted(text) + ": " + name + " is set by TARNO and cannot be given."},
                    Buttons::OK, Icon::Exclamation);
      return false;
    }
    const std::string_view table =
        e.kind == ElementKind::UniformFlow ? std::string_view("Model") : Info(e.kind).table;
    if (!IsWholeValue(table, name, value) || !changed.row.SetFromText(name, value)) {
      const std::string expected = ExpectedValue(e.kind, name);
      ui.MessageBox(kInvalidEntryTitle,
                    {Quoted(text) + ": " + Quoted(value) + " is not a valid value for " + name +
                         " (" + expected + ").",
                     "Please enter a new value."},
                    Buttons::OK, Icon::Exclamation);
      return false;
    }
  }
  // The reference point of the uniform flow is its vertex.
  if (e.kind == ElementKind::UniformFlow && !changed.vertices.empty()) {
    changed.vertices.front().X = changed.row.Number("UNIFLOWRefX");
    changed.vertices.front().Y = changed.row.Number("UNIFLOWRefY");
  }
  e = std::move(changed);
  return true;
}

std::optional<std::int64_t> AddElement(Database& db, ElementKind kind,
                                       const std::vector<MapPoint>& points,
                                       const std::vector<std::string>& fieldTexts,
                                       UserInterface& ui, const InvalidateFn& invalidate) {
  // One entry of the edit history (none after a refusal: nothing was written).
  UndoScope undo(db, OperationName("Add", kind));
  Element e = NewElementAt(db, kind, points);
  if (!ApplyFieldTexts(e, fieldTexts, ui)) return std::nullopt;
  if (!CheckPointCount(e, points.size(), ui)) return std::nullopt;
  // What the add step offers once the fields are known: the first free label of a
  // test point or a named string (a boundary's by its kind), a test point's weights
  // by its type.
  if (!Given(fieldTexts, "Label")) {
    if (kind == ElementKind::TestPoint) e.row.Set("Label", DefaultTestPointLabel(db));
    if (kind == ElementKind::FluxLine || kind == ElementKind::Capzone)
      e.row.Set("Label", DefaultStringLabel(db, kind));
    if (kind == ElementKind::Domain)
      e.row.Set("Label", DefaultStringLabel(db, kind, BoundaryKindOf(e.row)));
  }
  if (kind == ElementKind::TestPoint && !Given(fieldTexts, "PESTWeight") &&
      !Given(fieldTexts, "UCODEWeight"))
    ApplyDefaultWeights(e);
  if (!RunChecks(db, e, "", ui)) return std::nullopt;
  const std::int64_t key = Write(db, e);
  undo.Commit();
  if (invalidate && ActsOnFlow(kind)) invalidate();
  return key;
}

std::optional<Element> FindElement(Database& db, std::string_view address, UserInterface& ui) {
  auto none = [&](const std::string& line) -> std::optional<Element> {
    ui.MessageBox(kNoSuchElementTitle, {line}, Buttons::OK, Icon::Exclamation);
    return std::nullopt;
  };
  if (EqualsIgnoreCase(address, "uniflow")) {
    if (auto u = LoadUniformFlow(db)) return u;
    return none("The model has no uniform flow.");
  }
  // "<kind>:<label>" when the part before the colon is a kind's word; a label
  // may hold a colon itself.
  std::optional<ElementKind> only;
  std::string_view label = address;
  if (const std::size_t colon = address.find(':'); colon != std::string_view::npos) {
    if (auto kind = KindFromWord(address.substr(0, colon))) {
      only = kind;
      label = address.substr(colon + 1);
    }
  }
  if (only == ElementKind::Particle) {
    const std::string digits(TrimST(label));
    if (digits.empty() || digits.find_first_not_of("0123456789") != std::string::npos)
      return none("A particle is addressed by its number: particle:<VID>, not " + Quoted(address) +
                  ".");
    if (auto p = Load(db, ElementKind::Particle, std::stoll(digits))) return p;
    return none("There is no particle " + digits + ".");
  }
  if (only == ElementKind::UniformFlow) return FindElement(db, "uniflow", ui);
  std::vector<Element> found;
  for (const KindInfo& k : ElementKinds()) {
    if (k.kind == ElementKind::Particle || k.kind == ElementKind::UniformFlow) continue;
    if (only && *only != k.kind) continue;
    if (auto e = FindByLabel(db, k.kind, label)) found.push_back(std::move(*e));
  }
  if (found.empty()) {
    if (only)
      return none("There is no " + std::string(Info(*only).word) + " labelled " + Quoted(label) +
                  ".");
    return none("No element is labelled " + Quoted(label) + ".");
  }
  if (found.size() > 1) {
    std::string kinds;
    for (const Element& e : found)
      kinds += (kinds.empty() ? "" : ", ") + std::string(Info(e.kind).word);
    ui.MessageBox(
        kAmbiguousLabelTitle,
        {"The label " + Quoted(label) + " names elements of more than one kind: " + kinds + ".",
         "Name the kind with the label, as in " + std::string(Info(found.front().kind).word) + ":" +
             std::string(label) + "."},
        Buttons::OK, Icon::Exclamation);
    return std::nullopt;
  }
  return std::move(found.front());
}

std::string AddressOf(Database& db, const Element& e) {
  if (e.kind == ElementKind::UniformFlow) return "uniflow";
  if (e.kind == ElementKind::Particle) return "particle:" + std::to_string(e.key);
  const std::string label = e.Label();
  for (const KindInfo& k : ElementKinds()) {
    if (k.kind == e.kind || k.kind == ElementKind::Particle || k.kind == ElementKind::UniformFlow)
      continue;
    if (FindByLabel(db, k.kind, label)) return std::string(Info(e.kind).word) + ":" + label;
  }
  // A label that reads as "<kind>:..." is written with its own kind ahead.
  if (const std::size_t colon = label.find(':');
      colon != std::string::npos && KindFromWord(label.substr(0, colon)))
    return std::string(Info(e.kind).word) + ":" + label;
  if (EqualsIgnoreCase(label, "uniflow")) return std::string(Info(e.kind).word) + ":" + label;
  return label;
}

std::optional<Element> EditElement(Database& db, std::string_view address,
                                   const std::vector<std::string>& fieldTexts, UserInterface& ui,
                                   const InvalidateFn& invalidate) {
  std::optional<Element> before = FindElement(db, address, ui);
  if (!before) return std::nullopt;
  UndoScope undo(db, OperationName("Edit", before->kind));
  Element e = *before;
  if (!ApplyFieldTexts(e, fieldTexts, ui)) return std::nullopt;
  if (e.kind == ElementKind::Barrier &&
      !CheckPointCount(e, e.vertices.size(), ui))  // closing a barrier of two vertices
    return std::nullopt;
  if (!RunChecks(db, e, before->Label(), ui)) return std::nullopt;
  // A routed string of one line-sink cannot carry a stream: the edit switches its
  // routing off and says what to do.
  if (e.kind == ElementKind::Linesink) DisableRoutingOfShortString(e, e.row.Flag("Routing"), ui);
  Update(db, e);
  undo.Commit();
  if (invalidate && ActsOnFlow(e.kind) && !SameExceptLabel(*before, e)) invalidate();
  return e;
}

std::optional<Element> DeleteElement(Database& db, std::string_view address, UserInterface& ui,
                                     const InvalidateFn& invalidate) {
  std::optional<Element> e = FindElement(db, address, ui);
  if (!e) return std::nullopt;
  UndoScope undo(db, OperationName("Delete", e->kind));
  Remove(db, e->kind, e->key);
  undo.Commit();
  if (invalidate && ActsOnFlow(e->kind)) invalidate();
  return e;
}

bool OpenProperties(Database& db, ElementKind kind, std::int64_t key, UserInterface& ui,
                    const InvalidateFn& invalidate) {
  std::unique_ptr<ElementDialog> dialog = MakeElementDialog(kind);
  if (!dialog) return false;
  std::optional<Element> e = Load(db, kind, key);
  if (!e) return false;
  dialog->LoadElement(db, *e);
  ui.ShowModal(*dialog);
  if (dialog->Result != 1) return false;
  UndoScope undo(db, OperationName("Edit", kind));
  dialog->StoreElement(*e);
  if (kind == ElementKind::Linesink)
    DisableRoutingOfShortString(*e, dynamic_cast<LinesinkString&>(*dialog).CheckRouting(), ui);
  Update(db, *e);
  undo.Commit();
  if (invalidate && dialog->FormChanged()) invalidate();
  return true;
}

}  // namespace tarno
