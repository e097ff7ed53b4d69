#include "exchange/export_dialogs.h"

namespace tarno::exchange {

namespace {
constexpr std::array<VectorMode, 4> kModes = {VectorMode::Contours, VectorMode::Pathlines,
                                              VectorMode::Capzones, VectorMode::Elements};
}  // namespace

const char* ModeWord(VectorMode mode) {
  switch (mode) {
    case VectorMode::Contours: return "CONTOURS";
    case VectorMode::Pathlines: return "PATHLINES";
    case VectorMode::Capzones: return "CAPZONES";
    case VectorMode::Elements: return "ELEMENTS";
    case VectorMode::None: break;
  }
  return "";
}

VectorMode ModeFromWord(const std::string& word) {
  for (VectorMode m : kModes)
    if (word == ModeWord(m)) return m;
  return VectorMode::None;
}

std::string VectorExport::Title() const {
  if (FileMode == "DXF") return kDxfTitle;
  if (FileMode == "BLN") return kBlnTitle;
  return kTitle;
}

int VectorExport::Selection() const {
  const VectorMode m = ModeFromWord(mode);
  for (std::size_t i = 0; i < kModes.size(); ++i)
    if (kModes[i] == m) return static_cast<int>(i);
  return -1;
}

void VectorExport::Select(int option) {
  mode = option >= 0 && option < static_cast<int>(kModes.size()) ? ModeWord(kModes[option]) : "";
}

bool VectorExport::OK(UserInterface& ui) {
  if (Selection() < 0) {
    ui.MessageBox(kChooseTitle, {kChooseText}, Buttons::OK, Icon::Exclamation);
    return false;
  }
  Result = 1;
  return true;
}

bool ExportShapefile::OK(UserInterface& ui) {
  if (SfOption < 0 || SfOption >= static_cast<int>(kOptions.size())) {
    ui.MessageBox(VectorExport::kChooseTitle, {VectorExport::kChooseText}, Buttons::OK,
                  Icon::Exclamation);
    return false;
  }
  Result = 1;
  return true;
}

}  // namespace tarno::exchange
