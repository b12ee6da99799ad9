#include "inventory/dictionaries.h"

#include "inventory/damage.h"
#include "platform/text.h"

#include <algorithm>
#include <utility>

namespace quarl
{

namespace
{

DictionaryEntry text_entry(std::string text, const Item &item)
{
    DictionaryEntry entry;
    entry.text = std::move(text);
    entry.record = item.place().record;
    return entry;
}

/// The encoding of a data format, where its family and keys leave no doubt; else -1. Of the
/// differences of family 50, Steim 2 alone splits a word by a further key ("K0").
int encoding_of(const DictionaryEntry &format)
{
    constexpr int Steim_1 = 10;
    constexpr int Steim_2 = 11;
    const std::string name = upper(format.text);
    const auto is_named = [&](std::string_view part) { return name.find(part) != name.npos; };
    const auto has_key = [&](std::string_view part) {
        return std::any_of(format.keys.begin(), format.keys.end(),
                           [&](const std::string &key) { return key.find(part) != key.npos; });
    };
    if (format.family == 50 && is_named("STEIM"))
        return format.keys.empty() || is_named("3") ? -1 : has_key("K0") ? Steim_2 : Steim_1;
    if (format.family != 0 || is_named("FLOAT") || is_named("REAL"))
        return -1;
    if (has_key("W4 D0-31"))
        return 3;
    if (has_key("W3 D0-23"))
        return 2;
    return has_key("W2 D0-15") ? 1 : -1;
}

DictionaryEntry format_entry(const blk_030_t &blk, const Item &item)
{
    DictionaryEntry entry = text_entry(blk.name, item);
    entry.family = blk.data_type;
    for (int i = 0; i < blk.num_keys_held; ++i)
        entry.keys.emplace_back(blk.decode_key[i].text);
    entry.encoding = encoding_of(entry);
    return entry;
}

DictionaryEntry comment_entry(const blk_031_t &blk, const Item &item)
{
    DictionaryEntry entry = text_entry(blk.comment, item);
    entry.comment_class = trimmed(std::string_view(&blk.class_code, 1));
    entry.level_unit = blk.units;
    return entry;
}

/// Key and name of an entry of the response dictionary.
template <class... Blk> std::pair<int, std::string> key_and_name(const Item &item)
{
    std::pair<int, std::string> found{0, {}};
    const auto look = [&](const auto *blk) {
        if (blk)
            found = {blk->lookup_key, blk->response_name};
    };
    (look(item.get<Blk>()), ...);
    return found;
}

const Fir *fir_of(const Part &part)
{
    const auto *filter = std::get_if<FilterPtr>(&part);
    return filter ? std::get_if<Fir>(&(*filter)->shape()) : nullptr;
}

/// `next` continues the coefficients of `entry`: one FIR filter, as its blockettes go on.
bool continues(const DictionaryEntry &entry, const DictionaryEntry &next)
{
    const Fir *fir = fir_of(entry.parts.front());
    const Fir *more = fir_of(next.parts.front());
    return fir && more && fir->symmetry == more->symmetry && entry.text == next.text &&
           entry.promised == next.promised && entry.held > 0 &&
           entry.held + next.held <= entry.promised;
}

/// One filter of those that continue each other: references need not have thousands each.
Part joined(const std::vector<Part> &parts, FilterMaker *make)
{
    const Filter &first = *std::get<FilterPtr>(parts.front());
    const Filter &last = *std::get<FilterPtr>(parts.back());
    Fir whole{fir_of(parts.front())->symmetry, {}};
    for (const Part &part : parts) {
        const std::vector<double> &more = fir_of(part)->coefficients;
        whole.coefficients.insert(whole.coefficients.end(), more.begin(), more.end());
    }
    return (*make)(std::move(whole), first.input().code, last.output().code, first.name().c_str());
}

bool same_parts(const DictionaryEntry &a, const DictionaryEntry &b)
{
    return Stage{0, a.parts} == Stage{0, b.parts};
}

} // namespace

void Dictionaries::add(const Item &item)
{
    if (const auto *format = item.get<blk_030_t>())
        define(Dictionary::data_formats, format->format_id, format_entry(*format, item));
    else if (const auto *comment = item.get<blk_031_t>())
        define(Dictionary::comments, comment->comment_id, comment_entry(*comment, item));
    else if (const auto *source = item.get<blk_032_t>())
        define(Dictionary::sources, source->source_id, text_entry(source->author, item));
    else if (const auto *generic = item.get<blk_033_t>())
        define(Dictionary::abbreviations, generic->abbrev_id, text_entry(generic->abbrev, item));
    else if (const auto *unit = item.get<blk_034_t>()) {
        DictionaryEntry entry = text_entry(unit->unit_name, item);
        entry.description = unit->unit_desc;
        define(Dictionary::units, unit->unit_id, std::move(entry));
    } else if (item.type() >= 41 && item.type() <= 48) {
        add_response(item);
    }
}

void Dictionaries::add_response(const Item &item)
{
    std::optional<Part> part = dictionary_part(item, &make_);
    if (!part)
        return;
    auto [key, name] =
        key_and_name<blk_041_t, blk_043_t, blk_044_t, blk_045_t, blk_046_t, blk_047_t, blk_048_t>(
            item);
    DictionaryEntry entry = text_entry(std::move(name), item);
    entry.parts.push_back(std::move(*part));
    entry.damaged = is_damaged(item);
    if (const auto *fir = item.get<blk_041_t>()) {
        entry.promised = static_cast<std::size_t>(std::max(fir->num_coef_promised, 0));
        entry.held = fir->coef.size();
    }
    auto &known = entries_[static_cast<std::size_t>(Dictionary::responses)];
    const auto old = known.find(key);
    if (old != known.end() && continues(old->second, entry)) {
        continue_with(&old->second, std::move(entry));
    } else {
        const bool same = old == known.end() || same_parts(old->second, entry);
        define(Dictionary::responses, key, std::move(entry), same);
    }
}

void Dictionaries::continue_with(DictionaryEntry *entry, DictionaryEntry next)
{
    if (next.held == 0)
        return;
    entry->parts.push_back(std::move(next.parts.front()));
    entry->held += next.held;
    entry->damaged |= next.damaged;
    if (entry->held == entry->promised)
        entry->parts = {joined(entry->parts, &make_)};
}

void Dictionaries::finish()
{
    for (auto &[key, entry] : entries_[static_cast<std::size_t>(Dictionary::responses)])
        if (entry.parts.size() > 1)
            entry.parts = {joined(entry.parts, &make_)};
}

void Dictionaries::define(Dictionary dictionary, int code, DictionaryEntry entry, bool same)
{
    auto &known = entries_[static_cast<std::size_t>(dictionary)];
    const auto [old, is_new] = known.try_emplace(code);
    if (!is_new && (!same || old->second.text != entry.text) &&
        redefined_.insert({dictionary, code}).second)
        redefinitions_.push_back({dictionary, code, old->second.text, entry.text, entry.record});
    if (dictionary == Dictionary::units && old->second.text != entry.text)
        ++unit_changes_;
    old->second = std::move(entry);
}

std::string Dictionaries::unit(int code) const
{
    const DictionaryEntry *entry = find(Dictionary::units, code);
    return entry ? entry->text : std::string();
}

const DictionaryEntry *Dictionaries::find(Dictionary dictionary, int code) const
{
    const auto &known = entries_[static_cast<std::size_t>(dictionary)];
    const auto found = known.find(code);
    return found == known.end() ? nullptr : &found->second;
}

} // namespace quarl
