// Writes one JSON text to a stream, value by value.
#pragma once

#include "platform/json_text.h"
#include "platform/out.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace quarl
{

/// Puts the commas. What it writes holds no "<", so that no text can end the script element of a
/// page that the JSON stands in.
class Json
{
public:
    explicit Json(Out &out) : out_(out) {}

    void open(char bracket)
    {
        begin();
        put(bracket);
        comma_ = false;
    }
    void close(char bracket)
    {
        put(bracket);
        comma_ = true;
    }
    /// `name` is one of the program's own: nothing in it needs to be escaped. The value follows:
    /// json.key("station").text(station).
    Json &key(std::string_view name);

    /// A text of Latin-1, without blanks at its ends.
    void text(std::string_view latin);
    /// The name of a file: UTF-8 where it is valid.
    void path(std::string_view name);
    void whole(std::int64_t value);
    /// The shortest text that reads back as the same number; null when it is not finite.
    void real(double value);
    /// With `digits` significant ones at most.
    void real(double value, int digits);
    /// Rounded to so many decimals, of an angle or the like; null when it is not finite.
    void fixed(double value, int decimals);
    void truth(bool value);
    void null();

    /// null where there is no value
    void index(std::optional<std::size_t> value);
    /// An array of numbers that were made before.
    void numbers(std::string_view joined);
    void indexes(std::span<const std::size_t> values);

private:
    void begin()
    {
        if (comma_)
            put(',');
        comma_ = true;
    }
    void put(char c)
    {
        char *to = out_.reserve(1);
        *to++ = c;
        out_.commit(to);
    }
    void string(std::string_view bytes, const json::Shown &shown);

    Out &out_;
    bool comma_ = false; ///< before what comes next
};

} // namespace quarl
