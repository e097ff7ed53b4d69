// What the views of barriers, inhomogeneities, lakes and the uniform flow share:
// the OK that checks on the open project, the selection of a refused field, and
// the colour swatch.
#pragma once

#include <QColor>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <cstdint>
#include <functional>
#include <string>

#include "app/qt_ui.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "elements/element_dialog.h"
#include "store/database.h"

namespace tarno::views {

// Runs the model's OK with the project opened for the time of the check (the
// label searches need it); an error on the way shows the general message of
// `operation`. True when the model accepted.
inline bool CheckOnProject(ElementDialog& model, UserInterface& ui,
                           const std::function<std::string()>& projectFile,
                           std::string_view operation) {
  bool accepted = false;
  RunOperation(ui, operation, [&] {
    const std::string path = projectFile ? projectFile() : std::string();
    if (path.empty()) throw Error("No project is open");
    Database db = Database::Open(path);
    accepted = model.OK(db, ui);
  });
  return accepted;
}

// Brings a refused field forward: focus and its whole text selected.
inline void SelectField(QLineEdit* edit) {
  if (edit == nullptr) return;
  edit->setEnabled(true);
  edit->setFocus();
  edit->selectAll();
}

// A small framed box that shows a packed colour.
inline QLabel* NewSwatch() {
  auto* swatch = new QLabel;
  swatch->setFixedSize(40, 20);
  swatch->setAutoFillBackground(true);
  swatch->setFrameStyle(QFrame::Box | QFrame::Plain);
  return swatch;
}
inline void PaintSwatch(QLabel* swatch, std::uint32_t colour) {
  QPalette palette = swatch->palette();
  palette.setColor(QPalette::Window, ToQColor(colour));
  swatch->setPalette(palette);
}

}  // namespace tarno::views
