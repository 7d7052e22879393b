#include "platform/oledatetime.h"

#include <cmath>
#include <cstdint>
#include <vector>

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;
// Day numbers relative to 1899-12-30 (day 0, a Saturday).
constexpr std::int64_t kEpoch1970 = 25569;
constexpr std::int64_t kFirstDay = -657434;  // 0100-01-01
constexpr std::int64_t kLastDay = 2958465;   // 9999-12-31

std::int64_t FloorDiv(std::int64_t a, std::int64_t b) {
    const std::int64_t q = a / b;
    return (a % b != 0 && ((a < 0) != (b < 0))) ? q - 1 : q;
}

// Days from 1899-12-30 to the given proleptic Gregorian date. Counted in 400-year
// eras starting on March 1st, so that the leap day is the last day of a year.
std::int64_t DayNumber(int year, int month, int day) {
    const std::int64_t y = year - (month <= 2 ? 1 : 0);
    const std::int64_t era = FloorDiv(y, 400);
    const std::int64_t yearOfEra = y - era * 400;
    const std::int64_t monthFromMarch = (month + 9) % 12;
    const std::int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468 + kEpoch1970;
}

void CivilDate(std::int64_t dayNumber, int& year, int& month, int& day) {
    const std::int64_t z = dayNumber - kEpoch1970 + 719468;
    const std::int64_t era = FloorDiv(z, 146097);
    const std::int64_t dayOfEra = z - era * 146097;
    const std::int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const std::int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;
    day = static_cast<int>(dayOfYear - (153 * monthFromMarch + 2) / 5 + 1);
    month = static_cast<int>(monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9);
    year = static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
}

bool IsLeap(int year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int DaysInMonth(int year, int month) {
    static constexpr int kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return (month == 2 && IsLeap(year)) ? 29 : kDays[month - 1];
}

// The date as a plain count of days, continuous across the epoch.
double Linear(DATE date) {
    const double whole = std::trunc(date);
    return date >= 0 ? date : whole - (date - whole);
}

struct Parts {
    int year, month, day, hour, minute, second;
    std::int64_t dayNumber;
};

bool Split(const COleDateTime& value, Parts& parts) {
    if (value.m_status != COleDateTime::valid || !std::isfinite(value.m_dt)) return false;
    const double linear = Linear(value.m_dt);
    if (linear < static_cast<double>(kFirstDay) || linear >= static_cast<double>(kLastDay + 1)) {
        return false;
    }
    const auto seconds = static_cast<std::int64_t>(std::llround(linear * kSecondsPerDay));
    parts.dayNumber = FloorDiv(seconds, kSecondsPerDay);
    if (parts.dayNumber > kLastDay) return false;  // rounded up past 9999-12-31
    const auto secondOfDay = static_cast<int>(seconds - parts.dayNumber * kSecondsPerDay);
    CivilDate(parts.dayNumber, parts.year, parts.month, parts.day);
    parts.hour = secondOfDay / 3600;
    parts.minute = secondOfDay / 60 % 60;
    parts.second = secondOfDay % 60;
    return true;
}

int WeekDay(const Parts& p) {
    return static_cast<int>(((p.dayNumber % 7) + 7 + 6) % 7) + 1;  // day 0 is a Saturday
}

int YearDay(const Parts& p) {
    return static_cast<int>(p.dayNumber - DayNumber(p.year, 1, 1)) + 1;
}

template <class Field>
int Part(const COleDateTime& value, Field field) {
    Parts parts;
    return Split(value, parts) ? field(parts) : AFX_OLE_DATETIME_ERROR;
}

}  // namespace

COleDateTime::COleDateTime(std::time_t time) {
    std::tm local;
    if (!localtime_r(&time, &local)) {
        m_status = invalid;
        return;
    }
    SetDateTime(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                local.tm_sec > 59 ? 59 : local.tm_sec);  // leap second
}

COleDateTime COleDateTime::GetCurrentTime() {
    return COleDateTime(std::time(nullptr));
}

