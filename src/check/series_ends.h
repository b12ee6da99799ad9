// Time series of the index (074), and what the data records hold to which they point.
#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <quarl/contents.h>
#include <unordered_map>
#include <vector>

namespace quarl
{

/// A time series and what was met at its ends.
struct SeriesSeen {
    /// The data of the channel in the record to which it points.
    struct End {
        bool met = false;        ///< there are any
        bool has_record = false; ///< the volume has such a record of data, of whatever channel
        double start = 0.0;
        double end = 0.0;
        double rate = 0.0; ///< of those that end last

        void join(const End &other);
    };
    SeriesIndexEntry entry;
    End first;
    End last;
};

/// Notes what data records hold for the series whose entries stand in front of them: the data of
/// their channel in records of their numbers, until an entry for the same comes again. A missing
/// network code fits any. Entries that point to the same share what is noted, so that a data record
/// costs the same however many they are.
class SeriesEnds
{
public:
    void add(const SeriesIndexEntry &entry);
    [[nodiscard]] bool is_empty() const { return entries_.empty(); }
    /// Data of a channel in the record with this number.
    void meet(int number, const ChannelCode &channel, const SeriesSeen::End &data);
    /// All series, in the order of their entries.
    [[nodiscard]] std::vector<SeriesSeen> seen() const;

private:
    static constexpr std::size_t None = static_cast<std::size_t>(-1);

    /// Where data are noted, among the ends.
    struct Places {
        std::size_t same = None; ///< data of this very network code
        std::size_t any = None;  ///< data of any; under the code without a network alone
    };
    using Pointers = std::array<std::size_t, 2>;
    struct Entry {
        SeriesIndexEntry entry;
        Pointers first; ///< the ends that make up its own
        Pointers last;
    };

    Pointers point(int number, const ChannelCode &channel);
    std::size_t open(std::size_t *place);
    void note(std::size_t place, const SeriesSeen::End &data);
    [[nodiscard]] SeriesSeen::End joined(const Pointers &pointers) const;

    std::vector<Entry> entries_;
    std::vector<SeriesSeen::End> ends_;
    struct Numbered {
        bool met = false;
        std::map<ChannelCode, Places> channels;
    };
    std::unordered_map<int, Numbered> places_; ///< by record number
};

} // namespace quarl
