#include "programs/mseed.h"

#include "mseed/mini_record.h"
#include "mseed/record_output.h"
#include "programs/checked.h"
#include "programs/interrupt.h"
#include "programs/output_file.h"
#include "programs/progress.h"
#include "programs/reading.h"

#include <algorithm>
#include <map>
#include <memory>
#include <quarl/volume.h>
#include <utility>

namespace quarl
{

namespace
{

/// Whether a message is about the input or about data records. Those alone of miniSEED differ from
/// the length that a volume without headers has, and how control blockettes are is no concern here.
bool is_of_data(MessageKind kind)
{
    switch (kind) {
    case MessageKind::bad_sequence_number:
    case MessageKind::blockette_too_small:
    case MessageKind::blockette_unknown:
    case MessageKind::blockette_bad:
    case MessageKind::bad_integer:
    case MessageKind::bad_real:
    case MessageKind::text_too_long:
    case MessageKind::negative_count:
    case MessageKind::list_abandoned:
    case MessageKind::too_many_segments:
    case MessageKind::record_length_illegal:
    case MessageKind::record_length_unusual:
    case MessageKind::orientation_unknown:
    case MessageKind::format_code_repeated:
    case MessageKind::format_code_redefined:
    case MessageKind::format_code_undefined:
    case MessageKind::record_lengths_differ:
        return false;
    default:
        return true;
    }
}

/// Records of a channel that were left out for one reason.
struct LeftOut {
    std::int64_t count = 0;
    std::int64_t record = 0; ///< logical record of the first
};

class MseedRun
{
public:
    MseedRun(Console *console, const MseedWishes &wishes, mseed::RecordOutput *output)
        : console_(console), wishes_(wishes), output_(output),
          sources_(read_format_sources(console))
    {
        if (!wishes.database.empty())
            sources_->open_database(wishes.database);
    }

    void read(const std::vector<std::string> &paths);
    /// Says what came of the records.
    void sum_up();
    [[nodiscard]] bool opened_any() const { return opened_any_; }
    [[nodiscard]] int status() const;

private:
    void read_volume(const std::string &path);
    void read_items(const std::string &path);
    void take(const Volume &volume, const Item &item, const blk_dh_t &header);
    void leave_out(const Item &item, const ChannelCode &channel, const std::string &fault);
    void tell_left_out(const std::string &path);
    void say(const std::string &text) { say(MessageKind::usage, text); }
    void say(MessageKind kind, const std::string &text);

