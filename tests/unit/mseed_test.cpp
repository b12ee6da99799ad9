// Data records as miniSEED: where Blockette 1000 goes, what cannot be miniSEED, names of files.
#include "compose/blockette_text.h"
#include "compose/files.h"
#include "compose/samples.h"
#include "mseed/file_name.h"
#include "mseed/mini_record.h"
#include "support/capture.h"
#include "support/samples.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <quarl/volume.h>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

/// A volume whose dictionary has `format` for the one channel, and the record.
std::string described(const std::string &format, int exponent, const DataRecord &record)
{
    VolumeBuilder volume(4096);
    volume.header('A').blockette(30, b030(format, 1, 0, {}));
    volume.header('S').blockette(50, b050({}));
    volume.blockette(52, b052({.exponent = exponent}));
    return volume.data(record).volume();
}

/// What a record became, and whether its samples, times and other blockettes are the same.
struct Made {
    std::string bytes;
    std::string fault;
    std::string differs;
    std::string types; ///< of its blockettes
    Encoding encoding = Encoding::none;
    bool little_endian = false;
};

class InFile
{
public:
    explicit InFile(const std::string &bytes) { write_file(path_, bytes); }
    InFile(const InFile &) = delete;
    InFile &operator=(const InFile &) = delete;
    ~InFile() { fs::remove(path_); }
    [[nodiscard]] const std::string &path() const { return path_; }

private:
    std::string path_ = testing::TempDir() + "mseed_" + std::to_string(getpid()) + ".seed";
};

/// What must stay.
std::string kept_of(const Item &item)
{
    SampleBuffer buffer;
    const auto &header = *item.get<blk_dh_t>();
    const Samples samples = decode(item, buffer);
    std::string all = problems_of(samples);
    for (const double value : values_of(samples))
        all += formatted<"%.17g ">(value);
    const auto times = data_times(header, item.data_blockettes().refinement());
    all += times ? iso_text(times->start) + iso_text(times->next) : "no time";
    all += code_of(header).text() + header.quality_indicator + item.data_blockettes().remark;
    return all + std::string(item.bytes().substr(0, 8)) + std::to_string(header.activity);
}

Made make(const std::string &volume)
{
    Made made;
    std::string kept;
    mseed::MiniRecordMaker maker;
    VolumeOptions quiet;
    quiet.message = [](const Message & /*of the lengths*/) {};
    const InFile file(volume);
    for (const Item &item : Volume(file.path(), quiet))
        if (const auto *header = item.get<blk_dh_t>()) {
            made.bytes = maker.make(item, *header);
            made.fault = made.bytes.empty() ? maker.fault() : "";
            kept = kept_of(item);
        }
    const InFile copy(made.bytes);
    for (const Item &item : Volume(copy.path(), quiet))
        if (const auto *header = item.get<blk_dh_t>()) {
            made.encoding = encoding_of(*header);
            made.little_endian = header->word_order == 0;
            if (header->encoding < 0 || item.length() != static_cast<int>(made.bytes.size()))
                made.differs = "Blockette 1000 is not right";
            else if (kept_of(item) != kept)
                made.differs = "was " + kept + ", is " + kept_of(item);
            const auto &chain = item.data_blockettes().list;
            for (const DataBlockette &each : chain)
                made.types += std::to_string(each.type) + " ";
            if (static_cast<std::size_t>(header->blks_fol & 0xFF) != chain.size())
                made.differs += " and its blockettes are counted wrongly";
        }
    return made;
}

std::vector<std::int32_t> ramp()
{
    std::vector<std::int32_t> values;
    values.reserve(5000);
    for (int i = 0; i < 5000; ++i)
        values.push_back(i * i % 1000 - 7);
    return values;
}

