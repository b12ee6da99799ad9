// What a page brings along, put into the program when it is built.
#pragma once

#include <string_view>

namespace quarl::html
{

/// A part of a page, and its hash as a Content-Security-Policy names it: "sha256-...".
struct Embedded {
    std::string_view text;
    std::string_view hash;
};

extern const Embedded Style;
extern const Embedded Drawing; ///< D3
extern const Embedded Script;

} // namespace quarl::html
