#include "platform/inflate_stream.h"

#include "platform/inflate_source.h"

#include <lzma.h>
#include <string>
#include <string_view>
#include <utility>
#include <zlib.h>

namespace quarl
{

namespace
{

/// What one step of a decoder came to.
enum class Step {
    Went_On,
    Starved, ///< nothing happens without more input
    Ended,   ///< the data is complete
    Failed,  ///< `words` say why
};

/// Drives a decoder whose `stream` is the record (next_in, avail_in, next_out, avail_out) that zlib
/// introduced and others took over.
template <class Decoder> class StreamInflater : public Inflater
{
public:
    StreamInflater(int fd, std::string_view format) : source_(fd), format_(format) {}
    ssize_t read(char *to, std::size_t size) override;

private:
    void open();
    void advance();
    void end(std::string_view fault);

    BlockSource source_;
    std::string format_;
    Decoder decoder_;
    bool opened_ = false;
    bool no_more_input_ = false;
    bool ended_ = false;
    std::string fault_; ///< why it ended, until the caller has been told
};

template <class Decoder> ssize_t StreamInflater<Decoder>::read(char *to, std::size_t size)
{
    if (!std::exchange(opened_, true))
        open();
    auto &stream = decoder_.stream;
    stream.next_out = reinterpret_cast<unsigned char *>(to);
    stream.avail_out = static_cast<decltype(stream.avail_out)>(size);
    while (!ended_ && stream.avail_out > 0)
        advance();
    const std::size_t count = size - stream.avail_out;
    if (count > 0 || fault_.empty())
        return static_cast<ssize_t>(count);
    return leave_reason(source_.error(), std::exchange(fault_, {}));
}

template <class Decoder> void StreamInflater<Decoder>::open()
{
    if (const std::string_view fault = decoder_.open(); !fault.empty())
        end(fault);
}

template <class Decoder> void StreamInflater<Decoder>::advance()
{
    auto &stream = decoder_.stream;
    if (stream.avail_in == 0 && !no_more_input_) {
        stream.next_in = source_.block();
        stream.avail_in = static_cast<decltype(stream.avail_in)>(source_.next());
        no_more_input_ = stream.avail_in == 0;
    }
    switch (decoder_.step(no_more_input_)) {
    case Step::Went_On:
        break;
    case Step::Starved:
        if (no_more_input_)
            end("truncated " + format_ + " input");
        break;
    case Step::Ended:
        end(source_.error() != 0 ? "read error" : "");
        break;
    case Step::Failed:
        end(decoder_.words());
        break;
    }
}

template <class Decoder> void StreamInflater<Decoder>::end(std::string_view fault)
{
    ended_ = true;
    fault_ = fault;
}

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

/// The members of a gzip file.
class GzipDecoder
{
public:
    GzipDecoder() = default;
    GzipDecoder(const GzipDecoder &) = delete;
    GzipDecoder &operator=(const GzipDecoder &) = delete;
    ~GzipDecoder();

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

GzipDecoder::~GzipDecoder()
{
    if (stream.state)
        zlib().end(&stream);
}

std::string_view GzipDecoder::open()
{
    constexpr int Gzip_Only = 16; // is added to the exponent of the window's size
    if (!zlib().library.loaded())
        return "a gzip file needs libz.so.1";
    const int status = zlib().init(&stream, MAX_WBITS + Gzip_Only, ZLIB_VERSION, sizeof stream);
    return status == Z_OK ? "" : zlib().words(status);
}

Step GzipDecoder::step(bool no_more_input)
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

/// Skips zeros, with which tapes and block devices fill up, to the next member or the end.
Step GzipDecoder::next_member(bool no_more_input)
{
    constexpr unsigned char Mark = 0x1f;
    while (stream.avail_in > 0 && *stream.next_in == 0) {
        ++stream.next_in;
        --stream.avail_in;
    }
    if (stream.avail_in == 0)
        return no_more_input ? Step::Ended : Step::Went_On;
    words_ = "trailing garbage ignored";
    if (*stream.next_in != Mark || zlib().reset(&stream) != Z_OK)
        return Step::Failed;
    between_members_ = false;
    return Step::Went_On;
}

struct Lzma {
    Library library{"liblzma.so.5"};
    decltype(&::lzma_auto_decoder) init = library["lzma_auto_decoder"];
    decltype(&::lzma_code) code = library["lzma_code"];
    decltype(&::lzma_end) end = library["lzma_end"];
};

const Lzma &lzma()
{
    static const Lzma loaded;
    return loaded;
}

/// xz streams, or a file of xz's predecessor.
class LzmaDecoder
{
public:
    LzmaDecoder() = default;
    LzmaDecoder(const LzmaDecoder &) = delete;
    LzmaDecoder &operator=(const LzmaDecoder &) = delete;
    ~LzmaDecoder();

    /// Words of a fault, or none.
    std::string_view open();
    Step step(bool no_more_input);
    [[nodiscard]] std::string_view words() const;

    lzma_stream stream = LZMA_STREAM_INIT;

private:
    lzma_ret status_ = LZMA_OK;
};

LzmaDecoder::~LzmaDecoder()
{
    if (stream.internal)
        lzma().end(&stream);
}

std::string_view LzmaDecoder::open()
{
    constexpr std::uint64_t Memory_Limit = 1 << 30; ///< ten times what the highest preset takes
    if (!lzma().library.loaded())
        return "an xz file needs liblzma.so.5";
    status_ = lzma().init(&stream, Memory_Limit, LZMA_CONCATENATED);
    return status_ == LZMA_OK ? "" : words();
}

Step LzmaDecoder::step(bool no_more_input)
{
    status_ = lzma().code(&stream, no_more_input ? LZMA_FINISH : LZMA_RUN);
    switch (status_) {
    case LZMA_OK:
        return Step::Went_On;
    case LZMA_BUF_ERROR:
        return Step::Starved;
    case LZMA_STREAM_END:
        return Step::Ended;
    default:
        return Step::Failed;
    }
}

/// The library has numbers only; these are the words of its command line tool.
std::string_view LzmaDecoder::words() const
{
    switch (status_) {
    case LZMA_MEM_ERROR:
        return "Cannot allocate memory";
    case LZMA_MEMLIMIT_ERROR:
        return "Memory usage limit reached";
    case LZMA_FORMAT_ERROR:
        return "File format not recognized";
    case LZMA_OPTIONS_ERROR:
        return "Unsupported options";
    case LZMA_DATA_ERROR:
        return "Compressed data is corrupt";
    default:
        return "Internal error (bug)";
    }
}

} // namespace

std::unique_ptr<Inflater> new_gzip_inflater(int fd)
{
    return std::make_unique<StreamInflater<GzipDecoder>>(fd, "gzip");
}

std::unique_ptr<Inflater> new_xz_inflater(int fd)
{
    return std::make_unique<StreamInflater<LzmaDecoder>>(fd, "xz");
}

std::unique_ptr<Inflater> new_lzma_inflater(int fd)
{
    return std::make_unique<StreamInflater<LzmaDecoder>>(fd, "lzma");
}

} // namespace quarl
