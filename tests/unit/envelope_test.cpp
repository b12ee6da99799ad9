// Envelopes of samples: steps, gaps, figures, and what a page gets of them.
#include "compose/samples.h"
#include "compose/volume.h"
#include "html/envelope.h"
#include "support/capture.h"
#include "support/samples.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace
{

using html::Envelope;

Samples of(const std::vector<double> &values)
{
    Samples samples;
    samples.values = Doubles(values);
    return samples;
}
Samples of(const std::vector<std::int32_t> &values)
{
    Samples samples;
    samples.values = Integers(values);
    return samples;
}

std::string bytes_of(const std::string &base64)
{
    constexpr std::string_view Digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string bytes;
    std::uint32_t bits = 0;
    int held = 0;
    for (const char c : base64) {
        if (c == '=')
            break;
        bits = bits << 6 | static_cast<std::uint32_t>(Digits.find(c));
        if ((held += 6) >= 8)
            bytes += static_cast<char>(bits >> (held -= 8) & 0xFF);
    }
    return bytes;
}

/// Steps of a packed envelope by their places from the first, "at:least..most ".
std::string unpacked(const html::PackedEnvelope &packed)
{
    const std::string bytes = bytes_of(packed.values);
    std::size_t at = 0;
    const auto number = [&] {
        std::uint64_t value = 0;
        for (int shift = 0; at < bytes.size(); shift += 7) {
            const auto byte = static_cast<unsigned char>(bytes[at++]);
            value |= static_cast<std::uint64_t>(byte & 0x7F) << shift;
            if (byte < 0x80)
                break;
        }
        return static_cast<std::int64_t>(value);
    };
    std::string all;
    std::int64_t place = 0;
    std::int64_t least = 0;
    while (at < bytes.size()) {
        place += number();
        for (std::int64_t left = number(); left > 0; --left) {
            const std::int64_t difference = number();
            least += difference % 2 ? -(difference + 1) / 2 : difference / 2;
            all += std::to_string(place++) + ":" + std::to_string(least);
            if (packed.paired)
                all += ".." + std::to_string(least + number());
            all += " ";
        }
    }
    return all;
}

TEST(Envelope, KeepsSamplesOneByOneWhereTheyAreFew)
{
    Envelope envelope;
    envelope.add(of(std::vector<std::int32_t>{5, -3, 9}), 100.0, 10.0);
    envelope.add(of(std::vector<std::int32_t>{9, 4}), 100.6, 10.0); // behind a gap
    envelope.add(of(std::vector<std::int32_t>{7}), 99.9, 10.0);     // comes late
    const html::PackedEnvelope shown = packed(envelope);
    EXPECT_EQ(unpacked(shown), "0:10 1:8 2:0 3:12 7:12 8:7 ");
    EXPECT_EQ(shown.start, 99.9);
    EXPECT_EQ(shown.step, 0.1);
    EXPECT_EQ(shown.samples, 1);
    EXPECT_EQ(shown.scale, 1.0);
    EXPECT_FALSE(shown.paired);
    EXPECT_EQ(envelope.count(), 6);
    EXPECT_EQ(envelope.least(), -3);
    EXPECT_EQ(envelope.most(), 9);
    EXPECT_DOUBLE_EQ(envelope.mean(), 31.0 / 6);
    EXPECT_DOUBLE_EQ(envelope.rms(), std::sqrt((25 + 9 + 81 + 81 + 16 + 49) / 6.0));
}

TEST(Envelope, JoinsStepsAndLosesNoSpike)
{
    Envelope envelope;
    std::vector<std::int32_t> values(100'000);
    for (std::size_t i = 0; i < values.size(); ++i)
        values[i] = i % 2 == 0 ? -2 : 3;
    values[77'777] = 20'000;
    for (std::size_t i = 0; i < values.size(); i += 400)
        envelope.add(
            of(std::vector<std::int32_t>(values.begin() + static_cast<std::ptrdiff_t>(i),
                                         values.begin() + static_cast<std::ptrdiff_t>(i) + 400)),
            static_cast<double>(i) / 100, 100.0);
    envelope.reduce(1000);
    EXPECT_EQ(envelope.level(), 7);
    EXPECT_EQ(envelope.steps().size(), 782U); // of 128 samples
    for (const Envelope::Step &step : envelope.steps()) {
        EXPECT_EQ(step.least, -2);
        EXPECT_EQ(step.most, step.at == 77'777 / 128 ? 20'000 : 3);
    }
    EXPECT_LT(packed(envelope).values.size(), 3000U);
}

TEST(Envelope, StaysSmallInAPage)
{
    Envelope envelope;
    std::uint32_t random = 1;
    std::vector<std::int32_t> noise(5000);
    for (int i = 0; i < 1728; ++i) { // a day at 100 samples per second
        for (std::int32_t &value : noise)
            value = static_cast<std::int32_t>(random = random * 1664525 + 1013904223);
        envelope.add(of(noise), i * 50.0, 100.0);
        if (envelope.steps().size() > 32'768)
            envelope.reduce(16'384);
    }
    const html::PackedEnvelope shown = packed(envelope);
    EXPECT_LT(shown.values.size(), 60'000U);
    EXPECT_GT(shown.values.size(), 10'000U);
    EXPECT_GT(shown.scale, 65'000); // 32 bits in 16
}

TEST(Envelope, CountsWhatIsClipped)
{
    const auto clipped = [](std::vector<std::int32_t> values) {
        Envelope envelope;
        values.resize(100);
        envelope.add(of(std::vector<std::int32_t>{8, -8, 0}), 0.0, 1.0);
        envelope.add(of(values), 3.0, 1.0);
        return std::lround(envelope.clipped() * 103);
    };
    EXPECT_EQ(clipped(std::vector<std::int32_t>(10, 8)), 0);
    EXPECT_EQ(clipped(std::vector<std::int32_t>(11, 8)), 11);
    EXPECT_EQ(clipped(std::vector<std::int32_t>(30, -8)), 30);
    EXPECT_EQ(clipped(std::vector<std::int32_t>(30, 7)), 0); // not the largest
    Envelope dead;
    dead.add(of(std::vector<std::int32_t>(100, 5)), 0.0, 1.0);
    EXPECT_EQ(dead.clipped(), 0.0);
}

TEST(Envelope, SurvivesAnyNumbers)
{
    constexpr double Huge = std::numeric_limits<double>::max();
    Envelope envelope;
    envelope.add(of(std::vector<double>{std::nan(""), HUGE_VAL}), 0.0, 1.0);
    EXPECT_EQ(envelope.count(), 0);
    envelope.add(of(std::vector<double>{-Huge, std::nan(""), Huge}), 0.0, 1.0);
    envelope.add(of(std::vector<double>{1.0}), -6e10, 1.0);
    envelope.add(of(std::vector<double>{1.0, 2.0, 3.0}), 2.5e11, 1e9); // another rate
    envelope.add(of(std::vector<double>{1.0}), 1e300, 1.0);            // nowhere
    envelope.reduce(1);
    EXPECT_LE(envelope.steps().size(), 2U);
    EXPECT_TRUE(std::isfinite(packed(envelope).scale));
    EXPECT_EQ(envelope.least(), -Huge);
    EXPECT_EQ(unpacked(packed(Envelope())), "");
}

} // namespace
