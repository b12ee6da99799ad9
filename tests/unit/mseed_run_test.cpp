// quarl-mseed as its users run it: streams, archives, files by a pattern.
#include "compose/files.h"
#include "compose/volume.h"
#include "platform/format.h"
#include "support/process.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

const std::string Tool = fs::path(QUARL_PROGRAM).parent_path() / "quarl-mseed";
constexpr const char *Day_File = "2024/XX/QRL/BHZ.D/XX.QRL..BHZ.D.2024.001";

DataRecord at(const std::string &time, const std::string &channel = "BHZ")
{
    return {.channel = channel, .time = time, .b1000 = DataOnly{.encoding = 3}, .payload = "abcd"};
}

std::string formatted_second(int i)
{
    return quarl::formatted<"2024,001,%02d:%02d:%02d.0000">(i / 3600, i / 60 % 60, i % 60);
}

class MseedRun : public testing::Test
{
protected:
    MseedRun() { fs::create_directories(folder_); }
    ~MseedRun() override { fs::remove_all(folder_); }

    [[nodiscard]] std::string path(const std::string &name) const { return folder_ / name; }
    std::string put(const std::string &name, const std::string &bytes)
    {
        fs::create_directories(fs::path(path(name)).parent_path());
        write_file(path(name), bytes);
        return path(name);
    }
    /// A file of these records, numbered from 1.
    std::string put(const std::string &name, const std::vector<DataRecord> &records)
    {
        VolumeBuilder volume;
        for (const DataRecord &record : records)
            volume.data(record);
        return put(name, volume.volume());
    }
    /// The exit status.
    std::string convert(const std::vector<std::string> &args)
    {
        const int in = open("/dev/null", O_RDONLY | O_CLOEXEC);
        outcome_ = run(Tool, args, in);
        close(in);
        return outcome_.status;
    }
    [[nodiscard]] std::string read(const std::string &name) const { return read_file(path(name)); }
    /// Files below a folder, relative to it.
    [[nodiscard]] std::vector<std::string> files(const std::string &name) const
    {
        std::vector<std::string> all;
        for (const auto &entry : fs::recursive_directory_iterator(path(name)))
            if (!entry.is_directory())
                all.push_back(fs::relative(entry.path(), path(name)));
        std::sort(all.begin(), all.end());
        return all;
    }
    [[nodiscard]] bool told(const std::string &text) const
    {
        return outcome_.err.find(text) != std::string::npos;
    }

    fs::path folder_ = testing::TempDir() + "mseed_run_" + std::to_string(getpid());
    Outcome outcome_;
};

/// Whole seconds of the starts of 512-byte records.
std::string seconds_of(const std::string &bytes)
{
    std::string all;
    for (std::size_t i = 0; i + 512 <= bytes.size(); i += 512)
        all += std::to_string(bytes[i + 25] * 60 + bytes[i + 26]) + " ";
    return all;
}

TEST_F(MseedRun, WritesStreamsInOrder)
{
    const std::string one =
        put("one", {at("2024,001,00:00:00.0000"), at("2024,001,00:00:05.0000", "BHN")});
    const std::string two =
        put("two", {at("2024,001,00:00:10.0000"), at("2024,001,00:00:05.0000")});
    EXPECT_EQ(convert({one, two}), "0");
    EXPECT_TRUE(outcome_.out == read_file(one) + read_file(two));
    EXPECT_TRUE(told("4 records written, 0 left out"));
    EXPECT_EQ(convert({"-o", path("out"), "--renumber", one, two}), "0");
    std::string numbers;
    for (std::size_t i = 0; i < 4; ++i)
        numbers += read("out").substr(i * 512, 6) + " ";
    EXPECT_EQ(numbers, "000001 000002 000003 000004 ");
    EXPECT_EQ(convert({"--select", "*.BHN", one, two}), "0");
    EXPECT_TRUE(outcome_.out == read_file(one).substr(512));
    EXPECT_EQ(convert({"--start=2024-01-01T00:00:05", "--end=2024-01-01T00:00:10", one, two}), "0");
    EXPECT_TRUE(outcome_.out == read_file(one).substr(512) + read_file(two).substr(512));
}

TEST_F(MseedRun, TellsAndCountsWhatIsLeftOut)
{
    VolumeBuilder volume;
    volume.data(at("2024,001,00:00:00.0000"));
    for (int i = 0; i < 3; ++i)
        volume.data({.channel = "LOG", .length = 4096});
    const std::string path = put("volume", volume.volume());
    EXPECT_EQ(convert({path}), "1");
    EXPECT_TRUE(outcome_.out == read_file(path).substr(0, 512));
    EXPECT_TRUE(told(path + ":2: XX_QRL__LOG: 3 records left out: nothing tells how the samples "
                            "are encoded"));
    EXPECT_TRUE(told("1 record written, 3 left out"));
    const std::string cut = put("cut", read_file(path).substr(0, 500));
    EXPECT_EQ(convert({cut}), "1");
    EXPECT_EQ(outcome_.out, "");
    EXPECT_TRUE(told("1 record left out: the input ends inside the record"));
}

