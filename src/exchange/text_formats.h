// The text element files read and written line by line, without a project: the
// property-block files (.lss line-sink strings and hydrologic boundaries, .inh
// inhomogeneities) and the one-record-a-line files (.wl wells, .tp test points, .tx
// text labels). The operations that put what is read into a project, with their
// questions and messages, are in text_exchange.h.
//
// A property-block file is "version 2" and then blocks: a header line, one value a
// line in a fixed order of fields, one "X Y" line for each vertex, and "end".
//
//     PropertyBlockReader reader(BlockFile::Inh, ReadTextLines(path));
//     for (;;) {
//       BlockResult r = reader.Next();
//       if (r.status == BlockStatus::End) break;
//       if (r.status == BlockStatus::Block) Insert(db, r.block.element);
//       ...
//     }
//
// Numbers are read whole: "12abc" or "1,5" in a number field is a bad value, not 12.
// Every problem names its line, the value and the field.
#pragma once

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "elements/element.h"

namespace tarno::exchange {

// One line of a text file and its number, counted from 1.
struct TextLine {
  int number = 0;
  std::string text;
};

// The lines of a text, split at LF with a CR before it removed (CR LF and LF files
// alike). A last line without its end is a line; an empty text has none.
std::vector<TextLine> SplitTextLines(std::string_view content);
// The lines of a file; throws Error naming the file when it cannot be read.
std::vector<TextLine> ReadTextLines(const std::string& path);

// A number as a whole text (blanks around it allowed): "12", "-3.5", "1e3", "+.5".
// Nothing for "", "12abc", "1,5", "0x10", "inf", "nan" or a number beyond the range
// of a 64-bit float.
std::optional<double> WholeNumber(std::string_view text);
// The shortest text that reads back as the same 64-bit float ("0.1", "4393400",
// "1e-07"), for the property-block files, whose values must come back unchanged.
std::string ExactNumber(double value);

// Sets `field` of `row` (a row of `table`) from a value of a file, by the field's
// type: a text field takes the trimmed text; a real field a whole number; a yes/no
// field True, False, Yes, No or a number; a whole-number field a whole number in the
// 32-bit range, or True (1) and False (0). The result is the reason when the value is
// no value of the field ("\"abc\" is not a number for HydCond"); nothing when set.
std::optional<std::string> SetFieldFromFile(Row& row, std::string_view table,
                                            std::string_view field, std::string_view text);

// --- Property-block files ---------------------------------------------------------

enum class BlockFile { Inh, Lss };

// The kind of a block by its header line.
enum class BlockKind {
  Inhomogeneity,     // "Inhomogeneity"
  Linesink,          // "nearfield" or "new"
  HydrologicUnit,    // "Hydrologic Unit Boundary"
  FarFieldBoundary,  // "FarField Boundary"
  ModelBoundary,     // "Model Boundary"
};

inline constexpr const char* kVersionLine = "version 2";
inline constexpr const char* kInhomogeneityHeader = "Inhomogeneity";
inline constexpr const char* kNearFieldHeader = "nearfield";
inline constexpr const char* kNewHeader = "new";
inline constexpr const char* kHydrologicUnitHeader = "Hydrologic Unit Boundary";
inline constexpr const char* kFarFieldHeader = "FarField Boundary";
inline constexpr const char* kModelBoundaryHeader = "Model Boundary";
inline constexpr const char* kEndLine = "end";

// The fields of a block, in the order of their lines. An .inh file without
// "version 2" has the inhomogeneity's fields without the last four.
const std::vector<std::string_view>& InhomogeneityFields(bool versionTwo);
const std::vector<std::string_view>& LinesinkFields();
const std::vector<std::string_view>& BoundaryFields();

// One block read: the element (its row and its vertices, not yet stored) and, for a
// line-sink string, the link of its routing as the file gives it.
struct ElementBlock {
  BlockKind kind = BlockKind::Inhomogeneity;
  int line = 0;  // the header's line
  Element element;
  // The routed-to string by its number among the file's string blocks (from 1) and
  // the Seq of the linked vertex in it; 0 when the string links to none in the file.
  std::int64_t routeBlock = 0;
  std::int64_t routeSeq = 0;
};

// What went wrong in a block: the line, its text and why.
struct BlockProblem {
  int line = 0;
  std::string text;
  std::string reason;
};

enum class BlockStatus {
  Block,    // `block` holds the next block
  Problem,  // a bad block; the reader stands behind its "end"
  Foreign,  // a line where a header should be: the file is not of this format
  End,      // nothing more
};

struct BlockResult {
  BlockStatus status = BlockStatus::End;
  ElementBlock block;
  BlockProblem problem;
};

class PropertyBlockReader {
 public:
  PropertyBlockReader(BlockFile file, std::vector<TextLine> lines);
  // Whether the file begins with "version 2" (an .inh file without it has no
  // default and scenario-switch fields, which keep their defaults).
  bool VersionTwo() const { return versionTwo_; }
  // The next block. After Foreign and End, every call gives End.
  BlockResult Next();
  // The number of string blocks met so far (the one just read included).
  std::int64_t StringBlocks() const { return stringBlocks_; }

