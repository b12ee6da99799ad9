#include "platform/glob.h"

#include <cstddef>

namespace quarl
{

namespace
{

constexpr std::size_t None = std::string_view::npos;

/// Whether a negation stands at the beginning of what is in a bracket.
bool is_negation(char c) { return c == '!' || c == '^'; }

/// The place of the "]" that ends the bracket at `from`: not the first character in it.
std::size_t end_of_bracket(std::string_view pattern, std::size_t from)
{
    std::size_t first = from + 1;
    if (first < pattern.size() && is_negation(pattern[first]))
        ++first;
    return pattern.find(']', first + 1);
}

/// Whether `c` is among the characters and ranges of a bracket, of which `inside` is all between
/// "[" and "]".
bool is_in_bracket(std::string_view inside, char c)
{
    const bool negated = is_negation(inside.front());
    bool found = false;
    for (std::size_t i = negated ? 1 : 0; i < inside.size(); ++i) {
        const char first = inside[i];
        char last = first;
        if (i + 2 < inside.size() && inside[i + 1] == '-')
            last = inside[i += 2];
        found |= first <= c && c <= last;
    }
    return found != negated;
}

/// Whether the piece of `pattern` at `*at`, which is no "*", stands for `c`; moves behind it.
bool takes(std::string_view pattern, std::size_t *at, char c)
{
    const std::size_t from = (*at)++;
    if (pattern[from] == '[') {
        if (const std::size_t end = end_of_bracket(pattern, from); end != None) {
            *at = end + 1;
            return is_in_bracket(pattern.substr(from + 1, end - from - 1), c);
        }
    }
    return pattern[from] == '?' || pattern[from] == c;
}

} // namespace

bool matches_glob(std::string_view pattern, std::string_view text)
{
    std::size_t at = 0;
    std::size_t done = 0;      // of the text
    std::size_t behind = None; // the last "*" of the pattern so far
    std::size_t from = 0;      // up to here that "*" stands for the text
    while (done < text.size()) {
        if (at < pattern.size() && pattern[at] == '*') {
            behind = ++at;
            from = done;
        } else if (at < pattern.size() && takes(pattern, &at, text[done])) {
            ++done;
        } else if (behind != None) { // it stands for one more
            at = behind;
            done = ++from;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', at) == None;
}

} // namespace quarl
