// Fixed-width text and calendar times.
#include "blockette/seed_utl.h"
#include "platform/calendar.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstdlib>
#include <random>

using namespace quarl; // NOLINT: every test is about it

namespace
{

TEST(Text, LeadingIntIsStrtol)
{
    std::vector<std::string> texts = {"",
                                      "\v\f\r\n\t 1",
                                      "0x1F",
                                      "2147483648",
                                      "-2147483649",
                                      "4294967297",
                                      "9223372036854775800",
                                      "9223372036854775807",
                                      "9223372036854775808",
                                      "-9223372036854775808",
                                      "-9223372036854775809"};
    std::mt19937 random(2);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (int n = static_cast<int>(random() % 24); n > 0; --n)
            text += " +-0123456789123456789A"[random() % (i % 2 ? 23 : 19)];
        texts.push_back(text);
    }
    for (const std::string &text : texts) {
        char *end = nullptr;
        const auto expected = static_cast<int>(std::strtol(text.c_str(), &end, 10));
        std::size_t used = 99;
        EXPECT_EQ(leading_int(text, &used), expected) << text;
        EXPECT_EQ(used, static_cast<std::size_t>(end - text.c_str())) << text;
    }
}

TEST(Time, KnownDates)
{
    const struct {
        int year, doy, hour, minute;
        double seconds, epoch;
    } cases[] = {
        {1970, 1, 0, 0, 0.0, 0.0},
        {1969, 365, 23, 59, 59.5, -0.5},
        {2000, 366, 23, 59, 60.0, 978307200.0}, // second 60 is the next minute
        {2001, 0, 0, 0, 0.0, 978220800.0},      // day 0 is the day before
        {2024, 60, 12, 0, 0.25, 1709208000.25},
        {1900, 60, 0, 0, 0.0, -2203891200.0},      // 1 March: no leap year
        {0, 366, 0, 0, 0.0, -62135683200.0},       // year 0 is a leap year
        {-4713, 328, 12, 0, 0.0, -210866760000.0}, // day 0 of the Julian day count
        {1970, -30, -1, -1, -1.0, -2682061.0},
    };
    for (const auto &c : cases)
        EXPECT_EQ(h2e(c.year, c.doy, c.hour, c.minute, c.seconds), c.epoch) << c.year;
}

TEST(Time, ExtremesDoNotOverflow)
{
    EXPECT_NEAR(h2e(INT_MAX, INT_MAX, INT_MAX, INT_MAX, 0), 6.8e16, 1e15);
    EXPECT_NEAR(h2e(INT_MIN, INT_MIN, INT_MIN, INT_MIN, 0), -6.8e16, 1e15);
}

TEST(SeedTime, ReadsTheLengthsThatItKnows)
{
    const struct {
        const char *text;
        SeedTime t;
    } cases[] = {
        {"2005", {2005}},
        {"2005,123", {2005, 123}},
        {"2005,123,12", {2005, 123, 12}},
        {"2005,123,12:30", {2005, 123, 12, 30}},
        {"2005,123,12:30:15.0001", {2005, 123, 12, 30, 15.0001}},
        {"2005,1,2", {2005, 1}}, // 8 characters hold year and day, whatever follows
        {"2005,1,2:3:4.5", {2005, 1, 2, 3}},
        {"2005 123 12:30:00.0000", {2005}},
        {"", {}},
    };
    for (const auto &c : cases)
        for (const auto &parse : {parse_time, parse_start, parse_end}) {
            const SeedTime t = parse(c.text);
            EXPECT_EQ(std::tie(t.year, t.doy, t.hour, t.minutes, t.sec),
                      std::tie(c.t.year, c.t.doy, c.t.hour, c.t.minutes, c.t.sec))
                << c.text;
        }
}

/// What scanf makes of a time: texts of certain lengths have fewer parts.
SeedTime scanned(const std::string &text)
{
    SeedTime t;
    (void)std::sscanf(text.c_str(), "%d,%d,%d:%d:%lf", &t.year, &t.doy, &t.hour, &t.minutes,
                      &t.sec);
    const std::size_t size = text.size();
    if (size == 4 || size == 8 || size == 11 || size == 14)
        t.sec = 0;
    if (size == 4 || size == 8 || size == 11)
        t.minutes = 0;
    if (size == 4 || size == 8)
        t.hour = 0;
    if (size == 4)
        t.doy = 0;
    return t;
}

TEST(SeedTime, IsReadAsScanfReadsIt)
{
    constexpr std::string_view Whole = "2005,123,12:30:15.0001";
    constexpr std::string_view Letters = ",,::..+- 0123456789\teExXinfa";
    std::mt19937 random(5);
    for (int i = 0; i < 30000; ++i) {
        std::string text(Whole.substr(0, i % 3 == 0 ? Whole.size() : random() % 23));
        for (int left = static_cast<int>(random() % 4); left > 0 && !text.empty(); --left)
            text[random() % text.size()] = Letters[random() % Letters.size()];
        if (i % 7 == 0)
            text.insert(random() % (text.size() + 1), "99999999999999999999");
        const SeedTime found = parse_time(text.c_str());
        const SeedTime t = scanned(text);
        EXPECT_EQ(std::tie(found.year, found.doy, found.hour, found.minutes),
                  std::tie(t.year, t.doy, t.hour, t.minutes))
            << text;
        EXPECT_TRUE(found.sec == t.sec || (std::isnan(found.sec) && std::isnan(t.sec))) << text;
    }
}

TEST(SeedTime, EmptyTimesAreOpenAndYearsBeginAtDayZero)
{
    EXPECT_EQ(start_epoch(""), -9999999999.999);
    EXPECT_EQ(end_epoch(""), 9999999999.999);
    EXPECT_EQ(seed2epoch(""), 9999999999.999);
    for (const auto &epoch : {start_epoch, end_epoch, seed2epoch}) {
        EXPECT_EQ(epoch("1971"), 364 * 86400.0);
        EXPECT_EQ(epoch("1970,002,00:00:01.5"), 86401.5);
        EXPECT_EQ(epoch(" "), h2e(0, 0, 0, 0, 0));
    }
}

} // namespace
