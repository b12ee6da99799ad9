// Rules of responses: for each a volume that breaks it and no other, and one that nearly does.
#include "support/check.h"

#include <gtest/gtest.h>

namespace
{

// Where the blockettes of the sound response stand.
enum Part {
    Roots,
    Roots_Gain,
    Digitiser,
    Digitiser_Rate,
    Digitiser_Gain,
    Filter,
    Filter_Rate,
    Filter_Gain,
    Sensitivity
};

void set(SoundVolume &volume, Part part, std::string text)
{
    volume.response[part].second = std::move(text);
}
void drop(SoundVolume &volume, Part part) { volume.response.erase(volume.response.begin() + part); }

B053 roots() { return {.factor = 6.2839, .zeros = {{0, 0}}, .poles = {{-1, 1}, {-1, -1}}}; }
B061 filter() { return {.stage = 3, .symmetry = 'B', .coefficients = {.25, .5}}; }

void takes(SoundVolume &volume, const char *unit)
{
    volume.dictionaries[3].second = b034(1, unit, "Unit of stage 1");
}

/// One polynomial stage, and one for the whole channel.
void be_polynomial(SoundVolume &volume, bool whole)
{
    const auto text = [](int stage) {
        std::string all =
            b062({.stage = stage, .output_units = 3, .coefficients = {{1, 0}, {2, 0}}});
        return all.replace(71, 4, "002"); // three characters, as writers have it
    };
    volume.response = {{62, text(1)}};
    if (whole)
        volume.response.push_back({62, text(0)});
}

/// The last filter stands in the response dictionary, with `middle` as its second coefficient. It
/// is that of an epoch behind which another one stands.
void refer(SoundVolume &volume, const char *middle)
{
    volume.channels.push_back(volume.channels[0]);
    volume.channels[0].end = volume.channels[1].start = "2024,001";
    volume.dictionaries.push_back({41, std::string("0001F~B0030030002+2.5000000E-01") + middle});
    volume.response[Filter] = {60, "0103010001"};
}

const CheckCase Cases[] = {
    {"response-unwanted",
     [](SoundVolume &v) {
         v.channels[0].rate = 0;
         v.data.clear();
         v.series.clear();
         v.response = {{58, b058(1, 1, 0)}, {58, b058(0, 1, 0)}};
     },
     [](SoundVolume &v) {
         v.channels[0].rate = 0;
         v.data.clear();
         v.series.clear();
         v.response.clear();
     }},
    {"response-missing", [](SoundVolume &v) { v.response.clear(); },
     [](SoundVolume &v) {
         v.response.clear();
         v.channels[0].flags = "CGH";
     }},
    {"sensor-units", [](SoundVolume &v) { takes(v, "M"); },
     [](SoundVolume &v) { takes(v, "nm/s"); }},
    {"unit-name", [](SoundVolume &v) { v.dictionaries[4].second = b034(2, "FURLONG", "A unit"); },
     [](SoundVolume &v) { v.dictionaries[4].second = b034(2, "mV", "A unit"); }},
    {"stage-sequence",
     [](SoundVolume &v) {
         set(v, Filter, b061({.stage = 4, .symmetry = 'B', .coefficients = {.25, .5}}));
         set(v, Filter_Rate, b057(4, 80, 4, 0, 0, 0));
         set(v, Filter_Gain, b058(4, 1, 0));
     },
     [](SoundVolume &v) { // stage 3 in front of stage 2
         std::rotate(v.response.begin() + Digitiser, v.response.begin() + Filter,
                     v.response.end() - 1);
     }},
    {"stage-repeated",
     [](SoundVolume &v) { // as it looks when the 052 between two responses is lost
         const auto again = v.response;
         v.response.insert(v.response.end(), again.begin(), again.end());
     },
     [](SoundVolume &v) { // a filter that continues
         set(v, Filter, b061({.stage = 3, .symmetry = 'A', .coefficients = {.25, .5}}));
         v.response.insert(v.response.begin() + Filter_Rate,
                           {61, b061({.stage = 3, .symmetry = 'A', .coefficients = {.25}})});
     }},
    {"stage-repeated", [](SoundVolume &v) { v.response.insert(v.response.begin(), v.response[0]); },
     [](SoundVolume &v) { set(v, Roots_Gain, b058(1, 1000, 1)); }},
    {"signal-units", [](SoundVolume &v) { v.channels[0].units_signal = 2; },
     [](SoundVolume &v) {
         v.dictionaries.push_back({34, b034(4, "m/s", "Velocity")});
         v.channels[0].units_signal = 4;
     }},
    {"decimation-factor", [](SoundVolume &v) { set(v, Filter_Rate, b057(3, 80, 0, 0, 0, 0)); },
     [](SoundVolume &v) { set(v, Filter_Rate, b057(3, 80, 4, 0, 0, 0)); }},
    {"pole-unstable",
     [](SoundVolume &v) {
         B053 r = roots();
         r.poles = {{1, 1}, {1, -1}};
         r.factor = 6.3636;
         set(v, Roots, b053(r));
     },
     [](SoundVolume &v) {
         B053 r = roots();
         r.poles = {{0, 0}};
         r.factor = 1;
         set(v, Roots, b053(r));
     }},
    {"stage-units",
     [](SoundVolume &v) {
         B061 other = filter();
         other.input_units = 2;
         set(v, Filter, b061(other));
     },
     [](SoundVolume &v) {
         v.dictionaries.push_back({34, b034(4, "v", "Volts")});
         set(v, Digitiser, b054({.stage = 2, .input_units = 4, .output_units = 3}));
     }},
    {"stage-incomplete", [](SoundVolume &v) { drop(v, Digitiser_Rate); },
     [](SoundVolume &v) {
         drop(v, Digitiser_Rate);
         drop(v, Digitiser); // its gain is left
         B053 r = roots();
         r.output_units = 3;
         set(v, Roots, b053(r));
     }},
    {"stage-filterless", [](SoundVolume &v) { drop(v, Filter); },
     [](SoundVolume &v) { set(v, Filter, b061({.stage = 3, .symmetry = 'B'})); }},
    {"list-only",
     [](SoundVolume &v) {
         v.response = {{55, b055(1, 1, 3, {{.1, 1, 0, 0, 0}, {9, 1, 0, 0, 0}})},
                       {58, b058(1, 7, 1)},
                       {58, b058(0, 7, 1)}};
     },
     [](SoundVolume &v) {
         v.response = {{55, b055(1, 1, 3, {{.1, 1, 0, 0, 0}, {9, 1, 0, 0, 0}})},
                       {58, b058(1, 7, 1)},
                       {58, b058(2, 1, 1)},
                       {58, b058(0, 7, 1)}};
     }},
    {"output-units",
     [](SoundVolume &v) {
         B061 other = filter();
         other.output_units = 2;
         set(v, Filter, b061(other));
     },
     [](SoundVolume &v) { v.dictionaries[5].second = b034(3, "count", "Counts"); }},
    {"stage-gain", [](SoundVolume &v) { drop(v, Roots_Gain); },
     [](SoundVolume &v) { set(v, Roots_Gain, b058(1, -1000, 1)); }},
    {"sensitivity-missing", [](SoundVolume &v) { drop(v, Sensitivity); },
     [](SoundVolume &v) { be_polynomial(v, true); }},
    {"sensitivity-value", [](SoundVolume &v) { set(v, Sensitivity, b058(0, 0, 1)); },
     [](SoundVolume &v) {
         be_polynomial(v, true);
         v.response.push_back({58, b058(0, 0, 1)});
     }},
    {"sensitivity-frequency", [](SoundVolume &v) { set(v, Sensitivity, b058(0, 1e5, 10.1)); },
     [](SoundVolume &v) { set(v, Sensitivity, b058(0, 1e5, 10)); }},
    {"sensitivity-product", [](SoundVolume &v) { set(v, Sensitivity, b058(0, 1.06e5, 1)); },
     [](SoundVolume &v) { set(v, Sensitivity, b058(0, 1.04e5, 1)); }},
    {"sensitivity-value", [](SoundVolume &v) { set(v, Sensitivity, b058(0, -1e5, 1)); },
     [](SoundVolume &v) { set(v, Sensitivity, b058(0, 1e5, 1)); }},
    {"zero-at-origin", [](SoundVolume &v) { set(v, Sensitivity, b058(0, 1e5, 0)); },
     [](SoundVolume &v) {
         set(v, Sensitivity, b058(0, 1e5, 0));
         B053 r = roots();
         r.zeros = {{-9, 0}};
         r.factor = 3.75;
         set(v, Roots, b053(r));
     }},
    {"polynomial-missing", [](SoundVolume &v) { be_polynomial(v, false); },
     [](SoundVolume &v) { be_polynomial(v, true); }},
    {"decimation-rate", [](SoundVolume &v) { set(v, Filter_Rate, b057(3, 80, 5, 0, 0, 0)); },
     [](SoundVolume &v) {
         set(v, Digitiser_Rate, b057(2, 80.5, 1, 0, 0, 0));
         set(v, Filter_Rate, b057(3, 80.5, 4, 0, 0, 0));
     }},
    {"decimation-chain", [](SoundVolume &v) { set(v, Digitiser_Rate, b057(2, 81, 1, 0, 0, 0)); },
     [](SoundVolume &v) { set(v, Digitiser_Rate, b057(2, 80.05, 1, 0, 0, 0)); }},
    {"normalization",
     [](SoundVolume &v) {
         B053 r = roots();
         r.factor *= 1.06;
         set(v, Roots, b053(r));
     },
     [](SoundVolume &v) {
         B053 r = roots();
         r.factor *= 1.04;
         set(v, Roots, b053(r));
     }},
    {"conjugates",
     [](SoundVolume &v) {
         B053 r = roots();
         r.poles[1].imag = -1.01;
         set(v, Roots, b053(r));
     },
     [](SoundVolume &v) {
         B053 r = roots();
         r.poles[1].imag = -1.0001;
         set(v, Roots, b053(r));
     }},
    {"fir-gain",
     [](SoundVolume &v) {
         B061 f = filter();
         f.coefficients[1] = .53;
         set(v, Filter, b061(f));
     },
     [](SoundVolume &v) {
         B061 f = filter();
         f.coefficients[1] = .51;
         set(v, Filter, b061(f));
     }},
    {"fir-gain", [](SoundVolume &v) { refer(v, "+5.3000000E-01"); },
     [](SoundVolume &v) { refer(v, "+5.0000000E-01"); }},
};

TEST(CheckResponseRules, EachIsBrokenAlone)
{
    for (const CheckCase &each : Cases)
        expect_alone(each);
}

/// What a code stands for is looked at in the end, when it is defined behind the epochs that use
/// it.
TEST(CheckResponseRules, UnitsThatAreNamedLater)
{
    SoundVolume volume;
    volume.channels.push_back(volume.channels[0]);
    volume.channels[0].end = volume.channels[1].start = "2024,001";
    volume.response.push_back({34, b034(1, "M", "Named behind the response")});
    EXPECT_EQ(rules_broken(volume.bytes()), "code-redefined record-type sensor-units");
    volume.dictionaries.erase(volume.dictionaries.begin() + 3);
    EXPECT_EQ(rules_broken(volume.bytes()), "header-order record-type sensor-units");
    EXPECT_NE(findings(volume.bytes()).find("'M', expected is M/S +1"), std::string::npos);
}

/// Digital stages without any decimation break both rules: one cannot be had alone.
TEST(CheckResponseRules, NoDecimationAtAll)
{
    SoundVolume volume;
    drop(volume, Filter_Rate);
    drop(volume, Digitiser_Rate);
    EXPECT_EQ(rules_broken(volume.bytes()), "decimation-missing stage-incomplete");
}

} // namespace

std::span<const CheckCase> response_cases() { return Cases; }
