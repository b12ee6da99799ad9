#include "archive/volume_reading.h"

#include "archive/data_runs.h"
#include "archive/statement_rows.h"
#include "check/rule.h"
#include "platform/sha256.h"
#include "platform/text.h"

#include <algorithm>
#include <optional>

namespace quarl::archive
{

namespace
{

/// Six digits or blanks, a type and a continuation code. Fill between records is none and no
/// other.
bool is_header(const std::array<char, 8> &header)
{
    constexpr std::string_view Types = "VASTDRQM";
    return std::all_of(header.begin(), header.begin() + 6,
                       [](char c) { return is_digit(c) || c == ' '; }) &&
           Types.find(header[6]) != std::string_view::npos &&
           (header[7] == ' ' || header[7] == '*' || header[7] == '\0');
}

bool is_fill(const std::array<char, 8> &header)
{
    return std::all_of(header.begin(), header.end(),
                       [](char c) { return c == ' ' || c == '\0' || c == '\n'; });
}

/// What a finding is about and says, as the database has it.
struct FoundText {
    std::string subject;
    std::string text;
    std::string fingerprint = {}; ///< empty: made of the two
};

double share(std::int64_t part, std::int64_t all)
{
    return all > 0 ? static_cast<double>(part) / static_cast<double>(all) : 0.0;
}

} // namespace

std::string ReadingOptions::text() const
{
    return std::string(check ? "check" : "no-check") + (data ? ",data" : ",no-data") +
           (select.empty() ? "" : ",select=" + select);
}

struct VolumeReading::Work {
    explicit Work(const ReadingOptions &given) : options(given), runs(given.selection)
    {
        if (given.check)
            checker = std::make_unique<Checker>(Chosen(all_rules().size(), true), true);
    }

    void add_finding(VolumeRows *rows, std::string_view rule, std::string_view severity,
                     const FoundText &told, std::int64_t record = 0, std::int64_t more = 0);
    void add_findings(VolumeRows *rows);
    [[nodiscard]] RowText facts(const StatementRows &statements) const;

    const ReadingOptions &options;
    std::unique_ptr<Checker> checker;
    Inventory inventory;
    std::optional<blk_010_t> identifier;
    std::vector<std::string> channel_names; ///< of the inventory's channel epochs
    bool has_station = false;
    EventItems events;
    DataRuns runs;
    Statistics statistics;
    std::int64_t data_records = 0;
    std::int64_t samples = 0;
    bool complete = false;
    std::array<std::int64_t, 3> severities{}; ///< findings of the check
    std::int64_t findings = 0;
};

VolumeReading::VolumeReading(const ReadingOptions &options) : work_(std::make_unique<Work>(options))
{
}
VolumeReading::~VolumeReading() = default;

void VolumeReading::hear(const Message &message)
{
    if (work_->checker)
        work_->checker->hear(message);
}

void VolumeReading::enter(const LogicalRecord &record)
{
    if (is_header(record.header))
        has_records_ = true;
    else if (!is_fill(record.header))
        ++other_records_;
    if (work_->checker)
        work_->checker->enter(record);
}

void VolumeReading::add(const Item &item)
{
    Work &work = *work_;
    if (work.checker)
        work.checker->add(item);
    else
        work.inventory.add(item);
    if (const auto *header = item.get<blk_dh_t>()) {
        ++work.data_records;
        work.samples += header->nsamps;
        if (work.options.data)
            work.runs.add(item, *header);
        return;
    }
    if (const auto *end = item.get<FileEnd>()) {
        work.statistics = end->statistics;
        work.complete = end->complete();
        return;
    }
    work.statistics.records = item.place().record;
    work.has_station |= item.get<blk_050_t>() != nullptr;
    if (const auto *channel = item.get<blk_052_t>(); channel && work.has_station)
        work.channel_names.emplace_back(channel->channel);
    if (const auto *identifier = item.get<blk_010_t>(); identifier && !work.identifier)
        work.identifier = *identifier;
    work.events.add(item);
}

RowText VolumeReading::Work::facts(const StatementRows &statements) const
{
    const blk_010_t none;
    const blk_010_t &of = identifier ? *identifier : none;
    std::vector<std::string> cuts;
    const Table &table = our_table("quarl_volume");
    RowText row;
    row.text(of.label, table.column("label"), &cuts);
    row.text(of.originating_org, table.column("organization"), &cuts);
    row.real(start_seconds(of.volume_time), Always).real(start_seconds(of.beg_time), Always);
    row.real(end_seconds(of.end_time), Forever);
    row.whole(static_cast<std::int64_t>(statements.stations()));
    row.whole(static_cast<std::int64_t>(statements.channels()));
    row.whole(static_cast<std::int64_t>(statements.count(Statement::epoch)));
    row.whole(statistics.records).whole(statistics.bytes).whole(data_records).whole(samples);
    row.real(share(statistics.parameters, statistics.bytes), 0);
    row.real(share(statistics.data, statistics.bytes), 0);
    row.real(share(statistics.waste, statistics.bytes), 0).whole(complete ? 1 : 0);
    for (const std::int64_t count : severities)
        row.whole(checker ? count : -1);
    return row;
}

void VolumeReading::Work::add_finding(VolumeRows *rows, std::string_view rule,
                                      std::string_view severity, const FoundText &told,
                                      std::int64_t record, std::int64_t more)
{
    RowText row;
    row.whole(++findings);
    row.any(told.fingerprint.empty()
                ? sha256(std::string(rule) + "\n" + told.subject + "\n" + told.text).substr(0, 16)
                : told.fingerprint);
    row.any(rule).any(severity).any(told.subject).any(told.text).whole(record).whole(more);
    rows->findings.add(row);
}

void VolumeReading::Work::add_findings(VolumeRows *rows)
{
    for (const Finding &finding : checker->take(&inventory)) {
        const Rule &rule = all_rules()[finding.rule];
        ++severities[static_cast<std::size_t>(severity_of(finding))];
        add_finding(rows, rule.name, name_of(severity_of(finding)),
                    {text_of(finding.told.subject, finding.record), text_of(finding),
                     fingerprint_of(finding)},
                    finding.record, finding.more);
    }
}

VolumeRows VolumeReading::take()
{
    Work &work = *work_;
    VolumeRows rows;
    StatementRows statements(work.options.selection);
    if (work.checker)
        work.add_findings(&rows);
    else
        work.inventory.finish();
    statements.add(work.inventory, work.channel_names);
    statements.add(work.inventory, work.events);
    const double written = work.identifier ? start_seconds(work.identifier->volume_time) : Always;
    rows.written = std::isfinite(written) ? written : Always;
    statements.take(&rows);
    for (const std::string &told : rows.told)
        work.add_finding(&rows, "text-cut", "note",
                         {told.substr(0, told.find(": ")), told.substr(told.find(": ") + 2)});
    rows.data = work.runs.take();
    rows.facts = work.facts(statements);
    return rows;
}

} // namespace quarl::archive
