#include "host/shell/arguments.h"

#include <fmt/format.h>

#include "framework/text.h"
#include "host/shell/failure.h"

namespace kestrova {

void RequireUtf8(const std::string& what, const std::string& argument) {
  if (ToUtf8(FromUtf8(argument)) != argument) throw WrongUsage(fmt::format("the {} is not UTF-8: {}", what, argument));
}

}  // namespace kestrova
