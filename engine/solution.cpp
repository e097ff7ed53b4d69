// The analytic element solution: preparation of the elements, the collocation
// system, the iterations for the nonlinear conditions, and the results.
#include "engine/solution.h"

#include "engine/area.h"
#include "engine/elements.h"
#include "engine/fast_eval.h"
#include "engine/fields.h"
#include "engine/hoperator.h"
#include "engine/kernels.h"
#include "engine/lapack.h"
#include "engine/saltwater.h"
#include "engine/state.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <limits>
#include <new>

namespace tarno::engine {

using detail::kPi;

namespace {

std::string fmt(const char* f, double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, f, v);
    return buf;
}

double seconds(std::chrono::steady_clock::time_point a) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - a).count();
}

using segment_conditions::followsGallery;
using segment_conditions::limitedRow;
using segment_conditions::updateStreams;

}  // namespace

const LineSinkKindWords& wordsOf(LineSinkKind k) {
    static const LineSinkKindWords kDischarge{"discharge", "discharge specified", "line-sinks, discharge specified"};
    static const LineSinkKindWords kHead{"head", "head specified", "line-sinks, head specified"};
    static const LineSinkKindWords kDrain{"drain", "drain", "drains"};
    static const LineSinkKindWords kGallery{"gallery", "gallery", "galleries"};
    static const LineSinkKindWords kStream{"stream", "stream", "streams"};
    switch (k) {
    case LineSinkKind::Discharge: return kDischarge;
    case LineSinkKind::Head: return kHead;
    case LineSinkKind::Drain: return kDrain;
    case LineSinkKind::Gallery: return kGallery;
    case LineSinkKind::Stream: return kStream;
    }
    return kHead;
}

void Solution::State::warn(const std::string& w) {
    warnings.push_back(w);
    if (warnSink) warnSink(w);
}

