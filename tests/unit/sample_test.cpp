#include "compose/files.h"
#include "compose/sample.h"

#include <gtest/gtest.h>
#include <quarl/samples.h>
#include <quarl/volume.h>

TEST(Sample, FileIsWhatTheGeneratorMakes)
{
    const std::string made = sample_volume();
    EXPECT_LE(made.size(), 65536U);
    EXPECT_TRUE(made == read_file(QUARL_SOURCE_DIR "/examples/sample.seed"))
        << "run make_sample examples/sample.seed";
}

TEST(Sample, HoldsSamplesThatCanBe)
{
    quarl::VolumeOptions quiet;
    quiet.message = [](const quarl::Message &) {};
    quarl::Volume volume(QUARL_SOURCE_DIR "/examples/sample.seed", quiet);
    quarl::SampleBuffer buffer;
    int records = 0;
    for (const quarl::Item &item : volume) {
        const auto *header = item.get<quarl::blk_dh_t>();
        if (!header)
            continue;
        const quarl::Samples samples = decode(item, buffer);
        const auto *counts = samples.get<quarl::Integers>();
        ASSERT_TRUE(counts) << item.place().record;
        EXPECT_EQ(samples.size(), samples.expected);
        EXPECT_TRUE(samples.problems.empty()) << samples.problems[0].text;
        const bool is_pressure = header->chan_id == std::string_view("LDO");
        for (const std::int32_t count : *counts)
            EXPECT_LT(std::abs(count - (is_pressure ? 1006632 : 0)), is_pressure ? 100 : 20000);
        ++records;
    }
    EXPECT_EQ(records, 10);
}
