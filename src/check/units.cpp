// Names of units.
#include "check/response_seen.h"

#include "platform/text.h"

#include <algorithm>
#include <array>
#include <span>

namespace quarl
{

namespace
{

using namespace std::string_view_literals;

// In capitals, as they are compared.
constexpr std::array Prefixes = {"Y"sv,     "Z"sv,     "E"sv,    "P"sv,    "T"sv,    "G"sv,
                                 "M"sv,     "K"sv,     "H"sv,    "DA"sv,   "D"sv,    "C"sv,
                                 "U"sv,     "N"sv,     "F"sv,    "A"sv,    "NANO"sv, "MICRO"sv,
                                 "MILLI"sv, "CENTI"sv, "KILO"sv, "MEGA"sv, "PICO"sv, "HECTO"sv};

constexpr std::array Bases = {
    // lengths, times, masses, amounts
    "M"sv, "METER"sv, "METERS"sv, "METRE"sv, "METRES"sv, "S"sv, "SEC"sv, "SECOND"sv, "SECONDS"sv,
    "MIN"sv, "MINUTE"sv, "MINUTES"sv, "HR"sv, "HOUR"sv, "HOURS"sv, "DAY"sv, "DAYS"sv, "G"sv,
    "GRAM"sv, "GRAMS"sv, "MOL"sv, "CD"sv, "L"sv, "LITER"sv, "LITRE"sv,
    // electricity and magnetism
    "A"sv, "AMP"sv, "AMPERE"sv, "AMPERES"sv, "V"sv, "VOLT"sv, "VOLTS"sv, "OHM"sv, "OHMS"sv, "F"sv,
    "FARAD"sv, "COULOMB"sv, "T"sv, "TESLA"sv, "TESLAS"sv, "GAMMA"sv, "GAUSS"sv, "WB"sv, "WEBER"sv,
    "HENRY"sv, "SIEMENS"sv,
    // temperature, pressure, force, energy, light
    "K"sv, "KELVIN"sv, "C"sv, "CELSIUS"sv, "DEGC"sv, "DEG_C"sv, "DEG C"sv, "DEGREES CELSIUS"sv,
    "PA"sv, "PASCAL"sv, "PASCALS"sv, "BAR"sv, "BARS"sv, "ATM"sv, "N"sv, "NEWTON"sv, "NEWTONS"sv,
    "J"sv, "JOULE"sv, "JOULES"sv, "W"sv, "WATT"sv, "WATTS"sv, "LX"sv, "LUX"sv, "LM"sv, "DB"sv,
    // angles, cycles, numbers
    "DEG"sv, "DEGREE"sv, "DEGREES"sv, "RAD"sv, "RADIAN"sv, "RADIANS"sv, "HZ"sv, "HERTZ"sv,
    "CYCLE"sv, "CYCLES"sv, "COUNT"sv, "COUNTS"sv, "DIGITAL COUNTS"sv, "BIT"sv, "BITS"sv, "BYTE"sv,
    "BYTES"sv, "B"sv, "SAMPLE"sv, "SAMPLES"sv, "PERCENT"sv, "%"sv, "STRAIN"sv, "UNITLESS"sv,
    "NUMBER"sv, "EVENT"sv, "EVENTS"sv, "GAP"sv, "GAPS"sv, "REBOOT"sv, "REBOOTS"sv, "NONE"sv};

bool is_one_of(std::string_view name, std::span<const std::string_view> names)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// A base unit, with a prefix or without; a number; nothing at all as in "1/S".
bool is_factor(std::string_view name)
{
    name = trimmed(name);
    if (name.find_first_not_of("0123456789.E+-") == std::string_view::npos ||
        is_one_of(name, Bases))
        return true;
    return std::any_of(Prefixes.begin(), Prefixes.end(), [&](std::string_view prefix) {
        return name.starts_with(prefix) && is_one_of(name.substr(prefix.size()), Bases);
    });
}

/// "NM/S" is "M/S" in another power of ten.
bool is_length_over(std::string_view unit, std::span<const std::string_view> times)
{
    const std::string name = upper(trimmed(unit));
    std::string_view rest = name;
    const std::size_t number = rest.find_first_not_of("0123456789.+-* ");
    rest.remove_prefix(std::min(number, rest.size()));
    if (number > 0 && rest.starts_with('E') && rest.size() > 1) { // 1E-9 M/S
        const std::size_t exponent = rest.find_first_not_of("E0123456789+-* ");
        rest.remove_prefix(std::min(exponent, rest.size()));
    }
    const std::size_t bar = rest.find('/');
    if (bar == std::string_view::npos)
        return false;
    const std::string_view length = trimmed(rest.substr(0, bar));
    constexpr std::array Lengths = {"M"sv, "METER"sv, "METERS"sv, "METRE"sv, "METRES"sv};
    const bool is_length =
        is_one_of(length, Lengths) ||
        std::any_of(Prefixes.begin(), Prefixes.end(), [&](std::string_view prefix) {
            return length.starts_with(prefix) && is_one_of(length.substr(prefix.size()), Lengths);
        });
    return is_length && is_one_of(trimmed(rest.substr(bar + 1)), times);
}

} // namespace

bool is_velocity(std::string_view unit)
{
    static constexpr std::array Times = {"S"sv, "SEC"sv, "SECOND"sv};
    return is_length_over(unit, Times);
}

bool is_acceleration(std::string_view unit)
{
    static constexpr std::array Times = {"S**2"sv,  "S^2"sv,    "S2"sv,      "S/S"sv,   "(S**2)"sv,
                                         "(S^2)"sv, "SEC**2"sv, "SEC/SEC"sv, "SEC^2"sv, "S*S"sv};
    return is_length_over(unit, Times);
}

bool is_counts(std::string_view unit)
{
    static constexpr std::array Names = {"COUNTS"sv, "COUNT"sv, "DIGITAL COUNTS"sv};
    return is_one_of(upper(trimmed(unit)), Names);
}

bool is_same_unit(std::string_view unit, std::string_view other)
{
    const std::string a = upper(trimmed(unit));
    const std::string b = upper(trimmed(other));
    const auto before_bar = [](const std::string &name) { return name.substr(0, name.find('/')); };
    if (a == b || (is_counts(a) && is_counts(b)))
        return true;
    return ((is_acceleration(a) && is_acceleration(b)) || (is_velocity(a) && is_velocity(b))) &&
           before_bar(a) == before_bar(b);
}

bool is_known_unit(std::string_view unit)
{
    const std::string name = upper(trimmed(unit));
    if (name.empty() || is_one_of(name, Bases))
        return !name.empty();
    for (std::size_t at = 0; at <= name.size();) {
        const std::size_t end = std::min(name.find_first_of("/*^()", at), name.size());
        if (!is_factor(std::string_view(name).substr(at, end - at)))
            return false;
        at = end + 1;
    }
    return true;
}

} // namespace quarl
