#include "engine/report.h"

#include "engine/saltwater.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace tarno::engine {

namespace {

constexpr const char* kEol = "\r\n";

std::string fmt(const char* f, double v) {
    if (v == 0.0) v = 0.0;  // a zero computed as -0 (a dry reach) shows as 0
    char buf[64];
    std::snprintf(buf, sizeof buf, f, v);
    return buf;
}

// A number in words: the shortest form that keeps six significant digits.
std::string num(double v) { return fmt("%.6G", v); }
// A map coordinate: whole metres or feet of a large map grid keep all their digits.
std::string mapNum(double v) { return fmt("%.10G", v); }

// A table cell: numbers right-aligned in 16 characters, so that a column's name
// of up to 14 characters stands apart from the one before.
constexpr size_t kCellWidth = 16;
std::string cell(double v) { return fmt("%16.6E", v); }

std::string padded(const std::string& s, size_t width) {
    return s.size() >= width ? s + " " : s + std::string(width - s.size(), ' ');
}

std::string plural(size_t n, const std::string& one, const std::string& many) {
    return std::to_string(n) + " " + (n == 1 ? one : many);
}

using Rows = std::vector<std::pair<std::string, std::vector<double>>>;

class Writer {
public:
    explicit Writer(std::ostream& out) : out_(out) {}
    void line(const std::string& text = "") { out_ << text << kEol; }
    void heading(const std::string& text) {
        line();
        line(text);
        line(std::string(text.size(), '='));
    }
    // A table: a header row of names, then rows of a label and numbers.
    void table(const std::vector<std::string>& names, const Rows& rows) {
        size_t labelWidth = names.empty() ? 0 : names[0].size();
        for (const auto& r : rows) labelWidth = std::max(labelWidth, r.first.size());
        labelWidth += 1;
        std::string head = padded(names.empty() ? "" : names[0], labelWidth);
        for (size_t i = 1; i < names.size(); ++i) head += rightAligned(names[i]);
        line(head);
        for (const auto& [label, values] : rows) {
            std::string text = padded(label, labelWidth);
            for (double v : values) text += cell(v);
            line(text);
        }
    }

private:
    static std::string rightAligned(const std::string& s) {
        return s.size() + 2 > kCellWidth ? "  " + s : std::string(kCellWidth - s.size(), ' ') + s;
    }
    std::ostream& out_;
};

const char* kindWords(LineSinkKind k) { return wordsOf(k).report; }

void writeModel(Writer& w, const Model& m, const SolveReport& r) {
    const Aquifer& a = m.aquifer;
    w.heading("Model");
    w.line("Aquifer: base " + num(a.base) + ", thickness " + num(a.thickness) + " (top " + num(a.base + a.thickness) +
           "), hydraulic conductivity " + num(a.conductivity) + ", porosity " + num(a.porosity) + ".");
    if (a.qx0 != 0.0 || a.qy0 != 0.0)
        w.line("Uniform flow: discharge " + num(a.qx0) + " in x and " + num(a.qy0) + " in y (per unit width).");
    else
        w.line("No uniform flow.");
    if (a.hasReference)
        w.line("Reference point: head " + num(a.referenceHead) + " at (" + num(a.referenceX) + ", " +
               num(a.referenceY) + ").");
    else
        w.line("No reference point.");
    // Unit code 2: map and model units agree; 0 and 1: model units differ.
    if (m.originX == 0.0 && m.originY == 0.0 && m.unitCode == 2)
        w.line("Coordinates: map coordinates.");
    else
        w.line("Coordinates: model coordinates, measured from the model origin at (" + mapNum(m.originX) + ", " +
               mapNum(m.originY) + ") on the map" + (m.unitCode == 2 ? "" : ", in model units") + ".");
    if (a.hasInterface) {
        w.line("Salt water interface: fresh water gravity " + num(a.freshGravity) + ", salt water gravity " +
               num(a.saltGravity) + ", sea level " + num(a.seaLevel) + ".");
        if (!interfaceContrast(a))
            w.line("The interface data describe no interface (the salt water must be heavier than the fresh "
                   "water): the aquifer was solved without one.");
        else if (auto toe = interfaceToe(a, a.base, a.conductivity, a.thickness))
            w.line("Toe of the interface (where it meets the base): head " + num(toe->head) + ", potential " +
                   num(toe->potential) + "; the interface stands above the base where the head is lower.");
        else
            w.line("The base lies at or above sea level: no salt water reaches the aquifer.");
    }

    size_t qWells = 0, hWells = 0;
    for (const Well& x : m.wells) (x.headSpecified ? hWells : qWells) += 1;
    std::vector<std::pair<LineSinkKind, std::pair<size_t, size_t>>> strings;  // kind: strings, segments
    for (const LineSinkString& s : m.lineSinks) {
        auto it = std::find_if(strings.begin(), strings.end(), [&](const auto& e) { return e.first == s.kind; });
        if (it == strings.end()) {
            strings.push_back({s.kind, {0, 0}});
            it = strings.end() - 1;
        }
        it->second.first += 1;
        it->second.second += s.segments.size();
    }
    w.line("Elements:");
    w.line("  wells: " + std::to_string(m.wells.size()) + " (" + std::to_string(qWells) + " discharge specified, " +
           std::to_string(hWells) + " head specified)");
    if (!m.partialWells.empty()) w.line("  partially penetrating wells: " + std::to_string(m.partialWells.size()));
    if (!m.theisWells.empty()) w.line("  transient (Theis) wells: " + std::to_string(r.theisWells) + " with " +
                                      plural(static_cast<size_t>(r.theisLines), "schedule line", "schedule lines"));
    size_t segments = 0;
    for (const auto& e : strings) segments += e.second.second;
    w.line("  line-sink strings: " + std::to_string(m.lineSinks.size()) + " with " +
           plural(segments, "segment", "segments"));
    for (const auto& [kind, counts] : strings)
        w.line("    " + std::string(kindWords(kind)) + ": " + plural(counts.first, "string", "strings") + ", " +
               plural(counts.second, "segment", "segments"));
    if (!m.inhomogeneities.empty())
        w.line("  inhomogeneities: " + std::to_string(r.inhomogeneities) + " (" + std::to_string(m.inhomogeneities.size()) +
               " given)");
    if (!m.walls.empty()) w.line("  walls: " + std::to_string(r.walls));
    if (!m.ponds.empty()) w.line("  ponds: " + std::to_string(r.ponds));
    w.line("Equations (unknowns): " + std::to_string(r.unknowns));
}

void writeIterations(Writer& w, const SolveReport& r) {
    w.heading("Iterations");
    if (r.iterations.empty()) {
        w.line("No iterations: the system was solved once.");
    } else {
        w.line("outer  inner  largest change  largest residual  switches");
        for (const IterationReport& it : r.iterations) {
            char buf[160];
            std::snprintf(buf, sizeof buf, "%5d  %5d  %14.6E  %16.6E  %8d", it.outer, it.inner, it.largestChange,
                          it.largestResidual, it.switches);
            w.line(buf);
        }
    }
    w.line(r.converged ? "Converged: every condition was met."
                       : "Not converged: the iterations ended before every condition was met; a further solve "
                         "continues them.");
}

void writeBalance(Writer& w, const WaterBalance& b) {
    w.heading("Water balance");
    w.line("Inflow into the aquifer and outflow from it, by element kind:");
    std::vector<std::pair<std::string, std::vector<double>>> rows;
    for (const BalanceTerm& t : b.terms) rows.push_back({t.kind, {t.in, t.out}});
    rows.push_back({"total", {b.totalIn, b.totalOut}});
    w.table({"kind", "inflow", "outflow"}, rows);
    w.line("Difference (inflow minus outflow): " + fmt("%.6E", b.difference) + ", relative " +
           fmt("%.3E", b.closureError) + ".");
}

void writeResults(Writer& w, const ExtractSource& results) {
    w.heading("Results");
    bool any = false;
    // One table of results: a title, the table, a blank line; nothing for no rows.
    auto section = [&](const std::string& title, const std::vector<std::string>& names, const Rows& rows) {
        if (rows.empty()) return;
        w.line(title);
        w.table(names, rows);
        w.line();
        any = true;
    };
    const std::vector<WellResult> wells = results.wells();
    Rows q, h;
    for (const WellResult& x : wells) {
        if (x.headSpecified) h.push_back({x.label, {x.x, x.y, x.radius, x.discharge, x.specifiedHead, x.headError}});
        else q.push_back({x.label, {x.x, x.y, x.radius, x.discharge, x.head}});
    }
    section("Discharge specified wells (discharge > 0 pumps):", {"label", "x", "y", "radius", "discharge", "head"}, q);
    section("Head specified wells (head error: computed minus specified):", {"label", "x", "y", "radius", "discharge", "specified head", "head error"}, h);
    const std::vector<PartialWellResult> partial = results.partialWells();
    Rows partialRows;
    for (const PartialWellResult& x : partial)
        partialRows.push_back({x.label, {x.x, x.y, x.screenTop, x.screenBottom, x.discharge, x.head}});
    section("Partially penetrating wells:", {"label", "x", "y", "screen top", "screen bottom", "discharge", "head"}, partialRows);
    const std::vector<TheisWellResult> theis = results.theisWells();
    Rows theisRows;
    for (const TheisWellResult& x : theis) theisRows.push_back({x.label, {x.x, x.y, x.radius, x.discharge, x.head}});
    section("Transient (Theis) wells at the time of evaluation:", {"label", "x", "y", "radius", "discharge", "head"}, theisRows);
    const std::vector<SegmentResult> segments = results.segments();
    for (LineSinkKind kind : {LineSinkKind::Discharge, LineSinkKind::Head, LineSinkKind::Drain, LineSinkKind::Gallery,
                              LineSinkKind::Stream}) {
        Rows rows;
        for (const SegmentResult& s : segments) {
            if (s.kind != kind) continue;
            if (kind == LineSinkKind::Discharge) rows.push_back({s.label, {s.x1, s.y1, s.x2, s.y2, s.discharge}});
            else rows.push_back({s.label, {s.x1, s.y1, s.x2, s.y2, s.specifiedHead, s.calculatedHead, s.discharge,
                                           s.error}});
        }
        const std::string title =
            "Line-sinks, " + std::string(kindWords(kind)) + " (discharge > 0 takes water out of the aquifer):";
        if (kind == LineSinkKind::Discharge)
            section(title, {"label", "x1", "y1", "x2", "y2", "discharge"}, rows);
        else
            section(title, {"label", "x1", "y1", "x2", "y2", "specified head", "computed head", "discharge", "error"},
                    rows);
    }
    const std::vector<InhomogeneityResult> inhoms = results.inhomogeneities();
    Rows inhomRows;
    for (const InhomogeneityResult& x : inhoms)
        inhomRows.push_back({x.label, {x.conductivity, x.base, x.extraction, x.porosity, x.area, x.averageJump}});
    section("Inhomogeneities (extraction > 0 takes water out; recharge is its negative):", {"label", "conductivity", "base", "extraction", "porosity", "area", "average jump"}, inhomRows);
    const std::vector<WallResult> walls = results.walls();
    Rows wallRows;
    for (const WallResult& x : walls) {
        double largest = 0.0;
        for (const WallNode& n : x.nodes)
            largest = std::max({largest, std::fabs(n.flowErrorCentre), std::fabs(n.flowErrorNode)});
        wallRows.push_back({x.label, {x.conductivity, x.thickness, x.porosity, x.bottom, largest}});
    }
    section("Walls:", {"label", "conductivity", "thickness", "porosity", "bottom", "flow error"}, wallRows);
    if (!any) w.line("The model has no elements with results of their own.");
}

}  // namespace

void writeRunReport(std::ostream& out, const RunReportHeader& header, const Model& model, const SolveReport& solve,
                    const ExtractSource& results) {
    Writer w(out);
    w.line("tarno1: analytic element solver, report of a run");
    w.line(std::string(48, '='));
    w.line("Title:         " + (header.title.empty() ? std::string("(none)") : header.title));
    w.line("Base name:     " + header.baseName);
    w.line("Command file:  " + header.commandFile);
    w.line("Run:           " + header.started);
    w.line("Time of evaluation: " + num(header.time) + " days");
    writeModel(w, model, solve);
    writeIterations(w, solve);
    writeBalance(w, solve.balance);
    writeResults(w, results);
}

}  // namespace tarno::engine
