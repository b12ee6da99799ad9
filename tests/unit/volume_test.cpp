// The public face: items of volumes, one after the other, in turns and in threads.
#include "compose/files.h"
#include "compose/sample.h"
#include "listing/pbrief.h"
#include "listing/summary.h"
#include "support/capture.h"
#include "support/recipe.h"

#include <cstdio>
#include <filesystem>
#include <gtest/gtest.h>
#include <quarl/volume.h>
#include <set>
#include <sys/socket.h>
#include <thread>

namespace
{

namespace fs = std::filesystem;

/// A file in the folder for such that vanishes with this object.
class TempFile
{
public:
    TempFile(const char *name, std::string_view bytes)
        : path_(fs::temp_directory_path() / (name + std::to_string(getpid())))
    {
        write_file(path_, bytes);
    }
    TempFile(const TempFile &) = delete;
    TempFile &operator=(const TempFile &) = delete;
    ~TempFile() { fs::remove(path_); }
    operator std::string() const { return path_; }

private:
    std::string path_;
};

VolumeOptions quiet()
{
    VolumeOptions options;
    options.message = [](const Message &) {};
    return options;
}

std::string text_of(const Place &p)
{
    return formatted<" @%d:%d #%d %d%c%c">(p.file, p.offset, p.record, p.sequence_number,
                                           p.type_code, p.continuation_code);
}

/// What the listing and the statistics show of an item.
std::string listing(const Item &item)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::tmpfile(), std::fclose);
    Out out(fileno(file.get()));
    if (const auto *end = item.get<FileEnd>())
        summary(out, item.place().file, end->statistics);
    else if (item.record())
        pbrief_blk(out, item.record(), item.type());
    out.flush();
    std::string text(static_cast<std::size_t>(lseek(fileno(file.get()), 0, SEEK_END)), '\0');
    return pread(fileno(file.get()), text.data(), text.size(), 0) < 0 ? "unread" : text;
}

/// Reads a volume step by step and writes down all that there is to see.
class Reader
{
public:
    Reader(const std::string &path, VolumeOptions options)
        : volume_(path, (
                            options.message = [this](const Message &m) { hear(m); }, options))
    {
    }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    bool step()
    {
        const Item *item = volume_.next();
        if (!item)
            return false;
        seen += formatted<"%d %d %d %d">(item->type(), item->length(), item->bad() ? 1 : 0,
                                         static_cast<int>(item->fields_size())) +
                text_of(item->place()) + " " + std::string(item->name()) + "\n";
        seen += listing(*item);
        seen += item->bytes();
        if (const auto *sensitivity = item->get<blk_058_t>())
            seen += std::string(sensitivity->station) + ":" + sensitivity->channel + "\n";
        for (const Dictionary dictionary : {Dictionary::data_formats, Dictionary::abbreviations})
            if (const std::string *text = volume_.text(dictionary, 2))
                seen += *text + "\n";
        return true;
    }

    std::string seen;

private:
    void hear(const Message &message)
    {
        seen += std::string(name_of(message.kind)) + text_of(message.place) + " " +
                full_text(message) + (message.item ? listing(*message.item) : "") + "\n";
    }

    Volume volume_;
};

/// Two volumes that contradict each other wherever one could take something from the other: codes
/// of dictionaries, format names, record length and format of the same channel, channels before any
/// station identifier, and what is reported once per channel.
struct TwoVolumes : testing::Test {
    const TempFile a_{"a.", sample_volume()};
    const TempFile b_{"b.", parse_recipe(R"(
records 256
header V
010  2.4|08|2024,001~2024,002~2024,003~Quarry Lake~B~
header S
058 00|+1.00000E+00|1.0000E+00|00
header A
030 Site format~0001|050|00
030 Steim2 Integer Compression Format~0002|050|00
033 002|Other sensor~
header S
050 QRL2\s| 10.000000| +20.000000|  100.0|0001|000|B~001|3210|10|2020,001~~N|XX
052 \s\s|BHZ|0000|002|~001|002| 10.000000| +20.000000|  100.0|000.0|000.0|-90.0|0001|08|2.0000E+01|0.0000E+00|0000|CG~2020,001~~N
058 00|+1.00000E+00|x.0000E+00|00
header T
data sta=QRL2 loc= chan=BHZ net=XX time=2024,061,00:00:00.0000 length=256
data sta=QRL2 loc= chan=BHZ net=XX time=2024,061,00:00:10.0000 b1000=11,1,8 length=256
)")
                                .volume()};
    const VolumeOptions a_options_ = {};
    const VolumeOptions b_options_ = [] {
        VolumeOptions options;
        options.format_aliases["Site format"] = "Steim Integer Compression Format";
        return options;
    }();

