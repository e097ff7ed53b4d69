// tarnocmd convert and tarnocmd reproject: the Tools menu's map converters and the
// reprojection of maps from the command line, on the same programs.
//
//   tarnocmd convert <tool> <input> <output> [args] [--yes]
//       tool: shape (shape2bbm), cad (odwg2bbm; args: the zone), bbm2dxf (args: the
//       layer name), dlg (dlg2bbm, after the input is unpacked and chopped as the
//       desktop tool does), sdts (sdts2bbm). An existing output is replaced only
//       with --yes.
//   tarnocmd reproject <from-code> <to-code> <NAD27|NAD83> <file>...
//       BBM maps through bbmproject, raster images' world files through
//       rasterproject; read-only files are skipped with their message.
#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace tarno::cmd {

// The status of a convert or reproject command, or none when `args` is another
// command.
std::optional<int> RunConvertCommand(const std::vector<std::string>& args, std::ostream& out,
                                     std::ostream& err);
std::string ConvertUsageText();

}  // namespace tarno::cmd
