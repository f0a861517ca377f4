#include "host/machine/machine_folder.h"

#include <filesystem>

#include "framework/file_find.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "share/machine/machine.h"

namespace kestrova {

const std::vector<std::string>& MachineTypes() {
  static const std::vector<std::string> types = [] {
    std::vector<std::string> names;
    for (const VM_MACHINE_TYPE type : {VM_MACHINE_MILL, VM_MACHINE_TURN, VM_MACHINE_MILLTURN})
      names.emplace_back(TextOf(type));
    return names;
  }();
  return types;
}

CString DefinitionPath(const CString& folder, const std::string& type, const std::string& name) {
  return folder + ProductName(type) + _T("\\") + ProductName(name) + _T("\\") + KVVMMachine::kDefinitionFile;
}

CString ProductName(const std::string& name) { return ProductPathFromSystem(name).c_str(); }

std::vector<MachineEntry> MachinesIn(const CString& folder, const std::string& type) {
  std::vector<MachineEntry> machines;
  for (const std::string& each : MachineTypes()) {
    if (!type.empty() && each != type) continue;
    CFileFind find;
    BOOL more = find.FindFile(folder + ProductName(each) + _T("\\*"));
    while (more) {
      more = find.FindNextFile();
      if (!find.IsDirectory() || find.IsDots()) continue;
      CString definition = find.GetFilePath() + _T("\\") + KVVMMachine::kDefinitionFile;
      if (_waccess(definition, 0) != 0) continue;
      const std::filesystem::path file = SystemPathFromProduct(definition);
      machines.push_back({each, file.parent_path().filename().string(), std::move(definition)});
    }
  }
  return machines;
}

}  // namespace kestrova
