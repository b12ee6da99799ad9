// The two output streams of a program: what it prints, and its messages.
//
// Messages are held as the listing is, since one write each would take longer than all other work
// on a data record. Nobody can tell: what is held is written before every read and at every end,
// the listing before the messages. Where both streams are one file they are held together, in
// order. A terminal that gets the messages alone gets each at once.
#pragma once

#include "platform/elog.h"
#include "platform/out.h"

#include <functional>
#include <string>
#include <string_view>

namespace quarl
{

/// How messages show texts of volumes and of users: as they are, or with what would command a
/// terminal escaped.
enum class MessageTexts { raw, escaped };

/// Standard output and standard error of the program, and who hears its messages.
class Console : public Host
{
public:
    /// `program` is argv[0]. Finds out where the two descriptors lead.
    explicit Console(std::string program, MessageTexts texts = MessageTexts::escaped);

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
    /// Writes lines that belong to the message before them.
    void say_lines(const std::function<void(Out &)> &write);

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

private:
    void write_message(std::string_view text, std::string_view reason);

    MessageTexts texts_;
    std::string prefix_; ///< of every message
    Out out_;
    Out err_;
    Out *messages_ = &err_;
    bool holds_ = false; ///< messages beyond the next one
    bool has_status_line_ = false;
    std::size_t status_width_ = 0; ///< characters shown in the status line
};

} // namespace quarl
