// libFuzzer target for the reader of the XML element files (the parse, the schema
// check against the shipped schemas and the reading of the document): any bytes must
// load or fail without a crash, a hang or a sanitizer report; what loads must hold
// finite vertices, and must write back and read again the same.
//
// Input layout: the first byte chooses the kind (its low seven bits modulo 3: barriers,
// inhomogeneities, line-sink strings) and, by its bit 7, whether the schema is
// checked; the rest is the file. tests/exchange/xml_corpus_test.cpp replays the seed
// corpus the same way.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>

#include "src/exchange/xml_document.h"

using namespace tarno::exchange;

namespace {

// The schemas of the source tree: TARNO_SCHEMA_DIR when set, else beside fuzz/.
std::filesystem::path SchemaDir() {
  if (const char* env = std::getenv("TARNO_SCHEMA_DIR")) return env;
  return std::filesystem::path(__FILE__).parent_path().parent_path() / "schemas";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) return 0;
  const XmlKind kind = static_cast<XmlKind>((data[0] & 0x7f) % 3);
  const bool checked = (data[0] & 0x80) != 0;
  const std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);
  static const std::filesystem::path dir = SchemaDir();
  const std::filesystem::path schema = dir / KindText(kind).schema;
  const LoadedDocument loaded = LoadElementDocument(text, kind, checked ? &schema : nullptr);
  if (loaded.status != LoadStatus::Loaded) {
    if (loaded.reason.empty()) std::abort();  // every failure says why
    return 0;
  }
  const ReadDocument& doc = loaded.document;
  std::vector<DocumentElement> elements;
  for (const ReadElement& e : doc.elements) {
    for (const auto& [x, y] : e.vertices)
      if (!std::isfinite(x) || !std::isfinite(y)) std::abort();
    elements.push_back({e.label, e.fields, e.vertices});
  }
  // Written back, the document reads again with the same elements.
  const std::string again = ElementDocumentText(kind, true, false, elements);
  const LoadedDocument reread = LoadElementDocument(again, kind, nullptr);
  if (reread.status != LoadStatus::Loaded) std::abort();
  const ReadDocument& back = reread.document;
  if (back.version != kElementFileVersion || back.elements.size() != elements.size()) std::abort();
  if (back.computationalUnits != std::optional<std::string>("Meters")) std::abort();
  if (back.basemapUnits != std::optional<std::string>("Feet")) std::abort();
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const ReadElement& b = back.elements[i];
    if (b.label != elements[i].label || b.fields != elements[i].fields ||
        b.vertices != elements[i].vertices || !b.badVertices.empty())
      std::abort();
  }
  return 0;
}
