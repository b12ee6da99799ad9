#include "programs/reading.h"

#include <utility>

namespace quarl
{

std::shared_ptr<FormatSources> read_format_sources(Console *console)
{
    auto sources = std::make_shared<FormatSources>(
        [console](const Message &message) { console->say(message); });
    sources->read_default_parameters();
    return sources;
}

VolumeOptions reading_options(Console *console, std::shared_ptr<FormatSources> sources)
{
    VolumeOptions options;
    options.format_sources = std::move(sources);
    options.large_records = true;
    options.message = [console](const Message &message) { console->say(message); };
    options.before_wait = [console] { console->elog_clear_register(); };
    return options;
}

} // namespace quarl
