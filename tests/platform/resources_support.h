// What the tests of resource libraries share: the built English library, and one that is loaded from given bytes.
#pragma once

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/process.h"
#include "platform/resources.h"
#include "tests/folders.h"
#include "tests/platform/status.h"
#include "tests/scratch.h"

namespace kvtest {

inline std::string LibraryBytes() {
  static const std::string bytes = ReadFile(LibraryFile("lang/English/KVRESu.DLL"));
  return bytes;
}

class ResourcesTest : public testing::Test {
 protected:
  ~ResourcesTest() override {
    if (module) FreeLibrary(module);
  }
  // Loads a library made of these bytes, freeing the one before.
  HMODULE Load(const std::string& bytes) {
    if (module) FreeLibrary(module);
    const auto file = folder.Write("Test.DLL", bytes);
    return module = LoadLibraryExW(ProductPathFromSystem(file.string()).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  }
  Text String(UINT id) const {
    LPCWSTR text = nullptr;
    const int length = LoadStringW(module, id, reinterpret_cast<LPWSTR>(&text), 0);
    return {text, std::size_t(length)};
  }

  ScratchFolder folder;
  HMODULE module = nullptr;
};

}  // namespace kvtest
