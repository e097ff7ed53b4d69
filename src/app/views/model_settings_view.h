// The view of the model settings: the tabs of the aquifer, the interface flow, the
// contours, the tracing, the solver and the scenarios, over the settings model.
#pragma once

#include <QDialog>
#include <array>
#include <map>

#include "app/shell_models.h"

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QTabWidget;

namespace tarno {

class ModelSettingsView : public QDialog {
 public:
  // The tabs, in their order.
  enum Tab { kAquiferTab = 0, kInterfaceTab, kContoursTab, kTracingTab, kSolverTab, kScenarioTab };

  ModelSettingsView(ModelSettingsDialog& model, UserInterface& ui, QWidget* parent = nullptr);

  QTabWidget* tabs() const { return tabs_; }
  // The text field of a checked field (null for Field::None).
  QLineEdit* field(ModelSettings::Field which) const;
  // The tab a checked field sits on.
  static int TabOf(ModelSettings::Field which);

  QLineEdit* tbBase() const { return tbBase_; }
  QLineEdit* tbRecharge() const { return tbRecharge_; }
  QLineEdit* tbAvgSeaLevel() const { return tbAvgSeaLevel_; }
  QLineEdit* tbContourMin() const { return tbContourMin_; }
  QLineEdit* tbDefaultStepSize() const { return tbDefaultStepSize_; }
  QCheckBox* chkAddSaltwaterInterface() const { return chkAddSaltwaterInterface_; }
  QCheckBox* chkContour() const { return chkContour_; }
  QCheckBox* chkContourElevation() const { return chkContourElevation_; }
  QCheckBox* chkComputePaths() const { return chkComputePaths_; }
  QCheckBox* chkDefaultStep() const { return chkDefaultStep_; }
  QCheckBox* chkOutsideLoop() const { return chkOutsideLoop_; }
  QCheckBox* chkFastSolution() const { return chkFastSolution_; }
  QCheckBox* chkViewError() const { return chkViewError_; }
  QCheckBox* chkViewMessage() const { return chkViewMessage_; }
  QCheckBox* chkStoreMatrixOnDisk() const { return chkStoreMatrixOnDisk_; }
  QCheckBox* chkConjunctive() const { return chkConjunctive_; }
  QCheckBox* chkScenarioHydCond() const { return chkScenarioHydCond_; }
  QCheckBox* chkScenarioBaseElev() const { return chkScenarioBaseElev_; }
  QRadioButton* contourProperty(int index) const { return contourProperties_[index]; }
  QRadioButton* contourDetail(int index) const { return contourDetail_[index]; }
  QLabel* intervalCaption() const { return intervalCaption_; }
  QGroupBox* drawdownNote() const { return drawdownNote_; }
  QLabel* lengthUnitLabel() const { return thicknessUnit_; }
  QLabel* conductivityUnitLabel() const { return hydCondUnit_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  QPushButton* relaxButton() const { return relax_; }
  QPushButton* convergeButton() const { return converge_; }

  void reject() override;

 private:
  void FromModel();
  void ToModel();
  void UpdateEnabled();
  void ChooseContourProperty(int index);
  void PressOK();

  ModelSettingsDialog& model_;
  UserInterface& ui_;
  QTabWidget* tabs_;
  std::map<ModelSettings::Field, QLineEdit*> fields_;

  QLineEdit *tbBase_, *tbThickness_, *tbHydCond_, *tbRecharge_, *tbPorosity_;
  QLabel *baseUnit_, *thicknessUnit_, *hydCondUnit_, *rechargeUnit_;
  QCheckBox* chkAddSaltwaterInterface_;
  QLineEdit *tbFreshGravity_, *tbSaltGravity_, *tbAvgSeaLevel_;
  QLabel* seaLevelUnit_;
  QCheckBox* chkContour_;
  std::array<QRadioButton*, 6> contourProperties_{};
  QLineEdit *tbContourMin_, *tbContourMax_, *tbContourInt_;
  QLabel* intervalCaption_;
  std::array<QRadioButton*, 3> contourDetail_{};
  QLineEdit* tbContourLevel_;
  QCheckBox* chkContourElevation_;
  QLineEdit* tbContourElevation_;
  QLabel* elevationUnit_;
  QGroupBox* drawdownNote_;
  QCheckBox* chkComputePaths_;
  QLineEdit *tbMaxTime_, *tbStepSize_, *tbDefaultStepSize_;
  QLabel *stepUnit_, *defaultStepUnit_;
  QCheckBox* chkDefaultStep_;
  QLineEdit *tbIterations_, *tbOuterIterations_;
  QCheckBox *chkOutsideLoop_, *chkFastSolution_, *chkViewError_, *chkViewMessage_,
      *chkStoreMatrixOnDisk_, *chkConjunctive_;
  QPushButton *relax_, *converge_;
  QCheckBox *chkScenarioHydCond_, *chkScenarioBaseElev_;
  QLineEdit *tbScenarioHydCond_, *tbScenarioBaseElev_;
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
