// Small helpers shared by the dialog views: text conversion and the building of
// captioned fields.
#pragma once

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QString>
#include <string>

namespace tarno::views {

inline QString Q(const std::string& text) { return QString::fromStdString(text); }
inline std::string S(const QString& text) { return text.toStdString(); }

// A captioned text field on a row of a grid: caption, field, and an optional unit
// label behind it (returned through `unit`).
inline QLineEdit* AddField(QGridLayout* grid, int row, const QString& caption,
                           const std::string& text, QLabel** captionLabel = nullptr,
                           QLabel** unit = nullptr) {
  auto* label = new QLabel(caption);
  auto* edit = new QLineEdit(Q(text));
  label->setBuddy(edit);
  grid->addWidget(label, row, 0);
  grid->addWidget(edit, row, 1);
  if (captionLabel != nullptr) *captionLabel = label;
  if (unit != nullptr) {
    *unit = new QLabel;
    grid->addWidget(*unit, row, 2);
  }
  return edit;
}

}  // namespace tarno::views
