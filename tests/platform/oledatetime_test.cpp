#include "platform/oledatetime.h"

#include <gtest/gtest.h>

namespace {

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

}  // namespace