 private:
  BlockResult Problem(int line, std::string text, std::string reason);
  void SkipPastEnd();
  std::optional<BlockKind> HeaderKind(const std::string& line) const;

  BlockFile file_;
  std::vector<TextLine> lines_;
  std::size_t next_ = 0;
  bool versionTwo_ = false;
  bool done_ = false;
  std::int64_t stringBlocks_ = 0;
};

// The writers of the blocks, lines ending in CR LF. Text values lose any line break.
void WriteVersionLine(std::ostream& out);
void WriteInhomogeneityBlock(std::ostream& out, const Element& inhomogeneity);
void WriteBoundaryBlock(std::ostream& out, BlockKind kind, const Element& domain);
// `header` is kNearFieldHeader or kNewHeader; `routeBlock` and `routeSeq` as in
// ElementBlock (written in the places of RoutePID and RouteVID).
void WriteLinesinkBlock(std::ostream& out, const char* header, const Element& linesink,
                        std::int64_t routeBlock, std::int64_t routeSeq);

// --- One record a line: .wl, .tp, .tx ----------------------------------------------

// The delimiter of a record file from its first line: ',' if it holds a comma, else
// ' ' if it holds a blank or a tab, else none (0).
char DetectDelimiter(std::string_view firstLine);
// The fields of a record line, each trimmed, zero-based. Blanks and tabs: split by
// ParseString, a run counting as one. Commas: each comma ends a field, so an empty
// field keeps its place (trailing empty fields are dropped).
std::vector<std::string> RecordFields(std::string_view line, char delimiter);
// A line that ends a well file: "Quit", "quit", "end", "End", "Exit" or "exit" as
// its first field.
bool IsStopLine(std::string_view line, char delimiter);
// A comment line: its first non-blank character is "*".
bool IsCommentLine(std::string_view line);
bool IsBlankLine(std::string_view line);

struct WellRecord {
  double x = 0, y = 0;
  double head = 0;  // the head, or the discharge of a discharge-specified well
  double radius = 0;
  std::string label;
  std::optional<double> top, bottom;  // the screen; nothing when the line stops short
};
// X, Y, Head, Radius, then optionally Label, TopElev, BottomElev. Nothing for a line
// with fewer than four fields, more than seven, or text in a number field.
std::optional<WellRecord> ParseWellLine(std::string_view line, char delimiter);
// X, Y (mask "0.000000000E+00 "), Head ("0.00000E+00 "), Radius ("0.00000E+00"),
// Label, TopElev, BottomElev joined by ",", without the line's end.
std::string WellLine(const WellRecord& w);

struct TestPointRecord {
  double x = 0, y = 0;
  double obsHead = 0;
  double obsStreamFlow = 0;
  std::string type;   // "Piezometer", "Gage" or "Lake Stage"
  std::string label;  // spaces, commas and control characters removed
  bool olderForm = false;
};
// The type of a word in any case: "Piezometer", "Gage" (also "Gauge"), "Lake Stage";
// nothing for another word.
std::optional<std::string> TestPointType(std::string_view word);
// The full record X, Y, ObsHead, ObsStreamFlow, Type, Label (a blank-delimited
// "Lake Stage" takes two fields; a label split by blanks is joined), or the older
// form X, Y, ObsHead, Label, a piezometer. The label loses its spaces, commas and
// control characters.
// Nothing for a line that is neither, or a label that comes out empty.
std::optional<TestPointRecord> ParseTestPointLine(std::string_view line, char delimiter);
std::string TestPointLine(const TestPointRecord& t);

struct TextLabelRecord {
  double x = 0, y = 0;
  int labelType = 0;  // 0 text label, 1 hydrography label
  std::string text;
};
// X, Y, LabelType separated by blanks (or commas), then the text: the rest of the
// line, trimmed. Nothing without a text or with a LabelType other than 0 and 1.
std::optional<TextLabelRecord> ParseTextLabelLine(std::string_view line);
// X, Y (mask "0.00000E+00 "), LabelType ("0 ") and the text.
std::string TextLabelLine(const TextLabelRecord& t);

}  // namespace tarno::exchange
