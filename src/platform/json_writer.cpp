#include "platform/json_writer.h"

#include "platform/text.h"
#include "platform/utf8.h"

#include <algorithm>

namespace quarl
{

namespace
{

constexpr json::Shown Latin_In_Page = json::shown(json::Charset::latin1, '<');
constexpr json::Shown Utf8_In_Page = json::shown(json::Charset::utf8, '<');

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

void Json::string(std::string_view bytes, const json::Shown &shown)
{
    constexpr std::size_t At_Once = 1024;
    begin();
    put('"');
    for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), At_Once))) {
        const std::string_view part = bytes.substr(0, At_Once);
        char *to = out_.reserve(json::string_room(part.size()));
        out_.commit(json::put_characters(to, part, shown));
    }
    put('"');
}

void Json::text(std::string_view latin) { string(trimmed(latin), Latin_In_Page); }
void Json::path(std::string_view name)
{
    string(name, is_plain_utf8(name) ? Utf8_In_Page : Latin_In_Page);
}

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
    out_.commit(json::put_rounded(out_.reserve(Real_Room), value, digits));
}

void Json::fixed(double value, int decimals)
{
    begin();
    out_.commit(json::put_decimals(out_.reserve(json::Number_Room), value, decimals));
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

} // namespace quarl
