// The results loader: reads the solver's extract file (<base>.xtr in the project's
// directory) into the result tables TPResults, FIResults, WLResults, LSResults,
// INResults, NFResults and LKResults, matching each record to the blank row that the command
// file writer prepared through the column TARNOLabel, and classifies every line-sink
// result row by its string (SearchType).
//
// Lines are told by their first character: "*" a section head, "!" a comment,
// "@" a point record, a blank a record of the current section, anything else is
// skipped. Records are comma-separated. A record with too few fields shows the
// "Import error" message naming its line number and text, and reading goes on.
//
// The whole load runs in one transaction with prepared statements; the rows to
// update are found through in-memory maps of their labels built by one scan of each
// table, so the time grows linearly with the number of records.
#pragma once

#include <filesystem>
#include <string>

#include "core/coords.h"
#include "core/ui_port.h"

namespace tarno {

class Database;

// The sections of the extract file, numbered as the loader knows them.
enum XtrSection : int {
  kSectionNone = 0,
  kSectionHeadWells = 1,
  kSectionDischargeWells = 2,
  kSectionHeadLinesinks = 3,
  kSectionDischargeLinesinks = 4,
  kSectionInhomogeneities = 5,
  kSectionBarriers = 6,
  kSectionDrains = 7,
  kSectionFlux = 8,
  kSectionDischargePPWells = 9,
  kSectionHeadPPWells = 10,
  kSectionTheisWells = 11,
  kSectionGalleries = 12,
  kSectionStreamLinks = 13,
  kSectionLakeBalances = 14,
};

// The table of the lakes' balances, LKResults: one row per lake of the last
// solution (polygon lakes and lakes drawn by their shores), keyed by TARNOLabel
// ("LK_000012_0000", or a shore string's label). Unlike the other result tables it
// is no part of the stored schema of a project: the loader makes it in the file on
// first use, so that a project of any age takes lake results. Fields: Label (the
// element's), TARNOLabel, FirstTarnoLabel, LastTarnoLabel, Area, SurfaceArea, Volume,
// LakeStage (-9999 dry), AquiferHead, Precipitation, GroundwaterIn, OverlandFlowIn,
// StreamFlowIn, TotalIn, Evapotranspiration, GroundwaterOut, OverlandFlowOut,
// StreamFlowOut, TotalOut, Error, ErrorPercent.
inline constexpr const char* kLakeResultsTable = "LKResults";
inline constexpr const char* kLakeResultsFields[] = {
    "Label",          "TARNOLabel",      "FirstTarnoLabel", "LastTarnoLabel", "Area",
    "SurfaceArea",    "Volume",          "LakeStage",       "AquiferHead",    "Precipitation",
    "GroundwaterIn",  "OverlandFlowIn",  "StreamFlowIn",    "TotalIn",        "Evapotranspiration",
    "GroundwaterOut", "OverlandFlowOut", "StreamFlowOut",   "TotalOut",       "Error",
    "ErrorPercent"};
// Whether the file has LKResults (a project solved without lakes since may lack it).
bool HasLakeResultsTable(Database& db);
void EnsureLakeResultsTable(Database& db);
// Empties LKResults where the file has it (a solution made invalid).
void ClearLakeResults(Database& db);

// The section a head line selects (the text after the "*"), or kSectionNone when it
// names none; the names are tested in a fixed order and the first found wins.
int SectionOfHeadLine(const std::string& headText);

// What a load did, for the caller's status line and for tests.
struct LoadSummary {
  std::filesystem::path file;  // the extract file read
  int linesRead = 0;
  int sectionHeads = 0;  // "*" lines
  int records = 0;       // "@" lines and records of a known section, bad ones included
  int badRecords = 0;
  int unmatched = 0;     // records whose label names no row of this project
  int rowsUpdated = 0;   // result rows that received values
};

// After a solve: tells the user when the extract file cannot be this run's results
// of this project, so that blank result rows are not taken for a solution. Three
// cases, each an "Import error" box: the file is empty; it has no section head at
// all (not an extract file); it has records but none of them names an element of
// this project (the file of another project). True when a message was shown.
bool ReportUnusableResults(const LoadSummary& summary, UserInterface& ui);

// Finds the extract file of `baseName` in `directory`: "<base>.xtr" in any case of
// its letters (the solver writes the extension in capitals). Empty when none.
std::filesystem::path FindExtractFile(const std::filesystem::path& directory,
                                      const std::string& baseName);

// Loads the extract file of the project at `projectPath` (Project.TARNOBasePath,
// Project.TARNOBaseName). Coordinates go back to map units through `frame`. A
// missing file throws tarno::Error (file not found) after the test point rows have
// been prepared.
LoadSummary ModelLoadTARNOResults(const std::filesystem::path& projectPath, const ModelFrame& frame,
                                  UserInterface& ui);

// The same on an open database and an explicit file.
LoadSummary LoadTARNOResultsFile(Database& db, const std::filesystem::path& extractFile,
                                 const ModelFrame& frame, UserInterface& ui);

}  // namespace tarno
