// The chain of data blockettes of a data record.
//
//     for (const quarl::DataBlockette &blockette : item.data_blockettes().list)
//         if (const auto *extension = blockette.get<quarl::blk_1001_t>())
//             show(extension->timing_quality);
#pragma once

#include <cmath>
#include <cstddef>
#include <optional>
#include <quarl/data_blockettes.h>
#include <quarl/time.h>
#include <string>
#include <variant>
#include <vector>

namespace quarl
{

/// One data blockette of a record.
struct DataBlockette {
    int type = 0;
    int offset = 0;       ///< bytes, from the record's first
    int next = 0;         ///< the same for the next one, as stored; 0: there is none
    std::size_t size = 0; ///< bytes of it that there are
    /// Types that data records have most come first; none: a type that the standard does not have.
    std::variant<std::monostate, blk_1000_t, blk_1001_t, blk_100_t, blk_200_t, blk_201_t, blk_202_t,
                 blk_300_t, blk_310_t, blk_320_t, blk_390_t, blk_395_t, blk_400_t, blk_405_t,
                 blk_500_t, blk_2000_t>
        record;

    /// The record as a T, or null when it is no T.
    template <class T> [[nodiscard]] const T *get() const { return std::get_if<T>(&record); }

    /// Whether the field of this description is there.
    template <class Field> [[nodiscard]] bool holds(const Field & /*field*/) const
    {
        return Field::End <= size;
    }
};

/// The chain of data blockettes of one record, and what it says about the record as a whole.
struct DataBlockettes {
    std::vector<DataBlockette> list; ///< in order of their offsets
    std::string remark;              ///< what is wrong with the chain; empty: nothing
    bool cut = false;                ///< one has more bytes than there are

    // Each of the first blockette that has it.
    std::optional<float> actual_sample_rate; ///< 100: samples per second
    std::optional<int> microseconds;         ///< 1001: to be added to the start time
    std::optional<int> timing_quality;       ///< 1001: percent
    std::optional<int> frame_count;          ///< 1001

    /// What makes the times of the record precise. A rate that is not above 0 is none.
    [[nodiscard]] DataRefinement refinement() const
    {
        const double rate = actual_sample_rate.value_or(0.0F);
        return {microseconds.value_or(0), std::isfinite(rate) && rate > 0.0 ? rate : 0.0};
    }
};

} // namespace quarl
