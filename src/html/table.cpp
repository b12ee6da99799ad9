#include "html/table.h"

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

void Table::cell(std::string_view text)
{
    cell();
    page_.text(trimmed(text));
}

void Table::number(std::int64_t value)
{
    page_.put("<td class=n>");
    page_.number(value);
}

void Table::number(double value)
{
    page_.put("<td class=n>");
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
