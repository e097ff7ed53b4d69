// The views of the reprojection dialogs: ReprojectMaps (a folder's maps, the old and
// the new projection, the datum for state plane zones) and MapTarget (maps chosen
// elsewhere, shown read-only). The projection lists are in "Courier New" so that
// their 40-character rows line up.
#pragma once

#include <QDialog>

#include "basemaps/convert_tools.h"

class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;

namespace tarno {

class ReprojectMapsView : public QDialog {
 public:
  explicit ReprojectMapsView(ReprojectMapsDialog& model, QWidget* parent = nullptr);

  QLineEdit* sourceDir() const { return dirSourceDir_; }
  QListWidget* sourceFiles() const { return listSourceFiles_; }
  QListWidget* sourceProjections() const { return listSourceProj_; }
  QListWidget* targetProjections() const { return listTargetProj_; }
  QRadioButton* nad27() const { return nad27_; }
  QRadioButton* nad83() const { return nad83_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

 private:
  void ShowFiles();
  ReprojectMapsDialog& model_;
  QLineEdit* dirSourceDir_;
  QListWidget *listSourceFiles_, *listSourceProj_, *listTargetProj_;
  QRadioButton *nad27_, *nad83_;
  QPushButton *ok_, *cancel_;
};

class MapTargetView : public QDialog {
 public:
  explicit MapTargetView(MapTargetDialog& model, QWidget* parent = nullptr);

  QListWidget* files() const { return files_; }
  QListWidget* sourceProjections() const { return source_; }
  QListWidget* targetProjections() const { return target_; }
  QRadioButton* nad27() const { return nad27_; }
  QRadioButton* nad83() const { return nad83_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }

 private:
  MapTargetDialog& model_;
  QListWidget *files_, *source_, *target_;
  QRadioButton *nad27_, *nad83_;
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
