// The user's language, which comes from the environment.
#include <gtest/gtest.h>

#include "platform/locale.h"
#include "platform/process.h"

namespace {

// Sets the language of the environment and takes it back.
class LinuxLocale : public testing::Test {
 protected:
  ~LinuxLocale() override { Use(nullptr, nullptr, nullptr); }
  static void Use(LPCWSTR all, LPCWSTR messages, LPCWSTR lang) {
    SetEnvironmentVariableW(_T("LC_ALL"), all);
    SetEnvironmentVariableW(_T("LC_MESSAGES"), messages);
    SetEnvironmentVariableW(_T("LANG"), lang);
  }
};

TEST_F(LinuxLocale, LanguageComesFromTheFirstVariableThatIsSet) {
  const std::tuple<LPCTSTR, LPCTSTR, LPCTSTR, int, int> rows[] = {
      {nullptr, nullptr, nullptr, 9, 1},
      {nullptr, _T("fr_FR.UTF-8"), _T("de_DE.UTF-8"), 12, 1},
      {_T("ja_JP.UTF-8"), _T("fr_FR.UTF-8"), nullptr, 17, 1},
      {_T(""), nullptr, _T("de_AT@euro"), 7, 3},
      {nullptr, nullptr, _T("POSIX"), 9, 1},
      {nullptr, nullptr, _T("xx_nonsense"), 9, 1},
  };
  for (const auto& [all, messages, lang, primary, sub] : rows) {
    Use(all, messages, lang);
    EXPECT_EQ(GetUserDefaultLangID(), sub << 10 | primary) << testing::PrintToString(lang);
  }
}

TEST_F(LinuxLocale, TimesThatAreTooLateHaveNoLocalTime) {
  const FILETIME beyond = {0, 0x80000000};
  FILETIME local = {};
  EXPECT_FALSE(FileTimeToLocalFileTime(&beyond, &local));
}

}  // namespace
