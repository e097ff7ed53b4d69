// The treecode of the elements' complex potentials and the evaluator of many points
// (see fast_eval.h for the method and its accuracy).
#include "engine/fast_eval.h"

#include "engine/area.h"
#include "engine/state.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <random>

namespace tarno::engine {

namespace detail {

namespace {

using cplx = std::complex<double>;

// Gauss-Legendre points and weights on [-1, 1] (exact for degree 2 n - 1).
void gaussLegendre(int n, std::vector<double>& x, std::vector<double>& w) {
  x.assign(n, 0.0);
  w.assign(n, 0.0);
  for (int i = 0; i < n; ++i) {
    double t = std::cos(kPi * (i + 0.75) / (n + 0.5));
    double dp = 1.0;
    for (int it = 0; it < 100; ++it) {
      double p0 = 1.0, p1 = t;
      for (int k = 2; k <= n; ++k) {
        const double p2 = ((2.0 * k - 1.0) * t * p1 - (k - 1.0) * p0) / k;
        p0 = p1;
        p1 = p2;
      }
      const double pn = n == 1 ? t : p1, pm = n == 1 ? 1.0 : p0;
      dp = n * (t * pn - pm) / (t * t - 1.0);
      const double dt = pn / dp;
      t -= dt;
      if (std::fabs(dt) < 1e-16) break;
    }
    x[i] = t;
    w[i] = 2.0 / ((1.0 - t * t) * dp * dp);
  }
}

// The scale of a node's coefficients: its radius, or 1 for a cluster of one point.
inline double scaleOf(double R) { return R > 0.0 ? R : 1.0; }

}  // namespace

MultipoleTree::MultipoleTree(const Wells& wells, const LineSinks& sinks,
                             const DoubletEdges* doublets, const MultipoleOptions& options)
    : opt_(options) {
  opt_.terms = std::max(opt_.terms, 1);
  opt_.leafSize = std::max(opt_.leafSize, 1);
  if (!(opt_.theta > 0.0 && opt_.theta < 1.0)) opt_.theta = 0.5;
  nw_ = wells.n;
  nl_ = sinks.n;
  nd_ = doublets ? doublets->size() : 0;
  const int n = nw_ + nl_ + nd_;
  // Every element as an item: its kind, index, middle and two end points.
  std::vector<char> kind(n);
  std::vector<int> index(n);
  std::vector<double> mx(n), my(n), ex(2 * (size_t)n), ey(2 * (size_t)n);
  auto segment = [&](int i, char k, int j, double cx, double cy, double ihr, double ihi) {
    const double m2 = ihr * ihr + ihi * ihi;  // h = 1 / ih
    const double hr = ihr / m2, hi = -ihi / m2;
    kind[i] = k;
    index[i] = j;
    mx[i] = cx;
    my[i] = cy;
    ex[2 * i] = cx - hr;
    ey[2 * i] = cy - hi;
    ex[2 * i + 1] = cx + hr;
    ey[2 * i + 1] = cy + hi;
  };
  for (int j = 0; j < nw_; ++j) {
    kind[j] = 0;
    index[j] = j;
    mx[j] = ex[2 * j] = ex[2 * j + 1] = wells.x[j];
    my[j] = ey[2 * j] = ey[2 * j + 1] = wells.y[j];
  }
  for (int j = 0; j < nl_; ++j)
    segment(nw_ + j, 1, j, sinks.cx[j], sinks.cy[j], sinks.ihr[j], sinks.ihi[j]);
  for (int j = 0; j < nd_; ++j)
    segment(nw_ + nl_ + j, 2, j, doublets->cx[j], doublets->cy[j], doublets->ihr[j],
            doublets->ihi[j]);

  std::vector<int> items(n);
  for (int i = 0; i < n; ++i) items[i] = i;
  nodes_.reserve(4 * (size_t)n / opt_.leafSize + 2);
  if (n > 0) buildNodes(items, mx, my, ex, ey, kind);

  // The elements in tree order; each node's range of each kind from the counts before it.
  std::vector<int> before(3 * ((size_t)n + 1), 0);
  for (int i = 0; i < n; ++i) {
    for (int k = 0; k < 3; ++k) before[3 * (i + 1) + k] = before[3 * i + k];
    ++before[3 * (i + 1) + kind[items[i]]];
  }
  for (Node& nd : nodes_) {
    const int b = nd.w0, e = nd.w1;  // item range, set by buildNodes
    nd.w0 = before[3 * b];
    nd.w1 = before[3 * e];
    nd.l0 = before[3 * b + 1];
    nd.l1 = before[3 * e + 1];
    nd.d0 = before[3 * b + 2];
    nd.d1 = before[3 * e + 2];
  }
  for (int i = 0; i < n; ++i) {
    const int it = items[i], j = index[it];
    switch (kind[it]) {
      case 0:
        wx_.push_back(wells.x[j]);
        wy_.push_back(wells.y[j]);
        wq_.push_back(wells.q[j]);
        break;
      case 1:
        lcx_.push_back(sinks.cx[j]);
        lcy_.push_back(sinks.cy[j]);
        lihr_.push_back(sinks.ihr[j]);
        lihi_.push_back(sinks.ihi[j]);
        lsc_.push_back(sinks.scale[j]);
        lc0_.push_back(sinks.c0[j]);
        lsig_.push_back(sinks.sig[j]);
        break;
      default:
        db_.add(doublets->cx[j], doublets->cy[j], doublets->ihr[j], doublets->ihi[j]);
        const int d = db_.size() - 1;
        db_.a[d] = doublets->a[j];
        db_.b[d] = doublets->b[j];
        db_.c[d] = doublets->c[j];
        break;
    }
  }

  // Expansions: the leaves from their elements, each parent from its children. Children
  // come after their parent in nodes_.
  const int p = opt_.terms;
  gaussLegendre(p / 2 + 3, gx_, gw_);
  are_.assign(nodes_.size() * (size_t)p, 0.0);
  aim_.assign(nodes_.size() * (size_t)p, 0.0);
  std::vector<int> leaves;
  for (int i = 0; i < (int)nodes_.size(); ++i)
    if (nodes_[i].child[0] < 0) leaves.push_back(i);
#pragma omp parallel for schedule(dynamic, 8)
  for (long k = 0; k < (long)leaves.size(); ++k) leafExpansion(leaves[k]);
  for (int i = (int)nodes_.size() - 1; i >= 0; --i) {
    if (nodes_[i].child[0] < 0) continue;
    shiftExpansion(nodes_[i].child[0], i);
    shiftExpansion(nodes_[i].child[1], i);
  }
}

// Builds the node of items [b, e) (kept in w0, w1 until the ranges by kind are known)
// and its children, depth first.
void MultipoleTree::buildNodes(std::vector<int>& items, const std::vector<double>& mx,
                               const std::vector<double>& my, const std::vector<double>& ex,
                               const std::vector<double>& ey, const std::vector<char>& kind) {
  struct Task {
    int b, e, node;
  };
  std::vector<Task> stack;
  nodes_.push_back(Node{});
  stack.push_back({0, (int)items.size(), 0});
  while (!stack.empty()) {
    const Task t = stack.back();
    stack.pop_back();
    double x0 = 1e300, x1 = -1e300, y0 = 1e300, y1 = -1e300;
    double mx0 = 1e300, mx1 = -1e300, my0 = 1e300, my1 = -1e300;
    for (int i = t.b; i < t.e; ++i) {
      const int it = items[i];
      for (int s = 0; s < 2; ++s) {
        x0 = std::min(x0, ex[2 * it + s]);
        x1 = std::max(x1, ex[2 * it + s]);
        y0 = std::min(y0, ey[2 * it + s]);
        y1 = std::max(y1, ey[2 * it + s]);
      }
      mx0 = std::min(mx0, mx[it]);
      mx1 = std::max(mx1, mx[it]);
      my0 = std::min(my0, my[it]);
      my1 = std::max(my1, my[it]);
    }
    Node& nd = nodes_[t.node];
    nd.cx = 0.5 * (x0 + x1);
    nd.cy = 0.5 * (y0 + y1);
    double r2 = 0.0;
    for (int i = t.b; i < t.e; ++i) {
      const int it = items[i];
      for (int s = 0; s < 2; ++s) {
        const double dx = ex[2 * it + s] - nd.cx, dy = ey[2 * it + s] - nd.cy;
        r2 = std::max(r2, dx * dx + dy * dy);
      }
    }
    // A little more than the farthest end, so that round-off never puts an end outside.
    nd.R = std::sqrt(r2) * (1.0 + 1e-12);
    nd.w0 = t.b;
    nd.w1 = t.e;
    (void)kind;
    if (t.e - t.b <= opt_.leafSize) continue;
    const int m = t.b + (t.e - t.b) / 2;
    const bool alongX = mx1 - mx0 >= my1 - my0;
    std::nth_element(items.begin() + t.b, items.begin() + m, items.begin() + t.e,
                     [&](int a, int b) { return alongX ? mx[a] < mx[b] : my[a] < my[b]; });
    const int c0 = (int)nodes_.size();
    nodes_.push_back(Node{});
    nodes_.push_back(Node{});
    nodes_[t.node].child[0] = c0;
    nodes_[t.node].child[1] = c0 + 1;
    stack.push_back({m, t.e, c0 + 1});
    stack.push_back({t.b, m, c0});
  }
}

void MultipoleTree::leafExpansion(int i) {
  Node& nd = nodes_[i];
  const int p = opt_.terms, nq = (int)gx_.size();
  const double Rs = scaleOf(nd.R);
  const cplx c(nd.cx, nd.cy);
  std::vector<cplx> a(p + 1, 0.0), m(p + 1);
  const double inv2pi = 1.0 / (2.0 * kPi);
  double a0 = 0.0;
  for (int j = nd.w0; j < nd.w1; ++j) {
    const double q = wq_[j] * inv2pi;
    a0 += q;
    const cplx t = (cplx(wx_[j], wy_[j]) - c) / Rs;
    cplx pw = 1.0;
    for (int k = 1; k <= p; ++k) {
      pw *= t;
      a[k] -= q * pw / (double)k;
    }
  }
  // Line-sink: the integral of sigma ln(z - zeta) / (2 pi) along it, zeta = zc + h X,
  // with m[k] the integral of (d + h X)^k over [-1, 1] (scaled by the leaf's radius).
  // The ends d +- h lie in the unit disc, so the closed form
  //   m[k] = ((d + h)^(k+1) - (d - h)^(k+1)) / ((k + 1) h)
  // loses at most about eps / |h| to cancellation; segments short against the leaf
  // take the quadrature instead.
  for (int j = nd.l0; j < nd.l1; ++j) {
    const double L = 4.0 * kPi * lsc_[j];
    const double s = lsig_[j] * inv2pi;
    a0 += s * L;
    const cplx h = 1.0 / cplx(lihr_[j], lihi_[j]);
    const cplx d = (cplx(lcx_[j], lcy_[j]) - c) / Rs, hh = h / Rs;
    if (std::abs(hh) >= 1e-3) {
      const cplx e1 = d + hh, e2 = d - hh, ih = 1.0 / hh;
      cplx p1 = e1, p2 = e2;
      for (int k = 1; k <= p; ++k) {
        p1 *= e1;
        p2 *= e2;
        a[k] -= s * 0.5 * L * (p1 - p2) * ih / (double)(k * (k + 1));
      }
      continue;
    }
    std::fill(m.begin(), m.end(), 0.0);
    for (int g = 0; g < nq; ++g) {
      const cplx t = d + hh * gx_[g];
      cplx pw = gw_[g];
      for (int k = 1; k <= p; ++k) {
        pw *= t;
        m[k] += pw;
      }
    }
    for (int k = 1; k <= p; ++k) a[k] -= s * 0.5 * L * m[k] / (double)k;
  }
  // Line-doublet: Omega = (i h / (2 pi)) integral of P(X) / (z - zeta) dX with
  // P(X) = a + b X - c X^2 (see doubletField).
  for (int j = nd.d0; j < nd.d1; ++j) {
    const cplx h = 1.0 / cplx(db_.ihr[j], db_.ihi[j]);
    const cplx d = (cplx(db_.cx[j], db_.cy[j]) - c) / Rs, hh = h / Rs;
    std::fill(m.begin(), m.end(), 0.0);
    for (int g = 0; g < nq; ++g) {
      const double X = gx_[g];
      const cplx t = d + hh * X;
      cplx pw = gw_[g] * (db_.a[j] + db_.b[j] * X - db_.c[j] * X * X);
      m[0] += pw;
      for (int k = 1; k < p; ++k) {
        pw *= t;
        m[k] += pw;
      }
    }
    const cplx f = cplx(0.0, inv2pi) * hh;
    for (int k = 0; k < p; ++k) a[k + 1] += f * m[k];
  }
  nd.a0 = a0;
  for (int k = 1; k <= p; ++k) {
    are_[(size_t)i * p + k - 1] = a[k].real();
    aim_[(size_t)i * p + k - 1] = a[k].imag();
  }
}

// Adds the child's series, shifted to the parent's centre, to the parent's:
//   b_l = -a0 t^l / l + sum_{k=1..l} a_k s^k t^(l-k) C(l-1, k-1)
// in the scaled coefficients (t = (c_child - c_parent) / R_parent, s = R_child / R_parent).
void MultipoleTree::shiftExpansion(int ci, int pi) {
  const Node& ch = nodes_[ci];
  Node& pa = nodes_[pi];
  const int p = opt_.terms;
  const double Rp = scaleOf(pa.R), Rc = scaleOf(ch.R);
  const cplx t = cplx(ch.cx - pa.cx, ch.cy - pa.cy) / Rp;
  const double s = Rc / Rp;
  std::vector<cplx> tp(p + 1), ak(p + 1);
  tp[0] = 1.0;
  for (int k = 1; k <= p; ++k) tp[k] = tp[k - 1] * t;
  double sk = 1.0;
  for (int k = 1; k <= p; ++k) {
    sk *= s;
    ak[k] = cplx(are_[(size_t)ci * p + k - 1], aim_[(size_t)ci * p + k - 1]) * sk;
  }
  pa.a0 += ch.a0;
  for (int l = 1; l <= p; ++l) {
    cplx b = -ch.a0 * tp[l] / (double)l;
    double binom = 1.0;  // C(l-1, k-1), k = 1
    for (int k = 1; k <= l; ++k) {
      b += ak[k] * tp[l - k] * binom;
      binom = binom * (l - k) / k;
    }
    are_[(size_t)pi * p + l - 1] += b.real();
    aim_[(size_t)pi * p + l - 1] += b.imag();
  }
}

void MultipoleTree::direct(const Node& nd, double x, double y, bool wantW, Field& f) const {
  if (wantW) {
    if (nd.w1 > nd.w0)
      wellField(wx_.data() + nd.w0, wy_.data() + nd.w0, wq_.data() + nd.w0, nd.w1 - nd.w0, x, y, f);
    if (nd.l1 > nd.l0)
      lineSinkField(lcx_.data() + nd.l0, lcy_.data() + nd.l0, lihr_.data() + nd.l0,
                    lihi_.data() + nd.l0, lsc_.data() + nd.l0, lc0_.data() + nd.l0,
                    lsig_.data() + nd.l0, nd.l1 - nd.l0, x, y, f);
  } else {
    if (nd.w1 > nd.w0)
      f.phi +=
          wellSum(wx_.data() + nd.w0, wy_.data() + nd.w0, wq_.data() + nd.w0, nd.w1 - nd.w0, x, y);
    if (nd.l1 > nd.l0)
      f.phi += lineSinkSum(lcx_.data() + nd.l0, lcy_.data() + nd.l0, lihr_.data() + nd.l0,
                           lihi_.data() + nd.l0, lsc_.data() + nd.l0, lc0_.data() + nd.l0,
                           lsig_.data() + nd.l0, nd.l1 - nd.l0, x, y);
  }
  if (nd.d1 > nd.d0) doubletFieldRange(db_, nd.d0, nd.d1, x, y, wantW, f);
}

void MultipoleTree::field(double x, double y, bool wantW, Field& f) const {
  if (nodes_.empty()) return;
  const int p = opt_.terms;
  const double th2 = opt_.theta * opt_.theta;
  double phi = 0.0, wr = 0.0, wi = 0.0;
  std::array<int, 256> stack;
  int top = 0;
  stack[top++] = 0;
  while (top > 0) {
    const Node& nd = nodes_[stack[--top]];
    const double dx = x - nd.cx, dy = y - nd.cy;
    const double d2 = dx * dx + dy * dy;
    if (nd.R * nd.R < th2 * d2) {
      // 1 / (z - c) and u = R / (z - c)
      const double vr = dx / d2, vi = -dy / d2;
      const double Rs = scaleOf(nd.R);
      const double ur = Rs * vr, ui = Rs * vi;
      const double* ar = &are_[(size_t)(&nd - nodes_.data()) * p];
      const double* ai = &aim_[(size_t)(&nd - nodes_.data()) * p];
      double sr = 0.0, si = 0.0;
      if (!wantW) {
        for (int k = p - 1; k >= 0; --k) {
          const double tr = sr + ar[k], ti = si + ai[k];
          sr = tr * ur - ti * ui;
          si = tr * ui + ti * ur;
        }
      } else {
        double gr = 0.0, gi = 0.0;
        for (int k = p - 1; k >= 0; --k) {
          const double tr = sr + ar[k], ti = si + ai[k];
          sr = tr * ur - ti * ui;
          si = tr * ui + ti * ur;
          const double kk = k + 1.0;
          const double qr = gr + kk * ar[k], qi = gi + kk * ai[k];
          gr = qr * ur - qi * ui;
          gi = qr * ui + qi * ur;
        }
        // W = (1 / (z - c)) (-a0 + sum k a_k u^k)
        const double cr = gr - nd.a0;
        wr += vr * cr - vi * gi;
        wi += vr * gi + vi * cr;
      }
      phi += 0.5 * nd.a0 * std::log(d2) + sr;
    } else if (nd.child[0] < 0) {
      direct(nd, x, y, wantW, f);
    } else {
      stack[top++] = nd.child[0];
      stack[top++] = nd.child[1];
    }
  }
  f.phi += phi;
  if (wantW) {
    f.wr += wr;
    f.wi += wi;
  }
}

size_t MultipoleTree::bytes() const {
  const size_t d = sizeof(double);
  return nodes_.size() * sizeof(Node) + (are_.size() + aim_.size()) * d +
         (wx_.size() * 3 + lcx_.size() * 7) * d + (size_t)db_.size() * 7 * d;
}

}  // namespace detail

// ---------------------------------------------------------------------------------

long FieldEvaluator::multipolePoints(long elements) {
  if (elements < kMultipoleElements) return std::numeric_limits<long>::max();
  return std::max(kMultipolePoints, 2000000L / elements);
}

long FieldEvaluator::expandableElements(const Solution& s) {
  const Solution::State& st = *s.s_;
  return (long)st.wq.size() + (long)st.ssig.size() + st.dbArr.size();
}

bool FieldEvaluator::multipoleFor(const Solution& s, long points) {
  return points >= multipolePoints(expandableElements(s));
}

FieldEvaluator::FieldEvaluator(const Solution& s, long points)
    : FieldEvaluator(s, multipoleFor(s, points) ? Path::Multipole : Path::Direct) {}

FieldEvaluator::FieldEvaluator(const Solution& s, Path path, const MultipoleOptions& options)
    : s_(s) {
  if (path != Path::Multipole) return;
  const Solution::State& st = *s.s_;
  // Elements at coordinates that are not finite have no place in a tree: such a model
  // stays on the direct path, which gives what it gives there.
  auto finite = [](const std::vector<double>& v) {
    return std::all_of(v.begin(), v.end(), [](double d) { return std::isfinite(d); });
  };
  if (!finite(st.wx) || !finite(st.wy) || !finite(st.scx) || !finite(st.scy) || !finite(st.sihr) ||
      !finite(st.sihi) || !finite(st.dbArr.cx) || !finite(st.dbArr.cy) || !finite(st.dbArr.ihr) ||
      !finite(st.dbArr.ihi))
    return;
  detail::MultipoleTree::Wells w{st.wx.data(), st.wy.data(), st.wq.data(), (int)st.wq.size()};
  detail::MultipoleTree::LineSinks l{st.scx.data(),  st.scy.data(),      st.sihr.data(),
                                     st.sihi.data(), st.sscale.data(),   st.sc0.data(),
                                     st.ssig.data(), (int)st.ssig.size()};
  tree_ = std::make_unique<detail::MultipoleTree>(w, l, &st.dbArr, options);
}

FieldEvaluator::~FieldEvaluator() = default;

detail::Field FieldEvaluator::field(double x, double y, bool wantW) const {
  const Solution::State& st = *s_.s_;
  const Aquifer& A = st.model.aquifer;
  detail::Field f;
  f.phi = -(A.qx0 * x + A.qy0 * y) + st.constant;
  if (wantW) {
    f.wr = A.qx0;
    f.wi = -A.qy0;
  }
  tree_->field(x, y, wantW, f);
  // The elements without an expansion: area sinks, ponds, transient wells.
  detail::areaSinkField(st.sinkArr, x, y, wantW, f);
  for (const auto& p : st.ponds) {
    if (p.rate == 0.0) continue;
    f.phi += p.rate * detail::pondPotential(p.x, p.y, p.R, x, y);
    if (wantW) {
      const auto w = detail::pondW(p.x, p.y, p.R, x, y);
      f.wr += p.rate * w.real();
      f.wi += p.rate * w.imag();
    }
  }
  if (!st.theis.empty()) {
    f.phi += st.theisPotential(x, y);
    if (wantW) {
      const std::complex<double> tw = st.theisW(x, y);
      f.wr += tw.real();
      f.wi += tw.imag();
    }
  }
  return f;
}

double FieldEvaluator::potential(double x, double y) const {
  if (!tree_) return s_.potential(x, y);
  return field(x, y, false).phi;
}

double FieldEvaluator::head(double x, double y) const {
  if (!tree_) return s_.head(x, y);
  const Solution::State& st = *s_.s_;
  if (st.ignoredAt(x, y)) return kDryHead;
  return st.aqOf(st.domainAt(x, y)).headFromPhi(field(x, y, false).phi);
}

std::pair<double, double> FieldEvaluator::discharge(double x, double y) const {
  if (!tree_) return s_.discharge(x, y);
  const detail::Field f = field(x, y, true);
  return {f.wr, -f.wi};
}

PointValues FieldEvaluator::evaluate(double x, double y, std::optional<double> z) const {
  if (!tree_) return s_.evaluate(x, y, z);
  return s_.s_->pointValues(x, y, z, field(x, y, true));
}

std::vector<double> FieldEvaluator::heads(const std::vector<double>& xs,
                                          const std::vector<double>& ys) const {
  const size_t m = std::min(xs.size(), ys.size());
  std::vector<double> h(m);
#pragma omp parallel for schedule(dynamic, 16)
  for (long i = 0; i < (long)m; ++i) h[i] = head(xs[i], ys[i]);
  return h;
}

void setStandInStrengths(Solution& s, unsigned seed) {
  Solution::State& st = *s.s_;
  std::mt19937 rng(seed);
  auto u = [&] { return rng() / 4294967296.0; };
  for (int j = 0; j < st.n; ++j) {
    switch (st.ukind[j]) {
      case UnknownKind::WellQ: st.x[j] = 200.0 + 800.0 * u(); break;
      case UnknownKind::SegSigma: st.x[j] = 0.2 * (u() - 0.3); break;
      case UnknownKind::GalleryPhi: st.x[j] = 1000.0 * u(); break;
      case UnknownKind::Constant: st.x[j] = 1e4 * (1.0 + u()); break;
      case UnknownKind::DbNode:
      case UnknownKind::DbPara: st.x[j] = 10.0 * (u() - 0.5); break;
      case UnknownKind::PondRate: st.x[j] = 1e-3 * u(); break;
    }
  }
  st.syncStrengths(false);
}

}  // namespace tarno::engine
