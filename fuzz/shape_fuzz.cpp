// libFuzzer target for the shapefile readers (.shp with its .shx index, and the
// .dbf table): any bytes must read without a crash, a hang or a sanitizer report;
// every failure must be an Error; what is read must hold together and must write
// back and read again the same.
//
// Input layout (tests/basemaps/shape_corpus_test.cpp splits the corpus the same
// way): two bytes, little-endian, the length of the .shx part; two bytes that of
// the .shp part; then the .shx bytes, the .shp bytes, and the rest is the .dbf.
// Lengths beyond what is left are cut to it.

#include <unistd.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "src/basemaps/dbf.h"
#include "src/basemaps/shapefile.h"

using namespace tarno;

namespace {

// The folder of this process's files, removed at exit. The path lives on the heap
// and is never destroyed, so that the exit handler can still use it.
const std::filesystem::path& Dir() {
  static const std::filesystem::path* dir = [] {
    auto* d = new std::filesystem::path(std::filesystem::temp_directory_path() /
                                        ("shape_fuzz_" + std::to_string(getpid())));
    std::filesystem::create_directories(*d);
    std::atexit([] {
      std::error_code ec;
      std::filesystem::remove_all(Dir(), ec);
    });
    return d;
  }();
  return *dir;
}

void Put(const std::filesystem::path& p, std::string_view bytes) {
  std::ofstream f(p, std::ios::binary | std::ios::trunc);
  f.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

bool Finite(double v) { return std::isfinite(v); }

// The box of a shape holds every one of its points.
void CheckBox(const IShape& s, double x, double y) {
  if (!Finite(x) || !Finite(y) || !Finite(s.Left()) || !Finite(s.Right()) || !Finite(s.Top()) ||
      !Finite(s.Bottom()))
    return;
  if (x < s.Left() || x > s.Right() || y < s.Bottom() || y > s.Top()) std::abort();
}

int PointsOf(const IShape& s) {
  if (s.IsNull()) return 0;
  if (auto* p = dynamic_cast<const CPoint*>(&s)) {
    CheckBox(s, p->X(), p->Y());
    return 1;
  }
  if (auto* m = dynamic_cast<const CMultiPoint*>(&s)) {
    for (const CPoint& q : m->Points()) CheckBox(s, q.X(), q.Y());
    return m->Count();
  }
  if (auto* ps = dynamic_cast<const CPartShape*>(&s)) {
    int n = 0;
    for (const CPart& part : ps->Parts()) {
      for (const CPoint& q : part.Points()) CheckBox(s, q.X(), q.Y());
      n += part.Count();
    }
    return n;
  }
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view in(reinterpret_cast<const char*>(data), size);
  if (in.size() < 4) return 0;
  const std::size_t shxLen = std::min<std::size_t>(data[0] | (data[1] << 8), in.size() - 4);
  const std::size_t shpLen =
      std::min<std::size_t>(data[2] | (data[3] << 8), in.size() - 4 - shxLen);
  const std::string_view shx = in.substr(4, shxLen);
  const std::string_view shp = in.substr(4 + shxLen, shpLen);
  const std::string_view dbf = in.substr(4 + shxLen + shpLen);

  try {
    const DbfTable t = ReadDBFBytes(dbf, "fuzz.dbf");
    if (t.Records.size() != t.Deleted.size()) std::abort();
    for (const auto& r : t.Records)
      if (r.size() != t.Fields.size()) std::abort();
  } catch (const Error&) {}

  const std::filesystem::path dir = Dir();
  Put(dir / "f.shx", shx);
  Put(dir / "f.shp", shp);
  CShapeFile f;
  try {
    f.SetFileSpec(CFileName((dir / "f.shp").string()), CShapeFile::kOpenExisting);
  } catch (const Error&) {
    return 0;
  }
  if (f.Count() < 0) std::abort();
  // The index lookup's bounds.
  for (int i : {0, -1, f.Count() + 1}) {
    try {
      f.Item(i);
      std::abort();
    } catch (const ShapeFileError&) {}
  }
  // Every record that reads writes back and reads again with the same points.
  CShapeFile out;
  const bool nullFile = f.FileType() == ShapeType::Null;
  if (!nullFile)
    out.SetFileSpec(CFileName((dir / "g.shp").string()), CShapeFile::kCreate, f.FileType());
  std::vector<int> written;
  const int n = std::min(f.Count(), 64);
  for (int i = 1; i <= n; ++i) {
    try {
      const auto s = f.ItemOrNull(i);
      const int points = PointsOf(*s);
      if (!nullFile) {
        out.Add(*s);
        written.push_back(points);
      }
    } catch (const ShapeFileError&) {}
  }
  if (nullFile) return 0;
  CShapeFile back;
  back.SetFileSpec(CFileName((dir / "g.shp").string()), CShapeFile::kOpenExisting);
  if (back.Count() != static_cast<int>(written.size())) std::abort();
  for (int i = 1; i <= back.Count(); ++i)
    if (PointsOf(*back.ItemOrNull(i)) != written[i - 1]) std::abort();
  return 0;
}