// Turns the model into elements and unknowns. Runs once per Solution.
void Solution::State::prepare() {
    const Aquifer& A = model.aquifer;
    if (!(A.conductivity > 0.0))
        throw FatalError("The aquifer's conductivity must be positive; it is " + fmt("%g", A.conductivity) + ".");
    if (!(A.thickness > 0.0))
        throw FatalError("The aquifer's thickness must be positive; it is " + fmt("%g", A.thickness) + ".");
    aq = detail::AquiferFn{A.base, A.conductivity, A.thickness, {}};
    if (A.hasInterface) {
        if (auto nu = interfaceContrast(A))
            aq.setInterface(*nu, A.seaLevel);
        else
            warn("The salt water interface needs a fresh water gravity above 0 and a salt water gravity above it; "
                 "with fresh water gravity " + fmt("%g", A.freshGravity) + " and salt water gravity " +
                 fmt("%g", A.saltGravity) + " the aquifer is solved without an interface.");
    }

    // Extent of the elements, for tolerances and a missing reference point.
    double xmin = 1e300, xmax = -1e300, ymin = 1e300, ymax = -1e300;
    auto grow = [&](double x, double y) {
        xmin = std::min(xmin, x); xmax = std::max(xmax, x);
        ymin = std::min(ymin, y); ymax = std::max(ymax, y);
    };
    for (const auto& w : model.wells) grow(w.x, w.y);
    for (const auto& w : model.partialWells) if (std::isfinite(w.x) && std::isfinite(w.y)) grow(w.x, w.y);
    for (const auto& w : model.theisWells) if (std::isfinite(w.x) && std::isfinite(w.y)) grow(w.x, w.y);
    for (const auto& ls : model.lineSinks)
        for (const auto& sg : ls.segments) { grow(sg.x1, sg.y1); grow(sg.x2, sg.y2); }
    if (model.window.given) { grow(model.window.x1, model.window.y1); grow(model.window.x2, model.window.y2); }
    for (const auto& in : model.inhomogeneities)
        for (const auto& v : in.vertices) if (std::isfinite(v.x) && std::isfinite(v.y)) grow(v.x, v.y);
    for (const auto& w : model.walls)
        for (const auto& v : w.vertices) if (std::isfinite(v.x) && std::isfinite(v.y)) grow(v.x, v.y);
    for (const auto& p : model.ponds)
        if (std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.radius)) {
            grow(p.x - std::fabs(p.radius), p.y - std::fabs(p.radius));
            grow(p.x + std::fabs(p.radius), p.y + std::fabs(p.radius));
        }
    if (xmin > xmax) { xmin = ymin = -1.0; xmax = ymax = 1.0; }
    const double size = std::max(std::hypot(xmax - xmin, ymax - ymin), 1e-6);
    const double tol = 1e-6 * size;

    prepareAreaElements(tol);
    buildAreaArrays();

    wells.clear();
    for (int i = 0; i < (int)model.wells.size(); ++i) {
        const Well& w = model.wells[i];
        WellEl e;
        e.model = i;
        e.x = w.x; e.y = w.y; e.rw = w.radius;
        if (!(w.radius > 0.0)) {
            e.rw = 1e-4 * size;
            warn("well " + w.label + ": radius " + fmt("%g", w.radius) + " is not positive; " + fmt("%g", e.rw) + " used");
        }
        e.headSpecified = w.headSpecified;
        e.value = w.value;
        e.q = w.headSpecified ? 0.0 : w.value;
        e.dom = domainAt(e.x + e.rw, e.y);
        wells.push_back(e);
    }
    preparePartialWells(size);
    prepareTheisWells(size);

    segs.clear();
    galleries.clear();
    for (int si = 0; si < (int)model.lineSinks.size(); ++si) {
        const LineSinkString& ls = model.lineSinks[si];
        const bool headLike = ls.kind != LineSinkKind::Discharge;
        const bool resist = headLike && !ls.farField && ls.resistance > 0.0 && ls.width > 0.0;
        if (headLike && !ls.farField && ls.resistance > 0.0 && !(ls.width > 0.0))
            warn("line-sink string " + ls.label + ": resistance without a positive width; the head condition holds without resistance");
        if (ls.kind == LineSinkKind::Stream && (ls.inlet || !ls.outletTable.empty()))
            warn("line-sink string " + ls.label + ": its inlet or outlet reaches no lake; the string is routed as a plain stream");
        int gal = -1;
        if (ls.kind == LineSinkKind::Gallery) {
            GalleryEl g;
            g.string = si;
            g.total = ls.pumping;
            galleries.push_back(g);
            gal = (int)galleries.size() - 1;
        }
        int kept = 0;
        for (int k = 0; k < (int)ls.segments.size(); ++k) {
            const Segment& sg = ls.segments[k];
            if (std::hypot(sg.x2 - sg.x1, sg.y2 - sg.y1) <= tol) {
                warn("line-sink string " + ls.label + ": segment " + sg.label + " has coincident vertices and is skipped");
                continue;
            }
            SegEl e;
            e.string = si;
            e.index = kept++;
            e.modelSeg = k;
            e.kind = ls.kind;
            e.x1 = sg.x1; e.y1 = sg.y1; e.x2 = sg.x2; e.y2 = sg.y2;
            e.value = sg.value;
            e.resist = resist;
            e.c = ls.resistance; e.w = ls.width; e.d = ls.depth;
            e.dom = domainAt(0.5 * (sg.x1 + sg.x2), 0.5 * (sg.y1 + sg.y2));
            if (resist) e.a = ls.resistance * aqOf(e.dom).transmissivity(sg.value) / ls.width;
            e.gallery = gal;
            if (!headLike) e.fixedValue = sg.value;
            segs.push_back(e);
            if (gal >= 0) galleries[gal].segs.push_back((int)segs.size() - 1);
        }
        if (kept == 0) warn("line-sink string " + ls.label + " has no segment of positive length and is skipped");
    }
    for (auto& g : galleries)
        if (g.segs.empty()) g.allHeld = true;

    // Reference point.
    if (A.hasReference) {
        refX = A.referenceX; refY = A.referenceY; refHead = A.referenceHead;
    } else {
        const double r = 0.5 * size;
        refX = 0.5 * (xmin + xmax) + 10.0 * r;
        refY = 0.5 * (ymin + ymax) + 10.0 * r;
        refHead = A.base + A.thickness;
        warn("no reference point: the head at (" + fmt("%g", refX) + ", " + fmt("%g", refY) +
             "), ten model sizes from the model, is set to the top of the aquifer");
    }
    refDom = domainAt(refX, refY);
    {
        double unused = 0.0;
        updatePartialWells(unused);  // loss factors from an estimate of the heads at the wells
    }

    // Unknowns: head-specified wells, segment strengths, gallery potentials, the constant.
    ukind.clear(); uowner.clear(); px.clear(); py.clear();
    for (int i = 0; i < (int)wells.size(); ++i) {
        if (!wells[i].headSpecified) continue;
        wells[i].unknown = (int)ukind.size();
        ukind.push_back(UnknownKind::WellQ); uowner.push_back(i);
        px.push_back(wells[i].x + wells[i].rw); py.push_back(wells[i].y);
    }
    for (int i = 0; i < (int)segs.size(); ++i) {
        if (segs[i].kind == LineSinkKind::Discharge) continue;
        segs[i].unknown = (int)ukind.size();
        ukind.push_back(UnknownKind::SegSigma); uowner.push_back(i);
        px.push_back(0.5 * (segs[i].x1 + segs[i].x2)); py.push_back(0.5 * (segs[i].y1 + segs[i].y2));
    }
    for (int i = 0; i < (int)galleries.size(); ++i) {
        galleries[i].unknown = (int)ukind.size();
        ukind.push_back(UnknownKind::GalleryPhi); uowner.push_back(i);
        px.push_back(refX); py.push_back(refY);  // no point of its own; the row is the total discharge
    }
    numberAreaUnknowns();
    ukind.push_back(UnknownKind::Constant); uowner.push_back(0);
    px.push_back(refX); py.push_back(refY);
    n = (int)ukind.size();
    x.assign(n, 0.0);
    rhs.assign(n, 0.0);
    phiPts.assign(n, std::numeric_limits<double>::quiet_NaN());

    // Evaluation arrays.
    const int ns = (int)segs.size();
    scx.resize(ns); scy.resize(ns); sihr.resize(ns); sihi.resize(ns); sscale.resize(ns); sc0.resize(ns);
    ssig.assign(ns, 0.0);
    for (int j = 0; j < ns; ++j) {
        const auto g = detail::makeGeom(segs[j].x1, segs[j].y1, segs[j].x2, segs[j].y2);
        scx[j] = g.cx; scy[j] = g.cy; sihr[j] = g.ihr; sihi[j] = g.ihi; sscale[j] = g.scale; sc0[j] = g.c0;
    }
    wx.resize(wells.size()); wy.resize(wells.size()); wq.assign(wells.size(), 0.0);
    for (size_t j = 0; j < wells.size(); ++j) { wx[j] = wells[j].x; wy[j] = wells[j].y; }

    // Potential of the known elements (uniform flow, discharge wells and strings) at the points.
    {
        std::vector<double> kq(wells.size(), 0.0), ks(ns, 0.0);
        for (size_t j = 0; j < wells.size(); ++j) kq[j] = wells[j].headSpecified ? 0.0 : wells[j].value;
        for (int j = 0; j < ns; ++j) ks[j] = segs[j].kind == LineSinkKind::Discharge ? segs[j].value : 0.0;
        known.assign(n, 0.0);
        // Without discharge strings the strings add exactly nothing: skipping their sum
        // keeps this O(n) per point instead of O(n^2) in all for large models.
        const int nks = std::any_of(ks.begin(), ks.end(), [](double v) { return v != 0.0; }) ? ns : 0;
#pragma omp parallel for schedule(static)
        for (int i = 0; i < n; ++i) {
            known[i] = -(A.qx0 * px[i] + A.qy0 * py[i]) + knownAreaPotential(px[i], py[i]) +
                       detail::wellSum(wx.data(), wy.data(), kq.data(), (int)wells.size(), px[i], py[i]) +
                       detail::lineSinkSum(scx.data(), scy.data(), sihr.data(), sihi.data(), sscale.data(),
                                           sc0.data(), ks.data(), nks, px[i], py[i]);
        }
        // Normal flow of the known elements at the wall points: W of the known elements
        // alone is what wAt gives before any unknown has a value.
        wq = kq;
        ssig = ks;
        setKnownFlows();
        wq.assign(wells.size(), 0.0);
        ssig.assign(ns, 0.0);
    }

    // Stream network: strings join where the last vertex of one coincides with the first
    // vertex of a segment of another routed string.
    streamOrder.clear();
    std::vector<int> firstSeg(model.lineSinks.size(), -1), lastSeg(model.lineSinks.size(), -1);
    for (int i = 0; i < ns; ++i) {
        if (segs[i].kind != LineSinkKind::Stream) continue;
        if (firstSeg[segs[i].string] < 0) firstSeg[segs[i].string] = i;
        lastSeg[segs[i].string] = i;
    }
    for (int i = 0; i < ns; ++i) {
        if (segs[i].kind != LineSinkKind::Stream) continue;
        if (i != lastSeg[segs[i].string]) { segs[i].downstream = i + 1; continue; }
        if (model.lineSinks[segs[i].string].end) continue;
        for (int j = 0; j < ns; ++j) {
            if (segs[j].kind != LineSinkKind::Stream || segs[j].string == segs[i].string) continue;
            if (std::hypot(segs[j].x1 - segs[i].x2, segs[j].y1 - segs[i].y2) <= tol) {
                segs[i].downstream = j;
                break;
            }
        }
    }
    {
        std::vector<int> indeg(ns, 0);
        for (int i = 0; i < ns; ++i)
            if (segs[i].kind == LineSinkKind::Stream && segs[i].downstream >= 0) ++indeg[segs[i].downstream];
        std::vector<int> queue;
        for (int i = 0; i < ns; ++i)
            if (segs[i].kind == LineSinkKind::Stream && indeg[i] == 0) queue.push_back(i);
        for (size_t q = 0; q < queue.size(); ++q) {
            const int i = queue[q];
            streamOrder.push_back(i);
            const int d = segs[i].downstream;
            if (d >= 0 && --indeg[d] == 0) queue.push_back(d);
        }
        for (int i = 0; i < ns; ++i) {
            if (segs[i].kind == LineSinkKind::Stream && indeg[i] > 0) {
                warn("stream segment " + model.lineSinks[segs[i].string].segments[segs[i].modelSeg].label +
                     " lies on a closed loop of streams; the loop is cut there");
                // Cut the loop: whatever flows into it from inside the loop is dropped.
                for (int j = 0; j < ns; ++j)
                    if (segs[j].downstream == i && indeg[j] > 0) segs[j].downstream = -1;
                std::vector<int> q2{i};
                indeg[i] = 0;
                for (size_t q = 0; q < q2.size(); ++q) {
                    const int a = q2[q];
                    streamOrder.push_back(a);
                    const int d = segs[a].downstream;
                    if (d >= 0 && indeg[d] > 0 && --indeg[d] == 0) q2.push_back(d);
                }
            }
        }
    }
    prepared = true;
}

