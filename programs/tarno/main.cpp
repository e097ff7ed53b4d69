// tarno: the desktop program.
//   tarno [project]
//   tarno --screenshot <file.png> [--size <w>x<h>] [--solve] <project>
// The second form draws the project's map without a display and writes it as a
// PNG (after solving the project with --solve).
#include <QApplication>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "app/app_screenshot.h"
#include "app/main_window.h"
#include "core/error.h"
#include "store/default_dirs.h"

int main(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  std::optional<tarno::ScreenshotRequest> shot;
  try {
    shot = tarno::ParseScreenshotArguments(args);
  } catch (const std::exception& e) {
    std::cerr << "tarno: " << e.what() << "\n"
              << "usage: tarno [project]\n"
              << "       tarno --screenshot <file.png> [--size <w>x<h>] [--solve] <project>\n";
    return 2;
  }
  // A screenshot needs no display; the platform's notes about the missing one
  // (runtime directory, window hints) are no news to the user then.
  if (shot) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
      if (type == QtCriticalMsg || type == QtFatalMsg) std::cerr << text.toStdString() << "\n";
    });
  }

  QApplication app(argc, argv);
  QApplication::setOrganizationName(tarno::kSettingsOrganisation);
  QApplication::setApplicationName(tarno::kSettingsApplication);
  if (shot) return tarno::TakeScreenshot(*shot, std::cout, std::cerr);

  // What Qt left of the command line: the project, with or without quotes.
  std::string project;
  const QStringList rest = QApplication::arguments();
  for (int i = 1; i < rest.size(); ++i) {
    if (!project.empty()) project += ' ';
    project += rest[i].toStdString();
  }
  tarno::MainWindow::Options options;
  options.settingsFile = tarno::WindowSettingsFile();
  tarno::MainWindow window(options);
  window.show();
  window.StartUp(project);
  return QApplication::exec();
}
