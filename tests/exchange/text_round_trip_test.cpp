// Both example projects' elements through each kind of text element file into an
// empty project: what the file kind carries comes back as it was.
#include <gtest/gtest.h>

#include "elements/element_store.h"
#include "exchange/text_exchange.h"
#include "support/scripted_ui.h"
#include "text_test_support.h"

namespace tarno::testing {
namespace {

using exchange::WellKind;

class TextRoundTripTest : public TwoProjects, public ::testing::WithParamInterface<const char*> {
 protected:
  void SetUp() override {
    TwoProjects::SetUp();
    LoadExampleSql(source_, GetParam());
    // The wells' screens are checked against the aquifer of the project they come to.
    Statement st = source_.Prepare("select AQBase, AQThickness from Model");
    ASSERT_TRUE(st.Step());
    Statement up = target_.PrepareRaw("update Model set AQBase = ?1, AQThickness = ?2");
    up.Bind(1, st.GetDouble(0)).Bind(2, st.GetText(1));
    up.Run();
  }
};

bool NearField(const Element& e) { return e.row.Integer("Farfield") == 0; }

TEST_P(TextRoundTripTest, LssCarriesTheNearFieldStringsWithEveryField) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("HUC Export");
  ASSERT_TRUE(exchange::ExportLss(source_, ui, File("unit.lss")).has_value());
  ui.ExpectMessageTitled("Import Complete");
  const auto r = exchange::ImportLss(target_, ui, File("unit.lss"));
  ui.Verify();
  EXPECT_FALSE(r.stopped);
  const auto before = ElementLines(source_, ElementKind::Linesink, {}, NearField);
  EXPECT_GT(before.size(), 3u);
  EXPECT_EQ(ElementLines(target_, ElementKind::Linesink), before);
}

TEST_P(TextRoundTripTest, InhCarriesEveryInhomogeneityWithEveryField) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("Inhomogeneities Written", {"1 Inhomogeneities were written."});
  ASSERT_EQ(exchange::ExportInh(source_, ui, File("areas.inh")), 1);
  ui.ExpectMessage("Import Complete", {"1 inhomogeneities were read in."});
  exchange::ImportInh(target_, ui, File("areas.inh"));
  ui.Verify();
  EXPECT_EQ(ElementLines(target_, ElementKind::Inhomogeneity),
            ElementLines(source_, ElementKind::Inhomogeneity));
}

TEST_P(TextRoundTripTest, HucCarriesBothFieldsOfStringsAndTheInhomogeneities) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("HUC Export");
  ASSERT_TRUE(exchange::ExportHuc(source_, ui, File("model.huc")).has_value());
  ui.ExpectMessage("HUC Import Complete", {"Import of " + File("model.huc") + " complete.",
                                           "1 Nearfield linesink files (.lss) were read in.",
                                           "1 Farfield linesink files (.lss) were read in."});
  exchange::ImportHuc(target_, ui, File("model.huc"));
  ui.Verify();
  EXPECT_EQ(ElementLines(target_, ElementKind::Linesink),
            ElementLines(source_, ElementKind::Linesink));
  EXPECT_EQ(ElementLines(target_, ElementKind::Inhomogeneity),
            ElementLines(source_, ElementKind::Inhomogeneity));
}

TEST_P(TextRoundTripTest, WellsOfBothKindsComeBackWithWhatTheFileCarries) {
  const std::vector<std::string> carried = {"Label",   "Head",       "Radius",
                                            "TopElev", "BottomElev", "HeadSpecified"};
  for (WellKind kind : {WellKind::Discharge, WellKind::Head}) {
    const std::string name = kind == WellKind::Head ? "head.wl" : "discharge.wl";
    ScriptedUserInterface ui;
    ui.ExpectMessageTitled("Wells Written");
    ASSERT_TRUE(exchange::ExportWells(source_, ui, File(name), kind).has_value());
    ui.ExpectMessageTitled("Import Complete");
    const auto r = exchange::ImportWells(target_, ui, File(name), kind);
    ui.Verify();
    EXPECT_GT(r.read, 0);
  }
  EXPECT_EQ(ElementLines(target_, ElementKind::Well, carried),
            ElementLines(source_, ElementKind::Well, carried));
}

TEST_P(TextRoundTripTest, TestPointsComeBackWithTheirTypesAndObservations) {
  const std::vector<std::string> carried = {"Label", "ObsHead", "ObsStreamFlow", "Type"};
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Test Points Written");
  ASSERT_TRUE(exchange::ExportTestPoints(source_, ui, File("obs.tp")).has_value());
  ui.ExpectMessageTitled("Import Complete");
  exchange::ImportTestPoints(target_, ui, File("obs.tp"));
  ui.Verify();
  EXPECT_EQ(ElementLines(target_, ElementKind::TestPoint, carried),
            ElementLines(source_, ElementKind::TestPoint, carried));
}

