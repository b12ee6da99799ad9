#include "programs/sdd.h"

#include "listing/summary.h"
#include "programs/progress.h"

#include <csignal>
#include <cstdlib>
#include <utility>

namespace quarl
{

namespace
{

/// Runs the tape positioning command. The shell is handed the literal text "cmd"; the mt line is
/// made up but not used.
void position_tape(Console *console, const std::string &path, int file)
{
    [[maybe_unused]] const std::string command = formatted<"mt -f %s asf %d">(path, file);
    console->elog_clear_register();
    const auto own = std::signal(SIGPIPE, SIG_DFL); // as any command expects it
    (void)!std::system("cmd");
    std::signal(SIGPIPE, own);
}

void list_record(Out &stream, const Item &item, const ListingStyle &style)
{
    if (item.record())
        pbrief_blk(stream, item.record(), item.type(), style);
    else
        complain_of_type(item.type());
}

void set_hooks(VolumeOptions *options, Console *console, const ListingStyle &style,
               bool record_numbers)
{
    options->bad_item = [console, &style](const Item &item) {
        show_bad_item(console, item, style);
    };
    if (record_numbers)
        options->record = [console](int sequence_number) {
            print<"\nSeed Block Sequence #%d\n">(console->out(), sequence_number);
        };
}

} // namespace

void summarise(Out &stream, const Item &item)
{
    if (const auto *b010 = item.get<blk_010_t>())
        summary_010(stream, item.place().file, *b010);
    else if (const auto *b011 = item.get<blk_011_t>())
        summary_011(stream, *b011);
    else if (const auto *end = item.get<FileEnd>())
        summary(stream, item.place().file, end->statistics);
}

void show_bad_item(Console *console, const Item &item, const ListingStyle &style)
{
    console->say_lines([&](Out &out) { pbrief_blk(out, item.record(), item.type(), style); });
    console->elog_clear_register();
}

int sdd(Console *console, VolumeOptions options, const std::string &path,
        const ListingWishes &wishes)
{
    ListingStyle style{wishes.simplified};
    set_hooks(&options, console, style, wishes.record_numbers);
    options.unlisted = false;
    Follower follower(console, &options);
    const int tape_file = options.one_file ? options.first_file : 0;
    Volume volume(path, std::move(options));
    follower.follow(volume);
    style.volume = &volume;
    if (tape_file != 0)
        position_tape(console, path, tape_file);
    for (const Item &item : volume) {
        if (wishes.items && !item.get<FileEnd>())
            list_record(console->out(), item, style);
        summarise(console->out(), item);
    }
    console->elog_clear_register();
    return 0;
}

} // namespace quarl
