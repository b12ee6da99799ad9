#include "volume/state.h"

namespace quarl
{

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
