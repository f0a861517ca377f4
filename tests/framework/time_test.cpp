#include "framework/time.h"

#include <gtest/gtest.h>

#include <limits>

#include "framework/archive.h"
#include "framework/rectangle.h"

namespace {

std::string Stored(const auto& value) {
  CMemFile file;
  CArchive ar(&file, CArchive::store);
  ar << value;
  ar.Close();
  return std::string(reinterpret_cast<const char*>(file.GetData()), file.GetLength());
}

template <class T>
T Loaded(std::string bytes) {
  CMemFile file(reinterpret_cast<BYTE*>(bytes.data()), bytes.size());
  CArchive ar(&file, CArchive::load);
  T value;
  ar >> value;
  return value;
}

}  // namespace

TEST(Time, IsStoredAsMarkAndSixtyFourBitSeconds) {
  EXPECT_EQ(Stored(CTime(0x0102030405)), std::string("\x0A\0\0\x80\x05\x04\x03\x02\x01\0\0\0", 12));
  EXPECT_EQ(Stored(CTime(-1)), std::string("\x0A\0\0\x80\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF", 12));
}

TEST(Time, LoadsBothForms) {
  EXPECT_EQ(Loaded<CTime>(std::string("\x0A\0\0\x80\x05\x04\x03\x02\x01\0\0\0", 12)).GetTime(), 0x0102030405);
  EXPECT_EQ(Loaded<CTime>(std::string("\x80\x51\x01\0", 4)).GetTime(), 86400);
  EXPECT_EQ(Loaded<CTime>(std::string("\xFF\xFF\xFF\xFF", 4)).GetTime(), -1);
  EXPECT_THROW(Loaded<CTime>(std::string("\x0A\0\0\x80\x05\x04\x03\x02", 8)), CArchiveException);
}

TEST(Time, FormatsUniversalTime) {
  struct {
    LONGLONG seconds;
    LPCTSTR format;
    LPCTSTR text;
  } const kCases[] = {
      {0, _T("%Y-%m-%d %H:%M:%S"), _T("1970-01-01 00:00:00")},
      {951782400, _T("%d.%m.%y %j"), _T("29.02.00 060")},
      {4102444799, _T("%Y-%m-%dT%H:%M:%S"), _T("2099-12-31T23:59:59")},
      {0, _T(""), _T("")},
      {0, _T("Öl 100%%"), _T("Öl 100%")},
      {std::numeric_limits<LONGLONG>::max(), _T("%Y"), _T("")},
  };
  for (const auto& c : kCases) EXPECT_EQ(CTime(c.seconds).FormatGmt(c.format), c.text) << c.seconds;
}

TEST(Time, GivesBackTheLocalFieldsItWasMadeOf) {
  const CTime time(2024, 2, 29, 13, 5, 59);
  EXPECT_EQ(time.Format(_T("%Y-%m-%d %H:%M:%S")), _T("2024-02-29 13:05:59"));
  EXPECT_EQ(time.GetYear(), 2024);
  EXPECT_EQ(time.GetMonth(), 2);
  EXPECT_EQ(time.GetDay(), 29);
  EXPECT_EQ(time.GetHour(), 13);
  EXPECT_EQ(time.GetMinute(), 5);
  EXPECT_EQ(time.GetSecond(), 59);
  EXPECT_EQ(time.GetDayOfWeek(), 5) << "a Thursday";
  EXPECT_EQ(CTime(std::numeric_limits<LONGLONG>::max()).GetYear(), 0) << "no calendar date";
}

TEST(Time, SpansAddUp) {
  const CTimeSpan span(2, 3, 4, 5);
  EXPECT_EQ(span.GetTotalSeconds(), 2 * 86400 + 3 * 3600 + 4 * 60 + 5);
  EXPECT_EQ(span.GetHours(), 3);
  EXPECT_EQ(span.GetMinutes(), 4);
  EXPECT_EQ(span.GetSeconds(), 5);
  EXPECT_EQ((CTime(1000) + span) - CTime(1000), span);
  EXPECT_LT(CTime(1), CTime(2));
}

TEST(Rectangle, IsStoredAsFourLongs) {
  EXPECT_EQ(Stored(CPoint(1, -2)), std::string("\1\0\0\0\xFE\xFF\xFF\xFF", 8));
  EXPECT_EQ(Stored(CRect(1, 2, 3, 4)), std::string("\1\0\0\0\2\0\0\0\3\0\0\0\4\0\0\0", 16));
  EXPECT_EQ(Loaded<CRect>(Stored(CRect(-1, 2, -3, 4))), CRect(-1, 2, -3, 4));
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
  EXPECT_FALSE(result.UnionRect(empty, empty));
  EXPECT_TRUE(a.PtInRect(CPoint(0, 9)));
  EXPECT_FALSE(a.PtInRect(CPoint(10, 9)));
}
