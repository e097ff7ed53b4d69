// The hierarchical matrix: cluster trees, block partition, cross approximation,
// recompression and the product (see engine/hmatrix.h).
#include "engine/hmatrix.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tarno::engine::hmat {

void Box::add(double x, double y) {
  x0 = std::min(x0, x);
  y0 = std::min(y0, y);
  x1 = std::max(x1, x);
  y1 = std::max(y1, y);
}

void Box::add(const Box& b) {
  x0 = std::min(x0, b.x0);
  y0 = std::min(y0, b.y0);
  x1 = std::max(x1, b.x1);
  y1 = std::max(y1, b.y1);
}

double Box::diam() const { return x1 < x0 ? 0.0 : std::hypot(x1 - x0, y1 - y0); }

double Box::dist(const Box& b) const {
  const double dx = std::max({0.0, b.x0 - x1, x0 - b.x1});
  const double dy = std::max({0.0, b.y0 - y1, y0 - b.y1});
  return std::hypot(dx, dy);
}

// ---- Cluster tree -------------------------------------------------------------------

namespace {

void split(ClusterTree& t, const std::vector<Box>& items, int node, int leafSize) {
  ClusterTree::Node nd = t.nodes[node];
  if (nd.size() <= leafSize) return;
  // Bisect the box of the items' centres along its longer side.
  Box c;
  for (int p = nd.begin; p < nd.end; ++p) c.add(items[t.perm[p]].cx(), items[t.perm[p]].cy());
  const bool alongX = c.x1 - c.x0 >= c.y1 - c.y0;
  const double mid = alongX ? c.cx() : c.cy();
  auto key = [&](int i) { return alongX ? items[i].cx() : items[i].cy(); };
  auto first = t.perm.begin() + nd.begin, last = t.perm.begin() + nd.end;
  auto at = std::partition(first, last, [&](int i) { return key(i) < mid; });
  if (at == first || at == last) {
    // All centres on one line across the axis (or coincident): halve by count.
    at = first + nd.size() / 2;
    std::nth_element(first, at, last, [&](int a, int b) { return key(a) < key(b); });
  }
  const int cut = (int)(at - t.perm.begin());
  for (int k = 0; k < 2; ++k) {
    ClusterTree::Node ch;
    ch.begin = k == 0 ? nd.begin : cut;
    ch.end = k == 0 ? cut : nd.end;
    for (int p = ch.begin; p < ch.end; ++p) ch.box.add(items[t.perm[p]]);
    t.nodes[node].child[k] = (int)t.nodes.size();
    t.nodes.push_back(ch);
  }
  const int c0 = t.nodes[node].child[0], c1 = t.nodes[node].child[1];
  split(t, items, c0, leafSize);
  split(t, items, c1, leafSize);
}

}  // namespace

ClusterTree ClusterTree::build(const std::vector<Box>& items, int leafSize) {
  ClusterTree t;
  const int n = (int)items.size();
  t.perm.resize(n);
  std::iota(t.perm.begin(), t.perm.end(), 0);
  Node root;
  root.begin = 0;
  root.end = n;
  for (const Box& b : items) root.box.add(b);
  t.nodes.push_back(root);
  split(t, items, 0, std::max(1, leafSize));
  t.pos.assign(n, 0);
  for (int p = 0; p < n; ++p) t.pos[t.perm[p]] = p;
  return t;
}

// ---- Cross approximation -------------------------------------------------------------

