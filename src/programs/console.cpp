#include "programs/console.h"

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

} // namespace

Console::Console(std::string program)
    : Program_Name(std::move(program)), prefix_(std::string(base_name(Program_Name)) + ": "),
      out_(STDOUT_FILENO), err_(STDERR_FILENO)
{
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
    if (message.reason.empty() && prefix_.size() + message.text.size() < Usual_Message) {
        char *to = messages_->reserve(Usual_Message);
        to = std::copy(prefix_.begin(), prefix_.end(), to);
        to = std::copy(message.text.begin(), message.text.end(), to);
        *to++ = '\n';
        messages_->commit(to);
    } else {
        messages_->write(prefix_ + full_text(message) + "\n");
    }
    if (!holds_)
        messages_->flush();
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
