#include "db_fixture.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <optional>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <vector>

namespace
{

namespace fs = std::filesystem;

const std::string Three = "insert into seedformat values ('C', '1', '2', '3', '4'),"
                          " ('A', '1', '2', '3', '4'), ('B', '1', '2', '3', '4');";
const std::string Index = "alter table seedformat add more text; create index i on seedformat"
                          " (sta, chan, seedstart, seedend, seedformat);";
const std::string View = "alter table seedformat rename to raw;"
                         "create view seedformat as select * from raw order by sta desc;";

const std::string Fresh = "alter database postgres reset all; drop schema public cascade;"
                          "create schema public;";

bool mapped(const char *library)
{
    return read_file("/proc/self/maps").find(library) != std::string::npos;
}

TEST_F(DbTest, LoadsOnlyWhatIsNeeded)
{
    if (mapped("libpq") || mapped("libsoci"))
        GTEST_SKIP() << "another test of this process has opened a database";
    EXPECT_EQ(outcome(path("none")), Unopened + "No such file or directory\n");
    EXPECT_FALSE(mapped("libsoci"));
    make_file(path("db"), Create);
    EXPECT_EQ(outcome(path("db")), "");
    EXPECT_TRUE(mapped("libsoci_sqlite3"));
    EXPECT_FALSE(mapped("libpq"));
}

/// SQL that makes the database, and the outcome.
using Cases = std::vector<std::pair<std::string, std::string>>;

TEST_F(DbTest, SqliteRows)
{
    const Cases cases = {
        {"create table seedformat (sta char(6), chan, seedstart integer, seedend real, seedformat"
         " blob, more text); insert into seedformat values ('ANMO  ', null, -17, 2.5, x'', 'm'),"
         " ('  B', '  ', '', 1, x'4142', 'm');",
         "ANMO||-17|2.5|\n  B|||1.0|AB\n"},
        {Create + Three + Index, "C|1|2|3|4\nA|1|2|3|4\nB|1|2|3|4\n"},
        {Create + Three + View, "C|1|2|3|4\nB|1|2|3|4\nA|1|2|3|4\n"},
        {"create table other (sta);", Unread + "no such table: seedformat\n"},
        {"create table seedformat (sta, chan, seedstart, seedend);",
         Unread + "no such column: t.seedformat\n"},
    };
    for (const auto &[text, expected] : cases) {
        fs::remove(path("db"));
        make_file(path("db"), text);
        EXPECT_EQ(outcome(path("db")), expected) << text;
    }
}

TEST_F(DbTest, NotADatabase)
{
    fs::create_directory(path("directory"));
    fs::create_symlink(path("loop"), path("loop"));
    mkfifo(path("fifo").c_str(), 0600);
    write_file(path("empty"), "");
    write_file(path("text"), std::string(4096, 'x'));
    make_file(path("damaged"), Create);
    write_file(path("damaged"), read_file(path("damaged")).substr(0, 200) + std::string(8000, 'x'));
    const std::string other = "file is not a database";
    const auto before = fs::last_write_time(directory_);
    const Cases cases = {{"none", "No such file or directory"},
                         {"directory", "Is a directory"},
                         {"loop", "Too many levels of symbolic links"},
                         {"fifo", other},
                         {"empty", other},
                         {"text", other},
                         {"damaged", "database disk image is malformed"}};
    for (const auto &[name, words] : cases)
        EXPECT_EQ(outcome(path(name)), Unopened + words + "\n") << name;
    EXPECT_EQ(fs::last_write_time(directory_), before);
}

TEST_F(DbTest, PathsAreTakenAsTheyStand)
{
    fs::current_path(directory_);
    for (const char *name :
         {"a b.db", "100%41", "q?mode=rw&vfs=x", "#", "a=\"b\" c", "=", "\xC3\xBC"}) {
        make_file(path(name), Create + Insert);
        EXPECT_EQ(outcome(path(name)), Row) << name;
        EXPECT_EQ(outcome("sqlite://" + path(name)), Row) << name;
        EXPECT_EQ(outcome(name), Row) << name;
    }
    fs::current_path("/");
}

TEST_F(DbTest, EmptyTableIsAskedAgain)
{
    for (const char *mode : {"delete", "wal"}) {
        make_file(path(mode), Create + "pragma journal_mode = " + mode);
        Dbptr db = dbinvalid();
        ASSERT_EQ(VXdbopen(path(mode).c_str(), "r", &db), 0);
        EXPECT_EQ(rows_of(db), "");
        for (int times = 0; times < 2; ++times) {
            make_file(path(mode), Insert);
            EXPECT_EQ(rows_of(db), Row) << mode;
        }
    }
}

TEST_F(DbTest, PointersToNothing)
{
    make_file(path("db"), Create + Insert);
    Dbptr db = dbinvalid();
    int count = 7;
    EXPECT_EQ(dblookup(db, "seedformat").database, dbINVALID);
    EXPECT_EQ(dbquery(db, dbRECORD_COUNT, &count), -1);
    ASSERT_EQ(VXdbopen(path("db").c_str(), "r", &db), 0);
    EXPECT_EQ(dblookup(db, "other").database, dbINVALID);
    Dbptr view = dblookup(db, "seedformat");
    EXPECT_EQ(dbquery(view, dbALL, &count), -1);
    EXPECT_EQ(count, 7);
    std::array<char, 4> sta = {'x'};
    for (view.record = -1; view.record < 2; ++view.record)
        EXPECT_EQ(dbgetv(view, {{"sta", sta}, {view.record == 0 ? "net" : "chan", sta}}), -1);
    EXPECT_EQ(sta[0], 'x');
    view.record = 0;
    EXPECT_EQ(dbgetv(view, {{"sta", sta}}), 0);
    EXPECT_STREQ(sta.data(), "ANM");
}

class PostgresTest : public DbTest
{
protected:
    ~PostgresTest() override
    {
        Test_State.formats->parts().databases.close();
    } // while the libraries are there

