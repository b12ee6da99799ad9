#include "html/tables.h"

#include "html/notation.h"
#include "html/table.h"
#include "platform/format.h"

#include <cmath>
#include <initializer_list>
#include <map>

namespace quarl::html
{

namespace
{

/// Fields of a channel that stand in front, in the page's own way.
bool is_shown_first(std::string_view name)
{
    for (const std::string_view first : {"location", "channel", "instrument", "local_depth",
                                         "azimuth", "dip", "sample_rate", "start_date", "end_date"})
        if (name == first)
            return true;
    return false;
}

Shown shown_of_position(std::string_view name, bool is_placed)
{
    return is_placed || (name != "latitude" && name != "longitude") ? Shown::yes : Shown::empty;
}

class Tables
{
public:
    Tables(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels,
           const Curves &curves)
        : page_(page), volume_(volume), inventory_(volume.inventory), channels_(channels),
          curves_(curves), table_(page, volume.inventory)
    {
        for (const blk_031_t &record :
             std::get<Records::Kept<blk_031_t>>(volume.records.dictionaries))
            comments_.try_emplace(record.comment_id, &record);
    }

    void stations();
    void channels();
    void comments();
    template <class T> void dictionary(std::string_view title);

private:
    void begin(std::string_view title);
    void caption(std::string_view title, std::size_t rows);
    void columns(std::initializer_list<const char *> names);
    void end() { page_.put("</table></div>\n"); }
    void links(std::size_t channel, const std::size_t *epoch);
    void station_row(std::size_t at);
    void epoch_row(std::size_t at);
    void data_cells(const ChannelData &data);
    void undescribed_row(std::size_t channel, bool has_headers);
    void sensitivity(const Figures &figures);
    void channel_head(std::size_t channel, const std::size_t *epoch, bool is_first);
    void join(const std::vector<std::string> &texts);
    void rates(const std::vector<double> &rates);
    void comment_row(const ChannelCode &code, const Comment &comment);

