// Child processes of tests: their results, and a number that they share with their parent.
#pragma once

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <functional>

namespace kvtest {

// Runs the body in a child process; exit code 0 means that it returned true.
inline pid_t InChild(const std::function<bool()>& body) {
  const pid_t child = fork();
  if (child == 0) _exit([&]() noexcept { return body() ? 0 : 1; }());
  return child;
}
inline int ExitCode(pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
inline bool IsTrueInChild(const std::function<bool()>& body) { return ExitCode(InChild(body)) == 0; }

class SharedNumber {
 public:
  SharedNumber()
      : number_(static_cast<std::atomic<int>*>(
            mmap(nullptr, sizeof *number_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {}
  ~SharedNumber() { munmap(number_, sizeof *number_); }
  SharedNumber(const SharedNumber&) = delete;
  SharedNumber& operator=(const SharedNumber&) = delete;
  std::atomic<int>& operator*() const { return *number_; }

 private:
  std::atomic<int>* const number_;
};

}  // namespace kvtest
