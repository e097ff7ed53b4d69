// The XML element files as documents: what each of the three kinds is called in
// its file, the writing of a document (libxml2 DOM, indented with tabs and CR LF),
// and the reading of one with its schema check. No project file here: the rows come
// in as texts and go out as texts (xml_elements.h joins them to the project).
//
// A document of line-sink strings:
//
//     <?xml version='1.0'?>
//     <LinesinkStringFile version="1">
//     	<ComputationalUnits>Meters</ComputationalUnits>
//     	<BasemapUnits>Feet</BasemapUnits>
//     	<LinesinkString>
//     		<Label>Creek</Label>
//     		<HeadSpecified>1</HeadSpecified>
//     		...
//     		<Vertices>
//     			<Vertex>
//     				<X>1200.5</X>
//     				<Y>300</Y>
//     			</Vertex>
//     		</Vertices>
//     	</LinesinkString>
//     </LinesinkStringFile>
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "elements/kind.h"

namespace tarno::exchange {

// The three kinds, in the order in which an export of all writes them.
enum class XmlKind { Barrier, Inhomogeneity, Linesink };

inline constexpr int kElementFileVersion = 1;

// The names and words of a kind, as its files and messages use them.
struct XmlKindText {
  XmlKind kind;
  ElementKind element;
  const char* extension;       // "lss.xml"
  const char* root;            // "LinesinkStringFile"
  const char* node;            // "LinesinkString"
  const char* schema;          // "LSS_XML_File_Format.xsd"
  const char* word;            // "linesink string": the conflict rules' name of the kind
  const char* article;         // "a"
  const char* plural;          // "linesink strings"
  const char* exportedDetail;  // "Linesink string '": "... was successfully exported."
  const char* importedDetail;  // "Linesink string '": "... was successfully imported."
  const char* noVertices;      // "The linesink string '" + label + this
  const char* noVerticesEnd;   // "' was not imported because it did not have any vertices!"
  const char* invalidName;     // ".lss.xml": "... because it was not a valid .lss.xml file!"
  const char* couldNotOpen;    // "Could not open the LinesinkString file "
  const char* fieldWord;       // "linesink string": "... while importing linesink string ..."
};
const XmlKindText& KindText(XmlKind kind);
// The kind of an extension as ExtensionOfFile gives it ("lss.xml"); none for others.
std::optional<XmlKind> XmlKindFromExtension(std::string_view extension);

// One element of a document: its label, its fields in order as texts (neither
// PID nor Label among them), its vertices.
struct DocumentElement {
  std::string label;
  std::vector<std::pair<std::string, std::string>> fields;
  std::vector<std::pair<double, double>> vertices;
};

// The text of a whole document of `kind`, CR LF line ends, UTF-8. X and Y are
// written in the shortest form that reads back as the same number.
std::string ElementDocumentText(XmlKind kind, bool computeMeters, bool basemapMeters,
                                const std::vector<DocumentElement>& elements);

// One element as read from a file.
struct ReadElement {
  bool hasLabel = false;
  std::string label;
  // Every child other than Label and Vertices, in the file's order, PID included:
  // the caller decides what to take out.
  std::vector<std::pair<std::string, std::string>> fields;
  std::vector<std::pair<double, double>> vertices;
  // Vertices whose X or Y is no number: "vertex 3: X 'abc' is not a number".
  std::vector<std::string> badVertices;
};

struct ReadDocument {
  // The root's version attribute as a 16-bit integer; 0 when it is missing or no
  // number, the nearest end of the range when it lies beyond.
  int version = 0;
  // The texts of ComputationalUnits and BasemapUnits; none when the element is missing.
  std::optional<std::string> computationalUnits;
  std::optional<std::string> basemapUnits;
  // The nodes that "<root>/<node>" selects: none when the root is another.
  std::vector<ReadElement> elements;
};

enum class LoadStatus {
  Loaded,           // well formed and (when a schema was given) valid
  NotLoaded,        // not well formed, or unreadable
  SchemaNotLoaded,  // the schema file is missing or is no schema
  Invalid,          // well formed but not valid by the schema
};

struct LoadedDocument {
  LoadStatus status = LoadStatus::NotLoaded;
  // Why it failed, from the parser or the validator, with the line where it has one:
  // "line 4: Opening and ending tag mismatch: Label line 4 and LinesinkString".
  std::string reason;
  ReadDocument document;  // filled when Loaded
};

// Parses `text` (no network access, no external entities), checks it against the
// schema file `schema` when one is given, and reads it as a document of `kind`.
LoadedDocument LoadElementDocument(std::string_view text, XmlKind kind,
                                   const std::filesystem::path* schema);

// The shortest text of a number that reads back as the same number ("0.1", "1e-05").
std::string ShortestNumberText(double value);

}  // namespace tarno::exchange
