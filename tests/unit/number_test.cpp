// Our conversions against those of the C library: any difference in a bit or a byte is a fault.
#include "platform/number.h"
#include "platform/read_number.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

using namespace quarl; // NOLINT: every test is about it

namespace
{

using Random = std::mt19937_64;

constexpr std::uint64_t Seed = 20260704;

/// Cases per generator; QUARL_NUMBER_ROUNDS asks for another number.
int rounds()
{
    const char *asked = std::getenv("QUARL_NUMBER_ROUNDS");
    return asked ? std::atoi(asked) : 15'000;
}

int below(Random &random, int limit)
{
    return static_cast<int>(random() % static_cast<std::uint64_t>(limit));
}

int between(Random &random, int low, int high) { return low + below(random, high - low + 1); }

double with_sign(Random &random, double value) { return random() % 2 == 0 ? value : -value; }

double neighbour(Random &random, double value)
{
    const auto bits = std::bit_cast<std::int64_t>(value) + between(random, -3, 3);
    return with_sign(random, std::bit_cast<double>(bits));
}

/// What printf writes.
[[gnu::format(printf, 1, 2)]] std::string library_text(const char *format, ...)
{
    std::array<char, 512> text{};
    std::va_list arguments;
    va_start(arguments, format);
    const int size = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    return {text.data(), static_cast<std::size_t>(size)};
}

double any_bits(Random &random) { return std::bit_cast<double>(random()); }

double denormal(Random &random)
{
    return with_sign(random, std::bit_cast<double>(random() >> between(random, 12, 63)));
}

double near_power_of_ten(Random &random)
{
    const std::string text = "1e" + std::to_string(between(random, -323, 308));
    return neighbour(random, std::strtod(text.c_str(), nullptr));
}

double near_power_of_two(Random &random)
{
    return neighbour(random, std::ldexp(1.0, between(random, -1070, 1023)));
}

/// A number of few digits and its neighbours, as header fields give it.
double short_decimal(Random &random)
{
    const std::string text =
        std::to_string(random() % 10'000'000) + "e" + std::to_string(between(random, -16, 6));
    const double value = std::strtod(text.c_str(), nullptr);
    return random() % 4 == 0 ? neighbour(random, value) : with_sign(random, value);
}

/// Odd multiples of negative powers of two: halves at every number of decimals.
double exact_tie(Random &random)
{
    const auto odd = static_cast<double>(random() >> between(random, 30, 63)) * 2 + 1;
    return with_sign(random, std::ldexp(odd, -between(random, 1, 22)));
}

/// (k + 0.5) * 10^p: exact ties among large numbers, near ties among fractions.
double decimal_tie(Random &random)
{
    const std::string text = std::to_string(random() >> between(random, 20, 63)) + "5e" +
                             std::to_string(between(random, -20, 12));
    return neighbour(random, std::strtod(text.c_str(), nullptr));
}

double whole_number(Random &random)
{
    return with_sign(random, static_cast<double>(random() >> between(random, 0, 63)));
}

double special(Random &random)
{
    using Limits = std::numeric_limits<double>;
    constexpr std::array Values{0.0,
                                Limits::infinity(),
                                Limits::quiet_NaN(),
                                Limits::max(),
                                Limits::min(),
                                Limits::denorm_min(),
                                0x1p52,
                                0x1p53,
                                1e16};
    return std::copysign(Values[random() % Values.size()], random() % 2 == 0 ? 1.0 : -1.0);
}

struct Generator {
    const char *name;
    double (*make)(Random &random);
};

constexpr std::array Generators{
    Generator{"any_bits", any_bits},
    Generator{"denormal", denormal},
    Generator{"near_power_of_ten", near_power_of_ten},
    Generator{"near_power_of_two", near_power_of_two},
    Generator{"short_decimal", short_decimal},
    Generator{"exact_tie", exact_tie},
    Generator{"decimal_tie", decimal_tie},
    Generator{"whole_number", whole_number},
    Generator{"special", special},
};

template <class Put> std::string written(Put put)
{
    // Exactly the promised room on the heap: the address sanitizer sees a byte too many.
    static const std::unique_ptr<char[]> Text(new char[Real_Room]);
    return {Text.get(), put(Text.get())};
}

/// Empty when all four conversions write what printf writes, else the two texts.
std::string put_difference(double value, int precision)
{
    std::string all;
    const auto compare = [&](const std::string &expected, auto put) {
        const std::string found = written(put);
        if (found != expected)
            all += "expected " + expected + ", found " + found + "; ";
    };
    compare(library_text("%.*f", precision, value),
            [&](char *to) { return put_fixed(to, value, precision); });
    compare(library_text("%.*e", precision, value),
            [&](char *to) { return put_scientific(to, value, precision, 'e'); });
    compare(library_text("%.*E", precision, value),
            [&](char *to) { return put_scientific(to, value, precision, 'E'); });
    compare(library_text("%.*g", precision, value),
            [&](char *to) { return put_general(to, value, precision); });
    return all;
}

/// Empty when read_real returns what strtod returns.
std::string read_difference(const std::string &text)
{
    char *end = nullptr;
    const double expected = std::strtod(text.c_str(), &end);
    // A copy without a terminator: reading on behind the text would be seen.
    const std::vector<char> field(text.begin(), text.end());
    std::size_t used = 0;
    const double found = read_real({field.data(), field.size()}, &used);
    if (std::bit_cast<std::uint64_t>(found) == std::bit_cast<std::uint64_t>(expected) &&
        used == static_cast<std::size_t>(end - text.c_str()))
        return "";
    return "'" + text + "' expected " +
           library_text("%a (%d characters), found %a (%d)", expected,
                        static_cast<int>(end - text.c_str()), found, static_cast<int>(used));
}

/// Empty when scan_real returns what scanf returns.
std::string scan_difference(const std::string &text)
{
    double expected = 0;
    double found = 0;
    const bool reads = std::sscanf(text.c_str(), "%lf", &expected) == 1;
    const std::vector<char> field(text.begin(), text.end());
    if (scan_real({field.data(), field.size()}, &found) == reads &&
        std::bit_cast<std::uint64_t>(found) == std::bit_cast<std::uint64_t>(expected))
        return "";
    return library_text("'%s' expected %d %a, found %a", text.c_str(), reads, expected, found);
}

/// A field as volumes hold it, a text that reads back, or one with as many digits as there are.
std::string number_text(Random &random)
{
    const double value = Generators[random() % Generators.size()].make(random);
    switch (below(random, 8)) {
    case 0:
        return library_text("%.17g", value);
    case 1:
        return library_text("%.*e", below(random, 60), value);
    case 2:
        return library_text("%a", value);
    case 3:
        return library_text("%.*f", below(random, 40), value).substr(0, 255);
    case 4:
        return library_text("%14.*e", between(random, 5, 9), value);
    case 5:
        return library_text("%+.5E", value);
    case 6:
        return library_text("%10.6f", std::fmod(value, 1000.0));
    default:
        return library_text("%*llu.%llue%d", below(random, 24),
                            static_cast<unsigned long long>(random() >> below(random, 64)),
                            static_cast<unsigned long long>(random() >> below(random, 64)),
                            between(random, -50, 50));
    }
}

void mutate(Random &random, std::string *text)
{
    constexpr std::string_view Alphabet = "0123456789+-.eEdD xXpPaAfFinNtTyY()\t";
    const char with = Alphabet[random() % Alphabet.size()];
    const std::size_t at = random() % (text->size() + 1);
    const int kind = at < text->size() ? below(random, 3) : 0;
    if (kind == 0)
        text->insert(at, 1, with);
    else if (kind == 1)
        text->erase(at, 1);
    else
        (*text)[at] = with;
}

std::string mutated_text(Random &random)
{
    constexpr std::array Odd{"inf",     "-INFINITY", "nan(12ab)", "+nan", "0x1.8p3", "-0x.p1",
                             " 0XFFp9", " .",        "1e",        "1e+",  "infi",    ""};
    std::string text = random() % 4 == 0 ? Odd[random() % Odd.size()] : number_text(random);
    for (int left = between(random, 1, 4); left > 0; --left)
        mutate(random, &text);
    return text;
}

/// Just between two doubles: only all the digits tell which one is nearer.
std::string midway_text(Random &random)
{
    const double value = std::abs(any_bits(random));
    if (!(value >= 1e-5 && value < 1e300))
        return library_text("%.*e", between(random, 17, 21), value);
    const long double sum = static_cast<long double>(value) + std::nextafter(value, HUGE_VAL);
    return library_text("%.*Le", between(random, 17, 80), sum / 2);
}

using MakeText = std::string (*)(Random &random);

class WriteReal : public testing::TestWithParam<Generator>
{
};

class ReadReal : public testing::TestWithParam<MakeText>
{
};

} // namespace

