#include "response/plan.h"

#include "platform/format.h"
#include "response/fir.h"
#include "response/kind.h"

#include <algorithm>

namespace quarl
{

namespace
{

/// What a stage holds beside its filter.
struct Rest {
    const Decimation *decimation = nullptr;
    const Gain *gain = nullptr; ///< the last one
    int decimations = 0;
    int gains = 0;
    bool generic = false;
};

Rest rest_of(const Stage &stage)
{
    Rest rest;
    for (const Part &part : stage.parts) {
        if (const auto *gain = std::get_if<Gain>(&part)) {
            rest.gain = gain;
            ++rest.gains;
        } else if (const auto *decimation = std::get_if<Decimation>(&part)) {
            rest.decimation = decimation;
            ++rest.decimations;
        } else {
            const FilterShape &shape = std::get<FilterPtr>(part)->shape();
            rest.generic |= std::holds_alternative<GenericResponse>(shape);
        }
    }
    return rest;
}

const Polynomial *polynomial_of(const Stage &stage)
{
    for (const Part &part : stage.parts)
        if (const auto *filter = std::get_if<FilterPtr>(&part))
            if (const auto *polynomial = std::get_if<Polynomial>(&(*filter)->shape()))
                return polynomial;
    return nullptr;
}

/// Its derivative at `x`.
double slope(const std::vector<double> &coefficients, double x)
{
    double value = 0.0;
    for (std::size_t k = coefficients.size(); k-- > 1;)
        value = value * x + static_cast<double>(k) * coefficients[k];
    return value;
}

class Planner
{
public:
    Planner(const Response &response, const EvaluationOptions &options)
        : stages_(response.stages), options_(options)
    {
    }

    Plan make();

private:
    void read_sensitivity();
    void check_gains();
    void add(std::size_t at);
    bool add_gain(const Rest &rest, Term *term);
    void add_filter(const Filter &filter, const Rest &rest, bool has_gain, Term *term);
    void add_fir(const Filter &filter, const Decimation &decimation, Term *term);
    void add_polynomial(const Polynomial &polynomial, const Rest &rest, Term *term);
    [[nodiscard]] std::string filter_fault(const Stage &stage, const Filter *filter,
                                           const Rest &rest) const;
    [[nodiscard]] bool is_last(std::size_t at) const;
    [[nodiscard]] bool alone() const { return stages_.size() == 1; }
    void refuse(std::string reason)
    {
        if (plan_.error.empty())
            plan_.error = std::move(reason);
    }

    static constexpr std::size_t Most_Joined = 100'000;

