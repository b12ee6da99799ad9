// A database that is written to: an SQLite file, or PostgreSQL.
#pragma once

#include "platform/db_session.h"
#include "platform/db_url.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace quarl
{

/// The database cannot be used. The words hold no password.
class DatabaseError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Queries fail with DatabaseError. One at a time may write: an SQLite file waits by itself, on
/// PostgreSQL the caller takes a lock.
class DatabaseWriter
{
public:
    /// Whether an SQLite file that is not there is made.
    enum class Missing { made, refused };

    /// Opens the database `name` as VXdbopen does, for writing.
    DatabaseWriter(const std::string &name, Missing missing);
    DatabaseWriter(const DatabaseWriter &) = delete;
    DatabaseWriter &operator=(const DatabaseWriter &) = delete;
    /// Ends a transaction that is open without its changes.
    ~DatabaseWriter();

    [[nodiscard]] bool is_postgresql() const { return is_postgresql_; }
    /// The real path of an SQLite file; "" of a server.
    [[nodiscard]] const std::string &path() const { return path_; }
    /// What messages may show of its name.
    [[nodiscard]] const std::string &shown() const { return url_.shown(); }

    void run(const std::string &query);
    /// `given` stands for ":given" in the query.
    void run(const std::string &query, const std::string &given);
    TextRows ask(const std::string &query, std::size_t columns);
    TextRows ask(const std::string &query, std::size_t columns, const std::string &given);

    /// The changes between these are made as one, or not at all.
    void begin();
    void commit();
    void rollback();

    /// From now on readers of an SQLite file need not wait for this writer, but it has files beside
    /// it.
    void share();
    /// Leaves an SQLite file alone, without files beside it, unless others use it just now.
    void leave_alone();

private:
    TextRows exchange(const std::string &query, const Exchange &exchange);
    void open_file(Missing missing);
    void open_server();

    DatabaseUrl url_;
    std::string name_;
    std::string path_;
    bool is_postgresql_ = false;
    bool in_transaction_ = false;
    std::unique_ptr<PreparedSession> session_;
};

} // namespace quarl
