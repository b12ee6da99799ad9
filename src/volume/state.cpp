#include "volume/state.h"

#include <utility>

namespace quarl
{

State::State(VolumeOptions chosen) : options(std::move(chosen)), formats(options.format_sources)
{
    if (!formats)
        formats = std::make_shared<FormatSources>(options.message);
    run.databases = &formats->parts().databases;
    run.formats_met = &formats_met;
    run.format_table = &format_table;
    run.count = &count;
}

void State::hear(Message &message)
{
    if (handle) {
        const SeedInput &in = *handle->logical;
        message.place = {run.Tapefile, position(&in),  in.recno(),
                         in.seq_num(), in.type_code(), in.cont_code()};
        message.item = handle->framing ? &handle->now : nullptr;
    }
    if (options.message)
        options.message(message);
    else
        say_on_stderr(message);
}

void State::before_wait()
{
    if (options.before_wait)
        options.before_wait();
}

bool State::gives_up() { return options.interrupted && options.interrupted(); }

} // namespace quarl
