#include "html/page.h"

#include "check/rule.h"
#include "html/data.h"
#include "html/embedded.h"
#include "html/markup.h"
#include "html/tables.h"
#include "platform/format.h"
#include "platform/text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <quarl/fields.h>

namespace quarl::html
{

namespace
{

void write_policy(Markup &page)
{
    page.put("<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
             "script-src '");
    page.text(Drawing.hash);
    page.put("' '");
    page.text(Script.hash);
    page.put("'; style-src '");
    page.text(Style.hash);
    page.put("'; base-uri 'none'; form-action 'none'\">\n");
}

void write_script(Markup &page, const Embedded &script)
{
    page.put("<script>");
    page.embed(script.text);
    page.put("</script>\n");
}

std::string_view title_of(const VolumeRead &volume)
{
    return volume.name == "-" ? std::string_view("standard input") : base_name(volume.name);
}

void write_top(Markup &page, const VolumeRead &volume)
{
    page.put("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n");
    write_policy(page);
    page.put("<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>");
    page.path(title_of(volume));
    page.put(" – ");
    page.text(volume.program);
    page.put("</title>\n<style>");
    page.embed(Style.text);
    page.put("</style>\n");
    write_script(page, Drawing);
    page.put("</head>\n<body>\n");
}

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

void fact(Markup &page, Literal name, std::int64_t value)
{
    fact(page, name);
    page.grouped(value);
    end_fact(page);
}

void identifier_facts(Markup &page, const blk_010_t &identifier)
{
    fact(page, "Label", identifier.label);
    fact(page, "Organization", identifier.originating_org);
    fact(page, "Version");
    page.real(identifier.version);
    end_fact(page);
    fact(page, "From", identifier.beg_time);
    fact(page, "To", identifier.end_time);
    fact(page, "Written", identifier.volume_time);
}

void write_facts(Markup &page, const VolumeRead &volume)
{
    const Inventory &inventory = volume.inventory;
    page.put("<dl class=\"facts\">\n");
    if (volume.records.identifier)
        identifier_facts(page, *volume.records.identifier);
    fact(page, "Bytes", volume.statistics.bytes);
    fact(page, "Logical records", volume.statistics.records);
    fact(page, "Record length", record_length(volume));
    fact(page, "Stations", static_cast<std::int64_t>(inventory.stations().size()));
    fact(page, "Channels", static_cast<std::int64_t>(inventory.channels().size()));
    fact(page, "Channel epochs", static_cast<std::int64_t>(inventory.channel_epochs().size()));
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

void write_shares(Markup &page, const Statistics &statistics)
{
    struct Share {
        Literal css_class;
        Literal name;
        std::int64_t bytes;
    };
    const std::array<Share, 3> shares = {{{"parameters", "Parameters", statistics.parameters},
                                          {"data", "Data", statistics.data},
                                          {"waste", "Wasted", statistics.waste}}};
    const std::int64_t whole = statistics.parameters + statistics.data + statistics.waste;
    page.put("<div id=\"shares\"><svg class=\"bar\" width=\"100%\" height=\"16\" role=\"img\" "
             "aria-label=\"Shares of the volume\">");
    double from = 0;
    for (const Share &share : shares) {
        const double width = percent(share.bytes, whole);
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
        page.real(percent(share.bytes, whole));
        page.put(" %</b> ");
        page.put(share.name);
        page.put(" <span class=\"muted\">");
        page.grouped(share.bytes);
        page.put(" bytes</span></li>");
    }
    page.put("</ul></div>\n");
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

void write_head(Markup &page, const VolumeRead &volume)
{
    page.put("<header id=\"head\">\n<h1>");
    page.path(title_of(volume));
    page.put("</h1>\n");
    write_facts(page, volume);
    write_shares(page, volume.statistics);
    write_types(page, volume.statistics);
    page.put(
        "</header>\n<nav id=\"nav\"><a href=\"#findings\">Findings</a> <a href=\"#map\">Map</a> "
        "<a href=\"#timeline\">Timeline</a> <a href=\"#responses\">Responses</a> "
        "<a href=\"#tables\">Tables</a></nav>\n<main>\n");
}

void write_subject(Markup &page, const std::string &subject, const Target &target)
{
    if (target.channel) {
        page.put("<a href=\"#channel-");
        page.number(static_cast<std::int64_t>(*target.channel));
    } else if (target.station) {
        page.put("<a href=\"#station-");
        page.number(static_cast<std::int64_t>(*target.station));
    } else {
        page.text(subject);
        return;
    }
    page.put("\">");
    page.text(subject);
    page.put("</a>");
}

/// The findings of one rule.
void write_group(Markup &page, const std::vector<const Finding *> &findings, const Targets &targets)
{
    const Rule &rule = all_rules()[findings.front()->rule];
    page.put("<details open class=\"");
    page.text(name_of(rule.severity));
    page.put("\" data-rule=\"");
    page.text(rule.name);
    page.put("\"><summary><span class=\"severity\">");
    page.text(name_of(rule.severity));
    page.put("</span> <b>");
    page.text(rule.name);
    page.put("</b> <span class=\"count\">");
    page.grouped(static_cast<std::int64_t>(findings.size()));
    page.put("</span> <span class=\"muted\">");
    page.text(rule.sentence);
    page.put("</span></summary><ul>\n");
    for (const Finding *finding : findings) {
        page.put("<li><span class=\"record\">record ");
        page.number(finding->record);
        page.put("</span> ");
        write_subject(page, finding->told.subject, targets.find(finding->told.subject));
        page.put(" ");
        page.text(text_of(*finding));
        page.put("\n");
    }
    page.put("</ul></details>\n");
}

/// Grouped by rule: errors first, then warnings and notes.
void write_findings(Markup &page, const VolumeRead &volume, const Targets &targets)
{
    std::vector<std::vector<const Finding *>> by_rule(all_rules().size());
    for (const Finding &finding : volume.findings)
        by_rule[finding.rule].push_back(&finding);
    page.put("<section id=\"findings\"><h2>Findings</h2>\n");
    if (volume.findings.empty())
        page.put("<p>No findings: all rules hold.</p>\n");
    for (const Severity severity : {Severity::error, Severity::warning, Severity::note})
        for (std::size_t rule = 0; rule < by_rule.size(); ++rule)
            if (!by_rule[rule].empty() && all_rules()[rule].severity == severity)
                write_group(page, by_rule[rule], targets);
    page.put("</section>\n");
}

/// Sections that the script fills.
void write_views(Markup &page)
{
    page.put(
        "<section id=\"map\"><h2>Map</h2><div id=\"map-view\"></div></section>\n"
        "<section id=\"timeline\"><h2>Timeline</h2><div id=\"timeline-view\"></div></section>\n"
        "<section id=\"responses\"><h2>Responses</h2>"
        "<div id=\"responses-view\"></div></section>\n"
        "<noscript><p>Map, timeline and curves are drawn by scripts.</p></noscript>\n");
}

} // namespace

void write_page(Out &out, const VolumeRead &volume)
{
    const std::vector<PageChannel> channels = page_channels(volume.inventory);
    const Targets targets(volume.inventory, channels);
    Markup page(out);
    write_top(page, volume);
    write_head(page, volume);
    write_findings(page, volume, targets);
    write_views(page);
    write_tables(page, volume, channels);
    page.put("</main>\n<script type=\"application/json\" id=\"volume\">");
    write_data(out, volume, channels, targets);
    page.put("</script>\n");
    write_script(page, Script);
    page.put("</body>\n</html>\n");
}

} // namespace quarl::html
