// The reader of crash reports: whole ones, several in a file, and damaged ones.
#include <gtest/gtest.h>

#include "host/crash/crash_report_reader.h"
#include "tests/folders.h"
#include "tests/scratch.h"

namespace {

using namespace kestrova;

std::string Sample() { return kvtest::ReadFile(kvtest::SourceFile("fuzz/seeds/crash_report/whole")); }

TEST(CrashReport, IsReadWholeAlsoWithTranslatedLineEnds) {
  std::string text = Sample();
  for (const bool translated : {false, true}) {
    for (std::size_t at = 0; translated && (at = text.find('\n', at)) != text.npos; at += 2) text.insert(at, "\r");
    const CrashReports read = ReadCrashReports(text + text);
    ASSERT_TRUE(read.faults.empty()) << read.faults[0].line << read.faults[0].reason;
    ASSERT_EQ(read.reports.size(), 2u);
    EXPECT_EQ(read.reports[1].byte, text.size());
    const CrashReport& report = read.reports[1];
    EXPECT_EQ(report.error, "an Access Violation");
    EXPECT_EQ(report.code, 0xC0000005);
    EXPECT_EQ(report.segment, 0x33u);
    EXPECT_EQ(report.instruction, 0x40001010u);
    EXPECT_EQ(report.module + ' ' + report.program, "libKVSHAREu.so kestrova");
    ASSERT_TRUE(report.access);
    EXPECT_TRUE(report.access->write);
    EXPECT_EQ(report.access->address, 0x18u);
    EXPECT_EQ(report.product[0], (std::pair<std::string, std::string>{"Major version", "2024 ( SP 1 )"}));
    EXPECT_EQ(report.system[3], (std::pair<std::string, std::string>{"Operating system Lanugage", "German"}));
    EXPECT_EQ(report.graphics.size(), 5u);
    EXPECT_EQ(report.registers.size(), 12u);
    EXPECT_EQ(report.registers[6], (std::pair<std::string, std::uint32_t>{"RIP", 0x40001010}));
    EXPECT_EQ(report.code_bytes.substr(0, 3), "\xC7\x40\x18");
    EXPECT_EQ(report.code_bytes.size(), 16u);
    ASSERT_EQ(report.modules.size(), 2u);
    EXPECT_EQ(report.modules[1].file, "libKVSHAREu.so");
    EXPECT_EQ(report.modules[1].base, 0x40000000u);
    EXPECT_EQ(report.modules[1].end, 0x40000000u + 4 * report.modules[1].size);
    EXPECT_EQ(report.modules[1].file_time, "22-Nov-2026 16:02:12");
    EXPECT_TRUE(report.whole && !report.partial);
    EXPECT_EQ(report.end_name, "part-0.txt");
  }
}

TEST(CrashReport, DamageIsReportedWithItsLine) {
  const struct {
    const char *old, *changed, *reason;
    int line;
  } cases[] = {
      {"Error type", "Error typo", "the line belongs to no report", 1},
      {" (0xc0000005)", "", "the code of the error is missing", 1},
      {" (0xc0000005)", " (0x1c0000005)", "the code of the error is missing", 1},
      {"0033:40001010", "0033", "the line is not as this section of a report has it", 2},
      {"Write to location 00000018", "Write to location zero", "the line is not as this section", 5},
      {"RBP:   0x7fff0010", "RBP:   0x7fff0010ff", "the line is not as this section of a report has it", 42},
      {"c7 40", "c7 400", "the line is not as this section of a report has it", 46},
      {"Module 2\r\n", "Module 3\r\n", "module 2 is expected", 55},
      {"Desired Base:   0x00000000    Image Size:   0x00008000\r\nActual", "Actual", "the line is not as this", 57},
      {"=Graphics information=", "=Register information=", "the line is not as this section of a report has it", 32},
      {"---------- [end", "--- [end", "the line is not as this section of a report has it", 63},
  };
  for (const auto& each : cases) {
    std::string text = Sample();
    const std::size_t at = text.find(each.old);
    ASSERT_NE(at, text.npos) << each.old;
    text.replace(at, std::string(each.old).size(), each.changed);
    const CrashReports read = ReadCrashReports(text);
    ASSERT_FALSE(read.faults.empty()) << each.old;
    EXPECT_TRUE(read.faults[0].reason.starts_with(each.reason)) << read.faults[0].reason;
    EXPECT_EQ(read.faults[0].line, each.line) << each.old << read.faults[0].reason;
  }
}

TEST(CrashReport, EachCutOneIsNotWhole) {
  const std::string text = Sample();
  const std::size_t end = text.find("---\r\n\r\n");
  for (std::size_t size = 1; size < end; ++size) {
    const CrashReports read = ReadCrashReports(text.substr(0, size));
    EXPECT_FALSE(read.faults.empty()) << size;
    EXPECT_TRUE(read.reports.empty() || !read.reports[0].whole) << size;
  }
}

}  // namespace
