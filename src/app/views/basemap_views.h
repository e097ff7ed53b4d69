// The views of the base map dialogs (basemaps/browser.h): the map browser, the
// options of one map, the attribute table of a shapefile and the layers of a CAD
// file or an image. Each is a thin window over its model: the buttons call the
// model's operations, which show their boxes and dialogs through the port.
#pragma once

#include <QDialog>

#include "basemaps/browser.h"
#include "core/ui_port.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QListWidget;
class QPushButton;
class QTableWidget;

namespace tarno {

class MapBrowserView : public QDialog {
 public:
  MapBrowserView(MapBrowser& model, UserInterface& ui, QWidget* parent = nullptr);

  QListWidget* maps() const { return maps_; }
  QPushButton* addButton() const { return add_; }
  QPushButton* removeButton() const { return remove_; }
  QPushButton* optionsButton() const { return options_; }
  QPushButton* viewButton() const { return view_; }
  QPushButton* closeButton() const { return close_; }

 private:
  void ShowMaps();
  MapBrowser& model_;
  UserInterface& ui_;
  QListWidget* maps_;
  QPushButton *add_, *remove_, *options_, *view_, *close_;
};

class BaseMapBrowserOptionsView : public QDialog {
 public:
  BaseMapBrowserOptionsView(BaseMapBrowserOptions& model, UserInterface& ui,
                            QWidget* parent = nullptr);

  QCheckBox* show() const { return show_; }
  QComboBox* colorField() const { return colorField_; }
  QCheckBox* useColorField() const { return useColorField_; }
  QComboBox* textField() const { return textField_; }
  QCheckBox* buildPyramids() const { return pyramids_; }
  QPushButton* okButton() const { return ok_; }

 private:
  void ShowColour();
  BaseMapBrowserOptions& model_;
  UserInterface& ui_;
  QCheckBox* show_;
  QLabel* swatch_;
  QComboBox* colorField_;
  QCheckBox* useColorField_;
  QComboBox* textField_;
  QCheckBox* pyramids_;
  QPushButton *ok_, *cancel_;
};

class ViewShapeView : public QDialog {
 public:
  explicit ViewShapeView(ViewShape& model, QWidget* parent = nullptr);
  QTableWidget* table() const { return table_; }

 private:
  QTableWidget* table_;
};

class ViewGraphicsView : public QDialog {
 public:
  explicit ViewGraphicsView(ViewGraphics& model, QWidget* parent = nullptr);
  QTableWidget* table() const { return table_; }

 private:
  QTableWidget* table_;
};

}  // namespace tarno
