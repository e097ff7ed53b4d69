// A port with no one behind it: every box is answered with its first button, every
// question and file dialog is cancelled, and nothing is shown. For operations run
// inside another one (an import that collects what the element checks say) and for
// the fuzz targets; a subclass keeps what it needs by overriding MessageBox.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

class SilentUserInterface : public UserInterface {
 public:
  Answer MessageBox(const std::string&, const std::vector<std::string>&, Buttons buttons,
                    Icon) override {
    return AnswersOf(buttons).front();
  }
  std::optional<std::string> InputBox(const std::string&, const std::string&,
                                      const std::string&) override {
    return std::nullopt;
  }
  std::optional<std::string> OpenFileDialog(const FileDialogRequest&) override {
    return std::nullopt;
  }
  std::optional<std::string> SaveFileDialog(const FileDialogRequest&) override {
    return std::nullopt;
  }
  std::vector<std::string> OpenFilesDialog(const FileDialogRequest&) override { return {}; }
  std::optional<std::uint32_t> ColourDialog(std::uint32_t) override { return std::nullopt; }
  void ShowModal(DialogModel&) override {}
  void PleaseWaitShow(const std::string&, int) override {}
  void PleaseWaitHide() override {}
  void ShowTextFile(const std::string&) override {}
  void Activity(const std::string&) override {}
  void Feedback(const std::string&) override {}
};

}  // namespace tarno
