// The element operations: add an element, change its fields, delete it, open its
// properties. Plain functions on an open project, usable without a window: the
// command line calls them with FIELD=VALUE texts, and the map's editing is to call
// them with the clicked positions (the mouse modes are not built yet), so that
// both refuse the same input with the same messages, shown through the user
// interface port.
//
//     ConsoleUserInterface ui(std::cerr);
//     bool changed = false;
//     auto key = AddElement(db, ElementKind::Well, {{100.0, 200.0}},
//                           {"Label=PW1", "Head=500", "Radius=0.3"}, ui,
//                           [&] { changed = true; });
//
// Every operation checks everything before it writes: on a refusal it has shown
// the message (title and lines) and written nothing.
//
// Elements are addressed by their label, compared without regard to case as the
// project file compares text. A label that several kinds share is written
// "<kind>:<label>" ("well:PW1"). Particles have no label: "particle:<VID>". The
// uniform flow is "uniflow". A text label is addressed by its text.
//
// Each operation that writes is one entry of the edit history of the project file
// (UndoScope; "Add Well", "Edit Line-sink string", "Delete Text label"), when the
// open project has one; inside an operation of the caller's it joins that one.
//
// Changing the model makes a present solution another model's. The operations do
// not hold the solution's state (the window does, or the solver files do for the
// command line): they call `invalidate` once the change is written, and only when
// the change acts on the flow (see ActsOnFlow). The caller removes the solution
// (InvalidateSolution) or asks about it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/ui_port.h"
#include "elements/element.h"
#include "store/database.h"

namespace tarno {

// Called after a change of the model has been written.
using InvalidateFn = std::function<void()>;

// A map position (x, y) in map units.
using MapPoint = std::pair<double, double>;

// Message titles of the refusals that belong to the operations themselves (the
// dialogs' checks have their own).
namespace ops_text {
inline constexpr const char* kUnknownFieldTitle = "Unknown Field";
inline constexpr const char* kInvalidEntryTitle = "Invalid Entry";
inline constexpr const char* kVerticesTitle = "Wrong Number of Vertices";
inline constexpr const char* kNoSuchElementTitle = "No Such Element";
inline constexpr const char* kAmbiguousLabelTitle = "Ambiguous Label";
}  // namespace ops_text

// Whether a change of an element of this kind changes the flow the solver
// computes: wells, line-sinks, barriers, inhomogeneities, lakes, hydrologic unit
// boundaries and the uniform flow do; test points, particles, flux inspection
// lines, protection areas and text labels only ask questions of a solution or
// annotate the map, and leave it standing.
bool ActsOnFlow(ElementKind kind);

// Whether `value` is, whole, a value of the field's type in `table`: a number
// for a number field ("0,3" and "12abc" are not, although the decimal parse of the
// dialogs' text fields would read them as 0 and 12), a number or yes, no, true,
// false for a whole-number or yes/no field; any text for a text field. Spaces
// around the value are allowed.
bool IsWholeValue(std::string_view table, std::string_view field, std::string_view value);

// The new element of `kind` at `points` with the defaults of its kind's add step,
// as each dialog's unit gives them (WellDefaults, LinesinkDefaults, ...), before
// any field is set: a well's screen spans the aquifer at its position, a barrier
// stands on the lowest base of the model, an inhomogeneity shows the model's
// values, a lake names no stage table ("__NONE__": the table needs a name), a
// domain is a hydrologic unit boundary, a text label sits at its point, the
// uniform flow keeps the settings it has and moves its reference point. The
// number of points is not checked here.
Element NewElementAt(Database& db, ElementKind kind, const std::vector<MapPoint>& points);

// Sets the fields of `e` from "FIELD=VALUE" texts, field names without regard to
// case, each value converted by its field's type. Refuses, naming the field and
// the value: a text without "=", a field the kind does not have, the key field
// (VID, PID) or the uniform flow's UNIFLOWCompute, and a value of the wrong type
// ("abc" for a number). The uniform flow also takes Head, Gradient and
// Orientation for its UNIFLOWRefHead, UNIFLOWGradient and UNIFLOWOrientation. On a
// refusal `e` is unchanged. Values are taken whole (IsWholeValue).
bool ApplyFieldTexts(Element& e, const std::vector<std::string>& fieldTexts, UserInterface& ui);

// Adds an element of `kind`: one point for a point element, a text label and the
// uniform flow (its reference point); the vertices in order for a string (at
// least 2) or a polygon (at least 3; a closed barrier too). The element gets its
// kind's defaults (a test point, a flux inspection line, a protection area and a
// boundary also the first free label of their kind, unless one is given), then the
// field texts, then every check of its dialog (the dialog's OK, with the label
// checked as a label typed into it); only then is it written. The uniform flow is one per model:
// adding it again replaces its settings and point. Returns the new element's key (the VID of a
// point, the PID of a string, the row of a text label, 0 for the uniform flow); nothing after a
// refusal.
std::optional<std::int64_t> AddElement(Database& db, ElementKind kind,
                                       const std::vector<MapPoint>& points,
                                       const std::vector<std::string>& fieldTexts,
                                       UserInterface& ui, const InvalidateFn& invalidate = {});

// Finds the element of an address (see above). Shows "No Such Element" or
// "Ambiguous Label" and gives nothing when there is not exactly one.
std::optional<Element> FindElement(Database& db, std::string_view address, UserInterface& ui);

// The address that finds `e` again: its label, "<kind>:<label>" when another kind
// has an element of the same label, "particle:<VID>", "uniflow".
std::string AddressOf(Database& db, const Element& e);

// Sets fields of the element at `address`, with the checks of its dialog. As the
// window's edit does, a routed line-sink string of two vertices has its routing
// switched off, with the "DATABASE INTEGRITY CHECK" message. Returns the element
// as written; nothing after a refusal.
std::optional<Element> EditElement(Database& db, std::string_view address,
                                   const std::vector<std::string>& fieldTexts, UserInterface& ui,
                                   const InvalidateFn& invalidate = {});

// Deletes the element at `address` with its vertices. Returns the element as it
// was; nothing when there is no such element.
std::optional<Element> DeleteElement(Database& db, std::string_view address, UserInterface& ui,
                                     const InvalidateFn& invalidate = {});

// The window's Properties: fills the element's dialog, shows it through `ui`
// (ShowModal) and, on OK (Result 1), writes it back; `invalidate` follows when the
// dialog says the model changed. True when the element was written. A kind
// without a dialog yet shows nothing and gives false.
bool OpenProperties(Database& db, ElementKind kind, std::int64_t key, UserInterface& ui,
                    const InvalidateFn& invalidate = {});

}  // namespace tarno
