// Error log: fatal messages, complaints and diagnostics on standard error.
//
// Messages are held as the listing is, since one write each would take longer than all other work
// on a data record. Nobody can tell: what is held is written before every read and at every end,
// the listing before the messages. Where both streams are one file they are held together, in
// order. A terminal that gets the messages alone gets each at once.
#pragma once

#include "platform/format.h"

#include <cerrno>
#include <csignal>
#include <string>
#include <string_view>

extern std::string Program_Name; ///< argv[0]; messages show its base name

/// Takes the program's name from the arguments, and from then on holds messages, in the way that
/// suits the two output descriptors; the program ends through `end_process` then, or asks
/// `elog_clear_register`. Before, each message is written at once.
void elog_init(int argc, char *argv[]);

/// What a flagged message appends instead of the text of `errno`: a library's own words. Used up by
/// the next flagged message.
void elog_set_reason(std::string_view words);
/// Takes those words back, to be set again when the message is due.
std::string elog_take_reason();

/// Ends the process: what is held is written first. Tests and fuzz targets replace the end by a
/// throw.
[[noreturn]] void end_process(int status);
/// The function that `end_process` calls last; must not return.
extern void (*Process_End)(int status);

/// The status of a process whose reader has gone, as shells show it: it ends by SIGPIPE, quietly.
/// The signal itself is ignored, so that messages are not lost with the listing.
inline constexpr int Reader_Gone = 128 + SIGPIPE;

/// Ends the process after a write that failed, with the reason from `errno`.
[[noreturn]] void end_without_output();

/// Writes out whatever is held: the listing first, then the messages.
void elog_clear_register(int print);

/// Where messages are held: for a listing that belongs to one. Ask `elog_clear_register` to write
/// it.
Out &elog_stream();

/// Begins a message with "<program>: ". The text follows on the stream returned.
Out &elog_begin();
/// Ends it: newlines at the end of the text give way to one, behind ": " and the reason when
/// `system_error` is true and `error`, or a library, has one.
void elog_end(bool system_error, int error);

/// A diagnostic: the program's name, then the text as it stands, from a newline that begins it on.
/// A non-zero `flag` appends the system error text. `errno` is kept.
template <Literal Format, class... Args> void elog_log(int flag, const Args &...args)
{
    const int error = errno;
    print<Format>(elog_begin(), args...);
    elog_end(flag != 0, error);
    errno = error;
}

/// An error that the run survives; otherwise as elog_log.
template <Literal Format, class... Args> void elog_complain(int flag, const Args &...args)
{
    elog_log<Format>(flag, args...);
}

/// A fatal error: writes the message and ends the process with status 1.
template <Literal Format, class... Args> [[noreturn]] void elog_die(int flag, const Args &...args)
{
    elog_log<Format>(flag, args...);
    end_process(1);
}
