// Not built yet: replaced by the xml exchange commands.
#include "tarnocmd_exchange.h"

namespace tarno::cmd {

int ExportXml(const ExportOptions& o, std::ostream&, std::ostream& err) {
  err << "tarnocmd: export to " << o.format << " is not built yet\n";
  return 1;
}

int ImportXml(const ImportOptions&, const std::vector<std::string>& files, std::ostream&, std::ostream& err) {
  err << "tarnocmd: import of " << files.front() << " is not built yet\n";
  return 1;
}

}  // namespace tarno::cmd
