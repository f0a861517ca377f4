// Decimal signs in a locale with a comma, which the test compiles.
#include "share/utilities/regional_decimal.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

#include "platform/process.h"
#include "tests/scratch.h"

namespace {

class RegionalDecimal : public testing::Test {
 protected:
  ~RegionalDecimal() override {
    std::setlocale(LC_NUMERIC, "C");
    SetEnvironmentVariableW(_T("LOCPATH"), nullptr);
    SetEnvironmentVariableW(_T("LC_ALL"), nullptr);
  }

  // Compiles the locale from the system's sources and sets it in the C runtime.
  void UseGerman() {
    const std::string target = (folder_.Path() / "de_DE.UTF-8").string();
    ASSERT_EQ(std::system(("localedef -i de_DE -f UTF-8 '" + target + "'").c_str()), 0)
        << "the sources of locales are missing: install the package locales";
    SetEnvironmentVariableW(_T("LOCPATH"), FromUtf8(folder_.Path().string()));
    ASSERT_NE(std::setlocale(LC_NUMERIC, "de_DE.UTF-8"), nullptr);
  }

  const kvtest::ScratchFolder folder_;
};

}  // namespace

TEST_F(RegionalDecimal, PointLeavesTextsAlone) {
  const QFRegionalDecimal decimal;
  EXPECT_EQ(decimal.GetIsEnglishDecimal(), 1);
  EXPECT_EQ(decimal.GetReplaceDecimal(), 0);
  EXPECT_EQ(decimal.GetRegionalDecimal(), '.');
  CString text = _T("1,5");
  decimal.ToEnglishDecimal(text);
  EXPECT_EQ(text, _T("1,5"));
  char number[] = "1.5";
  EXPECT_EQ(decimal.AtoF(number), 1.5);
  EXPECT_STREQ(number, "1.5");
  EXPECT_EQ(decimal.AtoF(nullptr), 0.0);
}

TEST_F(RegionalDecimal, CommaIsTakenFromTheRuntime) {
  UseGerman();
  if (HasFatalFailure()) return;
  const QFRegionalDecimal decimal;
  EXPECT_EQ(decimal.GetIsEnglishDecimal(), 0);
  EXPECT_EQ(decimal.GetReplaceDecimal(), 1);
  EXPECT_EQ(decimal.GetRegionalDecimal(), ',');
  CString text = _T("1,5 and 2,25");
  decimal.ToEnglishDecimal(text);
  EXPECT_EQ(text, _T("1.5 and 2.25"));
  const struct {
    const char* before;
    double wanted;
    const char* after;
  } rows[] = {{"1,5", 1.5, "1,5"}, {"-2.5e3", -2500, "-2,5e3"}, {"1.2.3", 1.2, "1,2.3"}, {"", 0, ""}};
  for (const auto& row : rows) {
    std::string number = row.before;
    EXPECT_EQ(decimal.AtoF(number.data()), row.wanted) << row.before;
    EXPECT_EQ(number, row.after);
  }
}

TEST_F(RegionalDecimal, UsersSignComesFromTheSystem) {
  const struct {
    LPCTSTR locale, wanted;
  } rows[] = {{_T("de_DE.UTF-8"), _T("1,5 2,5")}, {_T("en_US.UTF-8"), _T("1.5 2.5")}, {_T("C"), _T("1.5 2.5")}};
  for (const auto& row : rows) {
    SetEnvironmentVariableW(_T("LC_ALL"), row.locale);
    CString text = _T("1.5 2.5");
    KVGetLocaleDecimalFormat(text);
    EXPECT_EQ(text, row.wanted);
  }
}
