// One item of a volume: a control blockette, a data record, or the end of an input file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <quarl/blockette_chain.h>
#include <quarl/error.h>
#include <quarl/records.h>
#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

/// What one input file held.
struct Statistics {
    struct Type {
        int type; ///< blockette type; Data_Record for data records
        std::int64_t count;
        std::int64_t bytes; ///< as declared; 0 for types without a parser
    };
    std::vector<Type> types;     ///< those that occurred, in order of numbers
    std::int64_t items = 0;      ///< all that was counted, types outside of the table included
    std::int64_t records = 0;    ///< logical records
    std::int64_t bytes = 0;      ///< of the input file, decompressed
    std::int64_t parameters = 0; ///< bytes of control blockettes
    std::int64_t data = 0;       ///< bytes of data records
    std::int64_t waste = 0;      ///< bytes of neither: record headers and fill
};

/// The type number that stands for the end of an input file.
inline constexpr int End_Of_File = -2;

/// An input file ends: its statistics, and how it ended.
struct FileEnd : record_t {
    static constexpr int Number = End_Of_File;
    Statistics statistics;
    bool cut = false;     ///< inside a logical record, a blockette or a data record
    bool failed = false;  ///< with a read error
    bool stopped = false; ///< since the reading was asked to stop

    [[nodiscard]] bool complete() const { return !cut && !failed && !stopped; }
};

struct DataRoom;
class Flaws;

/// One item. It, its record and its bytes live until the next item is asked for.
class Item
{
public:
    /// Blockette type, Data_Record or End_Of_File.
    [[nodiscard]] int type() const { return type_; }

    /// The record as a T (blk_050_t, blk_dh_t, FileEnd ...), or null when the item is no T.
    template <class T> [[nodiscard]] const T *get() const
    {
        return type_ == T::Number ? static_cast<const T *>(record_) : nullptr;
    }

    /// The record whatever its type; null for a blockette type without a parser.
    [[nodiscard]] const record_t *record() const { return record_; }

    /// The type's name in the catalogue of blockette types, without trailing blanks; "" for a type
    /// outside of it.
    [[nodiscard]] std::string_view name() const;

    /// Bytes as they stand in the volume: a blockette without the headers of the logical records
    /// that it crosses, a data record with its own first eight. Zeros stand for those that a cut
    /// input lacks. Empty until they are read.
    [[nodiscard]] std::string_view bytes() const;

    /// The data blockettes of a data record, which are read when they are asked for; none for
    /// other items.
    [[nodiscard]] const DataBlockettes &data_blockettes() const;

    /// Length in bytes: of a blockette as declared, of a data record as found out.
    [[nodiscard]] int length() const { return length_; }

    /// Where it begins, and in which logical record.
    [[nodiscard]] const Place &place() const { return place_; }

    /// A field was no number, a text too long for it, or a count above the room for its list.
    [[nodiscard]] bool bad() const { return bad_; }

    /// The bytes end before the fields do: the input is cut inside the item, or the item is shorter
    /// than its fields.
    [[nodiscard]] bool cut() const { return cut_; }

    /// Bytes that the input lacks at the end of the item.
    [[nodiscard]] int missing() const { return missing_; }

    /// Why a field of the record has no value; `field` is the member itself, in an item of a volume
    /// that is not read as the listing reads (VolumeOptions::unlisted). What has none is 0 or
    /// empty:
    ///
    ///     if (item.absence(station->lat) == quarl::Absence::none)
    ///         show(station->lat);
    template <class Value> [[nodiscard]] Absence absence(const Value &field) const
    {
        return flaws_ ? absence_at(&field) : Absence::none;
    }
    /// The same by the address of the member.
    [[nodiscard]] Absence absence_at(const void *field) const;
    /// Some field has no value.
    [[nodiscard]] bool has_flaws() const { return flaws_ != nullptr; }

    /// Bytes that the fields of a blockette took, its type and length included; 0 when it was not
    /// parsed. A list that a bad field ended is counted up to there.
    [[nodiscard]] std::size_t fields_size() const { return fields_size_; }

    /// The fields ran beyond the declared length.
    [[nodiscard]] bool beyond_length() const
    {
        return length_ >= 0 && fields_size_ > static_cast<std::size_t>(length_);
    }

private:
    friend struct ItemAccess;

    int type_ = 0;
    int length_ = 0;
    bool bad_ = false;
    bool cut_ = false;
    int missing_ = 0;
    const Flaws *flaws_ = nullptr; ///< null when there are none
    const record_t *record_ = nullptr;
    std::size_t fields_size_ = 0;
    std::string_view bytes_;
    std::array<char, 8> record_header_{}; ///< a data record's own
    DataRoom *room_ = nullptr;            ///< for what is made of a data record on request
    Place place_;
};

} // namespace quarl
