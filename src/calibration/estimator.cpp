#include "calibration/estimator.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <limits>
#include <mutex>
#include <thread>

#include "calibration/estimation_support.h"
#include "calibration/pest_files.h"
#include "calibration/pest_import.h"
#include "core/error.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "elements/linesink.h"
#include "elements/well.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

constexpr double kRelativeIncrement = 1e-3;
constexpr double kPhiReduction = 1e-5;
constexpr double kSmallStep = 1e-10;

struct RunOutcome {
  bool ok = false;
  std::vector<double> simulated;
  std::string failure;
};

std::string FileText(const fs::path& p) {
  std::error_code ec;
  if (!fs::exists(p, ec)) return {};
  try {
    return ReadTextFile(p);
  } catch (const Error&) {
    return {};
  }
}

std::string FirstLines(const std::string& text, int count) {
  std::string out;
  int n = 0;
  for (char c : text) {
    if (c == '\r') continue;
    if (c == '\n') {
      if (++n >= count) break;
      out += ' ';
      continue;
    }
    out += c;
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

// Runs the model on parameter sets, each in the folder of the worker that takes it.
class ModelRunner {
 public:
  ModelRunner(const ControlFile& cf, const EstimatorOptions& options, int workers)
      : cf_(cf), workers_(std::max(1, workers)) {
    templateText_ = ReadTextFile(cf.templateFile);
    instructionText_ = ReadTextFile(cf.instructionFile);
    const fs::path base = options.workRoot.empty() ? fs::temp_directory_path() : options.workRoot;
    static std::atomic<int> serial{0};
    root_ =
        base / ("tarno-estimate-" + std::to_string(::getpid()) + "-" + std::to_string(serial++));
    fs::create_directories(root_);
    support_ = options.supportFolder.empty() ? cf.path.parent_path() : options.supportFolder;
    // The model command names a script of the control file's folder ("./T-PEST.sh");
    // the runs start in their own folders, so its first word is made absolute.
    command_ = cf.modelCommand;
    const std::size_t end = command_.find_first_of(" \t");
    const std::string first = command_.substr(0, end);
    if (!fs::path(first).is_absolute() && fs::exists(cf.path.parent_path() / first))
      command_ =
          ShellQuoted(fs::absolute(cf.path.parent_path() / first).lexically_normal().string()) +
          (end == std::string::npos ? std::string() : command_.substr(end));
    for (int w = 0; w < workers_; ++w) {
      const fs::path d = root_ / ("run" + std::to_string(w + 1));
      fs::create_directories(d);
      // Files the solver reads beside its input when they exist.
      for (const char* name : {"convergence.tab", "CONVERGENCE.TAB"}) {
        std::error_code ec;
        if (fs::exists(support_ / name, ec))
          fs::copy_file(support_ / name, d / name, fs::copy_options::overwrite_existing, ec);
      }
    }
  }
  ~ModelRunner() {
    std::error_code ec;
    fs::remove_all(root_, ec);
  }

  // Runs every set; the outcomes in the order of the sets. `done` is called in the
  // calling thread as runs end, so that a window can show it and pump its events.
  std::vector<RunOutcome> RunAll(const std::vector<std::vector<double>>& sets,
                                 const std::function<void()>& done) {
    std::vector<RunOutcome> out(sets.size());
    std::atomic<std::size_t> next{0};
    std::mutex m;
    std::condition_variable cv;
    std::size_t finished = 0;
    auto work = [&](int worker) {
      for (std::size_t i = next++; i < sets.size(); i = next++) {
        RunOutcome r = RunOne(worker, sets[i]);
        std::lock_guard<std::mutex> lock(m);
        out[i] = std::move(r);
        ++finished;
        cv.notify_one();
      }
    };
    const int n = std::min<int>(workers_, static_cast<int>(sets.size()));
    std::vector<std::thread> threads;
    for (int w = 0; w < n; ++w) threads.emplace_back(work, w);
    std::size_t reported = 0;
    while (reported < sets.size()) {
      std::unique_lock<std::mutex> lock(m);
      cv.wait(lock, [&] { return finished > reported; });
      const std::size_t now = finished;
      lock.unlock();
      for (; reported < now; ++reported)
        if (done) done();
    }
    for (std::thread& t : threads) t.join();
    return out;
  }

 private:
  RunOutcome RunOne(int worker, const std::vector<double>& values) {
    RunOutcome r;
    const fs::path d = root_ / ("run" + std::to_string(worker + 1));
    std::error_code ec;
    for (const std::string& name : {cf_.modelOutput, std::string("TARNO.OPS")})
      fs::remove(d / name, ec);
    std::map<std::string, double> modelValues;
    for (std::size_t j = 0; j < values.size(); ++j)
      modelValues[UpperName(cf_.parameters[j].name)] = ModelValue(cf_.parameters[j], values[j]);
    try {
      WriteTextFile(d / cf_.modelInput,
                    FillTemplate(templateText_, modelValues, cf_.templateFile.string()));
      const pid_t pid =
          StartProgram("/bin/sh", {"-c", command_}, d, d / "model.out", d / "model.err");
      BlockingWaiter waiter;
      const int status = WaitForTerm1(waiter, pid);
      const std::string ops = FileText(d / "TARNO.OPS");
      if (!ops.empty() || fs::exists(d / "TARNO.OPS", ec)) {
        r.failure = "the solver ended with a fatal error: " + FirstLines(ops, 4);
        return r;
      }
      if (status != 0) {
        std::string err = FirstLines(FileText(d / "model.err"), 3);
        r.failure = "the model command \"" + cf_.modelCommand + "\" ended with status " +
                    std::to_string(status) + (err.empty() ? "" : ": " + err);
        return r;
      }
      if (!fs::exists(d / cf_.modelOutput, ec)) {
        r.failure = "the model run left no " + cf_.modelOutput;
        return r;
      }
      const std::map<std::string, double> read =
          ReadObservations(instructionText_, cf_.instructionFile.string(),
                           ReadTextFile(d / cf_.modelOutput), cf_.modelOutput);
      for (const ControlObservation& o : cf_.observations) {
        const auto it = read.find(UpperName(o.name));
        if (it == read.end()) {
          r.failure = "the instruction file reads no value for the observation \"" + o.name + "\"";
          return r;
        }
        r.simulated.push_back(it->second);
      }
      r.ok = true;
    } catch (const std::exception& e) {
      r.failure = e.what();
    }
    return r;
  }

  const ControlFile& cf_;
  int workers_;
  fs::path root_;
  fs::path support_;
  std::string command_;
  std::string templateText_;
  std::string instructionText_;
};

double Phi(const ControlFile& cf, const std::vector<double>& sim) {
  double phi = 0;
  for (std::size_t i = 0; i < sim.size(); ++i) {
    const double r = cf.observations[i].weight * (cf.observations[i].value - sim[i]);
    phi += r * r;
  }
  return phi;
}

// Solves the small symmetric system a x = b by Gaussian elimination with partial
// pivoting; false when it is singular.
bool SolveDense(std::vector<std::vector<double>> a, std::vector<double> b, std::vector<double>& x) {
  const std::size_t n = b.size();
  for (std::size_t k = 0; k < n; ++k) {
    std::size_t p = k;
    for (std::size_t i = k + 1; i < n; ++i)
      if (std::abs(a[i][k]) > std::abs(a[p][k])) p = i;
    if (!(std::abs(a[p][k]) > 0)) return false;
    std::swap(a[k], a[p]);
    std::swap(b[k], b[p]);
    for (std::size_t i = k + 1; i < n; ++i) {
      const double f = a[i][k] / a[k][k];
      for (std::size_t j = k; j < n; ++j) a[i][j] -= f * a[k][j];
      b[i] -= f * b[k];
    }
  }
  x.assign(n, 0);
  for (std::size_t k = n; k-- > 0;) {
    double s = b[k];
    for (std::size_t j = k + 1; j < n; ++j) s -= a[k][j] * x[j];
    x[k] = s / a[k][k];
  }
  return std::all_of(x.begin(), x.end(), [](double v) { return std::isfinite(v); });
}

}  // namespace

EstimatorResult Estimate(const ControlFile& cf, const EstimatorOptions& options) {
  EstimatorResult res;
  const std::size_t np = cf.parameters.size();
  const std::size_t nobs = cf.observations.size();
  std::vector<std::size_t> free;  // the estimated parameters
  for (std::size_t j = 0; j < np; ++j)
    if (cf.parameters[j].transform != "fixed") free.push_back(j);
  const std::size_t nf = free.size();

  auto toT = [&](std::size_t j, double v) {
    return cf.parameters[j].transform == "log" ? std::log10(v) : v;
  };
  auto fromT = [&](std::size_t j, double t) {
    return cf.parameters[j].transform == "log" ? std::pow(10.0, t) : t;
  };

  int threads = options.threads > 0
                    ? options.threads
                    : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  threads = std::min<int>(threads, static_cast<int>(std::max<std::size_t>(nf, 3)));
  ModelRunner runner(cf, options, threads);

  int iteration = 0;
  int planned = 0, doneInBatch = 0;
  auto run = [&](const std::vector<std::vector<double>>& sets) {
    planned = static_cast<int>(sets.size());
    doneInBatch = 0;
    auto outcomes = runner.RunAll(sets, [&] {
      ++doneInBatch;
      if (options.onProgress) options.onProgress(doneInBatch, planned, iteration);
    });
    res.runs += static_cast<int>(sets.size());
    return outcomes;
  };
  auto failed = [&](const std::vector<RunOutcome>& outs, const std::string& what) {
    for (std::size_t k = 0; k < outs.size(); ++k)
      if (!outs[k].ok) {
        res.ok = false;
        res.failure =
            "Model run " + std::to_string(res.runs - static_cast<int>(outs.size()) + k + 1) + " (" +
            what + ", iteration " + std::to_string(iteration) + ") failed: " + outs[k].failure;
        return true;
      }
    return false;
  };

  std::vector<double> values;
  for (const ControlParameter& p : cf.parameters) values.push_back(p.value);
  auto first = run({values});
  if (failed(first, "initial values")) return res;
  std::vector<double> sim = first[0].simulated;
  double phi = Phi(cf, sim);
  double lambda = 0.01;
  res.values = values;
  res.phi = phi;
  auto record = [&](double lam) {
    EstimatorIteration it;
    it.number = iteration;
    it.phi = phi;
    it.lambda = lam;
    it.runs = res.runs;
    it.values = values;
    it.simulated = sim;
    res.history.push_back(it);
    if (options.onIteration) options.onIteration(it);
  };
  record(0);

  if (nf == 0) {
    res.ok = true;
    res.stopReason = "no parameter is estimated";
    return res;
  }

  res.stopReason = "the iteration limit was reached";
  while (iteration < options.maxIterations) {
    if (phi == 0) {
      res.stopReason = "phi is zero";
      break;
    }
    ++iteration;
    // The Jacobian of the simulated values by the transformed parameters.
    std::vector<std::vector<double>> sets;
    std::vector<double> steps(nf);
    for (std::size_t k = 0; k < nf; ++k) {
      const std::size_t j = free[k];
      const ControlParameter& p = cf.parameters[j];
      const double t = toT(j, values[j]);
      double h =
          p.transform == "log"
              ? std::log10(1 + kRelativeIncrement)
              : kRelativeIncrement *
                    std::max(std::abs(t), std::max(std::abs(p.lower), std::abs(p.upper)) * 1e-3);
      if (h == 0) h = kRelativeIncrement;
      if (t + h > toT(j, p.upper)) h = -h;
      steps[k] = h;
      std::vector<double> v = values;
      v[j] = fromT(j, t + h);
      sets.push_back(v);
    }
    auto outs = run(sets);
    if (failed(outs, "derivatives")) return res;
    // Weighted Jacobian, normal matrix and gradient.
    std::vector<std::vector<double>> jac(nobs, std::vector<double>(nf));
    for (std::size_t k = 0; k < nf; ++k)
      for (std::size_t i = 0; i < nobs; ++i)
        jac[i][k] = cf.observations[i].weight * (outs[k].simulated[i] - sim[i]) / steps[k];
    std::vector<std::vector<double>> a(nf, std::vector<double>(nf, 0));
    std::vector<double> g(nf, 0);
    for (std::size_t i = 0; i < nobs; ++i) {
      const double r = cf.observations[i].weight * (cf.observations[i].value - sim[i]);
      for (std::size_t k = 0; k < nf; ++k) {
        g[k] += jac[i][k] * r;
        for (std::size_t l = 0; l < nf; ++l) a[k][l] += jac[i][k] * jac[i][l];
      }
    }
    // Trial steps for three values of lambda at once; when none lowers phi, lambda
    // grows and the trials are repeated with the same Jacobian.
    bool accepted = false;
    double bestStep = 0;
    for (int attempt = 0; attempt < 6 && !accepted; ++attempt) {
      const double lams[3] = {lambda / 10, lambda, lambda * 10};
      std::vector<std::vector<double>> trials;
      std::vector<double> trialLambda;
      for (double lam : lams) {
        std::vector<std::vector<double>> m = a;
        for (std::size_t k = 0; k < nf; ++k) m[k][k] += lam * std::max(a[k][k], 1e-300);
        std::vector<double> dx;
        if (!SolveDense(m, g, dx)) continue;
        std::vector<double> v = values;
        double stepSize = 0;
        for (std::size_t k = 0; k < nf; ++k) {
          const std::size_t j = free[k];
          const ControlParameter& p = cf.parameters[j];
          const double t = std::clamp(toT(j, values[j]) + dx[k], toT(j, p.lower), toT(j, p.upper));
          stepSize = std::max(stepSize, std::abs(t - toT(j, values[j])) /
                                            std::max(1.0, std::abs(toT(j, values[j]))));
          v[j] = fromT(j, t);
        }
        if (stepSize == 0) continue;
        trials.push_back(v);
        trialLambda.push_back(lam);
        bestStep = std::max(bestStep, stepSize);
      }
      if (trials.empty()) break;
      auto touts = run(trials);
      if (failed(touts, "trial steps")) return res;
      std::size_t best = trials.size();
      double bestPhi = phi;
      for (std::size_t k = 0; k < trials.size(); ++k) {
        const double p = Phi(cf, touts[k].simulated);
        if (p < bestPhi) {
          bestPhi = p;
          best = k;
        }
      }
      if (best < trials.size()) {
        const double reduction = (phi - bestPhi) / phi;
        values = trials[best];
        sim = touts[best].simulated;
        phi = bestPhi;
        lambda = std::max(trialLambda[best], 1e-12);
        accepted = true;
        res.values = values;
        res.phi = phi;
        res.iterations = iteration;
        record(lambda);
        if (reduction < kPhiReduction) {
          res.ok = true;
          res.stopReason = "phi fell by less than a relative 1e-5";
          return res;
        }
      } else {
        lambda *= 100;
      }
    }
    if (!accepted) {
      res.iterations = iteration;
      res.stopReason = "no step lowers phi any further";
      break;
    }
    if (bestStep < kSmallStep) {
      res.stopReason = "the step is below a relative 1e-10";
      break;
    }
  }
  res.ok = true;
  return res;
}

std::string EstimatorRecordText(const ControlFile& cf, const EstimatorResult& r) {
  std::string s;
  char buf[256];
  s += "Built-in estimation (Levenberg-Marquardt) on " + cf.path.string() + "\r\n";
  s += "Parameters: " + std::to_string(cf.parameters.size()) +
       "  Observations: " + std::to_string(cf.observations.size()) + "\r\n\r\n";
  for (const EstimatorIteration& it : r.history) {
    std::snprintf(buf, sizeof buf, "Iteration %d  phi %.10E  lambda %.3E  model runs %d\r\n",
                  it.number, it.phi, it.lambda, it.runs);
    s += buf;
    s += "  Parameter        Value\r\n";
    for (std::size_t j = 0; j < cf.parameters.size(); ++j) {
      std::snprintf(buf, sizeof buf, "  %-12s %22.15E\r\n", cf.parameters[j].name.c_str(),
                    it.values[j]);
      s += buf;
    }
    s += "  Observation          Observed        Simulated       Weight        Residual\r\n";
    for (std::size_t i = 0; i < cf.observations.size() && i < it.simulated.size(); ++i) {
      const ControlObservation& o = cf.observations[i];
      std::snprintf(buf, sizeof buf, "  %-16s %15.7E %15.7E %12.5E %15.7E\r\n", o.name.c_str(),
                    o.value, it.simulated[i], o.weight, o.value - it.simulated[i]);
      s += buf;
    }
    s += "\r\n";
  }
  if (r.ok) {
    std::snprintf(buf, sizeof buf,
                  "Ended after %d iterations and %d model runs: %s. Final phi %.10E\r\n",
                  r.iterations, r.runs, r.stopReason.c_str(), r.phi);
    s += buf;
  } else {
    s += "Stopped: " + r.failure + "\r\n";
  }
  return s;
}

namespace {

// The import of an estimation's result: the one place where the estimator changes
// the project, the same import as that of a PEST run's .par.
bool ImportEstimate(const fs::path& projectPath, const fs::path& parFile, const fs::path& dir,
                    UserInterface& ui) {
  Database db = Database::Open(projectPath);
  const ParImportResult r = ImportParFile(db, parFile, ui, dir / kPestImportLog);
  return r.errors.empty() && r.imported > 0;
}

// The reference head that a new solve of the project would write. The template
// carries the program's present value, which is only right after a solve in the
// same session; the estimator's runs must solve the model that a solve would.
void SetReferenceHeadOfNewSolve(Database& db, SolutionState& state) {
  Statement m = db.Prepare("select * from Model");
  if (!m.Step() || m.GetInt64("UNIFLOWCompute") != 0) return;
  const Value yes{std::int64_t{1}};
  if (AnyElementWhere(db, ElementKind::Linesink, "HeadSpecified", "=", yes))
    state.ReferenceHead = HalfMeanHeadOfHeadLinesinks(db);
  else if (AnyElementWhere(db, ElementKind::Well, "HeadSpecified", "=", yes))
    state.ReferenceHead = HalfMeanHeadOfHeadWells(db);
  else
    state.ReferenceHead = m.GetDouble("AQBase") + Val(m.GetText("aqthickness"));
}

}  // namespace

EstimateReport RunEstimation(SolveContext& ctx, const EstimatorOptions& options, bool import,
                             bool useExistingFiles) {
  EstimateReport rep;
  if (ctx.ui == nullptr) throw InvalidArgumentError("the estimation needs a user interface");
  UserInterface& ui = *ctx.ui;
  EstimationProject project;
  {
    Database db = Database::Open(ctx.projectPath);
    if (PestObservations(db).empty()) {
      rep.failure = "the project has no test points with observations";
      ui.MessageBox(kNoTestPointsTitle,
                    {"There are no Test Points with observations in this project!",
                     "No estimation will be made."});
      return rep;
    }
    if (!AnyScenario(db)) {
      rep.failure = "the project has no scenario tags";
      ui.MessageBox("No Scenarios",
                    {"There are no Scenarios in this project!", "No estimation will be made."});
      return rep;
    }
    project = LoadEstimationProject(db);
    if (ctx.state != nullptr) SetReferenceHeadOfNewSolve(db, *ctx.state);
  }
  const fs::path pst = project.dir / (project.base + ".pst");
  if (!useExistingFiles) {
    if (WritePestFiles(ctx, nullptr, false).empty()) {
      rep.failure = "no estimation files were written";
      return rep;
    }
  }
  ControlFile cf;
  try {
    cf = ReadControlFile(pst);
  } catch (const Error& e) {
    rep.failure = e.what();
    ui.MessageBox(kEstimationFailedTitle,
                  {"The control file cannot be read:", e.what(), "The project was not changed."});
    return rep;
  }
  EstimatorOptions o = options;
  if (o.supportFolder.empty()) o.supportFolder = project.dir;
  rep.result = Estimate(cf, o);
  rep.recordFile = project.dir / (project.base + ".erc");
  WriteTextFile(rep.recordFile, EstimatorRecordText(cf, rep.result));
  if (!rep.result.ok) {
    rep.failure = rep.result.failure;
    ui.MessageBox(kEstimationFailedTitle,
                  {"The estimation stopped:", rep.result.failure,
                   "The project was not changed. The iterations so far are in " +
                       rep.recordFile.string() + "."});
    return rep;
  }
  rep.parFile = project.dir / (project.base + ".par");
  WriteTextFile(rep.parFile, ParFileText(cf.parameters, rep.result.values));
  rep.ok = true;
  if (import) rep.imported = ImportEstimate(ctx.projectPath, rep.parFile, project.dir, ui);
  return rep;
}

}  // namespace tarno
