// The compressed collocation operator, its preconditioner and the iterative solve
// (see engine/hoperator.h).
#include "engine/hoperator.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>

namespace tarno::engine {

namespace {

double seconds(std::chrono::steady_clock::time_point a) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - a).count();
}

std::string fmt(const char* f, double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, f, v);
  return buf;
}

// The extent of unknown j's element: where its influence is not smooth.
hmat::Box unknownBox(const Solution::State& s, int j) {
  hmat::Box b;
  const int o = s.uowner[j];
  switch (s.ukind[j]) {
    case UnknownKind::WellQ: b.add(s.wells[o].x, s.wells[o].y); break;
    case UnknownKind::SegSigma: {
      const SegEl& e = s.segs[o];
      b.add(e.x1, e.y1);
      b.add(e.x2, e.y2);
      break;
    }
    case UnknownKind::PondRate: {
      const PondEl& p = s.ponds[o];
      b.add(p.x - p.R, p.y - p.R);
      b.add(p.x + p.R, p.y + p.R);
      break;
    }
    case UnknownKind::DbNode:
    case UnknownKind::DbPara:
      for (int k = 0; k < 4; k += 2)
        if (s.udb[j][k] >= 0) {
          const auto& g = s.edges[s.udb[j][k]].g;
          b.add(g.x1, g.y1);
          b.add(g.x2, g.y2);
        }
      break;
    case UnknownKind::GalleryPhi:
    case UnknownKind::Constant: break;
  }
  return b;
}

// Unknowns whose column of P is held in the H-matrix: those with an element in the
// plane (the constant's column is ones, a gallery's zeros).
bool inH(const Solution::State& s, int j) {
  return s.ukind[j] != UnknownKind::Constant && s.ukind[j] != UnknownKind::GalleryPhi;
}

}  // namespace

// ---- P --------------------------------------------------------------------------------

void CollocationSource::block(const int* rows, int m, const int* cols, int k, double* out) const {
  std::vector<double> gx(m), gy(m);
  for (int a = 0; a < m; ++a) {
    gx[a] = s_.px[rows[a]];
    gy[a] = s_.py[rows[a]];
  }
  for (int b = 0; b < k; ++b) elementOf(s_, cols[b]).column(s_, cols[b], gx.data(), gy.data(), m, out + (size_t)b * m);
}

// ---- S, W and rowScale ------------------------------------------------------------------

SparseRowSink::SparseRowSink(const Solution::State& s, const CollocationSource& P)
    : rowScale(s.n, 1.0), entries(s.n), dense(s.n), s_(s), P_(P) {}

double SparseRowSink::pEntry(int i, int j) const {
  if (!elementOf(s_, i).hasPoint()) return 0.0;
  double v = 0.0;
  P_.block(&i, 1, &j, 1, &v);
  return v;
}

void SparseRowSink::clearRow(int i) {
  rowScale[i] = 0.0;
  entries[i].clear();
  dense[i].clear();
}

void SparseRowSink::add(int i, int j, double v) {
  if (!dense[i].empty()) dense[i][j] += v;
  else entries[i].emplace_back(j, v);
}

void SparseRowSink::set(int i, int j, double v) {
  if (!dense[i].empty()) {
    dense[i][j] = v;
    return;
  }
  auto& r = entries[i];
  r.erase(std::remove_if(r.begin(), r.end(), [j](const auto& e) { return e.first == j; }), r.end());
  // What P already puts there is taken off, so that the entry becomes v.
  const double p = rowScale[i] != 0.0 ? rowScale[i] * pEntry(i, j) : 0.0;
  r.emplace_back(j, v - p);
}

void SparseRowSink::scaleRow(int i, double f) {
  rowScale[i] *= f;
  for (auto& e : entries[i]) e.second *= f;
  for (double& v : dense[i]) v *= f;
}

void SparseRowSink::setRow(int i, const std::function<double(int)>& value) {
  rowScale[i] = 0.0;
  entries[i].clear();
  dense[i].resize(s_.n);
  for (int j = 0; j < s_.n; ++j) dense[i][j] = value(j);
}

