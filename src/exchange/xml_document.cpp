#include "exchange/xml_document.h"

#include <libxml/parser.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>
#include <libxml/xmlschemas.h>

#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <memory>

namespace tarno::exchange {

namespace {

const XmlKindText kKinds[] = {
    {XmlKind::Barrier, ElementKind::Barrier, "brr.xml", "HorizontalBarriersFile",
     "HorizontalBarrier", "BRR_XML_File_Format.xsd", "horizontal barrier", "a",
     "horizontal barriers", "Horizontal barrier '", "Horizontal Barrier '",
     "The horizontal barrier '", "'was not imported because it did not have any vertices!",
     ".BRR.XML", "Could not open the Barriers file ", "horizontal barrier"},
    {XmlKind::Inhomogeneity, ElementKind::Inhomogeneity, "inh.xml", "InhomogeneitiesFile",
     "Inhomogeneity", "INH_XML_File_Format.xsd", "inhomogeneity", "an", "inhomogeneities",
     "Inhomogeneity '", "Inhomogeneity '", "The inhomogeneity '",
     "'was not imported because it did not have any vertices!", ".INH.XML",
     "Could not open the Inhomogeneities file ", "inhomogeneity"},
    {XmlKind::Linesink, ElementKind::Linesink, "lss.xml", "LinesinkStringFile", "LinesinkString",
     "LSS_XML_File_Format.xsd", "linesink string", "a", "linesink strings", "Linesink string '",
     "Linesink string '", "The linesink string '",
     "' was not imported because it did not have any vertices!", ".lss.xml",
     "Could not open the LinesinkString file ", "linesink string"},
};

const xmlChar* X(const char* s) { return reinterpret_cast<const xmlChar*>(s); }

struct DocFree {
  void operator()(xmlDoc* d) const { xmlFreeDoc(d); }
};
using DocPtr = std::unique_ptr<xmlDoc, DocFree>;

std::string Trimmed(std::string_view s) {
  const auto first = s.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  const auto last = s.find_last_not_of(" \t\r\n");
  return std::string(s.substr(first, last - first + 1));
}

std::string Content(const xmlNode* node) {
  xmlChar* c = xmlNodeGetContent(node);
  if (c == nullptr) return {};
  std::string s(reinterpret_cast<const char*>(c));
  xmlFree(c);
  return s;
}

bool Named(const xmlNode* node, const char* name) {
  return node->type == XML_ELEMENT_NODE && xmlStrEqual(node->name, X(name));
}

std::string NameOf(const xmlNode* node) { return reinterpret_cast<const char*>(node->name); }

// A libxml2 error as one line: "line 4: <message>".
std::string Describe(const xmlError* e) {
  if (e == nullptr) return {};
  std::string message = e->message != nullptr ? Trimmed(e->message) : std::string("unknown error");
  if (e->line > 0) return "line " + std::to_string(e->line) + ": " + message;
  return message;
}

// Gathers the errors the schema parser and validator report (the first is kept as
// the reason; libxml2 goes on to report the rest).
struct ErrorSink {
  std::string first;
};
// A template so that the handler fits libxml2's handler type, whose error pointer
// became const in later versions.
template <typename ErrorPtr>
void CollectError(void* user, ErrorPtr error) {
  auto* sink = static_cast<ErrorSink*>(user);
  if (sink->first.empty()) sink->first = Describe(error);
}

bool ParseNumberWhole(const std::string& text, double& out) {
  const std::string t = Trimmed(text);
  if (t.empty()) return false;
  const char* begin = t.c_str();
  char* end = nullptr;
  out = std::strtod(begin, &end);
  return end == begin + t.size() && std::isfinite(out);
}

int VersionOf(const xmlNode* root) {
  xmlChar* v = xmlGetProp(root, X("version"));
  if (v == nullptr) return 0;
  const std::string text = Trimmed(reinterpret_cast<const char*>(v));
  xmlFree(v);
  if (text.empty()) return 0;
  char* end = nullptr;
  const long n = std::strtol(text.c_str(), &end, 10);
  if (end != text.c_str() + text.size()) return 0;
  if (n > SHRT_MAX) return SHRT_MAX;
  if (n < SHRT_MIN) return SHRT_MIN;
  return static_cast<int>(n);
}

ReadElement ReadOne(const xmlNode* node) {
  ReadElement e;
  for (const xmlNode* child = node->children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE) continue;
    if (Named(child, "Label")) {
      e.hasLabel = true;
      e.label = Content(child);
    } else if (Named(child, "Vertices")) {
      int number = 0;
      for (const xmlNode* v = child->children; v != nullptr; v = v->next) {
        if (!Named(v, "Vertex")) continue;
        ++number;
        std::optional<std::string> xs, ys;
        for (const xmlNode* c = v->children; c != nullptr; c = c->next) {
          if (Named(c, "X") && !xs) xs = Content(c);
          if (Named(c, "Y") && !ys) ys = Content(c);
        }
        double x = 0, y = 0;
        const std::string where = "vertex " + std::to_string(number) + ": ";
        if (!xs)
          e.badVertices.push_back(where + "X is missing");
        else if (!ys)
          e.badVertices.push_back(where + "Y is missing");
        else if (!ParseNumberWhole(*xs, x))
          e.badVertices.push_back(where + "X '" + *xs + "' is not a number");
        else if (!ParseNumberWhole(*ys, y))
          e.badVertices.push_back(where + "Y '" + *ys + "' is not a number");
        else
          e.vertices.emplace_back(x, y);
      }
    } else {
      e.fields.emplace_back(NameOf(child), Content(child));
    }
  }
  return e;
}

ReadDocument Read(const xmlDoc* doc, const XmlKindText& kind) {
  ReadDocument out;
  const xmlNode* root = xmlDocGetRootElement(const_cast<xmlDoc*>(doc));
  if (root == nullptr || !Named(root, kind.root)) return out;
  out.version = VersionOf(root);
  for (const xmlNode* child = root->children; child != nullptr; child = child->next) {
    if (Named(child, "ComputationalUnits") && !out.computationalUnits)
      out.computationalUnits = Trimmed(Content(child));
    else if (Named(child, "BasemapUnits") && !out.basemapUnits)
      out.basemapUnits = Trimmed(Content(child));
    else if (Named(child, kind.node))
      out.elements.push_back(ReadOne(child));
  }
  return out;
}

}  // namespace

