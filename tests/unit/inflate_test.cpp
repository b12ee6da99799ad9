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
#include <zlib.h>

namespace
{

using namespace std::string_literals;

/// All that comes out of a compressed file, and how it ends.
struct Inflated {
    std::string bytes;
    std::string reason; ///< of the fault; empty when there was none
    bool operator==(const Inflated &) const = default;
};

/// What zlib makes of one gzip member; the standard of what comes out in front of a fault.
Inflated by_zlib(std::string file)
{
    constexpr int Gzip_Only = 16;
    z_stream stream = {};
    EXPECT_EQ(inflateInit2(&stream, MAX_WBITS + Gzip_Only), Z_OK);
    Inflated all{std::string(1U << 18, '\0'), ""};
    stream.next_in = reinterpret_cast<Bytef *>(file.data());
    stream.avail_in = static_cast<uInt>(file.size());
    stream.next_out = reinterpret_cast<Bytef *>(all.bytes.data());
    stream.avail_out = static_cast<uInt>(all.bytes.size());
    const int status = inflate(&stream, Z_NO_FLUSH);
    all.bytes.resize(stream.total_out);
    if (status != Z_STREAM_END)
        all.reason = status == Z_DATA_ERROR ? stream.msg : "truncated gzip input";
    inflateEnd(&stream);
    return all;
}

/// A gzip member of "one" that has the header fields of `flags`, 0x20 beyond those there are.
std::string member(int flags, std::size_t extra_size = 300)
{
    const std::string plain = compressed("one", "gzip");
    std::string head = plain.substr(0, 10);
    head[3] = static_cast<char>(flags);
    if ((flags & 0x04) != 0) {
        head += static_cast<char>(extra_size & 0xff);
        head += static_cast<char>(extra_size >> 8);
        head += std::string(extra_size, '\0');
    }
    for (const int text : {0x08, 0x10})
        head += (flags & text) != 0 ? "name or comment\0"s : "";
    const uLong sum = crc32_z(0, reinterpret_cast<const Bytef *>(head.data()), head.size());
    if ((flags & 0x02) != 0)
        head += {static_cast<char>(sum & 0xff), static_cast<char>(sum >> 8 & 0xff)};
    return head + plain.substr(10);
}

const std::string All_Fields = member(0x1f, 3);

/// Two members; the border of two input blocks lies `at` bytes behind the second one's begin.
std::string across_blocks(std::size_t at)
{
    constexpr std::size_t Block = 65536;
    return member(0x04, Block - at - member(0x04, 0).size()) + All_Fields;
}

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

TEST_F(Inflate, GzipFaultsAreAsByZlib)
{
    const std::string volume = sample_volume();
    for (const std::string &file :
         {compressed(volume.substr(0, 3000), "gzip"), member(0x1e, 5), compressed("", "gzip")}) {
        for (std::size_t cut = 2; cut <= file.size(); ++cut)
            EXPECT_EQ(inflate(file.substr(0, cut)), by_zlib(file.substr(0, cut))) << cut;
        for (std::size_t bit = 16; bit < file.size() * 8; bit += 3) {
            std::string damaged = file;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ 1 << bit % 8);
            const Inflated part = inflate(damaged);
            const Inflated expected = by_zlib(damaged);
            EXPECT_EQ(part.reason, expected.reason) << bit;
            // Codes that no data uses are noticed when they come up.
            const bool late = expected.reason.ends_with("s set");
            EXPECT_TRUE(late ? part.bytes.starts_with(expected.bytes) : part == expected) << bit;
        }
    }
}

TEST_F(Inflate, GzipHeaders)
{
    for (int flags = 0; flags < 0x40; ++flags)
        EXPECT_EQ(inflate(member(flags)), by_zlib(member(flags))) << flags;
    for (std::size_t at = 0; at <= All_Fields.size(); ++at)
        EXPECT_EQ(inflate(across_blocks(at)), (Inflated{"oneone", ""})) << at;
}

TEST_F(Inflate, SoundGzipIsIsalsAlone)
{
    const std::string sample = compressed(sample_volume(), "gzip");
    const std::string one = compressed("one", "gzip");
    setenv("LD_DEBUG", "files", 1);
    std::vector<std::string> files = {sample, one + std::string(70000, '\0') + one};
    for (std::size_t at = 0; at <= All_Fields.size(); at += 4)
        files.push_back(across_blocks(at));
    for (const std::string &file : files) {
        const std::string loaded = run_on(file).err;
        EXPECT_NE(loaded.find("libisal.so.2"), std::string::npos);
        EXPECT_EQ(loaded.find("libz.so.1"), std::string::npos);
    }
    EXPECT_NE(run_on(sample.substr(0, 1000)).err.find("libz.so.1"), std::string::npos);
    unsetenv("LD_DEBUG");
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
        {one + std::string(512, '\0') + compressed("", "gzip") + two, {"onetwo", ""}},
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
