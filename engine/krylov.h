#pragma once
// Restarted GMRES (Saad & Schultz 1986) with a right preconditioner, and the block-Jacobi
// preconditioner of the compressed path: square diagonal blocks of the operator, each
// factorised by LU with partial pivoting (Eigen).
//
// With right preconditioning the residual GMRES minimises is that of the system itself,
// ||b - A x||, so the stopping test reads the true residual.

#include <Eigen/Dense>

#include <functional>
#include <string>
#include <vector>

namespace tarno::engine::krylov {

// y = A x (x and y have n entries).
using Operator = std::function<void(const double* x, double* y)>;

struct GmresOptions {
  double tol = 1e-13;    // stop at ||b - A x|| <= tol ||b||
  int restart = 60;      // Krylov vectors before a restart
  int maxIterations = 3000;
  int reportEvery = 10;  // progress through `progress` every so many iterations (0: never)
};

struct GmresResult {
  int iterations = 0;        // matrix-vector products with A (one per inner step)
  int restarts = 0;
  double relResidual = 0.0;  // ||b - A x|| / ||b|| at the end (recomputed)
  bool converged = false;
};

// Solves A x = b from the starting vector in x. precond: z = M^{-1} r (may be empty).
// progress gets (iteration, relative residual) every reportEvery iterations.
GmresResult gmres(int n, const Operator& A, const Operator& precond, const double* b, double* x,
                  const GmresOptions& opt, const std::function<void(int, double)>& progress = {});

// Block-Jacobi preconditioner over disjoint groups of unknowns (unknowns in no group are
// left as they are). `fill` writes the square block A(I, I) (column-major) of a group I.
class BlockJacobi {
 public:
  using BlockFill = std::function<void(const std::vector<int>& idx, Eigen::MatrixXd& block)>;
  BlockJacobi() = default;
  BlockJacobi(int n, std::vector<std::vector<int>> groups, const BlockFill& fill);
  void apply(const double* r, double* z) const;
  int blocks() const { return (int)groups_.size(); }
  int singularBlocks() const { return singular_; }  // blocks left out (a zero pivot)
  size_t bytes() const;

 private:
  int n_ = 0;
  std::vector<std::vector<int>> groups_;
  std::vector<Eigen::PartialPivLU<Eigen::MatrixXd>> lu_;
  std::vector<char> used_;
  int singular_ = 0;
};

}  // namespace tarno::engine::krylov
