// Drives a decoder that turns pieces of input into pieces of output.
#pragma once

#include "platform/inflate_source.h"
#include "platform/inflater.h"

#include <string>
#include <string_view>
#include <utility>

namespace quarl
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

} // namespace quarl
