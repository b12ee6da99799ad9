#include "programs/check.h"

#include "platform/format.h"
#include "platform/json_text.h"
#include "programs/progress.h"

#include <algorithm>
#include <memory>
#include <new>
#include <quarl/volume.h>
#include <utility>

namespace quarl
{

namespace
{

/// A volume's texts may hold anything: a finding stays on its line, and in ASCII.
std::string printable(std::string_view text)
{
    const auto is_plain = [](char c) { return c >= ' ' && c <= '~'; };
    std::string all;
    if (std::all_of(text.begin(), text.end(), is_plain))
        return all.append(text);
    for (const char c : text) {
        if (is_plain(c))
            all += c;
        else
            all += formatted<"\\x%02x">(static_cast<int>(static_cast<unsigned char>(c)));
    }
    return all;
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

std::string line_of(const std::string &path, const Finding &finding)
{
    const Rule &rule = all_rules()[finding.rule];
    return path + ":" + std::to_string(finding.record) + ": " +
           std::string(name_of(rule.severity)) + ": " + printable(finding.told.subject) + ": " +
           printable(text_of(finding)) + " [" + std::string(rule.name) + "]\n";
}

std::string json_of(const std::string &path, const Finding &finding)
{
    const Rule &rule = all_rules()[finding.rule];
    return "{\"volume\":" + json_text(path) + ",\"record\":" + std::to_string(finding.record) +
           ",\"severity\":" + json_text(name_of(rule.severity)) +
           ",\"subject\":" + json_text(finding.told.subject) +
           ",\"text\":" + json_text(text_of(finding)) + ",\"rule\":" + json_text(rule.name) + "}\n";
}

void print_findings(Console *console, CheckRun *run, const std::string &path,
                    const std::vector<Finding> &findings)
{
    for (const Finding &finding : findings) {
        console->out().write(run->json ? json_of(path, finding) : line_of(path, finding));
        const Severity severity = all_rules()[finding.rule].severity;
        ++(severity == Severity::error     ? run->errors
           : severity == Severity::warning ? run->warnings
                                           : run->notes);
    }
}

/// What keeps the program from working, and is no finding.
bool is_of_program(MessageKind kind)
{
    switch (kind) {
    case MessageKind::input_not_opened:
    case MessageKind::input_read_error:
    case MessageKind::interrupted:
    case MessageKind::out_of_memory:
        return true;
    default:
        return false;
    }
}

void hear(Console *console, Checker *checker, const std::string &path, const Message &message)
{
    if (!is_of_program(message.kind)) {
        checker->hear(message);
        return;
    }
    const std::string text = path + ": " + std::string(message.text);
    console->say({message.kind, text, message.reason, message.error, message.place, nullptr});
}

VolumeOptions options_for(Console *console, Checker *checker, const std::string &path)
{
    VolumeOptions options;
    options.message = [=](const Message &message) { hear(console, checker, path, message); };
    options.logical_record = [=](const LogicalRecord &record) { checker->enter(record); };
    return options;
}

void fail(Console *console, CheckRun *run, const std::string &path, const Error &error)
{
    run->unread = true;
    console->say({error.kind(), path + ": " + error.what(), {}, 0, {}, nullptr});
}

} // namespace

void check_volume(Console *console, CheckRun *run, const std::string &path)
{
    const auto checker = std::make_unique<Checker>(run->chosen);
    const auto print = [&] { print_findings(console, run, path, checker->take()); };
    try {
        VolumeOptions options = options_for(console, checker.get(), path);
        Follower follower(console, &options);
        Volume volume(path, std::move(options));
        follower.follow(volume);
        while (const Item *item = volume.next()) {
            checker->add(*item);
            const auto *end = item->get<FileEnd>();
            if (!end)
                continue;
            run->unread |= end->failed || end->stopped;
            print();
        }
    } catch (const Error &error) {
        if (error.kind() == MessageKind::output_failed)
            throw;
        print();
        fail(console, run, path, error);
    }
}

} // namespace quarl
