#include "exchange/bln_writer.h"

#include <fstream>

#include "core/error.h"
#include "core/format.h"

namespace tarno::exchange {

void BlnFile::AddRecord(const std::vector<MapPoint>& points, int flag, const std::string& name) {
  text_ += StrNumber(static_cast<double>(points.size())) + StrNumber(flag);
  if (!name.empty()) text_ += " \"" + name + "\"";
  text_ += "\r\n";
  for (const MapPoint& p : points) text_ += GeneralNumber(p.x) + "," + GeneralNumber(p.y) + "\r\n";
  ++records_;
}

void BlnFile::AddSquare(double x, double y, double half) {
  AddRecord({{x - half, y - half},
             {x + half, y - half},
             {x + half, y + half},
             {x - half, y + half},
             {x - half, y - half}},
            1);
}

void BlnFile::Write(const std::filesystem::path& file) const {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("Cannot create " + file.string(), kBlnAccessError);
  out << text_;
  out.close();
  if (!out) throw Error("Cannot write " + file.string(), kBlnWriteError);
}

std::string SurferLevelScript(const std::vector<double>& levels) {
  std::string text;
  for (double level : levels)
    text +=
        FormatNumber(level, "####0 ") + "  1" + " " + FormatNumber(0.0, "0.000000e+00 ") + "\r\n";
  return text;
}

}  // namespace tarno::exchange
