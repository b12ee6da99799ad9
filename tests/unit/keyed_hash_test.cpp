// Hashes of what a volume holds.
#include "platform/keyed_hash.h"

#include <gtest/gtest.h>
#include <map>
#include <quarl/contents.h>
#include <quarl/stages.h>

namespace quarl
{
namespace
{

std::size_t hash_of(std::initializer_list<std::string_view> texts)
{
    HashedContent content;
    for (const std::string_view text : texts)
        content.add(text);
    return content.value();
}

TEST(KeyedHash, CannotBeForeseen)
{
    const HashKeys one = draw_hash_keys();
    const HashKeys other = draw_hash_keys();
    for (std::size_t i = 0; i < one.of_parts.size(); ++i)
        EXPECT_NE(one.of_parts[i], other.of_parts[i]);
    EXPECT_NE(one.of_contents, other.of_contents);
    EXPECT_LT(one.of_contents, HashedContent::Prime);
}

TEST(KeyedHash, TellsContentsApart)
{
    const std::vector<std::size_t> hashes = {
        hash_of({}),
        hash_of({""}),
        hash_of({"", ""}),
        hash_of({std::string_view("\0", 1)}),
        hash_of({std::string_view("\0\0", 2)}),
        hash_of({"a"}),
        hash_of({"a", ""}),
        hash_of({"", "a"}),
        hash_of({"12345678"}),
        hash_of({"123456789"}),
        hash_of({"12345678", "9"}),
    };
    EXPECT_EQ(std::set<std::size_t>(hashes.begin(), hashes.end()).size(), hashes.size());
    EXPECT_EQ(hash_of({"a", "b"}), hash_of({"a", "b"}));
    // What a change of the sign does to a product with an odd number is known whatever the number:
    // here it would be made good by the next coefficient.
    EXPECT_NE(Filter(Fir{'A', {1, 2097152}}).hash(), Filter(Fir{'A', {-1, -2097153}}).hash());
    EXPECT_EQ(Filter(Fir{'A', {0.0}}).hash(), Filter(Fir{'A', {-0.0}}).hash());
}

/// Codes that differ in one place only are spread over few and many buckets.
TEST(KeyedHash, SpreadsCodes)
{
    constexpr std::size_t Buckets = 1024;
    std::map<std::size_t, int> fill;
    const std::string letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";
    for (const char first : letters)
        for (const char last : letters)
            ++fill[ChannelCode("XX", "QRL", "", std::string{first, 'H', last}).hash() % Buckets];
    EXPECT_GT(fill.size(), Buckets / 3);
    for (const auto &[bucket, count] : fill)
        EXPECT_LT(count, 20) << bucket;
}

} // namespace
} // namespace quarl
