#include "programs/console.h"

#include "platform/escaped.h"
#include "platform/text.h"

#include <algorithm>
#include <climits>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quarl
{

namespace
{

/// Messages of up to this size leave unbroken, even into a pipe that several programs write to; but
/// not where the listing goes there too.
constexpr std::size_t Usual_Message = 512;
constexpr std::size_t Held_At_Most = PIPE_BUF - Usual_Message;

bool same_file(int a, int b)
{
    struct stat first = {};
    struct stat second = {};
    return fstat(a, &first) == 0 && fstat(b, &second) == 0 && first.st_dev == second.st_dev &&
           first.st_ino == second.st_ino;
}

/// False when another job has the terminal: it would show through, or this one would be stopped.
bool in_foreground()
{
    const pid_t front = tcgetpgrp(STDERR_FILENO);
    return front < 0 || front == getpgrp(); // a terminal that does not control jobs has no front
}

std::size_t terminal_width()
{
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

constexpr std::string_view Of_Lines = "\n\t";

/// Messages of more than one line.
bool has_lines(MessageKind kind)
{
    return kind == MessageKind::formats_differ || kind == MessageKind::out_of_memory;
}

/// Lines for another stream, with what they show escaped.
class EscapedOut : public Out
{
public:
    explicit EscapedOut(Out *to) : Out(STDERR_FILENO), to_(to) {}

private:
    void deliver(std::string_view bytes) override { to_->write(escaped(bytes, Of_Lines)); }

    Out *to_;
};

} // namespace

Console::Console(std::string program, MessageTexts texts)
    : Program_Name(std::move(program)), texts_(texts),
      prefix_(std::string(base_name(Program_Name)) + ": "), out_(STDOUT_FILENO), err_(STDERR_FILENO)
{
    if (texts_ == MessageTexts::escaped)
        prefix_ = escaped(prefix_);
    const bool one_file = same_file(STDOUT_FILENO, STDERR_FILENO);
    messages_ = one_file ? &out_ : &err_;
    const bool terminal = isatty(STDERR_FILENO) != 0;
    holds_ = one_file || !terminal;
    has_status_line_ = terminal && isatty(STDOUT_FILENO) == 0;
}

void Console::say(const Message &message)
{
    if (!holds_ || messages_->size() > Held_At_Most) {
        elog_clear_register();
        wipe_status(); // there is none where messages are held
    }
    if (texts_ == MessageTexts::raw)
        write_message(message.text, message.reason);
    else
        write_message(escaped(message.text, has_lines(message.kind) ? Of_Lines : ""),
                      escaped(message.reason, Of_Lines)); // a server's may have some
    if (!holds_)
        messages_->flush();
}

void Console::write_message(std::string_view text, std::string_view reason)
{
    const std::string_view colon = reason.empty() ? "" : ": ";
    const std::size_t size = prefix_.size() + text.size() + colon.size() + reason.size() + 1;
    if (size > Usual_Message) {
        messages_->write(std::string(prefix_).append(text).append(colon).append(reason) + "\n");
        return;
    }
    char *to = messages_->reserve(Usual_Message);
    for (const std::string_view part : {std::string_view(prefix_), text, colon, reason})
        to = std::copy(part.begin(), part.end(), to);
    *to++ = '\n';
    messages_->commit(to);
}

void Console::say_lines(const std::function<void(Out &)> &write)
{
    if (texts_ == MessageTexts::raw)
        return write(*messages_);
    EscapedOut lines(messages_);
    write(lines);
    lines.flush();
}

void Console::show_status(std::string_view text)
{
    if (!in_foreground())
        return;
    text = text.substr(0, terminal_width() - 1); // the cursor stays in the line
    const std::size_t rest = std::max(status_width_, text.size()) - text.size();
    err_.write("\r" + std::string(text) + std::string(rest, ' '));
    err_.flush();
    status_width_ = text.size() + rest;
}

void Console::wipe_status()
{
    if (status_width_ > 0)
        err_.write("\r" + std::string(std::exchange(status_width_, 0), ' ') + "\r");
}

void Console::elog_clear_register()
{
    out_.flush();
    err_.flush();
}

} // namespace quarl
