// What tells records and blockettes from other bytes, where the reading goes on behind damage.
#pragma once

#include <cstddef>
#include <string_view>

namespace quarl
{

/// A control blockette may begin here: `text` reaches to the end of its logical record.
bool may_begin_blockette(std::string_view text);

/// Where in the rest of a logical record blockettes begin that lead, one behind the other, to its
/// end; npos: nowhere.
std::size_t find_blockette(std::string_view text);

/// Whether a blockette that has `wanted` bytes left goes on in a logical record with this body.
/// When it ends there, what is behind it says so; else the marks of the record do: it is the next
/// one by its number, and one that goes on by its code.
bool goes_on(std::string_view body, std::size_t wanted, bool is_next, bool is_marked);

/// Where the next logical record begins behind the first byte: its header, and what it holds, are
/// plausible. npos: nowhere in these bytes.
std::size_t find_record(std::string_view bytes);

/// The record with which the bytes begin holds a volume identifier (005, 008, 010) in front.
bool may_begin_volume(std::string_view bytes);

/// The length of the record of control blockettes with which the bytes begin: where the next one
/// follows it. 0: not to be seen.
int guessed_length(std::string_view bytes);

} // namespace quarl
