// The helper process: writes the files of a crash, then shows the message.
#include <cstring>
#include <memory>

#include "platform/crash_helper.h"
#include "platform/registry_files.h"
#include "share/diagnostics/crash_program.h"
#include "share/diagnostics/internal/crash_files.h"

namespace {

void Serve(DWORD process, const void* bytes, std::size_t count, void (*written)()) {
  if (count != sizeof(CrashRequest)) return;  // of another version of the library
  const auto request = std::make_unique<CrashRequest>();
  std::memcpy(request.get(), bytes, sizeof *request);
  request->fault.process = process;
  const SystemTexts system = GatherSystemTexts();
  char module[1024] = {};
  if (!WriteCrashFiles(*request, &system, module)) return;
  written();
  ReportCrash(*request, module);
}

}  // namespace

int RunCrashHelper(int argc, char** argv) {
  UseRegistryOfEnvironment();  // without it the graphics section comes from the system
  return ServeCrashRequests(argc, argv, Serve);
}
