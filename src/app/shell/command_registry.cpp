#include "app/shell/command_registry.h"

#include <algorithm>

#include "app/menu_model.h"
#include "core/error.h"
#include "core/error_trap.h"

namespace tarno {

void CommandRegistry::Register(const std::string& key, Handler fn, std::string operation) {
  keys_[key] = Entry{[fn = std::move(fn)](const std::string&) { fn(); }, std::move(operation)};
}

void CommandRegistry::Register(const std::vector<std::string>& keys, KeyHandler fn,
                               std::string operation) {
  for (const std::string& key : keys) keys_[key] = Entry{fn, operation};
}

void CommandRegistry::RegisterPrefix(const std::string& prefix, KeyHandler fn,
                                     std::string operation) {
  prefixes_.emplace_back(prefix, Entry{std::move(fn), std::move(operation)});
}

void CommandRegistry::RegisterFallback(Fallback fn, std::string operation) {
  fallbacks_.push_back(FallbackEntry{std::move(fn), std::move(operation)});
}

void CommandRegistry::RegisterButton(const std::string& buttonKey, Handler fn,
                                     std::string operation) {
  buttons_[buttonKey] =
      Entry{[fn = std::move(fn)](const std::string&) { fn(); }, std::move(operation)};
}

bool CommandRegistry::Has(const std::string& key) const {
  if (keys_.count(key) != 0) return true;
  return std::any_of(prefixes_.begin(), prefixes_.end(),
                     [&](const auto& p) { return key.rfind(p.first, 0) == 0; });
}

bool CommandRegistry::HasButton(const std::string& buttonKey) const {
  return buttons_.count(buttonKey) != 0;
}

bool CommandRegistry::RunEntry(const Entry& entry, const std::string& key) {
  // A copy: the handler may register again (replace itself) while it runs.
  const Entry e = entry;
  return RunOperation(ui_, e.operation.empty() ? key : e.operation, [&] { e.fn(key); });
}

bool CommandRegistry::ReportUnknown(const std::string& key) {
  RunOperation(ui_, kUnknownCommandOperation,
               [&] { throw InvalidArgumentError("No command for the menu key \"" + key + "\""); });
  return false;
}

bool CommandRegistry::Run(const std::string& key) {
  if (const auto it = keys_.find(key); it != keys_.end()) return RunEntry(it->second, key);
  for (const auto& [prefix, entry] : prefixes_) {
    if (key.rfind(prefix, 0) == 0) return RunEntry(entry, key);
  }
  for (const FallbackEntry& f : fallbacks_) {
    bool taken = false;
    const Fallback fn = f.fn;
    const bool ok =
        RunOperation(ui_, f.operation.empty() ? key : f.operation, [&] { taken = fn(key); });
    // A fallback that failed had taken the key: its error was the report.
    if (!ok) return false;
    if (taken) return true;
  }
  return ReportUnknown(key);
}

bool CommandRegistry::RunButton(const std::string& buttonKey) {
  if (const auto it = buttons_.find(buttonKey); it != buttons_.end())
    return RunEntry(it->second, buttonKey);
  const auto& toolbar = MenuModel::Toolbar();
  const auto b = std::find_if(toolbar.begin(), toolbar.end(),
                              [&](const ToolbarButton& t) { return t.key == buttonKey; });
  if (b == toolbar.end()) return ReportUnknown(buttonKey);
  return Run(b->menuKey);
}

std::vector<std::string> CommandRegistry::Keys() const {
  std::vector<std::string> keys;
  for (const auto& [key, entry] : keys_) keys.push_back(key);
  return keys;
}

}  // namespace tarno
