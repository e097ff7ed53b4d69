// Area elements and walls: inhomogeneities (domains of their own aquifer properties
// with a uniform area sink inside), walls (leaky or impermeable barriers, optionally
// bounding a region that is not part of the model) and ponds (circular area sinks).
//
// The jumps of the potential along inhomogeneity boundaries and walls are line-doublets
// (engine/area.h). Every boundary edge is taken once, whichever polygons list it: the
// domains on its two sides decide its condition, so two adjoining polygons do not put
// two doublets on their common edge, and an edge whose two sides have the same
// properties carries none. The edges are joined into chains at vertices where exactly
// two doublet edges meet; the jump is continuous there (one node value for both edges).
// At a vertex where three or more doublet edges meet (a junction of domains) each chain
// keeps its own end value; open walls have a zero jump at their tips.
//
// Collocation: an edge owns its parabolic part and the node values it is the first
// edge of (its start node inside a chain, both end nodes of a chain that begins and
// ends at junctions); it has one collocation point per unknown it owns, inside the
// edge and never at a vertex, where corners make the conditions ill-defined:
//   one unknown (the parabolic part between fixed nodes): the centre, X = 0;
//   two (a node and the parabolic part): the centre X = 0 and X = -0.9 or 0.9 near
//     the node.
//     Two points placed symmetrically (X = -a, +a) would leave the combination "all
//     nodes c, parabolic parts c / (1 - a^2)" of a closed chain almost free: it is zero
//     at every collocation point, and the system becomes ill-conditioned.
//   three (both nodes and the parabolic part): X = -2/3, 0, 2/3.
#include "engine/area.h"

#include "engine/elements.h"
#include "engine/state.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

namespace tarno::engine {

using detail::kPi;
using detail::Pt;

namespace {

std::string num(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%g", v);
    return buf;
}

bool asAquifer(double v) { return std::fabs(v - kAsAquifer) < 0.5; }

double orient(const Pt& a, const Pt& b, const Pt& c) { return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x); }

// Do the closed segments ab and cd touch or cross (within tol)?
bool segmentsTouch(const Pt& a, const Pt& b, const Pt& c, const Pt& d, double tol) {
    auto distPointSeg = [](const Pt& p, const Pt& u, const Pt& v) {
        const double dx = v.x - u.x, dy = v.y - u.y, l2 = dx * dx + dy * dy;
        double t = l2 > 0 ? ((p.x - u.x) * dx + (p.y - u.y) * dy) / l2 : 0.0;
        t = std::clamp(t, 0.0, 1.0);
        return std::hypot(p.x - (u.x + t * dx), p.y - (u.y + t * dy));
    };
    const double o1 = orient(a, b, c), o2 = orient(a, b, d), o3 = orient(c, d, a), o4 = orient(c, d, b);
    if (((o1 > 0 && o2 < 0) || (o1 < 0 && o2 > 0)) && ((o3 > 0 && o4 < 0) || (o3 < 0 && o4 > 0))) return true;
    return distPointSeg(c, a, b) <= tol || distPointSeg(d, a, b) <= tol || distPointSeg(a, c, d) <= tol ||
           distPointSeg(b, c, d) <= tol;
}

// Removes repeated vertices (and, for a closed polygon, a last vertex equal to the
// first). Returns the kept model indices; `dropped` counts the removed ones.
std::vector<int> keptVertices(const std::vector<Vertex>& v, bool closed, double tol, int& dropped) {
    std::vector<int> kept;
    dropped = 0;
    for (int i = 0; i < (int)v.size(); ++i) {
        if (!std::isfinite(v[i].x) || !std::isfinite(v[i].y)) { ++dropped; continue; }
        if (!kept.empty() && std::hypot(v[i].x - v[kept.back()].x, v[i].y - v[kept.back()].y) <= tol) { ++dropped; continue; }
        kept.push_back(i);
    }
    if (closed && kept.size() > 1 &&
        std::hypot(v[kept.front()].x - v[kept.back()].x, v[kept.front()].y - v[kept.back()].y) <= tol) {
        kept.pop_back();
        ++dropped;
    }
    return kept;
}

// A problem of the shape of a polyline or polygon that cannot be mended ("" when fine).
std::string shapeProblem(const std::vector<Pt>& p, bool closed, double tol) {
    const int n = (int)p.size();
    const int ne = closed ? n : n - 1;
    for (int i = 0; i < ne; ++i)
        for (int j = i + 1; j < ne; ++j) {
            const bool adjacent = j == i + 1 || (closed && i == 0 && j == ne - 1);
            const Pt &a = p[i], &b = p[(i + 1) % n], &c = p[j], &d = p[(j + 1) % n];
            if (adjacent) {
                // Adjacent edges share a vertex; they must not fold back onto each other.
                const Pt& s = (j == i + 1) ? b : a;            // shared vertex
                const Pt& u = (j == i + 1) ? a : b;            // far end of edge i
                const Pt& w = (j == i + 1) ? d : c;            // far end of edge j
                const double cr = orient(s, u, w);
                const double dot = (u.x - s.x) * (w.x - s.x) + (u.y - s.y) * (w.y - s.y);
                const double lu = std::hypot(u.x - s.x, u.y - s.y), lw = std::hypot(w.x - s.x, w.y - s.y);
                if (std::fabs(cr) <= 1e-12 * lu * lw && dot > 0)
                    return "edges " + std::to_string(i + 1) + " and " + std::to_string(j + 1) + " fold back onto each other";
                continue;
            }
            if (segmentsTouch(a, b, c, d, tol))
                return "edges " + std::to_string(i + 1) + " and " + std::to_string(j + 1) + " touch or cross";
        }
    if (closed && std::fabs(detail::signedArea(p)) <= tol * tol) return "it encloses no area";
    return "";
}

// Where an edge of polygon p crosses an edge of polygon q (both closed) away from every
// vertex: the two edges pass through each other, each with its end points farther than
// tol from the other's line on opposite sides. Shared vertices, a vertex lying on the
// other's edge (touching) and edges laid along each other are not crossings. Returns
// true with the first crossing point found.
bool polygonsCross(const std::vector<Pt>& p, const std::vector<Pt>& q, double tol, Pt& at) {
    auto box = [](const std::vector<Pt>& v, double b[4]) {
        b[0] = b[2] = std::numeric_limits<double>::infinity();
        b[1] = b[3] = -std::numeric_limits<double>::infinity();
        for (const Pt& a : v) {
            b[0] = std::min(b[0], a.x); b[1] = std::max(b[1], a.x);
            b[2] = std::min(b[2], a.y); b[3] = std::max(b[3], a.y);
        }
    };
    double bq[4], bp[4];
    box(p, bp);
    box(q, bq);
    if (bp[1] < bq[0] || bq[1] < bp[0] || bp[3] < bq[2] || bq[3] < bp[2]) return false;
    const size_t np = p.size(), nq = q.size();
    for (size_t i = 0; i < np; ++i) {
        const Pt &a = p[i], &b = p[(i + 1) % np];
        if (std::max(a.x, b.x) < bq[0] || std::min(a.x, b.x) > bq[1] || std::max(a.y, b.y) < bq[2] ||
            std::min(a.y, b.y) > bq[3])
            continue;
        const double lab = std::hypot(b.x - a.x, b.y - a.y);
        for (size_t j = 0; j < nq; ++j) {
            const Pt &c = q[j], &d = q[(j + 1) % nq];
            if (std::max(c.x, d.x) < std::min(a.x, b.x) || std::min(c.x, d.x) > std::max(a.x, b.x) ||
                std::max(c.y, d.y) < std::min(a.y, b.y) || std::min(c.y, d.y) > std::max(a.y, b.y))
                continue;
            const double lcd = std::hypot(d.x - c.x, d.y - c.y);
            if (!(lab > 0) || !(lcd > 0)) continue;
            const double o1 = orient(a, b, c) / lab, o2 = orient(a, b, d) / lab;
            const double o3 = orient(c, d, a) / lcd, o4 = orient(c, d, b) / lcd;
            const bool cdApart = (o1 > tol && o2 < -tol) || (o1 < -tol && o2 > tol);
            const bool abApart = (o3 > tol && o4 < -tol) || (o3 < -tol && o4 > tol);
            if (!cdApart || !abApart) continue;
            const double t = o3 / (o3 - o4);
            at = {a.x + t * (b.x - a.x), a.y + t * (b.y - a.y)};
            return true;
        }
    }
    return false;
}

// Common head on both sides of a boundary point whose average potential is phiAvg:
// aL.phi(h) + aR.phi(h) = 2 phiAvg (both increasing in h).
double commonHead(const detail::AquiferFn& a, const detail::AquiferFn& b, double phiAvg) {
    auto g = [&](double h) { return a.phiFromHead(h) + b.phiFromHead(h) - 2.0 * phiAvg; };
    double lo = std::min(a.B, b.B), hi = std::max(a.B + a.H, b.B + b.H);
    double span = std::max(hi - lo, 1.0);
    for (int i = 0; i < 200 && g(lo) > 0; ++i) { lo -= span; span *= 2; }
    span = std::max(hi - lo, 1.0);
    for (int i = 0; i < 200 && g(hi) < 0; ++i) { hi += span; span *= 2; }
    for (int i = 0; i < 200 && hi - lo > 1e-14 * (1.0 + std::fabs(hi)); ++i) {
        const double m = 0.5 * (lo + hi);
        (g(m) > 0 ? hi : lo) = m;
    }
    return 0.5 * (lo + hi);
}

double basisCoef(int k, double X) {
    switch (k) {
    case 0: return 0.5 * (1.0 - X);
    case 1: return 0.5 * (1.0 + X);
    default: return 1.0 - X * X;
    }
}

std::vector<double> collocationXs(int count) {
    switch (count) {
    case 1: return {0.0};
    case 2: return {-0.9, 0.0};  // not symmetric: see below
    default: return {-2.0 / 3.0, 0.0, 2.0 / 3.0};
    }
}

bool sameAquifer(const detail::AquiferFn& a, const detail::AquiferFn& b) {
    return a.k == b.k && a.B == b.B && a.H == b.H;
}

}  // namespace

