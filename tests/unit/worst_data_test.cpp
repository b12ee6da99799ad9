// Volumes made to cost much: their time, and what is left of repetitions.
#include "bench/worst_data.h"
#include "check/series_ends.h"
#include "html/volume_read.h"
#include "inventory/data_spans.h"
#include "support/check.h"
#include "support/sanitized.h"

#include <ctime>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace
{

using quarl::SeriesSeen;

double processor_time() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

TEST(WorstData, EntriesOfOneRecordNumber)
{
    const double patience = sanitized() ? 10.0 : 1.0; // s; entries times records took 4 s
    for (const char *kind : {"series", "span"}) {
        const std::string bytes = worst_data(kind, 4 << 20);
        const double before = processor_time();
        EXPECT_NE(findings(bytes).find("[" + std::string(kind) + "-index]"), std::string::npos);
        EXPECT_LT(processor_time() - before, patience) << kind;
    }
}

TEST(WorstData, RepeatedDataOverlapOnce)
{
    constexpr int Spans = 300;
    constexpr int Rounds = 20;
    quarl::SpanJoiner joiner;
    for (int i = 0; i < Rounds * Spans; ++i) {
        const double start = 100.0 * (i % Spans);
        joiner.add({start, start + 10, 0.05, i + 1});
    }
    quarl::DataChannel channel;
    joiner.finish(&channel);
    ASSERT_EQ(channel.spans.size(), Spans);
    ASSERT_EQ(channel.overlapping.size(), Spans);
    for (int i = 0; i < Spans; ++i) {
        EXPECT_EQ(channel.overlapping[i].start, 100.0 * i);
        EXPECT_EQ(channel.overlapping[i].end, 100.0 * i + 10);
    }
    EXPECT_EQ(channel.overlaps.count, (Rounds - 1) * Spans);
    EXPECT_EQ(channel.overlaps.record, Spans + 1);
}

/// "first to end" of the data that each series has met, or "-".
std::string met(const std::vector<SeriesSeen> &all)
{
    std::string text;
    for (const SeriesSeen &series : all)
        for (const SeriesSeen::End &end : {series.first, series.last})
            text += end.met ? std::to_string(static_cast<int>(end.start)) + "-" +
                                  std::to_string(static_cast<int>(end.end)) + " "
                            : "none ";
    return text;
}

TEST(WorstData, SeriesMeetTheirChannels)
{
    const auto code = [](const char *network, const char *channel = "BHZ") {
        return quarl::ChannelCode(network, "QRL", "", channel);
    };
    const auto data = [](double start) {
        return SeriesSeen::End{true, true, start, start + 5, 20};
    };
    quarl::SeriesEnds ends;
    ends.meet(1, code("XX"), data(0)); // no entry was there
    for (const char *network : {"XX", "XX", "YY", ""})
        ends.add({code(network), 0, 0, 1, 2, 0});
    ends.add({code("XX", "BHN"), 0, 0, 1, 1, 0});
    ends.meet(1, code("XX"), data(20));
    ends.meet(1, code("XX"), data(10));
    ends.meet(2, code("ZZ"), data(30));
    EXPECT_EQ(met(ends.seen()), "10-25 none 10-25 none none none 10-25 30-35 none none ");
    ends.meet(2, code(""), data(40));
    ends.add({code("XX"), 0, 0, 1, 2, 0}); // meets what comes from here on
    ends.meet(2, code("XX"), data(50));
    EXPECT_EQ(met(ends.seen()),
              "10-25 40-55 10-25 40-55 none 40-45 10-25 30-55 none none none 50-55 ");
}

} // namespace
