#include "programs/archive_run.h"

#include "platform/text.h"
#include "platform/utf8.h"
#include "programs/archive_files.h"
#include "programs/archive_readers.h"
#include "programs/interrupt.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <sys/stat.h>
#include <unordered_map>

namespace quarl
{

namespace
{

using archive::Fate;
using archive::FileFacts;
using archive::KnownVolume;
using archive::Merge;
using archive::Merged;
using archive::VolumeToMerge;
using Clock = std::chrono::steady_clock;

constexpr std::size_t Chunk = 128;  ///< files that the database is asked about at once
constexpr std::size_t Window = 512; ///< files that are read or wait
constexpr std::size_t Batch = 512;  ///< volumes of a transaction at most
constexpr std::size_t Batch_Bytes = std::size_t{4} << 20; ///< of their rows
constexpr std::chrono::milliseconds Batch_Time(500);      ///< that a volume waits for others
constexpr std::size_t Page = 1000;

/// The real path of a file; "" with errno set when there is none.
std::string real_path(const std::string &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : "";
}

std::string counted(std::int64_t count, const std::string &one)
{
    return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string_view name_of(Fate fate)
{
    switch (fate) {
    case Fate::added:
        return "added";
    case Fate::changed:
        return "changed";
    case Fate::moved:
        return "moved";
    case Fate::unchanged:
        break;
    }
    return "unchanged";
}

/// What the user hears and commands while an archive is worked on.
class Talk
{
public:
    explicit Talk(Console *console) : console_(console)
    {
        catch_ends();
        if (console->has_status_line())
            start_ticks(1000);
    }

    void say(const std::string &text)
    {
        console_->say({MessageKind::usage, text, {}, 0, {}, nullptr});
    }
    /// Serves what signals asked for; `text` tells how far the run is.
    template <class Text> void look(const Text &text)
    {
        if (take_report()) {
            console_->say({MessageKind::progress, text(), {}, 0, {}, nullptr});
            console_->elog_clear_register();
        }
        if (take_tick() && console_->has_status_line())
            console_->show_status(text());
    }
    Console *console() { return console_; }

private:
    Console *console_;
};

class MergeRun
{
public:
    MergeRun(Console *console, const ArchiveWishes &wishes)
        : talk_(console), wishes_(wishes), merge_(wishes.database, true),
          files_(wishes.volumes, &std::cin), options_(wishes.reading.text()),
          readers_(wishes.threads, wishes.reading)
    {
    }

    int run();

private:
    void fill();
    void ask_chunk();
    std::optional<FileFacts> facts_of(const ArchiveFiles::File &file);
    void take(ReadingResult result);
    void write();
    void tell(const VolumeToMerge &volume, const Merged &merged);
    void fail(const std::string &path, const std::string &reason);
    [[nodiscard]] std::string summary() const;

    Talk talk_;
    const ArchiveWishes &wishes_;
    Merge merge_;
    ArchiveFiles files_;
    std::string options_;
    ArchiveReaders readers_;
    bool all_asked_ = false;
    std::vector<VolumeToMerge> batch_;
    std::size_t batch_bytes_ = 0;
    Clock::time_point batch_begun_;
    std::vector<KnownVolume> touched_;
    std::array<std::int64_t, 4> fates_{};
    std::int64_t passed_over_ = 0;
    std::int64_t unread_ = 0;
    std::int64_t cut_ = 0;
    std::int64_t contradicting_ = 0;
};

void MergeRun::fail(const std::string &path, const std::string &reason)
{
    ++unread_;
    talk_.say(path + ": " + reason);
}

std::optional<FileFacts> MergeRun::facts_of(const ArchiveFiles::File &file)
{
    FileFacts facts;
    struct stat status = {};
    facts.path = real_path(file.path);
    if (facts.path.empty() || stat(facts.path.c_str(), &status) != 0) {
        fail(file.path, std::strerror(errno));
        return {};
    }
    if (!S_ISREG(status.st_mode)) {
        fail(file.path, "is no regular file");
        return {};
    }
    if (!is_plain_utf8(facts.path)) {
        fail(file.path, "its name is no plain UTF-8, which a database could keep");
        return {};
    }
    facts.size = status.st_size;
    facts.changed = static_cast<double>(status.st_mtim.tv_sec) +
                    std::round(static_cast<double>(status.st_mtim.tv_nsec) / 1e3) / 1e6;
    return facts;
}

/// Asks the database about the next files, and for those that may have changed to be read.
void MergeRun::ask_chunk()
{
    constexpr double Tick = 2e-6; // a double's and a text's
    std::vector<ReadingJob> jobs;
    std::vector<std::string> paths;
    while (jobs.size() < Chunk) {
        const auto file = files_.next();
        all_asked_ = !file;
        if (!file)
            break;
        if (auto facts = facts_of(*file)) {
            if (facts->path == merge_.database().path())
                continue;
            paths.push_back(facts->path);
            jobs.push_back({std::move(*facts), file->named, {}});
        }
    }
    for (const std::string &fault : files_.take_faults()) {
        ++unread_;
        talk_.say(fault);
    }
    std::unordered_map<std::string, KnownVolume> known;
    if (!paths.empty())
        for (KnownVolume &volume : merge_.known(paths))
            known.emplace(volume.file.path, volume);
    for (ReadingJob &job : jobs) {
        if (const auto found = known.find(job.file.path); found != known.end())
            job.known = found->second;
        if (job.known && job.known->options == options_ && job.known->file.size == job.file.size &&
            std::fabs(job.known->file.changed - job.file.changed) < Tick)
            tell({job.file, {}, {}, {}}, {});
        else
            readers_.ask(std::move(job));
    }
}

void MergeRun::fill()
{
    while (!all_asked_ && !stop_asked() && readers_.pending() < Window)
        ask_chunk();
}

void MergeRun::tell(const VolumeToMerge &volume, const Merged &merged)
{
    ++fates_[static_cast<std::size_t>(merged.fate)];
    contradicting_ += merged.contradicts;
    for (const std::string &told : merged.told)
        talk_.say(volume.file.path + ": " + told);
    if (wishes_.verbose)
        talk_.console()->out().write(std::string(name_of(merged.fate)) + " " + volume.file.path +
                                     "\n");
}

void MergeRun::take(ReadingResult result)
{
    const std::string &path = result.job.file.path;
    switch (result.outcome) {
    case ReadingResult::Outcome::ready:
        break;
    case ReadingResult::Outcome::same: {
        KnownVolume now = *result.job.known;
        now.file = result.job.file;
        touched_.push_back(std::move(now));
        tell(result.volume, {});
        return;
    }
    case ReadingResult::Outcome::no_seed:
        if (result.job.named)
            fail(path, "there are no SEED records in it");
        else
            ++passed_over_;
        return;
    case ReadingResult::Outcome::unread:
        fail(path, result.reason.empty() ? "read error" : result.reason);
        return;
    case ReadingResult::Outcome::stopped:
        return;
    }
    if (result.cut) {
        ++cut_;
        talk_.say(path + ": " + (result.reason.empty() ? "is cut" : result.reason) +
                  "; what stands in front of that is merged");
    }
    if (batch_.empty())
        batch_begun_ = Clock::now();
    batch_bytes_ += result.volume.rows.size();
    batch_.push_back(std::move(result.volume));
}

void MergeRun::write()
{
    merge_.touch(touched_);
    touched_.clear();
    if (batch_.empty())
        return;
    const std::vector<Merged> merged = merge_.merge(batch_);
    for (std::size_t i = 0; i < batch_.size(); ++i)
        tell(batch_[i], merged[i]);
    batch_.clear();
    batch_bytes_ = 0;
    talk_.console()->elog_clear_register();
}

std::string MergeRun::summary() const
{
    const auto fate = [this](Fate which) { return fates_[static_cast<std::size_t>(which)]; };
    std::string text = counted(fate(Fate::added), "volume") + " added";
    const auto add = [&](std::int64_t count, const std::string &what) {
        if (count > 0)
            text += ", " + std::to_string(count) + " " + what;
    };
    add(fate(Fate::changed), "changed");
    add(fate(Fate::moved), "moved");
    add(fate(Fate::unchanged), "unchanged");
    add(contradicting_, "contradicting others");
    add(cut_, "cut");
    add(unread_, "unread");
    if (passed_over_ > 0)
        text += ", " + counted(passed_over_, "other file") + " passed over";
    return text;
}

int MergeRun::run()
{
    const auto progress = [this] {
        return summary() + ", " +
               formatted<"%.1f MB read">(static_cast<double>(readers_.bytes()) / 1e6);
    };
    fill();
    while (!stop_asked() && (readers_.pending() > 0 || !all_asked_)) {
        talk_.look(progress);
        if (auto result = readers_.take(std::chrono::milliseconds(100)))
            take(std::move(*result));
        if (batch_.size() >= Batch || batch_bytes_ >= Batch_Bytes ||
            (!batch_.empty() && Clock::now() - batch_begun_ >= Batch_Time))
            write();
        fill();
    }
    if (!stop_asked())
        write();
    merge_.finish();
    talk_.console()->elog_clear_register();
    talk_.say(summary());
    return unread_ + cut_ + contradicting_ > 0 ? 1 : 0;
}

int list_volumes(Console *console, const ArchiveWishes &wishes)
{
    Merge merge(wishes.database, false);
    std::int64_t after = 0;
    for (;;) {
        const std::vector<KnownVolume> volumes = merge.list(after, Page);
        for (const KnownVolume &volume : volumes) {
            if (wishes.verbose)
                print<"%s %12lld ">(console->out(), volume.sum,
                                    static_cast<long long>(volume.file.size));
            console->out().write(volume.file.path + "\n");
        }
        if (volumes.empty())
            break;
        after = volumes.back().id;
    }
    merge.finish();
    return 0;
}

void say_removed(Console *console, const ArchiveWishes &wishes, const KnownVolume &volume)
{
    if (wishes.verbose)
        console->out().write("removed " + volume.file.path + "\n");
}

std::string removed_text(std::int64_t count) { return counted(count, "volume") + " removed"; }

/// The path under which the archive may know a file that need not be there any more.
std::string path_of_gone(const std::string &name)
{
    std::string real = real_path(name);
    if (!real.empty())
        return real;
    const std::size_t slash = name.rfind('/');
    const std::string folder =
        real_path(slash == std::string::npos ? "." : name.substr(0, slash + 1));
    return folder.empty() ? name : folder + "/" + std::string(base_name(name));
}

int remove_volumes(Console *console, const ArchiveWishes &wishes)
{
    Talk talk(console);
    Merge merge(wishes.database, false);
    ArchiveFiles files(wishes.volumes, &std::cin);
    std::int64_t removed = 0;
    int status = 0;
    while (const auto file = files.next()) {
        if (stop_asked())
            break;
        const auto known = merge.known({path_of_gone(file->path), file->path});
        if (known.empty() && file->named) {
            talk.say(file->path + ": is not in the archive");
            status = 1;
        }
        if (known.empty())
            continue;
        merge.remove({known.front().id});
        say_removed(console, wishes, known.front());
        ++removed;
    }
    merge.finish();
    talk.say(removed_text(removed));
    return status;
}

int prune(Console *console, const ArchiveWishes &wishes)
{
    Talk talk(console);
    Merge merge(wishes.database, false);
    std::int64_t after = 0;
    std::int64_t removed = 0;
    while (!stop_asked()) {
        const std::vector<KnownVolume> volumes = merge.list(after, Page);
        if (volumes.empty())
            break;
        after = volumes.back().id;
        std::vector<std::int64_t> gone;
        for (const KnownVolume &volume : volumes) {
            struct stat status = {};
            if (stat(volume.file.path.c_str(), &status) == 0 ||
                (errno != ENOENT && errno != ENOTDIR))
                continue;
            gone.push_back(volume.id);
            say_removed(console, wishes, volume);
        }
        if (!gone.empty())
            merge.remove(gone);
        removed += static_cast<std::int64_t>(gone.size());
    }
    merge.finish();
    talk.say(removed_text(removed));
    return 0;
}

} // namespace

int run_archive(Console *console, const ArchiveWishes &wishes)
{
    switch (wishes.task) {
    case ArchiveWishes::Task::list:
        return list_volumes(console, wishes);
    case ArchiveWishes::Task::remove:
        return remove_volumes(console, wishes);
    case ArchiveWishes::Task::prune:
        return prune(console, wishes);
    case ArchiveWishes::Task::merge:
        break;
    }
    return MergeRun(console, wishes).run();
}

} // namespace quarl
