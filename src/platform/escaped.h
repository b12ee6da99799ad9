// Texts of volumes and of users where a terminal shows them.
#pragma once

#include <string>
#include <string_view>

namespace quarl
{

/// `text` with each byte escaped (`\x1b`) that belongs to no character of UTF-8 that shows: it
/// stays on its line and commands no terminal. `besides` are left as they are.
std::string escaped(std::string_view text, std::string_view besides = {});

/// The same with all beyond ASCII escaped.
std::string escaped_in_ascii(std::string_view text);

} // namespace quarl
