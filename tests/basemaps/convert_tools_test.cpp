// The CONVERT tools and the reprojection of maps through the scripted port: what
// they ask, what they hand the programs, and what they report.
#include "basemaps/convert_tools.h"

#include <gtest/gtest.h>

#include <fstream>

#include "basemaps/bbm.h"
#include "basemaps/bbm_writer.h"
#include "basemaps/converters.h"
#include "basemaps/shapefile.h"
#include "basemaps/world_file.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace tarno {
namespace {

struct Call {
  std::string program;
  std::vector<std::string> args;
  fs::path cwd;
};

class ConvertToolsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::create_directories(bin_);
    fs::create_directories(temp_);
    fs::create_directories(maps_);
    for (const char* p : {"dlg2bbm", "sdts2bbm", "odwg2bbm", "bbm2dxf", "shape2bbm", "bbmproject",
                          "rasterproject"}) {
      test::WriteFile(bin_ / p, "");
    }
  }

  // A context whose programs are recorded; `act` plays the program.
  ConvertContext Context(std::function<int(const Call&)> act = {}) {
    ConvertContext ctx{ui_, bin_, temp_, {}, (dir_ / "TARNO.def").string()};
    ctx.run = [this, act](const fs::path& program, const std::vector<std::string>& args,
                          const fs::path& cwd) {
      calls_.push_back({program.filename().string(), args, cwd});
      ProgramRunResult r;
      r.status = act ? act(calls_.back()) : 0;
      if (r.status != 0) r.messages = "the program's reason\n";
      return r;
    };
    return ctx;
  }

  // The explanatory box, the two file dialogs.
  void ExpectStart(const std::string& title, const std::string& input, const std::string& output) {
    ui_.Expect(UiCallKind::MessageBox)
        .Title(title)
        .WithButtons(Buttons::OKCancel)
        .Answer(Answer::OK);
    ui_.ExpectOpenFile(input);
    ui_.ExpectSaveFile(output);
  }

  test::TempDir dir_;
  fs::path bin_ = dir_ / "bin";
  fs::path temp_ = dir_ / "temp";
  fs::path maps_ = dir_ / "maps";
  ScriptedUserInterface ui_;
  std::vector<Call> calls_;
};

std::string Touch(const fs::path& p, const std::string& text = "x") {
  test::WriteFile(p, text);
  return p.string();
}

TEST_F(ConvertToolsTest, AMissingProgramIsNamedAndTheToolStops) {
  fs::remove(bin_ / "shape2bbm");
  ui_.ExpectMessage("Shapefile to BBM Conversion",
                    {"This tool converts a shapefile into a BBM map.",
                     "Press OK to proceed or Cancel to abort the conversion process"},
                    Answer::OK);
  ui_.ExpectMessage("Executable Missing", {"shape2bbm does not exist in the tarno directory!"});
  auto ctx = Context();
  ToolsConvertShape(ctx);
  ui_.Verify();
  EXPECT_TRUE(calls_.empty());
}

TEST_F(ConvertToolsTest, CancelOnTheFirstBoxOrADialogRunsNothing) {
  ui_.ExpectMessageTitled("DLG Converter", Answer::Cancel);
  auto ctx = Context();
  ToolsConvertDLG(ctx);
  ui_.ExpectMessageTitled("DLG Converter", Answer::OK);
  ui_.ExpectOpenFile(std::nullopt);
  ToolsConvertDLG(ctx);
  ui_.Verify();
  EXPECT_TRUE(calls_.empty());
}

