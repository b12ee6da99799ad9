// The JSON of a page, value by value, against the lines of quarl-json and quarl-check: two readers
// of one volume, compared by a third program's JSON functions.
#include "compose/files.h"
#include "compose/sample.h"
#include "platform/format.h"
#include "support/full_volume.h"
#include "support/process.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <memory>
#include <sqlite3.h>
#include <string>
#include <unistd.h>

namespace
{

/// A database in memory.
class Database
{
public:
    Database()
    {
        sqlite3 *opened = nullptr;
        sqlite3_open(":memory:", &opened);
        handle_.reset(opened);
    }

    /// Whole numbers and others look alike.
    static std::string value_of(sqlite3_stmt *row, int column)
    {
        const int type = sqlite3_column_type(row, column);
        if (type == SQLITE_NULL)
            return "null";
        if (type != SQLITE_TEXT)
            return quarl::formatted<"%.12g">(sqlite3_column_double(row, column));
        return reinterpret_cast<const char *>(sqlite3_column_text(row, column));
    }

    /// The rows of a query, one per line. `text` is its first parameter.
    std::string rows(const std::string &sql, const std::string &text = {}) const
    {
        sqlite3_stmt *prepared = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(handle_.get(), sql.c_str(), -1, &prepared, nullptr), SQLITE_OK)
            << sqlite3_errmsg(handle_.get()) << " in " << sql;
        const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> statement(
            prepared, sqlite3_finalize);
        sqlite3_bind_text(prepared, 1, text.c_str(), -1, SQLITE_TRANSIENT);
        std::string all;
        int step = SQLITE_DONE;
        while ((step = sqlite3_step(prepared)) == SQLITE_ROW) {
            for (int i = 0; i < sqlite3_column_count(prepared); ++i) {
                all += value_of(prepared, i) + '|';
            }
            all += '\n';
        }
        EXPECT_EQ(step, SQLITE_DONE) << sqlite3_errmsg(handle_.get()) << " in " << sql;
        return all;
    }

private:
    std::unique_ptr<sqlite3, decltype(&sqlite3_close)> handle_{nullptr, sqlite3_close};
};

std::string output_of(const std::string &program, const std::string &option,
                      const std::string &file)
{
    return run(std::string(QUARL_PROGRAM) + program, {option, file}, STDIN_FILENO).out;
}

/// `line` has the lines of JSON, `page` the object of the page, `finding` those of quarl-check;
/// views take them apart.
void load(const Database &database, const std::string &file)
{
    const std::string html = output_of("-html", "--", file);
    const std::string mark = "id=\"volume\">";
    const std::size_t start = html.find(mark) + mark.size();
    database.rows("create table page as select ?1 as doc",
                  html.substr(start, html.find("</script>", start) - start));
    for (const auto &[table, program, option] :
         {std::tuple{"line", "-json", "--"}, {"finding", "-check", "--json"}})
        database.rows(std::string("create table ") + table +
                          " as select value as v from json_each('['||replace(rtrim(?1,char(10)),"
                          "char(10),',')||']')",
                      output_of(program, option, file));
    for (const char *part : {"rules", "findings", "stations", "channels", "responses", "epochs",
                             "stages", "filters", "types"})
        database.rows(std::string("create view ") + part +
                      " as select key as i, value as v from page, json_each(doc, '$." + part +
                      "')");
    // A channel epoch as both name it.
    database.rows("create view epoch as select e.i, e.v, c.v->>'network' as net,"
                  " c.v->>'station_code' as sta, c.v->>'location' as loc, c.v->>'channel' as cha,"
                  " c.v->>'subchannel' as sub from epochs e join channels c"
                  " on c.i = e.v->>'channel'");
    database.rows("create view blk as select v, v->>'type' as type, v->>'network' as net,"
                  " v->>'station' as sta, v->>'location' as loc, v->>'channel' as cha,"
                  " v->>'epoch_start' as since, v->>'stage_sequence_number' as stage"
                  " from line where v->>'item' = 'blockette'");
}

/// SQL for the seconds of an ISO time.
std::string seconds(const std::string &text)
{
    return "(strftime('%s',substr(" + text + ",1,19)) + ('0'||rtrim(substr(" + text + ",20),'Z')))";
}

/// What stands in the page, and the same of the lines.
struct Pair {
    const char *about;
    std::string page;
    std::string lines;
};

