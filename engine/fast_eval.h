#pragma once
// Evaluation of a solved model at many points (grids, extracts, pathlines) by a
// treecode on the complex potentials of the elements.
//
// The wells, line-sinks and line-doublets are sorted into a binary tree of clusters
// (split at the median of the longer side of the cluster's box). Each cluster keeps the
// multipole expansion of its elements' complex potential about its centre c,
//   Omega(z) = a0 ln(z - c) + sum_{k=1..p} a_k (z - c)^-k ,
// whose real part is the potential and W = Qx - i Qy = -dOmega/dz. The expansions are
// exact series of the elements (a well: ln(z - zw); a line-sink of constant strength:
// the integral of ln(z - zeta) along it; a line-doublet: the Cauchy integral of its
// quadratic strength), taken at the leaves by Gauss-Legendre quadrature (exact for the
// polynomial integrands) and carried to the parents by the exact shift of a Laurent
// series (Greengard & Rokhlin 1987, lemma 2.3). A point takes a cluster's expansion when
// the cluster's radius R (all of its elements lie in the disc of radius R about c) is
// below theta times the point's distance from c; otherwise it opens the cluster, and
// the elements of the leaves it reaches are summed directly with the engine's own
// kernels (engine/fields.h), so that points near or on elements get the values of the
// direct sum. Cost per point: O(p log n) for the far field plus the near leaves.
//
// Accuracy: the error of one cluster's truncated series is at most
//   theta^(p+1) / (1 - theta) * A,
// A the sum over its elements of |Q| / (2 pi) (wells: Q the discharge; line-sinks: sigma
// times length; line-doublets: the integral of |strength| along the element over 2 pi),
// and each element belongs to at most one cluster a point uses, so the error of the
// potential at a point is bounded by the same expression with A over all elements.
// With the defaults (p = 30, theta = 0.5) this is below 1e-9 A; measured errors are far
// smaller (tests/engine/fast_eval_test.cpp, tarno-bench-regional).
//
// Elements without an expansion here are summed directly at every point: the area sinks
// of the inhomogeneities (their potential is not harmonic inside the polygon), ponds,
// transient (Theis) wells, and the uniform flow and the constant.

#include "engine/fields.h"
#include "engine/solution.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace tarno::engine {

struct MultipoleOptions {
  int terms = 30;      // p: terms of the Laurent series after the logarithm
  double theta = 0.5;  // a cluster of radius R is expanded from a distance above R / theta
  int leafSize = 32;   // elements of a leaf at most
};

namespace detail {

// The tree of clusters over wells, line-sinks and line-doublets with their strengths.
class MultipoleTree {
 public:
  struct Wells {
    const double *x = nullptr, *y = nullptr, *q = nullptr;
    int n = 0;
  };
  struct LineSinks {
    const double *cx = nullptr, *cy = nullptr, *ihr = nullptr, *ihi = nullptr, *scale = nullptr,
                 *c0 = nullptr, *sig = nullptr;
    int n = 0;
  };
  MultipoleTree(const Wells& wells, const LineSinks& sinks, const DoubletEdges* doublets,
                const MultipoleOptions& options = {});

  // Adds the elements' potential (and W when wantW) at (x, y) to f.
  void field(double x, double y, bool wantW, Field& f) const;

  int elements() const { return nw_ + nl_ + nd_; }
  int clusters() const { return (int)nodes_.size(); }
  const MultipoleOptions& options() const { return opt_; }
  // Memory held by the tree, in bytes.
  size_t bytes() const;

 private:
  struct Node {
    double cx = 0, cy = 0, R = 0;  // centre and radius of the disc holding the elements
    int child[2] = {-1, -1};
    int w0 = 0, w1 = 0, l0 = 0, l1 = 0, d0 = 0, d1 = 0;  // ranges of the permuted arrays
    double a0 = 0;                                       // coefficient of the logarithm (real)
  };
  void buildNodes(std::vector<int>& items, const std::vector<double>& mx,
                  const std::vector<double>& my, const std::vector<double>& ex,
                  const std::vector<double>& ey, const std::vector<char>& kind);
  void leafExpansion(int node);
  void shiftExpansion(int child, int parent);
  void direct(const Node& nd, double x, double y, bool wantW, Field& f) const;

  MultipoleOptions opt_;
  int nw_ = 0, nl_ = 0, nd_ = 0;
  // Elements in tree order.
  std::vector<double> wx_, wy_, wq_;
  std::vector<double> lcx_, lcy_, lihr_, lihi_, lsc_, lc0_, lsig_;
  DoubletEdges db_;
  std::vector<Node> nodes_;
  // Scaled coefficients a_k / R^k, k = 1..p, of node i at [i * p, (i + 1) * p).
  std::vector<double> are_, aim_;
  std::vector<double> gx_, gw_;  // Gauss-Legendre points and weights on [-1, 1]
};

}  // namespace detail

// Evaluates a solved (or loaded) solution at many points. A model with an element at a
// coordinate that is not finite always takes the direct path. On the direct path it gives
// exactly what the Solution's own evaluation gives; on the multipole path the wells,
// line-sinks and line-doublets come from a MultipoleTree built once from the current
// strengths (the evaluator must not outlive a change of the solution).
class FieldEvaluator {
 public:
  enum class Path { Direct, Multipole };

  // Chooses the path: the expansions when the model has at least kMultipoleElements
  // wells, line-sinks and line-doublets and at least multipolePoints(elements) points
  // are to be evaluated. Measured (tarno-bench-regional crossover): a point costs about
  // 30 ns per element directly and 25 to 50 us by the expansions, and the tree about
  // 30 ms to build at a few thousand elements, so that the expansions win from about
  // 2,000 elements on, and from 900 points at 2,000 elements, 600 at 3,000 and 150 at
  // 10,000: about 2e6 / elements points.
  static constexpr int kMultipoleElements = 2000;
  static constexpr long kMultipolePoints = 200;  // the fewest points ever
  static long multipolePoints(long elements);
  // The wells, line-sinks and line-doublets of the solution (the elements of the tree).
  static long expandableElements(const Solution& s);
  static bool multipoleFor(const Solution& s, long points);
  FieldEvaluator(const Solution& s, long points);
  FieldEvaluator(const Solution& s, Path path, const MultipoleOptions& options = {});
  ~FieldEvaluator();
  FieldEvaluator(const FieldEvaluator&) = delete;
  FieldEvaluator& operator=(const FieldEvaluator&) = delete;

  Path path() const { return tree_ ? Path::Multipole : Path::Direct; }
  const detail::MultipoleTree* tree() const { return tree_.get(); }
  const Solution& solution() const { return s_; }

  double potential(double x, double y) const;
  double head(double x, double y) const;
  std::pair<double, double> discharge(double x, double y) const;  // (Qx, Qy)
  PointValues evaluate(double x, double y, std::optional<double> z = std::nullopt) const;
  // Heads at many points (in parallel).
  std::vector<double> heads(const std::vector<double>& xs, const std::vector<double>& ys) const;

 private:
  detail::Field field(double x, double y, bool wantW) const;

  const Solution& s_;
  std::unique_ptr<detail::MultipoleTree> tree_;
};

// For benchmarks of evaluation on models too large to solve densely: gives every
// unknown a random value of the size of its kind (line-sink strengths about 0.1,
// wells about 500, doublet jumps about 10) without solving. The values satisfy no
// condition; the cost of evaluation does not depend on them.
void setStandInStrengths(Solution& s, unsigned seed);

}  // namespace tarno::engine
