// The export of every example machine, byte for byte. The golden files were checked line by line by hand; only their
// folder differs from one machine to the next, and stands in them as a fixed word.
#include <gtest/gtest.h>

#include "platform/paths.h"
#include "share/machine/machine.h"
#include "tests/scratch.h"

namespace {

struct Example {
  VM_MACHINE_TYPE type;
  const char* name;
};

constexpr Example kExamples[] = {
    {VM_MACHINE_MILL, "Vertical850"},
    {VM_MACHINE_MILL, "Trunnion500"},
    {VM_MACHINE_MILLTURN, "TwinTurret12"},
};

class ExampleExport : public testing::TestWithParam<Example> {};

std::string DefinitionOf(const Example& example) {
  return kvtest::ReadFile(std::filesystem::path(KV_SOURCE_DIR) / "examples/machines" / TextOf(example.type) /
                          example.name / "KestrovaAPT.xml");
}

TEST_P(ExampleExport, IsTheGoldenText) {
  const Example& example = GetParam();
  KVVMMachine machine;
  ASSERT_EQ(machine.LoadFromMemory(example.type, CString(example.name), _T("M:\\"), DefinitionOf(example)), 1);
  std::string text;
  ASSERT_EQ(machine.ExportText(text), 1);
  const std::filesystem::path golden = std::filesystem::path(KV_TEST_FILES) / "golden" / example.name;
  EXPECT_EQ(text, kvtest::ReadFile(golden.string() + ".txt"));
}

INSTANTIATE_TEST_SUITE_P(Machine, ExampleExport, testing::ValuesIn(kExamples),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
