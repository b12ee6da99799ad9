// Where records go.
#pragma once

#include "mseed/file_name.h"
#include "mseed/spool.h"

#include <cstdint>
#include <functional>
#include <quarl/contents.h>
#include <quarl/time.h>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{
class Out;
}

namespace quarl::mseed
{

/// A miniSEED record, and what it is filed by.
struct MiniRecord {
    std::string_view bytes;
    ChannelCode channel;
    char quality = 'D';
    Time start{};
};

/// What has become of records, and of files.
struct Written {
    std::int64_t records = 0;        ///< written
    std::int64_t known = 0;          ///< that were there already
    std::int64_t refused = 0;        ///< of files that stay as they are
    std::int64_t files = 0;          ///< made or changed
    std::vector<std::string> faults; ///< of files that stay as they are
};

class RecordOutput
{
public:
    RecordOutput() = default;
    RecordOutput(const RecordOutput &) = delete;
    RecordOutput &operator=(const RecordOutput &) = delete;
    virtual ~RecordOutput() = default;

    /// Returns why the record cannot be filed, or "".
    virtual std::string add(const MiniRecord &record) = 0;
    /// The records of a volume are all there.
    virtual void end_volume(Written * /*written*/) {}
    /// Those of all volumes are.
    virtual void end(Written * /*written*/) {}
};

/// All records, in their order, as one stream.
class StreamOutput : public RecordOutput
{
public:
    StreamOutput(Out *out, bool renumber) : out_(out), renumber_(renumber) {}
    std::string add(const MiniRecord &record) override;
    void end(Written *written) override;

private:
    Out *out_;
    bool renumber_;
    std::int64_t count_ = 0;
    std::string copy_;
};

/// Files by a pattern of names, in the order of the records. All are replaced at the end.
class SplitOutput : public RecordOutput
{
public:
    /// `is_input` tells paths that must not be replaced.
    SplitOutput(NamePattern pattern, bool renumber,
                std::function<bool(const std::string &)> is_input);
    std::string add(const MiniRecord &record) override;
    void end(Written *written) override;

private:
    NamePattern pattern_;
    bool renumber_;
    std::function<bool(const std::string &)> is_input_;
    Spool spool_;
};

/// An archive's tree of a file for each channel and day, by the day on which a record begins. What
/// a file holds stays; new records are put among its own in order of their starts, and those that
/// it has, but for the sequence number, are left out. A file that holds anything else than miniSEED
/// of its channel is not touched.
class ArchiveOutput : public RecordOutput
{
public:
    ArchiveOutput(std::string folder, bool renumber);
    std::string add(const MiniRecord &record) override;
    void end_volume(Written *written) override;

private:
    std::string folder_;
    bool renumber_;
    Spool spool_;
};

} // namespace quarl::mseed
