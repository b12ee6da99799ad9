#include "platform/elog.h"
#include "platform/text.h"

#include <climits>
#include <csignal>
#include <cstdlib>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

std::string Program_Name = "quarl";
void (*Process_End)(int status) = [](int status) {
    if (status == Reader_Gone) {
        std::signal(SIGPIPE, SIG_DFL);
        std::raise(SIGPIPE);
    }
    std::exit(status);
};

namespace
{

std::string Reason; ///< a library's words for the next flagged message

/// Where messages are held, and whether beyond the next one.
struct Register {
    Out *stream = &Stderr;
    bool holds = false;
};

Register Messages;

/// Writes what is held when the process ends without `end_process`: the library may serve a program
/// that returns from `main`. Destroyed before the texts above, which a failing write needs.
struct WriteAtExit {
    constexpr WriteAtExit() = default;
    WriteAtExit(const WriteAtExit &) = delete;
    WriteAtExit &operator=(const WriteAtExit &) = delete;
    ~WriteAtExit()
    {
        Process_End = [](int status) { std::_Exit(status); }; // std::exit is running already
        elog_clear_register(1);
    }
};

const WriteAtExit At_Exit;

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

void elog_init(int argc, char *argv[])
{
    if (argc > 0)
        Program_Name = argv[0];
    if (same_file(STDOUT_FILENO, STDERR_FILENO))
        Messages = {&Stdout, true};
    else
        Messages = {&Stderr, isatty(STDERR_FILENO) == 0};
}

void elog_set_reason(std::string_view words) { Reason = words; }

std::string elog_take_reason() { return std::exchange(Reason, {}); }

void end_process(int status)
{
    elog_clear_register(1);
    Process_End(status);
    std::abort();
}

void end_without_output()
{
    const int error = errno;
    Messages.stream = &Stderr;
    (void)elog_take_reason();
    errno = error;
    if (error == EPIPE)
        end_process(Reader_Gone);
    elog_die<"Can't write standard output">(1);
}

void elog_clear_register(int print)
{
    if (!print)
        return;
    Stdout.flush();
    Stderr.flush();
}

Out &elog_stream() { return *Messages.stream; }

Out &elog_begin()
{
    if (!Messages.holds || Messages.stream->size() > Held_At_Most)
        elog_clear_register(1);
    Out &stream = *Messages.stream;
    stream.write(base_name(Program_Name));
    stream.write(": ");
    return stream;
}

void elog_end(bool system_error, int error)
{
    Out &stream = *Messages.stream;
    stream.drop_trailing('\n');
    if (system_error) {
        const std::string reason = elog_take_reason();
        std::string_view words = reason;
        if (words.empty() && error != 0)
            words = strerror(error); // no copy: there may be no memory
        stream.write(words.empty() ? "" : ": ");
        stream.write(words);
    }
    stream.write("\n");
    if (!Messages.holds)
        stream.flush();
}
