#include "programs/checked.h"

namespace quarl
{

namespace
{

/// What keeps the program from working, and is no finding.
bool is_of_program(MessageKind kind)
{
    switch (kind) {
    case MessageKind::input_not_opened:
    case MessageKind::input_read_error:
    case MessageKind::interrupted:
    case MessageKind::out_of_memory:
        return true;
    default:
        return false;
    }
}

void hear(Console *console, Checker *checker, const std::string &path, const Message &message)
{
    if (!is_of_program(message.kind)) {
        checker->hear(message);
        return;
    }
    const std::string text = path + ": " + std::string(message.text);
    console->say({message.kind, text, message.reason, message.error, message.place, nullptr});
}

} // namespace

VolumeOptions checked_options(Console *console, Checker *checker, const std::string &path)
{
    VolumeOptions options;
    options.large_records = true;
    options.message = [=](const Message &message) { hear(console, checker, path, message); };
    options.recover = true;
    options.passed_over = [=](const PassedOver &passed) { checker->pass_over(passed); };
    options.logical_record = [=](const LogicalRecord &record) { checker->enter(record); };
    return options;
}

void say_unread(Console *console, const std::string &path, const Error &error)
{
    // One of the opening names it.
    const bool named = error.text().ends_with(" " + path);
    const std::string text = (named ? "" : path + ": ") + std::string(error.text());
    console->say({error.kind(), text, error.reason(), error.error(), {}, nullptr});
}

} // namespace quarl
