#include "check/checker.h"

#include "blockette/msd.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

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
SeriesSeen::End end_of(const DataSeen &data)
{
    SeriesSeen::End end;
    end.met = true;
    end.start = end.end = data.header.epoch;
    end.rate = data.rate;
    if (data.times && data.rate > 0.0) {
        end.start = seconds(data.times->start);
        end.end = seconds(data.times->next);
    }
    return end;
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
        ask(all_rules()[rule].third, rule);
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
    is_open_ = is_broken_ = any_record_ = false;
    attachment_ = {};
    input_ = {};
    marked_.reset();
    broken_.reset();
    placed_in_ = copy_ = 0;
    read_ = read_before_ = {};
    last_look_ = HeaderLook::sound;
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

void Checker::hear(const Message &message)
{
    if (message.kind == MessageKind::formats_differ)
        context_->formats_differ = true;
    constexpr std::size_t Enough = 4;
    if (is_about_item(message.kind) && context_->complaints.size() < Enough)
        context_->complaints.push_back(one_line(full_text(message)));
}

void Checker::add(const Item &item)
{
    if (const auto *header = item.get<blk_dh_t>())
        add_data(item, *header);
    else
        add_control(item);
    if (const auto *end = item.get<FileEnd>())
        input_.is_whole = !end->failed && !end->stopped;
    context_->complaints.clear();
    context_->formats_differ = false;
}

void Checker::add_data(const Item &item, const blk_dh_t &header)
{
    Inventory &inventory = context_->inventory;
    tell_pending();
    inventory.add(item);
    any_record_ = true;
    is_open_ = false;
    const DataChannel &channel = *inventory.data_channel();
    const DataRefinement more = item.data_blockettes().refinement();
    const DataSeen data{item,
                        header,
                        item.place().record,
                        channel,
                        inventory.data_epoch(),
                        more.sample_rate > 0.0 ? more.sample_rate : header.samp_rate,
                        data_times(header, more)};
    if (!series_.is_empty())
        series_.meet(item.place().sequence_number, channel.code, end_of(data));
    look(data);
    context_->before.length = header.length; // has turned out
}

Subject Checker::subject(const Item &item) const
{
    const bool of_channel = item.type() >= 52 && item.type() <= 62;
    const bool of_station = item.type() == 50 || item.type() == 51;
    const Inventory &inventory = context_->inventory;
    if (of_channel && !inventory.channel_epochs().empty())
        return subject_of(inventory, inventory.channel_epochs().back());
    if (of_station && !inventory.station_epochs().empty())
        return about::Station{inventory.station_of(inventory.station_epochs().back()).code};
    return about::Blockette{item.type()};
}

/// Numbers the item among those of its type in its record, and finds what it describes.
void Checker::place(const Item &item)
{
    context_->number_in_record = ++types_placed_[item.type()];
    context_->describes = [this, &item] {
        const Subject about = subject(item);
        return std::holds_alternative<about::Blockette>(about) ? std::string() : text_of(about, 0);
    };
}

/// What later items need to know of this one.
void Checker::note_item(const Item &item)
{
    constexpr int First = 10;
    constexpr int Last = 62;
    const int type = item.type();
    context_->has_headers |= item.record() && type >= First && type <= Last;
    any_record_ |= item.record() != nullptr;
    ++context_->control_items;
    context_->identifiers += type == 5 || type == 8 || type == 10;
    if (type == blk_050_t::Number || type == blk_052_t::Number)
        context_->last_station_item = type;
    if (const auto *index = item.get<blk_011_t>())
        for (int i = 0; i < index->num_stn_held; ++i)
            attachment_.add_station(index->seq_num[i]);
    if (item.get<blk_074_t>())
        series_.add(context_->inventory.series_index().back());
    if (item.bad() && type >= blk_052_t::Number && type <= Last)
        break_epoch(item.place().record);
    context_->in_step = true;
}

void Checker::add_control(const Item &item)
{
    Inventory &inventory = context_->inventory;
    const auto *end = item.get<FileEnd>();
    tell_pending();
    const bool copy = !end && is_copy(item);
    if (std::exchange(placed_in_, item.place().record) != item.place().record)
        types_placed_.clear();
    if (copy || (!end && !attachment_.takes(item.type())))
        return;
    if (end && end->cut) {
        context_->cut = context_->headers_lost = true;
        break_epoch(item.place().record);
    }
    is_open_ &= item.type() < blk_070_t::Number;
    inventory.add(item);
    end_epoch();
    if (item.get<blk_050_t>() || item.get<blk_052_t>()) {
        uses_before_ = uses_.count();
        refers_ = is_broken_ = false;
        is_open_ = item.get<blk_052_t>() && !inventory.channel_epochs().empty();
    }
    refers_ |= item.type() == blk_060_t::Number;
    place(item);
    uses_.see(item, inventory, [&] { return subject(item); });
    look(item);
    if (!end)
        note_item(item);
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
    if (!(epoch.start < epoch.end))
        return; // is told, and no more is judged
    note_units(epoch);
    look(epoch);
    if (epoch.response.stages.empty() || context_->damaged.contains(&epoch) ||
        is_log(inventory, epoch))
        return;
    const ResponseSeen seen(inventory, epoch, &room_);
    look(StagesSeen{seen});
    if (!seen.has_repeated())
        look(seen);
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
    if (!any_record_) {
        (void)findings_.take();
        if (input_.is_whole)
            look(input_);
        if (taken)
            *taken = std::move(context_->inventory);
        begin();
        return findings_.take();
    }
    tell_pending();
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
