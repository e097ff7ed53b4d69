#include "calibration/pest_weights.h"

#include <cerrno>
#include <cstdlib>

#include "core/format.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "store/database.h"

namespace tarno {

namespace {

bool ReadWeight(const std::string& text, double& value) {
  const std::string t = TrimST(text);
  if (t.empty()) return false;
  char* end = nullptr;
  errno = 0;
  value = std::strtod(t.c_str(), &end);
  return *end == '\0' && errno != ERANGE && value >= 0;
}

}  // namespace

std::string OptWeight::Caption() const {
  return optType == "UCODE"
             ? "UCODE Weight for Test Points                             (F1 for Help)"
             : "PEST Weight for Test Points                                 (F1 for Help)";
}

void OptWeight::init(Database& db) {
  Piezometer_Weights.clear();
  Gage_Weights.clear();
  Lake_Stage_Weights.clear();
  const char* field = optType == "UCODE" ? "UCODEWeight" : "PESTWeight";
  for (const Element& e : LoadAllRows(db, ElementKind::TestPoint)) {
    const std::string type = e.row.Text("Type");
    WeightRow row{e.key, e.row.Text("Label"), GeneralNumber(e.row.Number(field))};
    if (EqualsIgnoreCase(type, "Piezometer")) Piezometer_Weights.push_back(row);
    else if (EqualsIgnoreCase(type, "Gage")) Gage_Weights.push_back(row);
    else if (EqualsIgnoreCase(type, "Lake Stage")) Lake_Stage_Weights.push_back(row);
  }
}

bool OptWeight::OK(UserInterface& ui) {
  for (const auto* page : {&Piezometer_Weights, &Gage_Weights, &Lake_Stage_Weights}) {
    for (const WeightRow& r : *page) {
      double v = 0;
      if (!ReadWeight(r.Weight, v)) {
        ui.MessageBox("Bad Entry", {"The weight of test point " + r.Label + " (\"" + r.Weight +
                                        "\") must be a number of zero or more."});
        return false;
      }
    }
  }
  Result = 1;
  return true;
}

bool OptWeight::Cancel(UserInterface& ui) {
  if (!ui.Question("Cancel?", {"Any changes made to the weights will be lost.",
                               "Are you sure you wish to cancel?"}))
    return false;
  Result = 2;
  return true;
}

void OptWeight::Write(Database& db) const {
  const char* field = optType == "UCODE" ? "UCODEWeight" : "PESTWeight";
  Transaction tx(db);
  for (const auto* page : {&Piezometer_Weights, &Gage_Weights, &Lake_Stage_Weights}) {
    for (const WeightRow& r : *page) {
      auto e = LoadRow(db, ElementKind::TestPoint, r.vid);
      double v = 0;
      if (!e || !ReadWeight(r.Weight, v)) continue;
      e->row.Set(field, v);
      Update(db, *e);
    }
  }
  tx.Commit();
}

}  // namespace tarno
