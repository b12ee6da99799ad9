#include "programs/check.h"

#include "platform/json_text.h"
#include "platform/utf8.h"
#include "programs/checked.h"
#include "programs/finding_line.h"
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
    return finding_line(path, finding.record, name_of(rule.severity), finding.told.subject,
                        text_of(finding), rule.name);
}

std::string json_of(const std::string &path, const Finding &finding)
{
    const Rule &rule = all_rules()[finding.rule];
    return "{\"volume\":" +
           json::quoted(path, is_plain_utf8(path) ? json::Charset::utf8 : json::Charset::latin1) +
           ",\"record\":" + std::to_string(finding.record) +
           ",\"severity\":" + json::quoted(name_of(rule.severity)) +
           ",\"subject\":" + json::quoted(finding.told.subject) +
           ",\"text\":" + json::quoted(text_of(finding)) + ",\"rule\":" + json::quoted(rule.name) +
           "}\n";
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

void fail(Console *console, CheckRun *run, const std::string &path, const Error &error)
{
    run->unread = true;
    say_unread(console, path, error);
}

} // namespace

void check_volume(Console *console, CheckRun *run, const std::string &path)
{
    const auto checker = std::make_unique<Checker>(run->chosen);
    const auto print = [&] { print_findings(console, run, path, checker->take()); };
    try {
        VolumeOptions options = checked_options(console, checker.get(), path);
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
