// libFuzzer target for the readers of the text element files: any bytes, read as an
// .inh file, an .lss file and as the lines of .wl, .tp and .tx files, must read
// without a crash, a hang or a sanitizer report; every failure must be an Error; and
// what is read must write back and read again the same (a block to the same row and
// vertices, a record to a line that reads again).
//
// The corpus seeds are tests/exchange/data/text-corpus, which test_exchange replays
// through the same checks (tests/exchange/text_corpus_test.cpp).

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <string_view>

#include "core/error.h"
#include "exchange/text_formats.h"

using namespace tarno;
using namespace tarno::exchange;

namespace {

// A broken rule ends the run; the corpus test defines TEXT_FUZZ_FAIL to throw instead.
#ifndef TEXT_FUZZ_FAIL
#define TEXT_FUZZ_FAIL(what) std::abort()
#endif
[[noreturn]] void Fail([[maybe_unused]] const char* what) { TEXT_FUZZ_FAIL(what); }

bool HasCarriageReturn(const Row& row) {
  for (const auto& [name, value] : row.Fields())
    if (const auto* s = std::get_if<std::string>(&value); s && s->find('\r') != std::string::npos)
      return true;
  return false;
}

void CheckBlocks(BlockFile file, const std::vector<TextLine>& lines) {
  PropertyBlockReader reader(file, lines);
  for (std::size_t guard = 0; guard <= lines.size() + 1; ++guard) {
    const BlockResult r = reader.Next();
    if (r.status == BlockStatus::End || r.status == BlockStatus::Foreign) {
      if (reader.Next().status != BlockStatus::End) Fail("a reader goes on after its end");
      return;
    }
    if (r.status != BlockStatus::Block) continue;
    const ElementBlock& b = r.block;
    if (b.element.vertices.size() < (b.kind == BlockKind::Linesink ? 2u : 3u))
      Fail("a block with too few vertices");
    if (HasCarriageReturn(b.element.row)) continue;  // written as a blank
    std::ostringstream out;
    WriteVersionLine(out);
    if (b.kind == BlockKind::Inhomogeneity)
      WriteInhomogeneityBlock(out, b.element);
    else if (b.kind == BlockKind::Linesink)
      WriteLinesinkBlock(out, kNearFieldHeader, b.element, b.routeBlock, b.routeSeq);
    else
      WriteBoundaryBlock(out, b.kind, b.element);
    PropertyBlockReader again(file, SplitTextLines(out.str()));
    const BlockResult back = again.Next();
    if (back.status != BlockStatus::Block) Fail("a block written does not read again");
    if (!(back.block.element == b.element)) Fail("a block reads again as another");
    if (back.block.routeBlock != b.routeBlock || back.block.routeSeq != b.routeSeq)
      Fail("a routing link reads again as another");
  }
  Fail("the block reader does not come to an end");
}

void CheckRecords(const std::vector<TextLine>& lines) {
  for (const TextLine& line : lines) {
    const std::string& text = line.text;
    (void)IsStopLine(text, ',');
    (void)IsCommentLine(text);
    for (char delimiter : {',', ' ', DetectDelimiter(text)}) {
      if (const auto w = ParseWellLine(text, delimiter)) {
        const auto back = ParseWellLine(WellLine(*w), ',');
        if (!back) Fail("a well line written does not read again");
      }
      if (const auto t = ParseTestPointLine(text, delimiter)) {
        if (t->label.find_first_of(" ,") != std::string::npos)
          Fail("a label kept a blank or comma");
        const auto back = ParseTestPointLine(TestPointLine(*t), ',');
        if (!back || back->type != t->type || back->label != t->label)
          Fail("a test point line written reads again as another");
      }
    }
    if (const auto x = ParseTextLabelLine(text)) {
      const auto back = ParseTextLabelLine(TextLabelLine(*x));
      if (!back || back->labelType != x->labelType) Fail("a text label line does not read again");
    }
  }
}

// Every check on one input.
void CheckTextReaders(std::string_view input) {
  try {
    const std::vector<TextLine> lines = SplitTextLines(input);
    CheckBlocks(BlockFile::Inh, lines);
    CheckBlocks(BlockFile::Lss, lines);
    CheckRecords(lines);
  } catch (const Error&) {
    // A reader's own refusal.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  CheckTextReaders(std::string_view(reinterpret_cast<const char*>(data), size));
  return 0;
}