    Markup &page_;
    const VolumeRead &volume_;
    const Inventory &inventory_;
    const std::vector<PageChannel> &channels_;
    const Curves &curves_;
    Table table_;
    std::map<int, const blk_031_t *> comments_; ///< by key, the first of each
};

/// The box in which a table scrolls, by keys too.
void Tables::begin(std::string_view title)
{
    page_.put("<div class=\"block scroll\" tabindex=0 role=region aria-label=\"");
    page_.text(title);
    page_.put("\">");
}

/// Up to the first column.
void Tables::caption(std::string_view title, std::size_t rows)
{
    page_.put("<caption>");
    page_.text(title);
    page_.put(" <span class=\"count\">");
    page_.grouped(static_cast<std::int64_t>(rows));
    page_.put("</span></caption><thead><tr>");
}

void Tables::columns(std::initializer_list<const char *> names)
{
    for (const char *name : names)
        table_.column(name);
}

void Tables::station_row(std::size_t at)
{
    const std::size_t station = inventory_.station_epochs()[at].station;
    page_.put("<tr");
    if (inventory_.stations()[station].epochs.front() == at) {
        page_.put(" id=station-");
        page_.number(static_cast<std::int64_t>(station));
    }
    page_.put("><td class=go><a href=#site-");
    page_.number(static_cast<std::int64_t>(station));
    page_.put(">station</a>");
    table_.begin_row();
    table_.cell(page_name(inventory_.stations()[station].code));
    const bool is_placed = volume_.records.station_placed[at];
    write_fields(&table_, volume_.records.stations[at],
                 [=](std::string_view name) { return shown_of_position(name, is_placed); });
    page_.put("</tr>\n");
}

void Tables::stations()
{
    const std::size_t rows = inventory_.station_epochs().size();
    if (rows == 0)
        return;
    begin("Stations");
    page_.put("<table id=\"stations-table\" class=\"sortable\">");
    caption("Stations", rows);
    page_.put("<th scope=\"col\" class=go>Show");
    table_.column("name");
    write_columns<blk_050_t>(&table_);
    page_.put("</thead><tbody>\n");
    for (std::size_t i = 0; i < rows; ++i)
        station_row(i);
    end();
}

/// To where the script draws the channel, and its response in that epoch.
void Tables::links(std::size_t channel, const std::size_t *epoch)
{
    page_.put("<a href=#timeline-");
    page_.number(static_cast<std::int64_t>(channel));
    page_.put(">timeline</a>");
    if (!epoch)
        return;
    page_.put(" <a href=#response-");
    page_.number(static_cast<std::int64_t>(*epoch));
    page_.put(">response</a>");
}

void Tables::join(const std::vector<std::string> &texts)
{
    std::string joined;
    for (const std::string &text : texts)
        joined += (joined.empty() ? "" : ", ") + text;
    table_.cell(joined);
}

/// Several only where data records do not agree.
void Tables::rates(const std::vector<double> &rates)
{
    table_.number_cell();
    for (std::size_t i = 0; i < rates.size(); ++i) {
        if (i > 0)
            page_.put(", ");
        page_.real(rates[i]);
    }
}

void Tables::data_cells(const ChannelData &data)
{
    table_.number(data.records);
    table_.number(data.samples);
    table_.number(static_cast<std::int64_t>(data.spans.empty() ? 0 : data.spans.size() - 1));
    join(data.look.formats);
    table_.cell(data.look.qualities);
}

/// The sensitivity at its frequency with its unit, and how far the response is from it there.
void Tables::sensitivity(const Figures &figures)
{
    table_.number_cell();
    if (!std::isfinite(figures.sensitivity)) {
        table_.cell();
        return;
    }
    page_.text(formatted<"%.6g">(figures.sensitivity));
    if (!figures.unit.empty()) {
        page_.put(" ");
        page_.text(figures.unit);
    }
    page_.put(" at ");
    page_.text(formatted<"%.6g">(figures.frequency));
    page_.put(" Hz");
    table_.number_cell();
    const double off = 100 * (figures.amplitude / std::abs(figures.sensitivity) - 1);
    if (std::abs(off) >= 1000)
        page_.text(formatted<"%+.3g %%">(off));
    else if (std::isfinite(off))
        page_.text(formatted<"%+.2f %%">(std::abs(off) < 0.005 ? 0.0 : off));
}

/// Links and name, which the columns of a row begin with.
void Tables::channel_head(std::size_t channel, const std::size_t *epoch, bool is_first)
{
    page_.put("<td class=go");
    if (is_first) {
        page_.put(" id=channel-");
        page_.number(static_cast<std::int64_t>(channel));
    }
    page_.put(">");
    links(channel, epoch);
    table_.begin_row();
    table_.cell(page_name(channels_[channel].code));
}

void Tables::epoch_row(std::size_t at)
{
    const ChannelEpoch &epoch = inventory_.channel_epochs()[at];
    const blk_052_t &record = volume_.records.channels[at];
    const bool is_first = inventory_.channels()[epoch.channel].epochs.front() == at;
    page_.put("<tr id=epoch-");
    page_.number(static_cast<std::int64_t>(at));
    page_.put(">");
    channel_head(epoch.channel, &at, is_first);
    table_.time(record.start_date);
    table_.time(record.end_date);
    table_.number(epoch.sample_rate);
    sensitivity(curves_.figures_of(at));
    table_.number(epoch.azimuth);
    table_.number(epoch.dip);
    table_.number(epoch.depth);
    const DictionaryEntry *sensor = inventory_.entry(Dictionary::abbreviations, epoch.instrument);
    table_.cell(sensor ? std::string_view(sensor->text) : std::string_view());
    const bool is_placed = volume_.records.channel_placed[at];
    write_fields(&table_, record, [=](std::string_view name) {
        return is_shown_first(name) ? Shown::no : shown_of_position(name, is_placed);
    });
    if (is_first)
        data_cells(channels_[epoch.channel].data);
    else
        page_.put("<td><td><td><td><td>");
    page_.put("</tr>\n");
}

/// A channel that has data alone: what these tell.
void Tables::undescribed_row(std::size_t channel, bool has_headers)
{
    const ChannelData &data = channels_[channel].data;
    page_.put("<tr>");
    channel_head(channel, nullptr, true);
    table_.cell(data.spans.empty() ? "" : page_time(data.spans.front().start));
    table_.cell(data.spans.empty() ? "" : page_time(data.spans.back().end));
    rates(data.look.rates);
    if (has_headers) {
        page_.put("<td><td><td><td><td><td>");
        for_each_field<blk_052_t>([&](const auto &field) {
            if (field.meaning != Meaning::absent && !is_shown_first(field.name))
                table_.cell();
        });
    }
    data_cells(data);
    page_.put("</tr>\n");
}

void Tables::channels()
{
    const std::size_t epochs = inventory_.channel_epochs().size();
    const std::size_t described = inventory_.channels().size();
    const std::size_t rows = epochs + channels_.size() - described;
    if (rows == 0)
        return;
    begin("Channels");
    page_.put("<table id=\"channels-table\" class=\"sortable\">");
    caption("Channels", rows);
    page_.put("<th scope=\"col\" class=go>Show");
    columns({"channel", "start", "end", "sample rate (Hz)"});
    if (epochs > 0) {
        columns({"sensitivity", "response against it", "azimuth (\xb0)", "dip (\xb0)", "depth (m)",
                 "sensor"});
        write_columns<blk_052_t>(&table_, [](std::string_view name) {
            return is_shown_first(name) ? Shown::no : Shown::yes;
        });
    }
    columns({"data records", "samples", "gaps", "encoding", "quality"});
    page_.put("</thead><tbody>\n");
    for (std::size_t i = 0; i < epochs; ++i)
        epoch_row(i);
    for (std::size_t i = described; i < channels_.size(); ++i)
        undescribed_row(i, epochs > 0);
    end();
}

void Tables::comment_row(const ChannelCode &code, const Comment &comment)
{
    page_.put("<tr>");
    table_.begin_row();
    table_.cell(page_name(code));
    table_.time(time_text(comment.start));
    table_.time(time_text(comment.end));
    const auto found = comments_.find(comment.key);
    const blk_031_t *record = found == comments_.end() ? nullptr : found->second;
    table_.number(std::int64_t{comment.key});
    table_.cell(record ? std::string_view(record->comment) : std::string_view());
    table_.cell(record ? std::string_view(&record->class_code, 1) : std::string_view());
    table_.number(std::int64_t{comment.level});
    table_.cell(record ? inventory_.unit(record->units) : std::string_view());
    page_.put("</tr>\n");
}

void Tables::comments()
{
    std::size_t rows = 0;
    for (const StationEpoch &epoch : inventory_.station_epochs())
        rows += epoch.comments.size();
    for (const ChannelEpoch &epoch : inventory_.channel_epochs())
        rows += epoch.comments.size();
    if (rows == 0)
        return;
    begin("Comments");
    page_.put("<table id=\"comments-table\" class=\"sortable\">");
    caption("Comments", rows);
    for (const char *name :
         {"of", "start", "end", "comment_code_key", "comment", "class", "level", "units_of_level"})
        table_.column(name);
    page_.put("</thead><tbody>\n");
    for (const StationEpoch &epoch : inventory_.station_epochs())
        for (const Comment &comment : epoch.comments)
            comment_row(inventory_.station_of(epoch).code, comment);
    for (const ChannelEpoch &epoch : inventory_.channel_epochs())
        for (const Comment &comment : epoch.comments)
            comment_row(inventory_.channel_of(epoch).code, comment);
    end();
}

template <class T> void Tables::dictionary(std::string_view title)
{
    const auto &records = std::get<Records::Kept<T>>(volume_.records.dictionaries);
    if (records.empty())
        return;
    begin(title);
    page_.put("<table class=\"dictionary sortable\" id=\"dictionary-0");
    page_.number(T::Number);
    page_.put("\">");
    caption(title, records.size());
    write_columns<T>(&table_);
    page_.put("</thead><tbody>\n");
    for (const T &record : records) {
        page_.put("<tr>");
        table_.begin_row();
        write_fields(&table_, record);
        page_.put("</tr>\n");
    }
    end();
}

} // namespace

void write_tables(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels,
                  const Curves &curves)
{
    Tables tables(page, volume, channels, curves);
    page.put("<section id=\"tables\"><h2>Tables</h2>\n");
    tables.stations();
    tables.channels();
    tables.comments();
    tables.dictionary<blk_030_t>("Data formats");
    tables.dictionary<blk_031_t>("Comment descriptions");
    tables.dictionary<blk_032_t>("Cited sources");
    tables.dictionary<blk_033_t>("Abbreviations");
    tables.dictionary<blk_034_t>("Units");
    tables.dictionary<blk_041_t>("FIR dictionary");
    tables.dictionary<blk_043_t>("Poles and zeros dictionary");
    tables.dictionary<blk_044_t>("Coefficients dictionary");
    tables.dictionary<blk_045_t>("Response list dictionary");
    tables.dictionary<blk_046_t>("Generic response dictionary");
    tables.dictionary<blk_047_t>("Decimation dictionary");
    tables.dictionary<blk_048_t>("Gain dictionary");
    page.put("</section>\n");
}

} // namespace quarl::html
