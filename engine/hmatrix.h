#pragma once
// A hierarchical matrix: an m x n matrix held as dense near-field blocks and low-rank
// far-field blocks, over cluster trees of its rows and columns.
//
// The rows are points (the collocation points) and the columns are items with an extent
// (an element: a point for a well, a segment, a doublet edge, a pond's circle). Both are
// split recursively by bisection of their bounding boxes along the longer side. A pair of
// clusters is admissible (its block is approximated by a low-rank product) when
//     min(diam(rows), diam(columns)) <= eta * dist(rows, columns),
// the distance being that of the two bounding boxes: the influence of the column elements
// is then smooth over the row points. Admissible blocks are built by adaptive cross
// approximation with partial pivoting (Bebendorf 2000), which asks for single rows and
// columns of the block only, then recompressed by QR and SVD: the block B is replaced by
// U V^T with ||B - U V^T||_F <= tol ||B||_F (the ACA stops at tol / 4, the truncation of
// the singular values uses the rest). Blocks whose rank would reach half their smaller
// side are kept dense. The whole matrix then satisfies ||A - H||_F <= tol ||A||_F up to
// the ACA's heuristic stopping rule (the tests check it on the element kernels).
//
// Memory is O((m + n) log(m + n) k) for ranks k; the entries are asked of an
// EntrySource, so the same code serves the tests (a plain function) and the solver.

#include <Eigen/Dense>

#include <cstddef>
#include <vector>

namespace tarno::engine::hmat {

struct Box {
  double x0 = 1e300, y0 = 1e300, x1 = -1e300, y1 = -1e300;
  void add(double x, double y);
  void add(const Box& b);
  double diam() const;
  double dist(const Box& b) const;
  double cx() const { return 0.5 * (x0 + x1); }
  double cy() const { return 0.5 * (y0 + y1); }
};

// A binary cluster tree over items with boxes. perm lists the items in tree order; each
// node holds the range [begin, end) of perm that it covers. Node 0 is the root.
struct ClusterTree {
  struct Node {
    int begin = 0, end = 0;
    Box box;
    int child[2] = {-1, -1};
    bool leaf() const { return child[0] < 0; }
    int size() const { return end - begin; }
  };
  std::vector<int> perm;
  std::vector<int> pos;  // inverse of perm: tree position of each item
  std::vector<Node> nodes;

  // Splits until a node has at most leafSize items.
  static ClusterTree build(const std::vector<Box>& items, int leafSize);
};

// The entries of the matrix: out (m x k, column-major, leading dimension m) gets
// A(rows[a], cols[b]).
class EntrySource {
 public:
  virtual ~EntrySource() = default;
  virtual void block(const int* rows, int m, const int* cols, int k, double* out) const = 0;
};

struct Options {
  double tol = 1e-11;  // relative Frobenius accuracy of each low-rank block
  double eta = 1.0;    // admissibility parameter
  int leafSize = 48;   // largest cluster that is not split
};

struct Stats {
  int denseBlocks = 0, lowRankBlocks = 0;
  int maxRank = 0;
  double meanRank = 0.0;
  size_t denseEntries = 0, lowRankEntries = 0;
  size_t bytes() const { return 8 * (denseEntries + lowRankEntries); }
};

class HMatrix {
 public:
  // Rows: points (boxes of zero extent); columns: boxes of the items. Entries are asked of
  // src while building, in parallel (src must allow concurrent calls).
  HMatrix(const std::vector<Box>& rowBoxes, const std::vector<Box>& colBoxes, const EntrySource& src,
          const Options& opt);

  int rows() const { return (int)rt_.perm.size(); }
  int cols() const { return (int)ct_.perm.size(); }
  // y = A x (original numbering; y has rows() entries, x cols()).
  void multiply(const double* x, double* y) const;
  // Sums of the entries by groups of rows and of columns (original numbering; group -1:
  // left out): E(g, h) += sum of rowWeight(i) A(i, j) over rowGroup(i) = g, colGroup(j) = h.
  // One pass over the blocks, as cheap as a product: the coarse matrix of a preconditioner.
  void aggregate(const std::vector<int>& rowGroup, const std::vector<double>& rowWeight,
                 const std::vector<int>& colGroup, Eigen::MatrixXd& E) const;
  const Stats& stats() const { return stats_; }
  const ClusterTree& rowTree() const { return rt_; }
  const ClusterTree& colTree() const { return ct_; }

 private:
  struct Block {
    int rowNode = 0, colNode = 0;
    bool lowRank = false;
    Eigen::MatrixXd D;     // dense block (rows x cols of the clusters, tree order)
    Eigen::MatrixXd U, V;  // low rank: U V^T
  };
  void partition(int r, int c, std::vector<std::pair<int, int>>& admissible,
                 std::vector<std::pair<int, int>>& near) const;
  void fillDense(Block& b, const EntrySource& src) const;
  void fillLowRank(Block& b, const EntrySource& src, double tol) const;

  ClusterTree rt_, ct_;
  Options opt_;
  std::vector<Block> blocks_;
  Stats stats_;
};

// Adaptive cross approximation with partial pivoting of the m x k matrix whose entries
// src gives for rows[0..m) and cols[0..k), then recompression: U (m x r) and V (k x r)
// with ||B - U V^T||_F <= tol ||B||_F (as far as the heuristic stopping rule sees).
// Returns false when the rank would reach maxRank (U and V are then left empty).
bool crossApproximation(const EntrySource& src, const int* rows, int m, const int* cols, int k, double tol,
                        int maxRank, Eigen::MatrixXd& U, Eigen::MatrixXd& V);

}  // namespace tarno::engine::hmat
