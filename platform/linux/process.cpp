// Processes and the environment, implemented with POSIX calls. Other processes are accessed by descriptors, so that a
// process number which the system uses again is not mistaken for the earlier process.
#include "platform/process.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
extern "C" {  // older C library headers lack this
#include <sys/pidfd.h>
}

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/command_line.h"
#include "platform/linux/errno_status.h"
#include "platform/linux/handle_table.h"
#include "platform/linux/user.h"
#include "platform/linux/utf8.h"
#include "platform/paths.h"
#include "platform/threads.h"

// ---- environment

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD units) {
  const char* value = name && *name ? std::getenv(Utf8FromWide(name).c_str()) : nullptr;
  if (!value) return DWORD(FailWithStatus(ERROR_ENVVAR_NOT_FOUND));
  return CopyToBuffer(WideFromUtf8(value), buffer, units);
}

BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value) {
  if (!name || !*name) return FailWithStatus(ERROR_INVALID_PARAMETER);
  const std::string key = Utf8FromWide(name);
  const int result = value ? setenv(key.c_str(), Utf8FromWide(value).c_str(), /*overwrite=*/1) : unsetenv(key.c_str());
  return result == 0 || FailWithErrno(errno);
}

// ---- identity

BOOL GetUserNameW(LPWSTR buffer, LPDWORD units) {
  const std::u16string name = WideFromUtf8(EffectiveUser().name);
  const bool fits = CopyToBuffer(name, buffer, *units) == name.size();
  *units = DWORD(name.size() + 1);
  return fits || FailWithStatus(ERROR_INSUFFICIENT_BUFFER);
}

DWORD GetCurrentProcessId() { return DWORD(getpid()); }

// ---- other processes

namespace {

class Process;

// The child processes with an open handle, and ended children without one that are not collected yet.
struct Children {
  std::mutex lock;
  std::map<pid_t, std::weak_ptr<Process>> held;
  std::vector<pid_t> abandoned;

  // Collects ended children without a handle. The caller has locked the list.
  void Collect() {
    std::erase_if(abandoned, [](pid_t id) { return waitpid(id, nullptr, WNOHANG) != 0; });
  }
};

// Never destroyed, because static destructors may still close handles.
Children& TheChildren() {
  static auto* children = new Children;
  return *children;
}

class Process : public WaitableObject {
 public:
  Process(pid_t id, int descriptor, bool ours) : id_(id), descriptor_(descriptor), ours_(ours) {}
  ~Process() override {
    close(descriptor_);
    if (!ours_) return;
    Children& children = TheChildren();
    const std::lock_guard guard(children.lock);
    if (!exit_code_) children.abandoned.push_back(id_);
    const auto held = children.held.find(id_);
    if (held != children.held.end() && held->second.expired()) children.held.erase(held);
    children.Collect();
  }

  pid_t Id() const { return id_; }

  bool HasEnded() const { return Wait(0) > 0; }

  // True if the child is collected, so that its number may belong to another process.
  bool IsCollected() {
    const std::lock_guard guard(lock_);
    return exit_code_.has_value();
  }

  int Wait(int milliseconds) const override {
    pollfd wanted = {descriptor_, POLLIN, 0};
    return poll(&wanted, 1, milliseconds);
  }

  bool Terminate(UINT code) {
    const std::lock_guard guard(lock_);
    if (HasEnded()) return FailWithStatus(ERROR_ACCESS_DENIED);
    if (pidfd_send_signal(descriptor_, SIGKILL, nullptr, 0) != 0) return FailWithStatus(ERROR_ACCESS_DENIED);
    given_code_ = code;
    return true;
  }

  // The exit code of an ended child.
  std::optional<DWORD> ExitCode() {
    const std::lock_guard guard(lock_);
    if (exit_code_ || !ours_) return exit_code_;
    siginfo_t info = {};
    if (waitid(P_PIDFD, id_t(descriptor_), &info, WEXITED | WNOHANG) != 0 || info.si_pid == 0) return exit_code_;
    if (info.si_code == CLD_EXITED) {
      exit_code_ = DWORD(info.si_status);
    } else {
      exit_code_ = info.si_status == SIGKILL && given_code_ ? *given_code_ : DWORD(128 + info.si_status);
    }
    return exit_code_;
  }

