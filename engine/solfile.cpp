// The .SOL file: the model and the state of its solution, as text.
//
// Layout: the first line "TARNO-SOL <version>", then one item per line: numbers with 17
// significant digits (they read back to the same double), texts as "<length> <text>".
// The last line is "END". A file whose first line differs, whose version differs, or that
// ends before "END" is refused.
#include "engine/solution.h"
#include "engine/state.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

namespace tarno::engine {

namespace {

constexpr const char* kMagic = "TARNO-SOL";
constexpr int kVersion = 6;  // 2: inhomogeneities, walls and ponds; 3: partially penetrating and transient wells; 4: lakes;
                             // 5: leakage cells; 6: lake edges

class Writer {
public:
    explicit Writer(std::ostream& o) : o_(o) {}
    void num(double v) {
        char b[40];
        std::snprintf(b, sizeof b, "%.17g\n", v);
        o_ << b;
    }
    void i(long v) { o_ << v << '\n'; }
    void str(const std::string& s) { o_ << s.size() << ' ' << s << '\n'; }
private:
    std::ostream& o_;
};

class Reader {
public:
    Reader(std::istream& in, std::string path) : in_(in), path_(std::move(path)) {}
    std::string line() {
        std::string l;
        if (!std::getline(in_, l)) fail("it ends too early");
        ++lineNo_;
        if (!l.empty() && l.back() == '\r') l.pop_back();
        return l;
    }
    double num() {
        const std::string l = line();
        char* end = nullptr;
        errno = 0;
        const double v = std::strtod(l.c_str(), &end);
        if (l.empty() || *end != '\0') fail("line " + std::to_string(lineNo_) + " holds \"" + l + "\" where a number belongs");
        return v;
    }
    long i() {
        const double v = num();
        if (v != (double)(long)v) fail("line " + std::to_string(lineNo_) + " holds a fraction where a count belongs");
        return (long)v;
    }
    long count(long max) {
        const long v = i();
        if (v < 0 || v > max) fail("line " + std::to_string(lineNo_) + " holds the count " + std::to_string(v) + ", which is not possible");
        return v;
    }
    std::string str() {
        const std::string l = line();
        const size_t sp = l.find(' ');
        char* end = nullptr;
        const long n = sp == std::string::npos ? -1 : std::strtol(l.c_str(), &end, 10);
        if (sp == std::string::npos || end != l.c_str() + sp || n < 0 || (size_t)n != l.size() - sp - 1)
            fail("line " + std::to_string(lineNo_) + " is not a text item");
        return l.substr(sp + 1);
    }
    [[noreturn]] void fail(const std::string& why) {
        throw FatalError("The solution file " + path_ + " cannot be loaded: " + why + ".");
    }
private:
    std::istream& in_;
    std::string path_;
    int lineNo_ = 0;
};

void writeModel(Writer& w, const Model& m) {
    w.str(m.title);
    w.str(m.baseName);
    w.num(m.originX); w.num(m.originY); w.i(m.unitCode);
    const Aquifer& a = m.aquifer;
    w.num(a.base); w.num(a.conductivity); w.num(a.thickness); w.num(a.porosity);
    w.num(a.qx0); w.num(a.qy0);
    w.i(a.hasReference); w.num(a.referenceX); w.num(a.referenceY); w.num(a.referenceHead);
    w.i(a.hasInterface); w.num(a.freshGravity); w.num(a.saltGravity); w.num(a.seaLevel);
    w.i(m.window.given); w.num(m.window.x1); w.num(m.window.y1); w.num(m.window.x2); w.num(m.window.y2);
    w.num(m.time);
    w.i((long)m.wells.size());
    for (const auto& e : m.wells) {
        w.num(e.x); w.num(e.y); w.num(e.radius); w.num(e.value); w.i(e.headSpecified); w.str(e.label);
    }
    w.i((long)m.lineSinks.size());
    for (const auto& ls : m.lineSinks) {
        w.i((int)ls.kind); w.i(ls.farField); w.num(ls.resistance); w.num(ls.width); w.i(ls.locationCode);
        w.num(ls.depth); w.num(ls.pumping); w.num(ls.endInflow); w.i(ls.end); w.num(ls.overlandFlow);
        w.str(ls.label); w.i(ls.inlet); w.str(ls.outletTable);
        w.i(ls.lake.on);
        if (ls.lake.on) {
            w.num(ls.lake.bottom); w.num(ls.lake.estimate); w.num(ls.lake.netEvaporation); w.num(ls.lake.stage);
            w.i(ls.lake.dry); w.i(ls.lake.solved);
            w.i((long)ls.lake.inlets.size());
            for (const auto& n : ls.lake.inlets) w.str(n);
            w.i((long)ls.lake.outlets.size());
            for (const auto& n : ls.lake.outlets) w.str(n);
        }
        w.i((long)ls.segments.size());
        for (const auto& s : ls.segments) {
            w.num(s.x1); w.num(s.y1); w.num(s.x2); w.num(s.y2); w.num(s.value); w.str(s.label);
        }
    }
    auto vertices = [&](const std::vector<Vertex>& vs) {
        w.i((long)vs.size());
        for (const auto& v : vs) { w.num(v.x); w.num(v.y); w.str(v.label); }
    };
    w.i((long)m.inhomogeneities.size());
    for (const auto& in : m.inhomogeneities) {
        w.num(in.conductivity); w.num(in.base); w.num(in.averageHead); w.num(in.extraction); w.num(in.porosity);
        w.str(in.label); w.i(in.line);
        vertices(in.vertices);
    }
    w.i((long)m.walls.size());
    for (const auto& wl : m.walls) {
        w.i((int)wl.kind); w.num(wl.conductivity); w.num(wl.thickness); w.num(wl.porosity); w.num(wl.bottom);
        w.str(wl.label); w.i(wl.line);
        vertices(wl.vertices);
    }
    w.i((long)m.ponds.size());
    for (const auto& p : m.ponds) {
        w.num(p.x); w.num(p.y); w.num(p.radius); w.num(p.value); w.i(p.headSpecified); w.str(p.label); w.i(p.line);
    }
    w.i((long)m.partialWells.size());
    for (const auto& p : m.partialWells) {
        w.num(p.x); w.num(p.y); w.num(p.top); w.num(p.bottom); w.num(p.radius); w.num(p.value); w.i(p.headSpecified);
        w.str(p.label); w.i(p.line);
    }
    w.i((long)m.theisWells.size());
    for (const auto& t : m.theisWells) {
        w.num(t.x); w.num(t.y); w.num(t.discharge); w.num(t.startTime); w.num(t.startHead); w.num(t.storage);
        w.num(t.radius); w.str(t.label); w.i(t.line);
    }
    w.i((long)m.lakes.size());
    for (const auto& l : m.lakes) {
        w.num(l.conductivity); w.num(l.precipitation); w.num(l.evaporation); w.num(l.resistance); w.num(l.extraction);
        w.str(l.tableName); w.str(l.label); w.i(l.line);
        w.i((long)l.table.size());
        for (const auto& t : l.table) { w.num(t.stage); w.num(t.area); w.num(t.volume); }
        vertices(l.vertices);
        w.i(l.linksFound);
        w.i((long)l.links.size());
        for (const auto& k : l.links) {
            w.str(k.string); w.i(k.inlet); w.num(k.flow);
            w.i((long)k.rating.size());
            for (const auto& [st, q] : k.rating) { w.num(st); w.num(q); }
        }
    }
    w.i((long)m.leakage.size());
    for (const auto& c : m.leakage) { w.num(c.x1); w.num(c.y1); w.num(c.x2); w.num(c.y2); w.num(c.rate); }
    w.i(m.leakageOriginGiven); w.num(m.leakageX0); w.num(m.leakageY0);
}

Model readModel(Reader& r) {
    constexpr long kMaxItems = 100000000;
    Model m;
    m.title = r.str();
    m.baseName = r.str();
    m.originX = r.num(); m.originY = r.num(); m.unitCode = (int)r.i();
    Aquifer& a = m.aquifer;
    a.base = r.num(); a.conductivity = r.num(); a.thickness = r.num(); a.porosity = r.num();
    a.qx0 = r.num(); a.qy0 = r.num();
    a.hasReference = r.i() != 0; a.referenceX = r.num(); a.referenceY = r.num(); a.referenceHead = r.num();
    a.hasInterface = r.i() != 0; a.freshGravity = r.num(); a.saltGravity = r.num(); a.seaLevel = r.num();
    m.window.given = r.i() != 0; m.window.x1 = r.num(); m.window.y1 = r.num(); m.window.x2 = r.num(); m.window.y2 = r.num();
    m.time = r.num();
    m.wells.resize(r.count(kMaxItems));
    for (auto& e : m.wells) {
        e.x = r.num(); e.y = r.num(); e.radius = r.num(); e.value = r.num(); e.headSpecified = r.i() != 0; e.label = r.str();
    }
    m.lineSinks.resize(r.count(kMaxItems));
    for (auto& ls : m.lineSinks) {
        const long k = r.count(4);
        ls.kind = (LineSinkKind)k;
        ls.farField = r.i() != 0; ls.resistance = r.num(); ls.width = r.num(); ls.locationCode = (int)r.i();
        ls.depth = r.num(); ls.pumping = r.num(); ls.endInflow = r.num(); ls.end = r.i() != 0; ls.overlandFlow = r.num();
        ls.label = r.str(); ls.inlet = r.i() != 0; ls.outletTable = r.str();
        ls.lake.on = r.i() != 0;
        if (ls.lake.on) {
            ls.lake.bottom = r.num(); ls.lake.estimate = r.num(); ls.lake.netEvaporation = r.num();
            ls.lake.stage = r.num(); ls.lake.dry = r.i() != 0; ls.lake.solved = r.i() != 0;
            ls.lake.inlets.resize(r.count(kMaxItems));
            for (auto& n : ls.lake.inlets) n = r.str();
            ls.lake.outlets.resize(r.count(kMaxItems));
            for (auto& n : ls.lake.outlets) n = r.str();
        }
        ls.segments.resize(r.count(kMaxItems));
        for (auto& s : ls.segments) {
            s.x1 = r.num(); s.y1 = r.num(); s.x2 = r.num(); s.y2 = r.num(); s.value = r.num(); s.label = r.str();
        }
    }
    auto vertices = [&](std::vector<Vertex>& vs) {
        vs.resize(r.count(kMaxItems));
        for (auto& v : vs) { v.x = r.num(); v.y = r.num(); v.label = r.str(); }
    };
    m.inhomogeneities.resize(r.count(kMaxItems));
    for (auto& in : m.inhomogeneities) {
        in.conductivity = r.num(); in.base = r.num(); in.averageHead = r.num(); in.extraction = r.num(); in.porosity = r.num();
        in.label = r.str(); in.line = (int)r.i();
        vertices(in.vertices);
    }
    m.walls.resize(r.count(kMaxItems));
    for (auto& wl : m.walls) {
        wl.kind = (WallKind)r.count(3);
        wl.conductivity = r.num(); wl.thickness = r.num(); wl.porosity = r.num(); wl.bottom = r.num();
        wl.label = r.str(); wl.line = (int)r.i();
        vertices(wl.vertices);
    }
    m.ponds.resize(r.count(kMaxItems));
    for (auto& p : m.ponds) {
        p.x = r.num(); p.y = r.num(); p.radius = r.num(); p.value = r.num(); p.headSpecified = r.i() != 0;
        p.label = r.str(); p.line = (int)r.i();
    }
    m.partialWells.resize(r.count(kMaxItems));
    for (auto& p : m.partialWells) {
        p.x = r.num(); p.y = r.num(); p.top = r.num(); p.bottom = r.num(); p.radius = r.num(); p.value = r.num();
        p.headSpecified = r.i() != 0; p.label = r.str(); p.line = (int)r.i();
    }
    m.theisWells.resize(r.count(kMaxItems));
    for (auto& t : m.theisWells) {
        t.x = r.num(); t.y = r.num(); t.discharge = r.num(); t.startTime = r.num(); t.startHead = r.num();
        t.storage = r.num(); t.radius = r.num(); t.label = r.str(); t.line = (int)r.i();
    }
    m.lakes.resize(r.count(kMaxItems));
    for (auto& l : m.lakes) {
        l.conductivity = r.num(); l.precipitation = r.num(); l.evaporation = r.num(); l.resistance = r.num();
        l.extraction = r.num(); l.tableName = r.str(); l.label = r.str(); l.line = (int)r.i();
        l.table.resize(r.count(kMaxItems));
        for (auto& t : l.table) { t.stage = r.num(); t.area = r.num(); t.volume = r.num(); }
        vertices(l.vertices);
        l.linksFound = r.i() != 0;
        l.links.resize(r.count(kMaxItems));
        for (auto& k : l.links) {
            k.string = r.str(); k.inlet = r.i() != 0; k.flow = r.num();
            k.rating.resize(r.count(kMaxItems));
            for (auto& [st, q] : k.rating) { st = r.num(); q = r.num(); }
        }
    }
    m.leakage.resize(r.count(kMaxItems));
    for (auto& c : m.leakage) { c.x1 = r.num(); c.y1 = r.num(); c.x2 = r.num(); c.y2 = r.num(); c.rate = r.num(); }
    m.leakageOriginGiven = r.i() != 0; m.leakageX0 = r.num(); m.leakageY0 = r.num();
    return m;
}

}  // namespace

void Solution::save(const std::string& path) const {
    const State& s = *s_;
    std::ostringstream o;
    Writer w(o);
    o << kMagic << ' ' << kVersion << '\n';
    writeModel(w, s.model);
    w.i(s.solved);
    w.i(s.iterationsDone);
    w.i(s.n);
    for (int i = 0; i < s.n; ++i) { w.num(s.x[i]); w.num(s.phiPts[i]); w.num(s.rhs[i]); }
    w.i((long)s.segs.size());
    for (const auto& e : s.segs) { w.i((int)e.state); w.num(e.fixedValue); w.num(e.a); }
    w.i((long)s.galleries.size());
    for (const auto& g : s.galleries) w.i(g.allHeld);
    // Partially penetrating wells: the loss factor and the screen in use.
    long partial = 0;
    for (const auto& e : s.wells) partial += e.partial >= 0;
    w.i(partial);
    for (const auto& e : s.wells) {
        if (e.partial < 0) continue;
        w.num(e.loss); w.num(e.usedTop); w.num(e.usedBottom); w.num(e.saturated); w.i(e.clipped); w.i(e.clipReported);
    }
    o << "END\n";
    std::ofstream f(path, std::ios::binary | std::ios::trunc);
    if (!f) throw FatalError("The solution file " + path + " cannot be written.");
    f << o.str();
    f.flush();
    if (!f) throw FatalError("The solution file " + path + " could not be written completely.");
}

Solution Solution::load(const std::string& path) {
    std::ifstream f(path, std::ios::binary);
    if (!f) throw FatalError("The solution file " + path + " cannot be loaded: it does not exist or cannot be read.");
    Reader r(f, path);
    std::string head;
    if (!std::getline(f, head)) r.fail("it is empty");
    if (!head.empty() && head.back() == '\r') head.pop_back();
    const std::string magic = std::string(kMagic) + ' ';
    if (head.compare(0, magic.size(), magic) != 0) r.fail("it is not a solution file of this program");
    const std::string ver = head.substr(magic.size());
    if (ver != std::to_string(kVersion))
        r.fail("it was written in version " + ver + " of the format; this program reads version " + std::to_string(kVersion));
    Model m = readModel(r);
    Solution sol(std::move(m));
    State& s = *sol.s_;
    const bool solved = r.i() != 0;
    const long iters = r.i();
    const long n = r.i();
    if (n != s.n) r.fail("its number of unknowns does not match its elements");
    for (int i = 0; i < s.n; ++i) { s.x[i] = r.num(); s.phiPts[i] = r.num(); s.rhs[i] = r.num(); }
    const long ns = r.i();
    if (ns != (long)s.segs.size()) r.fail("its number of segments does not match its elements");
    for (auto& e : s.segs) {
        const long st = r.i();
        if (st < 0 || st > 4) r.fail("a segment has an unknown state");
        e.state = (SegState)st;
        e.fixedValue = r.num();
        e.a = r.num();
    }
    const long ng = r.i();
    if (ng != (long)s.galleries.size()) r.fail("its number of galleries does not match its elements");
    for (auto& g : s.galleries) g.allHeld = r.i() != 0;
    long partial = 0;
    for (const auto& e : s.wells) partial += e.partial >= 0;
    if (r.i() != partial) r.fail("its number of partially penetrating wells does not match its elements");
    for (auto& e : s.wells) {
        if (e.partial < 0) continue;
        e.loss = r.num(); e.usedTop = r.num(); e.usedBottom = r.num(); e.saturated = r.num();
        e.clipped = r.i() != 0; e.clipReported = r.i() != 0;
    }
    if (r.line() != "END") r.fail("it does not end where it should");
    s.solved = solved;
    s.iterationsDone = (int)iters;
    s.factorsValid = false;
    s.syncStrengths(false);
    s.route();
    if (s.solved) s.settleTheis();
    return sol;
}

}  // namespace tarno::engine
