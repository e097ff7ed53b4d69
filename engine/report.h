#pragma once
// The output file <name>.OUT: a report of a run for a person to read, written after
// a run that solved (a run that only loads a solution, a regrid or an inspection,
// leaves the report of the solve as it was).
//
// Its parts, each under a heading underlined with '=' and separated by an empty
// line, with CR LF line ends:
//   the header     the program, the title, the base name, the command file, the
//                  date and time of the run;
//   Model          the aquifer in words and the counts of the elements by kind,
//                  the number of equations;
//   Iterations     one line per iteration (outer, inner, largest change, largest
//                  residual, conditions switched) and whether every condition
//                  was met;
//   Water balance  inflow and outflow by element kind, the totals and the
//                  difference;
//   Results        one table per kind of element that the model has, with the
//                  values the extract file reports for it.

#include "engine/extract.h"
#include "engine/model.h"
#include "engine/solution.h"

#include <ostream>
#include <string>

namespace tarno::engine {

// What the header of the report tells besides the model.
struct RunReportHeader {
    std::string title;
    std::string baseName;
    std::string commandFile;
    std::string started;  // the date and time of the run, as the message log has it
    double time = 0.0;    // the time of evaluation
};

// Writes the whole report. `results` gives the element results (the solution, or a
// stand-in in tests).
void writeRunReport(std::ostream& out, const RunReportHeader& header, const Model& model,
                    const SolveReport& solve, const ExtractSource& results);

}  // namespace tarno::engine