TEST_F(ConvertToolsTest, AnExistingOutputIsReplacedOnlyOnYes) {
  const std::string in = Touch(maps_ / "roads.shp");
  const std::string out = Touch(maps_ / "roads.bbm");
  ExpectStart("Shapefile to BBM Conversion", in, out);
  ui_.ExpectMessage("File Exists", {"File already exists! Overwrite?"}, Answer::No);
  auto ctx = Context();
  ToolsConvertShape(ctx);
  EXPECT_TRUE(calls_.empty());

  ExpectStart("Shapefile to BBM Conversion", in, out);
  ui_.ExpectMessage("File Exists", {"File already exists! Overwrite?"}, Answer::Yes);
  ui_.ExpectMessage("Conversion Complete", {"SHAPE2BBM conversion has finished.",
                                            "The file " + out + " has been written."});
  ToolsConvertShape(ctx);
  ui_.Verify();
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].program, "shape2bbm");
  EXPECT_EQ(calls_[0].args, (std::vector<std::string>{in, out}));
  // The dialogs' folders were remembered under their keys.
  const std::string def = test::ReadFile(dir_ / "TARNO.def");
  EXPECT_NE(def.find("Default Shape input conversion path = " + maps_.string()), std::string::npos)
      << def;
  EXPECT_NE(def.find("Default Shape output conversion path"), std::string::npos);
}

TEST_F(ConvertToolsTest, AFailingProgramIsReportedWithItsMessage) {
  const std::string in = Touch(maps_ / "roads.shp");
  const std::string out = (maps_ / "new.bbm").string();
  ExpectStart("Shapefile to BBM Conversion", in, out);
  ui_.ExpectMessage("Conversion Failure",
                    {"SHAPE2BBM conversion seems to have failed.", "the program's reason"});
  auto ctx = Context([](const Call&) { return 1; });
  ToolsConvertShape(ctx);
  ui_.Verify();
}

std::string WriteMap(const fs::path& path, int zone);

// The programs read working copies; a failure names the file the user chose, by the
// copy's bare name or its full path, and leaves other names alone.
TEST_F(ConvertToolsTest, AFailureNamesTheChosenFileNotTheWorkingCopy) {
  auto ctx = Context();
  std::string said;
  ctx.run = [&](const fs::path& program, const std::vector<std::string>& args,
                const fs::path& cwd) {
    calls_.push_back({program.filename().string(), args, cwd});
    ProgramRunResult r;
    r.status = 1;
    r.messages = said;
    return r;
  };
  const std::string archive = Touch(maps_ / "sdts_quad.tar.gz");
  const std::string out = (maps_ / "quad.bbm").string();
  ExpectStart("SDTS Converter", archive, out);
  ui_.ExpectMessage(
      "Conversion Failure",
      {"SDTS2BBM conversion seems to have failed.",
       "sdts2bbm: No SDTS catalogue module (*CATD.DDF) was found in " + archive + "."});
  said = "sdts2bbm: No SDTS catalogue module (*CATD.DDF) was found in temp_tar.tar.gz.\n";
  ToolsConvertSDTS(ctx);

  const std::string bbm = Touch(maps_ / "roads.bbm");
  ExpectStart("CAD File Converter", bbm, (maps_ / "roads.dxf").string());
  ui_.Expect(UiCallKind::InputBox).Title("DXF Layer Name").Text("0");
  ui_.ExpectMessage("Conversion Failure", {"BBM2DXF conversion seems to have failed.",
                                           "bbm2dxf: The BBM map " + bbm + " is truncated.",
                                           "See OLD_TEMPDXF.BBM and TEMPDXF.BBMX."});
  said = "bbm2dxf: The BBM map TEMPDXF.BBM is truncated.\nSee OLD_TEMPDXF.BBM and TEMPDXF.BBMX.\n";
  ToolsBBMtoDXF(ctx);

  // bbmproject is given the copy's full path.
  const std::string map = WriteMap(maps_ / "wells.bbm", 15);
  ui_.ExpectMessage("Reproject Failed", {"bbmproject could not reproject " + map + ".",
                                         map + ", record 1: the point cannot be transformed."});
  ui_.ExpectMessageTitled("Reproject Complete");
  said = (temp_ / "TEMP-IN.BBM").string() + ", record 1: the point cannot be transformed.\n";
  ReprojectFiles(ctx, {map}, 15, 2202, Datum::NAD83);
  ui_.Verify();
  EXPECT_EQ(calls_.size(), 3u);
}

