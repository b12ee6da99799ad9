// The blockette families: making, initialising, parsing and releasing each type's record.
#pragma once

#include "blockette/parsing.h"
#include "platform/allocate.h"

#include <memory>
#include <quarl/records.h>
#include <string_view>

namespace quarl
{

/// Every control blockette type that is listed, by its three-digit name.
#define SEED_BLOCKETTES(X)                                                                         \
    X(010)                                                                                         \
    X(011)                                                                                         \
    X(012)                                                                                         \
    X(030)                                                                                         \
    X(031)                                                                                         \
    X(032)                                                                                         \
    X(033)                                                                                         \
    X(034)                                                                                         \
    X(050)                                                                                         \
    X(051)                                                                                         \
    X(052)                                                                                         \
    X(053) X(054) X(055) X(057) X(058) X(059) X(061) X(062) X(070) X(071) X(072) X(073) X(074)

/// Every type that has a record and a parser but no listing: responses by reference, and the
/// generic response. The programs that evaluate a volume read them; to the listing they are
/// unknown.
#define SEED_UNLISTED(X) X(041) X(043) X(044) X(045) X(046) X(047) X(048) X(056) X(060)

/// The functions of record type T.
template <class T> struct Family;

/// new_NNN makes a record with its defaults, init_NNN sets them again, parse_NNN fills it from the
/// text of a blockette (from its three-digit type on; nothing beyond `buff` is read) and free_NNN,
/// in pfree, releases it. Parsers report bad fields and set Bad_blkflag; they never fail. Memory
/// that is not there ends the run.
#define DECLARE_FAMILY(name)                                                                       \
    std::unique_ptr<blk_##name##_t> new_##name();                                                  \
    void init_##name(blk_##name##_t *blk);                                                         \
    void parse_##name(blk_##name##_t *blk, std::string_view buff);                                 \
    void free_##name(blk_##name##_t *blk);                                                         \
    template <> struct Family<blk_##name##_t> {                                                    \
        using Record = blk_##name##_t;                                                             \
        static constexpr auto make = new_##name;                                                   \
        static constexpr auto parse = parse_##name;                                                \
        static constexpr auto free = free_##name;                                                  \
    };
SEED_BLOCKETTES(DECLARE_FAMILY)
SEED_UNLISTED(DECLARE_FAMILY)
#undef DECLARE_FAMILY

/// Reads anew, and whole, what parse_058 and parse_062 read as the listing wants it: the history of
/// calibrations, and the coefficients in their places.
void read_whole(blk_058_t *blk, std::string_view buff);
void read_whole(blk_062_t *blk, std::string_view buff);

#define CASE_FAMILY(name)                                                                          \
    case blk_##name##_t::Number:                                                                   \
        f(Family<blk_##name##_t>());                                                               \
        return true;

/// Calls f(Family<T>()) for the record type T of a listed blockette type; false when there is none.
template <class F> bool with_family(int type, F &&f)
{
    switch (type) {
        SEED_BLOCKETTES(CASE_FAMILY)
    default:
        return false;
    }
}

/// The same for every type that has a record.
template <class F> bool with_any_family(int type, F &&f)
{
    switch (type) {
        SEED_BLOCKETTES(CASE_FAMILY)
        SEED_UNLISTED(CASE_FAMILY)
    default:
        return false;
    }
}
#undef CASE_FAMILY

/// Calls f(const T &) with a record of listed blockette type `type` as what it is; false when there
/// is no such type.
template <class F> bool visit(const record_t *record, int type, F &&f)
{
    return with_family(type, [&](auto family) {
        f(*static_cast<const typename decltype(family)::Record *>(record));
    });
}

/// The same for every type that has a record.
template <class F> bool visit_any(const record_t *record, int type, F &&f)
{
    return with_any_family(type, [&](auto family) {
        f(*static_cast<const typename decltype(family)::Record *>(record));
    });
}

/// Builds the full channel name from channel and location codes; a subchannel's name ends in a
/// letter for its orientation and is entered in Geoscope_channels.
void fix_channel(blk_052_t *blk);

/// Copies the current station and channel into a response or comment.
void stamp_channel(channel_context_t *blk);

} // namespace quarl
