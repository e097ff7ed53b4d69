// Step handlers of solve (lakes and their outer iteration included), time, save and load.
#include "engine/run_steps.h"

namespace tarno::engine::running {

void Runner::apply(int line, const SolveCommand& c) {
  if (!model_.lakes.empty() || hasLakeEdges(model_)) {
    solveLakes(line, c);
    return;
  }
  if (!solution_ || modelChanged_) {
    solution_.reset();
    solution_.emplace(model_);
    attachWarnings();
    modelChanged_ = false;
  } else {
    logs_.message("Continuing the iterations of the present solution.");
  }
  solution_->setTime(model_.time);
  SolveOptions opt;
  opt.innerIterations = c.inner;
  opt.outerIterations = c.outer;
  opt.storeOnDisk = c.store != 0;
  opt.fullFactorisation = c.full != 0;
  opt.method = c.method == SolveCommand::Method::Dense        ? SolveMethod::Dense
               : c.method == SolveCommand::Method::Compressed ? SolveMethod::Compressed
                                                              : SolveMethod::Automatic;
  logs_.message("Solve (" + where(line) + "): " + std::to_string(c.inner) + " inner, " + std::to_string(c.outer) +
                " outer iterations at most");
  SolveReport r;
  try {
    r = solution_->solve(opt, [this](const std::string& l) { logs_.message(l); });
  } catch (const FatalError& e) {
    solution_.reset();
    throw RunFatal{line, {"The model could not be solved (" + where(line) + ").", e.what()}};
  }
  // The engine writes the counts, the iterations, the water balance and the
  // times to the message log itself (through the callback above), and warns
  // through the warning sink when the iterations did not meet every condition.
  // The output report at the end of the run tells the last solve.
  lastSolve_ = r;
}

// A model with lakes is solved afresh by each solve: the lakes' outer iteration
// rebuilds the solution with each new exchange through the lake bottoms.
size_t Runner::lakeCount() const {
  size_t n = model_.lakes.size();
  for (const LineSinkString& ls : model_.lineSinks) n += ls.lake.on ? 1 : 0;
  return n;
}

void Runner::solveLakes(int line, const SolveCommand& c) {
  SolveOptions opt;
  opt.innerIterations = c.inner;
  opt.outerIterations = c.outer;
  opt.storeOnDisk = c.store != 0;
  opt.fullFactorisation = c.full != 0;
  opt.method = c.method == SolveCommand::Method::Dense        ? SolveMethod::Dense
               : c.method == SolveCommand::Method::Compressed ? SolveMethod::Compressed
                                                              : SolveMethod::Automatic;
  logs_.message("Solve (" + where(line) + "): " + std::to_string(c.inner) + " inner, " + std::to_string(c.outer) +
                " outer iterations at most, with " + std::to_string(lakeCount()) + " lakes");
  // The lakes start from the exchange of the present solution, when there is one.
  Model start = model_;
  if (solution_ && solution_->solved())
    for (Lake& l : start.lakes)
      for (const Lake& k : solution_->model().lakes)
        if (k.label == l.label) l.extraction = k.extraction;
  for (LineSinkString& ls : start.lineSinks)
    if (ls.lake.on && solution_ && solution_->solved())
      for (const LineSinkString& k : solution_->model().lineSinks)
        if (k.lake.on && k.lake.solved && k.label == ls.label) {
          ls.lake.stage = k.lake.stage;
          ls.lake.dry = k.lake.dry;
          ls.lake.solved = true;
        }
  LakeSolveReport r;
  try {
    r = solveWithLakeEdges(start, solution_, opt, [this](const std::string& l) { logs_.message(l); },
                       [this](Solution&) { attachWarnings(); });
  } catch (const FatalError& e) {
    solution_.reset();
    throw RunFatal{line, {"The model could not be solved (" + where(line) + ").", e.what()}};
  }
  modelChanged_ = false;
  if (!r.converged)
    logs_.problem(line, "", "the balance of the lakes had not closed after " + std::to_string(r.lakeIterations) +
                                " solves; the stages are those of the last one");
  logs_.message("Lakes: " + std::to_string(r.lakeIterations) + " solves of the model to close their balances");
  for (const auto& l : formatLakeBalance(lakeResults(*solution_))) logs_.message(l);
  lastSolve_ = r.last;
}

void Runner::apply(int, const TimeCommand& c) {
  model_.time = c.time;
  if (solution_) solution_->setTime(c.time);
  logs_.message("Time of evaluation: " + number(c.time) + " days");
  if (solution_ && solution_->solved() && !model_.theisWells.empty()) {
    int started = 0, later = 0;
    for (const TheisWellResult& w : solution_->theisWellResults()) {
      started += w.activeLines;
      later += w.lines - w.activeLines;
    }
    logs_.message("  transient wells: " + std::to_string(started) + " schedule lines have started by this time" +
                  (later > 0 ? ", " + std::to_string(later) + " start later and have no effect yet" : ""));
  }
}

void Runner::apply(int line, const SaveCommand& c) {
  if (!solution_) {
    logs_.problem(line, "", "\"save\" before any solve or load: there is no solution to save; line skipped");
    return;
  }
  fs::path p = prepareOutputFile(workDir_, withDefaultExtension(c.name, ".SOL"));
  try {
    solution_->save(p.string());
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& e) {
    logs_.problem(line, "", std::string("the solution could not be written to ") + p.filename().string() + ": " +
                                e.what());
    return;
  }
  logs_.wrote("solution", p);
}

void Runner::apply(int line, const LoadCommand& c) {
  std::string name = withDefaultExtension(c.name, ".SOL");
  auto p = findFileNoCase(workDir_, name);
  if (!p)
    throw RunFatal{line,
                   {"The saved solution " + name + " was not found in " + workDir_.string() + " (" + where(line) + ").",
                    "Solve the model again to create it."}};
  try {
    solution_.reset();
    solution_.emplace(Solution::load(p->string()));
    attachWarnings();
  } catch (const FatalError& e) {
    solution_.reset();
    throw RunFatal{line, {"The saved solution " + p->filename().string() + " cannot be loaded (" + where(line) + ").",
                          e.what()}};
  }
  // The window and time of the command file, when given, stay in force.
  Window window = model_.window;
  double time = model_.time;
  model_ = solution_->model();
  if (window.given) model_.window = window;
  if (time != 0) {
    model_.time = time;
    solution_->setTime(time);
  }
  modelChanged_ = false;
  logs_.message("Loaded the solution " + p->filename().string() + ": " + std::to_string(model_.wells.size()) +
                " wells, " + std::to_string(model_.lineSinks.size()) + " line-sink strings, " +
                std::to_string(solution_->unknowns()) + " equations");
}

}  // namespace tarno::engine::running
