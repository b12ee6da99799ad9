// Calls that may wait for ever, and that no signal interrupts: those of libraries.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace quarl
{

/// Runs `task` in a thread of its own, which hears no signals.
void run_aside(std::function<void()> task);

/// Whether `ready` comes true within `most`: asked again and again, until the reading is given up.
bool comes_true(std::chrono::milliseconds most,
                const std::function<bool(std::chrono::milliseconds)> &ready);

/// What `work` gives, run in a thread of its own; nothing when it takes longer than `most`, or the
/// reading is given up. Then it goes on by itself, so it owns all that it uses.
template <class Work>
std::optional<std::invoke_result_t<Work>> within(std::chrono::milliseconds most, Work work)
{
    auto task = std::make_shared<std::packaged_task<std::invoke_result_t<Work>()>>(std::move(work));
    auto result = task->get_future();
    run_aside([task = std::move(task)] { (*task)(); });
    if (!comes_true(most, [&result](std::chrono::milliseconds wait) {
            return result.wait_for(wait) == std::future_status::ready;
        }))
        return std::nullopt;
    return result.get();
}

} // namespace quarl
