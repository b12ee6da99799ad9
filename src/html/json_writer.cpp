#include "html/json_writer.h"

#include "platform/text.h"
#include "platform/utf8.h"
#include "json/text.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <quarl/contents.h>

namespace quarl::html
{

namespace
{

/// Makes "1.5e+09" and "1.5e-09" what they need: "1.5e9", "1.5e-9". Returns the end.
char *without_filling(char *begin, char *end)
{
    char *at = end - begin > 4 ? end - 4 : end;
    if (at == end || *at != 'e') // an exponent of three digits has no zeros
        return end;
    char *to = at + 1;
    if (at[1] == '-')
        ++to;
    if (at[2] != '0')
        *to++ = at[2];
    *to++ = at[3];
    return to;
}

} // namespace

Json &Json::key(std::string_view name)
{
    begin();
    put('"');
    out_.write(name);
    put('"');
    put(':');
    comma_ = false;
    return *this;
}

void Json::string(std::string_view bytes, bool is_utf8)
{
    begin();
    put('"');
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
    put('"');
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
    if (!std::isfinite(value)) {
        out_.write("null");
        return;
    }
    char *const to = out_.reserve(Real_Room);
    out_.commit(without_filling(to, put_general(to, value, digits)));
}

void Json::fixed(double value, int decimals)
{
    constexpr double Most = 1e9;
    static constexpr std::array<int, 6> Powers = {1, 10, 100, 1000, 10000, 100000};
    if (!(std::abs(value) < Most)) {
        real(value);
        return;
    }
    begin();
    const int scale = Powers[static_cast<std::size_t>(decimals)];
    auto units = static_cast<std::int64_t>(std::llround(value * scale));
    char *to = out_.reserve(json::Number_Room);
    if (units < 0)
        *to++ = '-';
    units = std::abs(units);
    to = json::put_number(to, units / scale);
    if (auto rest = static_cast<std::uint64_t>(units % scale); rest > 0) {
        for (; rest % 10 == 0; rest /= 10)
            --decimals;
        *to++ = '.';
        char *const end = to + decimals;
        for (char *at = end; at != to; rest /= 10)
            *--at = static_cast<char>('0' + rest % 10);
        to = end;
    }
    out_.commit(to);
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

void Json::numbers(std::string_view joined)
{
    open('[');
    out_.write(joined);
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
