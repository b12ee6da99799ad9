// Signals: those that end a run, the one that asks how far it is, and the timer's.
//
// A flag that a signal sets is looked at before each call that may wait. A signal that comes
// between the look and the call is not missed: each starts a timer, whose signals interrupt the
// call.
#pragma once

#include <atomic>
#include <csignal>

namespace quarl
{

/// From now on SIGUSR1 asks for a report, unless the program was started with it ignored.
void catch_reports();

/// From now on the first SIGINT, SIGTERM or SIGHUP asks the reading to stop, unless the program was
/// started with it ignored. Later ones end the process at once; those that come within
/// Timer_Interval count as one, as some senders reach a process in two ways. Does nothing without
/// catch_reports.
void catch_ends();

/// From now on, and whatever the program does, each of these signals ends the process at once.
void end_at_once();
/// Such an end removes the file at `path`, which has to stay; null: none.
void remove_at_end(const char *path);

/// Holds all signals back while it lives.
class HeldSignals
{
public:
    HeldSignals();
    HeldSignals(const HeldSignals &) = delete;
    HeldSignals &operator=(const HeldSignals &) = delete;
    ~HeldSignals();

private:
    sigset_t before_{};
};

/// Set by the first signal that ends the run.
const std::atomic<bool> &stop_asked();
/// That signal; 0: none came.
int ending_signal();
/// Ends the process by `signal`. Returns only when it is blocked.
void end_by(int signal);

inline constexpr long Timer_Interval = 200; ///< ms
/// Lets the timer tick: first after `first` ms.
void start_ticks(long first);
/// True when it has ticked since the last call.
bool take_tick();
/// True when a report was asked for since the last call.
bool take_report();

} // namespace quarl