bool crossApproximation(const EntrySource& src, const int* rows, int m, const int* cols, int k, double tol,
                        int maxRank, Eigen::MatrixXd& U, Eigen::MatrixXd& V) {
  // The ACA's own stopping tolerance; the truncation below takes the rest of tol.
  const double tolAca = 0.25 * tol;
  std::vector<Eigen::VectorXd> us, vs;
  std::vector<char> rowUsed(m, 0);
  Eigen::VectorXd row(k), col(m);
  double norm2 = 0.0;  // ||U V^T||_F^2 of the approximation so far
  int i = 0, small = 0;
  bool done = false;
  while (!done) {
    if ((int)us.size() >= maxRank) return false;
    rowUsed[i] = 1;
    src.block(rows + i, 1, cols, k, row.data());
    for (size_t l = 0; l < us.size(); ++l) row -= us[l](i) * vs[l];
    Eigen::Index j = 0;
    const double piv = row.cwiseAbs().maxCoeff(&j);
    if (!(piv > 0.0)) {
      // This row is reproduced exactly: try another one not yet used.
      int next = -1;
      for (int r = 0; r < m; ++r)
        if (!rowUsed[r]) { next = r; break; }
      if (next < 0 || !std::isfinite(piv)) {
        if (!std::isfinite(piv)) return false;
        break;
      }
      i = next;
      continue;
    }
    Eigen::VectorXd v = row / row(j);
    src.block(rows, m, cols + j, 1, col.data());
    for (size_t l = 0; l < us.size(); ++l) col -= vs[l](j) * us[l];
    const double uu = col.squaredNorm(), vv = v.squaredNorm();
    for (size_t l = 0; l < us.size(); ++l) norm2 += 2.0 * us[l].dot(col) * vs[l].dot(v);
    norm2 += uu * vv;
    us.push_back(col);
    vs.push_back(std::move(v));
    // Two updates in a row below the tolerance: a single small one may be a pivot that
    // happened to miss the rest of the block.
    small = std::sqrt(uu * vv) <= tolAca * std::sqrt(std::max(norm2, 0.0)) ? small + 1 : 0;
    if (small >= 2) break;
    // The next row: the largest entry of the new column among the rows not used yet.
    int next = -1;
    double best = -1.0;
    for (int r = 0; r < m; ++r)
      if (!rowUsed[r] && std::fabs(col(r)) > best) {
        best = std::fabs(col(r));
        next = r;
      }
    if (next < 0) break;
    i = next;
  }
  const int r = (int)us.size();
  if (r == 0) {
    U.resize(m, 0);
    V.resize(k, 0);
    return true;
  }
  Eigen::MatrixXd A(m, r), B(k, r);
  for (int l = 0; l < r; ++l) {
    A.col(l) = us[l];
    B.col(l) = vs[l];
  }
  // Recompression: A B^T = Qa Ra Rb^T Qb^T; the SVD of the small core drops the singular
  // values whose tail stays within the rest of the tolerance.
  Eigen::HouseholderQR<Eigen::MatrixXd> qa(A), qb(B);
  const Eigen::MatrixXd Ra = qa.matrixQR().topRows(r).triangularView<Eigen::Upper>();
  const Eigen::MatrixXd Rb = qb.matrixQR().topRows(r).triangularView<Eigen::Upper>();
  Eigen::JacobiSVD<Eigen::MatrixXd> svd(Ra * Rb.transpose(), Eigen::ComputeFullU | Eigen::ComputeFullV);
  const Eigen::VectorXd& sv = svd.singularValues();
  const double total = sv.squaredNorm();
  const double keepErr2 = std::pow(0.75 * tol, 2) * total;
  int p = r;
  double tail = 0.0;
  while (p > 0 && tail + sv(p - 1) * sv(p - 1) <= keepErr2) {
    tail += sv(p - 1) * sv(p - 1);
    --p;
  }
  const Eigen::MatrixXd Qa = qa.householderQ() * Eigen::MatrixXd::Identity(m, r);
  const Eigen::MatrixXd Qb = qb.householderQ() * Eigen::MatrixXd::Identity(k, r);
  U = Qa * (svd.matrixU().leftCols(p) * sv.head(p).asDiagonal());
  V = Qb * svd.matrixV().leftCols(p);
  return true;
}

// ---- The matrix -------------------------------------------------------------------

