// CTime, a point in time to the second, and CTimeSpan, a length of time. Both are plain values of 64-bit seconds;
// fields and texts are in the machine's local time unless the name says otherwise. Any thread may use its own.
//
// In an archive a CTime is the DWORD 0x8000000A and the 64-bit seconds since 1970 UTC; any other first DWORD read is
// itself an old 32-bit time.
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

  // 1970-01-01 00:00:00 UTC.
  CTime() = default;
  CTime(LONGLONG secondsSince1970) : m_time(secondsSince1970) {}
  // Local fields: year from 1900, month from 1, day from 1. dst is as in std::tm: negative lets the system decide. The
  // time is -1 if the fields name none.
  CTime(int year, int month, int day, int hour, int minute, int second, int dst = -1);

  LONGLONG GetTime() const { return m_time; }
  // Local fields; each gives 0 if the time has no calendar date. GetDayOfWeek counts from 1, Sunday.
  int GetYear() const;
  int GetMonth() const;
  int GetDay() const;
  int GetHour() const;
  int GetMinute() const;
  int GetSecond() const;
  int GetDayOfWeek() const;

  // Text by the codes of strftime in the C locale; empty if the time has no calendar date.
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
