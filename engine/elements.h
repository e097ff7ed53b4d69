#pragma once
// The elements that own unknowns of the collocation system, behind one interface.
//
// Every unknown belongs to one element (a head-specified well, a line-sink segment, a
// gallery, a pond, a line-doublet node or parabolic part, the constant), and the row of
// the same index is that element's condition. The assembly, the right-hand side, the
// update after a solve and the message of a singular system ask the unknown's element
// (elementOf) instead of switching on its kind; a new kind of element is one more class
// here and one more entry in UnknownKind.
//
// The elements hold no data of their own: the data stay in the solution's state
// (engine/state.h), in the structure-of-arrays form that the vector loops need.
//
// A line-sink segment's row is composed of condition parts (segment conditions below):
// the head part (Phi at the centre = Phi(h)), the resistance part (- a sigma, with the
// chord right-hand side), the gallery part (- Phi of the gallery's common head), the
// fixed strength (percolating reach, drain that is off) and the limited reach of a
// stream (the flow reaching it). Which parts a row has follows from the string's kind and
// the segment's state.

#include "engine/state.h"

#include <algorithm>
#include <complex>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tarno::engine {

// Where the elements write their own entries of the rows (assembleRow, assembleAreaRows),
// after the potentials of the columns are in place: the dense matrix of the direct solve,
// or the sparse part of the compressed operator (engine/hoperator.h), whose rows start as
// the potential rows of the compressed influence matrix.
class RowSink {
 public:
  virtual ~RowSink() = default;
  virtual void clearRow(int i) = 0;                 // every entry of row i to 0
  virtual void add(int i, int j, double v) = 0;     // A(i, j) += v
  virtual void set(int i, int j, double v) = 0;     // A(i, j) = v
  virtual void scaleRow(int i, double f) = 0;       // row i *= f
  // A(i, j) = value(j) for every column j, in the order of the columns.
  virtual void setRow(int i, const std::function<double(int)>& value) = 0;
};

// The dense n x n column-major matrix of the direct solve.
class DenseRowSink final : public RowSink {
 public:
  DenseRowSink(double* A, int n) : A_(A), n_(n) {}
  void clearRow(int i) override {
    for (int j = 0; j < n_; ++j) A_[i + (size_t)j * n_] = 0.0;
  }
  void add(int i, int j, double v) override { A_[i + (size_t)j * n_] += v; }
  void set(int i, int j, double v) override { A_[i + (size_t)j * n_] = v; }
  void scaleRow(int i, double f) override {
    for (int j = 0; j < n_; ++j) A_[i + (size_t)j * n_] *= f;
  }
  void setRow(int i, const std::function<double(int)>& value) override {
    for (int j = 0; j < n_; ++j) A_[i + (size_t)j * n_] = value(j);
  }

 private:
  double* A_;
  int n_;
};

class UnknownElement {
 public:
  virtual ~UnknownElement() = default;

  // The potential of a unit value of unknown j at n points: its column of the matrix.
  virtual void column(const Solution::State& s, int j, const double* px, const double* py, int n,
                      double* col) const = 0;
  // W = Qx - i Qy of a unit value of unknown j at a point.
  virtual std::complex<double> unitW(const Solution::State& s, int j, double x, double y) const = 0;
  // False where the row has no collocation point of its own (its point is a placeholder).
  virtual bool hasPoint() const { return true; }
  // True when row i states the potential at its collocation point (the column entries
  // are the potentials of the unknowns there); false when it fixes a strength, sums
  // strengths, or is written by the element itself (the doublets).
  virtual bool potentialRow(const Solution::State& s, int i) const = 0;
  // Row i after a solve (potential rows only): the potential at its point, from `base`,
  // the known potential plus the right-hand side, and the row's own terms.
  virtual double rowPotential(const Solution::State& s, int i, double base) const { return base; }
  // The right-hand side of row i.
  virtual double rhs(const Solution::State& s, int i) const = 0;
  // The residual in head of row i's condition, phi the potential at its point (0 where
  // the element's own update checks it).
  virtual double residual(const Solution::State& s, int i, double phi) const { return 0.0; }
  // Writes the element's own entries of row i into the assembled matrix after the
  // columns: rows that fix or sum strengths, and the terms of a potential row besides the
  // potentials (a resistance, a loss, a common potential).
  virtual void assembleRow(const Solution::State& s, int i, RowSink& A) const {}
  // The nonlinear update of row i's condition after a solve: switches the element's
  // state where its condition changes form (a drain shut off or back on, a reach that
  // starts or stops percolating, gallery segments held or released), raises `residual`
  // to the condition's residual in head where the element checks it itself, and returns
  // the number of switches. Called in the order of the unknowns.
  virtual int update(Solution::State& s, int i, double& residual) const { return 0; }
  // What unknown j is, for the message of a singular system.
  virtual std::string describe(const Solution::State& s, int j) const = 0;
};

