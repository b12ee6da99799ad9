#include "programs/progress.h"

#include "programs/interrupt.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace quarl
{

namespace
{

constexpr std::chrono::milliseconds Patience(1000); ///< of a run without a status line

std::string bytes_text(double bytes)
{
    constexpr std::array<std::string_view, 5> Units = {"B", "kB", "MB", "GB", "TB"};
    std::size_t unit = 0;
    for (; bytes >= 999.95 && unit + 1 < Units.size(); ++unit)
        bytes /= 1000;
    return unit == 0 ? formatted<"%.0f B">(bytes) : formatted<"%.1f %s">(bytes, Units[unit]);
}

std::string clock_text(double seconds)
{
    constexpr double Most = 359'999; // 99 hours and a bit
    const auto whole = std::lround(std::min(seconds, Most));
    if (whole < 3600)
        return formatted<"%d:%02d">(whole / 60, whole % 60);
    return formatted<"%d:%02d:%02d">(whole / 3600, whole / 60 % 60, whole % 60);
}

} // namespace

std::string progress_text(const Progress &progress, double seconds)
{
    const auto bytes = static_cast<double>(progress.bytes);
    std::string text = bytes_text(bytes) + " read";
    if (progress.file > 0)
        text += formatted<" of input file #%d">(progress.file);
    double share = 0;
    if (progress.size > 0) {
        share = static_cast<double>(progress.stored) / static_cast<double>(progress.size);
        share = std::clamp(share, 0.0, 1.0);
        text += formatted<", %d %%">(static_cast<int>(share * 100));
    }
    if (seconds > 0)
        text += ", " + bytes_text(bytes / seconds) + "/s";
    if (share > 0 && share < 1)
        text += ", " + clock_text(seconds / share * (1 - share)) + " left";
    return text;
}

Follower::Follower(Console *console, VolumeOptions *options) : console_(console)
{
    options->stop = &stop_asked();
    options->interrupted = [this] { return look(); };
    catch_ends();
    if (console->has_status_line())
        start_ticks(Patience.count());
}

std::string Follower::text()
{
    const Progress progress = volume_ ? volume_->progress() : Progress();
    const auto now = std::chrono::steady_clock::now();
    if (std::exchange(file_, progress.file) != progress.file)
        begun_ = now;
    return progress_text(progress, std::chrono::duration<double>(now - begun_).count());
}

/// Serves what the signals asked for. True: the reading is to stop.
bool Follower::look()
try {
    if (take_report()) {
        console_->say({MessageKind::progress, text(), {}, 0, {}, nullptr});
        console_->elog_clear_register();
    }
    if (take_tick() && console_->has_status_line() &&
        std::chrono::steady_clock::now() - begun_ >= Patience)
        console_->show_status(text());
    return stop_asked();
} catch (const Error &) { // the reader of the messages has gone, as the next message finds out
    return stop_asked();
}

} // namespace quarl
