#include "samples/encodings.h"

#include "samples/steim.h"
#include "samples/words.h"

#include <algorithm>
#include <array>

namespace quarl
{

namespace
{

constexpr std::array<EncodingRow, 20> Encodings = {{
    {Encoding::ascii, "ASCII text", decode_text},
    {Encoding::int16, "16-bit integers", decode_int16},
    {Encoding::int24, "24-bit integers", decode_int24},
    {Encoding::int32, "32-bit integers", decode_int32},
    {Encoding::float32, "IEEE floats", decode_float32},
    {Encoding::float64, "IEEE doubles", decode_float64},
    {Encoding::steim1, "Steim-1", decode_steim1},
    {Encoding::steim2, "Steim-2", decode_steim2},
    {Encoding::geoscope_24, "Geoscope 24-bit", decode_geoscope_24},
    {Encoding::geoscope_gain3, "Geoscope 16-bit, 3 bits of gain", decode_geoscope_gain3},
    {Encoding::geoscope_gain4, "Geoscope 16-bit, 4 bits of gain", decode_geoscope_gain4},
    {Encoding::us_national, "US National Network"},
    {Encoding::cdsn, "CDSN gain-ranged", decode_cdsn},
    {Encoding::graefenberg, "Graefenberg gain-ranged"},
    {Encoding::strasbourg, "IPG Strasbourg gain-ranged"},
    {Encoding::steim3, "Steim-3"},
    {Encoding::sro, "SRO gain-ranged", decode_sro},
    {Encoding::hglp, "HGLP"},
    {Encoding::dwwssn, "DWWSSN 16-bit integers", decode_int16},
    {Encoding::rstn, "RSTN gain-ranged"},
}};

} // namespace

const EncodingRow *find_encoding(Encoding encoding)
{
    const auto *row = std::lower_bound(
        Encodings.begin(), Encodings.end(), encoding,
        [](const EncodingRow &some, Encoding code) { return some.encoding < code; });
    return row != Encodings.end() && row->encoding == encoding ? row : nullptr;
}

std::string_view name_of(Encoding encoding)
{
    const EncodingRow *row = find_encoding(encoding);
    return row ? row->name : std::string_view();
}

} // namespace quarl