// The element that owns an unknown of the given kind.
const UnknownElement& elementOf(UnknownKind kind);
inline const UnknownElement& elementOf(const Solution::State& s, int j) {
  return elementOf(s.ukind[j]);
}

// ---- Elements in the water balance -----------------------------------------------

// A group of elements seen from the water balance (Solution::waterBalance,
// engine/balance.cpp): the wells, the line-sinks, the area sinks of inhomogeneities,
// the ponds, the leakage cells, the line-doublets and the transient wells. Each adds its
// terms (`add(kind, extraction)`, extraction > 0 takes water out of the aquifer) and
// the points it covers to the box around which the far field's circle is drawn; a
// group whose term depends on that circle (the transient wells, whose storage change
// is counted inside it) adds it after the far field. The balance asks every group in
// the order of balanceElements() instead of gathering each kind itself; the order fixes
// the order of the balance's lines.
using AddBalanceTerm = std::function<void(const std::string& kind, double extraction)>;

struct BalanceBox {
  double xmin = 1e300, xmax = -1e300, ymin = 1e300, ymax = -1e300;
  void grow(double x, double y) {
    xmin = std::min(xmin, x);
    xmax = std::max(xmax, x);
    ymin = std::min(ymin, y);
    ymax = std::max(ymax, y);
  }
};

class BalanceElement {
 public:
  virtual ~BalanceElement() = default;
  // The group's terms of the balance.
  virtual void balanceTerms(const Solution::State& s, const AddBalanceTerm& add) const {}
  // The terms that follow the far field: the flow within the circle of centre (cx, cy)
  // and radius R.
  virtual void termsWithin(const Solution::State& s, double cx, double cy, double R,
                           const AddBalanceTerm& add) const {}
  // Grows `box` by the points the group covers.
  virtual void extent(const Solution::State& s, BalanceBox& box) const = 0;
};

// Every group, in the order of the balance's lines.
const std::vector<const BalanceElement*>& balanceElements();

// ---- Segment conditions --------------------------------------------------------

namespace segment_conditions {

// A segment whose row includes the common gallery potential (the gallery part).
inline bool followsGallery(const SegEl& e) { return e.gallery >= 0 && e.state == SegState::Free; }

// The row states the potential at the centre (head, resistance and gallery parts).
inline bool potentialForm(const SegEl& e) {
  return e.state == SegState::Free || e.state == SegState::Held;
}

// The strength is fixed by the row (percolating reach, drain that is off).
inline bool fixedForm(const SegEl& e) {
  return e.state == SegState::Percolating || e.state == SegState::Off;
}

// The error in head of the segment's condition in its present state, with h the head at
// its centre and sigma its strength: for a row of potential form the head less the head
// it must hold (its own, or the gallery's common head), less the drop through the
// resistance; for a percolating reach or a drain that is off how far the head stands
// above the level where the fixed strength stops holding (0 below it); 0 for a limited
// reach, whose row is checked against the flow reaching it. The update after a solve
// and the segment's results both use it.
double headError(const Solution::State& s, const SegEl& e, double h, double sigma);

// The limited reach of a stream: the sum of L_j sigma_j over the reach and every segment
// upstream of it (up to the nearest limited reaches) equals minus their end inflows and
// overland flows. `coef` gets (unknown, coefficient) pairs, the reach's own first; the
// returned value is the right-hand side.
double limitedRow(const Solution::State& s, int seg, std::vector<std::pair<int, double>>& coef);

// The routing of streams, the other side of the limited reach: the flows along the
// network and the switches of the outer loop (engine/elements.cpp).
//
// Stream flows along the network from the current strengths (State::route, the flow
// into, out of and along each segment). Returns the largest difference, in head,
// between a limited segment's strength and the one the flow reaching it asks for.
double route(Solution::State& s);

// A limited reach whose own condition would take less than the flow `avail` that
// reaches it (L its length): it flows again.
bool limitedReleases(const Solution::State& s, const SegEl& e, double avail, double L);

// The outer loop's step for streams: reaches whose flow would become negative are
// limited, limited reaches that release are freed. With apply false nothing is changed;
// the count of switches that are due is returned either way.
int updateStreams(Solution::State& s, bool apply);

}  // namespace segment_conditions

}  // namespace tarno::engine
