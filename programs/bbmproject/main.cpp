// bbmproject <input.bbm> <output.bbm> <from-zone> <to-zone> <datum>: a BBM map from
// one projection zone to another (codes of the projection list: 1 to 36 UTM, else
// state plane FIPS codes). The datum is NAD27 or NAD83, or a datum directory whose
// last part is nad27sp or nad83sp; the transformation and its grids are PROJ's.
#include "basemaps/convert_main.h"

int main(int argc, char** argv) {
  return tarno::RunConverter(
      "bbmproject", "<input.bbm> <output.bbm> <from-zone> <to-zone> <NAD27|NAD83|datum-dir>", argc,
      argv, 5, 5, [](const std::vector<std::string>& a) {
        const int from = tarno::IntegerArgument(a[2], "source zone");
        const int to = tarno::IntegerArgument(a[3], "target zone");
        const auto datum = tarno::DatumFromText(a[4]);
        if (!datum) {
          throw tarno::ConvertError("The datum \"" + a[4] +
                                    "\" is neither NAD27 nor NAD83 (nor a directory nad27sp "
                                    "or nad83sp).");
        }
        const long n = tarno::ReprojectBbm(a[0], a[1], from, to, *datum);
        return a[1] + ": " + std::to_string(n) + " points from zone " + a[2] + " to zone " + a[3] +
               " (" + tarno::DatumName(*datum) + ")";
      });
}
