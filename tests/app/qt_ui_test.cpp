// The Qt user interface port: filters, colours, the default extension, the dialog
// registry, the wait window, the status texts and the message box answers.
#include <gtest/gtest.h>

#include <fstream>

#include <QAbstractButton>
#include <QApplication>
#include <QColor>
#include <QDialog>
#include <QFileDialog>
#include <QLabel>
#include <QHeaderView>
#include <QTreeView>
#include <QInputDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QMessageBox>
#include <QTimer>
#include <QWidget>

#include "app/qt_ui.h"
#include "core/error.h"
#include "dialogs_test_support.h"
#include "support/temp_dir.h"

namespace tarno::testing {
namespace {

class QtPortTest : public ::testing::Test {
 protected:
  void SetUp() override { EnsureApplication(); }
};

TEST(QtFilterTest, ClassicPairsBecomeQtFilters) {
  EXPECT_EQ(QtFilter("Project Database Files (*.trn)|*.trn").toStdString(),
            "Project Database Files (*.trn)");
  EXPECT_EQ(QtFilter("Base maps (*.bbm)|*.bbm|All Files (*.*)|*.*").toStdString(),
            "Base maps (*.bbm);;All Files (*.*)");
}

TEST(QtFilterTest, ThePatternsComeFromThePatternPartNotTheDescription) {
  // A description without its patterns, or with other ones, still filters by the
  // pattern part; several patterns are joined by blanks.
  EXPECT_EQ(QtFilter("Drawings|*.dxf;*.dwg").toStdString(), "Drawings (*.dxf *.dwg)");
  EXPECT_EQ(QtFilter("Maps (*.map)|*.bbm").toStdString(), "Maps (*.bbm)");
}

TEST(QtFilterTest, EmptyAndIncompleteFilters) {
  EXPECT_EQ(QtFilter("").toStdString(), "");
  EXPECT_EQ(QtFilter("Everything").toStdString(), "Everything (*)");
  EXPECT_EQ(QtFilter("Text (*.txt)|*.txt|").toStdString(), "Text (*.txt)");
}

TEST(ColourPackingTest, PackedToQColorAndBack) {
  const QColor red = ToQColor(0x0000FF);
  EXPECT_EQ(red.red(), 255);
  EXPECT_EQ(red.green(), 0);
  EXPECT_EQ(red.blue(), 0);
  const QColor mixed = ToQColor(10 + 256 * 20 + 65536 * 30);
  EXPECT_EQ(mixed.red(), 10);
  EXPECT_EQ(mixed.green(), 20);
  EXPECT_EQ(mixed.blue(), 30);
  EXPECT_EQ(FromQColor(QColor(10, 20, 30)), 10u + 256u * 20u + 65536u * 30u);
  EXPECT_EQ(FromQColor(QColor(0, 0, 128)), 0x800000u) << "dark blue is the classic 0x800000";
  for (std::uint32_t packed : {0u, 0xFFFFFFu, 0x123456u, 0x800000u, 0x000080u}) {
    EXPECT_EQ(FromQColor(ToQColor(packed)), packed);
  }
}

TEST(DefaultExtensionTest, AddedOnlyWhenTheNameHasNone) {
  EXPECT_EQ(WithDefaultExtension("/tmp/model", "trn"), "/tmp/model.trn");
  EXPECT_EQ(WithDefaultExtension("/tmp/model.trn", "trn"), "/tmp/model.trn");
  EXPECT_EQ(WithDefaultExtension("/tmp/model.wrk", "trn"), "/tmp/model.wrk");
  EXPECT_EQ(WithDefaultExtension("/tmp/model.", "trn"), "/tmp/model.trn");
  EXPECT_EQ(WithDefaultExtension("/tmp/v1.2/model", "trn"), "/tmp/v1.2/model.trn")
      << "a dot in a folder's name is no extension";
  EXPECT_EQ(WithDefaultExtension("/tmp/model", ""), "/tmp/model");
  EXPECT_EQ(WithDefaultExtension("/tmp/model", ".dat"), "/tmp/model.dat");
  // A number after the last dot is part of the name (a version, a date), not an
  // extension: the project still becomes a ".trn" that Open lists.
  EXPECT_EQ(WithDefaultExtension("/tmp/site 2.5", "trn"), "/tmp/site 2.5.trn");
  EXPECT_EQ(WithDefaultExtension("/tmp/run 2026.11", "trn"), "/tmp/run 2026.11.trn");
  EXPECT_EQ(WithDefaultExtension("/tmp/site 2.5.trn", "trn"), "/tmp/site 2.5.trn");
  EXPECT_EQ(WithDefaultExtension("/tmp/model.v2", "trn"), "/tmp/model.v2") << "letters make one";
}

TEST(DefaultExtensionTest, TheChosenFilterSuppliesThePlainExtension) {
  EXPECT_EQ(FilterExtension("Project Database Files (*.trn)"), "trn");
  EXPECT_EQ(FilterExtension("Maps (*.bbm *.shp)"), "bbm") << "the first pattern";
  EXPECT_EQ(FilterExtension("*.dat"), "dat") << "a filter of patterns only";
  EXPECT_EQ(FilterExtension("All Files (*.*)"), "");
  EXPECT_EQ(FilterExtension("All Files (*)"), "");
  EXPECT_EQ(FilterExtension("Logs (*.lo?)"), "");
  EXPECT_EQ(FilterExtension(""), "");
}

class NamedModel : public DialogModel {
 public:
  explicit NamedModel(std::string name) : name_(std::move(name)) {}
  std::string DialogName() const override { return name_; }
  int shown = 0;