int Solution::State::domainAt(double x, double y) const {
    int best = 0;
    double bestArea = std::numeric_limits<double>::infinity();
    for (int d = 1; d < (int)domains.size(); ++d) {
        if (domains[d].area < bestArea && detail::insidePolygon(domains[d].poly, x, y)) {
            best = d;
            bestArea = domains[d].area;
        }
    }
    return best;
}

bool Solution::State::ignoredAt(double x, double y) const {
    for (const auto& g : ignored)
        if (detail::insidePolygon(g.poly, x, y) != g.outside) return true;
    return false;
}

void Solution::State::prepareAreaElements(double tol) {
    const Aquifer& A = model.aquifer;
    domains.clear();
    ignored.clear();
    edges.clear();
    ponds.clear();
    inhos.clear();
    wallEls.clear();
    DomainEl d0;
    d0.aq = aq;
    d0.porosity = A.porosity;
    d0.averageHead = std::numeric_limits<double>::quiet_NaN();
    domains.push_back(d0);

    // Inhomogeneities: check the polygons and make their domains.
    for (int i = 0; i < (int)model.inhomogeneities.size(); ++i) {
        const Inhomogeneity& in = model.inhomogeneities[i];
        const std::string who = "inhomogeneity " + in.label + (in.line > 0 ? " (line " + std::to_string(in.line) + ")" : "");
        int dropped = 0;
        std::vector<int> kept = keptVertices(in.vertices, true, tol, dropped);
        if (kept.size() < 3) {
            warn(who + ": fewer than three distinct vertices (" + std::to_string(kept.size()) + "); the inhomogeneity is skipped");
            continue;
        }
        std::vector<Pt> poly;
        for (int k : kept) poly.push_back({in.vertices[k].x, in.vertices[k].y});
        const std::string bad = shapeProblem(poly, true, tol);
        if (!bad.empty()) {
            warn(who + ": " + bad + "; the inhomogeneity is skipped");
            continue;
        }
        // Polygons that cross each other would both claim the region where they
        // overlap: the later one is left out.
        {
            int crossed = 0;
            Pt at;
            for (int e = 1; e < (int)domains.size() && crossed == 0; ++e)
                if (polygonsCross(poly, domains[e].poly, tol, at)) crossed = e;
            if (crossed > 0) {
                const Inhomogeneity& o = model.inhomogeneities[domains[crossed].model];
                warn(who + ": its edges cross those of inhomogeneity " + o.label +
                     (o.line > 0 ? " (line " + std::to_string(o.line) + ")" : "") + " at (" + num(at.x) + ", " +
                     num(at.y) + "), where neither has a vertex; the inhomogeneity " + in.label + " is skipped");
                continue;
            }
        }
        if (dropped > 0)
            warn(who + ": " + std::to_string(dropped) + " repeated or unreadable vertices removed; the mended polygon is used");
        DomainEl d;
        d.model = i;
        double k = asAquifer(in.conductivity) ? A.conductivity : in.conductivity;
        if (!(k > 0.0)) {
            warn(who + ": conductivity " + num(k) + " is not positive; the aquifer's conductivity is used");
            k = A.conductivity;
        }
        double B = asAquifer(in.base) ? A.base : in.base;
        if (!std::isfinite(B)) {
            warn(who + ": base " + num(B) + " is not a number; the aquifer's base is used");
            B = A.base;
        }
        double H = A.base + A.thickness - B;  // the top of the aquifer stays where it is
        if (!(H > 0.0)) {
            warn(who + ": base " + num(B) + " lies at or above the top of the aquifer; the aquifer's thickness is used above it");
            H = A.thickness;
        }
        d.aq = detail::AquiferFn{B, k, H, {}};
        if (aq.salt.on) d.aq.setInterface(aq.salt.nu, aq.salt.sea);  // one sea, one interface
        d.porosity = asAquifer(in.porosity) ? A.porosity : in.porosity;
        if (!(d.porosity > 0.0 && d.porosity <= 1.0)) {
            warn(who + ": porosity " + num(d.porosity) + " is not between 0 and 1; the aquifer's porosity is used");
            d.porosity = A.porosity;
        }
        d.averageHead = asAquifer(in.averageHead) ? std::numeric_limits<double>::quiet_NaN() : in.averageHead;
        d.extraction = std::isfinite(in.extraction) ? in.extraction : 0.0;
        d.poly = poly;
        d.area = std::fabs(detail::signedArea(poly));
        if (d.extraction != 0.0) {
            d.hasSink = true;
            d.sink = detail::makeAreaSink(poly);
        }
        AreaOwner o;
        o.model = i;
        o.domain = (int)domains.size();
        o.closed = true;
        o.verts = kept;
        inhos.push_back(o);
        domains.push_back(std::move(d));
    }

    // Unique vertices and edges of all accepted polygons.
    std::vector<Pt> uv;
    auto vid = [&](double x, double y) {
        for (int k = 0; k < (int)uv.size(); ++k)
            if (std::hypot(uv[k].x - x, uv[k].y - y) <= tol) return k;
        uv.push_back({x, y});
        return (int)uv.size() - 1;
    };
    struct UEdge {
        int a = 0, b = 0;
        int owner = 0, vertex = 0;  // first polygon (index into inhos) and its vertex
        bool doublet = false;
        bool used = false;
        int dbEdge = -1, dbSign = 1;  // the doublet made of it, +1 when it runs a -> b
    };
    std::vector<UEdge> ue;
    std::map<std::pair<int, int>, int> ueKey;
    std::vector<std::vector<int>> inhoUe(inhos.size());
    for (int p = 0; p < (int)inhos.size(); ++p) {
        const auto& o = inhos[p];
        const auto& vs = model.inhomogeneities[o.model].vertices;
        const int n = (int)o.verts.size();
        for (int k = 0; k < n; ++k) {
            const int a = vid(vs[o.verts[k]].x, vs[o.verts[k]].y);
            const int b = vid(vs[o.verts[(k + 1) % n]].x, vs[o.verts[(k + 1) % n]].y);
            if (a == b) { inhoUe[p].push_back(-1); continue; }
            const auto key = std::minmax(a, b);
            auto it = ueKey.find(key);
            if (it == ueKey.end()) {
                UEdge e;
                e.a = a; e.b = b; e.owner = p; e.vertex = o.verts[k];
                ue.push_back(e);
                it = ueKey.emplace(key, (int)ue.size() - 1).first;
            }
            inhoUe[p].push_back(it->second);
        }
    }
    // Which edges separate different properties.
    auto sides = [&](const Pt& a, const Pt& b, int& dl, int& dr) {
        const double L = std::hypot(b.x - a.x, b.y - a.y);
        const double nx = -(b.y - a.y) / L, ny = (b.x - a.x) / L;
        const double mx = 0.5 * (a.x + b.x), my = 0.5 * (a.y + b.y);
        const double dlt = 1e-5 * L;
        dl = domainAt(mx + dlt * nx, my + dlt * ny);
        dr = domainAt(mx - dlt * nx, my - dlt * ny);
    };
    std::vector<std::vector<int>> inc(uv.size());
    for (int e = 0; e < (int)ue.size(); ++e) {
        int dl, dr;
        sides(uv[ue[e].a], uv[ue[e].b], dl, dr);
        ue[e].doublet = !sameAquifer(domains[dl].aq, domains[dr].aq);
        if (ue[e].doublet) { inc[ue[e].a].push_back(e); inc[ue[e].b].push_back(e); }
    }

    // Chains of doublet edges.
    auto makeEdge = [&](int e, int from, int to, bool wall) {
        DbEdge d;
        d.g = detail::makeDbGeom(uv[from].x, uv[from].y, uv[to].x, uv[to].y);
        d.wall = wall;
        d.owner = ue[e].owner;
        d.vertex = ue[e].vertex;
        sides(uv[from], uv[to], d.dl, d.dr);
        edges.push_back(d);
        ue[e].dbEdge = (int)edges.size() - 1;
        ue[e].dbSign = from == ue[e].a ? 1 : -1;
        return (int)edges.size() - 1;
    };
    // Gives the chain's edges their unknowns' places: node unknowns are numbered later;
    // here u[] holds -2 for "unknown to be numbered" and -1 for "held at zero", and the
    // sharing of node values is recorded through `link`: the start node of edge i is the
    // end node of edge link[i].
    std::vector<int> prevOf;  // per DbEdge: the edge whose end node is this edge's start node (-1: none)
    auto chainFrom = [&](int startVertex, int firstEdge) {
        std::vector<int> chain;
        int cur = startVertex, e = firstEdge;
        while (true) {
            ue[e].used = true;
            const int next = ue[e].a == cur ? ue[e].b : ue[e].a;
            chain.push_back(makeEdge(e, cur, next, false));
            cur = next;
            if (inc[cur].size() != 2) break;
            const int other = inc[cur][0] == e ? inc[cur][1] : inc[cur][0];
            if (ue[other].used) break;
            e = other;
        }
        return std::make_pair(chain, cur);
    };
    auto setChain = [&](const std::vector<int>& chain, bool closed) {
        prevOf.resize(edges.size(), -1);
        const int m = (int)chain.size();
        for (int k = 0; k < m; ++k) {
            DbEdge& d = edges[chain[k]];
            d.u[2] = -2;
            d.u[0] = -2;  // own start node, or shared with the previous edge
            d.u[1] = -2;
            if (k > 0) prevOf[chain[k]] = chain[k - 1];
            else if (closed) prevOf[chain[k]] = chain[m - 1];
        }
    };
    for (int v = 0; v < (int)uv.size(); ++v) {
        if (inc[v].size() == 2) continue;
        for (int e : inc[v]) {
            if (ue[e].used) continue;
            auto [chain, end] = chainFrom(v, e);
            (void)end;
            setChain(chain, false);
        }
    }
    for (int e = 0; e < (int)ue.size(); ++e) {
        if (!ue[e].doublet || ue[e].used) continue;
        auto [chain, end] = chainFrom(ue[e].a, e);
        setChain(chain, end == ue[e].a);
    }
    const int inhoEdges = (int)edges.size();

    for (int p = 0; p < (int)inhos.size(); ++p) {
        for (int k = 0; k < (int)inhoUe[p].size(); ++k) {
            const int e = inhoUe[p][k];
            inhos[p].edge.push_back(e >= 0 ? ue[e].dbEdge : -1);
            int sign = 0;
            if (e >= 0 && ue[e].dbEdge >= 0) {
                const auto& vs = model.inhomogeneities[inhos[p].model].vertices;
                const int a = vid(vs[inhos[p].verts[k]].x, vs[inhos[p].verts[k]].y);
                const int from = ue[e].dbSign > 0 ? ue[e].a : ue[e].b;
                sign = a == from ? 1 : -1;
            }
            inhos[p].sign.push_back(sign);
        }
    }

    // Walls.
    for (int i = 0; i < (int)model.walls.size(); ++i) {
        const Wall& w = model.walls[i];
        const bool closed = w.kind != WallKind::Open;
        const std::string who = "wall " + w.label + (w.line > 0 ? " (line " + std::to_string(w.line) + ")" : "");
        int dropped = 0;
        std::vector<int> kept = keptVertices(w.vertices, closed, tol, dropped);
        const size_t need = closed ? 3 : 2;
        if (kept.size() < need) {
            warn(who + ": fewer than " + std::string(closed ? "three" : "two") + " distinct vertices (" +
                 std::to_string(kept.size()) + "); the wall is skipped");
            continue;
        }
        std::vector<Pt> poly;
        for (int k : kept) poly.push_back({w.vertices[k].x, w.vertices[k].y});
        const std::string bad = shapeProblem(poly, closed, tol);
        if (!bad.empty()) {
            warn(who + ": " + bad + "; the wall is skipped");
            continue;
        }
        if (dropped > 0)
            warn(who + ": " + std::to_string(dropped) + " repeated or unreadable vertices removed; the mended wall is used");
        // A closed wall whose edges cross an inhomogeneity or an earlier closed wall away
        // from their vertices: reported, and used as it lies (each of its segments takes
        // the domains found beside its centre; near the crossing neither element's
        // condition holds exactly).
        if (closed) {
            Pt at;
            auto report = [&](const std::string& other) {
                warn(who + ": its edges cross those of " + other + " at (" + num(at.x) + ", " + num(at.y) +
                     "), where neither has a vertex; both are used, and near the crossing their conditions are not met");
            };
            for (int e = 1; e < (int)domains.size(); ++e)
                if (polygonsCross(poly, domains[e].poly, tol, at)) {
                    const Inhomogeneity& o = model.inhomogeneities[domains[e].model];
                    report("inhomogeneity " + o.label + (o.line > 0 ? " (line " + std::to_string(o.line) + ")" : ""));
                }
            for (const AreaOwner& ow : wallEls) {
                if (!ow.closed) continue;
                const Wall& o = model.walls[ow.model];
                std::vector<Pt> other;
                for (int k : ow.verts) other.push_back({o.vertices[k].x, o.vertices[k].y});
                if (polygonsCross(poly, other, tol, at))
                    report("wall " + o.label + (o.line > 0 ? " (line " + std::to_string(o.line) + ")" : ""));
            }
        }
        double K = w.conductivity, T = w.thickness, bottom = w.bottom;
        const bool bounding = w.kind == WallKind::Outside || w.kind == WallKind::Inside;
        if (!bounding && !(K >= 0.0 && std::isfinite(K))) {
            warn(who + ": conductivity " + num(K) + " is negative or not finite; the wall is taken as impermeable");
            K = 0.0;
        }
        if (!std::isfinite(bottom)) {
            warn(who + ": bottom " + num(bottom) + " is not a number; the wall reaches the base");
            bottom = -std::numeric_limits<double>::infinity();
        }
        if (!bounding && K > 0.0 && !(T > 0.0)) {
            warn(who + ": thickness " + num(T) + " is not positive; the wall is taken as impermeable");
            K = 0.0;
        }
        AreaOwner o;
        o.model = i;
        o.closed = closed;
        o.verts = kept;
        const int n = (int)poly.size();
        const int ne = closed ? n : n - 1;
        const int first = (int)edges.size();
        prevOf.resize(edges.size() + ne, -1);
        for (int k = 0; k < ne; ++k) {
            const Pt& a = poly[k];
            const Pt& b = poly[(k + 1) % n];
            DbEdge d;
            d.g = detail::makeDbGeom(a.x, a.y, b.x, b.y);
            d.wall = true;
            d.owner = (int)wallEls.size();
            d.vertex = kept[k];
            sides(a, b, d.dl, d.dr);
            d.K = K; d.T = T; d.Bw = bottom;
            d.impermeable = bounding || (K == 0.0 && !(bottom > std::max(domains[d.dl].aq.B, domains[d.dr].aq.B)));
            d.u[0] = (!closed && k == 0) ? -1 : -2;
            d.u[1] = (!closed && k == ne - 1) ? -1 : -2;
            d.u[2] = -2;
            edges.push_back(d);
            prevOf[first + k] = k > 0 ? first + k - 1 : (closed ? first + ne - 1 : -1);
            o.edge.push_back(first + k);
            o.sign.push_back(1);
        }
        if (!closed) { o.edge.push_back(-1); o.sign.push_back(0); }
        if (bounding) ignored.push_back({poly, w.kind == WallKind::Outside});
        wallEls.push_back(std::move(o));
    }
    prevOf.resize(edges.size(), -1);

    // Node sharing: the start node of an edge with a predecessor is the predecessor's end node.
    for (int e = 0; e < (int)edges.size(); ++e) {
        if (prevOf[e] >= 0) edges[prevOf[e]].u[1] = -3;  // filled from the successor's start node
    }
    rowEdge.clear();
    (void)inhoEdges;
    // Keep prevOf for numbering.
    udb.clear();
    rowX.clear();
    rowCoef.clear();
    knownQn.clear();
    rowDropped.clear();
    chainPrev_ = std::move(prevOf);

    // Ponds.
    for (int i = 0; i < (int)model.ponds.size(); ++i) {
        const Pond& p = model.ponds[i];
        const std::string who = "pond " + p.label + (p.line > 0 ? " (line " + std::to_string(p.line) + ")" : "");
        if (!(p.radius > tol) || !std::isfinite(p.radius) || !std::isfinite(p.x) || !std::isfinite(p.y)) {
            warn(who + ": radius " + num(p.radius) + " is not positive; the pond is skipped");
            continue;
        }
        if (!std::isfinite(p.value)) {
            warn(who + ": " + std::string(p.headSpecified ? "head " : "rate ") + num(p.value) + " is not a number; the pond is skipped");
            continue;
        }
        PondEl e;
        e.model = i;
        e.x = p.x; e.y = p.y; e.R = p.radius;
        e.headSpecified = p.headSpecified;
        e.value = p.value;
        e.rate = p.headSpecified ? 0.0 : p.value;
        e.dom = domainAt(p.x, p.y);
        ponds.push_back(e);
    }
}

