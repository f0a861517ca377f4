// A child process that crashes as a program with a document would.
#pragma once

#include <fcntl.h>
#include <sys/resource.h>

#include <csignal>
#include <functional>
#include <memory>
#include <set>
#include <string>

#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/diagnostics/exception_handler.h"
#include "share/objects/object.h"
#include "tests/child_process.h"
#include "tests/scratch.h"

namespace kvtest {

inline int g_permission = 1;

// Answers its title and the flag for messages.
class CrashDocument : public QFObject {
 public:
  int SendQFCoreMessage(QF_CORE_MESSAGE_ID message, ULONGLONG argument, LONGLONG) override {
    auto* const value = reinterpret_cast<void*>(std::uintptr_t(argument));
    if (message == QF_CORE_GET_DOC_TITLE) {
      if (before_title) before_title();
      *static_cast<CString*>(value) = title;
    }
    if (message == QF_CORE_GET_SHOW_EXCEPTION_MESSAGE) *static_cast<int*>(value) = flag;
    if (message == QF_CORE_SET_SHOW_EXCEPTION_MESSAGE) flag = *static_cast<int*>(value);
    return 1;
  }
  CString title = _T("part.kvdoc");
  int flag = 0;
  std::function<void()> before_title;
};
inline CrashDocument* g_crash_document = nullptr;

// Runs the body in a child without handlers, with a document and the permission, and a guard for both files in the
// folder; stderr goes to the file "errors" in `work`. Returns the exit code, or 128 and the signal.
inline int CrashInChild(const std::string& folder, const std::string& work,
                        const std::function<void(QFExceptionHandler& guard)>& body,
                        const std::function<void()>& before_guard = {}) {
  return ExitCode(InChild([&] {
    for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT}) signal(number, SIG_DFL);
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    const int errors = open((work + "/errors").c_str(), O_CREAT | O_WRONLY | O_APPEND, 0666);
    dup2(errors, STDERR_FILENO);
    const int silent = open("/dev/null", O_RDONLY);
    dup2(silent, STDIN_FILENO);  // no terminal
    g_crash_document = new CrashDocument;
    QFShareRegisterDocCBK(
        nullptr, nullptr, []() -> QFObject* { return g_crash_document; }, nullptr, nullptr, nullptr, nullptr, nullptr,
        nullptr, nullptr, nullptr, nullptr, [] { return g_permission; }, nullptr, nullptr, nullptr, nullptr, nullptr);
    if (before_guard) before_guard();
    QFExceptionHandler guard(1, 1);
    guard.SetFilePath(ProductPathFromSystem(folder).c_str());
    body(guard);
    return true;
  }));
}

inline std::set<std::string> FilesIn(const std::filesystem::path& folder) {
  std::set<std::string> names;
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(folder, none)) names.insert(entry.path().filename());
  return names;
}

}  // namespace kvtest
