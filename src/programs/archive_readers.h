// Reads volumes for an archive, several at once.
#pragma once

#include "archive/volume_reading.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace quarl
{

/// A file, and what the archive knows of it.
struct ReadingJob {
    archive::FileFacts file;
    bool named = true;
    std::optional<archive::KnownVolume> known;
};

/// What came of it.
struct ReadingResult {
    enum class Outcome {
        ready,
        same,    ///< the bytes are those that the archive has
        no_seed, ///< there is no record of SEED in it
        unread,
        stopped
    };
    Outcome outcome = Outcome::unread;
    ReadingJob job;
    archive::VolumeToMerge volume;
    std::string reason; ///< why it was not read, or where it was cut
    bool cut = false;
};

/// Threads that read. What they have read waits until it is taken, in the order in which it was
/// asked for; when much is waiting, they wait.
class ArchiveReaders
{
public:
    ArchiveReaders(int threads, const archive::ReadingOptions &options);
    ArchiveReaders(const ArchiveReaders &) = delete;
    ArchiveReaders &operator=(const ArchiveReaders &) = delete;
    /// Waits for those that are at work.
    ~ArchiveReaders();

    void ask(ReadingJob job);
    /// The next result; nothing when it does not come within `patience` or there is none to come.
    std::optional<ReadingResult> take(std::chrono::milliseconds patience);
    /// Asked for and not taken.
    [[nodiscard]] std::size_t pending() const { return pending_; }
    /// Bytes of the files that were read.
    [[nodiscard]] std::int64_t bytes() const { return bytes_; }

private:
    struct Slot {
        ReadingJob job;
        std::optional<ReadingResult> result;
        bool taken = false; ///< by a thread
    };

    void work();
    Slot *next_slot();

    const archive::ReadingOptions &options_;
    std::mutex mutex_;
    std::condition_variable asked_;
    std::condition_variable done_;
    std::deque<Slot> slots_;
    std::size_t held_ = 0; ///< bytes of the results that wait
    std::size_t pending_ = 0;
    bool ends_ = false;
    std::atomic<std::int64_t> bytes_ = 0;
    std::vector<std::thread> threads_;
};

/// Reads one volume.
ReadingResult read_for_archive(ReadingJob job, const archive::ReadingOptions &options);

} // namespace quarl
