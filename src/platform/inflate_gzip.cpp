// gzip: ISA-L for speed, zlib for faults.
//
// ISA-L takes 0.4 (headers) to 0.7 (data) of zlib's time. At a fault it is not exact: in front of a
// cut it keeps up to two bytes back, a distance that reaches too far back leaves up to 258 bytes in
// the output that the file does not hold, and it has no words. So it is used while all is well.
// One difference to zlib alone is left: zlib refuses a block whose codes are incomplete at its
// head, ISA-L when a missing code comes up, so that bytes from behind the fault may come in front
// of its report.
#include "platform/elog.h"
#include "platform/inflate_decoder.h"
#include "platform/inflate_source.h"
#include "platform/inflate_stream.h"

#include <algorithm>
#include <cerrno>
#include <isa-l/igzip_lib.h>
#include <string_view>
#include <unistd.h>
#include <zlib.h>

namespace quarl
{

namespace
{

/// Skips zeros, with which tapes and block devices fill up behind a gzip member. False when nothing
/// is left of the input block.
template <class Stream> bool skip_zeros(Stream &stream)
{
    while (stream.avail_in > 0 && *stream.next_in == 0) {
        ++stream.next_in;
        --stream.avail_in;
    }
    return stream.avail_in > 0;
}

constexpr unsigned char Member_Mark = 0x1f; ///< first byte of a gzip member

struct Zlib {
    Library library{"libz.so.1"};
    decltype(&::inflateInit2_) init = library["inflateInit2_"];
    decltype(&::inflate) inflate = library["inflate"];
    decltype(&::inflateReset) reset = library["inflateReset"];
    decltype(&::inflateEnd) end = library["inflateEnd"];
    decltype(&::zError) words = library["zError"];
};

const Zlib &zlib()
{
    static const Zlib loaded;
    return loaded;
}

/// The members of a gzip file, by zlib: exact to the byte at a fault.
class ZlibDecoder
{
public:
    ZlibDecoder() = default;
    ZlibDecoder(const ZlibDecoder &) = delete;
    ZlibDecoder &operator=(const ZlibDecoder &) = delete;
    ~ZlibDecoder();

    /// Words of a fault, or none.
    std::string_view open();
    Step step(bool no_more_input);
    [[nodiscard]] std::string_view words() const { return words_; }

    z_stream stream = {};

private:
    Step next_member(bool no_more_input);

    bool between_members_ = false;
    std::string_view words_;
};

ZlibDecoder::~ZlibDecoder()
{
    if (stream.state)
        zlib().end(&stream);
}

std::string_view ZlibDecoder::open()
{
    constexpr int Gzip_Only = 16; // is added to the exponent of the window's size
    if (!zlib().library.loaded())
        return "a gzip file needs libz.so.1";
    const int status = zlib().init(&stream, MAX_WBITS + Gzip_Only, ZLIB_VERSION, sizeof stream);
    return status == Z_OK ? "" : zlib().words(status);
}

Step ZlibDecoder::step(bool no_more_input)
{
    if (between_members_)
        return next_member(no_more_input);
    const int status = zlib().inflate(&stream, Z_NO_FLUSH);
    if (status == Z_BUF_ERROR)
        return Step::Starved;
    between_members_ = status == Z_STREAM_END;
    if (between_members_ || status == Z_OK)
        return Step::Went_On;
    words_ = stream.msg ? stream.msg : zlib().words(status);
    return Step::Failed;
}

/// To the next member or the end.
Step ZlibDecoder::next_member(bool no_more_input)
{
    if (!skip_zeros(stream))
        return no_more_input ? Step::Ended : Step::Went_On;
    words_ = "trailing garbage ignored";
    if (*stream.next_in != Member_Mark || zlib().reset(&stream) != Z_OK)
        return Step::Failed;
    between_members_ = false;
    return Step::Went_On;
}

struct Isal {
    Library library{"libisal.so.2"};
    decltype(&::isal_inflate_init) init = library["isal_inflate_init"];
    decltype(&::isal_inflate_reset) reset = library["isal_inflate_reset"];
    decltype(&::isal_read_gzip_header) read_header = library["isal_read_gzip_header"];
    decltype(&::isal_inflate) inflate = library["isal_inflate"];
};

const Isal &isal()
{
    static const Isal loaded;
    return loaded;
}

/// The members of a sound gzip file, by ISA-L. What a failing call puts out is dropped.
class IsalDecoder
{
public:
    /// Words of a fault, or none.
    std::string_view open();
    Step step(bool no_more_input);
    [[nodiscard]] static std::string_view words() { return Left_To_Zlib; }

