// The help: the index and the targets of the menu entries and dialogs, the help
// window over the real pages (every link, picture and anchor must resolve), F1 in
// the dialogs shown through the Qt port, and the one window of the main window.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QImage>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStandardPaths>
#include <QTabWidget>
#include <QTextBlock>
#include <QTextDocument>
#include <QTreeWidget>
#include <QUrl>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include "app/dialog_views.h"
#include "app/help_model.h"
#include "app/help_window.h"
#include "app/main_window.h"
#include "app/menu_model.h"
#include "app/shell_models.h"
#include "app/views/model_settings_view.h"
#include "app/views/welcome_view.h"
#include "core/console_ui.h"
#include "dialogs_test_support.h"
#include "support/temp_dir.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

const std::string kPages = std::string(TARNO_SOURCE_DIR) + "/docs/help";

// --- The index ------------------------------------------------------------------

TEST(HelpIndex, HeadingAnchorsFollowTheHeadingsText) {
  EXPECT_EQ(HelpIndex::HeadingAnchor("Solver Convergence"), "solver-convergence");
  EXPECT_EQ(HelpIndex::HeadingAnchor("GUI options"), "gui-options");
  EXPECT_EQ(HelpIndex::HeadingAnchor("The Batch Program tarnocmd"), "the-batch-program-tarnocmd");
  // Punctuation goes, hyphens and underscores stay, blanks at the ends make nothing.
  EXPECT_EQ(HelpIndex::HeadingAnchor("What's new? (1.0)"), "whats-new-10");
  EXPECT_EQ(HelpIndex::HeadingAnchor("Re-grid a_b"), "re-grid-a_b");
  EXPECT_EQ(HelpIndex::HeadingAnchor("  Units "), "units");
  EXPECT_EQ(HelpIndex::HeadingAnchor("?!"), "");
}

TEST(HelpIndex, ATabWithoutASectionOfItsOwnFallsBackToTheDialog) {
  const std::string own = HelpIndex::PageForDialog("ModelSettings");
  ASSERT_FALSE(own.empty());
  EXPECT_EQ(HelpIndex::PageForDialog("ModelSettings", "No Such Tab"), own);
  EXPECT_NE(HelpIndex::PageForDialog("ModelSettings", "Contours"), own);
  EXPECT_EQ(HelpIndex::PageForDialog("NoSuchDialog"), "");
  EXPECT_EQ(HelpIndex::PageForDialog("NoSuchDialog", "Contours"), "");
}

TEST(HelpIndex, EveryHelpMenuCommandOpensAListedPage) {
  int commands = 0;
  for (const MenuEntry& e : MenuModel::Entries()) {
    if (e.parent != "HELPMENU" || e.kind != MenuKind::Command || e.key == "About") continue;
    ++commands;
    const std::string page = HelpIndex::PageForKey(e.key);
    EXPECT_FALSE(HelpIndex::TitleOf(HelpIndex::Split(page).page).empty()) << e.key << " " << page;
  }
  EXPECT_GE(commands, 6);
  EXPECT_EQ(HelpIndex::PageForKey("About"), "");
}

TEST(HelpIndex, TheFolderIsTheFirstThatHoldsTheContents) {
  const test::TempDir temp("tarno_help");
  const fs::path root = temp.Path();
  fs::create_directories(root / "empty");
  fs::create_directories(root / "pages");
  fs::create_directories(root / "more");
  std::ofstream(root / "pages" / HelpIndex::kHomePage) << "# Contents\n";
  std::ofstream(root / "more" / HelpIndex::kHomePage) << "# Contents\n";
  // A file of the home page's name is no folder of pages.
  std::ofstream(root / "empty" / "index.md.txt") << "";
  EXPECT_EQ(HelpIndex::FindFolder({(root / "missing").string(), "", (root / "empty").string(),
                                   (root / "pages").string(), (root / "more").string()}),
            (root / "pages").string());
  EXPECT_EQ(HelpIndex::FindFolder({(root / "missing").string(), (root / "empty").string()}), "");
}

// --- The window over the pages ----------------------------------------------------

class HelpPages : public ::testing::Test {
 protected:
  void SetUp() override { EnsureApplication(); }
};

// Every link and picture of the document in view: the links' targets and the
// pictures' names as written.
struct PageRefs {
  std::vector<QString> links;
  std::vector<QString> images;
};

