// The XML element files and the project: the export of one kind to a file and the
// import of one file, each writing what it did into the operation's log. No
// questions asked here (xml_operations.h asks them); usable from tarnocmd and the
// tests as they stand.
//
//     ExchangeLog log;
//     Database db = Database::Open(project);
//     int n = WriteElementFile(db, XmlKind::Linesink, "rivers.lss.xml", log);
//     ImportCount c = ImportElementFile(db, XmlKind::Linesink, "rivers.lss.xml",
//                                       ProgramDirectory(), log);
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "exchange/exchange_log.h"
#include "exchange/xml_document.h"
#include "store/database.h"

namespace tarno::exchange {

// Writes every element of `kind` that lies within a hydrologic unit to `file`
// (replacing it), and logs each element and the count. The result is the number
// exported. Throws tarno::Error naming the file when it cannot be written.
int WriteElementFile(Database& db, XmlKind kind, const std::string& file, ExchangeLog& log);

struct ImportCount {
  int accepted = 0;      // elements added to the project
  int total = 0;         // elements the file held
  bool skipped = false;  // the file failed a check and nothing of it was read
};

// How an import treats a file's units that are not the project's.
enum class UnitPolicy {
  Convert,  // convert the lengths to the project's units, with a warning
  Refuse,   // skip the file, with an error
};

// Imports one file of `kind`: the schema check against the kind's schema in
// `schemaDirectory` (none when `schemaDirectory` is empty), the version and unit
// checks, then element by element with the conflict rules; see the log for what
// happened. Elements added stay added when a later one fails.
ImportCount ImportElementFile(Database& db, XmlKind kind, const std::string& file,
                              const std::filesystem::path& schemaDirectory, ExchangeLog& log,
                              UnitPolicy units = UnitPolicy::Convert);

// As ImportElementFile, with the file's text given.
ImportCount ImportElementText(Database& db, XmlKind kind, std::string_view text,
                              const std::string& file, const std::filesystem::path& schemaDirectory,
                              ExchangeLog& log, UnitPolicy units = UnitPolicy::Convert);

}  // namespace tarno::exchange
