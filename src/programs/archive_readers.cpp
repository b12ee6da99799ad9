#include "programs/archive_readers.h"

#include "platform/sha256.h"
#include "programs/interrupt.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <new>
#include <pthread.h>
#include <quarl/volume.h>
#include <utility>

namespace quarl
{

namespace
{

using Outcome = ReadingResult::Outcome;

constexpr std::size_t Held_At_Most = std::size_t{16} << 20;
constexpr std::int64_t Enough_Others = 64; ///< records that are none of SEED's

/// What the reading cannot say anything about: the file has to be read again.
bool is_of_program(MessageKind kind)
{
    return kind == MessageKind::input_not_opened || kind == MessageKind::input_read_error ||
           kind == MessageKind::interrupted || kind == MessageKind::out_of_memory;
}

/// Reads all items; what ends the reading early stands in the result.
void read_items(const std::string &path, archive::VolumeReading *reading, ReadingResult *result)
{
    VolumeOptions options;
    options.stop = &stop_asked();
    options.message = [&](const Message &message) {
        if (is_of_program(message.kind) && result->reason.empty())
            result->reason = full_text(message);
        reading->hear(message);
    };
    options.logical_record = [&](const LogicalRecord &record) { reading->enter(record); };
    result->outcome = Outcome::ready;
    try {
        Volume volume(path, std::move(options));
        while (const Item *item = volume.next()) {
            if (!reading->has_records() && reading->other_records() >= Enough_Others)
                break;
            reading->add(*item);
            if (const auto *end = item->get<FileEnd>()) {
                result->cut = end->cut;
                if (end->failed)
                    result->outcome = Outcome::unread;
            }
        }
    } catch (const Error &error) {
        result->reason = error.what();
        result->cut = true;
        if (is_of_program(error.kind()))
            result->outcome = Outcome::unread;
    }
}

} // namespace

ReadingResult read_for_archive(ReadingJob job, const archive::ReadingOptions &options)
{
    ReadingResult result;
    result.job = std::move(job);
    const std::string &path = result.job.file.path;
    result.volume.file = result.job.file;
    result.volume.options = options.text();
    result.volume.sum = sha256_of_file(path);
    if (result.volume.sum.empty()) {
        result.reason = std::strerror(errno);
        return result;
    }
    const auto &known = result.job.known;
    if (known && known->sum == result.volume.sum && known->options == result.volume.options) {
        result.outcome = Outcome::same;
        return result;
    }
    archive::VolumeReading reading(options);
    read_items(path, &reading, &result);
    if (stop_asked())
        result.outcome = Outcome::stopped;
    else if (result.outcome == Outcome::ready && !reading.has_records())
        result.outcome = Outcome::no_seed;
    else if (result.outcome == Outcome::ready)
        result.volume.rows = reading.take();
    return result;
}

ArchiveReaders::ArchiveReaders(int threads, const archive::ReadingOptions &options)
    : options_(options)
{
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before); // signals are the main thread's
    for (int i = 0; i < threads; ++i)
        threads_.emplace_back([this] { work(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

ArchiveReaders::~ArchiveReaders()
{
    {
        const std::scoped_lock lock(mutex_);
        ends_ = true;
    }
    asked_.notify_all();
    for (std::thread &thread : threads_)
        thread.join();
}

void ArchiveReaders::ask(ReadingJob job)
{
    {
        const std::scoped_lock lock(mutex_);
        slots_.push_back({std::move(job), {}, false});
        ++pending_;
    }
    asked_.notify_one();
}

/// The first job that nobody has; null when all have to wait. The one that is taken next never
/// waits.
ArchiveReaders::Slot *ArchiveReaders::next_slot()
{
    const auto slot =
        std::find_if(slots_.begin(), slots_.end(), [](const Slot &each) { return !each.taken; });
    if (slot == slots_.end() || (held_ > Held_At_Most && slot != slots_.begin()))
        return nullptr;
    return &*slot;
}

void ArchiveReaders::work()
{
    std::unique_lock lock(mutex_);
    for (;;) {
        Slot *slot = nullptr;
        asked_.wait(lock, [&] { return ends_ || (slot = next_slot()) != nullptr; });
        if (ends_)
            return;
        slot->taken = true;
        ReadingJob job = std::move(slot->job);
        lock.unlock();
        bytes_ += job.file.size;
        ReadingResult result;
        result.job.file = job.file;
        try {
            result = read_for_archive(std::move(job), options_);
        } catch (const std::bad_alloc &) {
            result.reason = "out of memory";
        }
        lock.lock();
        held_ += result.volume.rows.size();
        slot->result = std::move(result); // slots stay where they are while there are others
        done_.notify_one();
    }
}

std::optional<ReadingResult> ArchiveReaders::take(std::chrono::milliseconds patience)
{
    std::unique_lock lock(mutex_);
    const auto is_done = [this] { return !slots_.empty() && slots_.front().result; };
    if (slots_.empty() || !done_.wait_for(lock, patience, is_done))
        return {};
    std::optional<ReadingResult> result = std::move(slots_.front().result);
    held_ -= result->volume.rows.size();
    slots_.pop_front();
    --pending_;
    lock.unlock();
    asked_.notify_all();
    return result;
}

} // namespace quarl
