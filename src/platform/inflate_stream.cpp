#include "platform/inflate_stream.h"

#include "platform/inflate_decoder.h"
#include "platform/inflate_source.h"

#include <lzma.h>
#include <string_view>

namespace quarl
{

namespace
{

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

std::unique_ptr<Inflater> new_xz_inflater(int fd)
{
    return std::make_unique<StreamInflater<LzmaDecoder>>(fd, "xz");
}

std::unique_ptr<Inflater> new_lzma_inflater(int fd)
{
    return std::make_unique<StreamInflater<LzmaDecoder>>(fd, "lzma");
}

} // namespace quarl
