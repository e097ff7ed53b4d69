// The select state (mouse state 0): a click selects the element of the nearest
// vertex. Moving the selection is a drag that the editor runs itself (VertexDrag).
#pragma once

#include "app/shell/tool.h"

namespace tarno {

class SelectTool : public MapTool {
 public:
  explicit SelectTool(MapEditor& editor) : MapTool(editor, 0, 0) {}
  std::string Activity() const override;
  std::string Feedback() const override;
  void Press(const MapPointer& at) override;
};

}  // namespace tarno
