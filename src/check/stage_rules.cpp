// Responses: whether they are there, their stages and units.
#include "check/response_seen.h"
#include "check/rule.h"

#include "platform/text.h"

#include <algorithm>

namespace quarl
{

namespace
{

std::string stage_text(const StageSeen &stage) { return "stage " + std::to_string(stage.number); }

void response_unwanted(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    if (epoch.sample_rate != 0.0 || epoch.response.stages.empty() ||
        is_log(context.inventory, epoch))
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        return Told{subject_of(context.inventory, epoch),
                    "has a response of " + std::to_string(epoch.response.stages.size()) +
                        " stages, expected is none: its sample rate is 0 Hz"};
    });
}

void response_missing(const Context &context, const ChannelEpoch &epoch, const Report &report)
{
    if (epoch.sample_rate == 0.0 || !epoch.response.stages.empty() ||
        is_log(context.inventory, epoch))
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        return Told{subject_of(context.inventory, epoch),
                    "has no response; its sample rate is " + shown(epoch.sample_rate) + " Hz"};
    });
}

void sensor_units(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const StageSeen *first = seen.first_filter();
    if (!first || first->number != 1 || seen.code.size() != 3)
        return;
    const std::string &unit = first->filters.front()->input().name;
    const bool velocity = seen.code[1] == 'H' || seen.code[1] == 'L';
    const bool acceleration = seen.code[1] == 'N';
    if (unit.empty() || (!velocity && !acceleration) ||
        (velocity ? is_velocity(unit) : is_acceleration(unit)))
        return;
    seen.tell(report, [&] {
        return "stage 1 takes " + quoted(unit) + ", expected is " + (velocity ? "M/S" : "M/S**2");
    });
}

void unit_name(const Context &context, const Context &, const Report &report)
{
    const Inventory &inventory = context.inventory;
    for (const auto &[code, user] : context.unit_users)
        if (const DictionaryEntry *unit = inventory.entry(Dictionary::units, code);
            unit && !is_known_unit(unit->text))
            report(unit->record, "unit (034) " + std::to_string(code),
                   quoted(unit->text) + " is no unit of the standard or the SI; " +
                       subject_of(inventory, *user) + " uses it");
}

void stage_sequence(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    int expected = 1;
    for (const StageSeen &stage : seen.stages) {
        if (stage.number != expected)
            return seen.tell(report, [&] {
                return stage_text(stage) + " stands where stage " + std::to_string(expected) +
                       " is expected";
            });
        ++expected;
    }
}

void stage_units(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const StageSeen *before = nullptr;
    for (const StageSeen &stage : seen.stages) {
        if (stage.filters.empty())
            continue;
        const std::string &takes = stage.filters.front()->input().name;
        const std::string &gives = before ? before->filters.back()->output().name : takes;
        if (takes != gives && !takes.empty() && !gives.empty() && upper(takes) != upper(gives))
            return seen.tell(report, [&] {
                return stage_text(stage) + " takes " + quoted(takes) + ", " + stage_text(*before) +
                       " gives " + quoted(gives);
            });
        before = &stage;
    }
}

void stage_incomplete(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    for (const StageSeen &stage : seen.stages)
        if (stage.is_digital() && (!stage.decimation || !stage.gain))
            return seen.tell(report, [&] {
                return stage_text(stage) + " is digital and has no " +
                       (stage.decimation ? "gain (058)" : "decimation (057)");
            });
}

void stage_filterless(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    for (const StageSeen &stage : seen.stages)
        if (stage.decimation && stage.filters.empty())
            return seen.tell(report, [&] {
                return stage_text(stage) + " has a decimation from " +
                       shown(stage.decimation->input_rate) + " Hz and no filter";
            });
}

void list_only(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    bool lists = false;
    for (const StageSeen &stage : seen.stages) {
        const bool list = stage.shape<ResponseList>() != nullptr;
        if (!list)
            return;
        lists = true;
    }
    if (lists)
        seen.tell(report, [&] {
            return "its only stages are response lists (055): " +
                   std::to_string(seen.stages.size());
        });
}

void output_units(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const StageSeen *last = seen.last_filter();
    if (!last)
        return;
    const std::string &unit = last->filters.back()->output().name;
    if (!unit.empty() && !is_counts(unit))
        seen.tell(report, [&] {
            return stage_text(*last) + " is the last and gives " + quoted(unit) +
                   ", expected is COUNTS";
        });
}

constexpr std::array Rules = {
    Rule{"response-unwanted", Severity::warning, "a channel of sample rate 0 has no response",
         "epochs", Look<ChannelEpoch>(response_unwanted)},
    Rule{"response-missing", Severity::warning, "a channel with a sample rate has a response",
         "epochs", Look<ChannelEpoch>(response_missing)},
    Rule{"sensor-units", Severity::warning,
         "stage 1 takes m/s where the code's second letter is H or L, m/s**2 where it is N",
         "epochs", Look<ResponseSeen>(sensor_units)},
    Rule{"unit-name", Severity::warning,
         "the units that channels and responses use are those of the standard and the SI", "units",
         Look<Context>(unit_name)},
    Rule{"stage-sequence", Severity::error, "stage numbers begin at 1 and have no hole", "epochs",
         Look<ResponseSeen>(stage_sequence)},
    Rule{"stage-units", Severity::error, "a stage takes what the stage before it gives", "epochs",
         Look<ResponseSeen>(stage_units)},
    Rule{"stage-incomplete", Severity::error, "a digital stage has a decimation and a gain",
         "epochs", Look<ResponseSeen>(stage_incomplete)},
    Rule{"stage-filterless", Severity::error, "a stage with a decimation has a filter", "epochs",
         Look<ResponseSeen>(stage_filterless)},
    Rule{"list-only", Severity::warning, "a response has a stage other than a response list",
         "epochs", Look<ResponseSeen>(list_only)},
    Rule{"output-units", Severity::error, "the last stage gives counts", "epochs",
         Look<ResponseSeen>(output_units)},
};

} // namespace

std::span<const Rule> stage_rules() { return Rules; }

} // namespace quarl
