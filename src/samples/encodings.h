// The encodings of samples: names, and what decodes them.
#pragma once

#include "samples/decoding.h"

namespace quarl
{

struct EncodingRow {
    Encoding encoding;
    std::string_view name;
    SampleDecoder decode = nullptr; ///< empty: nobody has published how
};

/// Null for a code that has no name.
const EncodingRow *find_encoding(Encoding encoding);

} // namespace quarl
