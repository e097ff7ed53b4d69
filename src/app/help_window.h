// The help window: the user's pages (Markdown, with their pictures and the links
// between them) in a text browser, the table of contents beside it, Back and
// Forward above. One window serves every call: the Help menu's entries and F1 in a
// dialog; what each opens is decided by HelpIndex (help_model.h).
#pragma once

#include <QMainWindow>
#include <QTextBrowser>
#include <string>

class QAction;
class QTreeWidget;
class QTreeWidgetItem;

namespace tarno {

// A text browser that reads ".md" pages as Markdown and goes to a heading for an
// anchor (the Markdown reader gives headings no anchors of their own).
class HelpBrowser : public QTextBrowser {
 public:
  explicit HelpBrowser(QWidget* parent = nullptr);

  // The anchor of the page in view and whether a heading carried it.
  const QString& Anchor() const { return anchor_; }
  bool AnchorFound() const { return anchorFound_; }
  // The headings' anchors of the page in view (HelpIndex::HeadingAnchor).
  QStringList HeadingAnchors() const;
  // Brings the heading of `anchor` to the top; false when no heading carries it.
  bool GoToAnchor(const QString& anchor);

 protected:
  void doSetSource(const QUrl& name, QTextDocument::ResourceType type) override;

 private:
  QString anchor_;
  bool anchorFound_ = false;
};

class HelpWindow : public QMainWindow {
 public:
  // `folder`: where the pages are (HelpIndex::FindFolder).
  explicit HelpWindow(const std::string& folder, QWidget* parent = nullptr);

  // Shows a target "page.md" or "page.md#anchor" (an empty one: the contents page)
  // and brings the window forward; false, with nothing changed, when the page does
  // not exist.
  bool ShowTopic(const std::string& target);

  // The page in view (its file name in the folder) and its anchor.
  std::string CurrentPage() const;
  std::string CurrentAnchor() const;

  const std::string& Folder() const { return folder_; }
  HelpBrowser* Browser() const { return browser_; }
  QTreeWidget* ContentsTree() const { return tree_; }
  QAction* BackAction() const { return back_; }
  QAction* ForwardAction() const { return forward_; }

 private:
  void BuildContents();
  void SourceChanged(const QUrl& url);
  void Present();

  std::string folder_;
  HelpBrowser* browser_ = nullptr;
  QTreeWidget* tree_ = nullptr;
  QAction* back_ = nullptr;
  QAction* forward_ = nullptr;
  QAction* home_ = nullptr;
  bool syncingTree_ = false;
};

}  // namespace tarno
