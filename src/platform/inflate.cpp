#include "platform/inflate.h"

#include "platform/inflate_source.h"
#include "platform/inflate_stream.h"

#include <algorithm>
#include <archive.h>
#include <array>
#include <string_view>

namespace quarl
{

namespace
{

struct Archive {
    Library library{"libarchive.so.13"};
    decltype(&::archive_read_new) make = library["archive_read_new"];
    decltype(&::archive_read_free) free = library["archive_read_free"];
    decltype(&::archive_read_open) open = library["archive_read_open"];
    decltype(&::archive_read_next_header) next_header = library["archive_read_next_header"];
    decltype(&::archive_read_data_block) read_block = library["archive_read_data_block"];
    decltype(&::archive_filter_code) filter_code = library["archive_filter_code"];
    decltype(&::archive_error_string) words = library["archive_error_string"];
};

const Archive &lib()
{
    static const Archive loaded;
    return loaded;
}

/// What is asked of libarchive: the contents as they are, behind one of these compressions.
constexpr std::array Supported = {
    "archive_read_support_filter_bzip2", "archive_read_support_filter_compress",
    "archive_read_support_filter_lz4",   "archive_read_support_filter_zstd",
    "archive_read_support_format_raw",   "archive_read_support_format_empty"};

/// Reads the contents of one compressed descriptor through libarchive.
class ArchiveInflater : public Inflater
{
public:
    explicit ArchiveInflater(int fd) : source_(fd) {}
    ArchiveInflater(const ArchiveInflater &) = delete;
    ArchiveInflater &operator=(const ArchiveInflater &) = delete;
    ~ArchiveInflater() override;
    ssize_t read(char *to, std::size_t size) override;

private:
    static la_ssize_t next_block(archive *a, void *inflater, const void **block);
    bool open();
    bool next_data();
    ssize_t fail(const char *words);

    BlockSource source_;
    bool ended_ = false;
    archive *archive_ = nullptr;
    std::string_view rest_; ///< of libarchive's block
};

ArchiveInflater::~ArchiveInflater()
{
    if (archive_)
        lib().free(archive_);
}

la_ssize_t ArchiveInflater::next_block(archive *, void *inflater, const void **block)
{
    BlockSource &source = static_cast<ArchiveInflater *>(inflater)->source_;
    const std::size_t size = source.next();
    *block = source.block();
    return source.error() != 0 ? -1 : static_cast<la_ssize_t>(size);
}

/// False when libarchive does not recognise what the mark promised.
bool ArchiveInflater::open()
{
    archive_ = lib().make();
    for (const char *name : Supported) {
        int (*const support)(archive *) = lib().library[name];
        support(archive_);
    }
    archive_entry *entry = nullptr;
    if (lib().open(archive_, this, nullptr, next_block, nullptr) != ARCHIVE_OK)
        return false;
    const int status = lib().next_header(archive_, &entry);
    ended_ = status == ARCHIVE_EOF;
    return status >= ARCHIVE_WARN && lib().filter_code(archive_, 0) != ARCHIVE_FILTER_NONE;
}

ssize_t ArchiveInflater::fail(const char *words)
{
    ended_ = true;
    return leave_reason(source_.error(), words ? words : "damaged compressed data");
}

/// Fetches libarchive's next block. Its own copying of several into one buffer would drop them all
/// when the last one is damaged.
bool ArchiveInflater::next_data()
{
    const void *block = nullptr;
    std::size_t size = 0;
    la_int64_t offset = 0;
    int status = ARCHIVE_OK;
    while (size == 0 && (status == ARCHIVE_OK || status == ARCHIVE_RETRY))
        status = lib().read_block(archive_, &block, &size, &offset);
    ended_ = status == ARCHIVE_EOF;
    rest_ = {static_cast<const char *>(block), size};
    return size > 0;
}

ssize_t ArchiveInflater::read(char *to, std::size_t size)
{
    if (ended_)
        return 0;
    if (!lib().library.loaded())
        return fail("a compressed file needs libarchive.so.13");
    if (!archive_ && !open())
        return fail(lib().words(archive_));
    if (ended_)
        return 0;
    if (rest_.empty() && !next_data())
        return ended_ ? 0 : fail(lib().words(archive_));
    const std::size_t count = rest_.copy(to, size);
    rest_.remove_prefix(count);
    return static_cast<ssize_t>(count);
}

std::unique_ptr<Inflater> new_archive_inflater(int fd)
{
    return std::make_unique<ArchiveInflater>(fd);
}

using namespace std::string_view_literals;

struct Format {
    std::string_view mark; ///< first bytes of a file
    std::unique_ptr<Inflater> (*inflater)(int fd);
};

constexpr std::array Formats = {
    Format{"\x1f\x8b"sv, new_gzip_inflater},
    Format{"\xfd\x37zXZ\0"sv, new_xz_inflater},
    Format{"\x5d\0\0"sv, new_lzma_inflater},
    Format{"\x1f\x9d"sv, new_archive_inflater},         // compress
    Format{"BZh"sv, new_archive_inflater},              // bzip2
    Format{"\x28\xb5\x2f\xfd"sv, new_archive_inflater}, // zstd
    Format{"\x04\x22\x4d\x18"sv, new_archive_inflater}, // lz4
    Format{"\x02\x21\x4c\x18"sv, new_archive_inflater}, // lz4's older format
};

} // namespace

std::unique_ptr<Inflater> new_inflater(int fd, std::string_view begin)
{
    const auto format = std::find_if(Formats.begin(), Formats.end(), [&](const Format &each) {
        return begin.starts_with(each.mark);
    });
    return format == Formats.end() ? nullptr : format->inflater(fd);
}

} // namespace quarl
