// Tables of records, by the descriptions of their fields.
#pragma once

#include "html/markup.h"
#include "platform/text.h"

#include <algorithm>
#include <quarl/fields.h>
#include <quarl/inventory.h>
#include <string>
#include <string_view>
#include <type_traits>

namespace quarl::html
{

/// Writes the rows of one table. Tags that a browser closes by itself are left open: a tenth of a
/// large page.
class Table
{
public:
    Table(Markup &page, const Inventory &inventory) : page_(page), inventory_(inventory) {}

    /// The head of a column: "Local depth (m)" of "local_depth" and "m".
    void column(std::string_view name, std::string_view unit = {});

    /// The next cell is what its row is about.
    void begin_row() { is_row_head_ = true; }

    void cell();
    void cell(std::string_view text);
    /// A time of a volume in the page's notation, with the volume's as a title.
    void time(std::string_view seed);
    void number_cell();
    void number(std::int64_t value);
    void number(double value);
    /// A code with the text that it stands for.
    void code(Dictionary dictionary, int code);

private:
    Markup &page_;
    const Inventory &inventory_;
    bool is_row_head_ = false;
};

inline std::int64_t power_of_two(int exponent)
{
    return std::int64_t{1} << std::clamp(exponent, 0, 62);
}

/// The value of a field that is no list.
template <class Field, class Record>
void write_field(Table *table, const Field &field, const Record &record)
{
    const auto &value = field.value(record);
    using Value = std::decay_t<decltype(value)>;
    if constexpr (std::is_same_v<Value, int>) {
        if (field.meaning == Meaning::code)
            table->code(field.dictionary, value);
        else
            table->number(field.meaning == Meaning::exponent ? power_of_two(value) : value);
    } else if constexpr (std::is_same_v<Value, char>) {
        table->cell(std::string_view(&value, value == '\0' ? 0 : 1));
    } else if constexpr (std::is_convertible_v<Value, std::string_view>) {
        if (field.meaning == Meaning::time || field.meaning == Meaning::end_time)
            table->time(value);
        else
            table->cell(value);
    } else {
        table->number(value);
    }
}

/// The texts of a list, one after the other, or the number of its entries where it has none.
template <class List, class Record>
void write_list(Table *table, const List &list, const Record &record)
{
    std::string texts;
    const auto &first = fields::at<0>(list.columns);
    using Value = decltype(first.value(record, 0));
    if constexpr (std::is_convertible_v<Value, std::string_view>) {
        for (std::size_t i = 0; i < list.size(record); ++i)
            texts += (i > 0 ? "; " : "") + std::string(trimmed(first.value(record, i)));
        table->cell(texts);
    } else {
        table->number(std::int64_t{list.promised(record)});
    }
}

/// What becomes of a field in a table.
enum class Shown { yes, empty, no };

struct AllShown {
    Shown operator()(std::string_view /*name*/) const { return Shown::yes; }
};

/// A column for each field of T that is read, as far as `shown` says of its name.
template <class T, class Choice = AllShown>
void write_columns(Table *table, const Choice &shown = AllShown())
{
    for_each_field<T>([&](const auto &field) {
        if (field.meaning != Meaning::absent && shown(field.name) != Shown::no)
            table->column(field.name, field.unit);
    });
}

/// The cells of these columns.
template <class T, class Choice = AllShown>
void write_fields(Table *table, const T &record, const Choice &shown = AllShown())
{
    for_each_field<T>([&](const auto &field) {
        const Shown choice = shown(field.name);
        if (field.meaning == Meaning::absent || choice == Shown::no)
            return;
        if (choice == Shown::empty) {
            table->cell();
            return;
        }
        if constexpr (std::decay_t<decltype(field)>::Is_List)
            write_list(table, field, record);
        else
            write_field(table, field, record);
    });
}

} // namespace quarl::html
