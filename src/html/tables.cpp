#include "html/tables.h"

#include "html/table.h"

#include <map>

namespace quarl::html
{

namespace
{

class Tables
{
public:
    Tables(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels)
        : page_(page), volume_(volume), inventory_(volume.inventory), channels_(channels),
          table_(page, volume.inventory)
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
    void end() { page_.put("</table></div>\n"); }
    void links(std::size_t channel, const std::size_t *epoch);
    void station_row(std::size_t at);
    void epoch_row(std::size_t at);
    void data_cells(const ChannelData &data);
    void undescribed_row(std::size_t channel);
    void comment_row(const ChannelCode &code, const Comment &comment);

    Markup &page_;
    const VolumeRead &volume_;
    const Inventory &inventory_;
    const std::vector<PageChannel> &channels_;
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

void Tables::station_row(std::size_t at)
{
    const std::size_t station = inventory_.station_epochs()[at].station;
    page_.put("<tr");
    if (inventory_.stations()[station].epochs.front() == at) {
        page_.put(" id=station-");
        page_.number(static_cast<std::int64_t>(station));
    }
    page_.put(">");
    write_fields(&table_, volume_.records.stations[at]);
    page_.put("</tr>\n");
}

void Tables::stations()
{
    const std::size_t rows = inventory_.station_epochs().size();
    begin("Stations");
    page_.put("<table id=\"stations-table\" class=\"sortable\">");
    caption("Stations", rows);
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

void Tables::data_cells(const ChannelData &data)
{
    table_.number(data.records);
    table_.number(data.samples);
    table_.number(static_cast<std::int64_t>(data.spans.empty() ? 0 : data.spans.size() - 1));
}

void Tables::epoch_row(std::size_t at)
{
    const std::size_t channel = inventory_.channel_epochs()[at].channel;
    const bool is_first = inventory_.channels()[channel].epochs.front() == at;
    page_.put("<tr id=epoch-");
    page_.number(static_cast<std::int64_t>(at));
    page_.put("><td class=go");
    if (is_first) {
        page_.put(" id=channel-");
        page_.number(static_cast<std::int64_t>(channel));
    }
    page_.put(">");
    links(channel, &at);
    table_.cell(channels_[channel].code.network());
    table_.cell(channels_[channel].code.station());
    write_fields(&table_, volume_.records.channels[at]);
    if (is_first)
        data_cells(channels_[channel].data);
    else
        page_.put("<td><td><td>");
    page_.put("</tr>\n");
}

/// A channel that has data alone: what these tell.
void Tables::undescribed_row(std::size_t channel)
{
    const ChannelCode &code = channels_[channel].code;
    page_.put("<tr><td class=go id=channel-");
    page_.number(static_cast<std::int64_t>(channel));
    page_.put(">");
    links(channel, nullptr);
    table_.cell(code.network());
    table_.cell(code.station());
    for_each_field<blk_052_t>([&](const auto &field) {
        if (field.meaning == Meaning::absent)
            return;
        table_.cell(field.name == "location"  ? code.location()
                    : field.name == "channel" ? code.channel()
                                              : std::string_view());
    });
    data_cells(channels_[channel].data);
    page_.put("</tr>\n");
}

void Tables::channels()
{
    const std::size_t epochs = inventory_.channel_epochs().size();
    const std::size_t described = inventory_.channels().size();
    begin("Channels");
    page_.put("<table id=\"channels-table\" class=\"sortable\">");
    caption("Channels", epochs + channels_.size() - described);
    page_.put("<th scope=\"col\" class=go>Show");
    table_.column("network");
    table_.column("station");
    write_columns<blk_052_t>(&table_);
    table_.column("data_records");
    table_.column("samples");
    table_.column("gaps");
    page_.put("</thead><tbody>\n");
    for (std::size_t i = 0; i < epochs; ++i)
        epoch_row(i);
    for (std::size_t i = described; i < channels_.size(); ++i)
        undescribed_row(i);
    end();
}

void Tables::comment_row(const ChannelCode &code, const Comment &comment)
{
    page_.put("<tr>");
    table_.cell(code.text());
    table_.cell(time_text(comment.start));
    table_.cell(time_text(comment.end));
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
        write_fields(&table_, record);
        page_.put("</tr>\n");
    }
    end();
}

} // namespace

void write_tables(Markup &page, const VolumeRead &volume, const std::vector<PageChannel> &channels)
{
    Tables tables(page, volume, channels);
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