// Copies the unknowns into the strength arrays used by evaluation.
void Solution::State::syncStrengths(bool applyFixed) {
    for (size_t j = 0; j < wells.size(); ++j) {
        if (wells[j].headSpecified) wells[j].q = x[wells[j].unknown];
        wq[j] = wells[j].q;
    }
    for (size_t j = 0; j < segs.size(); ++j) {
        SegEl& e = segs[j];
        // A limited reach has a row of its own (the flow reaching it): its strength is
        // the solved one, kept as its fixed value for the results and the .SOL file.
        // When nothing flows into it from upstream its strength is known: use it exactly.
        if (applyFixed && e.state == SegState::Limited && e.unknown >= 0) {
            std::vector<std::pair<int, double>> coef;
            const double r = limitedRow(*this, (int)j, coef);
            e.fixedValue = coef.size() == 1 ? r / coef.front().second : x[e.unknown];
        }
        const bool fixed = e.unknown < 0 || (applyFixed && (e.state == SegState::Percolating ||
                                                            e.state == SegState::Off || e.state == SegState::Limited));
        // Rows that fix a strength give it only up to round-off: use the exact value.
        if (fixed && e.unknown >= 0) x[e.unknown] = e.fixedValue;
        ssig[j] = fixed ? e.fixedValue : x[e.unknown];
    }
    for (auto& p : ponds)
        if (p.headSpecified) p.rate = x[p.unknown];
    for (size_t e = 0; e < edges.size(); ++e) {
        DbEdge& d = edges[e];
        for (int k = 0; k < 3; ++k) d.val[k] = d.u[k] >= 0 ? x[d.u[k]] : 0.0;
        dbArr.setStrengths((int)e, d.val[0], d.val[1], d.val[2]);
    }
    constant = x[n - 1];
}

double Solution::State::potentialAt(double px_, double py_) const {
    return -(model.aquifer.qx0 * px_ + model.aquifer.qy0 * py_) + constant +
           detail::wellSum(wx.data(), wy.data(), wq.data(), (int)wq.size(), px_, py_) +
           detail::lineSinkSum(scx.data(), scy.data(), sihr.data(), sihi.data(), sscale.data(), sc0.data(),
                               ssig.data(), (int)ssig.size(), px_, py_) +
           areaPotential(px_, py_) + theisPotential(px_, py_);
}

std::complex<double> Solution::State::wAt(double x_, double y_) const {
    const detail::Field f = fieldAt(x_, y_);
    return {f.wr, f.wi};
}

detail::Field Solution::State::fieldAt(double x_, double y_) const {
    detail::Field f;
    f.phi = -(model.aquifer.qx0 * x_ + model.aquifer.qy0 * y_) + constant;
    f.wr = model.aquifer.qx0;
    f.wi = -model.aquifer.qy0;
    detail::wellField(wx.data(), wy.data(), wq.data(), (int)wq.size(), x_, y_, f);
    detail::lineSinkField(scx.data(), scy.data(), sihr.data(), sihi.data(), sscale.data(), sc0.data(), ssig.data(),
                          (int)ssig.size(), x_, y_, f);
    areaField(x_, y_, true, f);
    // Transient wells at the time of evaluation: few, and each needs an exponential
    // integral, so they stay out of the vectorised loops.
    if (!theis.empty()) {
        f.phi += theisPotential(x_, y_);
        const std::complex<double> tw = theisW(x_, y_);
        f.wr += tw.real();
        f.wi += tw.imag();
    }
    return f;
}

// ---------------------------------------------------------------------------------

Solution::Solution(Model model) : s_(std::make_unique<State>()) {
    s_->model = std::move(model);
    s_->prepare();
}
Solution::~Solution() = default;
Solution::Solution(Solution&&) noexcept = default;
Solution& Solution::operator=(Solution&&) noexcept = default;

const Model& Solution::model() const { return s_->model; }

