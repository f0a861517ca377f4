#include "framework/time.h"

#include "framework/archive.h"
#include "platform/time.h"

namespace {

constexpr DWORD kWideTimeMark = 0x8000000A;

CString FormatFields(const std::tm& fields, LPCTSTR format) {
  const std::string narrow = ToUtf8(CString(format)) + ' ';  // never empty, so 0 means "buffer too small"
  std::string text(narrow.size() * 4 + 64, '\0');
  std::size_t length = 0;
  while ((length = std::strftime(text.data(), text.size(), narrow.c_str(), &fields)) == 0) text.resize(text.size() * 2);
  return FromUtf8(std::string_view(text.data(), length - 1));
}

}  // namespace

CTime CTime::GetCurrentTime() { return _time64(nullptr); }

CTime::CTime(int year, int month, int day, int hour, int minute, int second, int dst) {
  std::tm fields = {};
  fields.tm_year = year - 1900;
  fields.tm_mon = month - 1;
  fields.tm_mday = day;
  fields.tm_hour = hour;
  fields.tm_min = minute;
  fields.tm_sec = second;
  fields.tm_isdst = dst;
  m_time = _mktime64(&fields);
}

// Returns the local fields; without a date, fields that make every getter return 0.
std::tm CTime::Local() const {
  std::tm fields = {};
  if (_localtime64_s(&fields, &m_time) == 0) return fields;
  fields = {};
  fields.tm_year = -1900;
  fields.tm_mon = fields.tm_wday = -1;
  return fields;
}

int CTime::GetYear() const { return Local().tm_year + 1900; }
int CTime::GetMonth() const { return Local().tm_mon + 1; }
int CTime::GetDay() const { return Local().tm_mday; }
int CTime::GetHour() const { return Local().tm_hour; }
int CTime::GetMinute() const { return Local().tm_min; }
int CTime::GetSecond() const { return Local().tm_sec; }
int CTime::GetDayOfWeek() const { return Local().tm_wday + 1; }

CString CTime::Format(LPCTSTR format) const {
  std::tm fields = {};
  return _localtime64_s(&fields, &m_time) == 0 ? FormatFields(fields, format) : CString();
}

CString CTime::FormatGmt(LPCTSTR format) const {
  std::tm fields = {};
  return _gmtime64_s(&fields, &m_time) == 0 ? FormatFields(fields, format) : CString();
}

CArchive& operator<<(CArchive& ar, CTime time) { return ar << kWideTimeMark << time.GetTime(); }

CArchive& operator>>(CArchive& ar, CTime& time) {
  DWORD first = 0;
  ar >> first;
  LONGLONG seconds = LONG(first);
  if (first == kWideTimeMark) ar >> seconds;
  time = seconds;
  return ar;
}
