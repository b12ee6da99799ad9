#include "archive/derive.h"

#include <algorithm>

namespace quarl::archive
{

namespace
{

std::vector<std::string> with(std::vector<std::string> names, const std::vector<std::string> &more)
{
    names.insert(names.end(), more.begin(), more.end());
    return names;
}

std::string definitions(const Table &table, const std::vector<std::string> &names)
{
    std::string all;
    for (const std::string &name : names)
        all += (all.empty() ? "" : ", ") + name + " " + type_of(table.column(name));
    return all;
}

} // namespace

TableSync::TableSync(DatabaseWriter *database, Recipe recipe)
    : database_(database), recipe_(std::move(recipe))
{
    const Table &table = css_table(recipe_.table);
    const std::string &name = recipe_.table;
    const std::string want = wanted_table();
    const std::vector<std::string> set = with(recipe_.key, recipe_.rest);
    database_->run("create temporary table " + want + " (" + definitions(table, set) +
                   ", primary key (" + listed(recipe_.key) + "))");
    const std::string same = matched(recipe_.key, "w", name);
    if (!recipe_.wanted.empty())
        queries_.push_back("insert into " + want + " (" + listed(set) + ") " + recipe_.wanted);
    queries_.push_back("delete from " + name + " where " + recipe_.scope +
                       " and not exists (select 1 from " + want + " w where " + same + ")");
    if (!recipe_.rest.empty())
        queries_.push_back("update " + name + " set (" + listed(recipe_.rest) +
                           ", lddate) = (select " + listed(recipe_.rest, "w.") +
                           ", current_timestamp from " + want + " w where " + same + ") where " +
                           recipe_.scope + " and exists (select 1 from " + want + " w where " +
                           same + " and (" + listed(recipe_.rest, "w.") + ") <> (" +
                           listed(recipe_.rest, name + ".") + "))");
    const std::string there = " where not exists (select 1 from " + name + " t where " +
                              matched(recipe_.key, "w", "t") + ")";
    if (recipe_.id.empty()) {
        queries_.push_back("insert into " + name + " (" + listed(set) + ") select " +
                           listed(set, "w.") + " from " + want + " w" + there);
        return;
    }
    queries_.push_back("insert into " + name + " (" + listed(set) + ", " + recipe_.id +
                       ") select " + listed(set, "w.") +
                       ", (select keyvalue from lastid where keyname = '" + recipe_.id +
                       "') + row_number() over (order by " + listed(recipe_.key, "w.") + ") from " +
                       want + " w" + there);
    const std::string highest = "(select max(" + recipe_.id + ") from " + name + ")";
    queries_.push_back("update lastid set keyvalue = " + highest + " where keyname = '" +
                       recipe_.id + "' and keyvalue < " + highest);
}

void TableSync::run()
{
    for (const std::string &query : queries_)
        database_->run(query);
    database_->run(Dialect(database_->is_postgresql()).clear(wanted_table()));
}

} // namespace quarl::archive
