// The view of the GIS import: the file's layers, the kind of element and, for each
// role of the kind, the attribute that gives it.
#pragma once

#include <QDialog>
#include <vector>

#include "core/ui_port.h"
#include "exchange/vector_import.h"

class QComboBox;
class QGridLayout;
class QLabel;
class QPushButton;

namespace tarno {

class VectorImportView : public QDialog {
 public:
  VectorImportView(exchange::VectorImport& model, UserInterface& ui, QWidget* parent = nullptr);

  QComboBox* layers() const { return layers_; }
  QComboBox* kinds() const { return kinds_; }
  // The attribute choosers, one per role of the kind, in the order of RolesOf.
  const std::vector<QComboBox*>& attributes() const { return attributes_; }
  QPushButton* okButton() const { return ok_; }

  void reject() override;

 private:
  void ShowMapping();
  void TakeMapping();
  exchange::VectorImport& model_;
  UserInterface& ui_;
  QComboBox* layers_;
  QComboBox* kinds_;
  QLabel* crs_;
  QGridLayout* grid_;
  QWidget* mapping_;
  std::vector<QComboBox*> attributes_;
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
