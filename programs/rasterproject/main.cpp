// rasterproject <RasterProj.dat>: a raster image's world file from one projection zone
// to another; the parameter file is written by the reprojection dialog (see
// RasterProjParameters in src/basemaps/converters.h).
#include "basemaps/convert_main.h"

int main(int argc, char** argv) {
  return tarno::RunConverter("rasterproject", "<RasterProj.dat>", argc, argv, 1, 1,
                             [](const std::vector<std::string>& a) {
                               const auto p = tarno::ReadRasterProjFile(a[0]);
                               tarno::ReprojectWorldFile(p);
                               return p.output.string() + ": zone " + std::to_string(p.fromCode) +
                                      " to zone " + std::to_string(p.toCode);
                             });
}
