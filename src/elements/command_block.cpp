#include "elements/command_block.h"

#include "core/format.h"
#include "core/text.h"

namespace tarno {

void PutLine(std::ostream& out, const std::string& line) { out << line << "\r\n"; }

std::string Masked(double value, const char* mask) { return FormatNumber(value, mask); }

std::string Unmasked(double value) { return CommandNumber(value); }

std::string ElementParameterField(const std::string& tag, const std::string& pad) {
  return std::string("! ") + PadString(tag, 12, pad) + " !";
}

std::string AquiferParameterField(const std::string& tag, const std::string& pad) {
  std::string field = "!";
  field += PadString(tag, 12, pad);
  field += '!';
  return field;
}

bool FieldHolds(const Row& row, std::string_view field, std::int64_t v) {
  if (std::holds_alternative<std::monostate>(row.Get(field))) return false;
  return row.Number(field) == static_cast<double>(v);
}

std::string CommandWriterContext::ScenarioOr(bool switchOn, const std::string& tag, double value,
                                             const char* mask) const {
  if (isTemplate && switchOn && tag != "__NONE__") return ElementParameterField(tag, pad) + " ";
  return Masked(value, mask);
}

Statement& ResultRowSink::Insert(const char* sql) {
  auto it = statements_.find(std::string_view(sql));
  if (it == statements_.end()) it = statements_.emplace(sql, db_.PrepareRaw(sql)).first;
  it->second.Reset();
  return it->second;
}

}  // namespace tarno