 private:
  const pid_t id_;
  const int descriptor_;
  const bool ours_;
  std::mutex lock_;
  std::optional<UINT> given_code_;
  std::optional<DWORD> exit_code_;
};

// Starts the program. Returns 0 or the errno.
int Spawn(const std::string& program, std::vector<std::string>& words, LPCWSTR folder, pid_t& id) {
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  int code = 0;
  if (folder && *folder) code = posix_spawn_file_actions_addchdir_np(&actions, SystemPathFromProduct(folder).c_str());
  if (code == 0) code = posix_spawnp(&id, program.c_str(), &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return code;
}

}  // namespace

BOOL CreateProcessW(LPCWSTR application, LPWSTR commandLine, void*, void*, BOOL, DWORD, void* environment,
                    LPCWSTR folder, LPSTARTUPINFOW, LPPROCESS_INFORMATION information) {
  std::vector<std::string> words = SplitCommandLine(commandLine ? commandLine : application);
  if (words.empty() || environment || !information) return FailWithStatus(ERROR_INVALID_PARAMETER);
  if (application && !commandLine) words = {Utf8FromWide(application)};
  const std::u16string named = application ? application : WideFromUtf8(words.front());
  // A name without a folder is looked for in PATH, as it is: the current folder has no say, not even in its case.
  const bool has_folder = named.find_first_of(u"\\/:") != named.npos;
  const std::string program = has_folder ? SystemPathFromProduct(named.c_str()) : Utf8FromWide(named);
  pid_t id = 0;
  Children& children = TheChildren();
  std::unique_lock guard(children.lock);
  children.Collect();
  if (const int code = Spawn(program, words, folder, id)) return FailWithErrno(code);
  // The child can't be collected by anybody else yet, so its number still names it.
  const int descriptor = pidfd_open(id, 0);
  if (descriptor < 0) {
    children.abandoned.push_back(id);
    return FailWithErrno(errno);
  }
  auto process = std::make_shared<Process>(id, descriptor, /*ours=*/true);
  children.held[id] = process;
  guard.unlock();
  *information = {AddHandle(process), AddHandle(process), DWORD(id), DWORD(id)};
  return TRUE;
}

HANDLE OpenProcess(DWORD, BOOL, DWORD id) {
  Children& children = TheChildren();
  const std::lock_guard guard(children.lock);
  const auto held = children.held.find(pid_t(id));
  const auto child = held == children.held.end() ? nullptr : held->second.lock();
  if (child && !child->IsCollected()) return AddHandle(child);
  const int descriptor = id != 0 && id <= INT32_MAX ? pidfd_open(pid_t(id), 0) : -1;
  if (descriptor < 0 && child) return AddHandle(child);
  if (descriptor >= 0) return AddHandle(std::make_shared<Process>(pid_t(id), descriptor, /*ours=*/false));
  SetLastError(errno == EMFILE ? ERROR_TOO_MANY_OPEN_FILES : ERROR_INVALID_PARAMETER);
  return nullptr;
}

DWORD GetProcessId(HANDLE handle) {
  const auto process = FindHandle<Process>(handle);
  return process ? DWORD(process->Id()) : 0;
}

BOOL TerminateProcess(HANDLE handle, UINT exitCode) {
  const auto process = FindHandle<Process>(handle);
  return process && process->Terminate(exitCode);
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  return WaitForMultipleObjects(1, &handle, /*all=*/TRUE, milliseconds);
}

BOOL GetExitCodeProcess(HANDLE handle, LPDWORD exitCode) {
  const auto process = FindHandle<Process>(handle);
  if (!process) return FALSE;
  // Asked first: a process that ends between the two questions has its code already.
  const bool ended = process->HasEnded();
  const std::optional<DWORD> code = ended ? process->ExitCode() : STILL_ACTIVE;
  if (!code) return FailWithStatus(ERROR_ACCESS_DENIED);
  *exitCode = *code;
  return TRUE;
}
