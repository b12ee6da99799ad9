#include "programs/json_lines.h"

#include "platform/text.h"
#include "programs/progress.h"
#include "programs/sdd.h"
#include "json/item.h"

#include <utility>

namespace quarl
{

namespace
{

/// False when a read error ended an input file.
bool print_items(Console *console, Volume *volume, const Selection &selection)
{
    bool whole = true;
    while (const Item *item = volume->next()) {
        const auto *end = item->get<FileEnd>();
        whole &= !(end && end->failed);
        complain_of_types(*item);
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

int print_lines(Console *console, VolumeOptions options, const std::string &path,
                const Selection &selection)
{
    options.bad_item = [console](const Item &item) { show_bad_item(console, item); };
    Follower follower(console, &options);
    Volume volume(path, std::move(options));
    follower.follow(volume);
    bool whole = true;
    try {
        whole = print_items(console, &volume, selection);
    } catch (const Error &) { // a reader behind a pipe does not see the status
        if (const auto end = volume.given_up(); end && selection.has_files())
            json::print_file(console->out(), volume, volume.progress().file, *end);
        throw;
    }
    console->elog_clear_register();
    return whole ? 0 : 1;
}

} // namespace quarl
