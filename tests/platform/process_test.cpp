// The process itself: environment, modules, identity. Other processes are in linux_processes_test.cpp.
#include "platform/process.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/threads.h"
#include "tests/platform/status.h"

namespace {

TEST(ProcessItself, EnvironmentVariableGivesLengthOrSizeNeeded) {
  ASSERT_TRUE(SetEnvironmentVariableW(_T("KV_TEST_VARIABLE"), _T("Größe")));
  TCHAR buffer[6] = {};
  EXPECT_EQ(GetEnvironmentVariableW(_T("KV_TEST_VARIABLE"), buffer, 6), 5U);
  EXPECT_EQ(Text(buffer), _T("Größe"));
  EXPECT_EQ(GetEnvironmentVariableW(_T("KV_TEST_VARIABLE"), buffer, 5), 6U);
  ASSERT_TRUE(SetEnvironmentVariableW(_T("KV_TEST_VARIABLE"), nullptr));
  EXPECT_EQ(StatusOf(GetEnvironmentVariableW(_T("KV_TEST_VARIABLE"), buffer, 6) != 0U), ERROR_ENVVAR_NOT_FOUND);
}

TEST(ProcessItself, ModuleIsFoundByAnyFormOfItsName) {
  const HMODULE library = GetModuleHandleW(_T("KVSHAREu"));
  ASSERT_NE(library, nullptr);
  TCHAR path[MAX_PATH];
  ASSERT_GT(GetModuleFileNameW(library, path, MAX_PATH), 0U);
  for (const TCHAR* name : {_T("kvshareu"), _T("KVSHAREu.dll"), _T("KVSHAREU.DLL"), const_cast<const TCHAR*>(path)})
    EXPECT_EQ(GetModuleHandleW(name), library) << testing::PrintToString(Text(name));
  EXPECT_NE(GetModuleHandleW(nullptr), nullptr);
  EXPECT_NE(GetModuleHandleW(nullptr), library);
  for (const TCHAR* name : {_T("KVSHARE"), _T("KVSHAREu.txt"), _T(""), _T("\\elsewhere\\KVSHAREu")})
    EXPECT_EQ(StatusOf(GetModuleHandleW(name) != nullptr), ERROR_MOD_NOT_FOUND) << testing::PrintToString(Text(name));
}

TEST(ProcessItself, ProgramIsFoundByNull) {
  TCHAR program[MAX_PATH];
  ASSERT_GT(GetModuleFileNameW(nullptr, program, MAX_PATH), 0U);
  EXPECT_NE(TextView(program).find(_T("\\test_platform")), TextView::npos) << testing::PrintToString(program);
}

TEST(ProcessItself, ModuleFileNameIsCutToTheBuffer) {
  TCHAR whole[MAX_PATH];
  const DWORD length = GetModuleFileNameW(GetModuleHandleW(_T("KVSHAREu")), whole, MAX_PATH);
  EXPECT_EQ(TextView(whole).find(_T("..")), TextView::npos) << "programs find it by $ORIGIN/../lib";
  TCHAR cut[MAX_PATH];
  std::fill(std::begin(cut), std::end(cut), TCHAR('#'));
  EXPECT_EQ(GetModuleFileNameW(GetModuleHandleW(_T("KVSHAREu")), cut, length), length);
  EXPECT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
  EXPECT_EQ(Text(cut, length), Text(whole).substr(0, length - 1) + TCHAR(0));
  EXPECT_EQ(cut[length], '#');
}

TEST(ProcessItself, UserNameReturnsTheSizeNeeded) {
  TCHAR name[257];
  DWORD units = 1;
  EXPECT_FALSE(GetUserNameW(name, &units));
  ASSERT_TRUE(GetUserNameW(name, &units)) << "the size needed comes back";
  EXPECT_EQ(Text(name).size() + 1, units);
  EXPECT_GT(units, 1U);
}

}  // namespace