void Solution::State::numberAreaUnknowns() {
    auto add = [&](UnknownKind k, int owner, double x, double y) {
        ukind.push_back(k);
        uowner.push_back(owner);
        px.push_back(x);
        py.push_back(y);
        return (int)ukind.size() - 1;
    };
    for (int i = 0; i < (int)ponds.size(); ++i)
        if (ponds[i].headSpecified) ponds[i].unknown = add(UnknownKind::PondRate, i, ponds[i].x, ponds[i].y);

    // Doublet unknowns. Unknowns and rows are numbered together: the rows an edge owns
    // are its collocation points.
    const size_t before = ukind.size();
    std::vector<std::pair<int, double>> rows;  // (edge, X) of each doublet unknown's row
    for (int e = 0; e < (int)edges.size(); ++e) {
        DbEdge& d = edges[e];
        int owned = 0;
        bool ownsStart = false;
        if (d.u[0] == -2) {
            ownsStart = true;
            const int p = chainPrev_[e];
            d.u[0] = add(UnknownKind::DbNode, e, 0, 0);
            ++owned;
            if (p >= 0) edges[p].u[1] = d.u[0];
        }
        d.u[2] = add(UnknownKind::DbPara, e, 0, 0);
        ++owned;
        if (d.u[1] == -2) {
            d.u[1] = add(UnknownKind::DbNode, e, 0, 0);
            ++owned;
        }
        std::vector<double> xs = collocationXs(owned);
        if (owned == 2 && !ownsStart) xs = {0.0, 0.9};  // the node it owns is its end node
        for (double X : xs) rows.push_back({e, X});
    }
    // Predecessors numbered after their successors get their end node now.
    for (int e = 0; e < (int)edges.size(); ++e)
        if (chainPrev_[e] >= 0) edges[chainPrev_[e]].u[1] = edges[e].u[0];

    const size_t nAll = ukind.size();
    udb.assign(nAll + 1, {-1, -1, -1, -1});
    rowEdge.assign(nAll + 1, -1);
    rowX.assign(nAll + 1, 0.0);
    rowCoef.assign(nAll + 1, 0.0);
    knownQn.assign(nAll + 1, 0.0);
    rowDropped.assign(nAll + 1, 0);
    for (int e = 0; e < (int)edges.size(); ++e)
        for (int k = 0; k < 3; ++k) {
            const int u = edges[e].u[k];
            if (u < 0) continue;
            auto& slot = udb[u];
            if (slot[0] < 0) { slot[0] = e; slot[1] = k; } else { slot[2] = e; slot[3] = k; }
        }
    for (size_t r = 0; r < rows.size(); ++r) {
        const size_t i = before + r;
        const DbEdge& d = edges[rows[r].first];
        rowEdge[i] = rows[r].first;
        rowX[i] = rows[r].second;
        const double X = rows[r].second;
        px[i] = d.g.cx + (std::complex<double>(X, 0.0) / d.g.ih).real();
        py[i] = d.g.cy + (std::complex<double>(X, 0.0) / d.g.ih).imag();
    }

    // A closed impermeable wall separates the levels of the potential inside and outside
    // it: a constant jump along it changes the one inside alone. Where no condition of
    // given potential (a head-specified element, the reference point) lies on one of the
    // two sides, that level is free and the system singular: then the first row of the
    // wall is replaced by a zero mean jump (the flow through the wall vanishes in total
    // all the same, since no water comes from a side without such a condition).
    for (const AreaOwner& o : wallEls) {
        if (!o.closed) continue;
        bool allImpermeable = true;
        std::vector<Pt> poly;
        for (int e : o.edge) {
            if (e < 0) continue;
            allImpermeable = allImpermeable && edges[e].impermeable;
            poly.push_back({edges[e].g.x1, edges[e].g.y1});
        }
        if (!allImpermeable || poly.size() < 3) continue;
        bool inside = detail::insidePolygon(poly, refX, refY), outside = !inside;
        for (size_t i = 0; i < before; ++i) {
            if (!elementOf(ukind[i]).hasPoint()) continue;
            (detail::insidePolygon(poly, px[i], py[i]) ? inside : outside) = true;
        }
        if (inside && outside) continue;
        for (size_t i = before; i < nAll; ++i)
            if (rowEdge[i] == o.edge.front()) { rowDropped[i] = 1; break; }
    }
}

