#include "platform/db_sqlite.h"

#include "platform/db_url.h"
#include "platform/elog.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <sqlite3.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace quarl
{

namespace
{

/// Bytes of a file that SQLite's processes lock to agree.
struct Bytes {
    off_t begin;
    off_t count;
};
constexpr Bytes Readers = {0x40000002, 510}; ///< of a database: somebody reads it
constexpr Bytes Reserved = {0x40000001, 1};  ///< of a database: somebody is about to change it
constexpr Bytes Pending = {0x40000000, 1};   ///< of a database: somebody waits for its readers
/// Of a log's index: somebody reads the database itself, so that nothing of the log goes there.
constexpr Bytes No_Checkpoint = {123, 1};

/// A file, open for reading if it could be opened. SQLite's locks are the process's and go when any
/// descriptor of the file is closed: these are the descriptor's.
class File
{
public:
    explicit File(const std::string &path)
        : fd_(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)), error_(fd_ < 0 ? errno : 0)
    {
    }
    File(const File &) = delete;
    File &operator=(const File &) = delete;
    ~File()
    {
        if (fd_ >= 0)
            close(fd_);
    }

    [[nodiscard]] bool is_missing() const { return error_ == ENOENT; }

    /// False with errno set when it could not be opened.
    [[nodiscard]] bool is_open() const
    {
        errno = error_;
        return fd_ >= 0;
    }

    /// The first bytes; none when there are not so many, or with errno set.
    [[nodiscard]] std::string head(std::size_t size) const
    {
        std::string bytes(size, '\0');
        bytes.resize(std::max(pread(fd_, bytes.data(), size, 0), ssize_t{0}));
        return bytes;
    }

    /// Shares the lock of these bytes. Waits some seconds; false with the reason left for elog. A
    /// file system without locks will do.
    [[nodiscard]] bool lock(Bytes bytes) const
    {
        for (int wait = 0; wait < 250; ++wait) {
            if (control(F_OFD_SETLK, F_RDLCK, bytes) != -1 || (errno != EAGAIN && errno != EACCES))
                return true;
            usleep(20000);
        }
        elog_set_reason("database is locked");
        return false;
    }

    /// Whether somebody has these bytes to himself.
    [[nodiscard]] bool is_taken(Bytes bytes) const
    {
        return control(F_OFD_GETLK, F_RDLCK, bytes) == F_WRLCK;
    }

private:
    /// The kind of the lock that stands in the way or is set then; -1 with errno set.
    int control(int command, short type, Bytes bytes) const
    {
        struct flock lock = {};
        lock.l_type = type;
        lock.l_start = bytes.begin;
        lock.l_len = bytes.count;
        return fcntl(fd_, command, &lock) == -1 ? -1 : lock.l_type;
    }

    int fd_;
    int error_;
};

/// How SQLite is to open a file.
struct Access {
    const char *parameters;
    const char *first_query;
};

/// A database file and what lies beside it, held in the state in which they were found.
///
/// A plain reader of a database with a write-ahead log creates the log and its index when they are
/// not there, and may take them away when it ends. So SQLite reads without locks: a log that has
/// something in it with an index of its own; where it has nothing, the database alone. The locks
/// here keep others from changing the database meanwhile. They may still add to the log.
class HeldFiles
{
public:
    explicit HeldFiles(const std::string &path) : path_(path), file_(path) {}

    /// Finds the way to read the database; none, with the reason left for elog, if there is none.
    [[nodiscard]] std::optional<Access> hold();

    /// Whether all that was read since then is one state: nobody came whom no lock could stop, and
    /// the log was not begun anew.
    [[nodiscard]] bool undisturbed() const
    {
        return (index_ || File(path_ + "-shm").is_missing()) &&
               (log_head_.empty() || File(path_ + "-wal").head(Log_Head) == log_head_);
    }

private:
    static constexpr std::string_view Magic{"SQLite format 3\0", 16};
    static constexpr std::size_t Log_Head = 32; ///< is another in every log that is begun

    void let_writer_pass() const;
    [[nodiscard]] bool has_hot_journal() const;
    [[nodiscard]] bool is_sound() const;
    [[nodiscard]] bool look_at_log();
    [[nodiscard]] bool hold_log();

    std::string path_;
    File file_;
    std::optional<File> index_; ///< where others agree on what is in the log
    std::string log_head_;      ///< empty when nothing is in the log
};

/// Whether a writer ended within a change, so that what it overwrote is in the journal only. A
/// writer that is at work may end between two looks, so twice. What cannot be read may be one.
bool HeldFiles::has_hot_journal() const
{
    const auto is_hot = [this] {
        const File journal(path_ + "-journal");
        if (journal.is_missing() || file_.is_taken(Reserved))
            return false;
        return !journal.is_open() || journal.head(1).find_first_not_of('\0') != std::string::npos;
    };
    return is_hot() && is_hot();
}

/// Lets a writer have its turn, for half a second: many readers could keep it from it for ever.
void HeldFiles::let_writer_pass() const
{
    for (int wait = 0; wait < 25 && file_.is_taken(Pending); ++wait)
        usleep(20000);
}

/// False with errno set when there is a log that cannot be read.
bool HeldFiles::look_at_log()
{
    const File log(path_ + "-wal");
    log_head_ = log.head(Log_Head);
    return log.is_missing() || log.is_open();
}

/// Keeps what is in the log from going to the database. False with the reason left for elog.
bool HeldFiles::hold_log()
{
    index_.emplace(path_ + "-shm");
    if (!index_->is_missing())
        return index_->is_open() && index_->lock(No_Checkpoint);
    index_.reset();
    return true;
}

/// Whether the file is a database as its last writer wanted it. False with the reason left for
/// elog.
bool HeldFiles::is_sound() const
{
    if (has_hot_journal()) {
        elog_set_reason("a program ended while it changed the file (hot journal): run 'sqlite3"
                        " FILE .tables' once to recover it");
        return false;
    }
    errno = 0;
    const bool is_database = file_.head(Magic.size()) == Magic;
    if (!is_database && errno != EISDIR)
        elog_set_reason("file is not a database");
    return is_database;
}

std::optional<Access> HeldFiles::hold()
{
    if (!file_.is_open())
        return {};
    let_writer_pass();
    if (!file_.lock(Readers) || !is_sound() || !hold_log() || !look_at_log())
        return {};
    if (log_head_.empty())
        return Access{"&vfs=quarl-unix&immutable=1", "pragma query_only = on"};
    return Access{"&vfs=quarl-unix-none", "pragma locking_mode = exclusive"};
}

/// SQLite's ways to files under other names: files are opened for reading only, and stay.
std::array<sqlite3_vfs, 2> Ways;

int open_for_reading(sqlite3_vfs *way, const char *name, sqlite3_file *file, int flags, int *opened)
{
    auto *system = static_cast<sqlite3_vfs *>(way->pAppData);
    constexpr int writing = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_EXCLUSIVE |
                            SQLITE_OPEN_DELETEONCLOSE;
    return system->xOpen(system, name, file, (flags & ~writing) | SQLITE_OPEN_READONLY, opened);
}

int delete_nothing(sqlite3_vfs * /*way*/, const char * /*name*/, int /*sync*/)
{
    return SQLITE_READONLY;
}

/// Makes these ways known to SQLite. False with the reason left for elog.
bool add_ways()
{
    if (Ways[0].zName != nullptr)
        return true;
    void *library = load_library("libsqlite3.so.0", "libsqlite3-0");
    decltype(&sqlite3_vfs_find) find = nullptr;
    decltype(&sqlite3_vfs_register) add = nullptr;
    if (library == nullptr || !find_symbol(library, "sqlite3_vfs_find", &find) ||
        !find_symbol(library, "sqlite3_vfs_register", &add))
        return false;
    constexpr std::array<const char *, 2> names = {"quarl-unix", "quarl-unix-none"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        sqlite3_vfs *system = find(names[i] + 6);
        if (system == nullptr)
            return false;
        Ways[i] = *system;
        Ways[i].zName = names[i];
        Ways[i].pAppData = system;
        Ways[i].xOpen = open_for_reading;
        Ways[i].xDelete = delete_nothing;
        add(&Ways[i], 0);
    }
    return true;
}

bool is_plain(unsigned char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("/.-_").find(static_cast<char>(c)) != std::string_view::npos;
}

/// Opens the file at its real place in the way that `files` has found.
Session open_held(const std::string &path, const std::shared_ptr<HeldFiles> &files, Access access)
{
    Session session =
        open_session("sqlite3", "dbname=file:" + percent_encoded(path, is_plain) + "?mode=ro" +
                                    access.parameters + " readonly=1 timeout=5");
    session.get_deleter().undisturbed = [files] { return files->undisturbed(); };
    prepare_session(&session, {access.first_query, "pragma temp_store = memory",
                               "select count(*) from sqlite_master"});
    return session;
}

} // namespace

Session open_sqlite(const std::string &path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    if (!real)
        return {};
    for (int tries = 0;; ++tries) {
        const auto files = std::make_shared<HeldFiles>(real.get());
        const std::optional<Access> access = files->hold();
        if (!access || !add_ways())
            return {};
        Session session = open_held(real.get(), files, *access);
        if (session || tries == 10 || files->undisturbed())
            return session;
    }
}

} // namespace quarl
