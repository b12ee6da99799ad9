#include "platform/db_writer.h"

#include "platform/elog.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace quarl
{

namespace
{

constexpr std::string_view File_Scheme = "sqlite://";

bool is_plain(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/.-_").find(static_cast<char>(c)) != std::string_view::npos;
}

/// The path without links; of a file that is not there, that of its folder and its name.
std::string real_path(const std::string &path)
{
    const auto real = [](const std::string &each) {
        const std::unique_ptr<char, decltype(&std::free)> found(realpath(each.c_str(), nullptr),
                                                                &std::free);
        return found ? std::string(found.get()) : std::string();
    };
    std::string found = real(path);
    if (!found.empty() || errno != ENOENT)
        return found;
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    found = real(folder);
    if (found.empty() || slash + 1 == path.size())
        return {};
    return found + "/" + path.substr(slash == std::string::npos ? 0 : slash + 1);
}

/// Whether a file is empty, missing, or a database.
bool may_be_database(const std::string &path)
{
    constexpr std::string_view Magic{"SQLite format 3\0", 16};
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (fd < 0)
        return errno == ENOENT;
    std::array<char, Magic.size()> head{};
    const ssize_t size = read(fd, head.data(), head.size());
    close(fd);
    return size == 0 || (size == static_cast<ssize_t>(Magic.size()) &&
                         std::string_view(head.data(), head.size()) == Magic);
}

} // namespace

DatabaseWriter::DatabaseWriter(const std::string &name, Missing missing) : url_(name), name_(name)
{
    is_postgresql_ = name.starts_with("postgresql://") || name.starts_with("postgres://");
    if (is_postgresql_)
        open_server();
    else
        open_file(missing);
}

DatabaseWriter::~DatabaseWriter()
{
    try {
        if (in_transaction_)
            rollback();
    } catch (const std::exception &) { // the session's end does the same
        in_transaction_ = false;
    }
}

void DatabaseWriter::open_file(Missing missing)
{
    std::string name = name_;
    if (name.starts_with(File_Scheme))
        name.erase(0, File_Scheme.size());
    path_ = real_path(name);
    if (path_.empty() || (missing == Missing::refused && access(path_.c_str(), F_OK) != 0))
        throw DatabaseError(std::strerror(errno));
    if (!may_be_database(path_))
        throw DatabaseError("file is not a database");
    Session session =
        open_session("sqlite3", "dbname=file:" + percent_encoded(path_, is_plain) + " timeout=60");
    prepare_session(&session,
                    {"pragma temp_store = memory", "pragma cache_size = -24000",
                     "pragma synchronous = normal", "select count(*) from sqlite_master"});
    if (!session)
        throw DatabaseError(elog_take_reason());
    session_ = std::make_unique<PreparedSession>(std::move(session));
}

/// A server is asked to see what it is sent as it would without statistics: tables begin empty and
/// grow while their plans are in use, and each query takes few rows by an index.
void DatabaseWriter::open_server()
{
    if (!url_.is_clear())
        throw DatabaseError("it is not clear what the password is: write '/' as %2F and '@' as %40"
                            " in it, and a port as a number");
    setenv("PGCONNECT_TIMEOUT", "10", 0);
    Session session = open_session("postgresql", url_.connection());
    prepare_session(&session,
                    {"set client_min_messages = error", "set timezone = 'UTC'",
                     "set client_encoding = 'UTF8'", "set standard_conforming_strings = on",
                     "set synchronous_commit = off", "set enable_hashjoin = off",
                     "set enable_mergejoin = off", "set enable_seqscan = off", "set jit = off"});
    if (!session)
        throw DatabaseError(url_.without_secrets(elog_take_reason()));
    session_ = std::make_unique<PreparedSession>(std::move(session));
}

TextRows DatabaseWriter::exchange(const std::string &query, const Exchange &exchange)
{
    TextRows rows(exchange.columns);
    const std::string error = session_->run(query, exchange, &rows);
    if (!error.empty())
        throw DatabaseError(url_.without_secrets(error));
    return rows;
}

void DatabaseWriter::run(const std::string &query) { (void)exchange(query, {}); }

void DatabaseWriter::run(const std::string &query, const std::string &given)
{
    (void)exchange(query, {0, &given});
}

TextRows DatabaseWriter::ask(const std::string &query, std::size_t columns)
{
    return exchange(query, {columns, nullptr});
}

TextRows DatabaseWriter::ask(const std::string &query, std::size_t columns,
                             const std::string &given)
{
    return exchange(query, {columns, &given});
}

void DatabaseWriter::begin()
{
    run(is_postgresql_ ? "begin" : "begin immediate");
    in_transaction_ = true;
}

void DatabaseWriter::commit()
{
    run("commit");
    in_transaction_ = false;
}

void DatabaseWriter::rollback()
{
    in_transaction_ = false;
    session_->forget();
    run("rollback");
}

void DatabaseWriter::share()
{
    if (!is_postgresql_)
        (void)ask("pragma journal_mode = wal", 1);
}

void DatabaseWriter::leave_alone()
{
    if (is_postgresql_)
        return;
    session_->forget();
    try {
        (void)ask("pragma busy_timeout = 2000", 1);
        (void)ask("pragma wal_checkpoint(truncate)", 3);
        (void)ask("pragma journal_mode = delete", 1);
    } catch (const DatabaseError &) { // whoever has it open does so as the last one
        return;
    }
}

} // namespace quarl
