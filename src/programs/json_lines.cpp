#include "programs/json_lines.h"

#include "blockette/blockette.h"
#include "blockette/sdblknam.h"
#include "platform/elog.h"
#include "platform/text.h"
#include "programs/progress.h"
#include "programs/sdd.h"
#include "json/item.h"

#include <utility>

namespace quarl
{

namespace
{

/// What a listing says of an item besides the messages of the reading: types that it does not know.
void complain(const Item &item)
{
    if (const auto *end = item.get<FileEnd>()) {
        for (const Statistics::Type &type : end->statistics.types)
            (void)sdblknam(type.type);
    } else if (item.type() != Data_Record && !with_family(item.type(), [](auto /*family*/) {})) {
        elog_complain<MessageKind::blockette_unknown, "failed to parse blockette #%d">(0,
                                                                                       item.type());
    }
}

/// False when a read error ended an input file.
bool print_items(Console *console, Volume *volume, const Selection &selection)
{
    bool whole = true;
    while (const Item *item = volume->next()) {
        const auto *end = item->get<FileEnd>();
        whole &= !(end && end->failed);
        complain(*item);
        if (selection.has(*item))
            json::print_item(console->out(), *volume, *item);
    }
    return whole;
}

} // namespace

bool Selection::read(std::string_view types)
{
    all_ = false;
    while (true) {
        const std::string_view word = types.substr(0, types.find(','));
        std::size_t used = 0;
        const int type = leading_int(word, &used);
        const bool is_number = used == word.size() && used > 0 && used <= 3 && is_digit(word[0]);
        if (is_number && type >= 0)
            blockettes_.set(static_cast<std::size_t>(type));
        else if (word == "data")
            data_ = true;
        else if (word == "file")
            files_ = true;
        else
            return false;
        if (word.size() == types.size())
            return true;
        types.remove_prefix(word.size() + 1);
    }
}

bool Selection::has(const Item &item) const
{
    if (all_)
        return true;
    if (item.get<FileEnd>())
        return has_files();
    if (item.get<blk_dh_t>())
        return data_;
    return item.type() >= 0 && blockettes_.test(static_cast<std::size_t>(item.type()));
}

int print_lines(Console *console, std::unique_ptr<State> prepared, const std::string &path,
                const Selection &selection)
{
    State &state = *prepared;
    state.options.bad_item = [console](const Item &item) { show_bad_item(console, item); };
    Follower follower(console, &state.options);
    Volume volume(path, std::move(prepared));
    follower.follow(volume);
    bool whole = true;
    try {
        whole = print_items(console, &volume, selection);
    } catch (const Error &) { // a reader behind a pipe does not see the status
        const FileEnd *end = selection.has_files() ? file_given_up(&state) : nullptr;
        if (end)
            json::print_file(console->out(), volume, volume.progress().file, *end);
        throw;
    }
    console->elog_clear_register();
    return whole ? 0 : 1;
}

} // namespace quarl
