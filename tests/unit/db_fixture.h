// Databases for tests, and what the look-up of now makes of them.
#pragma once

#include "compose/files.h"
#include "platform/db.h"
#include "platform/elog.h"
#include "support/capture.h"

#include <array>
#include <filesystem>
#include <gtest/gtest.h>
#include <numeric>
#include <set>
#include <sqlite3.h>
#include <string>

inline const std::string Create =
    "create table seedformat (sta text, chan text, seedstart text, seedend text, seedformat text);";
inline const std::string Insert = "insert into seedformat values ('ANMO', 'BHZ', 's', 'e', 'f');";
inline const std::string Row = "ANMO|BHZ|s|e|f\n";

/// Rows of an open database, one per line, as the look-up of now shows them.
inline std::string rows_of(Dbptr db)
{
    Dbptr view = dblookup(db, "seedformat");
    int count = -1;
    EXPECT_EQ(dbquery(view, dbRECORD_COUNT, &count), 0);
    std::string rows;
    for (view.record = 0; view.record < count; ++view.record)
        for (const char *name : {"sta", "chan", "seedstart", "seedend", "seedformat"}) {
            std::array<char, 64> text{};
            EXPECT_EQ(dbgetv(view, {{name, text}}), 0);
            rows += text.data() + std::string(name == std::string("seedformat") ? "\n" : "|");
        }
    return rows;
}

/// Opens a database and reads the table twice: what was complained about, then the rows.
inline std::string outcome(const std::string &name)
{
    testing::internal::CaptureStderr();
    Dbptr db = dbinvalid();
    std::string rows;
    if (VXdbopen(name.c_str(), "r+", &db) != 0) {
        elog_complain<MessageKind::database_not_opened, "Can't open database\n">(1);
        EXPECT_EQ(db.database, dbINVALID);
    } else {
        rows = rows_of(db);
        EXPECT_EQ(rows_of(db), rows);
    }
    return testing::internal::GetCapturedStderr() + rows;
}

inline const std::string Unopened = "quarl: Can't open database: ";
inline const std::string Unread = "quarl: Can't read database table 'seedformat': ";

inline sqlite3 *run_sql(const std::string &path, const std::string &sql)
{
    sqlite3 *file = nullptr;
    char *error = nullptr;
    sqlite3_open(path.c_str(), &file);
    if (sqlite3_exec(file, sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK)
        ADD_FAILURE() << sql << ": " << error;
    return file;
}

inline void make_file(const std::string &path, const std::string &sql)
{
    sqlite3_close(run_sql(path, sql));
}

class DbTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_NE(mkdtemp(directory_.data()), nullptr); }
    void TearDown() override { std::filesystem::remove_all(directory_); }

    std::string path(const std::string &name) const { return directory_ + "/" + name; }

    /// Name, time of change and contents of every file.
    std::string files() const
    {
        std::set<std::string> found;
        for (const auto &entry : std::filesystem::directory_iterator(directory_)) {
            const auto changed = entry.last_write_time().time_since_epoch().count();
            found.insert(entry.path().string() + std::to_string(changed) + read_file(entry.path()));
        }
        return std::accumulate(found.begin(), found.end(), std::string());
    }

    std::string directory_ = testing::TempDir() + "quarl_db." + std::string(6, 'X');
};
