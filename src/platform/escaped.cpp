#include "platform/escaped.h"

#include "platform/format.h"
#include "platform/utf8.h"

#include <algorithm>

namespace quarl
{

namespace
{

bool is_plain_ascii(char c) { return c >= ' ' && c <= '~'; }

void append_escaped(std::string *to, char c)
{
    *to += formatted<"\\x%02x">(static_cast<int>(static_cast<unsigned char>(c)));
}

} // namespace

std::string escaped(std::string_view text, std::string_view besides)
{
    std::string all;
    if (std::all_of(text.begin(), text.end(), is_plain_ascii))
        return all.append(text);
    while (!text.empty()) {
        std::size_t size = plain_character(text);
        if (size == 0 && besides.find(text[0]) != std::string_view::npos)
            size = 1;
        if (size > 0)
            all.append(text.substr(0, size));
        else
            append_escaped(&all, text[0]);
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    return all;
}

std::string escaped_in_ascii(std::string_view text)
{
    std::string all;
    for (const char c : text) {
        if (is_plain_ascii(c))
            all += c;
        else
            append_escaped(&all, c);
    }
    return all;
}

} // namespace quarl
