// The commands of the main window's menus and toolbar, without a window.
//
// Every menu entry that runs something has a handler here, keyed by the entry's key
// in MenuModel ("MODEL_CMDS(1)", "Layermenu(2)", ...). Run(key) calls it inside the
// general error trap, so that a failing command shows "Unhandled Error -- Contact
// the Authors" and leaves standing whatever it had done. A toolbar button runs its
// menu entry (MenuModel::Button(key).menuKey) unless a button has a handler of its
// own (the zoom and scroll keys, which act differently from their menu entry).
//
// A group of keys can be handed to one object: Register(keys, fn) for a known list,
// RegisterFallback(fn) for whatever no handler claims (an editor that answers the
// keys it knows with true). A key nobody takes is reported through the port.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

// The title of the report of a key that no handler takes.
inline constexpr const char* kUnknownCommandOperation = "Dispatch";

class CommandRegistry {
 public:
  using Handler = std::function<void()>;
  using KeyHandler = std::function<void(const std::string& key)>;
  // Answers true when it took the key.
  using Fallback = std::function<bool(const std::string& key)>;

  explicit CommandRegistry(UserInterface& ui) : ui_(ui) {}

  // The handler of one key; `operation` names it in the error message (the key
  // itself when empty). A second registration of a key replaces the first.
  void Register(const std::string& key, Handler fn, std::string operation = {});
  // One handler for several keys; it is told which key ran.
  void Register(const std::vector<std::string>& keys, KeyHandler fn, std::string operation = {});
  // Every key that begins with `prefix` and has no handler of its own
  // ("RUN_FILES(", "HELP_CMDS(").
  void RegisterPrefix(const std::string& prefix, KeyHandler fn, std::string operation = {});
  // Asked, in the order registered, for a key that no handler or prefix takes.
  void RegisterFallback(Fallback fn, std::string operation = {});
  // A toolbar button's own handler, run instead of its menu entry.
  void RegisterButton(const std::string& buttonKey, Handler fn, std::string operation = {});

  // Whether a handler or prefix takes `key` (fallbacks are not asked).
  bool Has(const std::string& key) const;
  bool HasButton(const std::string& buttonKey) const;

  // Runs the command of a menu key in the error trap. False when it failed or no
  // handler took the key (both reported through the port).
  bool Run(const std::string& key);
  // A toolbar click: the button's own handler, else its menu entry's. An unknown
  // button is reported as an unknown key.
  bool RunButton(const std::string& buttonKey);

  // The keys with a handler of their own, sorted.
  std::vector<std::string> Keys() const;

 private:
  struct Entry {
    KeyHandler fn;
    std::string operation;
  };
  struct FallbackEntry {
    Fallback fn;
    std::string operation;
  };
  bool RunEntry(const Entry& entry, const std::string& key);
  bool ReportUnknown(const std::string& key);

  UserInterface& ui_;
  std::map<std::string, Entry> keys_;
  std::vector<std::pair<std::string, Entry>> prefixes_;
  std::vector<FallbackEntry> fallbacks_;
  std::map<std::string, Entry> buttons_;
};

}  // namespace tarno