void SparseRowSink::finish() {
  for (auto& r : entries) {
    if (r.size() < 2) continue;
    std::sort(r.begin(), r.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    size_t w = 0;
    for (size_t k = 0; k < r.size(); ++k) {
      if (w > 0 && r[w - 1].first == r[k].first) r[w - 1].second += r[k].second;
      else r[w++] = r[k];
    }
    r.resize(w);
  }
}

// ---- The operator -----------------------------------------------------------------------

void IterativeSolve::apply(const double* x, double* y) const {
  const int n = (int)rowOfH.size();
  std::vector<double> xh(hCols.size()), yh(hRows.size(), 0.0);
  for (size_t c = 0; c < hCols.size(); ++c) xh[c] = x[hCols[c]];
  if (H) H->multiply(xh.data(), yh.data());
  const double xc = constant >= 0 ? x[constant] : 0.0;
  // The sparse part is a few entries a row: not worth the threads' start (on a loaded
  // machine each parallel region costs a time slice of the slowest thread).
  for (int i = 0; i < n; ++i) {
    double v = 0.0;
    const double sc = own->rowScale[i];
    if (sc != 0.0 && rowOfH[i] >= 0) v = sc * (yh[rowOfH[i]] + xc);
    for (const auto& [j, a] : own->entries[i]) v += a * x[j];
    const auto& d = own->dense[i];
    if (!d.empty())
      for (int j = 0; j < n; ++j) v += d[j] * x[j];
    y[i] = v;
  }
}

void IterativeSolve::fillBlock(const std::vector<int>& I, Eigen::MatrixXd& B) const {
  const int m = (int)I.size();
  B.setZero(m, m);
  std::vector<int> pr;  // positions in I of the rows with a point and a potential part
  for (int a = 0; a < m; ++a)
    if (rowOfH[I[a]] >= 0 && own->rowScale[I[a]] != 0.0) pr.push_back(a);
  if (!pr.empty()) {
    std::vector<int> rows(pr.size());
    for (size_t a = 0; a < pr.size(); ++a) rows[a] = I[pr[a]];
    Eigen::MatrixXd Pb((int)pr.size(), m);
    source.block(rows.data(), (int)rows.size(), I.data(), m, Pb.data());
    for (size_t a = 0; a < pr.size(); ++a) B.row(pr[a]) = own->rowScale[I[pr[a]]] * Pb.row(a);
  }
  for (int a = 0; a < m; ++a) {
    const int i = I[a];
    for (const auto& [j, v] : own->entries[i]) {
      const auto at = std::lower_bound(I.begin(), I.end(), j);
      if (at != I.end() && *at == j) B(a, at - I.begin()) += v;
    }
    const auto& d = own->dense[i];
    if (!d.empty())
      for (int b = 0; b < m; ++b) B(a, b) += d[I[b]];
  }
}

void IterativeSolve::buildCoarse(int groups) {
  hasCoarse = false;
  if (settings.coarse == CompressedSettings::Coarse::None || groups < 2) return;
  Eigen::MatrixXd C = Eigen::MatrixXd::Zero(groups, groups);
  std::vector<int> rg(hRows.size()), cg(hCols.size());
  std::vector<double> w(hRows.size());
  for (size_t r = 0; r < hRows.size(); ++r) {
    rg[r] = groupOf[hRows[r]];
    w[r] = own->rowScale[hRows[r]];
  }
  for (size_t c = 0; c < hCols.size(); ++c) cg[c] = groupOf[hCols[c]];
  if (H) H->aggregate(rg, w, cg, C);
  const int n = (int)rowOfH.size();
  for (int i = 0; i < n; ++i) {
    const int g = groupOf[i];
    if (constant >= 0 && rowOfH[i] >= 0) C(g, groupOf[constant]) += own->rowScale[i];
    for (const auto& [j, v] : own->entries[i]) C(g, groupOf[j]) += v;
    const auto& d = own->dense[i];
    for (int j = 0; j < (int)d.size(); ++j) C(g, groupOf[j]) += d[j];
  }
  E.compute(C);
  const auto& U = E.matrixLU();
  const double scale = C.cwiseAbs().maxCoeff();
  for (Eigen::Index i = 0; i < U.rows(); ++i)
    if (!(std::fabs(U(i, i)) > 1e-14 * scale)) return;  // singular: no coarse correction
  hasCoarse = true;
}

void IterativeSolve::precondition(const double* r, double* z) const {
  const int n = (int)rowOfH.size();
  if (!hasCoarse) {
    precond.apply(r, z);
    return;
  }
  const int ng = (int)E.rows();
  Eigen::VectorXd c = Eigen::VectorXd::Zero(ng);
  for (int i = 0; i < n; ++i) c(groupOf[i]) += r[i];
  const Eigen::VectorXd e = E.solve(c);
  if (settings.coarse == CompressedSettings::Coarse::Additive) {
    precond.apply(r, z);
    for (int i = 0; i < n; ++i) z[i] += e(groupOf[i]);
    return;
  }
  // Coarse first, then the blocks on what is left of the residual.
  std::vector<double> z1(n), r2(n);
  for (int i = 0; i < n; ++i) z1[i] = e(groupOf[i]);
  apply(z1.data(), r2.data());
  for (int i = 0; i < n; ++i) r2[i] = r[i] - r2[i];
  precond.apply(r2.data(), z);
  for (int i = 0; i < n; ++i) z[i] += z1[i];
}

size_t IterativeSolve::bytes() const {
  size_t b = H ? H->stats().bytes() : 0;
  if (own) {
    for (const auto& r : own->entries) b += 16 * r.size();
    for (const auto& d : own->dense) b += 8 * d.size();
  }
  return b + precond.bytes();
}

// ---- Preconditioner groups ----------------------------------------------------------------

std::vector<std::vector<int>> preconditionerGroups(const Solution::State& s, const IterativeSolve& it,
                                                   int blockSize) {
  const int n = s.n;
  blockSize = std::max(1, blockSize);
  // Keys that hold the unknowns of one string, one polygon or wall together.
  std::map<std::pair<int, int>, std::vector<int>> keyed;
  std::vector<std::vector<int>> singles;
  for (int j = 0; j < n; ++j) {
    const int o = s.uowner[j];
    switch (s.ukind[j]) {
      case UnknownKind::SegSigma: keyed[{0, s.segs[o].string}].push_back(j); break;
      case UnknownKind::GalleryPhi: keyed[{0, s.galleries[o].string}].push_back(j); break;
      case UnknownKind::DbNode:
      case UnknownKind::DbPara: {
        const DbEdge& d = s.edges[o];
        keyed[{d.wall ? 2 : 1, d.owner}].push_back(j);
        break;
      }
      default: singles.push_back({j});
    }
  }
  std::vector<std::vector<int>> groups;
  for (auto& [key, idx] : keyed) {
    bool gallery = false;
    for (int j : idx) gallery = gallery || s.ukind[j] == UnknownKind::GalleryPhi;
    // A gallery's row sums its segments: it stays whole. Strings and polygons are cut
    // into pieces of consecutive unknowns (polygons into larger ones: their nodes are
    // shared between neighbouring edges).
    const int piece = gallery ? (int)idx.size() : (key.first == 0 ? blockSize : 2 * blockSize);
    for (size_t a = 0; a < idx.size(); a += piece)
      groups.emplace_back(idx.begin() + a, idx.begin() + std::min(idx.size(), a + piece));
  }
  for (auto& g : singles) groups.push_back(std::move(g));
  // Small groups are gathered with their neighbours in the order of the column tree.
  std::vector<int> hColOf(n, -1);
  for (size_t c = 0; c < it.hCols.size(); ++c) hColOf[it.hCols[c]] = (int)c;
  auto place = [&](const std::vector<int>& g) {
    int p = 1 << 30;
    for (int j : g)
      if (hColOf[j] >= 0 && it.H) p = std::min(p, it.H->colTree().pos[hColOf[j]]);
    return p;
  };
  std::vector<std::pair<int, int>> order;  // (place, group)
  for (size_t g = 0; g < groups.size(); ++g) order.emplace_back(place(groups[g]), (int)g);
  std::sort(order.begin(), order.end());
  std::vector<std::vector<int>> out;
  std::vector<int> cur;
  for (const auto& [p, g] : order) {
    auto& grp = groups[g];
    if ((int)grp.size() >= blockSize / 2) {
      out.push_back(std::move(grp));
      continue;
    }
    if ((int)(cur.size() + grp.size()) > blockSize) {
      out.push_back(std::move(cur));
      cur.clear();
    }
    cur.insert(cur.end(), grp.begin(), grp.end());
  }
  if (!cur.empty()) out.push_back(std::move(cur));
  for (auto& g : out) std::sort(g.begin(), g.end());
  return out;
}

// ---- The steps of the solve ------------------------------------------------------------------

void compressInfluence(Solution::State& s, const CompressedSettings& settings, const LineSink& log) {
  if (s.iterative && s.iterative->H && (int)s.iterative->rowOfH.size() == s.n) return;
  const auto t0 = std::chrono::steady_clock::now();
  auto it = std::make_shared<IterativeSolve>(s);
  it->settings = settings;
  it->rowOfH.assign(s.n, -1);
  std::vector<hmat::Box> rowBoxes, colBoxes;
  for (int i = 0; i < s.n; ++i) {
    if (elementOf(s, i).hasPoint()) {
      it->rowOfH[i] = (int)it->hRows.size();
      it->hRows.push_back(i);
      hmat::Box b;
      b.add(s.px[i], s.py[i]);
      rowBoxes.push_back(b);
    }
    if (inH(s, i)) {
      it->hCols.push_back(i);
      colBoxes.push_back(unknownBox(s, i));
    }
    if (s.ukind[i] == UnknownKind::Constant) it->constant = i;
  }
  // The source numbers rows and columns of H as unknowns: translate H's indices.
  struct Translated final : hmat::EntrySource {
    const CollocationSource& src;
    const std::vector<int>& r;
    const std::vector<int>& c;
    Translated(const CollocationSource& s_, const std::vector<int>& r_, const std::vector<int>& c_)
        : src(s_), r(r_), c(c_) {}
    void block(const int* rows, int m, const int* cols, int k, double* out) const override {
      std::vector<int> rr(m), cc(k);
      for (int a = 0; a < m; ++a) rr[a] = r[rows[a]];
      for (int b = 0; b < k; ++b) cc[b] = c[cols[b]];
      src.block(rr.data(), m, cc.data(), k, out);
    }
  } translated(it->source, it->hRows, it->hCols);
  try {
    it->H = std::make_unique<hmat::HMatrix>(rowBoxes, colBoxes, translated, settings.h);
  } catch (const std::bad_alloc&) {
    throw FatalError("Not enough memory for the compressed matrix of the " + std::to_string(s.n) +
                     " equations of this model.");
  }
  it->compressSeconds = seconds(t0);
  const auto& st = it->H->stats();
  s.iterative = it;
  if (log)
    log("Compressed influence matrix: " + std::to_string(st.lowRankBlocks) + " low-rank blocks (mean rank " +
        fmt("%.1f", st.meanRank) + ", largest " + std::to_string(st.maxRank) + "), " +
        std::to_string(st.denseBlocks) + " dense blocks, " + fmt("%.1f", st.bytes() / 1048576.0) + " MB (dense " +
        fmt("%.1f", 8.0 * s.n * (double)s.n / 1048576.0) + " MB), built in " + fmt("%.2f", it->compressSeconds) +
        " s");
}

void assembleCompressed(Solution::State& s, const LineSink& log) {
  IterativeSolve& it = *s.iterative;
  auto own = std::make_unique<SparseRowSink>(s, it.source);
  for (int i = 0; i < s.n; ++i) elementOf(s, i).assembleRow(s, i, *own);
  s.assembleAreaRows(*own);
  own->finish();
  it.own = std::move(own);
  auto groups = preconditionerGroups(s, it, it.settings.blockSize);
  it.groupOf.assign(s.n, -1);
  for (size_t g = 0; g < groups.size(); ++g)
    for (int j : groups[g]) it.groupOf[j] = (int)g;
  const int ng = (int)groups.size();
  it.precond = krylov::BlockJacobi(s.n, std::move(groups),
                                   [&it](const std::vector<int>& I, Eigen::MatrixXd& B) { it.fillBlock(I, B); });
  it.buildCoarse(ng);
  it.assembled = true;
  if (log && it.precond.singularBlocks() > 0)
    log("Preconditioner: " + std::to_string(it.precond.singularBlocks()) + " of " +
        std::to_string(it.precond.blocks()) + " blocks are singular and left out");
}

std::vector<double> solveCompressed(Solution::State& s, const std::vector<double>& b, const LineSink& log) {
  IterativeSolve& it = *s.iterative;
  std::vector<double> x = s.x;
  for (double& v : x)
    if (!std::isfinite(v)) v = 0.0;
  const auto op = [&it](const double* in, double* out) { it.apply(in, out); };
  const auto pc = [&it](const double* in, double* out) { it.precondition(in, out); };
  const auto progress = [&log](int k, double r) {
    if (log) log("  GMRES iteration " + std::to_string(k) + ": relative residual " + fmt("%.3E", r));
  };
  const krylov::GmresResult r = krylov::gmres(s.n, op, pc, b.data(), x.data(), it.settings.gmres, progress);
  it.lastIterations = r.iterations;
  it.lastResidual = r.relResidual;
  if (!r.converged) {
    // The accuracy of the compressed matrix bounds how far the residual can fall: a
    // residual within a hundred times the tolerance is accepted with a warning.
    if (r.relResidual <= 100.0 * it.settings.gmres.tol) {
      s.warn("the iterative solution stopped at a relative residual of " + fmt("%.3E", r.relResidual) +
             ", above the tolerance " + fmt("%.1E", it.settings.gmres.tol));
    } else {
      throw FatalError("The iterative solution of the " + std::to_string(s.n) +
                       " equations did not converge: relative residual " + fmt("%.3E", r.relResidual) + " after " +
                       std::to_string(r.iterations) +
                       " iterations. Solve with the dense method (\"solve ... dense\") instead.");
    }
  }
  return x;
}

}  // namespace tarno::engine
