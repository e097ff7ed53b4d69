// One model element as the element layer reads and writes it: the row of its own
// table, field by field in the table's order, and its vertices in order.
//
// The row is generic over the project schema, so that every kind is read, written,
// compared and set from the command line by the same code; each kind's unit adds
// the meaning (labels, checks, the solver's commands). Field names are matched
// without regard to case, as the project file does.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "elements/kind.h"
#include "store/database.h"

namespace tarno {

struct Vertex {
  std::int64_t VID = 0;
  std::int64_t PID = -1;
  std::int64_t Seq = 0;
  double X = 0.0;
  double Y = 0.0;
  bool operator==(const Vertex&) const = default;
};

// The fields of one row, in the order of the table's definition.
class Row {
 public:
  // Every field of the table with its default of a new row (from the schema).
  static Row Defaults(std::string_view table);
  // As Defaults, but only the named fields, in the table's order.
  static Row Defaults(std::string_view table, const std::vector<std::string_view>& fields);

  bool Has(std::string_view field) const { return Find(field) != nullptr; }
  // The value of a field; throws InvalidArgumentError naming the field if the row
  // has no such field.
  const Value& Get(std::string_view field) const;
  double Number(std::string_view field) const;  // text is read with Val, NULL is 0
  std::int64_t Integer(std::string_view field) const;
  bool Flag(std::string_view field) const { return Integer(field) != 0; }
  std::string Text(std::string_view field) const;
  // Sets a field that the row has (throws otherwise).
  void Set(std::string_view field, Value value);
  void Set(std::string_view field, double v) { Set(field, Value{v}); }
  void Set(std::string_view field, std::int64_t v) { Set(field, Value{v}); }
  void Set(std::string_view field, int v) { Set(field, Value{static_cast<std::int64_t>(v)}); }
  void Set(std::string_view field, bool v) { Set(field, Value{std::int64_t{v ? 1 : 0}}); }
  void Set(std::string_view field, std::string v) { Set(field, Value{std::move(v)}); }
  void Set(std::string_view field, const char* v) { Set(field, Value{std::string(v)}); }

  // Sets a field from text as a user typed it, converted by the field's type: a
  // number field takes the decimal parse of the text fields, a yes/no field takes
  // "true"/"false", "yes"/"no" or a number. Returns false (and changes nothing) if
  // the text is no value of that type ("abc" for a number).
  bool SetFromText(std::string_view field, std::string_view text);
  // The stored value of a read field brought to the field's type (a whole number read
  // from a real column becomes a real), so that rows compare by value.
  Value Normalised(std::string_view field, Value v) const;

  // Fields in table order, with the names as the schema spells them.
  const std::vector<std::pair<std::string, Value>>& Fields() const { return fields_; }
  // The schema's spelling of a field name given in any case; empty if absent.
  std::string CanonicalName(std::string_view field) const;

  bool operator==(const Row&) const = default;

 private:
  const Value* Find(std::string_view field) const;
  std::vector<std::pair<std::string, Value>> fields_;
  std::vector<int> types_;  // FieldType of each field
};

struct Element {
  ElementKind kind = ElementKind::Well;
  // The VID of a point, the PID of a string or polygon, the rowid of a text label;
  // 0 for an element not yet stored.
  std::int64_t key = 0;
  Row row;
  std::vector<Vertex> vertices;  // by Seq; one for a point; none for a text label

  // The row's Label (a text label's Text).
  std::string Label() const;
  // The position of a point element (its vertex, or a text label's X and Y).
  double X() const;
  double Y() const;

  bool operator==(const Element&) const = default;
};

// The fields of the Model row that make the uniform flow element's row.
const std::vector<std::string_view>& UniformFlowFields();

// A new element of `kind` with the defaults of its table and the given vertices.
Element NewElement(ElementKind kind, std::vector<Vertex> vertices = {});

}  // namespace tarno