double Solution::State::jumpAt(int e, double X) const {
    const DbEdge& d = edges[e];
    return detail::dbJump(d.val[0], d.val[1], d.val[2], X);
}

void Solution::State::buildAreaArrays() {
    sinkArr = {};
    for (const auto& d : domains) {
        if (!d.hasSink) continue;
        const auto& a = d.sink;
        for (size_t e = 0; e < a.edges.size(); ++e) sinkArr.add(a.edges[e], a.v[e].x, a.v[e].y, a.nx[e], a.ny[e], -d.extraction);
    }
    // Leakage cells: area sinks of given rate, with the recharge polygons' influence. The
    // terms of an edge that two cells share differ only in the sign of its normal, so each
    // edge enters once, taken from its lower end point (x, then y) with the normal on its
    // right, weighted by the difference of the two rates: a block of cells of one rate costs
    // no more than its outline. (Edges that overlap only in part stay apart; the cells of a
    // grid meet edge to edge.)
    std::map<std::array<double, 4>, double> cellEdges;
    for (const auto& c : model.leakage) {
        if (c.rate == 0.0) continue;
        const std::array<std::array<double, 2>, 4> v = {{{c.x1, c.y1}, {c.x2, c.y1}, {c.x2, c.y2}, {c.x1, c.y2}}};
        for (int e = 0; e < 4; ++e) {
            const auto& p = v[e];
            const auto& q = v[(e + 1) % 4];  // counter-clockwise: the outward normal is on the right
            if (p < q) cellEdges[{p[0], p[1], q[0], q[1]}] -= c.rate;
            else cellEdges[{q[0], q[1], p[0], p[1]}] += c.rate;
        }
    }
    for (const auto& [k, wt] : cellEdges) {
        if (wt == 0.0) continue;
        const double L = std::hypot(k[2] - k[0], k[3] - k[1]);
        if (!(L > 0)) continue;
        sinkArr.add(detail::makeGeom(k[0], k[1], k[2], k[3]), k[0], k[1], (k[3] - k[1]) / L, -(k[2] - k[0]) / L, wt);
    }
    dbArr = {};
    for (const auto& d : edges) dbArr.add(d.g.cx, d.g.cy, d.g.ih.real(), d.g.ih.imag());
    for (size_t e = 0; e < edges.size(); ++e) dbArr.setStrengths((int)e, edges[e].val[0], edges[e].val[1], edges[e].val[2]);
}

