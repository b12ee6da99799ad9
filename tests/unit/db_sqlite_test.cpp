// SQLite files and those who write to them.
#include "db_fixture.h"

#include <atomic>
#include <csignal>
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

TEST_F(DbTest, NothingIsWritten)
{
    const std::string log = "pragma journal_mode = wal;";
    make_file(path("plain"), Create + Insert);
    make_file(path("log"), log + Create + Insert);
    make_file(path("empty-log"), log + Create + Insert);
    write_file(path("empty-log-wal"), "");
    const pid_t writer = start_writer(path("live"), log + Create + Insert);
    end_writer(start_writer(path("abandoned"), log + Create + Insert));
    for (const char *end : {"", "-wal"})
        fs::copy_file(path("live") + end, path("no-index") + end);
    ASSERT_TRUE(fs::exists(path("abandoned-shm")));
    const auto before = files();
    for (const char *name : {"plain", "log", "empty-log", "live", "abandoned", "no-index"})
        EXPECT_EQ(outcome(path(name)), Row) << name;
    EXPECT_EQ(files(), before);
    end_writer(writer);
}

TEST_F(DbTest, WaitsForAWriter)
{
    const pid_t writer = start_writer(path("db"), Create + Insert + "begin exclusive;");
    std::atomic<bool> ended = false;
    std::thread end([writer, &ended] {
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        ended = true;
        end_writer(writer);
    });
    EXPECT_EQ(outcome(path("db")), Row);
    EXPECT_TRUE(ended);
    end.join();
}

} // namespace
