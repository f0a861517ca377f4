// Reads any bytes as "database.config", inverts every active flag, writes the file and reads it again.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "companions/database/connection_strings.h"
#include "platform/paths.h"
#include "share/utilities/tech_db_config_file.h"

namespace {

// A folder of this process in a memory file system.
const std::filesystem::path& Folder() {
  static const auto& folder = *new std::filesystem::path([] {
    std::filesystem::path path = "/dev/shm/kv_database_config_" + std::to_string(getpid());
    std::filesystem::create_directory(path);
    std::atexit([] { std::filesystem::remove_all(Folder()); });
    return path;
  }());  // never destroyed: the exit handler uses it
  return folder;
}

void Require(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::ofstream(Folder() / "database.config", std::ios::binary).write(reinterpret_cast<const char*>(data), long(size));
  const CString folder = CString(ProductPathFromSystem(Folder().string()).c_str()) + _T("\\");
  QFTechDBConfigInfo info, again;
  ReadTechDBConfig(folder, CString(), info);
  for (int i = 0; i < info.GetCount(); ++i) {
    QFTechDBConfigData& entry = *info.GetTechDBConfigData(i);
    entry.SetActiveFlag(!entry.GetActiveFlag());
    entry.GetDisplayName();
    ConnectionPieces(entry.GetConnectionString()).Text();
  }
  if (!WriteTechDBConfig(folder, info)) return 0;
  Require(ReadTechDBConfig(folder, CString(), again) == 1);
  Require(again.GetCount() == info.GetCount() && info.IsActiveTechDbChange(&again) == 0);
  return 0;
}
