// Volumes whose data records cost as much as any can, by what the headers say of them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

/// A volume of about `size` bytes; "" for another kind. Kinds: `series`, entries of an index that
/// lead to one record number, which all data records bear; `span`, index entries and time span
/// headers of one number; `networks`, data of one channel, whose header has no network code, under
/// ever other codes; `repeats`, some records with gaps between them, over and over.
std::string worst_data(std::string_view kind, std::int64_t size);
