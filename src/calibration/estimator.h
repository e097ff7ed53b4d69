// The built-in estimator: a Levenberg-Marquardt estimation of the scenario
// parameters of a project on the files of a PEST run, for where no estimation program
// is installed.
//
//   ControlFile cf = ReadControlFile(dir / "m.pst");
//   EstimatorResult r = Estimate(cf, options);         // the estimation alone
//   EstimateReport rep = RunEstimation(ctx, options);  // the whole command: files,
//                                                      // estimation, .par, import
//
// Each model run fills the template with trial values into its own folder, runs the
// control file's model command there and reads the outputs with the instruction file.
// The runs of the Jacobian (one per estimated parameter) and the trial steps of an
// iteration (three values of the Marquardt parameter) run at the same time on up to
// `threads` workers.
//
// The estimation works on the transformed parameters (log10 of a log-transformed
// one), keeps every value within its bounds, and minimises the weighted sum of
// squared residuals, phi = sum (weight * (observed - simulated))^2. The derivatives
// are forward differences with a relative increment of 1e-3; the step solves the
// normal equations with Marquardt's scaling of the diagonal. It stops when phi no
// longer falls by a relative 1e-5, when phi is zero, when the step is below 1e-10 of
// the values, or after the iteration limit.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "calibration/estimator_files.h"

namespace tarno {

struct SolveContext;

struct EstimatorIteration {
  int number = 0;  // 0: the initial values
  double phi = 0.0;
  double lambda = 0.0;         // the Marquardt parameter of the accepted step
  int runs = 0;                // model runs so far
  std::vector<double> values;  // all parameters, fixed ones included
  std::vector<double> simulated;
};

struct EstimatorOptions {
  int threads = 0;  // 0: all cores
  int maxIterations = 30;
  // Where the run folders are made (one per worker, removed at the end); empty: the
  // system's temporary folder.
  std::filesystem::path workRoot;
  // Folder whose files the model needs beside its input (convergence.tab); empty:
  // the control file's folder.
  std::filesystem::path supportFolder;
  // Called after the initial run and after each accepted iteration.
  std::function<void(const EstimatorIteration&)> onIteration;
  // Called in the calling thread as model runs end: runs done and runs planned in the
  // present batch (the Jacobian, or the trial steps), and the iteration.
  std::function<void(int done, int planned, int iteration)> onProgress;
};

struct EstimatorResult {
  bool ok = false;
  std::string failure;         // why the estimation stopped without a result
  std::string stopReason;      // why a successful estimation ended
  std::vector<double> values;  // the best values found (all parameters)
  double phi = 0.0;
  int iterations = 0;
  int runs = 0;
  std::vector<EstimatorIteration> history;
};

// Estimates the parameters of `cf`. A model run that fails (the command's status is
// not 0, TARNO.OPS appears, the output is missing or unreadable) ends the estimation:
// `ok` is false and `failure` names the run and what its folder held.
EstimatorResult Estimate(const ControlFile& cf, const EstimatorOptions& options);

// The record of an estimation: per iteration phi, lambda, the parameters and the
// residual of each observation.
std::string EstimatorRecordText(const ControlFile& cf, const EstimatorResult& r);

// What RunEstimation did.
struct EstimateReport {
  bool ok = false;
  std::string failure;
  std::filesystem::path parFile;
  std::filesystem::path recordFile;
  bool imported = false;
  EstimatorResult result;
};

inline constexpr const char* kNoTestPointsTitle = "No Test Points";
inline constexpr const char* kEstimationFailedTitle = "Estimation Failed";

// The whole estimation of a project: refuses a project without observations or
// without scenario tags (with a message through ctx.ui); writes the PEST files
// (unless `useExistingFiles`, which takes <base>.pst as it stands); estimates; writes
// <base>.par and the record <base>.erc in the solver folder; and, when
// `import` is set, imports the .par as the PEST import does. A failed estimation
// says why ("Estimation Failed") and leaves the parameters of the project as they
// were.
EstimateReport RunEstimation(SolveContext& ctx, const EstimatorOptions& options, bool import,
                             bool useExistingFiles = false);

}  // namespace tarno
