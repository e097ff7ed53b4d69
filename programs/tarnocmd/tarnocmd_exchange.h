// The exchange commands of tarnocmd: elements and results to and from other files.
//
//   tarnocmd export <project> <format> <file> [<what>] [--yes | --no]
//   tarnocmd import <project> <file>... [--field ROLE=ATTRIBUTE]... [--kind K] [--layer L]
//                   [--wells KIND] [--yes | --no]
//
// <format> is one of lss.xml, inh.xml, brr.xml, lss, inh, huc, wl, tp, tx, dxf, bln,
// grd, shp, gpkg. <what> says what a geometry export holds: contours, pathlines,
// capzones or elements (dxf, bln), a shapefile kind (shp) or a well kind (wl:
// discharge or head). An import chooses its reader by the file's extension; a file
// that none of the element readers takes is read as a GIS vector file, with the
// attributes mapped to fields by --field. The questions of the dialogs (an existing
// file, "Continue import?") are answered by --yes or --no, by default as the
// dialog's default button does. Each prints what the dialog's boxes and logs say.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tarnocmd_commands.h"

namespace tarno::cmd {

struct ExportOptions {
  std::string project;
  std::string format;   // as given, in lower case
  std::string file;
  std::string what;     // "" when not given
  Answers answers = Answers::Defaults;
};

struct ImportOptions {
  std::string project;
  std::vector<std::string> files;
  std::vector<std::pair<std::string, std::string>> fields;  // --field ROLE=ATTRIBUTE
  std::string kind;   // --kind K (GIS vector files): linesink, barrier, inhomogeneity, well
  std::string layer;  // --layer L (GIS vector files): the layer; "" the first
  std::string wells;  // --wells discharge|head: the kind of the wells of a .wl file; "" discharge
  Answers answers = Answers::Defaults;
};

// Runs `export ...` or `import ...` (args[0]). Nothing when args[0] is another word.
std::optional<int> RunExchangeCommand(const std::vector<std::string>& args, std::ostream& out,
                                      std::ostream& err);

std::string ExchangeUsageText();

// The writers and readers by family, each in its own file. Each returns the exit
// status: 0 done, 1 refused or failed (the reason on err), 2 bad usage.
int ExportXml(const ExportOptions& o, std::ostream& out, std::ostream& err);       // lss.xml inh.xml brr.xml
int ExportText(const ExportOptions& o, std::ostream& out, std::ostream& err);      // lss inh huc wl tp tx
int ExportGeometry(const ExportOptions& o, std::ostream& out, std::ostream& err);  // dxf bln grd shp
int ExportGpkg(const ExportOptions& o, std::ostream& out, std::ostream& err);      // gpkg
int ImportXml(const ImportOptions& o, const std::vector<std::string>& files, std::ostream& out,
              std::ostream& err);  // *.lss.xml *.inh.xml *.brr.xml
int ImportText(const ImportOptions& o, const std::vector<std::string>& files, std::ostream& out,
               std::ostream& err);  // *.lss *.inh *.huc *.wl *.tp *.tx
int ImportVector(const ImportOptions& o, const std::vector<std::string>& files, std::ostream& out,
                 std::ostream& err);  // anything OGR reads

}  // namespace tarno::cmd
