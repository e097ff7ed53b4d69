#include "app/help_window.h"

#include <QAbstractTextDocumentLayout>
#include <QAction>
#include <QApplication>
#include <QFileInfo>
#include <QScrollBar>
#include <QSplitter>
#include <QStyle>
#include <QTextBlock>
#include <QToolBar>
#include <QTreeWidget>
#include <QUrl>
#include <filesystem>

#include "app/help_model.h"

namespace tarno {

namespace {

namespace fs = std::filesystem;

QString Q(const std::string& text) { return QString::fromStdString(text); }

constexpr int kTargetRole = Qt::UserRole;

}  // namespace

// --- The browser --------------------------------------------------------------

HelpBrowser::HelpBrowser(QWidget* parent) : QTextBrowser(parent) {
  setOpenExternalLinks(true);
  // A page read anew, a link followed, Back and Forward all end here: the anchor of
  // the new source is looked up among the headings.
  connect(this, &QTextBrowser::sourceChanged, this, [this](const QUrl& url) {
    GoToAnchor(url.fragment());
  });
}

void HelpBrowser::doSetSource(const QUrl& name, QTextDocument::ResourceType type) {
  if (type == QTextDocument::UnknownResource &&
      name.path().endsWith(QStringLiteral(".md"), Qt::CaseInsensitive)) {
    type = QTextDocument::MarkdownResource;
  }
  QTextBrowser::doSetSource(name, type);
}

QStringList HelpBrowser::HeadingAnchors() const {
  QStringList anchors;
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
    if (block.blockFormat().headingLevel() > 0) {
      anchors << Q(HelpIndex::HeadingAnchor(block.text().toStdString()));
    }
  }
  return anchors;
}

bool HelpBrowser::GoToAnchor(const QString& anchor) {
  anchor_ = anchor;
  anchorFound_ = false;
  if (anchor.isEmpty()) return false;
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
    if (block.blockFormat().headingLevel() == 0) continue;
    if (Q(HelpIndex::HeadingAnchor(block.text().toStdString())) != anchor) continue;
    // The whole page is laid out first, so that the scroll bar's range reaches the
    // heading; the heading then comes to the top.
    QAbstractTextDocumentLayout* layout = document()->documentLayout();
    (void)layout->documentSize();
    const QRectF rect = layout->blockBoundingRect(block);
    verticalScrollBar()->setValue(static_cast<int>(rect.top()));
    QTextCursor cursor(block);
    setTextCursor(cursor);
    verticalScrollBar()->setValue(static_cast<int>(rect.top()));
    anchorFound_ = true;
    return true;
  }
  return false;
}

// --- The window ---------------------------------------------------------------

HelpWindow::HelpWindow(const std::string& folder, QWidget* parent)
    : QMainWindow(parent, Qt::Window), folder_(folder) {
  setObjectName(QStringLiteral("HelpWindow"));
  setWindowTitle(QStringLiteral("TARNO Help"));

  auto* toolbar = addToolBar(QStringLiteral("Navigation"));
  toolbar->setMovable(false);
  toolbar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  back_ = toolbar->addAction(style()->standardIcon(QStyle::SP_ArrowBack), QStringLiteral("Back"));
  forward_ =
      toolbar->addAction(style()->standardIcon(QStyle::SP_ArrowForward), QStringLiteral("Forward"));
  home_ = toolbar->addAction(style()->standardIcon(QStyle::SP_DirHomeIcon),
                             QStringLiteral("Contents"));
  back_->setShortcut(QKeySequence::Back);
  forward_->setShortcut(QKeySequence::Forward);
  back_->setEnabled(false);
  forward_->setEnabled(false);
  // Escape puts the window away, as it does a dialog (over one, it must be closed
  // to go back to the dialog).
  auto* close = new QAction(QStringLiteral("Close"), this);
  close->setShortcuts({QKeySequence(Qt::Key_Escape), QKeySequence::Close});
  connect(close, &QAction::triggered, this, &QWidget::close);
  addAction(close);

  auto* splitter = new QSplitter(this);
  tree_ = new QTreeWidget(splitter);
  tree_->setHeaderHidden(true);
  tree_->setObjectName(QStringLiteral("HelpContents"));
  browser_ = new HelpBrowser(splitter);
  browser_->setObjectName(QStringLiteral("HelpPage"));
  splitter->addWidget(tree_);
  splitter->addWidget(browser_);
  splitter->setStretchFactor(0, 0);
  splitter->setStretchFactor(1, 1);
  splitter->setSizes({250, 850});
  setCentralWidget(splitter);
  BuildContents();

  connect(back_, &QAction::triggered, browser_, &QTextBrowser::backward);
  connect(forward_, &QAction::triggered, browser_, &QTextBrowser::forward);
  connect(home_, &QAction::triggered, this, [this] { ShowTopic(HelpIndex::kHomePage); });
  connect(browser_, &QTextBrowser::backwardAvailable, back_, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::forwardAvailable, forward_, &QAction::setEnabled);
  connect(browser_, &QTextBrowser::sourceChanged, this, [this](const QUrl& url) {
    SourceChanged(url);
  });
  connect(tree_, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem* item) {
    if (syncingTree_ || item == nullptr) return;
    ShowTopic(item->data(0, kTargetRole).toString().toStdString());
  });
  resize(1100, 760);
}