TEST(MiniRecord, Blockette1000GoesWhereThereIsRoom)
{
    constexpr const char *Steim2 = "Steim2 Integer Compression Format";
    struct Row {
        const char *what;
        std::size_t frames;
        bool fill; ///< behind the frames
        DataRecord record;
        const char *types;
        std::size_t length;
        std::size_t data; ///< byte at which they begin then
    };
    const std::vector<Row> rows = {
        {"gap of 16 bytes", 7, false, {.begin_data = 64}, "1000 ", 512, 64},
        {"gap of 8 bytes", 7, false, {.begin_data = 56}, "1000 ", 512, 56},
        {"behind it another",
         7,
         false,
         {.timing_quality = 90, .begin_data = 64},
         "1000 1001 ",
         512,
         64},
        {"in front of another",
         6,
         false,
         {
             .actual_rate = 20.5F,
             .begin_data = 128,
         },
         "1000 100 ",
         512,
         128},
        {"no gap, no fill", 7, false, {.length = 512, .begin_data = 48}, "1000 ", 1024, 64},
        {"no gap, but fill", 3, true, {.begin_data = 48}, "1000 ", 512, 64},
        {"chain up to the data",
         3,
         true,
         {.timing_quality = 90, .actual_rate = 20.0F, .begin_data = 68},
         "1000 1001 100 ",
         512,
         128},
        {"full behind a chain",
         6,
         false,
         {.timing_quality = 90, .actual_rate = 20.0F, .begin_data = 68},
         "1000 1001 100 ",
         1024,
         128},
        {"unknown blockette",
         3,
         true,
         {.blockettes = {{999, "z12"}}, .begin_data = 64},
         "1000 999 ",
         512,
         128},
        {"256 bytes, full", 3, false, {.length = 256, .begin_data = 64}, "1000 ", 256, 64},
        {"4096 bytes, full", 63, false, {.length = 4096, .begin_data = 48}, "1000 ", 8192, 64},
    };
    for (const Row &row : rows)
        for (const bool little : {false, true}) {
            SCOPED_TRACE(std::string(row.what) + (little ? ", little-endian" : ""));
            DataRecord record = row.record;
            const std::size_t room = static_cast<std::size_t>(record.length - *record.begin_data);
            const SteimFrames frames = steim_frames(ramp(), {2, little, row.frames, 0, false});
            record.payload = frames.bytes;
            record.payload.resize(room, row.fill ? '\0' : '\x11'); // what no frame is
            record.samples = static_cast<int>(frames.samples);
            record.little = little;
            int exponent = 7;
            while (1 << exponent < record.length)
                ++exponent;
            const Made made = make(described(Steim2, exponent, record));
            EXPECT_EQ(made.fault + made.differs, "");
            EXPECT_EQ(made.types, row.types);
            EXPECT_EQ(made.bytes.size(), row.length);
            EXPECT_EQ(made.encoding, Encoding::steim2);
            EXPECT_EQ(made.little_endian, little);
            const auto high = static_cast<unsigned char>(made.bytes[little ? 45 : 44]);
            const auto low = static_cast<unsigned char>(made.bytes[little ? 44 : 45]);
            EXPECT_EQ(high * 256U + low, row.data);
            if (row.data == static_cast<std::size_t>(*record.begin_data)) {
                EXPECT_TRUE(made.bytes.ends_with(data_record_bytes(record, 1).substr(row.data)));
            }
        }
}

TEST(MiniRecord, GetsTheEncodingOfItsFormat)
{
    const struct {
        const char *format;
        int encoding; ///< -1: there is none
        std::size_t size;
    } rows[] = {{"32-Bit Integer Format", 3, 4},
                {"SUN IEEE integer", 3, 4},
                {"SRO Gain-Ranged Format", 30, 2},
                {"CDSN Gain-Ranged Format", 16, 2},
                {"DWWSSN SUN IEEE short integer", 1, 2},
                {"DWWSSN Integer Format", 32, 2},
                {"Steim Integer Compression Format", 10, 4},
                {"IEEE single precision real", 4, 4},
                {"Geoscope gain-range on 3 bits", 13, 2},
                {"Geoscope-3 byte (switched gain)", 12, 3},
                {"Geoscope gain range on 4 bits", 14, 2},
                {"ASCII RefTek Log Files, State of Health", 0, 1},
                {"USNSN Integer Compression", 15, 2},
                {"ASRO Gain-Ranged Format", -1, 2},
                {"something else", -1, 4}};
    for (const auto &row : rows)
        for (const bool full : {false, true}) {
            SCOPED_TRACE(row.format);
            DataRecord record{.samples = static_cast<int>((full ? 448 : 200) / row.size),
                              .begin_data = 48};
            for (int i = 0; i < 464; ++i)
                record.payload += static_cast<char>(full || i < 200 ? "abc\x01"[i % 4] : '\0');
            const Made made = make(described(row.format, 9, record));
            if (row.encoding < 0) {
                EXPECT_NE(made.fault, "");
                continue;
            }
            EXPECT_EQ(made.fault + made.differs, "");
            EXPECT_EQ(static_cast<int>(made.encoding), row.encoding);
            const bool is_known = row.encoding != 15; // else nobody knows what is fill
            EXPECT_EQ(made.bytes.size(), !full && is_known ? 512U : 1024U);
            EXPECT_FALSE(made.little_endian);
        }
}

TEST(MiniRecord, SamplesOfZeroAreNoFill)
{
    DataRecord record{.samples = 116, .begin_data = 48};
    record.payload = std::string(400, '\x01') + std::string(64, '\0');
    EXPECT_EQ(make(described("32-Bit Integer Format", 9, record)).bytes.size(), 1024U);
    record.samples = 112;
    EXPECT_EQ(make(described("32-Bit Integer Format", 9, record)).bytes.size(), 512U);
}

TEST(MiniRecord, GoesOverByteByByte)
{
    for (const char quality : {'D', 'R', 'Q', 'M'})
        for (const int exponent : {7, 9, 12, 13}) {
            const DataRecord record{.seq = 777777,
                                    .quality = quality,
                                    .samples = 5,
                                    .length = 1 << exponent,
                                    .little = exponent == 12,
                                    .b1000 = DataOnly{.encoding = 19, .exponent = exponent}};
            EXPECT_TRUE(make(VolumeBuilder().data(record).volume()).bytes ==
                        data_record_bytes(record, 777777));
        }
}

