#include "exchange/exchange_files.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

namespace tarno::exchange {

std::string ExtensionOfFile(const std::string& file) {
  std::string name = std::filesystem::path(file).filename().string();
  std::transform(name.begin(), name.end(), name.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  const auto dot = name.find('.');
  if (dot == std::string::npos || dot + 1 == name.size()) return "";
  std::string ext = name.substr(dot + 1);
  // Only the compound extensions of the XML element files keep two parts.
  for (const char* two : {"lss.xml", "inh.xml", "brr.xml"})
    if (ext.size() >= 7 && ext.compare(ext.size() - 7, 7, two) == 0) return two;
  const auto last = ext.rfind('.');
  return last == std::string::npos ? ext : ext.substr(last + 1);
}

}  // namespace tarno::exchange
