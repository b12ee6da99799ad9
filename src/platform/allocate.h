// Out of memory, handled in one place.
#pragma once

#include "platform/elog.h"

#include <cerrno>
#include <concepts>
#include <memory>
#include <new>
#include <vector>

namespace quarl
{

/// Where something is allocated, for the message when it cannot be.
/// A constructor, as initialisers of the members would name this file.
struct Where {
    const char *function;
    int line;
    const char *file;

    explicit Where(const char *in_function = __builtin_FUNCTION(), int at = __builtin_LINE(),
                   const char *in_file = __builtin_FILE())
        : function(in_function), line(at), file(in_file)
    {
    }
};

/// Ends the run: `what` with `count` entries could not be allocated.
[[noreturn]] void out_of_memory(const Where &where, std::size_t count, std::string_view what);

/// Gives `list` exactly `count` zeroed entries, in one allocation. A negative count, or one that
/// memory does not hold, ends the run with the count as an unsigned number.
template <class T>
void allocate(std::vector<T> &list, int count, std::string_view what, const Where &where = Where())
{
    try {
        if (count >= 0) {
            list = std::vector<T>(static_cast<std::size_t>(count));
            return;
        }
    } catch (const std::bad_alloc &) {
    }
    out_of_memory(where, static_cast<std::size_t>(count), what);
}

/// One zeroed T; what `allocate` is for a list.
template <class T>
std::unique_ptr<T> allocate_one(std::string_view what, std::size_t count, const Where &where)
{
    try {
        return std::make_unique<T>();
    } catch (const std::bad_alloc &) {
        out_of_memory(where, count, what);
    }
}

} // namespace quarl
