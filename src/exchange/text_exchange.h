// The text element files brought into and out of a project: the hydrologic unit's
// line-sink strings and boundaries (.lss), inhomogeneities (.inh), the list of such
// files that makes up a unit (.huc), wells (.wl), test points (.tp) and text labels
// (.tx). Every question and message goes through the user interface port; the
// caller opens the project, and after an import that changed the model removes the
// solution and redraws the map.
//
//     Database db = Database::Open(project);
//     TextImportResult r = ImportWells(db, ui, "field.wl", WellKind::Discharge, options);
//     if (r.read > 0) ...  // the model changed
//
// Exports ask "File Exists" before they replace a file. Imports write each element
// in one transaction, so a stop leaves no half-written element; what was read before
// a stop stays. An import is one entry of the project's edit history.
//
// The menu commands (Tools > Import and Tools > Export) ask for the file first:
// RunTextExchangeCommand("IMPORT(7)", ...).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "store/database.h"

namespace tarno::exchange {

enum class WellKind { Discharge, Head };

struct TextExchangeOptions {
  // ElemCheckVertices: an imported well that comes within this distance of a vertex
  // already in the project is moved right until it stands clear (the user's vertex
  // tolerance of the GUI options).
  double vertexTolerance = 0.01;
  // Where those moves are logged ("X:... Y:... | X:... Y:..."); "" for no log.
  std::string vertexLog;
};

struct TextImportResult {
  int read = 0;          // elements written
  int skipped = 0;       // identical elements left out
  int filesRead = 0;     // .huc: the files read
  bool stopped = false;  // the user stopped, or the file could not be read to its end
};

// The texts of the text element files' boxes.
namespace text_text {
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kOverwrite = "Do you want to overwrite it?";
inline constexpr const char* kAbortTitle = "Abort";
inline constexpr const char* kInhAborted = "Inhomogeneity export aborted";
inline constexpr const char* kHucAborted = "HUC export aborted";
inline constexpr const char* kExportCanceled = "Export canceled by user";
inline constexpr const char* kFileNotFoundTitle = "File Not Found";
inline constexpr const char* kIgnoreFile = "TARNO will ignore this file and continue.";
inline constexpr const char* kReadFailTitle = "Read Fail";
inline constexpr const char* kCannotRead = "cannot be read in. File read aborted.";
inline constexpr const char* kNoFileTitle = "No File";
inline constexpr const char* kNoFile = "File does not exist!";
inline constexpr const char* kHucCompleteTitle = "HUC Import Complete";
inline constexpr const char* kImportFailedTitle = "Import Failed";
inline constexpr const char* kCouldNotImportWells = "Could not import wells.";
inline constexpr const char* kBadFileTitle = "Bad File";
inline constexpr const char* kNoDelimiter = "No valid file delimeter found!";
inline constexpr const char* kNoDelimiter2 = "Either file is not valid or is";
inline constexpr const char* kNoDelimiter3 = "not comma or space delimeted.";
inline constexpr const char* kImportingWells = "Importing Wells... ";
inline constexpr const char* kErrorInImportTitle = "Error in import";
inline constexpr const char* kContinueImport = "Continue import?";
inline constexpr const char* kImportCompleteTitle = "Import Complete";
inline constexpr const char* kIdenticalWellsTitle = "Identical Wells";
inline constexpr const char* kIdenticalWells = " were ignored because identical";
inline constexpr const char* kIdenticalWells2 = "wells existed at those locations.";
inline constexpr const char* kHeadWellsTitle = "Head Specified Wells";
inline constexpr const char* kTestPointImportTitle = "TARNO Test Point Import";
inline constexpr const char* kLabelsCompleteTitle = "Import Comlpete";
inline constexpr const char* kIdenticalLabelsTitle = "Identical Labels";
inline constexpr const char* kIdenticalLabels = " were skipped because identical";
inline constexpr const char* kIdenticalLabels2 = "labels existed in those locations.";
inline constexpr const char* kNoWellsTitle = "No Wells";
inline constexpr const char* kNoTestPointsTitle = "No Test Points";
inline constexpr const char* kNoTestPoints = "No Test Points were found.";
inline constexpr const char* kNoLabelsTitle = "No Labels";
inline constexpr const char* kNoLabels = "No Labels were found.";
inline constexpr const char* kWellsWrittenTitle = "Wells Written";
inline constexpr const char* kTestPointsWrittenTitle = "Test Points Written";
inline constexpr const char* kLabelsWrittenTitle = "Labels Written";
inline constexpr const char* kDuplicateLabelTitle = "Duplicate Label";
// The boxes the old program had no text for.
inline constexpr const char* kNoInhomogeneitiesTitle = "No Inhomogeneities";
inline constexpr const char* kNoInhomogeneities = "No Inhomogeneities were found.";
inline constexpr const char* kInhWrittenTitle = "Inhomogeneities Written";
inline constexpr const char* kNothingInUnitTitle = "Nothing to Export";
inline constexpr const char* kNothingInUnit =
    "No linesink strings or hydrologic unit boundaries were found.";
inline constexpr const char* kHucExportTitle = "HUC Export";
}  // namespace text_text

// The wells' lines of the "Head Specified Wells" warning before a head-kind import.
std::vector<std::string> HeadWellsWarning();
// The lines of the "TARNO Test Point Import" question.
std::vector<std::string> TestPointImportQuestion();

// --- Exports. Each gives the number of elements written, nothing when it wrote no file.

// ToolsExportHuc: the hydrologic unit's .lss: its boundary blocks (the unit, the
// far-field boundary "Far_Field_" + label and the model boundary "Model_" + label;
// every boundary when the project has no unit), then each near-field string with a
// vertex inside the unit (all of them without a unit).
std::optional<int> ExportLss(Database& db, UserInterface& ui, const std::string& file);
// ToolsExportInhomogeneity: every inhomogeneity, "version 2".
std::optional<int> ExportInh(Database& db, UserInterface& ui, const std::string& file);
// The unit as a .huc with the files it names beside it: <base>.lss as ExportLss,
// <base>_farfield.lss with the far-field strings, <base>.inh with the inhomogeneities
// that have a vertex inside the unit (the last two only when there are any).
std::optional<int> ExportHuc(Database& db, UserInterface& ui, const std::string& file);
std::optional<int> ExportWells(Database& db, UserInterface& ui, const std::string& file,
                               WellKind kind);
std::optional<int> ExportTestPoints(Database& db, UserInterface& ui, const std::string& file);
std::optional<int> ExportTextLabels(Database& db, UserInterface& ui, const std::string& file);

// --- Imports. `quiet` leaves out the closing box (the .huc import shows its own).

TextImportResult ImportLss(Database& db, UserInterface& ui, const std::string& file,
                           bool quiet = false);
TextImportResult ImportInh(Database& db, UserInterface& ui, const std::string& file,
                           bool quiet = false);
// ToolsImportHUC: each file the .huc names, read by its import.
TextImportResult ImportHuc(Database& db, UserInterface& ui, const std::string& file);
// The questions asked before a file is chosen: the "Head Specified Wells" warning of
// a head-kind well import and the "TARNO Test Point Import" question. True for Yes.
bool ConfirmHeadWells(UserInterface& ui);
bool ConfirmTestPointImport(UserInterface& ui);

// ToolsImportWL (the head-kind warning is the caller's: ConfirmHeadWells).
TextImportResult ImportWells(Database& db, UserInterface& ui, const std::string& file,
                             WellKind kind, const TextExchangeOptions& options = {});
// ToolsImportTP (the question before it is the caller's: ConfirmTestPointImport).
TextImportResult ImportTestPoints(Database& db, UserInterface& ui, const std::string& file);
// ToolsImportTX.
TextImportResult ImportTextLabels(Database& db, UserInterface& ui, const std::string& file);

// --- The menu entries IMPORT(4) to IMPORT(10) and EXPORT(4) to EXPORT(9).

// Whether `key` is one of them.
bool IsTextExchangeCommand(const std::string& key);
// Runs the entry: asks for the file through the port (starting in `directory`),
// then imports or exports. The result of an import; an export reads nothing.
TextImportResult RunTextExchangeCommand(const std::string& key, Database& db, UserInterface& ui,
                                        const std::string& directory,
                                        const TextExchangeOptions& options = {});

}  // namespace tarno::exchange
