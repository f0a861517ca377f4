// Rounding to the tolerance, compared with integer arithmetic, and narrowing; decimal signs in a locale with a comma,
// which the test compiles.
#include "share/utilities/numbers.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>

#include "companions/geometry/constants.h"
#include "platform/process.h"
#include "share/utilities/regional_decimal.h"
#include "tests/scratch.h"

namespace {

// Sets the tolerance; the destructor restores it.
class Tolerance {
 public:
  explicit Tolerance(double value) : former_(RESABS) { RESABS = value; }
  ~Tolerance() { RESABS = former_; }

 private:
  double former_;
};

// Rounds billionths to millionths (RESABS = 1e-6), then to hundred-thousandths, halves down.
long long HundredThousandths(long long billionths) {
  const long long millionths = billionths / 1000 + (billionths % 1000 > 500);
  return millionths / 10 + (millionths % 10 > 5);
}

// The double nearest to that many hundred-thousandths, through its decimal digits.
double FromDigits(long long hundredThousandths) {
  char digits[40];
  std::snprintf(digits, sizeof digits, "%lld.%05lld", hundredThousandths / 100000, hundredThousandths % 100000);
  return std::strtod(digits, nullptr);
}

TEST(RoundOff, RandomValuesAgreeWithWholeNumbers) {
  std::mt19937_64 random(kvtest::PrintedSeed());
  for (int round = 0; round < 20000; ++round) {
    const long long limit = round % 4 == 0 ? 100'000 : round % 4 == 1 ? 1'000'000'000 : 10'000'000'000'000;
    const long long billionths = std::uniform_int_distribution<long long>(0, limit)(random);
    if (billionths % 1000 == 500) continue;  // no double has this value
    const double value = double(billionths) / 1e9, wanted = FromDigits(HundredThousandths(billionths));
    ASSERT_EQ(RoundOffDouble(value, 0), wanted) << billionths;
    ASSERT_EQ(RoundOffDouble(-value, 0), -wanted) << billionths;
    ASSERT_EQ(RoundOffDouble(wanted, 0), wanted) << billionths << ": a point of the raster stays";
  }
}

TEST(RoundOff, HalvesGoDownTwice) {
  const std::tuple<double, double, double> rows[] = {
      {1e-6, 2147483646.123456, 2147483646.12346},
      // Exact halves: the first rounding is to RESABS, the second to 10 * RESABS.
      {0.5, 2.75, 0},   // 5.5, 5, 0.5, 0
      {0.5, 2.875, 5},  // 5.75, 6, 0.6, 1
      {0.125, 3, 2.5},  // 1 is no whole number of steps
  };
  for (const auto& [tolerance, value, wanted] : rows) {
    const Tolerance used(tolerance);
    EXPECT_EQ(RoundOffDouble(value, 0), wanted) << value << " by " << tolerance;
  }
}

TEST(RoundOff, AboveTheIntegersTheMultiplicationsErrorStays) {
  for (const long double value : {2147483647.5L, 2147483648.123456L, 9876543210.98765L, 1e15L, 1e300L}) {
    const double rounded = RoundOffDouble(double(value), 0);
    EXPECT_NEAR(rounded, double(std::round(value * 100000) / 100000), double(value) * 4e-16);
    EXPECT_EQ(RoundOffDouble(-double(value), 0), -rounded);
  }
}

TEST(RoundOff, FlagKeepsWhatWouldVanish) {
  for (const double value : {4e-6, -4e-6, 1e-300, -1e-300, 5e-7}) {
    EXPECT_EQ(RoundOffDouble(value, 0), 0.0) << value;
    EXPECT_EQ(RoundOffDouble(value, 1), value);
    EXPECT_EQ(RoundOffDouble(value, 2), 0.0) << "1 alone is the flag";
  }
  EXPECT_EQ(RoundOffDouble(6e-6, 1), 1e-5);
  EXPECT_EQ(RoundOffDouble(0, 1), 0.0);
}

TEST(RoundOff, HostileValuesAndTolerancesLeaveTheValue) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity(), kNaN = std::numeric_limits<double>::quiet_NaN();
  for (const int flag : {0, 1}) {
    for (const double value : {kInfinity, -kInfinity, std::numeric_limits<double>::max()})
      EXPECT_EQ(RoundOffDouble(value, flag), value);
    EXPECT_TRUE(std::isnan(RoundOffDouble(kNaN, flag)));
    for (const double tolerance : {0.0, -1e-6, kInfinity, kNaN}) {
      const Tolerance none(tolerance);
      EXPECT_EQ(RoundOffDouble(1.23456789, flag), 1.23456789) << tolerance;
    }
  }
}

TEST(Narrowing, LargeSizesAreMinusOne) {
  const std::pair<ULONGLONG, int> rows[] = {{0, 0}, {0x7FFFFFFF, 2147483647}, {0x80000000, -1}, {~0ull, -1}};
  for (const auto& [value, wanted] : rows) EXPECT_EQ(size_t2int(value), wanted) << value;
}

}  // namespace

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
  EXPECT_EQ(std::pair(decimal.GetIsEnglishDecimal(), decimal.GetReplaceDecimal()), std::pair(1, 0));
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
  EXPECT_EQ(std::pair(decimal.GetIsEnglishDecimal(), decimal.GetReplaceDecimal()), std::pair(0, 1));
  EXPECT_EQ(decimal.GetRegionalDecimal(), ',');
  CString text = _T("1,5 and 2,25");
  decimal.ToEnglishDecimal(text);
  EXPECT_EQ(text, _T("1.5 and 2.25"));
  const std::tuple<const char*, double, const char*> rows[] = {
      {"1,5", 1.5, "1,5"}, {"-2.5e3", -2500, "-2,5e3"}, {"1.2.3", 1.2, "1,2.3"}, {"", 0, ""}};
  for (const auto& [before, wanted, after] : rows) {
    std::string number = before;
    EXPECT_EQ(decimal.AtoF(number.data()), wanted) << before;
    EXPECT_EQ(number, after);
  }
}

TEST_F(RegionalDecimal, UsersSignComesFromTheSystem) {
  const std::pair<LPCTSTR, LPCTSTR> rows[] = {
      {_T("de_DE.UTF-8"), _T("1,5 2,5")}, {_T("en_US.UTF-8"), _T("1.5 2.5")}, {_T("C"), _T("1.5 2.5")}};
  for (const auto& [locale, wanted] : rows) {
    SetEnvironmentVariableW(_T("LC_ALL"), locale);
    CString text = _T("1.5 2.5");
    KVGetLocaleDecimalFormat(text);
    EXPECT_EQ(text, wanted);
  }
}