void HMatrix::partition(int r, int c, std::vector<std::pair<int, int>>& admissible,
                        std::vector<std::pair<int, int>>& near) const {
  const ClusterTree::Node& R = rt_.nodes[r];
  const ClusterTree::Node& C = ct_.nodes[c];
  const double d = R.box.dist(C.box);
  if (d > 0.0 && std::min(R.box.diam(), C.box.diam()) <= opt_.eta * d) {
    admissible.emplace_back(r, c);
    return;
  }
  if (R.leaf() && C.leaf()) {
    near.emplace_back(r, c);
    return;
  }
  // Split the larger cluster (both when neither is a leaf and they are alike in size).
  const bool splitR = !R.leaf() && (C.leaf() || R.box.diam() >= 0.5 * C.box.diam());
  const bool splitC = !C.leaf() && (R.leaf() || C.box.diam() >= 0.5 * R.box.diam());
  if (splitR && splitC) {
    for (int a : R.child)
      for (int b : C.child) partition(a, b, admissible, near);
  } else if (splitR) {
    for (int a : R.child) partition(a, c, admissible, near);
  } else {
    for (int b : C.child) partition(r, b, admissible, near);
  }
}

void HMatrix::fillDense(Block& b, const EntrySource& src) const {
  const ClusterTree::Node& R = rt_.nodes[b.rowNode];
  const ClusterTree::Node& C = ct_.nodes[b.colNode];
  b.lowRank = false;
  b.D.resize(R.size(), C.size());
  src.block(rt_.perm.data() + R.begin, R.size(), ct_.perm.data() + C.begin, C.size(), b.D.data());
}

void HMatrix::fillLowRank(Block& b, const EntrySource& src, double tol) const {
  const ClusterTree::Node& R = rt_.nodes[b.rowNode];
  const ClusterTree::Node& C = ct_.nodes[b.colNode];
  const int maxRank = std::min(R.size(), C.size()) / 2;
  if (maxRank >= 1 && crossApproximation(src, rt_.perm.data() + R.begin, R.size(), ct_.perm.data() + C.begin,
                                         C.size(), tol, maxRank, b.U, b.V)) {
    b.lowRank = true;
    return;
  }
  fillDense(b, src);
}

HMatrix::HMatrix(const std::vector<Box>& rowBoxes, const std::vector<Box>& colBoxes, const EntrySource& src,
                 const Options& opt)
    : opt_(opt) {
  rt_ = ClusterTree::build(rowBoxes, opt.leafSize);
  ct_ = ClusterTree::build(colBoxes, opt.leafSize);
  if (rowBoxes.empty() || colBoxes.empty()) return;
  std::vector<std::pair<int, int>> adm, near;
  partition(0, 0, adm, near);
  blocks_.resize(adm.size() + near.size());
  for (size_t b = 0; b < adm.size(); ++b) {
    blocks_[b].rowNode = adm[b].first;
    blocks_[b].colNode = adm[b].second;
    blocks_[b].lowRank = true;
  }
  for (size_t b = 0; b < near.size(); ++b) {
    blocks_[adm.size() + b].rowNode = near[b].first;
    blocks_[adm.size() + b].colNode = near[b].second;
  }
#pragma omp parallel for schedule(dynamic, 1)
  for (long b = 0; b < (long)blocks_.size(); ++b) {
    if (blocks_[b].lowRank) fillLowRank(blocks_[b], src, opt_.tol);
    else fillDense(blocks_[b], src);
  }
  double rankSum = 0.0;
  for (const Block& b : blocks_) {
    if (b.lowRank) {
      ++stats_.lowRankBlocks;
      stats_.lowRankEntries += (size_t)b.U.size() + (size_t)b.V.size();
      stats_.maxRank = std::max(stats_.maxRank, (int)b.U.cols());
      rankSum += (double)b.U.cols();
    } else {
      ++stats_.denseBlocks;
      stats_.denseEntries += (size_t)b.D.size();
    }
  }
  stats_.meanRank = stats_.lowRankBlocks ? rankSum / stats_.lowRankBlocks : 0.0;
}