void HelpWindow::BuildContents() {
  for (const HelpTopic& topic : HelpIndex::Contents()) {
    auto* item = new QTreeWidgetItem(tree_, {Q(topic.title)});
    item->setData(0, kTargetRole, Q(topic.page));
    for (const HelpSection& section : topic.sections) {
      auto* child = new QTreeWidgetItem(item, {Q(section.title)});
      child->setData(0, kTargetRole, Q(topic.page + "#" + section.anchor));
    }
  }
}

bool HelpWindow::ShowTopic(const std::string& target) {
  HelpTarget t = HelpIndex::Split(target);
  if (t.page.empty()) t.page = t.anchor.empty() ? HelpIndex::kHomePage : CurrentPage();
  std::error_code ec;
  const fs::path file = fs::path(folder_) / t.page;
  if (folder_.empty() || !fs::is_regular_file(file, ec)) return false;
  // Shown before the page is set, so that the page is laid out at the window's
  // width and an anchor's heading lands where it will stay.
  Present();
  QUrl url = QUrl::fromLocalFile(Q(file.string()));
  if (!t.anchor.empty()) url.setFragment(Q(t.anchor));
  browser_->setSource(url, QTextDocument::MarkdownResource);
  // The same page again does not count as a change of source: its anchor is sought
  // here as well.
  browser_->GoToAnchor(Q(t.anchor));
  SourceChanged(browser_->source());
  return true;
}

std::string HelpWindow::CurrentPage() const {
  const QUrl source = browser_->source();
  if (source.isEmpty()) return {};
  return QFileInfo(source.toLocalFile()).fileName().toStdString();
}

std::string HelpWindow::CurrentAnchor() const { return browser_->Anchor().toStdString(); }

void HelpWindow::SourceChanged(const QUrl& url) {
  const std::string page = QFileInfo(url.toLocalFile()).fileName().toStdString();
  const std::string title = HelpIndex::TitleOf(page);
  setWindowTitle(title.empty() ? QStringLiteral("TARNO Help")
                               : QStringLiteral("TARNO Help - ") + Q(title));
  // The entry of the page and anchor in view, else that of the page.
  const QString exact = url.fragment().isEmpty() ? Q(page) : Q(page) + "#" + url.fragment();
  QTreeWidgetItem* found = nullptr;
  for (int i = 0; i < tree_->topLevelItemCount() && found == nullptr; ++i) {
    QTreeWidgetItem* top = tree_->topLevelItem(i);
    if (top->data(0, kTargetRole).toString() != Q(page)) continue;
    found = top;
    for (int j = 0; j < top->childCount(); ++j) {
      if (top->child(j)->data(0, kTargetRole).toString() == exact) found = top->child(j);
    }
  }
  syncingTree_ = true;
  if (found != nullptr) {
    QTreeWidgetItem* top = found->parent() != nullptr ? found->parent() : found;
    top->setExpanded(true);
    tree_->setCurrentItem(found);
  } else {
    tree_->setCurrentItem(nullptr);
  }
  syncingTree_ = false;
}

void HelpWindow::Present() {
  // Over a modal dialog the window must be modal itself, or the dialog's modality
  // would keep it from taking the mouse and the keys; without one it is an ordinary
  // window beside the main window. The modality changes only while hidden.
  QWidget* modal = QApplication::activeModalWidget();
  const Qt::WindowModality wanted =
      modal != nullptr && modal != this ? Qt::ApplicationModal : Qt::NonModal;
  if (windowModality() != wanted) {
    if (isVisible()) hide();
    setWindowModality(wanted);
  }
  show();
  raise();
  activateWindow();
}

}  // namespace tarno
