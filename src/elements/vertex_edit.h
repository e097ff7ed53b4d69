// The operations on vertices that every element kind shares: the search for the
// vertex nearest a map point (with its radius and its cycling through near
// vertices), renumbering a string, inserting a vertex (refine), moving one with
// snapping, deleting vertices and strings, removing vertices that lie too close,
// deleting strings that came out too short, and offsetting an imported vertex from
// the ones already there.
//
// No drawing happens here: each operation says what it changed (the elements to
// redraw, whether the solution is touched), and the map editor redraws. Messages
// and questions go through the user interface port.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "elements/element.h"
#include "elements/kind.h"
#include "store/database.h"

namespace tarno {

class UserInterface;

// The search state the main window holds between clicks.
struct VertexSearch {
  // The square of the search radius in map units: 0.0005 times the sum of the
  // squares of the window's width and height (about 2.24 % of its diagonal).
  double radius2 = 0.0;
  double lastX = 0.0, lastY = 0.0;          // the first point of a cycle; (0, 0): none
  std::vector<std::int64_t> visited;        // the VIDs returned in this cycle
  std::vector<std::int64_t> visitedLabels;  // the text labels' keys returned in this cycle
  std::int64_t lastEntryLabel = 0;          // the label's key when a label was returned last
  std::int64_t lastReturned = -1;
  // Narrow the search by the connection's R*Tree of the vertices (a TEMP table,
  // never part of the project file). Off: every search reads the whole table; the
  // results are the same.
  bool useIndex = true;
  // Sets the radius for a window of this size and forgets the cycle.
  void SetWindow(double width, double height);
  // Forgets the cycle (a new window, the selection turned off).
  void Reset();
};

// Text labels take part in the search when the map shows them.
struct LabelSearch {
  bool enabled = false;          // the View menu's text labels switch
  bool showHydrography = false;  // labels of LabelType 1 count only with this switch
};

// What a search found: a vertex, a text label (vid -2, label's key in `label`), or
// nothing (vid -1).
struct FoundVertex {
  std::int64_t vid = -1;
  std::int64_t label = 0;  // the TextLabels row's key when vid is -2
  Vertex vertex;           // the found vertex (for a label, its X and Y)
  bool Found() const { return vid != -1; }
};

// ElemFindVertex. `cycle`: a selection click (steps through near vertices on
// repeated clicks); clear for a drawing mode's snap. A fresh search is one sorted
// query over all vertices, kept in the order of the distance; an R*Tree index of
// the connection may narrow it to the radius first.
FoundVertex FindVertex(Database& db, VertexSearch& search, double x, double y, bool cycle,
                       const LabelSearch& labels = {});
// Builds (or checks) the connection's vertex index; false when this SQLite has no
// R*Tree module, and the search then reads the table.
bool VertexIndexAvailable(Database& db);

// Renumbers the string `pid` in steps of 100 from its first vertex; the result is
// the new Seq of `vid`.
std::int64_t Resequence(Database& db, std::int64_t pid, std::int64_t vid);

// What an edit changed, for the caller's redraw and solution bookkeeping.
struct EditResult {
  bool done = false;                  // false: cancelled or refused (nothing changed)
  std::vector<std::int64_t> strings;  // PIDs whose drawing changed (erase and redraw)
  std::vector<std::int64_t> points;   // VIDs of points moved or deleted (a label's key)
  bool removedElement = false;        // a whole element went (selection is gone)
  bool invalidatesSolution = false;   // the element takes part in the solution
  bool redrawAll = false;             // shared edges or domains: a full redraw is simplest
  bool selectionGone = false;         // the selected vertex or element is no more
};

// ElemRefine on the selected vertex `vid` of an element of `kind`: inserts a vertex
// at the middle of the edge from it to the next (from the previous one on the last
// vertex of an open string; on the closing edge, after the last, for the last vertex
// of a closed one), with the mean of the two Seq, renumbering the string first when
// they are less than 2 apart. For an inhomogeneity or a domain, an edge that another
// element of that kind shares (a vertex coincident with each end) is split there
// too, at the same point, so shared edges stay shared; a vertex that only touches
// another element's vertex leaves that element alone. "Internal error -- vertex not
// found!" ("Internal Error") when the vertex is gone; a flux line shows its note.
EditResult Refine(Database& db, ElementKind kind, std::int64_t vid, UserInterface& ui);

// ElemMoveVertex: the end of a drag of `vid` (of an element of `kind`) to (x, y).
// Line-sink, inhomogeneity and domain vertices snap onto a vertex of their kind
// within the radius; coincident vertices of other inhomogeneities or domains move
// along. A domain vertex that would leave its boundary is refused with the
// "Re-enter Point" box and stays. Text labels and uniform flow move their row.
EditResult MoveVertex(Database& db, VertexSearch& search, ElementKind kind, std::int64_t vid,
                      double x, double y, UserInterface& ui);

// ElemDeleteElements on the selected vertex `vid` of an element of `kind` (for a
// text label, `vid` is the label's key). Asks as the kind asks ("Delete this
// element?", LSConfirm for strings), deletes, and runs the phantom check of the kind.
EditResult DeleteElements(Database& db, ElementKind kind, std::int64_t vid, UserInterface& ui);

// ElemCheckPolyVertices: removes the vertices of `pid` that lie closer than a tenth
// of the mean segment length to the last vertex kept, with the "Vertex Too Close" box.
// The result is the number removed.
int CheckPolyVertices(Database& db, std::int64_t pid, UserInterface& ui);
// ElemCheckPhantomLinesinkVertices / ElemCheckPhantomNoFlowVertices: after the close
// vertices are gone, a string of one vertex is deleted with its warning. True when
// the string was deleted.
bool CheckPhantomLinesinkVertices(Database& db, std::int64_t pid, UserInterface& ui);
bool CheckPhantomNoFlowVertices(Database& db, std::int64_t pid, UserInterface& ui);

// The messages of the operations, as they are shown.
namespace vertex_text {
inline constexpr const char* kInternalErrorTitle = "Internal Error";
inline constexpr const char* kVertexNotFound = "Internal error -- vertex not found!";
inline constexpr const char* kPleaseNoteTitle = "Please Note";
inline constexpr const char* kFluxRefineNote =
    "To view the changes to the flux inspector, you must re-solve the model";
inline constexpr const char* kFluxDeleteNote =
    "To view the change in this flux inspection line, you must re-solve the model";
inline constexpr const char* kReEnterTitle = "Re-enter Point";
inline constexpr const char* kInsideFarField =
    "Selected point is inside of the Far Field Boundary!";
inline constexpr const char* kInsideUnit = "Selected point is inside of Hydrologic Unit Boundary!";
inline constexpr const char* kChooseOutside = "Please choose a point outside of this boundary.";
inline constexpr const char* kOutsideModel = "Selected point is outside of Model Boundary!";
inline constexpr const char* kChooseInside = "Please choose a point inside this boundary.";
inline constexpr const char* kConfirmTitle = "Confirm";
inline constexpr const char* kRemoveUniformFlow = "Remove the current uniform flow field?";
inline constexpr const char* kCanceledTitle = "Operation canceled";
inline constexpr const char* kUniformFlowInUse = "Uniform flow is still in use";
inline constexpr const char* kDeleteElement = "Delete this element?";
inline constexpr const char* kDeleteTestPoint = "Delete this test point?";
inline constexpr const char* kDeleteParticle = "Delete this particle?";
inline constexpr const char* kDeleteLabel = "Delete this label?";
inline constexpr const char* kDeleteString = "Delete this vertex or the entire string?";
inline constexpr const char* kDeleteDomain = "Delete this vertex or the entire Domain?";
inline constexpr const char* kDeleteCapzone = "Delete this vertex or the entire protection area?";
inline constexpr const char* kDeleteFluxLine = "Delete this vertex or the flux inspection line?";
inline constexpr const char* kSelectActivity = "Select";
inline constexpr const char* kSelectFeedback = "Click mouse button to select element";
inline constexpr const char* kTooCloseTitle = "Vertex Too Close";
inline constexpr const char* kTooClose =
    "Found a vertex which is too close to another vertex. Removing...";
inline constexpr const char* kWarningTitle = "Warning";
inline constexpr const char* kPhantomLinesink =
    "The currently selected linesink string has only one point.  The string will be deleted.";
inline constexpr const char* kPhantomNoFlow =
    "The currently selected no-flow boundary has only one point.  The string will be deleted.";
inline constexpr const char* kNotEnoughPointsTitle = "Not Enough Points";
inline constexpr const char* kNotEnoughPoints = "Not enough points to calculate area.";
}  // namespace vertex_text

// Whether (x, y) lies inside the polygon `pid` (closed by its last edge). A point on
// one of its vertices is outside; a polygon of fewer than three vertices has no inside.
bool PointInPolygon(Database& db, std::int64_t pid, double x, double y);
// The area of the polygon `pid`: half the sum over its edges (the closing one too) of
// (x2 - x1) * (y1 + y2), positive for a polygon drawn clockwise. With fewer than three
// vertices, "Not enough points to calculate area." ("Not Enough Points") and none.
std::optional<double> PolygonArea(Database& db, std::int64_t pid, UserInterface& ui);

// ElemCheckVertices: moves X right by `tolerance` until no vertex lies within the
// tolerance box; a changed X is logged to `logFile` when one is given. The result is
// the final X.
double CheckVertices(Database& db, double x, double y, double tolerance,
                     const std::string& logFile = {});

}  // namespace tarno