TEST_P(WriteReal, AsPrintf)
{
    Random random(Seed);
    for (int i = 0; i < rounds(); ++i) {
        const double value = GetParam().make(random);
        // Mostly the precisions that listings use.
        const int precision = below(random, random() % 4 == 0 ? 21 : 8);
        ASSERT_EQ(put_difference(value, precision), "")
            << GetParam().name << ", seed " << Seed << ", case " << i << ": "
            << library_text("%a, precision %d", value, precision);
    }
}

INSTANTIATE_TEST_SUITE_P(Number, WriteReal, testing::ValuesIn(Generators),
                         [](const auto &test) { return test.param.name; });

TEST_P(ReadReal, AsStrtodAndScanf)
{
    Random random(Seed);
    for (int i = 0; i < 3 * rounds(); ++i) {
        const std::string text = GetParam()(random);
        ASSERT_EQ(read_difference(text) + scan_difference(text), "")
            << "seed " << Seed << ", case " << i;
    }
}

std::string reader_name(const testing::TestParamInfo<ReadReal::ParamType> &test)
{
    constexpr const char *Names[] = {"NumberText", "MutatedText", "MidwayText"};
    return Names[test.index];
}

INSTANTIATE_TEST_SUITE_P(Number, ReadReal, testing::Values(number_text, mutated_text, midway_text),
                         reader_name);

