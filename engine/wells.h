#pragma once
// Special functions of the well elements (internal to the engine; see
// docs/solver-wells.md for the formulas and their sources).

namespace tarno::engine::detail {

// The exponential integral E1(u) = integral from u to infinity of exp(-s) / s ds, u > 0
// (the Theis well function W(u)). +infinity for u <= 0; 0 where it underflows.
double expintE1(double u);

// The dimensionless partial penetration factor f of a well of radius rw whose screen
// runs from height zb to height zt above the base of a saturated zone of thickness b
// (0 <= zb < zt <= b): the extra drawdown at the well, averaged over the screen, is
// Q f / (2 pi k b). f = 0 for a screen over the whole thickness.
//   f = 2 b^2 / (pi^2 L^2) sum_n (1/n^2) [sin(n pi zt / b) - sin(n pi zb / b)]^2 K0(n pi rw / b)
// with L = zt - zb. The series is summed until K0 has decayed below 1e-17 of its first
// term's scale (n pi rw / b > 40), at most kMaxPartialTerms terms.
double partialPenetrationFactor(double b, double zb, double zt, double rw);

inline constexpr long kMaxPartialTerms = 200000;

}  // namespace tarno::engine::detail
