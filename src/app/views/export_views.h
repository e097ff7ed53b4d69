// The views of the geometry exports' dialogs: VectorExport (what a DXF or boundary
// line file holds, and the DXF layer name of contours) and ExportShapefile (the
// kind of shapefile). Thin: the models check and keep the choice.
#pragma once

#include <array>

#include <QDialog>

#include "core/ui_port.h"
#include "exchange/export_dialogs.h"

class QLineEdit;
class QPushButton;
class QRadioButton;

namespace tarno {

class VectorExportView : public QDialog {
 public:
  VectorExportView(exchange::VectorExport& model, UserInterface& ui, QWidget* parent = nullptr);

  QRadioButton* option(int i) const { return options_[static_cast<std::size_t>(i)]; }
  QLineEdit* layerName() const { return layer_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

 private:
  exchange::VectorExport& model_;
  UserInterface& ui_;
  std::array<QRadioButton*, 4> options_{};
  QLineEdit* layer_;
  QPushButton *ok_, *cancel_;
};

class ExportShapefileView : public QDialog {
 public:
  ExportShapefileView(exchange::ExportShapefile& model, UserInterface& ui,
                      QWidget* parent = nullptr);

  QRadioButton* option(int i) const { return options_[static_cast<std::size_t>(i)]; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

 private:
  exchange::ExportShapefile& model_;
  UserInterface& ui_;
  std::array<QRadioButton*, 9> options_{};
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
