// CTime: a point in time in whole seconds since 1970-01-01 00:00:00 UTC. CTimeSpan: a length of time in seconds. Both
// are plain 64-bit values; sums are not checked for overflow. Fields and texts are in the machine's local time, except
// in FormatGmt. Any thread may use its own values.
//
// In an archive a CTime is the DWORD 0x8000000A and the 64-bit seconds. If the first DWORD is another number, loading
// takes it as an old 32-bit time. Loading raises CArchiveException if the data ends too early, and accepts every number
// of seconds.
#pragma once

#include <compare>
#include <ctime>

#include "framework/text.h"

class CArchive;

class CTimeSpan {
 public:
  CTimeSpan() = default;
  CTimeSpan(LONGLONG seconds) : m_timeSpan(seconds) {}
  CTimeSpan(LONG days, int hours, int minutes, int seconds)
      : m_timeSpan(seconds + 60 * (minutes + 60 * (hours + LONGLONG(24) * days))) {}

  // GetDays, GetTimeSpan and the GetTotal calls return the whole span in their unit, rounded towards zero. GetHours
  // (-23 to 23), GetMinutes and GetSeconds (-59 to 59) return the rest after the next larger unit.
  LONGLONG GetDays() const { return m_timeSpan / (24 * 3600); }
  LONGLONG GetTotalHours() const { return m_timeSpan / 3600; }
  LONG GetHours() const { return LONG(GetTotalHours() - GetDays() * 24); }
  LONGLONG GetTotalMinutes() const { return m_timeSpan / 60; }
  LONG GetMinutes() const { return LONG(GetTotalMinutes() - GetTotalHours() * 60); }
  LONGLONG GetTotalSeconds() const { return m_timeSpan; }
  LONG GetSeconds() const { return LONG(m_timeSpan - GetTotalMinutes() * 60); }
  LONGLONG GetTimeSpan() const { return m_timeSpan; }

  CTimeSpan operator+(CTimeSpan other) const { return m_timeSpan + other.m_timeSpan; }
  CTimeSpan operator-(CTimeSpan other) const { return m_timeSpan - other.m_timeSpan; }
  auto operator<=>(const CTimeSpan&) const = default;

 private:
  LONGLONG m_timeSpan = 0;
};

class KVSHARE_API CTime {
 public:
  static CTime GetCurrentTime();

  // Zero seconds: 1970-01-01 00:00:00 UTC.
  CTime() = default;
  CTime(LONGLONG secondsSince1970) : m_time(secondsSince1970) {}
  // From local fields: the full year, month and day from 1, hour from 0. Fields outside their range carry over (month
  // 13 is January of the next year). dst: positive for summer time, 0 for none, negative lets the system decide. Gives
  // the time -1 if the system cannot convert the fields.
  CTime(int year, int month, int day, int hour, int minute, int second, int dst = -1);

  LONGLONG GetTime() const { return m_time; }
  // Local fields: year in full, month and day from 1, hour, minute and second from 0, day of the week from 1 for
  // Sunday. All are 0 if the time is too far away to have a date.
  int GetYear() const;
  int GetMonth() const;
  int GetDay() const;
  int GetHour() const;
  int GetMinute() const;
  int GetSecond() const;
  int GetDayOfWeek() const;

  // Text by the format codes of strftime in the C locale. Empty if the time is too far away to have a date, and for a
  // null or empty format. An unknown code gives what the system's strftime gives for it.
  CString Format(LPCTSTR format) const;
  CString FormatGmt(LPCTSTR format) const;

  CTime operator+(CTimeSpan span) const { return m_time + span.GetTimeSpan(); }
  CTime operator-(CTimeSpan span) const { return m_time - span.GetTimeSpan(); }
  CTimeSpan operator-(CTime other) const { return m_time - other.m_time; }
  CTime& operator+=(CTimeSpan span) { return *this = *this + span; }
  CTime& operator-=(CTimeSpan span) { return *this = *this - span; }
  auto operator<=>(const CTime&) const = default;

 private:
  std::tm Local() const;

  LONGLONG m_time = 0;
};

KVSHARE_API CArchive& operator<<(CArchive& ar, CTime time);
KVSHARE_API CArchive& operator>>(CArchive& ar, CTime& time);
