#include "platform/elog.h"

#include <array>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace quarl
{

namespace
{

using namespace std::string_view_literals;

/// In the order of MessageKind.
constexpr std::array Names = {
    "input-not-opened"sv,
    "input-read-error"sv,
    "input-cut"sv,
    "item-cut"sv,
    "bad-sequence-number"sv,
    "item-too-large"sv,
    "blockette-too-small"sv,
    "blockette-unknown"sv,
    "blockette-bad"sv,
    "bad-integer"sv,
    "bad-real"sv,
    "text-too-long"sv,
    "negative-count"sv,
    "list-abandoned"sv,
    "too-many-segments"sv,
    "record-length-illegal"sv,
    "record-length-unusual"sv,
    "orientation-unknown"sv,
    "format-code-repeated"sv,
    "format-code-redefined"sv,
    "format-code-undefined"sv,
    "formats-differ"sv,
    "record-lengths-differ"sv,
    "format-not-in-database"sv,
    "database-not-opened"sv,
    "database-not-read"sv,
    "parameter-file"sv,
    "output-failed"sv,
    "out-of-memory"sv,
    "interrupted"sv,
    "progress"sv,
    "usage"sv,
};
static_assert(Names.size() == static_cast<std::size_t>(MessageKind::usage) + 1);

/// Hears messages where nobody else does.
class StderrHost : public Host
{
    void hear(Message &message) override { say_on_stderr(message); }
};

Host &host()
{
    if (Host *current = Current<Host>::find())
        return *current;
    static thread_local StderrHost fallback;
    return fallback;
}

/// `words` have to outlive the message.
Message message_of(MessageKind kind, std::string_view text, std::string_view words, int error)
{
    while (text.ends_with('\n'))
        text.remove_suffix(1);
    Message message{kind, text, words, 0, {}, nullptr};
    if (words.empty() && error != 0) {
        message.error = error;
        message.reason = strerror(error); // no copy: there may be no memory
    }
    return message;
}

} // namespace

std::string_view name_of(MessageKind kind) { return Names[static_cast<std::size_t>(kind)]; }

std::string full_text(const Message &message)
{
    std::string text(message.text);
    if (!message.reason.empty())
        text.append(": ").append(message.reason);
    return text;
}

void say_on_stderr(const Message &message)
{
    const std::string line = "quarl: " + full_text(message) + "\n";
    (void)!::write(STDERR_FILENO, line.data(), line.size());
}

void elog_set_reason(std::string_view words) { Elog::reason() = words; }

std::string elog_take_reason() { return std::exchange(Elog::reason(), {}); }

void before_wait() { host().before_wait(); }

bool gives_up() { return host().gives_up(); }

Scratch &Elog::text() { return host().text_; }

Scratch &Elog::last_text(MessageKind kind)
{
    if (kind == MessageKind::out_of_memory)
        host().reserve_.reset();
    return host().text_;
}

std::string &Elog::reason() { return host().reason_; }

void Elog::send(MessageKind kind, bool flag, int error)
{
    Host &to = host();
    if (!flag) {
        Message message = message_of(kind, to.text_.text(), {}, 0);
        return to.hear(message);
    }
    const std::string words = elog_take_reason();
    Message message = message_of(kind, to.text_.text(), words, error);
    to.hear(message);
}

void Elog::fail(MessageKind kind, bool flag, int error)
{
    const std::string words = flag ? elog_take_reason() : std::string();
    const Message message = message_of(kind, host().text_.text(), words, flag ? error : 0);
    throw Error(kind, full_text(message), message.error);
}

} // namespace quarl
