#include "platform/patience.h"

#include "platform/elog.h"

#include <algorithm>
#include <csignal>
#include <pthread.h>
#include <system_error>
#include <thread>

namespace quarl
{

void run_aside(std::function<void()> task)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before); // a thread begins with its maker's
    try {
        std::thread(task).detach();
    } catch (const std::system_error &) { // no more threads, and so no limit
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
        task();
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

bool comes_true(std::chrono::milliseconds most,
                const std::function<bool(std::chrono::milliseconds)> &ready)
{
    constexpr std::chrono::milliseconds Slice(100); // between two looks for signals
    for (; most.count() > 0; most -= Slice) {
        if (ready(std::min(most, Slice)))
            return true;
        if (gives_up())
            return false;
    }
    return false;
}

} // namespace quarl
