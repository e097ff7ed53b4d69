// Restarted GMRES and the block-Jacobi preconditioner (see engine/krylov.h).
#include "engine/krylov.h"

#include <cmath>

namespace tarno::engine::krylov {

namespace {

double norm(const Eigen::VectorXd& v) { return v.norm(); }

}  // namespace

GmresResult gmres(int n, const Operator& A, const Operator& precond, const double* b, double* x,
                  const GmresOptions& opt, const std::function<void(int, double)>& progress) {
  GmresResult res;
  Eigen::Map<const Eigen::VectorXd> bv(b, n);
  Eigen::Map<Eigen::VectorXd> xv(x, n);
  const double bnorm = norm(bv);
  if (n == 0) {
    res.converged = true;
    return res;
  }
  if (bnorm == 0.0) {
    xv.setZero();
    res.converged = true;
    return res;
  }
  const int m = std::max(1, std::min(opt.restart, n));
  Eigen::MatrixXd Vk(n, m + 1);  // Krylov basis
  Eigen::MatrixXd Zk(n, m);      // preconditioned directions (x += Zk y)
  Eigen::MatrixXd H = Eigen::MatrixXd::Zero(m + 1, m);
  Eigen::VectorXd cs(m), sn(m), g(m + 1), r(n), w(n), z(n);

  auto residual = [&]() {
    A(x, w.data());
    r = bv - w;
    return norm(r);
  };
  double rnorm = residual();
  res.relResidual = rnorm / bnorm;
  while (res.iterations < opt.maxIterations) {
    if (rnorm <= opt.tol * bnorm) break;
    Vk.col(0) = r / rnorm;
    g.setZero();
    g(0) = rnorm;
    H.setZero();
    int j = 0;
    for (; j < m && res.iterations < opt.maxIterations; ++j) {
      if (precond) precond(Vk.col(j).data(), z.data());
      else z = Vk.col(j);
      Zk.col(j) = z;
      A(z.data(), w.data());
      ++res.iterations;
      // Modified Gram-Schmidt, once more where the new vector lost much of its length.
      const double w0 = norm(w);
      for (int i = 0; i <= j; ++i) {
        H(i, j) = Vk.col(i).dot(w);
        w -= H(i, j) * Vk.col(i);
      }
      if (norm(w) < 0.5 * w0)
        for (int i = 0; i <= j; ++i) {
          const double c = Vk.col(i).dot(w);
          H(i, j) += c;
          w -= c * Vk.col(i);
        }
      H(j + 1, j) = norm(w);
      if (H(j + 1, j) > 0.0) Vk.col(j + 1) = w / H(j + 1, j);
      // Givens rotations keep the least-squares problem triangular.
      for (int i = 0; i < j; ++i) {
        const double t = cs(i) * H(i, j) + sn(i) * H(i + 1, j);
        H(i + 1, j) = -sn(i) * H(i, j) + cs(i) * H(i + 1, j);
        H(i, j) = t;
      }
      const double hyp = std::hypot(H(j, j), H(j + 1, j));
      cs(j) = hyp > 0.0 ? H(j, j) / hyp : 1.0;
      sn(j) = hyp > 0.0 ? H(j + 1, j) / hyp : 0.0;
      H(j, j) = hyp;
      H(j + 1, j) = 0.0;
      g(j + 1) = -sn(j) * g(j);
      g(j) = cs(j) * g(j);
      const double est = std::fabs(g(j + 1)) / bnorm;
      if (progress && opt.reportEvery > 0 && res.iterations % opt.reportEvery == 0) progress(res.iterations, est);
      if (est <= opt.tol || hyp == 0.0) {
        ++j;
        break;
      }
    }
    // x += Z y with H(0:j, 0:j) y = g(0:j).
    const Eigen::VectorXd y =
        H.topLeftCorner(j, j).triangularView<Eigen::Upper>().solve(g.head(j));
    xv += Zk.leftCols(j) * y;
    const double before = rnorm;
    rnorm = residual();
    res.relResidual = rnorm / bnorm;
    ++res.restarts;
    if (!std::isfinite(rnorm)) break;
    // A cycle that gained nothing will not gain in the next one either (stagnation at
    // the accuracy of the operator).
    if (rnorm > opt.tol * bnorm && rnorm >= before * (1.0 - 1e-6)) break;
  }
  res.converged = rnorm <= opt.tol * bnorm;
  if (progress && opt.reportEvery > 0) progress(res.iterations, res.relResidual);
  return res;
}

BlockJacobi::BlockJacobi(int n, std::vector<std::vector<int>> groups, const BlockFill& fill)
    : n_(n), groups_(std::move(groups)) {
  lu_.resize(groups_.size());
  used_.assign(groups_.size(), 1);
#pragma omp parallel for schedule(dynamic, 1)
  for (long g = 0; g < (long)groups_.size(); ++g) {
    Eigen::MatrixXd B;
    fill(groups_[g], B);
    lu_[g].compute(B);
    // PartialPivLU does not stop at a zero pivot: look at the diagonal of U.
    const auto& U = lu_[g].matrixLU();
    const double scale = B.cwiseAbs().maxCoeff();
    for (Eigen::Index i = 0; i < U.rows(); ++i)
      if (!(std::fabs(U(i, i)) > 1e-14 * scale)) {
        used_[g] = 0;
        break;
      }
  }
  for (char u : used_) singular_ += !u;
}

void BlockJacobi::apply(const double* r, double* z) const {
  for (int i = 0; i < n_; ++i) z[i] = r[i];
#pragma omp parallel for schedule(dynamic, 4) if (n_ >= 20000)
  for (long g = 0; g < (long)groups_.size(); ++g) {
    if (!used_[g]) continue;
    const auto& idx = groups_[g];
    Eigen::VectorXd v(idx.size());
    for (size_t a = 0; a < idx.size(); ++a) v(a) = r[idx[a]];
    v = lu_[g].solve(v);
    for (size_t a = 0; a < idx.size(); ++a) z[idx[a]] = v(a);
  }
}

size_t BlockJacobi::bytes() const {
  size_t b = 0;
  for (const auto& g : groups_) b += 8 * g.size() * g.size() + 8 * g.size();
  return b;
}

}  // namespace tarno::engine::krylov
