#include "volume/resume.h"

#include "blockette/msd.h"
#include "blockette/record_header.h"
#include "volume/recover.h"
#include "volume/run.h"

#include <algorithm>
#include <quarl/options.h>

namespace quarl
{

namespace
{

/// Tells what is passed over, `count` bytes from byte `at` of the current record on.
void tell_passed(read_handle_t *handle, PassedOver::Why why, int at, std::int64_t count, int type)
{
    const SeedInput &in = *handle->logical;
    PassedOver passed;
    passed.why = why;
    passed.place = {run().Tapefile, in.record_begin() + at, in.recno(),
                    in.seq_num(),   in.type_code(),         in.cont_code()};
    passed.type = type;
    in.record_from(at).copy(passed.bytes.data(), passed.bytes.size());
    passed.count = count;
    if (handle->on_passed_over)
        handle->on_passed_over(passed);
}

/// Moves to the next record that is one.
Step find_next_record(read_handle_t *handle)
{
    SeedInput *in = handle->logical.get();
    const std::string_view held = in->held();
    const std::size_t next = find_record(held);
    // What stands at the end may be the beginning of a header.
    constexpr std::size_t Least = 64;
    const std::size_t most = held.size() > 2 * Least ? held.size() - Least : held.size();
    const auto step = static_cast<int>(next == std::string_view::npos ? most : next);
    tell_passed(handle, PassedOver::Why::header, 0, step, -1);
    return advance_by(in, Entry::begin, std::max(step, 1)) == 0 ? Step::found : Step::end;
}

/// Moves behind bytes that are no blockette: to the next one of the record, else to the next
/// record.
Step find_next_blockette(read_handle_t *handle)
{
    SeedInput *in = handle->logical.get();
    const int at = in->record_read() - Prefix;
    const std::string_view rest = in->record_from(at);
    // Line feeds between blockettes come in thousands, and the rest need not be looked at for each.
    const std::size_t behind = std::min(rest.find_first_not_of('\n'), rest.size());
    const bool line_feeds = behind > 0 && may_begin_blockette(rest.substr(behind));
    const std::size_t next = line_feeds ? behind : find_blockette(rest);
    tell_passed(handle, PassedOver::Why::blockette, at,
                static_cast<std::int64_t>(std::min(next, rest.size())), -1);
    if (next == std::string_view::npos)
        return advanceLogicalRecord(in) == 0 ? Step::found : Step::end;
    pass(in, static_cast<int>(next) - Prefix);
    return Step::found;
}

} // namespace

Step find_step(read_handle_t *handle)
{
    SeedInput *in = handle->logical.get();
    const bool first = in->record_read() == Record_Header + Prefix;
    const HeaderLook look = look_of({in->header().data(), in->header().size()});
    if (first && look == HeaderLook::none)
        return find_next_record(handle);
    if (is_ok_msd_quality(in->type_code()))
        return Step::right;
    const std::string_view rest = in->record_from(in->record_read() - Prefix);
    if (is_fill(rest.substr(0, Prefix)) || may_begin_blockette(rest))
        return Step::right;
    return find_next_blockette(handle);
}

bool broke_off(read_handle_t *handle, int type)
{
    if (handle->logical->entry() != Entry::broken_off)
        return false;
    handle->framing = false;
    tell_passed(handle, PassedOver::Why::continuation, Record_Header, 0, type);
    return true;
}

} // namespace quarl