TEST(MiniRecord, TellsWhatCannotBe)
{
    const DataRecord sound{.length = 512, .b1000 = DataOnly{}, .begin_data = 64};
    const auto changed = [&](std::size_t at, const std::string &bytes) {
        std::string record = data_record_bytes(sound, 1);
        return record.replace(at, bytes.size(), bytes);
    };
    const struct {
        std::string volume;
        const char *fault;
    } rows[] = {
        {changed(0, "00000A"), "the sequence number is no number"},
        {changed(7, "*"), "the header has a continuation code, as only control headers have"},
        {changed(24, "\x18"), "the start time is none of the calendar"},
        {changed(22, std::string("\x01\x6F", 2)), "the start time is none of the calendar"},
        {VolumeBuilder().data({.length = 4096}).volume(),
         "nothing tells how the samples are encoded"},
        {described("ASRO Gain-Ranged Format", 9, {}),
         "Blockette 1000 has no code for the data format 'ASRO Gain-Ranged Format'"},
        {described("32-Bit Integer Format", 9, {.begin_data = 40}),
         "the data begin outside of the record"},
        {described("32-Bit Integer Format", 9, {.begin_data = 512}),
         "the data begin outside of the record"},
        {described("32-Bit Integer Format", 9,
                   {.blockettes = {{2000, "u2:100/u2:15/u4:1/u1:1/u1:0/u1:0/z85"},
                                   {1000, "u1:3/u1:1/u1:8/z1"}},
                    .begin_data = 192}),
         "Blockette 1000 tells another length than the volume"},
    };
    for (const auto &row : rows)
        EXPECT_EQ(make(row.volume).fault, row.fault);
    EXPECT_EQ(make(changed(0, std::string("  \0"
                                          "1 \0",
                                          6)))
                  .fault,
              "");
    // A length that cannot be is mended.
    const Made mended = make(
        described("32-Bit Integer Format", 9, {.b1000 = DataOnly{.encoding = 3, .exponent = 3}}));
    EXPECT_EQ(mended.fault + mended.differs, "");
    EXPECT_EQ(mended.bytes.size(), 512U);
}

TEST(MiniRecord, NumbersFrom1To999999)
{
    std::string record = "abcdefD ";
    mseed::put_sequence_number(&record, 999'999);
    EXPECT_EQ(record, "999999D ");
    mseed::put_sequence_number(&record, 1'000'000);
    EXPECT_EQ(record, "000001D ");
}

TEST(FileNames, StayInTheirFolders)
{
    const Time start = *read_iso_time("2016-02-29T23:59:58");
    const auto archive = [&](const ChannelCode &code) {
        return mseed::archive_name({code, 'D', start});
    };
    EXPECT_EQ(archive({"IU", "ANMO", "00", "BHZ"}), "2016/IU/ANMO/BHZ.D/IU.ANMO.00.BHZ.D.2016.060");
    EXPECT_EQ(archive({"BW", "FURT", "", "EHZ"}), "2016/BW/FURT/EHZ.D/BW.FURT..EHZ.D.2016.060");
    for (const ChannelCode &code :
         {ChannelCode("..", "A", "", "BHZ"), ChannelCode("IU", "../..", "", "BHZ"),
          ChannelCode("IU", "A", "/", "BHZ"), ChannelCode("", "A", "", "BHZ"),
          ChannelCode("IU", "", "", "BHZ"), ChannelCode("IU", "A", "", ""),
          ChannelCode("IU", "A\n", "", "B Z"), ChannelCode("IU", "\xC4", "", "BHZ")})
        EXPECT_EQ(archive(code), "") << code.text();
    const struct {
        const char *pattern;
        const char *name;
        const char *folder;
    } rows[] = {
        {"%n.%s.%l.%c.%q", "IU.ANMO..BHZ.R", "."},
        {"out/%Y-%m-%d/%j_%H%M%S", "out/2016-02-29/060_235958", "out"},
        {"/a/b%s/%%%c", "/a/bANMO/%BHZ", "/a"},
        {"%l/%c", "", "."},
        {"x/%l", "", "x"},
        {"a//%s", "a//ANMO", "a/"},
        {"/%s", "/ANMO", "/"},
    };
    for (const auto &row : rows) {
        mseed::NamePattern pattern;
        EXPECT_EQ(pattern.set(row.pattern), "");
        EXPECT_EQ(pattern.name({{"IU", "ANMO", "", "BHZ"}, 'R', start}), row.name);
        EXPECT_EQ(pattern.folder(), row.folder);
        EXPECT_EQ(pattern.name({{"IU", "..", "", "BHZ"}, 'R', start}), "");
    }
    for (const char *wrong : {"%x", "a%", "folder/", ""})
        EXPECT_NE(mseed::NamePattern().set(wrong), "") << wrong;
}

} // namespace
