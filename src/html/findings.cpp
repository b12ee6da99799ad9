#include "html/findings.h"

#include "check/rule.h"
#include "html/notation.h"

#include <map>
#include <string>
#include <vector>

namespace quarl::html
{

namespace
{

constexpr std::size_t Unfolded = 50; ///< findings of a rule that are shown at first

/// The stage that a finding is about; 0: none.
int stage_of(const Subject &subject)
{
    const auto *epoch = std::get_if<about::Epoch>(&subject);
    return epoch ? epoch->stage : 0;
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
    bool link(const Subject &subject);

    Markup &page_;
    const Targets &targets_;
    Notation notation_;
};

/// The beginning of a link to what a finding is about; whether there is such a thing.
bool FindingRows::link(const Subject &subject)
{
    const Target target = targets_.find(subject);
    const int stage = stage_of(subject);
    if (stage > 0)
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
    if (stage > 0) {
        page_.put("-");
        page_.number(stage);
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
    const bool is_link = link(finding.told.subject);
    page_.text(notation_.put(text_of(finding.told.subject, finding.record)));
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
    const std::string_view severity = name_of(severity_of(*findings.front()));
    page_.put("<details open class=\"");
    page_.text(severity);
    page_.put("\" data-rule=\"");
    page_.text(rule.name);
    page_.put("\"><summary><span class=\"severity\">");
    page_.text(severity);
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
    using OfOneRule = std::map<std::size_t, std::vector<const Finding *>>;
    std::map<Severity, OfOneRule> groups;
    for (const Finding &finding : volume.findings)
        groups[severity_of(finding)][finding.rule].push_back(&finding);
    page.put("<section id=\"findings\"><h2>Findings</h2>\n");
    if (holds_nothing(volume))
        page.put("<p>There is nothing to look at.</p>\n");
    else if (volume.findings.empty())
        page.put("<p>No findings: all rules hold.</p>\n");
    FindingRows findings(page, volume, targets);
    for (const auto &[severity, rules] : groups)
        for (const auto &[rule, of_rule] : rules)
            findings.group(of_rule);
    page.put("</section>\n");
}

} // namespace quarl::html