TEST_F(MseedRun, WrongCallsAndVolumes)
{
    const std::string volume = put("volume", {at("2024,001,00:00:00.0000")});
    const std::string before = put("out", "before");
    EXPECT_EQ(convert({"-o", before, path("none")}), "2");
    EXPECT_EQ(read("out"), "before");
    EXPECT_EQ(convert({"-o", volume, volume}), "2");
    EXPECT_EQ(read_file(volume).size(), 512U);
    EXPECT_EQ(convert({"--split", path("vol%l") + "ume", volume}), "2");
    EXPECT_EQ(read_file(volume).size(), 512U);
    EXPECT_EQ(convert({"-o", before, path("none"), volume}), "2");
    EXPECT_TRUE(read("out") == read_file(volume)); // what could be read
    EXPECT_EQ(convert({"--sds", put("file", "x") + "/below", volume}), "2");
    for (const std::vector<std::string> &wrong : {std::vector<std::string>{"-o", "a", "--sds", "b"},
                                                  {"--split", "%x"},
                                                  {"--select", "BHZ"},
                                                  {"--start", "now"},
                                                  {"--sds="},
                                                  {"--start=2024", "--end=2024"},
                                                  {"--nothing"}})
        EXPECT_EQ(convert(wrong), "2") << wrong[0];
}

TEST_F(MseedRun, SplitsByPattern)
{
    const std::string volume =
        put("volume", {at("2024,001,23:59:59.0000"), at("2024,002,00:00:04.0000", "BHN"),
                       at("2024,002,00:00:04.0000")});
    put("out/BHZ.2024.001", "before");
    EXPECT_EQ(convert({"--split", path("out/%c.%Y.%j"), volume}), "0");
    EXPECT_EQ(files("out"),
              (std::vector<std::string>{"BHN.2024.002", "BHZ.2024.001", "BHZ.2024.002"}));
    const std::string all = read_file(volume);
    EXPECT_EQ(read("out/BHZ.2024.001") + read("out/BHN.2024.002") + read("out/BHZ.2024.002"), all);
    EXPECT_EQ(convert({"--renumber", "--split", path("out/%c"), volume, volume}), "0");
    EXPECT_EQ(read("out/BHN").substr(512, 6), "000002");
}

TEST_F(MseedRun, ArchivesByDayInOrderAndOnce)
{
    // The last record before midnight goes on behind it.
    const std::string one =
        put("one", {at("2024,001,00:00:05.0000"), at("2024,001,00:00:01.0000"),
                    at("2024,001,23:59:59.0000"), at("2024,002,00:00:04.0000")});
    EXPECT_EQ(convert({"--sds", path("sds"), one}), "0");
    const std::string second_day =
        std::string(Day_File).replace(std::string(Day_File).size() - 1, 1, "2");
    EXPECT_EQ(files("sds"), (std::vector<std::string>{Day_File, second_day}));
    EXPECT_EQ(seconds_of(read("sds/" + std::string(Day_File))), "1 5 3599 ");
    EXPECT_TRUE(told("4 records written to 2 files, 0 already there, 0 left out"));
    const auto before = read("sds/" + std::string(Day_File));
    const auto changed = fs::last_write_time(path("sds/" + std::string(Day_File)));

    // The same under other numbers, twice; one between them; another with the letter Q.
    DataRecord released = at("2024,001,00:00:05.0000");
    released.quality = 'Q';
    EXPECT_EQ(convert({"--sds", path("sds"), one, one}), "0");
    EXPECT_EQ(fs::last_write_time(path("sds/" + std::string(Day_File))), changed);
    EXPECT_TRUE(told("0 records written to 0 files, 8 already there, 0 left out"));
    const std::string two = put("two", {at("2024,001,00:00:03.0000"), at("2024,001,00:00:01.0000"),
                                        at("2024,001,00:00:03.0000"), released});
    EXPECT_EQ(convert({"--sds", path("sds"), two}), "0");
    EXPECT_EQ(seconds_of(read("sds/" + std::string(Day_File))), "1 3 5 5 3599 ");
    EXPECT_TRUE(told("2 records written to 1 file, 2 already there, 0 left out"));
    const std::string after = read("sds/" + std::string(Day_File));
    EXPECT_TRUE(after.substr(0, 512) + after.substr(1024, 512) + after.substr(2048) == before);
    EXPECT_EQ(files("sds").size(), 2U); // and nothing beside them
}

TEST_F(MseedRun, ArchivesRecordsOfAllLengthsAndOrders)
{
    std::vector<DataRecord> records;
    for (int i = 0; i < 8; ++i) {
        records.push_back(at(formatted_second(i)));
        records.back().length = 128 << i % 7;
        records.back().b1000->exponent = 7 + i % 7;
        records.back().samples = 1;
        records.back().little = i % 2 == 1;
    }
    records.back().time_correction = -5000; // not applied: it begins before the one in front of it
    const std::string one = put("one", records);
    EXPECT_EQ(convert({"--sds", path("sds"), one}), "0");
    const std::string filed = read("sds/" + std::string(Day_File));
    EXPECT_EQ(filed.size(), read_file(one).size());
    EXPECT_EQ(convert({"--sds", path("sds"), path("sds/" + std::string(Day_File)), one}), "0");
    EXPECT_TRUE(told("0 records written to 0 files, 16 already there, 0 left out"));
    EXPECT_TRUE(read("sds/" + std::string(Day_File)) == filed);
}

