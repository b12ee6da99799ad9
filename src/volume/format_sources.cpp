#include "volume/format_sources.h"
#include "platform/elog.h"

#include <utility>

namespace quarl
{

namespace
{

/// Hands the messages on to a function; whoever read before is asked about waits.
class Hearing : public Host
{
public:
    explicit Hearing(const std::function<void(const Message &)> &message) : message_(message) {}
    void hear(Message &message) override
    {
        if (message_)
            message_(message);
        else
            say_on_stderr(message);
    }
    void before_wait() override
    {
        if (before_)
            before_->before_wait();
    }
    bool gives_up() override { return before_ && before_->gives_up(); }

private:
    Host *before_ = Current<Host>::find();
    const std::function<void(const Message &)> &message_;
};

} // namespace

FormatSources::FormatSources(std::function<void(const Message &)> message)
    : parts_(std::make_unique<Parts>())
{
    parts_->message = std::move(message);
}

FormatSources::~FormatSources() = default;

void FormatSources::read_default_parameters()
{
    Hearing hearing(parts_->message);
    const Current<Host> host(hearing);
    if (pfread("quarl", &parts_->parameters) != 0)
        elog_die<MessageKind::parameter_file, "Couldn't read parameter file quarl.pf.\n">(0);
}

void FormatSources::read_parameters(const std::string &path)
{
    Hearing hearing(parts_->message);
    const Current<Host> host(hearing);
    if (pfread_file(path, &parts_->parameters) != 0)
        elog_die<MessageKind::parameter_file, "Couldn't read parameter file %s.\n">(0, path);
}

void FormatSources::open_database(const std::string &name)
{
    Hearing hearing(parts_->message);
    const Current<Host> host(hearing);
    const Current<Databases> databases(parts_->databases);
    const std::string shown = shown_database(name.c_str());
    if (VXdbopen(name.c_str(), "r", &parts_->db) != 0)
        elog_die<MessageKind::database_not_opened, "Can't open database %s\n">(1, shown);
}

} // namespace quarl