void Solution::setWarningSink(LineSink sink) {
    s_->warnSink = std::move(sink);
    if (s_->warnSink)
        for (const auto& w : s_->warnings) s_->warnSink(w);
}
const std::vector<std::string>& Solution::warnings() const { return s_->warnings; }
bool Solution::solved() const { return s_->solved; }
void Solution::setTime(double t) { s_->model.time = t; }
int Solution::unknowns() const { return s_->n; }
const std::vector<double>& Solution::unknownValues() const { return s_->x; }

// Resistance coefficients follow the transmissivity at the current aquifer head.
static void updateResistanceCoefficients(Solution::State& s) {
    for (auto& e : s.segs) {
        if (!e.resist || e.unknown < 0) continue;
        const double phi = s.phiPts[e.unknown];
        const auto& aq = s.aqOf(e.dom);
        const double h = std::isfinite(phi) ? aq.headFromPhiExtended(phi) : e.value;
        e.a = e.c * aq.transmissivity(h) / e.w;
    }
}

namespace {

// Assembles the matrix for the current states and factorises it into s.lu.
void assembleAndFactor(Solution::State& s, double& tAssemble, double& tFactor) {
    const int n = s.n;
    const auto t0 = std::chrono::steady_clock::now();
    try {
        s.lu.resize((size_t)n * n);
        s.ipiv.resize(n);
    } catch (const std::bad_alloc&) {
        throw FatalError("Not enough memory for the " + std::to_string(n) + " equations of this model.");
    }
    double* A = s.lu.data();
    updateResistanceCoefficients(s);
#pragma omp parallel for schedule(dynamic, 4)
    for (int j = 0; j < n; ++j)
        elementOf(s, j).column(s, j, s.px.data(), s.py.data(), n, A + (size_t)j * n);
    // Each element's own entries of its row: the rows that fix or sum strengths, the
    // resistance, loss and common-potential terms of potential rows; then the doublets'.
    DenseRowSink sink(A, n);
    for (int i = 0; i < n; ++i) elementOf(s, i).assembleRow(s, i, sink);
    s.assembleAreaRows(sink);
    tAssemble += seconds(t0);

    const auto t1 = std::chrono::steady_clock::now();
    int info = 0;
    dgetrf_(&n, &n, A, &n, s.ipiv.data(), &info);
    tFactor += seconds(t1);
    if (info != 0) {
        std::string what = "unknown " + std::to_string(info);
        if (info > 0) {
            const int j = info - 1;
            what = elementOf(s, j).describe(s, j);
        }
        s.factorsValid = false;
        throw FatalError("The system of equations is singular at " + what +
                         ". Elements may coincide, or a condition is given twice at one place.");
    }
    s.factorsValid = true;
}

void buildRhs(Solution::State& s) {
    for (int i = 0; i < s.n; ++i) s.rhs[i] = elementOf(s, i).rhs(s, i);
}

}  // namespace

namespace {

struct UpdateResult {
    double residual = 0.0;
    int switches = 0;
};

// After a solve: potentials at the collocation points, residuals in head, and the
// switches of the inner loop (percolation, drains, galleries).
UpdateResult updateStates(Solution::State& s) {
    UpdateResult u;
    // Potentials at the points: from the rows where they are potential conditions,
    // by evaluation where the row fixes a strength.
    std::vector<int> direct;
    for (int i = 0; i < s.n; ++i) {
        const UnknownElement& el = elementOf(s, i);
        if (!el.hasPoint()) continue;
        if (!el.potentialRow(s, i)) { direct.push_back(i); continue; }
        s.phiPts[i] = el.rowPotential(s, i, s.known[i] + s.rhs[i]);
    }
#pragma omp parallel for schedule(dynamic, 8)
    for (int k = 0; k < (int)direct.size(); ++k) s.phiPts[direct[k]] = s.potentialAt(s.px[direct[k]], s.py[direct[k]]);

    for (int i = 0; i < s.n; ++i)
        u.residual = std::max(u.residual, elementOf(s, i).residual(s, i, s.phiPts[i]));

    if (s.updateArea(u.residual)) s.factorsValid = false;
    if (s.updatePartialWells(u.residual)) s.factorsValid = false;

    // The nonlinear conditions: drains, percolating reaches, gallery segments held.
    for (int i = 0; i < s.n; ++i) u.switches += elementOf(s, i).update(s, i, u.residual);
    return u;
}

}  // namespace

