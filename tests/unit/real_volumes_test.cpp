// Volumes of real data centres, when they lie beside the project.
#include "compose/files.h"
#include "programs/sdd.h"
#include "support/capture.h"
#include <quarl/records.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>

namespace
{

namespace fs = std::filesystem;

/// The number behind `label` at the start of a line of `text`; -1 when there is none.
long number_behind(const std::string &text, const std::string &label)
{
    const std::size_t at = text.find('\n' + label);
    return at == std::string::npos ? -1 : std::atol(text.c_str() + at + 1 + label.size());
}

/// Counts the data records of a file of data records alone: each begins with six digits and a
/// quality indicator, and its Blockette 1000, if it has one, gives its length.
long records_in(const std::string &bytes)
{
    long count = 0;
    for (std::size_t at = 0; at + 64 <= bytes.size(); ++count) {
        const std::size_t b1000 = bytes.substr(at, 64).find("\x03\xe8");
        at += b1000 == std::string::npos ? 4096 : std::size_t{1} << bytes[at + b1000 + 6];
    }
    return count;
}

TEST(RealVolumes, EveryByteIsAccountedFor)
{
    const fs::path folder = fs::path(QUARL_SOURCE_DIR) / "../shared/volumes";
    if (!fs::is_directory(folder))
        GTEST_SKIP() << "no real volumes at " << folder;
    for (const fs::directory_entry &entry : fs::directory_iterator(folder)) {
        const std::string name = entry.path().filename();
        if (name.find("seed") == std::string::npos)
            continue;
        SCOPED_TRACE(name);
        const Captured run = capture([&] { list_volume(entry.path()); });
        EXPECT_EQ(run.status, -1) << run.err;
        const std::size_t table = run.out.find("\nBlockette Summary -- file #0\n");
        ASSERT_NE(table, std::string::npos) << run.err;
        EXPECT_EQ(run.out.find("\nBlockette Summary", table + 1), std::string::npos)
            << "a second file";
        const long data = number_behind(run.out, "Total Data            :");
        const long total = data + number_behind(run.out, "Total Parameter Info  :") +
                           number_behind(run.out, "Total Wasted          :");
        if (entry.path().extension() != ".gz") {
            EXPECT_EQ(total, static_cast<long>(entry.file_size()));
        }
        const std::string listing = "\n" + run.out.substr(0, table);
        long lines = 0;
        for (std::size_t at = 0; (at = listing.find("\nDATA ", at)) != std::string::npos; ++at)
            ++lines;
        if (name.starts_with("dataless")) {
            EXPECT_EQ(lines, 0);
        }
        if (name.starts_with("mini")) {
            EXPECT_EQ(lines, records_in(read_file(entry.path())));
            EXPECT_EQ(data, total);
        }
    }
}

} // namespace
