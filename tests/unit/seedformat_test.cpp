// Look-ups in the table seedformat, against rows gone through one by one.
#include "blockette/seed_utl.h"
#include "platform/format.h"
#include "platform/text.h"
#include "volume/seedformat.h"
#include <quarl/records.h>

#include "support/capture.h"
#include <array>
#include <filesystem>

#include <gtest/gtest.h>
#include <random>
#include <sqlite3.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr std::array Stations = {"ANMO", "FUR", "X"};
constexpr char Bhz[Channel_Id_Size] = "BHZ";
constexpr int Rows = 120;

struct Row {
    std::string sta;
    double start;
    double end;
    std::string format;

    [[nodiscard]] bool applies(const std::string &stn, double epoch) const
    {
        return sta == stn && epoch >= start && (end >= epoch || end < 0.0);
    }
};

/// A day between 1990 and 2020 as SEED time; sometimes none, sometimes one before 1970.
std::string random_day(std::mt19937 &random, bool may_be_odd)
{
    const unsigned odd = random() % 8;
    if (may_be_odd && odd < 2)
        return odd == 0 ? "" : "1969,100";
    return formatted<"%04u,%03u">(1990 + random() % 30, 1 + random() % 365);
}

/// Fills a database file with random rows; the same rows in memory, in table order.
std::vector<Row> fill(const std::string &path, std::mt19937 &random)
{
    sqlite3 *db = nullptr;
    EXPECT_EQ(sqlite3_open(path.c_str(), &db), SQLITE_OK);
    std::string sql = "create table seedformat (sta, chan, seedstart, seedend, seedformat);begin;";
    std::vector<Row> rows;
    for (int i = 0; i < Rows; ++i) {
        const std::string sta = Stations[random() % Stations.size()];
        const std::string start = random_day(random, false);
        const std::string end = random_day(random, true);
        const std::string format = formatted<"format %d">(i);
        sql += formatted<"insert into seedformat values ('%s ', 'BHZ', '%s', '%s', '%s');">(
            sta, start, end, format);
        rows.push_back({sta, seed2epoch(start.c_str()), seed2epoch(end.c_str()), format});
    }
    sql += "commit";
    EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
    return rows;
}

} // namespace

TEST(Seedformat, LastRowThenFirstRowInTableOrder)
{
    std::mt19937 random(20240229);
    const std::string path = formatted<"%sseedformat-%d.db">(testing::TempDir(), getpid());
    const std::vector<Row> rows = fill(path, random);
    ASSERT_EQ(VXdbopen(path.c_str(), "r+", &run().Db), 0);
    const Row *last = nullptr;
    int found_rows = 0;
    for (int i = 0; i < 20000; ++i) {
        const std::string station = Stations[random() % Stations.size()];
        // Mostly near a row's start or end, where one second decides.
        const Row &near = rows[random() % rows.size()];
        const double epoch =
            (random() % 2 ? near.start : near.end) + (static_cast<int>(random() % 3) - 1);
        if (!last || !last->applies(station, epoch)) {
            last = &rows.back(); // what is left behind when no row applies
            for (const Row &row : rows)
                if (row.applies(station, epoch)) {
                    last = &row;
                    break;
                }
        }
        const std::string expected = last->applies(station, epoch) ? last->format : "";
        found_rows += !expected.empty();
        char stn[Station_Size];
        copy_text(stn, station);
        ASSERT_EQ(lookup_seedformat(stn, Bhz, epoch), expected)
            << "look-up " << i << ": " << station << " at " << epoch;
    }
    EXPECT_GT(found_rows, 1000);
    char other[Station_Size] = "ANMO2";
    EXPECT_EQ(lookup_seedformat(other, Bhz, rows[0].start), "");
    std::filesystem::remove(path);
}
