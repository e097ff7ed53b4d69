// The user interface port through Qt widgets.
#include "app/qt_ui.h"


#include <QApplication>
#include <QColor>
#include <QColorDialog>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHeaderView>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>

#include "core/error.h"

namespace tarno {

namespace {

QString Q(const std::string& text) { return QString::fromStdString(text); }
std::string S(const QString& text) { return text.toStdString(); }

QMessageBox::StandardButtons StandardButtonsOf(Buttons buttons) {
  switch (buttons) {
    case Buttons::OK:
      return QMessageBox::Ok;
    case Buttons::OKCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case Buttons::AbortRetryIgnore:
      return QMessageBox::Abort | QMessageBox::Retry | QMessageBox::Ignore;
    case Buttons::YesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case Buttons::YesNo:
      return QMessageBox::Yes | QMessageBox::No;
    case Buttons::RetryCancel:
      return QMessageBox::Retry | QMessageBox::Cancel;
  }
  return QMessageBox::Ok;
}

QMessageBox::Icon IconOf(Icon icon) {
  switch (icon) {
    case Icon::None:
      return QMessageBox::NoIcon;
    case Icon::Critical:
      return QMessageBox::Critical;
    case Icon::Question:
      return QMessageBox::Question;
    case Icon::Exclamation:
      return QMessageBox::Warning;
    case Icon::Information:
      return QMessageBox::Information;
  }
  return QMessageBox::NoIcon;
}

// The answer of a pressed button; a box closed by its window button answers Cancel
// where it has one, else its only or first button.
Answer AnswerOf(int pressed, Buttons buttons) {
  switch (pressed) {
    case QMessageBox::Ok:
      return Answer::OK;
    case QMessageBox::Cancel:
      return Answer::Cancel;
    case QMessageBox::Abort:
      return Answer::Abort;
    case QMessageBox::Retry:
      return Answer::Retry;
    case QMessageBox::Ignore:
      return Answer::Ignore;
    case QMessageBox::Yes:
      return Answer::Yes;
    case QMessageBox::No:
      return Answer::No;
    default:
      break;
  }
  switch (buttons) {
    case Buttons::OK:
      return Answer::OK;
    case Buttons::YesNo:
      return Answer::No;
    case Buttons::AbortRetryIgnore:
      return Answer::Abort;
    default:
      return Answer::Cancel;
  }
}

// Where a file dialog starts: the initial file in the initial directory.
QString StartPath(const FileDialogRequest& request) {
  QString dir = Q(request.initialDirectory);
  if (request.initialFile.empty()) return dir;
  if (dir.isEmpty()) return Q(request.initialFile);
  return QDir(dir).filePath(Q(request.initialFile));
}

// Watches the application's key presses while a dialog is shown and hands F1 in
// a dialog window to `onF1`, which says whether it took the key.
class HelpKeyFilter : public QObject {
 public:
  explicit HelpKeyFilter(std::function<bool(QDialog*)> onF1) : onF1_(std::move(onF1)) {}

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() != QEvent::KeyPress) return false;
    const auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() != Qt::Key_F1 || (key->modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier) {
      return false;
    }
    // Only the widgets' own deliveries count (the window system's window gets the
    // key first); the help window is no dialog and keeps its F1.
    auto* widget = qobject_cast<QWidget*>(watched);
    auto* dialog = widget != nullptr ? qobject_cast<QDialog*>(widget->window()) : nullptr;
    return dialog != nullptr && onF1_(dialog);
  }

 private:
  std::function<bool(QDialog*)> onF1_;
};

// The text of the tab in front in `dialog`: of the tab widget that holds the focus,
// else of the first one shown; empty without tabs.
std::string TabInFront(QDialog* dialog) {
  QTabWidget* chosen = nullptr;
  for (QTabWidget* tabs : dialog->findChildren<QTabWidget*>()) {
    if (QWidget* focus = dialog->focusWidget(); focus != nullptr && tabs->isAncestorOf(focus)) {
      chosen = tabs;
      break;
    }
    if (chosen == nullptr && tabs->isVisible()) chosen = tabs;
  }
  if (chosen == nullptr || chosen->currentIndex() < 0) return {};
  QString text = chosen->tabText(chosen->currentIndex());
  text.remove(QLatin1Char('&'));
  return S(text);
}

// The file dialog of the port: Qt's own widgets, large enough that the name, size,
// type and date columns show whole ("204 KiB", not "204...KiB").
void PrepareFileDialog(QFileDialog& dialog) {
  dialog.setOption(QFileDialog::DontUseNativeDialog, true);
  dialog.setViewMode(QFileDialog::Detail);
  for (QTreeView* tree : dialog.findChildren<QTreeView*>()) {
    QHeaderView* header = tree->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int column = 1; column < header->count(); ++column)
      header->setSectionResizeMode(column, QHeaderView::ResizeToContents);
  }
  const QSize hint = dialog.sizeHint();
  dialog.resize(std::max(hint.width(), 860), std::max(hint.height(), 520));
}

}  // namespace

