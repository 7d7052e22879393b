// Calendar time: COleDateTime (an OLE automation date with a status) and CTime (a
// time_t).
//
// An OLE automation date counts days from 1899-12-30 00:00. Its whole part is the
// day and its fraction the time of day, and the fraction is a positive time of day
// on both sides of the epoch: -1.25 is 1899-12-29 06:00, not 1899-12-28 18:00. The
// value is therefore not linear below zero; comparisons and the splitting into
// parts take that into account. Parts are rounded to the nearest second.
//
// Conversions from and to time_t use local time, which follows the TZ environment
// variable of the process.
#pragma once

#include <ctime>

#include "platform/cstring.h"
#include "platform/types.h"

// What the part getters return for a date that is not valid.
inline constexpr int AFX_OLE_DATETIME_ERROR = -1;

class COleDateTime {
  public:
    enum DateTimeStatus { valid = 0, invalid = 1, null = 2 };

    COleDateTime() = default;
    COleDateTime(DATE date) : m_dt(date) {}
    // Years 100..9999; an out-of-range part gives an invalid date.
    COleDateTime(int year, int month, int day, int hour, int minute, int second) {
        SetDateTime(year, month, day, hour, minute, second);
    }
    // Local time; invalid when the time cannot be converted.
    explicit COleDateTime(std::time_t time);

    // Now, in local time, to the whole second.
    static COleDateTime GetCurrentTime();

    // Returns the new status: 0 (valid) on success, else invalid with the date 0.0.
    int SetDateTime(int year, int month, int day, int hour, int minute, int second);
    DateTimeStatus GetStatus() const { return m_status; }
    void SetStatus(DateTimeStatus status) { m_status = status; }

    // The parts, or AFX_OLE_DATETIME_ERROR when the status is not valid or the date
    // lies outside 100-01-01 .. 9999-12-31.
    int GetYear() const;
    int GetMonth() const;
    int GetDay() const;
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    int GetDayOfWeek() const;  // 1 = Sunday .. 7 = Saturday
    int GetDayOfYear() const;  // 1 = January 1st

    operator DATE() const { return m_dt; }

    // strftime formatting of the parts (in any length). An invalid date formats as
    // "Invalid DateTime" and a null one as "".
    CString Format(const char* format) const;

    // Equal when status and value are equal; ordering is by point in time.
    bool operator==(const COleDateTime& other) const {
        return m_status == other.m_status && m_dt == other.m_dt;
    }
    bool operator<(const COleDateTime& other) const;
    bool operator>(const COleDateTime& other) const { return other < *this; }
    bool operator<=(const COleDateTime& other) const { return !(other < *this); }
    bool operator>=(const COleDateTime& other) const { return !(*this < other); }

    DATE m_dt = 0.0;
    DateTimeStatus m_status = valid;
};

// A calendar time in seconds since 1970-01-01 00:00 UTC.
class CTime {
  public:
    CTime() = default;
    CTime(std::time_t time) : m_time(time) {}
    // Local time; dst is the tm_isdst hint (-1: let the time zone decide). Parts
    // out of their usual range are normalised as mktime does; an unconvertible time
    // gives -1.
    CTime(int year, int month, int day, int hour, int minute, int second, int dst = -1);

    static CTime GetCurrentTime();

    std::time_t GetTime() const { return m_time; }

    // Local-time parts.
    int GetYear() const;
    int GetMonth() const;
    int GetDay() const;
    int GetHour() const;
    int GetMinute() const;
    int GetSecond() const;
    int GetDayOfWeek() const;  // 1 = Sunday

    auto operator<=>(const CTime&) const = default;

  private:
    std::tm Local() const;

    std::time_t m_time = 0;
};
