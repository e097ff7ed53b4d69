#include "exchange/xml_elements.h"

#include <fstream>
#include <sstream>

#include "core/error.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "elements/exchange_rows.h"

namespace tarno::exchange {

namespace {

namespace fs = std::filesystem;

// Fields that a file neither carries nor gives: the key, and a string's routing
// links, which name keys of the project that wrote the file.
bool KeptOut(XmlKind kind, std::string_view field) {
  if (EqualsIgnoreCase(field, "PID")) return true;
  return kind == XmlKind::Linesink &&
         (EqualsIgnoreCase(field, "RoutePID") || EqualsIgnoreCase(field, "RouteVID"));
}

const char* UnitName(bool meters) { return meters ? "Meters" : "Feet"; }

// "Meters" or "Feet" as a file gives it; none for any other text.
std::optional<bool> MetersFromText(const std::string& text) {
  if (EqualsIgnoreCase(text, "Meters")) return true;
  if (EqualsIgnoreCase(text, "Feet")) return false;
  return std::nullopt;
}

struct UnitCheck {
  bool skip = false;
  double factor = 1.0;
};

// One of the two unit checks of an import.
UnitCheck CheckUnits(const std::optional<std::string>& fromFile, bool projectMeters,
                     const std::string& file, const char* missingStart, const char* mismatchStart,
                     const char* convertedWhat, UnitPolicy policy, ExchangeLog& log) {
  UnitCheck check;
  if (!fromFile) {
    log.Warning(missingStart + file + "!" +
                " Please make sure the units in your model match the units in this file.");
    return check;
  }
  const std::optional<bool> fileMeters = MetersFromText(*fromFile);
  if (fileMeters && *fileMeters == projectMeters) return check;
  const std::string mismatch = mismatchStart + std::string(UnitName(projectMeters)) +
                               " but the units specified in the file " + file + " are in " +
                               *fromFile + ".";
  if (!fileMeters || policy == UnitPolicy::Refuse) {
    log.Error(mismatch);
    log.Error("Skipped import of file " + file +
              " because the units did not match those specified in this model.");
    check.skip = true;
    return check;
  }
  log.Warning(mismatch);
  log.Warning("Converted the " + std::string(convertedWhat) + " of the elements in " + file +
              " from " + *fromFile + " to " + UnitName(projectMeters) + ".");
  check.factor = LengthFactor(*fileMeters, projectMeters);
  return check;
}

}  // namespace

int WriteElementFile(Database& db, XmlKind kind, const std::string& file, ExchangeLog& log) {
  const XmlKindText& k = KindText(kind);
  const ProjectUnits units = LoadProjectUnits(db);
  std::vector<DocumentElement> elements;
  const HydrologicUnits hydrologicUnits(db);
  for (const ExchangeRow& row : LoadExchangeRows(db, k.element)) {
    if (row.vertices.empty()) {
      log.Error("Element has no vertices! Did not export " + std::string(k.word) + " '" +
                row.label + "'.");
      continue;
    }
    std::vector<MapPoint> points;
    for (const Vertex& v : row.vertices) points.emplace_back(v.X, v.Y);
    if (!hydrologicUnits.Holds(points)) {
      log.Warning("Did not export " + std::string(k.word) + " '" + row.label +
                  "' because it was not " +
                  "within one of the defined Hydrologic Unit Boundaries.");
      continue;
    }
    DocumentElement e;
    e.label = row.label;
    for (const auto& [name, text] : row.fields)
      if (!KeptOut(kind, name) && !EqualsIgnoreCase(name, "Label"))
        e.fields.emplace_back(name, text);
    e.vertices = points;
    elements.push_back(std::move(e));
    log.Detail(k.exportedDetail + row.label + "' was successfully exported.");
  }
  const std::string text =
      ElementDocumentText(kind, units.computeMeters, units.basemapMeters, elements);
  {
    std::ofstream out(file, std::ios::binary | std::ios::trunc);
    if (out) out << text;
    if (!out) throw Error("Could not write the file " + file);
  }
  const int count = static_cast<int>(elements.size());
  log.Detail("Exported " + std::to_string(count) + " " + k.plural + " to " + file);
  return count;
}

ImportCount ImportElementFile(Database& db, XmlKind kind, const std::string& file,
                              const fs::path& schemaDirectory, ExchangeLog& log, UnitPolicy units) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream text;
  if (in) text << in.rdbuf();
  if (!in || in.bad()) {
    log.Error("Could not open file " + file + "!");
    log.Error("Skipped import of " + file + " because it was not a valid " +
              KindText(kind).invalidName + " file!");
    ImportCount count;
    count.skipped = true;
    return count;
  }
  return ImportElementText(db, kind, text.str(), file, schemaDirectory, log, units);
}

