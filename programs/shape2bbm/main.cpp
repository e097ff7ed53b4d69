// shape2bbm <input.shp> <output.bbm>: a shapefile to a BBM map.
#include "basemaps/convert_main.h"

int main(int argc, char** argv) {
  return tarno::RunConverter("shape2bbm", "<input.shp> <output.bbm>", argc, argv, 2, 2,
                             [](const std::vector<std::string>& a) {
                               return a[1] + ": " +
                                      tarno::CountsText(tarno::ShapeToBbm(a[0], a[1]));
                             });
}
