#include "app/app_screenshot.h"

#include <QImage>
#include <QImageWriter>
#include <filesystem>
#include <ostream>

#include "app/main_window.h"
#include "core/console_ui.h"
#include "core/error.h"
#include "store/project_file.h"

namespace tarno {

namespace fs = std::filesystem;

void ParseSize(const std::string& text, int& width, int& height) {
  const auto x = text.find_first_of("xX");
  auto number = [&](const std::string& part) {
    if (part.empty() || part.size() > 5 || part.find_first_not_of("0123456789") != std::string::npos)
      throw Error("Bad size \"" + text + "\": expected <width>x<height>, for example 1200x800");
    return std::stoi(part);
  };
  if (x == std::string::npos)
    throw Error("Bad size \"" + text + "\": expected <width>x<height>, for example 1200x800");
  const int w = number(text.substr(0, x)), h = number(text.substr(x + 1));
  if (w < 16 || h < 16 || w > 10000 || h > 10000)
    throw Error("Bad size \"" + text + "\": width and height must lie between 16 and 10000");
  width = w;
  height = h;
}

std::optional<ScreenshotRequest> ParseScreenshotArguments(const std::vector<std::string>& args) {
  bool wanted = false;
  for (const auto& a : args) wanted = wanted || a == "--screenshot";
  if (!wanted) return std::nullopt;
  ScreenshotRequest r;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    auto value = [&](const char* what) {
      if (i + 1 >= args.size()) throw Error(std::string("The option ") + a + " needs " + what);
      return args[++i];
    };
    if (a == "--screenshot") {
      r.output = value("the PNG file to write");
    } else if (a == "--size") {
      ParseSize(value("a size such as 1200x800"), r.width, r.height);
    } else if (a == "--solve") {
      r.solve = true;
    } else if (a.rfind("--", 0) == 0) {
      throw Error("Unknown option \"" + a + "\"");
    } else if (r.project.empty()) {
      r.project = a;
    } else {
      throw Error("More than one project given: \"" + r.project + "\" and \"" + a + "\"");
    }
  }
  if (r.project.empty()) throw Error("No project given for the screenshot");
  return r;
}

int TakeScreenshot(const ScreenshotRequest& request, std::ostream& out, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(request.project);
  if (probe.state != ProjectFileState::Project) {
    err << "tarno: " << ProbeTitle(probe) << ": " << ProbeMessage(request.project, probe) << "\n";
    return 1;
  }
  // A port that shows nothing: messages go to standard error; questions are
  // answered so that the project opens as it stands (no upgrade, no new file).
  ConsoleUserInterface ui(err, Answer::Yes);
  ui.SetAnswerPolicy([](const std::string& title, const std::vector<std::string>&,
                        Buttons) -> std::optional<Answer> {
    if (title == "Version Update" || title == "No Such File") return Answer::No;
    return std::nullopt;
  });
  MainWindowOptions options;
  options.ui = &ui;
  options.useSettings = false;
  MainWindow window(options);
  window.resize(request.width, request.height + 120);
  if (!window.OpenProject(request.project) || !window.Session().ProjectOpen()) {
    err << "tarno: the project " << request.project << " could not be opened\n";
    return 1;
  }
  if (request.solve) {
    const SolveOutcome outcome = window.Solve(false);
    if (outcome != SolveOutcome::Completed) {
      err << "tarno: the solve of " << request.project << " did not complete"
          << (window.LastSolve().failure.empty() ? "" : ": " + window.LastSolve().failure) << "\n";
      return 1;
    }
  }
  window.RenderMapAt(request.width, request.height);
  QImage image = window.MapImage();
  if (image.isNull()) {
    err << "tarno: the map of " << request.project << " could not be drawn\n";
    return 1;
  }
  // The file has the requested size in pixels whatever the screen's ratio.
  if (image.width() != request.width || image.height() != request.height)
    image = image.scaled(request.width, request.height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  image.setDevicePixelRatio(1.0);
  QImageWriter writer(QString::fromStdString(request.output), "png");
  if (!writer.write(image)) {
    err << "tarno: cannot write " << request.output << ": " << writer.errorString().toStdString()
        << "\n";
    return 1;
  }
  window.Session().CloseAll();
  out << "Screenshot written to " << request.output << "\n";
  return 0;
}

}  // namespace tarno
