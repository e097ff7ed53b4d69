// dlg2bbm <input> <output.bbm> [multiplier]: a vector data set that GDAL's OGR
// drivers read (a ".gz" file through GDAL's gzip reader) to a BBM map. The DLG
// optional format itself has no OGR driver: DLG data come as SDTS transfers
// (sdts2bbm) or in one of OGR's formats.
#include "basemaps/convert_main.h"

int main(int argc, char** argv) {
  return tarno::RunConverter(
      "dlg2bbm", "<input> <output.bbm> [multiplier]", argc, argv, 2, 3,
      [](const std::vector<std::string>& a) {
        const int multiplier = a.size() > 2 ? tarno::IntegerArgument(a[2], "multiplier") : 100;
        return a[1] + ": " + tarno::CountsText(tarno::OgrToBbm(a[0], a[1], multiplier));
      });
}
