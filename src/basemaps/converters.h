// The map converters and the reprojection of maps: the work of the small programs
// shape2bbm, odwg2bbm, bbm2dxf, dlg2bbm, sdts2bbm, bbmproject and rasterproject
// (programs/), kept here so that the tests and tarnocmd call the same code.
//
// Maps are written in the record form with the multiplier 100 (hundredths of the
// world unit). Points become point records, lines line records, and each polygon
// ring a line record with an area record bounded by it. Other formats are read
// through OGR: DXF and DGN (CAD files), SDTS transfers (the SDTS driver), and any
// other vector data set OGR opens (dlg2bbm). Failures throw ConvertError naming the
// file and, where one is at fault, the record or line.
//
// Not done: the sources' attribute codes (DLG major and minor codes) are not carried
// into BBM attribute pairs, so converted maps draw in the map's one colour; the
// native DLG optional format has no reader (no OGR driver reads it).
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "basemaps/projections.h"
#include "core/error.h"

namespace tarno {

class ConvertError : public Error {
 public:
  explicit ConvertError(const std::string& description) : Error(description) {}
};

// What a conversion wrote.
struct ConvertCounts {
  int points = 0;
  int lines = 0;
  int areas = 0;
  int skipped = 0;  // features of a kind a BBM cannot hold (texts, empty shapes)
};

// The coordinates of a BBM file found by a scan: where each X, Y pair lies in the
// file's bytes, grouped by record, with the offset of the record's box (0: none).
struct BbmShapeSlots {
  enum class Kind { Point, Line, Polygon };
  Kind kind = Kind::Point;
  std::int32_t id = 0;
  std::size_t boxOffset = 0;
  std::vector<std::size_t> xy;  // offsets of X (Y follows)
};
struct BbmScan {
  std::int32_t dataType = 0;
  std::int32_t projection = 0;
  std::int32_t multiplier = 0;
  bool commandForm = false;
  std::vector<BbmShapeSlots> shapes;
};
// Scans a BBM file's bytes (both forms). Throws ConvertError naming `path` for a bad
// signature, a truncated record or an unknown drawing command.
BbmScan ScanBbm(const std::string& bytes, const std::string& path);

// shape2bbm: points, multipoints, polylines and polygons of a shapefile.
ConvertCounts ShapeToBbm(const std::filesystem::path& shp, const std::filesystem::path& bbm);
// odwg2bbm: a DXF or DGN file; a DWG file is refused (no library here reads it
// whole). `zone` goes to the header's projection.
ConvertCounts CadToBbm(const std::filesystem::path& cad, const std::filesystem::path& bbm,
                       int zone);
// dlg2bbm: any vector data set OGR opens (a ".gz" file is read through GDAL's gzip
// reader); `multiplier` as the tool passes it (100).
ConvertCounts OgrToBbm(const std::filesystem::path& input, const std::filesystem::path& bbm,
                       int multiplier = 100);
// sdts2bbm: an SDTS transfer: a .tar.gz, .tgz or .tar archive, a folder, or its
// catalogue module (*CATD.DDF).
ConvertCounts SdtsToBbm(const std::filesystem::path& input, const std::filesystem::path& bbm);
// bbm2dxf: the points and lines of a BBM file (and the polygons of its command form)
// as POINT and LINE entities on one DXF layer.
ConvertCounts BbmToDxf(const std::filesystem::path& bbm, const std::filesystem::path& dxf,
                       const std::string& layer);

// bbmproject: every coordinate of a BBM map from one zone to another; the boxes and
// the header's bounds follow, the header's projection becomes `toCode`. Returns the
// number of points transformed. A point PROJ cannot transform, or one that leaves
// the range of the stored integers, fails naming the record.
long ReprojectBbm(const std::filesystem::path& input, const std::filesystem::path& output,
                  int fromCode, int toCode, Datum datum);

// rasterproject's parameter file RasterProj.dat, one value a line: the input world
// file, the output world file, the source code, the target code, the datum
// directory (its last part "nad27sp" or "nad83sp").
struct RasterProjParameters {
  std::filesystem::path input;
  std::filesystem::path output;
  int fromCode = 0;
  int toCode = 0;
  std::string datumDirectory;
};
RasterProjParameters ReadRasterProjFile(const std::filesystem::path& file);
void WriteRasterProjFile(const std::filesystem::path& file, const RasterProjParameters& p);
// Reprojects a world file: the upper left pixel's centre is transformed, and the
// pixel's size and rotation are taken from the transformed neighbours one pixel
// along a row and one down a column (exact for a transform that is affine over a
// pixel, which the zones' projections are to well below a pixel's size).
void ReprojectWorldFile(const RasterProjParameters& p);

}  // namespace tarno
