// Patterns as shells have them for names of files.
#pragma once

#include <string_view>

namespace quarl
{

/// Whether the whole `text` is as `pattern` says: "*" stands for any characters, none included, "?"
/// for one, "[A-CX]" for one of these, "[!A-CX]" or "[^A-CX]" for one that is none of them; a
/// bracket without its end, and all else, stands for itself. Takes the product of both lengths.
bool matches_glob(std::string_view pattern, std::string_view text);

} // namespace quarl
