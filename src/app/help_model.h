// The user's help: the index of its pages (the table of contents), the page each
// Help menu entry and each dialog opens, and where the pages are found. Plain code,
// no Qt: the help window shows what this decides.
//
// A help target is a page's file name relative to the help folder, optionally
// followed by "#anchor"; an anchor names a heading of the page by its text in lower
// case, with blanks turned into '-' and punctuation dropped (HeadingAnchor).
#pragma once

#include <string>
#include <vector>

namespace tarno {

struct HelpSection {
  std::string anchor;
  std::string title;
};

struct HelpTopic {
  std::string page;   // "solving.md"
  std::string title;  // "Solving and Model Settings"
  std::vector<HelpSection> sections;
};

struct HelpTarget {
  std::string page;
  std::string anchor;  // empty: the top of the page
};

class HelpIndex {
 public:
  // The contents page, shown when nothing more precise is known.
  static constexpr const char* kHomePage = "index.md";
  // The folder of the pages inside the source tree and beside the program.
  static constexpr const char* kSourceFolder = "docs/help";
  static constexpr const char* kProgramFolder = "help";

  // The pages in the order of the table of contents, each with its sections.
  static const std::vector<HelpTopic>& Contents();

  // The target of a Help menu entry ("HELP_CMDS(2)", "ReleaseNotes"); empty for a
  // key that opens no page.
  static std::string PageForKey(const std::string& menuKey);

  // The target of F1 in a dialog, by its DialogName(), and the text of the tab in
  // front where the dialog has tabs; a tab without a section of its own gives the
  // dialog's target; empty for a dialog without a page.
  static std::string PageForDialog(const std::string& dialogName, const std::string& tab = {});

  // Every dialog name that has a page (for the checks of the pages).
  static std::vector<std::string> DialogsWithPages();

  // The title of a page in the contents; empty when the page is not listed.
  static std::string TitleOf(const std::string& page);

  // "page.md#anchor" split in two; a bare "#anchor" keeps the page empty.
  static HelpTarget Split(const std::string& target);

  // The anchor of a heading: "Solver Convergence" -> "solver-convergence",
  // "The batch program, tarnocmd" -> "the-batch-program-tarnocmd".
  static std::string HeadingAnchor(const std::string& heading);

  // The first folder of `candidates` that holds the home page; empty when none does.
  static std::string FindFolder(const std::vector<std::string>& candidates);
};

}  // namespace tarno
