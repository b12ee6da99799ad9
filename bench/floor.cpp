// The floor of all work on a volume: every byte read once, every record copied once.
// Usage: floor FILE [RECORD-LENGTH]
#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <vector>

namespace
{

/// Kernels copy whole pages best.
constexpr std::size_t Page = 4096;
alignas(Page) std::array<char, 32 * Page> Piece;

/// The compiler must take every byte of `buffer` for used.
void use(const std::vector<char> &buffer) { asm volatile("" : : "r"(buffer.data()) : "memory"); }

/// Copies the pieces record by record into one buffer; a record may run over two pieces.
class Copier
{
public:
    explicit Copier(std::size_t length) : record_(length) {}

    void take(const char *from, std::size_t size)
    {
        while (size > 0) {
            const std::size_t part = std::min(size, record_.size() - filled_);
            std::memcpy(record_.data() + filled_, from, part);
            use(record_);
            filled_ = (filled_ + part) % record_.size();
            from += part;
            size -= part;
        }
    }

private:
    std::vector<char> record_;
    std::size_t filled_ = 0;
};

} // namespace

int main(int argc, char *argv[])
{
    const long length = argc > 2 ? std::strtol(argv[2], nullptr, 10) : 4096;
    const int fd = argc > 1 && length > 0 ? open(argv[1], O_RDONLY | O_CLOEXEC) : -1;
    if (fd < 0) {
        std::fputs("usage: floor FILE [RECORD-LENGTH]\n", stderr);
        return EXIT_FAILURE;
    }
    Copier copier(static_cast<std::size_t>(length));
    ssize_t size = 0;
    while ((size = read(fd, Piece.data(), Piece.size())) > 0)
        copier.take(Piece.data(), static_cast<std::size_t>(size));
    return size < 0 ? EXIT_FAILURE : EXIT_SUCCESS;
}