SolveReport Solution::solve(const SolveOptions& o, const LineSink& log) {
    State& s = *s_;
    auto say = [&](const std::string& l) { if (log) log(l); };
    const auto tStart = std::chrono::steady_clock::now();
    SolveReport rep;
    // The steady unknowns are solved without the transient wells (see engine/wells.cpp).
    s.theisReady = false;
    for (const auto& w : s.wells) (w.partial < 0 ? rep.wells : rep.partialWells) += 1;
    rep.theisWells = (int)s.theisGroups.size();
    rep.theisLines = (int)s.theis.size();
    for (const auto& ls : s.model.lineSinks) {
        ++rep.lineSinkStrings;
        rep.lineSinkSegments += (int)ls.segments.size();
    }
    rep.unknowns = s.n;
    int headWells = 0, headPartial = 0;
    for (const auto& w : s.wells) (w.partial < 0 ? headWells : headPartial) += w.headSpecified;
    say("Elements: " + std::to_string(rep.wells) + " wells (" + std::to_string(headWells) + " head specified), " +
        std::to_string(rep.lineSinkStrings) + " line-sink strings with " + std::to_string(s.segs.size()) +
        " segments, " + std::to_string(s.galleries.size()) + " galleries");
    rep.inhomogeneities = (int)s.inhos.size();
    rep.walls = (int)s.wallEls.size();
    rep.ponds = (int)s.ponds.size();
    if (rep.inhomogeneities + rep.walls + rep.ponds > 0 || !s.model.inhomogeneities.empty() || !s.model.walls.empty() ||
        !s.model.ponds.empty()) {
        int headPonds = 0;
        for (const auto& p : s.ponds) headPonds += p.headSpecified;
        say("Area elements: " + std::to_string(rep.inhomogeneities) + " inhomogeneities, " + std::to_string(rep.walls) +
            " walls, " + std::to_string(rep.ponds) + " ponds (" + std::to_string(headPonds) + " head specified), " +
            std::to_string(s.edges.size()) + " line-doublet segments");
    }
    if (rep.partialWells > 0 || !s.model.partialWells.empty())
        say("Partially penetrating wells: " + std::to_string(rep.partialWells) + " (" + std::to_string(headPartial) +
            " head specified)");
    say("Equations: " + std::to_string(s.n));
    bool compressed =
        o.method == SolveMethod::Compressed || (o.method == SolveMethod::Automatic && s.n >= o.crossover);
    if (o.storeOnDisk && !compressed) say("Matrix kept in memory (" + fmt("%.1f", 8.0 * s.n * (double)s.n / 1048576.0) + " MB)");

    if (compressed) {
        // The large-model path: the influence matrix compressed once, GMRES in each iteration.
        say("Solution method: compressed influence matrix and GMRES" +
            std::string(o.method == SolveMethod::Automatic ? " (" + std::to_string(s.n) + " equations, from " +
                                                                 std::to_string(o.crossover) + " on)"
                                                           : ""));
        CompressedSettings cs;
        cs.h.tol = o.compressionTolerance;
        cs.gmres.tol = o.gmresTolerance;
        const auto tc = std::chrono::steady_clock::now();
        const bool had = s.iterative && s.iterative->H;
        compressInfluence(s, cs, log);
        if (!had) rep.compressSeconds = seconds(tc);
        rep.assemblySeconds += rep.compressSeconds;
        s.iterative->settings.gmres.tol = o.gmresTolerance;
        if (!s.iterative->assembled) s.factorsValid = false;
        rep.compressed = true;
    } else if (s.iterative && s.iterative->assembled) {
        s.iterative->assembled = false;  // the last factors are those of the compressed path
        s.factorsValid = false;
    }

    const int outerMax = std::max(1, o.outerIterations);
    const int innerMax = std::max(1, o.innerIterations);
    const bool hasStreams = !s.streamOrder.empty();
    const double tol = 1e-9 * (1.0 + s.aq.H + std::fabs(s.refHead - s.aq.B));
    bool converged = false;
    for (int outer = 1; outer <= outerMax; ++outer) {
        bool innerConverged = false;
        for (int inner = 1; inner <= innerMax; ++inner) {
            IterationReport it;
            it.outer = outer;
            it.inner = inner;
            if (!s.factorsValid || o.fullFactorisation) {
                if (compressed) {
                    const auto tp = std::chrono::steady_clock::now();
                    updateResistanceCoefficients(s);
                    assembleCompressed(s, log);
                    s.factorsValid = true;
                    rep.factorSeconds += seconds(tp);
                } else {
                    assembleAndFactor(s, rep.assemblySeconds, rep.factorSeconds);
                }
                it.refactorised = true;
            }
            buildRhs(s);
            std::vector<double> b = s.rhs;
            bool done = false;
            if (compressed) {
                try {
                    b = solveCompressed(s, b, log);
                    rep.krylovIterations += s.iterative->lastIterations;
                    done = true;
                } catch (const FatalError&) {
                    // Chosen automatically: the dense path takes over (it is exact); asked
                    // for in the command file: the message says what to do.
                    if (o.method != SolveMethod::Automatic) throw;
                    rep.krylovIterations += s.iterative->lastIterations;
                    s.warn("the iterative solution did not converge (relative residual " +
                           fmt("%.3E", s.iterative->lastResidual) + "); the dense method is used from here on");
                    compressed = false;
                    s.iterative->assembled = false;
                    assembleAndFactor(s, rep.assemblySeconds, rep.factorSeconds);
                    it.refactorised = true;
                    b = s.rhs;
                }
            }
            if (!done) {
                int info = 0, one = 1;
                const char tr = 'N';
                dgetrs_(&tr, &s.n, &one, s.lu.data(), &s.n, s.ipiv.data(), b.data(), &s.n, &info, 1);
            }
            for (double v : b)
                if (!std::isfinite(v))
                    throw FatalError("The solution of the system of equations is not finite; the system is singular or badly scaled.");
            double change = 0.0;
            for (int i = 0; i < s.n; ++i) change = std::max(change, std::fabs(b[i] - s.x[i]));
            s.x = std::move(b);
            s.syncStrengths(true);
            s.solved = true;
            UpdateResult u = updateStates(s);
            if (hasStreams) u.residual = std::max(u.residual, s.route());
            it.largestChange = change;
            it.largestResidual = u.residual;
            it.switches = u.switches;
            if (u.switches > 0) s.factorsValid = false;
            ++s.iterationsDone;
            rep.iterations.push_back(it);
            say("Iteration " + std::to_string(s.iterationsDone) + (outerMax > 1 ? " (outer " + std::to_string(outer) + ")" : "") +
                ": largest change " + fmt("%.6E", change) + ", largest residual " + fmt("%.6E", u.residual) +
                (u.switches ? ", " + std::to_string(u.switches) + " conditions switched" : ""));
            if (u.switches == 0 && u.residual <= tol) { innerConverged = true; break; }
        }
        int outerSwitches = 0;
        if (hasStreams) {
            // After the last outer iteration the switches are only counted, so that the
            // strengths stay those of the last solution.
            outerSwitches = updateStreams(s, outer < outerMax);
            if (outerSwitches > 0 && outer < outerMax) {
                s.factorsValid = false;
                say("Stream routing: " + std::to_string(outerSwitches) + " reaches changed between flowing and dry");
            }
        }
        if (outerSwitches == 0) { converged = innerConverged; break; }
        if (outer == outerMax)
            s.warn("stream routing had not settled after " + std::to_string(outerMax) + " outer iterations");
    }
    if (!converged) s.warn("the iterations ended before every condition was met; a further solve continues them");
    rep.converged = converged;
    s.settleTheis();
    if (!s.theis.empty() || !s.model.theisWells.empty()) {
        int active = 0, steadyT = 0;
        for (const auto& e : s.theis) {
            active += s.model.time > e.t0;
            steadyT += e.steadyT;
        }
        say("Transient wells: " + std::to_string(rep.theisWells) + " with " + std::to_string(rep.theisLines) +
            " schedule lines, superposed on the steady solution at the time of evaluation " + fmt("%g", s.model.time) +
            " days; " + std::to_string(active) + " lines have started by then" +
            (active < rep.theisLines ? ", the others start later and have no effect yet" : ""));
        if (steadyT > 0)
            say("  " + std::to_string(steadyT) + " schedule lines give a start head at or below the base: their "
                "transmissivity is that of the steady head at the well");
    }
    if (rep.compressed) rep.compressedBytes = (double)s.iterative->bytes();
    rep.balance = waterBalance();
    for (const auto& l : formatBalance(rep.balance)) say(l);
    rep.totalSeconds = seconds(tStart);
    say("Times: assembly " + fmt("%.3f", rep.assemblySeconds) + " s, factorisation " + fmt("%.3f", rep.factorSeconds) +
        " s, total " + fmt("%.3f", rep.totalSeconds) + " s");
    return rep;
}

