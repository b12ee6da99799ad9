#include "volume/format_lookup.h"

#include "blockette/data_format.h"
#include "blockette/msd.h"
#include "platform/elog.h"
#include "volume/run.h"

namespace quarl
{

namespace
{

FormatsMet &formats_met() { return *run().formats_met; }

int find_format(std::string_view name)
{
    const auto *aliases = pfget_arr(run().Parameters, "data_type_aliases");
    if (const std::string *alias = aliases ? getarr(*aliases, name) : nullptr)
        name = *alias;
    return find_seed_format(name);
}

int encoding_index(int encoding)
{
    int &index = formats_met().encoding_rows[encoding];
    if (index < 0) {
        const std::string_view name = encoding_name(encoding);
        index = name.empty() ? 0 : find_format(name);
    }
    return index;
}

} // namespace

int sd_data_type(std::string_view name)
{
    FormatsMet &met = formats_met();
    if (met.last_row < 0 || met.last_name != name) {
        met.last_row = find_format(name);
        met.last_name = name;
    }
    return met.last_row;
}

B1000 parse_b1000(const char *record, std::size_t available)
{
    constexpr int Preset_Length = 256;
    MsdHeader unpacked{record, available, 0, Preset_Length, 0};
    if (msdhdr_unpack(&unpacked) != 0)
        return {};
    return {unpacked.encoding, encoding_index(unpacked.encoding), unpacked.record_length, true,
            unpacked.word_order};
}

void b030_problem(const blk_dh_t &header, std::string_view dictionary_name,
                  std::string_view b1000_name)
{
    std::string channel =
        formatted<"%s_%s_%s%s%s">(header.network_code, header.stn_id, header.chan_id,
                                  std::string_view(*header.loc_id ? "_" : ""), header.loc_id);
    const auto [key, is_new] = formats_met().reported_channels.insert(std::move(channel));
    if (!is_new)
        return;
    elog_complain<MessageKind::formats_differ,
                  "\n*** Serious inconsistency in seed volume.\n"
                  "    For the channel %s, the 030 blockettes indicate the datatype\n"
                  "        %s\n"
                  "    but the blockette 1000 embedded in the data says the data is\n"
                  "        %s\n"
                  "    This inconsistency may cause problems.">(0, *key, dictionary_name,
                                                                b1000_name);
}

} // namespace quarl
