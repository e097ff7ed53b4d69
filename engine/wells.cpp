// Partially penetrating wells and transient (Theis) wells.
//
// A partially penetrating well is a well of the Dupuit-Forchheimer field whose reported
// head (and, in head mode, whose condition) carries the extra loss of its partial screen,
// Q f / (2 pi) in potential, f from the steady partial penetration series (wells.h).
//
// A transient well is a schedule of lines; each line is a Theis well of discharge q from
// its start time t0 on, superposed on the steady solution at the time of evaluation:
//   Phi = -q / (4 pi) E1(u),  u = r^2 S / (4 T (t - t0)),  zero for t <= t0.
// The steady unknowns are solved without the transient wells: they are known elements
// evaluated at the time of evaluation, which may be set after the solve.
#include "engine/wells.h"

#include "engine/kernels.h"
#include "engine/solution.h"
#include "engine/state.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

namespace tarno::engine {

using detail::kPi;

namespace detail {

double expintE1(double u) {
    if (!(u > 0.0)) return std::numeric_limits<double>::infinity();
    if (u > 740.0) return 0.0;
    if (u < 1.0) {
        // E1(u) = -gamma - ln u + sum_k (-1)^(k+1) u^k / (k k!)
        constexpr double kEuler = 0.57721566490153286061;
        double term = 1.0, sum = 0.0;
        for (int k = 1; k < 60; ++k) {
            term *= -u / k;  // (-u)^k / k!
            const double add = -term / k;
            sum += add;
            if (std::fabs(add) < 1e-17 * std::fabs(sum)) break;
        }
        return -kEuler - std::log(u) + sum;
    }
    // Continued fraction E1(u) = exp(-u) / (u + 1 - 1 / (u + 3 - 4 / (u + 5 - ...))),
    // evaluated from the front by the modified Lentz method.
    constexpr double kSmall = 1e-300;
    double b = u + 1.0, c = 1.0 / kSmall, d = 1.0 / b, h = d;
    for (int i = 1; i < 1000; ++i) {
        const double a = -static_cast<double>(i) * i;
        b += 2.0;
        d = 1.0 / (a * d + b);
        c = b + a / c;
        const double delta = c * d;
        h *= delta;
        if (std::fabs(delta - 1.0) < 1e-16) break;
    }
    return h * std::exp(-u);
}

double partialPenetrationFactor(double b, double zb, double zt, double rw) {
    const double L = zt - zb;
    if (!(b > 0.0) || !(L > 0.0) || !(rw > 0.0)) return 0.0;
    if (L >= b * (1.0 - 1e-13)) return 0.0;
    const double x = kPi * rw / b;
    const double wanted = std::ceil(40.0 / x) + 1.0;  // may be huge (or infinite) for a very thin well
    const long terms = wanted >= static_cast<double>(kMaxPartialTerms) ? kMaxPartialTerms : static_cast<long>(wanted);
    const double at = kPi * zt / b, ab = kPi * zb / b;
    double sum = 0.0;
    for (long n = 1; n <= terms; ++n) {
        const double dn = static_cast<double>(n);
        const double s = std::sin(dn * at) - std::sin(dn * ab);
        if (s == 0.0) continue;
        sum += s * s / (dn * dn) * std::cyl_bessel_k(0.0, dn * x);
    }
    return 2.0 * b * b / (kPi * kPi * L * L) * sum;
}

}  // namespace detail

namespace {

std::string num(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%g", v);
    return buf;
}

std::string who(const char* kind, const std::string& label, int line) {
    return std::string(kind) + " " + label + (line > 0 ? " (line " + std::to_string(line) + ")" : "");
}

}  // namespace

std::string Solution::State::wellLabel(const WellEl& w) const {
    return w.partial >= 0 ? model.partialWells[w.partial].label : model.wells[w.model].label;
}

void Solution::State::preparePartialWells(double size) {
    for (int i = 0; i < (int)model.partialWells.size(); ++i) {
        const PartialWell& p = model.partialWells[i];
        const std::string w = who("partially penetrating well", p.label, p.line);
        if (!std::isfinite(p.x) || !std::isfinite(p.y) || !std::isfinite(p.value) || !std::isfinite(p.top) ||
            !std::isfinite(p.bottom)) {
            warn(w + ": a value is not a number; the well is skipped");
            continue;
        }
        WellEl e;
        e.model = i;
        e.partial = i;
        e.x = p.x; e.y = p.y; e.rw = p.radius;
        if (!(p.radius > 0.0)) {
            e.rw = 1e-4 * size;
            warn(w + ": radius " + num(p.radius) + " is not positive; " + num(e.rw) + " used");
        }
        e.top = p.top; e.bottom = p.bottom;
        if (p.top < p.bottom) {
            std::swap(e.top, e.bottom);
            warn(w + ": the top of the screen " + num(p.top) + " lies below its bottom " + num(p.bottom) +
                 "; the two were swapped");
        }
        e.headSpecified = p.headSpecified;
        e.value = p.value;
        e.q = p.headSpecified ? 0.0 : p.value;
        e.dom = domainAt(e.x + e.rw, e.y);
        wells.push_back(e);
    }
}

namespace {

// The screen of a partially penetrating well within the saturated zone at head h, and
// its loss factor f.
struct Screen {
    double top = 0, bottom = 0, b = 0, f = 0;
    bool clipped = false;
    bool none = false;   // no part of the screen lies in the saturated zone (or it has no length)
};

// The series costs up to about 0.05 s (many terms for a thin well in a thick aquifer), so
// the last factor is kept and reused while its arguments stay the same (always in a
// confined aquifer).
Screen screenAt(WellEl& e, const detail::AquiferFn& aq, double h) {
    Screen s;
    s.b = aq.saturated(h);
    const double lo = aq.bottom(h), hi = lo + s.b;
    s.top = std::min(e.top, hi);
    s.bottom = std::max(e.bottom, lo);
    s.clipped = e.top > hi || e.bottom < lo;
    if (!(s.b > 0.0) || !(s.top - s.bottom > 1e-9 * aq.H)) {
        s.none = true;
        s.f = 0.0;
        return s;
    }
    const double zb = s.bottom - lo, zt = s.top - lo;
    if (!(s.b == e.fB && zb == e.fZb && zt == e.fZt)) {
        e.fValue = detail::partialPenetrationFactor(s.b, zb, zt, e.rw);
        e.fB = s.b; e.fZb = zb; e.fZt = zt;
    }
    s.f = e.fValue;
    return s;
}

}  // namespace

bool Solution::State::updatePartialWells(double& residual) {
    bool rebuild = false;
    for (auto& e : wells) {
        if (e.partial < 0) continue;
        const auto& aq = aqOf(e.dom);
        // The head of the Dupuit field at the screen radius: from the collocation point of a
        // head-specified well, by evaluation otherwise (always before a first solve).
        double phi = std::numeric_limits<double>::quiet_NaN();
        if (e.unknown >= 0 && solved) phi = phiPts[e.unknown];
        if (!std::isfinite(phi) && solved) phi = potentialAt(e.x + e.rw, e.y);
        double h;
        if (std::isfinite(phi)) h = aq.headFromPhiExtended(phi);
        else if (e.headSpecified) h = e.value;
        else h = model.aquifer.hasReference ? model.aquifer.referenceHead : aq.B + aq.H;
        const Screen s = screenAt(e, aq, h);
        const double loss = s.f / (2.0 * kPi);
        if (solved) {
            residual = std::max(residual, std::fabs(e.q * (loss - e.loss)) / aq.transmissivity(h));
            if (e.headSpecified && std::fabs(loss - e.loss) > 1e-12 * (std::fabs(e.loss) + 1e-12)) rebuild = true;
        }
        e.loss = loss;
        e.usedTop = s.top; e.usedBottom = s.bottom; e.saturated = s.b;
        e.clipped = s.clipped || s.none;
        if (solved && (s.clipped || s.none) && !e.clipReported) {
            e.clipReported = true;
            const PartialWell& p = model.partialWells[e.partial];
            const std::string w = who("partially penetrating well", p.label, p.line);
            if (s.none)
                warn(w + ": the screen from " + num(e.bottom) + " to " + num(e.top) +
                     " has no length within the saturated zone (" + num(aq.bottom(h)) + " to " + num(aq.top(h)) +
                     "); the well is taken as fully penetrating");
            else
                warn(w + ": the screen from " + num(e.bottom) + " to " + num(e.top) + " reaches outside the saturated zone (" +
                     num(aq.bottom(h)) + " to " + num(aq.top(h)) + "); it is clipped to " + num(s.bottom) + " to " + num(s.top));
        }
    }
    return rebuild;
}

void Solution::State::prepareTheisWells(double size) {
    theis.clear();
    theisGroups.clear();
    theisReady = false;
    std::map<std::string, int> byLabel;
    const double tol = 1e-6 * size;
    for (int i = 0; i < (int)model.theisWells.size(); ++i) {
        const TheisWell& t = model.theisWells[i];
        const std::string w = who("transient well", t.label, t.line);
        if (!std::isfinite(t.x) || !std::isfinite(t.y) || !std::isfinite(t.discharge) || !std::isfinite(t.startTime) ||
            !std::isfinite(t.startHead) || !std::isfinite(t.storage)) {
            warn(w + ": a value is not a number; the schedule line is skipped");
            continue;
        }
        if (!(t.storage > 0.0)) {
            warn(w + ": storage coefficient " + num(t.storage) + " is not positive; the schedule line is skipped");
            continue;
        }
        auto it = byLabel.find(t.label);
        if (it == byLabel.end()) {
            TheisGroup g;
            g.label = t.label;
            g.x = t.x; g.y = t.y; g.rw = t.radius;
            if (!(t.radius > 0.0)) {
                g.rw = 1e-4 * size;
                warn(w + ": radius " + num(t.radius) + " is not positive; " + num(g.rw) + " used");
            }
            theisGroups.push_back(g);
            it = byLabel.emplace(t.label, (int)theisGroups.size() - 1).first;
        } else {
            const TheisGroup& g = theisGroups[it->second];
            if (std::hypot(t.x - g.x, t.y - g.y) > tol)
                warn(w + ": the position differs from that of the schedule's first line; the first line's position is used");
        }
        TheisGroup& g = theisGroups[it->second];
        TheisEl e;
        e.model = i;
        e.group = it->second;
        e.x = g.x; e.y = g.y;
        e.q = t.discharge; e.t0 = t.startTime; e.S = t.storage;
        e.dom = domainAt(e.x, e.y);
        const auto& aq = aqOf(e.dom);
        if (aq.saturated(t.startHead) > 0.0) {
            e.T = aq.k * aq.saturated(t.startHead);
        } else {
            e.steadyT = true;  // set from the steady head at the well after the solve
            e.T = aq.k * aq.H;
        }
        g.lines.push_back((int)theis.size());
        theis.push_back(e);
    }
}

void Solution::State::settleTheis() {
    theisReady = false;
    for (auto& e : theis) {
        if (!e.steadyT) continue;
        const auto& aq = aqOf(e.dom);
        const TheisGroup& g = theisGroups[e.group];
        const double h = aq.headFromPhiExtended(potentialAt(e.x + g.rw, e.y));
        e.T = aq.transmissivity(h);
    }
    theisReady = true;
}

double Solution::State::theisPotential(double x, double y) const {
    if (!theisReady) return 0.0;
    const double t = model.time;
    double phi = 0.0;
    for (const auto& e : theis) {
        if (!(t > e.t0) || e.q == 0.0) continue;
        const double r2 = (x - e.x) * (x - e.x) + (y - e.y) * (y - e.y);
        const double u = std::max(r2 * e.S / (4.0 * e.T * (t - e.t0)), 1e-300);
        phi -= e.q / (4.0 * kPi) * detail::expintE1(u);
    }
    return phi;
}

std::complex<double> Solution::State::theisW(double x, double y) const {
    std::complex<double> w(0.0, 0.0);
    if (!theisReady) return w;
    const double t = model.time;
    for (const auto& e : theis) {
        if (!(t > e.t0) || e.q == 0.0) continue;
        const std::complex<double> d(x - e.x, y - e.y);
        const double r2 = std::norm(d);
        if (r2 < 1e-300) continue;
        const double u = r2 * e.S / (4.0 * e.T * (t - e.t0));
        w -= e.q * std::exp(-u) / (2.0 * kPi) / d;
    }
    return w;
}

std::complex<double> Solution::State::theisWRemainder(double x, double y) const {
    std::complex<double> w(0.0, 0.0);
    if (!theisReady) return w;
    const double t = model.time;
    for (const auto& e : theis) {
        if (!(t > e.t0) || e.q == 0.0) continue;
        const std::complex<double> d(x - e.x, y - e.y);
        const double r2 = std::norm(d);
        if (r2 < 1e-300) continue;
        const double u = r2 * e.S / (4.0 * e.T * (t - e.t0));
        w -= e.q * std::expm1(-u) / (2.0 * kPi) / d;
    }
    return w;
}

// The release from storage of one Theis line inside a circle is the integral over the disk
// of S ds/dt = q S / (4 pi T tau) exp(-r^2 S / (4 T tau)) (tau = t - t0). In polar
// coordinates about the well, with rho(theta) the distance from the well to the circle,
// it is q / (2 pi) times the integral over theta of 1 - exp(-rho^2 S / (4 T tau)): a
// smooth periodic integrand, integrated by the trapezoidal rule. The far field term of
// the balance integrates the normal discharge over the circle instead, so the two are
// independent and the balance closes only when both are right.
std::vector<std::pair<std::string, double>> Solution::State::theisBalance(double cx, double cy, double R) const {
    std::vector<std::pair<std::string, double>> out;
    if (theis.empty() || !theisReady) return out;
    const double t = model.time;
    for (const auto& g : theisGroups) {
        double q = 0.0;
        for (int k : g.lines)
            if (t > theis[k].t0) q += theis[k].q;
        out.emplace_back("Theis wells", q);
    }
    const int m = 512;
    double release = 0.0;
    for (const auto& e : theis) {
        if (!(t > e.t0) || e.q == 0.0) continue;
        const double a = e.S / (4.0 * e.T * (t - e.t0));
        const double dx = e.x - cx, dy = e.y - cy;
        const double c = dx * dx + dy * dy - R * R;  // < 0: the well lies inside the circle
        double sum = 0.0;
        for (int k = 0; k < m; ++k) {
            const double th = 2.0 * kPi * k / m;
            const double p = dx * std::cos(th) + dy * std::sin(th);
            const double rho = -p + std::sqrt(std::max(p * p - c, 0.0));
            sum += -std::expm1(-rho * rho * a);
        }
        release += e.q * sum / m;
    }
    out.emplace_back("storage release, Theis wells", -release);
    return out;
}

// ---------------------------------------------------------------------------------
// Results

std::vector<PartialWellResult> Solution::partialWellResults() const {
    const State& s = *s_;
    std::vector<PartialWellResult> r;
    for (const auto& e : s.wells) {
        if (e.partial < 0) continue;
        const auto& aq = s.aqOf(e.dom);
        PartialWellResult w;
        w.label = s.model.partialWells[e.partial].label;
        w.x = e.x; w.y = e.y; w.radius = e.rw;
        w.headSpecified = e.headSpecified;
        w.discharge = e.q;
        const bool out = s.ignoredAt(e.x + e.rw, e.y);
        const double phi = s.potentialAt(e.x + e.rw, e.y);
        const double hField = out ? kDryHead : aq.headFromPhi(phi);
        w.head = out ? kDryHead : aq.headFromPhi(phi - e.loss * e.q);
        w.headLoss = (hField == kDryHead || w.head == kDryHead) ? 0.0 : hField - w.head;
        if (e.headSpecified) {
            w.specifiedHead = e.value;
            w.headError = w.head - e.value;
        }
        w.screenTop = e.usedTop;
        w.screenBottom = e.usedBottom;
        w.saturatedThickness = e.saturated;
        w.penetration = e.saturated > 0 ? std::clamp((e.usedTop - e.usedBottom) / e.saturated, 0.0, 1.0) : 0.0;
        w.lossFactor = 2.0 * kPi * e.loss;
        w.clipped = e.clipped;
        r.push_back(w);
    }
    return r;
}

std::vector<TheisWellResult> Solution::theisWellResults() const {
    const State& s = *s_;
    std::vector<TheisWellResult> r;
    for (const auto& g : s.theisGroups) {
        TheisWellResult w;
        w.label = g.label;
        w.x = g.x; w.y = g.y; w.radius = g.rw;
        w.time = s.model.time;
        w.lines = (int)g.lines.size();
        for (int k : g.lines) {
            const TheisEl& e = s.theis[k];
            if (s.model.time > e.t0) {
                w.discharge += e.q;
                ++w.activeLines;
            }
        }
        w.head = head(g.x + g.rw, g.y);
        r.push_back(w);
    }
    return r;
}

}  // namespace tarno::engine
