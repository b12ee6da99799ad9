// Reads a SEED volume from front to back, item by item.
//
//     quarl::Volume volume("archive.seed");
//     for (const quarl::Item &item : volume)
//         if (const auto *station = item.get<quarl::blk_050_t>())
//             std::puts(station->name);
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <quarl/error.h>
#include <quarl/item.h>
#include <quarl/records.h>
#include <string>
#include <string_view>

namespace quarl
{

struct State;

/// A logical record of which the header was read.
struct LogicalRecord {
    Place place;                  ///< of its first byte; number, type and continuation code
    std::array<char, 8> header{}; ///< as it stands
    int length = 0;               ///< bytes
    bool continues = false;       ///< what began in the record before goes on in it
    bool follows_full = false;    ///< the record before had no room for another blockette's prefix
};

/// How a volume is to be read. All may be left out.
struct VolumeOptions {
    /// Parameter file (TOML) with the table `data_type_aliases`; "": none.
    std::string parameter_file = {};
    /// Further names of data formats, in terms of those that are known; they come before the
    /// parameter file's.
    std::map<std::string, std::string, std::less<>> format_aliases = {};
    /// Database with data formats of channels that the volume does not describe: the path of an
    /// SQLite file, or a URL ("postgresql://..."); "": none.
    std::string database = {};
    /// Stop behind the first input file, as on a tape that holds several.
    bool one_file = false;
    /// Read responses by reference too (041, 043 to 048, 060), which the listing does not know:
    /// their items have records then. What is wrong with them is no message but Item::bad.
    bool references = true;

    /// Gets each message; when it is empty, messages go to standard error. May throw.
    std::function<void(const Message &)> message = {};
    /// Gets each blockette that has bad fields, behind its messages and before it is yielded.
    std::function<void(const Item &)> bad_item = {};
    /// Gets the sequence number of each logical record that is entered.
    std::function<void(int sequence_number)> record = {};
    /// Gets each logical record that is entered, before what begins in it.
    std::function<void(const LogicalRecord &)> logical_record = {};
    /// Called before each read of the input or of a database, which may wait.
    std::function<void()> before_wait = {};
    /// Called when a signal interrupted a read that waits: true ends the input here. What was read
    /// before is still yielded.
    std::function<bool()> interrupted = {};
    /// While it is true no further item is read: the volume ends. Must outlive the volume.
    const std::atomic<bool> *stop = nullptr;
};

/// A volume: the input files behind one path, one after the other (a disk file is one, a tape may
/// hold many). It owns all state of the reading, so volumes can be read in turns, and in several
/// threads when each is used by one at a time.
class Volume
{
public:
    /// Opens `path` ("-": standard input; compressed files are inflated). Throws Error when it, the
    /// parameter file or the database cannot be opened.
    explicit Volume(const std::string &path, VolumeOptions options = {});
    /// For a program that prepares the state of the reading itself.
    Volume(const std::string &path, std::unique_ptr<State> prepared);
    Volume(Volume &&) noexcept;
    Volume &operator=(Volume &&) noexcept;
    ~Volume();

    /// The next item: control blockettes and data records in volume order, and behind the last of
    /// each input file that held anything its FileEnd. Null at the end of the volume. Throws Error
    /// when the reading cannot go on; every later call throws the same.
    const Item *next();

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