PageRefs RefsOf(const QTextDocument& doc) {
  PageRefs refs;
  for (QTextBlock block = doc.begin(); block.isValid(); block = block.next()) {
    for (auto it = block.begin(); !it.atEnd(); ++it) {
      const QTextCharFormat f = it.fragment().charFormat();
      if (f.isImageFormat()) {
        refs.images.push_back(f.toImageFormat().name());
      } else if (f.isAnchor() && !f.anchorHref().isEmpty()) {
        if (refs.links.empty() || refs.links.back() != f.anchorHref()) {
          refs.links.push_back(f.anchorHref());
        }
      }
    }
  }
  return refs;
}

TEST_F(HelpPages, EveryPageOfTheFolderIsInTheContentsAndEverySectionResolves) {
  HelpWindow help(kPages);
  std::set<std::string> listed;
  for (const HelpTopic& topic : HelpIndex::Contents()) {
    listed.insert(topic.page);
    ASSERT_TRUE(help.ShowTopic(topic.page)) << topic.page;
    EXPECT_EQ(help.CurrentPage(), topic.page);
    // The page's first heading is its title in the contents.
    const QTextBlock first = help.Browser()->document()->begin();
    EXPECT_GT(first.blockFormat().headingLevel(), 0) << topic.page;
    EXPECT_EQ(first.text().toStdString(), topic.title) << topic.page;
    for (const HelpSection& section : topic.sections) {
      ASSERT_TRUE(help.ShowTopic(topic.page + "#" + section.anchor));
      EXPECT_TRUE(help.Browser()->AnchorFound()) << topic.page << "#" << section.anchor;
    }
  }
  for (const auto& entry : fs::directory_iterator(kPages)) {
    if (entry.path().extension() == ".md") {
      EXPECT_EQ(listed.count(entry.path().filename().string()), 1u)
          << entry.path().filename() << " is not in the contents";
    }
  }
}

TEST_F(HelpPages, EveryLinkAndPictureOfEveryPageResolves) {
  HelpWindow help(kPages);
  HelpBrowser target;  // reads the linked pages for their anchors
  int links = 0, images = 0;
  for (const HelpTopic& topic : HelpIndex::Contents()) {
    ASSERT_TRUE(help.ShowTopic(topic.page));
    const QUrl base = help.Browser()->source();
    const PageRefs refs = RefsOf(*help.Browser()->document());
    for (const QString& name : refs.images) {
      ++images;
      const QUrl url = base.resolved(QUrl(name));
      ASSERT_TRUE(url.isLocalFile()) << topic.page << ": " << name.toStdString();
      EXPECT_FALSE(QImage(url.toLocalFile()).isNull()) << topic.page << ": " << name.toStdString();
      // And the browser finds it the way it draws it.
      EXPECT_TRUE(help.Browser()->loadResource(QTextDocument::ImageResource, url).isValid())
          << topic.page << ": " << name.toStdString();
    }
    for (const QString& href : refs.links) {
      const QUrl url = base.resolved(QUrl(href));
      if (url.scheme() == "http" || url.scheme() == "https") continue;
      ++links;
      ASSERT_TRUE(url.isLocalFile()) << topic.page << ": " << href.toStdString();
      QUrl page = url;
      page.setFragment(QString());
      ASSERT_TRUE(QFileInfo::exists(page.toLocalFile()))
          << topic.page << ": " << href.toStdString();
      if (url.fragment().isEmpty()) continue;
      target.setSource(page, QTextDocument::MarkdownResource);
      EXPECT_TRUE(target.HeadingAnchors().contains(url.fragment()))
          << topic.page << ": " << href.toStdString();
    }
  }
  EXPECT_GT(links, 10);
  EXPECT_GT(images, 3);
}

TEST_F(HelpPages, ALinkGoesToItsHeadingAndBackAndForwardReturn) {
  HelpWindow help(kPages);
  ASSERT_TRUE(help.ShowTopic(HelpIndex::kHomePage));
  EXPECT_FALSE(help.BackAction()->isEnabled());
  // As a click does: the link resolved against the page in view.
  HelpBrowser* browser = help.Browser();
  browser->setSource(browser->source().resolved(QUrl("solving.md#run-files")));
  EXPECT_EQ(help.CurrentPage(), "solving.md");
  EXPECT_EQ(help.CurrentAnchor(), "run-files");
  EXPECT_TRUE(browser->AnchorFound());
  EXPECT_GT(browser->verticalScrollBar()->value(), 0) << "a heading far down comes into view";
  ASSERT_NE(help.ContentsTree()->currentItem(), nullptr);
  EXPECT_EQ(help.ContentsTree()->currentItem()->text(0).toStdString(), "Run files");
  EXPECT_NE(help.windowTitle().toStdString().find("Solving and Model Settings"), std::string::npos);

  ASSERT_TRUE(help.BackAction()->isEnabled());
  help.BackAction()->trigger();
  EXPECT_EQ(help.CurrentPage(), HelpIndex::kHomePage);
  ASSERT_TRUE(help.ForwardAction()->isEnabled());
  help.ForwardAction()->trigger();
  EXPECT_EQ(help.CurrentPage(), "solving.md");
}

