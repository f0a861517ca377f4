// A registry and a data folder for tests of the technology database's selection.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "framework/message_box.h"
#include "share/env/app_env.h"
#include "share/env/registry_access.h"
#include "share/env/registry_keys.h"
#include "share/settings/settings_key.h"
#include "tests/odbc_drivers.h"
#include "tests/registry_calls.h"

namespace kvtest {

// Answers boxes: runs a step for each, and gives up behind the last.
class Person : public MessageBoxes {
 public:
  explicit Person(std::vector<std::function<void()>> steps = {})
      : steps_(std::move(steps)), former_(SetMessageBoxes(this)) {}
  ~Person() override { SetMessageBoxes(former_); }
  bool Show(const CString& text, const CString& caption) override {
    EXPECT_EQ(caption, _T("Kestrova"));
    texts.push_back(ToUtf8(text));
    if (texts.size() > steps_.size()) return false;
    steps_[texts.size() - 1]();
    return true;
  }
  std::vector<std::string> texts;

 private:
  std::vector<std::function<void()>> steps_;
  MessageBoxes* former_;
};

class TechDatabase : public testing::Test {
 protected:
  void SetUp() override {
    kvtest::RegisterSQLiteForAccessFiles();
    CloseAppEnv();
    RegDeleteTreeW(HKEY_CURRENT_USER, _T("Software"));
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, _T("Software"));
    Keep(_T("KVDataPath"), Data());
  }
  void TearDown() override { CloseAppEnv(); }

  static void Keep(LPCTSTR name, const CString& text) {
    QFSettingsKey key(CString(), kVersionKey);
    key.AddValue(name, text);
    ASSERT_EQ(key.SaveValuesToRegistry(), 1);
  }
  static std::string Forms() {
    return ToUtf8(GetRegSettingStringValue(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms")));
  }
  static int Flag(LPCTSTR key, LPCTSTR name) {
    int found = 0;
    const int value = GetRegSettingDwordValue(HKEY_CURRENT_USER, key, name, &found);
    return found ? value : -1;
  }
  static void InstallAccess(int version, bool wide) {
    CString path;
    path.Format(wide ? _T("Software\\Microsoft\\Office\\%d.0\\Access\\InstallRoot")
                     : _T("Software\\Wow6432Node\\Microsoft\\Office\\%d.0\\Access\\InstallRoot"),
                version);
    ASSERT_EQ(kvtest::Create(HKEY_LOCAL_MACHINE, path), ERROR_SUCCESS);
  }
  CString Data() const { return kvtest::ProductPath(folder_.Path()) + _T("\\"); }
  // One setting a row, behind a comment.
  void Configure(const std::string& settings) const {
    folder_.Write("TechDB/database.config",
                  "<c><applicationSettings><!-- -->" + settings + "</applicationSettings></c>");
  }

  const kvtest::ScratchFolder folder_;
};

}  // namespace kvtest
