#include "compose/blockette_text.h"

#include <cstdio>

namespace
{

// One function per kind of field, the width last.

std::string whole(int value, int width)
{
    char text[32];
    std::snprintf(text, sizeof text, "%0*d", width, value);
    return text;
}

std::string whole(std::size_t count, int width) { return whole(static_cast<int>(count), width); }

std::string fixed(double value, int width, int precision)
{
    char text[400];
    std::snprintf(text, sizeof text, "%*.*f", width, precision, value);
    return text;
}

/// As many digits as fit: sign, one digit, point, four characters of exponent.
std::string real(double value, int width)
{
    char text[32];
    std::snprintf(text, sizeof text, "%+*.*E", width, width - 7, value);
    return text;
}

std::string chars(std::string_view value, std::size_t width)
{
    std::string text(value.substr(0, width));
    text.resize(width, ' ');
    return text;
}

std::string letter(char value) { return {value}; }

std::string var(std::string_view value) { return std::string(value) + '~'; }

template <class List, class Format> std::string each(const List &list, Format format)
{
    std::string all;
    for (const auto &item : list)
        all += format(item);
    return all;
}

std::string roots(const std::vector<Root> &list)
{
    return whole(list.size(), 3) + each(list, [](const Root &r) {
               return real(r.real, 12) + real(r.imag, 12) + real(r.real_error, 12) +
                      real(r.imag_error, 12);
           });
}

std::string coefficients(const Coefficients &list)
{
    return whole(list.size(), 4) +
           each(list, [](const auto &c) { return real(c.first, 12) + real(c.second, 12); });
}

std::string record_mark(const Repeat &r)
{
    return var(r.time) + whole(r.seq, 6) + whole(r.sub_seq, 2);
}

} // namespace

std::string b010(double version, int exponent, std::string_view begin, std::string_view end,
                 std::string_view written, std::string_view organisation, std::string_view label)
{
    return fixed(version, 4, 1) + whole(exponent, 2) + var(begin) + var(end) + var(written) +
           var(organisation) + var(label);
}

std::string b011(const std::vector<StationEntry> &stations)
{
    return whole(stations.size(), 3) + each(stations, [](const StationEntry &s) {
               return chars(s.station, 5) + whole(s.seq, 6);
           });
}

std::string b012(const std::vector<SpanEntry> &spans)
{
    return whole(spans.size(), 4) + each(spans, [](const SpanEntry &s) {
               return var(s.begin) + var(s.end) + whole(s.seq, 6);
           });
}

std::string b030(std::string_view name, int id, int family, const std::vector<std::string> &keys)
{
    return var(name) + whole(id, 4) + whole(family, 3) + whole(keys.size(), 2) + each(keys, var);
}

std::string b031(int id, char comment_class, std::string_view comment, int units)
{
    return whole(id, 4) + letter(comment_class) + var(comment) + whole(units, 3);
}

std::string b032(int id, std::string_view author, std::string_view catalog,
                 std::string_view publisher)
{
    return whole(id, 2) + var(author) + var(catalog) + var(publisher);
}

std::string b033(int id, std::string_view abbreviation) { return whole(id, 3) + var(abbreviation); }

std::string b034(int id, std::string_view name, std::string_view description)
{
    return whole(id, 3) + var(name) + var(description);
}

std::string b050(const B050 &b)
{
    return chars(b.station, 5) + fixed(b.lat, 10, 6) + fixed(b.lon, 11, 6) + fixed(b.elev, 7, 1) +
           whole(b.num_chans, 4) + whole(b.num_comments, 3) + var(b.name) + whole(b.net_id, 3) +
           whole(b.long_order, 4) + whole(b.word_order, 2) + var(b.start) + var(b.end) +
           letter(b.update) + chars(b.network, 2);
}

std::string b051(std::string_view begin, std::string_view end, int comment, int level)
{
    return var(begin) + var(end) + whole(comment, 4) + whole(level, 6);
}