TEST_P(TextRoundTripTest, BoundariesRoutingLinksAndTextLabelsComeBack) {
  // The examples have neither boundaries nor text labels: a unit around everything
  // with its far-field and model boundaries, a routing link, two labels.
  auto domain = [&](const std::string& label, bool far, bool near, double pad) {
    Element d = NewElement(ElementKind::Domain, {{0, 0, 0, -1e7 - pad, -1e7 - pad},
                                                 {0, 0, 0, 1e7 + pad, -1e7 - pad},
                                                 {0, 0, 0, 1e7 + pad, 1e8 + pad},
                                                 {0, 0, 0, -1e7 - pad, 1e8 + pad}});
    d.row.Set("Label", label);
    d.row.Set("FarFieldBoundary", far);
    d.row.Set("NearFieldHU", near);
    d.row.Set("Color", std::int64_t{255});
    Insert(source_, d);
  };
  domain("Valley", false, true, 0);
  domain("Far_Field_Valley", true, false, 10);
  domain("Model_Valley", false, false, 20);
  std::vector<Element> strings = LoadAll(source_, ElementKind::Linesink);
  std::vector<Element> near;
  for (Element& e : strings)
    if (NearField(e)) near.push_back(e);
  ASSERT_GE(near.size(), 2u);
  near[0].row.Set("Routing", std::int64_t{1});
  near[0].row.Set("RoutePID", near[1].key);
  near[0].row.Set("RouteVID", near[1].vertices.back().VID);
  Update(source_, near[0]);
  // A .tx file keeps six significant digits of a position (mask "0.00000E+00 ").
  for (const auto& [text, type] : {std::pair{"Wabash Valley", 1}, std::pair{"Well field", 0}}) {
    Element t = NewElement(ElementKind::Text);
    t.row.Set("Text", text);
    t.row.Set("X", 457250.0);
    t.row.Set("Y", 4393130.0);
    t.row.Set("LabelType", std::int64_t{type});
    Insert(source_, t);
  }

  ScriptedUserInterface ui;
  ui.ExpectMessage("HUC Export",
                   {"Export of " + File("unit.lss") + " complete.",
                    "3 hydrologic unit boundaries and " + std::to_string(near.size()) +
                        " linesink strings were written."});
  exchange::ExportLss(source_, ui, File("unit.lss"));
  ui.ExpectMessageTitled("Labels Written");
  exchange::ExportTextLabels(source_, ui, File("labels.tx"));
  ui.ExpectMessageTitled("Import Complete");
  exchange::ImportLss(target_, ui, File("unit.lss"));
  ui.ExpectMessage("Import Comlpete", {"2 labels were read in."});
  exchange::ImportTextLabels(target_, ui, File("labels.tx"));
  ui.Verify();

  EXPECT_EQ(ElementLines(target_, ElementKind::Domain), ElementLines(source_, ElementKind::Domain));
  const auto lines = ElementLines(target_, ElementKind::Linesink);
  EXPECT_EQ(lines, ElementLines(source_, ElementKind::Linesink, {}, NearField));
  EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const std::string& l) {
    return l.find("route=" + near[1].Label() + "@" + std::to_string(near[1].vertices.size() - 1)) !=
           std::string::npos;
  })) << "the routing link names the same string and vertex";
  EXPECT_EQ(ElementLines(target_, ElementKind::Text), ElementLines(source_, ElementKind::Text));
}

TEST_P(TextRoundTripTest, ImportingTheSameFilesAgainAddsNothing) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("HUC Export");
  exchange::ExportHuc(source_, ui, File("model.huc"));
  ui.ExpectMessageTitled("Wells Written");
  exchange::ExportWells(source_, ui, File("w.wl"), WellKind::Discharge);
  for (int pass = 0; pass < 2; ++pass) {
    ui.ExpectMessageTitled("HUC Import Complete");
    const auto huc = exchange::ImportHuc(target_, ui, File("model.huc"));
    ui.ExpectMessageTitled(pass == 0 ? "Import Complete" : "Identical Wells");
    const auto wl = exchange::ImportWells(target_, ui, File("w.wl"), WellKind::Discharge);
    if (pass == 1) {
      EXPECT_EQ(huc.read, 0);
      EXPECT_GT(huc.skipped, 0);
      EXPECT_EQ(wl.read, 0);
      EXPECT_GT(wl.skipped, 0);
    }
  }
  ui.Verify();
  EXPECT_EQ(ElementLines(target_, ElementKind::Linesink),
            ElementLines(source_, ElementKind::Linesink));
}

INSTANTIATE_TEST_SUITE_P(Examples, TextRoundTripTest,
                         ::testing::Values("vincennes.sql", "basin-and-range.sql"));

}  // namespace
}  // namespace tarno::testing
