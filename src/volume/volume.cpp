#include "platform/text.h"
#include "volume/item_access.h"
#include "volume/seed.h"
#include "volume/state.h"

#include <new>
#include <quarl/volume.h>
#include <utility>

namespace quarl
{

namespace
{

/// Reads and opens what the options name, unless they have it.
void prepare_formats(State *state)
{
    const VolumeOptions &options = state->options;
    FormatSources &formats = *state->formats;
    if (!options.format_sources) {
        if (options.default_parameters)
            formats.read_default_parameters();
        if (!options.parameter_file.empty())
            formats.read_parameters(options.parameter_file);
        if (!options.database.empty())
            formats.open_database(options.database);
    }
    state->run.Db = formats.parts().db;
    state->run.Parameters = formats.parts().parameters;
    auto &aliases = state->run.Parameters.tables["data_type_aliases"];
    for (const auto &[name, known] : options.format_aliases)
        aliases.insert_or_assign(name, known);
}

/// Tells of the logical record that was entered.
void tell_record(const State &state)
{
    const SeedInput &in = *state.handle->logical;
    state.options.logical_record({{state.run.Tapefile, in.record_begin(), in.recno(), in.seq_num(),
                                   in.type_code(), in.cont_code()},
                                  in.header(),
                                  in.recsiz(),
                                  in.entry() == Entry::continue_item,
                                  in.entry() == Entry::full});
}

void open_input(State *state, const std::string &path)
{
    state->handle = seed_read(path);
    state->handle->on_bad_item = state->options.bad_item;
    state->handle->logical->is_prompt = state->options.unlisted;
    state->handle->reads_unlisted = state->options.unlisted;
    if (state->options.unlisted && state->options.large_records)
        state->handle->largest_record = Largest_Data_Record;
    state->parsing.for_listing = !state->options.unlisted;
    state->handle->logical->on_record = state->options.record;
    state->handle->logical->recovers = state->options.recover;
    state->handle->on_passed_over = state->options.passed_over;
    if (state->options.logical_record)
        state->handle->logical->on_entered = [state] { tell_record(*state); };
    state->run.Tapefile = state->options.first_file;
}

/// The turn of the item that is out is over.
void finish_item(State *state)
{
    if (!std::exchange(state->counts, false))
        return;
    // A control blockette that declares this type has a header, too, without a length.
    if (state->type == Data_Record)
        count_data(&state->count, static_cast<const blk_dh_t *>(state->record.get())->length);
    else
        count_blk(state->record.get(), state->type);
}

// Files are kept apart from items, which come a million times as often: a small function for each
// item, with little to save and to restore.
[[gnu::noinline]] void begin_file(State *state)
{
    init_count();
    clrSeedInput(state->handle->logical.get());
    state->handle->cut = false;
    state->in_file = true;
}

/// The byte up to which the items of the input file reach.
std::int64_t items_end(const read_handle_t &handle)
{
    if (handle.framing)
        return handle.now.place().offset;
    const SeedInput *in = handle.logical.get();
    const bool only_header = in->record_read() == Record_Header; // maybe of a data record
    return position(in) - (only_header ? Record_Header : 0);
}

/// The input file has ended, or is left: the item for it, or null when it held nothing. Another
/// file follows one that held an item.
[[gnu::noinline]] const Item *end_file(State *state, bool stopped)
{
    read_handle_t &handle = *state->handle;
    const SeedInput &in = *handle.logical;
    FileEnd &end = state->file_end;
    if (stopped)
        handle.framing = false;
    end.stopped = stopped || in.ending() == Ending::stop;
    end.cut = handle.cut || in.told_cut();
    end.failed = in.ending() == Ending::told_failure;
    const std::int64_t bytes = end.stopped ? items_end(handle) : in.totbytes();
    handle.framing = false;
    if (end.stopped)
        elog_complain<MessageKind::interrupted, "Interrupted at byte %d of input file #%d\n">(
            0, bytes, state->run.Tapefile);
    end.statistics = statistics(bytes, in.recno());
    state->in_file = false;
    state->ended = end.statistics.items == 0 || end.stopped || state->options.one_file;
    ItemAccess item{handle.now};
    item.begin(in, state->run.Tapefile, bytes);
    item.type(End_Of_File, 0);
    item.parsed(&end, false, 0);
    if (!state->ended)
        ++state->run.Tapefile;
    return bytes > 0 || !end.complete() ? &handle.now : nullptr;
}

bool is_to_stop(const State &state)
{
    return state.options.stop && state.options.stop->load(std::memory_order_relaxed) &&
           state.handle->logical->ending() != Ending::stop;
}

const Item *next_item(State *state)
{
    finish_item(state);
    while (!state->ended) {
        if (!state->in_file)
            begin_file(state);
        const bool stop = is_to_stop(*state);
        if (!stop && read_blk(state->handle.get(), &state->record, &state->type)) {
            state->counts = true;
            return &state->handle->now;
        }
        if (const Item *end = end_file(state, stop))
            return end;
    }
    return nullptr;
}

} // namespace

Volume::Volume(const std::string &path, VolumeOptions options)
    : state_(std::make_unique<State>(std::move(options)))
{
    const Reading reading(*state_);
    prepare_formats(state_.get());
    open_input(state_.get(), path);
}

Volume::Volume(Volume &&) noexcept = default;
Volume &Volume::operator=(Volume &&) noexcept = default;
Volume::~Volume() = default;

const Item *Volume::next()
try {
    if (!state_)
        return nullptr;
    if (state_->failure)
        throw Error(*state_->failure);
    const Reading reading(*state_);
    return next_item(state_.get());
} catch (const Error &error) {
    state_->failure = error;
    throw;
} catch (const std::bad_alloc &) {
    state_->failure = Error(MessageKind::out_of_memory, "Out of memory");
    throw Error(*state_->failure);
} catch (...) { // a callback's own: nobody knows in the middle of what
    state_->ended = true;
    throw;
}

Progress Volume::progress() const
{
    if (!state_)
        return {};
    const SeedInput &in = *state_->handle->logical;
    const Stored stored = in.stream->stored();
    return {state_->run.Tapefile, in.totbytes(), stored.read, stored.size};
}

std::optional<FileEnd> Volume::given_up() const
{
    if (!state_ || !state_->failure || !state_->in_file)
        return std::nullopt;
    const Reading reading(*state_);
    const read_handle_t &handle = *state_->handle;
    FileEnd end;
    end.failed = true;
    end.statistics = statistics(items_end(handle), handle.logical->recno());
    return end;
}

const std::string *Volume::text(Dictionary dictionary, int code) const
{
    if (!state_)
        return nullptr;
    switch (dictionary) {
    case Dictionary::data_formats:
        return gettbl(state_->handle->fmt_list, code);
    case Dictionary::comments:
        return gettbl(state_->run.Tbl_031, code);
    case Dictionary::sources:
        return gettbl(state_->run.Tbl_032, code);
    case Dictionary::abbreviations:
        return gettbl(state_->run.Tbl_033, code);
    case Dictionary::units:
        return gettbl(state_->run.Tbl_034, code);
    case Dictionary::responses:
        return gettbl(state_->run.Tbl_responses, code);
    case Dictionary::none:
    case Dictionary::encodings: // no volume defines them
        break;
    }
    return nullptr;
}

} // namespace quarl
