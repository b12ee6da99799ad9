#include "programs/interrupt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <unistd.h>

namespace quarl
{

namespace
{

/// What the handlers have seen. All that they call is async-signal-safe.
struct Seen {
    std::atomic<bool> stop{false};
    std::atomic<int> signal{0};
    std::atomic<bool> tick{false};
    std::atomic<bool> report{false};
    std::atomic<bool> at_once{false};        ///< the next one ends the process
    std::atomic<const char *> file{nullptr}; ///< to be removed then
    bool timed = false;                      ///< there is a timer; without one no signal is caught
    timer_t timer{};
};
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<int>::is_always_lock_free &&
              std::atomic<const char *>::is_always_lock_free);

constinit Seen Signals;

constexpr std::array Ends = {SIGINT, SIGTERM, SIGHUP};

/// Leaves `errno` as the interrupted code had it.
class KeptErrno
{
public:
    KeptErrno() = default;
    KeptErrno(const KeptErrno &) = delete;
    KeptErrno &operator=(const KeptErrno &) = delete;
    ~KeptErrno() { errno = error_; }

private:
    int error_ = errno;
};

void on_report(int /*signal*/)
{
    const KeptErrno kept;
    Signals.report = true;
    start_ticks(Timer_Interval);
}

void on_end(int signal)
{
    const KeptErrno kept;
    if (Signals.at_once) {
        if (const char *file = Signals.file)
            unlink(file);
        end_by(signal); // when this handler returns: it blocks all signals
        return;
    }
    if (Signals.stop.exchange(true))
        return;
    Signals.signal = signal;
    start_ticks(Timer_Interval);
}

/// Once the first signal has had its time, the next one ends the process.
void on_tick(int /*signal*/)
{
    const KeptErrno kept;
    Signals.tick = true;
    if (!Signals.stop)
        return;
    for (const int each : Ends) {
        struct sigaction now = {};
        if (sigaction(each, nullptr, &now) == 0 && now.sa_handler == on_end)
            std::signal(each, SIG_DFL);
    }
}

/// Without SA_RESTART, so that calls that wait are interrupted; no handler interrupts another.
void catch_signal(int signal, void (*handler)(int))
{
    struct sigaction before = {};
    if (sigaction(signal, nullptr, &before) != 0 || before.sa_handler == SIG_IGN)
        return;
    struct sigaction own = {};
    own.sa_handler = handler;
    sigfillset(&own.sa_mask);
    sigaction(signal, &own, nullptr);
}

void unblock(int signal)
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

} // namespace

void catch_reports()
{
    sigevent event = {};
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGALRM;
    Signals.timed = timer_create(CLOCK_MONOTONIC, &event, &Signals.timer) == 0;
    if (!Signals.timed)
        return;
    std::signal(SIGALRM, SIG_DFL); // whatever it was: the timer is this program's
    unblock(SIGALRM);
    catch_signal(SIGALRM, on_tick);
    catch_signal(SIGUSR1, on_report);
}

void catch_ends()
{
    Signals.at_once = false;
    if (Signals.timed)
        for (const int each : Ends)
            catch_signal(each, on_end);
}

void end_at_once()
{
    Signals.at_once = true;
    for (const int each : Ends)
        catch_signal(each, on_end);
}

void remove_at_end(const char *path) { Signals.file = path; }

HeldSignals::HeldSignals()
{
    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, &before_);
}

HeldSignals::~HeldSignals() { sigprocmask(SIG_SETMASK, &before_, nullptr); }

const std::atomic<bool> &stop_asked() { return Signals.stop; }

int ending_signal() { return Signals.signal; }

void end_by(int signal)
{
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void start_ticks(long first)
{
    constexpr long Milli = 1'000'000; // ns
    const itimerspec times = {{0, Timer_Interval * Milli}, {first / 1000, first % 1000 * Milli}};
    if (Signals.timed)
        timer_settime(Signals.timer, 0, &times, nullptr);
}

bool take_tick() { return Signals.tick.exchange(false); }

bool take_report() { return Signals.report.exchange(false); }

} // namespace quarl