TEST_F(HelpPages, TheContentsOpenThePageOfTheirEntry) {
  HelpWindow help(kPages);
  ASSERT_TRUE(help.ShowTopic(HelpIndex::kHomePage));
  QTreeWidget* tree = help.ContentsTree();
  ASSERT_EQ(tree->topLevelItemCount(), static_cast<int>(HelpIndex::Contents().size()));
  QTreeWidgetItem* projects = nullptr;
  for (int i = 0; i < tree->topLevelItemCount(); ++i) {
    if (tree->topLevelItem(i)->text(0) == "Projects") projects = tree->topLevelItem(i);
  }
  ASSERT_NE(projects, nullptr);
  QTreeWidgetItem* units = nullptr;
  for (int j = 0; j < projects->childCount(); ++j) {
    if (projects->child(j)->text(0) == "Units") units = projects->child(j);
  }
  ASSERT_NE(units, nullptr);
  tree->setCurrentItem(units);
  EXPECT_EQ(help.CurrentPage(), "projects.md");
  EXPECT_EQ(help.CurrentAnchor(), "units");
  EXPECT_TRUE(help.Browser()->AnchorFound());
}

TEST_F(HelpPages, AMissingPageOrFolderChangesNothing) {
  HelpWindow help(kPages);
  ASSERT_TRUE(help.ShowTopic("batch.md"));
  EXPECT_FALSE(help.ShowTopic("no-such-page.md"));
  EXPECT_EQ(help.CurrentPage(), "batch.md");
  HelpWindow nowhere("");
  EXPECT_FALSE(nowhere.ShowTopic(HelpIndex::kHomePage));
  EXPECT_FALSE(nowhere.isVisible());
  // An anchor that no heading carries leaves the page at its top.
  ASSERT_TRUE(help.ShowTopic("solving.md#no-such-heading"));
  EXPECT_EQ(help.CurrentPage(), "solving.md");
  EXPECT_FALSE(help.Browser()->AnchorFound());
}

// --- Dialogs -----------------------------------------------------------------------

class DialogHelp : public ProjectTest {};

TEST_F(DialogHelp, EveryRegisteredDialogHasASectionOfItsOwn) {
  QtUserInterface ui;
  RegisterDialogViews(ui);
  const std::vector<std::string> names = ui.ViewNames();
  ASSERT_GE(names.size(), 12u);
  HelpWindow help(kPages);
  std::map<std::string, std::string> targets;
  for (const std::string& name : names) {
    const std::string target = HelpIndex::PageForDialog(name);
    ASSERT_FALSE(target.empty()) << name << " has no help page";
    ASSERT_TRUE(help.ShowTopic(target)) << name << ": " << target;
    EXPECT_EQ(help.CurrentPage(), HelpIndex::Split(target).page) << name;
    EXPECT_TRUE(help.Browser()->AnchorFound()) << name << ": " << target;
    targets[target] += name + " ";
  }
  for (const auto& [target, dialogs] : targets) {
    EXPECT_EQ(dialogs.find(' '), dialogs.size() - 1) << "dialogs sharing " << target << ": " << dialogs;
  }
  // And the index lists no dialog that has no view.
  for (const std::string& name : HelpIndex::DialogsWithPages()) EXPECT_TRUE(ui.HasView(name)) << name;
}

TEST_F(DialogHelp, EveryTabOfTheModelSettingsHasItsSection) {
  ModelSettings settings;
  {
    Database db = Open();
    settings.Load(db);
  }
  ModelSettingsDialog dialog(settings, path_.string());
  ConsoleUserInterface quiet(std::cerr, Answer::No);
  ModelSettingsView view(dialog, quiet);
  HelpWindow help(kPages);
  std::set<std::string> seen;
  for (int i = 0; i < view.tabs()->count(); ++i) {
    const std::string tab = view.tabs()->tabText(i).remove('&').toStdString();
    const std::string target = HelpIndex::PageForDialog(ModelSettingsDialog::kName, tab);
    EXPECT_NE(target, HelpIndex::PageForDialog(ModelSettingsDialog::kName)) << tab;
    EXPECT_TRUE(seen.insert(target).second) << tab;
    ASSERT_TRUE(help.ShowTopic(target)) << tab;
    EXPECT_TRUE(help.Browser()->AnchorFound()) << tab << ": " << target;
  }
}