double Solution::State::knownAreaPotential(double x, double y) const {
    detail::Field f;
    detail::areaSinkField(sinkArr, x, y, false, f);
    for (const auto& p : ponds)
        if (!p.headSpecified && p.rate != 0.0) f.phi += p.rate * detail::pondPotential(p.x, p.y, p.R, x, y);
    return f.phi;
}

std::complex<double> Solution::State::knownAreaW(double x, double y) const {
    detail::Field f;
    detail::areaSinkField(sinkArr, x, y, true, f);
    std::complex<double> w(f.wr, f.wi);
    for (const auto& p : ponds)
        if (!p.headSpecified && p.rate != 0.0) w += p.rate * detail::pondW(p.x, p.y, p.R, x, y);
    return w;
}

void Solution::State::areaField(double x, double y, bool wantW, detail::Field& f) const {
    detail::areaSinkField(sinkArr, x, y, wantW, f);
    for (const auto& p : ponds) {
        if (p.rate == 0.0) continue;
        f.phi += p.rate * detail::pondPotential(p.x, p.y, p.R, x, y);
        if (wantW) {
            const auto w = detail::pondW(p.x, p.y, p.R, x, y);
            f.wr += p.rate * w.real();
            f.wi += p.rate * w.imag();
        }
    }
    detail::doubletField(dbArr, x, y, wantW, f);
}

