// The folder of the simulator's machines: it has a folder for each type (Mill, Turn, MillTurn), with a folder for each
// machine, which holds the definition.
#pragma once

#include <string>
#include <vector>

#include "framework/text.h"

namespace kestrova {

struct MachineEntry {
  std::string type;
  std::string name;    // of the machine's folder, in the system's bytes
  CString definition;  // product path of the file
};

// The machines with a definition, by type and name. The type is one of MachineTypes, or empty for all. Missing folders
// have no machines.
std::vector<MachineEntry> MachinesIn(const CString& folder, const std::string& type = {});

// The product path of a machine's definition; the folder ends in a backslash.
CString DefinitionPath(const CString& folder, const std::string& type, const std::string& name);

// One component of a product path from a name in the system's bytes.
CString ProductName(const std::string& name);

// The types as words: the names of their folders.
const std::vector<std::string>& MachineTypes();

}  // namespace kestrova
