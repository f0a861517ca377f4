// Messages and dialogs as windows on an X server: what they show is read back from their widgets, and the keys and the
// mouse of the server answer them. KV_SCREENSHOTS names a folder for a picture of each.
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QScreen>
#include <functional>
#include <sstream>
#include <thread>

#include "share/diagnostics/application_access.h"
#include "tests/desktop/boxes/x_server.h"
#include "tests/diagnostics/boxes.h"

namespace {

// Runs on the thread of the widgets.
template <class Result>
Result Ask(const std::function<Result()>& question) {
  Result result{};
  QMetaObject::invokeMethod(
      qApp, [&] { result = question(); }, Qt::BlockingQueuedConnection);
  return result;
}

std::string Plain(QString label) { return label.remove('&').toStdString(); }

// The window of a box or dialog that has the keyboard; null before it appears.
QWidget* Box() {
  QWidget* const active = QApplication::activeWindow();
  return active && active->isVisible() && active->inherits("QDialog") && QApplication::focusWidget() ? active : nullptr;
}

// What the window shows, in the form of the terminal's question but without its letters.
std::string Shown() {
  std::string texts, boxes, buttons;
  for (const QObject* const child : Box()->children()) {
    const auto* const label = qobject_cast<const QLabel*>(child);
    const auto* const button = qobject_cast<const QAbstractButton*>(child);
    if (label && label->isVisible() && !label->text().isEmpty()) texts += label->text().toStdString() + "\n";
    if (!button || !button->isVisible() || !button->isEnabled()) continue;
    const bool check = qobject_cast<const QCheckBox*>(button) != nullptr;
    if (check) boxes += (button->isChecked() ? "(x) " : "( ) ") + Plain(button->text()) + "\n";
    if (!check) buttons += Plain(button->text()) + "  ";
  }
  const auto* const focus = qobject_cast<QAbstractButton*>(QApplication::focusWidget());
  return texts + boxes + buttons + "Enter = " + (focus ? Plain(focus->text()) : "nothing");
}

std::string WithoutLetters(std::string question) {
  std::erase(question, '[');
  std::erase(question, ']');
  return question;
}

void SaveScreenshot(const std::string& name) {
  const char* const folder = std::getenv("KV_SCREENSHOTS");
  if (folder)
    Ask<bool>([&] { return Box()->grab().save(QString::fromStdString(std::string(folder) + "/" + name + ".png")); });
}

// A user who waits for the window, reads it and answers.
class User {
 public:
  User(std::string keys, std::string name)
      : thread_([this, keys = std::move(keys), name = std::move(name)] { Answer(keys, name); }) {}
  std::string Title() { return Joined().title_; }
  std::string Text() { return Joined().text_; }

 private:
  User& Joined() {
    if (thread_.joinable()) thread_.join();
    return *this;
  }
  void Answer(const std::string& keys, const std::string& name) {
    if (keys.empty()) return;
    while (!Ask<bool>([] { return Box() != nullptr; })) std::this_thread::yield();
    title_ = Ask<std::string>([] { return Box()->windowTitle().toStdString(); });
    text_ = Ask<std::string>(Shown);
    SaveScreenshot(name);
    std::istringstream words(keys);
    for (std::string word, id; words >> word;) {
      if (word != "click") {
        kvtest::UserDoes("key " + word);
        continue;
      }
      words >> id;
      const QPoint place = Ask<QPoint>([&] {
        const auto* const button = Box()->findChild<QAbstractButton*>(QString::fromStdString(id));
        return button->mapToGlobal(QPoint(12, button->height() / 2));
      });
      kvtest::UserDoes("mousemove " + std::to_string(place.x()) + " " + std::to_string(place.y()) + " click 1");
    }
  }

  std::string title_, text_;
  std::thread thread_;
};

std::string NameOf(std::size_t number, const char* kind) { return kind + std::to_string(number); }

TEST(WindowBoxes, EachCaseIsAnsweredByKeysAndMouse) {
  kvtest::UseLanguage("English");
  std::size_t number = 0;
  for (const kvtest::BoxCase& row : kvtest::BoxCases()) {
    SCOPED_TRACE(row.keys + " on " + row.question);
    kvtest::g_helped = 0;
    User user(row.keys, NameOf(number++, "box"));
    EXPECT_EQ(kvtest::Show(row), row.result);
    const std::string question = WithoutLetters(row.question);
    const std::size_t bar = question.find('|');
    EXPECT_EQ(user.Title(), question.substr(0, bar));
    if (bar != std::string::npos) {
      EXPECT_EQ(user.Text(), "Delete\nit?\n" + question.substr(bar + 1));
    }
    EXPECT_EQ(kvtest::g_helped, row.help == 42 ? 42u : 0u);
  }
}

TEST(WindowBoxes, EachDialogIsAnsweredByKeysAndMouse) {
  ProductInfo product;
  product.m_ProductName = _T("Kestrova");
  kvtest::g_product = &product;
  std::size_t number = 0;
  for (const kvtest::DialogCase& row : kvtest::DialogCases()) {
    SCOPED_TRACE(row.language + ": " + row.keys);
    User user(row.keys, NameOf(number++, "dialog"));
    EXPECT_EQ(kvtest::Show(row), (kvtest::DialogResult{row.result, row.shown_after, row.updates_after}));
    EXPECT_EQ(user.Title(), row.keys.empty() ? "" : "Kestrova");
  }
  kvtest::g_product = nullptr;
}

// The owner takes no input meanwhile and is enabled again; a box of another thread appears too.
TEST(WindowBoxes, BelongToTheirOwner) {
  kvtest::UseLanguage("English");
  QWidget owner;
  owner.show();
  CWnd parent(reinterpret_cast<HWND>(owner.winId()));
  bool blocked = false;
  std::thread other([&] {
    std::thread looks([&] {
      while (!Ask<bool>([] { return Box() != nullptr; })) std::this_thread::yield();
      blocked =
          Ask<bool>([&] { return Box()->parentWidget() == &owner && Box()->windowModality() == Qt::WindowModal; });
      kvtest::UserDoes("key Return");
    });
    EXPECT_EQ(Outcome(0, SEVERITY_STOP, 0, Outcome::kNoHelp, &parent).Display(CString(_T("A"))), unsigned(IDOK));
    looks.join();
    QMetaObject::invokeMethod(qApp, [] { QCoreApplication::quit(); });
  });
  QApplication::exec();
  other.join();
  EXPECT_TRUE(blocked);
  EXPECT_TRUE(owner.isEnabled());
}

TEST(WindowBoxes, WaitCursorLastsAsLongAsItsScope) {
  CWinApp app;
  {
    QFWaitCursor wait;
    ASSERT_NE(QGuiApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
    wait.Restore();
  }
  EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

}  // namespace
