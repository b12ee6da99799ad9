// Inputs that are given up: what was read before is whole. And how far a reading is.
#include "compose/files.h"
#include "compose/sample.h"
#include "support/compressed.h"
#include "support/process.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <quarl/volume.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace quarl; // NOLINT: every test is about it

namespace
{

class GivenUp : public testing::Test
{
protected:
    ~GivenUp() override { std::filesystem::remove(path_); }

    [[nodiscard]] const std::string &file(std::string_view bytes) const
    {
        write_file(path_, bytes);
        return path_;
    }

    const std::string path_ =
        std::filesystem::temp_directory_path() / ("given_up." + std::to_string(getpid()));
};

/// Where items of a volume begin and, at least, end.
using Spans = std::vector<std::pair<std::int64_t, std::int64_t>>;

/// Reads to the end, which is kept in `*end`.
Spans read_all(Volume volume, FileEnd *end)
{
    Spans spans;
    for (const Item &item : volume)
        if (const auto *last = item.get<FileEnd>())
            *end = *last;
        else
            spans.emplace_back(item.place().offset, item.place().offset + item.length());
    return spans;
}

TEST_F(GivenUp, AtAnyByte)
{
    const std::string sample = sample_volume();
    std::string said;
    VolumeOptions options;
    options.message = [&](const Message &message) { said = full_text(message); };
    FileEnd end;
    const Spans whole = read_all(Volume(file(sample), options), &end);
    EXPECT_TRUE(end.complete());
    for (std::size_t n = 1; n < sample.size(); n += 61) {
        Pipe pipe;
        write_all(pipe.write_end, sample.substr(0, n));
        options.interrupted = [&] {
            int waiting = 0;
            return ioctl(pipe.read_end, FIONREAD, &waiting) != 0 || waiting == 0;
        };
        const std::string path = "/proc/self/fd/" + std::to_string(pipe.read_end);
        const Spans spans = read_all(Volume(path, options), &end);
        ASSERT_LT(spans.size(), whole.size());
        EXPECT_TRUE(std::equal(spans.begin(), spans.end(), whole.begin()));
        const std::int64_t reached = spans.empty() ? 0 : spans.back().second;
        EXPECT_LE(reached, end.statistics.bytes);
        EXPECT_LE(end.statistics.bytes,
                  std::min(static_cast<std::int64_t>(n), whole[spans.size()].first));
        constexpr int Headers = 16; // of the records that the item behind it may run over
        EXPECT_GT(whole[spans.size()].second + Headers, static_cast<std::int64_t>(n));
        EXPECT_TRUE(end.stopped && !end.cut && !end.failed) << n;
        EXPECT_EQ(said, "Interrupted at byte " + std::to_string(end.statistics.bytes) +
                            " of input file #0");
    }
}

TEST_F(GivenUp, ProgressOfAFile)
{
    const std::string sample = sample_volume();
    const std::string packed = compressed(sample, "gzip");
    for (const std::string &bytes : {sample, packed}) {
        VolumeOptions quiet;
        quiet.message = [](const Message &) {};
        Volume volume(file(bytes), quiet);
        EXPECT_EQ(volume.progress().bytes, 0);
        while (volume.next()->type() != End_Of_File)
            ;
        const Progress progress = volume.progress();
        EXPECT_EQ(progress.bytes, std::ssize(sample));
        EXPECT_EQ(progress.stored, std::ssize(bytes));
        EXPECT_EQ(progress.size, std::ssize(bytes));
    }
}

} // namespace
