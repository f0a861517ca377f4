// A killed save leaves the whole old file or the whole new one, and its temporary files disturb no later save. The test
// traces the process and kills it before each system call that changes the disk.
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>

#include "tests/folders.h"
#include "tests/host/run_command.h"

namespace {

#if defined(KV_BLOCKS_FROM_HEAP)  // its processes take a second to start and end
constexpr int kKills = 30;
constexpr const char* kSizes[] = {"2000"};
#else
constexpr int kKills = 100;
constexpr const char* kSizes[] = {"10", "2000", "5000"};
#endif
// An openat counts only if it may create a file.
constexpr unsigned kChanging[] = {SYS_write,  SYS_pwrite64, SYS_rename, SYS_renameat2, SYS_fsync, SYS_fdatasync,
                                  SYS_unlink, SYS_fchmod,   SYS_fchown, SYS_ftruncate, SYS_openat};

// Stops this process before each of these calls.
bool StopAtChanges() {
  std::vector<sock_filter> program = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr))};
  for (const unsigned call : kChanging) {
    program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1));
    program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRACE));
  }
  program.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
  const sock_fprog filter = {static_cast<unsigned short>(program.size()), program.data()};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// `kestrova document new FILE` over an existing file, in a silent process that stops before each call that changes the
// disk.
class TracedSave {
 public:
  TracedSave(const std::string& file, const char* nodes, const char* seed) {
    const std::string program = kvtest::BuiltFile("bin/kestrova").string();
    process_ = fork();
    if (process_ == 0) {
      const int nowhere = open("/dev/null", O_WRONLY);
      for (const int output : {1, 2}) dup2(nowhere, output);
      setenv("ASAN_OPTIONS", "detect_leaks=0", /*overwrite=*/1);  // the leak check would trace the process
      if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0 || raise(SIGSTOP) != 0 || !StopAtChanges()) _exit(126);
      execl(program.c_str(), "kestrova", "document", "new", file.c_str(), "--force", "--nodes", nodes, "--seed", seed,
            nullptr);
      _exit(127);
    }
    Wait();  // for its SIGSTOP
    constexpr int kOptions = PTRACE_O_TRACESECCOMP | PTRACE_O_TRACEEXEC | PTRACE_O_EXITKILL;
    if (WIFSTOPPED(status_)) ptrace(PTRACE_SETOPTIONS, process_, nullptr, kOptions);
  }
  ~TracedSave() { Kill(); }
  TracedSave(const TracedSave&) = delete;
  TracedSave& operator=(const TracedSave&) = delete;

  // Runs to the stop after this number of calls that change the disk. False if the process ended before that.
  bool RunThrough(int calls) {
    while (WIFSTOPPED(status_)) {
      if (IsAboutToChange() && calls-- == 0) return true;
      const int signal = WSTOPSIG(status_);
      const bool own = signal == SIGTRAP || signal == SIGSTOP;
      if (ptrace(PTRACE_CONT, process_, nullptr, own ? 0 : signal) != 0) return false;
      Wait();
    }
    return false;
  }
  void Kill() {
    if (!WIFSTOPPED(status_)) return;
    kill(process_, SIGKILL);
    Wait();
  }
  // As from waitpid.
  int Status() const { return status_; }

 private:
  void Wait() {
    if (waitpid(process_, &status_, 0) != process_) status_ = 0xFF00;
  }
  bool IsAboutToChange() const {
    if (status_ >> 8 != (SIGTRAP | PTRACE_EVENT_SECCOMP << 8)) return false;
    __ptrace_syscall_info info = {};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof info, &info) <= 0) return false;
    return info.seccomp.nr != SYS_openat || (info.seccomp.args[2] & O_CREAT) != 0;
  }

  pid_t process_ = -1;
  int status_ = 0;
};

class KilledSaves : public kvtest::CommandTest {
 protected:
  KilledSaves() : CommandTest("document") {}

  // The nodes as JSON, which depend only on --seed.
  std::string Shown() const { return Out({"show", file_, "--json"}); }

  void SaveWhole(const char* nodes, const char* seed) {
    TracedSave save(file_, nodes, seed);
    ASSERT_FALSE(save.RunThrough(1'000'000));
    ASSERT_TRUE(WIFEXITED(save.Status()) && WEXITSTATUS(save.Status()) == 0) << "status " << save.Status();
  }

  // Kills one save after the other, each one call later, until a save ends.
  void KillAtEachCall(const char* nodes) {
    SaveWhole(nodes, "1");
    const std::string fresh = Shown();
    SaveWhole(nodes, "0");
    ASSERT_NE(Shown(), fresh);
    std::string bytes = kvtest::ReadFile(file_);
    for (int calls = 0; !HasFatalFailure(); ++calls) {
      SCOPED_TRACE(testing::Message() << nodes << " nodes, killed after " << calls << " calls");
      TracedSave save(file_, nodes, "1");
      if (!save.RunThrough(calls)) {
        ASSERT_TRUE(WIFEXITED(save.Status()) && WEXITSTATUS(save.Status()) == 0) << "status " << save.Status();
        EXPECT_EQ(Shown(), fresh);
        return;
      }
      save.Kill();
      ++killed_;
      if (kvtest::ReadFile(file_) == bytes) {
        ++old_;
        continue;
      }
      ++replaced_;
      ASSERT_EQ(Shown(), fresh);
      SaveWhole(nodes, "0");
      ASSERT_NE(Shown(), fresh) << "left-over files disturb";
      bytes = kvtest::ReadFile(file_);
    }
  }

  const std::string file_ = File("part.kvdoc");
  int killed_ = 0, replaced_ = 0, old_ = 0;
};

TEST_F(KilledSaves, LeaveTheOldFileOrTheNewOne) {
  for (const char* nodes : kSizes) KillAtEachCall(nodes);
  std::printf("%d killed; %d kept the old file, %d had the new one\n", killed_, old_, replaced_);
  EXPECT_GE(killed_, kKills);
  EXPECT_GT(old_, 0);
  EXPECT_GT(replaced_, 0);
}

}  // namespace
