// Crashes under circumstances that are against the report: what is written, and how the process ends.
#include <gmock/gmock.h>
#include <setjmp.h>
#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "host/crash/crash_kinds.h"
#include "tests/host/crash_child.h"

namespace {

namespace fs = std::filesystem;
using kestrova::BreakOnPurpose;
using kvtest::g_crash_document;

constexpr int kSegment = 128 + SIGSEGV;
const std::set<std::string> kBoth = {"part-0.dmp", "part-0.txt"};
const std::set<std::string> kNone = {};

struct Hostile {
  const char* name;
  std::function<void(QFExceptionHandler& guard)> body;
  int status = kSegment;
  std::set<std::string> files = kBoth;
  bool partial = false;
  std::function<void()> before_guard = {};
};

void PrintTo(const Hostile& row, std::ostream* out) { *out << row.name; }

void Read(QFExceptionHandler&) { BreakOnPurpose("read"); }

void WithTitle(const std::string& title) {
  g_crash_document->title = FromUtf8(title);
  BreakOnPurpose("read");
}

// The helpers of this process: they have its environment.
std::vector<pid_t> Helpers() {
  std::vector<pid_t> found;
  const std::string mark = "KV_CRASH_TEST=" + std::to_string(getpid());
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::ifstream name(entry.path() / "comm"), environment(entry.path() / "environ");
    std::string text, all(std::istreambuf_iterator<char>(environment), {});
    if (std::getline(name, text) && text == "kvshare-crash" && all.find(mark) != all.npos)
      found.push_back(std::stoi(entry.path().filename()));
  }
  return found;
}

void Mark() { setenv("KV_CRASH_TEST", std::to_string(getpid()).c_str(), 1); }

pid_t HelperOnceStarted() {
  for (;;)
    if (const auto helpers = Helpers(); !helpers.empty()) return helpers.front();
}

// The helper is stopped, so that the crash waits for it, and is then killed.
void KillHelperDuringCrash() {
  const pid_t helper = HelperOnceStarted();
  kill(helper, SIGSTOP);
  std::thread([helper] {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    kill(helper, SIGKILL);
  }).detach();
  BreakOnPurpose("read");
}

sigjmp_buf g_outer;

void CrashTwiceAndSurvive(QFExceptionHandler&) {
  for (static int i = 0; i < 2; ++i)
    if (sigsetjmp(g_outer, 1) == 0) BreakOnPurpose("read");
}

void FillStack() {
  std::vector<std::thread> threads;
  for (int i = 0; i < 200; ++i) threads.emplace_back([] { pause(); });
  BreakOnPurpose("read");
}

void CrashInTwoThreads() {
  std::atomic<int> ready = 0;
  const auto crash = [&ready] {
    for (++ready; ready < 2;) {
    }
    BreakOnPurpose("read");
  };
  std::thread first(crash), second(crash);
  first.join();
  second.join();
}