const XmlKindText& KindText(XmlKind kind) {
  for (const XmlKindText& k : kKinds)
    if (k.kind == kind) return k;
  return kKinds[0];
}

std::optional<XmlKind> XmlKindFromExtension(std::string_view extension) {
  for (const XmlKindText& k : kKinds)
    if (extension == k.extension) return k.kind;
  return std::nullopt;
}

std::string ShortestNumberText(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "INF" : "-INF";
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

std::string ElementDocumentText(XmlKind kind, bool computeMeters, bool basemapMeters,
                                const std::vector<DocumentElement>& elements) {
  xmlInitParser();
  const XmlKindText& k = KindText(kind);
  DocPtr doc(xmlNewDoc(X("1.0")));
  xmlDoc* d = doc.get();
  xmlNode* root = xmlNewDocNode(d, nullptr, X(k.root), nullptr);
  xmlDocSetRootElement(d, root);
  xmlNewProp(root, X("version"), X(std::to_string(kElementFileVersion).c_str()));
  // The indentation is text nodes of the document itself, line ends written "\n"
  // here and made CR LF when the text is taken out (libxml2 would write a CR in a
  // text node as a character reference).
  auto indent = [&](xmlNode* parent, const char* tabs) {
    xmlAddChild(parent, xmlNewDocText(d, X((std::string("\n") + tabs).c_str())));
  };
  auto leaf = [&](xmlNode* parent, const std::string& name, const std::string& value) {
    return xmlNewTextChild(parent, nullptr, X(name.c_str()), X(value.c_str()));
  };
  indent(root, "\t");
  leaf(root, "ComputationalUnits", computeMeters ? "Meters" : "Feet");
  indent(root, "\t");
  leaf(root, "BasemapUnits", basemapMeters ? "Meters" : "Feet");
  for (const DocumentElement& e : elements) {
    indent(root, "\t");
    xmlNode* node = xmlNewChild(root, nullptr, X(k.node), nullptr);
    indent(node, "\t\t");
    leaf(node, "Label", e.label);
    for (const auto& [name, value] : e.fields) {
      indent(node, "\t\t");
      leaf(node, name, value);
    }
    indent(node, "\t\t");
    xmlNode* vertices = xmlNewChild(node, nullptr, X("Vertices"), nullptr);
    for (const auto& [x, y] : e.vertices) {
      indent(vertices, "\t\t\t");
      xmlNode* vertex = xmlNewChild(vertices, nullptr, X("Vertex"), nullptr);
      indent(vertex, "\t\t\t\t");
      leaf(vertex, "X", ShortestNumberText(x));
      indent(vertex, "\t\t\t\t");
      leaf(vertex, "Y", ShortestNumberText(y));
      indent(vertex, "\t\t\t");
    }
    indent(vertices, "\t\t");
    indent(node, "\t");
  }
  indent(root, "");

  std::unique_ptr<xmlBuffer, void (*)(xmlBuffer*)> buffer(xmlBufferCreate(), xmlBufferFree);
  xmlNodeDump(buffer.get(), d, root, 0, 0);
  const std::string body(reinterpret_cast<const char*>(xmlBufferContent(buffer.get())),
                         static_cast<std::size_t>(xmlBufferLength(buffer.get())));
  const std::string lf = "<?xml version='1.0'?>\n" + body + "\n";
  std::string out;
  out.reserve(lf.size() + lf.size() / 16);
  for (const char c : lf) {
    if (c == '\n') out += '\r';
    out += c;
  }
  return out;
}

LoadedDocument LoadElementDocument(std::string_view text, XmlKind kind,
                                   const std::filesystem::path* schema) {
  xmlInitParser();
  LoadedDocument out;
  if (text.size() > static_cast<std::size_t>(INT_MAX)) {
    out.reason = "the file is too large";
    return out;
  }
  std::unique_ptr<xmlParserCtxt, void (*)(xmlParserCtxt*)> parser(xmlNewParserCtxt(),
                                                                  xmlFreeParserCtxt);
  if (!parser) {
    out.reason = "out of memory";
    return out;
  }
  // Some failures (of the input's encoding) reach the global handler in spite of
  // NOERROR: they are kept from standard error for the time of the parse.
  ErrorSink parseErrors;
  xmlSetStructuredErrorFunc(&parseErrors, CollectError);
  DocPtr doc(xmlCtxtReadMemory(parser.get(), text.data(), static_cast<int>(text.size()), nullptr,
                               nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  xmlSetStructuredErrorFunc(nullptr, nullptr);
  if (!doc) {
    out.reason = Describe(xmlCtxtGetLastError(parser.get()));
    if (out.reason.empty()) out.reason = parseErrors.first;
    if (out.reason.empty()) out.reason = "the text is no XML document";
    return out;
  }
  if (schema != nullptr) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(*schema, ec)) {
      out.status = LoadStatus::SchemaNotLoaded;
      out.reason = "the schema file " + schema->string() + " does not exist";
      return out;
    }
    ErrorSink sink;
    // The schema parser reports some failures (a file it cannot read, a bad
    // include) through the global handler: catch them too, for the time of the parse.
    xmlSetStructuredErrorFunc(&sink, CollectError);
    std::unique_ptr<xmlSchemaParserCtxt, void (*)(xmlSchemaParserCtxt*)> schemaParser(
        xmlSchemaNewParserCtxt(schema->string().c_str()), xmlSchemaFreeParserCtxt);
    if (!schemaParser) {
      out.status = LoadStatus::SchemaNotLoaded;
      out.reason = "could not read " + schema->string();
      return out;
    }
    xmlSchemaSetParserStructuredErrors(schemaParser.get(), CollectError, &sink);
    std::unique_ptr<xmlSchema, void (*)(xmlSchema*)> parsed(xmlSchemaParse(schemaParser.get()),
                                                            xmlSchemaFree);
    xmlSetStructuredErrorFunc(nullptr, nullptr);
    if (!parsed) {
      out.status = LoadStatus::SchemaNotLoaded;
      out.reason = sink.first.empty() ? "could not read " + schema->string() : sink.first;
      return out;
    }
    std::unique_ptr<xmlSchemaValidCtxt, void (*)(xmlSchemaValidCtxt*)> validator(
        xmlSchemaNewValidCtxt(parsed.get()), xmlSchemaFreeValidCtxt);
    ErrorSink invalid;
    xmlSchemaSetValidStructuredErrors(validator.get(), CollectError, &invalid);
    const int rc = xmlSchemaValidateDoc(validator.get(), doc.get());
    if (rc != 0) {
      out.status = LoadStatus::Invalid;
      out.reason = invalid.first.empty() ? "the validator failed (" + std::to_string(rc) + ")"
                                         : invalid.first;
      return out;
    }
  }
  out.status = LoadStatus::Loaded;
  out.document = Read(doc.get(), KindText(kind));
  return out;
}

}  // namespace tarno::exchange
