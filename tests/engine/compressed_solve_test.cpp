// The large-model path: the compressed influence matrix (engine/hmatrix.h), GMRES with
// its block preconditioner (engine/krylov.h) and the compressed collocation operator
// (engine/hoperator.h). The compressed solve must give the dense solve's answer: the
// unknowns within 1e-8 relative, heads within 1e-6, and a closed water balance.
#include "engine/command.h"
#include "engine/hmatrix.h"
#include "engine/hoperator.h"
#include "engine/krylov.h"

#include "engine/elements.h"
#include "engine/fields.h"
#include "engine/kernels.h"
#include "engine/state.h"
#include "helpers.h"
#include "support/program_runner.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <random>
#include <tuple>
#include <vector>

namespace tarno::engine {
namespace {

using testing::aquiferModel;
using testing::straightString;
using testing::well;

// ---- Compression -------------------------------------------------------------------

// Potentials of unit line-sinks (the columns) at points (the rows), with the engine's
// own kernel.
struct LineSinkKernel final : hmat::EntrySource {
  std::vector<detail::LsGeom> segs;
  std::vector<double> px, py;
  void block(const int* rows, int m, const int* cols, int k, double* out) const override {
    std::vector<double> gx(m), gy(m);
    for (int a = 0; a < m; ++a) {
      gx[a] = px[rows[a]];
      gy[a] = py[rows[a]];
    }
    for (int b = 0; b < k; ++b) detail::lineSinkColumn(segs[cols[b]], gx.data(), gy.data(), m, out + (size_t)b * m);
  }
  Eigen::MatrixXd dense(const std::vector<int>& r, const std::vector<int>& c) const {
    Eigen::MatrixXd A((int)r.size(), (int)c.size());
    block(r.data(), (int)r.size(), c.data(), (int)c.size(), A.data());
    return A;
  }
};

// A meandering string of n segments starting at (x0, y0); the rows are its centres.
void addMeander(LineSinkKernel& k, double x0, double y0, int n, double step, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(-0.3, 0.3);
  double x = x0, y = y0;
  for (int i = 0; i < n; ++i) {
    const double dir = 0.8 * std::sin(0.2 * i) + u(rng);
    const double x2 = x + step * std::cos(dir), y2 = y + step * std::sin(dir);
    k.segs.push_back(detail::makeGeom(x, y, x2, y2));
    k.px.push_back(0.5 * (x + x2));
    k.py.push_back(0.5 * (y + y2));
    x = x2;
    y = y2;
  }
}

std::vector<int> range(int a, int b) {
  std::vector<int> r;
  for (int i = a; i < b; ++i) r.push_back(i);
  return r;
}

TEST(CrossApproximation, FarBlockWithinTheToleranceAndOfLowRank) {
  // Two strings 5 km apart, each 2 km long: a well-separated block.
  LineSinkKernel k;
  addMeander(k, 0.0, 0.0, 200, 10.0, 1);
  addMeander(k, 7000.0, 3000.0, 150, 13.0, 2);
  const auto rows = range(0, 200), cols = range(200, 350);
  const Eigen::MatrixXd A = k.dense(rows, cols);
  for (double tol : {1e-4, 1e-8, 1e-11}) {
    Eigen::MatrixXd U, V;
    ASSERT_TRUE(hmat::crossApproximation(k, rows.data(), 200, cols.data(), 150, tol, 75, U, V)) << tol;
    const double err = (A - U * V.transpose()).norm() / A.norm();
    EXPECT_LE(err, tol) << "tolerance " << tol;
    EXPECT_LT(U.cols(), 25) << "tolerance " << tol;
    EXPECT_EQ(U.cols(), V.cols());
  }
  // A tighter tolerance never gives a smaller rank.
  Eigen::MatrixXd U1, V1, U2, V2;
  hmat::crossApproximation(k, rows.data(), 200, cols.data(), 150, 1e-4, 75, U1, V1);
  hmat::crossApproximation(k, rows.data(), 200, cols.data(), 150, 1e-11, 75, U2, V2);
  EXPECT_LT(U1.cols(), U2.cols());
}

TEST(CrossApproximation, GivesUpOnANearBlock) {
  // A string against itself: the singular diagonal needs full rank.
  LineSinkKernel k;
  addMeander(k, 0.0, 0.0, 60, 10.0, 3);
  const auto idx = range(0, 60);
  Eigen::MatrixXd U, V;
  EXPECT_FALSE(hmat::crossApproximation(k, idx.data(), 60, idx.data(), 60, 1e-10, 30, U, V));
}

TEST(CrossApproximation, ZeroBlockHasRankZero) {
  struct Zero final : hmat::EntrySource {
    void block(const int*, int m, const int*, int k, double* out) const override {
      std::fill(out, out + (size_t)m * k, 0.0);
    }
  } z;
  const auto idx = range(0, 20);
  Eigen::MatrixXd U, V;
  ASSERT_TRUE(hmat::crossApproximation(z, idx.data(), 20, idx.data(), 20, 1e-10, 10, U, V));
  EXPECT_EQ(U.cols(), 0);
}

TEST(ClusterTree, LeavesPartitionTheItemsAndBoxesHoldThem) {
  std::mt19937 rng(5);
  std::uniform_real_distribution<double> u(0.0, 1000.0);
  std::vector<hmat::Box> items(1000);
  for (auto& b : items) b.add(u(rng), u(rng));
  items[7] = items[8];  // coincident items
  const auto t = hmat::ClusterTree::build(items, 16);
  std::vector<int> seen(items.size(), 0);
  for (const auto& nd : t.nodes) {
    if (!nd.leaf()) {
      EXPECT_EQ(t.nodes[nd.child[0]].begin, nd.begin);
      EXPECT_EQ(t.nodes[nd.child[0]].end, t.nodes[nd.child[1]].begin);
      EXPECT_EQ(t.nodes[nd.child[1]].end, nd.end);
      continue;
    }
    EXPECT_LE(nd.size(), 16);
    for (int p = nd.begin; p < nd.end; ++p) {
      ++seen[t.perm[p]];
      const hmat::Box& b = items[t.perm[p]];
      EXPECT_TRUE(b.x0 >= nd.box.x0 && b.x1 <= nd.box.x1 && b.y0 >= nd.box.y0 && b.y1 <= nd.box.y1);
    }
  }
  for (size_t i = 0; i < items.size(); ++i) {
    EXPECT_EQ(seen[i], 1) << i;
    EXPECT_EQ(t.perm[t.pos[i]], (int)i);
  }
}

TEST(HMatrix, ProductWithinTheToleranceOfTheDenseProduct) {
  LineSinkKernel k;
  for (int s = 0; s < 8; ++s) addMeander(k, 0.0, 400.0 * s, 150, 15.0, 10 + s);
  const int n = (int)k.segs.size();
  std::vector<hmat::Box> rows(n), cols(n);
  for (int i = 0; i < n; ++i) {
    rows[i].add(k.px[i], k.py[i]);
    const auto& g = k.segs[i];
    // The segment's end points from its centre and 1/h.
    const std::complex<double> h = 1.0 / std::complex<double>(g.ihr, g.ihi);
    cols[i].add(g.cx - h.real(), g.cy - h.imag());
    cols[i].add(g.cx + h.real(), g.cy + h.imag());
  }
  const Eigen::MatrixXd A = k.dense(range(0, n), range(0, n));
  std::mt19937 rng(9);
  std::normal_distribution<double> nd;
  Eigen::VectorXd x(n);
  for (int i = 0; i < n; ++i) x(i) = nd(rng);
  for (double tol : {1e-6, 1e-11}) {
    hmat::Options o;
    o.tol = tol;
    o.leafSize = 24;
    const hmat::HMatrix H(rows, cols, k, o);
    EXPECT_GT(H.stats().lowRankBlocks, 0);
    // Compressed: well below the n^2 entries of the dense matrix.
    EXPECT_LT(H.stats().denseEntries + H.stats().lowRankEntries, (size_t)n * n / 2);
    Eigen::VectorXd y(n);
    H.multiply(x.data(), y.data());
    const Eigen::VectorXd ref = A * x;
    EXPECT_LE((y - ref).norm() / ref.norm(), tol) << "tolerance " << tol;
  }
}

// ---- GMRES and the block preconditioner ---------------------------------------------

TEST(Gmres, SolvesANonsymmetricSystemAcrossRestarts) {
  const int n = 300;
  std::mt19937 rng(4);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  Eigen::MatrixXd A(n, n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) A(i, j) = u(rng) / n + (i == j ? 2.0 + std::sin(i) : 0.0);
  Eigen::VectorXd xe(n), b;
  for (int i = 0; i < n; ++i) xe(i) = u(rng);
  b = A * xe;
  const auto op = [&](const double* x, double* y) {
    Eigen::Map<Eigen::VectorXd>(y, n) = A * Eigen::Map<const Eigen::VectorXd>(x, n);
  };
  krylov::GmresOptions o;
  o.tol = 1e-12;
  o.restart = 5;  // forces several restarts
  std::vector<double> x(n, 0.0);
  std::vector<int> reported;
  const auto r = krylov::gmres(n, op, {}, b.data(), x.data(), o, [&](int k, double) { reported.push_back(k); });
  EXPECT_TRUE(r.converged);
  EXPECT_GT(r.restarts, 1);
  EXPECT_LE(r.relResidual, 1e-12);
  EXPECT_LE((Eigen::Map<Eigen::VectorXd>(x.data(), n) - xe).norm() / xe.norm(), 1e-10);
  EXPECT_FALSE(reported.empty());
  // Starting from the solution costs no iteration.
  const auto again = krylov::gmres(n, op, {}, b.data(), x.data(), o);
  EXPECT_EQ(again.iterations, 0);
  EXPECT_TRUE(again.converged);
}

TEST(Gmres, ExactBlockPreconditionerConvergesInOneIteration) {
  // A block-diagonal matrix is its own block-Jacobi preconditioner.
  const int n = 40;
  Eigen::MatrixXd A = Eigen::MatrixXd::Zero(n, n);
  std::vector<std::vector<int>> groups{range(0, 15), range(15, 16), range(16, 40)};
  std::mt19937 rng(2);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  for (const auto& g : groups)
    for (int i : g)
      for (int j : g) A(i, j) = u(rng) + (i == j ? 5.0 : 0.0);
  const krylov::BlockJacobi M(n, groups, [&](const std::vector<int>& I, Eigen::MatrixXd& B) {
    B.resize((int)I.size(), (int)I.size());
    for (size_t a = 0; a < I.size(); ++a)
      for (size_t c = 0; c < I.size(); ++c) B(a, c) = A(I[a], I[c]);
  });
  EXPECT_EQ(M.blocks(), 3);
  EXPECT_EQ(M.singularBlocks(), 0);
  Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(n, 1.0, 2.0);
  std::vector<double> x(n, 0.0);
  krylov::GmresOptions o;
  o.tol = 1e-12;
  const auto r = krylov::gmres(
      n, [&](const double* in, double* out) { Eigen::Map<Eigen::VectorXd>(out, n) = A * Eigen::Map<const Eigen::VectorXd>(in, n); },
      [&](const double* in, double* out) { M.apply(in, out); }, b.data(), x.data(), o);
  EXPECT_TRUE(r.converged);
  EXPECT_LE(r.iterations, 2);
}

TEST(BlockJacobi, LeavesASingularBlockOut) {
  const krylov::BlockJacobi M(4, {{0, 1}, {2, 3}}, [](const std::vector<int>& I, Eigen::MatrixXd& B) {
    B = Eigen::MatrixXd::Identity(2, 2);
    if (I[0] == 2) B.setZero();
  });
  EXPECT_EQ(M.singularBlocks(), 1);
  const double r[4] = {1, 2, 3, 4};
  double z[4];
  M.apply(r, z);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(z[i], r[i]);
}

// ---- The compressed collocation operator ----------------------------------------------

// Every kind of unknown and of row: head wells, a partial well (a loss term), head
// strings with resistance, a drain, a gallery, a stream, a pond, an inhomogeneity and an
// open wall.
Model everyKind() {
  Model m = aquiferModel(0.0, 10.0, 20.0, -2000.0, 0.0, 30.0);
  m.aquifer.qx0 = 0.3;
  m.wells.push_back(well(-300.0, 200.0, 25.0, true, 0.2, "WL_HEAD"));
  m.wells.push_back(well(400.0, 500.0, 300.0, false, 0.2, "WL_Q"));
  PartialWell pw;
  pw.x = 250.0;
  pw.y = -250.0;
  pw.top = 15.0;
  pw.bottom = 5.0;
  pw.radius = 0.2;
  pw.value = 24.0;
  pw.headSpecified = true;
  pw.label = "WL_PARTIAL";
  m.partialWells.push_back(pw);
  LineSinkString river =
      straightString(LineSinkKind::Head, -900.0, -400.0, 900.0, -380.0, 40, 28.0, 26.0, "LS_RIVER");
  river.resistance = 2.0;
  river.width = 5.0;
  river.depth = 1.0;
  m.lineSinks.push_back(river);
  m.lineSinks.push_back(
      straightString(LineSinkKind::Drain, -400.0, 400.0, 600.0, 450.0, 30, 27.0, 26.5, "LS_DRAIN"));
  LineSinkString gallery =
      straightString(LineSinkKind::Gallery, 300.0, 100.0, 300.0, 300.0, 5, 20.0, 20.0, "LS_GALLERY");
  gallery.pumping = 300.0;
  m.lineSinks.push_back(gallery);
  LineSinkString stream =
      straightString(LineSinkKind::Stream, -900.0, 0.0, -450.0, 450.0, 20, 29.0, 28.0, "LS_STREAM");
  stream.endInflow = 100.0;
  m.lineSinks.push_back(stream);
  m.ponds.push_back(Pond{0.0, -100.0, 30.0, 29.0, true, "WL_POND"});
  Inhomogeneity in;
  in.conductivity = 40.0;
  in.label = "HB_INHOMOGENEITY";
  in.vertices = {{100, 0, "a"}, {200, 0, "b"}, {200, 80, "c"}, {100, 80, "d"}};
  m.inhomogeneities.push_back(in);
  Wall w;
  w.kind = WallKind::Open;
  w.conductivity = 0.5;
  w.thickness = 1.0;
  w.bottom = -1.0;
  w.label = "HB_WALL";
  w.vertices = {{-200, -200, "a"}, {-100, -150, "b"}, {0, -220, "c"}};
  m.walls.push_back(w);
  return m;
}

// The dense matrix as the direct solve assembles it.
Eigen::MatrixXd denseMatrix(Solution::State& s) {
  Eigen::MatrixXd A(s.n, s.n);
  for (int j = 0; j < s.n; ++j) elementOf(s, j).column(s, j, s.px.data(), s.py.data(), s.n, A.col(j).data());
  DenseRowSink sink(A.data(), s.n);
  for (int i = 0; i < s.n; ++i) elementOf(s, i).assembleRow(s, i, sink);
  s.assembleAreaRows(sink);
  return A;
}

TEST(CompressedOperator, AppliesTheDenseMatrixInEveryStateOfTheRows) {
  Solution::State s;
  s.model = everyKind();
  s.prepare();
  // Rows in every form: a drain segment off, a reach of the stream limited, a gallery
  // segment held, the partial well's loss.
  for (auto& e : s.segs) {
    if (e.kind == LineSinkKind::Drain && e.index % 3 == 0) { e.state = SegState::Off; e.fixedValue = 0.0; }
    if (e.kind == LineSinkKind::Stream && e.index == 12) e.state = SegState::Limited;
    if (e.kind == LineSinkKind::Gallery && e.index == 1) e.state = SegState::Held;
  }
  const Eigen::MatrixXd A = denseMatrix(s);
  std::mt19937 rng(1);
  std::normal_distribution<double> nd;
  // Once with P held exactly (one dense block), once compressed at 1e-6 in small
  // clusters: a fault in the rows' own entries would show in either as an error of the
  // size of the entries.
  for (const auto& [leaf, tol, within] : {std::tuple{100000, 1e-12, 1e-12}, std::tuple{16, 1e-6, 1e-5}}) {
    s.iterative.reset();
    CompressedSettings cs;
    cs.h.leafSize = leaf;
    cs.h.tol = tol;
    cs.blockSize = 16;  // several blocks: a coarse level
    compressInfluence(s, cs, {});
    if (leaf < 100) ASSERT_GT(s.iterative->H->stats().lowRankBlocks, 0);
    assembleCompressed(s, {});
    for (int trial = 0; trial < 3; ++trial) {
      Eigen::VectorXd x(s.n), y(s.n);
      for (int i = 0; i < s.n; ++i) x(i) = nd(rng);
      s.iterative->apply(x.data(), y.data());
      const Eigen::VectorXd ref = A * x;
      for (int i = 0; i < s.n; ++i)
        EXPECT_NEAR(y(i), ref(i), within * A.row(i).cwiseAbs().dot(x.cwiseAbs()))
            << "row " << i << " (" << elementOf(s, i).describe(s, i) << "), leaf size " << leaf;
    }
  }
  // The coarse matrix is Z^T A Z for the indicators Z of the preconditioner's blocks.
  ASSERT_TRUE(s.iterative->hasCoarse);
  const int ng = (int)s.iterative->E.rows();
  Eigen::MatrixXd Z = Eigen::MatrixXd::Zero(s.n, ng);
  for (int i = 0; i < s.n; ++i) Z(i, s.iterative->groupOf[i]) = 1.0;
  const Eigen::MatrixXd coarse = Z.transpose() * A * Z;
  const Eigen::MatrixXd got = s.iterative->E.reconstructedMatrix();
  EXPECT_LE((got - coarse).norm(), 1e-5 * coarse.norm());
  // The preconditioner's blocks are the diagonal blocks of the same matrix.
  for (const auto& I : preconditionerGroups(s, *s.iterative, 16)) {
    Eigen::MatrixXd B;
    s.iterative->fillBlock(I, B);
    for (size_t a = 0; a < I.size(); ++a)
      for (size_t c = 0; c < I.size(); ++c)
        EXPECT_NEAR(B(a, c), A(I[a], I[c]), 1e-12 * (1.0 + std::fabs(A(I[a], I[c])))) << I[a] << ", " << I[c];
  }
}

TEST(CompressedOperator, PreconditionerGroupsCoverEachUnknownOnceAndKeepGalleriesWhole) {
  Solution::State s;
  s.model = everyKind();
  s.prepare();
  compressInfluence(s, CompressedSettings{}, {});
  const auto groups = preconditionerGroups(s, *s.iterative, 10);
  std::vector<int> seen(s.n, 0), groupOf(s.n, -1);
  for (size_t g = 0; g < groups.size(); ++g)
    for (int j : groups[g]) {
      ++seen[j];
      groupOf[j] = (int)g;
    }
  for (int j = 0; j < s.n; ++j) EXPECT_EQ(seen[j], 1) << j;
  for (const auto& gal : s.galleries)
    for (int k : gal.segs) EXPECT_EQ(groupOf[s.segs[k].unknown], groupOf[gal.unknown]);
  // Strings are cut into pieces of at most the block size (the river has 40 segments).
  for (const auto& g : groups) {
    bool hasGallery = false;
    for (int j : g) hasGallery = hasGallery || s.ukind[j] == UnknownKind::GalleryPhi;
    if (!hasGallery) EXPECT_LE((int)g.size(), 20);
  }
}

// ---- Solutions both ways ---------------------------------------------------------------

SolveOptions method(SolveMethod m, int inner, int outer = 1, bool full = true) {
  SolveOptions o = testing::opts(inner, outer);
  o.method = m;
  o.fullFactorisation = full;
  return o;
}

struct BothWays {
  SolveReport dense, compressed;
  double unknownError = 0.0;  // max |x_c - x_d| / max |x_d|
  double headError = 0.0;     // max |h_c - h_d| at the probe points
};

BothWays solveBothWays(const Model& m, int inner, int outer = 1, bool full = true) {
  BothWays r;
  Solution d(m), c(m);
  r.dense = d.solve(method(SolveMethod::Dense, inner, outer, full));
  r.compressed = c.solve(method(SolveMethod::Compressed, inner, outer, full));
  const auto& xd = d.unknownValues();
  const auto& xc = c.unknownValues();
  double scale = 0.0;
  for (double v : xd) scale = std::max(scale, std::fabs(v));
  for (size_t i = 0; i < xd.size(); ++i) r.unknownError = std::max(r.unknownError, std::fabs(xc[i] - xd[i]));
  r.unknownError /= scale;
  for (int i = 0; i < 15; ++i)
    for (int j = 0; j < 15; ++j) {
      const double x = -1200.0 + 171.3 * i, y = -900.0 + 137.9 * j;
      r.headError = std::max(r.headError, std::fabs(c.head(x, y) - d.head(x, y)));
    }
  return r;
}

void expectAgreement(const BothWays& r) {
  EXPECT_FALSE(r.dense.compressed);
  EXPECT_TRUE(r.compressed.compressed);
  EXPECT_LE(r.unknownError, 1e-8);
  EXPECT_LE(r.headError, 1e-6);
  EXPECT_LT(r.compressed.balance.closureError, 1e-6);
  EXPECT_EQ(r.compressed.converged, r.dense.converged);
  EXPECT_EQ(r.compressed.iterations.size(), r.dense.iterations.size());
  EXPECT_GT(r.compressed.krylovIterations, 0);
}

// Meandering head strings with resistance, head and discharge wells in uniform flow.
Model riversAndWells(int strings, int perString, unsigned seed) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  Model m = aquiferModel(0.0, 10.0, 20.0, -5000.0, 0.0, 40.0);
  m.aquifer.qx0 = 0.4;
  for (int i = 0; i < 10; ++i) {
    m.wells.push_back(well(-1000 + 2000 * u(rng), -800 + 1600 * u(rng), 30.0 + 5 * u(rng), true, 0.2,
                           "WL_H" + std::to_string(i)));
    m.wells.push_back(well(-1000 + 2000 * u(rng), -800 + 1600 * u(rng), 200.0 * u(rng), false, 0.2,
                           "WL_Q" + std::to_string(i)));
  }
  for (int s = 0; s < strings; ++s) {
    LineSinkString ls;
    ls.kind = LineSinkKind::Head;
    ls.resistance = 3.0;
    ls.width = 8.0;
    ls.label = "LS_" + std::to_string(s);
    double x = -1100.0, y = -800.0 + 1600.0 * (s + 0.5) / strings;
    for (int k = 0; k < perString; ++k) {
      const double dir = 0.7 * std::sin(0.2 * k + s) + 0.2 * (u(rng) - 0.5);
      Segment g;
      g.x1 = x;
      g.y1 = y;
      x += 2200.0 / perString * std::cos(dir);
      y += 0.3 * 2200.0 / perString * std::sin(dir);
      g.x2 = x;
      g.y2 = y;
      g.value = 36.0 - 4.0 * k / perString + s * 0.1;
      g.label = ls.label + "_" + std::to_string(k);
      ls.segments.push_back(g);
    }
    m.lineSinks.push_back(ls);
  }
  return m;
}

TEST(CompressedSolve, WellsAndHeadStringsWithResistance) {
  const Model m = riversAndWells(6, 80, 11);
  const BothWays r = solveBothWays(m, 1);
  expectAgreement(r);
  EXPECT_GT(r.compressed.unknowns, 400);
}

TEST(CompressedSolve, UnconfinedRiversConvergeLikeTheDenseSolve) {
  // Unconfined: the resistance coefficients change from iteration to iteration.
  Model m = riversAndWells(4, 60, 12);
  m.aquifer.thickness = 100.0;
  expectAgreement(solveBothWays(m, 6));
}

TEST(CompressedSolve, EveryKindOfElement) {
  // Drains, a gallery, a routed stream, a pond, an inhomogeneity, a wall and wells.
  const BothWays r = solveBothWays(everyKind(), 10, 4);
  expectAgreement(r);
}

TEST(CompressedSolve, DrainSwitchRebuildsThePreconditionerAndAgrees) {
  // A drain from below the water table to above it: part of it shuts off in the first
  // iteration. With F = 0 the operator is rebuilt only because conditions switched.
  Model m = aquiferModel(0.0, 10.0, 30.0, -2000.0, 0.0, 24.0);
  m.aquifer.qx0 = 0.5;
  m.lineSinks.push_back(straightString(LineSinkKind::Drain, -1000.0, 0.0, 1000.0, 0.0, 200, 26.0, 14.0));
  m.lineSinks.push_back(straightString(LineSinkKind::Head, -1000.0, 600.0, 1000.0, 650.0, 150, 23.0, 19.0, "LS_B"));
  m.wells.push_back(well(0.0, -400.0, 500.0, false));
  const BothWays r = solveBothWays(m, 30, 1, false);
  expectAgreement(r);
  const auto& its = r.compressed.iterations;
  ASSERT_GE(its.size(), 2u);
  EXPECT_GT(its[0].switches, 0);
  int rebuilt = 0;
  for (size_t k = 1; k < its.size(); ++k) {
    EXPECT_EQ(its[k].refactorised, its[k - 1].switches > 0) << "iteration " << k + 1;
    rebuilt += its[k].refactorised;
  }
  EXPECT_GT(rebuilt, 0);
  EXPECT_TRUE(r.compressed.converged);
}

TEST(CompressedSolve, LosingStreamNetworkWithDryReaches) {
  const double qin = 1200.0;
  Model m = aquiferModel(0.0, 20.0, 100.0, 0.0, -3000.0, 30.0);
  auto a = straightString(LineSinkKind::Stream, 0.0, 0.0, 6000.0, 0.0, 120, 40.0, 40.0, "LS_000001");
  a.endInflow = qin;
  a.resistance = 50.0;
  a.width = 2.0;
  auto b = straightString(LineSinkKind::Stream, 1500.0, 2000.0, 1500.0, 0.0, 80, 42.0, 40.5, "LS_000002");
  b.endInflow = 0.5 * qin;
  b.resistance = 50.0;
  b.width = 2.0;
  m.lineSinks.push_back(a);
  m.lineSinks.push_back(b);
  const BothWays r = solveBothWays(m, 5, 10);
  expectAgreement(r);
  EXPECT_GT(r.compressed.iterations.back().outer, 1);  // reaches went dry
}

TEST(CompressedSolve, AutomaticChoiceFollowsTheCrossover) {
  const Model m = riversAndWells(2, 30, 3);
  Solution a(m), b(m);
  SolveOptions o = testing::opts(1);
  o.crossover = 10;
  std::vector<std::string> log;
  EXPECT_TRUE(a.solve(o, [&](const std::string& l) { log.push_back(l); }).compressed);
  o.crossover = 100000;
  EXPECT_FALSE(b.solve(o).compressed);
  // Progress of the iterations goes to the message log.
  EXPECT_TRUE(std::any_of(log.begin(), log.end(), [](const std::string& l) {
    return l.find("GMRES iteration") != std::string::npos && l.find("relative residual") != std::string::npos;
  }));
  EXPECT_TRUE(std::any_of(log.begin(), log.end(),
                          [](const std::string& l) { return l.find("Compressed influence matrix") == 0; }));
}

TEST(CompressedSolve, UnconvergedIterationsFallBackToDenseOnlyWhenChosenAutomatically) {
  // A tolerance no residual can reach makes GMRES stop short of it.
  const Model m = riversAndWells(6, 80, 5);
  SolveOptions o = method(SolveMethod::Compressed, 1);
  o.gmresTolerance = 1e-30;
  Solution forced(m);
  try {
    forced.solve(o);
    ADD_FAILURE() << "no error";
  } catch (const FatalError& e) {
    EXPECT_NE(std::string(e.what()).find("did not converge"), std::string::npos) << e.what();
    EXPECT_NE(std::string(e.what()).find("dense"), std::string::npos) << e.what();
  }
  o.method = SolveMethod::Automatic;
  o.crossover = 10;
  Solution automatic(m), dense(m);
  const SolveReport r = automatic.solve(o);
  dense.solve(method(SolveMethod::Dense, 1));
  EXPECT_TRUE(r.compressed);
  EXPECT_TRUE(r.iterations.front().refactorised);
  EXPECT_TRUE(std::any_of(automatic.warnings().begin(), automatic.warnings().end(), [](const std::string& w) {
    return w.find("the dense method is used from here on") != std::string::npos;
  }));
  EXPECT_EQ(automatic.unknownValues(), dense.unknownValues());  // the dense path's answer, bit for bit
}

TEST(CompressedSolve, SecondSolveContinuesFromThePreviousSolution) {
  // Several preconditioner blocks, so that GMRES has iterations to save; unconfined, so
  // that the second solve has a change to make.
  Model m = riversAndWells(6, 80, 21);
  m.aquifer.thickness = 100.0;
  Solution s(m);
  const auto first = s.solve(method(SolveMethod::Compressed, 1));
  const auto second = s.solve(method(SolveMethod::Compressed, 1));
  // The compressed matrix is built once; the second solve starts close to its answer.
  EXPECT_GT(first.compressSeconds, 0.0);
  EXPECT_EQ(second.compressSeconds, 0.0);
  EXPECT_LT(second.krylovIterations, first.krylovIterations);
  // Switching to the dense method in between gives the same answer.
  Solution d(m);
  d.solve(method(SolveMethod::Dense, 1));
  d.solve(method(SolveMethod::Compressed, 1));
  const auto& xd = d.unknownValues();
  const auto& xs = s.unknownValues();
  double scale = 0.0, diff = 0.0;
  for (size_t i = 0; i < xd.size(); ++i) {
    scale = std::max(scale, std::fabs(xd[i]));
    diff = std::max(diff, std::fabs(xd[i] - xs[i]));
  }
  EXPECT_LE(diff, 1e-8 * scale);
}

TEST(CompressedSolve, CommandFileChoosesTheMethodAfterTheFourNumbers) {
  const CommandFile f = parseCommandFile(
      " solve 5 3 0 1 dense\n solve 5 3 0 1 Compressed\n solve 5 3 0 1\n solve 5 3 0 1 quickly\n"
      " solve conjunctive 5 3 0 1 compressed\n");
  std::vector<SolveCommand::Method> got;
  for (const Step& s : f.steps)
    if (const auto* c = std::get_if<SolveCommand>(&s.data)) got.push_back(c->method);
  using M = SolveCommand::Method;
  EXPECT_EQ(got, (std::vector<M>{M::Dense, M::Compressed, M::Automatic, M::Automatic, M::Compressed}));
  ASSERT_EQ(f.problems.size(), 1u);  // the unknown word, taken as automatic
  EXPECT_EQ(f.problems[0].line, 4);
  EXPECT_NE(f.problems[0].message.find("quickly"), std::string::npos);
}

// ---- The solver program -----------------------------------------------------------------

namespace fs = std::filesystem;

std::string readFile(const fs::path& p) {
  std::ifstream f(p, std::ios::binary);
  std::stringstream s;
  s << f.rdbuf();
  return s.str();
}

// Runs tarno1 on a well beside a river of 160 segments and an extract of two points with
// the given method word; returns the message log and the extract file.
std::pair<std::string, std::string> runProgram(const std::string& methodWord) {
  tarno::test::TempDir dir;
  std::vector<std::string> m = {" error error.log", " yes", " message message.log", " yes", " picture off", " quit",
                                " bfname  demo", " aquifer", " base 0", " permeability 10", " thickness 50",
                                " reference -20000 0 10", " quit", " well", " discharge",
                                "  200 0 500 .1 WL_000001", " quit", " linesink", " head", " resistance 0",
                                " width 0  0", " depth 0"};
  for (int i = 0; i < 160; ++i) {
    char buf[160];
    std::snprintf(buf, sizeof buf, "  0 %.1f 0 %.1f 10 LS_000002_%04d", -8000.0 + 100.0 * i, -7900.0 + 100.0 * i, i);
    m.push_back(buf);
  }
  for (const char* l : {" quit", " layout", " window -1000 -1000 1000 1000", " quit"}) m.push_back(l);
  m.push_back(" solve 1 1 0 1 " + methodWord);
  for (const char* l : {" extract", " file demo", " y", "  100 0 TP_000003", "  400 300 TP_000004", " quit", " stop"})
    m.push_back(l);
  {
    std::ofstream f(dir.Path() / "DEMO.DAT", std::ios::binary);
    for (const auto& l : m) f << l << "\r\n";
  }
  tarno::test::RunOptions options;
  options.cwd = dir.Path();
  EXPECT_EQ(tarno::test::RunProgram("tarno1", {"61", "demo"}, options).status, 0) << methodWord;
  return {readFile(dir.Path() / "message.log"), readFile(dir.Path() / "demo.XTR")};
}

TEST(CompressedSolve, SolverProgramTakesTheMethodWord) {
  const auto [denseLog, denseXtr] = runProgram("dense");
  const auto [compLog, compXtr] = runProgram("compressed");
  EXPECT_EQ(denseLog.find("GMRES"), std::string::npos);
  EXPECT_NE(compLog.find("Solution method: compressed influence matrix and GMRES"), std::string::npos) << compLog;
  EXPECT_NE(compLog.find("GMRES iteration"), std::string::npos);
  // The extract's records (heads, discharges) are the same to their printed digits,
  // within a unit in the last place.
  ASSERT_FALSE(denseXtr.empty());
  std::vector<std::string> a, b;
  for (std::stringstream s(denseXtr); s.good();) a.emplace_back(), std::getline(s, a.back());
  for (std::stringstream s(compXtr); s.good();) b.emplace_back(), std::getline(s, b.back());
  ASSERT_EQ(a.size(), b.size());
  int records = 0;
  for (size_t i = 0; i < a.size(); ++i)
    if (!a[i].empty() && a[i][0] == '@') {
      ++records;
      std::string ra = a[i], rb = b[i];
      std::replace(ra.begin(), ra.end(), ',', ' ');
      std::replace(rb.begin(), rb.end(), ',', ' ');
      std::stringstream sa(ra), sb(rb);
      for (std::string wa, wb; sa >> wa && sb >> wb;) {
        char* end = nullptr;
        const double va = std::strtod(wa.c_str(), &end);
        if (*end != '\0' || wa == "@") {
          EXPECT_EQ(wa, wb);
          continue;
        }
        EXPECT_NEAR(va, std::strtod(wb.c_str(), nullptr), 1e-6 * (1.0 + std::fabs(va))) << a[i] << "\n" << b[i];
      }
    }
  EXPECT_EQ(records, 2);
}

}  // namespace
}  // namespace tarno::engine
