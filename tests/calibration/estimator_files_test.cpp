// The estimator's side of the PEST files: the control file read back, parameter
// fields filled to their width, instructions read from an extract file, and the
// errors that name the file and the line.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "calibration/estimator_files.h"
#include "core/error.h"
#include "support/temp_dir.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

const fs::path kData = fs::path(TARNO_TEST_DATA_DIR);

void Write(const fs::path& p, const std::string& text) {
  std::ofstream out(p, std::ios::binary | std::ios::trunc);
  out << text;
}

std::string ErrorOf(const std::function<void()>& f) {
  try {
    f();
  } catch (const Error& e) {
    return e.what();
  }
  return "(no error)";
}

TEST(ControlFileTest, ReadsTheControlFileThePestWriterWrites) {
  const ControlFile cf = ReadControlFile(kData / "golden.pst");
  ASSERT_EQ(cf.parameters.size(), 6u);
  EXPECT_EQ(cf.parameters[0].name, "Kaq");
  EXPECT_EQ(cf.parameters[0].transform, "log");
  EXPECT_DOUBLE_EQ(cf.parameters[0].lower, 1);
  EXPECT_DOUBLE_EQ(cf.parameters[0].upper, 100);
  // Recharge goes to the solver as an extraction rate: the scale turns the sign.
  EXPECT_EQ(cf.parameters[4].name, "Rch2");
  EXPECT_DOUBLE_EQ(cf.parameters[4].value, -0.001);
  EXPECT_DOUBLE_EQ(cf.parameters[4].scale, -1.0);
  EXPECT_DOUBLE_EQ(ModelValue(cf.parameters[4], -0.001), 0.001);
  ASSERT_EQ(cf.observations.size(), 3u);
  EXPECT_EQ(cf.observations[2].name, "TG1");
  EXPECT_DOUBLE_EQ(cf.observations[2].value, 300);
  EXPECT_DOUBLE_EQ(cf.observations[2].weight, 0.5);
  EXPECT_EQ(cf.modelCommand, "T-PEST.bat");
  EXPECT_EQ(cf.templateFile, kData / "m.tpl");
  EXPECT_EQ(cf.modelInput, "m.DAT");
  EXPECT_EQ(cf.instructionFile, kData / "m.ins");
  EXPECT_EQ(cf.modelOutput, "m.XTR");
}

TEST(ControlFileTest, BadLinesAreNamedByFileAndLine) {
  test::TempDir dir("est-pst");
  const std::string head = "pcf\n* parameter data\n";
  const std::string tail =
      "* observation data\nh1 1.5\t1.0 Head\n* model command line\nrun.sh\n* model input/output\n"
      "m.tpl m.DAT\nm.ins m.XTR\n";
  struct Case {
    std::string parameterLine;
    std::string expected;
  } cases[] = {
      {"k\tlog factor ten\t1\t100\tKh 1.0 0.0 1", "line 3: the value \"ten\" is no number"},
      {"k\ttied factor 10\t1\t100\tKh 1.0 0.0 1", "line 3: tied parameters are not supported"},
      {"k\tlog factor 10\t0\t100\tKh 1.0 0.0 1",
       "line 3: a log-transformed parameter needs positive bounds"},
      {"k\tnone factor 500\t1\t100\tKh 1.0 0.0 1", "line 3: the value lies outside its bounds"},
      {"k\tnone factor 5\t10\t1\tKh 1.0 0.0 1", "line 3: the lower bound exceeds the upper bound"},
      {"k\tnone factor 5", "line 3: a parameter line has at least 9 items"},
  };
  for (const Case& c : cases) {
    Write(dir.Path() / "x.pst", head + c.parameterLine + "\n" + tail);
    const std::string e = ErrorOf([&] { ReadControlFile(dir.Path() / "x.pst"); });
    EXPECT_NE(e.find((dir.Path() / "x.pst").string()), std::string::npos) << e;
    EXPECT_NE(e.find(c.expected), std::string::npos) << e;
  }
  Write(dir.Path() / "x.pst", "pcf\n* parameter data\nk\tnone factor 5\t1\t10\tKh 1.0 0.0 1\n" +
                                  tail.substr(0, tail.find("* model")));
  EXPECT_NE(ErrorOf([&] { ReadControlFile(dir.Path() / "x.pst"); }).find("no model command line"),
            std::string::npos);
  Write(dir.Path() / "x.pst", "not a control file\n");
  EXPECT_NE(ErrorOf([&] { ReadControlFile(dir.Path() / "x.pst"); }).find("line 1"),
            std::string::npos);
  EXPECT_NE(ErrorOf([&] { ReadControlFile(dir.Path() / "missing.pst"); }).find("missing.pst"),
            std::string::npos);
}

