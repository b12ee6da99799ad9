#include "check/finding.h"

#include <algorithm>

namespace quarl
{

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
    return sorted;
}

} // namespace quarl
