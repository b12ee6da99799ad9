// Error log: fatal messages, complaints and diagnostics go to the host of the thread.
#pragma once

#include "platform/current.h"
#include "platform/format.h"

#include <cerrno>
#include <memory>
#include <quarl/error.h>
#include <string>
#include <string_view>

namespace quarl
{

/// Whoever reads: hears messages and is asked about waits.
class Host
{
public:
    Host() = default;
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;
    virtual ~Host() = default;

    /// A message; its place and item are still to be told by who knows them.
    virtual void hear(Message &message) = 0;
    /// A call that may wait comes next.
    virtual void before_wait() {}
    /// A call that may wait comes next, or was interrupted by a signal: true gives it up.
    virtual bool gives_up() { return false; }

private:
    friend struct Elog;
    Scratch text_;       ///< of the message at hand
    std::string reason_; ///< a library's words for the next flagged message
    /// Given up when there is no memory: the message needs some.
    std::unique_ptr<char[]> reserve_ = std::make_unique<char[]>(16384);
};

/// Says "PROGRAM: TEXT: REASON" on standard error.
void say_on_stderr(const Message &message);

/// What the next flagged message appends instead of the text of `errno`: a library's own words.
/// Used up by that message.
void elog_set_reason(std::string_view words);
/// Takes those words back, to be set again when the message is due.
std::string elog_take_reason();

/// A call that may wait comes next: what is held is written out.
void before_wait();
/// True when a call that may wait, or that a signal interrupted, is to be given up.
bool gives_up();

/// A system call that may wait, repeated when a signal interrupts it. -1 with EINTR when it is
/// given up.
template <class Call> auto unless_given_up(Call call) -> decltype(call())
{
    while (!gives_up()) {
        const auto result = call();
        if (result >= 0 || errno != EINTR)
            return result;
    }
    errno = EINTR;
    return -1;
}

struct Elog {
    /// Room for a message's text; valid until the next message.
    static Scratch &text();
    /// The same for the message that ends the reading.
    static Scratch &last_text(MessageKind kind);
    static std::string &reason();
    /// Sends the message on. `flag`: `error`, or a library's words, are its reason.
    static void send(MessageKind kind, bool flag, int error);
    [[noreturn]] static void fail(MessageKind kind, bool flag, int error);
};

/// A diagnostic; newlines at the end of `Format` are dropped. A non-zero `flag` adds the reason.
/// `errno` is kept.
template <MessageKind Kind, Literal Format, class... Args>
void elog_log(int flag, const Args &...args)
{
    const int error = errno;
    format_to<Format>(Elog::text(), args...);
    Elog::send(Kind, flag != 0, error);
    errno = error;
}

/// An error that the run survives; otherwise as elog_log.
template <MessageKind Kind, Literal Format, class... Args>
void elog_complain(int flag, const Args &...args)
{
    elog_log<Kind, Format>(flag, args...);
}

/// A fatal error: throws Error.
template <MessageKind Kind, Literal Format, class... Args>
[[noreturn]] void elog_die(int flag, const Args &...args)
{
    const int error = errno;
    format_to<Format>(Elog::last_text(Kind), args...);
    Elog::fail(Kind, flag != 0, error);
}

} // namespace quarl