std::string FilterExtension(const QString& qtFilter) {
  // The patterns stand in the parentheses that end the filter, or are the filter.
  QString patterns = qtFilter.trimmed();
  const qsizetype open = patterns.lastIndexOf(QLatin1Char('('));
  if (open >= 0 && patterns.endsWith(QLatin1Char(')')))
    patterns = patterns.mid(open + 1, patterns.size() - open - 2);
  const QStringList list = patterns.split(QLatin1Char(' '), Qt::SkipEmptyParts);
  if (list.isEmpty()) return {};
  const QString& first = list.first();
  if (!first.startsWith(QStringLiteral("*."))) return {};
  const QString ext = first.mid(2);
  if (ext.isEmpty() || ext.contains(QLatin1Char('*')) || ext.contains(QLatin1Char('?')) ||
      ext.contains(QLatin1Char('[')))
    return {};
  return S(ext);
}

QString QtFilter(const std::string& classicFilter) {
  const QStringList parts = Q(classicFilter).split(QLatin1Char('|'));
  QStringList filters;
  for (qsizetype i = 0; i < parts.size(); i += 2) {
    QString description = parts[i].trimmed();
    QString patterns = i + 1 < parts.size() ? parts[i + 1].trimmed() : QString();
    if (description.isEmpty() && patterns.isEmpty()) continue;
    if (patterns.isEmpty()) patterns = QStringLiteral("*");
    // Qt reads the patterns from the parentheses that end the text: the classic
    // description may show them already, so a closing group is replaced by the real ones.
    if (description.endsWith(QLatin1Char(')'))) {
      const qsizetype open = description.lastIndexOf(QLatin1Char('('));
      if (open >= 0) description = description.left(open).trimmed();
    }
    patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
    patterns = patterns.simplified();
    filters << (description.isEmpty() ? patterns : description + " (" + patterns + ")");
  }
  return filters.join(QStringLiteral(";;"));
}

QColor ToQColor(std::uint32_t packed) {
  return QColor(static_cast<int>(packed & 0xFF), static_cast<int>((packed >> 8) & 0xFF),
                static_cast<int>((packed >> 16) & 0xFF));
}

std::uint32_t FromQColor(const QColor& colour) {
  return static_cast<std::uint32_t>(colour.red()) +
         256u * static_cast<std::uint32_t>(colour.green()) +
         65536u * static_cast<std::uint32_t>(colour.blue());
}

std::string WithDefaultExtension(const std::string& path, const std::string& extension) {
  if (path.empty() || extension.empty()) return path;
  const QFileInfo info(Q(path));
  // Digits alone after the last dot are part of the name ("site 2.5", "run 2026.11").
  const QString suffix = info.suffix();
  const bool number = std::all_of(suffix.begin(), suffix.end(), [](QChar c) { return c.isDigit(); });
  if (!suffix.isEmpty() && !number) return path;
  std::string ext = extension;
  if (ext.front() == '.') ext.erase(0, 1);
  if (path.back() == '.') return path + ext;
  return path + "." + ext;
}

QtUserInterface::QtUserInterface(QWidget* parent) : parent_(parent) {}

QtUserInterface::~QtUserInterface() {
  if (wait_) delete wait_.data();
}

void QtUserInterface::RegisterView(const std::string& dialogName, DialogView view) {
  views_[dialogName] = std::move(view);
}

bool QtUserInterface::HasView(const std::string& dialogName) const {
  return views_.count(dialogName) != 0;
}

std::vector<std::string> QtUserInterface::ViewNames() const {
  std::vector<std::string> names;
  for (const auto& [name, view] : views_) names.push_back(name);
  return names;
}

int MessageTextWidth(int widestLine, int screenWidth) {
  // Qt's limit for the whole box, and what its icon, spacing and margins take.
  const int boxLimit = screenWidth <= 1024 ? screenWidth : std::min(screenWidth - 480, 1000);
  constexpr int kIconAndMargins = 100;
  const int room = std::min(screenWidth * 3 / 4, boxLimit - kIconAndMargins);
  return std::max(0, std::min(widestLine, room));
}

