#include "check/rule.h"

#include "platform/text.h"

#include <algorithm>

namespace quarl
{

namespace
{

/// The text without the numbers of records: "records 3 and 4" is "records and".
std::string without_places(std::string_view text)
{
    std::string all;
    bool places = false;
    while (!text.empty()) {
        const std::size_t size = std::min(text.find(' ') + 1, text.size());
        const std::size_t end = size == 0 ? text.size() : size;
        const std::string_view word = text.substr(0, end);
        const bool number = is_digit(word.front());
        if (!(places && number))
            all += word;
        if (!number)
            places = word == "record " || word == "records " || (places && word == "and ");
        text.remove_prefix(end);
    }
    return all;
}

} // namespace

const std::vector<Rule> &all_rules()
{
    static const std::vector<Rule> rules = [] {
        std::vector<Rule> all;
        for (const auto part :
             {record_rules(), volume_rules(), index_rules(), time_rules(), header_rules(),
              epoch_rules(), stage_rules(), gain_rules(), data_rules()})
            all.insert(all.end(), part.begin(), part.end());
        return all;
    }();
    return rules;
}

std::string text_of(const Finding &finding)
{
    std::string text = finding.told.text;
    if (finding.more == 0)
        return text;
    std::string_view what = all_rules()[finding.rule].more;
    if (finding.more == 1 && what != "series")
        what.remove_suffix(1);
    return text + "; and " + std::to_string(finding.more) + " more " + std::string(what) +
           finding.told.rest;
}

Severity severity_of(const Finding &finding)
{
    return finding.told.severity.value_or(all_rules()[finding.rule].severity);
}

std::string fingerprint_of(const Finding &finding)
{
    constexpr std::uint64_t Basis = 0xcbf29ce484222325;
    constexpr std::uint64_t Prime = 0x100000001b3;
    Subject subject = finding.told.subject;
    if (auto *blockette = std::get_if<about::Blockette>(&subject))
        blockette->number = 0;
    const Rule &rule = all_rules()[finding.rule];
    std::uint64_t hash = Basis;
    for (const std::string &part : {std::string(rule.name), without_places(text_of(subject, 0)),
                                    without_places(finding.told.text)})
        for (const char c : part + '\n')
            hash = (hash ^ static_cast<unsigned char>(c)) * Prime;
    return formatted<"%016lx">(hash);
}

} // namespace quarl
