// The program's output as a stream of the standard library, for what the library writes to one.
#pragma once

#include "platform/out.h"

#include <functional>
#include <ostream>
#include <streambuf>

namespace quarl
{

class OutBuffer : public std::streambuf
{
public:
    explicit OutBuffer(Out &out) : out_(out) {}

protected:
    std::streamsize xsputn(const char *text, std::streamsize size) override
    {
        out_.write({text, static_cast<std::size_t>(size)});
        return size;
    }
    int_type overflow(int_type c) override
    {
        if (c == traits_type::eof())
            return traits_type::not_eof(c);
        const char byte = traits_type::to_char_type(c);
        out_.write({&byte, 1});
        return c;
    }

private:
    Out &out_;
};

/// Lets `write` write to `out`; what a failed write throws passes through.
inline void write_as_stream(Out &out, const std::function<void(std::ostream &)> &write)
{
    OutBuffer buffer(out);
    std::ostream stream(&buffer);
    stream.exceptions(std::ios::badbit);
    write(stream);
}

} // namespace quarl