Answer QtUserInterface::MessageBox(const std::string& title, const std::vector<std::string>& lines,
                                   Buttons buttons, Icon icon) {
  QStringList text;
  for (const auto& line : lines) text << Q(line);
  QMessageBox box(IconOf(icon), Q(title), text.join(QLatin1Char('\n')), StandardButtonsOf(buttons),
                  parent_);
  // The lines are the message's own: the box asks for the width of its longest line
  // so that no line breaks in the middle of a sentence (the box would otherwise
  // wrap at half the screen). A line wider than most of the screen (a long path) is
  // left to wrap.
  if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"))) {
    int widest = 0;
    for (const QString& line : text) widest = std::max(widest, label->fontMetrics().horizontalAdvance(line));
    const QScreen* screen = parent_ != nullptr && parent_->screen() != nullptr
                                ? parent_->screen()
                                : QGuiApplication::primaryScreen();
    const int screenWidth = screen != nullptr ? screen->availableGeometry().width() : 1600;
    label->setMinimumWidth(MessageTextWidth(
        widest + label->contentsMargins().left() + label->contentsMargins().right() + 2,
        screenWidth));
  }
  const int pressed = box.exec();
  QAbstractButton* clicked = box.clickedButton();
  if (clicked != nullptr) return AnswerOf(box.standardButton(clicked), buttons);
  return AnswerOf(pressed, buttons);
}

std::optional<std::string> QtUserInterface::InputBox(const std::string& prompt,
                                                     const std::string& title,
                                                     const std::string& defaultText) {
  bool ok = false;
  const QString text =
      QInputDialog::getText(parent_, Q(title), Q(prompt), QLineEdit::Normal, Q(defaultText), &ok);
  if (!ok) return std::nullopt;
  return S(text);
}

std::optional<std::string> QtUserInterface::OpenFileDialog(const FileDialogRequest& request) {
  QFileDialog dialog(parent_, Q(request.title), StartPath(request), QtFilter(request.filter));
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFile);
  PrepareFileDialog(dialog);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  const QString chosen = dialog.selectedFiles().first();
  if (chosen.isEmpty()) return std::nullopt;
  return S(QDir::toNativeSeparators(chosen));
}

std::optional<std::string> QtUserInterface::SaveFileDialog(const FileDialogRequest& request) {
  QFileDialog dialog(parent_, Q(request.title), StartPath(request), QtFilter(request.filter));
  dialog.setAcceptMode(QFileDialog::AcceptSave);
  dialog.setFileMode(QFileDialog::AnyFile);
  // The callers ask about an existing file in their own words ("File Exists").
  dialog.setOption(QFileDialog::DontConfirmOverwrite, true);
  PrepareFileDialog(dialog);
  // A name typed without an extension takes that of the chosen filter (a new
  // project becomes "name.trn", so that it shows among the projects); the
  // request's default extension serves only a filter without a plain extension.
  auto extension = [&request](const QString& filter) {
    const std::string ext = FilterExtension(filter);
    return ext.empty() ? request.defaultExtension : ext;
  };
  dialog.setDefaultSuffix(Q(extension(dialog.selectedNameFilter())));
  QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog,
                   [&dialog, extension](const QString& filter) {
                     dialog.setDefaultSuffix(Q(extension(filter)));
                   });
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  const QString chosen = dialog.selectedFiles().first();
  if (chosen.isEmpty()) return std::nullopt;
  return WithDefaultExtension(S(QDir::toNativeSeparators(chosen)),
                              extension(dialog.selectedNameFilter()));
}

std::vector<std::string> QtUserInterface::OpenFilesDialog(const FileDialogRequest& request) {
  QFileDialog dialog(parent_, Q(request.title), StartPath(request), QtFilter(request.filter));
  dialog.setAcceptMode(QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::ExistingFiles);
  PrepareFileDialog(dialog);
  std::vector<std::string> paths;
  if (dialog.exec() != QDialog::Accepted) return paths;
  for (const auto& path : dialog.selectedFiles()) paths.push_back(S(QDir::toNativeSeparators(path)));
  return paths;
}

std::optional<std::uint32_t> QtUserInterface::ColourDialog(std::uint32_t initial) {
  const QColor chosen = QColorDialog::getColor(ToQColor(initial), parent_);
  if (!chosen.isValid()) return std::nullopt;
  return FromQColor(chosen);
}

void QtUserInterface::ShowModal(DialogModel& dialog) {
  const std::string name = dialog.DialogName();
  const auto it = views_.find(name);
  if (it == views_.end()) throw Error("No view for dialog " + name);
  // While the dialog is up, F1 in it (or in a message box over it) asks for its help.
  if (!helpKeys_) {
    helpKeys_ = std::make_unique<HelpKeyFilter>([this](QDialog* window) {
      if (shown_.empty() || !onHelp) return false;
      onHelp(shown_.back(), TabInFront(window));
      return true;
    });
  }
  if (shown_.empty() && QCoreApplication::instance() != nullptr) {
    QCoreApplication::instance()->installEventFilter(helpKeys_.get());
  }
  shown_.push_back(name);
  struct Shown {
    QtUserInterface& ui;
    ~Shown() {
      ui.shown_.pop_back();
      if (ui.shown_.empty() && QCoreApplication::instance() != nullptr) {
        QCoreApplication::instance()->removeEventFilter(ui.helpKeys_.get());
      }
    }
  } shown{*this};
  it->second(dialog, parent_);
}

