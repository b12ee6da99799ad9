// SOCI and the client library of a database are loaded when a session is opened and stay loaded; a
// run without a database starts without them. SOCI's C interface keeps its exceptions to itself.
#include "platform/db_session.h"

#include "platform/elog.h"
#include "platform/patience.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <dlfcn.h>
#include <mutex>
#include <soci/soci-simple.h>
#include <utility>

namespace quarl
{

namespace
{

/// The part of SOCI's C interface that is used, found by name.
struct Soci {
    decltype(&soci_create_session) create_session;
    decltype(&soci_destroy_session) destroy_session;
    decltype(&soci_session_state) session_state;
    decltype(&soci_session_error_message) session_error_message;
    decltype(&soci_create_statement) create_statement;
    decltype(&soci_destroy_statement) destroy_statement;
    decltype(&soci_into_string) into_string;
    decltype(&soci_use_string) use_string;
    decltype(&soci_set_use_string) set_use_string;
    decltype(&soci_prepare) prepare;
    decltype(&soci_execute) execute;
    decltype(&soci_fetch) fetch;
    decltype(&soci_get_into_string) get_into_string;
    decltype(&soci_statement_state) statement_state;
    decltype(&soci_statement_error_message) statement_error_message;
};

std::mutex Loading; ///< volumes of several threads may ask at once
bool Loaded = false;
/// Libraries are gone or about to go: sessions end with the process.
std::atomic<bool> Exiting = false;
Soci Api; ///< valid once load_core has returned true

struct EndStatement {
    void operator()(void *statement) const { Api.destroy_statement(statement); }
};
using Statement = std::unique_ptr<void, EndStatement>;

bool find_symbols(void *core)
{
    return find_symbol(core, "soci_create_session", &Api.create_session) &&
           find_symbol(core, "soci_destroy_session", &Api.destroy_session) &&
           find_symbol(core, "soci_session_state", &Api.session_state) &&
           find_symbol(core, "soci_session_error_message", &Api.session_error_message) &&
           find_symbol(core, "soci_create_statement", &Api.create_statement) &&
           find_symbol(core, "soci_destroy_statement", &Api.destroy_statement) &&
           find_symbol(core, "soci_into_string", &Api.into_string) &&
           find_symbol(core, "soci_use_string", &Api.use_string) &&
           find_symbol(core, "soci_set_use_string", &Api.set_use_string) &&
           find_symbol(core, "soci_prepare", &Api.prepare) &&
           find_symbol(core, "soci_execute", &Api.execute) &&
           find_symbol(core, "soci_fetch", &Api.fetch) &&
           find_symbol(core, "soci_get_into_string", &Api.get_into_string) &&
           find_symbol(core, "soci_statement_state", &Api.statement_state) &&
           find_symbol(core, "soci_statement_error_message", &Api.statement_error_message);
}

/// Loads SOCI itself, once.
bool load_core()
{
    const std::scoped_lock lock(Loading);
    if (!Loaded)
        if (void *core = load_library("libsoci_core.so.4.0", "libsoci-core4.0"))
            Loaded = find_symbols(core);
    return Loaded;
}

/// Loads SOCI and the backend, which SOCI itself would also look for in the current directory.
bool load_soci(const std::string &backend)
{
    const std::string package = "libsoci-" + backend + (backend == "sqlite3" ? "-4.0" : "4.0");
    return load_core() && load_library("libsoci_" + backend + ".so.4.0", package) != nullptr;
}

/// The database's own words in a message of SOCI: the first line, without SOCI's introductions and
/// without the statement.
std::string own_words(std::string_view message)
{
    constexpr std::array<std::string_view, 7> introductions = {
        "Cannot establish connection to the database.",
        "Cannot prepare statement.",
        "Cannot execute query.",
        "Fatal error.",
        "Connection failed.",
        "sqlite3_statement_backend::prepare:",
        "sqlite3_statement_backend::loadOne:"};
    const std::string_view whole = message;
    for (const std::string_view introduction : introductions) {
        if (message.starts_with(introduction))
            message.remove_prefix(introduction.size());
        message.remove_prefix(std::min(message.find_first_not_of(" \n"), message.size()));
    }
    message = message.substr(0, message.find('\n'));
    for (const std::string_view context :
         {" while preparing \"", " while executing \"", " while fetching data from \""})
        message = message.substr(0, message.find(context));
    return std::string(message.empty() ? whole : message);
}

/// Takes the rows of a statement that has been prepared. SOCI gives the empty text for NULL.
void take_rows(void *statement, TextRows *rows)
{
    for (int got = Api.execute(statement, 1); got != 0; got = Api.fetch(statement))
        for (int i = 0; i < static_cast<int>(rows->columns()); ++i)
            rows->append(Api.get_into_string(statement, i));
}

/// Opens a session, in whatever thread.
Session opened(const std::string &backend, const std::string &connection)
{
    Session session(Api.create_session((backend + "://" + connection).c_str()));
    if (session && Api.session_state(session.get()) == 0) {
        elog_set_reason(own_words(Api.session_error_message(session.get())));
        session.reset();
    }
    return session;
}

/// What came of a query in a session of its own.
struct Answer {
    Session session;
    TextRows rows;
    std::string error;
};

/// Runs a query, in whatever thread.
Answer answer_of(Session session, const std::string &query, std::size_t columns)
{
    Answer answer{std::move(session), TextRows(columns), {}};
    const Statement holder(Api.create_statement(answer.session.get()));
    void *statement = holder.get();
    if (statement == nullptr) {
        answer.error = own_words(Api.session_error_message(answer.session.get()));
        return answer;
    }
    for (std::size_t i = 0; i < columns; ++i)
        Api.into_string(statement);
    Api.prepare(statement, query.c_str());
    if (Api.statement_state(statement) != 0)
        take_rows(statement, &answer.rows);
    if (Api.statement_state(statement) == 0)
        answer.error = own_words(Api.statement_error_message(statement));
    return answer;
}

/// Why a server was given up after `patience`.
std::string no_answer(std::chrono::milliseconds patience)
{
    return gives_up() ? "interrupted"
                      : formatted<"no answer within %d s">(static_cast<int>(
                            std::chrono::duration_cast<std::chrono::seconds>(patience).count()));
}

} // namespace

void *load_library(const std::string &name, const std::string &package)
{
    void *library = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        elog_set_reason(std::string(dlerror()) + " (Debian package " + package + ")");
    return library;
}

bool find_symbol(void *library, const char *name, void **symbol)
{
    *symbol = dlsym(library, name);
    if (*symbol == nullptr)
        elog_set_reason(dlerror());
    return *symbol != nullptr;
}

void EndSession::operator()(void *session) const
{
    if (!Exiting)
        Api.destroy_session(session);
}

Session open_session(const std::string &backend, const std::string &connection,
                     std::chrono::milliseconds patience)
{
    if (!load_soci(backend))
        return {};
    // Registered behind what the client library registers, so called before it.
    const auto at_exit = [] {
        static const int Registered = std::atexit([] { Exiting = true; });
        (void)Registered;
    };
    if (patience.count() == 0) {
        Session session = opened(backend, connection);
        at_exit();
        return session;
    }
    auto made = within(patience, [=] {
        Session session = opened(backend, connection);
        return std::pair(std::move(session), elog_take_reason()); // that of the thread
    });
    at_exit();
    elog_set_reason(made ? made->second : no_answer(patience));
    if (!made)
        return {};
    made->first.get_deleter().patience = patience;
    return std::move(made->first);
}

std::string run_query(Session *session, const std::string &query, TextRows *rows)
{
    const std::size_t columns = rows->columns();
    const std::chrono::milliseconds patience = session->get_deleter().patience;
    rows->clear();
    const auto take = [&](Answer answer) {
        *session = std::move(answer.session);
        *rows = std::move(answer.rows);
        return std::move(answer.error);
    };
    if (patience.count() == 0)
        return take(answer_of(std::move(*session), query, columns));
    auto answer = within(patience, [given = std::move(*session), query, columns]() mutable {
        return answer_of(std::move(given), query, columns);
    });
    return answer ? take(std::move(*answer)) : no_answer(patience);
}

void prepare_session(Session *session, std::initializer_list<const char *> queries)
{
    TextRows none(0);
    for (const char *query : queries) {
        const std::string error = *session ? run_query(session, query, &none) : "";
        if (error.empty())
            continue;
        elog_set_reason(error);
        session->reset();
    }
}

void PreparedSession::EndStatement::operator()(void *statement) const
{
    if (!Exiting)
        Api.destroy_statement(statement);
}

std::string PreparedSession::prepare(const std::string &query, const Exchange &exchange,
                                     Statement *statement)
{
    statement->reset(Api.create_statement(session_.get()));
    if (!*statement)
        return own_words(Api.session_error_message(session_.get()));
    for (std::size_t i = 0; i < exchange.columns; ++i)
        Api.into_string(statement->get());
    if (exchange.parameter != nullptr)
        Api.use_string(statement->get(), "given");
    Api.prepare(statement->get(), query.c_str());
    const bool prepared = Api.statement_state(statement->get()) != 0;
    return prepared ? "" : own_words(Api.statement_error_message(statement->get()));
}

std::string PreparedSession::run(const std::string &query, const Exchange &exchange, TextRows *rows)
{
    *rows = TextRows(exchange.columns);
    Statement &kept = statements_[query];
    if (!kept)
        if (std::string error = prepare(query, exchange, &kept); !error.empty()) {
            kept.reset();
            return error;
        }
    void *statement = kept.get();
    if (exchange.parameter != nullptr)
        Api.set_use_string(statement, "given", exchange.parameter->c_str());
    if (Api.statement_state(statement) != 0)
        take_rows(statement, rows);
    if (Api.statement_state(statement) != 0)
        return {};
    std::string error = own_words(Api.statement_error_message(statement));
    kept.reset();
    return error;
}

} // namespace quarl
