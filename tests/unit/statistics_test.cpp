// The catalogue of blockette types and the statistics.
#include "blockette/sdblknam.h"
#include "listing/summary.h"
#include "support/capture.h"
#include "volume/count.h"

#include <gtest/gtest.h>

#include <climits>

namespace
{

TEST(Catalogue, KnowsNamesAndSizes)
{
    const struct {
        int type, size;
        const char *name;
    } cases[] = {{-1, 48, "Data"},
                 {5, 14, "Field Volume Identifier "},
                 {202, 0, "Log-Z Event Detection"},
                 {1000, 8, "Data Only SEED"}};
    for (const auto &c : cases) {
        EXPECT_EQ(sdminsz(c.type), c.size) << c.type;
        EXPECT_EQ(sdblknam(c.type), c.name);
    }
    int known = 0;
    for (int type = -10; type < 1100; ++type)
        capture([&] { known += sdblknam(type) != "Unknown Type"; });
    EXPECT_EQ(known, 49);
    const Captured shown = capture([] {
        EXPECT_EQ(sdminsz(999), 0);
        EXPECT_EQ(sdblknam(999), "Unknown Type");
    });
    EXPECT_EQ(shown.err, "quarl: sdminsz: Unknown blockette type 999\n"
                         "quarl: sdblknam: Unknown blockette type 999\n");
}

template <class Blockette> void count_length(int type, int length)
{
    Blockette record;
    record.length = length;
    count_blk(&record, type);
}

TEST(Statistics, TableAndShares)
{
    init_count();
    Captured shown = capture([] {
        for (const int length : {100, 120, 110})
            count_length<blk_052_t>(52, length);
        count_length<blk_034_t>(34, 670);
        count_length<blk_dh_t>(-1, 4096);
        for (const int type : {45, 0, 498})
            count_blk(nullptr, type);
        summary(out(), 3, statistics(8192, 1));
    });
    EXPECT_EQ(shown.out, "\nBlockette Summary -- file #3\n"
                         "    1 (000)          0 Unknown Type blockettes\n"
                         "    1 (034)        670 Units Abbreviation blockettes\n"
                         "    1 (045)          0 Response List Dictionary blockettes\n"
                         "    3 (052)        330 Channel Identifier blockettes\n"
                         "    1 (498)          0 Unknown Type blockettes\n"
                         "    1             4096 Data blockettes\n\n"
                         "Total Parameter Info  :       1000 =   12.2%\n"
                         "Total Data            :       4096 =   50.0%\n"
                         "Total Wasted          :       3096 =   37.8%\n");
    shown = capture([] {
        init_count();
        summary(out(), 4, statistics(0, 0));
    });
    EXPECT_EQ(shown.out, "");
}

TEST(Statistics, TotalsAreWiderThanAnIntAndTypesOutsideTheTableShowNowhere)
{
    init_count();
    const Captured shown = capture([] {
        errno = EIO; // left by something else
        for (const int type : {499, -2})
            count_blk(nullptr, type);
        for (int i = 0; i < 3; ++i) {
            count_length<blk_dh_t>(-1, INT_MAX);
            count_length<blk_074_t>(74, INT_MAX);
        }
        summary(out(), 0, statistics(10000000000, 1));
    });
    EXPECT_EQ(shown.err, "quarl: Unknown block type = 499\nquarl: Unknown block type = -2\n");
    EXPECT_EQ(shown.out, "\nBlockette Summary -- file #0\n"
                         "    3 (074) 6442450941 Time Series Index blockettes\n"
                         "    3       6442450941 Data blockettes\n\n"
                         "Total Parameter Info  : 6442450941 =   64.4%\n"
                         "Total Data            : 6442450941 =   64.4%\n"
                         "Total Wasted          : -2884901882 =  -28.8%\n");
}

} // namespace
