// A new machine for a shop to fill in: a commented definition and its solids, boxes in STL files. The check finds no
// fault in it.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "share/machine/machine_types.h"

namespace kestrova {

// The definition of a mill, or of a lathe for the other types.
std::string SkeletonDefinition(VM_MACHINE_TYPE type);
// The names and bytes of its geometry files.
std::vector<std::pair<std::string, std::string>> SkeletonSolids(VM_MACHINE_TYPE type);

}  // namespace kestrova
