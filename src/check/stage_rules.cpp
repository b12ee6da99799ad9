// Responses: whether they are there, their stages and units.
#include "check/response_seen.h"
#include "check/rule.h"

#include "platform/text.h"

#include <algorithm>
#include <utility>

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
        context.damaged.contains(&epoch) || is_log(context.inventory, epoch))
        return;
    report(epoch.record, context.inventory.channel_of(epoch).code.text(), [&] {
        return Told{subject_of(context.inventory, epoch),
                    "has no response; its sample rate is " + shown(epoch.sample_rate) + " Hz"};
    });
}

/// Until instrument code N came in August 2000, accelerometers were coded L, and many still are.
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
    if (seen.code[1] == 'L' && is_acceleration(unit))
        return report(seen.epoch.record, "accelerometers", [&] {
            return Told{subject_of(seen.inventory, seen.epoch),
                        "an accelerometer coded L; its instrument code is N today", "coded L",
                        Severity::note};
        });
    seen.tell_at(report, first->number, [&] {
        return "stage 1 takes " + quoted(unit) + ", expected is " + (velocity ? "M/S" : "M/S**2");
    });
}

void signal_units(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const StageSeen *first = seen.first_filter();
    const std::string_view signal = seen.inventory.unit(seen.epoch.signal_units);
    if (!first || signal.empty())
        return;
    const Unit &unit = first->filters.front()->input();
    const std::string &takes = unit.name;
    if (takes.empty() || unit.code == seen.epoch.signal_units || is_same_unit(takes, signal))
        return;
    seen.tell_at(report, first->number, [&] {
        return stage_text(*first) + " takes " + quoted(takes) +
               ", the signal of its channel (052) is in " + quoted(signal);
    });
}

void unit_name(const Context &context, const Context &, const Report &report)
{
    const Inventory &inventory = context.inventory;
    for (const auto &[code, user] : context.unit_users)
        if (const DictionaryEntry *unit = inventory.entry(Dictionary::units, code);
            unit && !is_known_unit(unit->text))
            report(unit->record, about::Unit{code},
                   quoted(unit->text) + " is no unit of the standard or the SI; " +
                       text_of(subject_of(inventory, *user), 0) + " uses it");
}

/// What a stage has more than once: "2 filters, 2 gains (058)".
std::string repeated_parts(const StageSeen &stage)
{
    std::string text;
    const auto add = [&](std::size_t count, const char *what) {
        if (count > 1)
            text += (text.empty() ? "" : ", ") + std::to_string(count) + what;
    };
    add(stage.filters.size() > 1 ? count_filters(stage) : 1, " filters");
    add(stage.decimations, " decimations (057)");
    add(stage.gains, " gains (058)");
    if (!text.empty())
        return text;
    return stage.comes_again ? "comes again" : "";
}

void stage_repeated(const Context & /*context*/, const StagesSeen &stages, const Report &report)
{
    const ResponseSeen &seen = stages.seen;
    StageFaults faults;
    bool again = false;
    const auto look = [&](const StageSeen &stage) {
        faults.add(stage, repeated_parts(stage));
        again |= stage.comes_again;
    };
    for (const StageSeen &stage : seen.stages)
        look(stage);
    look(seen.whole);
    if (!faults.empty())
        seen.tell(report, [&] {
            return faults.text() +
                   (again ? "; a channel identifier (052) may be missing between them" : "");
        });
}

void stage_sequence(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    int expected = 1;
    std::string text;
    for (const StageSeen &stage : seen.stages) {
        if (stage.number != expected && text.size() < 100)
            text += (text.empty() ? "" : ", ") + stage_text(stage) + " stands where stage " +
                    std::to_string(expected) + " is expected";
        expected = stage.number + 1;
    }
    if (!text.empty())
        seen.tell(report, [&] { return text; });
}

void stage_units(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const StageSeen *before = nullptr;
    seen.tell_stages(report, [&](const StageSeen &stage) -> std::string {
        if (stage.filters.empty())
            return {};
        const StageSeen *last = std::exchange(before, &stage);
        if (!last)
            return {};
        const std::string &takes = stage.filters.front()->input().name;
        const std::string &gives = last->filters.back()->output().name;
        if (takes.empty() || gives.empty() || is_same_unit(takes, gives))
            return {};
        return "takes " + quoted(takes) + ", " + stage_text(*last) + " gives " + quoted(gives);
    });
}

void stage_incomplete(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    seen.tell_stages(report, [](const StageSeen &stage) -> std::string {
        if (!stage.is_digital() || (stage.decimation && stage.gain))
            return {};
        return std::string("digital, and has no ") + (stage.decimation ? "gain (058)"
                                                      : stage.gain
                                                          ? "decimation (057)"
                                                          : "decimation (057) and no gain (058)");
    });
}

void stage_filterless(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    seen.tell_stages(report, [](const StageSeen &stage) -> std::string {
        if (!stage.decimation || !stage.filters.empty())
            return {};
        return "a decimation from " + shown(stage.decimation->input_rate) + " Hz and no filter";
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

/// Thermometers and the like may give what they measure.
void output_units(const Context & /*context*/, const ResponseSeen &seen, const Report &report)
{
    const StageSeen *last = seen.last_filter();
    if (!last || !is_of_motion(seen.code))
        return;
    const std::string &unit = last->filters.back()->output().name;
    if (!unit.empty() && !is_counts(unit))
        seen.tell_at(report, last->number, [&] {
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
    Rule{"signal-units", Severity::warning,
         "the first filter of a channel takes the signal units of its 052", "epochs",
         Look<ResponseSeen>(signal_units)},
    Rule{"stage-repeated", Severity::error,
         "a stage has one filter, one 057 and one 058, and does not come again behind a higher "
         "stage or stage 0",
         "epochs", Look<StagesSeen>(stage_repeated)},
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
    Rule{"output-units", Severity::error,
         "the last stage of a channel of ground motion gives counts", "epochs",
         Look<ResponseSeen>(output_units)},
};

} // namespace

std::span<const Rule> stage_rules() { return Rules; }

} // namespace quarl