TEST_F(ConvertToolsTest, CadFileAsksTheZoneAndBbmToDxfTheLayer) {
  const std::string dxf = Touch(maps_ / "site.dxf");
  const std::string bbmOut = (maps_ / "site.bbm").string();
  ExpectStart("CAD File Converter", dxf, bbmOut);
  ui_.Expect(UiCallKind::InputBox)
      .Title("BBM Zone")
      .Lines({"Enter the projection zone for the map:"})
      .Text("15");
  ui_.ExpectMessageTitled("Conversion Complete");
  auto ctx = Context([&](const Call& c) {
    Touch(c.args[1]);
    return 0;
  });
  ToolsConvertDXF(ctx);
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].program, "odwg2bbm");
  EXPECT_EQ(calls_[0].args, (std::vector<std::string>{dxf, bbmOut, "15"}));
  EXPECT_EQ(ui_.CallsOf(UiCallKind::InputBox).at(0).text, "0");
  // DGN drawings are offered as well as DXF (and DWG, which the converter explains).
  EXPECT_EQ(ui_.CallsOf(UiCallKind::OpenFile).at(0).file.filter,
            "CAD files (*.dxf; *.dgn; *.dwg)|*.dxf;*.dgn;*.dwg");

  const std::string dxfOut = (maps_ / "back.dxf").string();
  ExpectStart("CAD File Converter", bbmOut, dxfOut);
  ui_.Expect(UiCallKind::InputBox)
      .Title("DXF Layer Name")
      .Lines({"Enter the layer name:"})
      .Text("ROADS");
  ui_.ExpectMessageTitled("Conversion Complete");
  ToolsBBMtoDXF(ctx);
  ui_.Verify();
  ASSERT_EQ(calls_.size(), 2u);
  EXPECT_EQ(calls_[1].program, "bbm2dxf");
  EXPECT_EQ(calls_[1].args, (std::vector<std::string>{"TEMPDXF.BBM", dxfOut, "ROADS"}));
  EXPECT_EQ(calls_[1].cwd, temp_);
  EXPECT_EQ(ui_.CallsOf(UiCallKind::SaveFile).at(1).file.filter, "DXF files (*.dxf)|*.dxf");
}

TEST_F(ConvertToolsTest, DlgToolHandsTheProgramThePreparedFile) {
  const std::string in = Touch(maps_ / "quad.dlg", std::string(160, 'D'));
  const std::string out = (maps_ / "quad.bbm").string();
  ExpectStart("DLG Converter", in, out);
  ui_.ExpectMessageTitled("Conversion Complete");
  std::string seen;
  auto ctx = Context([&](const Call& c) {
    seen = test::ReadFile(c.cwd / c.args[0]);
    Touch(c.args[1]);
    return 0;
  });
  ToolsConvertDLG(ctx);
  ui_.Verify();
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].args, (std::vector<std::string>{"TARNO2K.DLG", out, "100"}));
  EXPECT_EQ(seen, std::string(80, 'D') + "\r\n" + std::string(80, 'D') + "\r\n");
  EXPECT_EQ(ui_.CallsOf(UiCallKind::OpenFile).at(0).file.filter,
            "DLG Files (*.dlg)|*.dlg|All files (*.*)|*.*");
}

TEST_F(ConvertToolsTest, SdtsToolWarnsOfAnUnlikelyNameAndWorksInItsOwnFolder) {
  const std::string odd = Touch(maps_ / "quad.tar.gz");
  const std::string out = (maps_ / "quad.bbm").string();
  ExpectStart("SDTS Converter", odd, out);
  ui_.ExpectMessage("Please note", {"This file may not be an SDTS archive -- continue?"},
                    Answer::No);
  auto ctx = Context([&](const Call& c) {
    Touch(c.args[1]);
    return 0;
  });
  ToolsConvertSDTS(ctx);
  EXPECT_TRUE(calls_.empty());

  const std::string named = Touch(maps_ / "sdts_hydro.tgz");
  Touch(temp_ / "SDTS2BBM" / "stale.ddf");
  ExpectStart("SDTS Converter", named, out);
  ui_.ExpectMessage("Conversion Complete", {"SDTS2BBM conversion has finished.",
                                            "The file " + out + " has been written."});
  ToolsConvertSDTS(ctx);
  ui_.Verify();
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].args, (std::vector<std::string>{"temp_tar.tgz", out}));
  EXPECT_EQ(calls_[0].cwd, temp_ / "SDTS2BBM");
  EXPECT_FALSE(fs::exists(temp_ / "SDTS2BBM" / "stale.ddf"));
}

