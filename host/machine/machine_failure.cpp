#include "host/machine/machine_failure.h"

#include <fmt/format.h>

namespace kestrova {

Failure MachineFailure(const std::string& file, const KVXMLFailure& failure) {
  const FilePlace place{file, failure.place.line, failure.place.column};
  if (failure.kind != KVXMLFailure::Kind::kMalformed)
    return Failure(fmt::format("cannot read {}: {}", file, failure.reason), place);
  return Failure(fmt::format("{}:{}:{} (byte {}): {}", file, place.line, place.column, failure.byte, failure.reason),
                 place);
}

}  // namespace kestrova
