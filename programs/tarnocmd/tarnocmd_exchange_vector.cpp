// Not built yet: replaced by the vector exchange commands.
#include "tarnocmd_exchange.h"

namespace tarno::cmd {

int ExportGpkg(const ExportOptions& o, std::ostream&, std::ostream& err) {
  err << "tarnocmd: export to " << o.format << " is not built yet\n";
  return 1;
}

int ImportVector(const ImportOptions&, const std::vector<std::string>& files, std::ostream&, std::ostream& err) {
  err << "tarnocmd: import of " << files.front() << " is not built yet\n";
  return 1;
}

}  // namespace tarno::cmd
