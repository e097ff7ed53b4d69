// tarnocmd stats: the residual statistics of the three kinds of observation, as the
// statistics dialog shows them.
#include <exception>

#include "calibration/stats_model.h"
#include "store/database.h"
#include "store/project_file.h"
#include "tarnocmd_commands.h"

namespace tarno::cmd {

int Stats(const std::string& path, std::ostream& out, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(path, probe) << "\n";
    return 1;
  }
  Calibration dialog;
  try {
    Database db = Database::OpenReadOnly(path);
    dialog.init(db);
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read TPResults of " << path << ": " << e.what() << "\n";
    return 1;
  }
  static const char* const kHeadings[] = {"Piezometers", "Gages", "Lake Stages"};
  for (int k = 0; k < kObservationKinds; ++k) {
    const CalibrationTab& tab = dialog.tabs[k];
    if (k > 0) out << "\n";
    out << kHeadings[k] << "\n";
    if (!tab.enabled) {
      out << "  There are not enough points for "
          << ObservationTypeName(static_cast<ObservationKind>(k)) << " statistics.\n";
      continue;
    }
    for (int i = 0; i < 8; ++i)
      out << "  " << StatisticCaptions()[i] << ": " << tab.texts[i] << "\n";
  }
  return 0;
}

}  // namespace tarno::cmd
