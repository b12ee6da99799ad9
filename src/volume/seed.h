// Framing: the volume's next blockette or data record, parsed.
#pragma once

#include "blockette/pfree.h"
#include "volume/handle.h"

#include <cstdint>
#include <string_view>

namespace quarl
{

/// Frames the next item of the input file and parses it into `*record`: a control blockette of
/// `*type`, or a data record (`*type` is Data_Record). `*record` is null for a blockette type
/// without a parser. A data record's `raw` and `data` stay valid until the next call. 1; 0 at the
/// end of the file, or when the input ended inside an item. Items above 10000 bytes end the run.
int read_blk(read_handle_t *handle, Record *record, int *type);

/// Makes and fills the record of a framed item: `bytes` is a blockette from its first byte on, or a
/// data record from its byte 8 on. Clears Bad_blkflag first. Null, with a complaint, for a type
/// without a parser.
Record parse_blk(std::string_view bytes, int type);

} // namespace quarl
