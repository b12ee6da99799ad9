#include "mseed/record_file.h"

#include "blockette/chain.h"
#include "blockette/data_header.h"
#include "mseed/added_1000.h"
#include "platform/keyed_hash.h"
#include "platform/number.h"
#include "platform/out.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <quarl/error.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace quarl::mseed
{

namespace
{

constexpr std::size_t Most_Held = 1 << 20;      ///< bytes
constexpr std::size_t Longest_Record = 1 << 20; ///< bytes, of those that readers know
constexpr std::size_t Head = 4096; ///< bytes of a record in which its Blockette 1000 has to stand
constexpr std::size_t Sequence_Size = 6;

/// As many bytes as there are, up to `size`.
std::size_t read_at(int fd, char *to, std::size_t size, std::uint64_t offset)
{
    std::size_t have = 0;
    while (have < size) {
        const ssize_t count = pread(fd, to + have, size - have, static_cast<off_t>(offset + have));
        if (count > 0)
            have += static_cast<std::size_t>(count);
        else if (count == 0 || errno != EINTR)
            break;
    }
    return have;
}

/// The time at which the record begins, as the reading of a volume has it.
std::optional<Time> start_of(std::string_view record, const ChannelCode &channel)
{
    constexpr int Correction_Applied = 0x02;
    blk_dh_t header;
    parse_dh(&header, record.substr(8));
    if (code_of(header) != channel)
        return std::nullopt;
    if (!(header.activity & Correction_Applied))
        header.sec_frac = saturated_sum(header.sec_frac, header.time_cor);
    DataBlockettes chain;
    read_chain(header, record, &chain);
    const auto times = data_times(header, chain.refinement());
    return times ? std::optional(times->start) : std::nullopt;
}

/// The length of the record that begins here; 0 when none does.
std::size_t length_of(std::string_view bytes)
{
    if (bytes.size() < Least_Length || !is_ok_msd_quality(bytes[Sequence_Size]))
        return 0;
    MsdHeader unpacked{bytes.data(), bytes.size(), 0, 0, 0};
    if (msdhdr_unpack(&unpacked) != 0)
        return 0;
    const auto length = static_cast<std::size_t>(unpacked.record_length);
    return length <= Longest_Record ? length : 0;
}

} // namespace

void fail_to_write(const std::string &path, int error)
{
    throw Error(MessageKind::output_failed,
                "Can't write " + path + ": " + std::string(std::strerror(error)), error);
}

Descriptor::Descriptor(Descriptor &&other) noexcept : fd_(std::exchange(other.fd_, -1)) {}

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept
{
    std::swap(fd_, other.fd_);
    return *this;
}

Descriptor::~Descriptor()
{
    if (fd_ >= 0)
        close(fd_);
}

std::string_view Pieces::read(std::uint64_t offset, std::size_t size)
{
    const std::uint64_t end = begin_ + held_.size();
    if (offset < begin_ || offset + size > end) {
        held_.resize(std::max(size, Most_Held));
        held_.resize(read_at(fd_, held_.data(), held_.size(), offset));
        begin_ = offset;
    }
    return std::string_view(held_).substr(offset - begin_, size);
}

std::uint64_t content_of(std::string_view record)
{
    HashedContent content;
    content.add(record.substr(std::min(record.size(), Sequence_Size)));
    return content.value();
}

std::string find_records(int fd, std::uint64_t size, const ChannelCode &channel,
                         std::vector<RecordPlace> *records)
{
    Pieces pieces(fd);
    for (std::uint64_t at = 0; at < size;) {
        const std::size_t length = length_of(pieces.read(at, Head));
        if (length == 0)
            return "holds what is no miniSEED";
        const std::string_view record = pieces.read(at, length);
        if (record.size() < length)
            return "ends inside a record";
        const auto start = start_of(record, channel);
        if (!start)
            return "holds another channel's records, or some without a time";
        records->push_back({*start, at, static_cast<std::uint32_t>(length), content_of(record)});
        at += length;
    }
    return {};
}

void make_folders_of(const std::string &path)
{
    const auto folder = std::filesystem::path(path).parent_path();
    std::error_code error;
    if (!folder.empty() && !std::filesystem::is_directory(folder, error))
        std::filesystem::create_directories(folder, error);
    if (error && !std::filesystem::is_directory(folder))
        fail_to_write(path, error.value());
}

bool replace_file(const std::string &path, const std::string &draft,
                  const std::function<void(Out &)> &write, const std::function<bool()> &may_replace)
{
    constexpr mode_t As_Umask_Says = 0666;
    struct stat status = {};
    const bool is_there = stat(path.c_str(), &status) == 0;
    const Descriptor file(
        open(draft.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, As_Umask_Says));
    if (file.get() < 0)
        fail_to_write(draft, errno);
    try {
        if (is_there)
            (void)fchmod(file.get(), status.st_mode & 07777);
        Out out(file.get());
        write(out);
        out.flush();
    } catch (const Error &error) {
        unlink(draft.c_str());
        if (error.kind() == MessageKind::output_failed && error.error() != 0)
            fail_to_write(path, error.error());
        throw;
    }
    // Without this, a file system may give the name to bytes that it has not stored yet.
    const bool stored = fdatasync(file.get()) == 0;
    const bool allowed = stored && may_replace();
    if (allowed && rename(draft.c_str(), path.c_str()) == 0)
        return true;
    const int reason = errno;
    unlink(draft.c_str());
    if (!stored || allowed)
        fail_to_write(path, reason);
    return false;
}

} // namespace quarl::mseed
