// The elements that own unknowns: their columns, rows, right-hand sides and residuals,
// the condition parts of line-sink segments and the routing of streams (see
// engine/elements.h).
#include "engine/elements.h"

#include "engine/area.h"
#include "engine/fields.h"
#include "engine/kernels.h"

#include <algorithm>
#include <cmath>

namespace tarno::engine {

using detail::kPi;

namespace segment_conditions {

double headError(const Solution::State& s, const SegEl& e, double h, double sigma) {
  switch (e.state) {
    case SegState::Free:
    case SegState::Held: {
      double target = e.value;
      if (followsGallery(e)) target = s.aqOf(e.dom).headFromPhiExtended(s.x[s.galleries[e.gallery].unknown]);
      return e.resist ? h - target - e.c * sigma / e.w : h - target;
    }
    case SegState::Percolating: return std::max(0.0, h - (e.value - e.d));
    case SegState::Off: return std::max(0.0, h - e.value);
    case SegState::Limited: return 0.0;
  }
  return 0.0;
}

// A limited (dry) stream reach takes exactly the flow that reaches it, so that the flow
// at its downstream end is zero. That flow is linear in the strengths of the reach and
// of every segment upstream of it:
//     sum over j upstream (and the reach itself) of L_j sigma_j
//         = -(end inflows + overland flows of those segments).
// The row is written with these coefficients rather than as sigma = the flow found from
// the previous iteration's strengths: that fixed point converges only linearly (by a
// factor of about 0.3 an iteration on a network of a few reaches), the row itself is
// exact in one solve. The sum stops at limited reaches upstream: their own rows make the
// flow leaving them zero. `coef` gets (unknown, coefficient) pairs, the reach's own
// first; the returned value is the right-hand side.
double limitedRow(const Solution::State& s, int seg, std::vector<std::pair<int, double>>& coef) {
  coef.clear();
  const int ns = (int)s.segs.size();
  std::vector<char> seen(ns, 0);
  std::vector<int> stack{seg};
  seen[seg] = 1;
  double rhs = 0.0;
  while (!stack.empty()) {
    const int i = stack.back();
    stack.pop_back();
    const SegEl& e = s.segs[i];
    const double L = std::hypot(e.x2 - e.x1, e.y2 - e.y1);
    const LineSinkString& ls = s.model.lineSinks[e.string];
    rhs -= ls.overlandFlow * L;
    if (e.index == 0) rhs -= ls.endInflow;
    if (e.unknown >= 0)
      coef.emplace_back(e.unknown, L);
    else
      rhs -= e.fixedValue * L;
    for (int j = 0; j < ns; ++j)
      if (s.segs[j].downstream == i && !seen[j] && s.segs[j].state != SegState::Limited) {
        seen[j] = 1;
        stack.push_back(j);
      }
  }
  return rhs;
}

// The flows are followed downstream in the order of the network (State::streamOrder):
// each segment's inflow is its string's end inflow (first segment) plus what the
// segments upstream pass on.
double route(Solution::State& s) {
  const int ns = (int)s.segs.size();
  double mismatch = 0.0;
  std::vector<double> inQ(ns, 0.0), inBase(ns, 0.0), inOver(ns, 0.0);
  for (int i : s.streamOrder) {
    SegEl& e = s.segs[i];
    if (e.index == 0) {
      inQ[i] += s.model.lineSinks[e.string].endInflow;
      inOver[i] += s.model.lineSinks[e.string].endInflow;
    }
  }
  for (int i : s.streamOrder) {
    SegEl& e = s.segs[i];
    const double L = std::hypot(e.x2 - e.x1, e.y2 - e.y1);
    const double ql = s.model.lineSinks[e.string].overlandFlow * L;
    e.qUp = inQ[i];
    if (e.state == SegState::Limited) {
      const double want = -std::max(e.qUp + ql, 0.0) / L;
      const double scale = e.resist ? e.c / e.w : L / (s.aq.k * s.aq.H);
      mismatch = std::max(mismatch, std::fabs(want - s.ssig[i]) * scale);
    }
    const double sig = s.ssig[i];
    e.qDown = e.qUp + ql + sig * L;
    e.baseDown = inBase[i] + sig * L;
    e.overDown = inOver[i] + ql;
    if (e.downstream >= 0) {
      inQ[e.downstream] += e.qDown;
      inBase[e.downstream] += e.baseDown;
      inOver[e.downstream] += e.overDown;
    }
  }
  return mismatch;
}

bool limitedReleases(const Solution::State& s, const SegEl& e, double avail, double L) {
  const double h = s.aqOf(e.dom).headFromPhiExtended(s.phiPts[e.unknown]);
  if (e.resist) {
    double free = e.w * (h - e.value) / e.c;
    if (e.d > 0.0) free = std::max(free, -e.w * e.d / e.c);
    return free * L > -avail + 1e-12 * (1.0 + avail);
  }
  return h >= e.value;
}

// The flows are followed downstream as if the switches were made.
int updateStreams(Solution::State& s, bool apply) {
  int switches = 0;
  const int ns = (int)s.segs.size();
  std::vector<double> inQ(ns, 0.0);
  for (int i : s.streamOrder) {
    SegEl& e = s.segs[i];
    if (e.index == 0) inQ[i] += s.model.lineSinks[e.string].endInflow;
  }
  for (int i : s.streamOrder) {
    SegEl& e = s.segs[i];
    const double L = std::hypot(e.x2 - e.x1, e.y2 - e.y1);
    const double ql = s.model.lineSinks[e.string].overlandFlow * L;
    const double avail = std::max(inQ[i] + ql, 0.0);
    double sig = s.ssig[i];
    if (e.state == SegState::Limited) {
      if (limitedReleases(s, e, avail, L)) {
        ++switches;
        if (apply) e.state = SegState::Free;
      } else {
        sig = -avail / L;
      }
    } else if (avail + sig * L < -1e-12 * (1.0 + avail)) {
      sig = -avail / L;
      ++switches;
      if (apply) {
        e.state = SegState::Limited;
        e.fixedValue = sig;
      }
    }
    if (e.downstream >= 0) inQ[e.downstream] += avail + sig * L;
  }
  return switches;
}

}  // namespace segment_conditions

// The stream flows of the state (reports, gages, the saved solution's reload).
double Solution::State::route() { return segment_conditions::route(*this); }


namespace {

using segment_conditions::followsGallery;

// ---- Wells (head specified; fully and partially penetrating) -------------------

class WellElement final : public UnknownElement {
 public:
  void column(const Solution::State& s, int j, const double* px, const double* py, int n,
              double* col) const override {
    const WellEl& w = s.wells[s.uowner[j]];
    detail::wellColumn(w.x, w.y, px, py, n, col);
  }
  std::complex<double> unitW(const Solution::State& s, int j, double x, double y) const override {
    const WellEl& w = s.wells[s.uowner[j]];
    const std::complex<double> d(x - w.x, y - w.y);
    if (std::abs(d) < 1e-300) return 0.0;
    return -1.0 / (2.0 * kPi) / d;
  }
  bool potentialRow(const Solution::State&, int) const override { return true; }
  double rowPotential(const Solution::State& s, int i, double base) const override {
    return base + s.wells[s.uowner[i]].loss * s.x[i];
  }
  double rhs(const Solution::State& s, int i) const override {
    const WellEl& w = s.wells[s.uowner[i]];
    return s.aqOf(w.dom).phiFromHead(w.value) - s.known[i];
  }
  double residual(const Solution::State& s, int i, double phi) const override {
    const WellEl& w = s.wells[s.uowner[i]];
    return std::fabs(s.aqOf(w.dom).headFromPhiExtended(phi - w.loss * s.x[i]) - w.value);
  }
  // A partially penetrating well in head mode: the head in the well is that of the field
  // less the loss of the partial screen, Phi - loss Q = Phi(h).
  void assembleRow(const Solution::State& s, int i, RowSink& A) const override {
    const WellEl& w = s.wells[s.uowner[i]];
    if (w.partial >= 0) A.add(i, i, -w.loss);
  }
  std::string describe(const Solution::State& s, int j) const override {
    return "the discharge of well " + s.wellLabel(s.wells[s.uowner[j]]);
  }
};

// ---- Line-sink segments (head, resistance, drain, gallery and stream conditions) ---

class SegmentElement final : public UnknownElement {
 public:
  void column(const Solution::State& s, int j, const double* px, const double* py, int n,
              double* col) const override {
    const int k = s.uowner[j];
    detail::LsGeom g{s.scx[k], s.scy[k], s.sihr[k], s.sihi[k], s.sscale[k], s.sc0[k], 0.0};
    detail::lineSinkColumn(g, px, py, n, col);
  }
  std::complex<double> unitW(const Solution::State& s, int j, double x, double y) const override {
    const int k = s.uowner[j];
    detail::LsGeom g{
        s.scx[k], s.scy[k], s.sihr[k], s.sihi[k], s.sscale[k], s.sc0[k], 4.0 * kPi * s.sscale[k]};
    return detail::lsW(g, x, y);
  }
  bool potentialRow(const Solution::State& s, int i) const override {
    return segment_conditions::potentialForm(s.segs[s.uowner[i]]);
  }
  // The resistance part (- a sigma) and the gallery part (- Phi of the common head).
  double rowPotential(const Solution::State& s, int i, double base) const override {
    const SegEl& e = s.segs[s.uowner[i]];
    double phi = base;
    if (e.resist) phi += e.a * s.x[i];
    if (followsGallery(e)) phi += s.x[s.galleries[e.gallery].unknown];
    return phi;
  }
  double rhs(const Solution::State& s, int i) const override {
    const SegEl& e = s.segs[s.uowner[i]];
    const auto& aq = s.aqOf(e.dom);
    const double phiOld = s.phiPts[i];
    switch (e.state) {
      case SegState::Percolating:
      case SegState::Off: return e.fixedValue;
      case SegState::Limited: {
        std::vector<std::pair<int, double>> coef;
        return segment_conditions::limitedRow(s, s.uowner[i], coef);
      }
      case SegState::Free:
      case SegState::Held: break;
    }
    if (followsGallery(e)) {
      // Gallery part, with the resistance part's chord form when the segment has one.
      const GalleryEl& g = s.galleries[e.gallery];
      const double phiG = s.x[g.unknown];
      if (e.resist && std::isfinite(phiOld) && s.solved) {
        const double gOld =
            e.w / e.c * (aq.headFromPhiExtended(phiOld) - aq.headFromPhiExtended(phiG));
        return (phiOld - phiG - e.a * gOld) - s.known[i];
      }
      return -s.known[i];
    }
    if (e.resist && std::isfinite(phiOld)) {
      // Resistance part: the chord form, exact at convergence (see docs/solver.md).
      const double gOld = e.w / e.c * (aq.headFromPhiExtended(phiOld) - e.value);
      return (phiOld - e.a * gOld) - s.known[i];
    }
    // Head part.
    return aq.phiFromHead(e.value) - s.known[i];
  }
  void assembleRow(const Solution::State& s, int i, RowSink& A) const override {
    const int k = s.uowner[i];
    const SegEl& e = s.segs[k];
    if (!segment_conditions::potentialForm(e)) {
      // A fixed strength: the identity row; a limited reach: the flow that reaches it.
      A.clearRow(i);
      A.set(i, i, 1.0);
      if (e.state == SegState::Limited && e.kind == LineSinkKind::Stream) {
        std::vector<std::pair<int, double>> coef;
        segment_conditions::limitedRow(s, k, coef);
        A.set(i, i, 0.0);
        for (const auto& [j, c] : coef) A.add(i, j, c);
      }
      return;
    }
    if (e.resist) A.add(i, i, -e.a);
    if (followsGallery(e)) A.set(i, s.galleries[e.gallery].unknown, -1.0);
  }
  int update(Solution::State& s, int i, double& residual) const override {
    SegEl& e = s.segs[s.uowner[i]];
    const auto& aq = s.aqOf(e.dom);
    const double h = aq.headFromPhiExtended(s.phiPts[e.unknown]);
    const double sig = s.x[e.unknown];
    switch (e.state) {
      case SegState::Free:
      case SegState::Held: {
        const double res = segment_conditions::headError(s, e, h, sig);
        residual = std::max(residual, std::fabs(res));
        if (e.kind == LineSinkKind::Drain && sig < 0.0) {
          e.state = SegState::Off;
          e.fixedValue = 0.0;
          return 1;
        }
        if (e.resist && e.d > 0.0 && e.kind != LineSinkKind::Drain && e.gallery < 0 &&
            h < e.value - e.d) {
          e.state = SegState::Percolating;
          e.fixedValue = -e.w * e.d / e.c;
          return 1;
        }
        return 0;
      }
      case SegState::Percolating:
        if (h >= e.value - e.d) {
          e.state = SegState::Free;
          return 1;
        }
        return 0;
      case SegState::Off:
        if (h > e.value) {
          e.state = SegState::Free;
          return 1;
        }
        return 0;
      case SegState::Limited:
        return 0;  // its row is checked against the flow reaching it by route()
    }
    return 0;
  }
  std::string describe(const Solution::State& s, int j) const override {
    const SegEl& e = s.segs[s.uowner[j]];
    return "the strength of line-sink segment " +
           s.model.lineSinks[e.string].segments[e.modelSeg].label;
  }
};

// ---- Galleries: the common potential of their segments ------------------------

class GalleryElement final : public UnknownElement {
 public:
  void column(const Solution::State&, int, const double*, const double*, int n,
              double* col) const override {
    std::fill(col, col + n, 0.0);
  }
  std::complex<double> unitW(const Solution::State&, int, double, double) const override {
    return 0.0;
  }
  bool hasPoint() const override { return false; }
  bool potentialRow(const Solution::State&, int) const override { return false; }
  // The total of sigma L is the pumping; when every segment is held, the common head is
  // the lowest of their heads.
  double rhs(const Solution::State& s, int i) const override {
    const GalleryEl& g = s.galleries[s.uowner[i]];
    if (!g.allHeld) return g.total;
    double hmin = 1e300;
    for (int k : g.segs) hmin = std::min(hmin, s.segs[k].value);
    return g.segs.empty() ? 0.0 : s.aqOf(s.segs[g.segs.front()].dom).phiFromHead(hmin);
  }
  void assembleRow(const Solution::State& s, int i, RowSink& A) const override {
    const GalleryEl& g = s.galleries[s.uowner[i]];
    A.clearRow(i);
    if (g.allHeld) {
      A.set(i, i, 1.0);
    } else {
      for (int k : g.segs) {
        const SegEl& e = s.segs[k];
        A.set(i, e.unknown, std::hypot(e.x2 - e.x1, e.y2 - e.y1));
      }
    }
  }
  // Segments whose minimum head lies above the common head are held there; when all
  // are held the gallery delivers what they take, until they could deliver the total.
  int update(Solution::State& s, int i, double&) const override {
    GalleryEl& g = s.galleries[s.uowner[i]];
    if (g.segs.empty()) return 0;
    int switches = 0;
    const double hg = s.aqOf(s.segs[g.segs.front()].dom).headFromPhiExtended(s.x[g.unknown]);
    if (g.allHeld) {
      double delivered = 0.0;
      for (int k : g.segs) {
        const SegEl& e = s.segs[k];
        delivered += s.x[e.unknown] * std::hypot(e.x2 - e.x1, e.y2 - e.y1);
      }
      if (delivered > g.total) {  // can deliver the total again: release all
        g.allHeld = false;
        for (int k : g.segs) s.segs[k].state = SegState::Free;
        ++switches;
      }
      return switches;
    }
    int held = 0, toHold = 0;
    for (int k : g.segs) {
      const SegEl& e = s.segs[k];
      if (e.state == SegState::Free && hg < e.value - 1e-12 * (1.0 + std::fabs(e.value))) ++toHold;
    }
    if (toHold > 0) {
      for (int k : g.segs) {
        SegEl& e = s.segs[k];
        if (e.state == SegState::Free && hg < e.value - 1e-12 * (1.0 + std::fabs(e.value))) {
          e.state = SegState::Held;
          ++switches;
        }
      }
    } else {
      for (int k : g.segs) {
        SegEl& e = s.segs[k];
        if (e.state == SegState::Held && hg >= e.value) {
          e.state = SegState::Free;
          ++switches;
        }
      }
    }
    for (int k : g.segs) held += s.segs[k].state == SegState::Held;
    if (held == (int)g.segs.size() && !g.allHeld) g.allHeld = true;
    return switches;
  }
  std::string describe(const Solution::State& s, int j) const override {
    return "the head of gallery " + s.model.lineSinks[s.galleries[s.uowner[j]].string].label;
  }
};

// ---- The constant, fixed by the reference point ---------------------------------

class ConstantElement final : public UnknownElement {
 public:
  void column(const Solution::State&, int, const double*, const double*, int n,
              double* col) const override {
    std::fill(col, col + n, 1.0);
  }
  std::complex<double> unitW(const Solution::State&, int, double, double) const override {
    return 0.0;
  }
  bool potentialRow(const Solution::State&, int) const override { return true; }
  double rhs(const Solution::State& s, int i) const override {
    return s.aqOf(s.refDom).phiFromHead(s.refHead) - s.known[i];
  }
  double residual(const Solution::State& s, int, double phi) const override {
    return std::fabs(s.aqOf(s.refDom).headFromPhiExtended(phi) - s.refHead);
  }
  std::string describe(const Solution::State&, int) const override {
    return "the constant fixed by the reference point";
  }
};

// ---- Ponds of given head: their rate ----------------------------------------------

class PondElement final : public UnknownElement {
 public:
  void column(const Solution::State& s, int j, const double* px, const double* py, int n,
              double* col) const override {
    s.areaColumn(j, px, py, n, col);
  }
  std::complex<double> unitW(const Solution::State& s, int j, double x, double y) const override {
    const PondEl& p = s.ponds[s.uowner[j]];
    return detail::pondW(p.x, p.y, p.R, x, y);
  }
  bool potentialRow(const Solution::State&, int) const override { return true; }
  double rhs(const Solution::State& s, int i) const override {
    const PondEl& p = s.ponds[s.uowner[i]];
    return s.aqOf(p.dom).phiFromHead(p.value) - s.known[i];
  }
  double residual(const Solution::State& s, int i, double phi) const override {
    const PondEl& p = s.ponds[s.uowner[i]];
    return std::fabs(s.aqOf(p.dom).headFromPhiExtended(phi) - p.value);
  }
  std::string describe(const Solution::State& s, int j) const override {
    return "the rate of pond " + s.model.ponds[s.ponds[s.uowner[j]].model].label;
  }
};

// ---- Line-doublets: the jumps along inhomogeneities and walls (continuity) ----------
// Their rows (continuity of the normal flow, the wall's resistance) are written by
// State::assembleAreaRows and their right-hand sides by State::areaRhs (engine/area.cpp).

class DoubletElement final : public UnknownElement {
 public:
  void column(const Solution::State& s, int j, const double* px, const double* py, int n,
              double* col) const override {
    s.areaColumn(j, px, py, n, col);
  }
  std::complex<double> unitW(const Solution::State& s, int j, double x, double y) const override {
    const auto& slot = s.udb[j];
    std::complex<double> w(0.0, 0.0);
    for (int k = 0; k < 4; k += 2)
      if (slot[k] >= 0) w += detail::dbBasis(s.edges[slot[k]].g, x, y, true).w[slot[k + 1]];
    return w;
  }
  bool potentialRow(const Solution::State&, int) const override { return false; }
  double rhs(const Solution::State& s, int i) const override { return s.areaRhs(i); }
  std::string describe(const Solution::State& s, int j) const override {
    const DbEdge& d = s.edges[s.uowner[j]];
    return d.wall ? "a jump along wall " + s.model.walls[s.wallEls[d.owner].model].label
                  : "a jump along inhomogeneity " +
                        s.model.inhomogeneities[s.inhos[d.owner].model].label;
  }
};

}  // namespace

const UnknownElement& elementOf(UnknownKind kind) {
  static const WellElement well;
  static const SegmentElement segment;
  static const GalleryElement gallery;
  static const ConstantElement constant;
  static const PondElement pond;
  static const DoubletElement doublet;
  switch (kind) {
    case UnknownKind::WellQ: return well;
    case UnknownKind::SegSigma: return segment;
    case UnknownKind::GalleryPhi: return gallery;
    case UnknownKind::Constant: return constant;
    case UnknownKind::PondRate: return pond;
    case UnknownKind::DbNode:
    case UnknownKind::DbPara: return doublet;
  }
  return constant;
}

}  // namespace tarno::engine
