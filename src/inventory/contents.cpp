// Codes of channels.
#include "platform/keyed_hash.h"
#include "platform/text.h"

#include <algorithm>
#include <cstring>
#include <quarl/contents.h>
#include <quarl/records.h>

namespace quarl
{

namespace
{

void put(char *to, std::string_view code, std::size_t size) { trimmed(code).copy(to, size); }

} // namespace

ChannelCode::ChannelCode(std::string_view network, std::string_view station,
                         std::string_view location, std::string_view channel, int subchannel)
    : subchannel_(subchannel)
{
    put(&letters_[0], network, 2);
    put(&letters_[2], station, 5);
    put(&letters_[7], location, 2);
    put(&letters_[9], channel, 3);
}

/// The texts of data records have no blanks behind them, and are zero there.
ChannelCode code_of(const blk_dh_t &header)
{
    ChannelCode code;
    std::memcpy(&code.letters_[0], header.network_code, 2);
    std::memcpy(&code.letters_[2], header.stn_id, 5);
    std::memcpy(&code.letters_[7], header.loc_id, 2);
    std::memcpy(&code.letters_[9], header.chan_id, 3);
    return code;
}

std::string ChannelCode::text() const
{
    std::string all(network());
    all += '_';
    all += station();
    if (channel().empty() && location().empty())
        return all;
    all += '_';
    all += location();
    all += '_';
    all += channel();
    if (subchannel_ != 0)
        all += ':' + std::to_string(subchannel_);
    return all;
}

std::size_t ChannelCode::hash() const
{
    std::array<std::uint64_t, 2> words{};
    std::memcpy(words.data(), letters_.data(), letters_.size());
    words[1] |= std::uint64_t{static_cast<std::uint32_t>(subchannel_)} << 32;
    return keyed_hash(words);
}

} // namespace quarl