const Hostile kCases[] = {
    {"FaultInCallback",
     [](auto&) {
       g_crash_document->before_title = [] { BreakOnPurpose("write"); };
       BreakOnPurpose("read");
     }},
    {"CallbackHangs",
     [](auto&) {
       g_crash_document->before_title = [] { pause(); };
       BreakOnPurpose("read");
     }},
    {"TwoThreads", [](auto&) { CrashInTwoThreads(); }},
    {"TwoHundredThreads", [](auto&) { FillStack(); }},
    {"SurvivedTwice",
     CrashTwiceAndSurvive,
     0,
     {"part-0.dmp", "part-0.txt", "part-1.dmp", "part-1.txt"},
     false,
     [] { signal(SIGSEGV, [](int) { siglongjmp(g_outer, 1); }); }},
    {"DeletedFolder",
     [](QFExceptionHandler& guard) {
       fs::remove(SystemPathFromProduct(guard.GetFilePath()));
       BreakOnPurpose("read");
     },
     kSegment, kNone},
    {"FullDisk", Read, kSegment, kNone, false,
     [] {
       const rlimit few = {2000, 2000};
       signal(SIGXFSZ, SIG_IGN);
       setrlimit(RLIMIT_FSIZE, &few);
     }},
    {"NoRights", Read, kSegment, kNone, false,
     [] {
       if (getuid() == 0 && setuid(65534) != 0) _exit(98);
     }},
    {"NotPermitted",
     [](auto&) {
       kvtest::g_permission = 0;
       BreakOnPurpose("read");
     },
     kSegment, kNone},
    {"NoFlags",
     [](QFExceptionHandler& guard) {
       guard.SetDumpMiniFile(0);
       guard.SetWriteExceptionReport(0);
       g_crash_document->flag = 1;
       BreakOnPurpose("read");
     },
     kSegment, kNone},
    {"TempUnset",
     [](QFExceptionHandler& guard) {
       setenv("TMPDIR", SystemPathFromProduct(guard.GetFilePath()).c_str(), 1);
       guard.SetFilePath(CString());
       BreakOnPurpose("read");
     },
     kSegment, kBoth, false, [] { unsetenv("TEMP"); }},
    {"TitleWithSlashes",
     [](auto&) { WithTitle("../a/b\\c:d.kvdoc"); },
     kSegment,
     {".._a_b_c_d-0.dmp", ".._a_b_c_d-0.txt"}},
    {"TitleOfDots", [](auto&) { WithTitle(".."); }, kSegment, {".-0.dmp", ".-0.txt"}},
    {"TitleStartsWithDot", [](auto&) { WithTitle(".kvdoc"); }, kSegment, {".kvdoc-0.dmp", ".kvdoc-0.txt"}},
    {"TitleOf300",
     [](auto&) { WithTitle(std::string(300, 'x')); },
     kSegment,
     {std::string(200, 'x') + "-0.dmp", std::string(200, 'x') + "-0.txt"}},
    {"TitleNotAscii", [](auto&) { WithTitle("Fräs-テ.kvdoc"); }, kSegment, {"Fräs-テ-0.dmp", "Fräs-テ-0.txt"}},
    {"HelperKilledBefore",
     [](auto&) {
       const pid_t helper = HelperOnceStarted();
       kill(helper, SIGKILL);
       while (kill(helper, 0) == 0 && Helpers().size() == 1) std::this_thread::yield();
       BreakOnPurpose("read");
     },
     kSegment, kBoth, false, Mark},
    {"HelperKilledDuring", [](auto&) { KillHelperDuringCrash(); }, kSegment, kBoth, true, Mark},
    {"HandlerOfHostBefore", Read, 42, kBoth, false, [] { signal(SIGSEGV, [](int) { _exit(42); }); }},
    {"HandlerOfHostAfter",
     [](auto&) {
       signal(SIGSEGV, [](int) { _exit(43); });
       BreakOnPurpose("read");
     },
     43, kNone},
    {"ForkedProcess",
     [](auto&) {
       _exit(kvtest::ExitCode(kvtest::InChild([] {
         BreakOnPurpose("read");
         return true;
       })));
     }},
};

class HostileCrash : public testing::TestWithParam<Hostile> {
 protected:
  const kvtest::ScratchFolder folder_, work_;
};

TEST_P(HostileCrash, LeavesTheseFiles) {
  const Hostile& row = GetParam();
  fs::permissions(work_.Path(), fs::perms::all);
  EXPECT_EQ(kvtest::CrashInChild(folder_.Path(), work_.Path(), row.body, row.before_guard), row.status);
  EXPECT_EQ(kvtest::FilesIn(folder_.Path()), row.files);
  for (const std::string& file : row.files) {
    const std::string bytes = kvtest::ReadFile(folder_.Path() / file);
    const bool report = file.ends_with("txt");
    EXPECT_THAT(bytes, testing::StartsWith(report ? "Error type          :    an Access Viol" : "MDMP"));
    EXPECT_EQ(bytes.find("[partial: written by the crashed program") != bytes.npos, report && row.partial) << file;
  }
}

INSTANTIATE_TEST_SUITE_P(All, HostileCrash, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(CrashMessage, IsShownOnceWithTheFiles) {
  const kvtest::ScratchFolder folder, work;
  const auto crash = [](QFExceptionHandler& guard) {
    g_crash_document->flag = 1;
    QFExceptionHandler::SetDumpErrorMessage(_T("The program must end. Files:"));
    QFExceptionHandler::SetSaveAsErrorMessage(_T("Save your work under another name."));
    CrashTwiceAndSurvive(guard);
    _exit(g_crash_document->flag);
  };
  EXPECT_EQ(kvtest::CrashInChild(folder.Path(), work.Path(), crash,
                                 [] { signal(SIGSEGV, [](int) { siglongjmp(g_outer, 1); }); }),
            0);
  const std::string text = kvtest::ReadFile(work.Path() / "errors");
  EXPECT_THAT(text, testing::HasSubstr("The program must end. Files: "));
  EXPECT_THAT(text, testing::HasSubstr("\\part-0.dmp"));
  EXPECT_THAT(text, testing::HasSubstr("Save your work under another name."));
  EXPECT_THAT(text, testing::Not(testing::HasSubstr("part-1")));
}

TEST(CrashDump, OnDemandGoesOn) {
  const kvtest::ScratchFolder folder, work;
  const auto dump = [&](QFExceptionHandler& guard) {
    fs::current_path(work.Path());
    if (guard.DumpMiniFile() != 1 || guard.DumpMiniFile() != 1) _exit(1);
  };
  EXPECT_EQ(kvtest::CrashInChild(folder.Path(), work.Path(), dump), 0);
  EXPECT_EQ(kvtest::FilesIn(folder.Path()), kNone);
  EXPECT_EQ(kvtest::FilesIn(work.Path()), (std::set<std::string>{"errors", "part-0.dmp", "part-1.dmp"}));
}

}  // namespace
