#include "check/rule.h"

namespace quarl
{

const std::vector<Rule> &all_rules()
{
    static const std::vector<Rule> rules = [] {
        std::vector<Rule> all;
        for (const auto part : {volume_rules(), index_rules(), header_rules(), epoch_rules(),
                                stage_rules(), gain_rules(), data_rules()})
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
    if (finding.more == 1)
        what.remove_suffix(1);
    return text + "; and " + std::to_string(finding.more) + " more " + std::string(what);
}

} // namespace quarl
