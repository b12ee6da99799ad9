#include "mseed/day_file.h"

#include "mseed/mini_record.h"
#include "platform/out.h"
#include "platform/text.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <unordered_set>

namespace quarl::mseed
{

namespace
{

/// A record of the old file, or a new one.
struct Source {
    const RecordPlace *place;
    bool is_new;
};

/// The file as it is before it is changed.
class OldFile
{
public:
    explicit OldFile(const std::string &path)
        : file_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)), error_(errno)
    {
        if (is_there() && fstat(file_.get(), &status_) != 0)
            error_ = errno;
    }

    [[nodiscard]] bool is_there() const { return file_.get() >= 0; }
    /// Finds its records. Returns why it has to stay as it is, or "".
    std::string read(const ChannelCode &channel)
    {
        if (!is_there())
            return error_ == ENOENT ? "" : std::strerror(error_);
        if (!S_ISREG(status_.st_mode))
            return "is no regular file";
        return find_records(file_.get(), static_cast<std::uint64_t>(status_.st_size), channel,
                            &records_);
    }
    /// Whether the file at `path` is still this one.
    [[nodiscard]] bool is_still(const std::string &path) const
    {
        struct stat now = {};
        if (stat(path.c_str(), &now) != 0)
            return !is_there() && errno == ENOENT;
        return is_there() && now.st_dev == status_.st_dev && now.st_ino == status_.st_ino &&
               now.st_size == status_.st_size && now.st_mtim.tv_sec == status_.st_mtim.tv_sec &&
               now.st_mtim.tv_nsec == status_.st_mtim.tv_nsec;
    }
    [[nodiscard]] const std::vector<RecordPlace> &records() const { return records_; }
    [[nodiscard]] int fd() const { return file_.get(); }

private:
    Descriptor file_;
    int error_;
    struct stat status_ = {};
    std::vector<RecordPlace> records_;
};

/// The records of `queue` that are not in `old`, each once, in order of their starts.
std::vector<const RecordPlace *> new_records(const std::vector<RecordPlace> &old,
                                             const Spool::Queue &queue)
{
    std::unordered_set<std::uint64_t> known;
    for (const RecordPlace &record : old)
        known.insert(record.content);
    std::vector<const RecordPlace *> fresh;
    for (const RecordPlace &record : queue.records)
        if (known.insert(record.content).second)
            fresh.push_back(&record);
    std::stable_sort(fresh.begin(), fresh.end(),
                     [](const auto *a, const auto *b) { return a->start < b->start; });
    return fresh;
}

/// The old records in their order, with each new one behind those that begin no later.
std::vector<Source> merged(const std::vector<RecordPlace> &old,
                           const std::vector<const RecordPlace *> &fresh)
{
    std::vector<Source> all;
    all.reserve(old.size() + fresh.size());
    auto next = fresh.begin();
    for (const RecordPlace &record : old) {
        for (; next != fresh.end() && (*next)->start < record.start; ++next)
            all.push_back({*next, true});
        all.push_back({&record, false});
    }
    for (; next != fresh.end(); ++next)
        all.push_back({*next, true});
    return all;
}

/// Copies the record into `out`. A file that was cut short meanwhile is an error.
void copy(const Source &source, Pieces *pieces, std::int64_t number, Out *out)
{
    const std::string_view record = pieces->read(source.place->offset, source.place->length);
    if (record.size() < source.place->length)
        throw Error(MessageKind::output_failed, "", EIO);
    if (number == 0) {
        out->write(record);
        return;
    }
    std::string numbered(record);
    put_sequence_number(&numbered, number);
    out->write(numbered);
}

/// The file at the end of links, so that one stays a link.
std::string end_of_links(const std::string &path)
{
    const std::unique_ptr<char, void (*)(void *)> real(realpath(path.c_str(), nullptr), std::free);
    return real ? real.get() : path;
}

/// Beside the file, hidden, and of one name: what a killed run has left is written over.
std::string draft_of(const std::string &path)
{
    const std::string_view name = base_name(path);
    return path.substr(0, path.size() - name.size()) + "." + std::string(name) + ".quarl-mseed";
}

} // namespace

Filed add_to_file(const std::string &path, const Spool &spool, const Spool::Queue &queue,
                  bool renumber)
{
    const std::string target = end_of_links(path);
    OldFile old(target);
    Filed filed;
    filed.fault = old.read(queue.channel);
    if (!filed.fault.empty())
        return filed;
    const auto fresh = new_records(old.records(), queue);
    filed.known = static_cast<std::int64_t>(queue.records.size() - fresh.size());
    if (fresh.empty())
        return filed;
    make_folders_of(target);
    const auto write = [&](Out &out) {
        Pieces old_pieces(old.fd());
        Pieces new_pieces(spool.fd());
        std::int64_t number = 0;
        for (const Source &source : merged(old.records(), fresh)) {
            ++number;
            copy(source, source.is_new ? &new_pieces : &old_pieces,
                 source.is_new && renumber ? number : 0, &out);
        }
    };
    if (!replace_file(target, draft_of(target), write, [&] { return old.is_still(target); })) {
        filed.fault = "changed while it was read: another program writes to it";
        return filed;
    }
    filed.added = static_cast<std::int64_t>(fresh.size());
    return filed;
}

} // namespace quarl::mseed
