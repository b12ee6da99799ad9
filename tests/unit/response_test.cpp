// Responses with known closed forms, and those that are refused.
#include <quarl/response.h>

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace quarl
{
namespace
{

using namespace std::complex_literals;
using Complex = std::complex<double>;
using Stages = std::vector<std::pair<int, std::vector<Part>>>;

constexpr double Pi = std::numbers::pi;
constexpr double Nan = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();

Part filter(FilterShape shape) { return std::make_shared<const Filter>(std::move(shape)); }
Part roots(char type, double a0, double fn, std::vector<Complex> zeros, std::vector<Complex> poles)
{
    return filter(PolesZeros{type, a0, fn, std::move(zeros), std::move(poles)});
}
Part coefficients(std::vector<double> above, std::vector<double> below = {}, char type = 'D')
{
    return filter(Coefficients{type, std::move(above), std::move(below)});
}
Part fir(char symmetry, std::vector<double> c) { return filter(Fir{symmetry, std::move(c)}); }
Part list(std::vector<ResponseList::Entry> entries)
{
    return filter(ResponseList{std::move(entries)});
}
Part polynomial(std::vector<double> c)
{
    Polynomial shape;
    shape.coefficients = std::move(c);
    return filter(shape);
}
Part generic() { return filter(GenericResponse{{{1.0, 20.0}}}); }
Part rate(double hertz, double correction = 0.0, double delay = 0.0)
{
    return Decimation{.input_rate = hertz, .factor = 1, .delay = delay, .correction = correction};
}

Response response(const Stages &stages)
{
    ResponsePool pool;
    ResponseBuilder builder(pool);
    for (const auto &[number, parts] : stages)
        for (const Part &part : parts)
            builder.add(number, part);
    return builder.take(20.0);
}

void expect_near(Complex expected, Complex actual)
{
    if (std::isnan(expected.real())) {
        EXPECT_TRUE(std::isnan(actual.real())) << actual;
        return;
    }
    EXPECT_LT(std::abs(actual - expected), 1e-12 * std::abs(expected))
        << actual << " instead of " << expected;
}

const Part One = Gain{1.0, 1.0};
const Part Ten = Gain{10.0, 1.0};

struct Form {
    const char *name;
    Stages stages;
    double frequency;
    Complex expected;
    std::size_t warnings = 0;
    EvaluationOptions options{};
};

const std::vector<ResponseList::Entry> Bend = {{4.0, 100.0, -170.0}, {1.0, 1.0, 170.0}};
const std::vector<double> Corner = {0.75, 0.25};

const Form Forms[] = {
    {"rad/s, as stated", {{1, {roots('A', 2, 1, {}, {-3.0}), Ten}}}, 2, 20.0 / (4i * Pi + 3.0)},
    {"Hz, two zeros", {{1, {roots('B', 2, 1, {0.0, 1.0}, {}), One}}}, 3, 6i * (3i - 1.0)},
    {"other frequency than A0's", {{1, {roots('B', 7, 2, {0.0}, {}), Ten}}}, 3, 30i},
    {"gain at another frequency than the sensitivity's",
     {{1, {roots('B', 7, 2, {0.0}, {}), Gain{10, 2}}}, {0, {Gain{5, 1}}}},
     3,
     15i},
    {"z-transform", {{1, {rate(8), roots('D', 3, 1, {0.5}, {}), One}}}, 2, 3.0 * (1i - 0.5)},
    {"z-transform of nothing", {{1, {rate(8), roots('D', 3, 1, {}, {}), Ten}}}, 2, 10},
    {"rate 0: all samples at once", {{1, {rate(0), fir('A', Corner), Ten}}}, 2, 10},
    {"running mean of four",
     {{1, {coefficients({.25, .25, .25, .25}), rate(10), Ten}}},
     1,
     2.5 * std::sin(4 * Pi / 10) / std::sin(Pi / 10)},
    {"its negative lobe", {{1, {fir('C', {.25, .25}), rate(10), One}}}, 4, -.25},
    {"half of an odd one", {{1, {fir('B', {.25, .5}), rate(8), One}}}, 1, .5 + .5 * std::sqrt(.5)},
    {"symmetric in full, with a delay",
     {{1, {fir('A', {.25, .5, .25}), rate(8, 3.1), One}}},
     2,
     .5},
    {"sum off 1", {{1, {coefficients({1, 1}), rate(8), One}}}, 2, std::sqrt(.5), 1},
    {"sum within 2 %", {{1, {fir('A', {.715, .3}), rate(8), One}}}, 2, .715 - .3i},
    {"halves are not divided", {{1, {fir('C', {1}), rate(8), One}}}, 2, 2 * std::sqrt(.5)},
    {"own delay stays", {{1, {fir('A', Corner), rate(8), One}}}, 2, .75 - .25i},
    {"correction", {{1, {fir('A', Corner), rate(8, 0.125, 9), One}}}, 2, .25 + .75i},
    {"estimated delay",
     {{1, {fir('A', Corner), rate(8, 9, 0.125), One}}},
     2,
     .25 + .75i,
     0,
     {.use_estimated_delay = true}},
    {"FIR at another frequency",
     {{1, {fir('A', Corner), rate(8), Gain{1, 2}}}, {0, {One}}},
     2,
     (.75 - .25i) / std::abs(.75 - .25i),
     1},
    {"IIR, one pole", {{1, {coefficients({1}, {1, -.5}), rate(8), Ten}}}, 2, 10.0 / (1.0 + .5i)},
    {"no coefficients", {{1, {coefficients({}), rate(8), Ten}}, {2, {Ten}}}, 2, 100},
    {"continued",
     {{1, {coefficients({.5}), coefficients({.25}), fir('A', {.25}), rate(8), One}}},
     2,
     .5 - .25i - .25},
    {"continued half", {{1, {fir('B', {.25}), fir('B', {.5}), rate(8), One}}}, 2, .5},
    {"list, a frequency of its own",
     {{1, {list(Bend), Ten}}},
     4,
     std::polar(1000.0, -17 * Pi / 18)},
    {"list, in between", {{1, {list(Bend), One}}}, 2, -10},
    {"list, outside", {{1, {list(Bend), One}}}, 4.1, Nan},
    {"list, continued", {{1, {list({Bend[0]}), list({Bend[1]}), One}}}, 2, -10},
    {"list with an amplitude of 0", {{1, {list({{1, 0, 0}, {3, 1, 0}}), One}}}, 2, Nan},
    {"list behind gains, gain at another frequency",
     {{1, {Ten}}, {2, {list(Bend), Gain{1, 2}}}, {0, {Ten}}},
     2,
     -100},
    {"list in the middle",
     {{1, {roots('A', 1, 1, {}, {}), One}}, {2, {list(Bend), One}}, {3, {Ten}}},
     2,
     -100},
    {"polynomial, its gain repeated",
     {{1, {polynomial({7, .5}), Ten}}, {2, {Ten}}, {0, {Gain{100, 1}}}},
     2,
     20},
    {"polynomial of the channel, stated in parts too",
     {{1, {Ten}}, {0, {polynomial({7, .5})}}},
     2,
     10},
    {"polynomial of the channel", {{0, {polynomial({7, .5})}}}, 2, 2},
    {"polynomial, sensitivity 0",
     {{1, {polynomial({7, .5})}}, {2, {roots('B', 3, 1, {0.0}, {}), One}}, {0, {Gain{0, 7}}}},
     2,
     12i},
    {"polynomial of one", {{1, {polynomial({7})}}, {2, {Ten}}}, 2, 10},
    {"polynomial at 3", {{1, {polynomial({0, 1, 0, 1})}}}, 2, 1 / 28., 0, {.polynomial_at = 3.0}},
    {"generic response", {{1, {generic(), rate(8), Ten}}}, 2, 10, 1},
    {"filter of the whole channel", {{0, {roots('B', 3, 1, {0.0}, {}), Ten}}, {1, {Ten}}}, 2, 60i},
    {"sensitivity alone", {{0, {Gain{5, 1}}}}, 2, 5},
    {"sensitivity for a stage without gain",
     {{0, {Gain{5, 1}}}, {1, {roots('B', 2, 1, {0.0}, {})}}},
     3,
     30i},
    {"analog stage without gain",
     {{1, {roots('B', 2, 5, {0.0}, {})}}, {2, {Ten}}, {0, {Ten}}},
     3,
     60i},
    {"last gain's frequency", {{1, {roots('B', 2, 1, {0.0}, {}), One}}, {2, {Gain{1, 0}}}}, 3, 6i},
    {"gains off by 5 %", {{1, {Gain{95, 1}}}, {0, {Gain{100, 1}}}}, 2, 95, 1},
    {"gains off by less", {{1, {Gain{95.1, 1}}}, {0, {Gain{100, 1}}}}, 2, 95.1},
    {"far beyond the range of a double",
     {{1, {roots('A', 1e300, 1, {}, std::vector<Complex>(50, -1e8)), Gain{1e100, 1}}}},
     1e-9,
     1},
    {"a pole on the axis", {{1, {roots('B', 1, 1, {}, {2i}), One}}}, 2, Nan},
    {"no number", {{1, {roots('A', 1, 1, {Nan}, {Infinity}), One}}}, 2, Nan},
    {"coefficients without sum", {{1, {coefficients({1, -1}), rate(8), One}}}, 2, Nan, 1},
    {"FIR that is normalised where it is 0",
     {{1, {fir('B', {.25, .5}), rate(8), Gain{1, 0}}}, {0, {Gain{1, 4}}}},
     2,
     Nan,
     2},
};

TEST(Response, HasItsClosedForm)
{
    for (const Form &form : Forms) {
        SCOPED_TRACE(form.name);
        Evaluator evaluator({form.frequency}, form.options);
        const Evaluation result = evaluator.evaluate_stages(response(form.stages));
        ASSERT_EQ(result.error, "");
        EXPECT_EQ(result.warnings.size(), form.warnings);
        expect_near(form.expected, result.values.at(0));
        Complex product = 1.0;
        for (const StageCurve &stage : result.stages)
            product *= stage.values.at(0);
        expect_near(form.expected, product);
    }
}

struct Refusal {
    const char *reason;
    Stages stages;
};

const Part Pole = roots('A', 1, 1, {}, {-1.0});
const Part Iir = coefficients({1}, {1});
const Part Mean = fir('A', {.5, .5});
const Part At_Eight = rate(8);

const Refusal Refusals[] = {
    {"no response is stated", {}},
    {"stage 1: unexpected filter type 'C'", {{1, {roots('C', 1, 1, {}, {}), One}}}},
    {"stage 1: unexpected filter type 'A'", {{1, {coefficients({1}, {}, 'A'), At_Eight, One}}}},
    {"stage 1: unexpected filter type 'B'", {{1, {coefficients({}, {}, 'B'), At_Eight, One}}}},
    {"stage 1: unexpected filter type '?'", {{1, {fir('\n', {1}), At_Eight, One}}}},
    {"stage 2: IIR filter without a decimation", {{1, {One}}, {2, {Iir, One}}}},
    {"stage 2: FIR filter without a decimation", {{1, {One}}, {2, {coefficients({}), One}}}},
    {"stage 1: FIR filter of symmetry B without a decimation", {{1, {fir('B', {}), One}}}},
    {"stage 1: digital poles and zeros without a decimation",
     {{1, {roots('D', 1, 1, {}, {}), One}}}},
    {"stage 1: decimation without a filter", {{1, {At_Eight, One}}}},
    {"stage 1: decimation without a gain", {{1, {At_Eight, Mean}}, {2, {One}}}},
    {"stage 1: more than one decimation", {{1, {At_Eight, Mean, At_Eight, One}}}},
    {"stage 1: more than one gain", {{1, {Pole, One, One}}}},
    {"stage 1: analog poles and zeros more than once", {{1, {Pole, Pole, One}}}},
    {"stage 1: IIR filter more than once", {{1, {Iir, Iir, At_Eight, One}}}},
    {"stage 1: filters of two kinds: FIR filter, FIR filter of symmetry B",
     {{1, {Mean, fir('B', {1}), At_Eight, One}}}},
    {"stage 1: filters of two kinds: analog poles and zeros, response list",
     {{1, {Pole, list(Bend), One}}}},
    {"stage 1: no gain, and no other stage", {{1, {Pole}}}},
    {"stage 2: gain of 0", {{1, {Pole, One}}, {2, {Gain{0, 1}}}}},
    {"stage 0: gain of 0", {{1, {Pole, One}}, {0, {Gain{0, 1}}}}},
    {"stage 1: the filter puts out nothing at 0 Hz, where it would be normalised",
     {{1, {roots('B', 1, 1, {0.0}, {}), Gain{1, 0}}}, {0, {One}}}},
    {"stage 1: the filter puts out nothing at 2 Hz, where it would be normalised",
     {{1, {roots('B', 1, 1, {2i}, {}), One}}, {0, {Gain{1, 2}}}}},
    {"stage 2: response list as the last stage, behind another filter",
     {{1, {Pole, One}}, {2, {list(Bend), One}}, {0, {One}}}},
    {"stage 1: empty response list", {{1, {list({}), One}}}},
    {"stage 1: a polynomial of 3 coefficients has no response without a value to take it at",
     {{1, {polynomial({1, 2, 3})}}}},
    {"stage 1: polynomial of slope 0", {{1, {polynomial({1, 0})}}}},
};

TEST(Response, IsRefusedWithAReason)
{
    for (const Refusal &refusal : Refusals) {
        const Evaluation result = evaluate(response(refusal.stages), {1.0, 2.0});
        EXPECT_EQ(result.error, refusal.reason);
        EXPECT_TRUE(result.values.empty()) << refusal.reason;
        EXPECT_TRUE(std::isnan(result.amplitude)) << refusal.reason;
    }
}

TEST(Response, HasAThousandStagesAtMost)
{
    Stages stages(1001);
    for (int i = 0; i < 1001; ++i)
        stages[i] = {i % 2 + 1, {One}};
    EXPECT_EQ(evaluate(response(stages), {1.0}).error, "more than 1000 stages");
    stages.pop_back();
    EXPECT_EQ(evaluate(response(stages), {1.0}).values.at(0), 1.0);
}

TEST(Response, JoinsFiltersUpToALimit)
{
    const auto joined = [](const Part &filter, std::size_t times) {
        std::vector<Part> parts(times, filter);
        parts.insert(parts.end(), {At_Eight, One});
        return parts;
    };
    const Part fir_of_99 = fir('A', std::vector<double>(99, 0.01));
    EXPECT_EQ(evaluate(response({{1, joined(fir_of_99, 101)}}), {1.0}).error, "");
    EXPECT_EQ(evaluate(response({{1, joined(fir_of_99, 102)}}), {1.0}).error,
              "stage 1: FIR filter of more than 9999 coefficients");
    EXPECT_EQ(evaluate(response({{1, joined(fir('A', {}), 10000)}}), {1.0}).error,
              "stage 1: FIR filter of more than 9999 coefficients");
    EXPECT_EQ(evaluate(response({{1, joined(list(Bend), 9999)}}), {1.0}).error,
              "stage 1: response list of more than 9999 entries");
    Stages stages(11, {1, joined(fir_of_99, 101)});
    for (int i = 0; i < 11; ++i)
        stages[i].first = i + 1;
    EXPECT_EQ(evaluate(response(stages), {1.0}).error,
              "more than 100000 coefficients in filters of several blockettes");
    stages.pop_back();
    EXPECT_EQ(evaluate(response(stages), {1.0}).error, "");
}

TEST(Response, GivesTheFiguresOfAChannel)
{
    const Response moved = response({{1, {roots('B', 7, 2, {0.0}, {}), Gain{10, 2}}},
                                     {2, {fir('B', {.25, .5}), rate(8), Gain{2, 1}}},
                                     {0, {Gain{10, 1}}}});
    const Evaluation result = evaluate(moved, {});
    EXPECT_EQ(result.frequency, 1.0);
    EXPECT_EQ(result.sensitivity, 10.0);
    EXPECT_DOUBLE_EQ(result.gain_product, 10.0);
    EXPECT_DOUBLE_EQ(result.amplitude, 10.0 * (.5 + .5 * std::sqrt(.5)));
    EXPECT_DOUBLE_EQ(normalisation({'A', 2.0, 3.0, {}, {4.0}}), 2.0 / std::hypot(6 * Pi, 4.0));
    EXPECT_DOUBLE_EQ(normalisation({'D', 2.0, 2.0, {1.0}, {}}, 8.0), 2.0 * std::sqrt(2));
    EXPECT_TRUE(std::isnan(normalisation({'C', 2.0, 3.0, {}, {4.0}})));
    EXPECT_EQ(coefficient_sum(Fir{'B', {1, 2, 4}}), 10.0);
    EXPECT_EQ(coefficient_sum(Fir{'C', {1, 2, 4}}), 14.0);
    EXPECT_EQ(coefficient_sum(Fir{'A', {1, 2, 1}}), 4.0);
    EXPECT_EQ(coefficient_sum(Coefficients{'D', {1, 2, 1}, {7}}), 4.0);
    EXPECT_EQ(frequency_grid_size(20.0), 80U);
    EXPECT_EQ(frequency_grid(20.1).back(), 10.0);
    for (const double none : {0.0, -1.0, Nan, 0.002})
        EXPECT_TRUE(frequency_grid(none).empty()) << none;
    EXPECT_EQ(frequency_grid_size(Infinity), 201U);
}

TEST(Response, LongFiltersKeepTheirAccuracy)
{
    std::vector<double> c(10000);
    long double total = 0.0;
    for (int k = 0; k < 10000; ++k)
        total += c[k] = std::sin(1.0 + 0.7 * k * k) / 100 + 1e-4;
    const double off = static_cast<double>(total);
    const std::vector<double> frequencies = {0.001, 0.37, 11.0, 49.9};
    const Response all = response({{1, {fir('A', c), rate(100), One}}, {0, {One}}});
    const Evaluation result = evaluate(all, frequencies);
    ASSERT_EQ(result.values.size(), frequencies.size());
    for (std::size_t i = 0; i < frequencies.size(); ++i) {
        std::complex<long double> sum = 0;
        for (std::size_t k = 0; k < c.size(); ++k)
            sum += std::polar<long double>(1, -2 * std::numbers::pi_v<long double> *
                                                  frequencies[i] * k / 100) *
                   static_cast<long double>(c[k]);
        const Complex exact(static_cast<double>(sum.real()), static_cast<double>(sum.imag()));
        EXPECT_LT(std::abs(result.values[i] - exact / (result.warnings.empty() ? 1.0 : off)),
                  1e-10 * std::abs(exact));
    }
}

TEST(Evaluator, EvaluatesAFilterOnce)
{
    Evaluator evaluator(frequency_grid(1000.0));
    const Stages stages = {{1, {Pole, One}}, {2, {fir('A', Corner), At_Eight, One}}, {0, {Ten}}};
    const Evaluation some = evaluator.evaluate(response(stages), 10);
    const Evaluation all = evaluator.evaluate(response(stages));
    EXPECT_EQ(evaluator.filters_evaluated(), 2U);
    ASSERT_EQ(all.values.size(), frequency_grid_size(1000.0));
    const Evaluation fresh = evaluate(response(stages), evaluator.frequencies());
    EXPECT_EQ(all.values, fresh.values);
    EXPECT_TRUE(std::equal(some.values.begin(), some.values.end(), fresh.values.begin()));
    const Stages faster = {{1, {fir('A', Corner), rate(9), One}}};
    EXPECT_EQ(evaluator.evaluate(response(faster)).values,
              evaluate(response(faster), evaluator.frequencies()).values);
    EXPECT_EQ(evaluator.filters_evaluated(), 3U);
}

TEST(Evaluator, ForgetsOldFiltersBeforeItGrowsTooLarge)
{
    Evaluator evaluator(frequency_grid(1e9));
    const auto stage = [](double pole) {
        return response({{1, {roots('A', 1, 1, {}, {-1.0 - pole}), One}}});
    };
    for (int i = 0; i < 10000; ++i)
        (void)evaluator.evaluate(stage(i));
    EXPECT_EQ(evaluator.evaluate(stage(0)).values,
              evaluate(stage(0), evaluator.frequencies()).values);
    EXPECT_EQ(evaluator.filters_evaluated(), 10001U);
}

} // namespace
} // namespace quarl
