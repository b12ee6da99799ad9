// Where an item is gathered that the input's buffer does not hold in one piece.
#pragma once

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

namespace quarl
{

inline constexpr int Record_Header = 8; ///< logical record header, consumed by the input stream
inline constexpr int Area_Size = 10000; ///< largest item
inline constexpr int Largest_Data_Record = 1 << 20; ///< of a reader that takes larger ones

/// The bytes of an item behind a fixed logical record header, so that a data record is held whole.
/// The area is zero beyond the item.
class ItemBuffer
{
public:
    [[nodiscard]] const char *record() const { return bytes_.data(); }
    char *area() { return bytes_.data() + Record_Header; }
    [[nodiscard]] std::string_view text() const
    {
        return {bytes_.data() + Record_Header, Area_Size};
    }

    /// The next `size` bytes of the area are about to be written.
    char *write(int at, int size)
    {
        used_ = std::max(used_, at + size);
        return area() + at;
    }
    /// The item has `size` bytes: clears what a longer one left behind it.
    void end_item(int size)
    {
        if (used_ > size)
            std::memset(area() + size, 0, used_ - size);
        used_ = size;
    }

private:
    std::array<char, Record_Header + Area_Size> bytes_{'0', '0', '0', '0', '0', '0', 'D', ' '};
    int used_ = 0;
};

} // namespace quarl
