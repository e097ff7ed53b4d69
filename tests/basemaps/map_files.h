// Small map files written with GDAL for the tests: a point shapefile with a table,
// an image, and world files.
#pragma once

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <filesystem>
#include <string>

namespace tarno::test {

// A point shapefile with the attributes ZONE (text) and DEPTH (real) and three
// records at (0, 0), (1, 2), (2, 4); the third has no ZONE.
inline std::string MakeShapefile(const std::filesystem::path& path) {
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("ESRI Shapefile");
  GDALDataset* ds = driver->Create(path.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr);
  OGRLayer* layer = ds->CreateLayer(path.stem().string().c_str(), nullptr, wkbPoint, nullptr);
  OGRFieldDefn zone("ZONE", OFTString);
  OGRFieldDefn depth("DEPTH", OFTReal);
  layer->CreateField(&zone);
  layer->CreateField(&depth);
  const char* zones[] = {"north", "south", ""};
  for (int i = 0; i < 3; ++i) {
    OGRFeature* f = OGRFeature::CreateFeature(layer->GetLayerDefn());
    if (zones[i][0] != '\0') f->SetField("ZONE", zones[i]);
    f->SetField("DEPTH", 1.5 * (i + 1));
    OGRPoint p(i, 2.0 * i);
    f->SetGeometry(&p);
    layer->CreateFeature(f);
    OGRFeature::DestroyFeature(f);
  }
  GDALClose(ds);
  return path.string();
}

// An image of the driver's format ("GTiff", "JPEG", "BMP"), width x height pixels
// of `bands` bands, without georeference.
inline std::string MakeImage(const std::filesystem::path& path, const char* format, int width = 8,
                             int height = 4, int bands = 1) {
  GDALAllRegister();
  GDALDriver* mem = GetGDALDriverManager()->GetDriverByName("MEM");
  GDALDataset* src = mem->Create("", width, height, bands, GDT_Byte, nullptr);
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(format);
  char** options = nullptr;
  GDALDataset* out =
      driver->CreateCopy(path.string().c_str(), src, FALSE, options, nullptr, nullptr);
  GDALClose(out);
  GDALClose(src);
  // No side files of GDAL's own (.aux.xml) that could carry a georeference.
  std::error_code ec;
  std::filesystem::remove(path.string() + ".aux.xml", ec);
  return path.string();
}

// A world file: pixel size 10, origin (1000, 2000).
inline void WriteWorld(const std::filesystem::path& path) {
  std::FILE* f = std::fopen(path.string().c_str(), "w");
  std::fputs("10.0\n0.0\n0.0\n-10.0\n1000.0\n2000.0\n", f);
  std::fclose(f);
}

}  // namespace tarno::test
