// The tables of an archive's database: those of CSS 3.0, and ours beside them.
//
// What volumes say stands in "sources", a row a statement: a station epoch, a channel epoch, an
// origin. Volumes that say the same share the row (quarl_row has who says what); of rows that
// contradict each other, since they have one key, one wins. The tables of CSS 3.0 are made of the
// rows that win.
#pragma once

#include "platform/db_writer.h"

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace quarl::archive
{

/// What a column holds, and what stands in it when it is not given.
struct Column {
    enum class Kind { text, any_text, whole, real, loading_time };

    std::string name;
    Kind kind = Kind::text;
    int width = 0; ///< of a text, in characters
    std::string missing;

    [[nodiscard]] bool is_text() const { return kind == Kind::text || kind == Kind::any_text; }
};

struct Table {
    std::string name;
    std::vector<std::string> key;
    std::vector<std::string> unique; ///< what else tells rows apart; may be empty
    std::vector<Column> columns;

    [[nodiscard]] const Column &column(std::string_view name) const;
};

/// Which statements a source holds.
enum class Statement { network, station, epoch, instrument, comment, origin, magnitude, arrival };
inline constexpr std::size_t Statements = 8;

/// A source. Behind the columns of its own it has its number, the digest of its columns, which
/// volume that says so was written last, and when, and whether it wins.
struct Source {
    Statement statement{};
    std::string name;
    std::string id;
    std::vector<std::string> key; ///< rows that agree in it contradict each other
    std::vector<Column> columns;
    std::size_t told = 0; ///< columns that are compared in words; the others follow from them
    bool contradicts = true;
};

const std::vector<Source> &sources();
const Source &source(Statement statement);

const std::vector<Table> &css_tables();
/// Those beside them that are no sources.
const std::vector<Table> &our_tables();
/// There must be one of this name.
const Table &css_table(std::string_view name);
const Table &our_table(std::string_view name);

/// "a, b, c", each with `prefix` in front.
std::string listed(const std::vector<std::string> &names, std::string_view prefix = "");
/// "A.a = B.a and A.b = B.b"
std::string matched(const std::vector<std::string> &names, std::string_view left,
                    std::string_view right);
std::vector<std::string> names_of(const std::vector<Column> &columns);
/// The type of a column as SQL has it.
std::string type_of(const Column &column);

/// Makes the tables where they are not there. Throws DatabaseError where tables of these names
/// belong to somebody else, or ours are of another layout. `may_make` is false when only a look at
/// what is there was asked for.
void prepare_tables(DatabaseWriter *database, bool may_make);
/// Lets one transaction at a time change an archive on a server; an SQLite file sees to that.
void lock_archive(DatabaseWriter *database);

} // namespace quarl::archive
