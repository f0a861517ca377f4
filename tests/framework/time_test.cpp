#include "framework/time.h"

#include <gtest/gtest.h>

#include <limits>

#include "framework/rectangle.h"
#include "tests/archive_bytes.h"
#include "tests/values.h"

using kvtest::Bytes;

namespace {

std::string Stored(const auto& value) {
  return kvtest::Hex(kvtest::Store([&](CArchive& ar) { ar << value; }));
}
template <class T>
T Loaded(const char* hex) {
  T value;
  kvtest::Load(Bytes(hex), [&](CArchive& ar) { ar >> value; });
  return value;
}

}  // namespace

TEST(Time, IsStoredAsMarkAndSixtyFourBitSecondsAndLoadedFromBothForms) {
  EXPECT_EQ(Stored(CTime(0x0102030405)), "0A 00 00 80 05 04 03 02 01 00 00 00");
  EXPECT_EQ(Loaded<CTime>("0A 00 00 80 05 04 03 02 01 00 00 00").GetTime(), 0x0102030405);
  EXPECT_EQ(Loaded<CTime>("80 51 01 00").GetTime(), 86400);
  EXPECT_EQ(Loaded<CTime>("FF FF FF FF").GetTime(), -1);
  EXPECT_THROW(Loaded<CTime>("0A 00 00 80 05 04 03 02"), CArchiveException);
}

TEST(Time, FormatsUniversalTime) {
  const std::tuple<LONGLONG, LPCTSTR, LPCTSTR> kCases[] = {
      {0, _T("%Y-%m-%d %H:%M:%S"), _T("1970-01-01 00:00:00")},
      {951782400, _T("%d.%m.%y %j"), _T("29.02.00 060")},
      {4102444799, _T("%Y-%m-%dT%H:%M:%S"), _T("2099-12-31T23:59:59")},
      {0, _T("Öl 100%%"), _T("Öl 100%")},
      {std::numeric_limits<LONGLONG>::max(), _T("%Y"), _T("")},
  };
  for (const auto& [seconds, format, text] : kCases) EXPECT_EQ(CTime(seconds).FormatGmt(format), text) << seconds;
}

TEST(Time, GivesBackTheLocalFieldsItWasMadeOf) {
  const CTime time(2024, 2, 29, 13, 5, 59);
  EXPECT_EQ(time.Format(_T("%Y-%m-%d %H:%M:%S")), _T("2024-02-29 13:05:59"));
  EXPECT_EQ(kvtest::Values(time.GetYear(), time.GetMonth(), time.GetDay(), time.GetHour(), time.GetMinute(),
                           time.GetSecond(), time.GetDayOfWeek()),
            "2024|2|29|13|5|59|5");  // a Thursday
  EXPECT_EQ(CTime(std::numeric_limits<LONGLONG>::max()).GetYear(), 0) << "no calendar date";
}

TEST(Time, SpansAddUp) {
  const CTimeSpan span(2, 3, 4, 5);
  EXPECT_EQ(span.GetTotalSeconds(), 2 * 86400 + 3 * 3600 + 4 * 60 + 5);
  EXPECT_EQ(kvtest::Values(span.GetHours(), span.GetMinutes(), span.GetSeconds()), "3|4|5");
  EXPECT_EQ((CTime(1000) + span) - CTime(1000), span);
}

TEST(Rectangle, IsStoredAsFourLongs) {
  EXPECT_EQ(Stored(CPoint(1, -2)), "01 00 00 00 FE FF FF FF");
  EXPECT_EQ(Stored(CRect(1, 2, 3, -4)), "01 00 00 00 02 00 00 00 03 00 00 00 FC FF FF FF");
  EXPECT_EQ(Loaded<CRect>("01 00 00 00 02 00 00 00 03 00 00 00 FC FF FF FF"), CRect(1, 2, 3, -4));
}

TEST(Rectangle, MeetsAndJoins) {
  const CRect a(0, 0, 10, 10), b(5, 6, 20, 20), far(30, 30, 40, 40), empty(5, 5, 5, 9);
  CRect result;
  EXPECT_TRUE(result.IntersectRect(a, b));
  EXPECT_EQ(result, CRect(5, 6, 10, 10));
  EXPECT_FALSE(result.IntersectRect(a, far));
  EXPECT_TRUE(result.IsRectNull());
  EXPECT_TRUE(result.UnionRect(a, far));
  EXPECT_EQ(result, CRect(0, 0, 40, 40));
  EXPECT_TRUE(result.UnionRect(empty, b));
  EXPECT_EQ(result, b);
  EXPECT_TRUE(a.PtInRect(CPoint(0, 9)));
  EXPECT_FALSE(a.PtInRect(CPoint(10, 9)));
}
