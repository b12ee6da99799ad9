#include "programs/json_lines.h"

#include "platform/json_text.h"
#include "platform/text.h"
#include "platform/utf8.h"
#include "programs/progress.h"
#include "programs/sdd.h"
#include "json/item.h"

#include <utility>

namespace quarl
{

namespace
{

std::string name_of_volume(const std::string &path)
{
    return json::quoted(path, is_utf8(path) ? json::Charset::utf8 : json::Charset::latin1);
}

/// The reading of one volume.
class Lines
{
public:
    Lines(Console *console, const LinesWanted &wanted) : console_(*console), wanted_(wanted) {}

    /// Prints all items. False when an input file failed.
    bool print(Volume *volume)
    {
        while (const Item *item = volume->next()) {
            complain_of_types(*item);
            const auto *end = item->get<FileEnd>();
            if (end)
                end_file(item->place().file, *end);
            else if (wants(*item))
                json::print_item(console_.out(), *volume, wanted_.style, *item,
                                 wanted_.samples ? &buffer_ : nullptr);
        }
        if (!has_file_) // it held nothing
            end_file(0, FileEnd());
        return whole_;
    }
    void end_file(int file, const FileEnd &end)
    {
        has_file_ = true;
        whole_ &= !end.failed;
        json::print_file(console_.out(), wanted_.style, file, end);
    }

private:
    [[nodiscard]] bool wants(const Item &item) const
    {
        const auto *header = item.get<blk_dh_t>();
        return wanted_.selection.has(item) &&
               (!header || wanted_.channels.has_all() || wanted_.channels.has(item, *header));
    }

    Console &console_;
    const LinesWanted &wanted_;
    SampleBuffer buffer_;
    bool has_file_ = false;
    bool whole_ = true;
};

/// The input file that could not be opened.
FileEnd unopened()
{
    FileEnd end;
    end.failed = true;
    return end;
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
        else if (word != "file")
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
        return true;
    if (item.get<blk_dh_t>())
        return data_;
    return item.type() >= 0 && blockettes_.test(static_cast<std::size_t>(item.type()));
}

int print_lines(Console *console, VolumeOptions options, const std::string &path,
                LinesWanted wanted)
{
    const auto say = options.message;
    options.bad_item = [console](const Item &item) { show_bad_item(console, item); };
    wanted.style.volume = name_of_volume(path);
    Lines lines(console, wanted);
    Follower follower(console, &options);
    std::optional<Volume> volume;
    bool whole = false;
    try {
        volume.emplace(path, std::move(options));
        follower.follow(*volume);
        whole = lines.print(&*volume);
    } catch (const Error &error) { // a reader behind a pipe does not see the status
        if (error.kind() == MessageKind::output_failed)
            throw;
        console->wipe_status();
        const Message message{error.kind(),  error.text(), error.reason(),
                              error.error(), {},           nullptr};
        say ? say(message) : console->say(message);
        const auto end = volume ? volume->given_up() : std::nullopt;
        lines.end_file(volume ? volume->progress().file : 0, end ? *end : unopened());
    }
    console->elog_clear_register();
    return whole ? 0 : 1;
}

} // namespace quarl
