// Every kind of crash, each in a child process: the end that the parent sees, the report and the dump.
#include <gmock/gmock.h>

#include <regex>

#include "host/crash/crash_kinds.h"
#include "tests/host/crash_child.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct Kind {
  const char* name;
  int signal;
  const char* error;
  const char* line = "\r\n";  // the fifth of the report
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class CrashKind : public testing::TestWithParam<Kind> {
 protected:
  const kvtest::ScratchFolder folder_, work_;
};

constexpr Kind kKinds[] = {
    {"read", SIGSEGV, "an Access Violation (0xc0000005)",
     "Read from location 00000010 caused an access violation.\r\n"},
    {"write", SIGSEGV, "an Access Violation (0xc0000005)",
     "Write to location 00000010 caused an access violation.\r\n"},
    {"execute", SIGSEGV, "an Access Violation (0xc0000005)", "Write to location "},
    {"divide", SIGFPE, "an Integer Divide by Zero (0xc0000094)"},
    {"overflow", SIGFPE, "an Integer Overflow (0xc0000095)"},
    {"float", SIGFPE, "a Float Divide by Zero (0xc000008e)"},
    {"illegal", SIGILL, "an Illegal Instruction (0xc000001d)"},
    {"privileged", SIGSEGV, "a Privileged Instruction (0xc0000096)"},
    {"breakpoint", SIGTRAP, "a Breakpoint (0x80000003)"},
    {"misaligned", SIGBUS, "a Datatype Misalignment (0x80000002)"},
    {"stack", SIGSEGV, "a Stack Overflow (0xc00000fd)"},
    {"thread-stack", SIGSEGV, "a Stack Overflow (0xc00000fd)"},
    {"abort", SIGABRT, "an Unknown exception type (0x40000015)"},
    {"exception", SIGABRT, "a Microsoft C++ Exception (0xe06d7363)"},
#ifndef KV_BLOCKS_FROM_HEAP  // the sanitizer has a heap of its own
    {"free", SIGABRT, "an Unknown exception type (0x40000015)"},
    {"heap", SIGSEGV, "an Access Violation (0xc0000005)", "Read from location 00000"},
#endif
};

TEST_P(CrashKind, LeavesReportAndDump) {
  const Kind& kind = GetParam();
  const std::string folder = folder_.Path();
  EXPECT_EQ(kvtest::CrashInChild(folder, work_.Path(), [&](auto&) { kestrova::BreakOnPurpose(kind.name); }),
            128 + kind.signal);
  const std::string report = kvtest::ReadFile(folder + "/part-0.txt");
  EXPECT_THAT(report, StartsWith(std::string("Error type          :    ") + kind.error));
  EXPECT_THAT(report.substr(report.find("Program name")), HasSubstr(std::string("test_host \r\n") + kind.line));
  EXPECT_THAT(report, testing::Not(HasSubstr("partial")));
  const std::string dump = kvtest::ReadFile(folder + "/part-0.dmp");
  EXPECT_THAT(dump, StartsWith("MDMP"));
  const bool has_text = dump.find("std::runtime_error: thrown on purpose") != dump.npos;
  EXPECT_EQ(has_text, std::string_view(kind.name) == "exception");
}

INSTANTIATE_TEST_SUITE_P(All, CrashKind, testing::ValuesIn(kKinds),
                         [](const auto& row) { return std::regex_replace(row.param.name, std::regex("-"), "_"); });

// Each line of a report, with expressions for what differs between systems and runs. The modules are checked apart.
constexpr char kReport[] = R"(Error type          :    an Access Violation \(0xc0000005\)
Error at            :    0033:[0-9a-f]{8} 
Module name         :    .*/test_host 
Program name        :    .*/test_host 
Read from location 00000010 caused an access violation\.


================== Kestrova ===================== 
Major version                  :   2024 \( SP4 \)
Version code                   :   15-Jul-2024 
Build code                     :   26-Aug-2024 
TechDB code                    :   13-Jul-2023 
Storage version                :   38\.0000 
SOLIDWORKS version             :     \(0/-01\) 

===============System information=================== 
Error occurred at              : \d\d-[A-Z][a-z]{2}-\d{4} \d\d:\d\d:\d[02468]\. 
User                           : .+\. 
Operating system               : .+ \( \d.* \) 
Operating system Lanugage		: [A-Z].* 
Visual Studio Build Version   : Unknown Visual Studio Version 
Processors and Type            : \d+ 	 8664 \( 64-Bit \) 
Memory in use                  : \d+% 
MBytes physical memory         : \d+ 
MBytes physical memory free    : \d+ 
MBytes paging file             : \d+ 
MBytes paging file free        : \d+ 
MBytes user address space      : 134217728 
MBytes user address space free : \d+ 

===============Register information=================== 
Context:
RDI   :    0xR  RSI:   0xR  RAX  :   0xR
RBX   :    0xR  RCX:   0xR  RDX  :   0xR
RIP   :    0xR  RBP:   0xR  SegCs:   0x00000033
EFlags:    0xR  RSP:   0xR  SegSs:   0x0000002b

===============Bytes at CS:EIP=================== 
([0-9a-f]{2} ){16}
================Modules loaded================== 
)";
constexpr char kModule[] = R"(Module N
/.*
Desired Base:   0xR    Image Size:   0xR
Actual Base :   0xR    Image End :   0xR
Checksum    :   0xR    Time Stamp:   0x00000000
File Size   :   \d+ *    File Time :   \d\d-[A-Z][a-z]{2}-\d{4} \d\d:\d\d:\d[02468]

)";

void ExpectLines(std::string pattern, std::istream& report) {
  pattern = std::regex_replace(pattern, std::regex("xR"), "x[0-9a-f]{8}");
  std::istringstream lines(std::regex_replace(pattern, std::regex(" N\n"), " \\d+\n"));
  for (std::string expected, line; std::getline(lines, expected);) {
    ASSERT_TRUE(std::getline(report, line)) << expected;
    EXPECT_TRUE(std::regex_match(line, std::regex(expected + "\r"))) << expected << "\n" << line;
  }
}

TEST(CrashReport, HasExactlyTheseLines) {
  const kvtest::ScratchFolder folder, work;
  kvtest::CrashInChild(folder.Path(), work.Path(), [](auto&) { kestrova::BreakOnPurpose("read"); });
  std::string text = kvtest::ReadFile(folder.Path() / "part-0.txt");
  // Cards differ, and many systems have none.
  text = std::regex_replace(text, std::regex("\r\n=+Graphics information=+ \r\n([A-Z].*\r\n)+"), "");
  text = std::regex_replace(text, std::regex("linux-gate.so"), "/vdso");
  text = std::regex_replace(text, std::regex("Size   :   0             File Time :   \r"),
                            "Size   :   0             File Time :   01-Jan-1970 00:00:00\r");
  std::istringstream report(text);
  ExpectLines(kReport, report);
  std::size_t modules = 0;
  for (std::size_t at = 0; (at = text.find("\r\nDesired Base", at)) != text.npos; ++at) ++modules;
  EXPECT_GE(modules, 10u);
  for (; modules > 0; --modules) ExpectLines(kModule, report);
  ExpectLines("\n---------- \\[end of .*\\\\part-0\\.txt\\] ------------\n\n", report);
  EXPECT_EQ(report.peek(), EOF);
}

}  // namespace
