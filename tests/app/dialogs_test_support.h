// Shared by the tests of the port, the dialog views and the shell models: the one
// application object of the test program and a new project in a temporary folder.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <QWidget>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "store/database.h"
#include "store/schema.h"
#include "support/temp_dir.h"

namespace tarno::testing {

// The widgets need an application object; the test program makes one, the first
// time it is asked for, unless another part of it already did.
inline void EnsureApplication() {
  if (QApplication::instance() != nullptr) return;
  static int argc = 1;
  static char name[] = "test_app";
  static char* argv[] = {name, nullptr};
  static QApplication* app = new QApplication(argc, argv);
  (void)app;
}

// Acts on the next dialog of type D that shows, from inside the event loop its
// exec() runs, so that a test never waits on a modal window: `act` must close it.
template <typename D>
void OnNextDialog(std::function<void(D*)> act) {
  auto* timer = new QTimer;
  timer->setInterval(10);
  auto tries = std::make_shared<int>(0);
  auto acted = std::make_shared<bool>(false);
  QObject::connect(timer, &QTimer::timeout, [timer, act, tries, acted] {
    // A dialog that never comes, or another one, must not hang the test: after five
    // seconds the modal window in the way is closed and the test fails.
    if (++*tries > 500) {
      timer->stop();
      timer->deleteLater();
      ADD_FAILURE() << "the expected dialog did not show";
      if (QWidget* modal = QApplication::activeModalWidget()) modal->close();
      return;
    }
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* dialog = dynamic_cast<D*>(widget);
      if (dialog == nullptr || !dialog->isVisible()) continue;
      // The act is repeated until the dialog has gone: a file dialog refuses an
      // accept while its folder is still being read in the background.
      act(dialog);
      *acted = true;
      if (!dialog->isVisible()) {
        timer->stop();
        timer->deleteLater();
      }
      return;
    }
    if (*acted) {
      timer->stop();
      timer->deleteLater();
    }
  });
  timer->start();
}

class ProjectTest : public ::testing::Test {
 protected:
  void SetUp() override {
    EnsureApplication();
    temp_.emplace("tarno_dialogs");
    dir_ = temp_->Path();
    path_ = dir_ / "model.trn";
    DBNewDatabase(path_, "Dialog test", basemapMeters_, true);
    {
      Database db = Database::Open(path_);
      Statement st = db.PrepareRaw("update Project set TARNOBaseName=?, TARNOBasePath=?");
      st.Bind(1, std::string("golden")).Bind(2, dir_.string());
      st.Run();
    }
  }

  void TearDown() override { temp_.reset(); }

  Database Open() { return Database::Open(path_); }

  // One field of the Model row as a number.
  double ModelNumber(const std::string& field) {
    Database db = Open();
    Statement st = db.PrepareRaw("select " + field + " from Model");
    if (!st.Step()) return -1e300;
    return st.GetDouble(0);
  }

  bool basemapMeters_ = true;
  std::optional<test::TempDir> temp_;
  std::filesystem::path dir_;
  std::filesystem::path path_;
};

}  // namespace tarno::testing
