// What a checker makes of the order of logical records, and of damage.
#include "check/checker.h"

#include "blockette/msd.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

HeaderLook look_at(const LogicalRecord &record)
{
    return look_of(std::string_view(record.header.data(), record.header.size()));
}

/// Data records within one logical record of the volume share its number.
bool may_share_number(const Context &context, const LogicalRecord &record)
{
    const int whole = context.inventory.volume().record_length;
    return is_ok_msd_quality(record.place.type_code) && context.has_before &&
           is_ok_msd_quality(context.before.place.type_code) && context.before.length < whole;
}

/// A record that describes something: volume, dictionary or station.
bool is_description(char type) { return is_header_type(type) && type != 'T'; }

} // namespace

void Checker::enter(const LogicalRecord &record)
{
    const HeaderLook look_of_it = look_at(record);
    if (std::exchange(input_.is_empty, false))
        input_.begin = record.header;
    last_look_ = look_of_it;
    if (look_of_it == HeaderLook::fill)
        return context_->order.enter_blank();
    if (look_of_it == HeaderLook::none)
        return;
    any_record_ |= look_of_it == HeaderLook::sound &&
                   std::all_of(record.header.begin(), record.header.begin() + 6, is_digit);
    context_->numbers_lost |= look_of_it != HeaderLook::sound;
    const char before = context_->order.type_before();
    const char type = record.place.type_code;
    const auto jump = context_->order.enter(record, look_of_it != HeaderLook::odd_number,
                                            may_share_number(*context_, record));
    if (jump) { // where a blockette goes on over it, numbers are wrong and nothing is lost
        broken_.reset();
        const bool is_twice = jump->number == jump->before;
        copy_ = is_twice ? record.place.record : 0;
        if (is_twice)
            context_->in_step = false;
        else if (!record.continues && (is_header_type(before) || is_header_type(type)))
            lose(jump->record - (jump->number > jump->before + 1 ? jump->blank : 0), jump->number,
                 is_description(before) || is_description(type));
    }
    tell_pending();
    look(record);
    note_mark(record);
    context_->before = record;
    context_->has_before = true;
}

/// Whether its mark is wrong turns out with what is read of it.
void Checker::note_mark(const LogicalRecord &record)
{
    const bool star = record.place.continuation_code == '*';
    if (is_ok_msd_quality(record.place.type_code) || star == record.continues ||
        (star && (record.follows_full || !context_->in_step)))
        return;
    marked_ = record;
}

/// What nothing else has explained.
void Checker::tell_pending()
{
    if (marked_)
        look(Marked{*marked_});
    if (broken_)
        look(*broken_);
    marked_.reset();
    broken_.reset();
}

/// Something is missing in front of the record with this number; `breaks` the open epoch.
void Checker::lose(std::int64_t record, int number, bool breaks)
{
    const auto &stations = context_->inventory.station_epochs();
    attachment_.lose(number, stations.empty() ? 0 : stations.back().sequence_number);
    context_->headers_lost = true;
    context_->in_step = false;
    if (breaks)
        break_epoch(record);
}

/// The open channel epoch, if there is one, is not whole.
void Checker::break_epoch(std::int64_t record)
{
    const auto &epochs = context_->inventory.channel_epochs();
    if (epochs.empty() || !is_open_ || std::exchange(is_broken_, true))
        return;
    context_->damaged.insert(&epochs.back());
    ++context_->left_out[record];
}

void Checker::pass_over(const PassedOver &passed)
{
    const bool of_header = passed.why == PassedOver::Why::header;
    const bool is_told = (!context_->in_step && !of_header) || last_look_ == HeaderLook::odd_type;
    const bool line_feed = passed.why == PassedOver::Why::blockette &&
                           passed.bytes.front() == '\n' && passed.count < 8;
    marked_.reset();
    if (of_header)
        context_->order.enter_unreadable();
    const bool of_data = of_header && is_ok_msd_quality(context_->order.type_before());
    if (!line_feed && !of_data && copy_ != passed.place.record)
        lose(passed.place.record, passed.place.sequence_number, true);
    if (is_told)
        return;
    if (passed.why == PassedOver::Why::continuation && last_look_ == HeaderLook::fill)
        broken_ = passed;
    else if (passed.why != PassedOver::Why::continuation || last_look_ != HeaderLook::none)
        look(passed);
}

/// The item stands in a record that is there twice, and was read in the one before.
bool Checker::is_copy(const Item &item)
{
    if (placed_in_ != item.place().record)
        read_before_ = std::exchange(read_, {});
    const std::pair<std::size_t, std::size_t> placed(
        placed_in_ == item.place().record ? read_.size() : 0,
        std::hash<std::string_view>()(item.bytes()));
    read_.insert(placed);
    return copy_ == item.place().record && read_before_.contains(placed);
}

} // namespace quarl
