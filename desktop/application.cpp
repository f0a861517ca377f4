#include "desktop/application.h"

#include <QGuiApplication>
#include <QLibraryInfo>
#include <QPluginLoader>
#include <clocale>
#include <mutex>
#include <string>

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

bool MakeApplication() {
  const char* platform = nullptr;
  for (const char* const name : {"offscreen", "minimal"})
    if (!platform && CanLoad(name)) platform = name;
  if (!platform) return false;
  // Qt keeps the arguments, and the application lives until the process ends: its destructor must not run after those
  // of other libraries.
  static std::string words[] = {"kestrova", "-platform", platform};
  static char* arguments[] = {words[0].data(), words[1].data(), words[2].data(), nullptr};
  static int count = 3;
  const KeptLocale locale;
  const QtMessageHandler handler = qInstallMessageHandler(Silent);  // it remarks upon the locale
  static const auto* const application = new QGuiApplication(count, arguments);
  qInstallMessageHandler(handler);
  return application != nullptr;
}

}  // namespace

bool HasGuiApplication() {
  static std::mutex mutex;
  const std::lock_guard lock(mutex);
  if (QCoreApplication::instance()) return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
  static const bool made = MakeApplication();
  return made;
}
