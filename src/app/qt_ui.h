// The user interface port of the desktop program: message boxes, questions, input
// boxes, file and colour dialogs, the wait window and the status bar through Qt.
//
// Modal dialog models are shown by their views: a view is registered under the
// model's DialogName() and is handed the model; it shows a QDialog, fills the
// model from its widgets, presses the model's buttons and returns when the model
// says the dialog is to close.
#pragma once

#include <QPointer>
#include <QSize>
#include <QString>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/ui_port.h"

class QWidget;
class QDialog;
class QLabel;
class QColor;

namespace tarno {

// The size of the text viewer for a text `textWidth` by `textHeight` pixels: large
// enough to show it whole (reports and logs are tables that a narrow window cuts),
// at least 720 by 480, at most nine tenths of the width and eight tenths of the
// height of the screen's `room`.
QSize TextViewerSize(int textWidth, int textHeight, QSize room);

// Shows `model` as a modal dialog over `parent`.
using DialogView = std::function<void(DialogModel& model, QWidget* parent)>;

class QtUserInterface : public UserInterface {
 public:
  explicit QtUserInterface(QWidget* parent = nullptr);
  ~QtUserInterface() override;

  void SetParent(QWidget* parent) { parent_ = parent; }
  QWidget* Parent() const { return parent_; }

  // Views of the dialog models, by DialogName(). A model without a view gives an
  // Error naming it.
  void RegisterView(const std::string& dialogName, DialogView view);
  bool HasView(const std::string& dialogName) const;
  std::vector<std::string> ViewNames() const;

  // F1 in a dialog shown by ShowModal (or in a message box over it) calls this with
  // the dialog's name and the text of the tab in front, empty where it has none.
  std::function<void(const std::string& dialogName, const std::string& tab)> onHelp;

  // The status bar panels (Activity, Feedback) are written through these.
  std::function<void(const std::string&)> onActivity;
  std::function<void(const std::string&)> onFeedback;

  Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                    Buttons buttons = Buttons::OK, Icon icon = Icon::None) override;
  std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                      const std::string& defaultText) override;
  std::optional<std::string> OpenFileDialog(const FileDialogRequest& request) override;
  std::optional<std::string> SaveFileDialog(const FileDialogRequest& request) override;
  std::vector<std::string> OpenFilesDialog(const FileDialogRequest& request) override;
  std::optional<std::uint32_t> ColourDialog(std::uint32_t initial) override;
  void ShowModal(DialogModel& dialog) override;
  void PleaseWaitShow(const std::string& text, int width) override;
  void PleaseWaitHide() override;
  void ShowTextFile(const std::string& path) override;
  void Activity(const std::string& text) override;
  void Feedback(const std::string& text) override;

  // The text the wait window shows now; empty when hidden.
  std::string WaitText() const;
  // The wait window itself while shown (null otherwise), for placement checks.
  QDialog* WaitWindow() const;

 private:
  QWidget* parent_;
  std::map<std::string, DialogView> views_;
  // The dialogs shown now, innermost last, and the watcher of their F1 key.
  std::vector<std::string> shown_;
  std::unique_ptr<QObject> helpKeys_;
  QPointer<QDialog> wait_;
  QPointer<QLabel> waitLabel_;
};

// Turns a classic filter "Description (*.ext)|*.ext|..." into Qt's form
// "Description (*.ext);;...".
QString QtFilter(const std::string& classicFilter);

// The packed colour (red + 256 * green + 65536 * blue) as a QColor and back.
QColor ToQColor(std::uint32_t packed);
std::uint32_t FromQColor(const QColor& colour);

// The extension a name typed without one takes from a Qt filter ("Project
// Database Files (*.trn)" gives "trn"): that of its first pattern when it is a plain
// "*.ext"; empty for "*", "*.*" and the like.
std::string FilterExtension(const QString& qtFilter);

// A saved file's path with ".<extension>" added when its name has no extension of
// its own (nothing is added for an empty extension). Digits alone after the last dot
// are no extension: "site 2.5" becomes "site 2.5.trn".
std::string WithDefaultExtension(const std::string& path, const std::string& extension);

// The width a message box's text asks for: its longest line, but no more than the
// box can hold. Qt fixes a message box at most min(screen - 480, 1000) pixels wide
// (the whole width on a screen of 1024 or less); a text wider than that, less the
// icon and the margins, ran past the box's edge and was cut off instead of wrapping.
int MessageTextWidth(int widestLine, int screenWidth);

}  // namespace tarno
