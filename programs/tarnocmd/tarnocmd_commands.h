// The commands of tarnocmd, callable from main and usable by other batch tools.
#pragma once

#include <optional>
#include <ostream>
#include <string>

namespace tarno::cmd {

// How the questions of a project operation are answered.
enum class Answers {
  Defaults,  // each question by its documented default
  Yes,       // every question Yes (or OK): also overwrites an existing file
  No,        // every question No (or Cancel)
};

struct NewOptions {
  std::string path;
  std::optional<std::string> description;  // default: the wizard's own
  bool basemapMeters = true;
  bool computeMeters = true;
  std::optional<std::string> baseName;     // default: from the date and time
  Answers answers = Answers::Defaults;
};

// Creates a project through the life cycle. Returns the exit status.
int New(const NewOptions& options, std::ostream& out, std::ostream& err);

// Prints what a project holds. Returns the exit status.
int Info(const std::string& path, std::ostream& out, std::ostream& err);

std::string UsageText();

}  // namespace tarno::cmd
