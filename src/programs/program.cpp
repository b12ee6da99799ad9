#include "programs/program.h"

#include "programs/interrupt.h"

#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <new>
#include <unistd.h>

namespace quarl
{

namespace
{

/// Fills a standard descriptor that was closed with one that fails: the volume or a database's
/// socket must not come to stand where the listing goes.
void keep_standard_descriptors()
{
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(fd, F_GETFD) < 0)
            (void)open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

/// Says why the run ends; what was listed before stands in front of it.
int fail(Console *console, const Error &error)
{
    console->wipe_status();
    if (error.kind() == MessageKind::output_failed) {
        console->out().discard();
        console->message_goes_to_stderr();
        if (error.error() == EPIPE) {
            console->elog_clear_register();
            return Reader_Gone;
        }
    }
    console->say({error.kind(), error.text(), error.reason(), error.error(), {}, nullptr});
    console->elog_clear_register();
    return 1;
}

} // namespace

int run_guarded(Console *console, const std::function<int()> &work)
try {
    const Current<Host> host(*console);
    try {
        const int status = work();
        console->wipe_status();
        console->elog_clear_register();
        return status;
    } catch (const std::bad_alloc &) {
        return fail(console, Error(MessageKind::out_of_memory, "Out of memory"));
    } catch (const Error &error) {
        return fail(console, error);
    }
} catch (const Error &) { // of the output: there is nobody to tell
    return Reader_Gone;
}

int run_program(int argc, char *argv[], const std::function<int(Console *)> &work,
                MessageTexts texts)
{
    std::signal(SIGPIPE, SIG_IGN); // the write that fails ends the run
    keep_standard_descriptors();
    // Not on the stack, which cannot grow where memory is limited.
    const auto console = std::make_unique<Console>(argc > 0 ? argv[0] : "quarl", texts);
    catch_reports();
    const int status = run_guarded(console.get(), [&] { return work(console.get()); });
    if (const int signal = ending_signal())
        end_by(signal);
    if (status == Reader_Gone)
        end_by(SIGPIPE);
    return status;
}

} // namespace quarl
