#include "html/json_writer.h"

#include "html/markup.h"
#include "platform/text.h"
#include "json/text.h"

#include <cmath>
#include <quarl/contents.h>

namespace quarl::html
{

Json &Json::key(std::string_view name)
{
    begin();
    out_.write("\"");
    out_.write(name);
    out_.write("\":");
    comma_ = false;
    return *this;
}

void Json::string(std::string_view bytes, bool is_utf8)
{
    begin();
    out_.write("\"");
    for (const char c : bytes) {
        char *to = out_.reserve(json::string_room(1));
        const auto byte = static_cast<unsigned char>(c);
        if (c == '<')
            to = json::put_text(to, "\\u003c");
        else if (json::Stays[byte] || (is_utf8 && byte >= 0x80))
            *to++ = c;
        else
            to = json::put_special(to, byte);
        out_.commit(to);
    }
    out_.write("\"");
}

void Json::text(std::string_view latin) { string(trimmed(latin), false); }
void Json::path(std::string_view name) { string(name, is_plain_utf8(name)); }

void Json::whole(std::int64_t value)
{
    begin();
    out_.commit(json::put_number(out_.reserve(json::Number_Room), value));
}

void Json::real(double value)
{
    begin();
    out_.commit(json::put_number(out_.reserve(json::Number_Room), value));
}

void Json::real(double value, int digits)
{
    begin();
    if (std::isfinite(value))
        out_.commit(put_general(out_.reserve(Real_Room), value, digits));
    else
        out_.write("null");
}

void Json::time(double seconds)
{
    constexpr double Ticks = 10000;
    if (seconds > Always && seconds < Forever)
        real(std::round(seconds * Ticks) / Ticks);
    else
        null();
}

void Json::truth(bool value)
{
    begin();
    out_.write(value ? "true" : "false");
}

void Json::null()
{
    begin();
    out_.write("null");
}

void Json::index(std::optional<std::size_t> value)
{
    if (value)
        whole(static_cast<std::int64_t>(*value));
    else
        null();
}

void Json::reals(std::span<const double> values, int digits)
{
    open('[');
    for (const double value : values)
        real(value, digits);
    close(']');
}

void Json::indexes(std::span<const std::size_t> values)
{
    open('[');
    for (const std::size_t value : values)
        whole(static_cast<std::int64_t>(value));
    close(']');
}

} // namespace quarl::html