    [[nodiscard]] std::string all_of_a() const { return all_of(a_, a_options_); }
    [[nodiscard]] std::string all_of_b() const { return all_of(b_, b_options_); }
    static std::string all_of(const std::string &path, const VolumeOptions &options)
    {
        Reader reader(path, options);
        while (reader.step()) {
        }
        return reader.seen;
    }
};

TEST_F(TwoVolumes, MovedFromIsAtItsEnd)
{
    Volume first(a_, quiet());
    ASSERT_NE(first.next(), nullptr);
    Volume second = std::move(first);
    EXPECT_EQ(first.next(), nullptr); // NOLINT(bugprone-use-after-move): what it is about
    EXPECT_EQ(first.progress().bytes, 0);
    EXPECT_EQ(first.text(Dictionary::units, 1), nullptr);
    for (const Item &item : first)
        ADD_FAILURE() << item.type();
    ASSERT_NE(second.next(), nullptr);
    first = std::move(second);
    EXPECT_NE(first.next(), nullptr);
}

/// The kinds and severities of all messages about a volume, each once.
std::set<std::string> severities(const std::string &path)
{
    std::set<std::string> seen;
    VolumeOptions options;
    options.message = [&seen](const Message &message) {
        seen.insert(std::string(name_of(message.kind)) + ' ' +
                    std::string(name_of(message.severity())));
    };
    Volume volume(path, options);
    for ([[maybe_unused]] const Item &item : volume) {
    }
    return seen;
}

TEST(Messages, HaveTheSeverityOfWhatIsLost)
{
    const auto channel = [](const char *length) {
        return parse_recipe("records 512\nheader S\n"
                            "050 QRL\\s\\s| 10.000000| +20.000000|  100.0|0001|000|B~001|3210|10|"
                            "2020,001~~N|XX\n"
                            "052 \\s\\s|BHZ|0000|002|~001|002| 10.000000| +20.000000|  100.0|"
                            "000.0|000.0|-90.0|0001|" +
                            std::string(length) + "|2.0000E+01|0.0000E+00|0000|CG~2020,001~~N\n")
            .volume();
    };
    EXPECT_TRUE(severities(TempFile("v.", channel("09"))).contains("record-length-unusual remark"));
    EXPECT_TRUE(severities(TempFile("v.", channel("99"))).contains("record-length-illegal damage"));
    EXPECT_TRUE(severities(TempFile("v.", channel("x9"))).contains("bad-integer damage"));
    EXPECT_TRUE(
        severities(TempFile("v.", channel("12").substr(0, 300))).contains("input-cut damage"));
    EXPECT_EQ(severity_of(MessageKind::input_not_opened), MessageSeverity::failure);
}

TEST_F(TwoVolumes, OneAfterTheOtherAndInTurns)
{
    const std::string b = all_of_b();
    const std::string a = all_of_a();
    EXPECT_NE(a.find("Total Wasted          :      14447"), std::string::npos);
    EXPECT_NE(b.find("indicate the datatype\n        Site format"), std::string::npos);
    EXPECT_EQ(all_of_b(), b);
    EXPECT_EQ(all_of_a(), a);
    Reader in_turns_a(a_, a_options_);
    Reader in_turns_b(b_, b_options_);
    for (bool more = true; more;) {
        more = in_turns_a.step();
        more |= in_turns_b.step();
    }
    EXPECT_EQ(in_turns_a.seen, a);
    EXPECT_EQ(in_turns_b.seen, b);
}

TEST_F(TwoVolumes, InThreads)
{
    const std::string a = all_of_a();
    const std::string b = all_of_b();
    const auto read_both = [&] {
        for (int i = 0; i < 5; ++i) {
            EXPECT_EQ(all_of_a(), a);
            EXPECT_EQ(all_of_b(), b);
        }
    };
    std::thread other(read_both);
    read_both();
    other.join();
}

