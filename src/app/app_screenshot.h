// The screenshot of a project's map without a display: the program's option
// `tarno --screenshot <file.png> [--size <w>x<h>] [--solve] <project>`.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace tarno {

struct ScreenshotRequest {
  std::string output;   // the PNG to write
  int width = 1200;
  int height = 800;
  bool solve = false;   // solve the project first (without the question of a re-solve)
  std::string project;
};

// Reads the arguments after the program's name. Nothing when --screenshot is not
// among them; throws Error with a message naming the bad argument otherwise.
std::optional<ScreenshotRequest> ParseScreenshotArguments(const std::vector<std::string>& args);

// Reads "<w>x<h>" (each 16 to 10000); throws Error naming the text otherwise.
void ParseSize(const std::string& text, int& width, int& height);

// Opens the project in a main window with a port that asks nothing, solves it when
// asked, renders the map at the size and writes the PNG. Needs a QApplication.
// Returns the program's exit status: 0, or 1 with the reason written to `err`.
int TakeScreenshot(const ScreenshotRequest& request, std::ostream& out, std::ostream& err);

}  // namespace tarno
