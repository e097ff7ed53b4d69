// odwg2bbm <input.dxf|.dgn|.dwg> <output.bbm> [zone]: a CAD file to a BBM map; the
// zone (default 0) goes to the map's header. DWG files are refused with the advice
// to save the drawing as DXF.
#include "basemaps/convert_main.h"

int main(int argc, char** argv) {
  return tarno::RunConverter(
      "odwg2bbm", "<input.dxf|input.dgn|input.dwg> <output.bbm> [zone]", argc, argv, 2, 3,
      [](const std::vector<std::string>& a) {
        const int zone = a.size() > 2 ? tarno::IntegerArgument(a[2], "zone") : 0;
        return a[1] + ": " + tarno::CountsText(tarno::CadToBbm(a[0], a[1], zone));
      });
}
