// XML, written as it goes: names are constants of the program, everything else goes through one
// function that escapes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace quarl::xml
{

/// The name of an element or attribute. A text of a volume does not compile as one.
class Name
{
public:
    template <std::size_t N>
    consteval Name(const char (&name)[N]) // NOLINT(google-explicit-constructor)
        : name_(name, N - 1)
    {
    }
    [[nodiscard]] std::string_view text() const { return name_; }

private:
    std::string_view name_;
};

/// Appends a text as characters of an element or of an attribute in double quotes. What is UTF-8
/// stays, anything else is taken for Latin-1. Characters that XML cannot hold, most of the control
/// characters, become U+FFFD; returns how many there were.
std::size_t append_escaped(std::string *to, std::string_view text);

/// Appends the shortest text that reads back as the same double, as XML Schema has it: "INF",
/// "NaN".
void append_number(std::string *to, double value);

/// A document with indented elements. `sink` gets it in pieces; what it throws passes through.
class Writer
{
public:
    explicit Writer(std::function<void(std::string_view)> sink) : sink_(std::move(sink)) {}
    Writer(const Writer &) = delete;
    Writer &operator=(const Writer &) = delete;

    void declaration();
    /// Opens an element; attributes may follow, then one value or further elements.
    void open(Name name);
    void attribute(Name name, std::string_view text);
    void attribute(Name name, std::int64_t number);
    void attribute(Name name, double number);
    void value(std::string_view text);
    void value(std::int64_t number);
    void value(double number);
    /// Closes the element that was opened last.
    void close();

    /// An element with a value and nothing else.
    template <class T> void element(Name name, const T &content)
    {
        open(name);
        value(content);
        close();
    }
    /// One of many elements with a number and its place, in one go.
    void row(Name name, Name attribute, std::int64_t place, double number);
    void comment(std::string_view text);
    /// Hands over what is left.
    void finish();

    /// Characters replaced since it was asked last.
    std::size_t take_replaced();

private:
    void begin_line();
    void begin_attribute(Name name);
    void begin_content();

    std::function<void(std::string_view)> sink_;
    std::string held_;
    std::vector<std::string_view> names_; ///< of open elements
    bool in_tag_ = false;                 ///< attributes may follow
    bool has_value_ = false;              ///< the element that is open has a value
    std::size_t replaced_ = 0;
};

} // namespace quarl::xml
