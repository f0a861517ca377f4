// Parses any bytes as registry text. Accepted steps must respect the limits of the registry.
#include <cstdlib>
#include <string_view>
#include <vector>

#include "share/settings/registry_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<registry_text::Step> steps;
  registry_text::Error error;
  const bool read = registry_text::Parse({reinterpret_cast<const char*>(data), size}, steps, error);
  if (read != error.reason.empty() || (!read && !steps.empty())) std::abort();
  for (const auto& step : steps) {
    registry_text::KeyName again;
    if (step.line < 2 || step.name.size() > 16383) std::abort();
    if (!registry_text::ParseKeyName(registry_text::FullName(step.key), again)) std::abort();
    if (again.path != step.key.path || again.hive != step.key.hive) std::abort();
  }
  return 0;
}
