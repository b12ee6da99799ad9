// Volumes merged into PostgreSQL, in a schema of their own.
#include "unit/archive_fixture.h"

#include <csignal>
#include <fcntl.h>
#include <regex>
#include <thread>

using namespace quarl;

namespace
{

class PostgresArchiveTest : public ArchiveTest
{
protected:
    void SetUp() override
    {
        const char *server = std::getenv("QUARL_TEST_POSTGRES");
        if (server == nullptr)
            GTEST_SKIP() << "no PostgreSQL server";
        ArchiveTest::SetUp();
        file_ = database_;
        server_ = server;
        schema_ = "archive_" + std::to_string(getpid());
        on_server("create schema " + schema_);
        database_ = server_ + "&options=-csearch_path%3D" + schema_;
        for (char c = 'A'; c < 'A' + 24; ++c)
            put_station(std::string("S") + c);
    }
    void TearDown() override
    {
        if (server_.empty())
            return;
        on_server("drop schema " + schema_ + " cascade");
        ArchiveTest::TearDown();
    }

    void on_server(const std::string &query) const
    {
        DatabaseWriter(server_, DatabaseWriter::Missing::refused).run(query);
    }
    void put_station(const std::string &station) const
    {
        SoundVolume volume;
        volume.stations[0].station = station;
        volume.station_index[0].station = station;
        volume.stations[0].name = "It's \"" + station + "\" :given $1";
        for (DataRecord &record : volume.data)
            record.station = station;
        volume.series.clear();
        put("in/" + station, volume);
    }
    /// What the same volumes are in an SQLite file.
    std::string in_file()
    {
        std::swap(database_, file_);
        merge({path("in")});
        std::string all = contents();
        std::swap(database_, file_);
        return all;
    }
    /// The databases write whole numbers in their ways.
    static std::string normal(const std::string &text)
    {
        return std::regex_replace(text, std::regex("\\.0(?=[|\n])"), "");
    }

    std::string file_;
    std::string server_;
    std::string schema_;
};

TEST_F(PostgresArchiveTest, HoldsWhatAFileHolds)
{
    merge({path("in")});
    const std::string all = contents();
    EXPECT_EQ(normal(all), normal(in_file()));
    EXPECT_NE(merge({path("in")}).find("0 volumes added, 24 unchanged"), std::string::npos);
    const std::string numbers = rows("select sta, chanid from sitechan order by 1", 2);
    SoundVolume other;
    other.stations[0].station = other.station_index[0].station = "SA";
    other.response.back().second = b058(0, 3e5, 1);
    other.data.clear();
    other.series.clear();
    const std::string rival = put("rival", other);
    EXPECT_NE(merge({rival}, "1").find("XX_SA__BHZ 2020,001: sensitivity 300000 here, 100000"),
              std::string::npos);
    std::filesystem::rename(path("in/SB"), path("moved"));
    merge({path("moved")});
    EXPECT_EQ(rows("select dfile from wfdisc where sta = 'SB'", 1), "moved\n");
    std::filesystem::rename(path("moved"), path("in/SB"));
    merge({path("in/SB")});
    EXPECT_EQ(quarl_db({"--remove", database_, rival}).status, "0");
    EXPECT_EQ(contents(), all);
    EXPECT_EQ(rows("select sta, chanid from sitechan order by 1", 2), numbers);
}

TEST_F(PostgresArchiveTest, FourRunsAreAsOne)
{
    const int null = open("/dev/null", O_RDWR);
    std::vector<pid_t> children;
    children.reserve(4);
    for (int i = 0; i < 4; ++i)
        children.push_back(
            start(program(), {"-j", "2", database_, path("in")}, {null, null, null}));
    for (const pid_t child : children)
        EXPECT_EQ(wait_for(child), "0");
    EXPECT_EQ(normal(contents()), normal(in_file()));
    for (int i = 0; i < 5; ++i) {
        for (const std::string station : {"SA", "SB", "SC"})
            EXPECT_EQ(quarl_db({"--remove", database_, path("in/" + station)}).status, "0");
        const pid_t child = start(program(), {database_, path("in")}, {null, null, null});
        std::this_thread::sleep_for(std::chrono::milliseconds(20 * i));
        kill(child, SIGKILL);
        wait_for(child);
        merge({path("in")});
        ASSERT_EQ(normal(contents()), normal(in_file())) << i;
    }
    close(null);
}

TEST_F(PostgresArchiveTest, TablesOfOthersAndPasswords)
{
    on_server("create table " + schema_ + ".site (sta text)");
    EXPECT_NE(merge({path("in")}, "2").find("a table 'site' of somebody else's"),
              std::string::npos);
    database_ = "postgresql://quarl:s3cret@/nowhere?host=/nowhere";
    const std::string said = merge({path("in")}, "2");
    EXPECT_NE(said.find("quarl:***@"), std::string::npos) << said;
    EXPECT_EQ(said.find("s3cret"), std::string::npos);
}

} // namespace
