// The fixture of the environment's tests: a registry without the product's keys, no callbacks, no environment.
#pragma once

#include "share/core/registry_access.h"
#include "share/core/registry_keys.h"
#include "share/env/app_env.h"
#include "tests/registered.h"
#include "tests/registry_calls.h"

namespace kvtest {

class CleanEnvironment : public testing::Test {
 protected:
  void SetUp() override {
    Register({});
    CloseAppEnv();
    for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) RegDeleteTreeW(hive, _T("Software"));
  }
  void TearDown() override {
    Register({});
    CloseAppEnv();
  }

  static std::string Install() { return ToUtf8(AppEnv()->GetKVDrive() + AppEnv()->GetKVPath()); }
  static std::string Stored(HKEY hive, LPCTSTR path, LPCTSTR name) {
    return ToUtf8(GetRegSettingStringValue(hive, path, name));
  }
};

}  // namespace kvtest
