// The parts of an inventory: what a volume describes, and what it holds. Times are seconds since
// 1970-01-01 00:00 UTC.
#pragma once

#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <quarl/fields.h>
#include <quarl/stages.h>
#include <quarl/time.h>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

/// The codes of a channel, without blanks. Those of a station lack the last three.
class ChannelCode
{
public:
    ChannelCode() = default;
    ChannelCode(std::string_view network, std::string_view station, std::string_view location = {},
                std::string_view channel = {}, int subchannel = 0);

    [[nodiscard]] std::string_view network() const { return part<0, 2>(); }
    [[nodiscard]] std::string_view station() const { return part<2, 5>(); }
    [[nodiscard]] std::string_view location() const { return part<7, 2>(); }
    [[nodiscard]] std::string_view channel() const { return part<9, 3>(); }
    [[nodiscard]] int subchannel() const { return subchannel_; }

    /// "IU_ANMO_00_BHZ"; of a station "IU_ANMO"; a subchannel follows behind a colon.
    [[nodiscard]] std::string text() const;
    [[nodiscard]] std::size_t hash() const; ///< another one in each run
    std::strong_ordering operator<=>(const ChannelCode &) const = default;

private:
    friend ChannelCode code_of(const blk_dh_t &header);
    template <std::size_t At, std::size_t Size> [[nodiscard]] std::string_view part() const
    {
        std::size_t size = 0;
        while (size < Size && letters_[At + size] != '\0')
            ++size;
        return {&letters_[At], size};
    }

    std::array<char, 12> letters_{}; ///< NULs behind each code
    int subchannel_ = 0;
};

/// The codes of a data record.
ChannelCode code_of(const blk_dh_t &header);

/// An entry of a dictionary.
struct DictionaryEntry {
    std::string text; ///< name of the format or unit, comment, author, abbreviation, response name
    std::string description;       ///< of a unit
    std::vector<std::string> keys; ///< decoder keys of a data format
    int family = -1;               ///< of a data format
    int encoding = -1; ///< of Blockette 1000, where the family and keys leave no doubt; else -1
    std::int64_t record = 0; ///< logical record in which it was defined last
    /// Of a response: one. While a FIR filter's blockettes go on, one of each; the last joins them.
    std::vector<Part> parts;
    std::size_t promised = 0; ///< coefficients of a FIR filter that its blockettes should have
    std::size_t held = 0;     ///< those that they have
    bool damaged = false;     ///< of a response: a blockette of it lacks something
    std::string comment_class = {}; ///< of a comment: one letter
    int level_unit = 0;             ///< of a comment: unit of its level
};

/// A code was given another text.
struct Redefinition {
    Dictionary dictionary = Dictionary::none;
    int code = 0;
    std::string before;
    std::string after;
    std::int64_t record = 0;
};

/// Comment on a station or channel.
struct Comment {
    double start = Always;
    double end = Forever;
    int key = 0; ///< of the comment dictionary
    int level = 0;
    std::int64_t record = 0; ///< logical record in which its blockette begins
    bool bad = false;        ///< a field of it holds no number, or no time of the calendar
};

/// Fields of a blockette that cannot be taken as they stand: what should be a number or a time is
/// none; of a latitude or longitude also one that is blank. By their numbers in the standard.
class BadFields
{
public:
    void add(int field) { fields_ |= std::uint32_t{1} << field; }
    [[nodiscard]] bool has(int field) const { return (fields_ >> field & 1) != 0; }
    [[nodiscard]] bool any() const { return fields_ != 0; }

private:
    std::uint32_t fields_ = 0;
};

/// Something that a channel epoch's response lacks.
struct ResponseLack {
    int type = 0;            ///< blockette with bad fields, or that ends too early; 60 with a key:
    int key = 0;             ///< ... which the response dictionary does not have
    int stage = 0;           ///< as far as it can be told
    std::int64_t record = 0; ///< logical record in which the blockette begins
};

/// An entry of the history of calibrations that stands with a gain.
struct Calibration {
    int stage = 0;
    Gain gain;
    std::string time; ///< as it stands
};

