#include "platform/linux/desktop_programs.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <mutex>
#include <string_view>

namespace {

constexpr int kWait_ms = 500;
constexpr int kEndedBySignal = 126;
constexpr int kNotStarted = 127;

// Programs that still ran at the end of their call. The next call takes those that have ended out of the system's list.
class RunningPrograms {
 public:
  void Add(pid_t id) {
    const std::lock_guard lock(mutex_);
    ids_.push_back(id);
  }
  void ForgetEnded() {
    const std::lock_guard lock(mutex_);
    std::erase_if(ids_, [](pid_t id) { return waitpid(id, nullptr, WNOHANG) != 0; });
  }

 private:
  std::mutex mutex_;
  std::vector<pid_t> ids_;
};

RunningPrograms& Running() {
  static RunningPrograms& programs = *new RunningPrograms;  // never destroyed: a call may come while the process ends
  return programs;
}

// `output`: the file to which the program writes; -1: none.
int Spawn(const std::string& program, const std::vector<std::string>& arguments, int output, pid_t& id) {
  std::vector<char*> words = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  if (output < 0) {
    posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
  } else {
    posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  }
  posix_spawnattr_t settings;
  posix_spawnattr_init(&settings);
  sigset_t signals;
  sigemptyset(&signals);
  posix_spawnattr_setsigmask(&settings, &signals);
  posix_spawnattr_setflags(&settings, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK);
  const int status = posix_spawn(&id, program.c_str(), &files, &settings, words.data(), environ);
  posix_spawnattr_destroy(&settings);
  posix_spawn_file_actions_destroy(&files);
  return status;
}

void WaitForEnd(pid_t id) {
  const int process = int(syscall(SYS_pidfd_open, id, 0));
  if (process < 0) return;
  pollfd ended = {process, POLLIN, 0};
  poll(&ended, 1, kWait_ms);
  close(process);
}

}  // namespace

std::string FindProgram(const std::string& name) {
  const char* const path = std::getenv("PATH");
  std::string_view folders = path ? path : "";
  while (!folders.empty()) {
    const std::string_view folder = folders.substr(0, folders.find(':'));
    folders.remove_prefix(std::min(folder.size() + 1, folders.size()));
    if (!folder.starts_with('/')) continue;  // a folder relative to the current one may be anybody's
    std::string program = std::string(folder) + '/' + name;
    if (access(program.c_str(), X_OK) == 0) return program;
  }
  return {};
}

int StartProgram(const std::string& program, const std::vector<std::string>& arguments) {
  Running().ForgetEnded();
  pid_t id = 0;
  if (Spawn(program, arguments, /*output=*/-1, id) != 0) return kNotStarted;
  WaitForEnd(id);
  int status = 0;
  const pid_t ended = waitpid(id, &status, WNOHANG);
  if (ended == 0) Running().Add(id);
  if (ended <= 0) return 0;
  return WIFEXITED(status) ? WEXITSTATUS(status) : kEndedBySignal;
}

std::string OutputOf(const std::string& program, const std::vector<std::string>& arguments) {
  constexpr std::size_t kMostBytes = 1 << 16;  // the size of a pipe: a program that writes more is not waited for
  int ends[2];
  if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return {};
  pid_t id = 0;
  Running().ForgetEnded();
  const bool started = Spawn(program, arguments, ends[1], id) == 0;
  close(ends[1]);
  std::string text(kMostBytes, '\0');
  ssize_t bytes = 0;
  if (started) {
    WaitForEnd(id);
    if (waitpid(id, nullptr, WNOHANG) == 0) Running().Add(id);
    bytes = read(ends[0], text.data(), text.size());
  }
  close(ends[0]);
  text.resize(bytes > 0 ? std::size_t(bytes) : 0);
  return text.substr(0, text.find_last_not_of("\r\n") + 1);
}
