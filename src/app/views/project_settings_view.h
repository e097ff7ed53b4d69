// The view of the project settings: description, base file name and path, the two
// unit designations (read only, changed through "Change Units..."), and the list of
// base maps with "Add Map..." and "Remove Map".
#pragma once

#include <QDialog>

#include "core/ui_port.h"
#include "store/dialogs.h"

class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace tarno {

class ProjectSettingsView : public QDialog {
 public:
  ProjectSettingsView(ProjectSettings& model, UserInterface& ui, QWidget* parent = nullptr);

  QPlainTextEdit* description() const { return description_; }
  QLineEdit* baseName() const { return baseName_; }
  QLineEdit* basePath() const { return basePath_; }
  QLineEdit* mapUnits() const { return mapUnits_; }
  QLineEdit* compUnits() const { return compUnits_; }
  QListWidget* baseMaps() const { return baseMaps_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  QPushButton* changeUnitsButton() const { return changeUnits_; }
  QPushButton* addMapButton() const { return addMap_; }
  QPushButton* removeMapButton() const { return removeMap_; }

  // The window's close button and Escape count as Cancel, and do nothing while
  // Cancel is disabled (a brand-new project must be confirmed).
  void reject() override;

 private:
  void ToModel();
  void ShowUnits();
  void ShowMaps();
  ProjectSettings& model_;
  UserInterface& ui_;
  QPlainTextEdit* description_;
  QLineEdit* baseName_;
  QLineEdit* basePath_;
  QLineEdit* mapUnits_;
  QLineEdit* compUnits_;
  QListWidget* baseMaps_;
  QPushButton* ok_;
  QPushButton* cancel_;
  QPushButton* changeUnits_;
  QPushButton* addMap_;
  QPushButton* removeMap_;
};

}  // namespace tarno