// ---------------------------------------------------------------------------------
// Evaluation

double Solution::potential(double x, double y) const { return s_->potentialAt(x, y); }

double Solution::head(double x, double y) const {
    if (s_->ignoredAt(x, y)) return kDryHead;
    return s_->aqOf(s_->domainAt(x, y)).headFromPhi(s_->potentialAt(x, y));
}

bool Solution::ignored(double x, double y) const { return s_->ignoredAt(x, y); }

std::pair<double, double> Solution::discharge(double x, double y) const {
    const auto w = s_->wAt(x, y);
    return {w.real(), -w.imag()};
}

std::vector<double> Solution::heads(const std::vector<double>& xs, const std::vector<double>& ys) const {
    // Large models and many points: by the multipole expansions (engine/fast_eval.h).
    const FieldEvaluator evaluator(*this, (long)std::min(xs.size(), ys.size()));
    return evaluator.heads(xs, ys);
}

PointValues Solution::evaluate(double x, double y, std::optional<double> z) const {
    return s_->pointValues(x, y, z, s_->fieldAt(x, y));
}

PointValues Solution::State::pointValues(double x, double y, std::optional<double> z, const detail::Field& f) const {
    const State& s = *this;
    PointValues p;
    p.x = x;
    p.y = y;
    p.potential = f.phi;
    p.qx = f.wr;
    p.qy = -f.wi;
    const int d = s.domainAt(x, y);
    const detail::AquiferFn& aq = s.aqOf(d);
    p.porosity = s.domains[d].porosity;
    p.conductivity = aq.k;
    p.base = aq.B;
    p.recharge = -s.domains[d].extraction;
    for (const auto& pd : s.ponds)
        if ((x - pd.x) * (x - pd.x) + (y - pd.y) * (y - pd.y) < pd.R * pd.R) p.recharge += pd.rate;
    for (const auto& c : s.model.leakage)
        if (detail::insideLeakageCell(c, x, y)) p.recharge -= c.rate;
    p.head = s.ignoredAt(x, y) ? kDryHead : aq.headFromPhi(p.potential);
    if (p.head == kDryHead) {
        p.z = z ? *z : aq.B;
        return p;  // dry or not part of the model: no velocities
    }
    const double b = aq.saturated(p.head);
    const double zb = aq.bottom(p.head);
    p.z = z ? *z : zb + b;
    if (b > 0.0 && p.porosity > 0.0) {
        p.vx = p.qx / (p.porosity * b);
        p.vy = p.qy / (p.porosity * b);
        // Dupuit vertical velocity, linear between the bottom of the water (the base, or
        // the interface above it) and the top: each moves with the head, and a particle
        // on either stays on it, vz = v . grad(z) with grad h = -Q / (k b). In the
        // unconfined zone without an interface this is zero at the base and
        // -|Q|^2 / (n k b^2) at the water table. Recharge enters at the top.
        const double q2 = p.qx * p.qx + p.qy * p.qy;
        const double vGradH = -q2 / (aq.k * b * b * p.porosity);
        const double wTop = vGradH * aq.topSlope(p.head), wBottom = vGradH * aq.bottomSlope(p.head);
        const double zeta = (p.z - zb) / b;
        p.vz = wBottom + zeta * (wTop - wBottom) - zeta * p.recharge / p.porosity;
    }
    return p;
}

double Solution::streamFunction(double x, double y) const {
    const State& s = *s_;
    double psi = s.model.aquifer.qy0 * x - s.model.aquifer.qx0 * y;
    for (size_t j = 0; j < s.wq.size(); ++j) psi += s.wq[j] / (2.0 * kPi) * std::atan2(y - s.wy[j], x - s.wx[j]);
    for (size_t j = 0; j < s.ssig.size(); ++j) {
        detail::LsGeom g{s.scx[j], s.scy[j], s.sihr[j], s.sihi[j], s.sscale[j], s.sc0[j], 0.0};
        psi += s.ssig[j] * s.sscale[j] * detail::lsImF(detail::localZ(g, x, y));
    }
    // Line-doublets: single-valued and continuous.
    for (const auto& d : s.edges) {
        const auto b = detail::dbPsi(d.g, x, y);
        psi += d.val[0] * b[0] + d.val[1] * b[1] + d.val[2] * b[2];
    }
    // Area sinks: where water is recharged (inside a recharge polygon or a pond) the flow
    // has a divergence and no stream function exists: NaN, which grids write as blanks.
    // Outside, a pond counts as the well it is from there and a recharge polygon by the
    // exact exterior form of its area sink; each has a branch cut in the -x direction
    // (from the centre, from the polygon's first vertex) across which the stream function
    // jumps by the water it puts in. Transient wells are left out: their flow comes from
    // storage everywhere their drawdown has reached, so no stream function includes them
    // (see docs/solver.md).
    for (const auto& d : s.domains) {
        if (!d.hasSink || d.extraction == 0.0) continue;
        if (detail::insidePolygon(d.sink.v, x, y)) return std::numeric_limits<double>::quiet_NaN();
        psi += -d.extraction * detail::areaSinkOmegaOutside(d.sink, x, y).imag();
    }
    for (const auto& p : s.ponds) {
        if (p.rate == 0.0) continue;
        if ((x - p.x) * (x - p.x) + (y - p.y) * (y - p.y) < p.R * p.R) return std::numeric_limits<double>::quiet_NaN();
        psi -= p.rate * p.R * p.R / 2.0 * std::atan2(y - p.y, x - p.x);
    }
    for (const auto& c : s.model.leakage) {
        if (c.rate == 0.0) continue;
        if (detail::insideLeakageCell(c, x, y)) return std::numeric_limits<double>::quiet_NaN();
        const auto a = detail::makeAreaSink({{c.x1, c.y1}, {c.x2, c.y1}, {c.x2, c.y2}, {c.x1, c.y2}});
        psi += -c.rate * detail::areaSinkOmegaOutside(a, x, y).imag();
    }
    return psi;
}

// ---------------------------------------------------------------------------------
// Results

