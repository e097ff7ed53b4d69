#pragma once
// The salt water interface of a solution: where it lies and where its toe is.
// The mathematics is in engine/interface.h (the head-potential relation with an
// interface, used by every head and condition of the engine when the aquifer has
// interface data); docs/solver-interface.md describes it.

#include "engine/model.h"
#include "engine/solution.h"

#include <optional>

namespace tarno::engine {

// nu = (g_s - g_f) / g_f of the aquifer's interface data; none when the aquifer has
// no interface or its data cannot describe one (g_f <= 0, g_s <= g_f, a sea level
// that is not a number).
std::optional<double> interfaceContrast(const Aquifer& a);

// The toe: where the interface meets the base. Seaward of it (lower potentials) the
// interface stands above the base; landward the fresh water reaches the base.
struct InterfaceToe {
    double head = 0.0;       // z_s + nu (z_s - B)
    double potential = 0.0;  // the single potential there: k nu (1 + nu) (z_s - B)^2 / 2 when unconfined
};

// The toe of a zone with this base, conductivity and thickness under the aquifer's
// interface data; none without interface data, where the base lies at or above sea
// level (no salt water reaches it), or where the toe would lie above the top.
std::optional<InterfaceToe> interfaceToe(const Aquifer& a, double base, double conductivity, double thickness);

// The elevation of the interface under the point: none without interface data,
// where the point holds no fresh water, or beyond the toe (fresh water to the base).
std::optional<double> interfaceElevationAt(const Solution& s, double x, double y);

}  // namespace tarno::engine