    Console *console_;
    const MseedWishes &wishes_;
    mseed::RecordOutput *output_;
    std::shared_ptr<FormatSources> sources_;
    mseed::MiniRecordMaker maker_;
    mseed::Written written_;
    std::map<std::pair<ChannelCode, std::string>, LeftOut> left_out_; ///< of the volume at hand
    std::int64_t left_out_count_ = 0;
    std::int64_t completed_ = 0;
    bool opened_any_ = false;
    bool cut_ = false;
    bool unread_ = false;
};

void MseedRun::say(MessageKind kind, const std::string &text)
{
    console_->say({kind, text, {}, 0, {}, nullptr});
}

/// A volume may have any number of channels and formats of its own.
void MseedRun::leave_out(const Item &item, const ChannelCode &channel, const std::string &fault)
{
    constexpr std::size_t Most = 1000;
    ++left_out_count_;
    const std::pair key(channel, fault);
    if (left_out_.size() < Most || left_out_.count(key) > 0) {
        LeftOut &some = left_out_[key];
        if (some.count++ == 0)
            some.record = item.place().record;
    }
}

void MseedRun::take(const Volume &volume, const Item &item, const blk_dh_t &header)
{
    if (!wishes_.selection.has(item, header))
        return;
    const ChannelCode channel = code_of(header);
    const std::int64_t end = item.place().offset + item.length();
    if (end > volume.progress().bytes) {
        leave_out(item, channel, "the input ends inside the record");
        return;
    }
    const std::string_view record = maker_.make(item, header);
    const std::string fault =
        record.empty() ? maker_.fault()
                       : output_->add({record, channel, header.quality_indicator, maker_.start()});
    if (!fault.empty())
        leave_out(item, channel, fault);
    else
        completed_ += maker_.completed();
}

void MseedRun::read_items(const std::string &path)
{
    VolumeOptions options = reading_options(console_, sources_);
    options.message = [&](const Message &message) {
        if (!is_of_data(message.kind))
            return;
        const std::string text = path + ": " + std::string(message.text);
        console_->say({message.kind, text, message.reason, message.error, message.place, nullptr});
    };
    Follower follower(console_, &options);
    Volume volume(path, std::move(options));
    opened_any_ = true;
    follower.follow(volume);
    while (const Item *item = volume.next()) {
        if (const auto *header = item->get<blk_dh_t>()) {
            take(volume, *item, *header);
        } else if (const auto *end = item->get<FileEnd>()) {
            cut_ |= end->cut;
            unread_ |= end->failed || end->stopped;
        }
    }
}

void MseedRun::tell_left_out(const std::string &path)
{
    for (const auto &[key, some] : left_out_)
        say(path + ":" + std::to_string(some.record) + ": " + key.first.text() + ": " +
            std::to_string(some.count) + (some.count == 1 ? " record" : " records") +
            " left out: " + key.second);
    left_out_.clear();
}

void MseedRun::read_volume(const std::string &path)
{
    try {
        read_items(path);
    } catch (const Error &error) {
        if (error.kind() == MessageKind::output_failed)
            throw;
        say_unread(console_, path, error);
        unread_ = true;
    }
    tell_left_out(path);
    console_->elog_clear_register();
}

void MseedRun::read(const std::vector<std::string> &paths)
{
    for (const std::string &path : paths) {
        read_volume(path);
        if (stop_asked()) // what of the volume is there must not pass for all of it
            throw Error(MessageKind::interrupted, "stopped before the end of " + path);
        output_->end_volume(&written_);
    }
    if (opened_any_)
        output_->end(&written_);
}

void MseedRun::sum_up()
{
    for (const std::string &fault : written_.faults)
        say(MessageKind::output_failed, fault);
    const auto counted = [](std::int64_t count, const char *what) {
        return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
    };
    std::string text = counted(written_.records, "record") + " written";
    if (!wishes_.archive.empty() || wishes_.pattern)
        text += " to " + counted(written_.files, "file");
    if (completed_ > 0)
        text += ", " + std::to_string(completed_) + " got a Blockette 1000";
    if (!wishes_.archive.empty())
        text += ", " + std::to_string(written_.known) + " already there";
    say(text + ", " + std::to_string(left_out_count_ + written_.refused) + " left out");
}

int MseedRun::status() const
{
    if (unread_ || !written_.faults.empty())
        return Not_Whole;
    return cut_ || left_out_count_ > 0 ? 1 : 0;
}

int run_all(Console *console, const MseedWishes &wishes, const std::vector<std::string> &paths,
            mseed::RecordOutput *output)
{
    MseedRun run(console, wishes, output);
    run.read(paths);
    run.sum_up();
    if (!run.opened_any() && !wishes.output.empty())
        throw Error(MessageKind::input_not_opened, wishes.output + ": nothing to write");
    return run.status();
}

} // namespace

int write_mseed(Console *console, const MseedWishes &wishes, const std::vector<std::string> &paths)
{
    const auto is_input = [&](const std::string &output) {
        return std::any_of(paths.begin(), paths.end(),
                           [&](const std::string &path) { return is_one_file(path, output); });
    };
    if (!wishes.archive.empty()) {
        mseed::ArchiveOutput output(wishes.archive, wishes.renumber);
        return run_all(console, wishes, paths, &output);
    }
    if (wishes.pattern) {
        mseed::SplitOutput output(*wishes.pattern, wishes.renumber, is_input);
        return run_all(console, wishes, paths, &output);
    }
    if (wishes.output.empty()) {
        mseed::StreamOutput output(&console->out(), wishes.renumber);
        return run_all(console, wishes, paths, &output);
    }
    if (is_input(wishes.output))
        throw Error(MessageKind::usage, wishes.output + ": the records would replace a volume");
    int status = 0;
    write_file(wishes.output, [&](Out &out) {
        mseed::StreamOutput output(&out, wishes.renumber);
        status = run_all(console, wishes, paths, &output);
    });
    return status;
}

} // namespace quarl