TEST_F(TwoVolumes, KnowFormatsFromWhatWasReadBefore)
{
    const TempFile file("quarl_pf.", "[data_type_aliases]\n"
                                     "\"Site format\" = \"Steim Integer Compression Format\"\n");
    VolumeOptions shared;
    shared.format_sources = std::make_shared<FormatSources>();
    shared.format_sources->read_parameters(file);
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(all_of(b_, shared), all_of_b());
    const std::string folder = testing::TempDir() + "volume_test." + std::to_string(getpid());
    fs::create_directory(folder);
    fs::copy_file(std::string(file), folder + "/quarl.pf");
    setenv("QUARL_PFPATH", folder.c_str(), 1); // NOLINT: no other thread is there
    VolumeOptions own;
    own.default_parameters = true;
    EXPECT_EQ(all_of(b_, own), all_of_b());
    fs::remove_all(folder);
    EXPECT_NE(all_of(b_, {}), all_of_b());
}

TEST(VolumeOptions, CountInputFilesFromTheFirstOne)
{
    const TempFile path("files.", parse_recipe("033 001|A~\n033 002|B~").volume());
    VolumeOptions options = quiet();
    options.first_file = 3;
    Volume volume(path, options);
    std::vector<int> files;
    for (const Item &item : volume)
        files.push_back(item.place().file);
    EXPECT_EQ(files, (std::vector{3, 3, 3}));
}

/// The bytes of an item of the sample volume as they stand in its file: record by record, without
/// the headers of those that a blockette crosses.
std::string bytes_in(const std::string &file, const Item &item)
{
    constexpr std::size_t Record = 4096;
    auto at = static_cast<std::size_t>(item.place().offset);
    if (item.type() == Data_Record)
        return file.substr(at, static_cast<std::size_t>(item.length()));
    std::string bytes;
    while (bytes.size() < static_cast<std::size_t>(item.length())) {
        at += at % Record == 0 ? 8 : 0;
        const std::size_t part =
            std::min(Record - at % Record, static_cast<std::size_t>(item.length()) - bytes.size());
        bytes += file.substr(at, part);
        at += part;
    }
    return bytes;
}

TEST(Item, StandsWhereItSaysWithTheBytesOfTheFile)
{
    VolumeBuilder more; // than the input's buffer holds
    for (int i = 0; i < 600; ++i)
        more.data({.samples = i, .b1000 = DataOnly()});
    const std::string file = sample_volume() + more.volume();
    const TempFile path("sample.", file);
    Volume volume(path, quiet());
    std::int64_t record = 0;
    int crossing = 0;
    for (const Item &item : volume) {
        if (item.type() == End_Of_File)
            continue;
        const Place &place = item.place();
        const bool data = item.type() == Data_Record;
        SCOPED_TRACE(item.name());
        SCOPED_TRACE(place.offset);
        EXPECT_EQ(item.bytes(), bytes_in(file, item));
        record = data ? record + 1 : place.offset / 4096 + 1;
        EXPECT_EQ(place.record, record);
        const auto header =
            static_cast<std::size_t>(place.offset - (data ? 0 : place.offset % 4096));
        EXPECT_EQ(place.sequence_number, std::stoi(file.substr(header, 6)));
        EXPECT_EQ(place.type_code, file.at(header + 6));
        EXPECT_EQ(place.continuation_code, file.at(header + 7));
        crossing += place.offset / 4096 != (place.offset + item.length() - 1) / 4096;
    }
    EXPECT_GT(crossing, 0);
    EXPECT_EQ(record, 6 + 10 + 600);
}

/// The kind and text of the Error that `f` throws.
template <class F> std::string error_of(F &&f)
{
    try {
        std::forward<F>(f)();
    } catch (const Error &error) {
        return formatted<"%s %d %s">(name_of(error.kind()), error.error(),
                                     std::string_view(error.what()));
    }
    return "none";
}

