#include "inventory/parts.h"

#include "platform/read_number.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

/// Walks the fields of a blockette behind its type and length. Numbers are read as the scanners
/// read them: blanks are 0, and a blank behind an exponent letter is a "+".
class TextFields
{
public:
    explicit TextFields(std::string_view text) : text_(text) {}

    std::string_view take(std::size_t width)
    {
        const std::string_view field = up_to_nul(text_.substr(std::min(at_, text_.size()), width));
        at_ += width;
        return field;
    }
    void skip(std::size_t width) { at_ += width; }
    char letter()
    {
        const std::string_view field = take(1);
        return field.empty() ? '\0' : field.front();
    }
    int integer(std::size_t width)
    {
        const std::string_view field = take(width);
        std::size_t used = 0;
        const int value = leading_int(field, &used);
        bad_ |= used == 0 && !blank(field);
        return value;
    }
    double real(std::size_t width)
    {
        std::string field(take(width)); // short: no room is allocated
        const std::size_t letter = field.find_first_of("eE");
        if (letter + 1 < field.size() && letter != std::string::npos && field[letter + 1] == ' ')
            field[letter + 1] = '+';
        std::size_t used = 0;
        const double value = read_real(field, &used);
        bad_ |= used == 0 && !blank(field);
        return value;
    }
    /// A text that "~" ends.
    void skip_text()
    {
        const std::string_view rest = text_.substr(std::min(at_, text_.size()));
        at_ += std::min(rest.find('~') + 1, rest.size());
    }
    /// The number of entries of a list, and the room that its entries of `size` characters have.
    int entries(std::size_t digits, std::size_t size)
    {
        const int promised = integer(digits);
        const auto room = static_cast<int>((text_.size() - std::min(at_, text_.size())) / size);
        missing_ += promised > room ? static_cast<std::size_t>(promised - room) * size : 0;
        bad_ |= promised < 0;
        return std::clamp(promised, 0, room);
    }
    [[nodiscard]] FieldsRead read() const { return {at_ + missing_, bad_}; }

private:
    std::string_view text_;
    std::size_t at_ = 7;      ///< behind type and length
    std::size_t missing_ = 0; ///< bytes of entries that are promised and not there
    bool bad_ = false;
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

/// A filter's coefficients end where its blockette ends, whatever its count says.
void keep_held(std::vector<double> *coefficients, std::size_t before, std::size_t size, int length)
{
    const auto whole = static_cast<std::size_t>(std::max(length, 0));
    const std::size_t held = whole > before ? (whole - before) / size : 0;
    if (held < coefficients->size())
        coefficients->resize(held);
}

StagePart read_056(TextFields *in, FilterMaker *make)
{
    const int stage = in->integer(2);
    const int input = in->integer(3);
    const int output = in->integer(3);
    GenericResponse shape;
    for (int i = in->entries(4, 24); i > 0; --i) {
        const double frequency = in->real(12);
        shape.corners.push_back({frequency, in->real(12)});
    }
    return {stage, (*make)(std::move(shape), input, output)};
}

StagePart read_062(TextFields *in, FilterMaker *make)
{
    in->skip(1); // transfer function type, always P
    const int stage = in->integer(2);
    const int input = in->integer(3);
    const int output = in->integer(3);
    Polynomial shape;
    shape.approximation = in->letter();
    shape.frequency_unit = in->letter();
    shape.lower_frequency = in->real(12);
    shape.upper_frequency = in->real(12);
    shape.lower_bound = in->real(12);
    shape.upper_bound = in->real(12);
    shape.maximum_error = in->real(12);
    for (int i = in->entries(3, 24); i > 0; --i) {
        shape.coefficients.push_back(in->real(12));
        in->skip(12); // its error
    }
    return {stage, (*make)(std::move(shape), input, output)};
}

/// To the end of 058, behind the gain, which its record holds.
FieldsRead read_058(const Item &item)
{
    constexpr std::size_t Gain_Size = 26;
    TextFields in(item.bytes());
    in.skip(Gain_Size);
    for (int i = in.entries(2, 25); i > 0; --i) {
        in.skip(24); // a calibration's sensitivity and frequency
        in.skip_text();
    }
    return {in.read().size, in.read().bad || item.bad()};
}

template <class Blk> Part filter_of(const Blk &blk, FilterShape &&shape, FilterMaker *make)
{
    return (*make)(std::move(shape), blk.input_units, blk.output_units);
}

template <class Blk> Part named_filter(const Blk &blk, FilterShape &&shape, FilterMaker *make)
{
    return (*make)(std::move(shape), blk.input_units, blk.output_units, blk.response_name);
}

StagePart part_of(const blk_054_t &blk, FilterMaker *make)
{
    constexpr std::size_t Before = 20;
    Coefficients shape = shape_of(blk);
    keep_held(&shape.numerators, Before, 24, blk.length);
    return {blk.stage_num, filter_of(blk, std::move(shape), make)};
}

StagePart part_of(const blk_061_t &blk, FilterMaker *make)
{
    const std::size_t before = 21 + std::string_view(blk.response_name).size();
    Fir shape = shape_of(blk);
    keep_held(&shape.coefficients, before, 14, blk.length);
    return {blk.stage_num, named_filter(blk, std::move(shape), make)};
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

Part FilterMaker::operator()(FilterShape shape, int input, int output, const char *name)
{
    return kept_(Filter(std::move(shape), {input, unit_(input)}, {output, unit_(output)}, name));
}

std::optional<StagePart> stage_part(const Item &item, FilterMaker *make)
{
    if (const auto *gain = item.get<blk_058_t>())
        return StagePart{gain->stage_num, gain_of(*gain)};
    if (const auto *decimation = item.get<blk_057_t>())
        return StagePart{decimation->stage_num, decimation_of(*decimation)};
    if (const auto *fir = item.get<blk_061_t>())
        return part_of(*fir, make);
    if (const auto *coefficients = item.get<blk_054_t>())
        return part_of(*coefficients, make);
    if (const auto *roots = item.get<blk_053_t>())
        return StagePart{roots->stage_num, filter_of(*roots, shape_of(*roots), make)};
    if (const auto *list = item.get<blk_055_t>())
        return StagePart{list->stage_num, filter_of(*list, shape_of(*list), make)};
    TextFields in(item.bytes());
    if (item.type() == 56)
        return read_056(&in, make);
    if (item.type() == 62)
        return read_062(&in, make);
    return std::nullopt;
}

std::optional<Part> dictionary_part(const Item &item, FilterMaker *make)
{
    if (const auto *fir = item.get<blk_041_t>())
        return named_filter(*fir, Fir{fir->symmetry, fir->coef}, make);
    if (const auto *roots = item.get<blk_043_t>())
        return named_filter(*roots, roots_of(*roots), make);
    if (const auto *blk = item.get<blk_044_t>())
        return named_filter(*blk, Coefficients{blk->func_type, blk->numer_coef, blk->denom_coef},
                            make);
    if (const auto *list = item.get<blk_045_t>())
        return named_filter(*list, list_of(*list), make);
    if (const auto *blk = item.get<blk_046_t>()) {
        GenericResponse shape;
        for (std::size_t i = 0; i < std::min(blk->corner_freq.size(), blk->corner_slope.size());
             ++i)
            shape.corners.push_back({blk->corner_freq[i], blk->corner_slope[i]});
        return named_filter(*blk, std::move(shape), make);
    }
    if (const auto *decimation = item.get<blk_047_t>())
        return rates_of(*decimation);
    if (const auto *gain = item.get<blk_048_t>())
        return Gain{gain->gain, gain->freq};
    return std::nullopt;
}

FieldsRead fields_read(const Item &item)
{
    if (item.type() == 58)
        return read_058(item);
    if (item.type() != 56 && item.type() != 62)
        return {item.fields_size(), item.bad()};
    FilterMaker make([](int) { return std::string(); });
    TextFields in(item.bytes());
    (void)(item.type() == 56 ? read_056(&in, &make) : read_062(&in, &make));
    return in.read();
}

} // namespace quarl
