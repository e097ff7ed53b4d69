// Shared by the views of the element dialogs: the OK button checks the model against
// the project file, opened for the time of the check only, inside the error trap of
// the dialog's OK; a refused field comes forward with its text selected; the number
// filter, the OK and Cancel row, and the colour swatch.
#pragma once

#include <QColor>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPalette>
#include <QPushButton>
#include <QRegularExpression>
#include <QRegularExpressionValidator>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "app/qt_ui.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "elements/element_dialog.h"
#include "store/database.h"

namespace tarno::views {

// The model's OK on the open project; false when refused or when the check failed.
inline bool RunElementOK(ElementDialog& model, UserInterface& ui,
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

// The field a refused check names: enabled, focused, its text selected.
inline void SelectRefused(QLineEdit* edit) {
  if (edit == nullptr) return;
  edit->setEnabled(true);
  edit->setFocus();
  edit->selectAll();
}

// The typing filter of number fields: digits, the point, the signs and the
// exponent's "E" (the "+" so that a shown "1E+15" stays editable).
inline void NumberFilter(QLineEdit* edit) {
  edit->setValidator(
      new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9.+\\-E]*")), edit));
}

// The "Label" row at the top of an element dialog.
inline QHBoxLayout* LabelRow(QLineEdit*& edit) {
  auto* row = new QHBoxLayout;
  auto* caption = new QLabel(QStringLiteral("Label"));
  edit = new QLineEdit;
  caption->setBuddy(edit);
  row->addWidget(caption);
  row->addWidget(edit);
  return row;
}

// The OK and Cancel buttons at the right of a row.
inline QHBoxLayout* OkCancelButtons(QPushButton*& ok, QPushButton*& cancel) {
  auto* row = new QHBoxLayout;
  ok = new QPushButton(QStringLiteral("OK"));
  cancel = new QPushButton(QStringLiteral("Cancel"));
  ok->setDefault(true);
  row->addStretch();
  row->addWidget(ok);
  row->addWidget(cancel);
  return row;
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
