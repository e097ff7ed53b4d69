// The solver's labels of elements: a prefix of the kind and the zero-padded key
// ("WL_000012"), and for the vertices and segments of strings the key and the Seq
// ("LS_000003_0200"). They key the result tables through TARNOLabel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarno {

// The prefixes of the test points that are no piezometers (a piezometer's is its
// kind's, "TP_").
inline constexpr std::string_view kGageSolverPrefix = "TG_";
inline constexpr std::string_view kLakeStageSolverPrefix = "TS_";

// "WL_" + the key with six digits (more when the key needs them).
std::string SolverLabel(std::string_view prefix, std::int64_t key);
// "LS_" + the string's PID with six digits + "_" + the Seq with four.
std::string SolverVertexLabel(std::string_view prefix, std::int64_t pid, std::int64_t seq);

// The parts of a solver label: its prefix ("WL_"), the key, and the Seq for a
// vertex label. None when the text is no solver label.
struct ParsedSolverLabel {
  std::string prefix;
  std::int64_t key = 0;
  std::optional<std::int64_t> seq;
};
std::optional<ParsedSolverLabel> ParseSolverLabel(std::string_view label);

}  // namespace tarno
