// Merges volumes into an archive, and takes them out of it.
#pragma once

#include "archive/derive.h"
#include "archive/source_merge.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quarl::archive
{

/// A file, as far as the file system knows it.
struct FileFacts {
    std::string path; ///< the real one
    std::int64_t size = 0;
    double changed = 0.0; ///< seconds since 1970, to the microsecond
};

/// What one volume says, in rows.
struct VolumeRows {
    std::array<Rows, Statements> statements; ///< by Statement: digest and columns
    Rows data;                               ///< of wfdisc: those of its columns that data tell
    Rows findings;                           ///< of quarl_finding, from `findid` on
    RowText facts;                           ///< of quarl_volume, from `label` to `options`
    double written = 0.0;                    ///< when the volume was
    std::vector<std::string> told;           ///< what the user has to hear

    [[nodiscard]] std::size_t size() const;
};

/// A volume to be merged.
struct VolumeToMerge {
    FileFacts file;
    std::string sum;     ///< SHA-256
    std::string options; ///< that decide what rows there are
    VolumeRows rows;
};

/// What is known of a file.
struct KnownVolume {
    std::int64_t id = 0;
    FileFacts file;
    std::string sum;
    std::string options;
};

enum class Fate { added, changed, unchanged, moved };

struct Merged {
    Fate fate = Fate::unchanged;
    std::vector<std::string> told;
    bool contradicts = false;
};

/// One connection that writes.
class Merge
{
public:
    /// Makes the tables of the archive where `may_make` is true.
    Merge(const std::string &database, bool may_make);
    ~Merge();

    DatabaseWriter &database() { return database_; }

    /// What the archive knows of files, in any order.
    std::vector<KnownVolume> known(const std::vector<std::string> &paths);
    /// Merges volumes, all or none. One answer each.
    std::vector<Merged> merge(const std::vector<VolumeToMerge> &volumes);
    /// Files that were found with another time of change, but with the same bytes.
    void touch(const std::vector<KnownVolume> &volumes);
    /// Takes volumes out, all or none.
    void remove(const std::vector<std::int64_t> &volumes);
    /// Up to `most` volumes whose number is above `after`, in order of numbers.
    std::vector<KnownVolume> list(std::int64_t after, std::size_t most);
    /// Leaves the database to others: an SQLite file stands alone.
    void finish();

private:
    /// What becomes of each volume, and of those that the archive has.
    struct Plan {
        struct Step {
            Fate fate = Fate::added;
            std::int64_t id = 0;
        };
        std::vector<Step> steps;
        std::vector<std::int64_t> gone; ///< what these have said before is taken back
        std::map<std::int64_t, std::size_t> by_id;
    };
    /// A finding of the merge.
    struct Ambiguity {
        std::int64_t volume = 0;
        std::string rule;
        std::string subject;
        std::string text;
    };

    [[nodiscard]] std::vector<KnownVolume> read_known(const TextRows &rows) const;
    std::vector<KnownVolume> known_sums(const std::vector<VolumeToMerge> &volumes);
    Plan plan(const std::vector<VolumeToMerge> &volumes);
    void take_back(const std::vector<std::int64_t> &volumes);
    void write(const std::vector<VolumeToMerge> &volumes, const Plan &plan);
    void write_move(const VolumeToMerge &volume, std::int64_t id);
    void write_findings(const std::vector<VolumeToMerge> &volumes, const Plan &plan);
    std::vector<Ambiguity> ambiguities();
    std::map<std::int64_t, std::string> paths_of(std::vector<std::int64_t> volumes);
    void tell(const Plan &plan, std::vector<Merged> *merged);
    static void keep_finding(const Ambiguity &found, std::int64_t number, std::int64_t other,
                             Rows *rows);
    void settle();
    void clear();

    DatabaseWriter database_;
    Dialect dialect_;
    std::vector<std::unique_ptr<SourceMerge>> sources_;
    std::unique_ptr<Derived> derived_;
};

} // namespace quarl::archive
