// The calendar, and <quarl/time.h>: times as text, in ten bytes, and of data records.
#include "platform/calendar.h"

#include <gtest/gtest.h>

#include <cmath>
#include <quarl/records.h>
#include <quarl/time.h>
#include <random>

using namespace quarl; // NOLINT: every test is about it

namespace
{

TEST(Calendar, CountsEveryDayOfItsCycleOnce)
{
    constexpr std::array Lengths{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    std::int64_t days = days_since_1970(1800, 1);
    EXPECT_EQ(days, -62091);
    for (int year = 1800; year < 2201; ++year) {
        const bool leap = year % 4 == 0 && (year % 100 != 0 || year == 2000);
        EXPECT_EQ(days_in_year(year), leap ? 366 : 365) << year;
        int day_of_year = 1;
        for (int month = 1; month <= 12; ++month)
            for (int day = 1; day <= Lengths[month - 1] + (leap && month == 2); ++day, ++days) {
                const Date date = date_of(days);
                ASSERT_EQ(std::tie(date.year, date.month, date.day), std::tie(year, month, day));
                ASSERT_EQ(days_since_1970(year, day_of_year), days);
                const Date same = date_of(year, day_of_year++);
                ASSERT_EQ(std::tie(same.month, same.day), std::tie(month, day));
            }
    }
    for (const int year : {-400'000'000, -4713, 0, 1, 9999, 400'000'000}) {
        const Date date = date_of(days_since_1970(year, 60));
        EXPECT_EQ(std::tie(date.year, date.month), std::tuple(year, date.day == 29 ? 2 : 3));
    }
}

std::string iso_of(std::optional<Time> time) { return time ? iso_text(*time) : ""; }

TEST(Times, AreReadAsTheCalendarHasThem)
{
    const struct {
        std::string_view text, expected;
    } cases[] = {
        {"2021", "2021-01-01T00:00:00.000000Z"},
        {"2021,152", "2021-06-01T00:00:00.000000Z"},
        {"2021,7", "2021-01-07T00:00:00.000000Z"},
        {"2021,152,23", "2021-06-01T23:00:00.000000Z"},
        {"2021,152,23:59", "2021-06-01T23:59:00.000000Z"},
        {"2021,152,1:2:3", "2021-06-01T01:02:03.000000Z"},
        {"2021,152,23:59:58.", "2021-06-01T23:59:58.000000Z"},
        {"2021,152,23:59:58.12", "2021-06-01T23:59:58.120000Z"},
        {"2021,152,23:59:58.1234", "2021-06-01T23:59:58.123400Z"},
        {"2021,152,23:59:58.12345678", "2021-06-01T23:59:58.123456Z"},
        {"2016,366,23:59:60.5000", "2017-01-01T00:00:00.500000Z"},
        {"2024,060,00:00:00.0000", "2024-02-29T00:00:00.000000Z"},
        {"2023,060,00:00:00.0000", "2023-03-01T00:00:00.000000Z"},
        {"1900,060", "1900-03-01T00:00:00.000000Z"},
        {"2000,366", "2000-12-31T00:00:00.000000Z"},
        {"9999,365,23:59:59.9999", "9999-12-31T23:59:59.999900Z"},
        {"0001,001", "0001-01-01T00:00:00.000000Z"},
        // None of these is a time.
        {"0000,001", ""},
        {"2023,366", ""},
        {"1900,366", ""},
        {"2021,000", ""},
        {"2021,152,24:00:00.0000", ""},
        {"2021,152,00:60", ""},
        {"2021,152,00:00:61", ""},
        {"2021,152,00:00:00.00x0", ""},
        {"2021,152,00:00:00.0000x", ""},
        {"2021,152 00:00:00.0000", ""},
        {"2021,152,00:00:00.0000000x", ""},
        {"21,152", ""},
        {"2021,", ""},
        {" 2021", ""},
        {"", ""},
        {"unknown", ""},
    };
    for (const auto &one : cases)
        EXPECT_EQ(iso_of(read_time(one.text)), one.expected) << one.text;
    // A byte that does not belong there is seen wherever it stands.
    const std::string whole = "2021,152,12:34:56.7890";
    for (std::size_t at = 0; at < whole.size(); ++at)
        for (int byte = 0; byte < 256; ++byte) {
            std::string text = whole;
            text[at] = static_cast<char>(byte);
            const bool fits = byte == whole[at] || (std::isdigit(byte) && std::isdigit(whole[at]));
            EXPECT_TRUE(fits || !read_time(text)) << text;
        }
    EXPECT_EQ(read_time_parts("2016,366,23:59:60.5"), (TimeParts{2016, 366, 23, 59, 60, 500'000}));
}

TEST(Times, OfEpochsAreOpenOrNumbers)
{
    EXPECT_EQ(start_seconds(""), Always);
    EXPECT_EQ(end_seconds(""), Forever);
    for (const auto &in_seconds : {start_seconds, end_seconds}) {
        EXPECT_EQ(in_seconds("1970"), 0.0);
        EXPECT_EQ(in_seconds("1969,365,23:59:59.5"), -0.5);
        EXPECT_TRUE(std::isnan(in_seconds("2024,000")));
    }
    EXPECT_EQ(end_seconds("2499,365"), 16725139200.0);
    for (const char *open : {"2500", "2599,365,23:59:59", "9999,001"})
        EXPECT_EQ(end_seconds(open), Forever) << open;
}

TEST(Times, ComeBackFromEachForm)
{
    std::mt19937_64 random(7);
    for (int i = 0; i < 20'000; ++i) {
        // Within 1900 to 2100, in whole ticks at first.
        const auto ticks = static_cast<std::int64_t>(random() % 63'000'000'000'000);
        const Time time(std::chrono::microseconds((ticks - 22'000'000'000'000) * 100));
        EXPECT_EQ(read_time(seed_text(time)), time);
        for (const std::endian order : {std::endian::big, std::endian::little}) {
            const auto bytes = bytes_of(binary_time(time), order);
            EXPECT_EQ(time_of(read_binary_time({bytes.data(), bytes.size()}, order)), time);
        }
        const Time finer = time + std::chrono::microseconds(random() % 100);
        EXPECT_EQ(time_of(seconds(finer)), finer);
        EXPECT_EQ(time_of(parts_of(finer)), finer);
        EXPECT_EQ(seed_text(finer), seed_text(time));
    }
    EXPECT_EQ(bytes_of({0x1234, 0x56, 7, 8, 9, 0x2211}, std::endian::big),
              (std::array<char, 10>{0x12, 0x34, 0, 0x56, 7, 8, 9, 0, 0x22, 0x11}));
    EXPECT_EQ(read_binary_time("\x12\x34\x01", std::endian::big), (BinaryTime{0x1234, 0x100}));
    for (const BinaryTime &none : {BinaryTime{2024, 0}, BinaryTime{2024, 1, 0, 0, 0, 10'000},
                                   BinaryTime{2023, 366}, BinaryTime{2024, 1, 24}})
        EXPECT_EQ(time_of(none), std::nullopt);
}

TEST(Times, BeyondFourDigitsHaveNoText)
{
    for (const Time time : {Time::min(), Time::max(), time_of(TimeParts{10'000}),
                            time_of(TimeParts{1}) - std::chrono::microseconds(1)}) {
        EXPECT_EQ(iso_text(time), "");
        EXPECT_EQ(seed_text(time), "");
    }
    for (const double none : {std::nan(""), HUGE_VAL, 1e11 * 3, -7e10})
        EXPECT_EQ(time_of(none), std::nullopt) << none;
    for (const double open : {Always, Forever, HUGE_VAL, std::nan("")})
        EXPECT_EQ(time_text(open), "");
    EXPECT_EQ(time_text(1531180800.0), "2018,191");
    EXPECT_EQ(time_text(1531180799.99996), "2018,191");
    EXPECT_EQ(time_text(1531225800.00004), "2018,191,12:30:00.0000");
    EXPECT_EQ(time_text(-0.5), "1969,365,23:59:59.5000");
}

struct DataCase {
    BinaryTime start;
    int samples, factor, multiplier, activity, correction;
    DataRefinement more;
    const char *expected; ///< first, last and next sample
};

/// A header as it is after the reading: a correction that was to be applied is in its fraction.
blk_dh_t header_of(const DataCase &c)
{
    blk_dh_t header;
    header.year = c.start.year;
    header.doy = c.start.day_of_year;
    header.hour = c.start.hour;
    header.minutes = c.start.minute;
    header.sec_int = c.start.second;
    header.sec_frac = c.start.fraction + (c.activity & 2 ? 0 : c.correction);
    header.nsamps = c.samples;
    header.rate_f = c.factor;
    header.rate_m = c.multiplier;
    header.activity = c.activity;
    header.time_cor = c.correction;
    return header;
}

TEST(DataTimes, TakeAllThatIsSaid)
{
    constexpr BinaryTime Noon{2024, 61, 12, 0, 0, 5000};
    constexpr BinaryTime Midnight{2016, 366, 23, 59, 58, 0};
    constexpr BinaryTime Within{2016, 366, 23, 59, 60, 5000};
    const DataCase cases[] = {
        {Noon, 3, 20, 1, 0, 0, {}, "12:00:00.500000 12:00:00.600000 12:00:00.650000"},
        {Noon, 2, 20, -3, 0, 0, {}, "12:00:00.500000 12:00:00.650000 12:00:00.800000"},
        {Noon, 2, -10, -3, 0, 0, {}, "12:00:00.500000 12:00:30.500000 12:01:00.500000"},
        {Noon, 2, -1, 3, 0, 0, {}, "12:00:00.500000 12:00:00.833333 12:00:01.166667"},
        {Noon, 9, 0, 1, 0, 0, {}, "12:00:00.500000 12:00:00.500000 12:00:00.500000"},
        {Noon, 0, 20, 1, 0, 0, {}, "12:00:00.500000 12:00:00.500000 12:00:00.500000"},
        {Noon, 1, 1, 1, 0, -6000, {}, "11:59:59.900000 11:59:59.900000 12:00:00.900000"},
        {Noon, 1, 1, 1, 2, -6000, {}, "12:00:00.500000 12:00:00.500000 12:00:01.500000"},
        {Noon, 2, 1, 1, 0, 0, {-37, 8.0}, "12:00:00.499963 12:00:00.624963 12:00:00.749963"},
        // A minute of 61 s ends in the second sample, 23:59:60 counts as 00:00:00.
        {Midnight, 3, 1, 1, 0x10, 0, {}, "23:59:58.000000 00:00:00.000000 00:00:00.000000"},
        {Midnight, 4, 1, 1, 0x10, 0, {}, "23:59:58.000000 00:00:00.000000 00:00:01.000000"},
        {Within, 2, 1, 1, 0x10, 0, {}, "00:00:00.500000 00:00:00.500000 00:00:01.500000"},
        {Midnight, 2, 1, 1, 0x20, 0, {}, "23:59:58.000000 00:00:00.000000 00:00:01.000000"},
        {Noon, 61, 1, 1, 0x10, 0, {}, "12:00:00.500000 12:01:00.500000 12:01:00.500000"},
        {Noon, 5, 1, 1, 0x30, 0, {}, "12:00:00.500000 12:00:04.500000 12:00:05.500000"},
    };
    for (const DataCase &c : cases) {
        const auto times = data_times(header_of(c), c.more);
        ASSERT_TRUE(times) << c.expected;
        EXPECT_EQ(iso_text(times->start).substr(11, 15) + ' ' +
                      iso_text(times->end).substr(11, 15) + ' ' +
                      iso_text(times->next).substr(11, 15),
                  c.expected);
    }
}

TEST(DataTimes, AreNoneWhereTheHeaderHasNone)
{
    for (const BinaryTime &none :
         {BinaryTime{2024, 0}, BinaryTime{2024, 1, 0, 0, 0, 10'000}, BinaryTime{2023, 366},
          BinaryTime{0, 1}, BinaryTime{2024, 1, 0, 0, 0, -1}, BinaryTime{2024, 1, -1}})
        EXPECT_FALSE(data_times(header_of({none, 1, 1, 1, 0, 0, {}, ""})));
    // What takes ages has no end that could be told.
    const auto times = data_times(header_of({{2024, 1}, 32767, -32768, -32768, 0, 0, {}, ""}));
    EXPECT_EQ(iso_text(times->end), "");
    const DataCase slow{{2024, 1}, 2, 1, 1, 0, 0, {0, 1e-300}, ""};
    EXPECT_EQ(iso_text(data_times(header_of(slow), slow.more)->end), "");
}

} // namespace