TEST(VolumeErrors, EndItAndAreThrownAgain)
{
    EXPECT_EQ(
        error_of([] { Volume("/nowhere/volume"); }),
        "input-not-opened 2 Can't open input file /nowhere/volume: No such file or directory");
    VolumeOptions options = quiet();
    options.parameter_file = "/nowhere/quarl.pf";
    EXPECT_EQ(error_of([&] { Volume("/dev/null", options); }),
              "parameter-file 0 Couldn't read parameter file /nowhere/quarl.pf.");
    options.parameter_file = {};
    options.database = "/nowhere/formats.db";
    EXPECT_EQ(error_of([&] { Volume("/dev/null", options); }).substr(0, 63),
              "database-not-opened 2 Can't open database /nowhere/formats.db: ");
    options.database = {};
    const struct {
        const char *recipe, *expected;
    } cases[] = {{"033 001|A~\ndata b1000=11,1,14 length=4096",
                  "item-too-large 0 Data blockette size = 16384: too large for internal buffer."},
                 {"033 001|A~\nheader T\n073 0251",
                  "too-many-segments 0 ERROR(parse_073) - num_segs is too large: 251"}};
    for (const auto &c : cases) {
        const TempFile path("bad.", parse_recipe(c.recipe).volume());
        Volume volume(path, options);
        EXPECT_EQ(volume.next()->type(), 33);
        EXPECT_FALSE(volume.given_up());
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(error_of([&] { (void)volume.next(); }), c.expected);
        const std::optional<FileEnd> end = volume.given_up();
        ASSERT_TRUE(end);
        EXPECT_TRUE(end->failed);
        EXPECT_EQ(end->statistics.items, 1);
    }
    std::string heard;
    FormatSources sources([&](const Message &message) { heard += message.text; });
    const TempFile bad("bad.", "a = [");
    EXPECT_EQ(error_of([&] { sources.read_parameters(bad); }),
              "parameter-file 0 Couldn't read parameter file " + std::string(bad) + ".");
    EXPECT_EQ(heard.rfind(std::string(bad) + ":1:6: ", 0), 0) << heard;
}

TEST(VolumeErrors, OfACallbackEndItToo)
{
    const TempFile path("odd.", parse_recipe("033 001|A~\n033 xyz|B~\n033 003|C~").volume());
    VolumeOptions options;
    options.message = [](const Message &) { throw std::out_of_range("enough"); };
    Volume volume(path, options);
    EXPECT_EQ(volume.next()->type(), 33);
    EXPECT_THROW((void)volume.next(), std::out_of_range);
    EXPECT_EQ(volume.next(), nullptr);
}

/// A message or another event of the reading, in words.
std::string event_of(const Message &message)
{
    return formatted<"%s|%s|%s|%d|%s|">(name_of(message.kind), message.text, message.reason,
                                        message.error, text_of(message.place)) +
           (message.item ? std::to_string(message.item->type()) + text_of(message.item->place())
                         : "no item");
}

/// Reads the input files behind `path` to the end: messages, bad blockettes, records and items, a
/// line each.
std::string events_of(const std::string &path, VolumeOptions options = {})
{
    std::string events = "\n";
    options.message = [&](const Message &m) { events += event_of(m) + "\n"; };
    options.bad_item = [&](const Item &i) { events += "bad " + std::to_string(i.type()) + "\n"; };
    options.record = [&](int number) { events += "record " + std::to_string(number) + "\n"; };
    Volume volume(path, options);
    for (const Item &item : volume) {
        events += std::to_string(item.type()) + text_of(item.place());
        if (const auto *end = item.get<FileEnd>()) {
            const Statistics &s = end->statistics;
            events += formatted<" items %d records %d bytes %d">(s.items, s.records, s.bytes);
            events += end->cut ? " cut" : "";
            events += end->failed ? " failed" : "";
            events += end->stopped ? " stopped" : "";
        }
        events += "\n";
    }
    EXPECT_EQ(volume.next(), nullptr);
    return events;
}

/// The same of input files as a tape hands them out, a read each and one of nothing between them.
std::string events_of_files(const std::vector<std::string> &files,
                            const VolumeOptions &options = {})
{
    std::array<int, 2> wires;
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, wires.data()), 0);
    for (const std::string &file : files) {
        EXPECT_EQ(send(wires[0], file.data(), file.size(), 0), std::ssize(file));
        EXPECT_EQ(send(wires[0], "", 0, 0), 0);
    }
    close(wires[0]);
    dup2(wires[1], STDIN_FILENO);
    close(wires[1]);
    return events_of("-", options);
}

TEST(VolumeEvents, ComeInOrderWithKindTextReasonPlaceAndItem)
{
    const TempFile bad("bad.", parse_recipe("records 512\nheader A\n056 \\{12x}\n"
                                            "034 xyz|\\{21M}~Metres~")
                                   .volume());
    EXPECT_EQ(events_of(bad), R"(
record 1
blockette-unknown|WARNING(parse_blk) - Unknown blockette: 56||0| @0:27 #1 1A |56 @0:8 #1 1A 
56 @0:8 #1 1A 
bad-integer|Could not convert 'xyz' to an integer||0| @0:66 #1 1A |34 @0:27 #1 1A 
text-too-long|variable string 'MMMMMMMMMMMMMMMMMMMM' exceeded 21 characters at MMMMMMMMMMMMMMMMMMMMM~Metres~||0| @0:66 #1 1A |34 @0:27 #1 1A 
blockette-bad|Error at BLK034 : 0340039xyzMMMMMMMMMMMMMMMMMMMMM~Metres~||0| @0:66 #1 1A |34 @0:27 #1 1A 
bad 34
34 @0:27 #1 1A 
-2 @0:512 #1 1A  items 2 records 1 bytes 512
)");
    EXPECT_EQ(events_of(fs::temp_directory_path()), R"(
input-read-error|input read error|Is a directory|21| @0:0 #0 0##|no item
-2 @0:0 #0 0## items 0 records 0 bytes 0 failed
)");
}