double Solution::State::areaPotential(double x, double y) const {
    detail::Field f;
    areaField(x, y, false, f);
    return f.phi;
}

std::complex<double> Solution::State::areaW(double x, double y) const {
    detail::Field f;
    areaField(x, y, true, f);
    return {f.wr, f.wi};
}

void Solution::State::areaColumn(int j, const double* px_, const double* py_, int n_, double* out) const {
    if (ukind[j] == UnknownKind::PondRate) {
        const PondEl& p = ponds[uowner[j]];
        for (int i = 0; i < n_; ++i) out[i] = detail::pondPotential(p.x, p.y, p.R, px_[i], py_[i]);
        return;
    }
    const auto& slot = udb[j];
    for (int i = 0; i < n_; ++i) {
        double v = 0.0;
        for (int s = 0; s < 4; s += 2) {
            if (slot[s] < 0) continue;
            v += detail::dbBasis(edges[slot[s]].g, px_[i], py_[i], false).phi[slot[s + 1]];
        }
        out[i] = v;
    }
}

std::complex<double> Solution::State::unitW(int j, double x_, double y_) const {
    return elementOf(ukind[j]).unitW(*this, j, x_, y_);
}

namespace {

// Flow through a wall from its left to its right side, per unit length, from W.
double normalFlow(const DbEdge& d, std::complex<double> w) {
    const double dx = d.g.x2 - d.g.x1, dy = d.g.y2 - d.g.y1, L = std::hypot(dx, dy);
    const double nx = dy / L, ny = -dx / L;  // right-hand normal
    return w.real() * nx - w.imag() * ny;
}

// Conductance of a wall per unit length (flow per unit head difference) at saturated
// thickness b above base B: the wall covers the saturated zone above its bottom; the
// gap below it has the aquifer's conductivity over the wall's thickness; both in parallel.
double wallConductance(const DbEdge& d, const detail::AquiferFn& a, double h) {
    if (d.impermeable) return 0.0;
    const double b = a.saturated(h);
    const double top = a.top(h);
    const double covered = std::clamp(top - std::max(d.Bw, a.bottom(h)), 0.0, b);
    const double gap = b - covered;
    const double T = d.T > 0.0 ? d.T : 1.0;
    return (d.K * covered + a.k * gap) / T;
}

}  // namespace

