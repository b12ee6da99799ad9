// Records on their way to files, by the names of these.
#pragma once

#include "mseed/record_file.h"

#include <map>

namespace quarl::mseed
{

/// Keeps records in a file without a name, which goes with the process, however it ends.
class Spool
{
public:
    /// The file stands on the disk of `folder`, which has to be there.
    explicit Spool(const std::string &folder);

    /// The records of one file, in the order in which they came.
    struct Queue {
        ChannelCode channel;
        std::vector<RecordPlace> records;
    };

    void add(const std::string &path, const ChannelCode &channel, Time start,
             std::string_view record);
    /// All that was added since the last call of `clear`, by path.
    [[nodiscard]] const std::map<std::string, Queue> &queues() const { return queues_; }
    [[nodiscard]] int fd() const { return file_.get(); }
    /// Writes out what is held.
    void flush();
    void clear();

private:
    std::string folder_;
    Descriptor file_;
    std::string held_;
    std::uint64_t size_ = 0; ///< of all that was added
    std::map<std::string, Queue> queues_;
    Queue *last_ = nullptr; ///< where the last record went
    std::string last_path_;
};

} // namespace quarl::mseed