/// What programs read of blockettes beyond the listing: entries of lists that stand in the volume
/// and that it promises, their values, "bad", and the bytes that the fields should take.
std::string beyond_listing(const Item &item)
{
    std::string all;
    const auto show = [&](int held, int promised, const auto &...lists) {
        all = formatted<"%d of %d:">(held, promised);
        for (int i = 0; i < held; ++i)
            all += (formatted<" %g">(lists[i]) + ...);
    };
    if (const auto *corners = item.get<blk_056_t>())
        show(corners->num_corners, corners->num_corners_promised, corners->corner_freq,
             corners->corner_slope);
    if (const auto *polynomial = item.get<blk_062_t>())
        show(polynomial->num_coef, polynomial->num_coef_promised, polynomial->coef,
             polynomial->coef_error);
    if (const auto *gain = item.get<blk_058_t>()) {
        show(gain->num_history, gain->num_history_promised, gain->calibration_gain,
             gain->calibration_freq);
        for (const calibration_time_t &time : gain->calibration_time)
            all += formatted<" '%s'">(time.text);
    }
    return all + (item.bad() ? " bad" : "") +
           formatted<" %d/%d">(static_cast<int>(item.fields_size()), item.length());
}

TEST(Volume, ReadsBeyondTheListingWithoutAWord)
{
    const std::string r21 = "          21";
    const std::string r22 = "         -22";
    const std::string gain = "01           5           6";
    const std::string corners = "01011012";
    const std::string poly = "P01011012MB" + std::string(60, ' ');
    const struct {
        int type;
        std::string fields, expected;
    } cases[] = {
        {56, corners + "0001" + r21 + r22, "1 of 1: 21 -22 43/43"},
        {56, corners + "0003" + r21 + r22 + r21, "1 of 3: 21 -22 91/55"},
        {56, corners + "9999", "0 of 9999: 239995/19"},
        {56, corners + "-001", "0 of 0: bad 19/19"},
        {56, corners + "0002           x" + r22 + r21 + r22, "2 of 2: 0 -22 21 -22 bad 67/67"},
        {58, gain + "02" + r21 + r22 + "2020,001~" + r21 + r22 + "~",
         "2 of 2: 21 -22 21 -22 '2020,001' '' 93/93"},
        {58, gain + "99" + r21 + r22 + "~", "1 of 99: 21 -22 '' 2510/60"},
        {58, gain, "0 of 0: 35/33"},
        {58, gain + "-1", "0 of 0: bad 35/35"},
        {58, gain + "01           x" + r22 + "~", "1 of 1: 0 -22 '' bad 60/60"},
        // Three characters of a count, or four when the length says so.
        {62, poly + "001" + r22 + r21, "1 of 1: -22 21 105/105"},
        {62, poly + "001-8.39000E+01" + r21, "1 of 1: -83.9 21 105/105"},
        {62, poly + "0001" + r22 + r21, "1 of 1: -22 21 106/106"},
        {62, poly + "001" + r22, "0 of 1: 105/93"},
        {62, poly + "0100", "0 of 10: 321/82"},
        {62, poly + "001           x" + r21, "1 of 1: 0 21 bad 105/105"},
        {62, poly + "001" + r22 + "           x", "1 of 1: -22 0 bad 105/105"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.fields);
        const TempFile file("beyond.",
                            VolumeBuilder(4096).header('A').blockette(c.type, c.fields).volume());
        std::array<std::string, 2> heard;
        for (const bool unlisted : {false, true}) {
            VolumeOptions options{.unlisted = unlisted};
            options.message = [&](const Message &m) { heard.at(unlisted) += event_of(m); };
            Volume volume(file, options);
            const Item *item = volume.next();
            if (unlisted) {
                EXPECT_EQ(beyond_listing(*item), c.expected);
            }
        }
        EXPECT_EQ(heard[0], heard[1]);
    }
}

