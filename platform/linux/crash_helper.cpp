// The helper process: its start by calls that are safe in a handler of signals, and requests through a socket.
#include "platform/crash_helper.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

constexpr char kFile[] = "kvshare-crash";
constexpr char kWritten = 'w';  // the two bytes of an answer
constexpr char kServed = 's';

// The path of the helper, beside this library; null before the first start, empty if it is unknown. Never freed.
constinit std::atomic<const std::string*> g_file = nullptr;

const std::string& FindFile() {
  if (const std::string* const known = g_file) return *known;
  Dl_info self = {};
  std::string path;
  if (dladdr(reinterpret_cast<const void*>(&StartCrashHelper), &self) && self.dli_fname) path = self.dli_fname;
  const std::size_t folder = path.rfind('/');
  path = folder == path.npos ? std::string() : path.substr(0, folder + 1) + kFile;
  char* const whole = realpath(path.c_str(), nullptr);  // a relative path depends on the current folder
  const std::string* expected = nullptr;
  const auto* const found = new std::string(whole ? whole : "");
  std::free(whole);
  if (g_file.compare_exchange_strong(expected, found)) return *found;
  delete found;
  return *expected;
}

// ---- the start

constinit std::atomic<int> g_socket = -1;
constinit std::atomic<pid_t> g_helper = 0;
constinit std::atomic<bool> g_starting = false;

struct Launch {
  const char* file;
  int socket;     // the helper's end
  pid_t* helper;  // out
};

constexpr int kSocketOfHelper = 3;

// In the helper, which shares the starting thread's memory until it runs its own program.
int RunProgram(void* argument) {
  const auto& launch = *static_cast<Launch*>(argument);
  if (launch.socket == kSocketOfHelper) {
    fcntl(launch.socket, F_SETFD, 0);
  } else if (dup2(launch.socket, kSocketOfHelper) < 0) {
    _exit(1);
  }
  // A reader of the program's output must not wait for the helper.
  if (const int nowhere = open("/dev/null", O_WRONLY); nowhere >= 0) dup2(nowhere, STDOUT_FILENO);
  syscall(SYS_close_range, kSocketOfHelper + 1, ~0U, 0);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  const char* const arguments[] = {launch.file, nullptr};
  execve(launch.file, const_cast<char* const*>(arguments), environ);
  _exit(1);
}

constexpr std::size_t kLaunchStack = 16 * 1024;

// Starts the helper and ends, so that the helper is no child of this process and disturbs no wait of the host.
int LaunchAndEnd(void* argument) {
  alignas(16) char stack[kLaunchStack];
  const auto& launch = *static_cast<Launch*>(argument);
  const int helper = clone(RunProgram, stack + sizeof stack, CLONE_VM | CLONE_VFORK, argument);
  *launch.helper = helper;
  _exit(helper > 0 ? 0 : 1);
}

bool Start(const char* file) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0) return false;
  constexpr int kOn = 1;  // a request can come before the helper runs
  setsockopt(ends[1], SOL_SOCKET, SO_PASSCRED, &kOn, sizeof kOn);
  pid_t helper = -1;
  Launch launch = {file, ends[1], &helper};
  alignas(16) char stack[2 * kLaunchStack];
  // Without a signal of its end. Handlers of the host must not run in the shared memory.
  sigset_t all, before;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &before);
  const int launcher = clone(LaunchAndEnd, stack + sizeof stack, CLONE_VM | CLONE_VFORK, &launch);
  if (launcher > 0) waitpid(launcher, nullptr, __WALL);
  sigprocmask(SIG_SETMASK, &before, nullptr);
  close(ends[1]);
  if (helper <= 0) {
    close(ends[0]);
    return false;
  }
  g_helper = helper;
  if (const int former = g_socket.exchange(ends[0]); former >= 0) close(former);
  return true;
}

// Whether the helper still holds its end of the socket.
bool IsRunning() {
  const int socket = g_socket;
  if (socket < 0) return false;
  pollfd state = {socket, 0, 0};
  return poll(&state, 1, 0) == 0;
}

bool StartUnlessRunning(const std::string& file) {
  if (file.empty()) return false;
  if (IsRunning()) return true;
  bool expected = false;
  if (!g_starting.compare_exchange_strong(expected, true)) return true;  // another thread starts it
  const bool started = IsRunning() || Start(file.c_str());
  g_starting = false;
  return started;
}

// ---- requests

