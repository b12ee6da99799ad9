// Buffered output to a file descriptor.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace quarl
{

/// A stream of bytes to one descriptor. Bytes leave in one write when the buffer fills or at
/// `flush`; the caller decides when that must be. A failed write throws Error; one to standard
/// error does not, unless its reader has gone.
class Out
{
public:
    static constexpr std::size_t Capacity = 65536;

    explicit Out(int fd) : fd_(fd) {}
    Out(const Out &) = delete;
    Out &operator=(const Out &) = delete;
    virtual ~Out() = default;

    /// Room for `size` bytes (at most Capacity) that the caller fills and then claims with
    /// `commit`.
    char *reserve(std::size_t size)
    {
        if (Capacity - used_ < size)
            flush();
        return buffer_.get() + used_;
    }
    /// Claims the bytes from the last `reserve` up to `end`.
    void commit(const char *end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }

    /// Appends `text`, whatever its length.
    void write(std::string_view text);
    /// Hands every held byte to the descriptor.
    void flush();
    /// Drops what is held; for an end of the process that must not write any more.
    void discard() { used_ = 0; }
    /// Takes back held bytes at the end that are `c`.
    void drop_trailing(char c)
    {
        while (used_ > 0 && buffer_[used_ - 1] == c)
            --used_;
    }
    /// Bytes held.
    [[nodiscard]] std::size_t size() const { return used_; }

private:
    /// Takes the bytes that leave.
    virtual void deliver(std::string_view bytes);

    int fd_;
    std::size_t used_ = 0;
    std::unique_ptr<char[]> buffer_ = std::make_unique_for_overwrite<char[]>(Capacity);
};

} // namespace quarl
