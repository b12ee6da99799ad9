// What one reading of a volume has to say to an archive.
#pragma once

#include "archive/calibration.h"
#include "archive/merge.h"
#include "check/checker.h"
#include "inventory/selection.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quarl::archive
{

struct ReadingOptions {
    bool check = true;
    bool data = true; ///< what data records hold
    ChannelSelection selection;
    std::string select; ///< its text

    /// That decide what rows there are.
    [[nodiscard]] std::string text() const;
};

/// Hears what the reading tells, in this order: messages and logical records, then the item that
/// they came with.
class VolumeReading
{
public:
    explicit VolumeReading(const ReadingOptions &options);
    ~VolumeReading();

    void hear(const Message &message);
    void enter(const LogicalRecord &record);
    void add(const Item &item);
    /// Whether a logical record was met that may be one of SEED.
    [[nodiscard]] bool has_records() const { return has_records_; }
    /// How many were met that are none.
    [[nodiscard]] std::int64_t other_records() const { return other_records_; }
    /// The rows; nothing may be added afterwards.
    VolumeRows take();

private:
    struct Work;

    std::unique_ptr<Work> work_;
    bool has_records_ = false;
    std::int64_t other_records_ = 0;
};

} // namespace quarl::archive
