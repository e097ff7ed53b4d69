// World files: the six numbers that place a raster image on the map.
//
// A world file holds, one to a line: the pixel's width in map units (A), the two
// rotation terms (D, then B), the pixel's height (E, negative for an image whose
// rows run downward) and the map coordinates of the centre of the upper left pixel
// (C, F). A pixel (column, row) has its centre at
//   x = A * column + B * row + C,   y = D * column + E * row + F.
// The world file of an image is found by the image's extension, in a fixed order of
// candidate extensions (WorldFileExtensions).
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarno {

struct WorldFile {
  double A = 1.0;   // pixel width
  double D = 0.0;   // rotation about y
  double B = 0.0;   // rotation about x
  double E = -1.0;  // pixel height (negative: rows downward)
  double C = 0.0;   // x of the centre of the upper left pixel
  double F = 0.0;   // y of the centre of the upper left pixel

  // The affine transform of the image's pixel corners, in the order of a GDAL
  // geotransform: x of the upper left corner, A, B, y of the upper left corner, D, E.
  std::array<double, 6> GeoTransform() const;
  static WorldFile FromGeoTransform(const std::array<double, 6>& gt);
  friend bool operator==(const WorldFile&, const WorldFile&) = default;
};

// The world file extensions tried for an image's extension (without the dot, any
// case), in their order; empty for an extension that has none.
std::vector<std::string> WorldFileExtensions(std::string_view imageExtension);

// The world file of an image: each candidate extension of the table in its order,
// first in lower case, then in upper case, beside the image. None when there is
// none. A candidate that names the image itself (a ".rs" image, whose world file
// extension is its own) is not its world file.
std::optional<std::filesystem::path> FindWorldFile(const std::filesystem::path& image);
// Whether the image has a world file.
bool WorldFileExists(const std::filesystem::path& image);

// Reads a world file. Throws Error naming the file (and the line, where one is at
// fault) when it cannot be read, has fewer than six lines, holds text where a
// number belongs, or gives a pixel of no width or height. Lines after the sixth are
// not read.
WorldFile ReadWorldFile(const std::filesystem::path& file);

// Writes a world file: six lines, each a number behind a blank, lines ending CR LF.
// The numbers are written in full, so that reading the file gives them back exactly.
// Throws Error naming the file when it cannot be written.
void WriteWorldFile(const std::filesystem::path& file, const WorldFile& world);

}  // namespace tarno
