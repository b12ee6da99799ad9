#include "check/finding.h"

#include "platform/format.h"

#include <algorithm>
#include <array>
#include <set>
#include <tuple>

namespace quarl
{

namespace
{

std::string with_time(std::string text, std::string_view time)
{
    return time.empty() ? text : std::move(text.append(" ").append(time));
}

struct TextOf {
    std::int64_t record;

    std::string operator()(const about::Volume & /*subject*/) const { return "volume"; }
    std::string operator()(const about::Record & /*subject*/) const
    {
        return "record " + std::to_string(record);
    }
    std::string operator()(const about::Blockette &subject) const
    {
        std::string text = formatted<"blockette %03d">(subject.type);
        if (subject.number > 0)
            text += " (number " + std::to_string(subject.number) + " of its record)";
        return subject.of.empty() ? text : text + " of " + subject.of;
    }
    std::string operator()(const about::Station &subject) const
    {
        return with_time(subject.code.text(), time_text(subject.time));
    }
    std::string operator()(const about::Channel &subject) const
    {
        return with_time(subject.code.text(), subject.time);
    }
    std::string operator()(const about::Epoch &subject) const
    {
        return with_time(subject.code.text(), time_text(subject.start));
    }
    std::string operator()(const about::Unit &subject) const
    {
        return "unit (034) " + std::to_string(subject.code);
    }
};

/// The channel that a finding is about; null: none.
const ChannelCode *channel_of(const Subject &subject)
{
    if (const auto *epoch = std::get_if<about::Epoch>(&subject))
        return &epoch->code;
    const auto *channel = std::get_if<about::Channel>(&subject);
    return channel ? &channel->code : nullptr;
}

/// A channel as it is called beside others of its station: "00_BHZ", "BHZ".
std::string name_at_station(const ChannelCode &code)
{
    const std::string text = code.text();
    const std::size_t station = ChannelCode(code.network(), code.station()).text().size();
    const std::string name = text.substr(std::min(text.size(), station + 1));
    return name.starts_with('_') ? name.substr(1) : name;
}

/// Findings that differ in their channel alone.
struct Alike {
    std::size_t first = 0; ///< index of the finding that stands for them
    std::set<ChannelCode> seen;
    std::vector<std::string> names; ///< of the first channels
};

/// "BHZ and BHN", "BHZ, BHN, BHE and 15 more channels".
std::string names_of(const Alike &alike)
{
    const std::size_t more = alike.seen.size() - alike.names.size();
    std::string text = alike.names.front();
    for (std::size_t i = 1; i < alike.names.size(); ++i)
        text += (more == 0 && i + 1 == alike.names.size() ? " and " : ", ") + alike.names[i];
    if (more > 0)
        text += " and " + std::to_string(more) + " more channel" + (more == 1 ? "" : "s");
    return text;
}

constexpr std::size_t Named = 3; ///< channels that are told by name

/// Joins findings of one kind at several channels of a station to the first of them.
void join_channels(std::vector<Finding> *findings)
{
    std::map<std::tuple<std::size_t, ChannelCode, std::string>, Alike> all;
    std::vector<bool> joined(findings->size());
    for (std::size_t i = 0; i < findings->size(); ++i) {
        Finding &finding = (*findings)[i];
        const ChannelCode *code = channel_of(finding.told.subject);
        if (!code)
            continue;
        const std::string &kind = finding.told.kind.empty() ? finding.told.text : finding.told.kind;
        const auto [known, is_new] =
            all.try_emplace({finding.rule, {code->network(), code->station()}, kind});
        Alike &alike = known->second;
        if (alike.seen.insert(*code).second && alike.names.size() < Named)
            alike.names.push_back(name_at_station(*code));
        if (is_new) {
            alike.first = i;
        } else {
            (*findings)[alike.first].more += finding.more;
            joined[i] = true;
        }
    }
    for (const auto &[key, alike] : all)
        if (alike.seen.size() > 1) {
            Told &told = (*findings)[alike.first].told;
            told.subject = about::Station{std::get<1>(key)};
            told.text = names_of(alike) + ": " + told.text;
        }
    std::size_t next = 0;
    std::erase_if(*findings, [&](const Finding & /*finding*/) { return joined[next++]; });
}

} // namespace

std::string_view name_of(Severity severity)
{
    switch (severity) {
    case Severity::error:
        return "error";
    case Severity::warning:
        return "warning";
    case Severity::note:
        break;
    }
    return "note";
}

std::string text_of(const Subject &subject, std::int64_t record)
{
    return std::visit(TextOf{record}, subject);
}

Finding *Findings::find(std::size_t rule, std::string_view group)
{
    if (rule >= groups_.size())
        return nullptr;
    const auto known = groups_[rule].find(group);
    return known == groups_[rule].end() ? nullptr : &findings_[known->second];
}

void Findings::keep(std::size_t rule, std::string_view group, Finding finding)
{
    if (rule >= groups_.size())
        groups_.resize(rule + 1);
    groups_[rule].emplace(group, findings_.size());
    findings_.push_back(std::move(finding));
}

std::vector<Finding> Findings::take()
{
    groups_.clear();
    std::vector<Finding *> order;
    order.reserve(findings_.size());
    for (Finding &finding : findings_)
        order.push_back(&finding);
    std::stable_sort(order.begin(), order.end(), [](const Finding *a, const Finding *b) {
        return a->record != b->record ? a->record < b->record : a->rule < b->rule;
    });
    std::vector<Finding> sorted;
    sorted.reserve(order.size());
    for (Finding *finding : order)
        sorted.push_back(std::move(*finding));
    findings_.clear();
    join_channels(&sorted);
    return sorted;
}

} // namespace quarl
