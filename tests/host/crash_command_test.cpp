// kestrova crash: what it prints of a dump and of a report. Its exit codes are in exit_codes_test.cpp.
#include "tests/host/minidump_builder.h"
#include "tests/host/run_command.h"

namespace {

class CrashCommand : public kvtest::CommandTest {
 protected:
  CrashCommand() : CommandTest("crash") {}

  // The line of the text that begins so, without that beginning.
  static std::string Line(const std::string& text, const std::string& start) {
    const std::size_t at = ("\n" + text).find("\n" + start);
    return at == text.npos ? "" : text.substr(at + start.size(), text.find('\n', at) - at - start.size());
  }
};

TEST_F(CrashCommand, ExplainsADumpAndPrintsItsStacks) {
  const std::string file = folder_.Write("part-0.dmp", kvtest::SampleDump()).string();
  const std::string text = Out({"show", file});
  EXPECT_EQ(Line(text, "process   "), "70  kestrova job");
  EXPECT_EQ(Line(text, "system    "), "Linux 6.1.0, Some Linux 12, #1 SMP; 2 processors amd64");
  EXPECT_EQ(Line(text, "error     "), "access violation (0xC0000005, signal 11), write to address 0x18");
  EXPECT_EQ(Line(text, "at        "), "0x0000000040001010  libKVSHAREu.so+0x1010");
  EXPECT_EQ(Line(text, "thread    "), "71 \"job 1\", 2 in all");
  EXPECT_NE(Line(text, "meaning   ").find("a pointer that was null"), std::string::npos);
  EXPECT_EQ(Line(text, "  0000000000400000   4096  "), "12abcdef  /opt/kestrova/bin/kestrova");
  const kvtest::RunResult stacks = Run({"stack", file});
  EXPECT_EQ(stacks.out,
            "thread 71 \"job 1\": access violation (0xC0000005, signal 11), write to address 0x18\n"
            "  #0   0x0000000040001010  libKVSHAREu.so+0x1010\n"
            "  #1   0x0000000000400020  kestrova+0x20\n"
            "  #2   0x0000000000400040  kestrova+0x40\n"
            "thread 70\n"
            "  #0   0x0000000000400060  kestrova+0x60\n");
  EXPECT_EQ(Json({"stack", file, "--thread", "70"})["threads"].size(), 1u);
}

TEST_F(CrashCommand, ExplainsAReport) {
  const std::string report = kvtest::ReadFile(kvtest::SourceFile("fuzz/seeds/crash_report/whole"));
  const std::string text = Out({"show", folder_.Write("part-0.txt", report + report).string()});
  EXPECT_EQ(Line(text, "error    "), "an Access Violation (0xC0000005), write to address 0x00000018");
  EXPECT_EQ(Line(text, "at       "), "0033:40001010 in libKVSHAREu.so");
  EXPECT_EQ(Line(text, "         "), "libKVSHAREu.so+0x1010, module 2 of 2");
  EXPECT_EQ(Line(text, "> 40000000  "), "40008000  00001234  32768  22-Nov-2026 16:02:12  libKVSHAREu.so");
  EXPECT_NE(text.find("report 2 of 2"), std::string::npos);
}

}  // namespace
