// Rows as JSON, by which many come into the database with one statement.
#pragma once

#include "archive/css_schema.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace quarl::archive
{

/// The values of one row, in the order of its columns: "1,\"ANMO\",2.5".
class RowText
{
public:
    /// A text of Latin-1 without blanks at its ends; `missing` when there is none.
    RowText &text(std::string_view latin, std::string_view missing = "-");
    /// A text of at most `width` characters; what was cut is added to `cuts`, if there are any.
    RowText &text(std::string_view latin, const Column &column, std::vector<std::string> *cuts);
    /// A text that may have any characters: UTF-8 where it is that, else Latin-1.
    RowText &any(std::string_view text);
    RowText &whole(std::int64_t value);
    /// Values of another row.
    RowText &raw(std::string_view values);
    /// `missing` when the value is no finite number.
    RowText &real(double value, double missing);

    [[nodiscard]] const std::string &values() const { return values_; }

private:
    void add(std::string_view value);

    std::string values_;
};

/// Rows of one table, each "VALUES\n".
class Rows
{
public:
    void add(const RowText &row) { all_.append(row.values()).append("\n"); }
    [[nodiscard]] bool empty() const { return all_.empty(); }
    [[nodiscard]] std::size_t size() const { return all_.size(); }
    /// Appends them to a JSON array whose "]" is still missing, each with `front` as its first
    /// values, and a running number if there is one.
    void append_to(std::string *array, std::string_view front, std::int64_t *number) const;

private:
    std::string all_;
};

/// What differs between the kinds of databases when rows come as JSON.
class Dialect
{
public:
    explicit Dialect(bool is_postgresql) : is_postgresql_(is_postgresql) {}

    /// "insert into TABLE (COLUMNS) select ... " of the array of rows that is given.
    [[nodiscard]] std::string insert_rows(const std::string &table,
                                          const std::vector<Column> &columns) const;
    /// A table "g" whose "value" are the texts of the array that is given.
    [[nodiscard]] std::string given_texts() const;
    /// Removes all rows of a temporary table.
    [[nodiscard]] std::string clear(const std::string &table) const;

private:
    bool is_postgresql_;
};

/// A field that holds a whole number.
std::int64_t whole_field(const TextRows &rows, std::size_t row, std::size_t column);

} // namespace quarl::archive
