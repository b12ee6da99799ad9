#include "platform/json_text.h"

#include "platform/format.h"

namespace quarl
{

std::string json_text(std::string_view text)
{
    std::string all = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            all += '\\';
        if (byte >= 0x20 && byte < 0x7F)
            all += c;
        else
            all += formatted<"\\u%04x">(static_cast<int>(byte));
    }
    return all + '"';
}

} // namespace quarl
