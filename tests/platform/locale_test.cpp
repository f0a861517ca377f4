// The user's language, pictures of dates and times, numbers from text.
#include "platform/locale.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "platform/numbers.h"
#include "platform/process.h"
#include "tests/platform/status.h"

namespace {

constexpr LCID kEnglish = 0x0409;
constexpr LCID kPolish = 0x0415;

TEST(Locale, PicturesOfDatesAndTimesArePainted) {
  const std::tuple<decltype(GetDateFormatW)*, LCID, WORD, const TCHAR*, Text> rows[] = {
      {GetDateFormatW, kEnglish, 0, _T("MM'/'dd'/'yyyy"), _T("03/05/2024")},
      {GetDateFormatW, kEnglish, 0, _T("d dd ddd dddd ddddd"), _T("5 05 Tue Tuesday Tuesday")},
      {GetDateFormatW, kEnglish, 0, _T("M MM MMM MMMM"), _T("3 03 Mar March")},
      {GetDateFormatW, kEnglish, 0, _T("y yy yyy yyyy yyyyy"), _T("24 24 2024 2024 2024")},
      {GetDateFormatW, kEnglish, 0, _T("'day' d 'o''clock' hh:mm'open"), _T("day 5 o'clock hh:mmopen")},
      {GetDateFormatW, kPolish, 0, _T("d MMMM"), _T("5 marca")},
      {GetDateFormatW, kPolish, 0, _T("MMMM yyyy"), _T("marzec 2024")},
      {GetTimeFormatW, kEnglish, 19, _T("H HH h hh t tt"), _T("19 19 7 07 P PM")},
      {GetTimeFormatW, kEnglish, 0, _T("h:mm tt"), _T("12:04 AM")},
      {GetTimeFormatW, kEnglish, 12, _T("hh t"), _T("12 P")},
      {GetTimeFormatW, kEnglish, 9, _T("m mm s ss HHH dd"), _T("4 04 9 09 09 dd")},
  };
  for (const auto& [call, locale, hour, picture, wanted] : rows) {
    const SYSTEMTIME time = {2024, 3, /*wDayOfWeek=*/6, 5, hour, 4, 9, 0};  // a Tuesday, whatever the field says
    TCHAR text[64];
    const int needed = int(wanted.size()) + 1;
    EXPECT_EQ(call(locale, 0, &time, picture, nullptr, 0), needed);
    EXPECT_EQ(call(locale, 0, &time, picture, text, 64), needed);
    EXPECT_EQ(text, wanted);
    EXPECT_EQ(call(locale, 0, &time, picture, text, needed - 1), 0);
  }
}

TEST(SystemTime, BecomesAFileTimeAndBack) {
  const std::pair<ULONGLONG, SYSTEMTIME> rows[] = {
      {0, {1601, 1, 1, 1, 0, 0, 0, 0}},
      {116'444'736'000'010'000, {1970, 1, 4, 1, 0, 0, 0, 1}},
      {133'537'247'999'990'000, {2024, 2, 4, 29, 23, 59, 59, 999}},
  };
  FILETIME file = {};
  SYSTEMTIME fields;
  for (const auto& [units, wanted] : rows) {
    EXPECT_TRUE(SystemTimeToFileTime(&wanted, &file));
    EXPECT_EQ(ULONGLONG(file.dwHighDateTime) << 32 | file.dwLowDateTime, units);
    ASSERT_TRUE(FileTimeToSystemTime(&file, &fields));
    EXPECT_EQ(std::memcmp(&fields, &wanted, sizeof fields), 0) << units;
  }
  const FILETIME last = {0xFFFFFFFF, 0x7FFFFFFF};
  EXPECT_TRUE(FileTimeToSystemTime(&last, &fields));
  EXPECT_EQ(fields.wYear, 30828);
  const FILETIME beyond = {0, 0x80000000};
  EXPECT_FALSE(FileTimeToSystemTime(&beyond, &fields));
}

TEST(Locale, WrongTimesFail) {
  const SYSTEMTIME late = {2023, 2, 0, 28, 24, 0, 0, 0};
  TCHAR text[16];
  EXPECT_EQ(StatusOf(GetTimeFormatW(kEnglish, 0, &late, _T("H"), text, 16) != 0), ERROR_INVALID_PARAMETER);
}

TEST(Locale, WrongDatesFail) {
  const SYSTEMTIME none = {2023, 2, 0, 29, 0, 0, 0, 0};
  TCHAR text[16];
  EXPECT_EQ(StatusOf(GetDateFormatW(kEnglish, 0, &none, _T("d"), text, 16) != 0), ERROR_INVALID_PARAMETER);
}

TEST(SystemTime, ThatDoesNotExistIsRefused) {
  for (const SYSTEMTIME wrong : {SYSTEMTIME{}, {2023, 2, 0, 29, 0, 0, 0, 0}, {2023, 2, 0, 1, 24, 0, 0, 0}}) {
    FILETIME file = {7, 7};
    EXPECT_EQ(StatusOf(SystemTimeToFileTime(&wrong, &file)), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(file.dwLowDateTime, 7u);
  }
}

TEST(Numbers, RealsAreReadAsFarAsTheyGo) {
  constexpr double kInfinite = std::numeric_limits<double>::infinity();
  const std::pair<const char*, double> rows[] = {
      {"+.5", 0.5},         {"-", 0},
      {"+-1", 0},           {"1e+", 1},
      {"0x1F", 31},         {"0x-1", 0},
      {"1\xD9\xA3", 1},     {"", 0},
      {"-3e2mm", -300},     {"-1e999", -kInfinite},
      {"5e-324", 5e-324},   {"0.0000001e400", kInfinite},
      {"1000000e-400", 0},  {"-0x.001p9999", -kInfinite},
      {"0x10000p-9999", 0}, {" \t\r\n-2.25e2", -225},
  };
  for (const auto& [text, wanted] : rows) EXPECT_EQ(NumberFromUtf8(text), wanted) << text;
  EXPECT_EQ(NumberFromUtf8("9007199254740993"), 9007199254740992.0);
  EXPECT_EQ(NumberFromUtf8("1.5\xC3\xA4"), 1.5);
  EXPECT_EQ(NumberFromUtf8(std::string(400, '9')), kInfinite);
  EXPECT_TRUE(std::signbit(NumberFromUtf8("-0")));
}

TEST(Numbers, IntegersSaturate) {
  constexpr int kMost = std::numeric_limits<int>::max(), kLeast = std::numeric_limits<int>::min();
  const std::pair<const char*, int> rows[] = {
      {"42", 42}, {"-0012x", -12},  {"0x10", 0},           {"- 1", 0},
      {"", 0},    {" \v\f+7.9", 7}, {"2147483648", kMost}, {"-99999999999999999999999", kLeast},
  };
  for (const auto& [text, wanted] : rows) EXPECT_EQ(IntegerFromUtf8(text), wanted) << text;
}

}  // namespace
