// What every element kind's block of the solver's command file shares: the line
// writer (CR LF), the picture masks, the translation to model coordinates, the
// parameter fields of the calibration templates, the model's complexity that the
// elements raise, and the sink of the blank result rows that a new solve prepares.
//
// Each kind's unit (well.h, linesink.h, barrier.h, inhomogeneity.h, lake.h,
// observation.h) writes its block from the elements that LoadAll read, in their key
// order, and maps each element to its result rows through its solver labels:
//
//     CommandWriterContext ctx{frame, /*isTemplate=*/false, ""};
//     ResultRowSink rows(db);
//     WriteWellCommands(out, LoadAll(db, ElementKind::Well), ctx, &rows);
//     int level = ctx.level;
#pragma once

#include <map>
#include <ostream>
#include <string>
#include <string_view>

#include "core/coords.h"
#include "elements/element.h"
#include "store/database.h"

namespace tarno {

// One line of the command file, with its CR LF.
void PutLine(std::ostream& out, const std::string& line);
// A number through a picture mask ("#.000000E+00 "); the masks are part of the format.
std::string Masked(double value, const char* mask);
// A number without a mask: the general form, a blank (or "-") before, a blank after.
std::string Unmasked(double value);
// The parameter field of a template: "! name !" for elements, padded to 12.
std::string ElementParameterField(const std::string& tag, const std::string& pad);
// The aquifer's parameter fields are "!name!".
std::string AquiferParameterField(const std::string& tag, const std::string& pad);

// Whether a yes/no or number field holds exactly `v`, as the selection of a block
// by the store compared it (a missing value matches nothing).
bool FieldHolds(const Row& row, std::string_view field, std::int64_t v);

struct CommandWriterContext {
  ModelFrame frame;       // world -> model coordinates
  bool isTemplate = false;  // scenario tags become parameter fields
  std::string pad;        // the padding character of those fields
  // The model's complexity (1, 3, 4 or 6), raised by the elements as they are
  // written.
  mutable int level = 1;

  void Raise(int to) const {
    if (to > level) level = to;
  }
  double MX(double x) const { return WToM_X(frame, x); }
  double MY(double y) const { return WToM_Y(frame, y); }
  // A scenario field of an element: the parameter field in a template when the
  // element's switch is on and a tag is set, else the number through its mask.
  std::string ScenarioOr(bool switchOn, const std::string& tag, double value,
                         const char* mask) const;
};

// The blank rows of the result tables that a new solve prepares for the solver's
// results, one row per solver label. Each kind's unit holds the insert of its own
// table; the sink keeps the prepared statements for the length of one writing.
class ResultRowSink {
 public:
  explicit ResultRowSink(Database& db) : db_(db) {}
  // The statement of `sql`, prepared on first use, reset for the next row.
  Statement& Insert(const char* sql);

 private:
  Database& db_;
  std::map<std::string, Statement, std::less<>> statements_;
};

}  // namespace tarno