std::string b052(const B052 &b)
{
    return chars(b.location, 2) + chars(b.channel, 3) + whole(b.subchannel, 4) +
           whole(b.instrument, 3) + var(b.comment) + whole(b.units_signal, 3) +
           whole(b.units_calibration, 3) + fixed(b.lat, 10, 6) + fixed(b.lon, 11, 6) +
           fixed(b.elev, 7, 1) + fixed(b.depth, 5, 1) + fixed(b.azimuth, 5, 1) +
           fixed(b.dip, 5, 1) + whole(b.format, 4) + whole(b.exponent, 2) + real(b.rate, 10) +
           real(b.drift, 10) + whole(b.num_comments, 4) + var(b.flags) + var(b.start) + var(b.end) +
           letter(b.update);
}

std::string b053(const B053 &b)
{
    return letter(b.type) + whole(b.stage, 2) + whole(b.input_units, 3) + whole(b.output_units, 3) +
           real(b.factor, 12) + real(b.frequency, 12) + roots(b.zeros) + roots(b.poles);
}

std::string b054(const B054 &b)
{
    return letter(b.type) + whole(b.stage, 2) + whole(b.input_units, 3) + whole(b.output_units, 3) +
           coefficients(b.numerators) + coefficients(b.denominators);
}

std::string b055(int stage, int input_units, int output_units,
                 const std::vector<ResponsePoint> &points)
{
    return whole(stage, 2) + whole(input_units, 3) + whole(output_units, 3) +
           whole(points.size(), 4) + each(points, [](const ResponsePoint &p) {
               return real(p.frequency, 12) + real(p.amplitude, 12) + real(p.amplitude_error, 12) +
                      real(p.phase, 12) + real(p.phase_error, 12);
           });
}

std::string b057(int stage, double rate, int factor, int offset, double delay, double correction)
{
    return whole(stage, 2) + real(rate, 10) + whole(factor, 5) + whole(offset, 5) +
           real(delay, 11) + real(correction, 11);
}

std::string b058(int stage, double gain, double frequency)
{
    const int history = 0;
    return whole(stage, 2) + real(gain, 12) + real(frequency, 12) + whole(history, 2);
}

std::string b059(std::string_view begin, std::string_view end, int comment, int level)
{
    return b051(begin, end, comment, level);
}

std::string b061(const B061 &b)
{
    return whole(b.stage, 2) + var(b.name) + letter(b.symmetry) + whole(b.input_units, 3) +
           whole(b.output_units, 3) + whole(b.coefficients.size(), 4) +
           each(b.coefficients, [](double c) { return real(c, 14); });
}

std::string b062(const B062 &b)
{
    return letter(b.type) + whole(b.stage, 2) + whole(b.input_units, 3) + whole(b.output_units, 3) +
           letter(b.approximation) + letter(b.frequency_units) + real(b.lower_frequency, 12) +
           real(b.upper_frequency, 12) + real(b.lower_bound, 12) + real(b.upper_bound, 12) +
           real(b.maximum_error, 12) + coefficients(b.coefficients);
}

std::string b070(char flag, std::string_view begin, std::string_view end)
{
    return std::string(1, flag).append(var(begin)).append(var(end));
}

std::string b071(const B071 &b)
{
    return var(b.time) + whole(b.source, 2) + fixed(b.lat, 10, 6) + fixed(b.lon, 11, 6) +
           fixed(b.depth, 7, 2) + whole(b.magnitudes.size(), 2) +
           each(b.magnitudes,
                [](const Magnitude &m) {
                    return fixed(m.value, 5, 2) + var(m.type) + whole(m.source, 2);
                }) +
           whole(b.region, 3) + whole(b.location, 4) + var(b.region_name);
}

std::string b072(const B072 &b)
{
    return chars(b.station, 5) + chars(b.location, 2) + chars(b.channel, 3) + var(b.time) +
           real(b.amplitude, 10) + real(b.period, 10) + real(b.snr, 10) + var(b.phase) +
           whole(b.source, 2) + chars(b.network, 2);
}

std::string b073(const std::vector<Piece> &pieces)
{
    return whole(pieces.size(), 4) + each(pieces, [](const Piece &p) {
               return chars(p.station, 5) + chars(p.location, 2) + chars(p.channel, 3) +
                      record_mark({p.time, p.seq, p.sub_seq});
           });
}

std::string b074(const B074 &b)
{
    return chars(b.station, 5) + chars(b.location, 2) + chars(b.channel, 3) + record_mark(b.first) +
           record_mark(b.last) + whole(b.repeats.size(), 3) + each(b.repeats, record_mark) +
           chars(b.network, 2);
}