TEST(TemplateTest, FieldsTakeTheMostDigitsThatFitTheirWidth) {
  EXPECT_EQ(FieldNumber(20, 14), "            20");
  EXPECT_EQ(FieldNumber(-0.0015, 16), "         -0.0015");
  // The solver's fields are 14 and 16 wide: eight or more significant digits.
  const std::string f = FieldNumber(1.0 / 3.0, 14);
  EXPECT_EQ(f.size(), 14u);
  EXPECT_NEAR(std::stod(f), 1.0 / 3.0, 1e-12);
  const std::string g = FieldNumber(-1.234567890123e-25, 14);
  EXPECT_EQ(g.size(), 14u);
  EXPECT_NEAR(std::stod(g) / -1.234567890123e-25, 1, 1e-6);
  EXPECT_THROW(FieldNumber(-1.5e-100, 4), Error);
}

TEST(TemplateTest, FillsPaddedFieldsOfEitherWidthAndDropsTheHeader) {
  const std::string tpl =
      "ptf !\r\n"
      " permeability !Kaq         !\r\n"
      " transmissivity -9999 -9999 -9999 ! RCH          ! -9999 IN_000003_0000\r\n";
  const std::string out = FillTemplate(tpl, {{"KAQ", 12.5}, {"RCH", -0.0005}}, "m.tpl");
  EXPECT_EQ(out,
            " permeability           12.5\r\n"
            " transmissivity -9999 -9999 -9999          -0.0005 -9999 IN_000003_0000\r\n");
  const std::string e1 = ErrorOf([&] { FillTemplate(tpl, {{"KAQ", 1}}, "m.tpl"); });
  EXPECT_NE(e1.find("m.tpl, line 3"), std::string::npos) << e1;
  EXPECT_NE(e1.find("\"RCH\""), std::string::npos) << e1;
  const std::string e2 = ErrorOf([&] { FillTemplate("ptf !\nx !open\n", {}, "m.tpl"); });
  EXPECT_NE(e2.find("line 2: a parameter field is not closed"), std::string::npos) << e2;
  EXPECT_NE(ErrorOf([&] { FillTemplate("pcf\n", {}, "m.tpl"); }).find("line 1"), std::string::npos);
}

// Extract-file lines as the solver writes them: the head of column 123 to 136.
std::string PointRecord(double head, const std::string& label) {
  char buf[300];
  std::snprintf(buf, sizeof buf, "@%15.6E", 100.0);
  std::string s = buf;
  for (int f = 2; f <= 14; ++f) {
    std::snprintf(buf, sizeof buf, ",%14.6E", f == 9 ? head : 1.0 * f);
    s += buf;
  }
  return s + "," + label;
}

TEST(InstructionTest, ReadsTheHeadsOfTheExtractFile) {
  const std::string xtr = "* data points\r\n" + PointRecord(19.59899, "TP_000001") + "\r\n" +
                          PointRecord(-3.5, "TP_000002") + "\r\n* head specified wells\r\n";
  const std::string ins = "pif ~\r\n~*~\r\nl1 [TP1]123:136\r\nl1 [tp2]123:136\r\n";
  const auto values = ReadObservations(ins, "m.ins", xtr, "m.XTR");
  ASSERT_EQ(values.size(), 2u);
  EXPECT_DOUBLE_EQ(values.at("TP1"), 19.59899);
  EXPECT_DOUBLE_EQ(values.at("TP2"), -3.5);

  // The wrong columns, a marker not there, a file too short, an unknown instruction.
  std::string e =
      ErrorOf([&] { ReadObservations("pif ~\n~*~\nl1 [TP1]120:130\n", "m.ins", xtr, "m.XTR"); });
  EXPECT_NE(e.find("m.XTR, line 2: columns 120:130 hold no number for \"TP1\""), std::string::npos)
      << e;
  e = ErrorOf([&] { ReadObservations("pif ~\n~nowhere~\n", "m.ins", xtr, "m.XTR"); });
  EXPECT_NE(e.find("the marker \"nowhere\" of m.ins, line 2, was not found"), std::string::npos)
      << e;
  e = ErrorOf([&] { ReadObservations("pif ~\nl9 [TP1]123:136\n", "m.ins", xtr, "m.XTR"); });
  EXPECT_NE(e.find("m.XTR: the file ends"), std::string::npos) << e;
  e = ErrorOf([&] { ReadObservations("pif ~\nl1 w !TP1!\n", "m.ins", xtr, "m.XTR"); });
  EXPECT_NE(e.find("m.ins, line 2: unknown instruction"), std::string::npos) << e;
}

TEST(ParFileTest, WritesOneLinePerParameterWithItsScaleAndOffset) {
  std::vector<ControlParameter> p(2);
  p[0].name = "Kaq";
  p[1].name = "Rupl";
  p[1].scale = -1;
  const std::string text = ParFileText(p, {20.000021018796566, 4.999957378454983e-04});
  EXPECT_EQ(text,
            "single point\r\n"
            "Kaq           2.000002101879657E+01  1.00000E+00  0.00000E+00\r\n"
            "Rupl          4.999957378454983E-04 -1.00000E+00  0.00000E+00\r\n");
}

}  // namespace
}  // namespace tarno::testing