TEST_F(ConvertToolsTest, DmFormatIsNotSupported) {
  ui_.ExpectMessage("MORV DM Converter",
                    {"The MORV DM format is not supported by this version of TARNO."});
  auto ctx = Context();
  ToolsConvertDM(ctx);
  ui_.Verify();
}

// Reprojection.

std::string WriteMap(const fs::path& path, int zone) {
  BbmHeaderFields f;
  f.dataType = bbm::kUnattributed;
  f.projection = zone;
  BbmRecordWriter w(f);
  w.AddPoint(1, 48000000, 499000000, {});
  w.AddEndMark();
  w.Save(path.string());
  return path.string();
}

TEST_F(ConvertToolsTest, ReadOnlyMapIsSkippedAndCounted) {
  const std::string a = WriteMap(maps_ / "a.bbm", 15);
  const std::string b = WriteMap(maps_ / "b.bbm", 15);
  fs::permissions(b, fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
  ui_.ExpectMessage(
      "File is read-only",
      {b + " is read only. TARNO cannot reproject a read-only file.",
       "Note: If the file is on a read-only device it must be copied to the hard disk "
       "first and its read-only attribute removed."});
  ui_.ExpectMessage("Reproject Complete",
                    {"1 of 2 files reprojected to:", " 2202 - MINNESOTA       CENTRAL         "});
  auto ctx = Context([&](const Call& c) {
    test::WriteFile(c.args[1], "reprojected");
    return 0;
  });
  const auto outcome = ReprojectFiles(ctx, {a, b}, 15, 2202, Datum::NAD27);
  ui_.Verify();
  EXPECT_EQ(outcome.reprojected, 1);
  EXPECT_EQ(outcome.total, 2);
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].program, "bbmproject");
  EXPECT_EQ(calls_[0].args[0], (temp_ / "TEMP-IN.BBM").string());
  EXPECT_EQ(calls_[0].args[1], (temp_ / "TEMP-OUT.BBM").string());
  EXPECT_EQ(calls_[0].args[4], (bin_ / "nad27sp").string());
  // The map was replaced, its old form kept as .old.
  EXPECT_EQ(test::ReadFile(a), "reprojected");
  EXPECT_EQ(ScanBbm(test::ReadFile(maps_ / "a.old"), "a.old").projection, 15);
}

TEST_F(ConvertToolsTest, Nad83PassesTheNad83DirectoryToBothPrograms) {
  const std::string map = WriteMap(maps_ / "roads.bbm", 15);
  const std::string image = Touch(maps_ / "photo.tif");
  WorldFile w;
  w.C = 480000;
  w.F = 4990000;
  WriteWorldFile(maps_ / "photo.tfw", w);
  RasterProjParameters seen;
  auto ctx = Context([&](const Call& c) {
    if (c.program == "rasterproject") {
      seen = ReadRasterProjFile(c.cwd / c.args[0]);
      EXPECT_TRUE(fs::exists(seen.input));
    } else {
      fs::copy_file(c.args[0], c.args[1]);
    }
    return 0;
  });
  ui_.ExpectMessage("Reproject Complete",
                    {"2 of 2 files reprojected to:", " 2202 - MINNESOTA       CENTRAL         "});
  ReprojectFiles(ctx, {map, image}, 15, 2202, Datum::NAD83);
  ui_.Verify();
  ASSERT_EQ(calls_.size(), 2u);
  EXPECT_EQ(calls_[0].args[4], (bin_ / "nad83sp").string());
  EXPECT_EQ(calls_[1].args, (std::vector<std::string>{"RasterProj.dat"}));
  EXPECT_EQ(seen.datumDirectory, (bin_ / "nad83sp").string());
  EXPECT_EQ(seen.fromCode, 15);
  EXPECT_EQ(seen.toCode, 2202);
  EXPECT_EQ(seen.output, maps_ / "photo.tfw");
  EXPECT_NE(seen.input.filename().string().find("_temp_rpj."), std::string::npos);
  EXPECT_FALSE(fs::exists(seen.input));  // the temporary copy is gone
  EXPECT_TRUE(fs::exists(maps_ / "photo.old"));
}

