// The chain of data blockettes: how far it is followed, and what it says of the record.
#include "blockette/chain.h"
#include "blockette/data_header.h"
#include "compose/files.h"
#include "platform/base64.h"
#include "platform/format.h"
#include "support/capture.h"
#include "support/recipe.h"

#include <gtest/gtest.h>
#include <quarl/inventory.h>
#include <quarl/volume.h>
#include <random>

namespace
{

DataBlockettes chain_of(std::string_view bytes)
{
    const auto header = new_dh();
    parse_dh(header.get(), bytes.substr(8, 128));
    DataBlockettes chain;
    read_chain(*header, bytes, &chain);
    return chain;
}

/// "TYPE@OFFSET+BYTES ..." and the remark.
std::string shown(const DataBlockettes &chain)
{
    std::string all;
    for (const DataBlockette &one : chain.list)
        all += formatted<"%d@%d+%d ">(one.type, one.offset, static_cast<int>(one.size));
    return all + chain.remark + (chain.cut ? " (cut)" : "");
}

TEST(Chain, IsFollowedForwardInsideOfTheRecord)
{
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"blk=1001/u4:1 blk=100/f4:1/z4", "1001@48+8 100@56+12 "},
        {"blk=7/u4:1 blk=1001/u4:1", "7@48+4 1001@56+8 "}, // a type of nobody has its head
        // At 60 stands a blockette that names the one before, itself, its own inside, or the end.
        {"blk=7/z8/u2:7/u2:48/z4 first=60",
         "7@60+4 the next blockette, at byte 48, is not behind byte 64"},
        {"blk=7/z8/u2:7/u2:60/z4 first=60",
         "7@60+4 the next blockette, at byte 60, is not behind byte 64"},
        {"blk=7/z8/u2:1001/u2:67/z4 first=60",
         "1001@60+8 the next blockette, at byte 67, is not behind byte 68"},
        {"blk=7/z8/u2:1001/u2:508/z4 first=60 begin=0", "1001@60+8 0@508+4 "},
        {"blk=7/z8/u2:1001/u2:509/z4 first=60 begin=0",
         "1001@60+8 the next blockette, at byte 509, is outside of the record"},
        {"first=47", "the next blockette, at byte 47, is not behind byte 48"},
        {"first=65535", "the next blockette, at byte 65535, is outside of the record"},
        {"blk=500/f4:1/t:2024,001,00:00:00.0000 length=128",
         "500@48+80 blockette 500 at byte 48 is cut (cut)"},
        {"blk=100/f4:1/z4 blk=1001/u4:1 begin=64",
         "100@48+12 1001@60+8 blockette 1001 at byte 60 reaches into the data"},
        // Delays go up to the next blockette, the data, or the end of the record.
        {"blk=405/u2:1/u2:2/u2:3/u1:4 blk=7", "405@48+10 7@59+4 "},
        {"blk=405/u2:1/u2:2 begin=57", "405@48+8 "},
        {"blk=405/u2:1 begin=0 length=128", "405@48+80 "},
        // Opaque data that contradict themselves.
        {"blk=2000/u2:20/u2:30/u4:1/z3/z9", "2000@48+20 blockette 2000 at byte 48 contradicts "
                                            "itself"},
        {"blk=2000/u2:20/u2:18/u4:1/z2/u1:2/a5:a~b~c",
         "2000@48+20 blockette 2000 at byte 48 contradicts itself"},
        {"blk=2000/u2:900/u2:15/u4:1/z3 begin=0",
         "2000@48+464 blockette 2000 at byte 48 is cut (cut)"},
        {"blk=2000/u2:1/u2:15/u4:1/z3", "2000@48+15 blockette 2000 at byte 48 contradicts itself"},
    };
    for (const auto &[words, expected] : cases)
        for (const char *order : {"big", "little"})
            EXPECT_EQ(
                shown(chain_of(parse_recipe(formatted<"data %s order=%s">(words, order)).volume())),
                expected)
                << words;
}

