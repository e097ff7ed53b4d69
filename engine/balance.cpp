// The groups of elements of the water balance (engine/elements.h): what each kind of
// element adds to the balance and to the box of the far field's circle.
#include "engine/elements.h"

#include <cmath>

namespace tarno::engine {

using detail::kPi;

namespace {

// Wells and partially penetrating wells, by how their discharge is given.
class WellBalance final : public BalanceElement {
 public:
  void balanceTerms(const Solution::State& s, const AddBalanceTerm& add) const override {
    for (const auto& w : s.wells) {
      if (w.partial >= 0)
        add(w.headSpecified ? "partial wells, head specified"
                            : "partial wells, discharge specified",
            w.q);
      else
        add(w.headSpecified ? "wells, head specified" : "wells, discharge specified", w.q);
    }
  }
  void extent(const Solution::State& s, BalanceBox& box) const override {
    for (const auto& w : s.wells) box.grow(w.x, w.y);
  }
};

// Line-sink segments, by the kind of their string.
class LineSinkBalance final : public BalanceElement {
 public:
  void balanceTerms(const Solution::State& s, const AddBalanceTerm& add) const override {
    for (size_t i = 0; i < s.segs.size(); ++i) {
      const SegEl& e = s.segs[i];
      const double L = std::hypot(e.x2 - e.x1, e.y2 - e.y1);
      add(wordsOf(e.kind).balance, s.ssig[i] * L);
    }
  }
  void extent(const Solution::State& s, BalanceBox& box) const override {
    for (const auto& e : s.segs) {
      box.grow(e.x1, e.y1);
      box.grow(e.x2, e.y2);
    }
  }
};

// The line-doublets of inhomogeneities and walls: no term of their own.
class DoubletBalance final : public BalanceElement {
 public:
  void extent(const Solution::State& s, BalanceBox& box) const override {
    for (const auto& e : s.edges) {
      box.grow(e.g.x1, e.g.y1);
      box.grow(e.g.x2, e.g.y2);
    }
  }
};

// The area sinks of inhomogeneities with recharge or extraction.
class AreaSinkBalance final : public BalanceElement {
 public:
  void balanceTerms(const Solution::State& s, const AddBalanceTerm& add) const override {
    for (const auto& d : s.domains)
      if (d.hasSink) add("area sinks, inhomogeneities", d.extraction * d.sink.area);
  }
  void extent(const Solution::State& s, BalanceBox& box) const override {
    for (const auto& d : s.domains)
      for (const auto& v : d.poly) box.grow(v.x, v.y);
  }
};

// Ponds: a rate per area over the disk (> 0 puts water in).
class PondBalance final : public BalanceElement {
 public:
  void balanceTerms(const Solution::State& s, const AddBalanceTerm& add) const override {
    for (const auto& p : s.ponds)
      add(p.headSpecified ? "ponds, head specified" : "ponds, discharge specified",
          -p.rate * kPi * p.R * p.R);
  }
  void extent(const Solution::State& s, BalanceBox& box) const override {
    for (const auto& p : s.ponds) {
      box.grow(p.x - p.R, p.y - p.R);
      box.grow(p.x + p.R, p.y + p.R);
    }
  }
};

// The cells of the leakage grid to the model below.
class LeakageBalance final : public BalanceElement {
 public:
  void balanceTerms(const Solution::State& s, const AddBalanceTerm& add) const override {
    for (const auto& c : s.model.leakage)
      add("leakage to the model below", c.rate * (c.x2 - c.x1) * (c.y2 - c.y1));
  }
  void extent(const Solution::State& s, BalanceBox& box) const override {
    for (const auto& c : s.model.leakage) {
      box.grow(c.x1, c.y1);
      box.grow(c.x2, c.y2);
    }
  }
};

// Transient wells: their pumping and the storage change within the far field's circle.
class TheisBalance final : public BalanceElement {
 public:
  void termsWithin(const Solution::State& s, double cx, double cy, double R,
                   const AddBalanceTerm& add) const override {
    for (const auto& [kind, extraction] : s.theisBalance(cx, cy, R)) add(kind, extraction);
  }
  void extent(const Solution::State& s, BalanceBox& box) const override {
    for (const auto& g : s.theisGroups) box.grow(g.x, g.y);
  }
};

}  // namespace

const std::vector<const BalanceElement*>& balanceElements() {
  static const WellBalance wells;
  static const LineSinkBalance lineSinks;
  static const AreaSinkBalance areaSinks;
  static const PondBalance ponds;
  static const LeakageBalance leakage;
  static const DoubletBalance doublets;
  static const TheisBalance theis;
  static const std::vector<const BalanceElement*> all = {&wells, &lineSinks, &doublets, &areaSinks,
                                                         &ponds, &leakage,   &theis};
  return all;
}

}  // namespace tarno::engine
