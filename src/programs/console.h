// The two output streams of a program: what it prints, and its messages.
//
// Messages are held as the listing is, since one write each would take longer than all other work
// on a data record. Nobody can tell: what is held is written before every read and at every end,
// the listing before the messages. Where both streams are one file they are held together, in
// order. A terminal that gets the messages alone gets each at once.
#pragma once

#include "platform/elog.h"
#include "platform/out.h"

#include <string>
#include <string_view>

namespace quarl
{

/// Standard output and standard error of the program, and who hears its messages.
class Console : public Host
{
public:
    /// `program` is argv[0]. Finds out where the two descriptors lead.
    explicit Console(std::string program);

    /// argv[0]; messages show its base name.
    const std::string Program_Name;

    /// The listing and the statistics.
    Out &out() { return out_; }
    /// Usage and banner; messages go through `say`.
    Out &err() { return err_; }

    /// Writes a message, or holds it.
    void say(const Message &message);
    void hear(Message &message) override { say(message); }
    void before_wait() override { elog_clear_register(); }

    /// Writes out whatever is held: the listing first, then the messages.
    void elog_clear_register();
    /// Messages go to a terminal, and what the program prints does not.
    [[nodiscard]] bool has_status_line() const { return has_status_line_; }
    /// Shows `text` as the last line of that terminal, in place of what was shown there before,
    /// while the program runs in its foreground. The next message wipes it out.
    void show_status(std::string_view text);
    void wipe_status();

    /// From now on messages have a stream of their own: the listing's has failed.
    void message_goes_to_stderr() { messages_ = &err_; }
    /// Where messages are held: for a listing that belongs to one.
    Out &message_stream() { return *messages_; }

private:
    std::string prefix_; ///< of every message
    Out out_;
    Out err_;
    Out *messages_ = &err_;
    bool holds_ = false; ///< messages beyond the next one
    bool has_status_line_ = false;
    std::size_t status_width_ = 0; ///< characters shown in the status line
};

} // namespace quarl
