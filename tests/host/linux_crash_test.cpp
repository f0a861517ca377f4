// Crashes, each in a child process: the report, the dump, and what the parent sees of the end.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <cstring>
#include <regex>

#include "framework/text.h"
#include "host/crash/crash_kinds.h"
#include "platform/paths.h"
#include "share/core/document_callbacks.h"
#include "share/diagnostics/exception_handler.h"
#include "tests/child_process.h"
#include "tests/registered.h"
#include "tests/scratch.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// A child begins as a program without handlers, also with a sanitizer, and leaves no core file.
void BeginAsProgram() {
  for (const int number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT}) signal(number, SIG_DFL);
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none);
  if (!freopen("/dev/null", "w", stderr)) _exit(99);
}

void PermitReports() {
  QFShareRegisterDocCBK(
      nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
      [] { return 1; }, nullptr, nullptr, nullptr, nullptr, nullptr);
}

struct Crash {
  const char* kind;
  int signal;
  const char* head;  // of the report, addresses as a
  DWORD code;
};

class CrashTest : public testing::TestWithParam<Crash> {
 protected:
  std::string File(const std::string& extension) { return (folder_.Path() / ("-0." + extension)).string(); }
  kvtest::ScratchFolder folder_;
};

constexpr Crash kCrashes[] = {
    {"read", SIGSEGV, "an Access Violation (0xc0000005)", 0xC0000005},
    {"write", SIGSEGV, "an Access Violation (0xc0000005)", 0xC0000005},
    {"execute", SIGSEGV, "an Access Violation (0xc0000005)", 0xC0000005},
    {"divide", SIGFPE, "an Integer Divide by Zero (0xc0000094)", 0xC0000094},
    {"overflow", SIGFPE, "an Integer Overflow (0xc0000095)", 0xC0000095},
    {"float", SIGFPE, "a Float Divide by Zero (0xc000008e)", 0xC000008E},
    {"illegal", SIGILL, "an Illegal Instruction (0xc000001d)", 0xC000001D},
    {"privileged", SIGSEGV, "a Privileged Instruction (0xc0000096)", 0xC0000096},
    {"breakpoint", SIGTRAP, "a Breakpoint (0x80000003)", 0x80000003},
    {"misaligned", SIGBUS, "a Datatype Misalignment (0x80000002)", 0x80000002},
    {"stack", SIGSEGV, "a Stack Overflow (0xc00000fd)", 0xC00000FD},
    {"thread-stack", SIGSEGV, "a Stack Overflow (0xc00000fd)", 0xC00000FD},
    {"abort", SIGABRT, "an Unknown exception type (0x40000015)", 0x40000015},
    {"exception", SIGABRT, "a Microsoft C++ Exception (0xe06d7363)", 0xE06D7363},
    {"free", SIGABRT, "an Unknown exception type (0x40000015)", 0x40000015},
    {"heap", SIGSEGV, "an Access Violation (0xc0000005)", 0xC0000005},
};

TEST_P(CrashTest, LeavesReportAndDump) {
  const Crash& crash = GetParam();
  const int status = kvtest::ExitCode(kvtest::InChild([&] {
    BeginAsProgram();
    PermitReports();
    QFExceptionHandler guard(1, 1);
    guard.SetFilePath(ProductPathFromSystem(folder_.Path().string()).c_str());
    kestrova::BreakOnPurpose(crash.kind);
    return true;
  }));
  EXPECT_EQ(status, 128 + crash.signal);
  const std::string report = kvtest::ReadFile(File("txt"));
  EXPECT_THAT(report, testing::StartsWith(std::string("Error type          :    ") + crash.head));
  EXPECT_THAT(report, testing::Not(HasSubstr("partial")));
  EXPECT_EQ(kvtest::ReadFile(File("dmp")).substr(0, 4), "MDMP");
}

INSTANTIATE_TEST_SUITE_P(Kinds, CrashTest, testing::ValuesIn(kCrashes), [](const auto& row) {
  std::string name = row.param.kind;
  for (char& c : name)
    if (c == '-') c = '_';
  return name;
});

}  // namespace
