#include "stationxml/arranged.h"

#include "platform/format.h"
#include "platform/text.h"
#include "response/kind.h"
#include "stationxml/joined.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

namespace quarl
{

namespace
{

using Severity = CarryRemark::Severity;

constexpr std::string_view Unknown = "UNKNOWN";
constexpr std::size_t Most = 100000; ///< numbers of filters: references repeat them without end

/// All that a response says of one stage.
struct Collected {
    std::vector<FilterPtr> filters; ///< joined where they continue each other
    std::optional<Decimation> decimation;
    std::optional<Gain> gain;
};

class Arranger
{
public:
    Arranger(const Inventory &inventory, const ChannelEpoch &epoch)
        : inventory_(inventory), epoch_(epoch)
    {
    }
    Arranged make();

private:
    void collect();
    void take(int number, const Part &part);
    void take_filters(int number, Collected *stage);
    void add_stages();
    void add_stage(int number, Collected &&stage);
    void complete_gains();
    void name_units();
    [[nodiscard]] ShownUnit shown(const Unit &unit) const;
    void look_at_lacks();
    void leave(Severity severity, std::string text)
    {
        made_.left.push_back({severity, std::move(text)});
    }

    const Inventory &inventory_;
    const ChannelEpoch &epoch_;
    std::map<int, Collected> collected_;
    std::size_t size_ = 0;
    int added_ = 0; ///< stages that two filters of one stage made
    Arranged made_;
};

template <class T> bool keep_first(std::optional<T> *place, const T &value)
{
    if (*place && !(**place == value))
        return false;
    *place = value;
    return true;
}

void Arranger::take(int number, const Part &part)
{
    if (size_ > Most)
        return;
    Collected &stage = collected_[number];
    bool kept = true;
    if (const auto *filter = std::get_if<FilterPtr>(&part)) {
        if (std::holds_alternative<GenericResponse>((*filter)->shape()))
            leave(Severity::warning,
                  formatted<"stage %d: a generic response has no place">(number));
        else
            stage.filters.push_back(*filter);
        size_ += size_of((*filter)->shape()) + 1;
        if (size_ > Most)
            leave(Severity::error, formatted<"more than %lu numbers in a response">(Most));
    } else if (const auto *gain = std::get_if<Gain>(&part)) {
        kept = keep_first(&stage.gain, *gain);
    } else {
        kept = keep_first(&stage.decimation, std::get<Decimation>(part));
    }
    if (!kept)
        leave(Severity::error,
              formatted<"stage %d has two %s that differ">(
                  number, std::holds_alternative<Gain>(part) ? "gains" : "decimations"));
}

void Arranger::collect()
{
    for (const StagePtr &stage : epoch_.response.stages)
        for (const Part &part : stage->parts)
            take(stage->number, part);
    for (auto &[number, stage] : collected_)
        take_filters(number, &stage);
}

/// Joins the filters of a stage and looks whether there is a word for each.
void Arranger::take_filters(int number, Collected *stage)
{
    stage->filters = joined(std::move(stage->filters));
    for (const FilterPtr &filter : stage->filters)
        if (const std::string fault = fault_of(*filter); !fault.empty())
            leave(Severity::error, formatted<"stage %d: %s">(number, fault));
    if (number < 0)
        leave(Severity::error, formatted<"a stage has the number %d">(number));
}

void Arranger::add_stage(int number, Collected &&stage)
{
    const std::size_t filters = stage.filters.size();
    for (std::size_t i = 0; i + 1 < filters; ++i) {
        made_.stages.push_back({.number = number + added_++,
                                .filter = stage.filters[i],
                                .input = {},
                                .output = {},
                                .decimation = {},
                                .gain = {1.0, stage.gain ? stage.gain->frequency : 0.0},
                                .has_gain = true});
    }
    made_.stages.push_back({.number = number + added_,
                            .filter = filters > 0 ? stage.filters.back() : nullptr,
                            .input = {},
                            .output = {},
                            .decimation = stage.decimation,
                            .gain = stage.gain.value_or(Gain()),
                            .has_gain = stage.gain.has_value()});
}

bool is_polynomial(const FilterPtr &filter)
{
    return filter && std::holds_alternative<Polynomial>(filter->shape());
}

void Arranger::add_stages()
{
    for (auto &[number, stage] : collected_) {
        if (number > 0) {
            add_stage(number, std::move(stage));
            continue;
        }
        made_.sensitivity = stage.gain;
        for (const FilterPtr &filter : stage.filters)
            if (is_polynomial(filter) && fault_of(*filter).empty() && !made_.polynomial)
                made_.polynomial = filter;
            else
                leave(Severity::error, "a filter of stage 0 has no place");
        if (stage.decimation)
            leave(Severity::warning, "a decimation of stage 0 has no place");
    }
}

/// A stage without gain has 1; the only one has that of the channel.
void Arranger::complete_gains()
{
    for (ArrangedStage &stage : made_.stages) {
        if (stage.has_gain || is_polynomial(stage.filter))
            continue;
        const auto *roots =
            stage.filter ? std::get_if<PolesZeros>(&stage.filter->shape()) : nullptr;
        stage.gain = {1.0, roots               ? roots->frequency
                           : made_.sensitivity ? made_.sensitivity->frequency
                                               : 0.0};
        if (made_.stages.size() == 1 && made_.sensitivity)
            stage.gain = *made_.sensitivity;
        else
            leave(Severity::note, formatted<"stage %d has no gain, 1 is written">(stage.number));
    }
}

ShownUnit Arranger::shown(const Unit &unit) const
{
    const DictionaryEntry *entry = inventory_.entry(Dictionary::units, unit.code);
    return {std::string(trimmed(unit.name)),
            std::string(entry ? trimmed(entry->description) : std::string_view())};
}

/// A unit that the volume does not name is the neighbour's.
void Arranger::name_units()
{
    std::vector<ShownUnit *> units;
    std::vector<int> codes;
    for (ArrangedStage &stage : made_.stages) {
        if (!stage.filter)
            continue;
        codes.push_back(stage.filter->input().code);
        codes.push_back(stage.filter->output().code);
        stage.input = shown(stage.filter->input());
        stage.output = shown(stage.filter->output());
        units.push_back(&stage.input);
        units.push_back(&stage.output);
    }
    for (std::size_t i = 0; i < units.size(); ++i) {
        if (!units[i]->name.empty())
            continue;
        const std::size_t next = i % 2 == 0 ? i - 1 : i + 1; // across the border of stages
        *units[i] = next < units.size() && !units[next]->name.empty()
                        ? *units[next]
                        : ShownUnit{std::string(Unknown), {}};
        leave(codes[i] == 0 ? Severity::note : Severity::warning,
              formatted<"unit %d of a filter has no name, '%s' is written">(codes[i],
                                                                            units[i]->name));
    }
    const std::string_view signal = inventory_.unit(epoch_.signal_units);
    made_.input =
        !units.empty() ? *units.front() : shown({epoch_.signal_units, std::string(signal)});
    if (made_.polynomial && !made_.polynomial->input().name.empty())
        made_.input = shown(made_.polynomial->input());
    if (!units.empty())
        made_.output = *units.back();
    if (made_.polynomial && !made_.polynomial->output().name.empty())
        made_.output = shown(made_.polynomial->output());
    for (ShownUnit *unit : {&made_.input, &made_.output})
        if (unit->name.empty())
            unit->name = Unknown;
}

/// What a damaged blockette says is not relied on, and nothing is put in its place.
void Arranger::look_at_lacks()
{
    for (const ResponseLack &lack : epoch_.lacks) {
        const bool missing = lack.key != 0 && !inventory_.entry(Dictionary::responses, lack.key);
        if (missing)
            leave(Severity::warning,
                  formatted<"stage %d refers to response %d, which is not defined">(lack.stage,
                                                                                    lack.key));
        else
            leave(Severity::error,
                  formatted<"stage %d: blockette %03d is damaged">(lack.stage, lack.type));
        if (lack.stage != 0 || missing)
            continue;
        if (lack.type != 62)
            made_.sensitivity.reset();
        if (lack.type != 58)
            made_.polynomial.reset();
    }
}

Arranged Arranger::make()
{
    collect();
    add_stages();
    look_at_lacks();
    name_units();
    if (std::any_of(made_.left.begin(), made_.left.end(),
                    [](const NotArranged &each) { return each.severity == Severity::error; }))
        made_.stages.clear();
    complete_gains();
    return std::move(made_);
}

} // namespace

Arranged arranged(const Inventory &inventory, const ChannelEpoch &epoch)
{
    return Arranger(inventory, epoch).make();
}

FilterPtr whole_polynomial(const std::vector<ArrangedStage> &stages)
{
    FilterPtr found;
    double gain = 1.0;
    for (const ArrangedStage &stage : stages) {
        if (!is_polynomial(stage.filter))
            gain *= stage.gain.value;
        else if (std::exchange(found, stage.filter))
            return nullptr;
    }
    if (!found || gain == 0.0 || !std::isfinite(gain))
        return nullptr;
    auto polynomial = std::get<Polynomial>(found->shape());
    double power = 1.0;
    for (std::size_t k = 0; k < polynomial.coefficients.size(); ++k, power *= gain) {
        polynomial.coefficients[k] /= power;
        if (k < polynomial.coefficient_errors.size())
            polynomial.coefficient_errors[k] /= std::fabs(power);
    }
    polynomial.lower_bound *= gain;
    polynomial.upper_bound *= gain;
    if (gain < 0.0)
        std::swap(polynomial.lower_bound, polynomial.upper_bound);
    return std::make_shared<const Filter>(std::move(polynomial), found->input(), found->output(),
                                          found->name());
}

} // namespace quarl
