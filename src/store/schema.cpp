#include "store/schema.h"

#include <sqlite3.h>

#include <cctype>
#include <chrono>
#include <ctime>
#include <stdexcept>

#include "store/database.h"

namespace tarno {

namespace {

// The tables of the project file at version 123, in the order of creation;
// fields in their order. Columns: name, type, size (Text: characters, 0 = no
// size), where the default comes from, the default as written, required,
// auto-increment, variable-length.
// Basemaps
constexpr FieldDef kBasemaps[] = {
    {"MapName", FieldType::Text, 255, DefaultKind::None, "", true, false, false},
    {"Color", FieldType::Long, 0, DefaultKind::ColourIndex, "0", true, false, false},
    {"Show", FieldType::Boolean, 0, DefaultKind::Literal, "True", true, false, false},
    {"ColorField", FieldType::Text, 32, DefaultKind::Literal, "__NONE__", true, false, false},
    {"UseColorField", FieldType::Boolean, 0, DefaultKind::Literal, "True", true, false, false},
};
// MapLabels
constexpr FieldDef kMapLabels[] = {
    {"MapName", FieldType::Text, 255, DefaultKind::Literal, "", true, false, false},
    {"TextField", FieldType::Text, 255, DefaultKind::Literal, "", true, false, false},
};
// Lakes
constexpr FieldDef kLakes[] = {
    {"PID", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Label", FieldType::Text, 32, DefaultKind::None, "", true, false, false},
    {"InterriorConductivity", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"AddedRechargeRate", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Evapotranspiration", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Resistance", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Width", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"StageTableFilename", FieldType::Text, 12, DefaultKind::None, "", true, false, false},
    {"Color", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
};
// LinesinkStrings
constexpr FieldDef kLinesinkStrings[] = {
    {"PID", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Label", FieldType::Text, 32, DefaultKind::None, "", true, false, false},
    {"HeadSpecified", FieldType::Long, 0, DefaultKind::Literal, "1", true, false, false},
    {"StartingHead", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"EndingHead", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Resistance", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Width", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Depth", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Routing", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"EndStream", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"OverlandFlow", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"EndInflow", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"RoutePID", FieldType::Long, 0, DefaultKind::Literal, "0", false, false, false},
    {"RouteVID", FieldType::Long, 0, DefaultKind::Literal, "0", false, false, false},
    {"ScenResistance", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"Drain", FieldType::Long, 0, DefaultKind::Literal, "0", false, false, false},
    {"ScenFluxName", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"Gallery", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"TotalDischarge", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"InletStream", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"OutletStream", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"OutletTable", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"Lake", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Precipitation", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Evapotranspiration", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Farfield", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"chkScenario", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"AutoSWIZC", FieldType::Integer, 0, DefaultKind::Literal, "0", true, false, false},
    {"DefaultResistance", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
};
// Model
constexpr FieldDef kModel[] = {
    {"AQBase", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"AQThickness", FieldType::Text, 0, DefaultKind::Literal, "1", true, false, false},
    {"AQHydCond", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"AQRecharge", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"AQPorosity", FieldType::Double, 0, DefaultKind::Literal, "0.2", true, false, false},
    {"BasemapMeters", FieldType::Boolean, 0, DefaultKind::BasemapMetersAnswer, "", true, false, false},
    {"ComputeMeters", FieldType::Boolean, 0, DefaultKind::ComputeMetersAnswer, "", true, false, false},
    {"CONTOURShow", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"CONTOURMinimum", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"CONTOURMaximum", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"CONTOURInterval", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"TRACECompute", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"TRACEStep", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"TRACEMaxTime", FieldType::Double, 0, DefaultKind::Literal, "3650", true, false, false},
    {"UNIFLOWRefX", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"UNIFLOWRefY", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"UNIFLOWRefHead", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"UNIFLOWGradient", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"UNIFLOWOrientation", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"UNIFLOWCompute", FieldType::Integer, 0, DefaultKind::Literal, "0", true, false, false},
    {"WINDOWX1", FieldType::Double, 0, DefaultKind::Literal, "100", true, false, false},
    {"WINDOWY1", FieldType::Double, 0, DefaultKind::Literal, "100", true, false, false},
    {"WINDOWX2", FieldType::Double, 0, DefaultKind::Literal, "-100", true, false, false},
    {"WINDOWY2", FieldType::Double, 0, DefaultKind::Literal, "-100", true, false, false},
    {"MARGINLeft", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"MARGINRight", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"MARGINTop", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"MARGINBottom", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"MARGINDrawBox", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"EDITGRIDSpacing", FieldType::Double, 0, DefaultKind::Literal, "10", true, false, false},
    {"EDITGRIDShow", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"EDITGRIDSnap", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"SOLVERIterations", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"SOLVERConjunctive", FieldType::Integer, 0, DefaultKind::Literal, "0", true, false, false},
    {"CONTOURLevel", FieldType::Integer, 0, DefaultKind::Literal, "40", true, false, false},
    {"GRID3D", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"GRIDHorzSlice3D", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"GRIDVertSlice3D", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"WINDOWZ1", FieldType::Double, 0, DefaultKind::Literal, "100", true, false, false},
    {"WINDOWZ2", FieldType::Double, 0, DefaultKind::Literal, "100", true, false, false},
    {"SOLVERX0", FieldType::Double, 0, DefaultKind::Literal, "-100", true, false, false},
    {"SOLVERY0", FieldType::Double, 0, DefaultKind::Literal, "-100", true, false, false},
    {"OuterIterations", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"FastSolution", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"OuterIterationsFlag", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"LocalSeaLevel", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"FreshWSpecGravity", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"SaltWSpecGravity", FieldType::Double, 0, DefaultKind::Literal, "1.035", true, false, false},
    {"AddASaltWaterInterface", FieldType::Integer, 0, DefaultKind::Literal, "0", true, false, false},
    {"ViewErrorLog", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"ViewMessageLog", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"StoreMatrixOnDisk", FieldType::Integer, 0, DefaultKind::Literal, "0", true, false, false},
    {"ContourLineWidth", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"ContourLineType", FieldType::Text, 0, DefaultKind::Literal, "DOT", true, false, false},
    {"ContourLineColor", FieldType::Long, 0, DefaultKind::ColourIndex, "1", true, false, false},
    {"PathlineLineWidth", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"PathlineLineType", FieldType::Text, 0, DefaultKind::Literal, "SOLID", true, false, false},
    {"PathlineLineColor", FieldType::Long, 0, DefaultKind::ColourIndex, "4", true, false, false},
    {"NumberStreamLines", FieldType::Integer, 0, DefaultKind::Literal, "10", true, false, false},
    {"chkScenarioHydCond", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"chkScenarioBaseElev", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"ScenHydCond", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"ScenBaseElev", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"DefaultAQBase", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"DefaultAQHydCond", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
};
// NoFlowStrings
constexpr FieldDef kNoFlowStrings[] = {
    {"PID", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"HydCond", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Thickness", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Porosity", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"BottomElevation", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Color", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Closed", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Label", FieldType::Text, 0, DefaultKind::None, "", true, false, false},
    {"ScenHydCond", FieldType::Text, 0, DefaultKind::Literal, "K", true, false, false},
};
// Inhomogeneities
constexpr FieldDef kInhomogeneities[] = {
    {"PID", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"HydCond", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"BottomElevation", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"AverageHead", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Recharge", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Porosity", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Color", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Label", FieldType::Text, 32, DefaultKind::None, "", true, false, false},
    {"ChangeK", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"ChangeR", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"ChangeP", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"ChangeB", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"ChangeA", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"ScenHydCond", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"ScenRecharge", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"chkScenarioHydCond", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"chkScenarioRecharge", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"DefaultHydCond", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"DefaultRecharge", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
};
// Particles
constexpr FieldDef kParticles[] = {
    {"VID", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Elevation", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"SatdThick", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
    {"Forward", FieldType::Integer, 0, DefaultKind::Literal, "1", true, false, false},
};
// Polygons
constexpr FieldDef kPolygons[] = {
    {"PID", FieldType::Long, 0, DefaultKind::None, "", true, true, false},
    {"Closed", FieldType::Integer, 0, DefaultKind::Literal, "0", true, false, false},
};
// Project
constexpr FieldDef kProject[] = {
    {"Description", FieldType::Text, 255, DefaultKind::Literal, "New TARNO Model", false, false, false},
    {"Updated", FieldType::Date, 0, DefaultKind::None, "", true, false, false},
    {"TARNOBaseName", FieldType::Text, 0, DefaultKind::Literal, "basename", true, false, false},
    {"TARNOBasePath", FieldType::Text, 0, DefaultKind::CurrentDirectory, "", true, false, false},
    {"ProjectVersion", FieldType::Long, 0, DefaultKind::Literal, "123", true, false, false},
};
// TestPoints
constexpr FieldDef kTestPoints[] = {
    {"VID", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"ObsHead", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"ObsStreamFlow", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"Label", FieldType::Text, 32, DefaultKind::None, "", false, false, false},
    {"Type", FieldType::Text, 0, DefaultKind::Literal, "Piezometer", false, false, false},
    {"PESTWeight", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"UCODEWeight", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
};
// TextLabels
constexpr FieldDef kTextLabels[] = {
    {"Text", FieldType::Text, 255, DefaultKind::Literal, "", false, false, true},
    {"X", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Y", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"ScalerX", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"FontName", FieldType::Text, 255, DefaultKind::Literal, "Arial", true, false, false},
    {"FontSize", FieldType::Integer, 0, DefaultKind::Literal, "10", true, false, false},
    {"FontBold", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"FontItalic", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"FontUnderline", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"FontStrikeThru", FieldType::Boolean, 0, DefaultKind::Literal, "False", true, false, false},
    {"LabelType", FieldType::Integer, 0, DefaultKind::Literal, "0", true, false, false},
};
// Vertices
constexpr FieldDef kVertices[] = {
    {"VID", FieldType::Long, 0, DefaultKind::None, "", true, true, false},
    {"PID", FieldType::Long, 0, DefaultKind::Literal, "-1", true, false, false},
    {"Seq", FieldType::Long, 0, DefaultKind::Literal, "-1", true, false, false},
    {"X", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Y", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
};
// Wells
constexpr FieldDef kWells[] = {
    {"VID", FieldType::Long, 0, DefaultKind::None, "", true, false, false},
    {"Head", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Radius", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"NParticles", FieldType::Long, 0, DefaultKind::Literal, "-1", true, false, false},
    {"Label", FieldType::Text, 32, DefaultKind::Literal, "", false, false, false},
    {"Setback", FieldType::Double, 0, DefaultKind::Literal, "1", true, false, false},
    {"Transient", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Cyclic", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"Cycles", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"SS", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Time", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"TopElev", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"BottomElev", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"HeadSpecified", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"PPWell", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
    {"StartHead", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"StartElev", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"Pond", FieldType::Long, 0, DefaultKind::Literal, "0", true, false, false},
};
// LSResults
constexpr FieldDef kLSResults[] = {
    {"Label", FieldType::Text, 255, DefaultKind::None, "", true, false, false},
    {"TARNOLabel", FieldType::Text, 255, DefaultKind::None, "", true, false, false},
    {"X1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Y1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"X2", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Y2", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"SpecifiedHead", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Discharge", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"CalculatedHead", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Width", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"Resistance", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Depth", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"BaseFlow", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"OverlandFlow", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"Error", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"TotalDischarge", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"LinkedTo", FieldType::Text, 0, DefaultKind::Literal, "__NONE__", true, false, false},
    {"SearchType", FieldType::Text, 0, DefaultKind::Literal, "Unassigned", true, false, false},
};
// INResults
constexpr FieldDef kINResults[] = {
    {"Label", FieldType::Text, 0, DefaultKind::None, "", true, false, false},
    {"TARNOLabel", FieldType::Text, 0, DefaultKind::None, "", true, false, false},
    {"Conductivity", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"BottomElev", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"ExtractRate", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"Porosity", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"DomainArea", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"AvgPotJump", FieldType::Double, 0, DefaultKind::Literal, "0", true, false, false},
    {"X1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Y1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"XC", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"YC", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"StrPotJumpNode", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"ParabStrPotJump", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"RealStrExtrNode", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"ImagStrExtrNode", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"RealStrExtrCntr", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Tfac", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"DeltaPNode", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"DeltaPCntr", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
};
// NFResults
constexpr FieldDef kNFResults[] = {
    {"Label", FieldType::Text, 0, DefaultKind::None, "", true, false, false},
    {"TARNOLabel", FieldType::Text, 0, DefaultKind::None, "", true, false, false},
    {"Conductivity", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Width", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Porosity", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"WallBottomElev", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"X1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Y1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"XC", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"YC", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"StrPotJumpNode", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"ParabStrPotJump", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"DeltaFlowCntr", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"DeltaFlowNode", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
};
// TPResults
constexpr FieldDef kTPResults[] = {
    {"Label", FieldType::Text, 32, DefaultKind::None, "", false, false, false},
    {"VID", FieldType::Long, 0, DefaultKind::None, "", true, false, false},
    {"ObsHead", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"ModelHead", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Difference", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"X", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"Y", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"ObsStreamFlow", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"ModelFlow", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
    {"Type", FieldType::Text, 0, DefaultKind::Literal, "Piezometer", false, false, false},
};
// FIResults
constexpr FieldDef kFIResults[] = {
    {"Label", FieldType::Text, 32, DefaultKind::None, "", false, false, false},
    {"PID", FieldType::Long, 0, DefaultKind::None, "", true, false, false},
    {"TotalFlux", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
};
// WLResults
constexpr FieldDef kWLResults[] = {
    {"Label", FieldType::Text, 32, DefaultKind::None, "", false, false, false},
    {"TARNOLabel", FieldType::Text, 32, DefaultKind::None, "", false, false, false},
    {"X", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Y", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Radius", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"SpecifiedHead", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Discharge", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Head", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
};
// SavedWindows
constexpr FieldDef kSavedWindows[] = {
    {"Name", FieldType::Text, 64, DefaultKind::None, "", true, false, false},
    {"X1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Y1", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"X2", FieldType::Double, 0, DefaultKind::None, "", true, false, false},
    {"Y2", FieldType::Double, 0, DefaultKind::Literal, "0", false, false, false},
};
// FluxInspect
constexpr FieldDef kFluxInspect[] = {
    {"Label", FieldType::Text, 32, DefaultKind::None, "", true, false, false},
    {"PID", FieldType::Long, 0, DefaultKind::None, "", true, false, false},
};
// Domains
constexpr FieldDef kDomains[] = {
    {"Label", FieldType::Text, 32, DefaultKind::None, "", true, false, false},
    {"PID", FieldType::Long, 0, DefaultKind::None, "", true, false, false},
    {"Color", FieldType::Long, 0, DefaultKind::None, "", true, false, false},
    {"FarFieldBoundary", FieldType::Boolean, 0, DefaultKind::None, "", true, false, false},
    {"NearFieldHU", FieldType::Boolean, 0, DefaultKind::None, "", true, false, false},
};
// Capzones
constexpr FieldDef kCapzones[] = {
    {"Label", FieldType::Text, 32, DefaultKind::None, "", true, false, false},
    {"PID", FieldType::Long, 0, DefaultKind::None, "", true, false, false},
};

const TableDef kTables[] = {
    {"Basemaps", std::nullopt, kBasemaps},
    {"MapLabels", IndexDef{"MapName", "MapName", false, false}, kMapLabels},
    {"Lakes", IndexDef{"PID", "PID", true, true}, kLakes},
    {"LinesinkStrings", IndexDef{"PID", "PID", true, true}, kLinesinkStrings},
    {"Model", std::nullopt, kModel},
    {"NoFlowStrings", IndexDef{"PID", "PID", true, true}, kNoFlowStrings},
    {"Inhomogeneities", IndexDef{"PID", "PID", true, true}, kInhomogeneities},
    {"Particles", IndexDef{"VID", "VID", true, true}, kParticles},
    {"Polygons", IndexDef{"PID", "PID", true, true}, kPolygons},
    {"Project", std::nullopt, kProject},
    {"TestPoints", IndexDef{"VID", "VID", true, true}, kTestPoints},
    {"TextLabels", IndexDef{"X", "X", true, false}, kTextLabels},
    {"Vertices", IndexDef{"VID", "VID", true, true}, kVertices},
    {"Wells", IndexDef{"VID", "VID", true, true}, kWells},
    {"LSResults", std::nullopt, kLSResults},
    {"INResults", std::nullopt, kINResults},
    {"NFResults", std::nullopt, kNFResults},
    {"TPResults", std::nullopt, kTPResults},
    {"FIResults", std::nullopt, kFIResults},
    {"WLResults", std::nullopt, kWLResults},
    {"SavedWindows", std::nullopt, kSavedWindows},
    {"FluxInspect", std::nullopt, kFluxInspect},
    {"Domains", std::nullopt, kDomains},
    {"Capzones", std::nullopt, kCapzones},
};

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) != std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

std::string QuoteText(std::string_view v) {
    std::string r = "'";
    for (char c : v) {
        if (c == '\'') r += "''";
        else r += c;
    }
    return r + "'";
}

std::string QuoteName(std::string_view v) {
    std::string r = "\"";
    for (char c : v) {
        if (c == '"') r += "\"\"";
        else r += c;
    }
    return r + "\"";
}

std::string BooleanLiteral(std::string_view v) {
    if (EqualsNoCase(v, "true")) return "1";
    if (EqualsNoCase(v, "false")) return "0";
    throw std::logic_error("schema: bad Boolean default " + std::string(v));
}

}  // namespace

std::span<const TableDef> ProjectSchema() { return kTables; }

const TableDef* FindTable(std::string_view name) {
    for (const TableDef& t : kTables)
        if (EqualsNoCase(t.name, name)) return &t;
    return nullptr;
}

const FieldDef* FindField(const TableDef& table, std::string_view name) {
    for (const FieldDef& f : table.fields)
        if (EqualsNoCase(f.name, name)) return &f;
    return nullptr;
}

std::int64_t ClassicColour(int index) {
    // The sixteen classic console colours, packed red + 256*green + 65536*blue:
    // black, blue, green, cyan, red, magenta, brown, white (light grey), grey,
    // and the bright forms of blue to white.
    static constexpr std::int64_t kColours[16] = {
        0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080, 0x008080, 0xC0C0C0,
        0x808080, 0xFF0000, 0x00FF00, 0xFFFF00, 0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};
    if (index < 0 || index > 15)
        throw std::out_of_range("colour index " + std::to_string(index) + " is not 0 to 15");
    return kColours[index];
}

std::string SqlType(const FieldDef& field) {
    switch (field.type) {
        case FieldType::Boolean: return "BOOLEAN";
        case FieldType::Integer: return "SMALLINT";
        case FieldType::Long: return "INTEGER";
        case FieldType::Double: return "DOUBLE";
        case FieldType::Date: return "DATETIME";
        case FieldType::Text:
            return field.size > 0 ? "VARCHAR(" + std::to_string(field.size) + ")" : "TEXT";
    }
    return "TEXT";
}

std::optional<std::string> DefaultSql(const FieldDef& field, const CreationContext& ctx) {
    switch (field.defaultKind) {
        case DefaultKind::None: return std::nullopt;
        case DefaultKind::ColourIndex:
            return std::to_string(ClassicColour(std::stoi(std::string(field.defaultValue))));
        case DefaultKind::BasemapMetersAnswer: return ctx.basemapMeters ? "1" : "0";
        case DefaultKind::ComputeMetersAnswer: return ctx.computeMeters ? "1" : "0";
        case DefaultKind::CurrentDirectory: return QuoteText(ctx.currentDirectory);
        case DefaultKind::Literal:
            switch (field.type) {
                case FieldType::Boolean: return BooleanLiteral(field.defaultValue);
                case FieldType::Text:
                case FieldType::Date: return QuoteText(field.defaultValue);
                default: return std::string(field.defaultValue);
            }
    }
    return std::nullopt;
}

std::string ColumnDefinitionSql(const TableDef& table, const FieldDef& field,
                                const CreationContext& ctx) {
    const std::string col = QuoteName(field.name);
    const std::string who = std::string(table.name) + "." + std::string(field.name);
    auto check = [&](const std::string& what, const std::string& expr) {
        return " CONSTRAINT " + QuoteName(who + " " + what) + " CHECK(" + expr + ")";
    };

    std::string s = col + " " + SqlType(field);
    if (field.autoIncrement) {
        s += " PRIMARY KEY AUTOINCREMENT NOT NULL";
        return s;
    }
    if (field.required) s += " NOT NULL";
    if (auto d = DefaultSql(field, ctx)) s += " DEFAULT " + *d;
    switch (field.type) {
        case FieldType::Text:
            s += " COLLATE NOCASE";
            if (field.required) s += check("is required and cannot be empty", "length(" + col + ") > 0");
            if (field.size > 0)
                s += check("is longer than " + std::to_string(field.size) + " characters",
                           "length(" + col + ") <= " + std::to_string(field.size));
            break;
        case FieldType::Boolean:
            s += check("must be True or False", "(" + col + " = 0 OR " + col + " = 1)");
            break;
        case FieldType::Integer:
            s += check("must be a whole number from -32768 to 32767",
                       "(typeof(" + col + ") = 'integer' OR typeof(" + col + ") = 'null') AND " + col +
                           " BETWEEN -32768 AND 32767");
            break;
        case FieldType::Long:
            s += check("must be a whole number from -2147483648 to 2147483647",
                       "(typeof(" + col + ") = 'integer' OR typeof(" + col + ") = 'null') AND " + col +
                           " BETWEEN -2147483648 AND 2147483647");
            break;
        case FieldType::Double:
            s += check("must be a number", "(typeof(" + col + ") = 'real' OR typeof(" + col + ") = 'integer' OR typeof(" + col + ") = 'null')");
            break;
        case FieldType::Date:
            // ISO-8601 text; datetime() gives NULL for anything it cannot read.
            s += check("must be a date and time", col + " IS NULL OR datetime(" + col + ") IS NOT NULL");
            break;
    }
    return s;
}

std::string CreateTableSql(const TableDef& table, const CreationContext& ctx) {
    std::string s = "CREATE TABLE " + QuoteName(table.name) + " (";
    bool first = true;
    for (const FieldDef& f : table.fields) {
        s += first ? "\n  " : ",\n  ";
        first = false;
        s += ColumnDefinitionSql(table, f, ctx);
    }
    return s + "\n)";
}

std::string SqliteIndexName(const TableDef& table) {
    if (!table.index) return {};
    return std::string(table.name) + "_" + std::string(table.index->name);
}

std::string CreateIndexSql(const TableDef& table) {
    if (!table.index) return {};
    const FieldDef* f = FindField(table, table.index->field);
    if (!f) throw std::logic_error("schema: index on unknown field " + std::string(table.index->field));
    if (f->autoIncrement) return {};  // the key is the table's own row id
    return std::string(table.index->unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") +
           QuoteName(SqliteIndexName(table)) + " ON " + QuoteName(table.name) + " (" +
           QuoteName(f->name) + ")";
}

std::string NowAsStoredDate() {
    std::time_t t = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm tm{};
    localtime_r(&t, &tm);
    char buf[32];
    std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tm);
    return buf;
}

void DBNewDatabase(const std::filesystem::path& path, std::string_view description,
                   bool basemapMeters, bool computeMeters) {
    Database db = Database::Create(path);
    CreationContext ctx;
    ctx.basemapMeters = basemapMeters;
    ctx.computeMeters = computeMeters;

    // One transaction: the file is written once, at the end.
    Transaction tx(db);
    for (const TableDef& t : kTables) {
        const bool isProject = EqualsNoCase(t.name, "Project");
        // The default of TARNOBasePath is the current directory at the
        // moment the Project table and its row are made.
        if (isProject) ctx.currentDirectory = std::filesystem::current_path().string();
        db.ExecuteRaw(CreateTableSql(t, ctx));
        if (std::string ix = CreateIndexSql(t); !ix.empty()) db.ExecuteRaw(ix);
        if (EqualsNoCase(t.name, "Model")) {
            // The one row of defaults: a new project's aquifer is the table's.
            db.ExecuteRaw("INSERT INTO Model DEFAULT VALUES");
        } else if (isProject) {
            Statement ins = db.PrepareRaw("INSERT INTO Project (Updated) VALUES (?1)");
            ins.Bind(1, NowAsStoredDate());
            ins.Run();
        }
    }
    Statement upd = db.PrepareRaw("UPDATE Project SET Description = ?1");
    upd.Bind(1, description);
    upd.Run();
    tx.Commit();
    db.Close();
}

int ReadProjectVersion(Database& db) {
    if (!db.TableExists("Project")) {
        throw StoreError("The file has no Project table; it is not a project", db.Path());
    }
    // The oldest files have no ProjectVersion field: they count as 100, as
    // does a Project table without a row or with no value in it.
    if (!db.ColumnExists("Project", "ProjectVersion")) return 100;
    Statement s = db.Prepare("select ProjectVersion from Project;");
    if (!s.Step() || s.IsNull(0)) return 100;
    return static_cast<int>(s.GetInt64(0));
}

}  // namespace tarno