void QtUserInterface::PleaseWaitShow(const std::string& text, int width) {
  if (!wait_) {
    wait_ = new QDialog(parent_, Qt::Dialog | Qt::FramelessWindowHint);
    wait_->setModal(false);
    wait_->setObjectName(QStringLiteral("PleaseWait"));
    auto* layout = new QVBoxLayout(wait_);
    waitLabel_ = new QLabel(wait_);
    waitLabel_->setAlignment(Qt::AlignCenter);
    waitLabel_->setFrameStyle(QFrame::Panel | QFrame::Raised);
    waitLabel_->setMargin(12);
    layout->addWidget(waitLabel_);
    layout->setContentsMargins(0, 0, 0, 0);
  }
  waitLabel_->setText(Q(text));
  // The width comes in the classic logical units (15 to the pixel); the box is never
  // narrower than its text.
  const int textWidth = QFontMetrics(waitLabel_->font()).horizontalAdvance(Q(text)) + 40;
  const int wanted = width > 0 ? width / 15 : 0;
  wait_->adjustSize();
  wait_->resize(std::max(wanted, textWidth), wait_->sizeHint().height());
  // Centred over the main window, or over the screen without one.
  QRect over;
  if (parent_ != nullptr) {
    over = QRect(parent_->mapToGlobal(QPoint(0, 0)), parent_->size());
  } else if (const QScreen* screen = QGuiApplication::primaryScreen()) {
    over = screen->availableGeometry();
  }
  if (over.isValid()) {
    wait_->move(over.center() - QPoint(wait_->width() / 2, wait_->height() / 2));
  }
  wait_->show();
  wait_->raise();
  // Painted at once: the work that follows holds the event loop. Only the pending
  // paint events are let through, never the user's input.
  wait_->repaint();
  QCoreApplication::sendPostedEvents(wait_);
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents |
                                  QEventLoop::ExcludeSocketNotifiers);
}

void QtUserInterface::PleaseWaitHide() {
  if (!wait_ || !wait_->isVisible()) return;
  wait_->hide();
  if (waitLabel_) waitLabel_->clear();
}

std::string QtUserInterface::WaitText() const {
  if (!wait_ || !wait_->isVisible() || !waitLabel_) return {};
  return S(waitLabel_->text());
}

QDialog* QtUserInterface::WaitWindow() const {
  if (!wait_ || !wait_->isVisible()) return nullptr;
  return wait_.data();
}

QSize TextViewerSize(int textWidth, int textHeight, QSize room) {
  // Room for the frame, the scroll bar and the Close button around the text.
  const int frameWidth = 60, frameHeight = 120;
  const int width = std::clamp(textWidth + frameWidth, 720, std::max(720, room.width() * 9 / 10));
  const int height = std::clamp(textHeight + frameHeight, 480, std::max(480, room.height() * 8 / 10));
  return {width, height};
}

void QtUserInterface::ShowTextFile(const std::string& path) {
  // The program's own viewer of logs and command files, read only.
  QFile file(Q(path));
  QString text;
  if (file.open(QIODevice::ReadOnly)) {
    text = QString::fromLocal8Bit(file.readAll());
  } else {
    MessageBox("File Not Found", {"Cannot open the file " + path}, Buttons::OK, Icon::Exclamation);
    return;
  }
  QDialog dialog(parent_);
  dialog.setWindowTitle(QFileInfo(Q(path)).fileName());
  auto* layout = new QVBoxLayout(&dialog);
  auto* view = new QPlainTextEdit(&dialog);
  view->setReadOnly(true);
  view->setLineWrapMode(QPlainTextEdit::NoWrap);
  view->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  view->setPlainText(text);
  layout->addWidget(view);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, &dialog);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout->addWidget(buttons);
  const QFontMetrics metrics(view->font());
  int widest = 0, lines = 0;
  for (const QString& line : text.split(QLatin1Char('\n'))) {
    widest = std::max(widest, metrics.horizontalAdvance(line));
    ++lines;
  }
  const QScreen* screen =
      parent_ != nullptr && parent_->screen() != nullptr ? parent_->screen() : QGuiApplication::primaryScreen();
  dialog.resize(TextViewerSize(widest, lines * metrics.lineSpacing(), screen->availableGeometry().size()));
  dialog.exec();
}

void QtUserInterface::Activity(const std::string& text) {
  if (onActivity) onActivity(text);
}

void QtUserInterface::Feedback(const std::string& text) {
  if (onFeedback) onFeedback(text);
}

}  // namespace tarno
