// Element exchange: what the readers and writers of the exchange files share.
#pragma once

#include <string>

namespace tarno::exchange {

// The extension of a file name as the importers dispatch on it: "lss.xml" for
// "rivers.LSS.XML", "wl" for "wells.wl", "" for none. Lower case.
std::string ExtensionOfFile(const std::string& file);

}  // namespace tarno::exchange
