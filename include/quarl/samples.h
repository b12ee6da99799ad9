// Decodes the samples of data records, and tells what is wrong with them.
//
//     quarl::SampleBuffer buffer;
//     for (const quarl::Item &item : volume) {
//         const quarl::Samples samples = quarl::decode(item, buffer);
//         if (const auto *counts = samples.get<quarl::Integers>())
//             for (const std::int32_t count : *counts)
//                 ...
//         for (const quarl::SampleProblem &problem : samples.problems)
//             std::puts(problem.text.c_str());
//     }
//
// What can be decoded is given, up to the first sample that cannot. Counts, offsets and codes of a
// record may all lie: nothing outside of its bytes is read. Nothing here throws, except for want of
// memory, which the buffer takes once and keeps.
#pragma once

#include <quarl/item.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace quarl
{

/// How samples are written, by the encoding format codes of Blockette 1000. A code that is not
/// named here is a value all the same.
enum class Encoding : int {
    none = -1, ///< not known
    ascii = 0,
    int16 = 1,
    int24 = 2,
    int32 = 3,
    float32 = 4,
    float64 = 5,
    steim1 = 10,
    steim2 = 11,
    geoscope_24 = 12,    ///< given as floats, as the next two
    geoscope_gain3 = 13, ///< 3 bits of gain
    geoscope_gain4 = 14, ///< 4 bits of gain
    us_national = 15,    ///< no public rule: cannot be decoded
    cdsn = 16,
    graefenberg = 17, ///< no public rule
    strasbourg = 18,  ///< no public rule
    steim3 = 19,      ///< no public rule
    sro = 30,
    hglp = 31, ///< no public rule
    dwwssn = 32,
    rstn = 33, ///< no public rule
};

/// "Steim-2", say; "" when the code has no name. Lives for ever.
std::string_view name_of(Encoding encoding);

/// The encoding of a data record: as its Blockette 1000 says, else by the data format that the
/// channel dictionary or the database names.
Encoding encoding_of(const blk_dh_t &header);

/// The byte order of a data record's samples: as its Blockette 1000 says, else as the name of its
/// data format does ("SUN IEEE integer": big-endian), else that of its header.
bool is_little_endian(const blk_dh_t &header);

/// What may be wrong with the samples of a record.
enum class SampleFault {
    no_encoding,   ///< nothing tells how they are written, or by a name or code that is not known
    no_rule,       ///< nobody has published how the encoding is read
    data_offset,   ///< the data begin inside the fixed header or outside of the record
    count,         ///< the data hold fewer samples than the header says
    last_sample,   ///< differs from Steim's reverse integration constant
    control_code,  ///< of Steim: stands for no differences, or where none can be
    gain_code,     ///< above the largest gain
    other_order,   ///< Steim frames that make sense in the other byte order only; decoded so
    no_text_bytes, ///< control characters and the like in what should be text; given all the same
};

/// The fault as a word of small letters and "-", such as "last-sample"; lives for ever.
std::string_view name_of(SampleFault fault);

struct SampleProblem {
    SampleFault fault;
    std::string text; ///< in words, with the numbers: "the data hold 312 of 400 samples"
};

using Integers = std::span<const std::int32_t>;
using Floats = std::span<const float>;
using Doubles = std::span<const double>;
using Text = std::string_view;

/// What a Steim record says besides its samples.
struct SteimConstants {
    std::int32_t first_difference = 0; ///< from the last sample of the record before
    std::int32_t forward = 0;          ///< integration constant: the first sample
    std::int32_t reverse = 0;          ///< the last one
};

/// The samples of a record. Values and problems stand in the buffer until it is used again.
struct Samples {
    std::variant<std::monostate, Integers, Floats, Doubles, Text> values; ///< first: undecodable
    Encoding encoding = Encoding::none;
    bool little_endian = false;          ///< as they were decoded
    std::size_t expected = 0;            ///< samples by the record's header
    std::optional<SteimConstants> steim; ///< when a frame of Steim's is there
    std::span<const SampleProblem> problems;

    /// The values as T's (Integers, Floats, Doubles, Text), or null when they are no T's.
    template <class T> [[nodiscard]] const T *get() const { return std::get_if<T>(&values); }
    /// Samples that were decoded.
    [[nodiscard]] std::size_t size() const;
    [[nodiscard]] bool is_decoded() const { return values.index() != 0; }
};

/// Room for the samples of one record after the other: half a MB at most. One object per thread.
class SampleBuffer
{
public:
    SampleBuffer();
    SampleBuffer(SampleBuffer &&) noexcept;
    SampleBuffer &operator=(SampleBuffer &&) noexcept;
    ~SampleBuffer();

    struct Room;
    Room &room() { return *room_; }

private:
    std::unique_ptr<Room> room_;
};

/// The samples of a data record; of any other item there are none.
Samples decode(const Item &item, SampleBuffer &buffer);
/// The same by its header, as long as the bytes it points to are there.
Samples decode(const blk_dh_t &header, SampleBuffer &buffer);

/// Samples that do not come from a volume.
struct EncodedSamples {
    std::string_view data = {}; ///< from the first sample on
    Encoding encoding = Encoding::none;
    bool little_endian = false;
    std::size_t count = 0; ///< samples that it should hold
};
Samples decode(const EncodedSamples &encoded, SampleBuffer &buffer);

} // namespace quarl
