#include "programs/check.h"

#include "platform/json_text.h"
#include "platform/utf8.h"
#include "programs/checked.h"
#include "programs/finding_line.h"
#include "programs/interrupt.h"
#include "programs/progress.h"

#include <memory>
#include <new>
#include <quarl/volume.h>
#include <utility>

namespace quarl
{

namespace
{

std::string line_of(const std::string &path, const Finding &finding)
{
    const Rule &rule = all_rules()[finding.rule];
    return finding_line(path, finding.record, name_of(severity_of(finding)),
                        text_of(finding.told.subject, finding.record), text_of(finding), rule.name);
}

std::string json_of(const std::string &path, const Finding &finding)
{
    const Rule &rule = all_rules()[finding.rule];
    return "{\"volume\":" +
           json::quoted(path, is_plain_utf8(path) ? json::Charset::utf8 : json::Charset::latin1) +
           ",\"record\":" + std::to_string(finding.record) +
           ",\"severity\":" + json::quoted(name_of(severity_of(finding))) +
           ",\"subject\":" + json::quoted(text_of(finding.told.subject, finding.record)) +
           ",\"text\":" + json::quoted(text_of(finding)) + ",\"rule\":" + json::quoted(rule.name) +
           ",\"fingerprint\":" + json::quoted(fingerprint_of(finding)) + "}\n";
}

void print_findings(Console *console, CheckRun *run, const std::string &path,
                    const std::vector<Finding> &findings)
{
    for (const Finding &finding : findings) {
        if (run->baseline.is_used() && run->baseline.has(fingerprint_of(finding))) {
            ++run->known;
            continue;
        }
        const Severity severity = severity_of(finding);
        if (!run->summary)
            console->out().write(run->json ? json_of(path, finding) : line_of(path, finding));
        CheckRun::Told &told = run->told[{severity, finding.rule}];
        ++told.findings;
        told.volumes += std::exchange(told.last_volume, run->volumes) != run->volumes;
        ++(severity == Severity::error     ? run->errors
           : severity == Severity::warning ? run->warnings
                                           : run->notes);
    }
}

void fail(Console *console, CheckRun *run, const std::string &path, const Error &error)
{
    run->unread = true;
    say_unread(console, path, error);
}

} // namespace

void print_summary(Console *console, const CheckRun &run)
{
    if (!run.json)
        print<"%-24s %-8s %8s %9s\n">(console->out(), "rule", "severity", "volumes", "findings");
    for (const auto &[key, told] : run.told) {
        const std::string_view rule = all_rules()[key.second].name;
        const std::string_view severity = name_of(key.first);
        if (run.json)
            print<"{\"rule\":\"%s\",\"severity\":\"%s\",\"volumes\":%ld,\"findings\":%ld}\n">(
                console->out(), rule, severity, told.volumes, told.findings);
        else
            print<"%-24s %-8s %8ld %9ld\n">(console->out(), rule, severity, told.volumes,
                                            told.findings);
    }
}

void check_volume(Console *console, CheckRun *run, const std::string &path)
{
    const auto checker = std::make_unique<Checker>(run->chosen);
    const auto print = [&] { print_findings(console, run, path, checker->take()); };
    bool any = false;
    bool opened = false;
    try {
        VolumeOptions options = checked_options(console, checker.get(), path);
        Follower follower(console, &options);
        Volume volume(path, std::move(options));
        follower.follow(volume);
        opened = true;
        while (const Item *item = volume.next()) {
            checker->add(*item);
            const auto *end = item->get<FileEnd>();
            if (!end)
                continue;
            any = true;
            run->unread |= end->failed || end->stopped;
            print();
        }
        if (!any && !stop_asked())
            print(); // there is nothing in it
        ++run->volumes;
    } catch (const Error &error) {
        if (error.kind() == MessageKind::output_failed)
            throw;
        if (opened) {
            print();
            ++run->volumes;
        }
        fail(console, run, path, error);
    }
}

} // namespace quarl
