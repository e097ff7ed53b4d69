// The views of the area selection: the choice of the element type, and the count
// found with Delete, Edit (particles) and Cancel.
#pragma once

#include <QDialog>

#include "app/shell/select_area.h"

class QComboBox;
class QPushButton;

namespace tarno {

class SelectAreaView : public QDialog {
 public:
  explicit SelectAreaView(SelectArea& model, QWidget* parent = nullptr);
  QComboBox* elementType() const { return type_; }

 private:
  SelectArea& model_;
  QComboBox* type_;
};

class SelectAreaOptionsView : public QDialog {
 public:
  explicit SelectAreaOptionsView(SelectAreaOptions& model, QWidget* parent = nullptr);
  QPushButton* deleteButton() const { return delete_; }
  QPushButton* editButton() const { return edit_; }

 private:
  SelectAreaOptions& model_;
  QPushButton *delete_, *edit_, *cancel_;
};

}  // namespace tarno
