// Error log: fatal messages, complaints and diagnostics on standard error.
#pragma once

#include "platform/format.h"

#include <string>
#include <string_view>

extern std::string Program_Name; ///< argv[0]; messages show its base name

/// Takes the program's name from the arguments.
void elog_init(int argc, char *argv[]);

/// What a flagged message appends instead of the text of `errno`: a library's own words. Used up by
/// the next flagged message.
void elog_set_reason(std::string_view words);
/// Takes those words back, to be set again when the message is due.
std::string elog_take_reason();

/// Ends the process: standard output is flushed first. Tests and fuzz targets replace the end by a
/// throw.
[[noreturn]] void end_process(int status);
/// The function that `end_process` calls last; must not return.
extern void (*Process_End)(int status);

/// Writes held output, then "<program>: <text>" and a newline to standard error in one write.
/// Leading newlines of `text` stay in front; a true `system_error` appends ": " and the reason.
void elog_write(bool system_error, std::string_view text);

/// Writes out whatever the program still holds; every message has already been shown.
void elog_clear_register(int print);

/// A diagnostic. A non-zero `flag` appends the system error text.
template <Literal Format, class... Args> void elog_log(int flag, const Args &...args)
{
    elog_write(flag != 0, formatted<Format>(args...));
}

/// An error that the run survives. A non-zero `flag` appends the system error text.
template <Literal Format, class... Args> void elog_complain(int flag, const Args &...args)
{
    elog_write(flag != 0, formatted<Format>(args...));
}

/// A fatal error: writes the message and ends the process with status 1.
template <Literal Format, class... Args> [[noreturn]] void elog_die(int flag, const Args &...args)
{
    elog_write(flag != 0, formatted<Format>(args...));
    end_process(1);
}
