// Loads, checks and exports any bytes as a machine definition, all in memory.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "share/machine/machine.h"
#include "share/machine/machine_check.h"
#include "share/machine/machine_schema.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view definition(reinterpret_cast<const char*>(data), size);
  KVVMMachine machine;
  machine.LoadFromMemory(VM_MACHINE_MILL, _T("VMC"), _T("C:\\M"), definition);
  CheckMachineText(definition, CString());
  CheckMachineTextBySchema(definition);
  std::string text;
  machine.ExportText(text);
  return 0;
}
