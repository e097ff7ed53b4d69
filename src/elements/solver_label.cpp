#include "elements/solver_label.h"

#include <cctype>

#include "core/format.h"

namespace tarno {

std::string SolverLabel(std::string_view prefix, std::int64_t key) {
  return std::string(prefix) + FormatNumber(static_cast<double>(key), "000000");
}

std::string SolverVertexLabel(std::string_view prefix, std::int64_t pid, std::int64_t seq) {
  return std::string(prefix) + FormatNumber(static_cast<double>(pid), "000000_") +
         FormatNumber(static_cast<double>(seq), "0000");
}

namespace {

std::optional<std::int64_t> Digits(std::string_view s) {
  if (s.empty()) return std::nullopt;
  std::int64_t v = 0;
  for (char c : s) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return std::nullopt;
    v = v * 10 + (c - '0');
  }
  return v;
}

}  // namespace

std::optional<ParsedSolverLabel> ParseSolverLabel(std::string_view label) {
  if (label.size() < 4 || label[2] != '_' || !std::isalpha(static_cast<unsigned char>(label[0])) ||
      !std::isalpha(static_cast<unsigned char>(label[1])))
    return std::nullopt;
  ParsedSolverLabel p;
  p.prefix = std::string(label.substr(0, 3));
  std::string_view rest = label.substr(3);
  const auto cut = rest.find('_');
  const auto key = Digits(rest.substr(0, cut));
  if (!key) return std::nullopt;
  p.key = *key;
  if (cut != std::string_view::npos) {
    const auto seq = Digits(rest.substr(cut + 1));
    if (!seq) return std::nullopt;
    p.seq = *seq;
  }
  return p;
}

}  // namespace tarno