TEST_F(MseedRun, LeavesWhatIsNotItsOwn)
{
    const std::string one = put("one", {at("2024,001,00:00:05.0000")});
    const std::string record = read_file(one);
    const std::string other_channel = read_file(put("two", {at("2024,001,00:00:05.0000", "BHN")}));
    for (const std::string &bytes :
         {std::string("notes"), record + "x", record.substr(0, 300), record + other_channel,
          std::string(512, '\0'), record + std::string(512, ' ')}) {
        put("sds/" + std::string(Day_File), bytes);
        EXPECT_EQ(convert({"--sds", path("sds"), one}), "2");
        EXPECT_TRUE(read("sds/" + std::string(Day_File)) == bytes);
        EXPECT_TRUE(told("stays as it is")) << outcome_.err;
        EXPECT_TRUE(told("0 records written to 0 files, 0 already there, 1 left out"));
    }
    fs::remove(path("sds/" + std::string(Day_File)));
    fs::create_directory(path("sds/" + std::string(Day_File)));
    EXPECT_EQ(convert({"--sds", path("sds"), one}), "2");
    fs::remove(path("sds/" + std::string(Day_File)));
    put("elsewhere", record); // a link stays one
    fs::create_symlink(path("elsewhere"), path("sds/" + std::string(Day_File)));
    EXPECT_EQ(convert({"--sds", path("sds"), put("three", {at("2024,001,00:00:06.0000")})}), "0");
    EXPECT_TRUE(fs::is_symlink(path("sds/" + std::string(Day_File))));
    EXPECT_EQ(seconds_of(read("elsewhere")), "5 6 ");
}

/// A run that reads a pipe, and is killed when it has read all that came.
TEST_F(MseedRun, KilledRunsLeaveFilesOldOrNew)
{
    std::vector<DataRecord> records;
    records.reserve(1000);
    for (int i = 0; i < 1000; ++i)
        records.push_back(at(formatted_second(i), "B" + std::to_string(10 + i % 30)));
    const std::string volume = put("volume", records);
    EXPECT_EQ(convert({"--sds", path("whole"), volume}), "0");
    std::map<std::string, std::string> whole;
    for (const std::string &name : files("whole"))
        whole[name] = read("whole/" + name);
    ASSERT_EQ(whole.size(), 30U);
    const std::string half = put("half", read_file(volume).substr(0, std::size_t{500} * 512));
    EXPECT_EQ(convert({"--sds", path("half_done"), half}), "0");
    int old_ones = 0;
    int new_ones = 0;
    for (int delay = 0; delay < 12; ++delay) {
        fs::remove_all(path("sds"));
        fs::copy(path("half_done"), path("sds"), fs::copy_options::recursive);
        Pipe nothing;
        const pid_t child = start(Tool, {"--sds", path("sds"), volume},
                                  {nothing.read_end, nothing.write_end, nothing.write_end});
        usleep(delay * 4000);
        kill(child, SIGKILL);
        (void)wait_for(child);
        for (const auto &[name, bytes] : whole) {
            const bool is_new = read("sds/" + name) == bytes;
            const bool is_old = read("sds/" + name) == read("half_done/" + name);
            EXPECT_TRUE(is_new || is_old) << name;
            old_ones += is_old;
            new_ones += is_new;
        }
    }
    EXPECT_GT(old_ones, 0);
    EXPECT_EQ(convert({"--sds", path("sds"), volume}), "0"); // and the next run mends all
    EXPECT_EQ(files("sds"), files("whole"));
    for (const auto &[name, bytes] : whole)
        EXPECT_TRUE(read("sds/" + name) == bytes);
    RecordProperty("old", old_ones);
    RecordProperty("new", new_ones);
}

/// A signal ends a run between two records: nothing is half there.
TEST_F(MseedRun, InterruptedRunsWriteNothing)
{
    const std::string record = read_file(put("one", {at("2024,001,00:00:05.0000")}));
    const std::string before = put("out", "before");
    for (const std::vector<std::string> &args :
         {std::vector<std::string>{"-o", before, "-"}, {"--sds", path("sds"), "-"}}) {
        Pipe in;
        Pipe err;
        const pid_t child = start(Tool, args, {in.read_end, err.write_end, err.write_end});
        in.close_read();
        err.close_write();
        ASSERT_TRUE(write_all(in.write_end, record));
        usleep(200'000);
        kill(child, SIGTERM);
        EXPECT_EQ(wait_for(child), "signal " + std::to_string(SIGTERM));
        EXPECT_EQ(read("out"), "before");
    }
    EXPECT_TRUE(files("sds").empty());
}

} // namespace
