// What the user hears and commands while a volume is read.
#pragma once

#include "programs/console.h"

#include <chrono>
#include <quarl/volume.h>
#include <string>

namespace quarl
{

/// How far the reading of an input file is after `seconds`: bytes, share, rate and time left, as
/// far as they are known.
std::string progress_text(const Progress &progress, double seconds);

/// Lets the user's signals act on a reading, and shows how far it is: in the status line of a
/// terminal when it lasts longer than a second, and as a message upon SIGUSR1. Looks at them where
/// the input is read only, so that an item costs nothing.
class Follower
{
public:
    /// Sets the hooks of the reading that begins now: `stop` and `interrupted`. Must outlive it.
    Follower(Console *console, VolumeOptions *options);
    Follower(const Follower &) = delete;
    Follower &operator=(const Follower &) = delete;

    /// `volume` is open; it must outlive this or stay untouched.
    void follow(const Volume &volume) { volume_ = &volume; }

private:
    bool look();
    std::string text();

    Console *console_;
    const Volume *volume_ = nullptr; ///< null while it is being opened
    int file_ = 0;
    std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
};

} // namespace quarl
