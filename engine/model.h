#pragma once
// The model of the solver as plain data. The command-language reader fills these
// types directly (engine/command.h); the run checks each element once and adds it to
// the Model; the engine (engine/solution.h) solves it. Units are those of the model:
// lengths in the model's unit, time in days. Signs: a well's discharge > 0 and a
// line-sink's strength > 0 take water out of the aquifer.

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarno::engine {

// The aquifer: one layer, uniform properties.
struct Aquifer {
    double base = 0.0;          // elevation of the aquifer's base
    double conductivity = 1.0;  // hydraulic conductivity k
    double thickness = 1.0;     // thickness H (confined where the head lies above base + H)
    double porosity = 0.3;

    // Uniform discharge vector (L^2/T), far from all elements.
    double qx0 = 0.0;
    double qy0 = 0.0;

    // The point of given head that fixes the constant of the potential.
    bool hasReference = false;
    double referenceX = 0.0;
    double referenceY = 0.0;
    double referenceHead = 0.0;

    // Salt water interface data: stored and saved, not yet used by the mathematics.
    bool hasInterface = false;
    double freshGravity = 1.0;
    double saltGravity = 1.025;
    double seaLevel = 0.0;
};

// A fully penetrating well. `value` is the discharge when headSpecified is false and
// the head at the screen radius when it is true.
struct Well {
    double x = 0.0;
    double y = 0.0;
    double radius = 0.1;
    double value = 0.0;
    bool headSpecified = false;
    std::string label;
    int line = 0;                     // line of the command file (0: unknown), for reports
};

enum class LineSinkKind {
    Discharge,  // segments of given strength sigma (L^2/T)
    Head,       // head-specified, optionally with resistance, width and depth
    Drain,      // as Head, but never recharges the aquifer (sigma >= 0)
    Gallery,    // one common head, a given total discharge
    Stream,     // routed: inflows accumulate downstream
};

// One segment of a line-sink string. `value` is the specified head at the segment's
// centre, or the strength sigma for a discharge string.
struct Segment {
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
    double value = 0.0;
    std::string label;
    int line = 0;                     // line of the command file (0: unknown), for reports
};

struct LineSinkString {
    LineSinkKind kind = LineSinkKind::Head;
    bool farField = false;     // no resistance whatever the other fields say
    double resistance = 0.0;   // c (T); 0: the head condition holds at the centre
    double width = 0.0;        // w (L)
    int locationCode = 0;      // 0 unknown, 1 stream centre line, 2 water's edge (kept, reported)
    double depth = 0.0;        // d (L); <= 0: no percolation limit
    double pumping = 0.0;      // Gallery: the total discharge (L^3/T)
    double endInflow = 0.0;    // Stream: inflow at the upstream end (L^3/T)
    bool end = false;          // Stream: the network ends at this string's last vertex
    double overlandFlow = 0.0; // Stream: overland inflow per unit length along the string (L^2/T)
    std::string label;         // optional name of the string (segments carry their own labels)
    // Links to lakes (engine/lake.h, which clears these in the engine's copy of a linked string): an inlet's last vertex lies in a lake, which
    // takes its stream flow; an outlet's first vertex lies in a lake, whose outflow by
    // the rating table `outletTable` (rows read by the runner into `outletRating`) is the
    // string's end inflow. A string whose link reaches no lake is routed as a plain stream.
    bool inlet = false;
    std::string outletTable;
    std::vector<std::pair<double, double>> outletRating;  // (stage, discharge), stages rising
    // A lake edge (` Lake <name>` with ` Levels <bottom> <estimate>`): the string is the
    // shore of a lake whose stage follows from its water balance (engine/lake_edge.h).
    // As given it is a routed string whose end inflow is the lake's evaporation less its
    // precipitation (L/T); the engine solves it as a head-specified string at the stage.
    struct LakeEdge {
        bool on = false;
        double bottom = -1e30;        // the lake bottom: below it the lake is dry
        double estimate = 0.0;        // the second estimate of the stage (the first: the segments' heads)
        double netEvaporation = 0.0;  // E - P on the lake's surface (L/T)
        // Set by the solve, kept with the solution: the stage the segments hold (the
        // bottom when dry) and the routed strings that flow into and out of the lake.
        double stage = 0.0;
        bool dry = false;
        bool solved = false;
        std::vector<std::string> inlets, outlets;
    } lake;
    std::vector<Segment> segments;
    int line = 0;              // line of the word that opened the string (0: unknown)
    // As the command file gave them, before the run makes the string a lake edge or a
    // stream linked to a lake (engine/run_model.cpp): " pumping" given at all, the
    // name after " Lake", the two numbers of " Levels" and the first line of the links.
    bool pumpingGiven = false;
    std::optional<std::string> lakeName;
    std::optional<std::array<double, 2>> levels;  // bottom, second estimate of the stage
    int linkLine = 0;
};

// "As the aquifer" in the properties of an area element.
inline constexpr double kAsAquifer = -9999.0;

struct Vertex {
    double x = 0.0;
    double y = 0.0;
    std::string label;
    int line = 0;                     // line of the command file (0: unknown)
};

// A polygon whose interior has its own properties (kAsAquifer: as the aquifer).
// The vertices close implicitly (the last joins the first).
struct Inhomogeneity {
    double conductivity = kAsAquifer;
    double base = kAsAquifer;
    double averageHead = kAsAquifer;  // estimate of the average head inside
    double extraction = 0.0;          // N (L/T): > 0 takes water out; recharge is -N
    double porosity = kAsAquifer;
    std::string label;
    std::vector<Vertex> vertices;
    int line = 0;                     // line of the command file (0: unknown), for reports
};

enum class WallKind {
    Open,     // a polyline
    Closed,   // a closed polygon
    Outside,  // closed; the region outside it is not part of the model
    Inside,   // closed; the region inside it is not part of the model
};

// A barrier of conductivity K (0: impermeable), thickness T and porosity P whose
// bottom lies at `bottom`.
struct Wall {
    WallKind kind = WallKind::Open;
    double conductivity = 0.0;
    double thickness = 1.0;
    double porosity = 0.3;
    double bottom = 0.0;
    std::string label;
    std::vector<Vertex> vertices;
    int line = 0;                     // line of the command file (0: unknown), for reports
};

// A pond: a circular area sink. `value` is the rate per area (> 0 puts water into
// the aquifer) or, when headSpecified, the head at its centre.
struct Pond {
    double x = 0.0;
    double y = 0.0;
    double radius = 0.0;
    double value = 0.0;
    bool headSpecified = false;
    std::string label;
    int line = 0;                     // line of the command file (0: unknown), for reports
};

// A partially penetrating well: screened from `bottom` to `top` (elevations). In the
// Dupuit-Forchheimer field it is a well; the partial penetration adds a head loss at the
// well (engine/wells.cpp, docs/solver-wells.md). `value` as for Well.
struct PartialWell {
    double x = 0.0;
    double y = 0.0;
    double top = 0.0;
    double bottom = 0.0;
    double radius = 0.1;
    double value = 0.0;
    bool headSpecified = false;
    std::string label;
    int line = 0;                     // line of the command file (0: unknown), for reports
};

// One line of the pumping schedule of a transient (Theis) well: from `startTime` on the
// discharge changes by `discharge` (lines of one label add up). `startHead` is the head at
// the well when pumping starts (it fixes the transmissivity of the Theis function),
// `storage` the storage coefficient, `radius` where the well's head is reported.
struct TheisWell {
    double x = 0.0;
    double y = 0.0;
    double discharge = 0.0;
    double startTime = 0.0;
    double startHead = 0.0;
    double storage = 0.0;
    double radius = 0.1;
    std::string label;
    int line = 0;                     // line of the command file (0: unknown), for reports
};

// One line of a lake's stage table: the water surface's area and the volume held at a stage.
struct StageRow {
    double stage = 0.0;
    double area = 0.0;
    double volume = 0.0;
};

// A lake: a closed polygon of high interior conductivity whose stage follows from its
// water balance (engine/lake.h). Precipitation and evaporation act on the water surface
// (the polygon's area, or the stage table's area at the stage); the exchange with the
// aquifer passes the lake bottom, of resistance `resistance`, over the whole polygon.
struct Lake {
    double conductivity = kAsAquifer;  // interior conductivity
    double precipitation = 0.0;        // added recharge rate on the water surface (L/T)
    double evaporation = 0.0;          // evaporation rate from the water surface (L/T)
    double resistance = 0.0;           // c (T) of the lake bottom
    std::string tableName;             // stage table file as given ("" or "0": none)
    std::vector<StageRow> table;       // rows read from it, stages rising (empty: none)
    std::string label;
    std::vector<Vertex> vertices;
    int line = 0;
    // The exchange through the bottom per area of polygon (> 0 into the lake) that the
    // solution was built with; the stage follows from it and the solved head.
    double extraction = 0.0;
    // Routed strings linked to the lake, found by solveWithLakes, with the flows of the
    // solution: an inlet's stream flow into the lake, an outlet's outflow.
    struct Link {
        std::string string;    // the string's label
        bool inlet = true;
        std::vector<std::pair<double, double>> rating;  // outlet: (stage, discharge)
        double flow = 0.0;     // inlet: its stream flow at its end; outlet: the outflow
    };
    std::vector<Link> links;
    bool linksFound = false;
};

// The map window: Left, Bottom, Right, Top.
struct Window {
    bool given = false;
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
};

// A cell of the leakage grid to the model below: a rectangle with a uniform leakage
// rate per area (> 0 leaves the aquifer downwards), an area sink of given strength.
struct LeakageCell {
    double x1 = 0.0;
    double y1 = 0.0;
    double x2 = 0.0;
    double y2 = 0.0;
    double rate = 0.0;
};

struct Model {
    std::string title;
    std::string baseName;      // the name used for reports
    double originX = 0.0;      // model origin in map units (logged and told in the report)
    double originY = 0.0;
    int unitCode = 2;
    Aquifer aquifer;
    std::vector<Well> wells;
    std::vector<LineSinkString> lineSinks;
    std::vector<Inhomogeneity> inhomogeneities;
    std::vector<Wall> walls;
    std::vector<Pond> ponds;
    std::vector<PartialWell> partialWells;
    std::vector<TheisWell> theisWells;  // schedule lines, in the order given
    std::vector<Lake> lakes;            // solved as inhomogeneities named by their labels (engine/lake.h)
    std::vector<LeakageCell> leakage;   // cells of the leakage grid (engine/leakage.h), zero rates left out
    bool leakageOriginGiven = false;    // the leakage grid's lower-left corner, from its ` origin`
    double leakageX0 = 0.0;
    double leakageY0 = 0.0;
    Window window;
    double time = 0.0;         // time of evaluation for transient elements (days)
};

}  // namespace tarno::engine
