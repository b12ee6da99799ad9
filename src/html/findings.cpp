#include "html/findings.h"

#include "check/rule.h"
#include "html/notation.h"

#include <optional>
#include <string>
#include <vector>

namespace quarl::html
{

namespace
{

constexpr std::size_t Unfolded = 50; ///< findings of a rule that are shown at first

/// The stage that a finding's text names.
std::optional<std::int64_t> stage_in(std::string_view text)
{
    constexpr std::string_view Word = "stage ";
    for (std::size_t at = text.find(Word); at != text.npos; at = text.find(Word, at + 1)) {
        std::int64_t number = 0;
        std::size_t end = at + Word.size();
        while (end < text.size() && end < at + Word.size() + 3 && text[end] >= '0' &&
               text[end] <= '9')
            number = 10 * number + (text[end++] - '0');
        if (end > at + Word.size())
            return number;
    }
    return {};
}

class FindingRows
{
public:
    FindingRows(Markup &page, const VolumeRead &volume, const Targets &targets)
        : page_(page), targets_(targets)
    {
        for (const Station &station : volume.inventory.stations())
            notation_.know(station.code);
        for (const Channel &channel : volume.inventory.channels())
            notation_.know(channel.code);
        for (const DataChannel &channel : volume.inventory.data_channels())
            notation_.know(channel.code);
    }

    void group(const std::vector<const Finding *> &findings);

private:
    void row(const Finding &finding);
    bool link(const Target &target, std::string_view text);

    Markup &page_;
    const Targets &targets_;
    Notation notation_;
};

/// The beginning of a link to what a finding is about; whether there is such a thing.
bool FindingRows::link(const Target &target, std::string_view text)
{
    const std::optional<std::int64_t> stage = target.epoch ? stage_in(text) : std::nullopt;
    if (stage)
        page_.put("<a href=#stage-");
    else if (target.epoch)
        page_.put("<a href=#epoch-");
    else if (target.channel)
        page_.put("<a href=#channel-");
    else if (target.station)
        page_.put("<a href=#station-");
    else
        return false;
    const std::size_t index = target.epoch     ? *target.epoch
                              : target.channel ? *target.channel
                                               : *target.station;
    page_.number(static_cast<std::int64_t>(index));
    if (stage) {
        page_.put("-");
        page_.number(*stage);
    }
    page_.put(">");
    return true;
}

void FindingRows::row(const Finding &finding)
{
    const std::string text = text_of(finding);
    page_.put("<li><span>record ");
    page_.number(finding.record);
    page_.put("</span> ");
    const bool is_link = link(targets_.find(finding.told.subject), text);
    page_.text(notation_.put(finding.told.subject));
    if (is_link)
        page_.put("</a>");
    page_.put(" ");
    page_.text(notation_.put(text));
    page_.put("\n");
}

/// The findings of one rule.
void FindingRows::group(const std::vector<const Finding *> &findings)
{
    const Rule &rule = all_rules()[findings.front()->rule];
    page_.put("<details open class=\"");
    page_.text(name_of(rule.severity));
    page_.put("\" data-rule=\"");
    page_.text(rule.name);
    page_.put("\"><summary><span class=\"severity\">");
    page_.text(name_of(rule.severity));
    page_.put("</span> <b>");
    page_.text(rule.name);
    page_.put("</b> <span class=\"count\">");
    page_.grouped(static_cast<std::int64_t>(findings.size()));
    page_.put("</span> <span class=\"muted\">");
    page_.text(rule.sentence);
    page_.put("</span></summary><ul>\n");
    for (std::size_t i = 0; i < findings.size(); ++i) {
        if (i == Unfolded) {
            page_.put("</ul><details class=rest><summary>");
            page_.grouped(static_cast<std::int64_t>(findings.size() - Unfolded));
            page_.put(" more</summary><ul>\n");
        }
        row(*findings[i]);
    }
    page_.put("</ul>");
    if (findings.size() > Unfolded)
        page_.put("</details>");
    page_.put("</details>\n");
}

} // namespace

void write_findings(Markup &page, const VolumeRead &volume, const Targets &targets)
{
    std::vector<std::vector<const Finding *>> by_rule(all_rules().size());
    for (const Finding &finding : volume.findings)
        by_rule[finding.rule].push_back(&finding);
    page.put("<section id=\"findings\"><h2>Findings</h2>\n");
    if (holds_nothing(volume))
        page.put("<p>There is nothing to look at.</p>\n");
    else if (volume.findings.empty())
        page.put("<p>No findings: all rules hold.</p>\n");
    FindingRows findings(page, volume, targets);
    for (const Severity severity : {Severity::error, Severity::warning, Severity::note})
        for (std::size_t rule = 0; rule < by_rule.size(); ++rule)
            if (!by_rule[rule].empty() && all_rules()[rule].severity == severity)
                findings.group(by_rule[rule]);
    page.put("</section>\n");
}

} // namespace quarl::html
