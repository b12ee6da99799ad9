#include "programs/make_page.h"

#include "html/page.h"
#include "programs/checked.h"
#include "programs/interrupt.h"
#include "programs/output_file.h"
#include "programs/progress.h"

#include <memory>
#include <quarl/version.h>
#include <utility>

namespace quarl
{

namespace
{

/// Reads one input file item by item.
class PageReading
{
public:
    PageReading(Console *console, std::string path) : console_(console), path_(std::move(path)) {}

    /// Returns the status of the run.
    int read(html::VolumeRead *into);

private:
    void take(const Item &item);
    void read_items();

    Console *console_;
    std::string path_;
    /// Not on the stack, which cannot grow where memory is limited.
    std::unique_ptr<Checker> checker_ =
        std::make_unique<Checker>(Chosen(all_rules().size(), true), true);
    html::VolumeRead *into_ = nullptr;
    bool any_ = false; ///< there is something to show
    bool failed_ = false;
};

void PageReading::take(const Item &item)
{
    checker_->add(item);
    into_->records.add(item);
    into_->envelopes.add(item);
    Statistics &statistics = into_->statistics;
    const auto *end = item.get<FileEnd>();
    if (!end) {
        any_ = true;
        statistics.records = item.place().record;
        return;
    }
    statistics = end->statistics;
    into_->complete = end->complete();
    into_->cut = end->cut;
    failed_ |= end->failed;
}

void PageReading::read_items()
{
    VolumeOptions options = checked_options(console_, checker_.get(), path_);
    options.one_file = true;
    Follower follower(console_, &options);
    Volume volume(path_, std::move(options));
    follower.follow(volume);
    try {
        while (const Item *item = volume.next())
            take(*item);
    } catch (const Error &) {
        into_->statistics.bytes = volume.progress().bytes;
        throw;
    }
}

int PageReading::read(html::VolumeRead *into)
{
    into_ = into;
    try {
        read_items();
    } catch (const Error &error) {
        if (error.kind() == MessageKind::output_failed)
            throw;
        say_unread(console_, path_, error);
        failed_ = true;
    }
    console_->elog_clear_register();
    end_at_once(); // there is no reading any more that looks at flags
    if (stop_asked() || (failed_ && !any_))
        return No_Page;
    into->findings = checker_->take(&into->inventory);
    return failed_ ? Page_Of_Part : 0;
}

} // namespace

int make_page(Console *console, const std::string &path, const std::string &output)
{
    if (is_one_file(path, output)) {
        const std::string text = output + ": the page would replace the volume";
        console->say({MessageKind::usage, text, {}, 0, {}, nullptr});
        return No_Page;
    }
    html::VolumeRead volume;
    volume.name = path;
    volume.program = "quarl-html " QUARL_VERSION;
    const int status = PageReading(console, path).read(&volume);
    console->elog_clear_register();
    if (status == No_Page)
        return status;
    write_output(console->out(), output, [&](Out &out) { html::write_page(out, volume); });
    return status;
}

} // namespace quarl
