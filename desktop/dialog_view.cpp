#include "desktop/dialog_view.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QThread>
#include <QWindow>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "desktop/application.h"
#include "desktop/dialog_widget.h"

namespace {

bool IsGuiThread() { return QThread::currentThread() == QCoreApplication::instance()->thread(); }

// What the user did, for the thread of the dialog. On the application's own thread it waits in a nested event loop, so
// that the host's other windows live on.
class Events {
 public:
  void Post(const DialogEvent& event) {
    {
      const std::lock_guard lock(mutex_);
      events_.push_back(event);
    }
    arrived_.notify_one();
    if (loop_) loop_->quit();
  }

  DialogEvent Wait() {
    if (IsGuiThread()) return WaitInLoop();
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [this] { return !events_.empty(); });
    return Take();
  }

 private:
  DialogEvent WaitInLoop() {
    while (events_.empty()) {
      QEventLoop loop;
      loop_ = &loop;
      loop.exec();
      loop_ = nullptr;
      if (events_.empty()) return {DialogEvent::Kind::kFailed, 0};  // the application ends
    }
    return Take();
  }
  DialogEvent Take() {
    const DialogEvent event = events_.front();
    events_.pop_front();
    return event;
  }

  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<DialogEvent> events_;
  QEventLoop* loop_ = nullptr;  // of the application's thread
};

class DialogWindowView : public DialogView {
 public:
  ~DialogWindowView() override {
    RunOnGuiThread([this] { delete widget_; });
  }

  void Show(const DialogState& state) override {
    RunOnGuiThread([&] {
      if (!widget_) Create(state);
      widget_->Apply(state);
    });
  }

  DialogEvent Wait() override { return events_.Wait(); }

 private:
  void Create(const DialogState& state) {
    QWidget* const owner = state.owner ? DialogWidget::Find(state.owner) : nullptr;
    widget_ = new DialogWidget(state, owner ? owner->window() : nullptr,
                               [this](const DialogEvent& event) { events_.Post(event); });
    if (!state.owner || owner || QGuiApplication::platformName() != "xcb") return;
    // A window of another toolkit: the window manager keeps the box above it.
    QWindow* const foreign = QWindow::fromWinId(reinterpret_cast<WId>(state.owner));
    if (!foreign) return;
    widget_->winId();
    widget_->windowHandle()->setTransientParent(foreign);
    QObject::connect(widget_, &QObject::destroyed, foreign, &QObject::deleteLater);
  }

  Events events_;
  QPointer<DialogWidget> widget_;  // the host may delete the owner, and with it the box
};

}  // namespace

std::unique_ptr<DialogView> OpenDialogWindow() {
  return CanShowWindows() ? std::make_unique<DialogWindowView>() : nullptr;
}

bool EnableHostWindow(HWND window, bool enable) {
  bool was_disabled = false;
  if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return false;
  RunOnGuiThread([&] {
    QWidget* const widget = DialogWidget::Find(window);
    if (!widget) return;
    was_disabled = !widget->isEnabled();
    widget->setEnabled(enable);
  });
  return was_disabled;
}

void ShowWaitCursor(bool wait) {
  if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return;
  RunOnGuiThread(
      [wait] { wait ? QGuiApplication::setOverrideCursor(Qt::WaitCursor) : QGuiApplication::restoreOverrideCursor(); });
}
