#include "desktop/application.h"

#include <dlfcn.h>

#include <QApplication>
#include <QLibraryInfo>
#include <QPluginLoader>
#include <QThread>
#include <atomic>
#include <clocale>
#include <future>
#include <mutex>
#include <string>
#include <thread>

namespace {

// The process's locale, which Qt sets to the user's one.
class KeptLocale {
 public:
  KeptLocale() : name_(std::setlocale(LC_ALL, nullptr)) {}
  ~KeptLocale() { std::setlocale(LC_ALL, name_.c_str()); }
  KeptLocale(const KeptLocale&) = delete;
  KeptLocale& operator=(const KeptLocale&) = delete;

 private:
  const std::string name_;
};

// Qt ends the process if the platform's plugin can't be loaded, so this is tried first.
bool CanLoad(const QString& platform) {
  QPluginLoader plugin(QLibraryInfo::path(QLibraryInfo::PluginsPath) + "/platforms/libq" + platform + ".so");
  return plugin.load();
}

void Silent(QtMsgType, const QMessageLogContext&, const QString&) {}

// Makes the application on the calling thread. It lives until the process ends: its destructor must not run after those
// of other libraries.
template <class Application>
Application* NewApplication(const char* platform) {
  static std::string words[] = {"kestrova", "-platform", platform};  // Qt keeps the arguments
  static char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
  static int count = 3;
  const KeptLocale locale;
  const QtMessageHandler handler = qInstallMessageHandler(Silent);  // it remarks upon the locale and the thread
  auto* const application = new Application(count, arguments);
  qInstallMessageHandler(handler);
  return application;
}

bool MakeApplication() {
  for (const char* const name : {"offscreen", "minimal"}) {
    if (!CanLoad(name)) continue;
    static const auto* const application = NewApplication<QGuiApplication>(name);
    return application != nullptr;
  }
  return false;
}

std::mutex& CreationMutex() {
  static auto* const mutex = new std::mutex;
  return *mutex;
}

// Qt ends the process if it can't connect to the server, so this is tried first.
bool IsServerReachable() {
  void* const library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
  if (!library) return false;
  auto* const connect = reinterpret_cast<void* (*)(const char*, int*)>(dlsym(library, "xcb_connect"));
  auto* const failed = reinterpret_cast<int (*)(void*)>(dlsym(library, "xcb_connection_has_error"));
  auto* const disconnect = reinterpret_cast<void (*)(void*)>(dlsym(library, "xcb_disconnect"));
  if (!connect || !failed || !disconnect) return false;
  void* const connection = connect(nullptr, nullptr);
  const bool reachable = failed(connection) == 0;
  disconnect(connection);
  return reachable;
}

// The thread that runs the module's own QApplication. It is the first thread that uses an object of Qt, because Qt
// takes that one for the main thread and wakes no other for events of the server. At the end of the process its event
// loop ends before Qt's static objects go.
class GuiThread {
 public:
  GuiThread() {
    std::promise<bool> ready;
    thread_ = std::thread([&ready] {
      if (!CanLoad("xcb")) return ready.set_value(false);
      auto* const application = NewApplication<QApplication>("xcb");
      application->setQuitOnLastWindowClosed(false);
      ready.set_value(true);
      application->exec();
    });
    has_application_ = ready.get_future().get();
  }
  ~GuiThread() {
    stopped_ = true;
    if (thread_.get_id() == std::this_thread::get_id()) {
      thread_.detach();  // Qt itself ends the process
      return;
    }
    if (has_application_)
      QMetaObject::invokeMethod(QCoreApplication::instance(), &QCoreApplication::quit, Qt::QueuedConnection);
    thread_.join();
    qInstallMessageHandler(Silent);  // objects of the thread go now, which Qt remarks upon
  }
  GuiThread(const GuiThread&) = delete;
  GuiThread& operator=(const GuiThread&) = delete;

  bool HasApplication() const { return has_application_; }
  static bool HasStopped() { return stopped_; }

 private:
  bool has_application_ = false;
  std::thread thread_;
  static std::atomic<bool> stopped_;
};
constinit std::atomic<bool> GuiThread::stopped_ = false;

}  // namespace

bool HasGuiApplication() {
  const std::lock_guard lock(CreationMutex());
  if (QCoreApplication::instance()) return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
  static const bool made = MakeApplication();
  return made;
}

bool CanShowWindows() {
  const std::lock_guard lock(CreationMutex());
  if (GuiThread::HasStopped()) return false;
  if (QCoreApplication::instance()) return qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
  static const bool reachable = IsServerReachable();
  if (!reachable) return false;
  static const GuiThread thread;
  return thread.HasApplication();
}

void RunOnGuiThread(const std::function<void()>& work) {
  QCoreApplication* const application = QCoreApplication::instance();
  if (QThread::currentThread() == application->thread()) return work();
  QMetaObject::invokeMethod(application, work, Qt::BlockingQueuedConnection);
}
