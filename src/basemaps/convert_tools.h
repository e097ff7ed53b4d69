// The Tools menu's converters (CONVERT) and the reprojection of maps: what each
// entry asks, prepares, runs and reports. The work itself is done by the converter
// programs (programs/), which stand in the program directory and are started and
// awaited one at a time; every box and file dialog goes through the user interface
// port.
//
// Each converter shows its explanatory box (OK and Cancel), checks that its program
// is there ("Executable Missing" names it, and the tool stops), asks for the input
// and the output file (the dialogs start in the directories remembered under their
// keys in TARNO.def and store the chosen ones), asks "File Exists" before an output
// is replaced, asks what the program needs besides ("BBM Zone", "DXF Layer Name"),
// runs the program in the TEMP directory and reports "Conversion Complete" or
// "Conversion Failure" with the program's own message.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "basemaps/projections.h"
#include "core/ui_port.h"

namespace tarno {

class ProcessWaiter;

// The program names on this platform.
namespace convert_program {
inline constexpr const char* kDlg = "dlg2bbm";
inline constexpr const char* kSdts = "sdts2bbm";
inline constexpr const char* kCad = "odwg2bbm";
inline constexpr const char* kBbmToDxf = "bbm2dxf";
inline constexpr const char* kShape = "shape2bbm";
inline constexpr const char* kBbmProject = "bbmproject";
inline constexpr const char* kRasterProject = "rasterproject";
}  // namespace convert_program

namespace convert_text {
inline constexpr const char* kProceed =
    "Press OK to proceed or Cancel to abort the conversion process";
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kFileExists = "File already exists! Overwrite?";
inline constexpr const char* kCompleteTitle = "Conversion Complete";
inline constexpr const char* kFailureTitle = "Conversion Failure";
inline constexpr const char* kDlgTitle = "DLG Converter";
inline constexpr const char* kDlgFilter = "DLG Files (*.dlg)|*.dlg|All files (*.*)|*.*";
inline constexpr const char* kSdtsTitle = "SDTS Converter";
inline constexpr const char* kSdtsFilter = "SDTS files (*.*)|*.*";
inline constexpr const char* kSdtsNoteTitle = "Please note";
inline constexpr const char* kSdtsNote = "This file may not be an SDTS archive -- continue?";
inline constexpr const char* kDmTitle = "MORV DM Converter";
inline constexpr const char* kDmFilter = "MORV digital map files|*.dm|All files|*.*";
inline constexpr const char* kDmUnsupported =
    "The MORV DM format is not supported by this version of TARNO.";
inline constexpr const char* kCadTitle = "CAD File Converter";
// DGN drawings are converted too; DWG stays in the list so that choosing one gets
// the converter's own explanation instead of a file the dialog hides.
inline constexpr const char* kCadFilter = "CAD files (*.dxf; *.dgn; *.dwg)|*.dxf;*.dgn;*.dwg";
inline constexpr const char* kBbmFilter = "BBM files (*.bbm)|*.bbm";
inline constexpr const char* kDxfFilter = "DXF files (*.dxf)|*.dxf";
inline constexpr const char* kShapeTitle = "Shapefile to BBM Conversion";
inline constexpr const char* kShapeFilter = "Shapefiles (*.shp)|*.shp|All files (*.*)|*.*";
inline constexpr const char* kZoneTitle = "BBM Zone";
inline constexpr const char* kZonePrompt = "Enter the projection zone for the map:";
inline constexpr const char* kLayerTitle = "DXF Layer Name";
inline constexpr const char* kLayerPrompt = "Enter the layer name:";
inline constexpr const char* kReadOnlyTitle = "File is read-only";
inline constexpr const char* kReadOnly = " is read only. TARNO cannot reproject a read-only file.";
inline constexpr const char* kReadOnlyNote =
    "Note: If the file is on a read-only device it must be copied to the hard disk first and "
    "its read-only attribute removed.";
inline constexpr const char* kReprojectCompleteTitle = "Reproject Complete";
inline constexpr const char* kReprojectFailedTitle = "Reproject Failed";
inline constexpr const char* kNoWorldFileTitle = "Not Georeferenced";
}  // namespace convert_text

// What a program run gave back: its exit status and what it wrote to standard error.
struct ProgramRunResult {
  int status = -1;
  std::string messages;
};
using ProgramRunner = std::function<ProgramRunResult(
    const std::filesystem::path& program, const std::vector<std::string>& args,
    const std::filesystem::path& workingDirectory)>;

// Starts the program and waits for it with `waiter` (blocking in waitpid when none);
// standard error is caught in a file of the working directory and given back.
ProgramRunner WaitingProgramRunner(ProcessWaiter* waiter = nullptr);

struct ConvertContext {
  UserInterface& ui;
  std::filesystem::path programDirectory;  // where the converter programs stand
  std::filesystem::path tempDirectory;     // the TEMP directory
  ProgramRunner run;                       // WaitingProgramRunner() when empty
  // TARNO.def; DefaultDirectoriesFile() when empty.
  std::string defaultDirectoriesFile;
};

// The Tools menu's CONVERT entries.
void ToolsConvertDLG(ConvertContext& ctx);
void ToolsConvertSDTS(ConvertContext& ctx);
void ToolsConvertDM(ConvertContext& ctx);
void ToolsConvertDXF(ConvertContext& ctx);
void ToolsBBMtoDXF(ConvertContext& ctx);
void ToolsConvertShape(ConvertContext& ctx);

// The DLG step's preparation: `input` (unpacked once when its name ends ".gz" or
// ".GZ") becomes "TARNO2K.DLG" in `folder`; a file without line ends is broken into
// lines of 80 columns. Returns the path written. Throws Error naming the input.
std::filesystem::path PrepareDlgInput(const std::filesystem::path& input,
                                      const std::filesystem::path& folder);
// Breaks `text` into lines of `width` characters (CR LF after each).
std::string ChopLines(const std::string& text, std::size_t width);

// The ReprojectMaps dialog: a folder's maps from one projection to another. Its view
// takes the folder as text (the port has no folder chooser).
class ReprojectMapsDialog : public DialogModel {
 public:
  static constexpr const char* kName = "ReprojectMaps";
  std::string DialogName() const override { return kName; }