 private:
  std::string name_;
};

TEST_F(QtPortTest, ShowModalGoesToTheViewOfTheName) {
  QtUserInterface ui;
  QWidget parent;
  ui.SetParent(&parent);
  QWidget* seenParent = nullptr;
  ui.RegisterView("First", [&](DialogModel& model, QWidget* p) {
    static_cast<NamedModel&>(model).shown++;
    seenParent = p;
  });
  EXPECT_TRUE(ui.HasView("First"));
  EXPECT_FALSE(ui.HasView("Second"));
  NamedModel first("First");
  ui.ShowModal(first);
  EXPECT_EQ(first.shown, 1);
  EXPECT_EQ(seenParent, &parent);
}

TEST_F(QtPortTest, ShowModalWithoutAViewNamesTheDialog) {
  QtUserInterface ui;
  NamedModel model("WellProperties");
  try {
    ui.ShowModal(model);
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_STREQ(e.what(), "No view for dialog WellProperties");
  }
}

TEST_F(QtPortTest, WaitWindowShowsCentredAndHidesOnce) {
  QWidget parent;
  parent.setGeometry(100, 100, 800, 600);
  parent.show();
  QtUserInterface ui(&parent);
  EXPECT_EQ(ui.WaitText(), "");
  ui.PleaseWaitShow("Running Solver...", 3000);
  EXPECT_EQ(ui.WaitText(), "Running Solver...");
  QDialog* wait = ui.WaitWindow();
  ASSERT_NE(wait, nullptr);
  EXPECT_TRUE(wait->isVisible());
  EXPECT_FALSE(wait->isModal());
  EXPECT_TRUE(wait->windowFlags() & Qt::FramelessWindowHint);
  EXPECT_GE(wait->width(), 200) << "3000 logical units are 200 pixels";
  const QPoint centre = parent.mapToGlobal(QPoint(0, 0)) + QPoint(400, 300);
  const QPoint waitCentre = wait->geometry().center();
  EXPECT_LE(std::abs(waitCentre.x() - centre.x()), 2);
  EXPECT_LE(std::abs(waitCentre.y() - centre.y()), 2);

  ui.PleaseWaitShow("Contouring...", 0);
  EXPECT_EQ(ui.WaitText(), "Contouring...") << "a second show changes the text";
  ui.PleaseWaitHide();
  EXPECT_EQ(ui.WaitText(), "");
  EXPECT_EQ(ui.WaitWindow(), nullptr);
  ui.PleaseWaitHide();  // nothing to hide
  EXPECT_EQ(ui.WaitText(), "");
}

TEST_F(QtPortTest, StatusTextsGoToTheirHandlers) {
  QtUserInterface ui;
  ui.Activity("ignored while nobody listens");
  std::vector<std::string> activity, feedback;
  ui.onActivity = [&](const std::string& t) { activity.push_back(t); };
  ui.onFeedback = [&](const std::string& t) { feedback.push_back(t); };
  ui.Activity("Select");
  ui.Feedback("Click mouse button to select element");
  EXPECT_EQ(activity, std::vector<std::string>{"Select"});
  EXPECT_EQ(feedback, std::vector<std::string>{"Click mouse button to select element"});
}

// Presses a button of the next message box and notes what it showed.
void PressInNextBox(QMessageBox::StandardButton button, QString* title, QString* text,
                    QMessageBox::Icon* icon) {
  OnNextDialog<QMessageBox>([=](QMessageBox* box) {
    *title = box->windowTitle();
    *text = box->text();
    *icon = box->icon();
    box->button(button)->click();
  });
}

TEST_F(QtPortTest, MessageBoxShowsTitleLinesAndIconAndMapsTheAnswer) {
  QtUserInterface ui;
  QString title, text;
  QMessageBox::Icon icon = QMessageBox::NoIcon;
  PressInNextBox(QMessageBox::No, &title, &text, &icon);
  const Answer answer = ui.MessageBox("File Exists", {"first line", "second line"}, Buttons::YesNo,
                                      Icon::Exclamation);
  EXPECT_EQ(answer, Answer::No);
  EXPECT_EQ(title.toStdString(), "File Exists");
  EXPECT_EQ(text.toStdString(), "first line\nsecond line");
  EXPECT_EQ(icon, QMessageBox::Warning);

  PressInNextBox(QMessageBox::Retry, &title, &text, &icon);
  EXPECT_EQ(ui.MessageBoxStyle("Disk", {"Try again?"}, 5 + 16), Answer::Retry);
  EXPECT_EQ(icon, QMessageBox::Critical);

  PressInNextBox(QMessageBox::Cancel, &title, &text, &icon);
  EXPECT_EQ(ui.MessageBox("Q", {"?"}, Buttons::YesNoCancel, Icon::Question), Answer::Cancel);
  EXPECT_EQ(icon, QMessageBox::Question);
}

// The lines of a message are the lines the user reads: the box asks for the width
// of its longest line, so that none is broken in two (as "...coordinates (meters),
// you should" of the units warning was, at the box's usual half a screen). How wide
// the box then is depends on the screen, which here is a small offscreen one.
TEST_F(QtPortTest, MessageBoxAsksForTheWidthOfItsLongestLine) {
  QtUserInterface ui;
  const std::vector<std::string> lines = {
      "In general these units should NOT be changed!",
      "but you are using BBM files that have UTM coordinates (meters), you should",
      "change feet into meters for a proper interpretation of the map coordinates.",
      "Do you wish to continue?"};
  int asked = 0, widest = 0, room = 0;
  OnNextDialog<QMessageBox>([&](QMessageBox* box) {
    if (auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
      asked = label->minimumWidth();
      for (const auto& line : lines)
        widest = std::max(widest, label->fontMetrics().horizontalAdvance(QString::fromStdString(line)));
    }
    room = box->screen()->availableGeometry().width() * 3 / 4;
    box->button(QMessageBox::Yes)->click();
  });
  EXPECT_EQ(ui.MessageBox("STOP!", lines, Buttons::YesNo), Answer::Yes);
  ASSERT_GT(widest, 0);
  EXPECT_GE(asked, std::min(widest, room));
  EXPECT_LE(asked, std::max(room, widest + 40));
}

// A line longer than the box may be (the GIS import's "Feature 0: Bad Entry: Top of
// Screen must be between ..." lines) wraps inside the box: the text asks for no more
// than Qt lets the box be, min(screen - 480, 1000) wide, less the icon and margins.
// It asked for three quarters of the screen, 1050 pixels on a screen of 1400 in a box
// held at 920, and the line ends were cut off.
TEST(MessageTextWidthTest, TheTextFitsTheWidestBoxQtAllows) {
  EXPECT_EQ(MessageTextWidth(300, 1400), 300) << "a short text asks for its own width";
  for (int screen : {800, 1024, 1280, 1400, 1920, 2560, 3840}) {
    SCOPED_TRACE(screen);
    const int box = screen <= 1024 ? screen : std::min(screen - 480, 1000);
    const int asked = MessageTextWidth(5000, screen);
    EXPECT_LE(asked + 64, box) << "room for the icon and the margins";
    EXPECT_GE(asked, std::min(box - 100, screen * 3 / 4));
  }
}

TEST_F(QtPortTest, AVeryLongLineStaysInsideTheMessageBox) {
  QtUserInterface ui;
  const std::string longLine =
      "Feature 0: Bad Entry: Top of Screen must be between the local base and the aquifer "
      "top. The local base is 0 and the aquifer top is 1. Please enter a new value. " +
      std::string(200, 'x');
  int labelRight = 0, boxWidth = 0;
  bool wraps = false;
  OnNextDialog<QMessageBox>([&](QMessageBox* box) {
    if (auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
      labelRight = label->geometry().right();
      wraps = label->wordWrap();
    }
    boxWidth = box->width();
    box->button(QMessageBox::Ok)->click();
  });
  ui.MessageBox("GIS Import", {"Imported 0 wells.", longLine}, Buttons::OK);
  ASSERT_GT(boxWidth, 0);
  EXPECT_TRUE(wraps);
  EXPECT_LT(labelRight, boxWidth);
}

TEST_F(QtPortTest, InputBoxGivesTheTextOrNothingOnCancel) {
  QtUserInterface ui;
  QString title, label, shown;
  OnNextDialog<QInputDialog>([&](QInputDialog* box) {
    title = box->windowTitle();
    label = box->labelText();
    shown = box->textValue();
    box->setTextValue(QStringLiteral("north end"));
    box->accept();
  });
  EXPECT_EQ(ui.InputBox("Enter a name for the window: ", "Save Window", "W1"), "north end");
  EXPECT_EQ(title.toStdString(), "Save Window");
  EXPECT_EQ(label.toStdString(), "Enter a name for the window: ");
  EXPECT_EQ(shown.toStdString(), "W1");

  OnNextDialog<QInputDialog>([](QInputDialog* box) { box->reject(); });
  EXPECT_EQ(ui.InputBox("Name", "Save Window", ""), std::nullopt);
}

TEST_F(QtPortTest, FileDialogsStartWhereAskedWithTheFilterAndAddTheExtension) {
  const test::TempDir temp("tarno_dialogs_files");
  const std::filesystem::path dir = temp.Path();
  std::ofstream(dir / "a.trn") << "x";
  QtUserInterface ui;
  FileDialogRequest request;
  request.title = "Open Project Database";
  request.defaultExtension = "trn";
  request.filter = "Project Database Files (*.trn)|*.trn";
  request.initialDirectory = dir.string();

  QString title, directory;
  QStringList filters;
  OnNextDialog<QFileDialog>([&](QFileDialog* dialog) {
    title = dialog->windowTitle();
    directory = dialog->directory().absolutePath();
    filters = dialog->nameFilters();
    // Only what the port asked for is read here: choosing a file in the dialog
    // depends on the folder's listing, which the dialog reads in a thread of its own
    // and which may not arrive in time on a loaded machine.
    static_cast<QDialog*>(dialog)->reject();
  });
  EXPECT_EQ(ui.OpenFileDialog(request), std::nullopt);
  EXPECT_EQ(title.toStdString(), "Open Project Database");
  EXPECT_EQ(directory.toStdString(), dir.string());
  EXPECT_EQ(filters, QStringList{"Project Database Files (*.trn)"});

  request.title = "Save As";
  OnNextDialog<QFileDialog>([&](QFileDialog* dialog) {
    // The name typed without an extension, as a user would.
    if (auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) {
      name->setText(QStringLiteral("copy"));
    }
    static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
  });
  EXPECT_EQ(ui.SaveFileDialog(request), (dir / "copy.trn").string());

  // A new project: the request's default extension is "wrk", but the project
  // filter supplies ".trn", so that the new file shows among the projects.
  request.title = "Create New Project Database";
  request.defaultExtension = "wrk";
  int width = 0;
  std::vector<QHeaderView::ResizeMode> modes;
  OnNextDialog<QFileDialog>([&](QFileDialog* dialog) {
    width = dialog->width();
    if (auto* tree = dialog->findChild<QTreeView*>()) {
      for (int c = 0; c < tree->header()->count(); ++c)
        modes.push_back(tree->header()->sectionResizeMode(c));
    }
    if (auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) {
      name->setText(QStringLiteral("new project"));
    }
    static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
  });
  EXPECT_EQ(ui.SaveFileDialog(request), (dir / "new project.trn").string());
  // An existing project chosen by its name alone: the dialog asks nothing itself,
  // the callers ask "File Exists" in their own words. A question of the dialog's
  // own would be answered Yes here, and counted.
  int confirmations = 0;
  QTimer watcher;
  QObject::connect(&watcher, &QTimer::timeout, [&] {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
      auto* box = qobject_cast<QMessageBox*>(widget);
      if (box == nullptr || !box->isVisible()) continue;
      ++confirmations;
      if (QAbstractButton* yes = box->button(QMessageBox::Yes)) yes->click();
    }
  });
  watcher.start(10);
  bool typed = false;
  OnNextDialog<QFileDialog>([&](QFileDialog* dialog) {
    if (typed) return;
    typed = true;
    if (auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")))
      name->setText(QStringLiteral("a"));
    QMetaObject::invokeMethod(dialog, "accept", Qt::QueuedConnection);
  });
  EXPECT_EQ(ui.SaveFileDialog(request), (dir / "a.trn").string());
  watcher.stop();
  EXPECT_EQ(confirmations, 0);
  // The columns after the name fit their contents, in a dialog wide enough for them.
  EXPECT_GE(width, 860);
  ASSERT_GE(modes.size(), 2u);
  for (std::size_t c = 1; c < modes.size(); ++c) EXPECT_EQ(modes[c], QHeaderView::ResizeToContents);

  OnNextDialog<QFileDialog>([](QFileDialog* dialog) { dialog->reject(); });
  EXPECT_TRUE(ui.OpenFilesDialog(request).empty());
}

TEST(TextViewer, ShowsAWideReportWholeWithinTheScreen) {
  const QSize screen(1920, 1080);
  // A short log keeps the smallest size.
  EXPECT_EQ(TextViewerSize(200, 40, screen), QSize(720, 480));
  // A report's 150-column table and 40 lines fit whole, frame included.
  const QSize report = TextViewerSize(1200, 40 * 15, screen);
  EXPECT_GE(report.width(), 1200 + 40);
  EXPECT_GE(report.height(), 40 * 15 + 40);
  // Larger than the screen: most of the screen, the rest scrolls.
  EXPECT_EQ(TextViewerSize(5000, 5000, screen), QSize(1728, 864));
  // A screen smaller than the smallest size still gets it.
  EXPECT_EQ(TextViewerSize(5000, 5000, QSize(640, 400)), QSize(720, 480));
}

TEST_F(QtPortTest, ShowTextFileShowsTheTextReadOnly) {
  const test::TempDir temp("tarno_dialogs_log");
  const auto path = temp / "run.LOG";
  {
    std::ofstream out(path);
    out << "line one\nline two\n";
  }
  QtUserInterface ui;
  std::string title, text;
  bool readOnly = false;
  OnNextDialog<QDialog>([&](QDialog* dialog) {
    title = dialog->windowTitle().toStdString();
    if (auto* view = dialog->findChild<QPlainTextEdit*>()) {
      text = view->toPlainText().toStdString();
      readOnly = view->isReadOnly();
    }
    dialog->reject();
  });
  ui.ShowTextFile(path.string());
  EXPECT_EQ(title, path.filename().string());
  EXPECT_EQ(text, "line one\nline two\n");
  EXPECT_TRUE(readOnly);

  std::filesystem::remove(path);

  QString boxTitle, boxText;
  QMessageBox::Icon icon = QMessageBox::NoIcon;
  PressInNextBox(QMessageBox::Ok, &boxTitle, &boxText, &icon);
  ui.ShowTextFile(path.string());
  EXPECT_EQ(boxTitle.toStdString(), "File Not Found");
  EXPECT_EQ(boxText.toStdString(), "Cannot open the file " + path.string());
}

}  // namespace
}  // namespace tarno::testing
