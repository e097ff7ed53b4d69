#include "basemaps/convert_tools.h"

#include <unistd.h>

#include <cpl_vsi.h>
#include <algorithm>
#include <cctype>
#include <fstream>
#include <sstream>

#include "basemaps/bbm_format.h"
#include "basemaps/converters.h"
#include "basemaps/world_file.h"
#include "core/error.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/default_dirs.h"

namespace fs = std::filesystem;

namespace tarno {

namespace {

constexpr int kWaitWidth = 3000;

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

bool EndsWith(const std::string& text, const std::string& tail) {
  return text.size() >= tail.size() &&
         text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

std::string ReadText(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

ProgramRunResult Run(ConvertContext& ctx, const char* program, const std::vector<std::string>& args,
                     const fs::path& workingDirectory) {
  if (!ctx.run) ctx.run = WaitingProgramRunner();
  ctx.ui.PleaseWaitShow("Converting...", kWaitWidth);
  ProgramRunResult result;
  try {
    result = ctx.run(ctx.programDirectory / program, args, workingDirectory);
  } catch (...) {
    ctx.ui.PleaseWaitHide();
    throw;
  }
  ctx.ui.PleaseWaitHide();
  return result;
}

std::string DefFile(const ConvertContext& ctx) {
  return ctx.defaultDirectoriesFile.empty() ? DefaultDirectoriesFile() : ctx.defaultDirectoriesFile;
}

std::string StartDirectory(const ConvertContext& ctx, const std::string& key) {
  std::error_code ec;
  const fs::path current = fs::current_path(ec);
  return DefaultDirectoriesIn(DefFile(ctx), key, DirectoryMode::Read, current.string());
}

void Remember(const ConvertContext& ctx, const std::string& key, const std::string& file) {
  DefaultDirectoriesIn(DefFile(ctx), key, DirectoryMode::Write,
                       fs::path(file).parent_path().string());
}

// What every converter asks first: the box, the programs, the two files and the
// overwrite question. Empty paths when the user stopped.
struct ToolFiles {
  std::string input, output;
};

struct ToolSetup {
  const char* title;
  std::string explanation;
  std::vector<const char*> programs;
  const char* inputFilter;
  const char* inputKey;
  const char* outputFilter;
  const char* outputDefaultExtension;
  const char* outputKey;
};

std::optional<ToolFiles> AskFiles(ConvertContext& ctx, const ToolSetup& tool) {
  UserInterface& ui = ctx.ui;
  if (ui.MessageBox(tool.title, {tool.explanation, convert_text::kProceed}, Buttons::OKCancel,
                    Icon::Information) != Answer::OK) {
    return std::nullopt;
  }
  for (const char* program : tool.programs) {
    if (!noexecutable(ui, ctx.programDirectory, program)) return std::nullopt;
  }
  FileDialogRequest in;
  in.title = std::string("Select the file to convert");
  in.filter = tool.inputFilter;
  in.initialDirectory = StartDirectory(ctx, tool.inputKey);
  const auto input = ui.OpenFileDialog(in);
  if (!input || input->empty()) return std::nullopt;
  Remember(ctx, tool.inputKey, *input);
  FileDialogRequest out;
  out.title = std::string("Select the output file");
  out.filter = tool.outputFilter;
  out.defaultExtension = tool.outputDefaultExtension;
  out.initialDirectory = StartDirectory(ctx, tool.outputKey);
  const auto output = ui.SaveFileDialog(out);
  if (!output || output->empty()) return std::nullopt;
  Remember(ctx, tool.outputKey, *output);
  std::error_code ec;
  if (fs::exists(*output, ec) &&
      !ui.Question(convert_text::kFileExistsTitle, {convert_text::kFileExists})) {
    return std::nullopt;
  }
  return ToolFiles{*input, *output};
}

// The programs read working copies under fixed names (TARNO2K.DLG, temp_tar.tar.gz,
// TEMPDXF.BBM, TEMP-IN.BBM) in `folder`; their messages name the file the user chose
// instead: the copy's full path, or its bare name where it stands as a whole word.
std::string NameTheInput(std::string messages, const fs::path& folder,
                         const std::string& workingName, const std::string& input) {
  auto replaceAll = [&](const std::string& what, bool wholeName) {
    auto isNamePart = [](char c) {
      return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_' || c == '-' || c == '/' ||
             c == '.';
    };
    for (std::size_t at = messages.find(what); at != std::string::npos;
         at = messages.find(what, at)) {
      const std::size_t end = at + what.size();
      const bool partOfAnother =
          wholeName &&
          ((at > 0 && isNamePart(messages[at - 1])) ||
           (end < messages.size() && isNamePart(messages[end]) && messages[end] != '.'));
      if (partOfAnother) {
        at = end;
        continue;
      }
      messages.replace(at, what.size(), input);
      at += input.size();
    }
  };
  replaceAll((folder / workingName).string(), false);
  replaceAll(workingName, true);
  return messages;
}

// "Conversion Complete" when the program ended well and left the output, else
// "Conversion Failure" with what the program said.
bool Report(ConvertContext& ctx, const std::string& what, const ProgramRunResult& result,
            const std::string& output) {
  std::error_code ec;
  if (result.status == 0 && fs::exists(output, ec)) {
    ctx.ui.MessageBox(
        convert_text::kCompleteTitle,
        {what + " conversion has finished.", "The file " + output + " has been written."},
        Buttons::OK, Icon::Information);
    return true;
  }
  std::vector<std::string> lines{what + " conversion seems to have failed."};
  std::istringstream messages(result.messages);
  for (std::string line; std::getline(messages, line);) {
    if (!line.empty()) lines.push_back(line);
  }
  ctx.ui.MessageBox(convert_text::kFailureTitle, lines, Buttons::OK, Icon::Exclamation);
  return false;
}

fs::path TempDirectory(const ConvertContext& ctx) {
  if (!ctx.tempDirectory.empty()) return ctx.tempDirectory;
  std::error_code ec;
  return fs::temp_directory_path(ec);
}

// The read-only attribute: no write permission for the owner (checked on the
// permission bits, not with access(), which allows everything to the super-user).
bool IsReadOnly(const fs::path& file) {
  std::error_code ec;
  const auto perms = fs::status(file, ec).permissions();
  if (ec) return true;
  return (perms & fs::perms::owner_write) == fs::perms::none;
}

bool IsRaster(const fs::path& file) {
  std::string ext = file.extension().string();
  if (!ext.empty()) ext.erase(0, 1);
  return !WorldFileExtensions(ext).empty();
}

}  // namespace

ProgramRunner WaitingProgramRunner(ProcessWaiter* waiter) {
  return [waiter](const fs::path& program, const std::vector<std::string>& args,
                  const fs::path& workingDirectory) {
    ProgramRunResult result;
    const fs::path errors =
        workingDirectory / ("tarno-convert-" + std::to_string(::getpid()) + ".err");
    try {
      const pid_t pid = StartProgram(program, args, workingDirectory, {}, errors);
      BlockingWaiter blocking;
      result.status = WaitForTerm1(waiter != nullptr ? *waiter : blocking, pid);
    } catch (const Error& e) {
      result.status = 127;
      result.messages = e.what();
      return result;
    }
    result.messages = ReadText(errors);
    std::error_code ec;
    fs::remove(errors, ec);
    return result;
  };
}

std::string ChopLines(const std::string& text, std::size_t width) {
  std::string out;
  out.reserve(text.size() + text.size() / width * 2 + 2);
  for (std::size_t at = 0; at < text.size(); at += width) {
    out += text.substr(at, width);
    out += "\r\n";
  }
  return out;
}

fs::path PrepareDlgInput(const fs::path& input, const fs::path& folder) {
  std::string text;
  const std::string name = input.filename().string();
  if (EndsWith(name, ".gz") || EndsWith(name, ".GZ")) {
    // Unpacked here, once, through GDAL's gzip reader.
    const std::string vsi = "/vsigzip/" + input.string();
    VSILFILE* f = VSIFOpenL(vsi.c_str(), "rb");
    if (f == nullptr) throw Error("Cannot unpack " + input.string() + ".");
    char buffer[65536];
    size_t got = 0;
    while ((got = VSIFReadL(buffer, 1, sizeof buffer, f)) > 0) text.append(buffer, got);
    VSIFCloseL(f);
    if (text.empty())
      throw Error("The file " + input.string() + " is not a gzip file or is empty.");
  } else {
    std::ifstream in(input, std::ios::binary);
    if (!in) throw Error("Cannot open " + input.string() + ".");
    std::ostringstream s;
    s << in.rdbuf();
    text = s.str();
  }
  // A file without record delimiters comes as one run of 80-column records.
  if (text.find('\n') == std::string::npos) text = ChopLines(text, 80);
  const fs::path out = folder / "TARNO2K.DLG";
  std::ofstream o(out, std::ios::binary | std::ios::trunc);
  o.write(text.data(), static_cast<std::streamsize>(text.size()));
  o.close();
  if (!o) throw Error("Cannot write " + out.string() + ".");
  return out;
}

void ToolsConvertDLG(ConvertContext& ctx) {
  const ToolSetup tool{
      convert_text::kDlgTitle,
      "This tool converts a USGS DLG file (optionally gzip-compressed) into a BBM map.",
      {convert_program::kDlg},
      convert_text::kDlgFilter,
      "Default DLG conversion path",
      convert_text::kBbmFilter,
      "bbm",
      "Default ouput DLG conversion path"};
  const auto files = AskFiles(ctx, tool);
  if (!files) return;
  const fs::path temp = TempDirectory(ctx);
  try {
    PrepareDlgInput(files->input, temp);
  } catch (const Error& e) {
    ctx.ui.MessageBox(convert_text::kFailureTitle,
                      {"DLG2BBM conversion seems to have failed.", e.what()}, Buttons::OK,
                      Icon::Exclamation);
    return;
  }
  auto result = Run(ctx, convert_program::kDlg, {"TARNO2K.DLG", files->output, "100"}, temp);
  result.messages = NameTheInput(result.messages, temp, "TARNO2K.DLG", files->input);
  Report(ctx, "DLG2BBM", result, files->output);
}

void ToolsConvertSDTS(ConvertContext& ctx) {
  const ToolSetup tool{convert_text::kSdtsTitle,
                       "This tool converts an SDTS transfer (a .tar.gz archive) into a BBM map.",
                       {convert_program::kSdts},
                       convert_text::kSdtsFilter,
                       "Default SDTS conversion path",
                       convert_text::kBbmFilter,
                       "bbm",
                       "Default SDTS output conversion path"};
  const auto files = AskFiles(ctx, tool);
  if (!files) return;
  const std::string name = Lower(fs::path(files->input).filename().string());
  if (name.find("sdts") == std::string::npos &&
      !ctx.ui.Question(convert_text::kSdtsNoteTitle, {convert_text::kSdtsNote},
                       Icon::Exclamation)) {
    return;
  }
  // The working folder is emptied and the archive copied in under a fixed name that
  // keeps its kind (.tar.gz, .tgz or .tar).
  const fs::path folder = TempDirectory(ctx) / "SDTS2BBM";
  std::error_code ec;
  fs::remove_all(folder, ec);
  fs::create_directories(folder, ec);
  std::string suffix = ".tar.gz";
  if (EndsWith(name, ".tgz")) suffix = ".tgz";
  if (EndsWith(name, ".tar")) suffix = ".tar";
  const fs::path archive = folder / ("temp_tar" + suffix);
  fs::copy_file(files->input, archive, fs::copy_options::overwrite_existing, ec);
  if (ec) {
    ctx.ui.MessageBox(convert_text::kFailureTitle,
                      {"SDTS2BBM conversion seems to have failed.",
                       "Cannot copy " + files->input + ": " + ec.message()},
                      Buttons::OK, Icon::Exclamation);
    return;
  }
  auto result =
      Run(ctx, convert_program::kSdts, {archive.filename().string(), files->output}, folder);
  result.messages =
      NameTheInput(result.messages, folder, archive.filename().string(), files->input);
  Report(ctx, "SDTS2BBM", result, files->output);
}

void ToolsConvertDM(ConvertContext& ctx) {
  ctx.ui.MessageBox(convert_text::kDmTitle, {convert_text::kDmUnsupported}, Buttons::OK,
                    Icon::Information);
}

void ToolsConvertDXF(ConvertContext& ctx) {
  const ToolSetup tool{convert_text::kCadTitle,
                       "This tool converts a CAD drawing (DXF or DGN) into a BBM map.",
                       {convert_program::kCad},
                       convert_text::kCadFilter,
                       "Default DXF conversion path",
                       convert_text::kBbmFilter,
                       "bbm",
                       "Default DXF conversion output path"};
  const auto files = AskFiles(ctx, tool);
  if (!files) return;
  const auto zone = ctx.ui.InputBox(convert_text::kZonePrompt, convert_text::kZoneTitle, "0");
  if (!zone) return;
  const auto result =
      Run(ctx, convert_program::kCad, {files->input, files->output, *zone}, TempDirectory(ctx));
  Report(ctx, "ODWG2BBM", result, files->output);
}

void ToolsBBMtoDXF(ConvertContext& ctx) {
  const ToolSetup tool{convert_text::kCadTitle,
                       "This tool converts a BBM map into a DXF drawing.",
                       {convert_program::kBbmToDxf},
                       convert_text::kBbmFilter,
                       "Default BBM to DXF conversion path",
                       convert_text::kDxfFilter,
                       "dxf",
                       "Default BBM to DXF conversion output path"};
  const auto files = AskFiles(ctx, tool);
  if (!files) return;
  const auto layer = ctx.ui.InputBox(convert_text::kLayerPrompt, convert_text::kLayerTitle, "0");
  if (!layer) return;
  const fs::path temp = TempDirectory(ctx);
  std::error_code ec;
  fs::copy_file(files->input, temp / "TEMPDXF.BBM", fs::copy_options::overwrite_existing, ec);
  if (ec) {
    ctx.ui.MessageBox(convert_text::kFailureTitle,
                      {"BBM2DXF conversion seems to have failed.",
                       "Cannot copy " + files->input + ": " + ec.message()},
                      Buttons::OK, Icon::Exclamation);
    return;
  }
  auto result = Run(ctx, convert_program::kBbmToDxf, {"TEMPDXF.BBM", files->output, *layer}, temp);
  result.messages = NameTheInput(result.messages, temp, "TEMPDXF.BBM", files->input);
  fs::remove(temp / "TEMPDXF.BBM", ec);
  Report(ctx, "BBM2DXF", result, files->output);
}

void ToolsConvertShape(ConvertContext& ctx) {
  const ToolSetup tool{convert_text::kShapeTitle,
                       "This tool converts a shapefile into a BBM map.",
                       {convert_program::kShape},
                       convert_text::kShapeFilter,
                       "Default Shape input conversion path",
                       convert_text::kBbmFilter,
                       "bbm",
                       "Default Shape output conversion path"};
  const auto files = AskFiles(ctx, tool);
  if (!files) return;
  const auto result =
      Run(ctx, convert_program::kShape, {files->input, files->output}, TempDirectory(ctx));
  Report(ctx, "SHAPE2BBM", result, files->output);
}

std::vector<std::string> ReprojectMapsDialog::PopulateList() {
  std::vector<std::string> rows;
  for (const auto& row : ProjectionList()) rows.push_back(row.text);
  return rows;
}

std::vector<std::string> ReprojectMapsDialog::SourceFiles() const {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(SourcePath, ec)) {
    if (!entry.is_regular_file(ec)) continue;
    const fs::path& p = entry.path();
    if (Lower(p.extension().string()) == ".bbm" || IsRaster(p))
      names.push_back(p.filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

fs::path DatumDirectory(const fs::path& programDirectory, Datum datum) {
  return programDirectory /
         (datum == Datum::NAD27 ? projection_text::kNad27Dir : projection_text::kNad83Dir);
}

int BbmZoneOf(const fs::path& bbm) {
  std::ifstream in(bbm, std::ios::binary);
  unsigned char b[4] = {0, 0, 0, 0};
  in.seekg(static_cast<std::streamoff>(bbm::kProjectionOffset));
  if (!in.read(reinterpret_cast<char*>(b), 4)) return 0;
  return static_cast<std::int32_t>(b[0] | (b[1] << 8) | (b[2] << 16) |
                                   (static_cast<std::uint32_t>(b[3]) << 24));
}

ReprojectOutcome ReprojectFiles(ConvertContext& ctx, const std::vector<std::string>& files,
                                int sourceCode, int targetCode, Datum datum) {
  UserInterface& ui = ctx.ui;
  ReprojectOutcome outcome;
  outcome.total = static_cast<int>(files.size());
  const fs::path temp = TempDirectory(ctx);
  const std::string datumDir = DatumDirectory(ctx.programDirectory, datum).string();
  std::error_code ec;
  auto failed = [&](const std::string& file, const ProgramRunResult& r, const char* program) {
    std::vector<std::string> lines{std::string(program) + " could not reproject " + file + "."};
    std::istringstream messages(r.messages);
    for (std::string line; std::getline(messages, line);) {
      if (!line.empty()) lines.push_back(line);
    }
    ui.MessageBox(convert_text::kReprojectFailedTitle, lines, Buttons::OK, Icon::Exclamation);
  };
  for (const std::string& file : files) {
    const fs::path path(file);
    if (!fs::exists(path, ec)) {
      ui.MessageBox(convert_text::kReprojectFailedTitle, {"The file " + file + " does not exist."},
                    Buttons::OK, Icon::Exclamation);
      continue;
    }
    if (Lower(path.extension().string()) == ".bbm") {
      if (IsReadOnly(path)) {
        ui.MessageBox(convert_text::kReadOnlyTitle,
                      {file + convert_text::kReadOnly, convert_text::kReadOnlyNote}, Buttons::OK,
                      Icon::Exclamation);
        continue;
      }
      if (!noexecutable(ui, ctx.programDirectory, convert_program::kBbmProject)) continue;
      fs::path old = path;
      old.replace_extension(".old");
      fs::copy_file(path, old, fs::copy_options::overwrite_existing, ec);
      const fs::path in = temp / "TEMP-IN.BBM", out = temp / "TEMP-OUT.BBM";
      fs::remove(out, ec);
      fs::copy_file(path, in, fs::copy_options::overwrite_existing, ec);
      auto r = Run(ctx, convert_program::kBbmProject,
                   {in.string(), out.string(), std::to_string(sourceCode),
                    std::to_string(targetCode), datumDir},
                   temp);
      r.messages = NameTheInput(r.messages, temp, in.filename().string(), file);
      if (r.status == 0 && fs::exists(out, ec)) {
        fs::copy_file(out, path, fs::copy_options::overwrite_existing, ec);
        if (!ec) ++outcome.reprojected;
      } else {
        failed(file, r, convert_program::kBbmProject);
      }
      fs::remove(in, ec);
      fs::remove(out, ec);
    } else if (IsRaster(path)) {
      const auto world = FindWorldFile(path);
      if (!world) {
        ui.MessageBox(convert_text::kNoWorldFileTitle,
                      {"The file " + file + " has no world file and cannot be reprojected."},
                      Buttons::OK, Icon::Exclamation);
        continue;
      }
      if (IsReadOnly(*world)) {
        ui.MessageBox(convert_text::kReadOnlyTitle,
                      {world->string() + convert_text::kReadOnly, convert_text::kReadOnlyNote},
                      Buttons::OK, Icon::Exclamation);
        continue;
      }
      if (!noexecutable(ui, ctx.programDirectory, convert_program::kRasterProject)) continue;
      fs::path old = *world;
      old.replace_extension(".old");
      fs::copy_file(*world, old, fs::copy_options::overwrite_existing, ec);
      // The program reads a copy and writes the world file in its place.
      const fs::path copy = world->parent_path() /
                            (world->stem().string() + "_temp_rpj" + world->extension().string());
      fs::copy_file(*world, copy, fs::copy_options::overwrite_existing, ec);
      RasterProjParameters p{copy, *world, sourceCode, targetCode, datumDir};
      WriteRasterProjFile(temp / "RasterProj.dat", p);
      const auto r = Run(ctx, convert_program::kRasterProject, {"RasterProj.dat"}, temp);
      if (r.status == 0) {
        ++outcome.reprojected;
      } else {
        failed(file, r, convert_program::kRasterProject);
        fs::copy_file(copy, *world, fs::copy_options::overwrite_existing, ec);
      }
      fs::remove(copy, ec);
    }
  }
  const auto index = ProjectionIndexOfCode(targetCode);
  const std::string row = index ? ProjectionList()[*index].text : std::to_string(targetCode);
  ui.MessageBox(convert_text::kReprojectCompleteTitle,
                {std::to_string(outcome.reprojected) + " of " + std::to_string(outcome.total) +
                     " files reprojected to:",
                 row},
                Buttons::OK, Icon::Information);
  return outcome;
}

ReprojectOutcome REPROJECT_Click(ConvertContext& ctx) {
  ReprojectMapsDialog dialog;
  dialog.datum = Datum::NAD27;
  dialog.SourcePath = StartDirectory(ctx, "Default Reproject Source Path");
  ctx.ui.ShowModal(dialog);
  if (dialog.Result != 1 || dialog.SelectedFiles.empty()) return {};
  const auto& rows = ProjectionList();
  const int count = static_cast<int>(rows.size());
  if (dialog.SourceProjection < 0 || dialog.SourceProjection >= count ||
      dialog.TargetProjection < 0 || dialog.TargetProjection >= count) {
    return {};
  }
  std::vector<std::string> files;
  for (const auto& name : dialog.SelectedFiles)
    files.push_back((fs::path(dialog.SourcePath) / name).string());
  Remember(ctx, "Default Reproject Source Path", files.front());
  return ReprojectFiles(ctx, files, rows[dialog.SourceProjection].code,
                        rows[dialog.TargetProjection].code, dialog.datum);
}

ReprojectOutcome ReprojectWithMapTarget(ConvertContext& ctx,
                                        const std::vector<std::string>& files) {
  MapTargetDialog dialog;
  dialog.Files = files;
  for (const auto& f : files) {
    if (Lower(fs::path(f).extension().string()) == ".bbm") {
      dialog.SourceProjection = ProjectionIndexOfCode(BbmZoneOf(f)).value_or(0);
      break;
    }
  }
  ctx.ui.ShowModal(dialog);
  if (dialog.Result != 1) return {};
  const auto& rows = ProjectionList();
  const int count = static_cast<int>(rows.size());
  if (dialog.SourceProjection < 0 || dialog.SourceProjection >= count ||
      dialog.TargetProjection < 0 || dialog.TargetProjection >= count) {
    return {};
  }
  return ReprojectFiles(ctx, files, rows[dialog.SourceProjection].code,
                        rows[dialog.TargetProjection].code, dialog.datum);
}

}  // namespace tarno
