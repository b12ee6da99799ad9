// The text of a page: markup that this program has written, and texts of volumes, which never
// become markup.
#pragma once

#include "platform/out.h"

#include <cstdint>
#include <string_view>

namespace quarl::html
{

/// Markup of the program itself: a constant, so that nothing that was read can become one.
struct Literal {
    consteval Literal(const char *markup) : text(markup) {} // NOLINT: literals are handed over
    std::string_view text;
};

/// Writes a page.
class Markup
{
public:
    explicit Markup(Out &out) : out_(out) {}

    void put(Literal markup) { out_.write(markup.text); }
    /// The only way of a volume's text into a page, between tags or between quotation marks. Its
    /// bytes are Latin-1; control characters and invisible ones are shown as "\xHH".
    void text(std::string_view latin);
    /// The same for names of files: UTF-8 where it is valid.
    void path(std::string_view name);
    void number(std::int64_t value);
    /// With a comma between thousands: for texts, not for what is read back.
    void grouped(std::int64_t value);
    /// The shortest text that reads back as the same number.
    void real(double value);
    /// Bytes that go through as they are: what was embedded in the program.
    void embed(std::string_view bytes) { out_.write(bytes); }

private:
    void special(unsigned char byte);

    Out &out_;
};

} // namespace quarl::html