std::vector<Pair> volume_pairs()
{
    return {
        {"volume",
         "select doc->>'label', doc->>'organization', doc->>'version', doc->>'start',"
         " doc->>'end', doc->>'written' from page",
         "select v->>'label', v->>'originating_organization', v->>'version_of_format', " +
             seconds("v->>'beginning_time'") + "," + seconds("v->>'end_time'") + "," +
             seconds("v->>'volume_time'") + " from blk where type = 10"},
        {"file",
         "select doc->>'complete', doc->>'bytes', doc->>'records', doc->>'$.counted.parameters',"
         " doc->>'$.counted.data', doc->>'$.counted.waste' from page",
         "select v->>'complete', v->>'bytes', v->>'logical_records', v->>'parameter_bytes',"
         " v->>'data_bytes', v->>'waste_bytes' from line where v->>'item' = 'file'"},
        {"types",
         "select v->>'type', v->>'count', v->>'bytes' from types order by v->>'bytes' desc, 1",
         "select t.value->>'type', t.value->>'count', t.value->>'bytes' from line,"
         " json_each(v, '$.types') t where v->>'item' = 'file' order by 3 desc, 1"},
        {"stations",
         "select s.v->>'network', s.v->>'station', e.value->>'start', e.value->>'end',"
         " e.value->>'latitude', e.value->>'longitude', e.value->>'elevation', e.value->>'name'"
         " from stations s, json_each(s.v, '$.epochs') e order by 1, 2, 3",
         "select net, sta, " + seconds("v->>'start_effective_date'") + "," +
             seconds("v->>'end_effective_date'") +
             ", v->>'latitude', v->>'longitude', v->>'elevation', v->>'site_name' from blk"
             " where type = 50 order by 1, 2, 3"},
        {"findings",
         "select r.v->>'rule', r.v->>'severity', f.v->>'record' from findings f"
         " join rules r on r.i = f.v->>'rule' order by 1, 3",
         "select v->>'rule', v->>'severity', v->>'record' from finding order by 1, 3"},
        {"findings' channels",
         "select (c.v->>'network')||'_'||(c.v->>'station_code')||'_'||(c.v->>'location')||'_'||"
         "(c.v->>'channel')||iif(c.v->>'subchannel', ':'||(c.v->>'subchannel'), '')"
         " from findings f join channels c on c.i = f.v->>'channel' order by 1",
         "select substr(s, 1, instr(s, ' ') - 1) from (select (v->>'subject')||' ' as s from"
         " finding) where s like '%\\_%\\_%' escape '\\' order by 1"},
    };
}

std::vector<Pair> channel_pairs()
{
    const std::string times = seconds("v->>'start'") + " as start, " + seconds("v->>'end'") +
                              " + 1.0/(v->>'sample_rate') as next";
    return {
        {"epochs",
         "select net, sta, loc, cha, sub, v->>'start', v->>'end', v->>'sample_rate',"
         " nullif(v->>'instrument',''), nullif(v->>'signal_units',''), v->>'latitude',"
         " v->>'longitude', v->>'elevation', v->>'depth', v->>'azimuth', v->>'dip',"
         " v->>'sensitivity', v->>'sensitivity_frequency' from epoch order by 1, 2, 3, 4, 5, 6",
         "select b.net, b.sta, b.loc, b.cha, b.v->>'subchannel', " + seconds("b.v->>'start_date'") +
             "," + seconds("b.v->>'end_date'") +
             ", b.v->>'sample_rate', b.v->>'instrument', b.v->>'signal_units', b.v->>'latitude',"
             " b.v->>'longitude', b.v->>'elevation', b.v->>'local_depth', b.v->>'azimuth',"
             " b.v->>'dip', g.v->>'sensitivity_or_gain', g.v->>'frequency' from blk b"
             " left join blk g on g.type = 58 and g.stage = 0 and g.sta = b.sta and g.loc = b.loc"
             " and g.cha = b.cha and g.since = b.v->>'start_date' where b.type = 52"
             " order by 1, 2, 3, 4, 5, 6"},
        {"data",
         "select v->>'network', v->>'station_code', v->>'location', v->>'channel', v->>'records',"
         " v->>'samples' from channels where v->>'records' > 0 order by 1, 2, 3, 4",
         "select v->>'network', v->>'station', v->>'location', v->>'channel', count(*),"
         " sum(v->>'samples') from line where v->>'item' = 'data' group by 1, 2, 3, 4"},
        {"what they cover",
         "select v->>'network', v->>'station_code', v->>'location', v->>'channel',"
         " min(s.value), max(s.value), round((select sum(iif(key % 2, value, -value)) from"
         " json_each(v, '$.spans')) + (select total(iif(key % 2, value, -value)) from"
         " json_each(v, '$.overlaps')), 3) from channels, json_each(v, '$.spans') s"
         " group by 1, 2, 3, 4",
         "select net, sta, loc, cha, min(start), max(next), round(sum(next - start), 3) from"
         " (select v->>'network' as net, v->>'station' as sta, v->>'location' as loc,"
         " v->>'channel' as cha, " +
             times +
             " from line where v->>'item' = 'data') where start is not null"
             " group by 1, 2, 3, 4"},
    };
}

/// What stands behind a stage in both.
std::string stage_rows(const std::string &columns, const std::string &where)
{
    return "select net, sta, loc, cha, e.v->>'start', s.v->>'stage', " + columns +
           " from epoch e, json_each(e.v, '$.stages') n join stages s on s.i = n.value"
           " left join filters f on f.i = s.v->>'filter' where " +
           where + " order by 1, 2, 3, 4, 5, 6";
}

