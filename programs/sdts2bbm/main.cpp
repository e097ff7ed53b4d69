// sdts2bbm <transfer> <output.bbm>: an SDTS transfer (.tar.gz, .tgz or .tar archive,
// a folder, or its *CATD.DDF module) to a BBM map through GDAL's SDTS driver. The
// archive is read in place: nothing is unpacked to disk.
#include "basemaps/convert_main.h"

int main(int argc, char** argv) {
  return tarno::RunConverter("sdts2bbm", "<transfer.tar.gz|folder|CATD.DDF> <output.bbm>", argc,
                             argv, 2, 2, [](const std::vector<std::string>& a) {
                               return a[1] + ": " + tarno::CountsText(tarno::SdtsToBbm(a[0], a[1]));
                             });
}
