#include "tarnocmd_convert.h"

#include <unistd.h>

#include <filesystem>

#include "basemaps/convert_tools.h"
#include "basemaps/projections.h"
#include "core/console_ui.h"
#include "core/error.h"
#include "solver/process.h"

namespace fs = std::filesystem;

namespace tarno::cmd {

namespace {

constexpr int kFailed = 1;
constexpr int kUsage = 2;

int Usage(std::ostream& err, const std::string& message) {
  err << "tarnocmd: " << message << "\n"
      << "Run \"tarnocmd help\" for the usage.\n";
  return kUsage;
}

std::optional<int> Code(const std::string& text) {
  try {
    std::size_t used = 0;
    const int v = std::stoi(text, &used);
    if (used == text.size()) return v;
  } catch (const std::exception&) {}
  return std::nullopt;
}

int Convert(std::vector<std::string> args, std::ostream& out, std::ostream& err) {
  bool yes = false;
  std::erase_if(args, [&](const std::string& a) {
    if (a == "--yes") yes = true;
    return a == "--yes";
  });
  if (args.size() < 4) return Usage(err, "convert takes a tool, an input and an output file");
  const std::string tool = args[1];
  const std::string input = args[2], output = args[3];
  const std::vector<std::string> extra(args.begin() + 4, args.end());
  std::string program;
  std::size_t maxExtra = 0;
  if (tool == "shape") {
    program = convert_program::kShape;
  } else if (tool == "cad") {
    program = convert_program::kCad;
    maxExtra = 1;
  } else if (tool == "bbm2dxf") {
    program = convert_program::kBbmToDxf;
    maxExtra = 1;
  } else if (tool == "dlg") {
    program = convert_program::kDlg;
  } else if (tool == "sdts") {
    program = convert_program::kSdts;
  } else if (tool == "dm") {
    err << "MORV DM Converter: The MORV DM format is not supported by this version of TARNO.\n";
    return kFailed;
  } else {
    return Usage(err, "unknown converter \"" + tool + "\" (shape, cad, bbm2dxf, dlg, sdts)");
  }
  if (extra.size() > maxExtra) return Usage(err, "too many arguments for convert " + tool);
  const fs::path directory = ProgramDirectory();
  if (!fs::exists(directory / program)) {
    err << "Executable Missing: " << program << " does not exist in the tarno directory!\n";
    return kFailed;
  }
  std::error_code ec;
  if (!fs::exists(input, ec)) {
    err << "tarnocmd: the input file " << input << " does not exist.\n";
    return kFailed;
  }
  if (fs::exists(output, ec) && !yes) {
    err << "File Exists: File already exists! Overwrite?\n"
        << "tarnocmd: " << output << " is kept (give --yes to replace it).\n";
    return kFailed;
  }
  const fs::path outputPath = fs::absolute(output, ec);
  std::vector<std::string> programArgs{fs::absolute(input, ec).string(), outputPath.string()};
  fs::path work = fs::current_path(ec);
  std::optional<fs::path> scratch;
  if (tool == "dlg") {
    scratch = fs::temp_directory_path(ec) / ("tarno-dlg-" + std::to_string(::getpid()));
    fs::create_directories(*scratch, ec);
    try {
      PrepareDlgInput(input, *scratch);
    } catch (const Error& e) {
      err << "Conversion Failure: " << e.what() << "\n";
      fs::remove_all(*scratch, ec);
      return kFailed;
    }
    programArgs = {"TARNO2K.DLG", outputPath.string(), "100"};
    work = *scratch;
  }
  if (tool == "cad") programArgs.push_back(extra.empty() ? "0" : extra[0]);
  if (tool == "bbm2dxf") programArgs.push_back(extra.empty() ? "0" : extra[0]);
  int status = -1;
  try {
    BlockingWaiter waiter;
    status = WaitForTerm1(waiter, StartProgram(directory / program, programArgs, work));
  } catch (const Error& e) {
    err << "tarnocmd: " << e.what() << "\n";
  }
  if (scratch) fs::remove_all(*scratch, ec);
  if (status != 0 || !fs::exists(outputPath, ec)) {
    err << "Conversion Failure: " << program << " conversion seems to have failed.\n";
    return kFailed;
  }
  out << outputPath.string() << "\n";
  return 0;
}

int Reproject(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() < 5) {
    return Usage(err, "reproject takes the source and target codes, the datum and the files");
  }
  const auto from = Code(args[1]), to = Code(args[2]);
  if (!from || !ProjectionIndexOfCode(*from))
    return Usage(err, "no projection code \"" + args[1] + "\"");
  if (!to || !ProjectionIndexOfCode(*to))
    return Usage(err, "no projection code \"" + args[2] + "\"");
  const auto datum = DatumFromText(args[3]);
  if (!datum) return Usage(err, "the datum \"" + args[3] + "\" is neither NAD27 nor NAD83");
  ConsoleUserInterface ui(err);
  std::error_code ec;
  ConvertContext ctx{ui, ProgramDirectory(), fs::temp_directory_path(ec), {}, {}};
  std::vector<std::string> files;
  for (std::size_t i = 4; i < args.size(); ++i) files.push_back(fs::absolute(args[i], ec).string());
  const ReprojectOutcome outcome = ReprojectFiles(ctx, files, *from, *to, *datum);
  out << outcome.reprojected << " of " << outcome.total << "\n";
  return outcome.reprojected == outcome.total ? 0 : kFailed;
}

}  // namespace

std::optional<int> RunConvertCommand(const std::vector<std::string>& args, std::ostream& out,
                                     std::ostream& err) {
  if (args.empty()) return std::nullopt;
  if (args[0] == "convert") return Convert(args, out, err);
  if (args[0] == "reproject") return Reproject(args, out, err);
  return std::nullopt;
}

std::string ConvertUsageText() {
  return "  tarnocmd convert <shape|cad|bbm2dxf|dlg|sdts> <input> <output> [zone|layer] [--yes]\n"
         "      Converts a map with the converter programs (cad takes the zone, bbm2dxf the\n"
         "      layer name). An existing output is replaced only with --yes.\n"
         "  tarnocmd reproject <from-code> <to-code> <NAD27|NAD83> <file>...\n"
         "      Reprojects BBM maps and raster images' world files between projection\n"
         "      zones (codes of the projection list: 1-36 UTM, else state plane FIPS).\n";
}

}  // namespace tarno::cmd
