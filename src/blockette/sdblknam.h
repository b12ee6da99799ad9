// The catalogue of SEED blockette types.
#pragma once

#include <string_view>

namespace quarl
{

/// A row of the catalogue.
struct Sdinfo {
    int id;                ///< blockette type; -1 for a data record
    int minsz;             ///< smallest legal length in bytes
    std::string_view name; ///< display name, trailing blanks and all
};

/// The row of `type`; null for a type outside the catalogue.
const Sdinfo *find_sdinfo(int type);

/// Display name of `type`; "Unknown Type", with a diagnostic, for a type outside the catalogue.
std::string_view sdblknam(int type);

/// Smallest legal length of `type`; 0, with a diagnostic, for a type outside the catalogue.
int sdminsz(int type);

} // namespace quarl
