#include "archive/sql.h"

#include "platform/json_text.h"
#include "platform/text.h"
#include "platform/utf8.h"

#include <array>
#include <charconv>
#include <cmath>

namespace quarl::archive
{

void RowText::add(std::string_view value)
{
    if (!values_.empty())
        values_ += ',';
    values_ += value;
}

RowText &RowText::text(std::string_view latin, std::string_view missing)
{
    latin = trimmed(up_to_nul(latin));
    add(json::quoted(latin.empty() ? missing : latin));
    return *this;
}

RowText &RowText::text(std::string_view latin, const Column &column, std::vector<std::string> *cuts)
{
    latin = trimmed(up_to_nul(latin));
    const auto width = static_cast<std::size_t>(column.width);
    if (latin.size() > width) {
        const std::string_view cut = trimmed(latin.substr(0, width));
        cuts->push_back(column.name + " is cut to " + std::to_string(width) + " characters: '" +
                        std::string(latin) + "'");
        latin = cut;
    }
    return text(latin, column.missing);
}

RowText &RowText::any(std::string_view text)
{
    text = up_to_nul(text);
    add(json::quoted(text, is_plain_utf8(text) ? json::Charset::utf8 : json::Charset::latin1));
    return *this;
}

RowText &RowText::raw(std::string_view values)
{
    add(values);
    return *this;
}

RowText &RowText::whole(std::int64_t value)
{
    add(std::to_string(value));
    return *this;
}

RowText &RowText::real(double value, double missing)
{
    std::array<char, json::Number_Room> room{};
    const char *end = json::put_number(room.data(), std::isfinite(value) ? value : missing);
    add({room.data(), static_cast<std::size_t>(end - room.data())});
    return *this;
}

void Rows::append_to(std::string *array, std::string_view front, std::int64_t *number) const
{
    std::string_view rest = all_;
    while (!rest.empty()) {
        const std::size_t end = rest.find('\n');
        array->append(array->size() > 1 ? ",[" : "[").append(front);
        if (number != nullptr)
            array->append(std::to_string(++*number)).append(",");
        array->append(rest.substr(0, end)).append("]");
        rest.remove_prefix(end + 1);
    }
}

std::string Dialect::insert_rows(const std::string &table, const std::vector<Column> &columns) const
{
    std::string values;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string number = std::to_string(i);
        if (i > 0)
            values += ", ";
        if (is_postgresql_)
            values += "cast(g.value->>" + number + " as " + type_of(columns[i]) + ")";
        else
            values += "json_extract(g.value, '$[" + number + "]')";
    }
    const char *from = is_postgresql_
                           ? " from jsonb_array_elements(cast(:given as jsonb)) as g(value)"
                           : " from json_each(:given) g";
    return "insert into " + table + " (" + listed(names_of(columns)) + ") select " + values + from;
}

std::string Dialect::given_texts() const
{
    return is_postgresql_ ? "jsonb_array_elements_text(cast(:given as jsonb)) as g(value)"
                          : "json_each(:given) g";
}

std::string Dialect::clear(const std::string &table) const
{
    return (is_postgresql_ ? "truncate " : "delete from ") + table;
}

std::int64_t whole_field(const TextRows &rows, std::size_t row, std::size_t column)
{
    const std::string_view text = rows.field(row, column);
    std::int64_t value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

} // namespace quarl::archive
