#include "compose/files.h"
#include "compose/sample.h"

#include <gtest/gtest.h>

TEST(Sample, FileIsWhatTheGeneratorMakes)
{
    const std::string made = sample_volume();
    EXPECT_LE(made.size(), 65536U);
    EXPECT_TRUE(made == read_file(QUARL_SOURCE_DIR "/examples/sample.seed"))
        << "run make_sample examples/sample.seed";
}
