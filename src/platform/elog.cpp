#include "platform/elog.h"
#include "platform/text.h"

#include <cerrno>
#include <cstdlib>
#include <unistd.h>
#include <utility>

std::string Program_Name = "quarl";
void (*Process_End)(int status) = [](int status) { std::exit(status); };

namespace
{

std::string Reason; ///< a library's words for the next flagged message

/// The words of a flagged message: the library's, else those of `error`, else none.
std::string system_error_text(int error)
{
    std::string words = elog_take_reason();
    if (words.empty() && error != 0)
        words = strerror(error);
    return words;
}

} // namespace

void elog_init(int argc, char *argv[])
{
    if (argc > 0)
        Program_Name = argv[0];
}

void elog_set_reason(std::string_view words) { Reason = words; }

std::string elog_take_reason() { return std::exchange(Reason, {}); }

void end_process(int status)
{
    Stdout.flush();
    Stderr.flush();
    Process_End(status);
    std::abort();
}

void elog_write(bool system_error, std::string_view text)
{
    const int error = errno;
    Stdout.flush();
    const std::size_t newlines = std::min(text.find_first_not_of('\n'), text.size());
    std::string_view body = text.substr(newlines);
    body = body.substr(0, body.find_last_not_of('\n') + 1);
    Stderr.write(text.substr(0, newlines));
    Stderr.write(base_name(Program_Name));
    Stderr.write(": ");
    Stderr.write(body);
    if (const std::string words = system_error ? system_error_text(error) : ""; !words.empty()) {
        Stderr.write(": ");
        Stderr.write(words);
    }
    Stderr.write("\n");
    Stderr.flush();
    errno = error;
}

void elog_clear_register(int print)
{
    if (print)
        Stdout.flush();
}
