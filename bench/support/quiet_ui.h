// The user interface of a benchmark: no one to ask. Every message goes to standard
// error and is counted, since one means something went wrong; questions take their
// first answer.
#pragma once

#include <string>
#include <vector>

#include "core/console_ui.h"

namespace tarno::bench {

class QuietUserInterface : public ConsoleUserInterface {
 public:
  Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                    Buttons buttons, Icon icon) override {
    ++messages;
    return ConsoleUserInterface::MessageBox(title, lines, buttons, icon);
  }
  int messages = 0;
};

}  // namespace tarno::bench
