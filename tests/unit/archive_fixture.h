// Archives for tests: volumes in a folder of their own, the program run over them, and what stands
// in the database then.
#pragma once

#include "compose/files.h"
#include "platform/db_writer.h"
#include "support/check.h"
#include "support/process.h"

#include <cstdlib>
#include <filesystem>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

class ArchiveTest : public testing::Test
{
protected:
    void SetUp() override
    {
        std::string made = testing::TempDir() + "quarl_archive.XXXXXX";
        ASSERT_NE(mkdtemp(made.data()), nullptr);
        directory_ = std::filesystem::canonical(made);
        database_ = path("archive.db");
    }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    [[nodiscard]] std::string path(const std::string &name) const
    {
        return directory_ + "/" + name;
    }
    std::string put(const std::string &name, const SoundVolume &volume) const
    {
        std::filesystem::create_directories(std::filesystem::path(path(name)).parent_path());
        write_file(path(name), volume.bytes());
        return path(name);
    }
    [[nodiscard]] static std::string program()
    {
        return std::filesystem::path(QUARL_PROGRAM).parent_path() / "quarl-db";
    }
    static Outcome quarl_db(const std::vector<std::string> &args)
    {
        return run(program(), args, STDIN_FILENO);
    }
    /// Merges, expecting this status; what was said.
    std::string merge(const std::vector<std::string> &volumes, const std::string &status = "0")
    {
        std::vector<std::string> args = {"-j", "2", database_};
        args.insert(args.end(), volumes.begin(), volumes.end());
        const Outcome outcome = quarl_db(args);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        return outcome.err;
    }
    /// "a|b\n" for each row; the query has to order them.
    std::string rows(const std::string &query, std::size_t columns)
    {
        quarl::DatabaseWriter database(database_, quarl::DatabaseWriter::Missing::refused);
        const quarl::TextRows found = database.ask(query, columns);
        std::string all;
        for (std::size_t row = 0; row < found.count(); ++row)
            for (std::size_t i = 0; i < columns; ++i)
                all.append(found.field(row, i)).append(i + 1 < columns ? "|" : "\n");
        return all;
    }
    /// What the archive holds, whatever the numbers and the order in which it came.
    std::string contents()
    {
        return rows("select net, netname from network order by net", 2) +
               rows("select net, sta from affiliation order by net, sta", 2) +
               rows("select sta, ondate, offdate, lat, staname from site order by sta, ondate", 5) +
               rows("select sta, chan, ondate, descrip from sitechan order by 1, 2, 3", 4) +
               rows("select s.sta, s.chan, s.time, s.endtime, i.insname, i.samprate, c.ondate"
                    " from sensor s left join instrument i on i.inid = s.inid"
                    " left join sitechan c on c.chanid = s.chanid order by 1, 2, 3, 4",
                    7) +
               rows("select d.sta, d.chan, d.time, d.nsamp, d.dfile, d.foff, d.samprate, c.ondate"
                    " from wfdisc d left join sitechan c on c.chanid = d.chanid"
                    " order by d.dfile, d.foff",
                    8) +
               rows("select sta, chan, seedstart, seedend, seedformat from seedformat"
                    " order by 1, 2, 3, 4, 5",
                    5) +
               rows("select network, station, location, channel, starttime, endtime, rate,"
                    " sensitivity, units from quarl_channel order by 1, 2, 3, 4, 5",
                    9) +
               rows("select v.path, r.tablename, count(*) from quarl_row r"
                    " join quarl_volume v on v.volid = r.volid group by v.path, r.tablename"
                    " order by 1, 2",
                    3) +
               rows("select v.path, f.rule, f.subject, count(*) from quarl_finding f"
                    " join quarl_volume v on v.volid = f.volid"
                    " where f.rule <> 'volumes-contradict' group by 1, 2, 3 order by 1, 2, 3",
                    4);
    }

    std::string directory_;
    std::string database_;
};