void HMatrix::multiply(const double* x, double* y) const {
  const int m = rows(), n = cols();
  Eigen::VectorXd xt(n), yt = Eigen::VectorXd::Zero(m);
  for (int p = 0; p < n; ++p) xt(p) = x[ct_.perm[p]];
  // Small matrices are multiplied by one thread: a parallel region costs more there.
#pragma omp parallel if (stats_.denseEntries + stats_.lowRankEntries >= (size_t)4000000)
  {
    Eigen::VectorXd local = Eigen::VectorXd::Zero(m);
    Eigen::VectorXd tmp;
#pragma omp for schedule(dynamic, 16) nowait
    for (long k = 0; k < (long)blocks_.size(); ++k) {
      const Block& b = blocks_[k];
      const ClusterTree::Node& R = rt_.nodes[b.rowNode];
      const ClusterTree::Node& C = ct_.nodes[b.colNode];
      auto xs = xt.segment(C.begin, C.size());
      auto ys = local.segment(R.begin, R.size());
      if (b.lowRank) {
        if (b.U.cols() == 0) continue;
        tmp.noalias() = b.V.transpose() * xs;
        ys.noalias() += b.U * tmp;
      } else {
        ys.noalias() += b.D * xs;
      }
    }
#pragma omp critical
    yt += local;
  }
  for (int p = 0; p < m; ++p) y[rt_.perm[p]] = yt(p);
}

namespace {

// The rows of M (in the order of idx) summed by group: ids gets the groups met, S their
// sums (weighted by w where given).
void sumByGroup(const int* idx, int len, const std::vector<int>& group, const std::vector<double>* w,
                const Eigen::MatrixXd& M, std::vector<int>& ids, Eigen::MatrixXd& S) {
  std::vector<std::pair<int, int>> gi;
  for (int a = 0; a < len; ++a)
    if (group[idx[a]] >= 0) gi.emplace_back(group[idx[a]], a);
  std::sort(gi.begin(), gi.end());
  ids.clear();
  for (size_t k = 0; k < gi.size(); ++k)
    if (ids.empty() || ids.back() != gi[k].first) ids.push_back(gi[k].first);
  S.setZero((Eigen::Index)ids.size(), M.cols());
  size_t at = 0;
  for (size_t k = 0; k < gi.size(); ++k) {
    if (gi[k].first != ids[at]) ++at;
    const double f = w ? (*w)[idx[gi[k].second]] : 1.0;
    if (f != 0.0) S.row(at) += f * M.row(gi[k].second);
  }
}

}  // namespace

void HMatrix::aggregate(const std::vector<int>& rowGroup, const std::vector<double>& rowWeight,
                        const std::vector<int>& colGroup, Eigen::MatrixXd& E) const {
  std::vector<int> ri, ci;
  Eigen::MatrixXd Su, Sv;
  for (const Block& b : blocks_) {
    const ClusterTree::Node& R = rt_.nodes[b.rowNode];
    const ClusterTree::Node& C = ct_.nodes[b.colNode];
    const int* rows = rt_.perm.data() + R.begin;
    const int* cols = ct_.perm.data() + C.begin;
    if (b.lowRank) {
      if (b.U.cols() == 0) continue;
      sumByGroup(rows, R.size(), rowGroup, &rowWeight, b.U, ri, Su);
      sumByGroup(cols, C.size(), colGroup, nullptr, b.V, ci, Sv);
      const Eigen::MatrixXd G = Su * Sv.transpose();
      for (size_t a = 0; a < ri.size(); ++a)
        for (size_t c = 0; c < ci.size(); ++c) E(ri[a], ci[c]) += G(a, c);
    } else {
      for (int c = 0; c < C.size(); ++c) {
        const int h = colGroup[cols[c]];
        if (h < 0) continue;
        for (int r = 0; r < R.size(); ++r) {
          const int g = rowGroup[rows[r]];
          if (g >= 0) E(g, h) += rowWeight[rows[r]] * b.D(r, c);
        }
      }
    }
  }
}

}  // namespace tarno::engine::hmat
