// String tables of resource-only libraries: the built English library. Damaged ones are in linux_resources_test.cpp.
#include "tests/platform/resources_support.h"

namespace {

using kvtest::LibraryBytes;
using Resources = kvtest::ResourcesTest;

TEST_F(Resources, StringsAreFoundByNumber) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  const std::pair<UINT, const TCHAR*> rows[] = {{1, _T("Kestrova")},
                                                {2553, _T("Information")},
                                                {58237, _T("English")},
                                                {65536 + 1, _T("Kestrova")},
                                                {65493, _T("Barrel")}};
  for (const auto& [id, wanted] : rows) EXPECT_EQ(String(id), wanted) << id;
  for (const UINT id : {0u, 2u, 2556u, 65535u}) EXPECT_EQ(String(id), _T("")) << id;
}

TEST_F(Resources, CopyIsCutAndTerminated) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  TCHAR buffer[16];
  for (const auto& [id, units, wanted] :
       {std::tuple{1u, 9, _T("Kestrova")}, {1u, 8, _T("Kestrov")}, {2u, 16, _T("")}}) {
    EXPECT_EQ(LoadStringW(module, id, buffer, units), int(Text(wanted).size()));
    EXPECT_EQ(Text(buffer), wanted);
  }
}

TEST_F(Resources, OneUnitIsTerminatedAndMissingStringsAreReported) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  TCHAR buffer[16] = _T("before");
  EXPECT_EQ(LoadStringW(module, 1, buffer, 1), 0);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(StatusOf(LoadStringW(module, 2, buffer, 16) != 0), ERROR_RESOURCE_NAME_NOT_FOUND);
}

TEST_F(Resources, DataModuleIsNoRunningModule) {
  ASSERT_NE(Load(LibraryBytes()), nullptr);
  EXPECT_NE(reinterpret_cast<std::uintptr_t>(module) & 3, 0U);
  EXPECT_EQ(GetModuleHandleW(_T("Test.DLL")), nullptr);
  TCHAR path[MAX_PATH];
  EXPECT_EQ(GetModuleFileNameW(module, path, MAX_PATH), 0U);
}

TEST_F(Resources, MissingFilesAndExtensions) {
  EXPECT_EQ(StatusOf(Load(std::string(100, 'x')) != nullptr), ERROR_BAD_EXE_FORMAT);
  const auto load = [this](const char* name) {
    const Text path = ProductPathFromSystem((folder.Path() / name).string());
    return module = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
  };
  EXPECT_EQ(StatusOf(load("None") != nullptr), ERROR_FILE_NOT_FOUND);
  folder.Write("Test.DLL", LibraryBytes());
  EXPECT_NE(load("test"), nullptr);
}

}  // namespace
