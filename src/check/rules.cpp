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

} // namespace quarl