  // The rows of listSourceProj and listTargetProj.
  static std::vector<std::string> PopulateList();
  // The maps of SourcePath that listSourceFiles shows: BBM maps and raster images,
  // sorted by name.
  std::vector<std::string> SourceFiles() const;

  bool SourceEnabled = true;
  std::string SourcePath;                  // dirSourceDir
  int SourceProjection = 0;                // listSourceProj: a row of the list, from 0
  Datum datum = Datum::NAD27;              // optDatum, "Datum for State Plane"
  int TargetProjection = 0;                // listTargetProj
  std::vector<std::string> SelectedFiles;  // listSourceFiles' chosen names, in SourcePath
  int Result = 2;                          // 1 OK, 2 Cancel
};

// The MapTarget dialog: the maps chosen elsewhere (the map browser) to a new
// projection; the source projection defaults to the zone of the first BBM map.
class MapTargetDialog : public DialogModel {
 public:
  static constexpr const char* kName = "MapTarget";
  std::string DialogName() const override { return kName; }
  static std::vector<std::string> PopulateList() { return ReprojectMapsDialog::PopulateList(); }

  std::vector<std::string> Files;  // shown read-only
  int SourceProjection = 0;
  Datum datum = Datum::NAD27;
  int TargetProjection = 0;
  int Result = 2;
};

struct ReprojectOutcome {
  int reprojected = 0;
  int total = 0;
};

// Reprojects each file (a ".bbm" map through bbmproject, a raster image's world file
// through rasterproject), skipping read-only files with their box, and ends with
// "Reproject Complete". Codes are those of the projection list's rows.
ReprojectOutcome ReprojectFiles(ConvertContext& ctx, const std::vector<std::string>& files,
                                int sourceCode, int targetCode, Datum datum);
// The Tools menu's REPROJECT: the ReprojectMaps dialog with datum NAD27, then the
// chosen files.
ReprojectOutcome REPROJECT_Click(ConvertContext& ctx);
// The map browser's reprojection of the given maps through MapTarget. Not yet called
// by the desktop program: the map browser comes with the catalogue.
ReprojectOutcome ReprojectWithMapTarget(ConvertContext& ctx, const std::vector<std::string>& files);

// The datum directory handed to the programs: the program directory's "nad27sp" or
// "nad83sp".
std::filesystem::path DatumDirectory(const std::filesystem::path& programDirectory, Datum datum);
// The zone in a BBM map's header; 0 when the file cannot be read.
int BbmZoneOf(const std::filesystem::path& bbm);

}  // namespace tarno