    void SetUp() override
    {
        DbTest::SetUp();
        const char *url = getenv("QUARL_TEST_POSTGRES");
        if (url == nullptr)
            GTEST_SKIP() << "QUARL_TEST_POSTGRES is not set: run under tests/support/with_postgres";
        url_ = url;
    }

    void sql(const std::string &text) const
    {
        write_file(path("sql"), "set client_min_messages = error;" + text);
        const std::string command = "psql -qX -v ON_ERROR_STOP=1 -f " + path("sql") + " ";
        ASSERT_EQ(std::system((command + "'" + url_ + "'").c_str()), 0) << text;
    }

    std::string url_;
};

TEST_F(PostgresTest, Rows)
{
    const Cases cases = {
        {"create table seedformat (sta char(6), chan varchar(8), seedstart numeric(17,5), seedend"
         " float8, seedformat text); insert into seedformat values ('ANMO', null, -1.5, 0.1, 'f '),"
         " ('B', '', null, 2, '  x');",
         "ANMO||-1.50000|0.1|f\nB|||2|  x\n"},
        {Create + Three + Index +
             "alter database postgres set enable_seqscan = off; alter database postgres set"
             " enable_bitmapscan = off; update seedformat set chan = 'LHZ' where sta = 'A';",
         "C|1|2|3|4\nB|1|2|3|4\nA|LHZ|2|3|4\n"},
        {Create + Three + View, "C|1|2|3|4\nB|1|2|3|4\nA|1|2|3|4\n"},
        {"", Unread + "ERROR:  relation \"seedformat\" does not exist\n"},
        {"create table seedformat (sta text, chan text, seedstart text, seedend text);",
         Unread + "ERROR:  column t.seedformat does not exist\n"},
        {"create sequence s; create view seedformat as select nextval('s') as sta, 1 as chan,"
         " 2 as seedstart, 3 as seedend, 4 as seedformat;",
         Unread + "ERROR:  cannot execute nextval() in a read-only transaction\n"},
    };
    for (const auto &[text, expected] : cases) {
        sql(Fresh + text);
        EXPECT_EQ(outcome(url_), expected) << text;
    }
}

TEST_F(PostgresTest, UrlForms)
{
    sql(Fresh + Create + Insert);
    const std::string host = url_.substr(url_.find("host=") + 5);
    std::string encoded;
    for (const char c : host)
        encoded += c == '/' ? "%2F" : std::string(1, c);
    for (const std::string &url :
         {"postgres://quarl@/postgres?host=" + host, "postgresql://quarl@" + encoded + "/postgres",
          "postgresql://quarl:?@" + encoded + "/postgres",
          "postgres://quarl@" + encoded + "/postgres?",
          "postgresql://" + encoded + "/postgres?user=quarl", url_ + "&application_name=\"a b"})
        EXPECT_EQ(outcome(url), Row) << url;
    EXPECT_EQ(outcome("postgres://a b@" + encoded + "/x"),
              Unopened + "connection to server on socket \"" + host +
                  "/.s.PGSQL.5432\" failed: FATAL:  role \"a b\" does not exist\n");
}

TEST_F(PostgresTest, EmptyTableIsAskedAgain)
{
    sql(Fresh + Create);
    Dbptr db = dbinvalid();
    ASSERT_EQ(VXdbopen(url_.c_str(), "r", &db), 0);
    EXPECT_EQ(rows_of(db), "");
    sql(Insert);
    EXPECT_EQ(rows_of(db), Row);
}

/// Stands between a client and a server's socket until so many bytes of answers have passed; then
/// it closes both connections, as the end of the server would.
class Relay
{
public:
    Relay(const std::string &server, const std::string &own) : listener_(socket(AF_UNIX, Kind, 0))
    {
        const sockaddr_un address = address_of(own);
        if (bind(listener_, as_address(&address), sizeof address) != 0 || listen(listener_, 1) != 0)
            throw std::system_error(errno, std::generic_category(), own);
        thread_ = std::thread([this, server] { relay(address_of(server)); });
    }
    Relay(const Relay &) = delete;
    Relay &operator=(const Relay &) = delete;
    ~Relay()
    {
        bytes_left = 0;
        shutdown(listener_, SHUT_RDWR);
        thread_.join();
        close(listener_);
    }

