// A session with a database through SOCI, and texts from it.
#pragma once

#include <chrono>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace quarl
{

struct EndSession {
    /// Whether what was read in this session is one state of the database; empty where the database
    /// sees to that. Holds what has to stay until the session has ended.
    std::function<bool()> undisturbed;
    /// What each query has at most, in a thread of its own; 0: for ever, and here.
    std::chrono::milliseconds patience{};
    void operator()(void *session) const;
};
using Session = std::unique_ptr<void, EndSession>;

/// Rows of texts, all in one piece of memory.
class TextRows
{
public:
    explicit TextRows(std::size_t columns) : columns_(columns) {}

    [[nodiscard]] std::size_t columns() const { return columns_; }
    [[nodiscard]] std::size_t count() const { return columns_ == 0 ? 0 : ends_.size() / columns_; }

    void clear()
    {
        text_ = {};
        ends_ = {};
    }

    /// Adds the next field without its trailing blanks.
    void append(std::string_view field)
    {
        text_ += field.substr(0, field.find_last_not_of(' ') + 1);
        ends_.push_back(text_.size());
    }

    /// The field of an existing row and column; lives until the rows change.
    [[nodiscard]] std::string_view field(std::size_t row, std::size_t column) const
    {
        const std::size_t at = row * columns_ + column;
        const std::size_t begin = at == 0 ? 0 : ends_[at - 1];
        return std::string_view(text_).substr(begin, ends_[at] - begin);
    }

private:
    std::size_t columns_;
    std::string text_;
    std::vector<std::size_t> ends_; ///< where each field ends in text_ and the next begins
};

/// Loads a library for the rest of the run; null with the reason left for elog.
void *load_library(const std::string &name, const std::string &package);

/// Finds something in a library; false with the reason left for elog.
bool find_symbol(void *library, const char *name, void **symbol);

template <class Function> bool find_symbol(void *library, const char *name, Function *function)
{
    void *symbol = nullptr;
    const bool found = find_symbol(library, name, &symbol);
    *function = reinterpret_cast<Function>(symbol);
    return found;
}

/// Opens a session with SOCI's backend `backend`; null with the reason left for elog. It, and then
/// each query, is given up after `patience`, where it is not 0.
Session open_session(const std::string &backend, const std::string &connection,
                     std::chrono::milliseconds patience = {});

/// Replaces `rows` by the rows that `query` yields; NULL is the empty text. The answer is what went
/// wrong in the database's own words, empty when nothing. A session whose query is given up is
/// lost.
std::string run_query(Session *session, const std::string &query, TextRows *rows);

/// Runs queries in a new session for their effect; ends it with the reason left for elog when one
/// fails.
void prepare_session(Session *session, std::initializer_list<const char *> queries);

/// What a query takes in and gives out.
struct Exchange {
    std::size_t columns = 0;                ///< of the rows that it yields
    const std::string *parameter = nullptr; ///< stands for ":given" in the query
};

/// A session whose queries stay prepared from their first use on.
class PreparedSession
{
public:
    explicit PreparedSession(Session session) : session_(std::move(session)) {}

    /// Runs a query and replaces `rows` by what it yields. The answer is what went wrong in the
    /// database's own words, empty when nothing.
    std::string run(const std::string &query, const Exchange &exchange, TextRows *rows);
    /// Ends all statements: some changes of a database wait for that.
    void forget() { statements_.clear(); }

private:
    struct EndStatement {
        void operator()(void *statement) const;
    };
    using Statement = std::unique_ptr<void, EndStatement>;

    [[nodiscard]] std::string prepare(const std::string &query, const Exchange &exchange,
                                      Statement *statement);

    Session session_;
    std::unordered_map<std::string, Statement> statements_; ///< end before the session
};

} // namespace quarl
