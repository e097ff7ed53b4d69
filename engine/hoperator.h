#pragma once
// The large-model path of the collocation system: the operator held as
//     A x = diag(rowScale) (P x) + S x + W x
// where P is the influence matrix of the unknowns at the collocation points (the
// potentials of the columns), held compressed (engine/hmatrix.h); rowScale is 1 for a
// potential row, the factor of a line-doublet row of an inhomogeneity (a potential row
// scaled by minus the slope of its linearised condition) and 0 for a row that the
// element writes itself; S holds the elements' own sparse entries (assembleRow and
// assembleAreaRows write them through the same RowSink as the dense path); W holds the
// few dense rows that are not potentials: the normal-flow rows of walls.
//
// The system is solved by restarted GMRES (engine/krylov.h), preconditioned by the LU
// factors of diagonal blocks of A: each line-sink string (in pieces of a bounded size,
// a gallery whole with its common head), each polygon's doublets, and the wells, ponds
// and short strings gathered into blocks of neighbours in the order of the cluster tree.
// P is built once per solution (the geometry does not change); S, W, rowScale and the
// preconditioner are rebuilt where the dense path refactorises (a condition switched),
// and the previous solution is the starting vector.

#include "engine/elements.h"
#include "engine/hmatrix.h"
#include "engine/krylov.h"
#include "engine/solution.h"
#include "engine/state.h"

#include <memory>
#include <vector>

namespace tarno::engine {

// The entries of P: the potential of a unit value of unknown j at the collocation point
// of row i (the element's column), from any thread.
class CollocationSource final : public hmat::EntrySource {
 public:
  explicit CollocationSource(const Solution::State& s) : s_(s) {}
  void block(const int* rows, int m, const int* cols, int k, double* out) const override;

 private:
  const Solution::State& s_;
};

// The sparse part S, the dense rows W and rowScale, written as the dense path writes its
// matrix after the columns (see RowSink in engine/elements.h).
class SparseRowSink final : public RowSink {
 public:
  SparseRowSink(const Solution::State& s, const CollocationSource& P);
  void clearRow(int i) override;
  void add(int i, int j, double v) override;
  void set(int i, int j, double v) override;
  void scaleRow(int i, double f) override;
  void setRow(int i, const std::function<double(int)>& value) override;
  // Merges repeated entries; call once after writing.
  void finish();

  std::vector<double> rowScale;
  std::vector<std::vector<std::pair<int, double>>> entries;  // per row: (column, value)
  std::vector<std::vector<double>> dense;                      // per row: empty or n values

 private:
  double pEntry(int i, int j) const;
  const Solution::State& s_;
  const CollocationSource& P_;
};

struct CompressedSettings {
  hmat::Options h;
  krylov::GmresOptions gmres;
  int blockSize = 256;  // largest preconditioner block of gathered small groups and string pieces
  // The coarse correction over the blocks (one unknown per block: its strengths all
  // alike): none, added to the block-Jacobi step, or before it (one more product).
  enum class Coarse { None, Additive, Multiplicative } coarse = Coarse::Multiplicative;
};

struct IterativeSolve {
  explicit IterativeSolve(const Solution::State& s) : source(s) {}
  CollocationSource source;
  CompressedSettings settings;
  std::unique_ptr<hmat::HMatrix> H;
  std::vector<int> hRows, hCols;  // unknown of each row and column of H
  std::vector<int> rowOfH;        // per unknown: its row of H (-1: no point of its own)
  int constant = -1;              // the constant's unknown (a column of ones outside H)
  std::unique_ptr<SparseRowSink> own;
  krylov::BlockJacobi precond;
  std::vector<int> groupOf;                 // per unknown: its block of the preconditioner
  Eigen::PartialPivLU<Eigen::MatrixXd> E;   // the coarse matrix Z^T A Z, Z the blocks' indicators
  bool hasCoarse = false;
  bool assembled = false;
  double compressSeconds = 0.0;
  int lastIterations = 0;
  double lastResidual = 0.0;

  // y = A x with the present S, W and rowScale.
  void apply(const double* x, double* y) const;
  // z = M^{-1} r: the block-Jacobi step with the coarse correction.
  void precondition(const double* r, double* z) const;
  // The coarse matrix for the present groups, S, W and rowScale.
  void buildCoarse(int groups);
  // The dense block A(I, I) (I sorted).
  void fillBlock(const std::vector<int>& I, Eigen::MatrixXd& B) const;
  // Bytes held by P, S, W and the preconditioner.
  size_t bytes() const;
};

// The groups of unknowns whose diagonal blocks precondition the system.
std::vector<std::vector<int>> preconditionerGroups(const Solution::State& s, const IterativeSolve& it,
                                                   int blockSize);

// Builds P (when not built yet for this state).
void compressInfluence(Solution::State& s, const CompressedSettings& settings, const LineSink& log);
// S, W, rowScale and the preconditioner for the present states (where the dense path
// assembles and factorises).
void assembleCompressed(Solution::State& s, const LineSink& log);
// Solves A x = b from the present s.x; throws FatalError when GMRES does not converge.
std::vector<double> solveCompressed(Solution::State& s, const std::vector<double>& b, const LineSink& log);

}  // namespace tarno::engine