    std::atomic<long> bytes_left = 1'000'000;
    std::atomic<bool> silent = false; ///< nothing is passed on, and nothing closed

private:
    static constexpr int Kind = SOCK_STREAM | SOCK_CLOEXEC;

    static sockaddr_un address_of(const std::string &path)
    {
        sockaddr_un address = {AF_UNIX, ""};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        return address;
    }
    static const sockaddr *as_address(const sockaddr_un *address)
    {
        return reinterpret_cast<const sockaddr *>(address);
    }

    void relay(const sockaddr_un &server)
    {
        const int client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const int upstream = socket(AF_UNIX, Kind, 0);
        if (connect(upstream, as_address(&server), sizeof server) == 0)
            for (long got = 0; bytes_left > 0 && got >= 0 && pass(client, upstream) >= 0;) {
                while (silent && bytes_left > 0)
                    usleep(1000);
                bytes_left -= got = pass(upstream, client);
            }
        close(upstream);
        close(client);
    }

    /// Passes on what is there within 20 ms: the number of bytes, or -1 at the end.
    static long pass(int from, int to)
    {
        pollfd ready = {from, POLLIN, 0};
        if (poll(&ready, 1, 20) <= 0)
            return 0;
        std::array<char, 4096> bytes;
        const ssize_t count = recv(from, bytes.data(), bytes.size(), 0);
        if (count <= 0)
            return -1;
        return send(to, bytes.data(), static_cast<std::size_t>(count), MSG_NOSIGNAL);
    }

