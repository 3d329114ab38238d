#include "System/System/breakpoint.h"
#include "System/System/buildDate.h"
#include "System/System/buildNumber.h"
#include "System/System/buildVersion.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <tuple>

namespace Qel {
namespace {

TEST(BuildDate, ReadsTheCompilersTextsAndSurvivesOthers)
{
    struct {
        std::string date;
        std::string time;
        int numbers[6]; // day, month, year, hour, minute, second
    } const rows[] = {
        {"Feb 03 2005", "09:05:07", {3, 2, 2005, 9, 5, 7}},
        {"Feb  3 2005", "23:59:59", {3, 2, 2005, 23, 59, 59}},
        {"dEC 31 1999", "00:00:00", {31, 12, 1999, 0, 0, 0}},
        {"Foo 12 2001", "1", {12, 12, 2001, 1, 0, 0}},
        {"", "", {0, 12, 0, 0, 0, 0}},
        {std::string(400, '9'), std::string(400, '9'), {-1, 12, -1, -1, -1, -1}}, // -1: any number
    };

    for (auto const &row : rows) {
        SCOPED_TRACE(row.date);
        BuildDate const built(row.date.c_str(), row.time.c_str());
        EXPECT_EQ(built.date, row.date.substr(0, 31));
        EXPECT_EQ(built.time, row.time.substr(0, 31));
        int const numbers[] = {built.day, built.month, built.year, built.hour, built.minute, built.second};
        for (int i = 0; i < 6; ++i) {
            if (row.numbers[i] >= 0) {
                EXPECT_EQ(numbers[i], row.numbers[i]) << i;
            }
        }
    }
}

TEST(BuildNumber, CountsDaysFrom4December2004)
{
    EXPECT_EQ(BuildNumber::computeBuildNumber("Aug 21 2008"), 1356);
    EXPECT_EQ(BuildNumber::computeBuildNumber("Dec 04 2004"), 0);

    // Every day of the years for which a leap year is one in four.
    using namespace std::chrono;
    static constexpr char const *months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    sys_days const origin = 2004y / December / 4;
    for (sys_days day = 1901y / January / 1; day < sys_days(2100y / January / 1); day += days(1)) {
        year_month_day const parts(day);
        char text[16];
        std::snprintf(text, sizeof(text), "%s %2u %d", months[unsigned(parts.month()) - 1],
                      unsigned(parts.day()), int(parts.year()));
        ASSERT_EQ(BuildNumber::computeBuildNumber(text), (day - origin).count()) << text;
    }
}

TEST(BuildNumber, OfTheLibraryStandsFromTheStart)
{
    BuildDate const own;
    EXPECT_GE(own.year, 2024);
    EXPECT_EQ(BuildNumber::getBuildNumber(), BuildNumber::computeBuildNumber(own.date));
    EXPECT_EQ(BuildVersion(1, 1, 52, nullptr).build, BuildNumber::gBuildNumber);

    BuildVersion version;
    version.set(1, 2, 255, "Aug 21 2008");
    EXPECT_EQ(version.release, 255);
    EXPECT_EQ(version.build, 1356);
}

struct OpenBreakpoint : Breakpoint {
    using Breakpoint::setBits;
};

TEST(Breakpoint, ReplacesBitsInsideTheValueOnly)
{
    std::tuple<int, int, int, std::uint32_t> const rows[] = {
        {4, 4, 0x5, 0xFFFFFF5Fu}, {4, 4, 0x1A5, 0xFFFFFF5Fu},
        {0, 32, 0x1234, 0x1234u}, {28, 8, 0, 0x0FFFFFFFu},
        {0, 99, 3, 3u},           {32, 1, 0, 0xFFFFFFFFu},
        {-1, 4, 0, 0xFFFFFFFFu},  {0, 0, 0, 0xFFFFFFFFu},
        {0, -1, 0, 0xFFFFFFFFu},  {31, 1, 0, 0x7FFFFFFFu},
    };
    for (auto const &[position, count, bits, result] : rows) {
        std::uint32_t value = 0xFFFFFFFFu;
        OpenBreakpoint::setBits(value, position, count, bits);
        EXPECT_EQ(value, result) << position << ", " << count;
    }
    int watched = 0;
    EXPECT_FALSE(
        Breakpoint(&watched, 4, Breakpoint::CONDITION_WRITE).set(&watched, 4, Breakpoint::CONDITION_WRITE));
}

} // namespace
} // namespace Qel
