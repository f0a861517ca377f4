// Processes and the environment, implemented with POSIX calls. Other processes are accessed by descriptors, so that a
// process number which the system uses again is not mistaken for the earlier process.
#include "platform/process.h"

#include <poll.h>
#include <unistd.h>
extern "C" {  // older C library headers lack this
#include <sys/pidfd.h>
}

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string>

#include "platform/linux/errno_status.h"
#include "platform/linux/handle_table.h"
#include "platform/linux/process_handle.h"
#include "platform/linux/user.h"
#include "platform/linux/utf8.h"
#include "platform/threads.h"

// ---- environment

DWORD GetEnvironmentVariableW(LPCWSTR name, LPWSTR buffer, DWORD units) {
  const char* value = name && *name ? std::getenv(SystemFromWide(name).c_str()) : nullptr;
  if (!value) return DWORD(FailWithStatus(ERROR_ENVVAR_NOT_FOUND));
  return CopyToBuffer(WideFromSystem(value), buffer, units);
}

BOOL SetEnvironmentVariableW(LPCWSTR name, LPCWSTR value) {
  if (!name || !*name) return FailWithStatus(ERROR_INVALID_PARAMETER);
  const std::string key = SystemFromWide(name);
  const int result =
      value ? setenv(key.c_str(), SystemFromWide(value).c_str(), /*overwrite=*/1) : unsetenv(key.c_str());
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

class Process : public WaitableObject {
 public:
  Process(pid_t id, int descriptor) : id_(id), descriptor_(descriptor) {}
  ~Process() override { close(descriptor_); }

  pid_t Id() const { return id_; }

  int Wait(int milliseconds) const override {
    pollfd wanted = {descriptor_, POLLIN, 0};
    return poll(&wanted, 1, milliseconds);
  }

  bool Terminate() const {
    const bool ended = Wait(0) > 0;
    return (!ended && pidfd_send_signal(descriptor_, SIGKILL, nullptr, 0) == 0) || FailWithStatus(ERROR_ACCESS_DENIED);
  }

 private:
  const pid_t id_;
  const int descriptor_;
};

}  // namespace

HANDLE OpenProcess(DWORD, BOOL, DWORD id) {
  const int descriptor = id != 0 && id <= INT32_MAX ? pidfd_open(pid_t(id), 0) : -1;
  if (descriptor >= 0) return AddHandle(std::make_shared<Process>(pid_t(id), descriptor));
  SetLastError(errno == EMFILE ? ERROR_TOO_MANY_OPEN_FILES : ERROR_INVALID_PARAMETER);
  return nullptr;
}

DWORD ProcessIdOf(HANDLE handle) {
  const auto process = FindHandle<Process>(handle);
  return process ? DWORD(process->Id()) : 0;
}

BOOL TerminateProcess(HANDLE handle, UINT) {
  const auto process = FindHandle<Process>(handle);
  return process && process->Terminate();
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
  return WaitForMultipleObjects(1, &handle, /*all=*/TRUE, milliseconds);
}
