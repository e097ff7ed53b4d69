#include "elements/element.h"

#include <cctype>

#include "core/error.h"
#include "core/format.h"
#include "core/text.h"
#include "store/schema.h"

namespace tarno {

namespace {

Value DefaultValue(const FieldDef& f) {
  const bool text = f.type == FieldType::Text || f.type == FieldType::Date;
  switch (f.defaultKind) {
    case DefaultKind::Literal:
      if (text) return std::string(f.defaultValue);
      if (f.type == FieldType::Boolean)
        return std::int64_t{EqualsIgnoreCase(f.defaultValue, "True") ? 1 : 0};
      if (f.type == FieldType::Double) return Val(f.defaultValue);
      return static_cast<std::int64_t>(Val(f.defaultValue));
    case DefaultKind::ColourIndex:
      return ClassicColour(static_cast<int>(Val(f.defaultValue)));
    default:
      // No default: an empty text, a zero number, so that a new row is complete.
      if (text) return std::string();
      if (f.type == FieldType::Double) return 0.0;
      return std::int64_t{0};
  }
}

}  // namespace

Row Row::Defaults(std::string_view table) {
  const TableDef* t = FindTable(table);
  if (t == nullptr) throw InvalidArgumentError("no table " + std::string(table));
  Row r;
  for (const FieldDef& f : t->fields) {
    r.fields_.emplace_back(std::string(f.name), DefaultValue(f));
    r.types_.push_back(static_cast<int>(f.type));
  }
  return r;
}

Row Row::Defaults(std::string_view table, const std::vector<std::string_view>& fields) {
  const Row all = Defaults(table);
  Row r;
  for (std::size_t i = 0; i < all.fields_.size(); ++i)
    for (std::string_view name : fields)
      if (EqualsIgnoreCase(all.fields_[i].first, name)) {
        r.fields_.push_back(all.fields_[i]);
        r.types_.push_back(all.types_[i]);
      }
  return r;
}

namespace {

bool ParseNumber(std::string_view text, double& out) {
  // Must start like a number: the decimal parse reads "abc" as 0, which a user who
  // typed it did not mean.
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) ++i;
  if (i < text.size() && text[i] == '.') ++i;
  if (i >= text.size() || !std::isdigit(static_cast<unsigned char>(text[i]))) return false;
  out = Val(text);
  return true;
}

}  // namespace

bool Row::SetFromText(std::string_view field, std::string_view text) {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (!EqualsIgnoreCase(fields_[i].first, field)) continue;
    const auto type = static_cast<FieldType>(types_[i]);
    switch (type) {
      case FieldType::Text:
      case FieldType::Date:
        fields_[i].second = std::string(text);
        return true;
      case FieldType::Double: {
        double d = 0;
        if (!ParseNumber(text, d)) return false;
        fields_[i].second = d;
        return true;
      }
      default:
        if (EqualsIgnoreCase(text, "true") || EqualsIgnoreCase(text, "yes")) {
          fields_[i].second = std::int64_t{1};
          return true;
        }
        if (EqualsIgnoreCase(text, "false") || EqualsIgnoreCase(text, "no")) {
          fields_[i].second = std::int64_t{0};
          return true;
        }
        double d = 0;
        if (!ParseNumber(text, d)) return false;
        if (type == FieldType::Boolean) d = d != 0 ? 1 : 0;
        fields_[i].second = static_cast<std::int64_t>(d);
        return true;
    }
  }
  return false;
}

Value Row::Normalised(std::string_view field, Value v) const {
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (!EqualsIgnoreCase(fields_[i].first, field)) continue;
    if (std::holds_alternative<std::monostate>(v)) return v;
    const auto type = static_cast<FieldType>(types_[i]);
    if (type == FieldType::Text || type == FieldType::Date) {
      if (const auto* s = std::get_if<std::string>(&v)) return *s;
      if (const auto* n = std::get_if<std::int64_t>(&v)) return std::to_string(*n);
      if (const auto* d = std::get_if<double>(&v)) return GeneralNumber(*d);
    } else if (type == FieldType::Double) {
      if (const auto* n = std::get_if<std::int64_t>(&v)) return static_cast<double>(*n);
      if (const auto* s = std::get_if<std::string>(&v)) return Val(*s);
    } else {
      if (const auto* d = std::get_if<double>(&v)) return static_cast<std::int64_t>(*d);
      if (const auto* s = std::get_if<std::string>(&v)) return static_cast<std::int64_t>(Val(*s));
    }
    return v;
  }
  return v;
}

const Value* Row::Find(std::string_view field) const {
  for (const auto& [name, value] : fields_)
    if (EqualsIgnoreCase(name, field)) return &value;
  return nullptr;
}

std::string Row::CanonicalName(std::string_view field) const {
  for (const auto& f : fields_)
    if (EqualsIgnoreCase(f.first, field)) return f.first;
  return {};
}

const Value& Row::Get(std::string_view field) const {
  const Value* v = Find(field);
  if (v == nullptr) throw InvalidArgumentError("the row has no field " + std::string(field));
  return *v;
}

double Row::Number(std::string_view field) const {
  const Value& v = Get(field);
  if (const auto* i = std::get_if<std::int64_t>(&v)) return static_cast<double>(*i);
  if (const auto* d = std::get_if<double>(&v)) return *d;
  if (const auto* s = std::get_if<std::string>(&v)) return Val(*s);
  return 0.0;
}

std::int64_t Row::Integer(std::string_view field) const {
  const Value& v = Get(field);
  if (const auto* i = std::get_if<std::int64_t>(&v)) return *i;
  return static_cast<std::int64_t>(Number(field));
}

std::string Row::Text(std::string_view field) const {
  const Value& v = Get(field);
  if (const auto* s = std::get_if<std::string>(&v)) return *s;
  if (const auto* i = std::get_if<std::int64_t>(&v)) return std::to_string(*i);
  if (const auto* d = std::get_if<double>(&v)) return GeneralNumber(*d);
  return {};
}

void Row::Set(std::string_view field, Value value) {
  for (auto& [name, v] : fields_)
    if (EqualsIgnoreCase(name, field)) {
      v = std::move(value);
      return;
    }
  throw InvalidArgumentError("the row has no field " + std::string(field));
}

std::string Element::Label() const {
  if (kind == ElementKind::UniformFlow) return "uniflow";
  if (kind == ElementKind::Text) return row.Text("Text");
  return row.Has("Label") ? row.Text("Label") : std::string();  // particles have none
}

double Element::X() const {
  if (kind == ElementKind::Text) return row.Number("X");
  return vertices.empty() ? 0.0 : vertices.front().X;
}

double Element::Y() const {
  if (kind == ElementKind::Text) return row.Number("Y");
  return vertices.empty() ? 0.0 : vertices.front().Y;
}

const std::vector<std::string_view>& UniformFlowFields() {
  static const std::vector<std::string_view> kFields = {
      "UNIFLOWRefX",     "UNIFLOWRefY",        "UNIFLOWRefHead",
      "UNIFLOWGradient", "UNIFLOWOrientation", "UNIFLOWCompute"};
  return kFields;
}

Element NewElement(ElementKind kind, std::vector<Vertex> vertices) {
  Element e;
  e.kind = kind;
  const KindInfo& info = Info(kind);
  if (!info.table.empty()) e.row = Row::Defaults(info.table);
  if (kind == ElementKind::UniformFlow) {
    e.row = Row::Defaults("Model", UniformFlowFields());
    e.row.Set("UNIFLOWCompute", 1);
  }
  e.vertices = std::move(vertices);
  return e;
}

}  // namespace tarno
