#include "exchange/exchange_log.h"

#include <ctime>
#include <fstream>

#include "core/error.h"

namespace tarno::exchange {

namespace {

std::string DateText(std::chrono::system_clock::time_point when) {
  const std::time_t t = std::chrono::system_clock::to_time_t(when);
  std::tm local{};
  localtime_r(&t, &local);
  char text[32];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

}  // namespace

std::string ExchangeLog::Text(std::chrono::system_clock::time_point when) const {
  std::string out = DateText(when) + "\r\nSummary:\r\n";
  auto list = [&](const char* heading, const std::vector<std::string>& lines) {
    out += heading;
    out += "\r\n";
    for (const std::string& line : lines) out += line + "\r\n";
  };
  list("Errors:", errors_);
  list("Warnings:", warnings_);
  list("Details:", details_);
  return out;
}

void ExchangeLog::Write(const std::filesystem::path& file,
                        std::chrono::system_clock::time_point when) const {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  if (!out) throw tarno::Error("Could not write the log file " + file.string());
  out << Text(when);
  out.close();
  if (!out) throw tarno::Error("Could not write the log file " + file.string());
}

std::filesystem::path LogFolder(const std::string& projectPath) {
  const std::filesystem::path folder = std::filesystem::path(projectPath).parent_path();
  return folder.empty() ? std::filesystem::path(".") : folder;
}

}  // namespace tarno::exchange
