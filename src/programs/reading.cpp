#include "programs/reading.h"

#include "platform/elog.h"

namespace quarl
{

std::unique_ptr<State> prepare_state(Console *console)
{
    auto state = std::make_unique<State>(VolumeOptions());
    state->options.message = [console](const Message &message) { console->say(message); };
    state->options.before_wait = [console] { console->elog_clear_register(); };
    const Reading reading(*state);
    if (pfread("quarl", &run().Parameters) != 0)
        elog_die<MessageKind::parameter_file, "Couldn't read parameter file quarl.pf.\n">(0);
    return state;
}

void open_database(const char *name)
{
    const std::string shown = shown_database(name);
    if (VXdbopen(name, "r+", &run().Db) != 0)
        elog_die<MessageKind::database_not_opened, "Can't open database %s\n">(1, shown);
}

std::unique_ptr<State> prepare_state(Console *console, const std::string &name)
{
    auto state = prepare_state(console);
    const Reading reading(*state);
    if (!name.empty())
        open_database(name.c_str());
    return state;
}

} // namespace quarl