TEST(VolumeEvents, OfInputFilesAndTheirEnds)
{
    const std::vector<std::string> two = parse_recipe("records 512\nheader A\n033 001|A~\n"
                                                      "file\nheader A\n033 002|B~\n"
                                                      "data b1000=11,1,12 length=4096")
                                             .files();
    const std::string first_all = "record 1\n33 @0:8 #1 1A \n"
                                  "-2 @0:512 #1 1A  items 1 records 1 bytes 512\n";
    const std::string second = "record 1\n33 @1:8 #1 1A \nrecord 2\n";
    const std::string second_all =
        second + "-1 @1:512 #2 2D \n-2 @1:4608 #2 2D  items 2 records 2 bytes 4608\n";
    const std::string cut = "input-cut|Input ends inside logical record ";
    const VolumeOptions one_file{.one_file = true};
    const std::atomic<bool> stop = true;
    const VolumeOptions stopped{.stop = &stop};
    const std::string stop_told =
        "interrupted|Interrupted at byte 0 of input file #0||0| @0:0 #0 0##|no item\n";
    const struct {
        std::vector<std::string> files;
        std::string events;
        VolumeOptions options = {};
    } cases[] = {
        {two, first_all + second_all},
        {two, first_all, one_file},
        {two, stop_told + "-2 @0:0 #0 0## items 0 records 0 bytes 0 stopped\n", stopped},
        {{""}, ""},
        {{std::string(512, ' ')}, "record 0\n-2 @0:512 #1 0   items 0 records 1 bytes 512\n"},
        // Zeros stand for what is missing of the item that the input cuts.
        {{two[0].substr(0, 15), two[1]},
         "record 1\n" + cut +
             "#1: 15 of 512 bytes||0| @0:15 #1 1A |33 @0:8 #1 1A \n33 @0:8 #1 1A \n"
             "-2 @0:15 #1 1A  items 1 records 1 bytes 15 cut\n" +
             second_all},
        {{two[0], two[1].substr(0, 900)},
         first_all + second + cut +
             "#2: 388 of 4096 bytes||0| @1:900 #2 2D |-1 @1:512 #2 2D \n"
             "-1 @1:512 #2 2D \n-2 @1:900 #2 2D  items 2 records 2 bytes 900 cut\n"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(events_of_files(c.files, c.options), "\n" + c.events);
}

/// "LENGTH QUALITY SAMPLES MISSING" of each data record.
std::string records_of(const std::string &volume, VolumeOptions options)
{
    const TempFile file("records.", volume);
    std::string all;
    options.message = [](const Message & /*message*/) {};
    try {
        for (const Item &item : Volume(file, std::move(options)))
            if (const auto *header = item.get<blk_dh_t>())
                all += formatted<"%d %c %d %d %s|">(item.length(), header->quality_indicator,
                                                    header->nsamps, item.missing(),
                                                    item.bytes().substr(0, 8));
    } catch (const Error &error) {
        all += name_of(error.kind());
    }
    return all;
}

TEST(Volume, ReadsDataRecordsOfAnyLength)
{
    const std::string letters = "DRQM";
    for (int exponent = 7; exponent <= 20; ++exponent) {
        SCOPED_TRACE(exponent);
        VolumeBuilder volume;
        std::string expected;
        for (int i = 0; i < 4; ++i) {
            const int of_record = i == 2 ? 9 : exponent; // another length among them
            const char letter = letters[static_cast<std::size_t>(i)];
            volume.data({.seq = i + 1,
                         .quality = letter,
                         .samples = 40000 + i,
                         .length = 1 << of_record,
                         .b1000 = DataOnly{.exponent = of_record}});
            expected += formatted<"%d %c %d 0 00000%d%c |">(1 << of_record, letter, 40000 + i,
                                                            i + 1, letter);
        }
        const std::string bytes = volume.volume();
        EXPECT_EQ(records_of(bytes, {.large_records = true}), expected);
        if (exponent > 13) {
            EXPECT_EQ(records_of(bytes, {}), "item-too-large");
        }
        const std::string cut =
            records_of(bytes.substr(0, bytes.size() - 70), {.large_records = true});
        EXPECT_NE(cut.find(" 70 000004M |"), std::string::npos) << cut;
    }
    EXPECT_EQ(records_of(VolumeBuilder().data({.b1000 = DataOnly{.exponent = 21}}).volume(),
                         {.large_records = true}),
              "item-too-large");
}

} // namespace
