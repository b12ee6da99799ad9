#include "inventory/parts.h"

#include "blockette/scan.h"
#include "platform/elog.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

/// Lets the scanners work on an item's text outside of its reading, and says nothing.
class QuietScan : Host
{
public:
    explicit QuietScan(const Item &item) : cursor(item.bytes()) { cursor.advance(Prefix); }

    /// What of a list of `count` entries of `size` characters the text holds behind the cursor.
    [[nodiscard]] int held(int count, int size) const
    {
        const auto room = static_cast<int>(cursor.rest().size()) / size;
        return std::clamp(count, 0, room);
    }
    [[nodiscard]] FieldsRead read() const { return {cursor.position(), parsing_.Bad_blkflag != 0}; }

private:
    static constexpr std::size_t Prefix = 7; ///< type and length

    void hear(Message & /*message*/) override {}

    Parsing parsing_;
    Current<Parsing> current_{parsing_};
    Current<Host> host_{*this};

public:
    Cursor cursor;
};

std::vector<std::complex<double>> roots(const std::vector<Complex_t> &from)
{
    std::vector<std::complex<double>> all;
    all.reserve(from.size());
    for (const Complex_t &root : from)
        all.emplace_back(root.real, root.imag);
    return all;
}

template <class Blk> ResponseList list_of(const Blk &blk)
{
    ResponseList list;
    const std::size_t count =
        std::min({blk.frequency.size(), blk.amplitude.size(), blk.phase.size()});
    list.entries.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        list.entries.push_back({blk.frequency[i], blk.amplitude[i], blk.phase[i]});
    return list;
}

template <class Blk> PolesZeros roots_of(const Blk &blk)
{
    return {.type = blk.func_type,
            .factor = blk.normal_factor,
            .frequency = blk.normal_freq,
            .zeros = roots(blk.zero),
            .poles = roots(blk.pole)};
}

template <class Blk> Decimation rates_of(const Blk &blk)
{
    return {.input_rate = blk.samprate,
            .factor = blk.dec_factor,
            .offset = blk.dec_offset,
            .delay = blk.delay,
            .correction = blk.correction};
}

Part filter_part(FilterShape shape, int input, int output, const char *name = "")
{
    return std::make_shared<const Filter>(std::move(shape), Unit{input, {}}, Unit{output, {}},
                                          name);
}

/// A filter's coefficients end where its blockette ends, whatever its count says.
void keep_held(std::vector<double> *coefficients, std::size_t before, std::size_t size, int length)
{
    const auto whole = static_cast<std::size_t>(std::max(length, 0));
    const std::size_t held = whole > before ? (whole - before) / size : 0;
    if (held < coefficients->size())
        coefficients->resize(held);
}

StagePart read_056(QuietScan *scan)
{
    Cursor *in = &scan->cursor;
    const int stage = scan_int(in, 2);
    const int input = scan_int(in, 3);
    const int output = scan_int(in, 3);
    GenericResponse shape;
    for (int i = scan->held(scan_count(in, 4), 24); i > 0; --i) {
        const double frequency = scan_double(in, 12);
        shape.corners.push_back({frequency, scan_double(in, 12)});
    }
    return {stage, filter_part(std::move(shape), input, output)};
}

StagePart read_058(QuietScan *scan)
{
    Cursor *in = &scan->cursor;
    const int stage = scan_int(in, 2);
    Gain gain;
    gain.value = scan_double(in, 12);
    gain.frequency = scan_double(in, 12);
    for (int i = scan->held(scan_count(in, 2), 25); i > 0; --i) {
        in->advance(24); // a calibration's sensitivity and frequency
        char time[Time_Size];
        scan_var_str(in, time);
    }
    return {stage, gain};
}

StagePart read_062(QuietScan *scan)
{
    Cursor *in = &scan->cursor;
    in->advance(1); // transfer function type, always P
    const int stage = scan_int(in, 2);
    const int input = scan_int(in, 3);
    const int output = scan_int(in, 3);
    Polynomial shape;
    shape.approximation = scan_char(in);
    shape.frequency_unit = scan_char(in);
    shape.lower_frequency = scan_double(in, 12);
    shape.upper_frequency = scan_double(in, 12);
    shape.lower_bound = scan_double(in, 12);
    shape.upper_bound = scan_double(in, 12);
    shape.maximum_error = scan_double(in, 12);
    for (int i = scan->held(scan_count(in, 3), 24); i > 0; --i) {
        shape.coefficients.push_back(scan_double(in, 12));
        in->advance(12); // its error
    }
    return {stage, filter_part(std::move(shape), input, output)};
}