    const std::vector<StagePtr> &stages_;
    const EvaluationOptions &options_;
    Plan plan_;
    bool has_polynomial_ = false;
    std::size_t joined_ = 0;   ///< coefficients and entries of filters that were made
    bool filter_seen_ = false; ///< in a stage before the present one
};

/// The sensitivity and the frequency that it holds at.
void Planner::read_sensitivity()
{
    double last = 0.0;
    for (const StagePtr &stage : stages_) {
        has_polynomial_ |= polynomial_of(*stage) != nullptr;
        const Rest rest = rest_of(*stage);
        if (!rest.gain)
            continue;
        if (stage->number == 0) {
            plan_.sensitivity = rest.gain->value;
            plan_.frequency = rest.gain->value == 0.0 ? 0.0 : rest.gain->frequency;
        } else if (rest.gain->frequency != 0.0) {
            last = rest.gain->frequency;
        }
    }
    if (plan_.frequency == 0.0)
        plan_.frequency = last;
}

/// A polynomial needs no gain, and a sensitivity of 0 beside it only says that there is none.
void Planner::check_gains()
{
    for (const StagePtr &stage : stages_) {
        const bool stated_otherwise =
            stage->number == 0 ? has_polynomial_ : polynomial_of(*stage) != nullptr;
        for (const Part &part : stage->parts) {
            const auto *gain = std::get_if<Gain>(&part);
            if (gain && gain->value == 0.0 && !stated_otherwise)
                refuse(formatted<"stage %d: gain of 0">(stage->number));
        }
    }
}

bool Planner::is_last(std::size_t at) const
{
    return std::all_of(stages_.begin() + at + 1, stages_.end(),
                       [](const StagePtr &stage) { return stage->number == 0; });
}

/// Why the blockettes of a stage do not go together; empty when they do.
std::string Planner::filter_fault(const Stage &stage, const Filter *filter, const Rest &rest) const
{
    const int number = stage.number;
    if (rest.decimations > 1)
        return formatted<"stage %d: more than one decimation">(number);
    if (rest.gains > 1 && number != 0)
        return formatted<"stage %d: more than one gain">(number);
    if (!filter)
        return rest.decimation && !rest.generic
                   ? formatted<"stage %d: decimation without a filter">(number)
                   : "";
    const Kind kind = kind_of(filter->shape());
    if (kind == Kind::Unexpected)
        return formatted<"stage %d: unexpected filter type '%c'">(number,
                                                                  type_letter(filter->shape()));
    if (is_digital(kind) && !rest.decimation)
        return formatted<"stage %d: %s without a decimation">(number, name_of(kind));
    if (kind == Kind::List && is_empty(filter->shape()))
        return formatted<"stage %d: empty response list">(number);
    return "";
}

/// False when the stage has none, and counts as stated.
bool Planner::add_gain(const Rest &rest, Term *term)
{
    const bool of_channel = term->stage == 0;
    const Gain whole{plan_.sensitivity.value_or(0.0), plan_.frequency};
    // In front of the sensitivity alone, a stage without gain has that of the whole channel.
    const bool borrows = stages_.size() == 2 && !of_channel && plan_.sensitivity;
    const Gain *gain = rest.gain ? rest.gain : borrows ? &whole : nullptr;
    if (gain) {
        term->gain = of_channel && !alone() ? 1.0 : gain->value;
        term->gain_frequency = gain->frequency;
        term->as_stated = gain->frequency == plan_.frequency;
    } else if (alone()) {
        refuse(formatted<"stage %d: no gain, and no other stage">(term->stage));
    } else if (rest.decimation) {
        refuse(formatted<"stage %d: decimation without a gain">(term->stage));
    }
    term->stated_gain = term->gain;
    return gain != nullptr;
}

void Planner::add_fir(const Filter &filter, const Decimation &decimation, Term *term)
{
    const auto *coefficients = std::get_if<Coefficients>(&filter.shape());
    const Taps taps =
        coefficients ? taps_of(*coefficients) : taps_of(std::get<Fir>(filter.shape()));
    if (taps.divisor != 1.0)
        plan_.warnings.push_back(
            formatted<"stage %d: the coefficients have the sum %g and were divided by it">(
                term->stage, taps.divisor));
    if (taps.symmetry == Taps::Symmetry::None)
        term->delay = options_.use_estimated_delay ? decimation.delay : decimation.correction;
}

void Planner::add_filter(const Filter &filter, const Rest &rest, bool has_gain, Term *term)
{
    const Kind kind = kind_of(filter.shape());
    if (kind == Kind::List)
        term->as_stated = true;
    if (const auto *roots = std::get_if<PolesZeros>(&filter.shape()); roots && has_gain)
        term->as_stated &= roots->frequency == plan_.frequency;
    if (!is_digital(kind) || !rest.decimation)
        return;
    const double rate = rest.decimation->input_rate;
    term->interval = rate == 0.0 ? 0.0 : 1 / rate;
    if (is_empty(filter.shape()))
        term->filter = nullptr;
    else if (is_fir(kind))
        add_fir(filter, *rest.decimation, term);
}

/// The polynomial says what one output unit stands for; a gain beside it says it again.
void Planner::add_polynomial(const Polynomial &polynomial, const Rest &rest, Term *term)
{
    const std::vector<double> &coefficients = polynomial.coefficients;
    term->filter = nullptr;
    term->gain = 1.0;
    if (coefficients.size() > 2 && !options_.polynomial_at)
        refuse(formatted<"stage %d: a polynomial of %lu coefficients has no response without a "
                         "value to take it at">(term->stage, coefficients.size()));
    if (coefficients.size() > 1) {
        const double units = slope(coefficients, options_.polynomial_at.value_or(0.0));
        if (units == 0.0)
            refuse(formatted<"stage %d: polynomial of slope 0">(term->stage));
        term->gain = 1 / units;
    }
    term->stated_gain = rest.gain ? rest.gain->value : term->gain;
}

void Planner::add(std::size_t at)
{
    const Stage &stage = *stages_[at];
    const Rest rest = rest_of(stage);
    if (rest.generic)
        plan_.warnings.push_back(formatted<"stage %d: generic response passed over">(stage.number));
    const JoinedFilter joined = joined_filter(stage);
    std::string fault = joined.error;
    if (joined.is_made && (joined_ += size_of(joined.filter->shape())) > Most_Joined)
        fault =
            formatted<"more than %lu coefficients in filters of several blockettes">(Most_Joined);
    if (fault.empty())
        fault = filter_fault(stage, joined.filter.get(), rest);
    if (!fault.empty()) {
        refuse(std::move(fault));
        return;
    }
    if (stage.number == 0 && !alone() && (!joined.filter || polynomial_of(stage)))
        return; // the other stages state in parts what it states as a whole
    Term term{.stage = stage.number, .filter = joined.filter, .is_made = joined.is_made};
    if (const Polynomial *polynomial = polynomial_of(stage)) {
        add_polynomial(*polynomial, rest, &term);
    } else {
        const bool has_gain = add_gain(rest, &term);
        if (joined.filter)
            add_filter(*joined.filter, rest, has_gain, &term);
    }
    if (joined.filter && kind_of(joined.filter->shape()) == Kind::List && filter_seen_ &&
        is_last(at))
        refuse(formatted<"stage %d: response list as the last stage, behind another filter">(
            stage.number));
    filter_seen_ |= joined.filter != nullptr;
    plan_.terms.push_back(std::move(term));
}

Plan Planner::make()
{
    constexpr std::size_t Most = 1000; // a stage number has two digits
    if (stages_.empty())
        refuse("no response is stated");
    if (stages_.size() > Most)
        refuse("more than 1000 stages");
    if (!plan_.error.empty())
        return std::move(plan_);
    read_sensitivity();
    for (std::size_t at = 0; at < stages_.size(); ++at)
        add(at);
    check_gains();
    return std::move(plan_);
}

} // namespace

Plan make_plan(const Response &response, const EvaluationOptions &options)
{
    return Planner(response, options).make();
}

} // namespace quarl