/// What is true of a station for a time.
struct StationEpoch {
    std::size_t station = 0; ///< index among the stations
    double start = Always;
    double end = Forever;
    double latitude = 0.0;  ///< degrees
    double longitude = 0.0; ///< degrees
    double elevation = 0.0; ///< m
    int network_id = 0;     ///< generic abbreviation
    std::string name;
    std::int64_t record = 0; ///< logical record in which its blockette begins
    int sequence_number = 0; ///< of that record
    std::vector<Comment> comments;
    BadFields bad_fields = {}; ///< of Blockette 050
};

struct Station {
    ChannelCode code;
    std::vector<std::size_t> epochs;   ///< indexes among the station epochs, in volume order
    std::vector<std::size_t> channels; ///< indexes among the channels
};

/// What is true of a channel for a time.
struct ChannelEpoch {
    std::size_t channel = 0;       ///< index among the channels
    std::size_t station_epoch = 0; ///< index of the station epoch under which it stands
    double start = Always;
    double end = Forever;
    double latitude = 0.0;  ///< degrees
    double longitude = 0.0; ///< degrees
    double elevation = 0.0; ///< m
    double depth = 0.0;     ///< m
    double azimuth = 0.0;   ///< degrees clockwise from north
    double dip = 0.0;       ///< degrees down from horizontal
    double sample_rate = 0.0;
    int instrument = 0; ///< generic abbreviation
    int signal_units = 0;
    int calibration_units = 0;
    int format = 0;
    int record_length = 0; ///< bytes
    std::string flags;
    std::string comment;
    std::int64_t record = 0; ///< logical record in which its blockette begins
    Response response;
    std::vector<Comment> comments;
    double clock_drift = 0.0;  ///< at most, seconds per sample
    BadFields bad_fields = {}; ///< of Blockette 052
    std::vector<ResponseLack> lacks = {};
    std::vector<Calibration> calibrations = {};
};

struct Channel {
    ChannelCode code;
    std::size_t station = 0;         ///< index among the stations
    std::vector<std::size_t> epochs; ///< indexes among the channel epochs, in volume order
};

/// Data without a gap.
struct DataSpan {
    double start = 0.0;
    double end = 0.0;        ///< when the next sample would come
    double tolerance = 0.0;  ///< s: what comes closer to the end joins
    std::int64_t record = 0; ///< logical record with which it starts
};

/// A time that data cover more than once, at one stretch.
struct DataOverlap {
    double start = 0.0;
    double end = 0.0;
};

/// Something that happened several times in the data of a channel, and where it did first.
struct Occurrences {
    std::int64_t count = 0;
    std::int64_t record = 0;
    double from = 0.0; ///< what was there before starts here; of an overlap: what both share ends
    double to = 0.0;   ///< what comes next starts here
    double largest = 0.0; ///< of overlaps, seconds
    double sum = 0.0;     ///< the same of all
};

/// The data of a channel.
struct DataChannel {
    ChannelCode code;
    std::int64_t records = 0;
    std::int64_t samples = 0;
    std::int64_t first_record = 0;
    double rate = 0.0;           ///< samples per second of the last record
    std::vector<DataSpan> spans; ///< in order of time; complete at the end of the input file
    Occurrences overlaps;        ///< in order of time
    std::vector<DataOverlap> overlapping; ///< in order of time; those that touch are one
    Occurrences steps_back;               ///< records that start before the one in front of them
    double last_start = 0.0;              ///< of the record that came last
    double last_end = 0.0;
};

/// An entry of an index (011, 012), or a time series (074) with its two ends.
struct StationIndexEntry {
    std::string station;
    int sequence_number = 0;
    std::int64_t record = 0; ///< logical record of the index
};
struct SpanIndexEntry {
    double start = Always;
    double end = Forever;
    int sequence_number = 0;
    std::int64_t record = 0;
};
struct SeriesIndexEntry {
    ChannelCode code;
    double start = Always;
    double end = Forever;
    int first_sequence_number = 0;
    int last_sequence_number = 0;
    std::int64_t record = 0;
};

/// A time span header (070).
struct TimeSpanHeader {
    double start = Always;
    double end = Forever;
    int sequence_number = 0; ///< of the logical record in which it begins
    std::int64_t record = 0;
};

/// The volume identifier; without one, `record` is 0.
struct VolumeIdentifier {
    double version = 0.0;
    double start = Always;
    double end = Forever;
    int record_length = 0; ///< bytes
    std::string organisation;
    std::string label;
    std::int64_t record = 0;
};

} // namespace quarl
