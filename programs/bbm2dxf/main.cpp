// bbm2dxf <input.bbm> <output.dxf> [layer]: the points and lines of a BBM map as DXF
// entities on one layer (default "0").
#include "basemaps/convert_main.h"

int main(int argc, char** argv) {
  return tarno::RunConverter("bbm2dxf", "<input.bbm> <output.dxf> [layer]", argc, argv, 2, 3,
                             [](const std::vector<std::string>& a) {
                               const std::string layer = a.size() > 2 ? a[2] : "0";
                               return a[1] + ": " +
                                      tarno::CountsText(tarno::BbmToDxf(a[0], a[1], layer));
                             });
}
