// The export of every example machine, byte for byte. The golden files were checked line by line by hand; only their
// folder differs from one machine to the next, and stands in them as a fixed word.
#include <gtest/gtest.h>

#include "share/machine/machine.h"
#include "tests/scratch.h"

TEST(MachineExport, OfEachExampleIsItsGoldenText) {
  const std::filesystem::path examples(KV_SOURCE_DIR "/examples/machines"), golden(KV_TEST_FILES "/golden");
  for (const auto& [type, name] : {std::pair(VM_MACHINE_MILL, "Vertical850"),
                                   {VM_MACHINE_MILL, "Trunnion500"},
                                   {VM_MACHINE_MILLTURN, "TwinTurret12"}}) {
    const std::string definition = kvtest::ReadFile(examples / TextOf(type) / name / "KestrovaAPT.xml");
    KVVMMachine machine;
    ASSERT_EQ(machine.LoadFromMemory(type, CString(name), _T("M:\\"), definition), 1) << name;
    std::string text;
    ASSERT_EQ(machine.ExportText(text), 1) << name;
    EXPECT_EQ(text, kvtest::ReadFile((golden / name).string() + ".txt")) << name;
  }
}
