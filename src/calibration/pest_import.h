// The import of the optimised parameter values of a PEST run (<base>.par) into the
// project, with its list of imported values (PEST2TARNO.log).
//
//   ParImportResult r = ImportParFile(db, dir / (base + ".par"), ui, dir / "PEST2TARNO.log");
//
// The .par file is a first line (PEST's "single point") and then one line per
// parameter: name, value, scale, offset, separated by blanks. The whole file is
// checked before anything is written: a line of fewer or more than four fields, a
// field that is no number, a name that is no scenario tag of the project, a name
// given twice, or a parameter of the project that the file lacks, is reported with
// the file's name, the line's number and its text, and nothing is imported. A
// correct file is written in one transaction: every row that carries a tag gets the
// value (two inhomogeneities with one tag both).
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

class Database;

inline constexpr const char* kPestImportLog = "PEST2TARNO.log";
inline constexpr const char* kBadParFileTitle = "Bad Parameter File";

struct ParImportResult {
  int imported = 0;                 // values written (one per place and tag)
  std::vector<std::string> log;     // the log's lines after its heading
  std::vector<std::string> errors;  // what made the file unusable; empty when read
  bool logWritten = false;
};

// Imports `parFile` into `db` as described above. Every outcome is told through `ui`
// ("File Not Found", "File Is Empty", "Bad Parameter File", "No Parameters", "PEST
// Parameters Imported"); `logFile` is written only when values were imported.
// Errors of the store are thrown, with the transaction rolled back.
ParImportResult ImportParFile(Database& db, const std::filesystem::path& parFile, UserInterface& ui,
                              const std::filesystem::path& logFile);

}  // namespace tarno
