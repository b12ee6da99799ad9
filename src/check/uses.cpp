#include "check/uses.h"

#include "blockette/blockette.h"

#include <type_traits>

namespace quarl
{

namespace
{

/// A code that is not looked for: the units of comments are free, a channel without an instrument
/// is another rule's, and 0 stands for no unit of signal or calibration.
bool is_exempt(int type, Dictionary dictionary, int code)
{
    if (type == blk_031_t::Number || type == blk_072_t::Number)
        return true;
    return type == blk_052_t::Number && code == 0 && dictionary != Dictionary::data_formats;
}

/// Calls f(dictionary, code) for each code that a record refers to.
template <class T, class F> void for_each_code(const T &record, F &&f)
{
    const auto hand_out = [&](Dictionary dictionary, const auto &value) {
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, int>)
            f(dictionary, value);
        else if constexpr (std::is_same_v<std::decay_t<decltype(value)>, std::vector<int>>)
            for (const int code : value)
                f(dictionary, code);
    };
    for_each_field<T>([&](const auto &field) {
        if constexpr (!std::decay_t<decltype(field)>::Is_List) {
            if (field.meaning == Meaning::code)
                hand_out(field.dictionary, field.value(record));
        } else {
            const auto look_at = [&](const auto &column) {
                if (column.meaning != Meaning::code)
                    return;
                for (std::size_t i = 0; i < field.size(record); ++i)
                    hand_out(column.dictionary, column.value(record, i));
            };
            fields::for_each(field.columns, look_at);
        }
    });
}

} // namespace

void CodeUses::see(const Item &item, const Inventory &inventory, const MakeSubject &subject)
{
    if (item.record())
        visit_any(item.record(), item.type(), [&](const auto &record) {
            using T = std::decay_t<decltype(record)>;
            if constexpr (!std::is_same_v<T, blk_dh_t>)
                for_each_code(record, [&](Dictionary dictionary, int code) {
                    if (!is_exempt(item.type(), dictionary, code))
                        use(item, dictionary, code, inventory, subject);
                });
        });
}

void CodeUses::use(const Item &item, Dictionary dictionary, int code, const Inventory &inventory,
                   const MakeSubject &subject)
{
    if (inventory.entry(dictionary, code))
        return;
    const auto [known, is_new] = pending_.try_emplace({dictionary, code, item.type()});
    if (is_new)
        known->second = {dictionary, code, item.type(), subject(), item.place().record, 0};
    ++known->second.count;
    ++count_;
}

std::vector<PendingUse> CodeUses::take() const
{
    std::vector<PendingUse> all;
    for (const auto &[key, use] : pending_)
        all.push_back(use);
    return all;
}

} // namespace quarl