// F1 sent to the focused widget of a dialog, as a key press would be.
void PressF1(QWidget* dialog) {
  QWidget* to = dialog->focusWidget() != nullptr ? dialog->focusWidget() : dialog;
  QKeyEvent press(QEvent::KeyPress, Qt::Key_F1, Qt::NoModifier);
  QApplication::sendEvent(to, &press);
}

TEST_F(DialogHelp, F1InADialogAsksForItsHelpWithTheTabInFront) {
  QtUserInterface ui;
  RegisterDialogViews(ui);
  std::vector<std::pair<std::string, std::string>> asked;
  ui.onHelp = [&](const std::string& name, const std::string& tab) { asked.emplace_back(name, tab); };

  Welcome welcome;
  OnNextDialog<WelcomeView>([](WelcomeView* view) {
    PressF1(view);
    view->reject();
  });
  ui.ShowModal(welcome);
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0], std::make_pair(std::string("Welcome"), std::string()));

  ModelSettings settings;
  {
    Database db = Open();
    settings.Load(db);
  }
  ModelSettingsDialog dialog(settings, path_.string());
  OnNextDialog<ModelSettingsView>([](ModelSettingsView* view) {
    view->tabs()->setCurrentIndex(ModelSettingsView::kContoursTab);
    PressF1(view);
    view->reject();
  });
  ui.ShowModal(dialog);
  ASSERT_EQ(asked.size(), 2u);
  EXPECT_EQ(asked[1], std::make_pair(std::string("ModelSettings"), std::string("Contours")));

  // With no dialog of the port up, F1 is nobody's business of the port's.
  QDialog other;
  other.show();
  PressF1(&other);
  EXPECT_EQ(asked.size(), 2u);
}

TEST_F(DialogHelp, HelpOverAModalDialogIsModalItselfAndOrdinaryOtherwise) {
  HelpWindow help(kPages);
  QDialog dialog;
  bool wasModal = false;
  QTimer::singleShot(0, &dialog, [&] {
    wasModal = help.ShowTopic("map.md#gui-options") &&
               help.windowModality() == Qt::ApplicationModal;
    help.close();
    dialog.reject();
  });
  dialog.exec();
  EXPECT_TRUE(wasModal) << "a non-modal window would be blocked by the dialog";
  ASSERT_TRUE(help.ShowTopic(HelpIndex::kHomePage));
  EXPECT_EQ(help.windowModality(), Qt::NonModal);
  EXPECT_TRUE(help.isVisible());
}

// --- The main window's Help menu ---------------------------------------------------

class WindowHelp : public ::testing::Test {
 protected:
  void SetUp() override {
    QStandardPaths::setTestModeEnabled(true);
    EnsureApplication();
    options_.ui = &ui_;
    options_.useSettings = false;
  }
  std::ostringstream messages_;
  ConsoleUserInterface ui_{messages_, Answer::No};
  MainWindowOptions options_;
};

TEST_F(WindowHelp, TheHelpEntriesOpenTheirPagesInOneWindow) {
  MainWindow w(options_);
  EXPECT_EQ(w.Help(), nullptr);
  ASSERT_FALSE(w.HelpFolder().empty());
  w.Action("HELP_CMDS(0)")->trigger();
  HelpWindow* help = w.Help();
  ASSERT_NE(help, nullptr);
  EXPECT_TRUE(help->isVisible());
  EXPECT_EQ(help->CurrentPage(), "getting-started.md");
  for (const auto& h : MenuModel::HelpPages()) {
    w.Action(h.key)->trigger();
    EXPECT_EQ(w.Help(), help) << "one window for every entry";
    EXPECT_EQ(help->CurrentPage(), h.page) << h.key;
  }
  EXPECT_EQ(messages_.str(), "") << "no page was missing";
}

TEST_F(WindowHelp, AMissingPageIsReported) {
  MainWindow w(options_);
  EXPECT_FALSE(w.ShowHelpTopic("no-such-page.md"));
  EXPECT_NE(messages_.str().find("The page no-such-page.md was not found."), std::string::npos)
      << messages_.str();
}

}  // namespace
}  // namespace tarno::testing
