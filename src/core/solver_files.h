// The layouts of the text files that pass between the solver, the contour program
// and the front end: the extract file (.XTR), the Surfer grid (.GRD), the contour
// file (.CTR) and the path file (.PTH). The writers (engine/, programs/contour) and
// the readers (src/solver) take their columns, widths, field numbers and the first
// characters of the lines from here, so that the two sides cannot drift apart.
//
// It lives in src/core because that is the one library all three sides already
// link: the engine and the contour program for the case-blind file lookup, the
// front end for everything. It holds constants only (no code, no dependencies).
//
// Field numbers are one-based, as the front end splits a record with ParseString;
// columns are one-based, as the file formats count them.
#pragma once

#include <cstddef>

namespace tarno::solver_files {

// ---- The extract file ----------------------------------------------------------

// The first character of a line decides its kind.
inline constexpr char kSectionHeadMark = '*';  // "* <section head>"
inline constexpr char kCommentMark = '!';      // a line the front end skips
inline constexpr char kPointMark = '@';        // a point, gage or lake stage record
inline constexpr char kRecordMark = ' ';       // a record of the current section
inline constexpr char kFieldSeparator = ',';

// The point record: '@', then 15 fields. Field 1 is 15 characters wide, fields 2
// to 14 are 14 characters wide (numbers right-aligned), field 15 is the label.
namespace point {
inline constexpr int kFields = 15;
inline constexpr int kNumbers = 14;
inline constexpr int kFirstWidth = 15;
inline constexpr int kWidth = 14;
inline constexpr const char* kFirstFormat = "%15.6E";
inline constexpr const char* kFormat = "%14.6E";
inline constexpr int kX = 1;
inline constexpr int kY = 2;
inline constexpr int kZ = 3;
inline constexpr int kPotential = 4;
inline constexpr int kQx = 5;
inline constexpr int kQy = 6;
inline constexpr int kVx = 7;
inline constexpr int kVy = 8;
inline constexpr int kHead = 9;
inline constexpr int kVz = 10;
inline constexpr int kPorosity = 11;
inline constexpr int kConductivity = 12;
inline constexpr int kBase = 13;
inline constexpr int kRecharge = 14;
inline constexpr int kLabel = 15;
// The fewest fields a readable point record has (the label may be missing).
inline constexpr int kLeastFields = 13;
// The first column of field `f` (the '@' is column 1): field 1 starts in column 2,
// and each field is followed by its comma.
constexpr int Column(int f) { return f == 1 ? 2 : 2 + kFirstWidth + 1 + (f - 2) * (kWidth + 1); }
static_assert(Column(kHead) == 123, "the head of a point record occupies columns 123 to 136");
}  // namespace point

// The gage, lake stage and interface records: '@', the word right-aligned in its width, then X,
// Y and the value (each %13.5E), then the label.
namespace word_record {
inline constexpr const char* kGageWord = "gage";
inline constexpr const char* kLakeStageWord = "lake_stage";
inline constexpr const char* kGageWordFormat = "%13s";
inline constexpr const char* kLakeStageWordFormat = "%19s";
// The salt water interface under a point (` interface x y`): the value is the
// interface's elevation, -9999 where there is none; the label is empty.
inline constexpr const char* kInterfaceWord = "interface";
inline constexpr const char* kInterfaceWordFormat = "%13s";
inline constexpr const char* kNumberFormat = "%13.5E";
// The leakage rate of the leakage grid's cell under a point (` cell_leakage x y`): the
// rate per unit area, > 0 leaving the aquifer downwards, 0 outside the grid; the label
// is empty. It stands among the point records as an interface record does.
inline constexpr const char* kCellLeakageWord = "cell_leakage";
inline constexpr const char* kCellLeakageWordFormat = "%13s";
inline constexpr int kGageWordWidth = 13;
inline constexpr int kLakeStageWordWidth = 19;
inline constexpr int kNumberWidth = 13;
inline constexpr int kWord = 1;
inline constexpr int kX = 2;
inline constexpr int kY = 3;
inline constexpr int kValue = 4;
inline constexpr int kLabel = 5;
// The first column of the value: after '@', the word, and X and Y with their commas.
constexpr int ValueColumn(int wordWidth) { return 1 + wordWidth + 1 + 2 * (kNumberWidth + 1) + 1; }
static_assert(ValueColumn(kGageWordWidth) == 44, "the gage's flow occupies columns 44 to 56");
static_assert(ValueColumn(kLakeStageWordWidth) == 50, "the lake stage occupies columns 50 to 62");
}  // namespace word_record

// Numbers of section records.
inline constexpr const char* kSectionNumberFormat = "%.8E";

// The section heads, exactly; the front end picks a section by the first of its
// names (below) that a head line contains.
inline constexpr const char* kHeadDataPoints = "* data points";
inline constexpr const char* kHeadDischargeWells = "* discharge specified wells";
inline constexpr const char* kHeadHeadWells = "* head specified wells";
inline constexpr const char* kHeadDischargePartialWells =
    "* discharge specified partially penetrating wells";
inline constexpr const char* kHeadHeadPartialWells = "* head specified partially penetrating wells";
inline constexpr const char* kHeadTheisWells = "* Theis wells";
inline constexpr const char* kHeadDischargeLineSinks = "* discharge specified line sinks";
inline constexpr const char* kHeadHeadLineSinks = "* head specified line sinks";
inline constexpr const char* kHeadDrains = "* drains";
inline constexpr const char* kHeadGalleries = "* galleries";
inline constexpr const char* kHeadInhomogeneities = "* transmissivity inhomogeneities";
inline constexpr const char* kHeadWalls = "* slurry walls";
inline constexpr const char* kHeadFluxLines = "* flux inspection lines";
inline constexpr const char* kHeadStreamLinkages = "* stream linkages";
// The balances of the lakes (polygon lakes and lakes drawn by their shores), written
// with the inhomogeneities when the model has lakes.
inline constexpr const char* kHeadLakeBalances = "* lake balances";

// The names the front end looks for in a head line, in the order it tests them.
namespace head_name {
inline constexpr const char* kDischargeWells = "discharge specified wells";
inline constexpr const char* kHeadWells = "head specified wells";
inline constexpr const char* kDischargeLineSinks = "discharge specified line sinks";
inline constexpr const char* kDrains = "drain";
inline constexpr const char* kGalleries = "galleries";
inline constexpr const char* kHeadLineSinks = "head specified line sinks";
inline constexpr const char* kInhomogeneities = "trans";
inline constexpr const char* kWalls = "slurry";
inline constexpr const char* kFlux = "flux";
inline constexpr const char* kHeadPartialWells = "head specified partially penetrating wells";
inline constexpr const char* kDischargePartialWells =
    "discharge specified partially penetrating wells";
inline constexpr const char* kTheisWells = "Theis wells";
inline constexpr const char* kStreamLinkages = "stream linkages";
inline constexpr const char* kLakeBalances = "lake balances";
}  // namespace head_name

// Fields of the section records (label last unless said otherwise).
namespace discharge_well {  // also partially penetrating and Theis wells
inline constexpr int kX = 1, kY = 2, kRadius = 3, kDischarge = 4, kHead = 5, kLabel = 6;
inline constexpr int kFields = 6;
}  // namespace discharge_well
namespace head_well {
inline constexpr int kX = 1, kY = 2, kRadius = 3, kDischarge = 4, kSpecifiedHead = 5,
                     kHeadError = 6, kLabel = 7;
inline constexpr int kFields = 7;
}  // namespace head_well
namespace discharge_line_sink {
inline constexpr int kX1 = 1, kY1 = 2, kX2 = 3, kY2 = 4, kDischarge = 5, kLabel = 6;
inline constexpr int kFields = 6;
}  // namespace discharge_line_sink
namespace head_line_sink {
inline constexpr int kX1 = 1, kY1 = 2, kX2 = 3, kY2 = 4, kSpecifiedHead = 5, kCalculatedHead = 6,
                     kDischarge = 7, kWidth = 8, kResistance = 9, kDepth = 10, kBaseFlow = 11,
                     kOverlandFlow = 12, kError = 13, kLabel = 14;
inline constexpr int kFields = 14;
}  // namespace head_line_sink
namespace drain {  // also galleries: a head line-sink without the two flows
inline constexpr int kError = 11, kLabel = 12;
inline constexpr int kFields = 12;
}  // namespace drain
namespace inhomogeneity {                // label first
inline constexpr int kHeaderFields = 7;  // label, K, B, N, P, area, average jump
inline constexpr int kNodeFields = 14;   // label, X1, Y1, XC, YC and nine values
}  // namespace inhomogeneity
namespace wall {                         // label first
inline constexpr int kHeaderFields = 5;  // label, K, T, P, bottom
inline constexpr int kNodeFields = 10;   // label, X1, Y1, XC, YC and five values
}  // namespace wall
namespace flux_line {  // label first
inline constexpr int kLabel = 1, kFlux = 2;
inline constexpr int kFields = 2;
}  // namespace flux_line
// A lake's balance: its label, the labels of its first and last vertex, then the
// numbers. Rates are L^3/T and not negative; the stage is -9999 for a dry lake. The
// error is total in less total out, its percentage of the larger total.
namespace lake_balance {  // label first
inline constexpr int kLabel = 1, kFirstLabel = 2, kLastLabel = 3, kArea = 4, kSurfaceArea = 5,
                     kVolume = 6, kStage = 7, kAquiferHead = 8, kPrecipitation = 9,
                     kGroundwaterIn = 10, kOverlandFlowIn = 11, kStreamFlowIn = 12, kTotalIn = 13,
                     kEvapotranspiration = 14, kGroundwaterOut = 15, kOverlandFlowOut = 16,
                     kStreamFlowOut = 17, kTotalOut = 18, kError = 19, kErrorPercent = 20;
inline constexpr int kFields = 20;
}  // namespace lake_balance
namespace stream_link {
inline constexpr int kLabel = 1, kDownstreamLabel = 2;
}  // namespace stream_link

// ---- The Surfer text grid --------------------------------------------------------

namespace grid {
inline constexpr const char* kTag = "DSAA";
// Dry points and ignored regions; readers take anything at or above kBlankThreshold
// as blank.
inline constexpr double kBlank = 1.70141e38;
inline constexpr const char* kBlankText = "1.70141E+38";
inline constexpr double kBlankThreshold = 1.7e38;
// The line of the lowest and highest value.
inline constexpr int kRangeLine = 5;
}  // namespace grid

// ---- The contour and path files ---------------------------------------------------

// A point line: a counter (or blanks) in columns 1 to 6, then fields of 14 columns.
namespace plot_line {
inline constexpr int kCounterWidth = 6;
inline constexpr int kWidth = 14;
inline constexpr const char* kFormat = "%14.6E";
inline constexpr int kXColumn = 7;
inline constexpr int kYColumn = 21;
inline constexpr int kValue1Column = 35;  // path: time
inline constexpr int kValue2Column = 49;  // path: elevation
inline constexpr int kValue3Column = 63;  // path: head
static_assert(kYColumn == kXColumn + kWidth && kValue1Column == kYColumn + kWidth &&
                  kValue2Column == kValue1Column + kWidth &&
                  kValue3Column == kValue2Column + kWidth,
              "the fields of a point line follow each other without a gap");
}  // namespace plot_line

namespace contour_file {
inline constexpr const char* kLevel = "LEVEL";
inline constexpr int kLevelColumn = 6;  // the level, %14.6E, right after "LEVEL"
}  // namespace contour_file

namespace path_file {
inline constexpr const char* kLabel = "LABEL";
inline constexpr const char* kStart = "START";
inline constexpr const char* kStartPrefix = "STA";  // what the reader tests
inline constexpr const char* kEnd = "END";
// The most points of one path that the reader keeps.
inline constexpr std::size_t kMaxPoints = 50000;
}  // namespace path_file

}  // namespace tarno::solver_files