TEST(Number, ReadsOddFieldsAsStrtodAndScanf)
{
    for (const char *text : {"",
                             " ",
                             "   \t",
                             "+",
                             "-",
                             ".",
                             "-.",
                             "+.e5",
                             "-.5",
                             "5.",
                             "1e",
                             "1e+",
                             "1E-",
                             "1.5E+02",
                             "1.5E 02",
                             "1.5D+02",
                             "-0",
                             "-0.0e99",
                             "0x",
                             "0x.",
                             "0xg",
                             "0x1p",
                             "0x1p-3",
                             "00x1",
                             "-0X.8P+1z",
                             "inf",
                             "-Inf",
                             "infinit",
                             "INFINITYx",
                             "nan",
                             "-nan",
                             "nan(",
                             "nan(12)",
                             "i",
                             "n",
                             "- 1",
                             "+-1",
                             "--1",
                             "\v\f\r\n 7 ",
                             "1e400",
                             "-1e400",
                             "1e-400",
                             "-4.9e-324",
                             "2.4703282292062327e-324",
                             "2.4703282292062328e-324",
                             "2.2250738585072011e-308",
                             "1.7976931348623158e308",
                             "1.7976931348623159e308",
                             "9007199254740993",
                             "9007199254740992.5e1",
                             "9007199254740993e-22",
                             "1e22",
                             "1e23",
                             "1e-22",
                             "1e-23",
                             "0e999999999999999999999",
                             "1e99999999999999999999",
                             "1e-99999999999999999999",
                             "18446744073709551616",
                             "99999999999999999999e-5",
                             "0000000000000000000000001.50e0"})
        EXPECT_EQ(read_difference(text) + scan_difference(text), "");
    EXPECT_EQ(read_difference("0." + std::string(240, '0') + "1e240"), "");
    EXPECT_EQ(read_difference("1" + std::string(240, '0') + "e-240"), "");
    EXPECT_EQ(read_difference("1" + std::string(240, '0') + ".5"), "");
    EXPECT_EQ(read_difference("0." + std::string(20'000, '0') + "1e20001"), "");
}
