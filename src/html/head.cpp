#include "html/head.h"

#include "check/rule.h"
#include "html/notation.h"
#include "platform/format.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <string>

namespace quarl::html
{

namespace
{

void fact(Markup &page, Literal name)
{
    page.put("<div><dt>");
    page.put(name);
    page.put("</dt><dd>");
}

void end_fact(Markup &page) { page.put("</dd></div>\n"); }

void fact(Markup &page, Literal name, std::string_view text)
{
    fact(page, name);
    page.text(trimmed(text));
    end_fact(page);
}

void signed_number(Markup &page, std::int64_t value)
{
    if (value < 0)
        page.put("−");
    page.grouped(value < 0 ? -value : value);
}

void fact(Markup &page, Literal name, std::int64_t value)
{
    fact(page, name);
    page.grouped(value);
    end_fact(page);
}

/// With the day of the year as a title.
void time_fact(Markup &page, Literal name, std::string_view time)
{
    const std::string iso = page_time(time);
    if (iso.empty()) {
        fact(page, name, time);
        return;
    }
    fact(page, name);
    page.put("<span title=\"");
    page.text(time);
    page.put("\">");
    page.text(iso);
    page.put("</span>");
    end_fact(page);
}

void identifier_facts(Markup &page, const blk_010_t &identifier)
{
    fact(page, "Label", identifier.label);
    fact(page, "Organization", identifier.originating_org);
    fact(page, "Version");
    page.real(identifier.version);
    end_fact(page);
    time_fact(page, "From", identifier.beg_time);
    time_fact(page, "To", identifier.end_time);
    time_fact(page, "Written", identifier.volume_time);
}

/// From the first to the last sample.
void data_times_facts(Markup &page, const std::vector<PageChannel> &channels)
{
    double start = Forever;
    double end = Always;
    for (const PageChannel &channel : channels)
        for (const DataSpan &span : channel.data.spans) {
            start = std::min(start, span.start);
            end = std::max(end, span.end);
        }
    if (end <= start)
        return;
    fact(page, "Data from", page_time(start));
    fact(page, "Data to", page_time(end));
}

/// How data are written, in the words of their records.
void data_look_facts(Markup &page, const std::vector<PageChannel> &channels)
{
    std::set<double> rates;
    std::set<std::string> formats;
    std::set<char> qualities;
    for (const PageChannel &channel : channels) {
        rates.insert(channel.data.look.rates.begin(), channel.data.look.rates.end());
        formats.insert(channel.data.look.formats.begin(), channel.data.look.formats.end());
        qualities.insert(channel.data.look.qualities.begin(), channel.data.look.qualities.end());
    }
    fact(page, "Sample rates");
    const char *comma = "";
    for (const double rate : rates) {
        page.text(comma);
        page.real(rate);
        comma = ", ";
    }
    page.put(" Hz");
    end_fact(page);
    std::string joined;
    for (const std::string &format : formats)
        joined += (joined.empty() ? "" : ", ") + format;
    if (!joined.empty())
        fact(page, "Encodings", joined);
    joined.clear();
    for (const char quality : qualities)
        joined += (joined.empty() ? "" : ", ") + std::string(1, quality);
    fact(page, "Data quality", joined);
}

/// Those of the headers and those that data records name.
std::int64_t stations_named(const std::vector<PageChannel> &channels, const Inventory &inventory)
{
    std::set<ChannelCode> stations;
    for (const Station &station : inventory.stations())
        stations.insert(station.code);
    for (const PageChannel &channel : channels)
        if (!channel.described)
            stations.insert(ChannelCode(channel.code.network(), channel.code.station()));
    return static_cast<std::int64_t>(stations.size());
}

void write_facts(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels)
{
    const Inventory &inventory = volume.inventory;
    page.put("<dl class=\"facts\">\n");
    if (volume.records.identifier)
        identifier_facts(page, *volume.records.identifier);
    fact(page, "Bytes", volume.statistics.bytes);
    fact(page, "Logical records", volume.statistics.records);
    fact(page, "Record length", record_length(volume));
    fact(page, "Stations", stations_named(channels, inventory));
    fact(page, "Channels", static_cast<std::int64_t>(channels.size()));
    if (!inventory.channel_epochs().empty())
        fact(page, "Channel epochs", static_cast<std::int64_t>(inventory.channel_epochs().size()));
    data_times_facts(page, channels);
    if (!inventory.data_channels().empty())
        data_look_facts(page, channels);
    fact(page, "Read to its end", volume.complete ? "yes" : "no");
    fact(page, "Made by", volume.program);
    page.put("</dl>\n");
}

double percent(std::int64_t part, std::int64_t whole)
{
    if (whole <= 0)
        return 0;
    return std::round(1000.0 * static_cast<double>(part) / static_cast<double>(whole)) / 10;
}

/// Where the statistics are not those of the bytes that were read.
void write_counted(Markup &page, const Statistics &statistics)
{
    page.put("<p class=\"counted muted\">The statistics of a listing go by the lengths that are "
             "stated: ");
    page.grouped(statistics.parameters);
    page.put(" bytes of parameters, ");
    page.grouped(statistics.data);
    page.put(" of data, ");
    signed_number(page, statistics.waste);
    page.put(" wasted; ");
    page.grouped(statistics.bytes);
    page.put(" were read.</p>");
}

void write_shares(Markup &page, const Statistics &statistics)
{
    struct Share {
        Literal css_class;
        Literal name;
        std::int64_t bytes;
    };
    const Shares read = shares_of(statistics);
    const std::array<Share, 3> shares = {{{"parameters", "Parameters", read.parameters},
                                          {"data", "Data", read.data},
                                          {"waste", "Wasted", read.waste}}};
    page.put("<div id=\"shares\"><svg class=\"bar\" width=\"100%\" height=\"16\" role=\"img\" "
             "aria-label=\"Shares of the volume\">");
    double from = 0;
    for (const Share &share : shares) {
        const double width = percent(share.bytes, statistics.bytes);
        page.put("<rect class=\"");
        page.put(share.css_class);
        page.put("\" x=\"");
        page.real(from);
        page.put("%\" width=\"");
        page.real(width);
        page.put("%\" height=\"16\"/>");
        from = std::round((from + width) * 10) / 10;
    }
    page.put("</svg>\n<ul class=\"shares\">");
    for (const Share &share : shares) {
        page.put("<li class=\"");
        page.put(share.css_class);
        page.put("\">");
        page.put("<b>");
        page.real(percent(share.bytes, statistics.bytes));
        page.put(" %</b> ");
        page.put(share.name);
        page.put(" <span class=\"muted\">");
        page.grouped(share.bytes);
        page.put(" bytes</span></li>");
    }
    page.put("</ul>");
    if (read.data != statistics.data || read.parameters != statistics.parameters)
        write_counted(page, statistics);
    page.put("</div>\n");
}

/// The table of all types; the script draws the largest as bars.
void write_types(Markup &page, const Statistics &statistics)
{
    page.put("<div id=\"types\"><table id=\"types-table\"><caption>Blockette types by "
             "bytes</caption><thead><tr>"
             "<th scope=\"col\">Type<th scope=\"col\">Name<th scope=\"col\" class=n>Count"
             "<th scope=\"col\" class=n>Bytes</thead><tbody>\n");
    for (const Statistics::Type &type : types_by_size(statistics)) {
        page.put("<tr><td>");
        if (type.type != Data_Record)
            page.text(formatted<"%03d">(type.type));
        page.put("<td>");
        page.text(name_of(type));
        page.put("<td class=n>");
        page.grouped(type.count);
        page.put("<td class=n>");
        page.grouped(type.bytes);
        page.put("\n");
    }
    page.put("</table></div>\n");
}

/// How many findings of each severity there are.
std::array<std::int64_t, 3> count_findings(const VolumeRead &volume)
{
    std::array<std::int64_t, 3> count{};
    for (const Finding &finding : volume.findings)
        ++count[static_cast<std::size_t>(severity_of(finding))];
    return count;
}

void write_counts(Markup &page, const std::array<std::int64_t, 3> &count)
{
    bool any = false;
    for (const Severity severity : {Severity::error, Severity::warning, Severity::note}) {
        const std::int64_t found = count[static_cast<std::size_t>(severity)];
        if (found == 0)
            continue;
        if (any)
            page.put(", ");
        page.grouped(found);
        page.put(" ");
        page.text(name_of(severity));
        if (found > 1)
            page.put("s");
        any = true;
    }
    if (!any)
        page.put("No findings: all rules hold");
}

/// Is it sound? In one line.
void write_verdict(Markup &page, const VolumeRead &volume)
{
    const std::array<std::int64_t, 3> count = count_findings(volume);
    page.put("<p id=\"verdict\" class=\"");
    const bool is_bad = holds_nothing(volume) || !volume.complete || count[0] > 0;
    page.text(is_bad ? "error" : count[1] > 0 ? "warning" : "sound");
    page.put("\">");
    if (volume.statistics.bytes == 0 && holds_nothing(volume)) {
        page.put("The input is empty: there is no volume.");
    } else if (holds_nothing(volume)) {
        page.put("No SEED records: none of the ");
        page.grouped(volume.statistics.bytes);
        page.put(" bytes that were read belong to one.");
    } else {
        write_counts(page, count);
        if (!volume.complete) {
            page.text(volume.cut ? "; cut at byte " : "; not read beyond byte ");
            page.grouped(volume.statistics.bytes);
        }
    }
    page.put("</p>\n");
}

} // namespace

std::string_view title_of(const VolumeRead &volume)
{
    return volume.name == "-" ? std::string_view("standard input") : base_name(volume.name);
}

void write_head(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels)
{
    page.put("<header id=\"head\">\n<h1>");
    page.path(title_of(volume));
    page.put("</h1>\n");
    write_verdict(page, volume);
    write_facts(page, volume, channels);
    if (!holds_nothing(volume)) {
        write_shares(page, volume.statistics);
        write_types(page, volume.statistics);
    }
    page.put("</header>\n");
}

} // namespace quarl::html