ImportCount ImportElementText(Database& db, XmlKind kind, std::string_view text,
                              const std::string& file, const fs::path& schemaDirectory,
                              ExchangeLog& log, UnitPolicy units) {
  const XmlKindText& k = KindText(kind);
  const std::string word = k.word;
  ImportCount count;
  auto skip = [&] {
    count.skipped = true;
    return count;
  };

  // 1. The schema check (which parses the file too).
  const fs::path schemaPath = schemaDirectory / k.schema;
  const LoadedDocument loaded =
      LoadElementDocument(text, kind, schemaDirectory.empty() ? nullptr : &schemaPath);
  const std::string notValid =
      "Skipped import of " + file + " because it was not a valid " + k.invalidName + " file!";
  switch (loaded.status) {
    case LoadStatus::Loaded: break;
    case LoadStatus::NotLoaded:
      // With the schema check the parse is its first step; without, the load's own.
      if (schemaDirectory.empty())
        log.Error(k.couldNotOpen + file + ": " + loaded.reason);
      else
        log.Error("Could not open file " + file + "! " + loaded.reason);
      log.Error(notValid);
      return skip();
    case LoadStatus::SchemaNotLoaded:
      log.Error("Load XSD failed: " + loaded.reason);
      log.Error(notValid);
      return skip();
    case LoadStatus::Invalid:
      log.Error("The file " + file + " is not valid according to the schema (" +
                schemaPath.string() + ") because: " + loaded.reason);
      log.Error(notValid);
      return skip();
  }
  const ReadDocument& doc = loaded.document;

  // 2. The version.
  if (doc.version != kElementFileVersion) {
    log.Error("Version in the file " + file + " is " + std::to_string(doc.version) +
              " but this version of Tarno expects version " + std::to_string(kElementFileVersion) +
              ".");
    log.Error("Skipped import of file " + file +
              (doc.version > kElementFileVersion
                   ? " because the file is newer than the current version. "
                   : " because the file is older than the current version. "));
    return skip();
  }

  // 3. The units: lengths of other units are converted (or the file refused).
  const ProjectUnits project = LoadProjectUnits(db);
  const UnitCheck compute =
      CheckUnits(doc.computationalUnits, project.computeMeters, file,
                 "Computational units are not specified in ",
                 "Units do not match! The units used for computation in your model is set as ",
                 "computational lengths", units, log);
  if (compute.skip) return skip();
  const UnitCheck basemap = CheckUnits(
      doc.basemapUnits, project.basemapMeters, file, "Basemap units are not specified in ",
      "Units do not match! The distance units for basemaps in your model is set as ", "vertices",
      units, log);
  if (basemap.skip) return skip();

  // 4. Element by element. One transaction for the speed of it; each element is
  // added in its own savepoint, and a failed one leaves the others in place.
  count.total = static_cast<int>(doc.elements.size());
  Transaction tx(db);
  const HydrologicUnits hydrologicUnits(db);
  VertexSets vertexSets(db, k.element);
  for (const ReadElement& e : doc.elements) {
    const std::string& label = e.label;
    if (!e.badVertices.empty()) {
      log.Error("Did not import " + word + " '" + label + "' because its " + e.badVertices.front());
      continue;
    }
    if (e.vertices.empty()) {
      log.Warning(k.noVertices + label + k.noVerticesEnd);
      continue;
    }
    FieldTexts fields;
    for (const auto& [name, value] : e.fields)
      if (!KeptOut(kind, name)) fields.emplace_back(name, value);
    fields.emplace_back("Label", label);
    std::vector<MapPoint> points;
    for (const auto& [x, y] : e.vertices)
      points.emplace_back(x * basemap.factor, y * basemap.factor);
    NewRowResult made = MakeElementFromTexts(k.element, fields, points);
    for (const std::string& name : made.unknownFields)
      log.Warning("Ignored the field '" + name + "' while importing " + k.fieldWord +
                  " because Tarno does not recognize this field.");
    for (const std::string& bad : made.badValues) {
      const auto eq = bad.find('=');
      log.Warning("Ignored the value '" + bad.substr(eq + 1) + "' of the field '" +
                  bad.substr(0, eq) + "' of " + word + " '" + label +
                  "' because it is no value of that field; the field keeps its default.");
    }
    ScaleLengthFields(made.element, compute.factor);
    const int fewest = Info(k.element).minVertices;
    if (static_cast<int>(points.size()) < fewest) {
      log.Warning("Did not import " + word + " '" + label + "' because it has " +
                  std::to_string(points.size()) + " vertices and needs at least " +
                  std::to_string(fewest) + ".");
      continue;
    }
    try {
      // The conflict rules, in their order.
      if (!hydrologicUnits.Holds(points)) {
        log.Warning("Did not import " + word + " '" + label + "' becuase it was not " +
                    "within one of the defined Hydrologic Unit Barriers.");
        continue;
      }
      if (vertexSets.Find(points)) {
        log.Warning("Did not import " + word + " '" + label + "' because " + k.article + " " +
                    word + " already exists with the same set of vertices!");
        continue;
      }
      if (e.hasLabel && !label.empty() && FindSameLabel(db, k.element, label)) {
        log.Warning("The " + word + " '" + label + "' was imported but " + k.article + " " + word +
                    " already exists with this label!");
      }
      if (!e.hasLabel || label.empty()) {
        log.Error("Error: imported element has no label!");
        continue;
      }
      Insert(db, made.element);
      vertexSets.Added(made.element.key, points);
    } catch (const Error& ex) {
      log.Error("Did not import " + word + " '" + label + "': " + ex.what());
      continue;
    }
    log.Detail(k.importedDetail + label + "' was successfully imported.");
    ++count.accepted;
  }
  tx.Commit();
  log.Detail("Imported " + std::to_string(count.accepted) + " from the " +
             std::to_string(count.total) + " " + k.plural + " in " + file);
  return count;
}

}  // namespace tarno::exchange
