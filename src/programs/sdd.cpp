#include "programs/sdd.h"

#include "listing/pbrief.h"
#include "listing/summary.h"
#include "platform/elog.h"
#include "programs/progress.h"

#include <csignal>
#include <cstdlib>
#include <quarl/volume.h>
#include <utility>

namespace quarl
{

namespace
{

/// Runs the tape positioning command. The shell is handed the literal text "cmd"; the mt line is
/// made up but not used.
void position_tape(Console *console, const std::string &path)
{
    [[maybe_unused]] const std::string command = formatted<"mt -f %s asf %d">(path, run().File_No);
    console->elog_clear_register();
    const auto own = std::signal(SIGPIPE, SIG_DFL); // as any command expects it
    (void)!std::system("cmd");
    std::signal(SIGPIPE, own);
    run().Tapefile = run().File_No;
}

void list_record(Out &stream, const Item &item)
{
    if (item.record())
        pbrief_blk(stream, item.record(), item.type());
    else
        elog_complain<MessageKind::blockette_unknown, "failed to parse blockette #%d">(0,
                                                                                       item.type());
}

void set_hooks(VolumeOptions *options, Console *console)
{
    options->message = [console](const Message &message) { console->say(message); };
    options->before_wait = [console] { console->elog_clear_register(); };
    options->bad_item = [console](const Item &item) { show_bad_item(console, item); };
    if (run().Verbose_Flag > 1)
        options->record = [console](int sequence_number) {
            print<"\nSeed Block Sequence #%d\n">(console->out(), sequence_number);
        };
}

} // namespace

void summarise(Out &stream, const Item &item)
{
    if (const auto *b010 = item.get<blk_010_t>())
        summary_010(stream, *b010);
    else if (const auto *b011 = item.get<blk_011_t>())
        summary_011(stream, *b011);
    else if (const auto *end = item.get<FileEnd>())
        summary(stream, item.place().file, end->statistics);
}

void show_bad_item(Console *console, const Item &item)
{
    console->say_lines([&](Out &out) { pbrief_blk(out, item.record(), item.type()); });
    console->elog_clear_register();
}

int sdd(Console *console, std::unique_ptr<State> state, const std::string &path, int listing_off)
{
    const Reading reading(*state); // the listing looks up texts and asks for flags
    set_hooks(&state->options, console);
    state->options.unlisted = false;
    Follower follower(console, &state->options);
    Volume volume(path, std::move(state));
    follower.follow(volume);
    if (run().File_Flag && run().File_No)
        position_tape(console, path);
    for (const Item &item : volume) {
        if (!listing_off && !item.get<FileEnd>())
            list_record(console->out(), item);
        summarise(console->out(), item);
    }
    console->elog_clear_register();
    return 0;
}

} // namespace quarl
