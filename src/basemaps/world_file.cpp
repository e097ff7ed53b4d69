#include "basemaps/world_file.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <fstream>
#include <system_error>

#include "core/error.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

std::string Lower(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return out;
}

std::string Upper(std::string_view text) {
  std::string out(text);
  std::transform(out.begin(), out.end(), out.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return out;
}

std::string Trim(std::string_view text) {
  const auto first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  const auto last = text.find_last_not_of(" \t\r\n");
  return std::string(text.substr(first, last - first + 1));
}

// The whole of `text` as a number; none for anything else (an empty line, a word,
// a number followed by text).
std::optional<double> ParseNumber(const std::string& text) {
  if (text.empty()) return std::nullopt;
  const char* begin = text.data();
  const char* end = text.data() + text.size();
  if (*begin == '+') ++begin;  // from_chars takes no plus sign
  double value = 0.0;
  const auto [ptr, ec] = std::from_chars(begin, end, value);
  if (ec != std::errc() || ptr != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

std::string Quoted(const fs::path& p) { return "\"" + p.string() + "\""; }

}  // namespace

std::array<double, 6> WorldFile::GeoTransform() const {
  // The world file names pixel centres; the transform names pixel corners, half a
  // pixel up and to the left.
  return {C - 0.5 * A - 0.5 * B, A, B, F - 0.5 * D - 0.5 * E, D, E};
}

WorldFile WorldFile::FromGeoTransform(const std::array<double, 6>& gt) {
  WorldFile w;
  w.A = gt[1];
  w.B = gt[2];
  w.D = gt[4];
  w.E = gt[5];
  w.C = gt[0] + 0.5 * gt[1] + 0.5 * gt[2];
  w.F = gt[3] + 0.5 * gt[4] + 0.5 * gt[5];
  return w;
}

std::vector<std::string> WorldFileExtensions(std::string_view imageExtension) {
  std::string ext = Lower(imageExtension);
  if (!ext.empty() && ext.front() == '.') ext.erase(0, 1);
  if (ext == "bil") return {".blw"};
  if (ext == "bip") return {".bpw"};
  if (ext == "bmp") return {".bpw", ".bmpw"};
  if (ext == "bsq") return {".bqw"};
  if (ext == "gis") return {".gsw"};
  if (ext == "jpg" || ext == "jpeg") return {".jpgw", ".jgw"};
  if (ext == "lan") return {".lnw"};
  if (ext == "ras") return {".rsw"};
  if (ext == "rlc") return {".rcw"};
  if (ext == "rs") return {".rs"};
  if (ext == "sid") return {".sdw"};
  if (ext == "sun") return {".snw"};
  if (ext == "tif" || ext == "tiff") return {".tfw"};
  return {};
}

std::optional<fs::path> FindWorldFile(const fs::path& image) {
  const std::vector<std::string> candidates = WorldFileExtensions(image.extension().string());
  std::error_code ec;
  for (const std::string& ext : candidates) {
    for (const std::string& cased : {Lower(ext), Upper(ext)}) {
      fs::path candidate = image;
      candidate.replace_extension(cased);
      if (candidate == image) continue;
      if (fs::is_regular_file(candidate, ec)) return candidate;
    }
  }
  return std::nullopt;
}

bool WorldFileExists(const fs::path& image) { return FindWorldFile(image).has_value(); }

WorldFile ReadWorldFile(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  if (!in) throw Error("Cannot open the world file " + Quoted(file), error_number::kFileNotFound);
  double values[6] = {};
  std::string line;
  for (int i = 0; i < 6; ++i) {
    if (!std::getline(in, line)) {
      throw Error("The world file " + Quoted(file) + " has " + std::to_string(i) +
                  (i == 1 ? " line" : " lines") + "; a world file has six numbers, one to a line");
    }
    const std::string text = Trim(line);
    const std::optional<double> value = ParseNumber(text);
    if (!value) {
      throw Error("The world file " + Quoted(file) + ", line " + std::to_string(i + 1) + ": " +
                      (text.empty() ? std::string("an empty line where a number belongs")
                                    : "\"" + text + "\" is not a number"),
                  error_number::kTypeMismatch);
    }
    values[i] = *value;
  }
  WorldFile w{values[0], values[1], values[2], values[3], values[4], values[5]};
  // A pixel of no width or height places every pixel on one line.
  if (w.A == 0.0) throw Error("The world file " + Quoted(file) + ", line 1: the pixel width is 0");
  if (w.E == 0.0) throw Error("The world file " + Quoted(file) + ", line 4: the pixel height is 0");
  return w;
}

void WriteWorldFile(const fs::path& file, const WorldFile& world) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("Cannot write the world file " + Quoted(file));
  for (double v : {world.A, world.D, world.B, world.E, world.C, world.F}) {
    char buffer[64];
    const auto [ptr, ec] = std::to_chars(buffer, buffer + sizeof buffer, v);
    out << ' ' << std::string(buffer, ec == std::errc() ? ptr : buffer) << "\r\n";
  }
  out.flush();
  if (!out) throw Error("Cannot write the world file " + Quoted(file));
}

}  // namespace tarno
