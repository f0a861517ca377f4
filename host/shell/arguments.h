// Arguments that are texts. Paths are not: they go to the system as they were typed (platform/paths.h).
#pragma once

#include <string>

namespace kestrova {

// Throws WrongUsage if the argument is not UTF-8: as a name or value it would be another text. `what` is its name in
// the command's help.
void RequireUtf8(const std::string& what, const std::string& argument);

}  // namespace kestrova