std::vector<WellResult> Solution::wellResults() const {
    const State& s = *s_;
    std::vector<WellResult> r;
    // The heads at the screens: many wells of a large model by the multipole expansions.
    std::vector<double> heads(s.wells.size());
    const FieldEvaluator evaluator(*this, (long)s.wells.size());
#pragma omp parallel for schedule(dynamic, 8)
    for (long i = 0; i < (long)s.wells.size(); ++i)
        if (s.wells[i].partial < 0) heads[i] = evaluator.head(s.wells[i].x + s.wells[i].rw, s.wells[i].y);
    for (size_t i = 0; i < s.wells.size(); ++i) {
        const WellEl& e = s.wells[i];
        if (e.partial >= 0) continue;
        WellResult w;
        w.label = s.model.wells[e.model].label;
        w.x = e.x; w.y = e.y; w.radius = e.rw;
        w.headSpecified = e.headSpecified;
        w.discharge = e.q;
        w.head = heads[i];
        if (e.headSpecified) {
            w.specifiedHead = e.value;
            w.headError = w.head - e.value;
        }
        r.push_back(w);
    }
    return r;
}

std::vector<SegmentResult> Solution::segmentResults() const {
    const State& s = *s_;
    std::vector<SegmentResult> r(s.segs.size());
    std::vector<double> hc(s.segs.size());
    // The heads at every segment's centre: many points of a large model are taken from
    // the multipole expansions (engine/fast_eval.h).
    const FieldEvaluator evaluator(*this, (long)s.segs.size());
#pragma omp parallel for schedule(dynamic, 8)
    for (long i = 0; i < (long)s.segs.size(); ++i)
        hc[i] = s.aqOf(s.segs[i].dom).headFromPhi(evaluator.potential(s.scx[i], s.scy[i]));
    for (size_t i = 0; i < s.segs.size(); ++i) {
        const SegEl& e = s.segs[i];
        const LineSinkString& ls = s.model.lineSinks[e.string];
        SegmentResult& o = r[i];
        o.label = ls.segments[e.modelSeg].label;
        o.stringLabel = ls.label;
        o.kind = e.kind;
        o.x1 = e.x1; o.y1 = e.y1; o.x2 = e.x2; o.y2 = e.y2;
        const double L = std::hypot(e.x2 - e.x1, e.y2 - e.y1);
        o.strength = s.ssig[i];
        o.discharge = o.strength * L;
        o.specifiedHead = e.value;
        o.calculatedHead = hc[i];
        o.width = ls.farField ? 0.0 : ls.width;
        o.resistance = ls.farField ? 0.0 : ls.resistance;
        o.depth = ls.farField ? 0.0 : ls.depth;
        o.percolating = e.state == SegState::Percolating;
        o.inactive = e.state == SegState::Off || e.state == SegState::Limited || e.state == SegState::Held;
        if (e.kind != LineSinkKind::Discharge && hc[i] != kDryHead)
            o.error = segment_conditions::headError(s, e, hc[i], o.strength);
        if (e.kind == LineSinkKind::Stream) {
            o.baseFlow = e.baseDown;
            o.overlandFlow = e.overDown;
            if (e.downstream >= 0) {
                const SegEl& d = s.segs[e.downstream];
                o.downstreamLabel = s.model.lineSinks[d.string].segments[d.modelSeg].label;
            }
        }
    }
    return r;
}

double Solution::gageFlow(double x, double y) const {
    const State& s = *s_;
    double best = 1e300, q = 0.0;
    for (int i : s.streamOrder) {
        const SegEl& e = s.segs[i];
        const double dx = e.x2 - e.x1, dy = e.y2 - e.y1;
        const double l2 = dx * dx + dy * dy;
        double t = l2 > 0 ? ((x - e.x1) * dx + (y - e.y1) * dy) / l2 : 0.0;
        t = std::clamp(t, 0.0, 1.0);
        const double d = std::hypot(x - (e.x1 + t * dx), y - (e.y1 + t * dy));
        if (d < best) { best = d; q = e.qDown; }
    }
    return q;
}