bool Send(int socket, const void* request, std::size_t bytes, int answer) {
  iovec content = {const_cast<void*>(request), bytes};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr message = {};
  message.msg_iov = &content;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  cmsghdr* const header = CMSG_FIRSTHDR(&message);
  header->cmsg_level = SOL_SOCKET;
  header->cmsg_type = SCM_RIGHTS;
  header->cmsg_len = CMSG_LEN(sizeof(int));
  std::memcpy(CMSG_DATA(header), &answer, sizeof answer);
  return sendmsg(socket, &message, MSG_NOSIGNAL) == ssize_t(bytes);
}

LONGLONG Milliseconds() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return LONGLONG(now.tv_sec) * 1000 + now.tv_nsec / 1'000'000;
}

// The next byte of the answer; 0 if the helper has died or the time is over. A limit below 0 is none.
char NextByte(int answer, LONGLONG until) {
  for (;;) {
    pollfd state = {answer, POLLIN, 0};
    const LONGLONG left = until < 0 ? -1 : until - Milliseconds();
    if (until >= 0 && left <= 0) return 0;
    const int ready = poll(&state, 1, int(left));
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0) return 0;
    char byte = 0;
    const ssize_t count = read(answer, &byte, 1);
    if (count < 0 && errno == EINTR) continue;
    return count == 1 ? byte : '\0';
  }
}

// ---- the helper's side

int g_answer = -1;

void ReportWritten() {
  if (write(g_answer, &kWritten, 1) != 1) return;  // the process has died
}

struct Request {
  std::vector<char> bytes;
  pid_t process = 0;
  int answer = -1;
};

// Waits for a request; false if the process has ended.
bool Receive(Request& request) {
  request.bytes.resize(kMostRequestBytes);
  iovec content = {request.bytes.data(), request.bytes.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int)) + CMSG_SPACE(sizeof(ucred))] = {};
  msghdr message = {};
  message.msg_iov = &content;
  message.msg_iovlen = 1;
  message.msg_control = control;
  message.msg_controllen = sizeof control;
  ssize_t count = 0;
  do {
    count = recvmsg(kSocketOfHelper, &message, MSG_CMSG_CLOEXEC);
  } while (count < 0 && errno == EINTR);
  if (count <= 0) return false;
  request.bytes.resize(std::size_t(count));
  for (cmsghdr* header = CMSG_FIRSTHDR(&message); header; header = CMSG_NXTHDR(&message, header)) {
    if (header->cmsg_level != SOL_SOCKET) continue;
    if (header->cmsg_type == SCM_RIGHTS) std::memcpy(&request.answer, CMSG_DATA(header), sizeof request.answer);
    if (header->cmsg_type == SCM_CREDENTIALS) {
      ucred sender = {};
      std::memcpy(&sender, CMSG_DATA(header), sizeof sender);
      request.process = sender.pid;
    }
  }
  return true;
}

}  // namespace

bool StartCrashHelper() { return StartUnlessRunning(FindFile()); }

bool AskCrashHelper(const void* request, std::size_t bytes, DWORD limit_ms) {
  const std::string* const file = g_file;
  if (bytes > kMostRequestBytes || !file || !StartUnlessRunning(*file)) return false;
  int answer[2];
  if (pipe2(answer, O_CLOEXEC) != 0) return false;
#ifdef PR_SET_PTRACER
  prctl(PR_SET_PTRACER, long(g_helper), 0, 0, 0);
#endif
  const bool sent = Send(g_socket, request, bytes, answer[1]);
  close(answer[1]);
  const LONGLONG until = Milliseconds() + limit_ms;
  const bool written = sent && NextByte(answer[0], until) == kWritten;
  if (written) NextByte(answer[0], -1);  // kServed, or the helper's end
  close(answer[0]);
  return written;
}

int ServeCrashRequests(int, char**,
                       void (*serve)(DWORD process, const void* request, std::size_t bytes, void (*written)())) {
  for (const int number : {SIGINT, SIGQUIT, SIGHUP, SIGTERM, SIGPIPE, SIGTSTP}) signal(number, SIG_IGN);
  if (chdir("/") != 0) return 2;  // keeps no folder in use
  for (Request request; Receive(request); close(request.answer)) {
    g_answer = request.answer;
    serve(DWORD(request.process), request.bytes.data(), request.bytes.size(), ReportWritten);
    if (write(request.answer, &kServed, 1) != 1) continue;  // the process has died
  }
  return 0;
}