// The current linearisation point of a doublet row: average potential and jump.
static void rowPoint(const Solution::State& s, int i, double& phiAvg, double& mu) {
    const int e = s.rowEdge[i];
    const DbEdge& d = s.edges[e];
    mu = s.jumpAt(e, s.rowX[i]);
    phiAvg = s.phiPts[i];
    if (!std::isfinite(phiAvg)) {
        // First iteration: the estimate of the head inside, or the reference head.
        double h0 = s.refHead;
        const double a = s.domains[d.dl].averageHead, b = s.domains[d.dr].averageHead;
        if (std::isfinite(a)) h0 = a;
        else if (std::isfinite(b)) h0 = b;
        phiAvg = 0.5 * (s.aqOf(d.dl).phiFromHead(h0) + s.aqOf(d.dr).phiFromHead(h0));
        if (!d.wall) mu = s.aqOf(d.dl).phiFromHead(h0) - s.aqOf(d.dr).phiFromHead(h0);
    }
}

void Solution::State::setKnownFlows() {
    for (int i = 0; i < n; ++i)
        if (rowEdge[i] >= 0 && edges[rowEdge[i]].wall) knownQn[i] = normalFlow(edges[rowEdge[i]], wAt(px[i], py[i]));
}

void Solution::State::assembleAreaRows(RowSink& A) {
    for (int i = 0; i < n; ++i) {
        if (rowEdge[i] < 0) continue;
        const DbEdge& d = edges[rowEdge[i]];
        const double X = rowX[i];
        double phiAvg, mu;
        rowPoint(*this, i, phiAvg, mu);
        const auto& aL = aqOf(d.dl);
        const auto& aR = aqOf(d.dr);
        if (rowDropped[i]) {
            A.clearRow(i);
            // Zero mean jump over the wall's nodes (its level is otherwise free).
            for (int e = 0; e < (int)edges.size(); ++e)
                if (edges[e].wall && edges[e].owner == d.owner && edges[e].u[0] >= 0) A.set(i, edges[e].u[0], 1.0);
            continue;
        }
        if (!d.wall) {
            const double h = commonHead(aL, aR, phiAvg);
            const double tl = aL.transmissivity(h), tr = aR.transmissivity(h);
            const double slope = 2.0 * (tl - tr) / (tl + tr);
            rowCoef[i] = slope;
            A.scaleRow(i, -slope);
        } else {
            const double hm = 0.5 * (aL.headFromPhiExtended(phiAvg + 0.5 * mu) + aR.headFromPhiExtended(phiAvg - 0.5 * mu));
            rowCoef[i] = wallConductance(d, aL, hm) / aL.transmissivity(hm);
            A.setRow(i, [&](int j) { return normalFlow(d, unitW(j, px[i], py[i])); });
        }
        const double sgn = d.wall ? -rowCoef[i] : 1.0;
        for (int k = 0; k < 3; ++k)
            if (d.u[k] >= 0) A.add(i, d.u[k], sgn * basisCoef(k, X));
    }
}

double Solution::State::areaRhs(int i) const {
    if (rowDropped[i]) return 0.0;
    const DbEdge& d = edges[rowEdge[i]];
    double phiAvg, mu;
    rowPoint(*this, i, phiAvg, mu);
    const auto& aL = aqOf(d.dl);
    const auto& aR = aqOf(d.dr);
    if (!d.wall) {
        const double h = commonHead(aL, aR, phiAvg);
        const double mu0 = aL.phiFromHead(h) - aR.phiFromHead(h);
        return mu0 - rowCoef[i] * phiAvg + rowCoef[i] * known[i];
    }
    const double hL = aL.headFromPhiExtended(phiAvg + 0.5 * mu), hR = aR.headFromPhiExtended(phiAvg - 0.5 * mu);
    const double C = wallConductance(d, aL, 0.5 * (hL + hR));
    const double dh = std::isfinite(phiPts[i]) ? hL - hR : 0.0;
    return C * dh - rowCoef[i] * (std::isfinite(phiPts[i]) ? mu : 0.0) - knownQn[i];
}

bool Solution::State::updateArea(double& residual) {
    bool rebuild = false;
    for (int i = 0; i < n; ++i) {
        if (rowEdge[i] < 0 || rowDropped[i]) continue;
        const DbEdge& d = edges[rowEdge[i]];
        const auto& aL = aqOf(d.dl);
        const auto& aR = aqOf(d.dr);
        const double phiAvg = phiPts[i];
        const double mu = jumpAt(rowEdge[i], rowX[i]);
        const double hL = aL.headFromPhiExtended(phiAvg + 0.5 * mu), hR = aR.headFromPhiExtended(phiAvg - 0.5 * mu);
        double coef;
        if (!d.wall) {
            residual = std::max(residual, std::fabs(hL - hR));
            const double h = commonHead(aL, aR, phiAvg);
            const double tl = aL.transmissivity(h), tr = aR.transmissivity(h);
            coef = 2.0 * (tl - tr) / (tl + tr);
        } else {
            const double qn = normalFlow(d, wAt(px[i], py[i]));
            const double hm = 0.5 * (hL + hR);
            const double C = wallConductance(d, aL, hm);
            const double t = aL.transmissivity(hm);
            residual = std::max(residual, std::fabs(qn - C * (hL - hR)) * d.g.L / t);
            coef = C / t;
        }
        if (std::fabs(coef - rowCoef[i]) > 1e-3 * std::max(std::fabs(rowCoef[i]), 1e-3)) rebuild = true;
    }
    return rebuild;
}

// ---------------------------------------------------------------------------------
// Results