int COleDateTime::SetDateTime(int year, int month, int day, int hour, int minute, int second) {
    if (year < 100 || year > 9999 || month < 1 || month > 12 || day < 1 ||
        day > DaysInMonth(year, month) || hour < 0 || hour > 23 || minute < 0 || minute > 59 ||
        second < 0 || second > 59) {
        m_dt = 0.0;
        m_status = invalid;
        return m_status;
    }
    const double days = static_cast<double>(DayNumber(year, month, day));
    const double time = (hour * 3600 + minute * 60 + second) / static_cast<double>(kSecondsPerDay);
    m_dt = days >= 0 ? days + time : days - time;
    m_status = valid;
    return m_status;
}

int COleDateTime::GetYear() const {
    return Part(*this, [](const Parts& p) { return p.year; });
}
int COleDateTime::GetMonth() const {
    return Part(*this, [](const Parts& p) { return p.month; });
}
int COleDateTime::GetDay() const {
    return Part(*this, [](const Parts& p) { return p.day; });
}
int COleDateTime::GetHour() const {
    return Part(*this, [](const Parts& p) { return p.hour; });
}
int COleDateTime::GetMinute() const {
    return Part(*this, [](const Parts& p) { return p.minute; });
}
int COleDateTime::GetSecond() const {
    return Part(*this, [](const Parts& p) { return p.second; });
}
int COleDateTime::GetDayOfWeek() const {
    return Part(*this, WeekDay);
}
int COleDateTime::GetDayOfYear() const {
    return Part(*this, YearDay);
}

bool COleDateTime::operator<(const COleDateTime& other) const {
    return Linear(m_dt) < Linear(other.m_dt);
}

CString COleDateTime::Format(const char* format) const {
    if (m_status == null) return CString();
    Parts parts;
    if (!Split(*this, parts)) return CString("Invalid DateTime");
    if (!format || !*format) return CString();
    std::tm tm{};
    tm.tm_year = parts.year - 1900;
    tm.tm_mon = parts.month - 1;
    tm.tm_mday = parts.day;
    tm.tm_hour = parts.hour;
    tm.tm_min = parts.minute;
    tm.tm_sec = parts.second;
    tm.tm_wday = WeekDay(parts) - 1;
    tm.tm_yday = YearDay(parts) - 1;
    tm.tm_isdst = -1;
    // strftime reports 0 both for "too small" and for an empty result, so grow up
    // to a bound and then accept the empty text.
    std::vector<char> buffer(256);
    for (;;) {
        const size_t n = std::strftime(buffer.data(), buffer.size(), format, &tm);
        if (n > 0) return CString(buffer.data(), static_cast<int>(n));
        if (buffer.size() >= (size_t{1} << 20)) return CString();
        buffer.resize(buffer.size() * 2);
    }
}

CTime::CTime(int year, int month, int day, int hour, int minute, int second, int dst) {
    std::tm tm{};
    tm.tm_year = year - 1900;
    tm.tm_mon = month - 1;
    tm.tm_mday = day;
    tm.tm_hour = hour;
    tm.tm_min = minute;
    tm.tm_sec = second;
    tm.tm_isdst = dst;
    m_time = std::mktime(&tm);
}

CTime CTime::GetCurrentTime() {
    return CTime(std::time(nullptr));
}

std::tm CTime::Local() const {
    std::tm local{};
    localtime_r(&m_time, &local);
    return local;
}

int CTime::GetYear() const {
    return Local().tm_year + 1900;
}
int CTime::GetMonth() const {
    return Local().tm_mon + 1;
}
int CTime::GetDay() const {
    return Local().tm_mday;
}
int CTime::GetHour() const {
    return Local().tm_hour;
}
int CTime::GetMinute() const {
    return Local().tm_min;
}
int CTime::GetSecond() const {
    return Local().tm_sec;
}
int CTime::GetDayOfWeek() const {
    return Local().tm_wday + 1;
}
