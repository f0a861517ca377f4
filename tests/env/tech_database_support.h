// The fixture of the technology database's tests, and a person who answers message boxes.
#pragma once

#include <gmock/gmock.h>

#include <functional>

#include "framework/application.h"
#include "platform/paths.h"
#include "tests/env/clean_environment.h"

namespace kvtest {

// Answers message boxes: runs one step per box and cancels after the last step.
class Person : public CWinApp {
 public:
  explicit Person(std::vector<std::function<void()>> steps = {}) : steps_(std::move(steps)) {}
  int DoMessageBox(LPCTSTR text, UINT) override {
    texts.push_back(ToUtf8(text));
    if (texts.size() > steps_.size()) return IDCANCEL;
    steps_[texts.size() - 1]();
    return IDOK;
  }
  std::vector<std::string> texts;

 private:
  std::vector<std::function<void()>> steps_;
};

class TechDatabase : public CleanEnvironment {
 protected:
  void SetUp() override {
    CleanEnvironment::SetUp();
    PutText(HKEY_CURRENT_USER, kVersionKey, _T("KVDataPath"), Data());
  }

  static void UseForms(LPCTSTR forms) { PutText(HKEY_CURRENT_USER, kVersionKey, _T("TechDBForms"), forms); }
  // The number stored; -1 for none.
  static int Flag(LPCTSTR key, LPCTSTR name) {
    int found = 0;
    const int value = GetRegSettingDwordValue(HKEY_CURRENT_USER, key, name, &found);
    return found ? value : -1;
  }
  static void InstallAccess(int version, bool is64Bit) {
    CString path;
    path.Format(is64Bit ? _T("Software\\Microsoft\\Office\\%d.0\\Access\\InstallRoot")
                        : _T("Software\\Wow6432Node\\Microsoft\\Office\\%d.0\\Access\\InstallRoot"),
                version);
    ASSERT_EQ(Create(HKEY_LOCAL_MACHINE, path), ERROR_SUCCESS);
  }
  CString Data() const { return CString(ProductPathFromSystem(folder_.Path().string()).c_str()) + _T("\\"); }

  const ScratchFolder folder_;
};

}  // namespace kvtest
