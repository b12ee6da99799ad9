// The chain of data blockettes behind the fixed header of a data record.
#pragma once

#include <quarl/blockette_chain.h>
#include <quarl/records.h>
#include <string_view>

namespace quarl
{

/// Reads the chain of the record that stands at `record`, as far as there are bytes of it. It is
/// followed forward only, to blockettes that do not overlap, so that it ends.
void read_chain(const blk_dh_t &header, std::string_view record, DataBlockettes *chain);

} // namespace quarl
