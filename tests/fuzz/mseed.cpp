// Volumes of any bytes as miniSEED: what is made of a record is one, with the samples of the
// volume, and may stand in an archive's tree.
#include "fuzz/harness.h"
#include "mseed/file_name.h"
#include "mseed/mini_record.h"
#include "mseed/record_file.h"

#include <fcntl.h>
#include <quarl/volume.h>

namespace
{

/// A record that was made is a whole one with the time of the volume's.
void check(std::string_view record, const mseed::MiniRecordMaker &maker, const ChannelCode &channel)
{
    const MemoryFile file(record);
    const int fd = open(file.path().c_str(), O_RDONLY | O_CLOEXEC);
    const mseed::Descriptor closing(fd);
    std::vector<mseed::RecordPlace> found;
    const std::string fault = mseed::find_records(fd, record.size(), channel, &found);
    if (!fault.empty() || found.size() != 1 || found[0].start != maker.start() ||
        found[0].length != record.size())
        __builtin_trap();
}

bool leaves_folder(const std::string &path)
{
    return path.starts_with("/") || path.find("..") == 0 || path.find("/../") != std::string::npos;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0) // the first byte is other targets' choice
        return 0;
    run_one([&](Console * /*console*/) {
        VolumeOptions quiet;
        quiet.message = [](const Message & /*of damage*/) {};
        const MemoryFile file(as_text(data + 1, size - 1));
        Volume volume(file.path(), quiet);
        mseed::MiniRecordMaker maker;
        mseed::NamePattern pattern;
        (void)pattern.set("%n/%s/%l/%c.%Y.%j");
        while (const Item *item = volume.next()) {
            const auto *header = item->get<blk_dh_t>();
            const std::string_view record =
                header ? maker.make(*item, *header) : std::string_view();
            if (record.empty())
                continue;
            const ChannelCode channel = code_of(*header);
            check(record, maker, channel);
            const mseed::NameParts parts{channel, header->quality_indicator, maker.start()};
            if (leaves_folder(mseed::archive_name(parts)) || leaves_folder(pattern.name(parts)))
                __builtin_trap();
        }
    });
    return 0;
}
