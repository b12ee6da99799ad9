// The stages of a response: collected, shared, compared.
#include <quarl/stages.h>

#include <gtest/gtest.h>

namespace quarl
{
namespace
{

Response two_filters(ResponsePool &pool, double gain, const char *unit)
{
    ResponseBuilder builder(pool);
    builder.add(1, Filter(Fir{'B', {.25, .5}}, {1, unit}));
    builder.add(1, Gain{gain, 1.0});
    builder.add(2, Filter(Fir{'B', {.25, .5}}, {1, "V"}));
    builder.add(1, Gain{gain, 1.0});
    return builder.take(20.0);
}

TEST(ResponseBuilder, SharesWhatIsEqual)
{
    ResponsePool pool;
    const Response first = two_filters(pool, 1.0, "V");
    const Response louder = two_filters(pool, 2.0, "V");
    const Response other = two_filters(pool, 1.0, "COUNTS");
    ASSERT_EQ(first.stages.size(), 3U);
    EXPECT_EQ(first.stages, two_filters(pool, 1.0, "V").stages);
    EXPECT_FALSE(first == louder);
    EXPECT_EQ(first.stages[1], louder.stages[1]);
    EXPECT_FALSE(*first.stages[0] == *other.stages[0]);
    EXPECT_EQ(pool.filters.size(), 2U);
    EXPECT_EQ(pool.stages.size(), 6U);
    ResponsePool another;
    const Response equal = two_filters(another, 1.0, "V");
    EXPECT_NE(first.stages[0], equal.stages[0]);
    EXPECT_EQ(first, equal);
    EXPECT_EQ(first.hash(), equal.hash());
}

TEST(Interner, LetsGoWhatNobodyHolds)
{
    const auto bound = [](int value) {
        return Filter(Polynomial{.upper_bound = 1.0 * value, .coefficients = {}});
    };
    Interner<Filter> pool;
    const FilterPtr held = pool(bound(-1));
    for (int i = 0; i < 10000; ++i) {
        EXPECT_NE(pool(bound(i))->hash(), held->hash());
    }
    EXPECT_LT(pool.size(), 1000U);
    EXPECT_EQ(pool(bound(-1)), held);
}

} // namespace
} // namespace quarl
