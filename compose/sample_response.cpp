#include "compose/sample_response.h"

#include "compose/blockette_text.h"

#include <complex>
#include <numbers>
#include <vector>

namespace
{

/// A filter that lets a `factor`th of the samples pass: the first half of its coefficients.
struct Decimator {
    const char *name;
    int factor;
    std::vector<double> half;
};

const Decimator &by_four()
{
    static const Decimator filter = {
        "FIR_DEC4", 4, {8.0863745e-05,  4.3269050e-04,  7.6329022e-04,  7.6790510e-04,
                        2.0851726e-04,  -8.6376820e-04, -1.9960128e-03, -2.4586351e-03,
                        -1.6182228e-03, 5.9862786e-04,  3.4242404e-03,  5.4008872e-03,
                        5.0203510e-03,  1.6204273e-03,  -3.9238466e-03, -9.1928348e-03,
                        -1.1112918e-02, -7.4979265e-03, 1.4450908e-03,  1.2494681e-02,
                        2.0259457e-02,  1.9425329e-02,  7.5918924e-03,  -1.2597262e-02,
                        -3.3240234e-02, -4.3384584e-02, -3.3097088e-02, 2.1208475e-03,
                        5.8459970e-02,  1.2390519e-01,  1.8159708e-01,  2.1536599e-01}};
    return filter;
}

const Decimator &by_five()
{
    static const Decimator filter = {
        "FIR_DEC5",
        5,
        {4.4407314e-05,  2.6251498e-04,  5.0899009e-04,  6.6649258e-04,  6.0430090e-04,
         2.3762701e-04,  -4.1298206e-04, -1.1897352e-03, -1.8165222e-03, -1.9762744e-03,
         -1.4311241e-03, -1.4710461e-04, 1.6271691e-03,  3.3728681e-03,  4.4241722e-03,
         4.1829879e-03,  2.3651746e-03,  -8.0820566e-04, -4.5602840e-03, -7.7007191e-03,
         -8.9534081e-03, -7.3927376e-03, -2.8563739e-03, 3.8160626e-03,  1.0838266e-02,
         1.5868465e-02,  1.6673098e-02,  1.1897825e-02,  1.7177937e-03,  -1.1859215e-02,
         -2.5188669e-02, -3.3703965e-02, -3.3015228e-02, -2.0126729e-02, 5.5568958e-03,
         4.1737768e-02,  8.3428773e-02,  1.2385751e-01,  1.5588058e-01,  1.7356953e-01}};
    return filter;
}

/// Velocity to volts: flat from 120 s to 50 Hz.
B053 seismometer(double frequency)
{
    const std::vector<Root> zeros = {{0, 0}, {0, 0}};
    const std::vector<Root> poles = {{-0.037024, 0.037024, 1e-5, 1e-5},
                                     {-0.037024, -0.037024, 1e-5, 1e-5},
                                     {-220, 225},
                                     {-220, -225}};
    const std::complex<double> s(0, 2 * std::numbers::pi * frequency);
    double factor = 1;
    for (const Root &pole : poles)
        factor *= std::abs(s - std::complex(pole.real, pole.imag));
    for (const Root &zero : zeros)
        factor /= std::abs(s - std::complex(zero.real, zero.imag));
    return {.input_units = Velocity,
            .output_units = Volts,
            .factor = factor,
            .frequency = frequency,
            .zeros = zeros,
            .poles = poles};
}

constexpr double Counts_Per_Volt = 419430; ///< 24 bits over 40 V

void add_digitiser(VolumeBuilder *v, int stage, double rate, double frequency)
{
    v->blockette(54, b054({.stage = stage, .input_units = Volts, .output_units = Counts}));
    v->blockette(57, b057(stage, rate, 1, 0, 0, 0));
    v->blockette(58, b058(stage, Counts_Per_Volt, frequency));
}

} // namespace

void add_seismometer(VolumeBuilder *v, double to_rate)
{
    const double frequency = to_rate < 2 ? 0.05 : 1;
    const double volts = 1500;
    double rate = 80;
    v->blockette(53, b053(seismometer(frequency)));
    v->blockette(58, b058(1, volts, frequency));
    add_digitiser(v, 2, rate, frequency);
    int stage = 3;
    for (const Decimator *filter : {&by_four(), &by_five(), &by_four()}) {
        if (rate <= to_rate)
            break;
        const double delay = (static_cast<double>(filter->half.size()) - 0.5) / rate;
        v->blockette(61, b061({.stage = stage,
                               .name = filter->name,
                               .symmetry = 'C',
                               .input_units = Counts,
                               .output_units = Counts,
                               .coefficients = filter->half}));
        v->blockette(57, b057(stage, rate, filter->factor, 0, delay, delay));
        v->blockette(58, b058(stage, 1, frequency));
        rate /= filter->factor;
        ++stage;
    }
    v->blockette(58, b058(0, volts * Counts_Per_Volt, frequency));
}

void add_barometer(VolumeBuilder *v)
{
    const double pascals = 60000, pascals_per_volt = 10000;
    B062 map = {.input_units = Pressure,
                .output_units = Volts,
                .upper_frequency = 0.5,
                .upper_bound = 5,
                .maximum_error = 8,
                .coefficients = {{pascals, 4}, {pascals_per_volt, 5}}};
    v->blockette(62, b062(map));
    v->blockette(
        55, b055(2, Volts, Volts,
                 {{0.01, 1, 0, 0, 0}, {0.1, 0.998, 0.001, -1.5, 0.1}, {0.5, 0.91, 0.01, -8, 0.5}}));
    v->blockette(58, b058(2, 1, 0.01));
    add_digitiser(v, 3, 1, 0.01);
    map.stage = 0;
    map.output_units = Counts;
    map.upper_bound *= Counts_Per_Volt;
    map.coefficients[1] = {pascals_per_volt / Counts_Per_Volt, 5 / Counts_Per_Volt};
    v->blockette(62, b062(map));
}
