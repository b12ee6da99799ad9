#include "programs/carried_volumes.h"

#include "check/checker.h"
#include "check/rule.h"
#include "programs/checked.h"
#include "programs/finding_line.h"
#include "programs/progress.h"

#include <algorithm>
#include <memory>
#include <quarl/records.h>
#include <quarl/volume.h>
#include <utility>

namespace quarl
{

namespace
{

/// All rules but those that look at data.
Chosen header_rules_chosen()
{
    Chosen chosen(all_rules().size(), true);
    for (const Rule &rule : data_rules())
        for (std::size_t i = 0; i < chosen.size(); ++i)
            chosen[i] = chosen[i] && all_rules()[i].name != rule.name;
    return chosen;
}

std::string counted(std::int64_t count, const char *what)
{
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

/// Says what the reading tells, in the form of findings where it is about the volume.
void hear(Console *console, const std::string &path, const Message &message)
{
    if (message.item && message.item->type() == Data_Record)
        return; // nothing of them is carried over
    switch (message.severity()) {
    case MessageSeverity::remark:
        break;
    case MessageSeverity::damage:
        console->err().write(finding_line(path, message.place.record, "warning", "volume",
                                          full_text(message), name_of(message.kind)));
        break;
    case MessageSeverity::failure:
        const std::string text = path + ": " + std::string(message.text);
        console->say({message.kind, text, message.reason, message.error, message.place, nullptr});
    }
}

} // namespace

/// Notes what status the run will have.
void CarriedVolumes::look_at(const Item &item)
{
    const int type = item.type();
    const bool is_carried = (type >= 31 && type <= 34) || (type >= 50 && type <= 54) || type == 61;
    lacks_headers_ |= item.bad() && is_carried; // others are told of with their epochs
    has_data_ |= type == Data_Record;
    if (const auto *end = item.get<FileEnd>()) {
        lacks_headers_ |= end->cut && !has_data_;
        unread_ |= end->failed || end->stopped;
        has_data_ = false;
    }
}

void CarriedVolumes::keep(const std::string &path, Inventory inventory)
{
    if (inventory.station_epochs().empty()) {
        lacks_headers_ = true;
        const std::string text = path + ": there are no station headers";
        console_->say({MessageKind::usage, text, {}, 0, {}, nullptr});
        return;
    }
    held_.push_back(std::move(inventory));
    inventories_.push_back({path, &held_.back()});
}

void CarriedVolumes::read_plain(const std::string &path)
{
    VolumeOptions options;
    options.message = [&](const Message &message) { hear(console_, path, message); };
    Follower follower(console_, &options);
    Inventory inventory;
    bool open = true; ///< there is something that was not kept
    try {
        Volume volume(path, std::move(options));
        follower.follow(volume);
        while (const Item *item = volume.next()) {
            look_at(*item);
            if (item->type() == Data_Record)
                continue;
            inventory.add(*item);
            open = !item->get<FileEnd>();
            if (!open)
                keep(path, std::exchange(inventory, Inventory()));
        }
    } catch (const Error &error) {
        say_unread(console_, path, error);
        unread_ = true;
        inventory.finish();
        if (open && !inventory.station_epochs().empty())
            keep(path, std::move(inventory));
    }
}

void CarriedVolumes::read_validated(const std::string &path)
{
    const auto checker = std::make_unique<Checker>(header_rules_chosen(), true);
    const auto take = [&](bool is_whole) {
        Inventory inventory;
        for (const Finding &finding : checker->take(&inventory)) {
            const Rule &rule = all_rules()[finding.rule];
            const Severity severity = severity_of(finding);
            console_->err().write(finding_line(path, finding.record, name_of(severity),
                                               text_of(finding.told.subject, finding.record),
                                               text_of(finding), rule.name));
            ++(severity == Severity::error     ? errors_
               : severity == Severity::warning ? warnings_
                                               : notes_);
        }
        if (is_whole || !inventory.station_epochs().empty())
            keep(path, std::move(inventory));
    };
    try {
        VolumeOptions options = checked_options(console_, checker.get(), path);
        Follower follower(console_, &options);
        Volume volume(path, std::move(options));
        follower.follow(volume);
        while (const Item *item = volume.next()) {
            look_at(*item);
            checker->add(*item);
            if (item->get<FileEnd>())
                take(true);
        }
    } catch (const Error &error) {
        say_unread(console_, path, error);
        unread_ = true;
        take(false);
    }
}

void CarriedVolumes::read(const std::string &path)
{
    ++volumes_;
    if (validate_)
        read_validated(path);
    else
        read_plain(path);
    console_->elog_clear_register();
}

void CarriedVolumes::say_summary() const
{
    const std::string text = counted(errors_, "error") + ", " + counted(warnings_, "warning") +
                             ", " + counted(notes_, "note") + " in " + counted(volumes_, "volume");
    console_->say({MessageKind::usage, text, {}, 0, {}, nullptr});
}

} // namespace quarl
