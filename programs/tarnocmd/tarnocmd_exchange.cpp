#include "tarnocmd_exchange.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace tarno::cmd {

namespace {

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(), [](unsigned char c) { return std::tolower(c); });
  return s;
}

bool EndsWith(const std::string& s, const std::string& tail) {
  return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
}

enum class Family { Xml, Text, Vector };

Family FamilyOfFile(const std::string& file) {
  const std::string f = Lower(file);
  for (const char* ext : {".lss.xml", ".inh.xml", ".brr.xml", ".xml"})
    if (EndsWith(f, ext)) return Family::Xml;
  for (const char* ext : {".lss", ".inh", ".huc", ".wl", ".tp", ".tx"})
    if (EndsWith(f, ext)) return Family::Text;
  return Family::Vector;
}

bool ParseAnswer(const std::string& a, Answers& answers) {
  if (a == "--yes") answers = Answers::Yes;
  else if (a == "--no") answers = Answers::No;
  else return false;
  return true;
}

int Usage(std::ostream& err, const std::string& why) {
  err << "tarnocmd: " << why << "\n" << ExchangeUsageText();
  return 2;
}

int Export(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  ExportOptions o;
  std::vector<std::string> positional;
  for (size_t i = 1; i < args.size(); ++i) {
    if (ParseAnswer(args[i], o.answers)) continue;
    if (args[i].size() > 2 && args[i].compare(0, 2, "--") == 0)
      return Usage(err, "unknown option \"" + args[i] + "\"");
    positional.push_back(args[i]);
  }
  if (positional.size() < 3 || positional.size() > 4)
    return Usage(err, "export takes a project, a format, a file and, for some formats, what to export");
  o.project = positional[0];
  o.format = Lower(positional[1]);
  o.file = positional[2];
  if (positional.size() == 4) o.what = Lower(positional[3]);
  // A file dialog shows only folders that exist; here a mistyped folder would end in
  // the "Unhandled Error" box of a failed write, so it is named before anything runs.
  const std::filesystem::path folder = std::filesystem::path(o.file).parent_path();
  std::error_code ec;
  if (!folder.empty() && !std::filesystem::is_directory(folder, ec)) {
    err << "tarnocmd: the folder " << folder.string() << " of " << o.file << " does not exist\n";
    return 1;
  }
  const std::string& f = o.format;
  if (f == "lss.xml" || f == "inh.xml" || f == "brr.xml") return ExportXml(o, out, err);
  if (f == "lss" || f == "inh" || f == "huc" || f == "wl" || f == "tp" || f == "tx") return ExportText(o, out, err);
  if (f == "dxf" || f == "bln" || f == "grd" || f == "shp") return ExportGeometry(o, out, err);
  if (f == "gpkg") return ExportGpkg(o, out, err);
  return Usage(err, "unknown export format \"" + positional[1] + "\"");
}

int Import(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  ImportOptions o;
  std::vector<std::string> positional;
  for (size_t i = 1; i < args.size(); ++i) {
    if (ParseAnswer(args[i], o.answers)) continue;
    if (args[i] == "--field") {
      if (i + 1 >= args.size()) return Usage(err, "--field needs ROLE=ATTRIBUTE");
      const std::string& v = args[++i];
      const auto eq = v.find('=');
      if (eq == std::string::npos || eq == 0 || eq + 1 == v.size())
        return Usage(err, "--field needs ROLE=ATTRIBUTE, not \"" + v + "\"");
      o.fields.emplace_back(Lower(v.substr(0, eq)), v.substr(eq + 1));
      continue;
    }
    if (args[i] == "--kind" || args[i] == "--layer") {
      if (i + 1 >= args.size()) return Usage(err, args[i] + " needs a value");
      std::string& value = args[i] == "--kind" ? o.kind : o.layer;
      value = args[++i];
      continue;
    }
    if (args[i] == "--wells") {
      if (i + 1 >= args.size()) return Usage(err, "--wells needs discharge or head");
      o.wells = Lower(args[++i]);
      if (o.wells != "discharge" && o.wells != "head")
        return Usage(err, "--wells needs discharge or head, not \"" + args[i] + "\"");
      continue;
    }
    if (args[i].size() > 2 && args[i].compare(0, 2, "--") == 0)
      return Usage(err, "unknown option \"" + args[i] + "\"");
    positional.push_back(args[i]);
  }
  if (positional.size() < 2) return Usage(err, "import takes a project and one or more files");
  o.project = positional[0];
  o.files.assign(positional.begin() + 1, positional.end());
  // The files go to their readers in groups, in the order the families first appear.
  std::vector<std::string> xml, text, vector;
  for (const auto& file : o.files) {
    switch (FamilyOfFile(file)) {
      case Family::Xml: xml.push_back(file); break;
      case Family::Text: text.push_back(file); break;
      case Family::Vector: vector.push_back(file); break;
    }
  }
  int status = 0;
  if (!xml.empty()) status = std::max(status, ImportXml(o, xml, out, err));
  if (!text.empty()) status = std::max(status, ImportText(o, text, out, err));
  if (!vector.empty()) status = std::max(status, ImportVector(o, vector, out, err));
  return status;
}

}  // namespace

std::string ExchangeUsageText() {
  return "  tarnocmd export <path> <format> <file> [<what>] [--yes | --no]\n"
         "      format: lss.xml inh.xml brr.xml lss inh huc wl tp tx dxf bln grd shp gpkg;\n"
         "      what: contours pathlines capzones elements (dxf, bln), a shapefile kind (shp),\n"
         "      discharge or head (wl)\n"
         "  tarnocmd import <path> <file>... [--field ROLE=ATTRIBUTE]... [--kind K] [--layer L]\n"
         "      [--wells KIND] [--yes | --no]\n"
         "      the reader follows the file's extension; other vector files through GDAL/OGR;\n"
         "      --wells discharge (the default) or head: the kind of the wells of .wl files\n";
}

std::optional<int> RunExchangeCommand(const std::vector<std::string>& args, std::ostream& out,
                                      std::ostream& err) {
  if (args.empty()) return std::nullopt;
  if (args[0] == "export") return Export(args, out, err);
  if (args[0] == "import") return Import(args, out, err);
  return std::nullopt;
}

}  // namespace tarno::cmd
