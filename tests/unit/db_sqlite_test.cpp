// SQLite files as their writers leave them: what is committed is read, and nothing is written.
#include "db_fixture.h"

#include <atomic>
#include <csignal>
#include <functional>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace
{

namespace fs = std::filesystem;

/// Starts a process that runs some SQL and keeps the file open until it is killed.
pid_t start_writer(const std::string &path, const std::string &sql)
{
    const pid_t writer = fork();
    if (writer == 0) {
        run_sql(path, sql);
        raise(SIGSTOP);
    }
    waitpid(writer, nullptr, WUNTRACED);
    return writer;
}

void end_writer(pid_t writer)
{
    kill(writer, SIGKILL);
    waitpid(writer, nullptr, 0);
}

using Change = std::function<void(const std::string &path)>;

Change drop(const std::string &end)
{
    return [end](const std::string &path) { ASSERT_TRUE(fs::remove(path + end)); };
}

Change put(const std::string &end, const std::string &bytes, std::size_t at = 0)
{
    return [end, bytes, at](const std::string &path) {
        std::string all = fs::exists(path + end) ? read_file(path + end) : "";
        all.resize(std::max(all.size(), at + bytes.size()));
        write_file(path + end, all.replace(at, bytes.size(), bytes));
    };
}

const std::string Made = Create + Insert;
const std::string Log = "pragma journal_mode = wal;";
/// A change that goes on, and is in the files already.
const std::string Half = "pragma cache_size = 1; pragma synchronous = full; begin; delete from"
                         " seedformat; with recursive n(i) as (select 1 union all select i + 1 from"
                         " n where i < 300) insert into seedformat select 'X', 'Y', 's', 'e',"
                         " hex(randomblob(200)) from n;";
const std::string Hot = Unopened + "a program ended while it changed the file (hot journal): run"
                                   " 'sqlite3 FILE .tables' once to recover it\n";

enum Writer { Killed, Lives };

struct State {
    std::string made;    ///< by a writer that has closed the file
    std::string written; ///< by one that was killed, or has it open
    Writer writer;
    std::vector<Change> changes;
    std::string expected;
};

const State States[] = {
    {Made, "", Killed, {}, Row},
    {Made, Insert + "begin;" + Insert, Lives, {}, Row + Row},
    {Made, "pragma synchronous = off; begin;" + Insert, Lives, {}, Row},
    {Made, Half, Killed, {}, Hot},
    {Made, Half, Killed, {put("-wal", "")}, Hot},
    {Made, Half, Killed, {put("", "\2\2", 18)}, Hot},
    {"",
     Half.substr(0, Half.find("delete")) + Create + Half.substr(Half.find("with")),
     Killed,
     {},
     Hot},
    {Made, "pragma journal_mode = persist;" + Insert, Killed, {}, Row + Row},
    {Log + Made, "", Killed, {}, Row},
    {Log + Made, "", Killed, {put("-wal", "")}, Row},
    {Log + Made, "", Killed, {put("-shm", "stale")}, Row},
    {Log + Made,
     "",
     Killed,
     {put("-wal", std::string(99, 'x')), put("-shm", std::string(99, 'x'))},
     Row},
    {Log + Made, "", Killed, {put("-wal", std::string(99, 'x'))}, Row},
    {Log + Made, Insert, Lives, {}, Row + Row},
    {Log + Made, Insert, Lives, {put("-shm", std::string(40, 'x'))}, Row + Row},
    {Log + Made, Insert + Half, Lives, {}, Row + Row},
    {Log + Made, Insert + Half, Killed, {}, Row + Row},
    {Log + Made, Insert + Half, Killed, {drop("-shm")}, Row + Row},
    {Log + Made, Insert + Half, Killed, {drop("-shm"), put("", "\1\1", 18)}, Row + Row},
    {Log + Made, Insert + Half, Killed, {drop("-wal")}, Row},
    {Log + Made, Half, Lives, {}, Row},
    {Log + Made, Half, Killed, {drop("-shm")}, Row},
    {Log + Made, Insert + "pragma wal_checkpoint;", Lives, {}, Row + Row},
    {Log + Made, Insert + "pragma wal_checkpoint;" + Half, Lives, {}, Row + Row},
    {Log + Made,
     Insert + "pragma wal_checkpoint;" + Insert,
     Killed,
     {drop("-shm")},
     Row + Row + Row},
    {Log + Made, "pragma locking_mode = exclusive;" + Insert, Killed, {}, Row + Row},
};

TEST_F(DbTest, SqliteFilesAsTheyOccur)
{
    std::vector<pid_t> writers;
    std::size_t made = 0;
    for (const State &state : States) {
        const std::string file = path(std::to_string(made++));
        make_file(file, state.made);
        writers.push_back(start_writer(file, state.written));
        if (state.writer == Killed) {
            end_writer(writers.back());
            writers.pop_back();
        }
        for (const Change &change : state.changes)
            change(file);
    }
    const std::string before = files();
    const auto read_all = [&] {
        for (std::size_t i = 0; i < made; ++i)
            EXPECT_EQ(outcome(path(std::to_string(i))), States[i].expected) << i;
        EXPECT_EQ(files(), before);
    };
    read_all();
    for (const auto &entry : fs::directory_iterator(directory_))
        fs::permissions(entry.path(), fs::perms(0444));
    fs::permissions(directory_, fs::perms(0555));
    const uid_t user = geteuid();
    ASSERT_EQ(user == 0 ? seteuid(65534) : 0, 0);
    read_all();
    ASSERT_EQ(seteuid(user), 0);
    fs::permissions(directory_, fs::perms(0755));
    for (const pid_t writer : writers)
        end_writer(writer);
}

TEST_F(DbTest, WaitsForAWriter)
{
    const std::vector<Change> cases[] = {{}, {put("-wal", "")}};
    for (const auto &changes : cases) {
        make_file(path("db"), Made);
        for (const Change &change : changes)
            change(path("db"));
        const pid_t writer = start_writer(path("db"), "begin exclusive;");
        std::atomic<bool> ended = false;
        std::thread end([writer, &ended] {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
            ended = true;
            end_writer(writer);
        });
        EXPECT_EQ(outcome(path("db")), Row);
        EXPECT_TRUE(ended);
        end.join();
        fs::remove(path("db"));
    }
}

std::function<void()> Meanwhile; ///< what the SQL function meanwhile() does when it is next called

int add_meanwhile(sqlite3 *db, char ** /*error*/, const sqlite3_api_routines * /*api*/)
{
    const auto run = [](sqlite3_context *context, int, sqlite3_value **) {
        if (const auto act = std::exchange(Meanwhile, {}))
            act();
        sqlite3_result_null(context);
    };
    return sqlite3_create_function(db, "meanwhile", 0, SQLITE_UTF8, nullptr, run, nullptr, nullptr);
}

/// Others begin to write where no lock stops them, when the first of many pages has been read.
TEST_F(DbTest, OneStateOfTheFileIsRead)
{
    const auto extension = reinterpret_cast<void (*)()>(add_meanwhile);
    sqlite3_auto_extension(extension);
    // What another program has done before, and what is read.
    const std::pair<std::string, std::string> cases[] = {
        {"", "new"},
        {"select sta from raw;", "old"},
        {"create table other (more);", "old"},
        {"update raw set sta = 'mid'; pragma wal_checkpoint;", "new"}};
    for (const auto &[before, expected] : cases) {
        fs::remove(path("db"));
        make_file(path("db"), Log + "create table raw (sta, more); create view seedformat as select"
                                    " sta, meanwhile() as chan, '' as seedstart, '' as seedend, ''"
                                    " as seedformat from raw; with recursive n(i) as (select 1"
                                    " union all select i + 1 from n where i < 300) insert into raw"
                                    " select 'old', hex(randomblob(400)) from n;");
        const pid_t other = before.empty() ? 0 : start_writer(path("db"), before);
        Meanwhile = [this] {
            const std::string change = " \"update raw set sta = 'new'; pragma wal_checkpoint\"";
            EXPECT_EQ(std::system(("sqlite3 " + path("db") + change + " >" + path("out")).c_str()),
                      0);
        };
        std::string rows;
        for (int i = 0; i < 300; ++i)
            rows += expected + "||||\n";
        EXPECT_EQ(outcome(path("db")), rows) << before;
        EXPECT_FALSE(Meanwhile);
        if (other > 0)
            end_writer(other);
    }
    sqlite3_cancel_auto_extension(extension);
}

} // namespace
