// The view of "Implement Scenarios": the three grids (aquifer, line-sink strings,
// inhomogeneities) of tags with their current and default values, the two buttons
// that copy one column onto the other, "Update Database (Save Changes)" and "Done".
#pragma once

#include <QDialog>

#include "calibration/scenario_dialog.h"

class QPushButton;
class QTableWidget;

namespace tarno {

class ScenariosView : public QDialog {
 public:
  ScenariosView(Scenarios& model, UserInterface& ui, QWidget* parent = nullptr);

  // AqTabGrid, LSGrid and InGrid by ScenarioTable.
  QTableWidget* grid(ScenarioTable table) const { return grids_[static_cast<int>(table)]; }
  QPushButton* updateButton() const { return update_; }
  QPushButton* defaultButton(int index) const { return defaults_[index]; }
  QPushButton* doneButton() const { return done_; }

  // Closing the window is Done.
  void reject() override;

 private:
  void FillGrids();
  void CellEdited(ScenarioTable table, int row, int column);

  Scenarios& model_;
  UserInterface& ui_;
  QTableWidget* grids_[3];
  QPushButton* update_;
  QPushButton* defaults_[2];
  QPushButton* done_;
  bool filling_ = false;
};

}  // namespace tarno
