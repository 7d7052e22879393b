#include "platform/oledatetime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace {

// Runs the test body in a given time zone and restores the previous one.
class ScopedTimeZone {
  public:
    explicit ScopedTimeZone(const char* zone) {
        const char* old = std::getenv("TZ");
        m_had = old != nullptr;
        if (m_had) m_old = old;
        setenv("TZ", zone, 1);
        tzset();
    }
    ~ScopedTimeZone() {
        if (m_had) {
            setenv("TZ", m_old.c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

  private:
    bool m_had = false;
    std::string m_old;
};

void ExpectParts(const COleDateTime& t, int y, int mo, int d, int h, int mi, int s) {
    EXPECT_EQ(t.GetYear(), y);
    EXPECT_EQ(t.GetMonth(), mo);
    EXPECT_EQ(t.GetDay(), d);
    EXPECT_EQ(t.GetHour(), h);
    EXPECT_EQ(t.GetMinute(), mi);
    EXPECT_EQ(t.GetSecond(), s);
}

TEST(COleDateTimeTest, KnownDates) {
    EXPECT_EQ(COleDateTime(1899, 12, 30, 0, 0, 0).m_dt, 0.0);
    EXPECT_EQ(COleDateTime(1970, 1, 1, 0, 0, 0).m_dt, 25569.0);
    EXPECT_EQ(COleDateTime(2000, 2, 29, 12, 0, 0).m_dt, 36585.5);
    EXPECT_EQ(COleDateTime(100, 1, 1, 0, 0, 0).m_dt, -657434.0);
    EXPECT_EQ(COleDateTime(9999, 12, 31, 0, 0, 0).m_dt, 2958465.0);

    const COleDateTime leap(36585.5);
    ExpectParts(leap, 2000, 2, 29, 12, 0, 0);
    EXPECT_EQ(leap.GetDayOfWeek(), 3);  // a Tuesday
    EXPECT_EQ(leap.GetDayOfYear(), 60);
    EXPECT_EQ(COleDateTime(0.0).GetDayOfWeek(), 7);  // 1899-12-30, a Saturday
    EXPECT_EQ(COleDateTime(2001, 12, 31, 0, 0, 0).GetDayOfYear(), 365);
    EXPECT_EQ(COleDateTime(2004, 12, 31, 0, 0, 0).GetDayOfYear(), 366);
}

TEST(COleDateTimeTest, FormatAndLocalTimeConversions) {
    const COleDateTime t(2024, 3, 5, 7, 8, 9);
    EXPECT_EQ(t.Format("%Y-%m-%d %H:%M:%S %a %j"), "2024-03-05 07:08:09 Tue 065");
    EXPECT_EQ(t.Format(""), "");
    const std::string wide(600, 'x');
    EXPECT_EQ(t.Format((wide + "%Y").c_str()).GetLength(), 604);

    {
        ScopedTimeZone utc("UTC");
        ExpectParts(COleDateTime(std::time_t{0}), 1970, 1, 1, 0, 0, 0);
        ExpectParts(COleDateTime(std::time_t{951825600}), 2000, 2, 29, 12, 0, 0);
        EXPECT_EQ(CTime(2000, 2, 29, 12, 0, 0).GetTime(), 951825600);
        EXPECT_EQ(CTime(1970, 1, 1, 0, 0, 0).GetTime(), 0);
        EXPECT_EQ(CTime(951825600).GetDayOfWeek(), 3);
    }
    {
        ScopedTimeZone tokyo("JST-9");  // nine hours east, no daylight saving
        ExpectParts(COleDateTime(std::time_t{0}), 1970, 1, 1, 9, 0, 0);
        const CTime noon(2000, 2, 29, 12, 0, 0);
        EXPECT_EQ(noon.GetTime(), 951825600 - 9 * 3600);
        EXPECT_EQ(noon.GetHour(), 12);
        EXPECT_EQ(noon.GetDay(), 29);
    }
}

}  // namespace
