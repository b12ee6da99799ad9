#include "compose/files.h"
#include "compose/sample.h"
#include "platform/elog.h"
#include "platform/inflate.h"
#include "support/compressed.h"
#include "support/process.h"

#include "support/capture.h"
#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>
#include <unistd.h>

namespace
{

using namespace std::string_literals;

/// All that comes out of a compressed file, and how it ends.
struct Inflated {
    std::string bytes;
    std::string reason; ///< of the fault; empty when there was none
    bool operator==(const Inflated &) const = default;
};

class Inflate : public testing::Test
{
protected:
    ~Inflate() override { std::filesystem::remove(path_); }

    Outcome run_on(const std::string &bytes)
    {
        setenv("QUARL_PFPATH", QUARL_SOURCE_DIR "/etc", 1);
        write_file(path_, bytes);
        return run(QUARL_PROGRAM, {path_}, STDIN_FILENO);
    }

    Inflated inflate(const std::string &file)
    {
        write_file(path_, file);
        const auto stream = gz_cat(path_.c_str());
        Inflated all;
        std::array<char, 40000> block;
        ssize_t count = 0;
        while ((count = stream->read(block.data(), block.size())) > 0)
            all.bytes.append(block.data(), static_cast<std::size_t>(count));
        all.reason = elog_take_reason();
        EXPECT_EQ(count < 0, !all.reason.empty());
        EXPECT_EQ(stream->read(block.data(), block.size()), 0) << "after the end";
        return all;
    }

    const std::string path_ =
        std::filesystem::temp_directory_path() / ("inflate." + std::to_string(getpid()));
};

TEST_F(Inflate, AnyFormatListsLikeThePlainFile)
{
    const Outcome plain = run_on(sample_volume());
    for (const char *filter : Filters) {
        const Outcome outcome = run_on(compressed(sample_volume(), filter));
        EXPECT_EQ(outcome.out, plain.out) << filter;
        EXPECT_EQ(outcome.err, plain.err) << filter;
    }
}

TEST_F(Inflate, CutFilesKeepWhatCameBefore)
{
    const std::string plain = sample_volume();
    for (const std::string filter : {"gzip", "xz", "lzma", "bzip2", "zstd", "lz4"}) {
        const std::string file = compressed(plain, filter.c_str());
        const bool to_the_byte = filter == "gzip" || filter == "xz" || filter == "lzma";
        std::size_t before = 0;
        for (std::size_t cut = 7; cut < file.size(); cut += 97) {
            const Inflated part = inflate(file.substr(0, cut));
            EXPECT_TRUE(plain.starts_with(part.bytes)) << filter << cut;
            EXPECT_NE(part.reason, "") << filter << cut;
            if (to_the_byte && cut > 300) {
                EXPECT_EQ(part.reason, "truncated " + filter + " input") << cut;
                EXPECT_GT(part.bytes.size(), before) << filter << cut;
            }
            before = part.bytes.size();
        }
        const Inflated all_but_one = inflate(file.substr(0, file.size() - 1));
        EXPECT_TRUE(!to_the_byte || all_but_one.bytes == plain) << filter;
    }
}

TEST_F(Inflate, NoFlippedBitGoesUnnoticed)
{
    const Inflated whole = {sample_volume(), ""};
    for (const char *filter : {"gzip", "xz", "bzip2"}) {
        const std::string file = compressed(whole.bytes, filter);
        for (std::size_t at = 6; at < file.size(); at += 31) {
            std::string damaged = file;
            damaged[at] = static_cast<char>(damaged[at] ^ 1 << at % 8);
            const Inflated part = inflate(damaged);
            EXPECT_TRUE(part == whole || part.reason != "") << filter << at;
        }
    }
}

TEST_F(Inflate, MembersAndWhatSurroundsThem)
{
    const std::string one = compressed("one", "gzip");
    const std::string two = compressed("two", "gzip");
    std::string wrong_sum = one;
    ++wrong_sum[wrong_sum.size() - 8];
    std::string wrong_length = one;
    ++wrong_length[wrong_length.size() - 4];
    const std::pair<std::string, Inflated> cases[] = {
        {one + two, {"onetwo", ""}},
        {one + std::string(70000, '\0'), {"one", ""}},
        {one + std::string(512, '\0') + two, {"onetwo", ""}},
        {one + "one", {"one", "trailing garbage ignored"}},
        {one + two.substr(0, 9), {"one", "truncated gzip input"}},
        {wrong_sum, {"one", "incorrect data check"}},
        {wrong_length, {"one", "incorrect length check"}},
        {compressed("", "gzip"), {"", ""}},
        {"\x1f", {"\x1f", ""}},
        {"\x1f\x8b", {"", "truncated gzip input"}},
        {"\x1f\x8b\x09 no gzip", {"", "unknown compression method"}},
        {"BZh is not enough for bzip2", {"", "damaged compressed data"}},
    };
    for (const auto &[file, expected] : cases) {
        const Inflated all = inflate(file);
        EXPECT_EQ(all.bytes, expected.bytes) << expected.reason;
        EXPECT_EQ(all.reason, expected.reason) << expected.bytes;
    }
}

TEST_F(Inflate, ReadErrorsKeepTheirNumber)
{
    for (const char *mark : {"\x1f\x8b", "]\0\0", "BZh"}) {
        const auto inflater = new_inflater(-1, {mark, 3});
        char byte = 0;
        EXPECT_EQ(inflater->read(&byte, 1), -1);
        EXPECT_EQ(errno, EBADF);
        EXPECT_EQ(elog_take_reason(), "");
        EXPECT_EQ(inflater->read(&byte, 1), 0);
    }
}

TEST_F(Inflate, DamageIsToldBehindTheListing)
{
    const std::string file = compressed(sample_volume(), "gzip");
    const std::string half = file.substr(0, file.size() / 2);
    const Outcome plain = run_on(inflate(half).bytes);
    const Outcome outcome = run_on(half);
    EXPECT_EQ(outcome.out, plain.out);
    EXPECT_EQ(outcome.err, plain.err + "quarl: input read error: truncated gzip input\n");
}

} // namespace
