// Volumes merged into an SQLite file.
#include "unit/archive_fixture.h"

#include "archive/calibration.h"
#include "archive/css_schema.h"
#include "platform/sha256.h"

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sqlite3.h>
#include <thread>

using namespace quarl;

namespace
{

/// A volume that was written on this day of 2024 and says so of its sensitivity.
SoundVolume written_on(const std::string &day, double sensitivity = 1e5)
{
    SoundVolume volume;
    volume.response.back().second = b058(0, sensitivity, 1);
    volume.edit = [day](std::string bytes) {
        const std::size_t at = bytes.find("2024,003");
        return bytes.replace(at, 8, "2024," + day);
    };
    return volume;
}

/// A volume of another station.
SoundVolume of_station(const std::string &station)
{
    SoundVolume volume;
    volume.stations[0].station = station;
    volume.station_index[0].station = station;
    for (DataRecord &record : volume.data)
        record.station = station;
    volume.series.clear();
    return volume;
}

} // namespace

TEST(Sha256, FollowsTheStandard)
{
    EXPECT_EQ(sha256(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(sha256("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(sha256("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    Sha256 million;
    for (int i = 0; i < 1000; ++i)
        million.add(std::string(i % 2 ? 900 : 1100, 'a'));
    EXPECT_EQ(million.digits(), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Calibration, CountsPowersOfTenAndOrders)
{
    struct Case {
        const char *unit;
        int order; ///< -1: no motion of the ground
        double nanometres;
    };
    for (const Case &each : {Case{"M", 0, 1e9}, Case{"m/s", 1, 1e9}, Case{"NM/S", 1, 1},
                             Case{"M/S**2", 2, 1e9}, Case{"cm/s/s", 2, 1e7}, Case{"1E-9 M/S", 1, 1},
                             Case{"10**-9*M/S**2", 2, 1}, Case{"MM", 0, 1e6}, Case{"V", -1, 0},
                             Case{"PA", -1, 0}, Case{"M/V", -1, 0}, Case{"", -1, 0}}) {
        const archive::Motion motion = archive::motion_of(each.unit);
        EXPECT_EQ(motion.is_motion, each.order >= 0) << each.unit;
        if (motion.is_motion) {
            EXPECT_EQ(motion.order, each.order) << each.unit;
            EXPECT_NEAR(motion.nanometres / each.nanometres, 1, 1e-12) << each.unit;
        }
    }
    EXPECT_EQ(archive::calibration_of({true, 2, 0}, "M").calib, 5e8);
    EXPECT_EQ(archive::calibration_of({true, 2, 0}, "M/S").calib, 1.0); // not given
    EXPECT_EQ(archive::calibration_of({true, 4, 0}, "V").calib, 0.25);
    EXPECT_EQ(archive::calibration_of({true, 4, 2}, "V").calper, 0.5);
}

TEST_F(ArchiveTest, KeepsWhatAVolumeSays)
{
    SoundVolume volume;
    volume.stations[0].lat = 47.5;
    volume.stations[0].elev = 250;
    volume.stations[0].end = "2300,001";
    volume.channels[0].location = "00";
    volume.channels[0].depth = 30;
    volume.dictionaries.emplace_back(33, b033(2, "STS-2 of the test"));
    volume.channels[0].instrument = 2;
    volume.dictionaries.emplace_back(32, b032(1, "An author with a long name", "", ""));
    for (DataRecord &record : volume.data)
        record.location = "00";
    volume.data.push_back(
        {.location = "00", .time = "2024,001,00:00:30.0000", .samples = 40, .b1000 = DataOnly{}});
    merge({put("a.seed", volume)}, "0");
    EXPECT_EQ(rows("select net, netname from network", 2), "XX|Test network\n");
    EXPECT_EQ(rows("select sta, ondate, offdate, lat, elev, staname, statype, refsta from site", 8),
              "QRL|2020001|2286324|47.5|0.25|Test site|ss|QRL\n");
    EXPECT_EQ(rows("select chan, chanid, edepth, vang, ctype, descrip from sitechan", 6),
              "BHZ00|1|0.03|0.0|n|STS-2 of the test\n");
    EXPECT_EQ(rows("select chanid, inid, endtime, calper, instant from sensor", 5),
              "1|1|9999999999.999|1.0|y\n");
    // 1e9 / (1e5 counts s/m * 2 pi)
    EXPECT_EQ(rows("select instype, band, samprate, round(ncalib, 4), ncalper from instrument", 5),
              "STS-2|b|20.0|1591.5494|1.0\n");
    EXPECT_EQ(rows("select chan, time, endtime, nsamp, foff, chanid, round(calib, 4), jdate"
                   " from wfdisc order by wfid",
                   8),
              "BHZ00|1704067200.0|1704067219.95|400|16384|1|1591.5494|2024001\n"
              "BHZ00|1704067230.0|1704067231.95|40|17408|1|1591.5494|2024001\n");
    EXPECT_EQ(rows("select sta, chan, seedstart, seedend, seedformat from seedformat", 5),
              "QRL|BHZ|2020,001||Steim2 Integer Compression Format\n");
    EXPECT_EQ(rows("select location, sensitivity, units, chanid from quarl_channel", 4),
              "00|100000.0|M/S|1\n");
    EXPECT_EQ(rows("select label, complete, stations, epochs, samples from quarl_volume", 5),
              "Label|1|1|1|440\n");
    EXPECT_FALSE(std::filesystem::exists(database_ + "-wal"));
    EXPECT_FALSE(std::filesystem::exists(database_ + "-shm"));
}

TEST_F(ArchiveTest, KeepsEventsOnce)
{
    const auto with_events = [](const char *source, bool has_origin) {
        SoundVolume volume;
        volume.dictionaries.emplace_back(32, b032(1, source, "", ""));
        volume.edit = [=](const std::string &bytes) {
            VolumeBuilder events(4096);
            events.header('T');
            const auto phase = [&](const char *time) {
                events.blockette(72, b072({.station = "QRL",
                                           .channel = "BHZ",
                                           .time = time,
                                           .amplitude = 5,
                                           .period = 0.5,
                                           .snr = 2,
                                           .phase = "P",
                                           .source = 1,
                                           .network = "XX"}));
            };
            phase("2024,001,00:00:01.0000"); // in front of any origin
            if (has_origin)
                events.blockette(71, b071({.time = "2024,001,00:00:00.5000",
                                           .source = 1,
                                           .lat = 46.5,
                                           .lon = 8.25,
                                           .depth = 8.5,
                                           .magnitudes = {{5.5, "mb", 1}, {6.5, "MS", 1}},
                                           .region = 36,
                                           .location = 544,
                                           .region_name = "SWITZERLAND"}));
            phase("2024,001,00:00:02.0000");
            return bytes + events.volume();
        };
        return volume;
    };
    const std::string a = put("a.seed", with_events("Bulletin", true));
    merge({a, put("b.seed", with_events("Bulletin", true))});
    EXPECT_EQ(rows("select orid, evid, lat, lon, depth, time, auth, mb, ms, ml, mbid, mlid, grn,"
                   " srn, jdate from origin",
                   15),
              "1|1|46.5|8.25|8.5|1704067200.5|Bulletin|5.5|6.5|-999.0|2|-1|544|36|2024001\n");
    EXPECT_EQ(rows("select evid, prefor, auth from event", 3), "1|1|Bulletin\n");
    EXPECT_EQ(rows("select orid, evid, magtype, magnitude from netmag order by magid", 4),
              "1|1|MS|6.5\n1|1|mb|5.5\n");
    EXPECT_EQ(rows("select sta, chan, time, iphase, amp, per, snr, auth, arid from arrival"
                   " order by time",
                   9),
              "QRL|BHZ|1704067201.0|P|5.0|0.5|2.0|Bulletin|1\n"
              "QRL|BHZ|1704067202.0|P|5.0|0.5|2.0|Bulletin|2\n");
    EXPECT_EQ(rows("select arid, orid, sta, phase from assoc", 4), "2|1|QRL|P\n");
    merge({put("c.seed", with_events("Other", true))});
    EXPECT_EQ(rows("select count(*) from event", 1), "2\n");
    EXPECT_EQ(quarl_db({"--remove", database_, a, path("b.seed")}).status, "0");
    EXPECT_EQ(rows("select orid, auth from origin", 2), "2|Other\n");
    EXPECT_EQ(rows("select arid, orid from assoc", 2), "4|2\n");
    EXPECT_EQ(rows("select count(*) from netmag", 1), "2\n");
}

TEST_F(ArchiveTest, LaterVolumeWinsAndGivesBack)
{
    const std::string early = put("early.seed", written_on("003", 1e5));
    const std::string late = put("late.seed", written_on("009", 2e5));
    const std::string middle = put("middle.seed", written_on("005", 3e5));
    merge({early});
    const std::string numbers = rows("select chanid, inid from sensor", 2);
    const std::string before = contents();
    EXPECT_NE(merge({late, middle}, "1").find("XX_QRL__BHZ 2020,001: sensitivity"),
              std::string::npos);
    const std::string sensitivity = "select sensitivity from quarl_channel";
    EXPECT_EQ(rows(sensitivity, 1), "200000.0\n");
    EXPECT_EQ(rows("select v.path from quarl_finding f join quarl_volume v on v.volid = f.volid"
                   " where rule = 'volumes-contradict' order by 1",
                   1),
              late + "\n" + middle + "\n");
    EXPECT_EQ(quarl_db({"--remove", database_, late}).status, "0");
    EXPECT_EQ(rows(sensitivity, 1), "300000.0\n");
    EXPECT_EQ(quarl_db({"--remove", database_, middle}).status, "0");
    EXPECT_EQ(contents(), before);
    EXPECT_EQ(rows("select chanid, inid from sensor", 2), numbers);
    EXPECT_EQ(quarl_db({"--remove", database_, early}).status, "0");
    EXPECT_EQ(contents(), "");
    EXPECT_EQ(rows("select count(*) from quarl_epoch", 1), "0\n");
}

TEST_F(ArchiveTest, SharesAndExtends)
{
    SoundVolume more = written_on("004");
    more.channels.push_back({.channel = "LHZ", .exponent = 9, .rate = 1});
    more.channels[0].end = {};
    merge({put("a.seed", written_on("003")), put("b.seed", more)});
    EXPECT_EQ(rows("select channel from quarl_channel order by 1", 1), "BHZ\nLHZ\n");
    EXPECT_EQ(rows("select count(*) from quarl_row where tablename = 'quarl_epoch'", 1), "3\n");
    // Two networks may have one code, and two locations of a channel two formats.
    SoundVolume twin = written_on("003");
    twin.stations[0].network = "YY";
    twin.channels[0].location = "10";
    twin.channels[0].format = 2;
    twin.dictionaries.emplace_back(30, b030("Steim1 Integer Compression Format", 2, 50, {}));
    twin.data.clear();
    twin.series.clear();
    const std::string told = merge({put("twin.seed", twin)});
    EXPECT_NE(told.find("QRL: site has one row for the networks 'XX' and 'YY'"), std::string::npos);
    EXPECT_NE(told.find("QRL BHZ: locations or networks have the formats 'Steim1"),
              std::string::npos);
    EXPECT_EQ(rows("select network from quarl_channel where channel = 'BHZ' order by 1", 1),
              "XX\nYY\n");
    // Two epochs that begin on one day are one row of CSS 3.0, the last.
    SoundVolume day = of_station("DAY");
    day.stations.push_back(day.stations[0]);
    day.stations[0].end = "2020,001,12:00:00";
    day.stations[0].name = "Before";
    day.stations[1].start = "2020,001,12:00:00";
    merge({put("c.seed", day)});
    EXPECT_EQ(rows("select staname from site where sta = 'DAY'", 1), "Test site\n");
    EXPECT_EQ(rows("select count(*) from quarl_station where sta = 'DAY'", 1), "2\n");
}

TEST_F(ArchiveTest, KnowsVolumesAgain)
{
    namespace fs = std::filesystem;
    const std::string a = put("in/a.seed", of_station("AAA"));
    put("in/b.seed", of_station("BBB"));
    write_file(path("in/notes.txt"), "Nothing of SEED stands here.\n");
    EXPECT_NE(merge({path("in")}).find("2 volumes added, 1 other file passed over"),
              std::string::npos);
    const std::string before = contents();
    EXPECT_NE(merge({path("in"), a}).find("0 volumes added, 3 unchanged"), std::string::npos);
    fs::last_write_time(a, fs::last_write_time(a) + std::chrono::seconds(5));
    EXPECT_NE(merge({a}).find("0 volumes added, 1 unchanged"), std::string::npos);
    EXPECT_EQ(contents(), before);
    const std::string id = "select volid from quarl_volume where path = '" + a + "'";
    const std::string number = rows(id, 1);
    fs::rename(a, path("moved.seed"));
    EXPECT_NE(merge({path("moved.seed")}).find("0 volumes added, 1 moved"), std::string::npos);
    EXPECT_EQ(rows("select dir, dfile from wfdisc where sta = 'AAA'", 2),
              directory_ + "|moved.seed\n");
    fs::rename(path("moved.seed"), a);
    merge({a});
    EXPECT_EQ(contents(), before);
    EXPECT_EQ(rows(id, 1), number);
    SoundVolume changed = of_station("AAA");
    changed.stations[0].lat = 10;
    put("in/a.seed", changed);
    EXPECT_NE(merge({a}).find("0 volumes added, 1 changed"), std::string::npos);
    EXPECT_EQ(rows("select lat from site where sta = 'AAA'", 1), "10.0\n");
    EXPECT_EQ(rows(id, 1), number);
    fs::remove(a);
    EXPECT_EQ(quarl_db({"--list", database_}).out, a + "\n" + path("in/b.seed") + "\n");
    EXPECT_EQ(quarl_db({"-v", "--prune", database_}).out, "removed " + a + "\n");
    EXPECT_EQ(rows("select sta from site", 1), "BBB\n");
}

TEST_F(ArchiveTest, TellsWhatItCannotRead)
{
    SoundVolume cut;
    cut.edit = [](const std::string &bytes) { return bytes.substr(0, bytes.size() - 300); };
    EXPECT_NE(merge({put("cut.seed", cut)}, "1").find("cut.seed: is cut"), std::string::npos);
    EXPECT_EQ(rows("select complete from quarl_volume", 1), "0\n");
    write_file(path("text"), "Nothing of SEED stands here.\n");
    EXPECT_NE(merge({path("text")}, "1").find("there are no SEED records in it"),
              std::string::npos);
    EXPECT_NE(merge({path("none")}, "1").find("No such file"), std::string::npos);
    EXPECT_EQ(quarl_db({path("text"), path("cut.seed")}).status, "2");
    EXPECT_EQ(read_file(path("text")), "Nothing of SEED stands here.\n");
    EXPECT_EQ(quarl_db({"--list", path("none.db")}).status, "2");
    EXPECT_FALSE(std::filesystem::exists(path("none.db")));
    EXPECT_EQ(quarl_db({database_}).status, "2");
    EXPECT_EQ(quarl_db({"-j", "0", database_, "x"}).status, "2");
}

TEST_F(ArchiveTest, LeavesTablesOfOthersAlone)
{
    sqlite3 *file = nullptr;
    sqlite3_open(database_.c_str(), &file);
    sqlite3_exec(file, "create table site (sta text)", nullptr, nullptr, nullptr);
    sqlite3_close(file);
    const std::string before = read_file(database_);
    const std::string volume = put("a.seed", {});
    EXPECT_NE(merge({volume}, "2").find("a table 'site' of somebody else's"), std::string::npos);
    EXPECT_EQ(read_file(database_), before);
    // A table of formats may stand there, and rows in it stay.
    std::filesystem::remove(database_);
    sqlite3_open(database_.c_str(), &file);
    sqlite3_exec(file,
                 "create table seedformat (sta text, chan text, seedstart text, seedend text,"
                 " seedformat text); insert into seedformat values ('QRL', 'BHZ', '2020,001', '',"
                 " 'Steim2 Integer Compression Format'), ('ABC', 'BHZ', '', '', 'Steim1')",
                 nullptr, nullptr, nullptr);
    sqlite3_close(file);
    merge({volume});
    EXPECT_EQ(quarl_db({"--remove", database_, volume}).status, "0");
    EXPECT_EQ(rows("select sta from seedformat order by 1", 1), "ABC\nQRL\n");
}

TEST_F(ArchiveTest, KeepsTextsAsTexts)
{
    const std::string text = "'); drop table site; -- \" \\ :given $1 %s";
    SoundVolume volume;
    volume.stations[0].name = text;
    volume.stations[0].station = "a'b\"c";
    volume.station_index[0].station = "a'b\"c";
    volume.stations[0].network = "';";
    volume.channels[0].comment = "it's :given \xE9\x01";
    volume.dictionaries[2].second = b033(1, text);
    volume.dictionaries.emplace_back(32, b032(1, text, "", ""));
    volume.data.clear();
    volume.series.clear();
    merge({put("it's; \"a\".seed", volume)});
    EXPECT_EQ(rows("select sta, staname from site", 2), "a'b\"c|" + text + "\n");
    EXPECT_EQ(rows("select net, netname from network", 2), "';|" + text + "\n");
    EXPECT_EQ(rows("select count(*) from quarl_volume where path like '%it''s; \"a\".seed'", 1),
              "1\n");
}

TEST_F(ArchiveTest, CutsTextsToTheirColumns)
{
    SoundVolume volume;
    volume.stations[0].name = std::string(60, 'N');
    const std::string told = merge({put("a.seed", volume)});
    EXPECT_NE(told.find("XX_QRL: staname is cut to 50 characters"), std::string::npos);
    EXPECT_EQ(rows("select rule, severity from quarl_finding where rule = 'text-cut'", 2),
              "text-cut|note\n");
    for (const archive::Table &table : archive::css_tables())
        for (const archive::Column &column : table.columns) {
            if (column.kind == archive::Column::Kind::text) {
                EXPECT_EQ(rows("select count(*) from " + table.name + " where length(" +
                                   column.name + ") > " + std::to_string(column.width),
                               1),
                          "0\n")
                    << table.name << "." << column.name;
            }
        }
}

TEST_F(ArchiveTest, FormatsAreFoundByTheListing)
{
    SoundVolume dataless;
    dataless.data.clear();
    dataless.series.clear();
    merge({put("a.seed", dataless)});
    const auto said = [&](const char *channel) {
        const DataRecord record{.channel = channel, .length = 4096};
        write_file(path("data"), VolumeBuilder().data(record).volume());
        return run(QUARL_PROGRAM, {"-d", database_, path("data")}, STDIN_FILENO).err;
    };
    EXPECT_EQ(said("BHZ"), "");
    EXPECT_NE(said("LHZ").find("No data format for 'QRL', 'LHZ'"), std::string::npos);
}

TEST_F(ArchiveTest, KillsLeaveWholeVolumes)
{
    std::vector<std::string> volumes;
    for (char c = 'A'; c < 'A' + 24; ++c)
        volumes.push_back(put(std::string("in/") + c, of_station(std::string("S") + c)));
    const std::string whole = (merge({path("in")}), contents());
    const std::string of_one = "select count(*) from quarl_row group by volid";
    const std::string each = rows(of_one, 1).substr(0, rows(of_one, 1).find('\n') + 1);
    const int null = open("/dev/null", O_RDWR);
    for (int i = 0; i < 50; ++i) {
        for (const char *end : {"", "-wal", "-shm", "-journal"})
            std::filesystem::remove(database_ + end);
        const pid_t child = start(program(), {database_, path("in")}, {null, null, null});
        std::this_thread::sleep_for(std::chrono::milliseconds(2 * i));
        kill(child, SIGKILL);
        wait_for(child);
        if (std::filesystem::exists(database_) && quarl_db({"--list", database_}).status == "0") {
            std::string expected;
            const std::string found = rows(of_one, 1);
            for (std::size_t at = 0; at < found.size(); at += each.size())
                expected += each;
            ASSERT_EQ(found, expected) << i;
        }
    }
    close(null);
    merge({path("in")});
    EXPECT_EQ(contents(), whole);
    EXPECT_EQ(rows("pragma integrity_check", 1), "ok\n");
}

TEST_F(ArchiveTest, WritersTakeTurns)
{
    for (char c = 'A'; c < 'A' + 24; ++c)
        put(std::string("in/") + c, of_station(std::string("S") + c));
    const std::string whole = (merge({path("in")}), contents());
    std::filesystem::remove(database_);
    const int null = open("/dev/null", O_RDWR);
    std::vector<pid_t> children;
    children.reserve(3);
    for (int i = 0; i < 3; ++i)
        children.push_back(start(program(), {database_, path("in")}, {null, null, null}));
    for (const pid_t child : children)
        EXPECT_EQ(wait_for(child), "0");
    close(null);
    EXPECT_EQ(contents(), whole);
}
