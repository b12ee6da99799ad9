#include "mseed/record_output.h"

#include "mseed/day_file.h"
#include "mseed/mini_record.h"
#include "platform/elog.h"
#include "platform/out.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

namespace quarl::mseed
{

namespace
{

std::string made_folder(const std::string &folder)
{
    make_folders_of(folder + "/");
    return folder;
}

/// Keeps other runs from the archive while it lives; they wait.
class ArchiveLock
{
public:
    explicit ArchiveLock(const std::string &folder)
        : folder_(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
    {
        if (folder_.get() < 0 ||
            unless_given_up([&] { return flock(folder_.get(), LOCK_EX); }) != 0)
            fail_to_write(folder, errno);
    }

private:
    Descriptor folder_;
};

} // namespace

std::string StreamOutput::add(const MiniRecord &record)
{
    ++count_;
    if (!renumber_) {
        out_->write(record.bytes);
        return {};
    }
    copy_.assign(record.bytes);
    put_sequence_number(&copy_, count_);
    out_->write(copy_);
    return {};
}

void StreamOutput::end(Written *written)
{
    written->records = count_;
    written->files = 1;
}

SplitOutput::SplitOutput(NamePattern pattern, bool renumber,
                         std::function<bool(const std::string &)> is_input)
    : pattern_(std::move(pattern)), renumber_(renumber), is_input_(std::move(is_input)),
      spool_(made_folder(pattern_.folder()))
{
}

std::string SplitOutput::add(const MiniRecord &record)
{
    const std::string path = pattern_.name({record.channel, record.quality, record.start});
    if (path.empty())
        return "its codes make no name of a file";
    spool_.add(path, record.channel, record.start, record.bytes);
    return {};
}

void SplitOutput::end(Written *written)
{
    spool_.flush();
    Pieces pieces(spool_.fd());
    for (const auto &[path, queue] : spool_.queues()) {
        const auto count = static_cast<std::int64_t>(queue.records.size());
        if (is_input_(path)) {
            written->refused += count;
            written->faults.push_back(path + ": the records would replace a volume");
            continue;
        }
        make_folders_of(path);
        const auto write = [&, &records = queue.records](Out &out) {
            std::int64_t number = 0;
            std::string numbered;
            for (const RecordPlace &record : records) {
                numbered = pieces.read(record.offset, record.length);
                if (renumber_)
                    put_sequence_number(&numbered, ++number);
                out.write(numbered);
            }
        };
        (void)replace_file(path, path + "." + std::to_string(getpid()) + ".tmp", write,
                           [] { return true; });
        written->records += count;
        ++written->files;
    }
    spool_.clear();
}

ArchiveOutput::ArchiveOutput(std::string folder, bool renumber)
    : folder_(std::move(folder)), renumber_(renumber), spool_(made_folder(folder_))
{
}

std::string ArchiveOutput::add(const MiniRecord &record)
{
    const std::string name = archive_name({record.channel, record.quality, record.start});
    if (name.empty())
        return "its codes make no name of a file";
    spool_.add(folder_ + "/" + name, record.channel, record.start, record.bytes);
    return {};
}

void ArchiveOutput::end_volume(Written *written)
{
    spool_.flush();
    const ArchiveLock lock(folder_);
    for (const auto &[path, queue] : spool_.queues()) {
        const Filed filed = add_to_file(path, spool_, queue, renumber_);
        written->records += filed.added;
        written->known += filed.known;
        written->files += filed.added > 0;
        if (filed.fault.empty())
            continue;
        written->refused += static_cast<std::int64_t>(queue.records.size()) - filed.known;
        written->faults.push_back(path + " stays as it is: " + filed.fault);
    }
    spool_.clear();
}

} // namespace quarl::mseed
