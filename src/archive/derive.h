// Makes the tables of CSS 3.0 of the statements that win.
#pragma once

#include "archive/source_merge.h"

#include <memory>
#include <string>
#include <vector>

namespace quarl::archive
{

/// Brings one table up to date with the rows that are wanted: those that stand there already stay
/// as they are, numbers included.
class TableSync
{
public:
    /// How a table is made.
    struct Recipe {
        std::string table;
        std::string id;                ///< the column that new rows get a number in; "": none
        std::vector<std::string> key;  ///< tells rows apart; not the number
        std::vector<std::string> rest; ///< further columns that are set
        std::string scope;             ///< rows that are looked at, as a condition
        std::string wanted;            ///< yields key and rest, from "select" on; "": filled before
    };
    TableSync(DatabaseWriter *database, Recipe recipe);

    void run();
    [[nodiscard]] std::string wanted_table() const { return "want_" + recipe_.table; }

private:
    DatabaseWriter *database_;
    Recipe recipe_;
    std::vector<std::string> queries_;
};

class Derived
{
public:
    explicit Derived(DatabaseWriter *database);

    /// `rows` are those of wfdisc that the files in `files` (folder, name, number of the volume)
    /// have from now on.
    void set_data(const std::string &files, const std::string &rows);
    /// After all sources have elected.
    void run(const std::vector<std::unique_ptr<SourceMerge>> &sources);

private:
    void derive_stations();
    void derive_channels();
    void derive_formats();
    void derive_events();
    void derive_data();
    void describe_data();

    DatabaseWriter *database_;
    Dialect dialect_;
    std::vector<TableSync> stations_;
    std::vector<TableSync> channels_;
    std::vector<TableSync> instruments_;
    std::vector<TableSync> comments_;
    std::vector<TableSync> events_;
    std::vector<TableSync> data_;
    std::string insert_data_;
    std::string insert_files_;
    bool has_data_ = false;
};

} // namespace quarl::archive
