// Replays the seed corpus of the xml fuzz target (fuzz/xml_fuzz.cpp) through the
// reader, split as the target splits it: the first byte chooses the kind and the
// schema check. Each seed must load or fail with a reason; a loaded one writes back
// and reads again the same.
#include <gtest/gtest.h>

#include <filesystem>

#include "exchange/xml_document.h"
#include "support/temp_dir.h"

namespace tarno::exchange {
namespace {

namespace fs = std::filesystem;

TEST(XmlCorpusTest, EverySeedLoadsOrFailsWithAReasonAndRoundTrips) {
  const fs::path corpus = fs::path(TARNO_TEST_DATA_DIR) / "xml_corpus";
  const fs::path schemas = fs::path(TARNO_SOURCE_DIR) / "schemas";
  int seeds = 0, loaded = 0;
  for (const auto& entry : fs::directory_iterator(corpus)) {
    const std::string bytes = test::ReadFile(entry.path());
    ASSERT_FALSE(bytes.empty()) << entry.path();
    ++seeds;
    const auto first = static_cast<unsigned char>(bytes[0]);
    const XmlKind kind = static_cast<XmlKind>((first & 0x7f) % 3);
    const fs::path schema = schemas / KindText(kind).schema;
    const LoadedDocument doc = LoadElementDocument(std::string_view(bytes).substr(1), kind,
                                                   (first & 0x80) ? &schema : nullptr);
    if (doc.status != LoadStatus::Loaded) {
      EXPECT_FALSE(doc.reason.empty()) << entry.path();
      continue;
    }
    ++loaded;
    std::vector<DocumentElement> elements;
    for (const ReadElement& e : doc.document.elements)
      elements.push_back({e.label, e.fields, e.vertices});
    const LoadedDocument back = LoadElementDocument(ElementDocumentText(kind, true, true, elements),
                                                    kind, (first & 0x80) ? &schema : nullptr);
    ASSERT_EQ(back.status, LoadStatus::Loaded) << entry.path() << ": " << back.reason;
    ASSERT_EQ(back.document.elements.size(), elements.size());
    for (std::size_t i = 0; i < elements.size(); ++i) {
      EXPECT_EQ(back.document.elements[i].label, elements[i].label);
      EXPECT_EQ(back.document.elements[i].fields, elements[i].fields);
      EXPECT_EQ(back.document.elements[i].vertices, elements[i].vertices);
    }
  }
  EXPECT_GE(seeds, 8);
  EXPECT_GE(loaded, 4);
}

TEST(XmlCorpusTest, ReaderKeepsWhatTheFileSaysAndNamesBadVertices) {
  const std::string text =
      "<LinesinkStringFile version=\"70000\"><BasemapUnits> Feet </BasemapUnits>"
      "<LinesinkString><PID>9</PID><Label> a b </Label><Width>2</Width>"
      "<Vertices><Vertex><X>1</X><Y>2</Y></Vertex><Vertex><X>1</X></Vertex>"
      "<Vertex><X>x1</X><Y>0</Y></Vertex></Vertices></LinesinkString>"
      "<Other/></LinesinkStringFile>";
  const LoadedDocument doc = LoadElementDocument(text, XmlKind::Linesink, nullptr);
  ASSERT_EQ(doc.status, LoadStatus::Loaded);
  EXPECT_EQ(doc.document.version, 32767);  // beyond a 16-bit number: its end
  EXPECT_FALSE(doc.document.computationalUnits.has_value());
  EXPECT_EQ(doc.document.basemapUnits, std::optional<std::string>("Feet"));
  ASSERT_EQ(doc.document.elements.size(), 1u);
  const ReadElement& e = doc.document.elements[0];
  EXPECT_EQ(e.label, " a b ");
  EXPECT_EQ(e.fields,
            (std::vector<std::pair<std::string, std::string>>{{"PID", "9"}, {"Width", "2"}}));
  EXPECT_EQ(e.vertices, (std::vector<std::pair<double, double>>{{1, 2}}));
  EXPECT_EQ(e.badVertices, (std::vector<std::string>{"vertex 2: Y is missing",
                                                     "vertex 3: X 'x1' is not a number"}));
  // Another root holds none of the kind's elements.
  EXPECT_TRUE(LoadElementDocument(text, XmlKind::Barrier, nullptr).document.elements.empty());
}

}  // namespace
}  // namespace tarno::exchange
