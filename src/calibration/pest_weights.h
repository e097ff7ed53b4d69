// "Assign Weights" (OPTWeight): the weights of the test points for PEST or UCODE, on
// three pages (piezometers, gages, lake stages). The labels are fixed; the weights
// are edited as text and written back to TestPoints (PESTWeight or UCODEWeight) on
// OK. The rows are held in the model, not in temporary tables of the project.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

class Database;

class OptWeight : public DialogModel {
 public:
  static constexpr const char* kName = "OPTWeight";
  std::string DialogName() const override { return kName; }

  // "PEST" or "UCODE".
  explicit OptWeight(std::string type) : optType(std::move(type)) {}

  std::string Caption() const;
  // Fills the three pages with the test points and their weights.
  void init(Database& db);
  // OK: every weight must be a number of zero or more ("Bad Entry" names the label
  // and the text, the dialog stays, false); then Result is 1.
  bool OK(UserInterface& ui);
  // Cancel asks "Cancel?"; on Yes Result is 2 (true), on No the dialog stays.
  bool Cancel(UserInterface& ui);
  // Writes the weights of an accepted dialog to TestPoints, one transaction.
  void Write(Database& db) const;

  struct WeightRow {
    std::int64_t vid = 0;
    std::string Label;
    std::string Weight;  // as text, as the grid edits it
  };
  std::string optType;
  std::vector<WeightRow> Piezometer_Weights;
  std::vector<WeightRow> Gage_Weights;
  std::vector<WeightRow> Lake_Stage_Weights;
  int Result = 2;
};

}  // namespace tarno
