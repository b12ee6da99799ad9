// The header of a data record, completed from a dictionary and from its own chain of blockettes.
#include "blockette/chain.h"
#include "blockette/data_format.h"
#include "blockette/data_header.h"
#include "fuzz/harness.h"
#include "listing/pbrief.h"
#include "platform/text.h"
#include "volume/fixup_dh.h"
#include "volume/format_lookup.h"
#include "volume/seed.h"

#include <algorithm>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const std::vector<char> exact(data, data + size);
    const std::string_view record(exact.data(), size);
    run_one([&](Console *console) {
        static read_handle_t Handle; // knows the channel of most of the corpus
        blk_052_t channel;
        settbl(Handle.fmt_list, 0, std::string("Steim2 Integer Compression Format"));
        copy_text(channel.chan_id, "BHZ");
        channel.loc_id[0] = '\0';
        constexpr char Station[Station_Size] = "QRL";
        update_rec_list(Handle.rec_list, Station, Handle.fmt_list, channel);
        auto header = new_dh();
        parse_dh(header.get(), record.substr(std::min<std::size_t>(size, 8)));
        fixup_dh(header.get(), &Handle);
        const B1000 own = parse_b1000(exact.data(), size);
        header->type = own.index != 0 ? own.index : sd_data_type(header->format);
        if (own.index != 0)
            b030_problem(*header, header->format, encoding_name(own.encoding));
        pbrief_dh(console->out(), *header);
        DataBlockettes chain;
        read_chain(*header, record, &chain);
    });
    return 0;
}
