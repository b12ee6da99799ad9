// Lists, arrays, sorted sets and the dictionaries made of them.
#include "platform/containers.h"
#include "platform/text.h"
#include "support/capture.h"
#include "volume/handle.h"

#include <gtest/gtest.h>

#include <random>

namespace
{

constexpr double Infinity = std::numeric_limits<double>::infinity();

TEST(Tbl, HoldsWhatWasStoredLast)
{
    auto tbl = newtbl<std::string>(2);
    for (const int index : {-1, 0, 5, 6, INT_MAX, INT_MIN})
        EXPECT_EQ(gettbl(tbl, index), nullptr) << index;
    settbl(tbl, -1, std::string("ignored"));
    settbl(tbl, 5, std::string("old"));
    settbl(tbl, 5, std::string("new"));
    settbl(tbl, 3, std::string());
    EXPECT_EQ(tbl.size(), 6U);
    EXPECT_EQ(*gettbl(tbl, 5), "new");
    EXPECT_EQ(*gettbl(tbl, 3), ""); // stored, unlike an empty slot
    EXPECT_EQ(gettbl(tbl, 4), nullptr);
}

rec_len_t channel(const char *stn, const char *chan, const char *loc, double start, double end)
{
    rec_len_t element;
    copy_text(element.stn, stn);
    copy_text(element.chan_id, chan);
    copy_text(element.loc_id, loc);
    element.start = start;
    element.end = end;
    return element;
}

/// What the set does, done by going through all elements with the comparison.
struct BruteForce {
    std::vector<rec_len_t> present;

    bool add(const rec_len_t &element)
    {
        for (const rec_len_t &other : present)
            if (rec_len_cmp(element, other) == 0)
                return false;
        present.push_back(element);
        return true;
    }
    const rec_len_t *find(const rec_len_t &key) const
    {
        const rec_len_t *best = nullptr;
        for (const rec_len_t &other : present)
            if (rec_len_cmp(key, other) == 0 && (!best || other.start > best->start))
                best = &other;
        return best;
    }
};

TEST(Stbl, IsTheListGoneThroughWithTheComparison)
{
    std::mt19937 random(3);
    const double times[] = {-Infinity, -9999999999.999, -0.5, 9999999999.999, Infinity, NAN};
    const auto time = [&](std::size_t special) {
        return random() % 8 == 0 ? times[random() % special] : static_cast<double>(random() % 25);
    };
    for (int round = 0; round < 2000; ++round) {
        RecList set;
        BruteForce list;
        for (int i = 0; i < 30; ++i) {
            // Spans may be empty and reversed as well.
            const double start = random() % 100 == 0 ? NAN : time(4);
            const rec_len_t element =
                channel("ABC", random() % 4 ? "BHZ" : "BHN", "", start, time(6));
            ASSERT_EQ(set.add(element), list.add(element)) << round;
        }
        for (int half = -4; half < 54; ++half) {
            const double at = half / 2.0;
            for (const char *chan : {"BHZ", "BHN", "BHE"}) {
                const rec_len_t key = channel("ABC", chan, "", at, 0);
                const rec_len_t *expected = list.find(key);
                const rec_len_t *found = set.find(key.code(), at);
                ASSERT_EQ(found == nullptr, expected == nullptr) << round << " " << at;
                if (found && !std::isnan(found->start)) {
                    ASSERT_EQ(found->start, expected->start) << round << " " << at;
                }
            }
        }
    }
}

TEST(Dictionaries, FormatsAreComplainedAboutWhenTheyComeTwice)
{
    FmtList formats;
    const auto update = [&](int id, const char *name) {
        blk_030_t b030;
        copy_text(b030.name, name);
        b030.format_id = id;
        return capture([&] { update_fmt_list(formats, b030); }).err;
    };
    EXPECT_EQ(update(7, "Steim"), "");
    EXPECT_EQ(update(7, "Steim"), "quarl: Data format id code #7 used twice for Steim\n");
    EXPECT_EQ(update(7, "Steim2"),
              "quarl: Data format id code #7 used for both Steim and Steim2\n");
    EXPECT_EQ(update(-7, "x") + update(-7, "x"), "");
    EXPECT_EQ(*gettbl(formats, 7), "Steim2");
}

TEST(Dictionaries, StationsAreOrderedByCodeThenSpan)
{
    EXPECT_LT(order_cmp({"A", 9, 10}, {"B", 0, 10}), 0);
    EXPECT_EQ(order_cmp({"A", 9, 10}, {"A", 0, 10}), 0);
    EXPECT_GT(order_cmp({"A", 10, 11}, {"A", 0, 10}), 0);
}

TEST(Dictionaries, ChannelsAreFoundInTheirSpan)
{
    RecList channels;
    FmtList formats;
    settbl(formats, 1, std::string("Steim"));
    blk_052_t b052;
    const auto update = [&](const char *start, const char *end, int exponent, int format) {
        copy_text(b052.loc_id, "");
        copy_text(b052.chan_id, "BHZ");
        copy_text(b052.start_date, start);
        copy_text(b052.end_date, end);
        b052.record_length = exponent;
        b052.format_id = format;
        char stn[Station_Size] = "ABC";
        return capture([&] { update_rec_list(channels, stn, formats, b052); }).err;
    };
    run().Tapefile = 3;
    EXPECT_EQ(update("1970,002", "1970,003", 12, 1), "");
    EXPECT_EQ(update("1970,002,12", "1970,009", 9, 1), ""); // starts inside: not entered
    EXPECT_EQ(update("1970,003", "1970,004", 0, 2),
              "quarl: No data format for format id 2 sta=ABC chan=BHZ loc= File #3\n");
    EXPECT_EQ(update("1970,005", "", 99, 1), "");
    EXPECT_EQ(update("", "1970,001", -3, 1), "");
    const struct {
        double epoch;
        int found, length;
        const char *format;
    } cases[] = {{-1e9, 1, 2, "Steim"},     {-0.001, 1, 2, "Steim"},        {0, 0, 77, "before"},
                 {86400, 1, 4096, "Steim"}, {172799.999, 1, 4096, "Steim"}, {172800, 1, 2, ""},
                 {259200, 0, 77, "before"}, {1e9, 1, 1 << 30, "Steim"}};
    for (const auto &c : cases) {
        blk_dh_t header;
        copy_text(header.stn_id, "ABC");
        copy_text(header.chan_id, "BHZ");
        copy_text(header.format, "before");
        header.length = 77;
        header.epoch = c.epoch;
        EXPECT_EQ(lookup_rec_list(channels, &header), c.found) << c.epoch;
        EXPECT_EQ(header.length, c.length) << c.epoch;
        EXPECT_STREQ(header.format, c.format) << c.epoch;
        copy_text(header.loc_id, "00");
        EXPECT_EQ(lookup_rec_list(channels, &header), 0) << c.epoch;
    }
    run().Tapefile = 0;
}

} // namespace