TEST(Chain, FirstOfAKindSpeaksForTheRecord)
{
    const auto said = [](const std::string &words) {
        const DataBlockettes chain = chain_of(parse_recipe("data " + words).volume());
        return formatted<"%.1f %d %d %d">(
            chain.actual_sample_rate.value_or(-1), chain.microseconds.value_or(-1),
            chain.timing_quality.value_or(-1), chain.frame_count.value_or(-1));
    };
    EXPECT_EQ(said("blk=1001/u1:99/i1:-7/z1/u1:7 blk=100/f4:2.5/z4 blk=1001/u4:0 blk=100/z8"),
              "2.5 -7 99 7");
    EXPECT_EQ(said("blk=1000/u1:11/u1:1/u1:9/z1"), "-1.0 -1 -1 -1");
    // What is cut says nothing, but for what is whole.
    EXPECT_EQ(said("length=128 first=122 begin=0 payload=\\x03\\xe9\\x00\\x00"), "-1.0 -1 -1 -1");
}

TEST(Chain, EndsWhateverTheBytesAre)
{
    std::mt19937 random(3);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(128 + random() % 900, '\0');
        for (char &c : bytes) // small numbers are types and offsets
            c = static_cast<char>(random() % 3 == 0 ? random() : random() % 4);
        const DataBlockettes chain = chain_of(bytes);
        std::size_t behind = 48;
        for (const DataBlockette &one : chain.list) {
            ASSERT_GE(one.offset, behind);
            behind = static_cast<std::size_t>(one.offset) + one.size;
            ASSERT_LE(behind, bytes.size());
        }
    }
}

TEST(Chain, IsReadWhenAnItemIsAsked)
{
    const std::string path = testing::TempDir() + "chain_test." + std::to_string(getpid());
    write_file(path, parse_recipe("records 512\nheader A\n033 001|M~\n"
                                  "data b1000=11,1,9 b1001=3\n"
                                  "data b1000=11,1,9\n"
                                  "data b1000=11,1,9 b1001=5 order=little\n")
                         .volume());
    Volume volume(path);
    std::string seen;
    for (const Item &item : volume) {
        const DataBlockettes &chain = item.data_blockettes();
        seen += formatted<"%d:%d/%d ">(item.type(), static_cast<int>(chain.list.size()),
                                       chain.timing_quality.value_or(0));
        EXPECT_EQ(&chain, &item.data_blockettes());
    }
    unlink(path.c_str());
    EXPECT_EQ(seen, "33:0/0 -1:2/3 -1:1/0 -1:2/5 -2:0/0 ");
}

TEST(Chain, MakesTheTimesOfSpansPrecise)
{
    const std::string path = testing::TempDir() + "chain_test." + std::to_string(getpid());
    const std::string record = "data b1000=11,1,9 rate=10,1 samples=10 blk=100/f4:8/z4 ";
    write_file(path, parse_recipe(record + "blk=1001/u1:1/i1:-25/z2\n" + record +
                                  "time=2024,001,00:00:01.2500 blk=1001/u1:1/i1:-25/z2\n")
                         .volume());
    Inventory inventory;
    Volume volume(path);
    for (const Item &item : volume)
        inventory.add(item);
    unlink(path.c_str());
    const DataChannel &channel = inventory.data_channels().at(0);
    ASSERT_EQ(channel.spans.size(), 1); // a gap at 10 Hz
    EXPECT_DOUBLE_EQ(channel.spans[0].start, 1704067199.999975);
    EXPECT_DOUBLE_EQ(channel.spans[0].end, 1704067202.499975);
    EXPECT_EQ(channel.rate, 8);
}

TEST(Base64, FillsTheLastGroup)
{
    const std::pair<std::string_view, std::string_view> cases[] = {{"", ""},
                                                                   {"f", "Zg=="},
                                                                   {"fo", "Zm8="},
                                                                   {"foo", "Zm9v"},
                                                                   {"foob", "Zm9vYg=="},
                                                                   {"\xff\xfe\xfd", "//79"},
                                                                   {{"\0\0\x3e", 3}, "AAA+"}};
    for (const auto &[bytes, expected] : cases) {
        std::string text(12, '\0');
        text.resize(static_cast<std::size_t>(put_base64(text.data(), bytes) - text.data()));
        EXPECT_EQ(text, expected);
    }
}

} // namespace
