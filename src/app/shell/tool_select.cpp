#include "app/shell/tool_select.h"

#include "app/shell/map_editor.h"

namespace tarno {

using lifecycle_text::kSelectActivity;
using lifecycle_text::kSelectFeedback;

std::string SelectTool::Activity() const { return kSelectActivity; }
std::string SelectTool::Feedback() const { return kSelectFeedback; }

void SelectTool::Press(const MapPointer&) { ed_.ElemSelectElement(); }

}  // namespace tarno
