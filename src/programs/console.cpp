#include "programs/console.h"

#include "platform/text.h"

#include <algorithm>
#include <climits>
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

} // namespace

Console::Console(std::string program)
    : Program_Name(std::move(program)), prefix_(std::string(base_name(Program_Name)) + ": "),
      out_(STDOUT_FILENO), err_(STDERR_FILENO)
{
    const bool one_file = same_file(STDOUT_FILENO, STDERR_FILENO);
    messages_ = one_file ? &out_ : &err_;
    holds_ = one_file || isatty(STDERR_FILENO) == 0;
}

void Console::say(const Message &message)
{
    if (!holds_ || messages_->size() > Held_At_Most)
        elog_clear_register();
    messages_->write(prefix_);
    if (message.reason.empty() && message.text.size() < Usual_Message) {
        char *to = messages_->reserve(Usual_Message);
        to = std::copy(message.text.begin(), message.text.end(), to);
        *to++ = '\n';
        messages_->commit(to);
    } else {
        messages_->write(full_text(message) + "\n");
    }
    if (!holds_)
        messages_->flush();
}

void Console::elog_clear_register()
{
    out_.flush();
    err_.flush();
}

} // namespace quarl
