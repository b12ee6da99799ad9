#include "html/table.h"

#include "html/notation.h"

namespace quarl::html
{

void Table::column(std::string_view name, std::string_view unit)
{
    std::string title(name);
    std::replace(title.begin(), title.end(), '_', ' ');
    if (!title.empty() && title[0] >= 'a' && title[0] <= 'z')
        title[0] = static_cast<char>(title[0] - 'a' + 'A');
    page_.put("<th scope=\"col\">");
    page_.text(title);
    if (!unit.empty()) {
        page_.put(" (");
        page_.text(unit);
        page_.put(")");
    }
}

void Table::cell()
{
    if (is_row_head_)
        page_.put("<th scope=row>");
    else
        page_.put("<td>");
    is_row_head_ = false;
}

void Table::number_cell()
{
    if (is_row_head_)
        page_.put("<th scope=row class=n>");
    else
        page_.put("<td class=n>");
    is_row_head_ = false;
}

void Table::time(std::string_view seed)
{
    const std::string iso = page_time(trimmed(seed));
    if (iso.empty()) {
        cell(seed);
        return;
    }
    page_.put("<td title=\"");
    page_.text(trimmed(seed));
    page_.put("\">");
    page_.text(iso);
}

void Table::cell(std::string_view text)
{
    cell();
    page_.text(trimmed(text));
}

void Table::number(std::int64_t value)
{
    number_cell();
    page_.number(value);
}

void Table::number(double value)
{
    number_cell();
    page_.real(value);
}

void Table::code(Dictionary dictionary, int code)
{
    cell();
    page_.number(code);
    if (const DictionaryEntry *entry = inventory_.entry(dictionary, code)) {
        page_.put(" ");
        page_.text(trimmed(entry->text));
    }
}

} // namespace quarl::html