std::string line_rows(const std::string &columns, const std::string &types)
{
    return "select net, sta, loc, cha, " + seconds("since") + ", stage, " + columns +
           " from blk where stage > 0 and type in (" + types + ") order by 1, 2, 3, 4, 5, 6";
}

std::vector<Pair> response_pairs()
{
    // Pairs of the page's numbers, and the lines' objects, as one text.
    const auto roots = [](const std::string &key) {
        const std::string of = "json_each(v, '$." + key + "'))";
        return "(select group_concat(((value->>'real')*1.0)||','||((value->>'imaginary')*1.0)) "
               "from " +
               of;
    };
    const std::string pole_lists =
        "(select group_concat(value*1.0) from json_each(f.v, '$.poles')),"
        "(select group_concat(value*1.0) from json_each(f.v, '$.zeros'))";
    return {
        {"responses",
         "select v->>'network', v->>'station', v->>'location', v->>'channel', strftime('%s',"
         "substr(v->>'start',1,4)||'-01-01', '+'||(substr(v->>'start',6,3)-1)||' days',"
         " '0'||substr(v->>'start',10,2)||' hours')*1 from responses order by 1, 2, 3, 4, 5",
         "select net, sta, loc, cha, " + seconds("v->>'start_date'") +
             " from blk where type = 52 order by 1, 2, 3, 4, 5"},
        {"gains", stage_rows("s.v->>'gain', s.v->>'gain_frequency'", "s.v->>'gain' is not null"),
         line_rows("v->>'sensitivity_or_gain', v->>'frequency'", "58")},
        {"decimations",
         stage_rows("s.v->>'input_rate', s.v->>'factor', s.v->>'output_rate',"
                    " s.v->>'delay', s.v->>'correction'",
                    "s.v->>'factor' is not null"),
         line_rows("v->>'input_sample_rate', v->>'decimation_factor',"
                   " 1.0*(v->>'input_sample_rate')/(v->>'decimation_factor'),"
                   " v->>'estimated_delay', v->>'correction_applied'",
                   "57")},
        {"filters",
         stage_rows("nullif(s.v->>'input_units',''), nullif(s.v->>'output_units',''),"
                    " nullif(s.v->>'name',''), f.v->>'kind', f.v->>'coefficients'",
                    "f.i is not null"),
         line_rows("v->>'input_units', v->>'output_units', v->>'response_name', case type"
                   " when 53 then 'poles and zeros' when 54 then 'coefficients'"
                   " when 55 then 'response list' when 61 then 'FIR' else 'polynomial' end,"
                   " case type when 53 then (v->>'number_of_complex_zeros') +"
                   " (v->>'number_of_complex_poles') when 54 then (v->>'number_of_numerators') +"
                   " (v->>'number_of_denominators') when 55 then v->>'number_of_responses_listed'"
                   " else v->>'number_of_coefficients' end",
                   "53, 54, 55, 61, 62")},
        {"poles and zeros",
         stage_rows("f.v->>'type', f.v->>'a0', f.v->>'frequency', " + pole_lists,
                    "f.v->>'kind' = 'poles and zeros'"),
         line_rows("v->>'transfer_function_type', v->>'a0_normalization_factor',"
                   " v->>'normalization_frequency', " +
                       roots("poles") + "," + roots("zeros"),
                   "53")},
    };
}

class PageJson : public testing::TestWithParam<std::string (*)()>
{
protected:
    ~PageJson() override { std::filesystem::remove(path_); }

    const std::string path_ =
        std::filesystem::temp_directory_path() / ("json." + std::to_string(getpid()));
};

TEST_P(PageJson, SaysWhatTheLinesSay)
{
    write_file(path_, GetParam()());
    const Database database;
    load(database, path_);
    for (const auto &pairs : {volume_pairs(), channel_pairs(), response_pairs()})
        for (const Pair &pair : pairs) {
            const std::string lines = database.rows(pair.lines);
            EXPECT_NE(lines, "") << pair.about;
            EXPECT_EQ(database.rows(pair.page), lines) << pair.about;
        }
}

TEST_P(PageJson, IsWhatTheTablesSay)
{
    write_file(path_, GetParam()());
    const Database database;
    load(database, path_);
    const std::string html = output_of("-html", "--", path_);
    // In a channel's first row: records, samples and gaps.
    const std::string cells = database.rows(
        "select '<td class=n>'||(v->>'records')||'<td class=n>'||(v->>'samples')||'<td class=n>'||"
        "max(0, json_array_length(v, '$.spans')/2 - 1)||'<td' from channels");
    for (std::size_t at = 0, end = 0; at < cells.size(); at = end + 2) {
        end = cells.find("|\n", at);
        EXPECT_NE(html.find(cells.substr(at, end - at)), html.npos) << cells.substr(at, end - at);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, PageJson, testing::Values(full_volume, sample_volume));

} // namespace