    inflate_state stream = {};

private:
    static constexpr std::string_view Left_To_Zlib = "left to zlib";
    enum class Place { Header, Body, Between };

    void begin_member();
    Step read_header();
    Step inflate();
    Step next_member(bool no_more_input);

    Place place_ = Place::Header;
    isal_gzip_header header_ = {}; ///< what of it has been read
};

std::string_view IsalDecoder::open()
{
    if (!isal().library.loaded())
        return words();
    isal().init(&stream);
    begin_member();
    return "";
}

void IsalDecoder::begin_member()
{
    isal().reset(&stream);
    stream.crc_flag = ISAL_GZIP_NO_HDR_VER; // sum and length behind the body are compared
    header_ = {};
    place_ = Place::Header;
}

Step IsalDecoder::step(bool no_more_input)
{
    switch (place_) {
    case Place::Header:
        return read_header();
    case Place::Body:
        return inflate();
    default:
        return next_member(no_more_input);
    }
}

/// isal_inflate would read headers too, but forgets a part of one when the input block ends in it.
Step IsalDecoder::read_header()
{
    constexpr std::uint32_t Reserved = 0xe0; // flags that zlib does not accept
    const int status = isal().read_header(&stream, &header_);
    if (status == ISAL_END_INPUT && stream.avail_in == 0)
        return Step::Starved;
    if (status != ISAL_DECOMP_OK || (header_.flags & Reserved) != 0)
        return Step::Failed;
    place_ = Place::Body;
    return Step::Went_On;
}

Step IsalDecoder::inflate()
{
    auto *const next_out = stream.next_out;
    const std::uint32_t avail_out = stream.avail_out;
    const std::uint32_t avail_in = stream.avail_in;
    const int status = isal().inflate(&stream);
    if (status == ISAL_DECOMP_OK && stream.block_state == ISAL_BLOCK_FINISH) {
        place_ = Place::Between;
        return Step::Went_On;
    }
    const bool idle = stream.avail_out == avail_out && stream.avail_in == avail_in;
    if (status == ISAL_DECOMP_OK && (!idle || avail_in == 0))
        return idle ? Step::Starved : Step::Went_On;
    stream.next_out = next_out;
    stream.avail_out = avail_out;
    return Step::Failed;
}

Step IsalDecoder::next_member(bool no_more_input)
{
    if (!skip_zeros(stream))
        return no_more_input ? Step::Ended : Step::Went_On;
    if (*stream.next_in != Member_Mark)
        return Step::Failed;
    begin_member();
    return Step::Went_On;
}

/// Takes ISA-L's output while all is well. What it cannot read to the end, zlib reads again from
/// the beginning, and has the words of the fault; its output is dropped as far as ISA-L's was
/// taken.
class GzipInflater : public Inflater
{
public:
    explicit GzipInflater(int fd);
    ssize_t read(char *to, std::size_t size) override;

private:
    ssize_t start_again(char *to, std::size_t size);

    int fd_;
    off_t begin_;
    std::uint64_t taken_ = 0; ///< bytes of ISA-L's output
    bool exact_ = false;      ///< zlib's turn
    std::unique_ptr<Inflater> decoder_;
};

GzipInflater::GzipInflater(int fd)
    : fd_(fd), begin_(lseek(fd, 0, SEEK_CUR)),
      decoder_(std::make_unique<StreamInflater<IsalDecoder>>(fd, "gzip"))
{
}

ssize_t GzipInflater::read(char *to, std::size_t size)
{
    const ssize_t count = decoder_->read(to, size);
    if (exact_ || (count < 0 && errno == EINTR)) // given up
        return count;
    if (count < 0)
        return start_again(to, size);
    taken_ += static_cast<std::uint64_t>(count);
    return count;
}

ssize_t GzipInflater::start_again(char *to, std::size_t size)
{
    elog_set_reason(""); // it is zlib's to tell
    exact_ = true;
    decoder_ = std::make_unique<StreamInflater<ZlibDecoder>>(fd_, "gzip");
    lseek(fd_, begin_, SEEK_SET); // a regular file's: where this fails, so does reading
    while (taken_ > 0) {
        const ssize_t count = decoder_->read(to, std::min<std::uint64_t>(size, taken_));
        if (count <= 0)
            return count;
        taken_ -= static_cast<std::uint64_t>(count);
    }
    return decoder_->read(to, size);
}

} // namespace

std::unique_ptr<Inflater> new_gzip_inflater(int fd) { return std::make_unique<GzipInflater>(fd); }

} // namespace quarl
