#include "platform/elog.h"

#include <array>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace quarl
{

namespace
{

struct Kind {
    std::string_view name;
    MessageSeverity severity;
};

using enum MessageSeverity;

/// In the order of MessageKind.
constexpr std::array Kinds = {
    Kind{"input-not-opened", failure},
    Kind{"input-read-error", failure},
    Kind{"input-cut", damage},
    Kind{"item-cut", damage},
    Kind{"bad-sequence-number", damage},
    Kind{"item-too-large", failure},
    Kind{"blockette-too-small", damage},
    Kind{"blockette-unknown", remark},
    Kind{"blockette-bad", damage},
    Kind{"bad-integer", damage},
    Kind{"bad-real", damage},
    Kind{"text-too-long", damage},
    Kind{"negative-count", damage},
    Kind{"list-abandoned", damage},
    Kind{"too-many-segments", failure},
    Kind{"record-length-illegal", damage},
    Kind{"record-length-unusual", remark},
    Kind{"orientation-unknown", remark},
    Kind{"format-code-repeated", remark},
    Kind{"format-code-redefined", damage},
    Kind{"format-code-undefined", damage},
    Kind{"formats-differ", damage},
    Kind{"record-lengths-differ", damage},
    Kind{"format-not-in-database", remark},
    Kind{"database-not-opened", failure},
    Kind{"database-not-read", failure},
    Kind{"parameter-file", failure},
    Kind{"output-failed", failure},
    Kind{"out-of-memory", failure},
    Kind{"interrupted", remark},
    Kind{"progress", remark},
    Kind{"usage", failure},
};
static_assert(Kinds.size() == static_cast<std::size_t>(MessageKind::usage) + 1);

const Kind &row_of(MessageKind kind) { return Kinds[static_cast<std::size_t>(kind)]; }

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

std::string_view name_of(MessageKind kind) { return row_of(kind).name; }

MessageSeverity severity_of(MessageKind kind) { return row_of(kind).severity; }

std::string_view name_of(MessageSeverity severity)
{
    switch (severity) {
    case remark:
        return "remark";
    case damage:
        return "damage";
    case failure:
        break;
    }
    return "failure";
}

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
    throw Error(kind, std::string(message.text), message.reason, message.error);
}

} // namespace quarl
