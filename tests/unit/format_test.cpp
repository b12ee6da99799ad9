// Formatting against the C library's.
#include "platform/format.h"
#include "platform/out.h"
#include "support/capture.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <limits>
#include <random>

namespace
{

const char *c_argument(const std::string &text) { return text.c_str(); }
template <class T>
requires std::is_arithmetic_v<T> T c_argument(T value) { return value; }

/// Expects `formatted` and snprintf to agree.
template <Literal F, class... Args> void same(const Args &...args)
{
    // Through a pointer: the compiler wants to see formats, and here they are a parameter.
    int (*const reference)(char *, std::size_t, const char *, ...) = std::snprintf;
    char expected[4096];
    reference(expected, sizeof expected, F.text.data(), c_argument(args)...);
    EXPECT_EQ(formatted<F>(args...), expected) << F.text.data();
}

template <class Wide> void same_integers(Wide value)
{
    const int narrow = static_cast<int>(value);
    same<"[%d|%i|%5d|%-5d|%05i|%+d|%+5i|%-+7d|]">(narrow, narrow, narrow, narrow, narrow, narrow,
                                                  narrow, narrow);
    same<"%x %02x %u %03i%20d%2i">(narrow, narrow, narrow, narrow, narrow, narrow);
    same<"%ld %10ld %+021ld">(static_cast<long>(value), static_cast<long>(value),
                              static_cast<long>(value));
    same<"%lu %016lx %-22lu|">(static_cast<unsigned long>(value), static_cast<unsigned long>(value),
                               static_cast<unsigned long>(value));
}

TEST(Format, IntegersAsPrintf)
{
    for (const long value : {0L, 1L, -1L, 9L, 10L, -10L, 999L, 1000L, 9999L, 10000L, 99999999L,
                             100000000L, long{INT_MAX}, long{INT_MIN}, LONG_MAX, LONG_MIN})
        same_integers(value);
    same_integers(UINT64_MAX);
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i)
        same_integers(static_cast<long>(random() >> (random() % 64)));
}

TEST(Format, TextsAsPrintf)
{
    for (const char *text :
         {"", "a", "abcde", "abcdef", "a rather long text of forty characters...", "\t~\x80\xff%d",
          "0123456789012345678901234567890123456789"}) {
        const std::string s = text;
        same<"%s|%5s|%-5s|%.3s|%5.3s|%-5.0s|%20s|%-50s|%.80s|">(s, s, s, s, s, s, s, s, s);
    }
    char field[6] = "ab";
    EXPECT_EQ((formatted<"[%s][%5s][%-5s][%.1s]">(field, field, field, field)),
              "[ab][   ab][ab   ][a]");
    const char full[3] = {'x', 'y', 'z'}; // no terminator: all of it
    EXPECT_EQ((formatted<"%s|%5s">(full, full)), "xyz|  xyz");
    EXPECT_EQ((formatted<"100%% %c%c %s">('a', '\0', std::string_view("no terminator", 2))),
              std::string("100% a\0 no", 10));
}

TEST(Format, RealsAsPrintf)
{
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double value : {0.0, -0.0, 1.0, -1.5, 99999.995, 1e300, -1e-300, infinity, -infinity,
                               std::numeric_limits<double>::quiet_NaN()}) {
        same<"[%f|%6.1lf|%6.2f|%8.4f|%.0f]">(value, value, value, value, value);
        same<"[%+12.5E|%+12.5e|%12.5e|%e|%6.4e|%g|%10.5g]">(value, value, value, value, value,
                                                            value, value);
    }
    EXPECT_EQ(formatted<"%6.2f">(1.5F), "  1.50");
}

TEST(Format, PrintWritesAnySizeInOrder)
{
    const std::string large(3 * Out::Capacity + 1, 'x');
    std::string expected;
    const Captured shown = capture([&] {
        for (int i = 0; i < 30000; ++i) {
            print<"%d,%3s;">(out(), i, "ab");
            expected += std::to_string(i) + ", ab;";
        }
        print<"<%s>%d">(out(), large, 7);
    });
    EXPECT_EQ(shown.out, expected + "<" + large + ">7");
}

TEST(Format, PutTextCutsAndTerminates)
{
    char to[6];
    put_text<"%02i">(to, 5);
    EXPECT_STREQ(to, "05");
    put_text<"%d:%d">(to, 12, 34);
    EXPECT_STREQ(to, "12:34");
    put_text<"%04i,%03i">(to, INT_MIN, 1);
    EXPECT_STREQ(to, "-2147");
}

} // namespace
