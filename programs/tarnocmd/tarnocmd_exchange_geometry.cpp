// Not built yet: replaced by the geometry exchange commands.
#include "tarnocmd_exchange.h"

namespace tarno::cmd {

int ExportGeometry(const ExportOptions& o, std::ostream&, std::ostream& err) {
  err << "tarnocmd: export to " << o.format << " is not built yet\n";
  return 1;
}

}  // namespace tarno::cmd
