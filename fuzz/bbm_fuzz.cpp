// libFuzzer target for the BBM reader and its drawing: any bytes, read as a BBM
// file, must connect or fail with an Error, and a connected map must draw on a
// recording surface at the three DLG levels (and play its command stream) without
// a crash, a hang, a read outside the file or a sanitizer report. The drawing may
// fail with an Error (a truncated record, a class 19 line at the closest level).

#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "basemaps/bbm.h"
#include "core/error.h"
#include "core/silent_ui.h"
#include "display/canvas.h"
#include "display/vgraph.h"

using namespace tarno;

namespace {

// A port that answers every box with its first button and keeps nothing.
using NullUi = SilentUserInterface;

std::string ScratchPath() {
  const char* dir = std::getenv("TMPDIR");
  return std::string(dir != nullptr ? dir : "/tmp") + "/bbm_fuzz_" + std::to_string(getpid()) +
         ".bbm";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const std::string path = ScratchPath();
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f == nullptr) return 0;
  if (size > 0) std::fwrite(data, 1, size, f);
  std::fclose(f);

  NullUi ui;
  BBMap map(&ui);
  try {
    map.Connect(path);
  } catch (const Error&) {
    return 0;
  }
  if (!map.Connected()) return 0;
  (void)map.InfoLines();
  // Small windows around the map's box and wide ones, at 10, 2500 and 4000
  // hundredths a pixel: the three DLG levels.
  RecordingCanvas canvas(400, 400);
  VGraphGDI g(&ui);
  const double widths[] = {40, 10000, 16000};
  for (const double width : widths) {
    const double cx = map.Header().X1 / 100.0;
    const double cy = map.Header().Y1 / 100.0;
    WorldWindow w{cx - width / 2, cx + width / 2, cy + width / 2, cy - width / 2};
    try {
      if (g.vgGDIInitObject(canvas, w, false, 10.0) != 0) continue;
      map.SetDrawOptions({width<100, width> 10000});
      map.Draw(g, true, true, true);
    } catch (const Error&) {}
    try {
      (void)map.Groups();
      map.DrawGroup(g, 50, 412, 255);
    } catch (const Error&) {}
    canvas.ClearOps();
  }
  try {
    (void)GetBBMProjection(path);
  } catch (const Error&) {}
  return 0;
}
