#include "tests/folders.h"

namespace kvtest {

std::filesystem::path SourceFile(const std::filesystem::path& relative) { return KV_SOURCE_DIR / relative; }
std::filesystem::path BuiltFile(const std::filesystem::path& relative) { return KV_BUILD_DIR / relative; }
std::filesystem::path LibraryFile(const std::filesystem::path& relative) {
  return BuiltFile(KV_LIBRARY_FOLDER) / relative;
}

}  // namespace kvtest