TEST_F(ConvertToolsTest, ReprojectDialogOpensWithNad27AndHandsOnItsChoice) {
  WriteMap(maps_ / "a.bbm", 15);
  Touch(maps_ / "notes.txt");
  ui_.ExpectModal<ReprojectMapsDialog>("ReprojectMaps", [&](ReprojectMapsDialog& d) {
    EXPECT_EQ(d.datum, Datum::NAD27);
    EXPECT_EQ(d.PopulateList().size(), 171u);
    d.SourcePath = maps_.string();
    EXPECT_EQ(d.SourceFiles(), (std::vector<std::string>{"a.bbm"}));
    d.SelectedFiles = {"a.bbm"};
    d.SourceProjection = *ProjectionIndexOfCode(15);
    d.TargetProjection = *ProjectionIndexOfCode(2202);
    d.datum = Datum::NAD83;
    d.Result = 1;
  });
  ui_.ExpectMessageTitled("Reproject Complete");
  auto ctx = Context([&](const Call& c) {
    fs::copy_file(c.args[0], c.args[1]);
    return 0;
  });
  const auto outcome = REPROJECT_Click(ctx);
  ui_.Verify();
  EXPECT_EQ(outcome.reprojected, 1);
  ASSERT_EQ(calls_.size(), 1u);
  EXPECT_EQ(calls_[0].args[2], "15");
  EXPECT_EQ(calls_[0].args[3], "2202");
  EXPECT_EQ(calls_[0].args[4], (bin_ / "nad83sp").string());
}

TEST_F(ConvertToolsTest, MapTargetStartsFromTheMapsZoneAndAMissingProgramSkipsTheMap) {
  const std::string map = WriteMap(maps_ / "a.bbm", 2202);
  fs::remove(bin_ / "bbmproject");
  ui_.ExpectModal<MapTargetDialog>("MapTarget", [&](MapTargetDialog& d) {
    EXPECT_EQ(d.SourceProjection, *ProjectionIndexOfCode(2202));
    d.TargetProjection = *ProjectionIndexOfCode(15);
    d.Result = 1;
  });
  ui_.ExpectMessage("Executable Missing", {"bbmproject does not exist in the tarno directory!"});
  ui_.ExpectMessage("Reproject Complete",
                    {"0 of 1 files reprojected to:", "   15 - UTM ZONE 15                     "});
  auto ctx = Context();
  ReprojectWithMapTarget(ctx, {map});
  ui_.Verify();
  EXPECT_TRUE(calls_.empty());
}

// The real programs of the build behind the tool.
TEST_F(ConvertToolsTest, ShapeToolRunsTheRealProgram) {
  const fs::path shp = maps_ / "wells.shp";
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(shp.string()), CShapeFile::kCreate, ShapeType::Point);
    f.Add(CPoint(10, 20));
    f.Add(CPoint(30, 40));
  }
  const std::string out = (maps_ / "wells.bbm").string();
  ExpectStart("Shapefile to BBM Conversion", shp.string(), out);
  ui_.ExpectMessageTitled("Conversion Complete");
  ConvertContext ctx{ui_, TARNO_BIN_DIR, temp_, {}, (dir_ / "TARNO.def").string()};
  ToolsConvertShape(ctx);
  ui_.Verify();
  BBMap map;
  map.Connect(out);
  ASSERT_TRUE(map.Connected());
  EXPECT_EQ(map.Header().PointCount, 2);
}

}  // namespace
}  // namespace tarno
