#include "archive/calibration.h"

#include "platform/read_number.h"
#include "platform/sha256.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>
#include <quarl/stages.h>
#include <span>
#include <type_traits>

namespace quarl::archive
{

namespace
{

struct Prefix {
    std::string_view name;
    int power;
};
constexpr std::array<Prefix, 21> Prefixes = {
    {{"", 0},       {"P", -12},    {"N", -9},     {"U", -6},    {"M", -3},     {"C", -2},
     {"D", -1},     {"DA", 1},     {"H", 2},      {"K", 3},     {"PICO", -12}, {"NANO", -9},
     {"MICRO", -6}, {"MILLI", -3}, {"CENTI", -2}, {"DECI", -1}, {"HECTO", 2},  {"KILO", 3},
     {"G", 9},      {"MEGA", 6},   {"GIGA", 9}}};

/// The power of ten of a length in metres; false when it is none.
bool read_length(std::string_view name, int *power)
{
    for (const std::string_view metre : {"M", "METER", "METERS", "METRE", "METRES"})
        for (const Prefix &prefix : Prefixes)
            if (name.size() == prefix.name.size() + metre.size() && name.starts_with(prefix.name) &&
                name.ends_with(metre)) {
                *power = prefix.power;
                return true;
            }
    return false;
}

int order_of(std::string_view times)
{
    static constexpr std::array<std::string_view, 4> Once = {"S", "SEC", "SECOND", "SECONDS"};
    static constexpr std::array<std::string_view, 12> Twice = {
        "S**2", "S^2",    "S2",      "S/S",   "(S**2)",   "(S^2)",
        "S*S",  "SEC**2", "SEC/SEC", "SEC^2", "(SEC**2)", "(S*S)"};
    if (std::find(Once.begin(), Once.end(), times) != Once.end())
        return 1;
    return std::find(Twice.begin(), Twice.end(), times) != Twice.end() ? 2 : -1;
}

/// A number in front, "1E-9" or "10**-9", and what joins it.
double take_factor(std::string_view *unit)
{
    std::size_t used = 0;
    const double value = read_real(*unit, &used);
    if (used == 0 || !is_digit(unit->front()) || !(value > 0))
        return 1.0;
    unit->remove_prefix(used);
    double factor = value;
    if (unit->starts_with("**") || unit->starts_with('^')) {
        unit->remove_prefix(unit->starts_with('^') ? 1 : 2);
        factor = std::pow(value, read_real(*unit, &used));
        unit->remove_prefix(used);
    }
    while (!unit->empty() && (unit->front() == ' ' || unit->front() == '*'))
        unit->remove_prefix(1);
    return factor;
}

} // namespace

Motion motion_of(std::string_view unit)
{
    const std::string name = upper(trimmed(unit));
    std::string_view rest = name;
    Motion motion;
    const double factor = take_factor(&rest);
    const std::size_t bar = std::min(rest.find('/'), rest.size());
    int power = 0;
    if (!read_length(trimmed(rest.substr(0, bar)), &power))
        return motion;
    if (bar < rest.size())
        motion.order = order_of(trimmed(rest.substr(bar + 1)));
    motion.is_motion = motion.order >= 0;
    motion.nanometres = factor * std::pow(10.0, power + 9);
    return motion;
}

Sensitivity sensitivity_of(const Response &response)
{
    Sensitivity found;
    for (const StagePtr &stage : response.stages)
        for (const Part &part : stage->parts)
            if (const auto *gain = std::get_if<Gain>(&part); gain && stage->number == 0)
                found = {true, gain->value, gain->frequency};
    found.given = found.given && std::isfinite(found.value) && found.value != 0.0 &&
                  std::isfinite(found.frequency);
    return found;
}

std::string input_unit(const Response &response)
{
    for (const StagePtr &stage : response.stages)
        for (const Part &part : stage->parts)
            if (const auto *filter = std::get_if<FilterPtr>(&part); filter && stage->number == 1)
                return (*filter)->input().name;
    return {};
}

Calibration calibration_of(const Sensitivity &sensitivity, std::string_view unit)
{
    Calibration made;
    if (!sensitivity.given)
        return made;
    if (sensitivity.frequency > 0)
        made.calper = 1 / sensitivity.frequency;
    const Motion motion = motion_of(unit);
    if (!motion.is_motion) {
        made.calib = 1 / sensitivity.value;
        return made;
    }
    if (motion.order > 0 && !(sensitivity.frequency > 0))
        return made;
    const double turns = 2 * std::numbers::pi * sensitivity.frequency;
    const double calib = motion.nanometres / (sensitivity.value * std::pow(turns, motion.order));
    if (std::isfinite(calib))
        made.calib = calib;
    return made;
}

namespace
{

/// Takes values in, each with its size or kind in front.
class Digest
{
public:
    void add(double value) { number(std::bit_cast<std::uint64_t>(value)); }
    void add(int value) { number(static_cast<std::uint64_t>(value)); }
    void add(char value) { number(static_cast<unsigned char>(value)); }
    void add(std::complex<double> value)
    {
        add(value.real());
        add(value.imag());
    }
    void add(const std::string &text)
    {
        number(text.size());
        sum_.add(text);
    }
    template <class T> void add(const std::vector<T> &values)
    {
        number(values.size());
        for (const T &value : values)
            add(value);
    }
    void add(const ResponseList::Entry &entry)
    {
        all(entry.frequency, entry.amplitude, entry.phase);
    }
    void add(const GenericResponse::Corner &corner) { all(corner.frequency, corner.slope); }

    void add(const PolesZeros &s) { all(s.type, s.factor, s.frequency, s.zeros, s.poles); }
    void add(const Coefficients &s) { all(s.type, s.numerators, s.denominators); }
    void add(const ResponseList &s) { add(s.entries); }
    void add(const GenericResponse &s) { add(s.corners); }
    void add(const Fir &s) { all(s.symmetry, s.coefficients); }
    void add(const Polynomial &s)
    {
        all(s.approximation, s.frequency_unit, s.lower_frequency, s.upper_frequency, s.lower_bound,
            s.upper_bound, s.maximum_error, s.coefficients);
    }
    void add(const FilterPtr &filter)
    {
        add(static_cast<int>(filter->shape().index()));
        std::visit([this](const auto &shape) { add(shape); }, filter->shape());
        all(filter->input().name, filter->output().name);
    }
    void add(const Decimation &d) { all(d.input_rate, d.factor, d.offset, d.delay, d.correction); }
    void add(const Gain &gain) { all(gain.value, gain.frequency); }
    void add(const Stage &stage)
    {
        all(stage.number, static_cast<int>(stage.parts.size()));
        for (const Part &part : stage.parts) {
            add(static_cast<int>(part.index()));
            std::visit([this](const auto &each) { add(each); }, part);
        }
    }

    std::string digits() { return sum_.digits().substr(0, 32); }

private:
    template <class... T> void all(const T &...values) { (add(values), ...); }
    void number(std::uint64_t value)
    {
        std::array<char, sizeof value> bytes{};
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<char>(value >> (8 * i) & 0xFF);
        sum_.add({bytes.data(), bytes.size()});
    }

    Sha256 sum_;
};

} // namespace

std::string StageDigests::of(const Response &response)
{
    Digest all;
    for (const StagePtr &stage : response.stages) {
        std::string &known = known_[stage];
        if (known.empty()) {
            Digest digest;
            digest.add(*stage);
            known = digest.digits();
        }
        all.add(known);
    }
    return response.stages.empty() ? "-" : all.digits();
}

} // namespace quarl::archive