namespace {

// Residual of the jump condition at local X of an inhomogeneity edge, in potential:
// the jump minus the jump that a common head on both sides asks for.
double jumpError(const Solution::State& s, int e, double X) {
    const DbEdge& d = s.edges[e];
    const std::complex<double> z = std::complex<double>(d.g.cx, d.g.cy) + X / d.g.ih;
    const double phiAvg = s.potentialAt(z.real(), z.imag());
    const double h = commonHead(s.aqOf(d.dl), s.aqOf(d.dr), phiAvg);
    return s.jumpAt(e, X) - (s.aqOf(d.dl).phiFromHead(h) - s.aqOf(d.dr).phiFromHead(h));
}

// Normal flow just right of the edge minus just left of it (left to right positive).
double normalFlowJump(const Solution::State& s, int e, double X) {
    const DbEdge& d = s.edges[e];
    const std::complex<double> z = std::complex<double>(d.g.cx, d.g.cy) + X / d.g.ih;
    const std::complex<double> left = std::complex<double>(0.0, 1e-7) / d.g.ih;  // 1e-7 half-lengths to the left
    const std::complex<double> zl = z + left, zr = z - left;
    return normalFlow(d, s.wAt(zr.real(), zr.imag())) - normalFlow(d, s.wAt(zl.real(), zl.imag()));
}

// Flow through a wall minus what its conductance passes for the head difference.
double wallFlowError(const Solution::State& s, int e, double X, double* dhOut = nullptr) {
    const DbEdge& d = s.edges[e];
    const std::complex<double> z = std::complex<double>(d.g.cx, d.g.cy) + X / d.g.ih;
    const double phiAvg = s.potentialAt(z.real(), z.imag());
    const double mu = s.jumpAt(e, X);
    const auto& aL = s.aqOf(d.dl);
    const auto& aR = s.aqOf(d.dr);
    const double hL = aL.headFromPhiExtended(phiAvg + 0.5 * mu), hR = aR.headFromPhiExtended(phiAvg - 0.5 * mu);
    if (dhOut) *dhOut = hL - hR;
    return normalFlow(d, s.wAt(z.real(), z.imag())) - wallConductance(d, aL, 0.5 * (hL + hR)) * (hL - hR);
}

}  // namespace

std::vector<InhomogeneityResult> Solution::inhomogeneityResults() const {
    const State& s = *s_;
    std::vector<InhomogeneityResult> out;
    for (const auto& o : s.inhos) {
        const Inhomogeneity& in = s.model.inhomogeneities[o.model];
        const DomainEl& dom = s.domains[o.domain];
        InhomogeneityResult r;
        r.label = in.label;
        r.conductivity = dom.aq.k;
        r.base = dom.aq.B;
        r.extraction = dom.extraction;
        r.porosity = dom.porosity;
        r.area = dom.area;
        const bool ccw = detail::signedArea(dom.poly) > 0;
        const int n = (int)o.verts.size();
        double jumpLength = 0.0, perimeter = 0.0;
        for (int k = 0; k < n; ++k) {
            const Vertex& a = in.vertices[o.verts[k]];
            const Vertex& b = in.vertices[o.verts[(k + 1) % n]];
            InhomogeneityNode nd;
            nd.label = a.label;
            nd.x1 = a.x; nd.y1 = a.y;
            nd.xc = 0.5 * (a.x + b.x); nd.yc = 0.5 * (a.y + b.y);
            nd.extractionNode = nd.extractionCentre = dom.extraction;
            const double L = std::hypot(b.x - a.x, b.y - a.y);
            perimeter += L;
            const int e = o.edge[k];
            if (e >= 0) {
                const DbEdge& d = s.edges[e];
                // Jump of the edge in the sense inside minus outside of this polygon.
                const double f = (o.sign[k] > 0 ? 1.0 : -1.0) * (ccw ? 1.0 : -1.0);
                const double Xnode = o.sign[k] > 0 ? -1.0 : 1.0;
                nd.jumpNode = f * s.jumpAt(e, Xnode);
                nd.jumpParabolic = f * d.val[2];
                jumpLength += f * (0.5 * (d.val[0] + d.val[1]) + 2.0 / 3.0 * d.val[2]) * L;
                const int inside = f > 0 ? d.dl : d.dr;
                const int outside = inside == d.dl ? d.dr : d.dl;
                const double hc = s.aqOf(inside).headFromPhiExtended(s.potentialAt(nd.xc, nd.yc));
                nd.transmissivityFactor = s.aqOf(inside).transmissivity(hc) / s.aqOf(outside).transmissivity(hc);
                nd.errorNode = f * jumpError(s, e, 0.98 * Xnode);
                nd.errorCentre = f * jumpError(s, e, 0.0);
                // Outward normal flow just outside minus just inside: whichever side of the
                // edge is inside, that is the flow across the edge right minus left.
                nd.flowErrorCentre = normalFlowJump(s, e, 0.0);
            }
            r.nodes.push_back(nd);
        }
        r.averageJump = perimeter > 0 ? jumpLength / perimeter : 0.0;
        out.push_back(std::move(r));
    }
    return out;
}

std::vector<WallResult> Solution::wallResults() const {
    const State& s = *s_;
    std::vector<WallResult> out;
    for (const auto& o : s.wallEls) {
        const Wall& w = s.model.walls[o.model];
        WallResult r;
        r.label = w.label;
        r.conductivity = w.conductivity;
        r.thickness = w.thickness;
        r.porosity = w.porosity;
        r.bottom = w.bottom;
        const int n = (int)o.verts.size();
        // One record per segment, by the vertex it starts at; a wall that bounds an
        // ignored region has no record for its closing segment.
        const bool bounding = w.kind == WallKind::Outside || w.kind == WallKind::Inside;
        const int records = (o.closed && !bounding) ? n : n - 1;
        for (int k = 0; k < records; ++k) {
            const int e = o.edge[k];
            if (e < 0) continue;
            const DbEdge& d = s.edges[e];
            const Vertex& a = w.vertices[o.verts[k]];
            WallNode nd;
            nd.label = a.label;
            nd.x1 = a.x; nd.y1 = a.y;
            nd.xc = d.g.cx; nd.yc = d.g.cy;
            nd.jumpNode = d.val[0];
            nd.jumpParabolic = d.val[2];
            nd.flowErrorCentre = wallFlowError(s, e, 0.0, &nd.headDifferenceCentre);
            nd.flowErrorNode = wallFlowError(s, e, -0.98);
            r.nodes.push_back(nd);
        }
        out.push_back(std::move(r));
    }
    return out;
}

std::vector<BarrierSegment> Solution::barrierSegments() const {
    const State& s = *s_;
    std::vector<BarrierSegment> out;
    for (const DbEdge& d : s.edges) {
        if (!d.wall || !d.impermeable) continue;
        const Wall& w = s.model.walls[s.wallEls[d.owner].model];
        BarrierSegment b;
        b.label = w.label;
        b.x1 = d.g.x1; b.y1 = d.g.y1; b.x2 = d.g.x2; b.y2 = d.g.y2;
        b.bounding = w.kind == WallKind::Outside || w.kind == WallKind::Inside;
        out.push_back(std::move(b));
    }
    return out;
}

}  // namespace tarno::engine