    int listener_;
    std::thread thread_;
};

TEST_F(PostgresTest, ServerThatGoesAway)
{
    sql(Fresh + Create +
        "insert into seedformat select 'A' || i, 'BHZ', 's', 'e', 'f' from"
        " generate_series(1, 5000) i;");
    const std::string server = url_.substr(url_.find("host=") + 5) + "/.s.PGSQL.5432";
    for (const long passing : {1, 50'000, 1'000'000}) { // nothing, some rows, all
        fs::remove(path(".s.PGSQL.5432"));
        Relay relay(server, path(".s.PGSQL.5432"));
        Dbptr db = dbinvalid();
        ASSERT_EQ(VXdbopen(("postgresql://quarl@/postgres?host=" + directory_).c_str(), "r", &db),
                  0);
        relay.bytes_left = passing;
        testing::internal::CaptureStderr();
        const auto count = std::ranges::count(rows_of(db), '\n');
        const std::string shown = testing::internal::GetCapturedStderr();
        EXPECT_EQ(count, passing == 1'000'000 ? 5000 : 0);
        EXPECT_EQ(shown, count != 0 ? "" : Unread + "server closed the connection unexpectedly\n");
        EXPECT_EQ(rows_of(db).empty(), count == 0); // and is not asked again
    }
}

TEST_F(PostgresTest, ServerThatFallsSilent)
{
    sql(Fresh + Create + Insert);
    setenv("QUARL_DBTIMEOUT", "1", 1);
    const std::string server = url_.substr(url_.find("host=") + 5) + "/.s.PGSQL.5432";
    std::optional<Relay> relay(std::in_place, server, path(".s.PGSQL.5432"));
    Dbptr db = dbinvalid();
    ASSERT_EQ(VXdbopen(("postgresql://quarl@/postgres?host=" + directory_).c_str(), "r", &db), 0);
    relay->silent = true;
    testing::internal::CaptureStderr();
    EXPECT_EQ(rows_of(db), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), Unread + "no answer within 1 s\n");
    EXPECT_EQ(rows_of(db), "") << "asked again";
    relay.reset();
    // The thread that was given up sees that now; it must not do so while the process ends.
    const auto threads = [] {
        const std::filesystem::directory_iterator all("/proc/self/task");
        return std::distance(begin(all), end(all));
    };
    while (threads() > 1)
        usleep(1000);
}

/// The same before there is a session: a server that lets in whoever comes, and then says nothing.
TEST_F(DbTest, ServerThatNeverAnswers)
{
    setenv("QUARL_DBTIMEOUT", "1", 1);
    sockaddr_un address = {AF_UNIX, ""};
    path(".s.PGSQL.5432").copy(address.sun_path, sizeof address.sun_path - 1);
    const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr *>(&address), sizeof address), 0);
    ASSERT_EQ(listen(listener, 1), 0);
    std::thread server([listener] {
        constexpr std::string_view Welcome("R\0\0\0\x08\0\0\0\0Z\0\0\0\x05I", 15);
        const int client = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        std::array<char, 4096> question;
        (void)!recv(client, question.data(), question.size(), 0);
        (void)!send(client, Welcome.data(), Welcome.size(), MSG_NOSIGNAL);
        while (recv(client, question.data(), question.size(), 0) > 0) {
        }
        close(client);
    });
    EXPECT_EQ(outcome("postgresql://quarl@/x?host=" + directory_),
              Unopened + "no answer within 1 s\n");
    shutdown(listener, SHUT_RDWR);
    server.detach(); // the session that was given up still waits
    close(listener);
}

TEST_F(DbTest, ServerThatIsNotThere)
{
    EXPECT_EQ(outcome("postgresql://quarl@/x?host=" + directory_),
              Unopened + "connection to server on socket \"" + directory_ +
                  "/.s.PGSQL.5432\" failed: No such file or directory\n");
}

} // namespace
