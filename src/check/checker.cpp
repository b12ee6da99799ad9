#include "check/checker.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

bool is_blank(const LogicalRecord &record)
{
    return std::all_of(record.header.begin(), record.header.end(),
                       [](char c) { return c == ' ' || c == '\0' || c == '\n'; });
}

/// Complaints about the fields of a blockette, and about the end of the input.
bool is_about_item(MessageKind kind)
{
    switch (kind) {
    case MessageKind::input_cut:
    case MessageKind::item_cut:
    case MessageKind::bad_integer:
    case MessageKind::bad_real:
    case MessageKind::text_too_long:
    case MessageKind::negative_count:
    case MessageKind::blockette_too_small:
        return true;
    default:
        return false;
    }
}

/// What a data record holds of a series that ends in it.
SeriesSeen::End end_of(const blk_dh_t &header)
{
    const double length = header.samp_rate > 0 ? header.nsamps / header.samp_rate : 0.0;
    return {true, header.epoch, header.epoch + length, header.samp_rate};
}

std::string one_line(std::string_view text)
{
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

} // namespace

Checker::Checker(const Chosen &chosen, bool keeps_responses)
    : chosen_(chosen), keeps_responses_(keeps_responses)
{
    for (std::size_t rule = 0; rule < all_rules().size(); ++rule) {
        if (!chosen_[rule])
            continue;
        ask(all_rules()[rule].check, rule);
        ask(all_rules()[rule].other, rule);
    }
    begin();
}

void Checker::begin()
{
    context_ = std::make_unique<Context>();
    context_->evaluator = &evaluator_;
    uses_ = {};
    uses_before_ = 0;
    refers_ = false;
    deferred_.clear();
    series_ = {};
}

void Checker::ask(const Check &check, std::size_t rule)
{
    std::visit(
        [&](const auto &each) {
            if constexpr (!std::is_same_v<std::decay_t<decltype(each)>, std::monostate>)
                add(each, rule);
        },
        check);
}

template <class T> void Checker::add(Look<T> function, std::size_t rule)
{
    std::get<std::vector<Asked<T>>>(asked_).push_back({function, Report(&findings_, rule)});
}

template <class T> void Checker::look(const T &at) const
{
    for (const Asked<T> &asked : std::get<std::vector<Asked<T>>>(asked_))
        asked.look(*context_, at, asked.report);
}

void Checker::hear(const Message &message)
{
    if (message.kind == MessageKind::formats_differ)
        context_->formats_differ = true;
    constexpr std::size_t Enough = 4;
    if (is_about_item(message.kind) && context_->complaints.size() < Enough)
        context_->complaints.push_back(one_line(full_text(message)));
}

void Checker::enter(const LogicalRecord &record)
{
    if (is_blank(record))
        return;
    static constexpr std::string_view Headers = "VAST";
    context_->has_headers |= Headers.find(record.place.type_code) != std::string_view::npos;
    look(record);
    context_->before = record;
    context_->has_before = true;
}

void Checker::add(const Item &item)
{
    if (const auto *header = item.get<blk_dh_t>())
        add_data(item, *header);
    else
        add_control(item);
    context_->complaints.clear();
    context_->formats_differ = false;
}

void Checker::add_data(const Item &item, const blk_dh_t &header)
{
    Inventory &inventory = context_->inventory;
    inventory.add(item);
    const DataChannel &channel = *inventory.data_channel();
    if (!series_.is_empty())
        series_.meet(item.place().sequence_number, channel.code, end_of(header));
    look(DataSeen{header, item.place().record, channel, inventory.data_epoch()});
}

std::string Checker::subject(const Item &item) const
{
    const bool of_channel = item.type() >= 52 && item.type() <= 62;
    const bool of_station = item.type() == 50 || item.type() == 51;
    const Inventory &inventory = context_->inventory;
    if (of_channel && !inventory.channel_epochs().empty())
        return subject_of(inventory, inventory.channel_epochs().back());
    if (of_station && !inventory.station_epochs().empty())
        return inventory.station_of(inventory.station_epochs().back()).code.text();
    return formatted<"blockette %03d">(item.type());
}

void Checker::add_control(const Item &item)
{
    Inventory &inventory = context_->inventory;
    inventory.add(item);
    end_epoch();
    if (item.get<blk_052_t>()) {
        uses_before_ = uses_.count();
        refers_ = false;
    }
    refers_ |= item.type() == blk_060_t::Number;
    uses_.see(item, inventory, [&] { return subject(item); });
    look(item);
    if (item.get<FileEnd>())
        return;
    context_->has_headers = true;
    ++context_->control_items;
    context_->identifiers += item.type() == 5 || item.type() == 8 || item.type() == 10;
    if (item.type() == blk_050_t::Number || item.type() == blk_052_t::Number)
        context_->last_station_item = item.type();
    if (item.get<blk_074_t>())
        series_.add(inventory.series_index().back());
}

/// The units that a channel epoch and its response refer to.
void Checker::note_units(const ChannelEpoch &epoch)
{
    const auto use = [&](int code) { context_->unit_users.try_emplace(code, &epoch); };
    use(epoch.signal_units);
    use(epoch.calibration_units);
    for (const StagePtr &stage : epoch.response.stages)
        for (const Part &part : stage->parts)
            if (const auto *filter = std::get_if<FilterPtr>(&part)) {
                use((*filter)->input().code);
                use((*filter)->output().code);
            }
}

void Checker::look_at_epoch(const ChannelEpoch &epoch)
{
    const Inventory &inventory = context_->inventory;
    note_units(epoch);
    look(epoch);
    if (!epoch.response.stages.empty() && !is_log(inventory, epoch))
        look(ResponseSeen(inventory, epoch, &room_));
}

/// Looks at the channel epoch that has ended while it is at hand, and lets its response go when
/// nobody else wants it: those of an archive need not fit into memory. What its dictionaries lack
/// so far may come behind it.
void Checker::end_epoch()
{
    Inventory &inventory = context_->inventory;
    const ChannelEpoch *epoch = inventory.ended_epoch();
    if (!epoch)
        return;
    if (refers_ || uses_.count() != uses_before_) {
        deferred_.push_back(epoch);
    } else {
        look_at_epoch(*epoch);
        if (!keeps_responses_)
            inventory.forget_ended_response();
    }
}

std::vector<Finding> Checker::take(Inventory *taken)
{
    const Inventory &inventory = context_->inventory;
    context_->inventory.finish();
    end_epoch();
    context_->uses = uses_.take();
    context_->series = series_.seen();
    for (const Station &station : inventory.stations())
        look(station);
    for (const Channel &channel : inventory.channels())
        look(channel);
    for (const ChannelEpoch *epoch : deferred_)
        look_at_epoch(*epoch);
    for (const DataChannel &channel : inventory.data_channels())
        look(channel);
    look(*context_);
    if (taken)
        *taken = std::move(context_->inventory);
    begin();
    return findings_.take();
}

} // namespace quarl