/// Blockettes that are read from their text; nothing for others.
std::optional<StagePart> scanned_part(const Item &item, FieldsRead *fields)
{
    const auto read = [&](StagePart (*reader)(QuietScan *)) {
        QuietScan scan(item);
        StagePart part = reader(&scan);
        *fields = scan.read();
        return part;
    };
    switch (item.type()) {
    case 56:
        return read(read_056);
    case 58:
        return read(read_058);
    case 62:
        return read(read_062);
    default:
        return std::nullopt;
    }
}

template <class Blk> Part filter_of(const Blk &blk, FilterShape shape)
{
    return filter_part(std::move(shape), blk.input_units, blk.output_units);
}

template <class Blk> Part named_filter(const Blk &blk, FilterShape shape)
{
    return filter_part(std::move(shape), blk.input_units, blk.output_units, blk.response_name);
}

StagePart part_of(const blk_054_t &blk)
{
    constexpr std::size_t Before = 20;
    Coefficients shape = shape_of(blk);
    keep_held(&shape.numerators, Before, 24, blk.length);
    return {blk.stage_num, filter_of(blk, std::move(shape))};
}

StagePart part_of(const blk_061_t &blk)
{
    const std::size_t before = 21 + std::string_view(blk.response_name).size();
    Fir shape = shape_of(blk);
    keep_held(&shape.coefficients, before, 14, blk.length);
    return {blk.stage_num, named_filter(blk, std::move(shape))};
}

} // namespace

PolesZeros shape_of(const blk_053_t &blk) { return roots_of(blk); }

Coefficients shape_of(const blk_054_t &blk)
{
    return {.type = blk.func_type, .numerators = blk.numer_coef, .denominators = blk.denom_coef};
}

ResponseList shape_of(const blk_055_t &blk) { return list_of(blk); }

Fir shape_of(const blk_061_t &blk) { return {.symmetry = blk.symmetry, .coefficients = blk.coef}; }

Polynomial shape_of(const blk_062_t &blk)
{
    return {.approximation = blk.polynomial_approximation_type,
            .frequency_unit = blk.valid_frequency_units,
            .lower_frequency = blk.lower_valid_frequency_bound,
            .upper_frequency = blk.upper_valid_frequency_bound,
            .lower_bound = blk.lower_bound_of_approximation,
            .upper_bound = blk.upper_bound_of_approximation,
            .maximum_error = blk.maximum_absolute_error,
            .coefficients = blk.coef};
}

Decimation decimation_of(const blk_057_t &blk) { return rates_of(blk); }

Gain gain_of(const blk_058_t &blk) { return {.value = blk.gain, .frequency = blk.freq}; }

std::optional<StagePart> stage_part(const Item &item)
{
    if (const auto *roots = item.get<blk_053_t>())
        return StagePart{roots->stage_num, filter_of(*roots, shape_of(*roots))};
    if (const auto *coefficients = item.get<blk_054_t>())
        return part_of(*coefficients);
    if (const auto *list = item.get<blk_055_t>())
        return StagePart{list->stage_num, filter_of(*list, shape_of(*list))};
    if (const auto *decimation = item.get<blk_057_t>())
        return StagePart{decimation->stage_num, decimation_of(*decimation)};
    if (const auto *fir = item.get<blk_061_t>())
        return part_of(*fir);
    FieldsRead fields;
    return scanned_part(item, &fields);
}

std::optional<Part> dictionary_part(const Item &item)
{
    if (const auto *fir = item.get<blk_041_t>())
        return named_filter(*fir, Fir{fir->symmetry, fir->coef});
    if (const auto *roots = item.get<blk_043_t>())
        return named_filter(*roots, roots_of(*roots));
    if (const auto *blk = item.get<blk_044_t>())
        return named_filter(*blk, Coefficients{blk->func_type, blk->numer_coef, blk->denom_coef});
    if (const auto *list = item.get<blk_045_t>())
        return named_filter(*list, list_of(*list));
    if (const auto *blk = item.get<blk_046_t>()) {
        GenericResponse shape;
        for (std::size_t i = 0; i < std::min(blk->corner_freq.size(), blk->corner_slope.size());
             ++i)
            shape.corners.push_back({blk->corner_freq[i], blk->corner_slope[i]});
        return named_filter(*blk, std::move(shape));
    }
    if (const auto *decimation = item.get<blk_047_t>())
        return rates_of(*decimation);
    if (const auto *gain = item.get<blk_048_t>())
        return Gain{gain->gain, gain->freq};
    return std::nullopt;
}

FieldsRead fields_read(const Item &item)
{
    FieldsRead fields{item.fields_size(), item.bad()};
    (void)scanned_part(item, &fields);
    return fields;
}

} // namespace quarl
