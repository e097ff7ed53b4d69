#include "app/shell/tool_select.h"

#include "app/shell/map_editor.h"

namespace tarno {

std::string SelectTool::Activity() const { return kSelectActivity; }
std::string SelectTool::Feedback() const { return kSelectFeedbackText; }

void SelectTool::Press(const MapPointer&) { ed_.ElemSelectElement(); }

}  // namespace tarno
