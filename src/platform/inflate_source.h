// What the inflaters stand on: a decompression library on demand, blocks of a compressed file,
// faults.
#pragma once

#include <array>
#include <dlfcn.h>
#include <string_view>
#include <sys/types.h>

namespace quarl
{

/// The address of a library's function, to be stored in a pointer of that function's type.
struct Symbol {
    void *address;
    template <class Function> operator Function *() const
    {
        return reinterpret_cast<Function *>(address); // NOLINT: dlsym gives void *
    }
};

/// A shared library, loaded when this is made and kept until the process ends. The inflaters load
/// theirs when the first file of the kind is read: loading one takes longer than listing a small
/// volume.
class Library
{
public:
    explicit Library(const char *name) : handle_(dlopen(name, RTLD_NOW | RTLD_LOCAL)) {}

    [[nodiscard]] bool loaded() const { return handle_ != nullptr; }
    /// The function `name`; null when the library is not there.
    Symbol operator[](const char *name) const
    {
        return {handle_ != nullptr ? dlsym(handle_, name) : nullptr};
    }

private:
    void *handle_;
};

/// Blocks of a descriptor's bytes, from its present position on. It does not own the descriptor.
class BlockSource
{
public:
    explicit BlockSource(int fd) : fd_(fd) {}

    /// Reads the next block and returns its size; 0 at the end of the file and after an error.
    std::size_t next();
    [[nodiscard]] unsigned char *block() { return block_.data(); }
    /// The errno of the read that failed; 0 when none did.
    [[nodiscard]] int error() const { return error_; }

private:
    int fd_;
    int error_ = 0;
    alignas(4096) std::array<unsigned char, 65536> block_; ///< kernels copy whole pages best
};

/// Leaves the reason of a fault for elog: `error` when a read failed, else the decompressor's
/// `words`. Returns -1.
ssize_t leave_reason(int error, std::string_view words);

} // namespace quarl