// Flow across a polyline from the change of the stream function along each piece,
// with the jumps of the principal branches removed where a piece crosses a branch cut.
double Solution::flux(const std::vector<std::pair<double, double>>& pl) const {
    const State& s = *s_;
    double dpsi = 0.0;  // continuous change of the stream function along the polyline
    for (size_t k = 1; k < pl.size(); ++k) {
        const double ax = pl[k - 1].first, ay = pl[k - 1].second, bx = pl[k].first, by = pl[k].second;
        dpsi += s.model.aquifer.qy0 * (bx - ax) - s.model.aquifer.qx0 * (by - ay);
        for (size_t j = 0; j < s.wq.size(); ++j) {
            if (s.wq[j] == 0.0) continue;
            const std::complex<double> za(ax - s.wx[j], ay - s.wy[j]), zb(bx - s.wx[j], by - s.wy[j]);
            if (std::abs(za) == 0.0 || std::abs(zb) == 0.0) continue;
            dpsi += s.wq[j] / (2.0 * kPi) * std::arg(zb / za);
        }
        // Transient wells: the steady well of each started line here, the rest (the water
        // their cones release from storage) with the area sinks below.
        if (s.theisReady)
            for (const auto& e : s.theis) {
                if (!(s.model.time > e.t0) || e.q == 0.0) continue;
                const std::complex<double> za(ax - e.x, ay - e.y), zb(bx - e.x, by - e.y);
                if (std::abs(za) == 0.0 || std::abs(zb) == 0.0) continue;
                dpsi += e.q / (2.0 * kPi) * std::arg(zb / za);
            }
        for (size_t j = 0; j < s.ssig.size(); ++j) {
            if (s.ssig[j] == 0.0) continue;
            detail::LsGeom g{s.scx[j], s.scy[j], s.sihr[j], s.sihi[j], s.sscale[j], s.sc0[j], 0.0};
            std::complex<double> Za = detail::localZ(g, ax, ay), Zb = detail::localZ(g, bx, by);
            // Points on the element's line are moved off it to the side of the other end.
            const double eps = 1e-12;
            double ya = Za.imag(), yb = Zb.imag();
            if (std::fabs(ya) < eps && std::fabs(yb) < eps) { ya = yb = eps; }
            else if (std::fabs(ya) < eps) ya = yb > 0 ? eps : -eps;
            else if (std::fabs(yb) < eps) yb = ya > 0 ? eps : -eps;
            Za = {Za.real(), ya};
            Zb = {Zb.real(), yb};
            double d = detail::lsImF(Zb) - detail::lsImF(Za);
            if ((ya < 0) != (yb < 0)) {
                const double xc = Za.real() + (Zb.real() - Za.real()) * ya / (ya - yb);
                const double jump = detail::lsImFJump(xc);
                d -= ya < 0 ? jump : -jump;
            }
            dpsi += s.ssig[j] * s.sscale[j] * d;
        }
        for (const auto& d : s.edges) {
            const auto pa = detail::dbPsi(d.g, ax, ay), pb = detail::dbPsi(d.g, bx, by);
            for (int k = 0; k < 3; ++k) dpsi += d.val[k] * (pb[k] - pa[k]);
        }
    }
    // Area sinks (recharge polygons and ponds) have no stream function: their flow across
    // each piece is integrated numerically (composite Gauss-Legendre, 32 parts of 8 points;
    // the integrand is continuous, with kinks where the piece crosses the sink's edge).
    bool anySink = !s.ponds.empty() || !s.model.leakage.empty();
    std::vector<std::pair<detail::AreaSinkGeom, double>> cells;
    for (const auto& c : s.model.leakage)
        if (c.rate != 0.0) cells.emplace_back(detail::makeAreaSink({{c.x1, c.y1}, {c.x2, c.y1}, {c.x2, c.y2}, {c.x1, c.y2}}), c.rate);
    for (const auto& d : s.domains) anySink = anySink || d.hasSink;
    if (s.theisReady)
        for (const auto& e : s.theis) anySink = anySink || (s.model.time > e.t0 && e.q != 0.0);
    if (anySink) {
        static const double gx[8] = {-0.9602898564975363, -0.7966664774136267, -0.5255324099163290, -0.1834346424956498,
                                     0.1834346424956498,  0.5255324099163290,  0.7966664774136267,  0.9602898564975363};
        static const double gw[8] = {0.1012285362903763, 0.2223810344533745, 0.3137066458778873, 0.3626837833783620,
                                     0.3626837833783620, 0.3137066458778873, 0.2223810344533745, 0.1012285362903763};
        const int parts = 32;
        double q = 0.0;
        for (size_t k = 1; k < pl.size(); ++k) {
            const double ax = pl[k - 1].first, ay = pl[k - 1].second, bx = pl[k].first, by = pl[k].second;
            const double L = std::hypot(bx - ax, by - ay);
            if (!(L > 0)) continue;
            const double nx = (by - ay) / L, ny = -(bx - ax) / L;  // from the left to the right
#pragma omp parallel for reduction(+ : q)
            for (int part = 0; part < parts; ++part) {
                for (int g = 0; g < 8; ++g) {
                    const double t = (part + 0.5 * (gx[g] + 1.0)) / parts;
                    const double x = ax + t * (bx - ax), y = ay + t * (by - ay);
                    std::complex<double> w(0.0, 0.0);
                    for (const auto& d : s.domains)
                        if (d.hasSink) w += -d.extraction * detail::areaSinkW(d.sink, x, y);
                    for (const auto& p : s.ponds)
                        if (p.rate != 0.0) w += p.rate * detail::pondW(p.x, p.y, p.R, x, y);
                    for (const auto& [a, rate] : cells) w += -rate * detail::areaSinkW(a, x, y);
                    w += s.theisWRemainder(x, y);
                    q += (w.real() * nx - w.imag() * ny) * gw[g] * 0.5 * L / parts;
                }
            }
        }
        dpsi -= q;
    }
    return -dpsi;
}

WaterBalance Solution::waterBalance() const {
    const State& s = *s_;
    WaterBalance b;
    const AddBalanceTerm add = [&](const std::string& kind, double extraction) {
        auto it = std::find_if(b.terms.begin(), b.terms.end(), [&](const BalanceTerm& t) { return t.kind == kind; });
        if (it == b.terms.end()) { b.terms.push_back({kind, 0.0, 0.0}); it = b.terms.end() - 1; }
        if (extraction > 0) it->out += extraction; else it->in -= extraction;
    };
    for (const BalanceElement* e : balanceElements()) e->balanceTerms(s, add);
    // The far field: inflow across a circle around every element, by the trapezoidal
    // rule, which converges geometrically for this periodic, analytic integrand.
    BalanceBox box;
    for (const BalanceElement* e : balanceElements()) e->extent(s, box);
    if (box.xmin <= box.xmax) {
        const double cx = 0.5 * (box.xmin + box.xmax), cy = 0.5 * (box.ymin + box.ymax);
        const double R = std::max(std::hypot(box.xmax - box.xmin, box.ymax - box.ymin), 1e-3);  // twice the enclosing radius
        const int m = 256;
        double inflow = 0.0, gross = 0.0;
#pragma omp parallel for reduction(+ : inflow, gross)
        for (int k = 0; k < m; ++k) {
            const double t = 2.0 * kPi * k / m;
            const std::complex<double> e(std::cos(t), std::sin(t));
            const std::complex<double> w = s.wAt(cx + R * e.real(), cy + R * e.imag());
            inflow -= (w * e).real() * R * (2.0 * kPi / m);
            gross += std::fabs((w * e).real()) * R * (2.0 * kPi / m);
        }
        // A net flow at the level of round-off of the flow that merely passes through the
        // circle (uniform flow around doublets) is no flow.
        if (std::fabs(inflow) <= 1e-11 * gross) inflow = 0.0;
        add("far field", -inflow);
        for (const BalanceElement* e : balanceElements()) e->termsWithin(s, cx, cy, R, add);
    }
    for (const auto& t : b.terms) { b.totalIn += t.in; b.totalOut += t.out; }
    b.difference = b.totalIn - b.totalOut;
    const double big = std::max(b.totalIn, b.totalOut);
    b.closureError = big > 0 ? std::fabs(b.difference) / big : 0.0;
    return b;
}

std::vector<std::string> formatBalance(const WaterBalance& b) {
    std::vector<std::string> out;
    out.push_back("Water balance (inflow into the aquifer, outflow from it):");
    char buf[200];
    for (const auto& t : b.terms) {
        std::snprintf(buf, sizeof buf, "  %-34s in %15.6E  out %15.6E", t.kind.c_str(), t.in, t.out);
        out.push_back(buf);
    }
    std::snprintf(buf, sizeof buf, "  %-34s in %15.6E  out %15.6E", "total", b.totalIn, b.totalOut);
    out.push_back(buf);
    std::snprintf(buf, sizeof buf, "  difference %15.6E (relative %.3E)", b.difference, b.closureError);
    out.push_back(buf);
    return out;
}

}  // namespace tarno::engine
