// Reads a SEED volume from front to back, item by item.
//
//     quarl::Volume volume("archive.seed");
//     for (const quarl::Item &item : volume)
//         if (const auto *station = item.get<quarl::blk_050_t>())
//             std::puts(station->name);
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <optional>
#include <quarl/error.h>
#include <quarl/item.h>
#include <quarl/options.h>
#include <quarl/records.h>
#include <string>

namespace quarl
{

struct State;

/// How far the reading of an input file has come. Bytes that are read need not have been yielded.
struct Progress {
    int file = 0;            ///< number of the input file, from 0
    std::int64_t bytes = 0;  ///< read, decompressed
    std::int64_t stored = 0; ///< read of a regular file as it is stored; else 0
    std::int64_t size = -1;  ///< of a regular file as it is stored; -1: not known
};

/// A volume: the input files behind one path, one after the other (a disk file is one, a tape may
/// hold many). It owns all state of the reading, so volumes can be read in turns, and in several
/// threads when each is used by one at a time. One that was moved from is at its end: next() gives
/// null, progress() zeros, text() null.
class Volume
{
public:
    /// Opens `path` ("-": standard input; compressed files are inflated). Throws Error when it, the
    /// parameter file or the database cannot be opened.
    explicit Volume(const std::string &path, VolumeOptions options = {});
    Volume(Volume &&) noexcept;
    Volume &operator=(Volume &&) noexcept;
    ~Volume();

    /// The next item: control blockettes and data records in volume order, and behind the last of
    /// each input file that held anything, or failed, its FileEnd. Null at the end of the volume.
    /// Throws Error when the reading cannot go on; every later call throws the same.
    const Item *next();

    /// May be asked for at any time, also by the functions of VolumeOptions.
    [[nodiscard]] Progress progress() const;

    /// What was read of the input file at hand when an Error has ended the reading inside it; none
    /// else.
    [[nodiscard]] std::optional<FileEnd> given_up() const;

    /// The text that `code` of a dictionary stands for, as far as the volume was read; null when it
    /// is not defined. Lives until the next item is asked for.
    [[nodiscard]] const std::string *text(Dictionary dictionary, int code) const;

    /// One pass over the items that have not been read yet.
    class Iterator
    {
    public:
        using value_type = Item;
        using difference_type = std::ptrdiff_t;
        using iterator_concept = std::input_iterator_tag;

        explicit Iterator(Volume *volume) : volume_(volume), item_(volume->next()) {}
        const Item &operator*() const { return *item_; }
        const Item *operator->() const { return item_; }
        Iterator &operator++()
        {
            item_ = volume_->next();
            return *this;
        }
        void operator++(int) { ++*this; }
        bool operator==(std::default_sentinel_t /*end*/) const { return item_ == nullptr; }

    private:
        Volume *volume_;
        const Item *item_;
    };
    Iterator begin() { return Iterator(this); }
    static std::default_sentinel_t end() { return {}; }

private:
    std::unique_ptr<State> state_;
};

} // namespace quarl
